// What a test must not leave behind: an open descriptor, a child, a temporary file of the library, a file in the
// current folder. The listener fails the test that does, after every one of them.
#ifndef ZELVANE_TESTS_SUPPORT_LEAKS_H
#define ZELVANE_TESTS_SUPPORT_LEAKS_H

#include <gtest/gtest.h>

#include "support/scratch.h"

namespace test {

class Leaks : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(testing::TestInfo const&) override;
  void OnTestEnd(testing::TestInfo const&) override;

 private:
  int descriptors_ = 0;
  bool noChild_ = true;
};

}  // namespace test

#endif
