// Makes every call that can fail do so, at every place, one after the other.
#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <set>

#include "stress/shim.h"
#include "stress/world.h"
#include "support/scratch.h"

namespace stress {
namespace {

struct Fault {
  ShimCall call;
  ShimMode mode;
  int reason;
  long at;
};
constexpr long kNever = 1000000000;

char const* const kCallNames[] = {"open",      "read",    "write", "lseek",  "close",  "sync",  "rename",
                                  "ftruncate", "mkstemp", "fork",  "malloc", "status", "flock", "remove"};
char const* const kModeNames[] = {"once", "ever after", "short", "full", "interrupted", "kill"};

// Returns the errno values with which one kind of call can fail.
std::vector<int> Reasons(ShimCall call) {
  switch (call) {
    case SHIM_OPEN: return {EMFILE, EACCES, EIO, ENOSPC};
    case SHIM_WRITE: return {ENOSPC, EIO};
    case SHIM_CLOSE: return {EIO, ENOSPC, EINTR};
    case SHIM_SYNC: return {EIO, ENOSPC, EINVAL};
    case SHIM_RENAME: return {EACCES, EIO, ENOSPC};
    case SHIM_TRUNCATE: return {EIO, ENOSPC};
    case SHIM_TEMP: return {EMFILE, EACCES, ENOSPC};
    case SHIM_FORK: return {EMFILE, EAGAIN};
    case SHIM_MALLOC: return {ENOMEM};
    case SHIM_STATUS: return {EIO, EACCES};
    case SHIM_LOCK: return {ENOLCK, EWOULDBLOCK};
    default: return {EIO};
  }
}

struct Outcome {
  bool ok = false;
  bool threw = false;
  bool strange = false;  // threw something other than bad_alloc
  long calls = 0;        // of the kind that should fail
  long kept = 0;         // allocated blocks
  std::string notes;
  Files files;
  bool otherRoot = false;  // ran without the settings file
};

int OpenDescriptors() {
  int count = 0;
  for (int fd = 0; fd < 256; fd++) count += fcntl(fd, F_GETFD) >= 0;
  return count;
}

// Shared with the process that watches the injection.
struct Progress {
  long runs;
  long hits;
  long failures;
  char where[200];
};

World* g_world = nullptr;
std::map<std::string, std::set<std::string>>* g_states = nullptr;

void TakeStates() {
  for (auto const& [name, bytes] : g_world->Get()) (*g_states)[name].insert(bytes);
}

class Injection {
 public:
  Injection(World& world, Scenario const& scenario, Progress& progress)
      : world_(world), scenario_(scenario), progress_(progress) {}

  void Run(bool brief) {
    Learn();
    for (int call = 0; call < SHIM_REMOVE; call++) {
      if ((scenario_.traits & kMemoryOnly) != 0 && call != SHIM_MALLOC) continue;
      long const count = Count(static_cast<ShimCall>(call));
      int turn = 0;
      for (ShimMode const mode : {SHIM_ONCE, SHIM_EVER_AFTER, SHIM_SHORT, SHIM_FULL, SHIM_EINTR}) {
        bool const moves = call == SHIM_READ || call == SHIM_WRITE;
        if (mode == SHIM_SHORT && !moves) continue;
        if (mode == SHIM_FULL && call != SHIM_WRITE) continue;
        bool const resumes = moves || call == SHIM_OPEN || call == SHIM_SYNC || call == SHIM_LOCK;
        if (mode == SHIM_EINTR && !resumes) continue;
        bool const one = mode == SHIM_SHORT || mode == SHIM_FULL || mode == SHIM_EINTR;
        for (int const reason :
             one ? std::vector<int>{mode == SHIM_FULL ? ENOSPC : 0} : Reasons(static_cast<ShimCall>(call))) {
          for (long at = 0; at < count; at += 1 + at / (brief ? 20 : 400)) {
            if (brief && (scenario_.traits & kSlow) != 0 && turn++ % 8 != 0) continue;
            Try({static_cast<ShimCall>(call), mode, reason, at});
          }
        }
      }
    }
  }

 private:
  // Runs the scenario, with or without a fault.
  Outcome Once(Fault const* fault) {
    Outcome outcome;
    if (fault != nullptr) ShimArm(fault->call, fault->at, fault->mode, fault->reason);
    long const pieces = ShimPieces();
    try {
      outcome.ok = scenario_.run(world_);
    } catch (std::bad_alloc const&) {
      outcome.threw = true;
    } catch (...) {
      outcome.threw = outcome.strange = true;
    }
    if (fault != nullptr) outcome.calls = ShimDisarm();
    outcome.kept = ShimPieces() - pieces;
    outcome.notes = world_.TakeNotes();
    outcome.files = world_.Get();
    return outcome;
  }

