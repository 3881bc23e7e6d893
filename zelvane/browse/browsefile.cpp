#include <algorithm>
#include <limits>

#include "zelvane/browse/browsefile_internal.h"
#include "zelvane/core/strutils.h"

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

std::int32_t OwnerIn(Fields const& fields) { return static_cast<std::int32_t>(StrToIntDef(fields.back(), -1)); }

std::string Join(Fields const& fields) {
  std::string value = fields.front();
  for (std::size_t i = 1; i < fields.size(); i++) value.append(1, ';').append(fields[i]);
  return value;
}

bool BrowseSection::Parse(std::string const& value, Fields& fields) const {
  Tokenize(fields, value, ';');
  if (fields.size() != shape_.fields) return false;
  for (std::size_t i = 0; i < fields.size(); i++)
    if (fields[i].empty() && i != shape_.optional) return false;
  return true;
}

std::string BrowseSection::Value(std::int32_t id) { return file_.ReadStr(shape_.section, IntToStr(id), ""); }

bool BrowseSection::At(unsigned long position, std::int32_t& id, Fields& fields) {
  std::string const key = file_.GetKeyName(shape_.section, position);
  if (!Parse(file_.ReadStr(shape_.section, position, ""), fields) || !StrIsInt(key)) return false;
  id = static_cast<std::int32_t>(StrToIntDef(key, -1));
  return true;
}

bool BrowseSection::HasKey(std::int32_t id) { return file_.KeyExists(shape_.section, IntToStr(id)); }

bool BrowseSection::Read(std::int32_t id, Fields& fields) { return Parse(Value(id), fields); }

bool BrowseSection::Find(std::int32_t id, Fields& fields) { return id >= 0 && Read(id, fields); }

bool BrowseSection::Has(std::int32_t id) {
  Fields fields;
  return Find(id, fields);
}

std::vector<std::int32_t> BrowseSection::OwnedBy(std::int32_t owner) {
  Index();
  std::vector<std::int32_t> ids;
  for (auto entry = owned_.lower_bound({owner, 0}); entry != owned_.end() && entry->first == owner; ++entry)
    ids.push_back(entry->second);
  return ids;
}

std::int32_t BrowseSection::NewIdentifier(bool maxPlusOne) {
  Index();
  return maxPlusOne ? identifiers_.Next(shape_.beforeLargest) : identifiers_.Smallest();
}

bool BrowseSection::Put(std::int32_t id, Fields const& fields) {
  std::string const old = Value(id);
  std::string const value = Join(fields);
  // An exception on the way leaves the index unused, to be made anew.
  bool const indexed = std::exchange(indexed_, false);
  bool const written = file_.WriteStr(shape_.section, IntToStr(id), value);
  if (indexed && written) {
    Forget(id, old);
    Note(id, value);
  }
  indexed_ = indexed;
  return written;
}

bool BrowseSection::Remove(std::int32_t id) {
  std::string const old = Value(id);
  bool const indexed = std::exchange(indexed_, false);
  bool const removed = file_.DeleteKey(shape_.section, IntToStr(id));
  if (indexed && removed) Forget(id, old);
  indexed_ = indexed;
  return removed;
}

bool BrowseSection::Clear() {
  indexed_ = false;
  return file_.EraseSection(shape_.section);
}

// ---- The index ----

void BrowseSection::Index() {
  if (indexed_) return;
  identifiers_ = {};
  owned_.clear();
  Fields fields;
  unsigned long const count = Count();
  for (unsigned long i = 0; i < count; i++) {
    std::int32_t id = -1;
    if (!At(i, id, fields) || id < 0) continue;
    identifiers_.Take(id);
    if (file_.GetKeyName(shape_.section, i) == IntToStr(id)) owned_.emplace(OwnerIn(fields), id);
  }
  indexed_ = true;
}

// The entry now has that value.
void BrowseSection::Note(std::int32_t id, std::string const& value) {
  Fields fields;
  if (id < 0 || !Parse(value, fields)) return;
  identifiers_.Take(id);
  owned_.emplace(OwnerIn(fields), id);
}

// The entry had that value.
void BrowseSection::Forget(std::int32_t id, std::string const& value) {
  Fields fields;
  if (id < 0 || !Parse(value, fields)) return;
  identifiers_.Release(id);
  owned_.erase({OwnerIn(fields), id});
}

}  // namespace zelvane::internal
