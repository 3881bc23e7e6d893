// The services of a scratch directory, instead of the system's.
#ifndef ZELVANE_TESTS_SUPPORT_SERVICES_H
#define ZELVANE_TESTS_SUPPORT_SERVICES_H

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "support/scratch.h"
#include "zelvane/system/svc.h"

namespace test {

// An ordinary subclass: as a SvcManager* it is also a handle for the plain C functions.
class Services : public SvcManager {
 public:
  bool GetDaemonInfo(std::string const& dir) override {
    return dir == "/etc/init.d/" && SvcManager::GetDaemonInfo(scratch.Path("init.d/"));
  }

  // Adds a script that records its arguments for Log and continues with `body`, which can name files in the scratch
  // directory.
  void Add(std::string const& file, std::string const& body = "", mode_t mode = 0755) {
    unlink(scratch.Path("init.d/" + file).c_str());  // it may be read-only for this user
    std::string const path =
        scratch.Write("init.d/" + file, "#!/bin/sh\ncd '" + scratch.Path() + "'\necho \"$@\" >>log\n" + body);
    chmod(path.c_str(), mode);
  }

  // Returns the arguments of the scripts since the last time, one line per call.
  std::string Log() {
    std::string const log = scratch.Exists("log") ? scratch.Read("log") : "";
    unlink(scratch.Path("log").c_str());
    return log;
  }

  Scratch scratch;
};

}  // namespace test

#endif
