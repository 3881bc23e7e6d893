#include <sys/file.h>

#include "zelvane/core/fileutils.h"
#include "zelvane/core/sync_internal.h"
#include "zelvane/logs/logclass_internal.h"

namespace zelvane::internal {
namespace {

bool SyncName(std::string const& path) {
  Folder const folder(FollowLinks(path));
  return folder && folder.Sync();
}

}  // namespace

// The name of an empty file may not be on disk yet, whoever created it. It is synced before the first bytes are
// written, so that a file with contents always has its name.
Descriptor OpenToAppend(std::string const& path) {
  Descriptor file = Open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK, 0666);
  struct stat status;
  if (!file || fstat(file.Get(), &status) != 0) return Descriptor();
  if (S_ISREG(status.st_mode) && status.st_size == 0 && !SyncName(path)) return Descriptor();
  return file;
}

bool Append(int fd, std::string_view bytes) {
  ssize_t put = -1;
  do put = write(fd, bytes.data(), bytes.size());
  while (put < 0 && errno == EINTR);
  if (put == static_cast<ssize_t>(bytes.size())) return true;
  if (put <= 0) return false;
  off_t const end = lseek(fd, 0, SEEK_CUR);
  struct stat now;
  if (end >= put && fstat(fd, &now) == 0 && now.st_size == end) (void)!ftruncate(fd, end - put);
  return false;
}

bool EmptyFile(std::string const& path) {
  Descriptor file = Open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK, 0666);
  return file && SyncFile(file.Get()) && SyncName(path) && file.Close();
}

FileLock::FileLock(int fd, How how, int milliseconds) : fd_(fd) {
  int const operation = (how == kAlone ? LOCK_EX : LOCK_SH) | LOCK_NB;
  for (int tries = 0; tries <= milliseconds && !held_; tries++) {
    held_ = flock(fd, operation) == 0 || (errno != EWOULDBLOCK && errno != EINTR);
    if (!held_ && errno == EWOULDBLOCK) Delay(1);
  }
}

FileLock::~FileLock() {
  if (held_) flock(fd_, LOCK_UN);
}

}  // namespace zelvane::internal
