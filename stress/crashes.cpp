// Kills writers at every call, and at random times.
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <random>

#include "stress/shim.h"
#include "stress/world.h"
#include "support/scratch.h"
#include "zelvane/logs/logclass.h"

namespace stress {
namespace {

struct Writer {
  char const* name;
  char const* scenario;  // what it does
  bool log;              // records may be lost while they are being written; otherwise each file is old or new
  bool again;            // in the random kills it repeats the scenario until it is killed
};

constexpr Writer kWriters[] = {
    {"configuration save", "CfgClass: many changes, one save", false, true},
    {"settings record", "SetShutSrvConfig", false, true},
    {"schedule", "schedule, removing at once", false, true},
    {"browse cascade", "browse list, cascade", false, true},
    {"log append", "record log, appending", true, true},
    {"log at its maximum", "record log at its maximum", true, false},
};

constexpr std::size_t kPayload = 64;
constexpr long kBound = 9;

// The possible contents of the files: before and after.
struct Expected {
  Files before;
  Files after;
};

Expected Learn(World& world, Scenario const& scenario) {
  world.Set(scenario.files);
  Files const before = world.Get();
  scenario.run(world);
  return {before, world.Get()};
}

// Shared with the child: whether it is at work (1) or finished (2), and how often it has reported success.
struct Shared {
  std::atomic<int> stage;
  std::atomic<long> told;
};

// Returns whether the files are sound. Everything that the writer has reported as done must be there too.
bool IsSound(Writer const& writer, Expected const& expected, World const& world, long told, long* lost) {
  Files const files = world.Get();
  if (writer.log) {
    std::string const& log = files.at("root/logevt.rgt");
    long const last = static_cast<long>(expected.before.at("root/logevt.rgt").size() / (4 + kPayload)) - 1;
    std::size_t const whole = log.size() / (4 + kPayload) * (4 + kPayload);
    *lost += whole != log.size();
    // All earlier records, except the one that is dropped for the new one.
    bool const cut = last + 1 >= kBound;
    if (cut && told > 0) return HoldsNewest(log.substr(0, whole), kPayload, kBound, last + 1);
    if (!cut && static_cast<long>(whole / (4 + kPayload)) < last + 1 + told) return false;
    return HoldsNewest(log.substr(0, whole), kPayload, cut ? kBound - 1 : last + 1, last);
  }
  for (auto const& [name, bytes] : expected.before) {
    auto const file = files.find(name);
    if (file == files.end()) return false;
    if ((file->second != bytes || told > 0) && file->second != expected.after.at(name)) return false;
  }
  return true;
}

template <class Body>
pid_t Start(Body&& body) {
  pid_t const child = fork();
  if (child == 0) {
    body();
    _exit(0);
  }
  return child;
}

// Kills the child at its call number `at`. Returns true if it had no such call.
bool KillAtCall(World& world, Scenario const& scenario, long at) {
  pid_t const child = Start([&] {
    ShimArm(SHIM_ANY, at, SHIM_KILL, 0);
    scenario.run(world);
  });
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status);
}

// Kills the child that many microseconds after its start. Returns true if it was not yet finished.
bool KillAfter(World& world, Scenario const& scenario, bool again, double moment, Shared& shared) {
  shared.stage = 0;
  pid_t const child = Start([&] {
    shared.stage = 1;
    do shared.told += scenario.run(world);
    while (again);
    shared.stage = 2;
    for (;;) pause();
  });
  while (shared.stage == 0) sched_yield();
  auto const end = std::chrono::steady_clock::now() + std::chrono::duration<double, std::micro>(moment);
  while (std::chrono::steady_clock::now() < end) sched_yield();
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  return shared.stage == 1;
}

}  // namespace

int Crashes(World& world, int killsPerWriter) {
  std::mt19937 chance(20260321);  // the same times in every run, as far as the machine allows
  auto* const shared =
      static_cast<Shared*>(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  long failures = 0;
  for (Writer const& writer : kWriters) {
    Scenario const& scenario = Find(writer.scenario);
    Expected const expected = Learn(world, scenario);
    double span = 400;
    long atCalls = 0, atRandom = 0, within = 0, torn = 0, damaged = 0, left = 0;
    auto const check = [&](char const* how, long at) {
      left += static_cast<long>(world.Leftovers().size());
      if (IsSound(writer, expected, world, shared->told, &torn)) return;
      damaged++;
      std::printf("FAILED  %s: killed at %s %ld\n", writer.name, how, at);
    };
    for (bool finished = false; !finished && atCalls < killsPerWriter / 2; atCalls++) {
      world.Set(scenario.files);
      shared->told = 0;
      finished = KillAtCall(world, scenario, atCalls);
      if (!finished) check("call", atCalls);
    }
    for (; atCalls + atRandom < killsPerWriter; atRandom++) {
      world.Set(scenario.files);
      shared->told = 0;
      // The range of the times adapts to the machine: about half of the kills should hit the writer at work.
      bool const inside =
          KillAfter(world, scenario, writer.again, std::uniform_real_distribution<>(0, span)(chance), *shared);
      if (!writer.again) span *= inside ? 1.05 : 0.95;
      within += inside;
      check("random moment", atRandom);
    }
    std::printf(
        "crashes: %-20s %4ld at each call, %4ld at random (%ld of them at work): %ld damaged, %ld with a torn last "
        "record, %ld temporary "
        "files left\n",
        writer.name, atCalls, atRandom, within, damaged, torn, left);
    std::fflush(stdout);
    failures += damaged;
  }
  return static_cast<int>(failures);
}

}  // namespace stress
