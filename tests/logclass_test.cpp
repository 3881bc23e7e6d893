#include "zelvane/logs/logclass.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

#include "support/child.h"
#include "support/scratch.h"
#include "support/slot.h"
#include "zelvane/core/datetime.h"

namespace {
int g_pausesToLive = -1;  // the process is killed in the pause after that many; -1: it is not
int g_looksToFail = -1;   // the look at a file after that many fails; -1: none does
}  // namespace

// The library pauses before each block that it copies: the moments at which a kill is interesting.
extern "C" __attribute__((visibility("default"))) int usleep(useconds_t wait) {
  if (g_pausesToLive >= 0 && g_pausesToLive-- == 0) raise(SIGKILL);
  static auto* const real = reinterpret_cast<int (*)(useconds_t)>(dlsym(RTLD_NEXT, "usleep"));
  return real(wait);
}

extern "C" __attribute__((visibility("default"))) int fstat64(int fd, struct stat64* status) __THROW {
  static auto* const real = reinterpret_cast<int (*)(int, struct stat64*)>(dlsym(RTLD_NEXT, "fstat64"));
  if (g_looksToFail < 0 || g_looksToFail-- > 0) return real(fd, status);
  errno = EIO;
  return -1;
}

namespace {

using test::InChild;
using test::ReadFile;
using test::WriteFile;
namespace fs = std::filesystem;

constexpr unsigned long kSize = 4;

std::string Bytes(std::uint32_t value) { return {reinterpret_cast<char const*>(&value), 4}; }

// Records first to last: the stamp is the number, the payload its complement.
std::string Records(std::uint32_t first, std::uint32_t last) {
  std::string bytes;
  for (std::uint32_t i = first; i <= last; i++) bytes += Bytes(i) + Bytes(~i);
  return bytes;
}

bool Append(LogClass& log, std::uint32_t number) {
  return log.WriteReg(static_cast<long>(number), Bytes(~number).data(), kSize);
}

class RecordLog : public testing::Test {
 protected:
  RecordLog() { log.SetFile(path); }
  test::Scratch scratch;
  std::string const path = scratch.Path("log");
  LogClass log;
};

TEST_F(RecordLog, TheFileIsStampsAndPayloads) {
  EXPECT_TRUE(log.WriteReg(0x01020304, "abcd", 4) && log.WriteReg(-1, "\0\xFFyz", 4));
  EXPECT_EQ(ReadFile(path), std::string("\4\3\2\1abcd\xFF\xFF\xFF\xFF\0\xFFyz", 16));
  EXPECT_FALSE(log.WriteReg(1, nullptr, 4) || log.WriteReg(1, "abcd", 4294967292));
  long const before = GetDateTime();
  long when = 0;
  EXPECT_TRUE(log.ClearFile() && log.WriteReg(nullptr, 0) && log.ReadFileReg(0, &when, nullptr, 0));
  EXPECT_TRUE(before <= when && when <= GetDateTime()) << when;
}

TEST_F(RecordLog, OnlyWholeRecordsCount) {
  unsigned long const rows[][3] = {{0, 4, 0},  {7, 4, 0},  {8, 4, 1},   {9, 4, 0},          {24, 4, 3},
                                   {24, 6, 0}, {24, 0, 6}, {24, 20, 1}, {8, 4294967292, 0}, {8, ULONG_MAX - 3, 0}};
  for (auto const& [length, size, count] : rows) {
    std::string bytes(length, 'x');
    WriteFile(path, bytes);
    log.UnloadFile();
    log.SetBuffer(bytes.data(), length);
    EXPECT_EQ(log.GetFileRegCount(size), count) << length << " by " << size;
    EXPECT_EQ(log.GetRegCount(size), count) << length << " by " << size;
    EXPECT_EQ(log.LoadFile(size), count) << length << " by " << size;
  }
}

TEST_F(RecordLog, ADamagedFileIsKeptAndBegunAnew) {
  WriteFile(path, Records(1, 1) + "torn!");
  EXPECT_TRUE(Append(log, 2) && Append(log, 3));
  EXPECT_EQ(ReadFile(path), Records(2, 3));
  fs::resize_file(path, 11);
  EXPECT_TRUE(Append(log, 4));
  EXPECT_EQ(ReadFile(path), Records(4, 4));
  EXPECT_EQ(ReadFile(path + ".bad"), Records(1, 1) + "torn!") << "the first one stays";
  std::string const name(255, 'n');  // no room for ".bad"
  log.SetFile(scratch.Write(name, "torn!"));
  EXPECT_FALSE(Append(log, 1));
  EXPECT_EQ(scratch.Read(name), "torn!");
}

// A look at the file that fails does not make a damaged one sound, nor a sound one damaged.
TEST_F(RecordLog, WhatCannotBeToldIsLeftAlone) {
  for (std::string const& old : {Records(1, 2), Records(1, 1) + "torn!"}) {
    bool const sound = old.size() % 8 == 0;
    for (int look = 0; look < 9; look++) {
      WriteFile(path, old);
      fs::remove(path + ".bad");
      g_looksToFail = look;
      bool const written = Append(log, 3);
      g_looksToFail = -1;
      EXPECT_EQ(ReadFile(path), !written ? old : sound ? old + Records(3, 3) : Records(3, 3)) << look << " " << sound;
    }
    EXPECT_EQ(fs::exists(path + ".bad"), !sound);
  }
}

TEST_F(RecordLog, OnlyTheNewestStayBeyondTheBound) {
  struct {
    std::uint32_t before, most, first;  // `first` of the records then in the file, up to before + 1
  } const rows[] = {{0, 0, 2},       {0, 1, 1},       {9, 3, 8},       {3, 4, 1},         {4, 4, 2},
                    {8191, 8192, 1}, {8192, 8192, 2}, {8193, 8193, 2}, {20000, 0, 20002}, {20000, 16384, 3618}};
  for (auto const& row : rows) {
    WriteFile(path, Records(1, row.before));
    fs::permissions(path, fs::perms(0640));
    struct stat old, now;
    stat(path.c_str(), &old);
    log.SetMaxLines(row.most);
    EXPECT_TRUE(Append(log, row.before + 1)) << row.before;
    stat(path.c_str(), &now);
    EXPECT_TRUE(now.st_ino == old.st_ino && now.st_mode == old.st_mode) << "another file: " << row.before;
    EXPECT_TRUE(ReadFile(path) == Records(row.first, row.before + 1)) << row.before << " bound " << row.most;
    EXPECT_EQ(scratch.List(), std::vector<std::string>{"log"}) << row.before;
  }
  LogClass fresh;
  fresh.SetFile(scratch.Write("log", Records(1, 1024)));
  EXPECT_TRUE(Append(fresh, 1025) && ReadFile(path) == Records(2, 1025)) << "1024 unless set";
}

TEST_F(RecordLog, ACutThatCannotBeginLeavesTheLog) {
  WriteFile(path, Records(1, 10));
  log.SetMaxLines(6);
  EXPECT_TRUE(InChild([&] {  // the copy of 48 bytes ends in the middle of a record
    signal(SIGXFSZ, SIG_IGN);
    rlimit const limit = {37, 37};
    setrlimit(RLIMIT_FSIZE, &limit);
    log.LimitFile(kSize);
    return true;
  }));
  EXPECT_EQ(ReadFile(path), Records(1, 10));
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"log"});
  fs::create_directories(path + ".tmp/taken");
  EXPECT_TRUE(Append(log, 11)) << "a failed cut is no failure";
  EXPECT_EQ(ReadFile(path), Records(1, 11));
}

