#include "zelvane/system/svc.h"

#include <dirent.h>
#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fd_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"
#include "zelvane/system/proc_internal.h"

using zelvane::internal::FindProcess;
using zelvane::internal::Guard;
using zelvane::internal::ListProcesses;
using zelvane::internal::Open;
using zelvane::internal::ReadSome;
using zelvane::internal::TrimView;

namespace {

constexpr char kInitFolder[] = "/etc/init.d/";
constexpr char kRcFolder[] = "/etc/rc.d/";
constexpr char kLocalRcFolder[] = "/usr/local/etc/rc.d/";

enum class Script { kMissing, kNotExecutable, kExecutable };

// Checks the mode bits for anybody: root may execute a file that has one of them.
Script LookAt(std::string const& path) {
  struct stat file;
  if (stat(path.c_str(), &file) != 0) return Script::kMissing;
  return (file.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0 ? Script::kExecutable : Script::kNotExecutable;
}

// Returns the text as one word of a shell command line, whatever it contains.
std::string ShellQuoted(std::string const& text) {
  std::string quoted = "'";
  for (char const c : text) {
    if (c == '\'')
      quoted += "'\\''";
    else
      quoted += c;
  }
  return quoted += '\'';
}

// Returns whether the script was run, however it ended. If the host ignores SIGCHLD, the status is lost (ECHILD), but
// the script did run. Status 127 can be the script's own, or mean that the C library could not start the shell.
bool Run(std::string const& script, char const* action) {
  std::string const command = ShellQuoted(script) + " " + action;
  int const status = system(command.c_str());
  if (status == -1) return errno == ECHILD;
  bool const unclear = WIFEXITED(status) && WEXITSTATUS(status) == 127;
  return !unclear || system(nullptr) != 0;
}

// Returns a process with that name; null if there is none, or if `ps` cannot be run. Throws when memory runs out: a
// service must not count as stopped for that reason.
ProcClass* Running(std::vector<ProcClass>& processes, std::string const& name) {
  ListProcesses(processes);
  return FindProcess(processes, name.c_str());
}

bool IsRunningNow(std::string const& name) {
  std::vector<ProcClass> processes;
  return Running(processes, name) != nullptr;
}

// Returns the names of all processes, for lookups of many services.
std::unordered_set<std::string> RunningNames() {
  std::unordered_set<std::string> names;
  std::vector<ProcClass> processes;
  ListProcesses(processes);
  for (ProcClass& process : processes) names.insert(process.GetName());
  return names;
}

// The entries of a directory in the order of their names.
class FolderList {
 public:
  explicit FolderList(std::string const& folder) : count_(scandir(folder.c_str(), &entries_, nullptr, alphasort)) {
    if (count_ < 0 && errno == ENOMEM) throw std::bad_alloc();
  }
  FolderList(FolderList const&) = delete;
  FolderList& operator=(FolderList const&) = delete;
  ~FolderList() {
    for (int i = 0; i < count_; i++) free(entries_[i]);
    if (count_ >= 0) free(entries_);
  }

  // -1 if the directory cannot be read.
  int Count() const { return count_; }
  char const* Name(int index) const { return entries_[index]->d_name; }

 private:
  dirent** entries_ = nullptr;
  int count_;
};

std::string ServiceName(std::string name) {
  if (name.compare(0, 3, "rc.") == 0) name.erase(0, 3);
  return name.substr(0, name.rfind('.'));
}

// A longer line does not belong to a script: the search ends there. It also ends at a description that has become
// longer than this.
constexpr std::size_t kLineLimit = 1024 * 1024;

// The lines of a file, one after the other.
class LineReader {
 public:
  explicit LineReader(std::string const& path) : file_(Open(path.c_str(), O_RDONLY | O_NONBLOCK)) {}

  // Returns false at the end, at a line beyond the limit, or if the file cannot be read.
  bool Next(std::string& line) {
    line.clear();
    while (line.size() <= kLineLimit) {
      std::string_view const part = rest_.substr(0, rest_.find('\n'));
      line.append(part);
      if (part.size() < rest_.size()) {
        rest_.remove_prefix(part.size() + 1);
        return line.size() <= kLineLimit;
      }
      if (!Fill()) return !failed_ && !line.empty();
    }
    return false;
  }

  bool IsFail() const { return failed_; }

 private:
  bool Fill() {
    ssize_t const got = file_ ? ReadSome(file_.Get(), block_, sizeof block_) : -1;
    failed_ = got < 0;
    rest_ = std::string_view(block_, static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    return got > 0;
  }

  zelvane::internal::Descriptor file_;
  char block_[4096];
  std::string_view rest_;  // of the block
  bool failed_ = false;
};

// The text of a comment; none for any other line.
std::optional<std::string_view> CommentText(std::string_view line) {
  line = TrimView(line);
  if (line.empty() || line.front() != '#') return std::nullopt;
  return TrimView(line.substr(1));
}

// Removes "description", in any case, with all up to the colon. False when the text does not begin like that.
bool SkipHeader(std::string_view& text) {
  constexpr std::string_view kHeader = "description";
  std::size_t const colon = text.find(':');
  if (colon == std::string_view::npos || LowerCase(std::string(text.substr(0, kHeader.size()))) != kHeader)
    return false;
  text = TrimView(text.substr(colon + 1));
  return true;
}

// The comment with the header, and the comments after it for as long as the one before ends in a backslash.
std::string ReadDescription(std::string const& path) {
  LineReader script(path);
  std::string description;
  bool begun = false;
  for (std::string line; description.size() <= kLineLimit && script.Next(line);) {
    std::optional<std::string_view> text = CommentText(line);
    if (!text || (!begun && !SkipHeader(*text))) continue;
    begun = true;
    bool const goesOn = !text->empty() && text->back() == '\\';
    if (goesOn) text->remove_suffix(1);
    description += *text;
    if (!goesOn) break;
  }
  return script.IsFail() ? "" : description;
}

}  // namespace

// ---- One service ----

SvcClass::SvcClass() = default;
SvcClass::SvcClass(SvcClass const&) = default;
SvcClass::SvcClass(SvcClass&&) noexcept = default;
SvcClass& SvcClass::operator=(SvcClass const&) = default;
SvcClass& SvcClass::operator=(SvcClass&&) noexcept = default;
SvcClass::~SvcClass() = default;

bool SvcClass::Start(long) {
  return Guard(false, [&] {
    if (name_.empty() || LookAt(fileName_) != Script::kExecutable || !Run(fileName_, "start")) return false;
    if (!IsRunningNow(name_)) return false;
    running_ = true;
    return true;
  });
}

bool SvcClass::Stop(long) {
  return Guard(false, [&] {
    if (name_.empty()) return false;
    Script const script = LookAt(fileName_);
    if (script == Script::kMissing) return false;
    bool stopped = script == Script::kNotExecutable || Run(fileName_, "stop");
    std::vector<ProcClass> processes;
    if (ProcClass* const survivor = Running(processes, name_)) stopped = survivor->Kill();
    if (stopped) running_ = false;
    return stopped;
  });
}

bool SvcClass::Restart(long, long) {
  return Guard(false, [&] {
    if (!running_) return false;
    Script const script = LookAt(fileName_);
    if (script == Script::kMissing) return false;
    if (script == Script::kExecutable && !Run(fileName_, "restart")) return false;
    return IsRunningNow(name_);
  });
}

std::string SvcClass::GetName() const { return name_; }

std::string SvcClass::GetDisplayName() const { return name_; }

std::string SvcClass::GetFileName() const { return fileName_; }

std::string SvcClass::GetDescription() const { return description_; }

bool SvcClass::IsRunning() const { return running_; }

bool SvcClass::GetAutomatic() const { return automatic_; }

bool SvcClass::GetAutomatic(int level) const {
  if (level < 0) return automatic_;
  return level < static_cast<int>(std::size(automaticInLevel_)) && automaticInLevel_[level];
}

bool SvcClass::SetAutomatic(bool on) {
  if (name_.empty() || !SetAutomatic(-1, on)) return false;
  automatic_ = on;
  return true;
}

bool SvcClass::SetAutomatic(int level, bool) { return level < static_cast<int>(std::size(automaticInLevel_)); }

// ---- The table ----

SvcManager::SvcManager() = default;
SvcManager::~SvcManager() = default;

bool SvcManager::GetDaemonInfo(std::string const& dir) {
  std::size_t const before = table_.size();
  try {
    return AppendServices(dir);
  } catch (...) {
    // Removes those services of the directory that were already appended.
    table_.erase(table_.begin() + static_cast<std::ptrdiff_t>(before), table_.end());
    outOfMemory_ = true;
    return false;
  }
}

bool SvcManager::AppendServices(std::string const& dir) {
  if (!DirExists(dir)) return false;
  FolderList const scripts(dir);
  if (scripts.Count() <= 0) return false;
  std::unordered_set<std::string> const running = RunningNames();
  for (int i = 0; i < scripts.Count(); i++) {
    SvcClass service;
    service.fileName_ = dir + scripts.Name(i);
    struct stat file;
    if (stat(service.fileName_.c_str(), &file) != 0 || S_ISDIR(file.st_mode)) continue;
    service.name_ = ServiceName(scripts.Name(i));
    service.description_ = GetDaemonDescr(service.fileName_);
    service.running_ = running.count(service.name_) != 0;
    GetDaemonAuto(service, service.fileName_);
    table_.push_back(std::move(service));
  }
  return !table_.empty();
}

std::string SvcManager::GetDaemonDescr(std::string const& path) {
  struct stat file;
  return stat(path.c_str(), &file) == 0 && S_ISREG(file.st_mode) ? ReadDescription(path) : "";
}

void SvcManager::GetDaemonAuto(SvcClass& svc, std::string const& path) {
  bool const on = ExtractFilePath(path) == kLocalRcFolder && LookAt(path) == Script::kExecutable;
  svc.automatic_ = on;
  std::fill(std::begin(svc.automaticInLevel_), std::end(svc.automaticInLevel_), on);
}

bool SvcManager::Update() {
  Clear();
  outOfMemory_ = false;
  if (GetDaemonInfo(kInitFolder)) return true;
  bool found = false;
  for (char const* folder : {kRcFolder, kLocalRcFolder}) found = (!outOfMemory_ && GetDaemonInfo(folder)) || found;
  if (!outOfMemory_) return found;
  Clear();  // the services of another directory would be the wrong ones
  return false;
}

void SvcManager::Clear() { table_.clear(); }

unsigned long SvcManager::GetSvcCount() {
  if (table_.empty()) Update();
  return table_.size();
}

SvcClass* SvcManager::GetSvcByIndex(unsigned long index) {
  return index < GetSvcCount() && index < table_.size() ? &table_[index] : nullptr;
}

SvcClass* SvcManager::GetSvcByName(char const* name) {
  if (name == nullptr) return nullptr;
  unsigned long const count = GetSvcCount();
  for (unsigned long i = 0; i < count; i++) {
    SvcClass* const entry = GetSvcByIndex(i);
    if (entry != nullptr && entry->name_ == name) return entry;
  }
  return nullptr;
}

bool SvcManager::IsRunning(char const* name) {
  SvcClass* const entry = GetSvcByName(name);
  return entry != nullptr && entry->IsRunning();
}

// ---- std::string overloads ----

SvcClass* SvcManager::GetSvcByName(std::string const& name) { return GetSvcByName(name.c_str()); }
bool SvcManager::IsRunning(std::string const& name) { return IsRunning(name.c_str()); }
