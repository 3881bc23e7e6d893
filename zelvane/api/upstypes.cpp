#include "zelvane/api/upstypes.h"

#include <memory>
#include <string>
#include <string_view>

#include "zelvane/api/cfghandle_internal.h"
#include "zelvane/api/typeentry_internal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::Cfg;
using zelvane::internal::CopyToBuffer;
using zelvane::internal::CopyToField;
using zelvane::internal::Guard;
using zelvane::internal::InstallationRoot;
using zelvane::internal::ParseTypeEntry;
using zelvane::internal::TypeEntry;

namespace {

constexpr char kUnknownModel[] = "AUTO";

bool ReadType(CfgClass& table, unsigned int type, UpsTypeItem& item) {
  TypeEntry entry;
  if (!ParseTypeEntry(table.ReadStr(UIntToStr(type), ""), entry)) return false;
  item.upsType = static_cast<int32_t>(type);
  item.modelIndex = entry.modelIndex;
  CopyToField(item.upsName, entry.name);
  CopyToField(item.upsDriver, entry.driver);
  CopyToField(item.cfgModule, entry.cfgModule);
  CopyToField(item.cliModule, entry.cliModule);
  return true;
}

std::string NameInModelFile(short modelIndex, unsigned int subModel) {
  zelvane::internal::OptionalCfg model;
  // A missing or unreadable file has no keys.
  model.OpenOrThrow(InstallationRoot() + "default/upscfg" + IntToStr(modelIndex, 2) + ".cfg", true);
  return model.ReadStr(UIntToStr(subModel), "MODELO", "");
}

std::string NameInTypeTable(short modelIndex) {
  std::unique_ptr<void, int (*)(void*)> const table(OpenUPSTypeList(nullptr), CloseUPSTypeList);
  int const count = GetUPSTypeListCount(table.get());
  for (int i = 0; i < count; i++) {
    UpsTypeItem item;
    if (GetUPSTypeListItem(table.get(), static_cast<unsigned int>(i), &item) != 0 && item.modelIndex == modelIndex)
      return item.upsName;
  }
  return "";
}

}  // namespace

void* OpenUPSTypeList(char const* path) {
  return Guard<void*>(nullptr, [&] {
    std::string const table = path == nullptr || *path == '\0' ? InstallationRoot() + "upstype.cfg" : path;
    return zelvane::internal::OpenHandle(table, "UPSTYPE", true);
  });
}

int GetUPSTypeListCount(void* list) { return zelvane::internal::HandleKeyCount(list); }

int GetUPSTypeListItem(void* list, unsigned int position, UpsTypeItem* item) {
  if (list == nullptr || item == nullptr) return 0;
  return Guard(0, [&] {
    if (position >= Cfg(list)->GetKeyCount()) return 0;
    long const type = StrToIntDef(Cfg(list)->GetKeyName(position), 0);
    return GetUPSTypeListItemByType(list, static_cast<unsigned int>(type), item);
  });
}

int GetUPSTypeListItemByType(void* list, unsigned int type, UpsTypeItem* item) {
  if (list == nullptr || item == nullptr) return 0;
  return Guard(0, [&] { return ReadType(*Cfg(list), type, *item) ? 1 : 0; });
}

int CloseUPSTypeList(void* list) { return zelvane::internal::CloseHandle(list); }

int GetUPSModelName(short modelIndex, unsigned int subModel, char* buffer, unsigned int size) {
  if (buffer == nullptr || size < 2) return 0;
  if (modelIndex < 0) {
    CopyToBuffer(buffer, size, kUnknownModel);
    return 1;
  }
  std::string const name = Guard(std::string(), [&] {
    std::string const own = NameInModelFile(modelIndex, subModel);
    return own.empty() ? NameInTypeTable(modelIndex) : own;
  });
  CopyToBuffer(buffer, size, name.empty() ? std::string_view(kUnknownModel) : name);
  return name.empty() ? 0 : 1;
}

int GetUPSCapabilities(unsigned int kind, unsigned int* mask) {
  constexpr unsigned int kAll = 0x3FFFFFF;
  constexpr unsigned int kMasks[] = {0x184000, kAll, 0x3BFF7FF, 0x15D6EF, 0x3BFF7FF, 0x3BFF7FF};
  if (mask == nullptr) return 0;
  *mask = kind < sizeof kMasks / sizeof kMasks[0] ? kMasks[kind] : kAll;
  return 1;
}
