#include "zelvane/core/fileutils.h"

#include <sys/time.h>
#include <sys/utsname.h>

#include "support/child.h"
#include "support/processes.h"
#include "support/settings.h"
#include "support/test.h"

namespace {

using test::Scratch;
using Text = char const*;

// "-" unsets the variable. A test::Environment for it restores the old value.
int Set(Text name, std::string const& value) { return value == "-" ? unsetenv(name) : setenv(name, value.c_str(), 1); }

// ---- test::Names ----

TEST(FileNames, PartsOfAPath) {
  auto const parts = [](auto const& path, auto const& ext) {
    return test::Names{ChangeFileExt(path, ext), ExtractFileExt(path),       ExtractFilePath(path),
                       ExtractFileName(path),    IncludePathDelimiter(path), ExcludePathDelimiter(path)};
  };
  for (test::Case const& c : test::Table("core/fileutils.txt", "parts")) {
    test::Names const expected(c.columns.begin() + 2, c.columns.end());
    EXPECT_EQ(parts(c[0], c[1]), expected) << c;
    EXPECT_EQ(parts(c[0].c_str(), c[1].c_str()), expected) << c;
  }
  EXPECT_EQ(parts(Text(nullptr), "cfg"), test::Names(6));
  EXPECT_EQ(ChangeFileExt("a.txt", nullptr), "");
  EXPECT_EQ(ExtractFilePath(std::string("/x/y\0/z", 7)), "/x/") << "twins end at a NUL";
}

// ---- Places ----

TEST(Places, HomeAndTemporaryFolders) {
  test::Environment const home("HOME", ""), tmp("TMP", ""), temp("TEMP", ""), tmpdir("TMPDIR", "");
  for (test::Case const& c : test::Table("core/fileutils.txt", "home")) {
    Set("HOME", c[0]);
    EXPECT_EQ(GetUserPath(), c[1]) << c;
  }
  std::string const exe = GetExeName();
  EXPECT_EQ(exe, fs::read_symlink("/proc/self/exe").string());
  for (test::Case const& c : test::Table("core/fileutils.txt", "temporary")) {
    Set("TMP", c[0]), Set("TEMP", c[1]), Set("TMPDIR", c[2]);
    EXPECT_EQ(GetTmpPath(true), c[3] == "exe" ? ExtractFilePath(exe) : c[3]) << c;
  }
  Scratch scratch;
  Set("TMP", scratch.Path());
  EXPECT_EQ(GetTmpFileName().size(), scratch.Path("tmpXXXXXX").size());
  Set("TMP", "/proc");  // takes no files
  EXPECT_EQ(GetTmpFileName(), "/proc/tmpXXXXXX");
}

TEST(Places, ProgramThatCannotBeReadHasItsNameInTheCurrentDirectory) {
  Scratch scratch;
  std::string const exe = GetExeName(), name = ExtractFileName(exe);
  fs::path const before = fs::current_path();
  fs::current_path(scratch.Path());
  test::g_refused = exe.c_str();
  EXPECT_EQ(GetExeName(), "");
  scratch.Write(name, "");
  test::g_refused = exe.c_str();
  EXPECT_EQ(GetExeName(), scratch.Path(name));
  fs::current_path(before);
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
  EXPECT_TRUE(test::AsOrdinaryUser([&] {  // a user who is subject to file modes
    std::string found, twins;
    for (Text name : {"file", "r", "w", "", "missing", "dangling", "file/x"}) {
      twins += name + ("=" + rights(scratch.Path(name)) + " ");
      found += name + ("=" + rights(scratch.Path(name).c_str()) + " ");
    }
    EXPECT_EQ(found, "file=rw r=r w= =rd missing= dangling= file/x= ");
    EXPECT_EQ(twins, found);
    EXPECT_EQ(test::OpenDescriptors(), descriptors);
  }));
  EXPECT_TRUE(test::AsOrdinaryUser([&] {  // in a directory that cannot be entered again, as for some daemons
    std::string const closed = scratch.Path("closed");
    EXPECT_EACH((mkdir(closed.c_str(), 0700), chdir(closed.c_str()), chmod(".", 0)), 0);
    EXPECT_EACH((DirExists("/"), DirExists(closed), rmdir(closed.c_str())), true, false, 0);
  }));
  EXPECT_FALSE(FilePermToWrite(scratch.Path("fifo")));  // and does not block
  EXPECT_EACH((rights(""), rights(Text(nullptr))), "");
  EXPECT_EQ(scratch.List(), (test::Names{"dangling", "fifo", "file", "r", "w"}));
}

// ---- Copying ----

std::string g_calls;  // in the table's notation

void Record(void const* context, unsigned long copied, unsigned long size, unsigned short percent, bool finished) {
  EXPECT_EQ(context, nullptr);
  g_calls += std::to_string(copied) + "/" + std::to_string(size) + "=" + std::to_string(percent);
  g_calls += finished ? "!" : " ";
}

TEST(Copying, BlocksAndCalls) {
  Scratch scratch;
  for (test::Case const& c : test::Table("core/fileutils.txt", "copies")) {
    std::string bytes;
    for (size_t i = 0; i < c.UInt(0); i++) bytes += static_cast<char>(i * 7 >> 4);
    std::string const from = scratch.Write("from", bytes), to = scratch.Write("to", std::string(300000, 'o'));
    g_calls.clear();
    EXPECT_TRUE(CpFile(Record, from, to, c.UInt(1), true)) << c;
    EXPECT_EQ(g_calls, c[2]) << c;
    EXPECT_EQ(scratch.Read("to"), bytes.erase(0, c.UInt(1))) << c;
  }
}

TEST(Copying, RefusalsAndFailures) {
  Scratch scratch;
  std::string const from = scratch.Write("from", "new"), to = scratch.Write("to", "old");
  fs::create_hard_link(from, scratch.Path("hard"));
  fs::create_symlink("from", scratch.Path("soft"));
  g_calls.clear();
  EXPECT_FALSE(CpFile(Record, from, to, 0, false));
  for (Text name : {"from", "hard", "soft", "no/folder", ""})
    EXPECT_FALSE(CpFile(Record, from, scratch.Path(name), 0, true)) << name;
  EXPECT_FALSE(CpFile(Record, scratch.Path("missing"), to, 0, true));
  EXPECT_NONE(CpFile(nullptr, to.c_str(), 0, true), CpFile(from.c_str(), nullptr, 0, true));
  EXPECT_EACH((scratch.Read("from"), scratch.Read("to")), "new", "old");
  EXPECT_FALSE(CpFile(Record, from, "/dev/full", 0, true));
  EXPECT_EQ(g_calls, "0/3=0 3/3=100 ");
  EXPECT_FALSE(CpFile(scratch.Path(), to, 0, true));  // a directory opens but cannot be read
}

// ---- Ticks and the system ----

TEST(System, TicksAndDelays) {
  Delay(4294968);  // wraps in 32 bits of microseconds to less than one millisecond, not over an hour
  unsigned long const milliseconds = GetSystemTick(), microseconds = usGetSystemTick();
  EXPECT_EQ((milliseconds | microseconds) >> 16 >> 16, 0U);
  Delay(3), usDelay(2500);
  EXPECT_GE(static_cast<std::uint32_t>(usGetSystemTick() - microseconds), 5500U);
}

TEST(System, SignalsDoNotCutADelayShort) {
  static int signals;
  signals = 0;
  auto const before = signal(SIGALRM, [](int) { signals++; });
  itimerval const often = {{0, 2000}, {0, 2000}}, never = {};
  setitimer(ITIMER_REAL, &often, nullptr);
  unsigned long const start = usGetSystemTick();
  Delay(20), usDelay(20000);
  unsigned long const end = usGetSystemTick();
  setitimer(ITIMER_REAL, &never, nullptr);
  signal(SIGALRM, before);
  EXPECT_GE(static_cast<std::uint32_t>(end - start), 40000U) << signals << " signals";
  EXPECT_GT(signals, 0);
}

TEST(System, VersionAndAdministrator) {
  utsname kernel;
  uname(&kernel);
  std::string const end = std::string(" - ") + kernel.sysname + " " + kernel.release + " in " + kernel.machine;
  std::string line;
  std::getline(std::ifstream("/etc/debian_version"), line);
  if (!line.empty()) EXPECT_EACH((GetOSVersion()), "Debian GNU/Linux " + line + end);
  auto const root = [] { EXPECT_EACH((setuid(test::kNobody), CurUserIsAdmin()), 0, true); };
  if (geteuid() == 0) EXPECT_ALL(test::InChild(root)) << "the group's";
  EXPECT_TRUE(test::AsOrdinaryUser([] { EXPECT_FALSE(CurUserIsAdmin()); }));
  errno = ENOTDIR;
  EXPECT_EQ(GetOSLastError(), ENOTDIR);
  EXPECT_EACH((GetOSType(), GetPathDelimiter()), 2, '/');
}

}  // namespace
