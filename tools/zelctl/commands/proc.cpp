// zelctl proc: lists, starts and ends processes of this machine.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "commands/families.h"
#include "commands/processes.h"
#include "records/fields.h"
#include "terminal/latin1.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/system/procsvc.h"

namespace {

struct Arguments {
  std::string name;
  std::string command;
  std::string pid;
  std::string level;
  bool all = false;
};

constexpr char const* kLevels[] = {"low", "normal", "high", "highest"};

char const* LevelName(int level) { return kLevels[std::clamp(level, 0, 3)]; }

// The start of a table's last column. Each column before it is as wide as its cells plus two blanks.
std::size_t LastColumn(Table const& rows) {
  std::size_t at = 0;
  for (std::size_t i = 0; i + 1 < rows[0].size(); i++) {
    auto const widest = std::max_element(
        rows.begin(), rows.end(), [i](auto const& a, auto const& b) { return a[i].text.size() < b[i].text.size(); });
    at += (*widest)[i].text.size() + 2;
  }
  return at;
}

// The beginning of a cell, as it is shown.
std::string CutTo(std::size_t columns, Cell const& cell, Terminal const& terminal) {
  bool const isUtf8 = terminal.Charset() == "UTF-8";
  std::string shown = terminal.ShownCell(cell);
  if (WidthOf(shown, isUtf8) > columns) shown.resize(EndOf(shown, 0, columns, isUtf8));
  return shown;
}

void Print(Processes processes, Terminal const& terminal) {
  Json::List json;
  Table rows = {{"PID", "PARENT", "PRIORITY", "NAME", "COMMAND"}};
  for (ProcClass& process : processes) {
    std::string const level = LevelName(process.GetPriority());
    json.push_back({{"pid", process.GetPID()},
                    {"parent", process.GetPPID()},
                    {"priority", level},
                    {"name", process.GetName()},
                    {"command", process.GetFileName()}});
    rows.push_back({std::to_string(process.GetPID()), std::to_string(process.GetPPID()), level,
                    FileName{process.GetName()}, FileName{process.GetFileName()}});
  }
  if (terminal.json) return terminal.PrintJson(json);
  // A command line can fill a page, so it is cut here, as `ps` does.
  std::size_t const begin = LastColumn(rows);
  std::size_t const columns = TerminalColumns();
  if (columns > begin)
    for (auto& row : rows) row.back() = FileName{CutTo(columns - begin, row.back(), terminal)};
  terminal.PrintTable(rows);
}

void List(Arguments const&, Terminal const& terminal) { Print(AllProcesses(), terminal); }

void Find(Arguments const& arguments, Terminal const& terminal) {
  Processes const found = ProcessesNamed(arguments.name);
  if (found.empty()) throw Failed(NobodyNamed(arguments.name));
  Print(found, terminal);
}

// ---- Starting ----

// The only child of this process; 0 if the system does not report it.
pid_t OnlyChild() {
  pid_t child = 0;
  std::ifstream("/proc/thread-self/children") >> child;
  return child;
}

// How a child that ends immediately ended, in words; "" if it runs or succeeded.
std::string EarlyFailure(pid_t child) {
  constexpr int kLooks = 20;
  constexpr unsigned long kPause = 10;  // milliseconds
  int status = 0;
  for (int i = 0; i < kLooks; i++) {
    if (waitpid(child, &status, WNOHANG) != 0) break;
    Delay(kPause);
  }
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  return WEXITSTATUS(status) == 0 ? "" : "exit code " + std::to_string(WEXITSTATUS(status));
}

// While it exists, those of the three streams that are pipes lead to /dev/null. So a reader of this command's output
// does not wait for the end of the started program.
class LetGo {
 public:
  LetGo() {
    int const nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (int fd = 0; fd < 3; fd++) {
      struct stat stream = {};
      bool const isPipe = fstat(fd, &stream) == 0 && (S_ISFIFO(stream.st_mode) || S_ISSOCK(stream.st_mode));
      kept_[fd] = isPipe ? fcntl(fd, F_DUPFD_CLOEXEC, 3) : -1;
      if (kept_[fd] >= 0) dup2(nowhere, fd);
    }
    close(nowhere);
  }
  ~LetGo() {
    for (int fd = 0; fd < 3; fd++)
      if (kept_[fd] >= 0) dup2(kept_[fd], fd), close(kept_[fd]);
  }
  LetGo(LetGo const&) = delete;
  LetGo& operator=(LetGo const&) = delete;

