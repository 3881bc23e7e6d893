#include "zelvane/api/serialports_internal.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdarg.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/scratch.h"

namespace {

std::vector<std::string> g_probed;
int g_lines = -1;  // what the driver of the test answers to TIOCMGET: the lines, or a failure when it is negative
int g_flags = 0;   // of the descriptor that it was asked about

bool OnlyPorts1And2And16(std::string const& device) {
  g_probed.push_back(device);
  return device == "/dev/ttyS0" || device == "/dev/ttyS1" || device == "/dev/ttyS15";
}

}  // namespace

// The test program's own driver. No serial hardware can be counted on, so the library's question comes here.
extern "C" __attribute__((visibility("default"))) int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request != TIOCMGET) {
    using Ioctl = int (*)(int, unsigned long, ...);
    return reinterpret_cast<Ioctl>(dlsym(RTLD_NEXT, "ioctl"))(fd, request, argument);
  }
  g_flags = fcntl(fd, F_GETFL);
  if (g_lines < 0) {
    errno = EIO;
    return -1;
  }
  *static_cast<int*>(argument) = g_lines;
  return 0;
}

namespace {

using zelvane::internal::FindSerialPorts;
using zelvane::internal::HasModemLines;

TEST(SerialPortSearch, SixteenPortsInOrder) {
  g_probed.clear();
  std::string found;
  for (portinfo const& port : FindSerialPorts(OnlyPorts1And2And16))
    found += std::to_string(port.number) + port.name + " ";
  EXPECT_EQ(found, "1/dev/ttyS0 2/dev/ttyS1 16/dev/ttyS15 ");
  ASSERT_EQ(g_probed.size(), 16u);
  for (size_t i = 0; i < 16; i++) EXPECT_EQ(g_probed[i], "/dev/ttyS" + std::to_string(i));
}

TEST(SerialPortSearch, TheDeviceMustAnswer) {
  test::Scratch scratch;
  scratch.Write("ttyS0", "untouched");
  // A FIFO without a writer stands for a line without a carrier: only a non-blocking open() comes back.
  ASSERT_EQ(mkfifo(scratch.Path("ttyS1").c_str(), 0600), 0);
  int const before = test::OpenDescriptors();
  auto const answers = [&](char const* name, int lines) {
    g_lines = lines;
    g_flags = 0;
    return HasModemLines(scratch.Path(name));
  };
  EXPECT_TRUE(answers("ttyS0", 0));
  EXPECT_TRUE(answers("ttyS0", TIOCM_CTS | TIOCM_CAR));
  EXPECT_TRUE(answers("ttyS1", 0));
  EXPECT_EQ(g_flags & (O_ACCMODE | O_NONBLOCK), O_RDONLY | O_NONBLOCK);
  EXPECT_FALSE(answers("ttyS0", -1));
  EXPECT_FALSE(answers("ttyS2", 0)) << "no such device";
  EXPECT_EQ(test::OpenDescriptors(), before);
  EXPECT_EQ(scratch.Read("ttyS0"), "untouched");
  EXPECT_FALSE(scratch.Exists("ttyS2"));
}

}  // namespace
