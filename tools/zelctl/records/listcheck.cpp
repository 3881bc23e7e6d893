#include "records/listcheck.h"

#include <stdint.h>

#include <map>
#include <memory>

#include "zelvane/api/serverlist.h"
#include "zelvane/api/upstypes.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/strutils.h"

namespace {

using Read = std::optional<std::vector<std::string>>;

std::vector<std::string> TextsOf(std::vector<Field> const& fields, void const* record) {
  std::vector<std::string> texts;
  texts.reserve(fields.size());
  for (Field const& field : fields) texts.push_back(field.get(record));
  return texts;
}

// For keys that the programs make from a number.
std::string NumberKeyFault(std::string const& key) {
  long const number = StrToIntDef(key, -1);
  return number >= 0 && key == IntToStr(number)
             ? ""
             : "expected a number without leading zeros as key; the programs do not find the entry";
}

EntryList Servers() {
  std::shared_ptr<void> const list(OpenServerList(), CloseServerList);
  std::vector<Field> const fields = {Text<&ServerListItem::serverName>("name", ""),
                                     Text<&ServerListItem::serverAddress>("address", ""),
                                     Number<&ServerListItem::serverPort>("port", "", kHighestPort)};
  auto const seen = std::make_shared<std::map<long, std::string>>();
  auto const keyFault = [seen](std::string const& key, std::string const&) -> std::string {
    long const number = StrToIntDef(key, -1);
    if (number < 0) return "expected a number as key; the programs use 0";
    std::string const& first = seen->try_emplace(number, key).first->second;
    return first == key ? "" : "the same number as key " + first + "; the programs remove only key " + IntToStr(number);
  };
  auto const read = [list, fields](unsigned int position, std::string const&) -> Read {
    ServerListItem item;
    if (GetServerListItem(list.get(), position, &item) == 0) return std::nullopt;
    return TextsOf(fields, &item);
  };
  return {"CLILIST",
          "NAME;ADDRESS;PORT",
          fields,
          keyFault,
          read,
          "the programs skip the entry",
          "the programs skip the entry, and the client reads no settings"};
}

EntryList Types() {
  std::shared_ptr<void> const list(OpenUPSTypeList(nullptr), CloseUPSTypeList);
  std::vector<Field> const fields = {
      Text<&UpsTypeItem::upsName>("name", ""), Text<&UpsTypeItem::upsDriver>("driver", ""),
      Text<&UpsTypeItem::cfgModule>("configuration module", ""), Text<&UpsTypeItem::cliModule>("client module", ""),
      Number<&UpsTypeItem::modelIndex>("model", "", INT16_MAX, -1)};
  auto const keyFault = [](std::string const& key, std::string const&) { return NumberKeyFault(key); };
  auto const read = [list, fields](unsigned int, std::string const& key) -> Read {
    UpsTypeItem item;
    auto const number = static_cast<unsigned int>(StrToIntDef(key, 0));
    if (!NumberKeyFault(key).empty() || GetUPSTypeListItemByType(list.get(), number, &item) == 0) return std::nullopt;
    return TextsOf(fields, &item);
  };
  char const skipped[] = "the programs skip the type";
  return {"UPSTYPE", "NAME;DRIVER;MODULE;MODULE;MODEL", fields, keyFault, read, skipped, skipped};
}

struct Device {
  std::int32_t number;
};

EntryList Devices() {
  auto const list = std::make_shared<CfgClass>();
  list->OpenReadOnly(GetZelvanePath() + "usbhid.cfg");
  auto const keyFault = [](std::string const& key, std::string const&) { return NumberKeyFault(key); };
  auto const read = [list](unsigned int, std::string const& key) -> Read {
    if (!NumberKeyFault(key).empty()) return std::nullopt;
    return {{std::to_string(static_cast<std::uint32_t>(list->ReadInt("USBHID", key, 0)))}};
  };
  return {"USBHID", "a number", {Number<&Device::number>("device", "")}, keyFault, read, "", ""};
}

// The programs list a unit by the value, and remove it by its number as key.
EntryList Units() {
  constexpr long kUnits = 100;
  auto const list = std::make_shared<CfgClass>();
  list->OpenReadOnly(GetZelvanePath() + "srvlist.cfg");
  auto const keyFault = [](std::string const& key, std::string const& value) -> std::string {
    long const unit = StrToIntDef(value, kUnits);
    bool const isUnit = unit >= 0 && unit < kUnits;
    return !isUnit || key == IntToStr(unit)
               ? ""
               : "expected " + IntToStr(unit) + " as key; the programs list the unit, but cannot remove it";
  };
  auto const read = [list](unsigned int, std::string const& key) -> Read {
    constexpr std::size_t kWidth = 3;
    return {{FillLeft(list->ReadStr("SRVLIST", key, ""), kWidth, '0').substr(0, kWidth)}};
  };
  return {"SRVLIST", "the number of a unit", {Number<&Device::number>("unit", "", kUnits - 1)}, keyFault, read, "", ""};
}

}  // namespace

std::optional<EntryList> ListIn(std::string const& fileName) {
  if (fileName == "upscli.cfg") return Servers();
  if (fileName == "upstype.cfg") return Types();
  if (fileName == "usbhid.cfg") return Devices();
  if (fileName == "srvlist.cfg") return Units();
  return std::nullopt;
}