 private:
  int kept_[3];
};

void Start(Arguments const& arguments, Terminal const& terminal) {
  if (arguments.command.empty()) throw WrongUsage("COMMAND: must not be empty");
  pid_t const self = getpid();
  errno = 0;
  bool started = false;
  {
    LetGo const pipes;
    started = CreateNewProc(arguments.command.c_str(), -1);
    // The child itself returns if the shell cannot be run.
    if (getpid() != self) _exit(127);
  }
  if (!started) throw Failed(std::string("cannot start a process: ") + strerror(errno));
  pid_t const child = OnlyChild();
  std::string const failure = child > 0 ? EarlyFailure(child) : "";
  if (!failure.empty()) throw Failed("process " + std::to_string(child) + " already ended: " + failure);
  if (terminal.json) return terminal.PrintJson({{"pid", child}, {"command", arguments.command}});
  terminal.PrintText(child > 0 ? "started process " + std::to_string(child) : "started");
}

// ---- Killing ----

// The processes to kill. Throws Failed if the choice is not clear.
Processes Victims(Arguments const& arguments) {
  bool const one = !arguments.pid.empty();
  std::int64_t const pid = one ? NumberArgument("--pid", arguments.pid, 1, kHighestNumber) : 0;
  Processes victims = ProcessesNamed(arguments.name);
  if (victims.empty()) throw Failed(NobodyNamed(arguments.name));
  auto const other = [&](ProcClass& process) { return one && process.GetPID() != static_cast<unsigned long>(pid); };
  victims.erase(std::remove_if(victims.begin(), victims.end(), other), victims.end());
  if (victims.empty()) throw Failed("process " + arguments.pid + " is not named " + arguments.name);
  auto const passed = [](ProcClass& process) { return IsSpared(process) || HasEnded(process); };
  victims.erase(std::remove_if(victims.begin(), victims.end(), passed), victims.end());
  if (victims.empty())
    throw Failed("nothing killed: the only processes with that name are process 1, zelctl itself, or zombies");
  if (victims.size() > 1 && !arguments.all)
    throw Failed("nothing killed: several processes have that name: " + IdsOf(victims) + "; use --pid or --all");
  return victims;
}

void Kill(Arguments const& arguments, Terminal const& terminal) {
  Json::List json;
  Processes sent;
  std::string fault;
  for (ProcClass& victim : Victims(arguments)) {
    if (victim.Kill()) {
      sent.push_back(victim);
      json.push_back({{"pid", victim.GetPID()}, {"name", victim.GetName()}});
      if (!terminal.json) terminal.PrintText("sent SIGTERM and SIGKILL to " + Shown(victim));
    } else {
      fault += (fault.empty() ? "" : "; ") + Shown(victim) + ": " + strerror(GetOSLastError());
    }
  }
  if (terminal.json) terminal.PrintJson(json);
  for (ProcClass& left : WaitForEnd(sent)) fault += (fault.empty() ? "" : "; ") + Shown(left) + " still runs";
  if (!fault.empty()) throw Failed(fault);
}

// ---- Priority ----

int LevelArgument(std::string const& text) {
  auto const found = std::find(std::begin(kLevels), std::end(kLevels), text);
  if (found != std::end(kLevels)) return static_cast<int>(found - std::begin(kLevels));
  if (text.size() == 1 && text[0] >= '0' && text[0] <= '3') return text[0] - '0';
  throw WrongUsage("LEVEL: expected low, normal, high, highest, or 0 to 3");
}

void SetPriority(Arguments const& arguments, Terminal const& terminal) {
  auto const pid = static_cast<unsigned long>(NumberArgument("PID", arguments.pid, 1, kHighestNumber));
  int const level = LevelArgument(arguments.level);
  ProcManager table;
  ProcClass* const process = table.GetProcByPID(pid);
  if (process == nullptr) throw Failed("process " + arguments.pid + " does not exist");
  char const* const before = LevelName(process->GetPriority());
  if (!process->SetPriority(level)) throw Failed(Shown(*process) + ": " + strerror(GetOSLastError()));
  if (terminal.json)
    return terminal.PrintJson(
        {{"pid", pid}, {"name", process->GetName()}, {"before", before}, {"now", LevelName(level)}});
  terminal.PrintText(Shown(*process) + ": priority " + LevelName(level) + ", was " + before);
}

}  // namespace

Command ProcCommands() {
  auto const arguments = std::make_shared<Arguments>();
  Option const name = Argument("NAME", &arguments->name, "Name of the program").Required().Filled();
  return Family(
      "proc", "List, start and kill processes",
      "The name of a process is the first 15 characters of its program's file name. NAME can be a path: only the part "
      "after the last \"/\" is compared, case-sensitively.",
      {"zelctl proc list", "zelctl proc find zelsrv", "zelctl proc start 'sleep 60'", "zelctl proc kill zelsrv",
       "zelctl proc priority 4711 high"},
      {{"list", "List all processes, from `ps`", On(arguments, List), {}, "On a terminal, lines are cut at its width."},
       {"find",
        "List the processes with this name",
        On(arguments, Find),
        {name},
        "The programs use the first one. Exit code 1 if there is none."},
       {"start",
        "Start a command in the background",
        On(arguments, Start),
        {Argument("COMMAND", &arguments->command, "Command line, in quotes").Required()},
        "COMMAND is one argument: a command line for /bin/sh. It runs in its own session, with zelctl's input and "
        "output unless they are pipes. zelctl does not wait; it reports only a failure in the first 0.2 seconds (exit "
        "code 1)."},
       {"kill",
        "Kill a process: SIGTERM, immediately followed by SIGKILL",
        On(arguments, Kill),
        {name, Value("--pid", &arguments->pid, "PID", "Only the process with this id, if it has the name"),
         Flag("--all", &arguments->all, "All processes of that name").Excludes("--pid")},
        "Prints the process id. If several processes have the name, use --pid or --all; otherwise none is killed. "
        "Process 1 and zelctl itself are never killed. Exit code 1 if no process has the name, or one still runs "
        "after two seconds."},
       {"priority",
        "Set the priority of a process",
        On(arguments, SetPriority),
        {Argument("PID", &arguments->pid, "Id of the process").Required(),
         Argument("LEVEL", &arguments->level, "The new priority").Required()},
        "LEVEL is low, normal, high or highest (0 to 3): nice 20, 0, -10, -20. Raising above normal, or another user's "
        "process, requires root."}});
}
