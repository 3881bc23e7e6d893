#include <algorithm>
#include <limits>

#include "zelvane/browse/browsefile_internal.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

namespace zelvane::internal {

// ---- Identifiers ----

void Identifiers::Take(std::int32_t id) {
  taken_.insert(id);
  holes_.erase(id);
}

void Identifiers::Release(std::int32_t id) {
  auto const found = taken_.find(id);
  if (found == taken_.end()) return;
  taken_.erase(found);
  if (id < frontier_ && taken_.count(id) == 0) holes_.insert(id);
}

std::int32_t Identifiers::Smallest() {
  if (!holes_.empty()) return *holes_.begin();
  while (taken_.count(frontier_) > 0) frontier_++;
  return frontier_;
}

std::int32_t Identifiers::Next(std::int32_t start) {
  std::int32_t const largest = taken_.empty() ? start : std::max(start, *taken_.rbegin());
  return largest == std::numeric_limits<std::int32_t>::max() ? Smallest() : largest + 1;
}

// ---- Entries ----

std::int32_t Entry::Number(std::size_t field) const { return static_cast<std::int32_t>(ToInt(fields[field], -1)); }

std::string Join(std::initializer_list<std::string_view> fields) {
  std::string value;
  for (std::string_view const field : fields) value.append(1, ';').append(field);
  return value.substr(1);
}

// Splits the value as Tokenize does: a trailing separator adds no field.
bool BrowseSection::Parse(std::string_view value, Entry& entry) const {
  std::size_t count = 0;
  for (; !value.empty(); count++) {
    std::string_view const field = value.substr(0, value.find(';'));
    if (count == shape_.fields || (field.empty() && count != shape_.optional)) return false;
    entry.fields[count] = field;
    value.remove_prefix(std::min(field.size() + 1, value.size()));
  }
  if (count != shape_.fields) return false;
  entry.owner = entry.Number(count - 1);
  return true;
}

bool BrowseSection::Parse(KeyText const& key, std::int32_t& id, Entry& entry) const {
  std::string const name(key.name);
  if (!Parse(key.value, entry) || !StrIsInt(name)) return false;
  id = static_cast<std::int32_t>(StrToIntDef(name, -1));
  return true;
}

bool BrowseSection::At(unsigned long position, std::int32_t& id, Entry& entry) {
  KeyText key;
  return file_.Find(shape_.section, position, &key) && Parse(key, id, entry);
}

bool BrowseSection::Read(std::string const& key, Entry& entry) {
  KeyText found;
  return file_.Find(shape_.section, key.c_str(), &found) && Parse(found.value, entry);
}

bool BrowseSection::HasKey(std::int32_t id) { return file_.KeyExists(shape_.section, IntToStr(id).c_str()); }

bool BrowseSection::Read(std::int32_t id, Entry& entry) { return Read(IntToStr(id), entry); }

bool BrowseSection::Find(std::int32_t id, Entry& entry) { return id >= 0 && Read(id, entry); }

bool BrowseSection::Has(std::int32_t id) {
  Entry entry;
  return Find(id, entry);
}

std::vector<std::int32_t> BrowseSection::OwnedBy(std::int32_t owner) {
  std::vector<std::int32_t> ids;
  if (!index_.wasAsked) {
    index_.wasAsked = true;
    ForEachOwned([&](std::int32_t id, std::int32_t itsOwner) {
      if (itsOwner == owner) ids.push_back(id);
    });
    std::sort(ids.begin(), ids.end());
    return ids;
  }
  if (!index_.owned) {
    file_.PrepareChanges(shape_.section);
    Owned owned;
    ForEachOwned([&](std::int32_t id, std::int32_t itsOwner) { owned.emplace(itsOwner, id); });
    index_.owned = std::move(owned);
  }
  for (auto each = index_.owned->lower_bound({owner, 0}); each != index_.owned->end() && each->first == owner; ++each)
    ids.push_back(each->second);
  return ids;
}

std::int32_t BrowseSection::NewIdentifier(bool maxPlusOne) {
  if (!index_.identifiers) {
    file_.PrepareChanges(shape_.section);
    Identifiers identifiers;
    ForEach([&](std::string_view, std::int32_t id, Entry const&) { identifiers.Take(id); });
    index_.identifiers = std::move(identifiers);
  }
  return maxPlusOne ? index_.identifiers->Next(shape_.beforeLargest) : index_.identifiers->Smallest();
}

bool BrowseSection::Put(std::int32_t id, std::string const& value) {
  return KeepIndex([&] {
    std::string const key = IntToStr(id);
    std::optional<std::int32_t> const before = IndexedOwner(id, key);
    if (!file_.WriteStr(shape_.section, key.c_str(), value.c_str())) return false;
    if (before) index_.Drop(id, *before);
    Entry entry;
    if (id >= 0 && Parse(value, entry)) index_.Add(id, entry.owner);
    return true;
  });
}

bool BrowseSection::Remove(std::int32_t id) {
  return KeepIndex([&] {
    std::string const key = IntToStr(id);
    std::optional<std::int32_t> const before = IndexedOwner(id, key);
    if (!file_.DeleteKey(shape_.section, key.c_str())) return false;
    if (before) index_.Drop(id, *before);
    return true;
  });
}

bool BrowseSection::RemoveOwnedBy(std::int32_t owner, std::vector<std::int32_t>& removed) {
  removed = OwnedBy(owner);
  return KeepIndex([&] {
    for (std::int32_t const id : removed) {
      if (!file_.DeleteKey(shape_.section, IntToStr(id).c_str())) return false;
      index_.Drop(id, owner);
    }
    return true;
  });
}

bool BrowseSection::Clear() {
  index_ = {};
  return file_.EraseSection(shape_.section);
}

// ---- The index ----

// Calls `take(key, id, entry)` for each valid entry with an identifier.
template <class Take>
void BrowseSection::ForEach(Take take) {
  Entry entry;
  unsigned long const count = Count();
  for (unsigned long i = 0; i < count; i++) {
    KeyText key;
    std::int32_t id = -1;
    if (file_.Find(shape_.section, i, &key) && Parse(key, id, entry) && id >= 0) take(key.name, id, entry);
  }
}

// Calls `take(id, owner)` for each valid entry with an identifier that the operations on it reach.
template <class Take>
void BrowseSection::ForEachOwned(Take take) {
  ForEach([&](std::string_view key, std::int32_t id, Entry const& entry) {
    if (key == IntToStr(id)) take(id, entry.owner);
  });
}

void BrowseSection::Index::Add(std::int32_t id, std::int32_t owner) {
  if (identifiers) identifiers->Take(id);
  if (owned) owned->emplace(owner, id);
}

void BrowseSection::Index::Drop(std::int32_t id, std::int32_t owner) {
  if (identifiers) identifiers->Release(id);
  if (owned) owned->erase({owner, id});
}

// Returns the owner under which the index has the entry, if it has it.
std::optional<std::int32_t> BrowseSection::IndexedOwner(std::int32_t id, std::string const& key) {
  Entry entry;
  bool const indexed = (index_.identifiers || index_.owned) && id >= 0 && Read(key, entry);
  return indexed ? std::optional(entry.owner) : std::nullopt;
}

// Changes the file and the index. After an exception they may differ: the index is dropped, and built again when
// needed.
template <class Change>
bool BrowseSection::KeepIndex(Change change) {
  try {
    return change();
  } catch (...) {
    index_ = {};
    throw;
  }
}

}  // namespace zelvane::internal
