#include "zelvane/core/safesave_internal.h"

#include <dlfcn.h>
#include <sys/random.h>
#include <sys/xattr.h>

#include "support/test.h"

// ---- System calls that fail on request ----

namespace {

using Faults = std::map<std::string, int>;  // the call and its error; each fails once
Faults g_faults;
mode_t g_firstMode = 0;     // the mode of the last file whose mode was set, before the change
bool g_sameNumber = false;  // the next random number is 0

bool Fails(char const* call) {
  auto const fault = g_faults.find(call);
  if (fault == g_faults.end()) return false;
  errno = fault->second;
  g_faults.erase(fault);
  return true;
}

template <class Function>
Function* Real(char const* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

#define EXPORTED __attribute__((visibility("default")))
extern "C" {

EXPORTED ssize_t write(int fd, void const* bytes, size_t size) {
  auto* const real = Real<decltype(write)>("write");
  if (g_faults.empty()) return real(fd, bytes, size);
  ssize_t const half = real(fd, bytes, size / 2);  // the failure comes in the middle
  if (half < 0 || Fails("write")) return -1;
  return half + real(fd, static_cast<char const*>(bytes) + half, size - static_cast<size_t>(half));
}

EXPORTED int close(int fd) {
  int const result = Real<decltype(close)>("close")(fd);
  return Fails("close") ? -1 : result;
}

EXPORTED ssize_t getrandom(void* to, size_t size, unsigned flags) {
  if (!std::exchange(g_sameNumber, false)) return Real<decltype(getrandom)>("getrandom")(to, size, flags);
  std::memset(to, 0, size);
  return static_cast<ssize_t>(size);
}
EXPORTED int fchmod(int fd, mode_t to) __THROW {
  struct stat status = {};
  fstat(fd, &status);
  g_firstMode = status.st_mode & 0777;
  return Fails("fchmod") ? -1 : Real<decltype(fchmod)>("fchmod")(fd, to);
}
#define FAILING(name, call, types, arguments, specifier) \
  EXPORTED int call types specifier { return Fails(name) ? -1 : Real<decltype(call)>(#call) arguments; }
FAILING("fsync", fsync, (int fd), (fd), noexcept(false))
FAILING("fallocate", fallocate64, (int fd, int mode, off64_t from, off64_t size), (fd, mode, from, size),
        noexcept(false))
FAILING("rename", rename, (char const* from, char const* to), (from, to), __THROW)
FAILING("renameat2", renameat2, (int in, char const* from, int into, char const* to, unsigned flags),
        (in, from, into, to, flags), __THROW)
FAILING("link", link, (char const* from, char const* to), (from, to), __THROW)
}

namespace {

using test::Scratch;
using namespace zelvane::internal;

std::string const kOld(100000, 'o');
std::string const kNew(150000, 'n');

// "100000 o" for the large texts.
std::string Brief(std::string const& text) {
  bool const isOneLetter = !text.empty() && text.find_first_not_of(text[0]) == std::string::npos;
  return isOneLetter ? std::to_string(text.size()) + " " + text[0] : text;
}

struct stat Status(std::string const& path) {
  struct stat status = {};
  stat(path.c_str(), &status);
  return status;
}

// ---- Reading ----

TEST(ReadWhole, TellsMissingFromUnreadable) {
  Scratch scratch;
  std::string out;
  std::string const bytes = kNew + std::string(1, '\0');
  EXPECT_EQ(ReadWhole(scratch.Write("file", bytes), out), ReadResult::kOk);
  EXPECT_EQ(out, bytes);
  EXPECT_EQ(ReadWhole(scratch.Path("missing"), out), ReadResult::kNotOpened);
  for (std::string const& path : {scratch.Path(), std::string("/dev/zero")})
    EXPECT_EQ(ReadWhole(path, out), ReadResult::kReadFailed) << path;
}

// ---- Saving ----

TEST(SafeSave, KeepsModeOwnerAndHardLinks) {
  for (auto const& [mode, linked] : {std::pair(0600, false), {0640, true}, {0666, false}, {0755, true}}) {
    Scratch scratch;
    std::string const path = scratch.Write("file", kOld);
    if (linked) fs::create_hard_link(path, scratch.Path("other"));
    if (geteuid() == 0) EXPECT_EACH((chown(path.c_str(), 1234, 4321)), 0);
    chmod(path.c_str(), static_cast<mode_t>(mode));
    struct stat const old = Status(path);
    EXPECT_EACH((SafeSave(path, "new"), scratch.Read(linked ? "other" : "file")), true, "new") << mode;
    struct stat const now = Status(path);
    EXPECT_EQ(std::tuple(now.st_mode, now.st_uid, now.st_gid), std::tuple(old.st_mode, old.st_uid, old.st_gid)) << mode;
    if (!linked) EXPECT_EACH((g_firstMode), 0600) << mode << ": open to others for a moment";
    EXPECT_EQ(old.st_ino == now.st_ino, linked) << mode;  // never emptied: another file gets the name
  }
}

// A file with its own access list, or in a directory with a default one, is written in place.
TEST(SafeSave, AccessListsStayAsTheyAre) {
  struct {
    std::uint16_t tag, rights;
    std::uint32_t id;
  } const entries[] = {{1, 7, ~0U}, {2, 6, 1234}, {4, 5, ~0U}, {16, 7, ~0U}, {32, 5, ~0U}};
  std::string const list = std::string("\2\0\0\0", 4).append(reinterpret_cast<char const*>(entries), sizeof entries);
  for (char const* const kind : {"system.posix_acl_access", "system.posix_acl_default"}) {
    Scratch scratch;
    std::string const path = scratch.Write("file", kOld), holder = kind[17] == 'a' ? path : scratch.Path();
    if (setxattr(holder.c_str(), kind, list.data(), list.size(), 0) != 0) GTEST_SKIP() << "no access lists here";
    ino_t const old = Status(path).st_ino;
    EXPECT_EACH((SafeSave(path, "new"), scratch.Read("file"), Status(path).st_ino), true, "new", old) << kind;
  }
}

TEST(SafeSave, FollowsLinksToTheirEnd) {
  Scratch scratch;
  scratch.Write("real/file", "old");
  fs::create_symlink("real/file", scratch.Path("chain"));
  fs::create_symlink("real/missing", scratch.Path("dangling"));
  ino_t const old = Status(scratch.Path("chain")).st_ino;
  EXPECT_ALL(SafeSave(scratch.Path("chain"), "new"), SafeSave(scratch.Path("dangling"), "made"));
  EXPECT_NE(Status(scratch.Path("real/file")).st_ino, old) << "never emptied: another file takes the name";
  EXPECT_EACH((scratch.Read("real/file"), scratch.Read("real/missing")), "new", "made");
  EXPECT_ALL(fs::is_symlink(scratch.Path("chain")), fs::is_symlink(scratch.Path("dangling")));
}

// Left by a killed program, or created by somebody who knows the name.
TEST(SafeSave, WhatHasTheTemporarysNameIsLeftAlone) {
  Scratch scratch;
  fs::create_symlink(scratch.Write("victim", "mine"), scratch.Path(".zelvaaaaaaaa"));
  for (std::string const name : {"file", "file", "new"}) {
    g_sameNumber = true;
    EXPECT_TRUE(SafeSave(scratch.Path(name), name)) << name;
    EXPECT_FALSE(std::exchange(g_sameNumber, false)) << "the name was tried";
  }
  EXPECT_EACH((scratch.Read("file"), scratch.Read("new"), scratch.Read("victim")), "file", "new", "mine");
  EXPECT_EQ(scratch.List(), (test::Names{".zelvaaaaaaaa", "file", "new", "victim"}));
}

TEST(SafeSave, FailingCallsLeaveOldOrNewAndNothingElse) {
  for (auto const& [name, failing, saved] : std::vector<std::tuple<std::string, Faults, bool>>{
           {"file", {{"write", ENOSPC}}, false},
           {"file", {{"fsync", EIO}}, false},
           {"file", {{"fsync", EINVAL}}, true},  // an unsupported operation
           {"file", {{"close", EDQUOT}}, false},
           {"file", {{"fchmod", EPERM}}, true},  // written in place, also in the next rows
           {"file", {{"rename", EBUSY}}, true},
           {"file", {{"rename", EBUSY}, {"fallocate", ENOSPC}}, false},
           {"linked", {{"fallocate", ENOSPC}}, false},
           {"linked", {{"write", EIO}}, false},
           {"linked", {{"fsync", EIO}}, false},
           {"linked", {{"fallocate", EOPNOTSUPP}}, true},
           {"linked", {{"fallocate", EINTR}}, true},
           {"new", {{"write", ENOSPC}}, false},
           {"new", {{"rename", EACCES}}, false}}) {
    SCOPED_TRACE(name + testing::PrintToString(failing));
    Scratch scratch;
    scratch.Write("file", kOld);
    fs::create_hard_link(scratch.Write("linked", kOld), scratch.Path("other"));
    test::Names const names = scratch.List();
    std::string const before = scratch.Read(name);
    g_faults = failing;
    EXPECT_EQ(SafeSave(scratch.Path(name), kNew), saved);
    EXPECT_TRUE(std::exchange(g_faults, {}).empty());
    EXPECT_EQ(Brief(scratch.Read(name)), Brief(saved ? kNew : before));
    EXPECT_EQ(scratch.List(), names);
  }
}

TEST(SafeSave, IfMissingNeverReplaces) {
  Scratch scratch;
  scratch.Write("file", kOld);
  fs::create_symlink("missing", scratch.Path("dangling"));
  fs::create_symlink("file", scratch.Path("linked"));
  for (auto const& [name, failing, saved] :
       std::vector<std::tuple<std::string, Faults, bool>>{{"file", {}, false},
                                                          {"linked", {}, false},
                                                          {"file", {{"renameat2", EINVAL}}, false},
                                                          {"file", {{"renameat2", EINVAL}, {"link", EPERM}}, false},
                                                          {"dangling", {{"write", ENOSPC}}, false},
                                                          {"dangling", {{"fsync", EIO}}, false},
                                                          {"dangling", {}, true},
                                                          {"no/folder", {}, false}}) {
    g_faults = failing;
    EXPECT_EQ(SaveIfMissing(scratch.Path(name), kNew), saved) << name << testing::PrintToString(failing);
    g_faults.clear();
    EXPECT_EQ(Brief(scratch.Read("file")), Brief(kOld)) << name;
    EXPECT_EQ(Brief(scratch.Read("missing")), saved || name == "no/folder" ? Brief(kNew) : "<missing>") << name;
  }
  EXPECT_EQ(scratch.List(), (test::Names{"dangling", "file", "linked", "missing"}));
}

// ---- Keeping a copy ----

TEST(BackUp, TheFirstCopyStaysAndOpensToNobodyElse) {
  Scratch scratch;
  std::string const path = scratch.Write("file", kOld);
  chmod(path.c_str(), 04664);
  for (char const* call : {"write", "fsync", "fchmod"}) {
    g_faults = {{call, EIO}};
    EXPECT_FALSE(BackUp(path, ".lost")) << call;
    EXPECT_EQ(scratch.List(), test::Names{"file"}) << call;
  }
  EXPECT_ALL(BackUp(path, ".lost"), BackUp(path, ".lost")) << "a copy that is there will do";
  EXPECT_EQ(scratch.List(), (test::Names{"file", "file.lost"}));
  EXPECT_EQ(Status(path + ".lost").st_mode & 07777, 0664U);
  EXPECT_NONE(BackUp(scratch.Path("missing"), ".lost"), BackUp(scratch.Path(), ".lost"));
}

// Only another file with the same bytes counts as the backup.
TEST(BackUp, NoCopyStandsForAnother) {
  Scratch scratch;
  std::string const path = scratch.Write("file", "now");
  fs::create_symlink(path, path + ".lost");
  fs::create_hard_link(path, path + ".lost.1");
  fs::create_directory(path + ".lost.2");
  for (int i = 3; i < 9; i++) scratch.Write("file.lost." + std::to_string(i), "old");
  EXPECT_TRUE(BackUp(path, ".lost"));
  EXPECT_EQ(scratch.Read("file.lost.9"), "now");
  EXPECT_TRUE(BackUp(path, ".lost")) << "found again";
  scratch.Write("file", "new");
  EXPECT_EACH((BackUp(path, ".lost"), errno), false, EEXIST) << "all names are taken";
  EXPECT_EQ(scratch.Read("file.lost.9"), "now");
}

}  // namespace
