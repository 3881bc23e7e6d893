// A temporary directory for a test, and functions that write and read whole files.
#ifndef ZELVANE_TESTS_SUPPORT_SCRATCH_H
#define ZELVANE_TESTS_SUPPORT_SCRATCH_H

#include <string>
#include <vector>

namespace test {

// Created empty by the constructor, removed with its contents by the destructor.
class Scratch {
 public:
  Scratch();
  ~Scratch();
  Scratch(Scratch const&) = delete;
  Scratch& operator=(Scratch const&) = delete;

  // The directory with its trailing "/", or the path of `name` in it.
  std::string Path(std::string const& name = "") const { return folder_ + name; }
  // Writes `bytes` to `name`, creating directories in between, and returns the path.
  std::string Write(std::string const& name, std::string const& bytes) const;
  std::string Read(std::string const& name) const;
  bool Exists(std::string const& name) const;
  // The names below the directory, sorted, with directories as "name/": shows what a call left behind.
  std::vector<std::string> List() const;

 private:
  std::string folder_;
};

// Returns the whole file, or "<missing>".
std::string ReadFile(std::string const& path);
void WriteFile(std::string const& path, std::string const& bytes);
// Returns the number of open descriptors of this process.
int OpenDescriptors();
// Returns the temporary files that remained in deleted scratch directories since the last call. Files that the test
// itself wrote do not count.
std::vector<std::string> TakeLeftovers();

}  // namespace test

#endif
