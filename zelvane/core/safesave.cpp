#include <sys/random.h>
#include <sys/xattr.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <initializer_list>
#include <new>

#include "zelvane/core/fd_internal.h"
#include "zelvane/core/safesave_internal.h"
#include "zelvane/core/sync_internal.h"

namespace zelvane::internal {
namespace {

constexpr size_t kReadBlock = 4096;
constexpr size_t kDeviceLimit = 16 * 1024 * 1024;
constexpr int kTries = 100;
constexpr int kCopies = 10;  // NAME.bad, NAME.bad.1 ... NAME.bad.9

bool IsOneOf(int reason, std::initializer_list<int> reasons) {
  return std::find(reasons.begin(), reasons.end(), reason) != reasons.end();
}

bool IsSame(struct stat const& one, struct stat const& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool HasAccessList(int fd) { return fgetxattr(fd, "system.posix_acl_access", nullptr, 0) > 0; }

// ---- A temporary file beside the one that it replaces ----

// The name only has to avoid the leftovers of killed programs and the files of concurrent ones: O_EXCL decides.
uint64_t RandomNumber() {
  uint64_t number = 0;
  if (getrandom(&number, sizeof number, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof number)) return number;
  // Early at boot the kernel has no random numbers yet.
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_nsec) * 2654435761U + static_cast<uint64_t>(getpid());
}

std::string RandomName() {
  static char const kLetters[] = "abcdefghijklmnopqrstuvwxyz012345";
  std::string name = ".zelv";
  uint64_t number = RandomNumber();
  for (int i = 0; i < 8; i++, number >>= 5) name += kLetters[number & 31];
  return name;
}

// Removed at the end unless it was renamed.
class Temporary {
 public:
  Temporary(std::string const& folder, mode_t mode) {
    for (int tries = 0; tries < kTries && !file_; tries++) {
      path_ = folder + RandomName();
      file_ = Open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
      if (!file_ && errno != EEXIST) break;
    }
    exists_ = static_cast<bool>(file_);
  }
  ~Temporary() {
    if (exists_) unlink(path_.c_str());
  }
  Temporary(Temporary const&) = delete;
  Temporary& operator=(Temporary const&) = delete;

  explicit operator bool() const { return static_cast<bool>(file_); }
  int Get() const { return file_.Get(); }

  // Writes and syncs `text` and closes the file.
  bool Fill(std::string_view text) {
    return WriteAll(file_.Get(), text.data(), text.size()) && SyncFile(file_.Get()) && file_.Close();
  }

  // Renames the file, replacing any file with that name.
  bool Replace(std::string const& name) {
    if (rename(path_.c_str(), name.c_str()) != 0) return false;
    exists_ = false;
    return true;
  }

  // Renames the file if the name is free. File systems differ in what they offer. Where both ways are missing, the last
  // one can overwrite a file that appears in that instant.
  bool TakeFreeName(std::string const& name) {
    if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0) {
      exists_ = false;
      return true;
    }
    if (!IsOneOf(errno, {EINVAL, ENOSYS})) return false;
    if (link(path_.c_str(), name.c_str()) == 0) return true;
    struct stat there;
    if (errno == EEXIST || lstat(name.c_str(), &there) == 0) {
      errno = EEXIST;
      return false;
    }
    return Replace(name);
  }

