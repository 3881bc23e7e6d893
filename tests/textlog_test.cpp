#include "zelvane/logs/textlog.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <climits>
#include <csignal>
#include <cstring>
#include <locale>

#include "support/child.h"
#include "support/scratch.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/fileutils.h"

namespace {

// `line` with the tick behind its 20 bytes of stamp replaced by "TICK"; the tick must lie between `before` and now.
std::string Line(std::string const& line, unsigned long before) {
  size_t const end = line.find_first_not_of("0123456789", 20);
  if (end == std::string::npos || end == 20) return "no tick: " + line;
  unsigned long const tick = std::stoul(line.substr(20, end - 20));
  auto const since = [&](unsigned long t) { return static_cast<std::uint32_t>(t - before); };
  EXPECT_LE(since(tick), since(GetSystemTick())) << line;
  return line.substr(0, 20) + "TICK" + line.substr(end);
}

TEST(TextLog, ALineIsStampTickAndText) {
  struct {
    long when;
    char const *text, *line;
  } const rows[] = {
      {EncodeDateTime(2004, 3, 5, 8, 7, 9), "UPS on battery", "05/03/2004 08:07:09 TICK UPS on battery\n"},
      {0, "", "01/01/1970 00:00:00 TICK \n"},
      {2147483647, " n\xE3o ;%s ", "19/01/2038 03:14:07 TICK  n\xE3o ;%s \n"},
      {EncodeDateTime(2004, 2, 29, 23, 59, 59), "leap day", "01/02/2004 23:59:59 TICK leap day\n"}};
  for (bool twin : {false, true}) {
    for (auto const& row : rows) {
      test::Scratch scratch;
      TextLogClass log(scratch.Path("log").c_str());
      unsigned long const before = GetSystemTick();
      EXPECT_TRUE(twin ? log.WriteLine(row.when, std::string(row.text)) : log.WriteLine(row.when, row.text));
      EXPECT_EQ(Line(scratch.Read("log"), before), row.line);
    }
  }
}

TEST(TextLog, LinesAreAppendedAndTheLocaleHasNoPart) {
  struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
  };
  test::Scratch scratch;
  std::string const old = "old, no line feed";
  TextLogClass log(scratch.Write("log", old));
  log.SetMaxLines(0);
  std::locale const former = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  unsigned long const before = GetSystemTick();
  EXPECT_TRUE(log.WriteLine(0, "one"));
  size_t const first = scratch.Read("log").size();
  EXPECT_TRUE(log.WriteLine(0, std::string("two\nthree")));
  std::locale::global(former);
  std::string const text = scratch.Read("log");
  EXPECT_EQ(text.substr(0, old.size()), old);
  EXPECT_EQ(Line(text.substr(old.size(), first - old.size()), before), "01/01/1970 00:00:00 TICK one\n");
  EXPECT_EQ(Line(text.substr(first), before), "01/01/1970 00:00:00 TICK two\nthree\n");
  EXPECT_EQ(scratch.List(), std::vector<std::string>{"log"});
  EXPECT_TRUE(log.ClearFile());
  EXPECT_EQ(scratch.Read("log"), "");
}

TEST(TextLog, RefusalsWriteNothing) {
  test::Scratch scratch;
  TextLogClass log(scratch.Path("log"));
  EXPECT_FALSE(log.WriteLine(-1, "text"));
  EXPECT_FALSE(log.WriteLine(LONG_MIN, "text"));
  EXPECT_FALSE(log.WriteLine(0, static_cast<char const*>(nullptr)));
  EXPECT_FALSE(log.WriteLine(static_cast<char const*>(nullptr)));
#if LONG_MAX > 2147483647
  EXPECT_FALSE(log.WriteLine(2147483648, "text"));
#endif
  EXPECT_EQ(scratch.List(), std::vector<std::string>());
  TextLogClass none;
  EXPECT_EQ(none.SetFile(static_cast<char const*>(nullptr)), 1);
  EXPECT_FALSE(none.WriteLine("text"));
  EXPECT_FALSE(none.ClearFile());
  for (char const* path : {"/dev/full", "/", "/nonexistent/folder/log"}) {
    log.SetFile(path);
    EXPECT_FALSE(log.WriteLine("text")) << path;
    EXPECT_EQ(log.ClearFile(), std::string(path) == "/dev/full") << path;
  }
}

TEST(TextLog, APartOfALineIsTakenBack) {
  test::Scratch scratch;
  TextLogClass log(scratch.Write("log", "a line before\n"));
  EXPECT_TRUE(test::InChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    rlimit const limit = {30, 30};
    setrlimit(RLIMIT_FSIZE, &limit);
    return !log.WriteLine("text");
  }));
  EXPECT_EQ(scratch.Read("log"), "a line before\n");
}

// Through one pointer with the record logs, but with a file of its own.
TEST(TextLog, ItsFileIsNotThatOfTheRecords) {
  test::Scratch scratch;
  for (char const* name : {"log", "log.tmp", "other.tmp"}) scratch.Write(name, "kept");
  TextLogClass text;
  LogClass& log = text;
  char bytes[] = "12345678";
  ASSERT_TRUE(log.SetBuffer(bytes, 8));
  EXPECT_EQ(log.SetFile(scratch.Path("log")), 1);
  EXPECT_EQ(log.SetFile(scratch.Path("other")), 1);
  EXPECT_EQ(log.SetFile(scratch.Path("log")), 1);
  EXPECT_EQ(log.GetRegCount(4), 1u) << "the buffer stays";
  EXPECT_FALSE(log.WriteReg(0, bytes, 4));
  EXPECT_EQ(log.GetFileRegCount(0), 0u);
  log.LimitFile(0);
  EXPECT_EQ(scratch.List(), (std::vector<std::string>{"log", "log.tmp", "other.tmp"}));
  EXPECT_TRUE(log.ClearFile());
  EXPECT_EQ(scratch.Read("log"), "");
}

TEST(TextLog, VirtualOperations) {
  using Stamped = bool (TextLogClass::*)(long, char const*);
  using Now = bool (TextLogClass::*)(char const*);
  auto const slot = [](auto member) {
    long word = 0;
    std::memcpy(&word, &member, sizeof word);
    return (word - 1) / static_cast<long>(sizeof(void*));
  };
  EXPECT_EQ(slot(static_cast<int (TextLogClass::*)(char const*)>(&TextLogClass::SetFile)), 2);
  EXPECT_EQ(slot(&TextLogClass::ClearFile), 13);
  EXPECT_EQ(slot(static_cast<Now>(&TextLogClass::WriteLine)), 14);
  EXPECT_EQ(slot(static_cast<Stamped>(&TextLogClass::WriteLine)), 15);

  struct Probe : TextLogClass {
    using TextLogClass::WriteLine;
    bool WriteLine(long t, char const* text) override {
      when = t;
      return std::string(text) == "through";
    }
    long when = -1;
  } probe;
  long const before = GetDateTime();
  EXPECT_TRUE(probe.WriteLine("through"));
  EXPECT_TRUE(before <= probe.when && probe.when <= GetDateTime());
}

}  // namespace