TEST_F(RecordLog, TheScratchFileLeadsNowhere) {
  struct Prey : LogClass {  // somebody places a link between the removal of the scratch file and the copy
    using LogClass::SetFile;
    unsigned long GetFileRegCount(unsigned long size) override {
      std::error_code there;
      fs::create_symlink(victim, link, there);
      return LogClass::GetFileRegCount(size);
    }
    std::string link, victim;
  } prey;
  prey.link = path + ".tmp";
  prey.victim = scratch.Write("victim", "mine");
  prey.SetFile(scratch.Write("log", Records(1, 2)));
  prey.SetMaxLines(1);
  EXPECT_TRUE(Append(prey, 3));
  EXPECT_EQ(scratch.Read("victim"), "mine");
  EXPECT_EQ(ReadFile(path), Records(1, 3)) << "not cut, not lost";
  fs::remove(prey.link);
  fs::create_symlink(prey.victim, prey.link);  // a leftover: goes
  log.SetMaxLines(1);
  EXPECT_TRUE(Append(log, 4));
  EXPECT_EQ(scratch.Read("victim"), "mine");
  EXPECT_EQ(ReadFile(path), Records(4, 4));
  EXPECT_EQ(scratch.List(), (std::vector<std::string>{"log", "victim"}));
}

// Killed in any pause of the cut the log keeps every record, and the next cut cleans up. The records have 24 bytes: no
// block ends with one unless it is meant to.
TEST_F(RecordLog, AKillDuringTheCutLosesNothing) {
  constexpr std::uint32_t kMost = 7000;  // three blocks
  constexpr unsigned long kLong = 20;
  auto const records = [](std::uint32_t first, std::uint32_t last) { return Records(3 * first, 3 * last + 2); };
  auto const append = [&](std::uint32_t n) { return log.WriteReg(3L * n, records(n, n).data() + 4, kLong); };
  int pauses = 0;
  log.SetMaxLines(kMost);
  for (bool survived = false; !survived; pauses++) {
    WriteFile(path, records(1, kMost));
    survived = InChild([&] {
      g_pausesToLive = pauses;
      return append(kMost + 1);
    });
    std::string const left = ReadFile(path);
    std::vector<bool> found(kMost + 2);
    for (size_t i = 0; i < left.size(); i += 4 + kLong) {
      std::uint32_t stamp = 0;
      std::memcpy(&stamp, left.data() + i, 4);
      ASSERT_EQ(left.substr(i, 4 + kLong), records(stamp / 3, stamp / 3)) << pauses;
      found.at(stamp / 3) = true;
    }
    EXPECT_EQ(std::count(found.begin() + 2, found.end(), true), kMost) << "killed at " << pauses;
    EXPECT_TRUE(append(kMost + 2));
    EXPECT_EQ(scratch.List(), std::vector<std::string>{"log"});
  }
  EXPECT_GT(pauses, 4);
}

