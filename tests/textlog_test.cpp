#include "zelvane/logs/textlog.h"

#include "support/child.h"
#include "support/test.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/fileutils.h"

namespace {

TEST(TextLog, ALineIsStampTickAndText) {
  test::Scratch scratch;
  std::string before = "old, no line feed";
  TextLogClass log(scratch.Write("log", before).c_str());
  auto const check = [&](long when, std::string const& text, std::string const& stamp, bool twin) {
    auto const began = static_cast<std::uint32_t>(GetSystemTick());
    EXPECT_TRUE(twin ? log.WriteLine(when, text) : log.WriteLine(when, text.c_str())) << text;
    std::string const now = scratch.Read("log"), tick = std::to_string(std::atoll(now.c_str() + before.size() + 20));
    EXPECT_EQ(now, before + stamp + tick + " " + text + "\n");
    EXPECT_LE(static_cast<std::uint32_t>(std::stoul(tick)) - began, 60000u) << tick;
    before = now;
  };
  check(EncodeDateTime(2004, 3, 5, 8, 7, 9), "UPS on battery", "05/03/2004 08:07:09 ", true);
  check(0, "", "01/01/1970 00:00:00 ", false);
  check(2147483647, " n\xE3o ;%s\n ", "19/01/2038 03:14:07 ", false);
  check(EncodeDateTime(2004, 2, 29, 23, 59, 59), "leap day", "01/02/2004 23:59:59 ", true);
  for (long when : {-1L, LONG_MIN}) EXPECT_FALSE(log.WriteLine(when, "text")) << when;
  EXPECT_FALSE(log.WriteLine(0, static_cast<char const*>(nullptr)));
  for (char const* path : {"", "/", "/dev/full"}) EXPECT_FALSE(TextLogClass(path).WriteLine("text")) << path;
  EXPECT_TRUE(test::WithShortFiles(before.size() + 9, [&] { EXPECT_FALSE(log.WriteLine("text")); }));
  EXPECT_EQ(scratch.Read("log"), before);
}

// Shares a base pointer with the record logs, but has its own file.
TEST(TextLog, ItsFileIsNotThatOfTheRecords) {
  test::Scratch scratch;
  for (char const* name : {"log", "log.tmp", "other.tmp"}) scratch.Write(name, "kept");
  TextLogClass text;
  LogClass& log = text;
  char bytes[] = "12345678";
  EXPECT_EACH((log.SetBuffer(bytes, 8), log.ClearFile()), true, false);
  for (char const* name : {"log", "other", "log"}) EXPECT_EQ(log.SetFile(scratch.Path(name)), 1);
  EXPECT_EQ(log.GetRegCount(4), 1u) << "the buffer stays";
  EXPECT_EACH((log.WriteReg(0, bytes, 4), log.GetFileRegCount(0)), false, 0);
  EXPECT_TRUE(log.ClearFile());
  EXPECT_EQ(scratch.List(), (test::Names{"log", "log.tmp", "other.tmp"}));
  EXPECT_EQ(scratch.Read("log"), "");
}

}  // namespace
