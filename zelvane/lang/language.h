/* Message texts in the user's language, for programs in any language: the user's own wording where there is some, the
   installed wording elsewhere.

     void* lang = OpenLang(1);
     puts(GetLangStr(lang, 12));
     CloseLang(lang);

   A handle holds two tables (langclass.h has the file format and what a number may be): the user's, from
   ".zellang.cfg" in the home folder ("~.zellang.cfg" in the current one without HOME), and the system's, from
   "zellang.cfg" in the installation root. Both are loaded when the handle is opened; what other programs write to the
   files later shows in GetLangCount and GetLangDesc alone. A missing file makes an empty table. A text that was set is
   on disk.

   Language and text numbers are 32 bits wide: of a wider `long` the low 32 bits count. A handle is used by one thread
   at a time. No function throws; out of memory is its failing result. */
#ifndef ZELVANE_LANG_LANGUAGE_H
#define ZELVANE_LANG_LANGUAGE_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

/* Loads the texts of language `lang` and returns the handle, to be given back to CloseLang. A language that neither
   file knows has no texts, and neither has a file that cannot be read. Null when memory runs out, and when
   /etc/zelvane.conf cannot be read just now (paths.h). */
ZELVANE_API void* OpenLang(long lang);

/* Frees the handle; null is ignored. */
ZELVANE_API void CloseLang(void* handle);

/* The text `id`: the user's if that is not empty, else the system's, else "". Null for a null handle only. The text
   belongs to the handle and is good until SetLangStr or CloseLang. */
ZELVANE_API char const* GetLangStr(void* handle, long id);

/* The system's text, whatever the user has made of it. */
ZELVANE_API char const* GetSystemLangStr(void* handle, long id);

/* The number of languages that the system's file lists now; 0 for a null handle. */
ZELVANE_API unsigned long GetLangCount(void* handle);

/* The display name of language `lang` in the system's file, "" for one that it does not list, into the `length` bytes
   at `destination`: cut to length - 1 bytes, and all that is behind it NUL. Nothing is written for a length of 0. 1, or
   0 for a null handle or destination. */
ZELVANE_API int GetLangDesc(void* handle, long lang, char* destination, unsigned long length);

/* Writes `text` as the user's own wording of `id` in the handle's language to the user's file, creates the file if it
   is missing, and loads the user's table again. "" brings the system's wording back. `text` can be one that GetLangStr
   returned.

   BEWARE: if any of that fails, the text is written to the system's file and table, for all users. It can fail in two
   ways. The user's file cannot be written. Or it has a syntax error above the place where the language's new section
   goes: then the text is in the user's file, but the load stops before it. Check the file first (GetErrorLine() of
   cfgclass.h), as `zelctl lang set` does.

   Returns 1 if either table took the text. Returns 0 for a null handle or text, for a text with "[", "]" or a line
   break (the file cannot hold it), if neither file can be written, and if the handle was opened for language -1, which
   means none. */
ZELVANE_API int SetLangStr(void* handle, long id, char const* text);

ZELVANE_C_END

#endif
