/// @file
/// The serial ports of this machine, and two facts about the system. Ports are counted from 1, device files from 0:
/// port 1 is /dev/ttyS0.
#ifndef ZELVANE_API_SERIALPORTS_H
#define ZELVANE_API_SERIALPORTS_H

#include "zelvane/export.h"

#ifdef __cplusplus
#include <string>

/// Returns the device file of port `number`: "/dev/ttyS" followed by (`number` - 1) modulo 256 in decimal. Kept: port 0
/// wraps to /dev/ttyS255.
ZELVANE_API std::string GetInternalDeviceName(unsigned int number);

/// One port found. The handle of an enumeration is a `std::vector<portinfo>` on the heap.
struct portinfo {
  unsigned char number;  ///< from 1
  std::string name;      ///< of the device file
};
#endif

ZELVANE_C_BEGIN

/// Finds the usable ports among 1 to 16. A port is usable if its device can be opened and reports its modem lines.
/// Ports that are missing, that this user may not open, or that have no hardware are skipped. Opening does not wait for
/// a carrier, and the port does not become the controlling terminal.
///
/// Returns the number of ports found, 0 to 16, and stores the handle of the enumeration in `*handle`, even if there are
/// none. Free it with CloseEnumSerialPorts. Returns 0 and stores nothing if `handle` is null. Returns 0 and stores a
/// null handle when memory runs out.
ZELVANE_API int OpenEnumSerialPorts(void** handle);

/// Stores the number of the port at `position` in `*number`, which can be null. Positions count from 0, in ascending
/// order of ports. Returns 1, or 0 with `*number` unchanged: null handle, or no such position. GetInternalDeviceName
/// returns the name of the device.
ZELVANE_API int GetEnumSerialPorts(void* handle, unsigned char position, unsigned char* number);

/// Frees the enumeration. Returns 1, or 0 for a null handle.
ZELVANE_API int CloseEnumSerialPorts(void* handle);

/// Returns 1 if the real user or the real group of this process has number 0, otherwise 0.
ZELVANE_API int CurrentUserIsAdmin(void);

/// Stores the system description of GetOSVersion (core/fileutils.h). Writes at most `size` bytes: the text and, if it
/// fits, one NUL. Kept: a text of `size` bytes or more fills the buffer and gets NO NUL. Returns 1, or 0 if `buffer` is
/// null, `size` is 0 or memory runs out.
ZELVANE_API int GetOSVersionInfo(char* buffer, unsigned int size);

ZELVANE_C_END

#endif
