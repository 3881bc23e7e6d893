// How the programs read the values in their files.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_CHECK_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_CHECK_H

#include <string>
#include <vector>

#include "records/keylines.h"
#include "records/lint.h"
#include "terminal/terminal.h"

// Adds findings on the values of a file that has one of the product's names: values that the programs read as something
// else, keys that no program reads, entries with too few or too many fields.
void CheckValues(std::string const& path, KeyLines const& lines, Terminal const& terminal,
                 std::vector<Finding>& findings);

#endif
