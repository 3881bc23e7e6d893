#include "support/leaks.h"

#include <filesystem>

#include "support/processes.h"

namespace fs = std::filesystem;

namespace test {

void Leaks::OnTestStart(testing::TestInfo const&) {
  descriptors_ = OpenDescriptors();
  noChild_ = NoChild();
  TakeLeftovers();
}

void Leaks::OnTestEnd(testing::TestInfo const& test) {
  EXPECT_EQ(OpenDescriptors(), descriptors_) << "open descriptors";
  EXPECT_EQ(NoChild(), noChild_) << "a child is left";
  std::vector<std::string> const leftovers = TakeLeftovers();
  bool const transcript = std::string(test.test_suite_name()) == "Transcript/Zelctl";  // creates such files itself
  EXPECT_TRUE(leftovers.empty() || transcript) << "temporary files: " << testing::PrintToString(leftovers);
  for (fs::directory_entry const& entry : fs::directory_iterator(".")) {
    ADD_FAILURE() << entry.path() << " is left in the current folder";
    fs::remove_all(entry);
  }
}

}  // namespace test