 private:
  std::string path_;
  Descriptor file_;
  bool exists_ = false;
};

// ---- Saving ----

enum class Outcome { kSaved, kFailed, kUseInPlace };

// Gives the new file the old one's owner, group and mode. Returns false if any would differ. At first only its owner
// can open the new file, so nobody can open it before it has its mode.
bool CopyOwnerAndMode(int fd, struct stat const& old) {
  struct stat now;
  if (fstat(fd, &now) != 0 || HasAccessList(fd)) return false;
  bool const owned = now.st_uid == old.st_uid && now.st_gid == old.st_gid;
  if (!owned && fchown(fd, old.st_uid, old.st_gid) != 0) return false;
  if (fchmod(fd, old.st_mode & 07777) != 0 || fstat(fd, &now) != 0) return false;
  return now.st_uid == old.st_uid && now.st_gid == old.st_gid && now.st_mode == old.st_mode;
}

Outcome SaveByRename(std::string const& path, int oldFile, struct stat const& old, std::string_view text) {
  std::string const target = FollowLinks(path);
  struct stat there;
  bool const found = lstat(target.c_str(), &there) == 0 && IsSame(there, old);
  if (!found || !S_ISREG(old.st_mode) || old.st_nlink != 1 || HasAccessList(oldFile)) return Outcome::kUseInPlace;

  Folder const folder(target);
  if (!folder) return Outcome::kFailed;
  Temporary made(FolderOf(target), 0600);
  if (!made) return IsOneOf(errno, {EACCES, EPERM, EROFS, ENAMETOOLONG}) ? Outcome::kUseInPlace : Outcome::kFailed;
  if (!CopyOwnerAndMode(made.Get(), old)) return Outcome::kUseInPlace;
  if (!made.Fill(text)) return Outcome::kFailed;
  if (!made.Replace(target)) return Outcome::kUseInPlace;
  return folder.Sync() ? Outcome::kSaved : Outcome::kFailed;
}

// Reserves the space first: a full disk then fails before any byte or the length changes. File systems that cannot
// reserve continue.
bool Reserve(int fd, off_t size) {
  if (size == 0) return true;
  int failed = 0;
  do failed = fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, size);
  while (failed != 0 && errno == EINTR);
  return failed == 0 || IsOneOf(errno, {EINVAL, EOPNOTSUPP, ENOSYS});
}

bool Overwrite(int fd, std::string_view text) {
  return lseek(fd, 0, SEEK_SET) == 0 && WriteAll(fd, text.data(), text.size()) &&
         ftruncate(fd, static_cast<off_t>(text.size())) == 0;
}

bool SaveInPlace(std::string const& path, Descriptor& file, struct stat const& old, std::string_view text) {
  if (!S_ISREG(old.st_mode)) return WriteAll(file.Get(), text.data(), text.size()) && file.Close();
  std::string before;
  bool const known = ReadWhole(path, before) == ReadResult::kOk;
  if (!known && errno == ENOMEM) throw std::bad_alloc();
  if (!Reserve(file.Get(), static_cast<off_t>(text.size()))) {
    (void)!ftruncate(file.Get(), old.st_size);  // frees the space reserved after the end
    return false;
  }
  // The text is on disk by then: even if close() fails, it is not lost.
  if (Overwrite(file.Get(), text) && SyncFile(file.Get())) return true;
  if (known) Overwrite(file.Get(), before);
  return false;
}

// What to do with a file that another program has created meanwhile.
enum class Meanwhile { kReplace, kFail };

bool SaveNew(std::string const& path, std::string_view text, Meanwhile meanwhile) {
  std::string const target = FollowLinks(path);
  Folder const folder(target);
  if (!folder) return false;
  Temporary made(FolderOf(target), 0666);
  if (!made || !made.Fill(text)) return false;
  bool const named = meanwhile == Meanwhile::kReplace ? made.Replace(target) : made.TakeFreeName(target);
  return named && folder.Sync();
}

// ---- Backing up ----

// Sets owner, group and mode as far as this user may, but never grants access to more people than the old file. If the
// group could not be set, its members now count as others.
bool CopyOwnerAndModeOrLess(int fd, struct stat const& old, bool listed) {
  bool const grouped = fchown(fd, old.st_uid, old.st_gid) == 0 || fchown(fd, static_cast<uid_t>(-1), old.st_gid) == 0;
  mode_t const mode = old.st_mode & 0777;
  mode_t const less = (mode & S_IRWXU) | (mode & mode >> 3 & S_IRWXO);
  return fchmod(fd, grouped && !listed && !HasAccessList(fd) ? mode : less) == 0;
}

// ---- Reading ----

