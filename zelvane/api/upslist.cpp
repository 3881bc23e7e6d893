#include "zelvane/api/upslist.h"

#include <sys/stat.h>

#include <cstring>
#include <string>
#include <vector>

#include "zelvane/config/cfgclass_internal.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

using zelvane::internal::Guard;
using zelvane::internal::OptionalCfg;

namespace {

constexpr long kUnits = 100;
constexpr int kNameWidth = 3;

// Octal, and odd: a decimal 664 that was once meant as an octal one. Installed systems have such folders.
constexpr mode_t kFolderMode = 01230;

// kUnits for a name that is no number.
long UnitNumber(char const* name) {
  return StrToIntDef(FillLeft(name, kNameWidth, '0'), kUnits);
}

bool OpenList(OptionalCfg& list, bool readOnly) {
  return list.SetFileName((GetZelvanePath() + "srvlist.cfg").c_str(), readOnly) && list.SetSection("SRVLIST");
}

// The names in the template's list. False when there is no template, or a name leads out of its folder.
bool ReadTemplate(std::string const& folder, std::vector<std::string>& files) {
  CfgClass list;
  if (!DirExists(folder) || !list.OpenReadOnly(folder + "zelcfg.cfg")) return false;
  list.SetSection("FILES");
  unsigned long const count = list.GetKeyCount();
  for (unsigned long i = 0; i < count; i++) {
    std::string file = list.ReadStr(i, "");
    if (file.empty()) continue;
    if (file.find('/') != std::string::npos || file.find("..") != std::string::npos) return false;
    files.push_back(std::move(file));
  }
  return true;
}

bool MakeFolder(std::string const& root, std::string const& folder) {
  std::string const source = root + "default/";
  std::vector<std::string> files;
  if (!ReadTemplate(source, files) || mkdir(folder.c_str(), kFolderMode) != 0) return false;
  for (std::string const& file : files) {
    if (!CpFile(source + file, folder + file, 0, true)) return false;
    Delay(1);
  }
  return true;
}

bool AddUnit(char const* name) {
  long const number = UnitNumber(name);
  if (number < 0 || number >= kUnits) return false;
  std::string const unit = IntToStr(number, kNameWidth);
  std::string const root = GetZelvanePath();
  std::string const folder = root + unit + "/";
  if (!DirExists(folder) && !MakeFolder(root, folder)) return false;
  OptionalCfg list;
  return OpenList(list, false) && list.WriteStr(IntToStr(number), unit);
}

}  // namespace

int GetUpsListCount(void) {
  return Guard(0, [] {
    OptionalCfg list;
    return OpenList(list, true) ? static_cast<int>(list.GetKeyCount()) : 0;
  });
}

int GetUpsListItem(unsigned int position, char* name) {
  if (name == nullptr) return 0;
  return Guard(0, [&] {
    OptionalCfg list;
    if (!OpenList(list, true) || position >= list.GetKeyCount()) return 0;
    std::string const value = FillLeft(list.ReadStr(position, ""), kNameWidth, '0');
    std::memcpy(name, value.data(), kNameWidth);
    name[kNameWidth] = '\0';
    return 1;
  });
}

int AddUpsListItem(char const* name) {
  if (name == nullptr) return 0;
  return Guard(0, [&] { return AddUnit(name) ? 1 : 0; });
}

int RemUpsListItem(char const* name) {
  if (name == nullptr) return 0;
  return Guard(0, [&] {
    OptionalCfg list;
    return OpenList(list, false) && list.DeleteKey(IntToStr(UnitNumber(name))) ? 1 : 0;
  });
}
