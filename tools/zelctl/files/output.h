// Files that are written whole or not at all.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_OUTPUT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_OUTPUT_H

#include <stdio.h>
#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <string>

// Throws Failed when the file exists and is not to be replaced. Devices and pipes are written to.
void RequireNew(std::string const& path, bool overwrite);
// Throws what Output would.
void RequireWritable(std::string const& path, struct stat const& source, bool overwrite);

// The file that is made. Until Keep() it has another name beside its own, so that a failure, or somebody who
// interrupts the command, leaves what was there before. Devices and pipes are written directly.
class Output {
 public:
  // Throws FileFailed, and Failed when it is the file that is read, or exists and is not to be replaced.
  Output(std::string const& path, struct stat const& source, bool overwrite);
  ~Output();
  Output(Output const&) = delete;
  Output& operator=(Output const&) = delete;

  // Not a device or a pipe.
  bool IsFile() const { return !target_.empty(); }

  // Throws FileFailed.
  void Write(void const* bytes, std::size_t size);
  // All that was written, and its name, is on the disk then (a device or a pipe has just been written to). Throws
  // FileFailed; when only the directory could not be synced, the file has its name, which a power cut can undo. Throws
  // Failed when somebody else has made the file meanwhile, and it is not to be replaced.
  void Keep();

 private:
  int MakeBeside(struct stat const* old);
  void TakeName();

  std::string path_;
  bool overwrite_;
  std::string target_;
  std::string unfinished_;  // "" when there is none
  std::unique_ptr<FILE, int (*)(FILE*)> file_;
};

#endif
