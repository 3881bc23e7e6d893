// An open() that redirects "/etc/zelvane.conf" to the path in the variable ZELVANE_TEST_SETTINGS, or to one that does
// not exist, and that can be made to fail. It is part of the test program, where the library finds it before the C
// library's, and of a separate object that is preloaded into commands.
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

namespace test {

char const* g_refused = nullptr;
void (*g_creating)() = nullptr;

}  // namespace test

namespace {

int OpenRedirected(char const* name, char const* path, int flags, mode_t mode) {
  using Open = int (*)(char const*, int, ...);
  Open const real = reinterpret_cast<Open>(dlsym(RTLD_NEXT, name));
  if (path != nullptr && strcmp(path, "/etc/zelvane.conf") == 0) {
    char const* const settings = getenv("ZELVANE_TEST_SETTINGS");
    path = settings != nullptr ? settings : "/nonexistent/zelvane-test.conf";
  }
  if (test::g_refused != nullptr && path != nullptr && strcmp(path, test::g_refused) == 0) {
    test::g_refused = nullptr;
    errno = EMFILE;
    return -1;
  }
  if (test::g_creating != nullptr && (flags & O_EXCL) != 0) {
    auto const creating = test::g_creating;
    test::g_creating = nullptr;
    creating();
  }
  return real(path, flags, mode);
}

// Processes started by a command may have another word size, and the loader would complain.
__attribute__((constructor)) void LeaveChildrenAlone() { unsetenv("LD_PRELOAD"); }

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