// The first name settles the scratch file; later ones remove what has its name, unless it is the log.
TEST_F(RecordLog, TheScratchFileKeepsItsName) {
  std::pair<std::string, std::string> const rows[] = {// the file named, and the one that goes
                                                      {scratch.Path("other"), "log.tmp"},
                                                      {scratch.Path("log.tmp"), "none"},
                                                      {scratch.Path("other"), "log.tmp.tmp"},
                                                      {"", "log.tmp.tmp"}};
  for (auto const& [name, gone] : rows) {
    std::vector<std::string> files = {"log.tmp", "log.tmp.tmp", "other.tmp"};
    for (std::string const& file : files) scratch.Write(file, "");
    EXPECT_EQ(log.SetFile(name), 1);
    files.erase(std::remove(files.begin(), files.end(), gone), files.end());
    EXPECT_EQ(scratch.List(), files) << name;
  }
}

TEST_F(RecordLog, RecordsAreReadByIndex) {
  std::string bytes = Records(5, 6) + Bytes(0x80000000) + "last";
  WriteFile(path, bytes);
  ASSERT_TRUE(log.SetBuffer(bytes.data(), bytes.size()));
  EXPECT_FALSE(log.SetBuffer(nullptr, 10) || log.SetBuffer(bytes.data(), 0));
  for (auto const read : {&LogClass::ReadFileReg, &LogClass::ReadReg}) {
    long when = 0x55555555;  // every bit of it is replaced, whatever the width of a long
    char data[6] = ".....";
    EXPECT_TRUE((log.*read)(2, &when, data + 1, kSize));
    EXPECT_EQ(when, -2147483647L - 1);
    EXPECT_EQ(std::string(data, 6), std::string(".last\0", 6));
    for (unsigned long i : {3ul, ULONG_MAX, 0x20000000ul}) EXPECT_FALSE((log.*read)(i, &when, data, kSize)) << i;
    EXPECT_FALSE((log.*read)(0, &when, data, 5)) << "no whole number of records";
    bool const mayBeNull = read == &LogClass::ReadReg;
    EXPECT_EQ((log.*read)(0, nullptr, data, kSize), mayBeNull);
    EXPECT_EQ((log.*read)(0, &when, nullptr, kSize), mayBeNull);
  }
  log.UnloadFile();
  EXPECT_EQ(log.LoadFile(kSize) + log.GetRegCount(kSize), 6u);
  EXPECT_EQ(log.LoadFile(kSize) + log.GetRegCount(kSize), 3u) << "a second load in a row loads nothing";
}

TEST_F(RecordLog, APartOfARecordIsTakenBack) {
  WriteFile(path, Records(1, 4));
  EXPECT_TRUE(InChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    rlimit const limit = {37, 37};
    setrlimit(RLIMIT_FSIZE, &limit);
    return !Append(log, 5);
  }));
  EXPECT_EQ(ReadFile(path), Records(1, 4));
}