  // Learns what the scenario does undisturbed, the states of its files, and its results without some of them.
  void Learn() {
    for (int i = 0; i < 3; i++) {  // the first run fills the caches of the C library
      world_.Set(scenario_.files);
      before_ = world_.Get();
      g_world = &world_;
      g_states = &states_;
      ShimWatch(TakeStates);
      Fault const none = {SHIM_ANY, SHIM_ONCE, 0, kNever};
      done_ = Once(&none);
      ShimWatch(nullptr);
    }
    if (!done_.ok) Complain({SHIM_ANY, SHIM_ONCE, 0, 0}, "fails undisturbed");
    for (Files const* files : {&before_, &done_.files})
      for (auto const& [name, bytes] : *files) states_[name].insert(bytes);
    std::vector<std::string> side = scenario_.side;
    if ((scenario_.traits & kReader) != 0)
      for (auto const& [name, bytes] : scenario_.files) side.push_back(name);
    for (unsigned subset = 0; subset < 1U << side.size(); subset++) {
      Files files = scenario_.files;
      for (std::size_t i = 0; i < side.size(); i++)
        if ((subset >> i & 1U) != 0) files.erase(side[i]);
      world_.Set(files);
      permitted_.push_back(Once(nullptr));
      // Missing files count as present, unread and unchanged.
      for (std::size_t i = 0; i < side.size(); i++) {
        if ((subset >> i & 1U) == 0) continue;
        permitted_.back().files[side[i]] = before_.at(side[i]);
        permitted_.back().otherRoot = permitted_.back().otherRoot || side[i] == "zelvane.conf";
      }
    }
  }

  long Count(ShimCall call) {
    world_.Set(scenario_.files);
    Fault const none = {call, SHIM_ONCE, 0, kNever};
    return Once(&none).calls;
  }

  void Try(Fault const& fault) {
    std::snprintf(progress_.where, sizeof progress_.where, "%s: %s number %ld, %s, %s", scenario_.name,
                  kCallNames[fault.call], fault.at, kModeNames[fault.mode], std::strerror(fault.reason));
    world_.Set(scenario_.files);
    int const descriptors = OpenDescriptors();
    Outcome const outcome = Once(&fault);
    bool const lost = ShimLost() > 0;
    progress_.runs++;
    progress_.hits += ShimHits() > 0;

    if (outcome.kept > 0) Complain(fault, "memory is not given back");
    if (OpenDescriptors() != descriptors) Complain(fault, "descriptors are not given back");
    if (waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) Complain(fault, "a child is left");
    if (!world_.Leftovers().empty()) Complain(fault, "a temporary file is left");
    if (outcome.strange || (outcome.threw && (scenario_.traits & kClass) == 0))
      Complain(fault, "an exception came out");
    if (lost && outcome.ok && (scenario_.traits & kForgives) == 0)
      Complain(fault, "success, but what was written may not be on disk");
    if (fault.mode == SHIM_EINTR && !Equal(outcome, done_)) Complain(fault, "an interruption shows");
    if (fault.call == SHIM_SYNC && fault.reason == EINVAL && !Equal(outcome, done_))
      Complain(fault, "a file system that cannot sync shows");
    Judge(fault, outcome);
    Again(fault);
  }

  static bool Equal(Outcome const& a, Outcome const& b) {
    return a.ok == b.ok && a.threw == b.threw && a.notes == b.notes && a.files == b.files;
  }

  bool AnyNotes(Fault const& fault) const {
    return (scenario_.traits & kAnyNotes) != 0 || ((scenario_.traits & kNeedsPs) != 0 && fault.call != SHIM_MALLOC);
  }

  // Returns whether this can be the result of the fault. A file that this user may not read counts as missing; a file
  // that is temporarily unreadable does not.
  bool IsPermitted(Fault const& fault, Outcome const& each) const {
    bool const refused = (fault.call == SHIM_OPEN || fault.call == SHIM_STATUS) && fault.reason == EACCES;
    bool const table = (scenario_.traits & kTable) != 0 && fault.call != SHIM_MALLOC && !each.otherRoot;
    return &each == &permitted_.front() || refused || table;
  }

