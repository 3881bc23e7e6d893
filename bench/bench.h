// Shared by the benchmark programs. Names of benchmarks are task/who/size; table.py compares ours with the others.
#ifndef ZELVANE_BENCH_BENCH_H
#define ZELVANE_BENCH_BENCH_H

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// A comparison is meaningless unless both computed the same: otherwise ends the program.
inline void Require(bool same, char const* what) {
  if (same) return;
  std::fprintf(stderr, "ours and the peer differ: %s\n", what);
  std::exit(1);
}

// A file in memory, removed with the object.
class ScratchFile {
 public:
  explicit ScratchFile(std::string const& name)
      : path_("/dev/shm/zelvane-bench-" + std::to_string(getpid()) + "-" + name) {}
  ~ScratchFile() { unlink(path_.c_str()); }
  ScratchFile(ScratchFile const&) = delete;
  ScratchFile& operator=(ScratchFile const&) = delete;
  std::string const& Path() const { return path_; }

 private:
  std::string path_;
};

#endif
