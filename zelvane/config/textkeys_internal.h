// The keys of a loaded section, read where they are in its text.
#ifndef ZELVANE_CONFIG_TEXTKEYS_INTERNAL_H
#define ZELVANE_CONFIG_TEXTKEYS_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "zelvane/config/cfgline_internal.h"

namespace zelvane::internal {

// Names are matched without regard to case, and of several keys with one name only the first is there. Nothing is made
// before it is asked for. Out of memory, a question throws, and the next one begins anew.
//
// A question by name reads the lines: 2 to 5 ns each, half of them until the key is found. A table of the names takes
// about 30 ns a line, so that it pays after eight questions; it is made at the fifth, since who has asked so often
// mostly goes on.
class TextKeys {
 public:
  TextKeys() = default;
  // No line of the text is a syntax error. The text outlives the object.
  explicit TextKeys(std::string_view text) : text_(text) {}

  // Places in the text are noted in 32 bits.
  static bool Serves(std::string_view text) {
    return std::uint64_t{text.size()} <= std::numeric_limits<std::uint32_t>::max();
  }

  // The key of that upper-cased name, or false.
  bool Find(std::string_view upper, KeyText* found);

  std::size_t Count();
  // The n-th key in ascending order of the upper-cased names; n is below Count().
  KeyText At(std::size_t n);

 private:
  struct Entry {
    std::uint32_t name, nameSize, value, valueSize;
  };
  struct Slot {
    std::uint32_t hash;
    std::uint32_t entry;  // counted from 1; 0: empty
  };
  static constexpr unsigned kQuestionsWithoutTable = 4;

  bool ReadLines(std::string_view upper, KeyText* found) const;
  void MakeEntries();
  void MakeTable();
  void MakeOrder();
  std::string_view NameOf(Entry const& entry) const { return text_.substr(entry.name, entry.nameSize); }
  KeyText KeyIn(Entry const& entry) const { return {NameOf(entry), text_.substr(entry.value, entry.valueSize)}; }
  std::size_t SlotOf(std::string_view upper, std::uint32_t hash) const;

  std::string_view text_;
  std::vector<Entry> entries_;  // all keys in the order of the lines
  std::vector<Slot> table_;     // a power of two of slots, a quarter to a half of them full; open addressing
  std::vector<std::uint32_t> order_;
  bool hasEntries_ = false;
  bool hasOrder_ = false;
  unsigned asked_ = 0;  // without a table
};

}  // namespace zelvane::internal

#endif
