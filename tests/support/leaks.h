// Fails each test that leaves something behind: an open descriptor, a child, a temporary file of the library, a file in
// the current directory.
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
