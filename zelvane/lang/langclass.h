// LangClass: the message texts of one language, loaded from a language file. Programs that want the user's own wording
// over the installed one use two of them, as the plain functions of language.h do.
//
//   LangClass lang;
//   lang.SetFileName("/opt/ups/zellang.cfg");
//   lang.LoadStrings(1);
//   Show(lang.GetLangStr(12));
//
// THE FILE is a configuration file (cfgclass.h). Section [LANG] lists the languages, number = display name. Each
// language's texts stand in the section that its number names, text number = text:
//
//   [LANG]         [1]
//   1 = English    12 = Power on
//   2 = Deutsch    13 = Power off
//
// Every operation that reads or writes the file opens it anew; only the texts of the loaded language are kept. A file
// that is missing or cannot be read has no languages and no texts.
//
// Language and text numbers are 32 bits wide: of a wider `long` the low 32 bits count. The forms that take a string
// pass its characters on, up to the first NUL. Null counts as "" unless said otherwise. An object is used by one thread
// at a time and throws nothing but std::bad_alloc.
#ifndef ZELVANE_LANG_LANGCLASS_H
#define ZELVANE_LANG_LANGCLASS_H

#include <cstdint>
#include <map>
#include <string>

#include "zelvane/export.h"

// The order of the virtual operations is part of the interface, and they call each other virtually: a subclass may
// replace any step.
class ZELVANE_API LangClass {
 public:
  // No file, no language.
  LangClass();
  LangClass(LangClass const&) = delete;
  LangClass& operator=(LangClass const&) = delete;
  virtual ~LangClass();

  // Names the file. Nothing is read, and what is loaded stays.
  virtual void SetFileName(std::string const& name);
  virtual void SetFileName(char const* name);

  // The number of keys in [LANG], whatever they are; 0 while no file is named.
  virtual unsigned long GetLangCount();
  // The display name of a language, loaded or not; "" when it has none or no file is named.
  virtual std::string GetLangDesc(long lang);

  // Replaces what is loaded by the texts of `lang`. Keys that are no numbers from 0 to 2147483647 are left out. Of two
  // spellings of one number ("7" and "007") the one that comes first in ascending order of the keys' text counts.
  // False with nothing loaded: no file is named, or it has no section of that number. In the second case `lang` counts
  // as the loaded language all the same, and SetLangStr may write its first text.
  virtual bool LoadStrings(long lang);
  // Forgets the texts: no language is loaded then.
  virtual void ClearStrings();

  // The text `id` of the loaded language, "" when there is none. Good until the next LoadStrings, ClearStrings or
  // SetLangStr.
  virtual std::string const& GetLangStr(long id);

  // Writes the text `id` of `lang` into the file, at once, and it is on disk when this returns true; the file and the
  // section are created when they are missing. If `lang` is the loaded language it is loaded anew, so that GetLangStr
  // knows the text. `text` may be part of this object. A negative `id` is written too, but never loaded; blanks around
  // the text are gone with the next load. False: no file is named, null `text`, or one that the file cannot hold ("[",
  // "]", a line feed or a carriage return), with nothing written; the file cannot be read or written, it is as it was
  // then; or it could not be loaded anew.
  virtual bool SetLangStr(long id, std::string const& text, long lang);
  virtual bool SetLangStr(long id, char const* text, long lang);
  // The same for the loaded language; false when none is loaded.
  virtual bool SetLangStr(long id, std::string const& text);
  virtual bool SetLangStr(long id, char const* text);

 protected:
  // For subclasses that fill the table from elsewhere.
  std::string fileName_;
  std::int32_t lang_ = -1;   // the loaded language; -1 for none
  std::string description_;  // its display name
  std::map<std::int32_t, std::string> strings_;
  std::string const none_;  // what GetLangStr gives for texts that are not there
};

#endif
