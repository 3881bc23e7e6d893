#include "records/schedulecheck.h"

#include "terminal/terminal.h"

std::string ScheduleFault(std::vector<reg_proglist> const& entries, std::uintmax_t torn) {
  for (std::size_t i = 0; i < entries.size(); i++) {
    std::string const entry = "entry " + std::to_string(i + 1);
    if (entries[i].dateTime < 0) return entry + " is not a valid date";
    if (i > 0 && entries[i].dateTime < entries[i - 1].dateTime) return entry + " is earlier than the one before it";
  }
  return torn == 0 ? "" : Counted(torn, "extra byte") + " after its last entry";
}
