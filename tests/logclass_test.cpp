#include "zelvane/logs/logclass.h"

#include <dlfcn.h>
#include <sys/file.h>

#include "support/child.h"
#include "support/test.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/fileutils.h"

namespace {
std::function<void()> g_inPause;  // called in the next pause
timespec* g_asked = nullptr;      // gets the length of the next pause, which is skipped
}  // namespace

// The library pauses before each block that it copies.
extern "C" __attribute__((visibility("default"))) int clock_nanosleep(clockid_t clock, int flags, timespec const* wait,
                                                                      timespec* left) {
  if (g_asked != nullptr) return *std::exchange(g_asked, nullptr) = *wait, 0;
  if (g_inPause) std::exchange(g_inPause, nullptr)();
  static auto* const real = reinterpret_cast<decltype(&clock_nanosleep)>(dlsym(RTLD_NEXT, "clock_nanosleep"));
  return real(clock, flags, wait, left);
}

namespace {

using test::ReadFile, test::WriteFile;

constexpr unsigned long kSize = 4;

std::string Bytes(std::uint32_t value) { return {reinterpret_cast<char const*>(&value), 4}; }

// Records `first` to `last`: the time stamp is the number, the payload its complement.
std::string Records(std::uint32_t first, std::uint32_t last) {
  std::string bytes;
  for (std::uint32_t i = first; i <= last; i++) bytes += Bytes(i) + Bytes(~i);
  return bytes;
}

// The numbers of such records, "2..11 15..15", with "?" for anything else.
std::string Numbers(std::string const& bytes) {
  std::ostringstream out;
  std::uint32_t next = 0;
  for (std::size_t at = 0; at < bytes.size(); at += 8) {
    std::uint32_t record[2] = {};
    std::memcpy(record, &bytes[at], std::min<std::size_t>(8, bytes.size() - at));
    if (at > 0 && record[0] != next) out << ".." << next - 1 << " ";
    if (at == 0 || record[0] != next) out << record[0];
    if (record[1] != ~record[0] || at + 8 > bytes.size()) out << "?";
    next = record[0] + 1;
  }
  if (!bytes.empty()) out << ".." << next - 1;
  return out.str();
}

bool Append(LogClass& log, std::uint32_t number) {
  return log.WriteReg(static_cast<long>(number), Bytes(~number).data(), kSize);
}

// A subclass that records the hooks called: C counts the records of the file, U unloads, W writes.
struct Replaced : LogClass {
  unsigned long GetFileRegCount(unsigned long size) override {
    seen += "C", meanwhile();
    if (denials > 0) return denials--, 0;
    return LogClass::GetFileRegCount(size) + more;
  }
  void UnloadFile() override { seen += "U", LogClass::UnloadFile(); }
  bool WriteReg(long when, void const* data, unsigned long size) override {
    return seen += "W", LogClass::WriteReg(when, data, size);
  }
  using LogClass::SetFile, LogClass::WriteReg;
  std::string seen;
  std::function<void()> meanwhile = [] {};
  unsigned long more = 0;
  int denials = 0;
};

TEST(Pause, HasSecondsToo) {
  timespec asked = {};
  g_asked = &asked;
  Delay(2001);
  EXPECT_EACH((asked.tv_sec, asked.tv_nsec), 2, 1000000);
}

class RecordLog : public testing::Test {
 protected:
  RecordLog() { log.SetFile(path); }
  test::Scratch scratch;
  std::string const path = scratch.Path("log");
  Replaced log;
};

TEST_F(RecordLog, TheFileIsStampsAndPayloads) {
  EXPECT_ALL(log.WriteReg(0x01020304, "abcd", 4), log.WriteReg(-1, "\0\xFFyz", 4));
  EXPECT_EQ(ReadFile(path), std::string("\4\3\2\1abcd\xFF\xFF\xFF\xFF\0\xFFyz", 16));
  EXPECT_EACH((LogClass().SetFile(nullptr), LogClass().ClearFile()), 1, 0);
  EXPECT_NONE(log.WriteReg(1, nullptr, 4), log.WriteReg(1, "abcd", 4294967292));
  long const before = GetDateTime();
  long when = 0;
  EXPECT_ALL(log.ClearFile(), log.WriteReg(nullptr, 0), log.ReadFileReg(0, &when, nullptr, 0));
  EXPECT_ALL(before <= when, when <= GetDateTime()) << when;
  char byte = 0;
  EXPECT_EACH((log.ClearFile(), log.WriteReg("x", 1), log.ReadFileReg(0, &when, &byte, 1), byte), true, true, true,
              'x');
  log.SetFile(scratch.Path());
  EXPECT_EACH((log.ClearFile(), log.GetFileRegCount(0)), 0) << "a directory";
}

TEST_F(RecordLog, OnlyWholeRecordsCount) {
  unsigned long const rows[][3] = {{0, 4, 0},   {7, 4, 0},          {8, 4, 1},
                                   {9, 4, 0},   {24, 4, 3},         {24, 0, 6},
                                   {24, 20, 1}, {8, 4294967292, 0}, {8, ULONG_MAX - 3, 0}};
  for (auto const& [length, size, count] : rows) {
    std::string bytes(length, 'x');
    WriteFile(path, bytes);
    log.UnloadFile();
    log.SetBuffer(bytes.data(), length);
    EXPECT_FALSE(sizeof size > 4 && log.SetBuffer(bytes.data(), ULONG_MAX)) << "and the buffer stays";
    for (unsigned long const found : {log.GetFileRegCount(size), log.GetRegCount(size), log.LoadFile(size)})
      EXPECT_EQ(found, count) << length << " by " << size;
  }
}

TEST_F(RecordLog, ADamagedFileIsCopiedAndEmptied) {
  for (std::string const damaged : {"torn!", "again"}) {
    WriteFile(path, damaged);
    EXPECT_ALL(Append(log, 2), Append(log, 3));
    EXPECT_EQ(ReadFile(path), Records(2, 3));
  }
  EXPECT_EACH((ReadFile(path + ".bad"), ReadFile(path + ".bad.1")), "torn!", "again") << "each is kept";
  std::string const name(255, 'n');  // too long for ".bad"
  log.SetFile(scratch.Write(name, "torn!"));
  EXPECT_FALSE(Append(log, 1));
  EXPECT_EQ(scratch.Read(name), "torn!");
}

TEST_F(RecordLog, OnlyTheNewestStayBeyondTheBound) {
  struct {
    std::uint32_t before, most, first;  // `first` of the records that remain, up to before + 1
  } const rows[] = {{1024, 1024, 2}, {0, 0, 2},       {0, 1, 1},       {3, 4, 1},         {4, 4, 2},
                    {8191, 8192, 1}, {8192, 8192, 2}, {8193, 8193, 2}, {20000, 0, 20002}, {20000, 16384, 3618}};
  for (auto const& row : rows) {
    WriteFile(path, Records(1, row.before));
    fs::create_hard_link(path, scratch.Path("same"));
    if (row.most != 1024) log.SetMaxLines(row.most);  // the default maximum
    EXPECT_TRUE(Append(log, row.before + 1)) << row.before;
    EXPECT_EQ(Numbers(scratch.Read("same")), Numbers(Records(row.first, row.before + 1))) << row.most;
    EXPECT_EQ(scratch.List(), (test::Names{"log", "same"})) << row.before;
    fs::remove(scratch.Path("same"));
  }
}

TEST_F(RecordLog, ACutThatCannotBeginLeavesTheLog) {
  WriteFile(path, Records(1, 10));
  log.SetMaxLines(6);
  // The copy of 48 bytes ends inside a record.
  EXPECT_TRUE(test::WithShortFiles(37, [&] { log.LimitFile(kSize); }));
  EXPECT_EQ(ReadFile(path), Records(1, 10));
  EXPECT_EQ(scratch.List(), test::Names{"log"});
  EXPECT_TRUE(test::WithShortFiles(87, [&] { EXPECT_FALSE(Append(log, 11)); }));
  EXPECT_EQ(ReadFile(path), Records(1, 10)) << "the part of a record is taken back";
  fs::create_directories(path + ".tmp/taken");
  EXPECT_TRUE(Append(log, 11)) << "a failed cut is no failure";
  EXPECT_EQ(ReadFile(path), Records(1, 11));
}

TEST_F(RecordLog, TheScratchFileLeadsNowhere) {
  std::string const link = path + ".tmp", victim = scratch.Write("victim", "mine");
  WriteFile(path, Records(1, 2));
  log.SetMaxLines(1);
  // Another process creates a link between the removal of the scratch file and the copy.
  std::error_code there;
  log.meanwhile = [&] { fs::create_symlink(victim, link, there); };
  EXPECT_TRUE(Append(log, 3));
  fs::create_symlink(victim, link + "~");
  log.meanwhile = [] {};  // leftovers are removed
  EXPECT_TRUE(Append(log, 4));
  EXPECT_EACH((ReadFile(path), scratch.Read("victim")), Records(4, 4), "mine");
  EXPECT_EQ(scratch.List(), (test::Names{"log", "victim"}));
}

// What a power failure can leave while the records of a cut are copied back: any mixture of sectors of the old and the
// new log, and anything in the last record, which was not synced.
TEST_F(RecordLog, AnInterruptedCutIsFinished) {
  std::mt19937 random(16);
  auto const any = [&](std::uint32_t n) { return static_cast<std::uint32_t>(random() % n); };
  for (int round = 0; round < 120; round++) {
    std::uint32_t const most = 100 + any(300), drop = 1 + any(3) * any(2), all = most + drop;
    std::string const whole = Records(drop + 1, all);
    std::string left = Records(1, all), scratchFile = whole, expected = whole;
    std::size_t const settled = left.size() - 8;
    switch (int const tail = static_cast<int>(any(4))) {
      case 0: break;
      case 1: left.replace(settled, 8, std::string(8, '\0')); break;
      default: left.resize(settled + (tail == 2 ? 0 : 1 + any(7)));
    }
    if (round % 4 == 0) {  // the power failed before the scratch file was complete, so it does not count
      left = expected = Records(1, all);
      if (any(2) == 0) scratchFile.resize(any(static_cast<std::uint32_t>(whole.size())));
      std::size_t const hole = any(static_cast<std::uint32_t>(scratchFile.size() / 512 + 1)) * 512;
      if (scratchFile.size() > hole)
        std::fill_n(&scratchFile[hole], std::min<std::size_t>(512, scratchFile.size() - hole), '\0');
      expected = Records(drop + 1, all);
    } else {
      for (std::size_t at = 0; at < std::min(whole.size(), left.size()); at += 512) {
        std::size_t const size = std::min({std::size_t{512}, whole.size() - at, left.size() - at});
        if (any(2) == 0) left.replace(at, size, whole, at, size);
      }
    }
    WriteFile(path, left);
    WriteFile(path + ".tmp", scratchFile);
    log.SetMaxLines(most);
    ASSERT_TRUE(Append(log, all + 1)) << round;
    ASSERT_EQ(Numbers(ReadFile(path)), Numbers(expected.substr(8) + Records(all + 1, all + 1)))
        << round << ": " << most << ", " << drop;
    ASSERT_EQ(scratch.List(), test::Names{"log"}) << round;
  }
}

// The leftover of another cut, or of a finished one, must not undo later appends.
TEST_F(RecordLog, AScratchFileThatIsNotNeededIsOnlyRemoved) {
  std::pair<std::string, std::string> const rows[] = {{Records(2, 11), Records(2, 11)},
                                                      {Records(3, 13), Records(2, 11)},
                                                      {Records(2, 14), Records(2, 11)},
                                                      {Records(5, 14), Records(2, 11)},
                                                      {Records(1, 10), ""},
                                                      {"", Records(2, 11)},
                                                      {Records(1, 13), Records(4, 13)},
                                                      {Records(2, 11), "torn"}};
  for (auto const& [left, leftover] : rows) {
    WriteFile(path, left);
    WriteFile(path + ".tmp", leftover);
    log.SetMaxLines(10);
    EXPECT_TRUE(Append(log, 15));
    std::string const all = left + Records(15, 15);
    EXPECT_EQ(Numbers(ReadFile(path)), Numbers(all.substr(all.size() - std::min<std::size_t>(all.size(), 80))))
        << Numbers(left) << ", leftover " << Numbers(leftover);
    EXPECT_EQ(scratch.List(), test::Names{"log"});
  }
}

TEST_F(RecordLog, ALogThatLeadsToItsScratchFileIsNotRemoved) {
  fs::create_symlink("log.tmp", path);
  log.SetMaxLines(3);
  for (std::uint32_t i = 1; i <= 5; i++) EXPECT_TRUE(Append(log, i)) << i;
  EXPECT_EQ(scratch.Read("log.tmp"), Records(3, 5));
  EXPECT_EQ(scratch.List(), (test::Names{"log", "log.tmp"}));
  fs::remove(scratch.Path("log.tmp"));  // the log is not a leftover
}

TEST_F(RecordLog, ALinkToALogHasAScratchFileOfItsOwn) {
  fs::create_symlink("real", path);
  WriteFile(path, Records(1, 2));
  WriteFile(path + ".tmp", Records(5, 6));
  EXPECT_TRUE(Append(log, 3));
  EXPECT_EQ(scratch.List(), (test::Names{"log", "real"})) << "the leftover goes";
}

// Another program can finish its own cut between the check for its scratch file and the lock.
TEST_F(RecordLog, AScratchFileThatGoesMeanwhileIsNoFailure) {
  WriteFile(path, Records(2, 4));
  WriteFile(path + ".tmp", Records(2, 4));
  int const other = open(path.c_str(), O_RDONLY);
  EXPECT_EQ(flock(other, LOCK_EX), 0);
  g_inPause = [&] {
    fs::remove(path + ".tmp");
    close(other);
  };
  EXPECT_TRUE(Append(log, 5));
  EXPECT_FALSE(static_cast<bool>(g_inPause)) << "nobody waited for the lock";
  EXPECT_EQ(ReadFile(path), Records(2, 5));
}

// If a subclass returns twice that there are no records, that counts. A single failure does not.
TEST_F(RecordLog, ASubclassMayDisownTheRecords) {
  for (int const denials : {1, 2}) {
    WriteFile(path, Records(1, 1));
    log.seen.clear();
    log.denials = denials;
    EXPECT_TRUE(Append(log, 2));
    EXPECT_EQ(ReadFile(path), denials == 2 ? Records(2, 2) : Records(1, 2));
  }
}

// The first name determines the scratch file. Later names delete that file, unless it is the log.
TEST_F(RecordLog, TheScratchFileKeepsItsName) {
  for (auto const& [name, gone] : {std::pair("other", "log.tmp"), {"log.tmp", "none"}, {"other", "log.tmp.tmp"}}) {
    test::Names files = {"log.tmp", "log.tmp.tmp", "other.tmp"};
    for (std::string const& file : files) scratch.Write(file, "");
    EXPECT_EQ(log.SetFile(scratch.Path(name)), 1);
    files.erase(std::remove(files.begin(), files.end(), gone), files.end());
    EXPECT_EQ(scratch.List(), files) << name;
  }
  // Files are compared, not spellings, whether or not the log exists yet.
  for (bool const there : {false, true}) {
    LogClass other;
    fs::remove(path + ".tmp");
    if (there) WriteFile(path + ".tmp", Records(1, 1));
    EXPECT_EACH((other.SetFile(path), other.SetFile(scratch.Path(".") + "/log.tmp")), 1);
    EXPECT_EQ(fs::exists(path + ".tmp"), there);
    other.SetMaxLines(1);
    EXPECT_ALL(Append(other, 2), Append(other, 3));
    EXPECT_EQ(ReadFile(path + ".tmp"), Records(3, 3)) << there;
  }
}

TEST_F(RecordLog, RecordsAreReadByIndex) {
  std::string bytes = Records(5, 6) + Bytes(0x80000000) + "last";
  WriteFile(path, bytes);
  ASSERT_TRUE(log.SetBuffer(bytes.data(), bytes.size()));
  EXPECT_NONE(log.SetBuffer(nullptr, 10), log.SetBuffer(bytes.data(), 0));
  for (auto const read : {&LogClass::ReadFileReg, &LogClass::ReadReg}) {
    long when = 0x55555555;  // every bit is replaced, whatever the width of a long
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
  bytes = Bytes(7) + "x";
  long when = 0;
  char byte = '.';
  ASSERT_TRUE(log.SetBuffer(bytes.data(), bytes.size()));
  EXPECT_EACH((log.ReadReg(0, &when, &byte, 1), when, byte), true, 7, 'x') << "a payload of one byte";
  log.UnloadFile();
  EXPECT_EACH((log.LoadFile(kSize), log.GetRegCount(kSize)), 3);
  EXPECT_EACH((log.LoadFile(kSize), log.GetRegCount(kSize)), 3, 0) << "a second load in a row loads nothing";
}

TEST_F(RecordLog, OperationsCallEachOtherVirtually) {
  long when = 0;
  char data[] = "data";
  std::pair<char const*, std::function<bool()>> const rows[] = {
      {"U", [&] { return log.SetFile(path) == 1; }},
      {"WCC", [&] { return log.WriteReg(data, kSize); }},
      {"C", [&] { return log.ReadFileReg(0, &when, data, kSize); }},
      {"CU", [&] { return log.LoadFile(kSize) == 1; }},
      {"", [&] { return log.ReadReg(0, &when, data, kSize) && log.GetRegCount(kSize) == 1; }},
      {"U", [&] { return log.SetBuffer(data, 4); }},
      {"C", [&] { return log.LimitFile(kSize), log.more = 1; }},  // a record that does not exist: nothing is invented
      {"C", [&] { return !log.ReadFileReg(1, &when, data, kSize); }},
      {"CUU", [&] { return log.UnloadFile(), log.seen.clear(), log.LoadFile(kSize) == 0; }}};
  for (auto const& [calls, operation] : rows) {
    log.seen.clear();
    EXPECT_TRUE(operation()) << calls;
    EXPECT_EQ(log.seen, calls);
  }
}

}  // namespace
