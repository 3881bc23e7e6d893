// A simulated disk that loses power: records what a scenario does to its files, and creates the states that a power cut
// can leave. docs/reliability.md has the model of the disk. "Settled" means: certainly on disk.
#ifndef ZELVANE_STRESS_CRASHSTATES_H
#define ZELVANE_STRESS_CRASHSTATES_H

#include <cstddef>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "stress/shim.h"
#include "stress/world.h"

namespace stress {

// Decides what a cut leaves: every combination once, or at random from a seed.
class Choices {
 public:
  // Returns a number below `count`.
  unsigned Of(std::size_t count);
  // Continues with the next combination. Returns false after the last one.
  bool Next();
  void ByChance(unsigned seed);

 private:
  std::vector<std::pair<unsigned, unsigned>> taken_;  // the choice, and the number of alternatives
  std::size_t at_ = 0;
  bool random_ = false;
  std::mt19937 chance_;
};

class Disk {
 public:
  // Starts to record what this process does below the base directory, whose files count as settled.
  explicit Disk(World const& world);
  ~Disk();
  Disk(Disk const&) = delete;
  Disk& operator=(Disk const&) = delete;

  // A step has reported success.
  void Told();
  // Ends the recording. Returns the files as they are without a power cut.
  Files Stop();

  struct State {
    Files files;
    std::map<std::string, mode_t> modes;
    std::size_t told = 0;
    std::string how;  // for the report
  };
  State Cut(Choices& choices) const;

 private:
  struct Version {
    std::size_t step;
    std::string bytes;  // contents of the pages, also after the end if a truncation is not settled
    std::size_t size;
  };
  struct File {
    std::string name;
    mode_t mode;
    std::vector<Version> versions;
    std::vector<std::size_t> settled;  // numbers of versions
  };
  struct Naming {
    std::size_t step;
    std::string folder;
    std::vector<std::pair<std::string, int>> names;  // with the number of the file, or -1
  };
  struct FolderSync {
    std::size_t step;
    std::string folder;
  };

  static void Record(ShimDone const* call);
  void Take(ShimDone const& call);
  void Opened(ShimDone const& call);
  void Named(std::string const& what, std::vector<std::pair<std::string, int>> names);
  void Changed(int file, std::string const& what, std::string bytes, std::size_t size);
  void Write(int file, std::string const& bytes, std::size_t at);
  void Resize(int file, std::size_t size);
  std::string Below(char const* path) const;
  std::map<std::string, int> NamesAt(std::size_t cut, Choices& choices, std::string& how) const;
  std::string BytesAt(File const& file, std::size_t cut, Choices& choices, std::string& how) const;

  std::string const base_;
  std::vector<std::string> steps_;  // what was done, for the report
  std::vector<std::size_t> told_;
  std::vector<File> files_;
  std::map<std::string, int> before_;
  std::map<std::string, int> names_;
  std::vector<Naming> namings_;
  std::vector<FolderSync> syncs_;
  std::map<int, int> open_;  // descriptor, number of the file
  std::map<int, std::string> folders_;
};

}  // namespace stress

#endif
