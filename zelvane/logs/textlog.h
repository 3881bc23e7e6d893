/// @file
/// TextLogClass is a log for people: one line per message, in a file that is never cut. A line has the time stamp, the
/// tick count at its writing (GetSystemTick) and the text; zelvane-log(5) describes it.
///
/// It is a LogClass so that programs handle both kinds through one pointer, but it has a file of its own. SetFile,
/// ClearFile and WriteLine work on that file. The record operations never touch it: they behave as those of a LogClass
/// without a file. SetMaxLines does not limit it.
#ifndef ZELVANE_LOGS_TEXTLOG_H
#define ZELVANE_LOGS_TEXTLOG_H

#include <string>

#include "zelvane/export.h"
#include "zelvane/logs/logclass.h"

/// @copydoc zelvane/logs/textlog.h
class ZELVANE_API TextLogClass : public LogClass {
 public:
  /// No file, or SetFile(name).
  TextLogClass();
  explicit TextLogClass(char const* name);
  explicit TextLogClass(std::string const& name) : TextLogClass(name.c_str()) {}
  ~TextLogClass() override;

  /// Sets the name of the text file, and nothing else: no file is opened, and a buffer stays. Null counts as "", no
  /// file. Returns 1, or 0 with the old name kept when memory runs out.
  using LogClass::SetFile;
  int SetFile(char const* name) override;
  /// Empties the text file, or creates it empty. Returns true when that is on disk. False: no file name, the file
  /// cannot be opened for writing, or (it is then empty) cannot be synced or closed.
  bool ClearFile() override;

  /// Same as WriteLine(GetDateTime(), text): local time.
  virtual bool WriteLine(char const* text);
  /// Appends one line with the time stamp `when`. Creates a missing file. The text is written unchanged: a line feed in
  /// it starts a line without a time stamp. The line is one write, so lines of several programs do not mix. A partial
  /// line left by a full disk is truncated away. 29 February and 31 December of a leap year are printed as datetime.h
  /// decodes them.
  ///
  ///     true                    the line, and the name of a new file, are on disk
  ///     false, nothing written  no file name; null text; `when` not a valid date-time (datetime.h); the file cannot be
  ///                             opened or written; the directory of an empty file cannot be synced
  ///     false, line perhaps     sync or close failed
  ///     written
  ///
  /// A power failure can leave a part of the line that is being written, or NUL bytes in its place.
  virtual bool WriteLine(long when, char const* text);

  /// Same with text.c_str().
  bool WriteLine(std::string const& text) { return WriteLine(text.c_str()); }
  bool WriteLine(long when, std::string const& text) { return WriteLine(when, text.c_str()); }

 private:
  std::string textFile_;
};

#endif
