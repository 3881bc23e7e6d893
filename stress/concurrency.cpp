// Several concurrent processes or threads.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <vector>

#include "stress/world.h"
#include "support/scratch.h"
#include "zelvane/zelvane.h"

namespace stress {
namespace {

constexpr unsigned long kPayload = 64;
constexpr long kRecords = 2000;

// Returns the number of children that returned false.
int Together(int count, std::function<bool(int)> const& body) {
  for (int number = 0; number < count; number++) {
    if (fork() == 0) _exit(body(number) ? 0 : 1);
  }
  int failed = 0;
  for (int status = 0, left = count; left > 0 && wait(&status) > 0; left--)
    failed += !WIFEXITED(status) || WEXITSTATUS(status) != 0;
  return failed;
}

bool AppendMany(std::string const& path, int number) {
  LogClass log;
  log.SetFile(path);
  log.SetMaxLines(1000000);
  unsigned char data[kPayload];
  for (long i = 0; i < kRecords; i++) {
    std::memset(data, number, sizeof data);
    if (!log.WriteReg(number * kRecords + i, data, kPayload)) return false;
  }
  return true;
}

// Returns whether every record is there exactly once, complete, and those of each writer are in its order.
bool HoldsAll(std::string const& path, int writers) {
  LogClass log;
  log.SetFile(path);
  if (log.LoadFile(kPayload) != static_cast<unsigned long>(writers * kRecords)) return false;
  std::vector<long> next(static_cast<std::size_t>(writers), 0);
  long when = 0;
  unsigned char data[kPayload];
  for (unsigned long i = 0; log.ReadReg(i, &when, data, kPayload); i++) {
    long const writer = when / kRecords;
    if (writer < 0 || writer >= writers || when % kRecords != next[static_cast<std::size_t>(writer)]++) return false;
    if (std::count(data, data + kPayload, static_cast<unsigned char>(writer)) != kPayload) return false;
  }
  return true;
}

int Appending(World& world) {
  int failures = 0;
  for (int const writers : {2, 4, 8}) {
    world.Set({{"root/shared.rgt", ""}});
    std::string const path = world.base + "root/shared.rgt";
    int const failed = Together(writers, [&](int number) { return AppendMany(path, number); });
    bool const whole = HoldsAll(path, writers);
    failures += failed + !whole;
    std::printf("concurrency: %d processes appending %ld records each to one log: %s\n", writers, kRecords,
                failed == 0 && whole ? "all there, in order" : "FAILED");
    std::fflush(stdout);
  }
  return failures;
}

// Several programs find a damaged log: one repairs it, and the records of all are there.
int Repairing(World& world) {
  constexpr int kRounds = 50, kWriters = 4;
  int lost = 0;
  std::string const path = world.base + "root/shared.rgt";
  for (int round = 0; round < kRounds; round++) {
    world.Set({{"root/shared.rgt", std::string(100, 't')}});
    int const failed = Together(kWriters, [&](int number) {
      LogClass log;
      log.SetFile(path);
      unsigned char const data[kPayload] = {};
      return log.WriteReg(number, data, kPayload);
    });
    lost += failed != 0 || test::ReadFile(path).size() != kWriters * (4 + kPayload) ||
            test::ReadFile(path + ".bad") != std::string(100, 't');
  }
  std::printf("concurrency: %d processes at one torn log, %d rounds: %s\n", kWriters, kRounds,
              lost == 0 ? "all records there" : "FAILED");
  return lost;
}

// Readers beside a writer, which works until it is killed. Returns the number of readers that failed, and one more if
// the writer stopped by itself.
template <class Write, class Read>
int ReadBesideWriter(Write&& write, Read&& read) {
  pid_t const writer = fork();
  if (writer == 0) {
    for (long i = 0; write(i); i++) continue;
    _exit(1);
  }
  int const failed = Together(4, read);
  int status = 0;
  bool const wrote = waitpid(writer, &status, WNOHANG) == 0;
  if (wrote) {
    kill(writer, SIGKILL);
    waitpid(writer, &status, 0);
  }
  return failed + !wrote;
}

// Readers of a log that another program cuts with every record: the records that they see are consecutive.
int Opening(World& world) {
  constexpr int kOpens = 1000, kBound = 200;
  std::string const path = world.base + "root/shared.rgt";
  auto const append = [&](long stamp) {
    LogClass log;
    log.SetFile(path);
    log.SetMaxLines(kBound);
    unsigned char const data[kPayload] = {};
    return log.WriteReg(stamp, data, kPayload);
  };
  world.Set({});
  for (long stamp = 0; stamp < kBound; stamp++) append(stamp);
  auto const read = [&](int) {
    for (int i = 0; i < kOpens; i++) {
      void* const log = LogReaderOpen(path.c_str());
      unsigned long const count = LogReaderRegCount(log);
      long first = 0, when = 0;
      unsigned char data[kPayload];
      bool sound = count >= kBound && LogReaderReadReg(log, 0, &first, data) == 1;
      for (unsigned long n = 0; sound && n < count; n++)
        sound = LogReaderReadReg(log, n, &when, data) == 1 && when == first + static_cast<long>(n);
      LogReaderClose(log);
      if (!sound) return false;
    }
    return true;
  };
  int const failed = ReadBesideWriter([&](long i) { return append(kBound + i); }, read);
  std::printf("concurrency: 4 readers, %d opens each, of a log that is cut with every record: %s\n", kOpens,
              failed == 0 ? "always whole" : "FAILED");
  return failed;
}

// A writer that alternates between two contents, and readers that must see one of them.
int Reading(World& world) {
  constexpr int kReads = 3000;
  std::string const one = "[A]\nkey = 1\n" + std::string(20000, ';') + "\nlast = 1";
  std::string const two = "[A]\nkey = 2\n" + std::string(20000, ';') + "\nlast = 2";
  world.Set({{"root/shared.cfg", one}});
  std::string const path = world.base + "root/shared.cfg";
  auto const write = [&](long i) {
    CfgClass file;
    file.SetCached(true);
    if (!file.Open(path)) return false;
    file.WriteInt("A", "key", 1 + i % 2);
    file.WriteInt("A", "last", 1 + i % 2);
    return file.Flush();
  };
  auto const read = [&](int) {
    for (int i = 0; i < kReads; i++) {
      std::string const bytes = test::ReadFile(path);
      if (bytes != one && bytes != two) return false;
      CfgClass file;
      if (!file.OpenReadOnly(path) || file.ReadInt("A", "key", 0) != file.ReadInt("A", "last", -1)) return false;
    }
    return true;
  };
  int const failed = ReadBesideWriter(write, read);
  std::printf("concurrency: 4 readers, %d reads each, of a file that is being rewritten: %s\n", kReads,
              failed == 0 ? "always whole" : "FAILED");
  return failed;
}

}  // namespace

int Concurrency(World& world) { return Appending(world) + Repairing(world) + Opening(world) + Reading(world); }

}  // namespace stress
