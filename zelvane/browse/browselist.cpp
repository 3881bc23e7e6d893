#include "zelvane/browse/browselist.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zelvane/browse/browsefile_internal.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::BrowseList;
using zelvane::internal::BrowseSection;
using zelvane::internal::CopyToField;
using zelvane::internal::Entry;
using zelvane::internal::FieldText;
using zelvane::internal::Guard;
using zelvane::internal::InstallationRoot;
using zelvane::internal::Join;
using zelvane::internal::kAddress;
using zelvane::internal::kName;
using zelvane::internal::kNumber;
using zelvane::internal::TrimView;

namespace {

using Ids = std::vector<std::int32_t>;

constexpr std::int32_t kNone = -1;
constexpr char kNoAddress[] = "127.0.0.1";

// Returns the result of `body(list)`; 0 without a list, or if it throws.
template <class R, class Body>
R With(void* list, Body&& body) {
  if (list == nullptr) return R();
  return Guard(R(), [&] { return static_cast<R>(body(*static_cast<BrowseList*>(list))); });
}

// Same for a body that changes the list.
template <class Body>
int Change(void* list, Body&& body) {
  return With<int>(list, [&](BrowseList& l) {
    if (l.halfDone) return false;
    try {
      return static_cast<bool>(body(l));
    } catch (...) {
      l.halfDone = true;
      l.file.ForgetChanges();
      throw;
    }
  });
}

std::int32_t Id(long id) { return static_cast<std::int32_t>(id); }

// Returns whether a field can hold the text without ending there or stopping the next load. Blanks alone are no text: a
// load drops them.
bool IsPlainText(std::string_view text) { return text.find_first_of(";[]\r\n") == std::string_view::npos; }
bool IsName(std::string_view text) { return !TrimView(text).empty() && IsPlainText(text); }
bool IsAddress(std::string_view text) { return text.empty() || IsName(text); }

// The end of every change.
bool Finish(BrowseList& list, bool stamp, bool flush) {
  bool const stamped = !stamp || list.file.WriteInt("DATE", "DATETIME", GetDateTime());
  return (!flush || list.file.FlushCache()) && stamped;
}

bool Add(BrowseSection& section, std::string const& value, bool maxPlusOne, unsigned long* identifier) {
  std::int32_t const id = section.NewIdentifier(maxPlusOne);
  if (identifier != nullptr) *identifier = static_cast<unsigned long>(id);
  return section.Put(id, value);
}

std::int32_t OwnerOrNone(BrowseSection& owners, std::int32_t id) { return owners.Has(id) ? id : kNone; }

std::string ValueOf(BrwsGroupRec const& group, std::int32_t parent) {
  return Join({FieldText(group.name), IntToStr(parent)});
}

std::string ValueOf(BrwsComputerRec const& computer, std::int32_t group) {
  return Join({FieldText(computer.name), FieldText(computer.address), IntToStr(group)});
}

std::string ValueOf(BrwsNobreakRec const& nobreak, std::string_view address, std::int32_t computer) {
  return Join({FieldText(nobreak.name), address, UIntToStr(nobreak.number), IntToStr(computer)});
}

// ---- Removal, in memory ----

bool RemoveUnits(BrowseList& list, std::int32_t computer) {
  Ids removed;
  return list.nobreaks.RemoveOwnedBy(computer, removed);
}

// The identifiers of the computers go to `removed`.
bool RemoveComputers(BrowseList& list, std::int32_t group, Ids& removed) {
  if (!list.computers.RemoveOwnedBy(group, removed)) return false;
  return std::all_of(removed.begin(), removed.end(), [&](std::int32_t id) { return RemoveUnits(list, id); });
}

bool RemoveGroup(BrowseList& list, std::int32_t id) {
  Ids computers;
  return list.groups.Remove(id) && RemoveComputers(list, id, computers);
}

// Removes everything below a group. Chains can be deeper than the stack, so a list holds the groups whose own groups
// are still to be removed. A cycle ends by itself: a removed group belongs to none.
bool RemoveGroupsBelow(BrowseList& list, std::int32_t top) {
  Ids owners = {top};
  while (!owners.empty()) {
    Ids const below = list.groups.OwnedBy(owners.back());
    owners.pop_back();
    for (std::int32_t const id : below) {
      if (!RemoveGroup(list, id)) return false;
      owners.push_back(id);
    }
  }
  return true;
}

int Clear(void* list, BrowseSection BrowseList::*section, bool flush) {
  return Change(list, [&](BrowseList& l) { return (l.*section).Clear() && Finish(l, true, flush); });
}

unsigned long Count(void* list, BrowseSection BrowseList::*section) {
  return With<unsigned long>(list, [&](BrowseList& l) { return (l.*section).Count(); });
}

}  // namespace

