// The place where the stress tests run the library, and what they try there.
//
// The program lies outside the installation root. So a call that takes settings which it cannot read for missing
// ones finds other files, or none, and that shows.
#ifndef ZELVANE_STRESS_WORLD_H
#define ZELVANE_STRESS_WORLD_H

#include <map>
#include <string>
#include <vector>

namespace stress {

// Path below the base folder, and bytes. A folder's name ends in "/".
using Files = std::map<std::string, std::string>;

// One installation at the base folder. What a scenario does here while calls fail must not allocate by itself: paths
// and notes are kept in fixed memory.
class World {
 public:
  explicit World(std::string const& base);

  // Makes the folder hold these files and nothing else but the program.
  void Set(Files const& files);
  // Removes what was written beside the program: the root of those who may not read the settings.
  void ForgetOtherRoot();
  // Everything there is now, but the program and temporary files in the making.
  Files Get() const;
  // The names of temporary files that were left.
  std::vector<std::string> Leftovers() const;

  // One of the last eight paths that were asked for.
  char const* Path(char const* name);
  char const* Root(char const* name);
  // Writes down what a call gave, besides success.
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
  kClass = 1,         // C++ alone: std::bad_alloc may come out
  kAnyNotes = 2,      // the notes depend on the machine
  kPart = 4,          // on failure a new file may hold a part of what it was to hold
  kTwice = 8,         // doing it again changes the files again
  kReader = 16,       // every file may be missing: the call then tells the defaults
  kSlow = 32,         // starts processes: left out of every second fault in the short form
  kAdmin = 64,        // takes root
  kForgives = 128,    // success although something could not be written
  kMemoryOnly = 256,  // no other failure is promised anything
  kNeedsPs = 512,     // without `ps` it tells another thing; out of memory it must not
  kTable = 1024,      // whatever keeps it from reading a file of its own leaves a table empty
};

struct Scenario {
  char const* name;
  Files files;                // at the beginning
  bool (*run)(World& world);  // whether all calls tell success
  unsigned traits = 0;
  std::vector<std::string> side = {};  // files that may be taken for missing when they cannot be read
  // In the place of the rule that files are old or new; null for that rule.
  bool (*judge)(Files const& before, Files const& after, bool ok) = nullptr;
};

std::vector<Scenario> const& Scenarios();
Scenario const& Find(std::string const& name);

// Record number `stamp` of the stress tests' logs, stamp and all; no two of a log are alike.
std::string Record(long stamp, std::size_t payload);
// Whether a log of `payload` bytes a record holds whole records, and all of the `newest` ones, which are numbered by
// their stamps up to `last`.
bool HoldsNewest(std::string const& log, std::size_t payload, long newest, long last);

// ---- The stress tests; each prints its figures and returns the number of failures. ----

int Faults(World& world, bool brief, std::string const& only);
int Crashes(World& world, int killsPerWriter);
int PowerCuts(World& world, bool brief, std::string const& only);
// For power cuts of a real file system, which powercuts_images.sh makes: what the case numbered `number` does, done in
// the folder `base`; and whether what was told is found there again. PowerCutCases prints the numbers and names.
int PowerCutCases();
int PowerCutWrite(std::string const& base, std::size_t number);
int PowerCutJudge(World& world, std::string const& base, std::size_t number);
int Concurrency(World& world);
int Scaling(World& world, bool brief);

}  // namespace stress

#endif
