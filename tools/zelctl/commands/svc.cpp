// zelctl svc: the services of this machine that have an init script.
#include <errno.h>
#include <spawn.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "commands/families.h"
#include "commands/processes.h"
#include "records/fields.h"
#include "terminal/latin1.h"
#include "zelvane/system/svc.h"

namespace {

struct Service {
  std::string name;
  bool running;
  std::string processes;
  std::string automatic;
  std::string script;
  std::string unit;
  std::string description;
};

constexpr char kNoScripts[] = "no init scripts found in /etc/init.d, /etc/rc.d or /usr/local/etc/rc.d";

// The library does not read run levels. In this directory alone, a script starts because it exists.
std::string AutomaticOf(SvcClass const& service) {
  static std::string const kFolder = "/usr/local/etc/rc.d/";
  if (service.GetFileName().compare(0, kFolder.size(), kFolder) != 0) return "unknown";
  return service.GetAutomatic() ? "yes" : "no";
}

Service Describe(SvcClass const& service) {
  Service described = {};
  described.name = service.GetName();
  described.running = service.IsRunning();
  described.automatic = AutomaticOf(service);
  described.script = service.GetFileName();
  described.description = service.GetDescription();
  return described;
}

void List(Terminal const& terminal) {
  SvcManager manager;
  if (!manager.Update()) terminal.Note(kNoScripts);
  std::vector<Service> services;
  for (unsigned long i = 0; i < manager.GetSvcCount(); i++) services.push_back(Describe(*manager.GetSvcByIndex(i)));
  PrintRecords({String<&Service::name>("name"), Answer<&Service::running>("running", ""),
                String<&Service::automatic>("automatic"), String<&Service::script>("script"),
                String<&Service::description>("description")},
               services, terminal);
}

// ---- Status ----

// The value of a property in the output of `systemctl show`.
std::string Property(std::string const& answer, std::string const& name) {
  std::string const mark = "\n" + name + "=";
  std::size_t const at = answer.find(mark);
  if (at == std::string::npos) return "";
  std::size_t const begin = at + mark.size();
  return answer.substr(begin, answer.find('\n', begin) - begin);
}

// systemd's state of the unit, in words; "" if there is no such unit or no systemd.
std::string UnitOf(std::string const& name) {
  // Such a name has no special meaning to the shell or to systemctl, which treats other names as patterns or paths.
  bool const plain = !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || strchr("_-.:@", c) != nullptr;
  });
  if (!plain) return "";
  std::string const command =
      "systemctl show --property=LoadState,ActiveState,SubState,UnitFileState -- '" + name + ".service' 2>/dev/null";
  std::unique_ptr<FILE, int (*)(FILE*)> const systemctl(popen(command.c_str(), "re"), pclose);
  if (systemctl == nullptr) return "";
  std::string answer = "\n";
  char piece[1024];
  while (std::size_t const got = fread(piece, 1, sizeof piece, systemctl.get())) answer.append(piece, got);
  if (Property(answer, "LoadState") != "loaded") return "";
  std::string const enabled = Property(answer, "UnitFileState");
  return Property(answer, "ActiveState") + " (" + Property(answer, "SubState") + ")" +
         (enabled.empty() ? "" : ", " + enabled);
}

void Status(std::string const& name, Terminal const& terminal) {
  SvcManager manager;
  SvcClass const* const service = manager.GetSvcByName(name);
  Service status = service != nullptr ? Describe(*service) : Service();
  status.name = name;
  status.unit = UnitOf(name);
  if (service == nullptr && status.unit.empty()) throw Failed("service " + name + " does not exist");
  Processes const processes = LivingNamed(name);
  status.running = !processes.empty();
  status.processes = IdsOf(processes);
  if (terminal.json)
    return terminal.PrintJson({{"name", FileName{name}},
                               {"running", status.running},
                               {"processes", JsonIdsOf(processes)},
                               {"script", status.script},
                               {"automatic", status.automatic},
                               {"unit", status.unit},
                               {"description", ToUtf8(status.description)}});
  PrintRecord(
      {String<&Service::name>("name", "the service"), Answer<&Service::running>("running", "a process has this name"),
       String<&Service::processes>("processes", "process ids"), String<&Service::script>("script", "init script"),
       String<&Service::automatic>("automatic", "started at boot by the script"),
       String<&Service::unit>("unit", "systemd unit with this name"),
       String<&Service::description>("description", "description in the script")},
      &status, terminal);
}

// ---- Starting and stopping ----

SvcClass& Find(SvcManager& manager, std::string const& name) {
  if (manager.GetSvcCount() == 0) throw Failed(kNoScripts);
  SvcClass* const service = manager.GetSvcByName(name);
  if (service == nullptr) throw Failed("no init script for " + name);
  return *service;
}

// Why a script was not run; otherwise the text `otherwise`.
std::string WhyNot(SvcClass const& service, std::string const& otherwise) {
  std::string const script = service.GetFileName();
  struct stat file = {};
  if (stat(script.c_str(), &file) != 0) return script + ": " + strerror(errno);
  if ((file.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) == 0) return script + ": not executable";
  return otherwise;
}

// `processes` run now, or ran before.
void Report(std::string const& name, char const* action, Processes const& processes, Terminal const& terminal) {
  if (terminal.json)
    return terminal.PrintJson({{"name", FileName{name}}, {"action", action}, {"processes", JsonIdsOf(processes)}});
  char const* const noun = processes.size() > 1 ? "processes " : "process ";
  terminal.PrintNames(name + " " + action + ": " +
                      (processes.empty() ? "no process of that name" : noun + IdsOf(processes)));
}

