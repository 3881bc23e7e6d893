// The checks of support/: leftovers fail the test, and EXPECT_EACH names the calls that differ.
#include "support/leaks.h"

#include <gtest/gtest-spi.h>

#include "support/test.h"

namespace {

TEST(Leaks, WhatIsLeftBehindFailsTheTest) {
  testing::TestInfo const& self = *testing::UnitTest::GetInstance()->current_test_info();
  auto scratch = std::make_unique<test::Scratch>();
  int descriptor = -1;
  pid_t child = -1;
  std::pair<char const*, std::function<void()>> const leaks[] = {
      {"open descriptors", [&] { descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC); }},
      {"a child is left", [&] { child = fork() == 0 ? (_exit(0), 0) : 1; }},
      {".zelv1234abcd", [&] { std::ofstream(scratch->Path(".zelv1234abcd")), scratch.reset(); }},
      {"is left in the current folder", [] { std::ofstream("here"); }}};
  for (auto const& [message, leak] : leaks) {
    test::Leaks listener;
    listener.OnTestStart(self);
    leak();
    EXPECT_NONFATAL_FAILURE(listener.OnTestEnd(self), message);
    if (child > 0) wait(nullptr), child = -1;
  }
  close(descriptor);
}

TEST(Each, NamesTheCallThatDiffers) {
  auto const half = [](int number) { return number / 2; };
  EXPECT_EACH((half(2), half(3)), 1);
  EXPECT_NONFATAL_FAILURE(EXPECT_EACH((half(2), half(5)), 1), "half(5) is 2, not 1");
  EXPECT_NONFATAL_FAILURE(EXPECT_EACH((std::string("a,)") + "b", "c"), "a,)b", "d"), "\"c\" is");
}

}  // namespace
