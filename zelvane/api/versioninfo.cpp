#include "zelvane/api/versioninfo.h"

#include <cerrno>
#include <string>
#include <system_error>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::CopyToField;
using zelvane::internal::Guard;
using zelvane::internal::kSettingsFile;
using zelvane::internal::kSettingsSection;
using zelvane::internal::OptionalRegCfg;

namespace {

struct Module {
  unsigned short bit;
  char const* key;
  char const* program;
  char const* numbered[2];  // programs with two digits after the name, or null
};

constexpr Module kModules[] = {
    {ZELVANE_MODULE_ZELSRV, "ZELSRV", "zelsrv", {nullptr, nullptr}},
    {ZELVANE_MODULE_SHUTSRV, "SHUTSRV", "shutsrv", {nullptr, nullptr}},
    {ZELVANE_MODULE_CLIENT, "ZELCLI", "zelvane", {"zelcli", "czelcli"}},
    {ZELVANE_MODULE_CONFIG, "ZELCFG", "zelconfig", {"zelcfg", "czelcfg"}},
    {ZELVANE_MODULE_BROWSER, "ZELBRWS", "zelbrws", {nullptr, nullptr}},
};
constexpr int kLastNumbered = 15;
constexpr unsigned short kAllModules = 0x1F;

// Throws std::system_error if the answer is temporarily unknown.
bool IsReadable(std::string const& path) {
  if (FilePermToRead(path)) return true;
  int const reason = errno;
  if (!zelvane::internal::IsLasting(reason)) throw std::system_error(reason, std::generic_category());
  return false;
}

bool IsInstalled(Module const& module, std::string const& root) {
  if (IsReadable(root + module.program)) return true;
  for (char const* family : module.numbered) {
    if (family == nullptr) continue;
    for (int i = 0; i <= kLastNumbered; i++)
      if (IsReadable(root + family + IntToStr(i, 2))) return true;
  }
  return false;
}

unsigned short FindModules(CfgClass& settings, std::string const& root) {
  unsigned short found = 0;
  for (Module const& module : kModules) {
    long const stated = settings.ReadInt(module.key, -1);
    if (stated > 0 || (stated < 0 && IsInstalled(module, root)))
      found = static_cast<unsigned short>(found | module.bit);
  }
  return found;
}

unsigned short WithModules(unsigned short word, unsigned short modules) {
  return static_cast<unsigned short>((word & ~kAllModules) | (modules & kAllModules));
}

bool Fill(VersionInfo& info) {
  OptionalRegCfg settings;
  settings.OpenOrThrow(kSettingsFile, true);
  std::string const root = zelvane::internal::RootIn(settings);
  if (root.empty()) return false;
  settings.SetSection(kSettingsSection);
  std::string const version = settings.ReadStr("VERSION", "4.0+");
  std::string const product = settings.ReadStr("PRODUCT", "Zelvane " + version);
  unsigned short const modules = FindModules(settings, root);
  CopyToField(info.installPath, root);
  CopyToField(info.version, version);
  CopyToField(info.product, product);
  info.modules = WithModules(info.modules, modules);
  return true;
}

}  // namespace

int GetZelvaneVersionInfo(VersionInfo* info) {
  if (info == nullptr) return 0;
  return Guard(0, [&] { return Fill(*info) ? 1 : 0; });
}

int GetZelvaneInstalledModules(unsigned short* mask) {
  VersionInfo info = {};
  if (mask == nullptr || GetZelvaneVersionInfo(&info) == 0) return 0;
  *mask = WithModules(*mask, info.modules);
  return 1;
}