bool ReadToEnd(int fd, std::string& out) {
  struct stat status;
  if (fstat(fd, &status) != 0) return false;
  bool const regular = S_ISREG(status.st_mode);
  // On a 32-bit machine no text can be that long; resize() would throw another kind of exception.
  if (regular && static_cast<uint64_t>(status.st_size) >= out.max_size()) throw std::bad_alloc();
  // One byte more than the file has, so that its end shows without growing. Files of the kernel report a size of 0.
  out.resize(regular && status.st_size > 0 ? static_cast<size_t>(status.st_size) + 1 : kReadBlock);
  for (size_t filled = 0;;) {
    if (filled == out.size()) out.resize(filled * 2);
    ssize_t const got = ReadSome(fd, out.data() + filled, out.size() - filled);
    if (got <= 0) {
      out.resize(filled);
      return got == 0;
    }
    filled += static_cast<size_t>(got);
    if (!regular && filled > kDeviceLimit) {
      out.resize(filled);
      errno = EFBIG;
      return false;
    }
  }
}

// ---- Existing files with a copy's name ----

enum class Place { kFree, kSame, kOther };

// Only another regular file with exactly these bytes is the same: a link to the file or a second name of it would
// change with it.
Place PlaceOf(std::string const& name, struct stat const& source, std::string const& bytes) {
  struct stat status;
  if (lstat(name.c_str(), &status) != 0) return Place::kFree;
  bool const mayBe = S_ISREG(status.st_mode) && !IsSame(status, source) &&
                     static_cast<uint64_t>(status.st_size) == static_cast<uint64_t>(bytes.size());
  if (!mayBe) return Place::kOther;
  Descriptor const file = Open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
  std::string there;
  return file && ReadToEnd(file.Get(), there) && there == bytes ? Place::kSame : Place::kOther;
}

}  // namespace

// Running out of memory is one more reason why a file cannot be read.
ReadResult ReadWhole(std::string const& path, std::string& out) {
  out.clear();
  Descriptor const file = Open(path.c_str(), O_RDONLY | O_NONBLOCK);
  if (!file) return ReadResult::kNotOpened;
  try {
    return ReadToEnd(file.Get(), out) ? ReadResult::kOk : ReadResult::kReadFailed;
  } catch (std::exception const&) {
    errno = ENOMEM;
    return ReadResult::kReadFailed;
  }
}

bool SafeSave(std::string const& path, std::string_view text) {
  for (int tries = 0; tries < kTries; tries++) {
    Descriptor file = Open(path.c_str(), O_WRONLY | O_NONBLOCK);
    if (!file) return errno == ENOENT && SaveNew(path, text, Meanwhile::kReplace);
    struct stat old;
    if (fstat(file.Get(), &old) != 0) return false;
    Outcome const beside = SaveByRename(path, file.Get(), old, text);
    if (beside != Outcome::kUseInPlace) return beside == Outcome::kSaved;
    // Another program may have renamed its own file over this one meanwhile: the open file is then no longer the one at
    // `path`.
    struct stat now;
    if (stat(path.c_str(), &now) == 0 && IsSame(now, old)) return SaveInPlace(path, file, old, text);
  }
  return false;
}

bool BackUp(std::string const& path, char const* suffix) {
  Descriptor const file = Open(path.c_str(), O_RDONLY | O_NONBLOCK);
  struct stat status;
  if (!file || fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) return false;
  std::string bytes;
  if (!ReadToEnd(file.Get(), bytes)) return false;
  Folder const folder(path);
  if (!folder) return false;
  for (int copy = 0; copy < kCopies; copy++) {
    std::string const name = path + suffix + (copy == 0 ? "" : "." + std::to_string(copy));
    Place place = PlaceOf(name, status, bytes);
    if (place == Place::kFree) {
      Temporary made(FolderOf(name), 0600);
      if (!made || !CopyOwnerAndModeOrLess(made.Get(), status, HasAccessList(file.Get())) || !made.Fill(bytes))
        return false;
      if (made.TakeFreeName(name)) return folder.Sync();
      // Another program may have made the same copy in this instant.
      if (errno != EEXIST) return false;
      place = PlaceOf(name, status, bytes);
    }
    if (place == Place::kSame) {
      // Its creator need not have synced it.
      Descriptor const there = Open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
      return there && SyncFile(there.Get()) && folder.Sync();
    }
  }
  errno = EEXIST;
  return false;
}

bool SaveIfMissing(std::string const& path, std::string_view text) { return SaveNew(path, text, Meanwhile::kFail); }

}  // namespace zelvane::internal
