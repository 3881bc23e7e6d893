#include "zelvane/logs/logclass.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <vector>

#include "support/child.h"
#include "support/scratch.h"
#include "zelvane/core/datetime.h"

namespace {
int g_pausesToLive = -1;  // the process is killed in the pause after that many; -1: it is not
}

// The library pauses before each block that it copies: the moments at which a kill is interesting.
extern "C" __attribute__((visibility("default"))) int usleep(useconds_t wait) {
  if (g_pausesToLive >= 0 && g_pausesToLive-- == 0) raise(SIGKILL);
  static auto* const real = reinterpret_cast<int (*)(useconds_t)>(dlsym(RTLD_NEXT, "usleep"));
  return real(wait);
}

namespace {

using test::InChild;
using test::ReadFile;
using test::WriteFile;
using Names = std::vector<std::string>;
namespace fs = std::filesystem;

constexpr unsigned long kSize = 4;

std::string Bytes(std::uint32_t value) {
  std::string bytes;
  for (int i = 0; i < 4; i++) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

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
  // The file, then what stands beside it.
  Names Files() const { return scratch.List(); }

  test::Scratch scratch;
  std::string const path = scratch.Path("log");
  LogClass log;
};

TEST_F(RecordLog, TheFileIsStampsAndPayloads) {
  EXPECT_TRUE(log.WriteReg(0x01020304, "abcd", 4));
  EXPECT_TRUE(log.WriteReg(-1, "\0\xFFyz", 4));
  EXPECT_TRUE(log.WriteReg(2147483647, "1234", 4));
  std::string expected(
      "\x04\x03\x02\x01"
      "abcd"
      "\xFF\xFF\xFF\xFF\0\xFFyz"
      "\xFF\xFF\xFF\x7F"
      "1234",
      24);
#if LONG_MAX > 2147483647
  EXPECT_TRUE(log.WriteReg(0x500000006, "wide", 4));
  expected += Bytes(6) + "wide";
#endif
  EXPECT_EQ(ReadFile(path), expected);

  log.SetFile(scratch.Path("stamps"));
  long const before = GetDateTime();
  EXPECT_TRUE(log.WriteReg(nullptr, 0));
  long when = 0;
  EXPECT_TRUE(log.ReadFileReg(0, &when, nullptr, 0));
  EXPECT_TRUE(before <= when && when <= GetDateTime()) << when;
  EXPECT_EQ(scratch.Read("stamps").size(), 4u);
}

TEST_F(RecordLog, OnlyWholeRecordsCount) {
  struct {
    unsigned long length, size, count;
  } const rows[] = {{0, 4, 0},
                    {7, 4, 0},
                    {8, 4, 1},
                    {9, 4, 0},
                    {13, 4, 0},
                    {24, 4, 3},
                    {24, 6, 0},
                    {24, 0, 6},
                    {24, 20, 1},
                    {24, 44, 0},
                    {8, 4294967291, 0},
                    {8, 4294967292, 0},
                    {12, 4294967295, 0},
                    {8, ULONG_MAX, 0},
                    {8, ULONG_MAX - 3, 0},
                    {8, ULONG_MAX / 2 + 5, 0}};
  for (auto const& row : rows) {
    std::string bytes(row.length, 'x');
    WriteFile(path, bytes);
    log.UnloadFile();
    log.SetBuffer(bytes.data(), row.length);
    EXPECT_EQ(log.GetFileRegCount(row.size), row.count) << row.length << " by " << row.size;
    EXPECT_EQ(log.GetRegCount(row.size), row.count) << row.length << " by " << row.size;
    EXPECT_EQ(log.LoadFile(row.size), row.count) << row.length << " by " << row.size;
  }
  EXPECT_FALSE(log.WriteReg(1, "abcd", 4294967292));
  EXPECT_FALSE(log.WriteReg(1, "abcd", ULONG_MAX));
  EXPECT_FALSE(log.WriteReg(1, nullptr, 4));
  EXPECT_EQ(ReadFile(path), "xxxxxxxx");
}

TEST_F(RecordLog, ADamagedFileIsKeptAndBegunAnew) {
  WriteFile(path, Records(1, 1) + "torn!");
  EXPECT_EQ(log.GetFileRegCount(kSize), 0u);
  EXPECT_TRUE(Append(log, 2));
  EXPECT_TRUE(Append(log, 3));
  EXPECT_EQ(ReadFile(path), Records(2, 3));
  EXPECT_EQ(ReadFile(path + ".bad"), Records(1, 1) + "torn!");
  fs::resize_file(path, 11);
  EXPECT_TRUE(Append(log, 4));
  EXPECT_EQ(ReadFile(path), Records(4, 4));
  EXPECT_EQ(ReadFile(path + ".bad"), Records(1, 1) + "torn!") << "the first one stays";
  EXPECT_EQ(Files(), (Names{"log", "log.bad"}));
}

TEST_F(RecordLog, WhatIsMissingOrEmptyIsNotDamaged) {
  EXPECT_TRUE(Append(log, 1));
  EXPECT_TRUE(log.ClearFile());
  EXPECT_TRUE(Append(log, 2));
  EXPECT_EQ(ReadFile(path), Records(2, 2));
  EXPECT_EQ(Files(), Names{"log"});
}

TEST_F(RecordLog, WhatCannotBeKeptIsNotEmptied) {
  std::string const name(255, 'n');  // no room for ".bad"
  scratch.Write(name, "torn!");
  log.SetFile(scratch.Path(name));
  EXPECT_FALSE(Append(log, 1));
  EXPECT_EQ(scratch.Read(name), "torn!");
  EXPECT_EQ(Files(), Names{name});
}

// A class that gives verdicts of its own: what counts is the file.
TEST_F(RecordLog, NoSoundLogIsEmptied) {
  struct Blind : LogClass {
    unsigned long GetFileRegCount(unsigned long) override { return 0; }
  } blind;
  WriteFile(path, Records(1, 2));
  blind.SetFile(path);
  EXPECT_TRUE(Append(blind, 3));
  EXPECT_EQ(ReadFile(path), Records(1, 3));
}

TEST_F(RecordLog, OnlyTheNewestStayBeyondTheBound) {
  struct {
    std::uint32_t before, most, first;  // `first` of the records then in the file, up to before + 1
  } const rows[] = {{0, 0, 2},         {0, 1, 1},         {1, 1, 2},           {9, 3, 8},       {3, 4, 1},
                    {4, 4, 2},         {8191, 8191, 2},   {8191, 8192, 1},     {8192, 8192, 2}, {8193, 8193, 2},
                    {20000, 1, 20001}, {20000, 0, 20002}, {20000, 16384, 3618}};
  for (auto const& row : rows) {
    WriteFile(path, Records(1, row.before));
    fs::permissions(path, fs::perms(0640));
    struct stat old, now;
    stat(path.c_str(), &old);
    log.SetMaxLines(row.most);
    EXPECT_TRUE(Append(log, row.before + 1)) << row.before;
    EXPECT_TRUE(ReadFile(path) == Records(row.first, row.before + 1)) << row.before << " bound " << row.most;
    stat(path.c_str(), &now);
    EXPECT_EQ(now.st_ino, old.st_ino);
    EXPECT_EQ(now.st_mode, old.st_mode);
    EXPECT_EQ(Files(), Names{"log"}) << row.before;
  }
  LogClass fresh;
  WriteFile(path, Records(1, 1024));
  fresh.SetFile(path);
  EXPECT_TRUE(Append(fresh, 1025));
  EXPECT_EQ(ReadFile(path), Records(2, 1025)) << "1024 unless set";
  fresh.SetMaxLines(1023);
  EXPECT_EQ(ReadFile(path), Records(2, 1025)) << "not before the next record";
  fresh.LimitFile(kSize);
  EXPECT_EQ(ReadFile(path), Records(3, 1025));
}

TEST_F(RecordLog, TheScratchFileLeadsNowhere) {
  std::string const victim = scratch.Write("victim", "mine");
  fs::create_symlink(victim, path + ".tmp");
  log.SetMaxLines(1);
  EXPECT_TRUE(Append(log, 1));
  EXPECT_TRUE(Append(log, 2));
  EXPECT_EQ(ReadFile(path), Records(2, 2));
  EXPECT_EQ(Files(), (Names{"log", "victim"}));
  EXPECT_EQ(ReadFile(victim), "mine");

  struct Prey : LogClass {  // somebody places the link again between the removal and the copy
    std::string link, victim;
    unsigned long GetFileRegCount(unsigned long size) override {
      if (!link.empty() && !fs::exists(fs::symlink_status(link))) fs::create_symlink(victim, link);
      return LogClass::GetFileRegCount(size);
    }
  } prey;
  prey.SetFile(path);
  prey.SetMaxLines(1);
  prey.link = path + ".tmp";
  prey.victim = victim;
  EXPECT_TRUE(Append(prey, 3));
  EXPECT_EQ(ReadFile(victim), "mine");
  EXPECT_EQ(ReadFile(path), Records(2, 3));

  fs::create_directories(path + ".tmp/full");  // cannot be removed: the log stays whole
  EXPECT_TRUE(Append(log, 4));
  EXPECT_EQ(ReadFile(path), Records(2, 4));
}

// Records of 13 bytes, which neither blocks nor pages are a multiple of.
TEST_F(RecordLog, AKillDuringTheCutLosesNothing) {
  constexpr std::uint32_t kMost = 12000;  // three blocks
  auto const payload = [](std::uint32_t number) { return Bytes(number) + Bytes(~number) + "."; };
  auto const append = [&](std::uint32_t number) {
    log.SetMaxLines(kMost);
    return log.WriteReg(static_cast<long>(number), payload(number).data(), 9);
  };
  std::string full;
  for (std::uint32_t i = 1; i <= kMost; i++) full += Bytes(i) + payload(i);
  int pauses = 0;
  for (bool survived = false; !survived; pauses++) {
    WriteFile(path, full);
    survived = InChild([&] {
      g_pausesToLive = pauses;
      return append(kMost + 1);
    });
    std::string const left = ReadFile(path);
    ASSERT_EQ(left.size() % 13, 0u) << pauses;
    std::vector<bool> found(kMost + 2);
    for (size_t i = 0; i < left.size(); i += 13) {
      std::uint32_t number = 0;
      std::memcpy(&number, left.data() + i, 4);
      ASSERT_EQ(left.substr(i + 4, 9), payload(number)) << pauses;
      found.at(number) = true;
    }
    for (std::uint32_t i = 2; i < found.size(); i++)
      ASSERT_TRUE(found[i]) << "record " << i << ", killed at " << pauses;
    EXPECT_EQ(fs::exists(path + ".tmp"), !survived);
    EXPECT_TRUE(append(kMost + 2));
    EXPECT_EQ(log.GetFileRegCount(9), kMost);
    EXPECT_EQ(ReadFile(path).substr((kMost - 1) * 13), Bytes(kMost + 2) + payload(kMost + 2)) << pauses;
    EXPECT_EQ(Files(), Names{"log"});
  }
  EXPECT_EQ(pauses, 7) << "three blocks there and three back";
}

TEST_F(RecordLog, RecordsAreReadByIndex) {
  std::string bytes = Records(5, 6) + Bytes(0x80000000) + "last";
  WriteFile(path, bytes);
  ASSERT_TRUE(log.SetBuffer(bytes.data(), bytes.size()));
  for (bool fromFile : {true, false}) {
    auto const read = [&](unsigned long index, long* when, char* data, unsigned long size) {
      return fromFile ? log.ReadFileReg(index, when, data, size) : log.ReadReg(index, when, data, size);
    };
    for (unsigned long i = 0; i < 3; i++) {
      long when = 0x55555555;  // every bit of it is replaced, whatever the width of a long
      char data[6] = ".....";
      EXPECT_TRUE(read(i, &when, data + 1, kSize));
      EXPECT_EQ(when, i == 2 ? -2147483647L - 1 : static_cast<long>(5 + i)) << fromFile;
      EXPECT_EQ(std::string(data + 1, 4), bytes.substr(8 * i + 4, 4)) << fromFile;
      EXPECT_EQ(data[0], '.');
      EXPECT_EQ(data[5], '\0');
    }
    long when = 77;
    char data[32] = "untouched";
    for (unsigned long index : {3ul, 4ul, ULONG_MAX, 0x20000000ul, ULONG_MAX / 8 + 1}) {
      EXPECT_FALSE(read(index, &when, data, kSize)) << fromFile << " " << index;
    }
    EXPECT_FALSE(read(0, &when, data, 5)) << "no whole number of records";
    EXPECT_EQ(when, 77);
    EXPECT_STREQ(data, "untouched");
  }
  EXPECT_FALSE(log.ReadFileReg(0, nullptr, bytes.data(), kSize));
  EXPECT_TRUE(log.ReadReg(2, nullptr, nullptr, kSize));
  EXPECT_TRUE(log.ReadReg(5, nullptr, bytes.data(), 0));
  EXPECT_FALSE(log.ReadReg(6, nullptr, nullptr, 0));
}

TEST_F(RecordLog, PositionsHave64Bits) {
  constexpr unsigned long kBefore = 600000000;  // 4.8 GB, all of it a hole
  WriteFile(path, "");
  ASSERT_EQ(truncate64(path.c_str(), 8LL * kBefore), 0);
  log.SetMaxLines(UINT32_MAX);
  ASSERT_TRUE(Append(log, 7));
  EXPECT_EQ(log.GetFileRegCount(kSize), kBefore + 1);
  long when = 0;
  std::uint32_t data = 0;
  EXPECT_TRUE(log.ReadFileReg(kBefore, &when, &data, kSize));
  EXPECT_EQ(when, 7);
  EXPECT_EQ(data, ~7u);
  EXPECT_EQ(log.LoadFile(kSize), 0u) << "a buffer has no 4 GiB";
  EXPECT_EQ(log.GetRegCount(kSize), 0u);
  log.SetMaxLines(1);
  log.LimitFile(kSize);
  EXPECT_EQ(ReadFile(path), Records(7, 7));
}

TEST_F(RecordLog, ABufferIsACopyAndSurvivesRefusals) {
  std::string bytes = Records(1, 3);
  ASSERT_TRUE(log.SetBuffer(bytes.data(), 24));
  bytes[0] = 'x';
  EXPECT_FALSE(log.SetBuffer(nullptr, 10));
  EXPECT_FALSE(log.SetBuffer(bytes.data(), 0));
#if ULONG_MAX > 4294967295
  EXPECT_FALSE(log.SetBuffer(bytes.data(), 4294967296));
#else
  LogClass tooLong;
  EXPECT_FALSE(tooLong.SetBuffer(bytes.data(), 4294967288));
  EXPECT_EQ(tooLong.GetRegCount(kSize), 536870911u) << "the length stays";
  EXPECT_FALSE(tooLong.ReadReg(0, nullptr, nullptr, kSize));
#endif
  EXPECT_EQ(log.LoadFile(kSize), 0u) << "no file yet";
  long when = 0;
  EXPECT_TRUE(log.ReadReg(0, &when, nullptr, kSize));
  EXPECT_EQ(when, 1);
  EXPECT_TRUE(log.ClearFile());
  EXPECT_EQ(log.GetRegCount(kSize), 3u) << "emptying the file leaves the buffer";
  EXPECT_EQ(log.SetFile(path), 1);
  EXPECT_EQ(log.GetRegCount(kSize), 0u);
}

TEST_F(RecordLog, ASecondLoadInARowLoadsNothing) {
  WriteFile(path, Records(1, 3));
  EXPECT_EQ(log.LoadFile(kSize), 3u);
  EXPECT_EQ(log.GetRegCount(kSize), 3u);
  EXPECT_EQ(log.LoadFile(kSize), 3u);
  EXPECT_EQ(log.GetRegCount(kSize), 0u);
  EXPECT_FALSE(log.ReadReg(0, nullptr, nullptr, kSize));
  WriteFile(path, Records(1, 5));
  EXPECT_EQ(log.LoadFile(kSize), 5u);
  EXPECT_EQ(log.GetRegCount(kSize), 5u);
  WriteFile(path, "torn!");
  log.UnloadFile();
  EXPECT_EQ(log.LoadFile(kSize), 0u);
  EXPECT_EQ(log.GetRegCount(kSize), 0u);
}

TEST(RecordLogNames, TheFirstNameSettlesTheScratchFile) {
  struct {
    std::vector<char const*> names;
    Names left;  // of the files a to a.tmp.tmp
  } const rows[] = {{{"a"}, {"a", "a.tmp", "a.tmp.tmp", "b", "b.tmp"}},
                    {{"a", "b"}, {"a", "a.tmp.tmp", "b", "b.tmp"}},
                    {{"a", "b", "a"}, {"a", "a.tmp.tmp", "b", "b.tmp"}},
                    {{"a", nullptr}, {"a", "a.tmp.tmp", "b", "b.tmp"}},
                    {{"", nullptr, "b"}, {"a", "a.tmp", "a.tmp.tmp", "b", "b.tmp"}},
                    {{"", "b", "a"}, {"a", "a.tmp", "a.tmp.tmp", "b"}},
                    {{"a", "a.tmp"}, {"a", "a.tmp", "a.tmp.tmp", "b", "b.tmp"}},
                    {{"a", "a.tmp", "b"}, {"a", "a.tmp", "b", "b.tmp"}}};
  for (auto const& row : rows) {
    test::Scratch scratch;
    LogClass log;
    std::string story;
    for (char const* name : {"a", "a.tmp", "a.tmp.tmp", "b", "b.tmp"}) scratch.Write(name, "");
    for (char const* name : row.names) {
      story += name == nullptr ? " null" : std::string(" ") + name;
      bool const none = name == nullptr || *name == '\0';
      EXPECT_EQ(log.SetFile(none ? name : scratch.Path(name).c_str()), 1);
    }
    EXPECT_EQ(scratch.List(), row.left) << story;
  }
}

TEST_F(RecordLog, WithoutAFileEverythingFails) {
  fs::create_directory(scratch.Path("folder"));
  int const open = test::OpenDescriptors();
  for (std::string const& name :
       {std::string(), scratch.Path("folder"), scratch.Path("none/log"), std::string("/dev/full")}) {
    long when;
    char data[4];
    log.SetFile(name);
    EXPECT_FALSE(Append(log, 1)) << name;
    EXPECT_EQ(log.GetFileRegCount(kSize) + log.LoadFile(kSize), 0u) << name;
    EXPECT_FALSE(log.ReadFileReg(0, &when, data, kSize)) << name;
    EXPECT_EQ(log.ClearFile(), name == "/dev/full") << name;
  }
  EXPECT_EQ(test::OpenDescriptors(), open);
  EXPECT_EQ(Files(), Names{"folder/"});
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
        rlim_t const first = static_cast<rlim_t>(dup(0));
        close(static_cast<int>(first));
        rlimit const limit = {first + free, first + free};
        setrlimit(RLIMIT_NOFILE, &limit);
        return Append(log, 4);
      });
      bool const sound = before != "torn!";
      EXPECT_EQ(ReadFile(path), !written ? before : (sound ? before : "") + Records(4, 4)) << free;
      EXPECT_EQ(fs::exists(path + ".bad"), written && !sound) << free;
      EXPECT_TRUE(written || free < 3) << free;
    }
  }
}

