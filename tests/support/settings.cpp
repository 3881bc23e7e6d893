#include "support/settings.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>

namespace test {

void SetSettingsFile(std::string const& path) { setenv("ZELVANE_TEST_SETTINGS", path.c_str(), 1); }

std::string ProgramFolder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path().string() + "/"; }

Installation::Installation() {
  char const* home = getenv("HOME");
  oldHome_ = home == nullptr ? "" : home;
  Write("zelvane.conf", "[ZELVANE]\nPATH = " + Path("root") + "\n");
  mkdir(Root().c_str(), 0755);
  mkdir(Home().c_str(), 0755);
  setenv("HOME", Path("home").c_str(), 1);
  SetSettingsFile(Path("zelvane.conf"));
}

Installation::~Installation() {
  setenv("HOME", oldHome_.c_str(), 1);
  unsetenv("ZELVANE_TEST_SETTINGS");
}

}  // namespace test
