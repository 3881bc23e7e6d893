// Common to nearly all tests. The standard library's headers are here, so that they are compiled only once.
#ifndef ZELVANE_TESTS_SUPPORT_TEST_H
#define ZELVANE_TESTS_SUPPORT_TEST_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/each.h"
#include "support/scratch.h"
#include "support/table.h"

namespace fs = std::filesystem;

namespace test {

using Names = std::vector<std::string>;
constexpr char const* kNull = nullptr;

}  // namespace test

#endif
