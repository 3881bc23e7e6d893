#include "zelvane/core/fileutils.h"

#include <sys/time.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <new>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fd_internal.h"
#include "zelvane/core/safesave_internal.h"

using zelvane::internal::Descriptor;
using zelvane::internal::Guard;
using zelvane::internal::Open;
using zelvane::internal::OpenDestination;
using zelvane::internal::ReadBlock;
using zelvane::internal::ReadResult;
using zelvane::internal::ReadWhole;
using zelvane::internal::Uncancelled;
using zelvane::internal::WriteAll;

namespace {

constexpr size_t kCopyBlock = 65536;
constexpr size_t kLinkLength = 4097;

// Returns "" if the link cannot be read.
std::string LinkTarget(char const* link) {
  char target[kLinkLength];
  ssize_t const length = readlink(link, target, sizeof target);
  return length > 0 ? std::string(target, static_cast<size_t>(length)) : std::string();
}

// Returns the first line without its line feed, otherwise unchanged; "" if there is nothing to read.
std::string FirstLine(char const* path) {
  std::string text;
  return ReadWhole(path, text) == ReadResult::kOk ? text.substr(0, text.find('\n')) : "";
}

struct ReleaseFile {
  char const* path;
  char const* prefix;
};

constexpr ReleaseFile kReleaseFiles[] = {
    {"/etc/debian_version", "Debian GNU/Linux "},
    {"/etc/slackware-version", "Slackware Linux "},
    {"/etc/redhat_version", "RedHat Linux "},
    {"/etc/redhat-release", ""},
    {"/etc/mandrake-release", ""},
    {"/etc/conectiva-release", ""},
    {"/etc/gentoo-release", ""},
    {"/etc/SuSE-release", ""},
    {"/etc/fedora-release", ""},
    {"/etc/yellowdog-release", ""},
    {"/etc/sun-release", ""},
    {"/etc/release", ""},
    {"/etc/UnitedLinux-release", ""},
    {"/etc/lsb-release", ""},
};

// Each result is explicitly rounded to single precision: the 32-bit floating-point unit would keep more digits and
// truncate to a different percentage now and then.
unsigned short Percent(unsigned long count, unsigned long size) {
  if (size == 0) return 0;
  float const volatile part = static_cast<float>(count) / static_cast<float>(size);
  float const volatile percent = part * 100.0F;
  return static_cast<std::uint16_t>(static_cast<std::uint64_t>(percent));
}

// `block` has space for kCopyBlock bytes.
bool CopyBlocks(CpFileProgress progress, Descriptor const& in, Descriptor& out, char* block, unsigned long size) {
  unsigned long count = 0;
  bool written = true;
  ssize_t got = 0;
  do {
    Delay(0);
    got = ReadBlock(in.Get(), block, kCopyBlock);
    if (got < 0) return false;
    written = written && WriteAll(out.Get(), block, static_cast<size_t>(got));
    count += static_cast<unsigned long>(got);
    if (progress != nullptr) progress(nullptr, count, size, Percent(count, size), false);
  } while (got == static_cast<ssize_t>(kCopyBlock));
  if (!out.Close() || !written) return false;
  if (progress != nullptr) progress(nullptr, count, size, Percent(count, size), true);
  return true;
}

// A signal handler does not shorten it.
void Sleep(std::uint32_t microseconds) {
  constexpr std::uint32_t kSecond = 1000000;
  timespec left = {};
  left.tv_sec = static_cast<time_t>(microseconds / kSecond);
  left.tv_nsec = static_cast<long>(microseconds % kSecond) * 1000;
  while (clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
  }
}

}  // namespace

// ---- Names ----

std::string ChangeFileExt(char const* path, char const* ext) {
  if (path == nullptr || ext == nullptr) return "";
  std::string result = path;
  if (*ext == '.') ext++;
  result.erase(std::min(result.rfind('.'), result.size()));
  if (*ext != '\0') result.append(".").append(ext);
  return result;
}