TEST_F(RecordLog, WritersInterleaveWholeRecords) {
  constexpr std::uint32_t kEach = 3000;
  auto const write = [&](std::uint32_t first) {
    LogClass writer;
    writer.SetFile(path);
    writer.SetMaxLines(3 * kEach);
    for (std::uint32_t i = first; i < first + kEach; i++)
      if (!Append(writer, i)) return false;
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

// ---- The virtual operations ----

// The Itanium ABI keeps a virtual member's place in the first word of a pointer to it.
template <class Member>
long Slot(Member member) {
  long word = 0;
  std::memcpy(&word, &member, sizeof word);
  return (word - 1) / static_cast<long>(sizeof(void*));
}

TEST(RecordLogInterface, OrderOfTheVirtualOperations) {
  long const slots[] = {Slot<int (LogClass::*)(char const*)>(&LogClass::SetFile),
                        Slot(&LogClass::SetBuffer),
                        Slot(&LogClass::SetMaxLines),
                        Slot<bool (LogClass::*)(void const*, unsigned long)>(&LogClass::WriteReg),
                        Slot<bool (LogClass::*)(long, void const*, unsigned long)>(&LogClass::WriteReg),
                        Slot(&LogClass::GetFileRegCount),
                        Slot(&LogClass::GetRegCount),
                        Slot(&LogClass::ReadFileReg),
                        Slot(&LogClass::ReadReg),
                        Slot(&LogClass::LoadFile),
                        Slot(&LogClass::UnloadFile),
                        Slot(&LogClass::ClearFile)};
  for (size_t i = 0; i < std::size(slots); i++) EXPECT_EQ(slots[i], static_cast<long>(i) + 2) << i;
}

TEST_F(RecordLog, OperationsCallEachOtherVirtually) {
  struct Probe : LogClass {
    std::string calls;
    bool WriteReg(void const* data, unsigned long size) override { return LogClass::WriteReg(data, size); }
    bool WriteReg(long when, void const* data, unsigned long size) override {
      calls += "WriteReg ";
      return LogClass::WriteReg(when, data, size);
    }
    unsigned long GetFileRegCount(unsigned long size) override {
      calls += "GetFileRegCount ";
      return LogClass::GetFileRegCount(size);
    }
    void UnloadFile() override {
      calls += "UnloadFile ";
      LogClass::UnloadFile();
    }
    std::string Take() { return std::exchange(calls, ""); }
  } probe;
  probe.SetFile(path);
  EXPECT_EQ(probe.Take(), "UnloadFile ");
  EXPECT_TRUE(probe.WriteReg("abcd", 4));
  EXPECT_EQ(probe.Take(), "WriteReg GetFileRegCount GetFileRegCount ");
  EXPECT_EQ(probe.LoadFile(4), 1u);
  EXPECT_EQ(probe.Take(), "GetFileRegCount UnloadFile ");
  long when;
  char data[4];
  EXPECT_TRUE(probe.ReadFileReg(0, &when, data, 4));
  EXPECT_EQ(probe.Take(), "GetFileRegCount ");
  EXPECT_TRUE(probe.SetBuffer(data, 4));
  EXPECT_EQ(probe.Take(), "UnloadFile ");
}

}  // namespace
