// How time and memory grow with the size of the data, and the behaviour on a full disk.
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>

#include "stress/shim.h"
#include "stress/world.h"
#include "support/scratch.h"
#include "zelvane/zelvane.h"

namespace stress {
namespace {

struct Cost {
  bool ok;
  double seconds;
  long kilobytes;  // maximum of the process
};

// Runs in a separate process, so that its memory is known.
template <class Body>
Cost Measure(Body&& body) {
  pid_t const child = fork();
  if (child == 0) _exit(body() ? 0 : 1);
  int status = 0;
  rusage usage = {};
  wait4(child, &status, 0, &usage);
  double const cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                     static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  return {WIFEXITED(status) && WEXITSTATUS(status) == 0, cpu, usage.ru_maxrss};
}

struct Subject {
  char const* name;
  long most;
  void (*make)(std::string const& path, long count);
  bool (*work)(std::string const& path, long count);
};

void MakeKeys(std::string const& path, long count) {
  std::ofstream out(path);
  out << "[S]\n";
  for (long i = 0; i < count; i++) out << "KEY" << i << " = " << i << '\n';
}

bool UseKeys(std::string const& path, long count) {
  CfgClass file;
  file.SetCached(true);
  if (!file.Open(path) || file.GetKeyCount("S") != static_cast<unsigned long>(count)) return false;
  file.SetSection("S");
  for (long i = 0; i < count; i += 7)
    if (file.ReadInt(file.GetKeyName(static_cast<unsigned long>(i)), -1) < 0) return false;
  return file.WriteInt("KEY" + std::to_string(count / 2), 5) && file.WriteInt("NEW", 1) && file.Flush();
}

void MakeRecords(std::string const& path, long count) {
  std::ofstream out(path, std::ios::binary);
  char record[68] = {};
  for (long i = 0; i < count; i++) {
    long const stamp = 1000000 + 60 * i;
    for (int b = 0; b < 4; b++) record[b] = static_cast<char>(stamp >> 8 * b);
    record[4] = static_cast<char>(i % 5);
    out.write(record, sizeof record);
  }
}

bool UseRecords(std::string const& path, long count) {
  void* const log = LogReaderOpen(path.c_str());
  bool const right = LogReaderRegCount(log) == static_cast<unsigned long>(count) &&
                     LogReaderCountEvents(log, 2, 0, 2000000000) == static_cast<unsigned long>(count / 5) &&
                     LogReaderTimeEvents(log, 1, 2, 3, 0, 2000000000) > 0;
  return LogReaderClose(log) == 1 && right;
}

void MakePs(std::string const& path, long count) {
  std::ofstream out(path);
  out << "  PID  PPID  NI COMMAND         COMMAND\n";
  for (long i = 1; i <= count; i++) out << "  " << i << "     1   0 p" << i << "      /usr/bin/p" << i << " -d\n";
}

bool UsePs(std::string const&, long count) {
  ProcManager table;
  if (table.GetProcCount() != static_cast<unsigned long>(count)) return false;
  return table.GetProcByName("p" + std::to_string(count)) != nullptr && table.GetProcByPID(1) != nullptr;
}

void MakeLine(std::string const& path, long count) {
  std::ofstream out(path, std::ios::binary);
  std::string const megabyte(1 << 20, 'x');
  for (long i = 0; i < count; i++) out << megabyte;
}

bool UseLine(std::string const& path, long count) {
  CfgClass file;
  return file.OpenReadOnly(path) && file.GetKeyCount("") == 1 &&
         file.ReadStr("", 0UL, "").size() == static_cast<std::size_t>(count) << 20;
}

void MakeTexts(std::string const& path, long count) {
  std::ofstream out(path);
  out << "[1]\n";
  for (long i = 0; i < count; i++) out << i << " = text " << i << '\n';
}

bool UseTexts(std::string const& path, long count) {
  LangClass lang;
  lang.SetFileName(path);
  return lang.LoadStrings(1) && lang.GetLangStr(count - 1) == "text " + std::to_string(count - 1);
}

void MakeNetwork(std::string const& path, long count) {
  std::ofstream out(path);
  out << "[GROUPS]\n0 = all;-1\n[COMPUTERS]\n";
  for (long i = 0; i < count; i++) out << i << " = pc" << i << ";10.0.0.1;0\n";
  out << "[NOBREAKS]\n";
  for (long i = 0; i < count; i++) out << i << " = u" << i << ";10.0.0.1;0;" << i << '\n';
}

bool UseNetwork(std::string const& path, long) {
  void* const list = OpenBrwsList(path.c_str());
  bool const done = RemoveBrwsGroup(list, 0, true) == 1 && GetBrwsNobreaksCount(list) == 0;
  return CloseBrwsList(list) == 1 && done;
}

constexpr Subject kSubjects[] = {
    {"keys of a configuration file", 1000000, MakeKeys, UseKeys},
    {"records of a log", 1000000, MakeRecords, UseRecords},
    {"lines of ps", 100000, MakePs, UsePs},
    {"texts of a language", 200000, MakeTexts, UseTexts},
    {"computers below a removed group", 100000, MakeNetwork, UseNetwork},
    {"MiB without a line feed", 1024, MakeLine, UseLine},
};

int Growth(World& world, bool brief) {
  int failures = 0;
  for (Subject const& subject : kSubjects) {
    Cost before = {};
    for (long count = subject.most / 4; count <= (brief ? subject.most / 4 : subject.most); count *= 2) {
      world.Set({});
      std::string const path = world.base + (subject.work == UsePs ? "only/output" : "root/subject");
      subject.make(path, count);
      Cost cost = Measure([&] { return subject.work(path, count); });
      // Other load on the machine must not count.
      subject.make(path, count);
      Cost const again = Measure([&] { return subject.work(path, count); });
      if (!again.ok || again.seconds < cost.seconds) cost = again;
      // The sizes of caches fall in between; anything that is not linear grows by a factor of four.
      bool const linear = before.seconds == 0 || cost.seconds < 0.05 || cost.seconds / before.seconds < 3;
      std::printf("scaling: %8ld %-34s %7.2f s %8ld KiB%s\n", count, subject.name, cost.seconds, cost.kilobytes,
                  !cost.ok ? "  FAILED"
                  : linear ? ""
                           : "  NOT LINEAR");
      std::fflush(stdout);
      failures += !cost.ok || !linear;
      before = cost;
      unlink(path.c_str());
    }
  }
  return failures;
}

// Names as long as the system accepts, and longer.
int LongPaths(World& world) {
  int failures = 0;
  for (std::size_t const length : {255UL, 4095UL, 4096UL, 70000UL}) {
    std::string path = world.base + "root/";
    while (path.size() + 201 < length) path += std::string(200, 'd') + "/";
    path += std::string(length - path.size(), 'f');
    CfgClass file;
    LogClass log;
    log.SetFile(path);
    void* const list = OpenBrwsList(path.c_str());
    bool const refused = !file.Open(path) && !log.WriteReg(0, "", 0) && !FilePermToRead(path) && !DirExists(path) &&
                         GetBrwsGroupsCount(list) == 0 && LogReaderOpen(path.c_str()) == nullptr &&
                         ParseMacroFileName("//UPSCONFIGDIR//x", path) == path + "x" &&
                         ExtractFilePath(path) + ExtractFileName(path) == path;
    CloseBrwsList(list);
    std::printf("scaling: a path of %zu bytes: %s\n", length, refused ? "refused" : "FAILED");
    failures += !refused;
  }
  return failures;
}

// No file can grow above the limit: every writer must fail there and keep the old contents.
int FullDisk(World& world) {
  int failures = 0;
  for (char const* name :
       {"CfgClass: a change", "CfgClass: many links to the file", "SetShutSrvConfig", "SetClientConfig",
        "SetUpsSrvConfig, USB and model", "record log, appending", "record log, damaged", "text log",
        "schedule, adding", "browse list, adding and changing", "server list, adding and removing"}) {
    Scenario const& scenario = Find(name);
    world.Set(scenario.files);
    Files const before = world.Get();
    Cost const cost = Measure([&] {
      signal(SIGXFSZ, SIG_IGN);
      rlimit const limit = {5, 5};
      setrlimit(RLIMIT_FSIZE, &limit);
      return !scenario.run(world);
    });
    bool const kept = world.Get() == before && world.Leftovers().empty();
    std::printf("full disk: %-40s %s\n", name,
                !cost.ok ? "FAILED: told success"
                : kept   ? "refused, old files whole"
                         : "FAILED: files changed");
    failures += !cost.ok || !kept;
  }
  return failures;
}

}  // namespace

int Scaling(World& world, bool brief) {
  world.Set({});
  return FullDisk(world) + LongPaths(world) + Growth(world, brief);
}

}  // namespace stress
