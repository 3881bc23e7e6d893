// What the programs make of the values in their files.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_CHECK_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_CHECK_H

#include <string>
#include <vector>

#include "records/keylines.h"
#include "records/lint.h"
#include "terminal/terminal.h"

// Adds what is wrong with the values of a file that the product knows by its name: those that the programs take for
// something else, keys that none of them reads, entries with too few or too many fields.
void CheckValues(std::string const& path, KeyLines const& lines, Terminal const& terminal,
                 std::vector<Finding>& findings);

#endif