std::string ExtractFilePath(char const* path) {
  if (path == nullptr) return "";
  std::string const text = path;
  return text.substr(0, text.rfind('/') + 1);
}

std::string ExtractFileName(char const* path) {
  if (path == nullptr) return "";
  std::string const text = path;
  return text.substr(text.rfind('/') + 1);
}

std::string ExtractFileExt(char const* path) {
  if (path == nullptr) return "";
  std::string const text = path;
  size_t const dot = text.rfind('.');
  return dot == std::string::npos ? "" : text.substr(dot + 1);
}

char GetPathDelimiter() { return '/'; }

std::string IncludePathDelimiter(char const* path) {
  if (path == nullptr) return "";
  std::string result = path;
  if (result.empty() || result.back() != '/') result += '/';
  return result;
}

std::string ExcludePathDelimiter(char const* path) {
  if (path == nullptr) return "";
  std::string result = path;
  if (!result.empty() && result.back() == '/') result.pop_back();
  return result;
}

// ---- Locations ----

std::string GetExeName(bool) {
  Uncancelled const meanwhile;
  std::string running = LinkTarget("/proc/self/exe");
  if (FilePermToRead(running)) return running;
  // NULs separate the arguments: c_str() ends the first one. Without one there is no name to look for.
  std::string const started = ExtractFileName(FirstLine("/proc/self/cmdline").c_str());
  std::string const here = IncludePathDelimiter(LinkTarget("/proc/self/cwd")) + started;
  return !started.empty() && FilePermToRead(here) ? here : "";
}

std::string GetUserPath(UserPathKind, bool) {
  char const* const home = getenv("HOME");
  std::string const path = home == nullptr ? "~" : home;
  return path == "~" ? path : IncludePathDelimiter(path);
}

std::string GetTmpPath(bool) {
  Uncancelled const meanwhile;
  std::string path = "/tmp/";
  for (char const* name : {"TMP", "TEMP", "TMPDIR"}) {
    if (char const* const value = getenv(name)) {
      path = value;
      break;
    }
  }
  if (!DirExists(path)) path = ExtractFilePath(GetExeName(false));
  return path.empty() ? path : IncludePathDelimiter(path);
}

std::string GetTmpFileName(bool) {
  return Guard(std::string(), [] {
    std::string const folder = GetTmpPath(false);
    if (folder.empty()) return std::string();
    std::string pattern = folder + "tmpXXXXXX";
    std::string created = pattern;
    // When it fails, mkostemp leaves its last attempt in the text; callers get the X's.
    Descriptor const file(mkostemp(created.data(), O_CLOEXEC));
    if (!file) return pattern;
    return created;  // moved: if a copy ran out of memory, the file would exist and nobody would know its name
  });
}

// ---- Permissions ----

bool FilePermToRead(char const* path) {
  Uncancelled const meanwhile;
  return path != nullptr && static_cast<bool>(Open(path, O_RDONLY | O_NONBLOCK));
}

bool FilePermToWrite(char const* path) {
  Uncancelled const meanwhile;
  return FilePermToRead(path) && static_cast<bool>(Open(path, O_WRONLY | O_APPEND | O_NONBLOCK));
}

bool DirExists(char const* path) {
  if (path == nullptr) return false;
  Uncancelled const meanwhile;
  Descriptor const directory = Open(path, O_PATH | O_DIRECTORY);
  return directory && faccessat(directory.Get(), ".", X_OK, AT_EACCESS) == 0;
}

// ---- Copying ----

