// The lists of the product's files: sections with one entry a line.
#ifndef ZELVANE_TOOLS_ZELCTL_RECORDS_LISTCHECK_H
#define ZELVANE_TOOLS_ZELCTL_RECORDS_LISTCHECK_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "records/fields.h"

struct EntryList {
  char const* section;
  char const* shape;          // of a value, for messages
  std::vector<Field> fields;  // names and limits of its parts
  // What is wrong with a key, and what the programs do with it; "" if nothing is.
  std::function<std::string(std::string const& key, std::string const& value)> keyFault;
  // The parts as the programs read them. Empty if they skip the entry. `position` counts the entries in key order.
  std::function<std::optional<std::vector<std::string>>(unsigned int position, std::string const& key)> read;
  std::string skipped;       // what that means
  std::string firstSkipped;  // the same for the first entry
};

// The list in a file with one of the product's names; empty if it has none. Reads the file in the installation root.
std::optional<EntryList> ListIn(std::string const& fileName);

#endif
