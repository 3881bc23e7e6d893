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

void Leaks::OnTestEnd(testing::TestInfo const&) {
  EXPECT_EQ(OpenDescriptors(), descriptors_) << "open descriptors";
  EXPECT_EQ(NoChild(), noChild_) << "a child is left";
  EXPECT_EQ(TakeLeftovers(), std::vector<std::string>{}) << "temporary files are left in a scratch folder";
  for (fs::directory_entry const& entry : fs::directory_iterator(".")) {
    ADD_FAILURE() << entry.path() << " is left in the current folder";
    fs::remove_all(entry);
  }
}

}  // namespace test
