// The browse list's file as sections of entries. An entry is one key: `identifier = name;...;owner`. The owner is the
// identifier of a group (for groups and computers) or of a computer (for UPS units); -1 means none.
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

// The numbers from 0 up that a section's entries have. "7" and "007" are two entries with one number.
class Identifiers {
 public:
  void Take(std::int32_t id);
  void Release(std::int32_t id);
  std::int32_t Smallest();  // the smallest free one
  // Returns the largest number that is taken, or `start` if that is larger, plus one. Returns the smallest free one if
  // there is no larger number.
  std::int32_t Next(std::int32_t start);

 private:
  std::multiset<std::int32_t> taken_;
  std::set<std::int32_t> holes_;  // the free ones below frontier_, so that a search need not begin at 0
  std::int32_t frontier_ = 0;
};

constexpr std::size_t kMostFields = 4;

// The properties of one kind of entry.
struct EntryShape {
  char const* section;
  std::size_t fields;          // an entry with more or fewer is invalid; kMostFields at most
  std::size_t optional;        // the field that can be empty; `fields` if none can
  std::int32_t beforeLargest;  // the largest identifier counts as at least this
};

constexpr std::size_t kName = 0;
constexpr std::size_t kAddress = 1;  // of computers and UPS units
constexpr std::size_t kNumber = 2;   // of UPS units

// An entry in the file. The fields are parts of its line, and valid until the section changes.
struct Entry {
  std::int32_t Number(std::size_t field) const;  // -1 if the field is not a number

  std::array<std::string_view, kMostFields> fields;
  std::int32_t owner = -1;
};

// Returns the value of an entry with these fields, of which there is at least one.
std::string Join(std::initializer_list<std::string_view> fields);

// The entries of one kind.
//
// Reading by position returns every valid entry. Operations on an identifier reach only the entry whose key is the
// number as IntToStr writes it. Otherwise "007" would be found as 7, and still be there after the removal of "7".
class BrowseSection {
 public:
  BrowseSection(OptionalCfg& file, EntryShape const& shape) : file_(file), shape_(shape) {}

  unsigned long Count() { return file_.GetKeyCount(shape_.section); }
  // The entry at a position, counted from 0 in the order of the keys' text; false if it is not valid.
  bool At(unsigned long position, std::int32_t& id, Entry& entry);

  // Whether the key exists, valid or not.
  bool HasKey(std::int32_t id);
  // The valid entry with that key, which can be a negative number.
  bool Read(std::int32_t id, Entry& entry);
  // Same for identifiers: false for negative numbers.
  bool Find(std::int32_t id, Entry& entry);
  bool Has(std::int32_t id);
  // The identifiers, from 0 up, of the valid entries with that owner.
  std::vector<std::int32_t> OwnedBy(std::int32_t owner);
  // An identifier that no valid entry has.
  std::int32_t NewIdentifier(bool maxPlusOne);

  // The three ways to change the section. Also true if the entry to be removed does not exist.
  bool Put(std::int32_t id, std::string const& value);
  bool Remove(std::int32_t id);
  // What OwnedBy gives, which goes to `removed`.
  bool RemoveOwnedBy(std::int32_t owner, std::vector<std::int32_t>& removed);
  bool Clear();

 private:
  using Owned = std::set<std::pair<std::int32_t, std::int32_t>>;  // owner, identifier

  // Each is built at its first use, then kept up to date: adding or removing entries one by one must not walk the whole
  // list every time.
  struct Index {
    std::optional<Identifiers> identifiers;  // for the first question
    std::optional<Owned> owned;              // for the second: most programs ask once, and a walk is cheaper
    bool wasAsked = false;                   // the first

    void Add(std::int32_t id, std::int32_t owner);
    void Drop(std::int32_t id, std::int32_t owner);
  };

  bool Parse(std::string_view value, Entry& entry) const;
  bool Parse(KeyText const& key, std::int32_t& id, Entry& entry) const;
  bool Read(std::string const& key, Entry& entry);
  template <class Take>
  void ForEach(Take take);
  template <class Take>
  void ForEachOwned(Take take);
  template <class Change>
  bool KeepIndex(Change change);
  std::optional<std::int32_t> IndexedOwner(std::int32_t id, std::string const& key);

  OptionalCfg& file_;
  EntryShape const shape_;
  Index index_;
};

// The object that the handle points to.
struct BrowseList {
  OptionalCfg file;  // stays first: a handle has always been the address of its configuration object
  // A change failed half-way when memory ran out. What is in memory must not be written to the file, and takes no more
  // changes.
  bool halfDone = false;
  BrowseSection groups{file, {"GROUPS", 2, 2, 0}};
  BrowseSection computers{file, {"COMPUTERS", 3, 3, 0}};
  BrowseSection nobreaks{file, {"NOBREAKS", 4, kAddress, -1}};
};

}  // namespace zelvane::internal

#endif
