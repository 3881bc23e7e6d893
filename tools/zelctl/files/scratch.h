// Directories for temporary files.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_SCRATCH_H
#define ZELVANE_TOOLS_ZELCTL_FILES_SCRATCH_H

#include <signal.h>

#include <string>

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
  // Restores the signals in its destructor, after the directory is removed or could not be created.
  class HeldSignals {
   public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(HeldSignals const&) = delete;
    HeldSignals& operator=(HeldSignals const&) = delete;

   private:
    sigset_t before_ = {};
  };

  HeldSignals held_;
  std::string path_;
};

#endif
