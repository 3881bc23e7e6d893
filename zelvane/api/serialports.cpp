#include "zelvane/api/serialports.h"

#include <fcntl.h>
#include <sys/ioctl.h>

#include <memory>
#include <string>
#include <vector>

#include "zelvane/api/cfghandle_internal.h"
#include "zelvane/api/serialports_internal.h"
#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fd_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

using zelvane::internal::Guard;

namespace zelvane::internal {

std::vector<portinfo> FindSerialPorts(bool (*answers)(std::string const& device)) {
  constexpr unsigned char kLastPort = 16;
  std::vector<portinfo> ports;
  for (unsigned char number = 1; number <= kLastPort; number++) {
    std::string device = GetInternalDeviceName(number);
    if (answers(device)) ports.push_back({number, std::move(device)});
  }
  return ports;
}

bool HasModemLines(std::string const& device) {
  Descriptor const port = Open(device.c_str(), O_RDONLY | O_NONBLOCK);
  int state = 0;
  return port && ioctl(port.Get(), TIOCMGET, &state) == 0;
}

}  // namespace zelvane::internal

namespace {

std::vector<portinfo>* Ports(void* handle) { return static_cast<std::vector<portinfo>*>(handle); }

}  // namespace

std::string GetInternalDeviceName(unsigned int number) { return "/dev/ttyS" + UIntToStr((number - 1) % 256); }

int OpenEnumSerialPorts(void** handle) {
  if (handle == nullptr) return 0;
  *handle = nullptr;
  return Guard(0, [&] {
    using zelvane::internal::FindSerialPorts;
    using zelvane::internal::HasModemLines;
    auto ports = std::make_unique<std::vector<portinfo>>(FindSerialPorts(HasModemLines));
    int const count = static_cast<int>(ports->size());
    *handle = ports.release();
    return count;
  });
}

int GetEnumSerialPorts(void* handle, unsigned char position, unsigned char* number) {
  if (handle == nullptr || position >= Ports(handle)->size()) return 0;
  if (number != nullptr) *number = (*Ports(handle))[position].number;
  return 1;
}

int CloseEnumSerialPorts(void* handle) {
  if (handle == nullptr) return 0;
  delete Ports(handle);
  return 1;
}

int CurrentUserIsAdmin(void) { return CurUserIsAdmin() ? 1 : 0; }

int GetOSVersionInfo(char* buffer, unsigned int size) {
  if (buffer == nullptr || size == 0) return 0;
  return Guard(0, [&] {
    zelvane::internal::CopyToBuffer(buffer, size, GetOSVersion());
    return 1;
  });
}
