#include "records/eventcheck.h"

#include <string.h>

#include "files/recordlog.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"

void EventCheck::See(Record const& record) {
  records_++;
  if (record.stamp < kYear1990) early_++;
  if (memchr(record.payload, 0, record.size) == nullptr && memchr(record.payload, '\n', record.size) != nullptr)
    text_++;
}

std::string EventCheck::Fault() const {
  std::string const of = " of its " + Counted(records_, "record");
  if (early_ > records_ / 2) return "is not an event log: " + std::to_string(early_) + of + " have times before 1990";
  if (text_ > records_ / 2) return "is not an event log: " + std::to_string(text_) + of + " are lines of text";
  return "";
}

void EventCheck::Require(RecordLog const& log) const {
  std::string const fault = Fault();
  if (!fault.empty()) throw Failed(log.Path() + ": " + fault);
}
