// The keys of a loaded section, read directly from its text.
#ifndef ZELVANE_CONFIG_TEXTKEYS_INTERNAL_H
#define ZELVANE_CONFIG_TEXTKEYS_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "zelvane/config/cfgline_internal.h"

namespace zelvane::internal {

// Names match ignoring case. Of several keys with one name only the first counts. When memory runs out, a lookup throws
// and the next one starts again.
//
// A lookup by name costs about 5 ns for each line before the key in the text, 1 ns for each key before it in a list,
// and 20 ns in a sorted list. Listing costs 30 ns a line and sorting 40 ns a key: they pay after 8 and 50 lookups. Each
// is done at about that number, so it at most doubles the cost so far.
class TextKeys {
 public:
  struct Entry {
    std::uint64_t beginning;  // of the name
    KeyText key;
  };

  TextKeys() = default;
  // No line of the text is a syntax error. The text must outlive the object.
  explicit TextKeys(std::string_view text) : text_(text) {}

  // Finds the key with that name. False if it is missing.
  bool Find(std::string_view name, KeyText* found);

  // All keys in ascending order of the upper-cased names.
  std::vector<Entry> const& Sorted() {
    if (stage_ != Stage::kSorted) Sort();
    return keys_;
  }

 private:
  enum class Stage : unsigned char { kText, kListed, kSorted };
  static constexpr unsigned kQuestionsToText = 5;
  static constexpr unsigned kQuestionsToList = 64;

  bool FindInText(std::string_view name, KeyText* found) const;
  Entry const* FirstNotBefore(std::string_view name) const;
  void List();
  void Sort();

  std::string_view text_;
  std::vector<Entry> keys_;  // in line order; after sorting, in the order of the names, each name once
  Stage stage_ = Stage::kText;
  unsigned asked_ = 0;
};

}  // namespace zelvane::internal

#endif
