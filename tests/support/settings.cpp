#include "support/settings.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

namespace {

char g_settings[4096] = "/nonexistent/zelvane-test.conf";

int OpenRedirected(char const* name, char const* path, int flags, mode_t mode) {
  using Open = int (*)(char const*, int, ...);
  Open const real = reinterpret_cast<Open>(dlsym(RTLD_NEXT, name));
  return real(path != nullptr && strcmp(path, "/etc/zelvane.conf") == 0 ? g_settings : path, flags, mode);
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int open(char const* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return OpenRedirected("open", path, flags, mode);
}

__attribute__((visibility("default"))) int open64(char const* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return OpenRedirected("open64", path, flags, mode);
}
}

namespace test {

void SetSettingsFile(std::string const& path) {
  g_settings[path.copy(g_settings, sizeof g_settings - 1)] = '\0';
}

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
  SetSettingsFile("/nonexistent/zelvane-test.conf");
}

}  // namespace test
