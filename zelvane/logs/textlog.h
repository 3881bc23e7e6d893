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
  // Empties the text file, creating it if it is missing. False when no file is named or it cannot be opened for
  // writing.
  bool ClearFile() override;

  // WriteLine(GetDateTime(), text): local time.
  virtual bool WriteLine(char const* text);
  // Appends one line stamped with `when`, creating the file if need be. The text is written as it is: a line feed in it
  // begins a line without a stamp. The line goes out in one write, so that lines of several programs stay whole, and
  // what a full disk took of it is taken back. False, with nothing written: no file named, null text, `when` not a
  // valid date-time (datetime.h), or the file cannot be opened or written. 29 February and 31 December of a leap year
  // are printed as datetime.h decodes them.
  virtual bool WriteLine(long when, char const* text);

  // The same with text.c_str().
  bool WriteLine(std::string const& text) { return WriteLine(text.c_str()); }
  bool WriteLine(long when, std::string const& text) { return WriteLine(when, text.c_str()); }

 private:
  std::string textFile_;
};

#endif