// ---- The list ----

void* OpenBrwsList(char const* path) {
  return Guard<void*>(nullptr, [path] {
    auto list = std::make_unique<BrowseList>();
    std::string const name = path == nullptr || *path == '\0' ? InstallationRoot() + "zelbrws.cfg" : path;
    list->file.SetFileName(name.c_str(), false);
    list->file.SetCached(true);
    return list.release();
  });
}

int CloseBrwsList(void* list) {
  std::unique_ptr<BrowseList> const owner(static_cast<BrowseList*>(list));
  return With<int>(list, [](BrowseList& l) { return l.file.Close() && !l.halfDone; });
}

long GetBrwsFileDate(void* list) {
  return With<long>(list, [](BrowseList& l) { return l.file.ReadInt("DATE", "DATETIME", 0); });
}

int UpdateBrwsFileDate(void* list, bool flush) {
  return Change(list, [&](BrowseList& l) { return Finish(l, true, flush); });
}

// ---- Reading ----

unsigned long GetBrwsGroupsCount(void* list) { return Count(list, &BrowseList::groups); }
unsigned long GetBrwsComputersCount(void* list) { return Count(list, &BrowseList::computers); }
unsigned long GetBrwsNobreaksCount(void* list) { return Count(list, &BrowseList::nobreaks); }

int GetBrwsGroupByIndex(void* list, unsigned long index, BrwsGroupRec* group) {
  if (group == nullptr) return 0;
  return With<int>(list, [&](BrowseList& l) {
    Entry entry;
    if (!l.groups.At(index, group->id, entry)) return false;
    CopyToField(group->name, entry.fields[kName]);
    group->parent = entry.owner;
    return true;
  });
}

int GetBrwsComputerByIndex(void* list, unsigned long index, BrwsComputerRec* computer) {
  if (computer == nullptr) return 0;
  return With<int>(list, [&](BrowseList& l) {
    Entry entry;
    if (!l.computers.At(index, computer->id, entry)) return false;
    CopyToField(computer->name, entry.fields[kName]);
    CopyToField(computer->address, entry.fields[kAddress]);
    computer->group = entry.owner;
    return true;
  });
}

int GetBrwsNobreakByIndex(void* list, unsigned long index, BrwsNobreakRec* nobreak) {
  if (nobreak == nullptr) return 0;
  return With<int>(list, [&](BrowseList& l) {
    Entry entry;
    if (!l.nobreaks.At(index, nobreak->id, entry)) return false;
    CopyToField(nobreak->name, entry.fields[kName]);
    nobreak->number = static_cast<std::uint32_t>(entry.Number(kNumber));
    nobreak->computer = entry.owner;
    return true;
  });
}

// ---- Adding ----

int AddBrwsGroup(void* list, BrwsGroupRec const* group, bool maxPlusOne, unsigned long* identifier, bool flush) {
  if (group == nullptr || !IsName(FieldText(group->name))) return 0;
  return Change(list, [&](BrowseList& l) {
    std::string const value = ValueOf(*group, OwnerOrNone(l.groups, group->parent));
    return Add(l.groups, value, maxPlusOne, identifier) && Finish(l, true, flush);
  });
}

int AddBrwsComputer(void* list, BrwsComputerRec const* computer, bool maxPlusOne, unsigned long* identifier,
                    bool flush) {
  if (computer == nullptr || !IsName(FieldText(computer->name)) || !IsAddress(FieldText(computer->address))) return 0;
  return Change(list, [&](BrowseList& l) {
    std::string const value = ValueOf(*computer, OwnerOrNone(l.groups, computer->group));
    return Add(l.computers, value, maxPlusOne, identifier) && Finish(l, true, flush);
  });
}

