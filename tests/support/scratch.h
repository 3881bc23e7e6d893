// A folder of the test's own, and files written and read back whole.
#ifndef ZELVANE_TESTS_SUPPORT_SCRATCH_H
#define ZELVANE_TESTS_SUPPORT_SCRATCH_H

#include <string>
#include <vector>

namespace test {

// Made empty at construction, removed with all it holds at destruction.
class Scratch {
 public:
  Scratch();
  ~Scratch();
  Scratch(Scratch const&) = delete;
  Scratch& operator=(Scratch const&) = delete;

  // The folder with its trailing "/", or the path of `name` in it.
  std::string Path(std::string const& name = "") const { return folder_ + name; }
  // Writes `bytes` to `name` (folders in between are made) and returns the path.
  std::string Write(std::string const& name, std::string const& bytes) const;
  std::string Read(std::string const& name) const;
  bool Exists(std::string const& name) const;
  // The names below the folder, sorted, with folders as "name/": shows what a call left behind.
  std::vector<std::string> List() const;

 private:
  std::string folder_;
};

// The whole file, or "<missing>".
std::string ReadFile(std::string const& path);
void WriteFile(std::string const& path, std::string const& bytes);
// Number of open descriptors of this process.
int OpenDescriptors();
// The temporary files that were left in folders that have gone since the last time. One that the test itself has
// written is none.
std::vector<std::string> TakeLeftovers();

}  // namespace test

#endif
