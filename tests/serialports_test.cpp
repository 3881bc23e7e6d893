#include "zelvane/api/serialports.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/scratch.h"
#include "zelvane/core/fileutils.h"

namespace {

TEST(SerialPorts, DeviceNames) {
  struct {
    unsigned int number;
    char const* name;
  } const cases[] = {{1, "/dev/ttyS0"},   {2, "/dev/ttyS1"},   {16, "/dev/ttyS15"},          {256, "/dev/ttyS255"},
                     {257, "/dev/ttyS0"}, {0, "/dev/ttyS255"}, {4294967295u, "/dev/ttyS254"}};
  for (auto const& c : cases) EXPECT_EQ(GetInternalDeviceName(c.number), c.name) << c.number;
}

// Whatever ports this machine has: what a caller may rely on.
TEST(SerialPorts, EnumerationOfThisMachine) {
  int const descriptors = test::OpenDescriptors();
  void* handle = nullptr;
  int const count = OpenEnumSerialPorts(&handle);
  ASSERT_NE(handle, nullptr);
  auto const& ports = *static_cast<std::vector<portinfo>*>(handle);
  ASSERT_EQ(ports.size(), static_cast<size_t>(count));
  unsigned char last = 0;
  for (unsigned int i = 0; i < ports.size(); i++) {
    unsigned char number = 0;
    ASSERT_EQ(GetEnumSerialPorts(handle, static_cast<unsigned char>(i), &number), 1);
    EXPECT_TRUE(last < number && number <= 16) << int{number};
    EXPECT_EQ(ports[i].name, GetInternalDeviceName(number));
    last = number;
  }
  EXPECT_EQ(CloseEnumSerialPorts(handle), 1);
  EXPECT_EQ(test::OpenDescriptors(), descriptors);
  EXPECT_EQ(OpenEnumSerialPorts(nullptr) + CloseEnumSerialPorts(nullptr), 0);
}

TEST(SerialPorts, Positions) {
  std::vector<portinfo> ports = {{1, "/dev/ttyS0"}, {16, "/dev/ttyS15"}};
  unsigned char number = 99;
  EXPECT_EQ(GetEnumSerialPorts(&ports, 1, &number), 1);
  EXPECT_EQ(number, 16);
  EXPECT_EQ(GetEnumSerialPorts(&ports, 0, nullptr), 1);
  EXPECT_EQ(GetEnumSerialPorts(&ports, 2, &number) + GetEnumSerialPorts(&ports, 255, &number), 0);
  EXPECT_EQ(GetEnumSerialPorts(&ports, 2, nullptr) + GetEnumSerialPorts(nullptr, 0, &number), 0);
  EXPECT_EQ(number, 16);
}

TEST(SystemFacts, AdminAndOsVersion) {
  EXPECT_EQ(CurrentUserIsAdmin(), getuid() == 0 || getgid() == 0 ? 1 : 0);
  std::string const whole = GetOSVersion();
  ASSERT_GT(whole.size(), 4u);
  unsigned int const length = static_cast<unsigned int>(whole.size());
  // Text that fills the buffer is not terminated, and nothing behind `size` bytes is touched.
  for (unsigned int const size : {0u, 1u, 2u, length - 1, length, length + 1, length + 2}) {
    std::string buffer(length + 8, '~');
    EXPECT_EQ(GetOSVersionInfo(buffer.data(), size), size == 0 ? 0 : 1) << size;
    std::string const copied = (whole + '\0').substr(0, size);
    EXPECT_EQ(buffer, copied + std::string(buffer.size() - copied.size(), '~')) << size;
  }
  EXPECT_EQ(GetOSVersionInfo(nullptr, 10), 0);
}

}  // namespace
