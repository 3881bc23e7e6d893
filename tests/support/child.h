// Actions that must not happen in the test program itself: dropping privileges, being killed.
#ifndef ZELVANE_TESTS_SUPPORT_CHILD_H
#define ZELVANE_TESTS_SUPPORT_CHILD_H

#include <signal.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace test {

constexpr uid_t kNobody = 65534;

// Runs `body` in a child process and returns whether it returned true there.
inline bool InChild(std::function<bool()> const& body) {
  pid_t const child = fork();
  if (child == 0) _exit(body() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Same as an ordinary user, to whom file modes apply, even if the tests run as root.
inline bool AsOrdinaryUser(std::function<bool()> const& body) {
  return InChild([&] { return (geteuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0)) && body(); });
}

// Same with a limit on the size of files, in bytes.
inline bool WithShortFiles(rlim_t bytes, std::function<bool()> const& body) {
  rlimit const limit = {bytes, bytes};
  return InChild([&] { return signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0 && body(); });
}

}  // namespace test

#endif
