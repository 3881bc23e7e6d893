// The services of a scratch folder, in the place of the system's.
#ifndef ZELVANE_TESTS_SUPPORT_SERVICES_H
#define ZELVANE_TESTS_SUPPORT_SERVICES_H

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "support/scratch.h"
#include "zelvane/system/svc.h"

namespace test {

// An object like any other: as a SvcManager* it is a handle of the plain functions, too.
class Services : public SvcManager {
 public:
  bool GetDaemonInfo(std::string const& dir) override {
    return dir == "/etc/init.d/" && SvcManager::GetDaemonInfo(scratch.Path("init.d/"));
  }

  // A script that notes its arguments for Log and goes on with `body`, which may name files in the scratch folder.
  void Add(std::string const& file, std::string const& body = "", mode_t mode = 0755) {
    unlink(scratch.Path("init.d/" + file).c_str());  // one that this user may not write
    std::string const path =
        scratch.Write("init.d/" + file, "#!/bin/sh\ncd '" + scratch.Path() + "'\necho \"$@\" >>log\n" + body);
    chmod(path.c_str(), mode);
  }

  // What the scripts were called with since the last time, a line a call.
  std::string Log() {
    std::string const log = scratch.Exists("log") ? scratch.Read("log") : "";
    unlink(scratch.Path("log").c_str());
    return log;
  }

  Scratch scratch;
};

}  // namespace test

#endif
