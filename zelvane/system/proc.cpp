#include "zelvane/system/proc.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fd_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"
#include "zelvane/system/proc_internal.h"

using zelvane::internal::Descriptor;
using zelvane::internal::Guard;
using zelvane::internal::ListProcesses;
using zelvane::internal::ReadSome;
using zelvane::internal::TrimView;

namespace {

constexpr char kPsCommand[] = "ps xa -w -o pid -o ppid -o nice -o comm -o command";
constexpr std::size_t kLineLimit = 1023;
constexpr int kNormalPriority = 1;
constexpr int kNiceOfPriority[] = {20, 0, -10, -20};
constexpr int kCommandNotFound = 127;  // by the shell

int PriorityOfNice(long nice) {
  if (nice >= 11) return 0;
  if (nice >= 0) return kNormalPriority;
  return nice >= -10 ? 2 : 3;
}

// Only such an id names exactly one process.
bool IsProcessId(unsigned long id) { return id >= 1 && id <= INT32_MAX; }

// Removes the next field from the front of `rest` and returns it.
std::string NextField(std::string_view& rest) {
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  std::string_view const field = rest.substr(0, rest.find(' '));
  rest.remove_prefix(field.size());
  return std::string(TrimView(field));
}

// A negative number wraps to 32 bits, and is then not a process id.
unsigned long IdOf(std::string const& field) { return static_cast<std::uint32_t>(StrToIntDef(field, 0)); }

// Parses a line (without its line feed) with the columns id, parent's id, nice value, command name and command line.
// Returns none if it does not begin with an integer, like the heading. Runs of spaces separate the fields, because the
// column widths depend on the machine; the last field is the remainder of the line. Missing fields are 0 or empty.
std::optional<ProcClass> ParsePsLine(std::string_view line) {
  std::string const pid = NextField(line);
  if (!StrIsInt(pid)) return std::nullopt;
  std::string const ppid = NextField(line);
  std::string const nice = NextField(line);
  std::string name = NextField(line);
  return ProcClass(IdOf(pid), IdOf(ppid), std::move(name), std::string(TrimView(line)),
                   PriorityOfNice(StrToIntDef(nice, 0)));
}

// Takes the output in parts, split anywhere, and appends the processes to the table. Text beyond the line limit is
// dropped and never parsed: every user can choose the command line of a process, and could place a false row there.
class PsOutput {
 public:
  explicit PsOutput(std::vector<ProcClass>& table) : table_(table) {}

  void Take(std::string_view bytes) {
    while (!bytes.empty()) {
      std::string_view const part = bytes.substr(0, bytes.find('\n'));
      line_.append(part.substr(0, kLineLimit - line_.size()));
      if (part.size() == bytes.size()) return;
      EndLine();
      bytes.remove_prefix(part.size() + 1);
    }
  }

  // Also for the last line, which need not end in a line feed.
  void EndLine() {
    if (std::optional<ProcClass> entry = ParsePsLine(line_)) table_.push_back(std::move(*entry));
    line_.clear();
  }

 private:
  std::vector<ProcClass>& table_;
  std::string line_;  // up to the limit
};

// A shell command whose output is read. popen() is not used: it does not show whether memory or a process was missing,
// and stdio drops a partial line when a signal interrupts it.
class Command {
 public:
  explicit Command(char const* line) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    output_ = Descriptor(ends[0]);
    Descriptor const input(ends[1]);
    int const failed = Start(line, input.Get());
    if (failed == ENOMEM) throw std::bad_alloc();
    if (failed != 0) id_ = kNone;
  }
  Command(Command const&) = delete;
  Command& operator=(Command const&) = delete;
  ~Command() { End(); }

  explicit operator bool() const { return id_ != kNone; }
  ssize_t Read(char* buffer, std::size_t size) { return ReadSome(output_.Get(), buffer, size); }
  // Waits for the command. Returns its status as waitpid does, -1 if it is not available.
  int End() {
    output_ = Descriptor();
    pid_t const id = std::exchange(id_, kNone);
    int status = -1;
    if (id == kNone) return status;
    while (waitpid(id, &status, 0) < 0)
      if (errno != EINTR) return -1;
    return status;
  }

 private:
  static constexpr pid_t kNone = -1;

  // Returns 0, or the reason why there is no process.
  int Start(char const* line, int output) {
    char* const arguments[] = {const_cast<char*>("sh"), const_cast<char*>("-c"), const_cast<char*>(line), nullptr};
    posix_spawn_file_actions_t actions;
    int failed = posix_spawn_file_actions_init(&actions);
    if (failed != 0) return failed;
    failed = posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    if (failed == 0) failed = posix_spawn(&id_, "/bin/sh", &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed;
  }

  Descriptor output_;
  pid_t id_ = kNone;
};

}  // namespace

bool zelvane::internal::ListProcesses(std::vector<ProcClass>& table) {
  Command ps(kPsCommand);
  if (!ps) return false;
  PsOutput output(table);
  char piece[4096];
  ssize_t got = 0;
  while ((got = ps.Read(piece, sizeof piece)) > 0) output.Take({piece, static_cast<std::size_t>(got)});
  output.EndLine();
  // The status is not available if the host ignores SIGCHLD.
  int const status = ps.End();
  return !(table.empty() && status != -1 && WIFEXITED(status) && WEXITSTATUS(status) == kCommandNotFound);
}

