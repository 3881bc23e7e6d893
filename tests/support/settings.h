// The system-wide settings file of the tests. The test program has its own open() (redirect.cpp), which the library
// finds before the C library's. It redirects "/etc/zelvane.conf" to a path that the test names (at first one that does
// not exist), so that no test reads or writes the machine's own settings.
#ifndef ZELVANE_TESTS_SUPPORT_SETTINGS_H
#define ZELVANE_TESTS_SUPPORT_SETTINGS_H

#include <string>

#include "support/scratch.h"

namespace test {

// An installation root and a home directory in a scratch directory, for the lifetime of the object. `Path("root/")` is
// the root that the settings file names, `Path("home/")` is HOME, `Path("zelvane.conf")` the settings file.
class Installation : public Scratch {
 public:
  Installation();
  ~Installation();

  std::string Root(std::string const& name = "") const { return Path("root/" + name); }
  std::string Home(std::string const& name = "") const { return Path("home/" + name); }

 private:
  std::string oldHome_;
};

// Sets the path to which "/etc/zelvane.conf" is redirected.
void SetSettingsFile(std::string const& path);

// The path whose next open fails, once, for lack of descriptors; null for none.
extern char const* g_refused;

// Called once, when a file that must not exist is about to be created: simulates other programs.
extern void (*g_creating)();

// Returns the directory of the running test program, which is the root if no settings name one.
std::string ProgramFolder();

}  // namespace test

#endif
