// Files that are written whole or not at all.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_OUTPUT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_OUTPUT_H

#include <stdio.h>
#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <string>

// The file that is made. Until Keep() it has another name beside its own, so that a failure, or somebody who
// interrupts the command, leaves what was there before. Devices and pipes are written directly.
class Output {
 public:
  // Throws FileFailed, and Failed when it is the file that is read.
  Output(std::string const& path, struct stat const& source);
  ~Output();
  Output(Output const&) = delete;
  Output& operator=(Output const&) = delete;

  // Not a device or a pipe.
  bool IsFile() const { return !target_.empty(); }

  // Throws FileFailed.
  void Write(void const* bytes, std::size_t size);
  // All that was written is on the disk then, under its own name. Throws FileFailed.
  void Keep();

 private:
  int MakeBeside(struct stat const* old);

  std::string path_;
  std::string target_;
  std::string unfinished_;  // "" when there is none
  std::unique_ptr<FILE, int (*)(FILE*)> file_;
};

#endif
