// Shared by the fuzzers: a file in memory-backed scratch space, and a check that ends the run.
#ifndef ZELVANE_FUZZ_FUZZ_H
#define ZELVANE_FUZZ_FUZZ_H

#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

namespace fuzz {

inline void Check(bool holds, char const* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  abort();
}

// A path of this process's own. The file is removed when the process ends, unless it crashes.
class File {
 public:
  explicit File(char const* suffix = "") {
    std::string const folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
    path_ = folder + "/zelvane-fuzz-" + std::to_string(getpid()) + suffix;
  }
  ~File() {
    unlink(path_.c_str());
    unlink((path_ + ".lost").c_str());
    unlink((path_ + ".bad").c_str());
    unlink((path_ + ".tmp").c_str());
  }
  File(File const&) = delete;
  File& operator=(File const&) = delete;

  std::string const& Path() const { return path_; }
  void Write(std::string const& bytes) const { std::ofstream(path_, std::ios::binary | std::ios::trunc) << bytes; }
  std::string Read() const {
    std::ifstream in(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

 private:
  std::string path_;
};

inline std::string Text(uint8_t const* data, size_t size) {
  return std::string(reinterpret_cast<char const*>(data), size);
}

// Removes the first `count` bytes from `rest` and returns them.
inline std::string Take(std::string& rest, size_t count) {
  std::string const front = rest.substr(0, count);
  rest.erase(0, count);
  return front;
}

inline uint32_t Number(std::string& rest) {
  uint32_t value = 0;
  for (unsigned char const byte : Take(rest, 4)) value = value << 8 | byte;
  return value;
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size);

#endif