// Runs a script as the library does; the library does not return the script's exit status. With --json the script's
// output goes to standard error. Returns the error, or "" on success.
std::string RunScript(SvcClass const& service, char const* action, Terminal const& terminal) {
  std::string const script = service.GetFileName();
  std::string fault = WhyNot(service, "");
  if (!fault.empty()) return fault;
  std::cout.flush();
  posix_spawn_file_actions_t streams;
  posix_spawn_file_actions_init(&streams);
  if (terminal.json) posix_spawn_file_actions_adddup2(&streams, STDERR_FILENO, STDOUT_FILENO);
  // The shell also runs scripts without an interpreter line.
  char const* const words[] = {"sh", "-c", "\"$0\" \"$1\"", script.c_str(), action, nullptr};
  pid_t child = 0;
  int const error = posix_spawn(&child, "/bin/sh", &streams, nullptr, const_cast<char* const*>(words), environ);
  posix_spawn_file_actions_destroy(&streams);
  if (error != 0) return script + ": " + strerror(error);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  if (WIFSIGNALED(status)) return script + " " + action + ": signal " + std::to_string(WTERMSIG(status));
  return WEXITSTATUS(status) == 0 ? "" : script + " " + action + ": exit code " + std::to_string(WEXITSTATUS(status));
}

// Runs the script with an action that should leave the service running.
void RunToRunning(SvcClass const& service, char const* action, char const* done, Terminal const& terminal) {
  std::string const name = service.GetName();
  std::string const fault = RunScript(service, action, terminal);
  if (!fault.empty()) throw Failed(fault);
  Processes const processes = LivingNamed(name);
  if (processes.empty()) throw Failed(service.GetFileName() + " ran, but there is " + NobodyNamed(name));
  Report(name, done, processes, terminal);
}

void Start(std::string const& name, Terminal const& terminal) {
  SvcManager manager;
  RunToRunning(Find(manager, name), "start", "started", terminal);
}

void Restart(std::string const& name, Terminal const& terminal) {
  SvcManager manager;
  SvcClass const& service = Find(manager, name);
  if (LivingNamed(name).empty()) throw Failed(name + " is not running, not restarted: " + NobodyNamed(name));
  RunToRunning(service, "restart", "restarted", terminal);
}

void Stop(std::string const& name, Terminal const& terminal) {
  SvcManager manager;
  SvcClass const& service = Find(manager, name);
  Processes before = LivingNamed(name);
  if (std::any_of(before.begin(), before.end(), IsSpared))
    throw Failed("nothing stopped: process 1 or zelctl itself has the name " + name);
  // The library, too, ignores a script that nobody may execute.
  bool const runs = access(service.GetFileName().c_str(), F_OK) != 0 || WhyNot(service, "").empty();
  std::string const fault = runs ? RunScript(service, "stop", terminal) : "";
  // The library kills the first process that the script leaves running.
  Processes left = LivingNamed(name);
  if (!left.empty() && !left.front().Kill()) throw Failed(name + ": cannot stop: " + strerror(errno));
  left = WaitForEnd(LivingNamed(name));
  if (!left.empty()) throw Failed("still running: " + Shown(left.front()) + " of " + IdsOf(left));
  if (!fault.empty()) throw Failed(fault);
  Report(name, "stopped", before, terminal);
}

}  // namespace

Command SvcCommands() {
  auto const name = std::make_shared<std::string>();
  auto const services = [](std::string const&) {
    SvcManager manager;
    std::vector<std::string> names;
    for (unsigned long i = 0; i < manager.GetSvcCount(); i++) names.push_back(manager.GetSvcByIndex(i)->GetName());
    return names;
  };
  Options const named = {Argument("NAME", name.get(), "Name of the service").Required().Filled().Suggesting(services)};
  char const* const started =
      "Prints the process id. Exit code 1 if the script fails, or the process does not exist when it returns. With "
      "--json the script's output goes to standard error.";
  return Family(
      "svc", "Services with an init script",
      "A service is a script in /etc/init.d; if there is none, in /etc/rc.d and /usr/local/etc/rc.d. Its name is the "
      "script's, without a leading \"rc.\" and without the last dot and what follows. It counts as running if a "
      "process with that name runs. Names over 15 characters never match.",
      {"zelctl svc list", "zelctl svc status zelsrv", "zelctl svc start zelsrv", "zelctl svc stop zelsrv",
       "zelctl svc restart zelsrv"},
      {{"list",
        "List all services",
        List,
        {},
        "Run levels are not examined, so \"automatic\" is unknown for most services."},
       {"status", "Show one service, with its systemd state if there is one", On(name, Status), named,
        "Also shows services known only to systemd; the other commands do not act on them. Exit code 1 if the service "
        "does not exist."},
       {"start", "Run the script with \"start\"", On(name, Start), named, started},
       {"stop", "Run the script with \"stop\"; kill the process if it still runs", On(name, Stop), named,
        "Prints the ids of the processes that ended. If a process still has the name when the script returns, the "
        "first one is killed immediately (SIGTERM, then SIGKILL). Does nothing if process 1 or zelctl itself has that "
        "name. Exit code 1 if the script fails, or a process with the name is left after two seconds."},
       {"restart", "Run the script with \"restart\" if the service is running", On(name, Restart), named, started}});
}
