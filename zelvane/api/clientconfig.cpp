#include "zelvane/api/clientconfig.h"

#include <string>

#include "zelvane/api/record_internal.h"
#include "zelvane/api/serverentry_internal.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

namespace {

using namespace zelvane::internal;
using namespace zelvane::internal::table;

constexpr char kList[] = "CLILIST";

// The server has no key of its own: it is the first entry of the list.

bool ReadServer(CfgClass& file, Row const&, void* record) {
  ServerEntry entry;
  if (!ParseServerEntry(file.ReadStr(kList, 0UL, kDefaultServerEntry), entry)) return false;
  StoreServerEntry(entry, *static_cast<ClientConfig*>(record));
  return true;
}

bool WriteServer(CfgClass& file, Row const& row, void const* record) {
  std::string const value = JoinServerEntry(*static_cast<ClientConfig const*>(record));
  if (file.GetKeyCount(kList) > 0) return file.WriteStr(kList, 0UL, value.c_str());
  return file.WriteStr(kList, row.key, value.c_str());
}

bool ReadLibrary(CfgClass& file, Row const& row, void* record) {
  CopyToField(static_cast<ClientConfig*>(record)->libName, LowerCase(file.ReadStr(row.section, row.key, row.text)));
  return true;
}

constexpr Step kServer = {ReadServer, WriteServer};
constexpr Step kLibrary = {ReadLibrary, nullptr};

#define ZELVANE_CLIENT(field) ZELVANE_FIELD(ClientConfig, field)

constexpr Row kRows[] = {
    Text(kList, "0", ZELVANE_CLIENT(serverName), "localhost", &kServer),
    Text(ZELVANE_CLIENT(serverAddress), "127.0.0.1"),
    Unsigned(ZELVANE_CLIENT(serverPort), kDefaultPort),
    Text("UPSCLI", "LIBNAME", ZELVANE_CLIENT(libName), "upscli", &kLibrary),
};

constexpr Row kUserRows[] = {
    Unsigned("ZELVANE", "LANGID", ZELVANE_CLIENT(langId), 0),
    Unsigned("ZELVANE", "COLORSCH", ZELVANE_CLIENT(colorScheme), 0),
};

static_assert(RowsFit(sizeof(ClientConfig), kRows, kUserRows), "rows outside the record or on top of each other");

std::string SettingsPath() { return InstallationRoot() + "upscli.cfg"; }

}  // namespace

int GetClientConfig(ClientConfig* cfg) {
  if (cfg == nullptr) return 0;
  return Guard(false, [&] {
    return ReadRowsFrom<RegCfgClass>(UserSettingsPath(), kUserRows, cfg) &&
           ReadRowsFrom<CfgClass>(SettingsPath(), kRows, cfg);
  });
}

int GetClientDefConfig(ClientConfig* cfg) {
  if (cfg == nullptr) return 0;
  SetDefaults(kRows, cfg);
  SetDefaults(kUserRows, cfg);
  return 1;
}

int SetClientConfig(ClientConfig const* cfg) {
  if (cfg == nullptr) return 0;
  return Guard(false, [&] {
    return WriteRowsTo<RegCfgClass>(UserSettingsPath(), Saving::kOnce, kUserRows, cfg) &&
           WriteRowsTo<CfgClass>(SettingsPath(), Saving::kEachChange, kRows, cfg);
  });
}
