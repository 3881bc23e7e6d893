// The serial ports of this machine, and two facts about the system. Ports are counted from 1, their device files from
// 0: port 1 is /dev/ttyS0.
#ifndef ZELVANE_API_SERIALPORTS_H
#define ZELVANE_API_SERIALPORTS_H

#include "zelvane/export.h"

#ifdef __cplusplus
#include <string>

// The device file of port `number`: "/dev/ttyS" and `number` - 1 modulo 256 in decimal. Port 0 wraps to /dev/ttyS255.
ZELVANE_API std::string GetInternalDeviceName(unsigned int number);

// One port that was found. The handle of an enumeration is a std::vector<portinfo> on the heap.
struct portinfo {
  unsigned char number;  // from 1
  std::string name;      // of the device file
};
#endif

ZELVANE_C_BEGIN

// Looks for usable ports among 1 to 16: those whose device can be opened and tells the state of its modem lines. A port
// that is missing, may not be opened by this user or has no hardware behind it is left out. Opening does not wait for a
// carrier, and the port does not become the controlling terminal.
//
// Returns the number of ports found, 0 to 16, and stores the handle of the enumeration in `*handle`, also when there
// are none; it is to be given back to CloseEnumSerialPorts. 0 with nothing stored when `handle` is null; 0 with a null
// handle stored when memory is short.
ZELVANE_API int OpenEnumSerialPorts(void** handle);

// The port at `position`, counted from 0, ports in ascending order. 1: `number`, unless it is null, holds the port's
// number. 0, with `number` untouched: null handle or no such position. GetInternalDeviceName gives the device's name.
ZELVANE_API int GetEnumSerialPorts(void* handle, unsigned char position, unsigned char* number);

// Frees the enumeration. 1, or 0 for a null handle.
ZELVANE_API int CloseEnumSerialPorts(void* handle);

// 1 when the real user or the real group of this process is number 0, else 0.
ZELVANE_API int CurrentUserIsAdmin(void);

// The description of the system that GetOSVersion (core/fileutils.h) gives. At most `size` bytes are written: the text
// and, if there is room, one NUL. A text of `size` bytes or more fills the buffer and is NOT terminated. 1, or 0 when
// `buffer` is null, `size` 0 or memory short.
ZELVANE_API int GetOSVersionInfo(char* buffer, unsigned int size);

ZELVANE_C_END

#endif
