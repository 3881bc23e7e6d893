#include "zelvane/core/fileutils.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <tuple>
#include <vector>

#include "support/child.h"
#include "support/scratch.h"

namespace {

using test::Scratch;
namespace fs = std::filesystem;

// Environment variables set for a test and put back.
class Environment {
 public:
  Environment(std::initializer_list<std::pair<char const*, char const*>> values) {
    for (auto const& [name, value] : values) {
      char const* const old = getenv(name);
      old_.emplace_back(name, old != nullptr, old != nullptr ? old : "");
      Set(name, value);
    }
  }
  ~Environment() {
    for (auto const& [name, set, value] : old_) Set(name, set ? value.c_str() : nullptr);
  }

 private:
  static void Set(char const* name, char const* value) { value != nullptr ? setenv(name, value, 1) : unsetenv(name); }
  std::vector<std::tuple<char const*, bool, std::string>> old_;
};

// ---- Names ----

TEST(FileNames, ExtensionsAreSearchedInTheWholeText) {
  struct Row {
    char const *path, *ext, *changed, *extracted;
  };
  for (Row const& row : std::vector<Row>{{"a.txt", ".cfg", "a.cfg", "txt"},
                                         {"a.txt", "cfg", "a.cfg", "txt"},
                                         {"a.txt", "..cfg", "a..cfg", "txt"},
                                         {"a.txt", "", "a", "txt"},
                                         {"a.txt", ".", "a", "txt"},
                                         {"a.b.c", "d", "a.b.d", "c"},
                                         {"a", "", "a", ""},
                                         {"a", ".", "a", ""},
                                         {"a", "cfg", "a.cfg", ""},
                                         {"", "cfg", ".cfg", ""},
                                         {"a.", "cfg", "a.cfg", ""},
                                         {"a.", "", "a", ""},
                                         {"/opt/a.d/run", "cfg", "/opt/a.cfg", "d/run"},
                                         {"/x.d/y", "", "/x", "d/y"}}) {
    EXPECT_EQ(row.changed, ChangeFileExt(row.path, row.ext)) << row.path << " with " << row.ext;
    EXPECT_EQ(row.changed, ChangeFileExt(std::string(row.path), std::string(row.ext))) << row.path;
    EXPECT_EQ(row.extracted, ExtractFileExt(row.path)) << row.path;
    EXPECT_EQ(row.extracted, ExtractFileExt(std::string(row.path))) << row.path;
  }
  EXPECT_EQ("", ChangeFileExt(nullptr, "cfg"));
  EXPECT_EQ("", ChangeFileExt("a.txt", nullptr));
  EXPECT_EQ("", ExtractFileExt(nullptr));
}

TEST(FileNames, FoldersAndDelimiters) {
  struct Row {
    char const *path, *folder, *name, *included, *excluded;
  };
  for (Row const& row : std::vector<Row>{{"", "", "", "/", ""},
                                         {"/", "/", "", "/", ""},
                                         {"//", "//", "", "//", "/"},
                                         {"name", "", "name", "name/", "name"},
                                         {"/x/y", "/x/", "y", "/x/y/", "/x/y"},
                                         {"x.d/y.z/", "x.d/y.z/", "", "x.d/y.z/", "x.d/y.z"},
                                         {"/a//", "/a//", "", "/a//", "/a/"}}) {
    for (bool twin : {false, true}) {
      std::string const text = row.path;
      EXPECT_EQ(row.folder, twin ? ExtractFilePath(text) : ExtractFilePath(row.path)) << row.path;
      EXPECT_EQ(row.name, twin ? ExtractFileName(text) : ExtractFileName(row.path)) << row.path;
      EXPECT_EQ(row.included, twin ? IncludePathDelimiter(text) : IncludePathDelimiter(row.path)) << row.path;
      EXPECT_EQ(row.excluded, twin ? ExcludePathDelimiter(text) : ExcludePathDelimiter(row.path)) << row.path;
    }
  }
  for (auto function : {static_cast<std::string (*)(char const*)>(ExtractFilePath), ExtractFileName,
                        IncludePathDelimiter, ExcludePathDelimiter})
    EXPECT_EQ("", function(nullptr));
  EXPECT_EQ("/x/", ExtractFilePath(std::string("/x/y\0/z", 7)));  // twins end at a NUL
  EXPECT_EQ('/', GetPathDelimiter());
}

// ---- Places ----

TEST(Places, HomeFolder) {
  struct Row {
    char const *home, *path;
  };
  for (Row const& row : std::vector<Row>{{nullptr, "~"},
                                         {"~", "~"},
                                         {"", "/"},
                                         {"/home/ana", "/home/ana/"},
                                         {"/home/ana/", "/home/ana/"},
                                         {"~x", "~x/"}}) {
    Environment const environment{{"HOME", row.home}};
    EXPECT_EQ(row.path, GetUserPath()) << row.path;
    EXPECT_EQ(row.path, GetUserPath(static_cast<UserPathKind>(-7), true)) << row.path;
  }
}

TEST(Places, TemporaryFolderIsTheFirstThatIsSet) {
  Scratch scratch;
  std::string const a = scratch.Path("a");
  std::string const b = scratch.Path("b/");
  mkdir(a.c_str(), 0700);
  mkdir(b.c_str(), 0700);
  std::string const program = ExtractFilePath(GetExeName());
  struct Row {
    char const *tmp, *temp, *tmpdir;
    std::string path;
  };
  for (Row const& row : std::vector<Row>{{a.c_str(), b.c_str(), nullptr, a + "/"},
                                         {nullptr, b.c_str(), a.c_str(), b},
                                         {nullptr, nullptr, a.c_str(), a + "/"},
                                         {nullptr, nullptr, nullptr, "/tmp/"},
                                         {"", b.c_str(), a.c_str(), program},
                                         {"/nonexistent", b.c_str(), a.c_str(), program}}) {
    Environment const environment{{"TMP", row.tmp}, {"TEMP", row.temp}, {"TMPDIR", row.tmpdir}};
    EXPECT_EQ(row.path, GetTmpPath(true)) << row.path;
  }
}

TEST(Places, TemporaryFileIsCreatedEmptyOrItsPatternGiven) {
  Scratch scratch;
  Environment const environment{{"TMP", scratch.Path().c_str()}};
  int const descriptors = test::OpenDescriptors();
  std::string const first = GetTmpFileName();
  std::string const second = GetTmpFileName(true);
  EXPECT_NE(first, second);
  EXPECT_EQ(0U, first.find(scratch.Path("tmp"))) << first;
  EXPECT_EQ(scratch.Path("tmpXXXXXX").size(), first.size()) << first;
  EXPECT_EQ("", test::ReadFile(first));
  EXPECT_EQ(2U, scratch.List().size());
  // No name is free below the kernel's own files, whoever asks.
  Environment const refused{{"TMP", "/proc/self/fd"}};
  EXPECT_EQ("/proc/self/fd/tmpXXXXXX", GetTmpFileName());
  EXPECT_EQ(descriptors, test::OpenDescriptors());
}

TEST(Places, RunningProgramAndTheOneThatReplacedIt) {
  if (getenv("ZELVANE_TEST_COPY") == nullptr) {
    EXPECT_EQ(fs::read_symlink("/proc/self/exe").string(), GetExeName());
    EXPECT_EQ(GetExeName(false), GetExeName(true));
    Scratch scratch;
    fs::copy_file("/proc/self/exe", scratch.Path("prog"));
    Environment const environment{{"ZELVANE_TEST_COPY", "1"}};
    std::string const command = "cd " + scratch.Path() + " && ./prog --gtest_filter=Places.RunningProgram* >log 2>&1";
    EXPECT_EQ(0, system(command.c_str())) << scratch.Read("log");
    return;
  }
  // In the copy, started as "./prog" in its own folder.
  unlink("prog");
  EXPECT_EQ("", GetExeName());
  test::WriteFile("prog", "the next version");
  EXPECT_EQ(fs::current_path().string() + "/prog", GetExeName());
}

// ---- Permissions ----

TEST(Permissions, FoundByTryingWithoutTouching) {
  Scratch scratch;
  std::string const file = scratch.Write("file", "abc");
  fs::create_symlink("nowhere", scratch.Path("dangling"));
  mkfifo(scratch.Path("fifo").c_str(), 0600);
  int const descriptors = test::OpenDescriptors();
  struct Row {
    std::string path;
    bool reads, writes, folder;
  };
  for (Row const& row : std::vector<Row>{{file, true, true, false},
                                         {scratch.Path(), true, false, true},
                                         {scratch.Path("missing"), false, false, false},
                                         {scratch.Path("dangling"), false, false, false},
                                         {scratch.Path("fifo"), true, false, false},  // and does not wait
                                         {file + "/x", false, false, false},
                                         {"", false, false, false},
                                         {"/dev/full", true, true, false}}) {
    for (bool twin : {false, true}) {
      EXPECT_EQ(row.reads, twin ? FilePermToRead(row.path) : FilePermToRead(row.path.c_str())) << row.path;
      EXPECT_EQ(row.writes, twin ? FilePermToWrite(row.path) : FilePermToWrite(row.path.c_str())) << row.path;
      EXPECT_EQ(row.folder, twin ? DirExists(row.path) : DirExists(row.path.c_str())) << row.path;
    }
  }
  EXPECT_FALSE(FilePermToRead(nullptr));
  EXPECT_FALSE(FilePermToWrite(nullptr));
  EXPECT_FALSE(DirExists(nullptr));
  EXPECT_EQ("abc", scratch.Read("file"));
  EXPECT_EQ((std::vector<std::string>{"dangling", "fifo", "file"}), scratch.List());
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  EXPECT_FALSE(FilePermToRead(scratch.Path("missing")));
  EXPECT_EQ(ENOENT, GetOSLastError());
}

TEST(Permissions, AnOrdinaryUserMeetsTheModes) {
  Scratch scratch;
  chmod(scratch.Path().c_str(), 0755);
  struct Row {
    char const* name;
    mode_t mode;
    bool reads, writes;
  };
  std::vector<Row> const rows = {{"r", 0444, true, false}, {"w", 0222, false, false}, {"rw", 0666, true, true}};
  for (Row const& row : rows) chmod(scratch.Write(row.name, "").c_str(), row.mode);
  mkdir(scratch.Path("closed").c_str(), 0644);
  EXPECT_TRUE(test::AsOrdinaryUser([&] {
    bool right = !DirExists(scratch.Path("closed")) && DirExists(scratch.Path());
    for (Row const& row : rows)
      right = right && FilePermToRead(scratch.Path(row.name)) == row.reads &&
              FilePermToWrite(scratch.Path(row.name)) == row.writes;
    return right;
  }));
}

TEST(Permissions, TheCurrentFolderStaysEvenIfItHasGone) {
  fs::path const before = fs::current_path();
  Scratch scratch;
  fs::create_directory(scratch.Path("gone"));
  fs::current_path(scratch.Path("gone"));
  fs::remove(scratch.Path("gone"));
  EXPECT_TRUE(DirExists("/"));
  EXPECT_FALSE(DirExists("/nonexistent"));
  EXPECT_EQ(scratch.Path("gone (deleted)"), fs::read_symlink("/proc/self/cwd").string());
  fs::current_path(before);
}

// ---- Copying ----

using Call = std::tuple<unsigned long, unsigned long, unsigned, bool>;  // copied, size, percent, finished
std::vector<Call> g_calls;

void Record(void const* context, unsigned long copied, unsigned long size, unsigned short percent, bool finished) {
  EXPECT_EQ(nullptr, context);
  g_calls.emplace_back(copied, size, percent, finished);
}

TEST(Copying, BlocksAndCalls) {
  Scratch scratch;
  struct Row {
    size_t size;
    unsigned long offset;
    std::vector<Call> calls;
  };
  for (Row const& row : std::vector<Row>{
           {0, 0, {{0, 0, 0, false}, {0, 0, 0, false}, {0, 0, 0, true}}},
           {1, 0, {{0, 1, 0, false}, {1, 1, 100, false}, {1, 1, 100, true}}},
           {65535, 0, {{0, 65535, 0, false}, {65535, 65535, 100, false}, {65535, 65535, 100, true}}},
           {65536,
            0,
            {{0, 65536, 0, false}, {65536, 65536, 100, false}, {65536, 65536, 100, false}, {65536, 65536, 100, true}}},
           {200000,
            0,
            {{0, 200000, 0, false},
             {65536, 200000, 32, false},
             {131072, 200000, 65, false},
             {196608, 200000, 98, false},
             {200000, 200000, 100, false},
             {200000, 200000, 100, true}}},
           {100, 71, {{0, 100, 0, false}, {29, 100, 29, false}, {29, 100, 29, true}}},
           {100, 43, {{0, 100, 0, false}, {57, 100, 57, false}, {57, 100, 57, true}}},
           {100, 100, {{0, 100, 0, false}, {0, 100, 0, false}, {0, 100, 0, true}}},
           {100, 500, {{0, 100, 0, false}, {0, 100, 0, false}, {0, 100, 0, true}}}}) {
    std::string bytes(row.size, '\0');
    for (size_t i = 0; i < bytes.size(); i++) bytes[i] = static_cast<char>(i * 7 >> 4);
    std::string const from = scratch.Write("from", bytes);
    std::string const to = scratch.Write("to", std::string(300000, 'o'));
    std::string const rest = bytes.substr(std::min<size_t>(row.offset, bytes.size()));
    for (bool twin : {false, true}) {
      g_calls.clear();
      EXPECT_TRUE(twin ? CpFile(Record, from, to, row.offset, true)
                       : CpFile(Record, from.c_str(), to.c_str(), row.offset, true))
          << row.size;
      EXPECT_EQ(row.calls, g_calls) << row.size << " from " << row.offset;
      EXPECT_EQ(rest, scratch.Read("to")) << row.size << " from " << row.offset;
      EXPECT_TRUE(twin ? CpFile(from, scratch.Path("new"), row.offset, false)
                       : CpFile(from.c_str(), scratch.Path("new").c_str(), row.offset, false));
      EXPECT_EQ(rest, scratch.Read("new")) << row.size << " from " << row.offset;
      unlink(scratch.Path("new").c_str());
    }
  }
}

TEST(Copying, RefusalsLeaveTheDestinationAlone) {
  Scratch scratch;
  std::string const from = scratch.Write("from", "new");
  std::string const to = scratch.Write("to", "old");
  fs::create_hard_link(from, scratch.Path("hard"));
  fs::create_symlink("from", scratch.Path("soft"));
  std::vector<std::string> const names = scratch.List();
  int const descriptors = test::OpenDescriptors();
  struct Row {
    std::string from, to;
    bool overwrite;
  };
  for (Row const& row : std::vector<Row>{{from, to, false},
                                         {scratch.Path("missing"), to, true},
                                         {scratch.Path("missing"), scratch.Path("x"), true},
                                         {from, from, true},
                                         {from, scratch.Path("hard"), true},
                                         {from, scratch.Path("soft"), true},
                                         {scratch.Path("soft"), from, true},
                                         {from, scratch.Path("no/folder"), true},
                                         {from, to + "/x", true},
                                         {from, scratch.Path(), true}}) {
    g_calls.clear();
    EXPECT_FALSE(CpFile(Record, row.from, row.to, 0, row.overwrite)) << row.from << " to " << row.to;
    EXPECT_FALSE(CpFile(row.from, row.to, 0, row.overwrite)) << row.from << " to " << row.to;
    EXPECT_TRUE(g_calls.empty()) << row.from << " to " << row.to;
  }
  EXPECT_FALSE(CpFile(nullptr, to.c_str(), 0, true));
  EXPECT_FALSE(CpFile(from.c_str(), nullptr, 0, true));
  EXPECT_FALSE(CpFile(Record, static_cast<char const*>(nullptr), to.c_str(), 0, true));
  EXPECT_EQ("new", scratch.Read("from"));
  EXPECT_EQ("old", scratch.Read("to"));
  EXPECT_EQ(names, scratch.List());
  EXPECT_EQ(descriptors, test::OpenDescriptors());
}

TEST(Copying, FailuresOnTheWay) {
  Scratch scratch;
  std::string const from = scratch.Write("from", std::string(70000, 'x'));
  std::string const to = scratch.Write("to", "old");
  int const descriptors = test::OpenDescriptors();
  g_calls.clear();
  EXPECT_FALSE(CpFile(Record, from, "/dev/full", 0, true));
  EXPECT_EQ((std::vector<Call>{{0, 70000, 0, false}, {65536, 70000, 93, false}, {70000, 70000, 100, false}}), g_calls);
  EXPECT_FALSE(CpFile(scratch.Path(), to, 0, true));  // a folder opens but cannot be read
  EXPECT_EQ("", scratch.Read("to"));
  EXPECT_FALSE(CpFile(from, to, static_cast<unsigned long>(-1) / 2 + 2, true) &&
               sizeof(long) == 8);  // no such position
  EXPECT_EQ(descriptors, test::OpenDescriptors());
}

TEST(Copying, APipeIsReadToItsEndButCannotSeek) {
  Scratch scratch;
  for (bool plain : {true, false}) {
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    ASSERT_EQ(5, write(ends[1], "bytes", 5));
    close(ends[1]);
    std::string const from = "/dev/fd/" + std::to_string(ends[0]);
    EXPECT_EQ(plain, CpFile(plain ? nullptr : Record, from, scratch.Path("to"), 0, true));
    EXPECT_EQ(plain ? "bytes" : "", scratch.Read("to"));
    close(ends[0]);
  }
}

// ---- Waiting and ticks ----

TEST(Ticks, DelaysLastAtLeastAsLongAsAsked) {
  struct Row {
    void (*wait)(unsigned long);
    unsigned long time;
    long least;
  };
  for (Row const& row : std::vector<Row>{{Delay, 0, 1000}, {Delay, 3, 3000}, {usDelay, 0, 1}, {usDelay, 2500, 2500}}) {
    auto shortest = std::chrono::steady_clock::duration::max();  // of several: a busy machine prolongs a short sleep
    for (int i = 0; i < 20; i++) {
      auto const start = std::chrono::steady_clock::now();
      row.wait(row.time);
      shortest = std::min(shortest, std::chrono::steady_clock::now() - start);
    }
    EXPECT_GE(std::chrono::duration_cast<std::chrono::microseconds>(shortest).count(), row.least) << row.time;
  }
  Delay(4294968);  // 32 bits of microseconds: wraps to less than one millisecond, not more than an hour
}

TEST(Ticks, AreTheClockIn32Bits) {
  for (int i = 0; i < 3; i++) {
    timeval before;
    gettimeofday(&before, nullptr);
    unsigned long const milliseconds = GetSystemTick();
    unsigned long const microseconds = usGetSystemTick();
    timeval after;
    gettimeofday(&after, nullptr);
    auto const micro = [](timeval const& t) { return std::int64_t{t.tv_sec} * 1000000 + t.tv_usec; };
    auto const span = static_cast<std::uint64_t>(micro(after) - micro(before));
    EXPECT_EQ(milliseconds, static_cast<std::uint32_t>(milliseconds));
    EXPECT_EQ(microseconds, static_cast<std::uint32_t>(microseconds));
    EXPECT_LE(static_cast<std::uint32_t>(microseconds - static_cast<std::uint32_t>(micro(before))), span);
    EXPECT_LE(static_cast<std::uint32_t>(milliseconds - static_cast<std::uint32_t>(micro(before) / 1000)),
              span / 1000 + 1);
  }
}

// ---- The system ----

TEST(System, VersionNamesTheReleaseAndTheKernel) {
  utsname kernel;
  ASSERT_EQ(0, uname(&kernel));
  std::string const end = std::string(kernel.sysname) + " " + kernel.release + " in " + kernel.machine;
  std::string const version = GetOSVersion();
  ASSERT_GE(version.size(), end.size());
  EXPECT_EQ(end, version.substr(version.size() - end.size()));
  if (std::ifstream file("/etc/debian_version"); file) {
    std::string line;
    std::getline(file, line);
    EXPECT_EQ("Debian GNU/Linux " + line + " - " + end, version);
  }
  EXPECT_EQ(2, GetOSType());
}

TEST(System, AdministratorIsUserOrGroupZero) {
  if (getuid() != 0) {
    EXPECT_EQ(getgid() == 0, CurUserIsAdmin());
    return;
  }
  EXPECT_TRUE(CurUserIsAdmin());
  EXPECT_TRUE(test::InChild([] { return setgid(test::kNobody) == 0 && CurUserIsAdmin(); }));
  EXPECT_TRUE(test::InChild([] { return setgid(0) == 0 && setuid(test::kNobody) == 0 && CurUserIsAdmin(); }));
  EXPECT_TRUE(
      test::InChild([] { return setgid(test::kNobody) == 0 && setuid(test::kNobody) == 0 && !CurUserIsAdmin(); }));
}

}  // namespace
