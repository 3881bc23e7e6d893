// Directories for temporary files.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_SCRATCH_H
#define ZELVANE_TOOLS_ZELCTL_FILES_SCRATCH_H

#include <string>

#include "files/heldsignals.h"

// A new empty directory, which is removed with its contents. Copies of settings in it can have passwords, so signals
// that end the command wait until the directory is removed.
class ScratchFolder {
 public:
  // Throws Failed.
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(ScratchFolder const&) = delete;
  ScratchFolder& operator=(ScratchFolder const&) = delete;

  std::string const& Path() const { return path_; }  // without a trailing "/"

 private:
  HeldSignals held_;  // the first member, so that it is released last
  std::string path_;
};

#endif
