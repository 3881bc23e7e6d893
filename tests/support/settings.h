// The system-wide settings file of the tests. The test program has an open() of its own (redirect.cpp), which the
// library finds before the C library's: it sends "/etc/zelvane.conf" to a path that the test names (at first one that
// does not exist), so that no test reads or writes the machine's own settings.
#ifndef ZELVANE_TESTS_SUPPORT_SETTINGS_H
#define ZELVANE_TESTS_SUPPORT_SETTINGS_H

#include <string>

#include "support/scratch.h"

namespace test {

// While it lives: an installation root and a home folder in a scratch folder. `Path("root/")` is the root that the
// settings file names, `Path("home/")` is HOME, `Path("zelvane.conf")` the settings file.
class Installation : public Scratch {
 public:
  Installation();
  ~Installation();

  std::string Root(std::string const& name = "") const { return Path("root/" + name); }
  std::string Home(std::string const& name = "") const { return Path("home/" + name); }

 private:
  std::string oldHome_;
};

// Where "/etc/zelvane.conf" leads from now on.
void SetSettingsFile(std::string const& path);

// The path whose next open fails, once, for want of descriptors; null for none.
extern char const* g_refused;

// Called, once, when a file is about to be created that must not exist: what other programs do meanwhile.
extern void (*g_creating)();

// The folder of the running test program, which is the root where no settings name one.
std::string ProgramFolder();

}  // namespace test

#endif
