#include "files/output.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "files/heldsignals.h"
#include "files/input.h"

namespace {

// The unfinished file, for the signal handler, which has no argument.
char const* volatile g_unfinished = nullptr;

extern "C" void RemoveUnfinished(int number) {
  if (g_unfinished != nullptr) unlink(g_unfinished);
  // Not SA_RESETHAND: a second signal could then end the process before this function runs.
  signal(number, SIG_DFL);
  raise(number);
}

// An ignored signal (nohup) stays ignored.
void RemoveWhenStopped() {
  for (int const number : {SIGHUP, SIGINT, SIGTERM}) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;
    action.sa_handler = RemoveUnfinished;
    sigaction(number, &action, nullptr);
  }
}

// A missing ability of the file system is not an error.
bool CannotSync(int reason) { return reason == EINVAL || reason == ENOTSUP || reason == EROFS || reason == EACCES; }

// Without this, a power failure could bring back the old name.
bool SyncFolderOf(std::string const& path) {
  std::string const folder = path.substr(0, path.rfind('/') + 1);
  int const fd = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return CannotSync(errno);
  bool const synced = fsync(fd) == 0 || CannotSync(errno);
  int const reason = errno;
  close(fd);
  errno = reason;
  return synced;
}

// Does not wait for a reader of a pipe, which may never come.
int OpenDevice(std::string const& path, bool isPipe) {
  int const fd = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
  if (fd >= 0) fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  if (fd < 0 && errno == ENXIO && isPipe) throw Failed(path + ": no program reads this pipe");
  return fd;
}

Failed AlreadyExists(std::string const& path) {
  return Failed(path + ": already exists; use --overwrite to replace it");
}

bool HasProductName(std::filesystem::path const& path, std::string const& own) {
  if (path.filename() == ".zelvane") return true;
  for (std::string const ending : {".cfg", ".conf", ".rgt", ".dat"})
    if (ending != own && path.extension() == ending) return true;
  return false;
}

}  // namespace

void RequireNew(std::string const& path, Replacing const& replacing) {
  struct stat link = {};
  struct stat file = {};
  if (stat(path.c_str(), &file) == 0 && S_ISDIR(file.st_mode)) throw FileFailed(path, EISDIR);
  if (S_ISBLK(file.st_mode)) throw Failed(path + ": is a block device");
  if (lstat(path.c_str(), &link) != 0) return;
  if (stat(path.c_str(), &file) != 0)
    throw errno == ENOENT ? Failed(path + ": is a link to a missing file") : FileFailed(path);
  if (!S_ISREG(file.st_mode)) return;
  std::error_code none;
  std::filesystem::path const target = std::filesystem::canonical(path, none);  // a link can have any name
  if (HasProductName(path, replacing.own) || HasProductName(target, replacing.own))
    throw Failed(path + ": has the name of a settings file, log or schedule, and is not replaced; use another name");
  if (!replacing.any) throw AlreadyExists(path);
}

void RequireWritable(std::string const& path, struct stat const& source, Replacing const& replacing) {
  struct stat old = {};
  bool const exists = stat(path.c_str(), &old) == 0;
  if (exists && old.st_dev == source.st_dev && old.st_ino == source.st_ino)
    throw WrongUsage("IN and OUT must be different files");
  RequireNew(path, replacing);
  // A rename could replace a file that the user may not write. That is not intended.
  std::string const folder = path.substr(0, path.rfind('/') + 1);
  if (access(exists ? path.c_str() : folder.empty() ? "." : folder.c_str(), W_OK) != 0) throw FileFailed(path);
}

Output::Output(std::string const& path, struct stat const& source, Replacing const& replacing)
    : path_(path), overwrite_(replacing.any), file_(nullptr, fclose) {
  RequireWritable(path, source, replacing);
  struct stat old = {};
  bool const exists = stat(path.c_str(), &old) == 0;
  int const fd = exists && !S_ISREG(old.st_mode) ? OpenDevice(path, S_ISFIFO(old.st_mode))
                                                 : MakeBeside(exists ? &old : nullptr, source);
  if (fd >= 0) file_.reset(fdopen(fd, "wb"));
  if (file_ == nullptr) throw FileFailed(path_);
}

Output::~Output() {
  g_unfinished = nullptr;
  if (!unfinished_.empty()) unlink(unfinished_.c_str());
}

void Output::Write(void const* bytes, std::size_t size) {
  if (fwrite(bytes, 1, size, file_.get()) != size) throw FileFailed(path_);
}

void Output::Keep() {
  if (fflush(file_.get()) != 0) throw FileFailed(path_);
  if (!unfinished_.empty() && fsync(fileno(file_.get())) != 0 && !CannotSync(errno)) throw FileFailed(path_);
  if (fclose(file_.release()) != 0) throw FileFailed(path_);
  if (unfinished_.empty()) return;
  TakeName();
  g_unfinished = nullptr;
  unfinished_.clear();
  if (!SyncFolderOf(target_)) throw FileFailed(path_);
}

// Not every file system supports every call.
void Output::TakeName() {
  char const* const from = unfinished_.c_str();
  char const* const to = target_.c_str();
  if (!overwrite_) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return;
    if (errno != EEXIST && link(from, to) == 0) return static_cast<void>(unlink(from));
    if (errno == EEXIST) throw AlreadyExists(path_);
  }
  if (rename(from, to) != 0) throw FileFailed(path_);
}

// Creates the new file with the owner and mode of the one that it replaces, otherwise readable by no more users than
// the source, which can have passwords.
int Output::MakeBeside(struct stat const* old, struct stat const& source) {
  // A link stays a link.
  target_ = old != nullptr ? std::filesystem::canonical(path_).string() : path_;
  unfinished_ = target_ + ".XXXXXX";
  RemoveWhenStopped();
  HeldSignals const held;  // until g_unfinished has the name
  int const fd = mkostemp(unfinished_.data(), O_CLOEXEC);
  if (fd < 0) {
    unfinished_.clear();
    return fd;
  }
  g_unfinished = unfinished_.c_str();
  mode_t const mask = umask(0);
  umask(mask);
  mode_t const fresh = S_ISREG(source.st_mode) ? (source.st_mode & 0666) | S_IWUSR : 0666;
  mode_t mode = old != nullptr ? old->st_mode & 0777 : fresh & ~mask;
  // Another group must not get the old group's permissions.
  if (old != nullptr && fchown(fd, old->st_uid, old->st_gid) != 0) mode &= ~static_cast<mode_t>(S_IRWXG);
  fchmod(fd, mode);
  return fd;
}
