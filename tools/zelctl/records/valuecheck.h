// Single values in the text of a file, checked as the library reads them.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_VALUECHECK_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_VALUECHECK_H

#include <string>
#include <vector>

#include "records/fields.h"

// What the file should contain for the field, in words; "" if the text is valid. `text` can be a part of a value, with
// blanks around it.
std::string FileFault(Field field, std::string const& text);

// The parts of a value that are separated by ";", also those that the library ignores.
std::vector<std::string> Parts(std::string const& value);

// The end of a message on a value with more parts than the library reads.
constexpr char kRestIgnored[] = "; the programs ignore the rest";

#endif
