#include <gtest/gtest.h>

#include <filesystem>

#include "support/leaks.h"

// The current directory is an empty one, in which no test may leave a file.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  test::Scratch const folder;
  std::filesystem::current_path(folder.Path());
  testing::UnitTest::GetInstance()->listeners().Append(new test::Leaks);
  return RUN_ALL_TESTS();
}
