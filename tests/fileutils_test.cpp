#include "zelvane/core/fileutils.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <tuple>
#include <vector>

#include "support/child.h"
#include "support/processes.h"
#include "support/scratch.h"

namespace {

using test::Scratch;
namespace fs = std::filesystem;
using Text = char const*;
using Texts = std::vector<std::vector<Text>>;
using Names = std::vector<std::string>;

// Null leaves the variable unset; whoever keeps a test::Environment of it puts it back.
int Set(Text name, Text value) { return value != nullptr ? setenv(name, value, 1) : unsetenv(name); }

// ---- Names ----

// The path with that extension, its own extension, its folder and name, and the path with and without a delimiter.
TEST(FileNames, PartsOfAPath) {
  auto const parts = [](auto const& path, auto const& ext) {
    return Names{ChangeFileExt(path, ext), ExtractFileExt(path),       ExtractFilePath(path),
                 ExtractFileName(path),    IncludePathDelimiter(path), ExcludePathDelimiter(path)};
  };
  for (auto const& row : std::vector<Names>{
           {"", "cfg", ".cfg", "", "", "", "/", ""},
           {"a.txt", ".cfg", "a.cfg", "txt", "", "a.txt", "a.txt/", "a.txt"},
           {"a.b.txt", "..cfg", "a.b..cfg", "txt", "", "a.b.txt", "a.b.txt/", "a.b.txt"},
           {"/opt/a.d/run", "cfg", "/opt/a.cfg", "d/run", "/opt/a.d/", "run", "/opt/a.d/run/", "/opt/a.d/run"},
           {"/y.z/", ".", "/y", "z/", "/y.z/", "", "/y.z/", "/y.z"},
           {"//", "", "//", "", "//", "", "//", "/"}}) {
    Names const expected(row.begin() + 2, row.end());
    EXPECT_EQ(expected, parts(row[0], row[1]));
    EXPECT_EQ(expected, parts(row[0].c_str(), row[1].c_str()));
  }
  EXPECT_EQ(Names(6), parts(Text(nullptr), "cfg"));
  EXPECT_EQ("", ChangeFileExt("a.txt", nullptr));
  EXPECT_EQ("/x/", ExtractFilePath(std::string("/x/y\0/z", 7))) << "twins end at a NUL";
}

// ---- Places ----

TEST(Places, HomeAndTemporaryFolders) {
  test::Environment const home("HOME", ""), tmp("TMP", ""), temp("TEMP", ""), tmpdir("TMPDIR", "");
  for (auto const& row : Texts{{nullptr, "~"}, {"~", "~"}, {"", "/"}, {"/a/b", "/a/b/"}, {"/a/", "/a/"}}) {
    Set("HOME", row[0]);
    EXPECT_EQ(row[1], GetUserPath()) << row[1];
  }
  std::string const exe = GetExeName(), program = ExtractFilePath(exe);
  EXPECT_EQ(fs::read_symlink("/proc/self/exe").string(), exe);
  for (auto const& row : Texts{{"/usr", "/etc/", nullptr, "/usr/"},
                               {nullptr, "/etc/", "/usr", "/etc/"},
                               {nullptr, nullptr, nullptr, "/tmp/"},
                               {"/nonexistent", "/etc/", "/usr", program.c_str()}}) {
    Set("TMP", row[0]), Set("TEMP", row[1]), Set("TMPDIR", row[2]);
    EXPECT_EQ(row[3], GetTmpPath(true));
  }
  Scratch scratch;
  Set("TMP", scratch.Path().c_str());
  EXPECT_EQ(scratch.Path("tmpXXXXXX").size(), GetTmpFileName().size());
}

// ---- Permissions ----

TEST(Permissions, FoundByTryingWithoutTouching) {
  Scratch scratch;
  chmod(scratch.Path().c_str(), 0777);
  for (auto const& [name, mode] : {std::pair("file", 0666), {"r", 0444}, {"w", 0222}})
    chmod(scratch.Write(name, "abc").c_str(), static_cast<mode_t>(mode));
  fs::create_symlink("nowhere", scratch.Path("dangling"));
  mkfifo(scratch.Path("fifo").c_str(), 0666);
  int const descriptors = test::OpenDescriptors();
  auto const rights = [](auto const& of) {
    return std::string(FilePermToRead(of) ? "r" : "") + (FilePermToWrite(of) ? "w" : "") + (DirExists(of) ? "d" : "");
  };
  EXPECT_TRUE(test::AsOrdinaryUser([&] {  // who meets the modes
    std::string found, twins;
    for (Text name : {"file", "r", "w", "", "missing", "dangling", "file/x"}) {
      twins += name + ("=" + rights(scratch.Path(name)) + " ");
      found += name + ("=" + rights(scratch.Path(name).c_str()) + " ");
    }
    EXPECT_EQ("file=rw r=r w= =rd missing= dangling= file/x= ", found);
    return found == twins && !testing::Test::HasFailure() && descriptors == test::OpenDescriptors();
  }));
  EXPECT_FALSE(FilePermToWrite(scratch.Path("fifo")));  // and does not wait
  EXPECT_EQ("", rights("") + rights(Text(nullptr)));
  EXPECT_EQ((Names{"dangling", "fifo", "file", "r", "w"}), scratch.List());
}

// ---- Copying ----

std::string g_calls;  // "copied/size=percent ", and "!" behind the last one

void Record(void const* context, unsigned long copied, unsigned long size, unsigned short percent, bool finished) {
  EXPECT_EQ(nullptr, context);
  g_calls += std::to_string(copied) + "/" + std::to_string(size) + "=" + std::to_string(percent);
  g_calls += finished ? "!" : " ";
}

TEST(Copying, BlocksAndCalls) {
  Scratch scratch;
  using Row = std::tuple<size_t, unsigned long, Text>;
  for (auto const& [size, offset, calls] :
       {Row(0, 0, "0/0=0 0/0=0 0/0=0!"), Row(65536, 0, "0/65536=0 65536/65536=100 65536/65536=100 65536/65536=100!"),
        Row(140000, 0, "0/140000=0 65536/140000=46 131072/140000=93 140000/140000=100 140000/140000=100!"),
        Row(100, 71, "0/100=0 29/100=29 29/100=29!"), Row(100, 500, "0/100=0 0/100=0 0/100=0!")}) {
    std::string bytes;
    for (size_t i = 0; i < size; i++) bytes += static_cast<char>(i * 7 >> 4);
    std::string const from = scratch.Write("from", bytes), to = scratch.Write("to", std::string(300000, 'o'));
    g_calls.clear();
    EXPECT_TRUE(CpFile(Record, from, to, offset, true)) << size;
    EXPECT_EQ(calls, g_calls) << size << " from " << offset;
    EXPECT_EQ(bytes.substr(std::min<size_t>(offset, size)), scratch.Read("to")) << size;
  }
}

TEST(Copying, RefusalsAndFailures) {
  Scratch scratch;
  std::string const from = scratch.Write("from", "new"), to = scratch.Write("to", "old");
  fs::create_hard_link(from, scratch.Path("hard"));
  fs::create_symlink("from", scratch.Path("soft"));
  int const descriptors = test::OpenDescriptors();
  g_calls.clear();
  EXPECT_FALSE(CpFile(Record, from, to, 0, false));
  for (Text name : {"from", "hard", "soft", "no/folder", ""})
    EXPECT_FALSE(CpFile(Record, from, scratch.Path(name), 0, true)) << name;
  EXPECT_FALSE(CpFile(Record, scratch.Path("missing"), to, 0, true));
  EXPECT_FALSE(CpFile(nullptr, to.c_str(), 0, true) || CpFile(from.c_str(), nullptr, 0, true));
  EXPECT_EQ("new old", scratch.Read("from") + " " + scratch.Read("to"));
  EXPECT_FALSE(CpFile(Record, from, "/dev/full", 0, true));
  EXPECT_EQ("0/3=0 3/3=100 ", g_calls);
  EXPECT_FALSE(CpFile(scratch.Path(), to, 0, true));  // a folder opens but cannot be read
  EXPECT_EQ(descriptors, test::OpenDescriptors());
}

// ---- Ticks and the system ----

TEST(System, TicksAndDelays) {
  Delay(4294968);  // 32 bits of microseconds: wraps to less than one millisecond, not more than an hour
  unsigned long const milliseconds = GetSystemTick(), microseconds = usGetSystemTick();
  EXPECT_EQ(0U, (milliseconds | microseconds) >> 16 >> 16);
  Delay(3), usDelay(2500);
  EXPECT_GE(static_cast<std::uint32_t>(usGetSystemTick() - microseconds), 5500U);
}

TEST(System, VersionAndAdministrator) {
  utsname kernel;
  uname(&kernel);
  std::string const end = std::string(" - ") + kernel.sysname + " " + kernel.release + " in " + kernel.machine;
  std::string line;
  std::getline(std::ifstream("/etc/debian_version"), line);
  EXPECT_TRUE(line.empty() || GetOSVersion() == "Debian GNU/Linux " + line + end) << GetOSVersion();
  EXPECT_TRUE(geteuid() != 0 || test::InChild([] { return setuid(test::kNobody) == 0 && CurUserIsAdmin(); }));
  EXPECT_FALSE(test::AsOrdinaryUser(CurUserIsAdmin));
  errno = ENOTDIR;
  EXPECT_EQ(ENOTDIR, GetOSLastError());
  EXPECT_TRUE(GetOSType() == 2 && GetPathDelimiter() == '/');
}

}  // namespace