TEST_F(RecordLog, ShortOfDescriptorsNothingIsLost) {
  for (std::string const& before : {Records(1, 3), std::string("torn!")}) {
    for (rlim_t free = 0; free < 5; free++) {
      WriteFile(path, before);
      fs::remove(path + ".bad");
      bool const written = InChild([&] {
        auto const first = static_cast<rlim_t>(dup(0));
        close(static_cast<int>(first));
        rlimit const limit = {first + free, first + free};
        setrlimit(RLIMIT_NOFILE, &limit);
        return Append(log, 4);
      });
      bool const sound = before != "torn!";
      EXPECT_EQ(ReadFile(path), !written ? before : (sound ? before : "") + Records(4, 4)) << free;
      EXPECT_EQ(fs::exists(path + ".bad"), written && !sound) << free;
      EXPECT_TRUE(free == 0 ? !written : written || free < 3) << free;
    }
  }
}

TEST_F(RecordLog, WritersInterleaveWholeRecords) {
  constexpr std::uint32_t kEach = 2000;
  log.SetMaxLines(3 * kEach);
  auto const write = [&](std::uint32_t first) {
    for (std::uint32_t i = first; i < first + kEach; i++)
      if (!Append(log, i)) return false;
    return true;
  };
  EXPECT_TRUE(InChild([&] {
    pid_t const other = fork();
    if (other == 0) _exit(write(0) ? 0 : 1);
    int status = -1;
    bool const written = write(kEach);
    return waitpid(other, &status, 0) == other && status == 0 && written;
  }));
  std::string const bytes = ReadFile(path);
  ASSERT_EQ(bytes.size(), 2 * kEach * 8);
  std::uint32_t next[] = {0, kEach};  // each writer's own in order
  for (size_t i = 0; i < bytes.size(); i += 8) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + i, 4);
    ASSERT_EQ(bytes.substr(i, 8), Records(number, number));
    ASSERT_EQ(number, next[number / kEach]++);
  }
}

// The steps that a subclass may replace: C counts the records of the file, U unloads, W writes.
struct Replaced : LogClass {
  unsigned long GetFileRegCount(unsigned long size) override {
    return seen += "C", LogClass::GetFileRegCount(size) + more;
  }
  void UnloadFile() override { seen += "U", LogClass::UnloadFile(); }
  bool WriteReg(long when, void const* data, unsigned long size) override {
    return seen += "W", LogClass::WriteReg(when, data, size);
  }
  using LogClass::SetFile, LogClass::WriteReg;
  std::string seen;
  unsigned long more = 0;
};

TEST_F(RecordLog, OperationsCallEachOtherVirtually) {
  Replaced replaced;
  long when = 0;
  char data[] = "data";
  std::pair<char const*, std::function<bool()>> const rows[] = {
      {"U", [&] { return replaced.SetFile(path) == 1; }},
      {"WCC", [&] { return replaced.WriteReg(data, kSize); }},
      {"C", [&] { return replaced.ReadFileReg(0, &when, data, kSize); }},
      {"CU", [&] { return replaced.LoadFile(kSize) == 1; }},
      {"", [&] { return replaced.ReadReg(0, &when, data, kSize) && replaced.GetRegCount(kSize) == 1; }},
      {"U", [&] { return replaced.SetBuffer(data, 4); }},
      {"C", [&] { return replaced.LimitFile(kSize), true; }},
      {"", [&] { return replaced.more = 1, true; }},  // a record that is not there: nothing is made up
      {"C", [&] { return !replaced.ReadFileReg(1, &when, data, kSize); }},
      {"CUU", [&] { return replaced.UnloadFile(), replaced.seen.clear(), replaced.LoadFile(kSize) == 0; }}};
  for (auto const& [calls, operation] : rows) {
    replaced.seen.clear();
    EXPECT_TRUE(operation()) << calls;
    EXPECT_EQ(replaced.seen, calls);
  }
}

TEST(RecordLogInterface, OrderOfTheVirtualOperations) {
  int (LogClass::*const setFile)(char const*) = &LogClass::SetFile;
  bool (LogClass::*const write)(void const*, unsigned long) = &LogClass::WriteReg;
  bool (LogClass::*const stamped)(long, void const*, unsigned long) = &LogClass::WriteReg;
  using L = LogClass;
  using test::Slot;
  size_t const slots[] = {Slot(setFile),     Slot(&L::SetBuffer),       Slot(&L::SetMaxLines), Slot(write),
                          Slot(stamped),     Slot(&L::GetFileRegCount), Slot(&L::GetRegCount), Slot(&L::ReadFileReg),
                          Slot(&L::ReadReg), Slot(&L::LoadFile),        Slot(&L::UnloadFile),  Slot(&L::ClearFile)};
  for (size_t i = 0; i < std::size(slots); i++) EXPECT_EQ(slots[i], i + 2) << i;
}

}  // namespace