bool CpFile(CpFileProgress progress, char const* source, char const* destination, unsigned long offset,
            bool overwrite) {
  if (source == nullptr || destination == nullptr) return false;
  Uncancelled const meanwhile;
  Descriptor const in = Open(source, O_RDONLY);
  if (!in) return false;
  if (!overwrite && FilePermToRead(destination)) return false;
  std::unique_ptr<char[]> const block(new (std::nothrow) char[kCopyBlock]);  // a thread's stack may be smaller
  if (block == nullptr) return false;
  Descriptor out = OpenDestination(destination, in.Get());
  if (!out) return false;

  off_t const size = progress == nullptr ? 0 : lseek(in.Get(), 0, SEEK_END);
  if (size < 0) return false;
  bool const seeks = progress != nullptr || offset != 0;
  if (seeks && lseek(in.Get(), static_cast<off_t>(offset), SEEK_SET) < 0) return false;

  if (progress != nullptr) progress(nullptr, 0, static_cast<unsigned long>(size), 0, false);
  return CopyBlocks(progress, in, out, block.get(), static_cast<unsigned long>(size));
}

bool CpFile(char const* source, char const* destination, unsigned long offset, bool overwrite) {
  return CpFile(nullptr, source, destination, offset, overwrite);
}

// ---- Time ----

void Delay(unsigned long milliseconds) {
  auto const wait = static_cast<std::uint32_t>(milliseconds);
  Sleep((wait == 0 ? 1U : wait) * 1000U);
}

void usDelay(unsigned long microseconds) {
  auto const wait = static_cast<std::uint32_t>(microseconds);
  Sleep(wait == 0 ? 1U : wait);
}

unsigned long GetSystemTick() {
  timeval now = {};
  gettimeofday(&now, nullptr);
  return static_cast<std::uint32_t>(now.tv_sec) * 1000U + static_cast<std::uint32_t>(now.tv_usec / 1000);
}

unsigned long usGetSystemTick() {
  timeval now = {};
  gettimeofday(&now, nullptr);
  return static_cast<std::uint32_t>(now.tv_sec) * 1000000U + static_cast<std::uint32_t>(now.tv_usec);
}

// ---- System ----

std::string GetOSVersion() {
  Uncancelled const meanwhile;
  std::string result;
  for (ReleaseFile const& release : kReleaseFiles) {
    if (!FilePermToRead(release.path)) continue;
    result = release.prefix + FirstLine(release.path) + " - ";
    break;
  }
  utsname kernel;
  if (uname(&kernel) == 0)
    result.append(kernel.sysname).append(" ").append(kernel.release).append(" in ").append(kernel.machine);
  return result;
}

int GetOSType() { return 2; }

bool CurUserIsAdmin() { return getuid() == 0 || getgid() == 0; }

int GetOSLastError() { return errno; }

// ---- std::string overloads ----

std::string ChangeFileExt(std::string const& path, std::string const& ext) {
  return ChangeFileExt(path.c_str(), ext.c_str());
}
std::string ExtractFilePath(std::string const& path) { return ExtractFilePath(path.c_str()); }
std::string ExtractFileName(std::string const& path) { return ExtractFileName(path.c_str()); }
std::string ExtractFileExt(std::string const& path) { return ExtractFileExt(path.c_str()); }
std::string IncludePathDelimiter(std::string const& path) { return IncludePathDelimiter(path.c_str()); }
std::string ExcludePathDelimiter(std::string const& path) { return ExcludePathDelimiter(path.c_str()); }
bool FilePermToRead(std::string const& path) { return FilePermToRead(path.c_str()); }
bool FilePermToWrite(std::string const& path) { return FilePermToWrite(path.c_str()); }
bool DirExists(std::string const& path) { return DirExists(path.c_str()); }
bool CpFile(CpFileProgress progress, std::string const& source, std::string const& destination, unsigned long offset,
            bool overwrite) {
  return CpFile(progress, source.c_str(), destination.c_str(), offset, overwrite);
}
bool CpFile(std::string const& source, std::string const& destination, unsigned long offset, bool overwrite) {
  return CpFile(nullptr, source.c_str(), destination.c_str(), offset, overwrite);
}
