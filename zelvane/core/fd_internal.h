// File descriptors that close themselves, and reads and writes that are always completed. All of them leave the reason
// of a failure in errno (GetOSLastError).
#ifndef ZELVANE_CORE_FD_INTERNAL_H
#define ZELVANE_CORE_FD_INTERNAL_H

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

namespace zelvane::internal {

// Owns a descriptor, or none (-1).
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      Drop();
      fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
  }
  ~Descriptor() { Drop(); }

  explicit operator bool() const { return fd_ >= 0; }
  int Get() const { return fd_; }

  // Closes the descriptor and returns whether all written bytes were accepted: network and full file systems may report
  // a failure only now. On Linux EINTR leaves the descriptor closed, so the call is not repeated.
  bool Close() { return close(std::exchange(fd_, -1)) == 0; }

 private:
  // Keeps errno, because the owner goes out of scope between a failure and the caller who asks for its reason.
  void Drop() {
    if (fd_ < 0) return;
    int const reason = errno;
    close(std::exchange(fd_, -1));
    errno = reason;
  }

  int fd_ = -1;
};

// open() with O_CLOEXEC and O_NOCTTY: programs started by the caller inherit nothing, and a terminal opened by mistake
// does not become the service's controlling terminal. `mode` is used only with O_CREAT.
inline Descriptor Open(char const* path, int flags, mode_t mode = 0) {
  int fd = -1;
  do fd = open(path, flags | O_CLOEXEC | O_NOCTTY, mode);
  while (fd < 0 && errno == EINTR);
  return Descriptor(fd);
}

// Opens or creates the file for the output made from `source`, and empties it. Returns none if it is the source itself
// under another name, because emptying it would lose the input.
inline Descriptor OpenDestination(char const* path, int source) {
  Descriptor out = Open(path, O_WRONLY | O_CREAT, 0666);
  struct stat from;
  struct stat to;
  if (!out || fstat(source, &from) != 0 || fstat(out.Get(), &to) != 0) return Descriptor();
  if (from.st_dev == to.st_dev && from.st_ino == to.st_ino) return Descriptor();
  if (S_ISREG(to.st_mode) && ftruncate(out.Get(), 0) != 0) return Descriptor();
  return out;
}

// One read: returns the number of bytes, 0 at the end, -1 on failure.
inline ssize_t ReadSome(int fd, char* buffer, size_t size) {
  ssize_t got = -1;
  do got = read(fd, buffer, size);
  while (got < 0 && errno == EINTR);
  return got;
}

// Reads until `size` bytes or the end of the file. Fewer than `size` bytes mean the end. Returns -1 on failure.
inline ssize_t ReadBlock(int fd, char* buffer, size_t size) {
  size_t filled = 0;
  while (filled < size) {
    ssize_t const got = ReadSome(fd, buffer + filled, size - filled);
    if (got < 0) return -1;
    if (got == 0) break;
    filled += static_cast<size_t>(got);
  }
  return static_cast<ssize_t>(filled);
}

// Writes all `size` bytes. Returns false if any of them could not be written.
inline bool WriteAll(int fd, char const* bytes, size_t size) {
  while (size > 0) {
    ssize_t const put = write(fd, bytes, size);
    if (put < 0 && errno == EINTR) continue;
    if (put == 0) errno = EIO;  // a driver that accepts nothing would loop here forever
    if (put <= 0) return false;
    bytes += put;
    size -= static_cast<size_t>(put);
  }
  return true;
}

}  // namespace zelvane::internal

#endif
