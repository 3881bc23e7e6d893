// The two halves of the search for serial ports, separate so that each can be tested without the hardware.
#ifndef ZELVANE_API_SERIALPORTS_INTERNAL_H
#define ZELVANE_API_SERIALPORTS_INTERNAL_H

#include <string>
#include <vector>

#include "zelvane/api/serialports.h"

namespace zelvane::internal {

// Returns the ports from 1 to 16 whose device `answers`, in ascending order.
std::vector<portinfo> FindSerialPorts(bool (*answers)(std::string const& device));

// Returns whether the device can be opened, without waiting, and reports its modem lines.
bool HasModemLines(std::string const& device);

}  // namespace zelvane::internal

#endif
