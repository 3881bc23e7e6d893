// Names of sections and keys, which match without regard to case.
#ifndef ZELVANE_CONFIG_CFGNAMES_INTERNAL_H
#define ZELVANE_CONFIG_CFGNAMES_INTERNAL_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal {

inline unsigned char UpperAt(std::string_view text, std::size_t i) {
  return kAnsiUpper[static_cast<unsigned char>(text[i])];
}

inline bool NameBegins(std::string_view text, std::string_view name) {
  if (text.size() < name.size()) return false;
  for (std::size_t i = 0; i < name.size(); i++)
    if (text[i] != name[i] && UpperAt(text, i) != UpperAt(name, i)) return false;
  return true;
}

inline bool IsSameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && (a == b || NameBegins(a, b));  // most callers spell a name as the file does
}

// The order of the upper-cased names by memcmp; of two that are equal so far the shorter comes first.
inline int CompareNames(std::string_view a, std::string_view b) {
  std::size_t const common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; i++)
    if (UpperAt(a, i) != UpperAt(b, i)) return UpperAt(a, i) < UpperAt(b, i) ? -1 : 1;
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

// The first bytes of the upper-cased name as a number: where two names differ there, it tells their order.
inline std::uint64_t Beginning(std::string_view name) {
  std::uint64_t bytes = 0;
  std::size_t const size = std::min(name.size(), sizeof bytes);
  for (std::size_t i = 0; i < size; i++) bytes = bytes << 8 | UpperAt(name, i);
  return size == 0 ? 0 : bytes << 8 * (sizeof bytes - size);
}

// The first of `count` entries in ascending order that is not before `name`; `nameOf` gives an entry's name.
template <class Entry, class NameOf>
Entry const* FirstNotBefore(Entry const* entry, std::size_t count, std::string_view name, NameOf nameOf) {
  std::uint64_t const beginning = Beginning(name);
  Entry const* const end = entry + count;
  while (count > 0) {  // a branch on the comparison would be mispredicted every second time
    std::size_t const half = count - count / 2;
    entry += half & (std::size_t{0} - static_cast<std::size_t>(entry[half - 1].beginning < beginning));
    count /= 2;
  }
  auto const isBefore = [&](Entry const& each, std::string_view) {
    return each.beginning == beginning && CompareNames(nameOf(each), name) < 0;
  };
  if (entry == end || IsSameName(nameOf(*entry), name)) return entry;
  return std::lower_bound(entry, end, name, isBefore);  // several names begin so
}

}  // namespace zelvane::internal

#endif
