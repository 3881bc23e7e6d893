// What the logs share: appending to a file in one piece, and a loaded log's records without a call for each.
#ifndef ZELVANE_LOGS_LOGCLASS_INTERNAL_H
#define ZELVANE_LOGS_LOGCLASS_INTERNAL_H

#include <string>
#include <string_view>

#include "zelvane/core/fd_internal.h"
#include "zelvane/logs/logclass.h"

namespace zelvane::internal {

// Opens the file for appending, created if missing, and never waits for the other end of a FIFO. None, too, when the
// name of an empty file cannot be brought to disk.
Descriptor OpenToAppend(std::string const& path);

// Writes `bytes` in one write, so that programs that append at once get whole pieces in. False when they did not all go
// in: the part that did is then cut off again while it is still the end of the file, since half a record would spoil
// all the others. Nothing is synced yet.
bool Append(int fd, std::string_view bytes);

// Makes the file an empty one, creating it if it is missing. True when that is on disk.
bool EmptyFile(std::string const& path);

// Holds the lock of an open file, alone or beside others that share it. Nobody who may read a log can stop its writers
// for good: after that many milliseconds it is not held, and the object is false. A file system without locks counts as
// locked.
class FileLock {
 public:
  enum How { kShared, kAlone };
  FileLock(int fd, How how, int milliseconds);
  ~FileLock();
  FileLock(FileLock const&) = delete;
  FileLock& operator=(FileLock const&) = delete;

  explicit operator bool() const { return held_; }

 private:
  int const fd_;
  bool held_ = false;
};

constexpr int kLongestWait = 1000;  // milliseconds, more than a repair or a cut takes

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
