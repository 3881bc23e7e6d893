#include "zelvane/api/serialports_internal.h"

#include <dlfcn.h>
#include <stdarg.h>
#include <sys/ioctl.h>

#include "support/test.h"

namespace {

int g_lines = -1;  // the result of TIOCMGET: the lines, or a failure if negative
int g_flags = 0;   // of the descriptor passed to it

TEST(SerialPortSearch, SixteenPortsInOrder) {
  std::string found, expected;
  auto const answers = [](std::string const& device) { return device.back() != '3'; };
  for (portinfo const& port : zelvane::internal::FindSerialPorts(answers))
    found += std::to_string(port.number) + port.name + " ";
  for (int i = 1; i <= 16; i++)
    if (i != 4 && i != 14) expected += std::to_string(i) + "/dev/ttyS" + std::to_string(i - 1) + " ";
  EXPECT_EQ(found, expected);
}

TEST(SerialPortSearch, TheDeviceMustAnswer) {
  test::Scratch scratch;
  scratch.Write("ttyS0", "untouched");
  // A FIFO without a writer acts as a line without a carrier: only a non-blocking open() returns.
  ASSERT_EQ(mkfifo(scratch.Path("ttyS1").c_str(), 0600), 0);
  auto const answers = [&](char const* name, int lines) {
    g_lines = lines;
    return zelvane::internal::HasModemLines(scratch.Path(name));
  };
  EXPECT_ALL(answers("ttyS0", 0), answers("ttyS0", TIOCM_CTS | TIOCM_CAR), answers("ttyS1", 0));
  EXPECT_EQ(g_flags & (O_ACCMODE | O_NONBLOCK), O_RDONLY | O_NONBLOCK);
  EXPECT_NONE(answers("ttyS0", -1), answers("ttyS2", 0));
  EXPECT_EACH((scratch.Read("ttyS0"), scratch.Read("ttyS2")), "untouched", "<missing>");
}

}  // namespace

// The test's own driver. Tests cannot rely on serial hardware, so the library's ioctl() comes here.
extern "C" __attribute__((visibility("default"))) int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request != TIOCMGET) return reinterpret_cast<decltype(&ioctl)>(dlsym(RTLD_NEXT, "ioctl"))(fd, request, argument);
  g_flags = fcntl(fd, F_GETFL);
  if (g_lines >= 0) *static_cast<int*>(argument) = g_lines;
  return g_lines >= 0 ? 0 : -1;
}
