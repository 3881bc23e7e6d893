// The installation in which the stress tests run the library, and what they try there.
//
// The program is outside the installation root. So a call that treats unreadable settings as missing finds other files,
// or none, and the test detects it.
#ifndef ZELVANE_STRESS_WORLD_H
#define ZELVANE_STRESS_WORLD_H

#include <map>
#include <string>
#include <vector>

namespace stress {

// Path below the base directory, and bytes. The name of a directory ends in "/".
using Files = std::map<std::string, std::string>;

// One installation in the base directory. What a scenario does here while calls fail must not allocate by itself: paths
// and notes are in fixed memory.
class World {
 public:
  explicit World(std::string const& base);

  // Makes the directory contain exactly these files and the program.
  void Set(Files const& files);
  // Removes files written beside the program: the root for users who may not read the settings.
  void ForgetOtherRoot();
  // Returns all files, except the program and temporary files in progress.
  Files Get() const;
  // Returns the names of leftover temporary files.
  std::vector<std::string> Leftovers() const;

  // Returns one of the last eight paths that were requested.
  char const* Path(char const* name);
  char const* Root(char const* name);
  // Records results of a call other than success.
  void Note(char const* format, ...) __attribute__((format(printf, 2, 3)));
  std::string TakeNotes();

  std::string const base;

 private:
  char paths_[8][4200];
  int nextPath_ = 0;
  char notes_[16384];
  std::size_t noted_ = 0;
};

enum Trait : unsigned {
  kClass = 1,         // C++ only: may throw std::bad_alloc
  kAnyNotes = 2,      // the notes depend on the machine
  kPart = 4,          // on failure a new file may have only a part of its contents
  kTwice = 8,         // a second run changes the files again
  kReader = 16,       // every file may be missing: the call then returns the defaults
  kSlow = 32,         // starts processes: tried with only some of the faults in a brief run
  kAdmin = 64,        // requires root
  kForgives = 128,    // success although something could not be written
  kMemoryOnly = 256,  // nothing is promised for other failures
  kNeedsPs = 512,     // without `ps` the result differs; out of memory it must not
  kTable = 1024,      // any failure to read a file of its own leaves a table empty
};

struct Scenario {
  char const* name;
  Files files;                // at the start
  bool (*run)(World& world);  // returns whether all calls succeed
  unsigned traits = 0;
  std::vector<std::string> side = {};  // files that may count as missing if they cannot be read
  // Replaces the rule that files are old or new; null for that rule.
  bool (*judge)(Files const& before, Files const& after, bool ok) = nullptr;
};

std::vector<Scenario> const& Scenarios();
Scenario const& Find(std::string const& name);

// Returns record number `stamp` of the stress tests' logs, including the time stamp. No two records of a log are equal.
std::string Record(long stamp, std::size_t payload);
// Returns whether a log with `payload` bytes per record has only complete records, and all of the `newest` ones, which
// are numbered by their time stamps up to `last`.
bool HoldsNewest(std::string const& log, std::size_t payload, long newest, long last);

// ---- The stress tests. Each prints its figures and returns the number of failures. ----

int Faults(World& world, bool brief, std::string const& only);
int Crashes(World& world, int killsPerWriter);
int PowerCuts(World& world, bool brief, std::string const& only);
// For power cuts of a real file system, made by powercuts_images.sh: runs case `number` in the directory `base`, or
// checks whether everything reported as done is found there again. PowerCutCases prints the numbers and names.
int PowerCutCases();
int PowerCutWrite(std::string const& base, std::size_t number);
int PowerCutJudge(World& world, std::string const& base, std::size_t number);
int Concurrency(World& world);
int Scaling(World& world, bool brief);

}  // namespace stress

#endif
