#include "zelvane/core/safesave_internal.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <vector>

#include "support/child.h"
#include "support/scratch.h"
#include "zelvane/core/barrier_internal.h"

// ---- System calls that fail, or end the process, when a test asks for it ----

namespace {

struct Fault {
  char const* call;
  int reason;
};
std::vector<Fault> g_faults;  // each is met once, in any order
int g_callsToLive = -1;       // the process is killed at the call after that many; -1: it is not
std::function<void()> g_onReadlink;

bool Fails(char const* call) {
  if (g_callsToLive >= 0 && g_callsToLive-- == 0) raise(SIGKILL);
  for (auto fault = g_faults.begin(); fault != g_faults.end(); ++fault) {
    if (strcmp(fault->call, call) != 0) continue;
    errno = fault->reason;
    g_faults.erase(fault);
    return true;
  }
  return false;
}

template <class Function>
Function* Real(char const* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

#define EXPORTED __attribute__((visibility("default")))
extern "C" {

EXPORTED ssize_t write(int fd, void const* bytes, size_t size) {
  auto* const real = Real<ssize_t(int, void const*, size_t)>("write");
  bool const watched = g_callsToLive >= 0 || !g_faults.empty();
  if (!watched) return real(fd, bytes, size);
  ssize_t const half = real(fd, bytes, size / 2);  // a failure or a kill comes in the middle
  if (half < 0 || Fails("write")) return -1;
  return half + real(fd, static_cast<char const*>(bytes) + half, size - static_cast<size_t>(half));
}

EXPORTED int close(int fd) {
  int const result = Real<int(int)>("close")(fd);
  return Fails("close") ? -1 : result;
}

EXPORTED int fsync(int fd) { return Fails("fsync") ? -1 : Real<int(int)>("fsync")(fd); }

EXPORTED int fchmod(int fd, mode_t mode) __THROW {
  return Fails("fchmod") ? -1 : Real<int(int, mode_t)>("fchmod")(fd, mode);
}

EXPORTED int fallocate64(int fd, int mode, off64_t from, off64_t size) {
  return Fails("fallocate") ? -1 : Real<int(int, int, off64_t, off64_t)>("fallocate64")(fd, mode, from, size);
}

EXPORTED int rename(char const* from, char const* to) __THROW {
  return Fails("rename") ? -1 : Real<int(char const*, char const*)>("rename")(from, to);
}

EXPORTED int renameat2(int fromFolder, char const* from, int toFolder, char const* to, unsigned flags) __THROW {
  auto* const real = Real<int(int, char const*, int, char const*, unsigned)>("renameat2");
  return Fails("renameat2") ? -1 : real(fromFolder, from, toFolder, to, flags);
}

EXPORTED int link(char const* from, char const* to) __THROW {
  return Fails("link") ? -1 : Real<int(char const*, char const*)>("link")(from, to);
}

EXPORTED ssize_t readlink(char const* path, char* target, size_t size) __THROW {
  if (std::function<void()> const hook = std::exchange(g_onReadlink, nullptr)) hook();
  return Real<ssize_t(char const*, char*, size_t)>("readlink")(path, target, size);
}
}

namespace {

using test::Scratch;
using zelvane::internal::Guard;
using zelvane::internal::KeepAside;
using zelvane::internal::ReadResult;
using zelvane::internal::ReadWhole;
using zelvane::internal::SafeSave;
using Names = std::vector<std::string>;
namespace fs = std::filesystem;

std::string const kOld(100000, 'o');
std::string const kNew(150000, 'n');

struct stat Status(std::string const& path) {
  struct stat status = {};
  stat(path.c_str(), &status);
  return status;
}

mode_t Mode(std::string const& path) { return Status(path).st_mode & 07777; }

// To another user, as far as the tests may.
void GiveAway(std::string const& path) { ASSERT_TRUE(geteuid() != 0 || chown(path.c_str(), 1234, 4321) == 0) << path; }

class Umask {
 public:
  explicit Umask(mode_t mask) : old_(umask(mask)) {}
  ~Umask() { umask(old_); }

 private:
  mode_t old_;
};

// An access control list that names user 1 beside owner, group and others; false where there are none.
bool SetAccessList(std::string const& path, char const* kind) {
  unsigned char const list[] = {2, 0, 0,   0,   1,   0,   6,  0, 255, 255, 255, 255, 2,   0,  6,
                                0, 1, 0,   0,   0,   4,   0,  4, 0,   255, 255, 255, 255, 16, 0,
                                6, 0, 255, 255, 255, 255, 32, 0, 0,   0,   255, 255, 255, 255};
  return setxattr(path.c_str(), kind, list, sizeof list, 0) == 0;
}

bool HasAccessList(std::string const& path) {
  return getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
}

TEST(Barrier, TurnsAnythingThrownIntoTheFailure) {
  EXPECT_EQ(1, Guard(0, [] { return 1; }));
  EXPECT_EQ(0, Guard(0, []() -> int { throw 5; }));
  EXPECT_EQ("failed", Guard(std::string("failed"), []() -> std::string { throw std::bad_alloc(); }));
}

// ---- Reading ----

TEST(ReadWhole, EverySizeAndTheKernelsOwnFiles) {
  Scratch scratch;
  std::string out = "old";
  for (size_t size : {0U, 1U, 65535U, 65536U, 65537U, 200000U}) {
    std::string bytes(size, 'x');
    if (size > 0) bytes.front() = bytes.back() = '\0';
    EXPECT_EQ(ReadResult::kOk, ReadWhole(scratch.Write("file", bytes), out)) << size;
    EXPECT_EQ(bytes, out) << size;
  }
  EXPECT_EQ(ReadResult::kOk, ReadWhole("/proc/self/maps", out));  // of size 0, more than a block
  EXPECT_NE(std::string::npos, out.find("[stack]"));
}

TEST(ReadWhole, TellsMissingFromUnreadable) {
  Scratch scratch;
  std::string const fifo = scratch.Path("fifo");
  mkfifo(fifo.c_str(), 0600);
  std::string out = "old";
  EXPECT_EQ(ReadResult::kOk, ReadWhole(fifo, out));  // nobody writes
  EXPECT_EQ("", out);
  int const silent = open(fifo.c_str(), O_RDWR | O_NONBLOCK);
  EXPECT_EQ(5, write(silent, "begun", 5));
  int const descriptors = test::OpenDescriptors();
  struct Row {
    std::string path;
    ReadResult result;
    int reason;
  };
  for (Row const& row : std::vector<Row>{{scratch.Path("missing"), ReadResult::kNotOpened, ENOENT},
                                         {"", ReadResult::kNotOpened, ENOENT},
                                         {fifo + "/x", ReadResult::kNotOpened, ENOTDIR},
                                         {scratch.Path(), ReadResult::kReadFailed, EISDIR},
                                         {"/dev/zero", ReadResult::kReadFailed, EFBIG},
                                         {fifo, ReadResult::kReadFailed, EAGAIN}}) {
    out = "old";
    EXPECT_EQ(row.result, ReadWhole(row.path, out)) << row.path;
    EXPECT_EQ(row.reason, errno) << row.path;
    EXPECT_TRUE(row.reason == EFBIG || out == (row.reason == EAGAIN ? "begun" : "")) << row.path << ": " << out;
  }
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  close(silent);
}

// ---- Saving ----

TEST(SafeSave, ReplacesTheFileAndKeepsItsModeAndOwner) {
  Umask const mask(0);
  for (mode_t mode : {0600, 0640, 0644, 0666, 0755}) {
    Scratch scratch;
    std::string const path = scratch.Write("file.cfg", kOld);
    GiveAway(path);
    chmod(path.c_str(), mode);
    struct stat const old = Status(path);
    EXPECT_TRUE(SafeSave(path, "new"));
    EXPECT_EQ("new", scratch.Read("file.cfg"));
    EXPECT_EQ(old.st_mode, Status(path).st_mode) << mode;
    EXPECT_EQ(old.st_uid, Status(path).st_uid);
    EXPECT_EQ(old.st_gid, Status(path).st_gid);
    EXPECT_NE(old.st_ino, Status(path).st_ino);  // never emptied: another file took its name
    EXPECT_EQ(Names{"file.cfg"}, scratch.List());
  }
}

TEST(SafeSave, CreatesWithTheModeOfTheUmask) {
  for (mode_t mask : {0U, 027U, 077U}) {
    Umask const guard(mask);
    Scratch scratch;
    EXPECT_TRUE(SafeSave(scratch.Path("new"), ""));
    EXPECT_EQ("", scratch.Read("new"));
    EXPECT_EQ(0666U & ~mask, Mode(scratch.Path("new")));
    EXPECT_EQ(Names{"new"}, scratch.List());
  }
  Scratch scratch;
  std::string const longest(255, 'x');
  EXPECT_TRUE(SafeSave(scratch.Path(longest), "text"));
  EXPECT_TRUE(SafeSave(scratch.Path(longest), "again"));
  EXPECT_EQ("again", scratch.Read(longest));
}

TEST(SafeSave, FollowsLinksToTheirEnd) {
  Scratch scratch;
  scratch.Write("real/file", "old");
  fs::create_directory(scratch.Path("links"));
  fs::create_symlink("../real/file", scratch.Path("links/relative"));
  fs::create_symlink(scratch.Path("links/relative"), scratch.Path("chain"));
  fs::create_symlink("real/missing", scratch.Path("dangling"));
  fs::create_symlink("loop", scratch.Path("loop"));
  EXPECT_TRUE(SafeSave(scratch.Path("chain"), "new"));
  EXPECT_TRUE(SafeSave(scratch.Path("dangling"), "made"));
  EXPECT_FALSE(SafeSave(scratch.Path("loop"), "never"));
  fs::remove(scratch.Path("loop"));
  EXPECT_EQ("new", scratch.Read("real/file"));
  EXPECT_EQ("made", scratch.Read("real/missing"));
  EXPECT_EQ((Names{"chain", "dangling", "links/", "links/relative", "real/", "real/file", "real/missing"}),
            scratch.List());
  for (char const* link : {"chain", "dangling", "links/relative"})
    EXPECT_TRUE(fs::is_symlink(scratch.Path(link))) << link;
}

TEST(SafeSave, HardLinksStayOneFile) {
  for (std::string const& text : {std::string(), std::string("short"), kNew}) {
    Scratch scratch;
    std::string const path = scratch.Write("one", kOld);
    fs::create_hard_link(path, scratch.Path("two"));
    EXPECT_TRUE(SafeSave(path, text));
    EXPECT_EQ(text, scratch.Read("two")) << text.size();
    EXPECT_EQ(Status(path).st_ino, Status(scratch.Path("two")).st_ino);
    EXPECT_EQ((Names{"one", "two"}), scratch.List());
  }
}

TEST(SafeSave, AccessListsStayAndAreNotInherited) {
  Scratch scratch;
  std::string const listed = scratch.Write("listed", kOld);
  std::string const plain = scratch.Write("folder/plain", kOld);
  chmod(plain.c_str(), 0660);
  if (!SetAccessList(listed, "system.posix_acl_access")) GTEST_SKIP() << "no access control lists here";
  ASSERT_TRUE(SetAccessList(scratch.Path("folder"), "system.posix_acl_default"));
  EXPECT_TRUE(SafeSave(listed, "new"));
  EXPECT_TRUE(SafeSave(plain, "new"));
  EXPECT_EQ("new", scratch.Read("listed"));
  EXPECT_EQ("new", scratch.Read("folder/plain"));
  EXPECT_TRUE(HasAccessList(listed));
  EXPECT_FALSE(HasAccessList(plain));
  EXPECT_TRUE(KeepAside(listed, ".lost"));
  EXPECT_TRUE(KeepAside(plain, ".lost"));
  EXPECT_EQ(0U, Mode(listed + ".lost") & 0077U);
  EXPECT_EQ(0U, Mode(plain + ".lost") & 0077U);
}

TEST(SafeSave, RefusesWithoutATrace) {
  Scratch scratch;
  std::string const file = scratch.Write("file", "old");
  mkfifo(scratch.Path("fifo").c_str(), 0600);
  int const descriptors = test::OpenDescriptors();
  for (std::string const& path :
       {scratch.Path("no/folder"), scratch.Path("no/"), file + "/x", file + "/", scratch.Path(), std::string(),
        scratch.Path("fifo"), std::string("/dev/full"), scratch.Path(std::string(256, 'x'))})
    EXPECT_FALSE(SafeSave(path, "new")) << path;
  EXPECT_EQ("old", scratch.Read("file"));
  EXPECT_EQ((Names{"fifo", "file"}), scratch.List());
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  EXPECT_TRUE(SafeSave("/dev/null", "new"));
}

TEST(SafeSave, AnOrdinaryUserMeetsTheModes) {
  Scratch scratch;
  Umask const mask(0);
  for (char const* name : {"open/readonly", "open/writeonly", "closed/file"}) scratch.Write(name, kOld);
  ino_t const kept = Status(scratch.Path("closed/file")).st_ino;
  chmod(scratch.Path("open/readonly").c_str(), 0444);
  chmod(scratch.Path("open/writeonly").c_str(), 0222);
  chmod(scratch.Path("closed/file").c_str(), 0666);
  for (char const* folder : {"", "open"}) chmod(scratch.Path(folder).c_str(), 0777);
  chmod(scratch.Path("closed").c_str(), 0555);
  EXPECT_TRUE(test::AsOrdinaryUser([&] {
    return !SafeSave(scratch.Path("open/readonly"), kNew) && SafeSave(scratch.Path("open/writeonly"), kNew) &&
           SafeSave(scratch.Path("closed/file"), kNew) && !SafeSave(scratch.Path("closed/new"), kNew);
  }));
  EXPECT_EQ(kept, Status(scratch.Path("closed/file")).st_ino);
  chmod(scratch.Path("closed").c_str(), 0755);
  chmod(scratch.Path("open/writeonly").c_str(), 0666);
  EXPECT_EQ(kOld, scratch.Read("open/readonly"));
  EXPECT_EQ(kNew, scratch.Read("open/writeonly"));
  EXPECT_EQ(kNew, scratch.Read("closed/file"));
  EXPECT_EQ((Names{"closed/", "closed/file", "open/", "open/readonly", "open/writeonly"}), scratch.List());
}

TEST(SafeSave, FailingCallsLeaveOldOrNewAndNothingElse) {
  struct Row {
    char const* name;
    std::vector<Fault> faults;
    bool saved;
  };
  for (Row const& row : std::vector<Row>{{"file", {{"write", ENOSPC}}, false},
                                         {"file", {{"fsync", EIO}}, false},
                                         {"file", {{"close", EDQUOT}}, false},
                                         {"file", {{"fchmod", EPERM}}, true},  // then in place, and likewise below
                                         {"file", {{"rename", EBUSY}}, true},
                                         {"file", {{"rename", EBUSY}, {"fallocate", ENOSPC}}, false},
                                         {"linked", {{"fallocate", ENOSPC}}, false},
                                         {"linked", {{"fallocate", EOPNOTSUPP}}, true},
                                         {"linked", {{"fallocate", EINTR}}, true},
                                         {"linked", {{"write", ENOSPC}}, false},
                                         {"linked", {{"fsync", EIO}}, false},
                                         {"new", {{"write", ENOSPC}}, false},
                                         {"new", {{"fsync", EIO}}, false},
                                         {"new", {{"close", EIO}}, false},
                                         {"new", {{"rename", EACCES}}, false}}) {
    std::string faults = row.name;
    for (Fault const& fault : row.faults) faults += std::string(" ") + fault.call;
    Scratch scratch;
    scratch.Write("file", kOld);
    fs::create_hard_link(scratch.Write("linked", kOld), scratch.Path("other"));
    Names const names = scratch.List();
    std::string const before = scratch.Read(row.name);
    int const descriptors = test::OpenDescriptors();
    g_faults = row.faults;
    EXPECT_EQ(row.saved, SafeSave(scratch.Path(row.name), kNew)) << faults;
    EXPECT_TRUE(g_faults.empty()) << faults;
    g_faults.clear();
    EXPECT_TRUE(scratch.Read(row.name) == (row.saved ? kNew : before)) << faults;
    EXPECT_EQ(names, scratch.List()) << faults;
    EXPECT_EQ(descriptors, test::OpenDescriptors()) << faults;
  }
}

TEST(SafeSave, AKillAtAnyCallLeavesOldOrNew) {
  for (std::string const& before : {kOld, std::string("<missing>")}) {
    int calls = 0;
    for (bool finished = false; !finished; calls++) {
      Scratch scratch;
      if (before == kOld) scratch.Write("file", kOld);
      finished = test::InChild([&] {
        g_callsToLive = calls;
        return SafeSave(scratch.Path("file"), kNew);
      });
      std::string const after = scratch.Read("file");
      EXPECT_TRUE(after == kNew || (!finished && after == before)) << "killed at call " << calls;
      ASSERT_LT(calls, 50);
    }
    EXPECT_GE(calls, 4) << "write, fsync, close, rename at least";
  }
}

TEST(SafeSave, AFileRenamedOverItMeanwhileIsReplacedToo) {
  for (bool linked : {false, true}) {
    Scratch scratch;
    std::string const path = scratch.Write("file", "old");
    scratch.Write("theirs", "their text");
    if (linked) fs::create_hard_link(path, scratch.Path("other"));
    g_onReadlink = [&] { fs::rename(scratch.Path("theirs"), path); };
    EXPECT_TRUE(SafeSave(path, "ours"));
    EXPECT_EQ("ours", scratch.Read("file"));
    EXPECT_EQ(linked ? "old" : "<missing>", scratch.Read("other"));
    EXPECT_FALSE(scratch.Exists("theirs"));
  }
}

// ---- Keeping a copy ----

TEST(KeepAside, TheFirstCopyStays) {
  Umask const mask(0);
  Scratch scratch;
  std::string const path = scratch.Write("file", kOld);
  GiveAway(path);
  chmod(path.c_str(), 04664);
  EXPECT_TRUE(KeepAside(path, ".lost"));
  EXPECT_EQ(kOld, scratch.Read("file.lost"));
  EXPECT_EQ(0664U, Mode(path + ".lost"));
  EXPECT_EQ(Status(path).st_uid, Status(path + ".lost").st_uid);
  EXPECT_EQ(Status(path).st_gid, Status(path + ".lost").st_gid);
  scratch.Write("file", kNew);
  EXPECT_TRUE(KeepAside(path, ".lost"));
  EXPECT_EQ(kOld, scratch.Read("file.lost"));
  fs::create_symlink("nowhere", scratch.Path("file.link"));
  EXPECT_TRUE(KeepAside(path, ".link"));
  EXPECT_EQ((Names{"file", "file.link", "file.lost"}), scratch.List());
}

TEST(KeepAside, WholeOrNotAtAll) {
  struct Row {
    std::vector<Fault> faults;
    bool kept;
  };
  for (Row const& row : std::vector<Row>{{{{"write", ENOSPC}}, false},
                                         {{{"fsync", EIO}}, false},
                                         {{{"fchmod", EPERM}}, false},
                                         {{{"renameat2", EACCES}}, false},
                                         {{{"renameat2", EINVAL}}, true},
                                         {{{"renameat2", EINVAL}, {"link", EPERM}}, true},
                                         {{{"renameat2", EINVAL}, {"link", EPERM}, {"rename", EIO}}, false}}) {
    Scratch scratch;
    std::string const path = scratch.Write("file", kOld);
    int const descriptors = test::OpenDescriptors();
    g_faults = row.faults;
    EXPECT_EQ(row.kept, KeepAside(path, ".lost")) << row.faults.back().call;
    EXPECT_TRUE(g_faults.empty()) << row.faults.back().call;
    g_faults.clear();
    EXPECT_TRUE(scratch.Read("file.lost") == (row.kept ? kOld : "<missing>")) << row.faults.back().call;
    EXPECT_EQ(row.kept ? (Names{"file", "file.lost"}) : Names{"file"}, scratch.List()) << row.faults.back().call;
    EXPECT_EQ(descriptors, test::OpenDescriptors());
  }
  // Somebody else kept one in the last moment.
  Scratch scratch;
  for (std::vector<Fault> const& faults :
       {std::vector<Fault>{{"renameat2", EEXIST}}, {{"renameat2", EINVAL}, {"link", EEXIST}}}) {
    g_faults = faults;
    EXPECT_TRUE(KeepAside(scratch.Write("file", kOld), ".lost"));
    EXPECT_EQ(Names{"file"}, scratch.List());
  }
}

TEST(KeepAside, NeverOpensTheCopyToMorePeople) {
  Scratch scratch;
  for (mode_t mode : {0664, 0604, 0644}) chmod(scratch.Write(std::to_string(mode), kOld).c_str(), mode);
  chmod(scratch.Path().c_str(), 0777);
  EXPECT_TRUE(test::AsOrdinaryUser([&] {
    for (mode_t mode : {0664, 0604, 0644})
      if (!KeepAside(scratch.Path(std::to_string(mode)), ".lost")) return false;
    return true;
  }));
  bool const foreign = geteuid() == 0;  // otherwise the files are the ordinary user's own
  EXPECT_EQ(foreign ? 0604U : 0664U, Mode(scratch.Path(std::to_string(0664)) + ".lost"));
  EXPECT_EQ(foreign ? 0600U : 0604U, Mode(scratch.Path(std::to_string(0604)) + ".lost"));
  EXPECT_EQ(foreign ? 0604U : 0644U, Mode(scratch.Path(std::to_string(0644)) + ".lost"));
}

TEST(KeepAside, RefusesWhatHasNothingToKeep) {
  Scratch scratch;
  mkfifo(scratch.Path("fifo").c_str(), 0600);
  fs::create_directory(scratch.Path("folder"));
  scratch.Write(std::string(252, 'x'), "its copy would have too long a name");
  Names const names = scratch.List();
  for (std::string const& name :
       {std::string("missing"), std::string("fifo"), std::string("folder"), std::string(252, 'x')})
    EXPECT_FALSE(KeepAside(scratch.Path(name), ".lost")) << name;
  EXPECT_EQ(names, scratch.List());
}

}  // namespace
