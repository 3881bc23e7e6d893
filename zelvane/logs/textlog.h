// TextLogClass, a log for people: one stamped line a message, in a file that is never cut.
//
//   05/03/2004 08:07:09 123456 UPS on battery
//
// Day, month, year and time of day; the tick count when the line was written (GetSystemTick: milliseconds, 32 bits,
// unsigned), which orders lines of the same second; the text. Each line ends with a line feed.
//
// It is a LogClass so that programs handle both kinds through one pointer, but it has a file of its own: SetFile,
// ClearFile and WriteLine work on that one, and the record operations, which keep what LogClass says of an object
// without a file, never touch it. SetMaxLines does not bound it.
#ifndef ZELVANE_LOGS_TEXTLOG_H
#define ZELVANE_LOGS_TEXTLOG_H

#include <string>

#include "zelvane/export.h"
#include "zelvane/logs/logclass.h"

class ZELVANE_API TextLogClass : public LogClass {
 public:
  // No file; or SetFile(name).
  TextLogClass();
  explicit TextLogClass(char const* name);
  explicit TextLogClass(std::string const& name) : TextLogClass(name.c_str()) {}
  ~TextLogClass() override;

  // Names the text file and nothing else: no file is touched, a buffer stays. Null counts as "", no file. 1, or 0 with
  // the old name kept when memory is short.
  using LogClass::SetFile;
  int SetFile(char const* name) override;
  // Empties the text file, or creates it empty. True when that is on disk. False: no file name, the file cannot be
  // opened for writing, or (then it is empty) synced or closed.
  bool ClearFile() override;

  // WriteLine(GetDateTime(), text): local time.
  virtual bool WriteLine(char const* text);
  // Appends one line stamped with `when`, creating the file if need be. The text is written as it is: a line feed in it
  // begins a line without a stamp. The line is one write, so lines of several programs stay whole; a partial line left
  // by a full disk is truncated away. True when the line, and the name of a new file, are on disk. False, with nothing
  // written: no file name, null text, `when` not a valid date-time (datetime.h), the file cannot be opened or written,
  // or the folder of an empty one cannot be synced. False, too, when the sync or the close fails; the line may then be
  // there. A power cut can leave a part of the line that is being written, or NUL bytes in its place. 29 February and
  // 31 December of a leap year are printed as datetime.h decodes them.
  virtual bool WriteLine(long when, char const* text);

  // The same with text.c_str().
  bool WriteLine(std::string const& text) { return WriteLine(text.c_str()); }
  bool WriteLine(long when, std::string const& text) { return WriteLine(when, text.c_str()); }

 private:
  std::string textFile_;
};

#endif
