#include <algorithm>
#include <climits>

#include "zelvane/core/sync_internal.h"

namespace zelvane::internal {
namespace {

constexpr int kLinkDepth = 40;  // as deep as the kernel follows

bool CannotSync(int reason) { return reason == EINVAL || reason == ENOTSUP || reason == EROFS; }

template <class Sync>
bool Done(Sync&& sync) {
  int failed = 0;
  do failed = sync();
  while (failed != 0 && errno == EINTR);
  return failed == 0 || CannotSync(errno);
}

}  // namespace

bool SyncData(int fd) {
  return Done([fd] { return fdatasync(fd); });
}

bool SyncFile(int fd) {
  return Done([fd] { return fsync(fd); });
}

std::string FolderOf(std::string const& path) { return path.substr(0, path.rfind('/') + 1); }

std::string FollowLinks(std::string path) {
  for (int depth = 0; depth < kLinkDepth; depth++) {
    char target[PATH_MAX];
    ssize_t const length = readlink(path.c_str(), target, sizeof target);
    if (length <= 0) break;
    std::string const folder = target[0] == '/' ? "" : FolderOf(path);
    path = folder + std::string(target, static_cast<size_t>(length));
  }
  return path;
}

Folder::Folder(std::string const& file) {
  std::string const path = FolderOf(file);
  folder_ = Open(path.empty() ? "." : path.c_str(), O_RDONLY | O_DIRECTORY);
  usable_ = folder_ || CannotSync(errno) || errno == EACCES;
}

bool Folder::Sync() const { return usable_ && (!folder_ || SyncFile(folder_.Get()) || errno == EACCES); }

}  // namespace zelvane::internal
