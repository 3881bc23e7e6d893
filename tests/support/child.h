// Runs actions that must not happen in the test program itself: dropping privileges, being killed.
#ifndef ZELVANE_TESTS_SUPPORT_CHILD_H
#define ZELVANE_TESTS_SUPPORT_CHILD_H

#include <signal.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <type_traits>

#include "support/each.h"

namespace test {

constexpr uid_t kNobody = 65534;

// Runs `body` in a child process. Returns true if all its checks passed.
template <class Body>
bool InChild(Body const& body) {
  pid_t const child = fork();
  if (child == 0) {
    if constexpr (std::is_void_v<std::invoke_result_t<Body const&>>)
      body();
    else
      EXPECT_TRUE(body());
    std::fflush(stdout);  // print the failures
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// The same as a user who is subject to file modes, even if the tests run as root.
template <class Body>
bool AsOrdinaryUser(Body const& body) {
  static_assert(std::is_void_v<std::invoke_result_t<Body const&>>);
  return InChild([&] {
    if (geteuid() == 0) ASSERT_EACH((setgid(kNobody), setuid(kNobody)), 0);
    body();
  });
}

// The same with a limit on the size of files.
template <class Body>
bool WithShortFiles(rlim_t bytes, Body const& body) {
  static_assert(std::is_void_v<std::invoke_result_t<Body const&>>);
  return InChild([&] {
    rlimit const limit = {bytes, bytes};
    signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    body();
  });
}

}  // namespace test

#endif
