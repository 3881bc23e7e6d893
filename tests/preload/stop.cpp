// Stops a command that the tests start, with SIGTERM while it creates its first new file, if the variable
// ZELVANE_TEST_STOP is set.
#include <signal.h>
#include <stdlib.h>

namespace test {
extern void (*g_creating)();
}

namespace {

__attribute__((constructor)) void StopLater() {
  if (getenv("ZELVANE_TEST_STOP") != nullptr) test::g_creating = [] { raise(SIGTERM); };
}

}  // namespace
