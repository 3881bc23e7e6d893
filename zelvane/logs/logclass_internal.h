// What the logs share: appending to a file in one piece, and a loaded log's records without a call for each.
#ifndef ZELVANE_LOGS_LOGCLASS_INTERNAL_H
#define ZELVANE_LOGS_LOGCLASS_INTERNAL_H

#include <string>
#include <string_view>

#include "zelvane/core/fd_internal.h"
#include "zelvane/logs/logclass.h"

namespace zelvane::internal {

// Created if missing, and never waiting for the other end of a FIFO.
inline Descriptor OpenToAppend(std::string const& path) {
  return Open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK, 0666);
}

// Writes `bytes` in one write, so that programs that append at once get whole pieces in, and closes the file. False
// when they did not all go in: the part that did is then cut off again while it is still the end of the file, since
// half a record would spoil all the others.
inline bool AppendAndClose(Descriptor& file, std::string_view bytes) {
  ssize_t put = -1;
  do put = write(file.Get(), bytes.data(), bytes.size());
  while (put < 0 && errno == EINTR);
  if (put == static_cast<ssize_t>(bytes.size())) return file.Close();
  if (put <= 0) return false;
  off_t const end = lseek(file.Get(), 0, SEEK_CUR);
  struct stat now;
  if (end >= put && fstat(file.Get(), &now) == 0 && now.st_size == end) (void)!ftruncate(file.Get(), end - put);
  return false;
}

// Makes the file an empty one, creating it if it is missing.
inline bool EmptyFile(std::string const& path) {
  Descriptor file = Open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK, 0666);
  return file && file.Close();
}

// The records in a log's buffer, `size` bytes of payload behind each stamp, for scans of a million of them. Good until
// the buffer changes.
struct LogRecords {
  LogRecords(LogClass& log, unsigned long size)
      : bytes(log.buffer_), count(log.buffer_ == nullptr ? 0 : log.LogClass::GetRegCount(size)) {}

  unsigned char const* const bytes;
  unsigned long const count;
};

}  // namespace zelvane::internal

#endif
