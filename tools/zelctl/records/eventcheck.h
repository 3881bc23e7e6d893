// Tells the records of a log from the bytes of another file.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_EVENTCHECK_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_EVENTCHECK_H

#include <cstdint>
#include <string>

class RecordLog;
struct Record;

// Programs write the current time into each record, and fill the payload with zeros. A file is not a log if more than
// half of its records are stamped before 1990, or if more than half have a payload with a line feed and without a zero,
// as in a text file. Times out of order prove nothing: clocks are set back.
class EventCheck {
 public:
  void See(Record const& record);

  // "is not an event log: ..."; "" if it can be one.
  std::string Fault() const;
  // Throws Failed if the log cannot be one.
  void Require(RecordLog const& log) const;

 private:
  std::uint64_t records_ = 0;
  std::uint64_t early_ = 0;
  std::uint64_t text_ = 0;
};

#endif
