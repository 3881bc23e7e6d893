#include "zelvane/logs/proglist.h"

#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/bytes_internal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/datetime_internal.h"
#include "zelvane/core/safesave_internal.h"
#include "zelvane/logs/schedule_internal.h"

using zelvane::internal::Guard;
using zelvane::internal::kDaySeconds;
using zelvane::internal::LoadLe32;
using zelvane::internal::ReadResult;
using zelvane::internal::ReadWhole;
using zelvane::internal::ScheduleEntries;
using zelvane::internal::StoreLe32;

namespace {

constexpr std::size_t kEntrySize = sizeof(reg_proglist);

ProgList* List(void* handle) { return static_cast<ProgList*>(handle); }

}  // namespace

bool folddatetime(reg_proglist const& entry) { return entry.dateTime < GetDateTime(); }

bool fcomp(reg_proglist const& first, reg_proglist const& second) { return first.dateTime < second.dateTime; }

ProgList::ProgList() : entries_(std::make_unique<ScheduleEntries>()) {}

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
  return static_cast<unsigned long>(entries_->Size());
}

bool ProgList::GetRegByIndex(long index, reg_proglist* entry) {
  if (entry == nullptr || index < 0 || static_cast<unsigned long>(index) >= entries_->Size()) return false;
  *entry = entries_->At(static_cast<std::size_t>(index));
  return true;
}

bool ProgList::GetNextReg(reg_proglist* entry) {
  if (file_.empty() || entry == nullptr) return false;
  long const now = GetDateTime();
  return entries_->Any([now, entry](reg_proglist const& each) {
    if (each.dateTime <= now) return false;
    *entry = each;
    return true;
  });
}

// The end of every change.
bool ProgList::SaveUnlessCached() { return cached_ || WriteToFile(); }

bool ProgList::AddReg(reg_proglist* entry) {
  if (file_.empty() || entry == nullptr) return false;
  // A temporary read failure, such as a lack of descriptors, must not lose the file for one more entry.
  if (unread_) ReadFromFile();
  return Guard(false, [&] {
    entries_->Add(*entry);
    unread_ = false;
    return SaveUnlessCached();
  });
}

bool ProgList::RemReg(reg_proglist const* entry) {
  if (file_.empty() || entry == nullptr) return false;
  return Guard(false, [&] {
    entries_->RemoveFirstOf(entry->dateTime / kDaySeconds);
    return SaveUnlessCached();
  });
}

bool ProgList::ClearList() {
  if (file_.empty()) return false;
  *entries_ = ScheduleEntries();
  unread_ = false;
  return SaveUnlessCached();
}

bool ProgList::ReadFromFile() {
  *entries_ = ScheduleEntries();
  unread_ = true;
  return Guard(false, [&] {
    std::string bytes;
    bool const read = ReadWhole(file_, bytes) == ReadResult::kOk;
    if (!read) {
      unread_ = errno != ENOENT;
      return false;
    }
    ScheduleEntries entries;
    auto const* const data = reinterpret_cast<unsigned char const*>(bytes.data());
    for (std::size_t at = 0; bytes.size() - at >= kEntrySize; at += kEntrySize)
      entries.Add({static_cast<std::int32_t>(LoadLe32(data + at))});
    *entries_ = std::move(entries);
    unread_ = false;
    return true;
  });
}

bool ProgList::WriteToFile() {
  if (file_.empty() || unread_) return false;
  return Guard(false, [&] {
    RefreshList();
    std::string bytes;
    bytes.reserve(entries_->Size() * kEntrySize);
    entries_->Any([&bytes](reg_proglist const& entry) {
      unsigned char stored[kEntrySize];
      StoreLe32(stored, static_cast<std::uint32_t>(entry.dateTime));
      bytes.append(reinterpret_cast<char const*>(stored), kEntrySize);
      return false;
    });
    return zelvane::internal::SafeSave(file_, bytes);
  });
}

void ProgList::RefreshList() { entries_->Refresh(GetDateTime()); }

bool ProgList::FlushCache() { return WriteToFile(); }

// ---- Plain C functions ----

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
