#include "zelvane/logs/proglist.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/bytes_internal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/safesave_internal.h"

using zelvane::internal::Guard;
using zelvane::internal::LoadLe32;
using zelvane::internal::ReadResult;
using zelvane::internal::ReadWhole;
using zelvane::internal::StoreLe32;

namespace {

using Entries = std::deque<reg_proglist>;

constexpr std::size_t kEntrySize = sizeof(reg_proglist);

std::int32_t DayOf(reg_proglist const& entry) { return entry.dateTime / 86400; }

// The first entry of that day. A sorted list is not searched from the front: emptying a long one entry by entry would
// take quadratic time.
Entries::iterator FindDay(Entries& entries, bool sorted, std::int32_t day) {
  auto const before = [day](reg_proglist const& entry) { return DayOf(entry) < day; };
  auto const on = [day](reg_proglist const& entry) { return DayOf(entry) == day; };
  if (!sorted) return std::find_if(entries.begin(), entries.end(), on);
  auto const first = std::partition_point(entries.begin(), entries.end(), before);
  return first != entries.end() && on(*first) ? first : entries.end();
}

ProgList* List(void* handle) { return static_cast<ProgList*>(handle); }

}  // namespace

bool folddatetime(reg_proglist const& entry) { return entry.dateTime < GetDateTime(); }

bool fcomp(reg_proglist const& first, reg_proglist const& second) { return first.dateTime < second.dateTime; }

ProgList::~ProgList() = default;

bool ProgList::SetFile(char const* name) {
  if (name == nullptr) return false;
  return Guard(false, [&] {
    file_ = name;
    ReadFromFile();
    return true;
  });
}

void ProgList::SetCached(bool on) { cached_ = on; }

unsigned long ProgList::GetRegCount() {
  if (file_.empty()) return 0;
  RefreshList();
  return static_cast<unsigned long>(entries_.size());
}

bool ProgList::GetRegByIndex(long index, reg_proglist* entry) {
  if (entry == nullptr || index < 0 || static_cast<unsigned long>(index) >= entries_.size()) return false;
  *entry = entries_[static_cast<std::size_t>(index)];
  return true;
}

bool ProgList::GetNextReg(reg_proglist* entry) {
  if (file_.empty() || entry == nullptr) return false;
  long const now = GetDateTime();
  auto const next = std::find_if(entries_.begin(), entries_.end(), [&](auto const& e) { return e.dateTime > now; });
  if (next == entries_.end()) return false;
  *entry = *next;
  return true;
}

// What every change ends with.
bool ProgList::Changed() { return cached_ || WriteToFile(); }

bool ProgList::AddReg(reg_proglist* entry) {
  if (file_.empty() || entry == nullptr) return false;
  // What could not be read for a moment, with no descriptor left, say, must not be lost for one more entry.
  if (unread_) ReadFromFile();
  return Guard(false, [&] {
    bool const inOrder = entries_.empty() || (sorted_ && !fcomp(*entry, entries_.back()));
    entries_.push_back(*entry);
    sorted_ = inOrder;
    unread_ = false;
    return Changed();
  });
}

bool ProgList::RemReg(reg_proglist const* entry) {
  if (file_.empty() || entry == nullptr) return false;
  auto const found = FindDay(entries_, sorted_, DayOf(*entry));
  if (found != entries_.end()) entries_.erase(found);
  return Changed();
}

bool ProgList::ClearList() {
  if (file_.empty()) return false;
  entries_.clear();
  sorted_ = true;
  unread_ = false;
  return Changed();
}

bool ProgList::ReadFromFile() {
  entries_.clear();
  sorted_ = true;
  unread_ = true;
  return Guard(false, [&] {
    std::string bytes;
    bool const read = ReadWhole(file_, bytes) == ReadResult::kOk;
    if (!read) {
      unread_ = errno != ENOENT;
      return false;
    }
    Entries entries;
    auto const* const data = reinterpret_cast<unsigned char const*>(bytes.data());
    for (std::size_t at = 0; bytes.size() - at >= kEntrySize; at += kEntrySize)
      entries.push_back({static_cast<std::int32_t>(LoadLe32(data + at))});
    sorted_ = std::is_sorted(entries.begin(), entries.end(), fcomp);
    entries_ = std::move(entries);
    unread_ = false;
    return true;
  });
}

bool ProgList::WriteToFile() {
  if (file_.empty() || unread_) return false;
  return Guard(false, [&] {
    RefreshList();
    std::string bytes(entries_.size() * kEntrySize, '\0');
    auto* at = reinterpret_cast<unsigned char*>(bytes.data());
    for (reg_proglist const& entry : entries_) {
      StoreLe32(at, static_cast<std::uint32_t>(entry.dateTime));
      at += kEntrySize;
    }
    return zelvane::internal::SafeSave(file_, bytes);
  });
}

void ProgList::RefreshList() {
  long const now = GetDateTime();
  auto const passed = [now](reg_proglist const& entry) { return entry.dateTime < now; };
  if (sorted_) {
    entries_.erase(entries_.begin(), std::partition_point(entries_.begin(), entries_.end(), passed));
    return;
  }
  entries_.erase(std::remove_if(entries_.begin(), entries_.end(), passed), entries_.end());
  std::stable_sort(entries_.begin(), entries_.end(), fcomp);
  sorted_ = true;
}

bool ProgList::FlushCache() { return WriteToFile(); }

// ---- Exported functions ----

void* OpenProgList(char const* path) {
  if (path == nullptr) return nullptr;
  return Guard<void*>(nullptr, [&]() -> void* {
    auto list = std::make_unique<ProgList>();
    list->SetCached(true);
    return list->SetFile(path) ? list.release() : nullptr;
  });
}

int CloseProgList(void* list) {
  if (list == nullptr) return 0;
  bool const written = List(list)->FlushCache();
  delete List(list);
  return written ? 1 : 0;
}

unsigned long GetProgListRegCount(void* list) { return list == nullptr ? 0 : List(list)->GetRegCount(); }

int GetProgListRegByIndex(void* list, long index, reg_proglist* entry) {
  return list != nullptr && List(list)->GetRegByIndex(index, entry) ? 1 : 0;
}

int AddProgListReg(void* list, reg_proglist const* entry) {
  if (list == nullptr || entry == nullptr) return 0;
  reg_proglist added = *entry;
  return List(list)->AddReg(&added) ? 1 : 0;
}

int RemProgListReg(void* list, reg_proglist const* entry) {
  return list != nullptr && List(list)->RemReg(entry) ? 1 : 0;
}

int ClearProgList(void* list) { return list != nullptr && List(list)->ClearList() ? 1 : 0; }
