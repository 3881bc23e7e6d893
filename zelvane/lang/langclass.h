/// @file
/// LangClass holds the message texts of one language, loaded from a language file. Programs in which the user's own
/// wording overrides the installed one use two objects, as the plain C functions of language.h do.
///
///     LangClass lang;
///     lang.SetFileName("/opt/ups/zellang.cfg");
///     lang.LoadStrings(1);
///     Show(lang.GetLangStr(12));
///
/// zelvane-language(5) describes the file, a configuration file (cfgclass.h). Section [LANG] has the display names of
/// the languages; the texts of a language are in the section with its number. Every operation that reads or writes the
/// file opens it again. Only the texts of the loaded language stay in memory. A missing or unreadable file has no
/// languages and no texts.
///
/// Language and text numbers have 32 bits: the low 32 bits of a wider `long` count. The std::string overloads use their
/// arguments up to the first NUL. Null counts as "" unless stated otherwise. One thread at a time may use an object.
/// Only std::bad_alloc is thrown.
#ifndef ZELVANE_LANG_LANGCLASS_H
#define ZELVANE_LANG_LANGCLASS_H

#include <cstdint>
#include <map>
#include <string>

#include "zelvane/export.h"

/// The operations are virtual hooks: they call each other through the virtual table, and their order is part of the
/// interface.
class ZELVANE_API LangClass {
 public:
  /// No file, no language.
  LangClass();
  LangClass(LangClass const&) = delete;
  LangClass& operator=(LangClass const&) = delete;
  virtual ~LangClass();

  /// Sets the file name. Nothing is read, and the loaded texts stay.
  virtual void SetFileName(std::string const& name);
  virtual void SetFileName(char const* name);

  /// Returns the number of keys in [LANG], whatever they are; 0 without a file name.
  virtual unsigned long GetLangCount();
  /// Returns the display name of a language, loaded or not; "" if it has none or there is no file name.
  virtual std::string GetLangDesc(long lang);

  /// Replaces the loaded texts with those of `lang`. Keys that are not numbers from 0 to 2147483647 are skipped.
  /// False, and nothing is loaded: no file name, or the file has no section with that number. In the second case `lang`
  /// is still the loaded language, so that SetLangStr can write its first text.
  virtual bool LoadStrings(long lang);
  /// Frees the texts. No language is loaded afterwards.
  virtual void ClearStrings();

  /// Returns the text `id` of the loaded language; "" if there is none. Valid until the next LoadStrings, ClearStrings
  /// or SetLangStr.
  virtual std::string const& GetLangStr(long id);

  /// Writes the text `id` of `lang` to the file immediately; when it returns true, the text is on disk. Creates a
  /// missing file or section. If `lang` is the loaded language, loads it again, so that GetLangStr returns the text.
  /// `text` can be part of this object. A negative `id` is written but never loaded. The next load drops blanks around
  /// the text.
  ///
  ///     false, nothing written   no file name; null `text`; a text that the file cannot hold ("[", "]", a line feed or
  ///                              a carriage return)
  ///     false, file unchanged    the file cannot be read or written
  ///     false, text written      the file cannot be loaded again
  virtual bool SetLangStr(long id, std::string const& text, long lang);
  virtual bool SetLangStr(long id, char const* text, long lang);
  /// Same for the loaded language. False if none is loaded.
  virtual bool SetLangStr(long id, std::string const& text);
  virtual bool SetLangStr(long id, char const* text);

 protected:
  // For subclasses that fill the table from another source.
  std::string fileName_;
  std::int32_t lang_ = -1;   // the loaded language; -1 for none
  std::string description_;  // its display name
  std::map<std::int32_t, std::string> strings_;
  std::string const none_;  // result of GetLangStr for missing texts
};

#endif
