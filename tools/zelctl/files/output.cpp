#include "files/output.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>

#include "files/input.h"

namespace {

// The unfinished file, for the handler of signals, which takes no argument.
char const* volatile g_unfinished = nullptr;

extern "C" void RemoveUnfinished(int number) {
  // The signal has its default effect again, when this returns.
  if (g_unfinished != nullptr) unlink(g_unfinished);
  raise(number);
}

// Whoever ignores a signal (nohup) goes on ignoring it.
void RemoveWhenStopped() {
  for (int const number : {SIGHUP, SIGINT, SIGTERM}) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;
    action.sa_handler = RemoveUnfinished;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(number, &action, nullptr);
  }
}

}  // namespace

Output::Output(std::string const& path, struct stat const& source) : path_(path), file_(nullptr, fclose) {
  struct stat old = {};
  bool const exists = stat(path.c_str(), &old) == 0;
  if (exists && old.st_dev == source.st_dev && old.st_ino == source.st_ino)
    throw Failed("IN and OUT are the same file");
  // It could be replaced without its owner's leave to write, which is not meant.
  if (exists && access(path.c_str(), W_OK) != 0) throw FileFailed(path_);
  int const fd = exists && !S_ISREG(old.st_mode) ? open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY)
                                                 : MakeBeside(exists ? &old : nullptr);
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
  if (!unfinished_.empty() && fsync(fileno(file_.get())) != 0) throw FileFailed(path_);
  if (fclose(file_.release()) != 0) throw FileFailed(path_);
  if (unfinished_.empty()) return;
  if (rename(unfinished_.c_str(), target_.c_str()) != 0) throw FileFailed(path_);
  g_unfinished = nullptr;
  unfinished_.clear();
}

// With the owner and mode of the file that it will replace.
int Output::MakeBeside(struct stat const* old) {
  // A link stays one.
  target_ = old != nullptr ? std::filesystem::canonical(path_).string() : path_;
  unfinished_ = target_ + ".XXXXXX";
  int const fd = mkostemp(unfinished_.data(), O_CLOEXEC);
  if (fd < 0) {
    unfinished_.clear();
    return fd;
  }
  g_unfinished = unfinished_.c_str();
  RemoveWhenStopped();
  mode_t const mask = umask(0);
  umask(mask);
  mode_t mode = old != nullptr ? old->st_mode & 0777 : 0666 & ~mask;
  // What the old group may do is not for another one.
  if (old != nullptr && fchown(fd, old->st_uid, old->st_gid) != 0) mode &= ~static_cast<mode_t>(S_IRWXG);
  fchmod(fd, mode);
  return fd;
}
