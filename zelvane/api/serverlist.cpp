#include "zelvane/api/serverlist.h"

#include <string>
#include <vector>

#include "zelvane/api/cfghandle_internal.h"
#include "zelvane/api/serverentry_internal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::Cfg;
using zelvane::internal::FieldText;
using zelvane::internal::Guard;
using zelvane::internal::InstallationRoot;
using zelvane::internal::ParseServerEntry;
using zelvane::internal::ServerEntry;

namespace {

unsigned int KeyNumber(CfgClass& list, unsigned long position) {
  return static_cast<unsigned int>(StrToIntDef(list.GetKeyName(position), 0));
}

// The position of the first entry that equals `item`, or the number of entries.
unsigned long Find(CfgClass& list, ServerListItem const& item) {
  unsigned long const count = list.GetKeyCount();
  ServerEntry entry;
  for (unsigned long i = 0; i < count; i++) {
    if (ParseServerEntry(list.ReadStr(i, ""), entry) && entry.name == FieldText(item.serverName) &&
        entry.address == FieldText(item.serverAddress) && entry.port == item.serverPort)
      return i;
  }
  return count;
}

// Returns the smallest number that no key has: with n keys, one of 0 to n is free.
unsigned int FreeNumber(CfgClass& list) {
  unsigned long const count = list.GetKeyCount();
  std::vector<bool> used(count + 1);
  for (unsigned long i = 0; i < count; i++) {
    unsigned int const number = KeyNumber(list, i);
    if (number < used.size()) used[number] = true;
  }
  unsigned int number = 0;
  while (used[number]) number++;
  return number;
}

}  // namespace

void* OpenServerList(void) {
  return Guard<void*>(
      nullptr, [] { return zelvane::internal::OpenHandle(InstallationRoot() + "upscli.cfg", "CLILIST", false); });
}

int GetServerListCount(void* list) { return zelvane::internal::HandleKeyCount(list); }

int GetServerListItem(void* list, unsigned int position, ServerListItem* item) {
  return GetServerListItem2(list, position, item, nullptr);
}

int GetServerListItem2(void* list, unsigned int position, ServerListItem* item, unsigned int* key) {
  if (list == nullptr) return 0;
  return Guard(0, [&] {
    ServerEntry entry;
    if (!ParseServerEntry(Cfg(list)->ReadStr(position, ""), entry)) return 0;
    unsigned int const number = KeyNumber(*Cfg(list), position);
    if (item != nullptr) zelvane::internal::StoreServerEntry(entry, *item);
    if (key != nullptr) *key = number;
    return 1;
  });
}

int AddServerListItem(void* list, ServerListItem const* item) {
  if (list == nullptr || item == nullptr) return 0;
  return Guard(0, [&] { return AddServerListItem2(list, item, FreeNumber(*Cfg(list))); });
}

int AddServerListItem2(void* list, ServerListItem const* item, unsigned int key) {
  if (list == nullptr || item == nullptr) return 0;
  return Guard(0, [&] {
    CfgClass& cfg = *Cfg(list);
    if (Find(cfg, *item) < cfg.GetKeyCount()) return 0;
    return cfg.WriteStr(UIntToStr(key), zelvane::internal::JoinServerEntry(*item)) ? 1 : 0;
  });
}

int RemServerListItem(void* list, ServerListItem const* item) {
  if (list == nullptr || item == nullptr) return 0;
  return Guard(0, [&] {
    CfgClass& cfg = *Cfg(list);
    unsigned long const position = Find(cfg, *item);
    return position < cfg.GetKeyCount() && cfg.DeleteKey(position) ? 1 : 0;
  });
}

int RemServerListItem2(void* list, unsigned int key) {
  if (list == nullptr) return 0;
  // Returns 1 whatever the deletion returns: see the header.
  return Guard(1, [&] {
    Cfg(list)->DeleteKey(UIntToStr(key));
    return 1;
  });
}

int ClearServerList(void* list) {
  if (list == nullptr) return 0;
  return Guard(0, [&] { return Cfg(list)->EraseSection() ? 1 : 0; });
}

int CloseServerList(void* list) { return zelvane::internal::CloseHandle(list); }
