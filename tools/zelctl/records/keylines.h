// The line of each key that the programs read in a file.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_KEYLINES_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_KEYLINES_H

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "records/fields.h"

struct KeyLine {
  long line = 0;  // counted from 1
  std::string value;
};

using KeyLines = std::map<std::pair<std::string, std::string>, KeyLine>;  // by section and key, both in capitals

// Empty if the file cannot be read.
KeyLines ReadKeyLines(std::string const& path);

// The origin of each field's value: "FILE:LINE" or "default". `files` are the files of the record.
std::vector<std::string> Origins(std::vector<Field> const& fields, void const* record,
                                 std::vector<std::string> const& files);

// The key of a field among those of its file; "" if there is none.
std::string KeyOf(Field const& field, void const* record, KeyLines const& lines);

// Whether the field is stored in a file with that name.
bool IsIn(Field const& field, std::string const& fileName);

#endif