  void Judge(Fault const& fault, Outcome const& outcome) {
    bool known = !outcome.ok || AnyNotes(fault);
    bool whole = false;
    for (Outcome const& each : permitted_) {
      if (!IsPermitted(fault, each)) continue;
      bool const sameNotes = outcome.notes == each.notes || AnyNotes(fault);
      known = known || (each.ok && sameNotes);
      whole = whole || (each.ok && sameNotes && outcome.files == each.files);
    }
    if (!known) Complain(fault, "success, but it tells something else: " + outcome.notes);
    if (scenario_.judge != nullptr) {
      if (!scenario_.judge(before_, outcome.files, outcome.ok)) Complain(fault, "files are not as promised");
      return;
    }
    if (outcome.ok) {
      if (!whole)
        Complain(fault, "success, but the files are not as they should be" + Difference(outcome.files, done_.files));
      return;
    }
    for (auto const& [name, bytes] : outcome.files) {
      if (name.compare(0, 8, "program/") == 0) continue;  // the other root: see ForgetOtherRoot
      auto const states = states_.find(name);
      bool const part = (scenario_.traits & kPart) != 0 && IsPart(name, bytes);
      if (!part && (states == states_.end() || states->second.count(bytes) == 0))
        Complain(fault, "neither old nor new: " + name + ": " + bytes.substr(0, 200));
    }
    for (auto const& [name, bytes] : before_)
      if (outcome.files.count(name) == 0) Complain(fault, "gone: " + name);
  }

  // Returns whether a new file has the beginning of its final contents. For a directory it is enough that it exists.
  bool IsPart(std::string const& name, std::string const& bytes) {
    if (name.back() == '/') return true;
    auto const made = done_.files.find(name);
    return made != done_.files.end() && made->second.compare(0, bytes.size(), bytes) == 0;
  }

  static std::string Difference(Files const& files, Files const& wanted) {
    for (auto const& [name, bytes] : files) {
      auto const there = wanted.find(name);
      if (there == wanted.end()) return ": there is " + name;
      if (there->second != bytes) return ": " + name + " holds " + bytes.substr(0, 200);
    }
    return ": something is missing";
  }

  // Runs the scenario again without the fault.
  void Again(Fault const& fault) {
    if ((scenario_.traits & (kTwice | kPart)) != 0) world_.Set(scenario_.files);
    world_.ForgetOtherRoot();
    Outcome const outcome = Once(nullptr);
    bool const sameFiles = outcome.files == done_.files || scenario_.judge != nullptr;
    if (!outcome.ok || !sameFiles || (outcome.notes != done_.notes && (scenario_.traits & kAnyNotes) == 0))
      Complain(fault, "does not succeed afterwards" + Difference(outcome.files, done_.files));
  }

  void Complain(Fault const& fault, std::string const& what) {
    progress_.failures++;
    if (complaints_++ < 8)
      std::printf("FAILED  %s: %s number %ld, %s, %s: %s\n", scenario_.name, kCallNames[fault.call % SHIM_ANY],
                  fault.at, kModeNames[fault.mode], std::strerror(fault.reason), what.c_str());
  }

  World& world_;
  Scenario const& scenario_;
  Progress& progress_;
  Files before_;
  Outcome done_;
  int complaints_ = 0;
  std::vector<Outcome> permitted_;
  std::map<std::string, std::set<std::string>> states_;
};

}  // namespace

int Faults(World& world, bool brief, std::string const& only) {
  auto* const progress = static_cast<Progress*>(
      mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  int scenarios = 0;
  for (Scenario const& scenario : Scenarios()) {
    if (!only.empty() && only != scenario.name) continue;
    if ((scenario.traits & kAdmin) != 0 && geteuid() != 0) continue;
    scenarios++;
    long const runs = progress->runs;
    std::fflush(stdout);
    // A separate process: a crash must not end the run, and must show where it was.
    pid_t const child = fork();
    if (child == 0) {
      alarm(1200);
      Injection(world, scenario, *progress).Run(brief);
      std::exit(0);  // not _exit: a build for coverage writes its results here
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      progress->failures++;
      std::printf("FAILED  %s: ended by signal %d\n", progress->where, WIFSIGNALED(status) ? WTERMSIG(status) : 0);
    }
    if (!brief) std::printf("%6ld  %s\n", progress->runs - runs, scenario.name);
  }
  std::printf("faults: %d scenarios, %ld runs, %ld of them met their fault, %ld failures\n", scenarios, progress->runs,
              progress->hits, progress->failures);
  return static_cast<int>(progress->failures);
}

}  // namespace stress
