// Bringing to disk what has been written: the bytes of a file, and its name in the folder. Without the second a power
// cut can bring back the old name, or none. A file system that cannot sync counts as having done it: there is nothing
// that a caller could do about it. All of it assumes a disk that honours a flush.
#ifndef ZELVANE_CORE_SYNC_INTERNAL_H
#define ZELVANE_CORE_SYNC_INTERNAL_H

#include <string>

#include "zelvane/core/fd_internal.h"

namespace zelvane::internal {

// The file's bytes, and a length that has grown, are on disk.
bool SyncData(int fd);
// Everything of the file is: also its mode, its owner, and a length that has shrunk.
bool SyncFile(int fd);

// Up to and including the last "/"; "" is the current folder.
std::string FolderOf(std::string const& path);
// Where the path leads when its last part is a symbolic link, whether or not a file is there.
std::string FollowLinks(std::string path);

// The folder of a file, held open, so that a lack of descriptors shows before anything has been changed.
class Folder {
 public:
  // `file` is not followed: for a link, give FollowLinks(path).
  explicit Folder(std::string const& file);

  // False when it could not be opened for a reason that is not the file system's.
  explicit operator bool() const { return usable_; }
  // The names in it are on disk. True as well where they cannot be synced: a folder that this user may not read, a file
  // system that cannot.
  bool Sync() const;

 private:
  Descriptor folder_;
  bool usable_ = false;
};

}  // namespace zelvane::internal

#endif
