#include "zelvane/api/serialports.h"

#include "support/test.h"
#include "zelvane/core/fileutils.h"

namespace {

TEST(SerialPorts, NamesAndPositions) {
  std::string names;
  for (unsigned int const number : {1u, 2u, 16u, 256u, 257u, 0u, 4294967295u}) names += GetInternalDeviceName(number);
  EXPECT_EQ(names, "/dev/ttyS0/dev/ttyS1/dev/ttyS15/dev/ttyS255/dev/ttyS0/dev/ttyS255/dev/ttyS254");
  std::vector<portinfo> ports = {{1, "/dev/ttyS0"}, {16, "/dev/ttyS15"}};
  unsigned char number = 99;
  EXPECT_EACH((GetEnumSerialPorts(&ports, 1, &number), GetEnumSerialPorts(&ports, 0, nullptr)), 1);
  EXPECT_EACH((GetEnumSerialPorts(&ports, 2, &number), GetEnumSerialPorts(&ports, 255, &number)), 0);
  EXPECT_EACH((GetEnumSerialPorts(&ports, 2, nullptr), GetEnumSerialPorts(nullptr, 0, &number)), 0);
  EXPECT_EQ(number, 16);
  // What callers can rely on, whatever ports the machine has.
  void* handle = nullptr;
  int const count = OpenEnumSerialPorts(&handle);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(static_cast<std::vector<portinfo>*>(handle)->size(), static_cast<size_t>(count));
  EXPECT_EQ(CloseEnumSerialPorts(handle), 1);
  EXPECT_EACH((OpenEnumSerialPorts(nullptr), CloseEnumSerialPorts(nullptr)), 0);
}

TEST(SystemFacts, AdminAndOsVersion) {
  EXPECT_EQ(CurrentUserIsAdmin(), getuid() == 0 || getgid() == 0 ? 1 : 0);
  std::string const whole = GetOSVersion();
  unsigned int const length = static_cast<unsigned int>(whole.size());
  // Text that fills the buffer has no NUL, and no byte after `size` changes.
  for (unsigned int const size : {0u, 1u, 2u, length - 1, length, length + 1, length + 2}) {
    std::string buffer(length + 8, '~');
    std::string const copied = (whole + '\0').substr(0, size);
    EXPECT_EQ(GetOSVersionInfo(buffer.data(), size), size == 0 ? 0 : 1) << size;
    EXPECT_EQ(buffer, copied + std::string(buffer.size() - copied.size(), '~')) << size;
  }
  EXPECT_EQ(GetOSVersionInfo(nullptr, 10), 0);
}

}  // namespace
