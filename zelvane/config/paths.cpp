#include "zelvane/config/paths.h"

#include <string_view>
#include <utility>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

using zelvane::internal::Guard;

namespace {

struct MacroName {
  std::string_view name;
  bool inRoot;  // shared by all units; the others are in the working directory
  char const* file;
};

// The path from SetZelvanePath; null if not set. Never freed: functions may use it during program exit.
std::string* g_root = nullptr;

constexpr MacroName kMacros[] = {
    {"//LOGEVTFILE//", false, "logevt.rgt"},        {"//LOGHISTHORA//", false, "loghora.rgt"},
    {"//LOGHISTDIA//", false, "logdia.rgt"},        {"//LOGHISTMES//", false, "logmes.rgt"},
    {"//UPSPOWEROFFFILE//", false, "poweroff.rgt"}, {"//UPSPOWERONFILE//", false, "poweron.rgt"},
    {"//LOGDOCSAVE//", true, "logsave.rgt"},        {"//LOGDOCCLOSE//", true, "logclose.rgt"},
    {"//UPSSRVCFG//", false, "upssrv.cfg"},         {"//UPSCLICFG//", true, "upscli.cfg"},
    {"//USBHIDCFG//", true, "usbhid.cfg"},
};

void ReplacePrefix(std::string& text, std::string_view prefix, std::string const& by) {
  if (text.compare(0, prefix.size(), prefix) == 0) text.replace(0, prefix.size(), by);
}

std::string Expand(char const* name, char const* directory) {
  if (name[0] != '/' || name[1] != '/') return name;  // not a macro: the root is not needed
  std::string const root = zelvane::internal::InstallationRoot();
  std::string const working =
      StrToIntDef(directory, -1) >= 0 ? IncludePathDelimiter(root + directory) : std::string(directory);
  std::string text = name;
  for (MacroName const& macro : kMacros) {
    if (text != macro.name) continue;
    text = (macro.inRoot ? root : working) + macro.file;
    break;
  }
  // Both check the text expanded so far: a working directory can itself begin with a prefix.
  ReplacePrefix(text, "//BASEDIR//", root);
  ReplacePrefix(text, "//UPSCONFIGDIR//", working);
  return text;
}

}  // namespace

std::string zelvane::internal::InstallationRoot() {
  if (g_root != nullptr) return *g_root;
  OptionalRegCfg settings;
  settings.OpenOrThrow(kSettingsFile, true);
  return RootIn(settings);
}

std::string zelvane::internal::RootIn(CfgClass& settings) {
  if (g_root != nullptr) return *g_root;
  std::string root = settings.ReadStr(kSettingsSection, "PATH", "");
  if (root.empty()) root = ExtractFilePath(GetExeName(false));
  return root.empty() ? root : IncludePathDelimiter(root);
}

std::string GetZelvanePath() {
  return Guard(std::string(), [] {
    RegCfgClass settings;
    settings.OpenReadOnly(zelvane::internal::kSettingsFile);  // an unreadable file has no keys
    return zelvane::internal::RootIn(settings);
  });
}

int SetZelvanePath(char const* path) {
  return Guard(0, [&] {
    bool const given = path != nullptr && *path != '\0';
    std::string* const root = given ? new std::string(IncludePathDelimiter(path)) : nullptr;
    delete std::exchange(g_root, root);
    return 1;
  });
}

std::string ParseMacroFileName(char const* name, char const* directory) {
  if (name == nullptr || directory == nullptr) return "";
  return Guard(std::string(), [&] { return Expand(name, directory); });
}

std::string ParseMacroFileName(std::string const& name, std::string const& directory) {
  return ParseMacroFileName(name.c_str(), directory.c_str());
}
