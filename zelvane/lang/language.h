/// @file
/// Message texts in the user's language, for programs in any programming language. The user's own wording overrides the
/// installed one.
///
///     void* lang = OpenLang(1);
///     puts(GetLangStr(lang, 12));
///     CloseLang(lang);
///
/// A handle holds two tables, from files that zelvane-language(5) describes: the user's from ".zellang.cfg" in the home
/// directory, the system's from "zellang.cfg" in the installation root. OpenLang loads both. Later changes by other
/// programs show only in GetLangCount and GetLangDesc. A missing file makes an empty table. A text that was set is on
/// disk.
///
/// Language and text numbers have 32 bits: the low 32 bits of a wider `long` count. One thread at a time may use a
/// handle. No function throws; when memory runs out, it returns its failure value.
#ifndef ZELVANE_LANG_LANGUAGE_H
#define ZELVANE_LANG_LANGUAGE_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

/// Loads the texts of language `lang` and returns the handle; free it with CloseLang. A language that is in neither
/// file has no texts; nor has a file that cannot be read. Returns null when memory runs out, or while /etc/zelvane.conf
/// temporarily cannot be read (paths.h).
ZELVANE_API void* OpenLang(long lang);

/// Frees the handle. Null is ignored.
ZELVANE_API void CloseLang(void* handle);

/// Returns the text `id`: the user's if it is not empty, otherwise the system's, otherwise "". Null only for a null
/// handle. The text belongs to the handle and is valid until SetLangStr or CloseLang.
ZELVANE_API char const* GetLangStr(void* handle, long id);

/// Same, but always the system's text.
ZELVANE_API char const* GetSystemLangStr(void* handle, long id);

/// Returns the number of languages that the system's file lists now; 0 for a null handle.
ZELVANE_API unsigned long GetLangCount(void* handle);

/// Stores the display name of language `lang` from the system's file ("" if it is not listed) in the `length` bytes at
/// `destination`: cut to length - 1 bytes, the remainder filled with NUL. A length of 0 writes nothing. Returns 1, or 0
/// for a null handle or destination.
ZELVANE_API int GetLangDesc(void* handle, long lang, char* destination, unsigned long length);

/// Writes `text` to the user's file as the user's own wording of `id` in the handle's language, and loads the user's
/// table again. Creates a missing file. "" removes the override, so that the system's wording shows again. `text` can
/// be a result of GetLangStr.
///
/// BEWARE: if any of that fails, the text is written to the system's file and table, for all users. There are two such
/// cases. The user's file cannot be written. Or it has a syntax error above the place of the language's new section:
/// the text is then in the user's file, but the load stops before it. Check the file first (GetErrorLine() of
/// cfgclass.h), as `zelctl lang set` does.
///
/// Returns 1 if either table has taken the text. Returns 0 for a null handle or text, for a text with "[", "]" or a
/// line break (the file cannot hold it), if neither file can be written, and if the handle was opened for language -1,
/// which means no language.
ZELVANE_API int SetLangStr(void* handle, long id, char const* text);

ZELVANE_C_END

#endif
