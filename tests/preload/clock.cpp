// A time() for commands that the tests start, preloaded into them. It returns the value of the variable
// ZELVANE_TEST_NOW, if set.
#include <stdlib.h>
#include <time.h>

extern "C" __attribute__((visibility("default"))) time_t time(time_t* to) noexcept {
  char const* const given = getenv("ZELVANE_TEST_NOW");
  timespec now = {};
  clock_gettime(CLOCK_REALTIME_COARSE, &now);
  time_t const seconds = given != nullptr ? strtol(given, nullptr, 10) : now.tv_sec;
  if (to != nullptr) *to = seconds;
  return seconds;
}