int AddBrwsNobreak(void* list, BrwsNobreakRec const* nobreak, bool maxPlusOne, unsigned long* identifier, bool flush) {
  if (nobreak == nullptr || !IsName(FieldText(nobreak->name))) return 0;
  return Change(list, [&](BrowseList& l) {
    Entry computer;
    bool const known = l.computers.Find(nobreak->computer, computer);
    std::string const value =
        known ? ValueOf(*nobreak, computer.fields[kAddress], nobreak->computer) : ValueOf(*nobreak, kNoAddress, kNone);
    return Add(l.nobreaks, value, maxPlusOne, identifier) && Finish(l, known, flush);
  });
}

// ---- Changing ----

int EditBrwsGroup(void* list, BrwsGroupRec const* group, bool flush) {
  if (group == nullptr || !IsName(FieldText(group->name))) return 0;
  return Change(list, [&](BrowseList& l) {
    if (!l.groups.HasKey(group->id)) return false;
    return l.groups.Put(group->id, ValueOf(*group, group->parent)) && Finish(l, true, flush);
  });
}

int EditBrwsComputer(void* list, BrwsComputerRec const* computer, bool flush) {
  if (computer == nullptr || !IsName(FieldText(computer->name)) || !IsName(FieldText(computer->address))) return 0;
  return Change(list, [&](BrowseList& l) {
    if (!l.computers.HasKey(computer->id)) return false;
    bool written = l.computers.Put(computer->id, ValueOf(*computer, computer->group));
    if (!written) return false;
    // A key "-1" does not own the units without a computer.
    for (std::int32_t const id : computer->id < 0 ? Ids() : l.nobreaks.OwnedBy(computer->id)) {
      Entry unit;
      if (!l.nobreaks.Find(id, unit)) continue;
      std::string const owner = IntToStr(unit.owner);
      written =
          l.nobreaks.Put(id, Join({unit.fields[kName], FieldText(computer->address), unit.fields[kNumber], owner}));
    }
    return written && Finish(l, true, flush);
  });
}

int EditBrwsNobreak(void* list, BrwsNobreakRec const* nobreak, bool flush) {
  if (nobreak == nullptr || !IsName(FieldText(nobreak->name))) return 0;
  return Change(list, [&](BrowseList& l) {
    Entry computer;
    if (!l.nobreaks.HasKey(nobreak->id) || !l.computers.Find(nobreak->computer, computer)) return false;
    std::string const value = ValueOf(*nobreak, computer.fields[kAddress], nobreak->computer);
    return l.nobreaks.Put(nobreak->id, value) && Finish(l, true, flush);
  });
}

// ---- Removing ----

int RemoveBrwsGroup(void* list, long id, bool /*flush*/) {
  return Change(list, [&](BrowseList& l) {
    return RemoveGroup(l, Id(id)) && RemoveGroupsBelow(l, Id(id)) && Finish(l, true, true);
  });
}

int RemoveBrwsComputer(void* list, long id, bool /*flush*/) {
  return Change(list, [&](BrowseList& l) {
    return l.computers.Remove(Id(id)) && RemoveUnits(l, Id(id)) && Finish(l, true, true);
  });
}

int RemoveBrwsNobreak(void* list, long id, bool flush) {
  return Change(list, [&](BrowseList& l) {
    Entry old;
    bool const attached = l.nobreaks.Read(Id(id), old) && old.owner >= 0;
    return l.nobreaks.Remove(Id(id)) && Finish(l, attached, flush);
  });
}

int RemoveBrwsGroupByGroup(void* list, long parent, bool flush) {
  return Change(list, [&](BrowseList& l) {
    bool const any = !l.groups.OwnedBy(Id(parent)).empty();
    return RemoveGroupsBelow(l, Id(parent)) && Finish(l, true, flush || any);
  });
}

int RemoveBrwsComputerByGroup(void* list, long group, bool flush) {
  return Change(list, [&](BrowseList& l) {
    Ids removed;
    return RemoveComputers(l, Id(group), removed) && Finish(l, true, flush || !removed.empty());
  });
}

int RemoveBrwsNobreakByComputer(void* list, long computer, bool flush) {
  return Change(list,
                [&](BrowseList& l) { return RemoveUnits(l, Id(computer)) && Finish(l, Id(computer) >= 0, flush); });
}

int ClearBrwsGroupsList(void* list, bool flush) { return Clear(list, &BrowseList::groups, flush); }
int ClearBrwsComputersList(void* list, bool flush) { return Clear(list, &BrowseList::computers, flush); }
int ClearBrwsNobreaksList(void* list, bool flush) { return Clear(list, &BrowseList::nobreaks, flush); }
