// The browse list's file as sections of entries. An entry is one key: `identifier = name;...;owner`, where the owner is
// the identifier of a group (for groups and computers) or of a computer (for UPS units), -1 for none.
#ifndef ZELVANE_BROWSE_BROWSEFILE_INTERNAL_H
#define ZELVANE_BROWSE_BROWSEFILE_INTERNAL_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zelvane/config/cfgclass_internal.h"

namespace zelvane::internal {

// The numbers from 0 that a section's entries have. "7" and "007" are two entries with one number.
class Identifiers {
 public:
  void Take(std::int32_t id);
  void Release(std::int32_t id);
  std::int32_t Smallest();  // that is free
  // One more than the largest that is taken, or than `start` if that is larger; the smallest free one when there is no
  // larger number.
  std::int32_t Next(std::int32_t start);

 private:
  std::multiset<std::int32_t> taken_;
  std::set<std::int32_t> holes_;  // the free ones below frontier_: a search does not begin at 0 every time
  std::int32_t frontier_ = 0;
};

constexpr std::size_t kMostFields = 4;

// What is particular to a kind of entry.
struct EntryShape {
  char const* section;
  std::size_t fields;          // an entry with more or fewer is invalid; kMostFields at most
  std::size_t optional;        // the field that may be empty; `fields` when none may
  std::int32_t beforeLargest;  // the largest identifier counts as no smaller than this
};

constexpr std::size_t kName = 0;
constexpr std::size_t kAddress = 1;  // of computers and UPS units
constexpr std::size_t kNumber = 2;   // of UPS units

// An entry as it is in the file: the fields are parts of its line, until the section changes.
struct Entry {
  std::int32_t Number(std::size_t field) const;  // -1 for what is none

  std::array<std::string_view, kMostFields> fields;
  std::int32_t owner = -1;
};

// The value of an entry with these fields; there is at least one.
std::string Join(std::initializer_list<std::string_view> fields);

// The entries of one kind.
//
// Reading by position takes every valid entry. The operations on an identifier reach only the entry whose key is that
// number as IntToStr writes it: "007" would otherwise be found as 7 and still be there after the removal of "7".
class BrowseSection {
 public:
  BrowseSection(OptionalCfg& file, EntryShape const& shape) : file_(file), shape_(shape) {}

  unsigned long Count() { return file_.GetKeyCount(shape_.section); }
  // The entry at a position, counted from 0 in the order of the keys' text; false when it is not valid.
  bool At(unsigned long position, std::int32_t& id, Entry& entry);

  // Whether the key is there, valid or not.
  bool HasKey(std::int32_t id);
  // The valid entry of that key, which may be a negative number.
  bool Read(std::int32_t id, Entry& entry);
  // The same for identifiers: false for negative numbers.
  bool Find(std::int32_t id, Entry& entry);
  bool Has(std::int32_t id);
  // The identifiers, from 0, of the valid entries with that owner.
  std::vector<std::int32_t> OwnedBy(std::int32_t owner);
  // An identifier that no valid entry has.
  std::int32_t NewIdentifier(bool maxPlusOne);

  // The three ways to change the section. True also for the removal of what is not there.
  bool Put(std::int32_t id, std::string const& value);
  bool Remove(std::int32_t id);
  bool Clear();

 private:
  using Owned = std::set<std::pair<std::int32_t, std::int32_t>>;  // owner, identifier

  // Each is made for the first question to it, then kept up to date: adding to a list, or removing from it, one by one
  // must not walk through it every time.
  struct Index {
    std::optional<Identifiers> identifiers;
    std::optional<Owned> owned;
  };

  bool Parse(std::string_view value, Entry& entry) const;
  bool Parse(KeyText const& key, std::int32_t& id, Entry& entry) const;
  bool Read(std::string const& key, Entry& entry);
  template <class Take>
  void ForEach(Take take);
  template <class Change>
  bool Keeping(std::int32_t id, std::string const* value, Change change);

  OptionalCfg& file_;
  EntryShape const shape_;
  Index index_;
};

// What the handle points to.
struct BrowseList {
  OptionalCfg file;  // stays first: a handle has always been the address of its configuration object
  // A change ran out of memory half way. What is in memory must never reach the file, and takes no more changes.
  bool halfDone = false;
  BrowseSection groups{file, {"GROUPS", 2, 2, 0}};
  BrowseSection computers{file, {"COMPUTERS", 3, 3, 0}};
  BrowseSection nobreaks{file, {"NOBREAKS", 4, kAddress, -1}};
};

}  // namespace zelvane::internal

#endif
