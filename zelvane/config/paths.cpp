#include "zelvane/config/paths.h"

#include <string_view>
#include <utility>

#include "zelvane/config/cfgclass.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

using zelvane::internal::Guard;

namespace {

struct MacroName {
  std::string_view name;
  bool inRoot;  // shared by all units; the others lie in the working directory
  char const* file;
};

// What SetZelvanePath was given; null without that. Never freed: functions may ask for it while the program ends.
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
  std::string const root = zelvane::internal::InstallationRoot();
  std::string const working =
      StrToIntDef(directory, -1) >= 0 ? IncludePathDelimiter(root + directory) : std::string(directory);
  std::string text = name;
  for (MacroName const& macro : kMacros) {
    if (text != macro.name) continue;
    text = (macro.inRoot ? root : working) + macro.file;
    break;
  }
  // Both look at what has come out so far: a working directory may itself begin with a prefix.
  ReplacePrefix(text, "//BASEDIR//", root);
  ReplacePrefix(text, "//UPSCONFIGDIR//", working);
  return text;
}

}  // namespace

std::string zelvane::internal::InstallationRoot() {
  if (g_root != nullptr) return *g_root;
  RegCfgClass settings;
  settings.SetFileName(kSettingsFile, false);
  std::string root = settings.ReadStr(kSettingsSection, "PATH", "");
  if (root.empty()) root = ExtractFilePath(GetExeName(false));
  return root.empty() ? root : IncludePathDelimiter(root);
}

std::string GetZelvanePath() { return Guard(std::string(), zelvane::internal::InstallationRoot); }

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
