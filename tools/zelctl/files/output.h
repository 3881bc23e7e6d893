// Output files that are replaced atomically.
#ifndef ZELVANE_TOOLS_ZELCTL_FILES_OUTPUT_H
#define ZELVANE_TOOLS_ZELCTL_FILES_OUTPUT_H

#include <stdio.h>
#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <string>

// What an output file may replace. Files with the names of the programs' settings, logs and schedules (.cfg, .conf,
// .rgt, .dat, .zelvane) are never replaced: they are given by mistake.
struct Replacing {
  bool any = false;      // --overwrite
  char const* own = "";  // the ending of such a name that the command's own output has, such as ".rgt"
};

// Throws Failed if the file exists and must not be replaced, or is a directory, a block device or a link that leads
// nowhere. Other devices and pipes are accepted.
void RequireNew(std::string const& path, Replacing const& replacing);
// Throws the errors of the constructor of Output.
void RequireWritable(std::string const& path, struct stat const& source, Replacing const& replacing);

// The output file. Until Keep() it has a temporary name in the same directory, so after a failure or an interrupt the
// old file is unchanged. Devices and pipes are written directly.
class Output {
 public:
  // Throws FileFailed. Throws Failed if the path is the input file, or exists and must not be replaced.
  Output(std::string const& path, struct stat const& source, Replacing const& replacing);
  ~Output();
  Output(Output const&) = delete;
  Output& operator=(Output const&) = delete;

  // False for a device or a pipe.
  bool IsFile() const { return !target_.empty(); }

  // Throws FileFailed.
  void Write(void const* bytes, std::size_t size);
  // Makes the contents and the name durable (a device or a pipe is only written to). Throws FileFailed; if only the
  // directory could not be synced, the file has its new name, but a power failure can undo that. Throws Failed if
  // another process created the file meanwhile and it must not be replaced.
  void Keep();

 private:
  int MakeBeside(struct stat const* old, struct stat const& source);
  void TakeName();

  std::string path_;
  bool overwrite_;
  std::string target_;
  std::string unfinished_;  // "" if there is none
  std::unique_ptr<FILE, int (*)(FILE*)> file_;
};

#endif
