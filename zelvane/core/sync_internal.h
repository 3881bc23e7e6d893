// Makes written data durable: the bytes of a file, and its name in the directory. Without the latter a power failure
// can bring back the old name, or none. A file system that cannot sync counts as success, because a caller could do
// nothing about it. All of this assumes a disk that honours a flush.
#ifndef ZELVANE_CORE_SYNC_INTERNAL_H
#define ZELVANE_CORE_SYNC_INTERNAL_H

#include <string>

#include "zelvane/core/fd_internal.h"

namespace zelvane::internal {

// Syncs the bytes of the file, and a length that has grown.
bool SyncData(int fd);
// Syncs everything of the file: also its mode, its owner, and a length that has shrunk.
bool SyncFile(int fd);

// Returns the path up to and including the last "/"; "" is the current directory.
std::string FolderOf(std::string const& path);
// Returns the target if the last part of the path is a symbolic link, whether or not that file exists.
std::string FollowLinks(std::string path);

// The directory of a file, held open, so that a lack of descriptors shows before anything has been changed.
class Folder {
 public:
  // `file` is not followed: for a link, pass FollowLinks(path).
  explicit Folder(std::string const& file);

  // False if it could not be opened, for a reason other than the file system's.
  explicit operator bool() const { return usable_; }
  // Syncs the names in the directory. Also true if they cannot be synced: a directory that this user may not read, a
  // file system without sync.
  bool Sync() const;

 private:
  Descriptor folder_;
  bool usable_ = false;
};

}  // namespace zelvane::internal

#endif
