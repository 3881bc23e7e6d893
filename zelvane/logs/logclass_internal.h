// Shared by the logs: appending to a file in one write, and direct access to the records of a loaded log.
#ifndef ZELVANE_LOGS_LOGCLASS_INTERNAL_H
#define ZELVANE_LOGS_LOGCLASS_INTERNAL_H

#include <cstdint>
#include <string>
#include <string_view>

#include "zelvane/core/fd_internal.h"
#include "zelvane/logs/logclass.h"

namespace zelvane::internal {

constexpr std::uint64_t kStampSize = 4;  // of a record, before its payload

// Opens the file for appending; creates it if missing. Never waits for the other end of a FIFO. Also returns none if
// the name of an empty file cannot be synced.
Descriptor OpenToAppend(std::string const& path);

// Writes `bytes` in one write, so that concurrent appends do not mix. Returns false if not all of them were written.
// The part that was written is then truncated away if it is still the end of the file, because half a record would
// damage all others. Does not sync.
bool Append(int fd, std::string_view bytes);

// Makes the file empty; creates it if missing. Returns true when that is on disk.
bool EmptyFile(std::string const& path);

// Locks an open file, exclusively or shared. A reader of a log must not block its writers for good: if the lock is not
// available within that many milliseconds, it is not held, and the object is false. A file system without locks counts
// as locked.
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

// The records in a log's buffer, each a time stamp and `size` bytes of payload, for scans of a million of them. Valid
// until the buffer changes.
struct LogRecords {
  LogRecords(LogClass& log, unsigned long size)
      : bytes(log.buffer_), count(log.buffer_ == nullptr ? 0 : log.LogClass::GetRegCount(size)) {}

  unsigned char const* const bytes;
  unsigned long const count;
};

}  // namespace zelvane::internal

#endif
