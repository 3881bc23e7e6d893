// The cost of durable appends and saves, compared with the same system calls and syncs. Measured in memory, where a
// sync is nearly free, and on the scratch disk (ZELVANE_BENCH_DISK or /var/tmp), where the sync dominates.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "bench.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/logs/logclass.h"

namespace {

constexpr std::size_t kPayload = 64;
constexpr std::size_t kRecord = 4 + kPayload;
constexpr std::size_t kBound = 1024;
constexpr std::size_t kBlock = 65536 / kRecord * kRecord;
constexpr std::size_t kPage = 4096 / kRecord * kRecord;

// A directory of its own, so that its sync covers no other names.
class Place {
 public:
  explicit Place(bool disk) {
    char const* const chosen = std::getenv("ZELVANE_BENCH_DISK");
    folder_ = (!disk ? "/dev/shm" : chosen != nullptr ? chosen : "/var/tmp") + std::string("/zelvane-bench-XXXXXX");
    Require(mkdtemp(folder_.data()) != nullptr, "scratch folder");
  }
  ~Place() {
    for (char const* name : {"log", "log.tmp", "cfg", "cfg.new"}) unlink(Path(name).c_str());
    rmdir(folder_.c_str());
  }
  Place(Place const&) = delete;
  Place& operator=(Place const&) = delete;
  std::string Path(char const* name) const { return folder_ + "/" + name; }
  std::string const& Folder() const { return folder_; }

 private:
  std::string folder_;
};

void Fill(std::string const& path, std::size_t records) {
  std::ofstream(path, std::ios::binary) << std::string(records * kRecord, 'r');
}

void OursAppend(benchmark::State& state, bool disk, bool atBound) {
  Place const place(disk);
  Fill(place.Path("log"), kBound);
  LogClass log;
  log.SetFile(place.Path("log"));
  log.SetMaxLines(atBound ? kBound : UINT32_MAX);
  char const payload[kPayload] = "mains failed";
  long when = 0;
  for (auto _ : state) Require(log.WriteReg(when++, payload, kPayload), "append");
}

void Count(std::string const& path) {
  struct stat status = {};
  int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  Require(file >= 0 && fstat(file, &status) == 0, "count");
  close(file);
}

void CopyBare(int from, int to, std::size_t piece) {
  static char block[kBlock];
  lseek(to, 0, SEEK_SET);
  for (ssize_t got = kBlock; got == static_cast<ssize_t>(kBlock);) {
    usleep(1000);
    got = read(from, block, sizeof block);
    for (ssize_t at = 0; at < got; at += static_cast<ssize_t>(piece))
      Require(write(to, block + at, std::min(static_cast<std::size_t>(got - at), piece)) > 0, "write");
  }
}

void CutBare(Place const& place, std::string const& path, std::string const& scratch) {
  struct stat status = {};
  std::string const unfinished = scratch + "~";
  int const log = open(path.c_str(), O_RDWR | O_CLOEXEC);
  int const folder = open(place.Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  fstat(log, &status);
  int const copy = open(unfinished.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  lseek(log, kRecord, SEEK_SET);
  CopyBare(log, copy, kBlock);
  Require(fsync(copy) == 0 && rename(unfinished.c_str(), scratch.c_str()) == 0 && fsync(folder) == 0, "scratch");
  flock(log, LOCK_EX | LOCK_NB);
  lseek(copy, 0, SEEK_SET);
  CopyBare(copy, log, kPage);  // a kill ends a write between two pages
  Require(ftruncate(log, status.st_size - static_cast<off_t>(kRecord)) == 0 && fsync(log) == 0, "cut");
  Require(unlink(scratch.c_str()) == 0 && fsync(folder) == 0, "scratch gone");
  flock(log, LOCK_UN);
  close(copy), close(folder), close(log);
}

void LowerBoundAppend(benchmark::State& state, bool disk, bool atBound) {
  Place const place(disk);
  std::string const path = place.Path("log"), scratch = place.Path("log.tmp");
  Fill(path, kBound);
  char record[kRecord] = "mains failed";
  for (auto _ : state) {
    struct stat status = {};
    lstat(scratch.c_str(), &status);
    Count(path);
    int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    fstat(file, &status);
    Require(write(file, record, kRecord) == static_cast<ssize_t>(kRecord), "write");
    Count(path);
    if (atBound) {
      CutBare(place, path, scratch);
    } else {
      Require(fdatasync(file) == 0, "sync");
    }
    close(file);
  }
}

// ---- A save of 20 keys, one of them changed ----

std::string Text(unsigned long value) {
  std::string text = "[A]\nchanges = " + std::to_string(value % 10);
  for (int i = 1; i < 20; i++) text += "\nkey" + std::to_string(i) + " = value";
  return text;
}

void OursSave(benchmark::State& state, bool disk) {
  Place const place(disk);
  std::ofstream(place.Path("cfg")) << Text(0);
  CfgClass cfg;
  cfg.SetCached(true);
  Require(cfg.Open(place.Path("cfg")), "open");
  unsigned long value = 0;
  for (auto _ : state) Require(cfg.WriteInt("A", "changes", static_cast<long>(++value % 10)) && cfg.Flush(), "save");
  std::ifstream in(place.Path("cfg"));
  Require(std::string(std::istreambuf_iterator<char>(in), {}) == Text(value), "saved text");
}

void LowerBoundSave(benchmark::State& state, bool disk) {
  Place const place(disk);
  std::string const path = place.Path("cfg"), made = place.Path("cfg.new");
  std::ofstream(path) << Text(0);
  unsigned long value = 0;
  for (auto _ : state) {
    std::string const text = Text(++value);
    struct stat status = {};
    char link[64];
    std::uint64_t random = 0;
    int const old = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    fstat(old, &status);
    benchmark::DoNotOptimize(readlink(path.c_str(), link, sizeof link));
    lstat(path.c_str(), &status);
    fgetxattr(old, "system.posix_acl_access", nullptr, 0);
    int const folder = open(place.Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    benchmark::DoNotOptimize(getrandom(&random, sizeof random, GRND_NONBLOCK));
    int const file = open(made.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    fstat(file, &status);
    fgetxattr(file, "system.posix_acl_access", nullptr, 0);
    fchmod(file, 0644);
    fstat(file, &status);
    Require(write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && fsync(file) == 0, "write");
    close(file);
    Require(rename(made.c_str(), path.c_str()) == 0 && fsync(folder) == 0, "rename");
    close(folder), close(old);
  }
}

// In memory the processor time is reported, on the disk the elapsed time.
template <class Body>
void Register(char const* name, bool disk, Body body) {
  auto* const row = benchmark::RegisterBenchmark((std::string(name) + (disk ? "/disk" : "/memory")).c_str(),
                                                 [=](benchmark::State& state) { body(state, disk); });
  if (disk) row->UseRealTime();
}

bool RegisterAll() {
  for (bool const disk : {false, true}) {
    for (bool const atBound : {false, true}) {
      std::string const task = atBound ? "durable-append-at-bound" : "durable-append";
      Register((task + "/ours").c_str(), disk, [=](auto& state, bool on) { OursAppend(state, on, atBound); });
      Register((task + "/lower-bound").c_str(), disk,
               [=](auto& state, bool on) { LowerBoundAppend(state, on, atBound); });
    }
    Register("durable-save/ours", disk, [](auto& state, bool on) { OursSave(state, on); });
    Register("durable-save/lower-bound", disk, [](auto& state, bool on) { LowerBoundSave(state, on); });
  }
  return true;
}

bool const g_registered = RegisterAll();

}  // namespace
