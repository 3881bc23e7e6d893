#include "zelvane/api/upslist.h"

#include <sys/stat.h>

#include <cstring>
#include <string>
#include <vector>

#include "zelvane/api/settingsfile_internal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/settings_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

using zelvane::internal::ChangeFile;
using zelvane::internal::Guard;
using zelvane::internal::InstallationRoot;
using zelvane::internal::Saving;

namespace {

constexpr long kUnits = 100;
constexpr int kNameWidth = 3;
constexpr char kSection[] = "SRVLIST";

// Octal, and odd: a decimal 664 that was once meant as octal. Installed systems have such directories.
constexpr mode_t kFolderMode = 01230;

// Returns kUnits for a name that is not a number.
long UnitNumber(char const* name) { return StrToIntDef(FillLeft(name, kNameWidth, '0'), kUnits); }

constexpr char kListFile[] = "srvlist.cfg";

// A list that cannot be read has no entries.
void OpenList(CfgClass& list) {
  list.OpenReadOnly(InstallationRoot() + kListFile);
  list.SetSection(kSection);
}

// Reads the names in the template's list. Returns false if there is no template, or a name leads out of its directory.
bool ReadTemplate(std::string const& folder, std::vector<std::string>& files) {
  CfgClass list;
  if (!list.OpenReadOnly(folder + "zelcfg.cfg")) return false;
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

// A FIFO or a device can be endless, and would never be copied.
bool IsFile(std::string const& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool MakeFolder(std::string const& root, std::string const& folder) {
  std::string const source = root + "default/";
  std::vector<std::string> files;
  if (!ReadTemplate(source, files) || mkdir(folder.c_str(), kFolderMode) != 0) return false;
  for (std::string const& file : files) {
    if (!IsFile(source + file) || !CpFile(source + file, folder + file, 0, true)) return false;
    Delay(1);
  }
  return true;
}

bool AddUnit(char const* name) {
  long const number = UnitNumber(name);
  if (number < 0 || number >= kUnits) return false;
  std::string const unit = IntToStr(number, kNameWidth);
  std::string const root = InstallationRoot();
  std::string const folder = root + unit + "/";
  if (!DirExists(folder) && !MakeFolder(root, folder)) return false;
  return ChangeFile<CfgClass>(root + kListFile, Saving::kOnce, [&](CfgClass& list) {
    return list.WriteStr(kSection, IntToStr(number).c_str(), unit.c_str());
  });
}

}  // namespace

int GetUpsListCount(void) {
  return Guard(0, [] {
    CfgClass list;
    OpenList(list);
    return static_cast<int>(list.GetKeyCount());
  });
}

int GetUpsListItem(unsigned int position, char* name) {
  if (name == nullptr) return 0;
  return Guard(0, [&] {
    CfgClass list;
    OpenList(list);
    if (position >= list.GetKeyCount()) return 0;
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
    std::string const key = IntToStr(UnitNumber(name));
    bool const removed = ChangeFile<CfgClass>(InstallationRoot() + kListFile, Saving::kOnce,
                                              [&](CfgClass& list) { return list.DeleteKey(kSection, key.c_str()); });
    return removed ? 1 : 0;
  });
}
