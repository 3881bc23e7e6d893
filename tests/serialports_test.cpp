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
  int const before = test::OpenDescriptors();
  void* handle = nullptr;
  int const count = OpenEnumSerialPorts(&handle);
  ASSERT_NE(handle, nullptr);
  ASSERT_GE(count, 0);
  ASSERT_LE(count, 16);
  auto const& ports = *static_cast<std::vector<portinfo>*>(handle);
  ASSERT_EQ(ports.size(), static_cast<size_t>(count));
  unsigned char last = 0;
  for (int i = 0; i < count; i++) {
    unsigned char number = 0;
    ASSERT_EQ(GetEnumSerialPorts(handle, static_cast<unsigned char>(i), &number), 1) << i;
    EXPECT_GT(number, last) << i;
    EXPECT_LE(number, 16) << i;
    EXPECT_EQ(ports[static_cast<size_t>(i)].name, GetInternalDeviceName(number));
    EXPECT_TRUE(FilePermToRead(ports[static_cast<size_t>(i)].name));
    last = number;
  }
  EXPECT_EQ(CloseEnumSerialPorts(handle), 1);
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST(SerialPorts, Positions) {
  std::vector<portinfo> ports = {{1, "/dev/ttyS0"}, {16, "/dev/ttyS15"}};
  unsigned char number = 99;
  EXPECT_EQ(GetEnumSerialPorts(&ports, 1, &number), 1);
  EXPECT_EQ(number, 16);
  EXPECT_EQ(GetEnumSerialPorts(&ports, 0, nullptr), 1);
  for (unsigned char const position : {2, 3, 255}) {
    EXPECT_EQ(GetEnumSerialPorts(&ports, position, &number), 0) << int{position};
    EXPECT_EQ(GetEnumSerialPorts(&ports, position, nullptr), 0) << int{position};
  }
  EXPECT_EQ(number, 16);
}

TEST(SerialPorts, NullArguments) {
  unsigned char number = 99;
  EXPECT_EQ(OpenEnumSerialPorts(nullptr), 0);
  EXPECT_EQ(GetEnumSerialPorts(nullptr, 0, &number), 0);
  EXPECT_EQ(number, 99);
  EXPECT_EQ(CloseEnumSerialPorts(nullptr), 0);
}

TEST(SystemFacts, Admin) {
  EXPECT_EQ(CurrentUserIsAdmin(), getuid() == 0 || getgid() == 0 ? 1 : 0);
}

TEST(SystemFacts, OsVersionFillsTheBufferWithoutEndingIt) {
  std::string const whole = GetOSVersion();
  ASSERT_GT(whole.size(), 4u);
  unsigned int const length = static_cast<unsigned int>(whole.size());
  for (unsigned int const size : {0u, 1u, 2u, length - 1, length, length + 1, length + 2}) {
    std::string buffer(length + 8, '~');
    EXPECT_EQ(GetOSVersionInfo(buffer.data(), size), size == 0 ? 0 : 1) << size;
    std::string const copied = (whole + '\0').substr(0, size);
    EXPECT_EQ(buffer, copied + std::string(buffer.size() - copied.size(), '~')) << size;
  }
  EXPECT_EQ(GetOSVersionInfo(nullptr, 10), 0);
}

}  // namespace
