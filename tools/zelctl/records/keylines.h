// Where in a file each key stands that the programs read.
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

// None when the file cannot be read.
KeyLines ReadKeyLines(std::string const& path);

// Where the value of each field comes from: "FILE:LINE", or "default". `files` are those that the record is read from.
std::vector<std::string> Origins(std::vector<Field> const& fields, void const* record,
                                 std::vector<std::string> const& files);

// The key that a field is written under, among those of its file; "" when there is none.
std::string KeyOf(Field const& field, void const* record, KeyLines const& lines);

// Whether the field is written in a file of that name.
bool IsIn(Field const& field, std::string const& fileName);

#endif