ProcClass* zelvane::internal::FindProcess(std::vector<ProcClass>& table, char const* name) {
  std::string const wanted = ExtractFileName(name);
  auto const found =
      std::find_if(table.begin(), table.end(), [&](ProcClass& entry) { return entry.GetName() == wanted; });
  return found == table.end() ? nullptr : &*found;
}

// ---- One process ----

ProcClass::ProcClass(unsigned long pid, unsigned long ppid, std::string name, std::string fileName, int priority)
    : pid_(pid), ppid_(ppid), name_(std::move(name)), fileName_(std::move(fileName)), priority_(priority) {}

ProcClass::ProcClass() = default;
ProcClass::ProcClass(ProcClass const&) = default;
ProcClass::ProcClass(ProcClass&&) noexcept = default;
ProcClass& ProcClass::operator=(ProcClass const&) = default;
ProcClass& ProcClass::operator=(ProcClass&&) noexcept = default;
ProcClass::~ProcClass() = default;

bool ProcClass::Kill() {
  if (!IsProcessId(pid_)) return false;
  auto const id = static_cast<pid_t>(pid_);
  if (kill(id, SIGTERM) != 0) return false;
  kill(id, SIGKILL);
  return true;
}

int ProcClass::GetPriority() { return priority_; }

bool ProcClass::SetPriority(int level) {
  if (level < 0 || level > 3) level = kNormalPriority;
  if (!IsProcessId(pid_)) return false;
  if (setpriority(PRIO_PROCESS, static_cast<id_t>(pid_), kNiceOfPriority[level]) != 0) return false;
  priority_ = level;
  return true;
}

std::string ProcClass::GetName() { return name_; }

std::string ProcClass::GetFileName() { return fileName_; }

unsigned long ProcClass::GetPID() { return pid_; }

unsigned long ProcClass::GetPPID() { return ppid_; }

// ---- The table ----

ProcManager::ProcManager() = default;
ProcManager::~ProcManager() = default;

bool ProcManager::Update() {
  Clear();
  bool const read = Guard(false, [&] { return ListProcesses(table_); });
  if (!read) table_.clear();
  return read;
}

void ProcManager::Clear() { table_.clear(); }

unsigned long ProcManager::GetProcCount() {
  if (table_.empty()) Update();
  return table_.size();
}

ProcClass* ProcManager::GetProcByIndex(unsigned long index) {
  return index < GetProcCount() && index < table_.size() ? &table_[index] : nullptr;
}

ProcClass* ProcManager::GetProcByName(char const* name) {
  if (name == nullptr) return nullptr;
  return Guard<ProcClass*>(nullptr, [&]() -> ProcClass* {
    std::string const wanted = ExtractFileName(name);
    unsigned long const count = GetProcCount();
    for (unsigned long i = 0; i < count; i++) {
      ProcClass* const entry = GetProcByIndex(i);
      if (entry != nullptr && entry->GetName() == wanted) return entry;
    }
    return nullptr;
  });
}

ProcClass* ProcManager::GetProcByPID(unsigned long pid) {
  unsigned long const count = GetProcCount();
  for (unsigned long i = 0; i < count; i++) {
    ProcClass* const entry = GetProcByIndex(i);
    if (entry != nullptr && entry->GetPID() == pid) return entry;
  }
  return nullptr;
}

bool ProcManager::IsRunning(char const* name) { return GetProcByName(name) != nullptr; }

bool ProcManager::IsRunning(unsigned long pid) { return GetProcByPID(pid) != nullptr; }

// ---- New processes ----

bool ProcManager::CreateNew(char const* command) { return command != nullptr && CreateNew(command, 1); }

bool ProcManager::CreateNew(char const* command, unsigned long detach) {
  if (command == nullptr) return false;
  // execve takes pointers to writable text, but does not write to it.
  char* const arguments[] = {const_cast<char*>("sh"), const_cast<char*>("-c"), const_cast<char*>(command), nullptr};
  pid_t const child = fork();
  if (child != 0) return child > 0;
  if (detach == 1) setsid();
  execve("/bin/sh", arguments, environ);
  return false;
}

bool ProcManager::CreateNewAndWait(char const* command, long timeout) { return CreateNewAndWait(command, timeout, 0); }

bool ProcManager::CreateNewAndWait(char const* command, long, unsigned long) {
  return command != nullptr && CreateNew(command);
}

// ---- std::string overloads ----

ProcClass* ProcManager::GetProcByName(std::string const& name) { return GetProcByName(name.c_str()); }
bool ProcManager::IsRunning(std::string const& name) { return IsRunning(name.c_str()); }
bool ProcManager::CreateNew(std::string const& command) { return CreateNew(command.c_str()); }
bool ProcManager::CreateNew(std::string const& command, unsigned long detach) {
  return CreateNew(command.c_str(), detach);
}
bool ProcManager::CreateNewAndWait(std::string const& command, long timeout) {
  return CreateNewAndWait(command.c_str(), timeout);
}
bool ProcManager::CreateNewAndWait(std::string const& command, long timeout, unsigned long flags) {
  return CreateNewAndWait(command.c_str(), timeout, flags);
}
