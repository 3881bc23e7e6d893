// Tells a schedule from another file.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_SCHEDULECHECK_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_SCHEDULECHECK_H

#include <cstdint>
#include <string>
#include <vector>

#include "zelvane/logs/proglist.h"

// Why the programs cannot have written a file with these entries and `torn` bytes after them: they save ascending
// dates. "" if they can have.
std::string ScheduleFault(std::vector<reg_proglist> const& entries, std::uintmax_t torn);

#endif
