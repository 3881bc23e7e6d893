// A type of UPS unit in one value of upstype.cfg: "name;driver;configuration module;client module;model".
#ifndef ZELVANE_API_TYPEENTRY_INTERNAL_H
#define ZELVANE_API_TYPEENTRY_INTERNAL_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal {

struct TypeEntry {
  std::string name;
  std::string driver;
  std::string cfgModule;
  std::string cliModule;
  std::int16_t modelIndex = -1;  // also if the field is not a number
};

// Returns false with `entry` unchanged if `value` has fewer than five fields.
inline bool ParseTypeEntry(std::string_view value, TypeEntry& entry) {
  std::vector<std::string> fields;
  if (!SplitFields(value, 5, fields)) return false;
  entry.name.swap(fields[0]);
  entry.driver.swap(fields[1]);
  entry.cfgModule.swap(fields[2]);
  entry.cliModule.swap(fields[3]);
  entry.modelIndex = static_cast<std::int16_t>(StrToIntDef(fields[4], -1));
  return true;
}

}  // namespace zelvane::internal

#endif
