// zelctl svc: the services of this machine that have an init script.
#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <algorithm>

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

constexpr char kNoScripts[] =
    "there is no init script on this machine: none in /etc/init.d, /etc/rc.d and /usr/local/etc/rc.d";

// The library looks at no run level; only scripts of this folder start by their being there.
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

// What `systemctl show` says of a property.
std::string Property(std::string const& answer, std::string const& name) {
  std::string const mark = "\n" + name + "=";
  std::size_t const at = answer.find(mark);
  if (at == std::string::npos) return "";
  std::size_t const begin = at + mark.size();
  return answer.substr(begin, answer.find('\n', begin) - begin);
}

// The unit of that name as systemd sees it, in words; "" when there is none, or no systemd.
std::string UnitOf(std::string const& name) {
  // Such names mean themselves, to the shell and to systemctl, which takes others as patterns or paths.
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
  if (service == nullptr && status.unit.empty()) throw Failed("no service is named " + name);
  Processes const processes = LivingNamed(name);
  status.running = !processes.empty();
  status.processes = IdsOf(processes);
  if (terminal.json)
    return terminal.PrintJson({{"name", ToUtf8(name)},
                               {"running", status.running},
                               {"processes", JsonIdsOf(processes)},
                               {"script", status.script},
                               {"automatic", status.automatic},
                               {"unit", status.unit},
                               {"description", ToUtf8(status.description)}});
  PrintRecord(
      {String<&Service::name>("name", "the service"), Answer<&Service::running>("running", "a process has that name"),
       String<&Service::processes>("processes", "their ids"), String<&Service::script>("script", "init script"),
       String<&Service::automatic>("automatic", "started with the computer, by the script"),
       String<&Service::unit>("unit", "the service of that name in systemd"),
       String<&Service::description>("description", "the script's own")},
      &status, terminal);
}

// ---- Starting and stopping ----

SvcClass& Find(SvcManager& manager, std::string const& name) {
  if (manager.GetSvcCount() == 0) throw Failed(kNoScripts);
  SvcClass* const service = manager.GetSvcByName(name);
  if (service == nullptr) throw Failed("no init script is named " + name);
  return *service;
}

// Why a script was not run, or else `otherwise`.
std::string WhyNot(SvcClass const& service, std::string const& otherwise) {
  std::string const script = service.GetFileName();
  struct stat file = {};
  if (stat(script.c_str(), &file) != 0) return script + ": " + strerror(errno);
  if ((file.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) == 0) return script + ": nobody may execute it";
  return otherwise;
}

// `processes` are those that run now, or did so before.
void Report(std::string const& name, char const* action, Processes const& processes, Terminal const& terminal) {
  if (terminal.json)
    return terminal.PrintJson({{"name", ToUtf8(name)}, {"action", action}, {"processes", JsonIdsOf(processes)}});
  char const* const noun = processes.size() > 1 ? "processes " : "process ";
  terminal.PrintText(name + " " + action + ": " +
                     (processes.empty() ? "no process of that name" : noun + IdsOf(processes)));
}

// After a start or restart. The library takes a process that has ended, but was not waited for, for a running one.
void RequireRunning(SvcClass const& service, bool runs, char const* action, Terminal const& terminal) {
  std::string const name = service.GetName();
  Processes const processes = runs ? LivingNamed(name) : Processes();
  if (processes.empty()) throw Failed(WhyNot(service, service.GetFileName() + " has run, but " + NobodyNamed(name)));
  Report(name, action, processes, terminal);
}

void Start(std::string const& name, Terminal const& terminal) {
  SvcManager manager;
  SvcClass& service = Find(manager, name);
  RequireRunning(service, service.Start(-1), "started", terminal);
}

void Restart(std::string const& name, Terminal const& terminal) {
  SvcManager manager;
  SvcClass& service = Find(manager, name);
  if (!service.IsRunning()) throw Failed(name + " does not run, so it is not restarted: " + NobodyNamed(name));
  RequireRunning(service, service.Restart(-1, -1), "restarted", terminal);
}

void Stop(std::string const& name, Terminal const& terminal) {
  SvcManager manager;
  SvcClass& service = Find(manager, name);
  // The library would kill the first of them when the script does not end it.
  Processes before = LivingNamed(name);
  if (std::any_of(before.begin(), before.end(), IsSpared))
    throw Failed("nothing stopped: process 1 or zelctl itself is named " + name);
  if (!service.Stop(-1)) throw Failed(WhyNot(service, name + ": cannot be stopped: " + strerror(errno)));
  Processes left = WaitForEnd(LivingNamed(name));
  if (!left.empty()) throw Failed("still named " + name + ": " + Shown(left.front()) + " of " + IdsOf(left));
  Report(name, "stopped", before, terminal);
}

}  // namespace

void AddSvc(CLI::App& app, Terminal& terminal) {
  CLI::App* const family = app.add_subcommand("svc", "The services of this computer that have an init script");
  family->require_subcommand(1);
  family->footer(
      "A service is a script in /etc/init.d, or, if there is none, in /etc/rc.d and /usr/local/etc/rc.d. It bears the\n"
      "script's name without a leading \"rc.\" and without what follows the last dot, and runs when a process of that\n"
      "name runs: one whose program is called otherwise, or by more than 15 characters, never does.\n\n"
      "  zelctl svc status zelsrv\n"
      "  zelctl svc restart zelsrv");
  CLI::App* const list = AddCommand(family, terminal, "list", "All services");
  list->footer("Whether the run levels start a service is not looked at: \"automatic\" is unknown for most.");
  list->callback([&terminal] { List(terminal); });

  auto const name = std::make_shared<std::string>();
  auto const add = [&](char const* word, char const* description, void (*act)(std::string const&, Terminal const&),
                       char const* footer) {
    CLI::App* const command = AddCommand(family, terminal, word, description);
    command->add_option("NAME", *name, "Name of the service")->required()->type_name("");
    command->footer(footer);
    command->callback([name, act, &terminal] { act(*name, terminal); });
  };
  add("status", "One service, and what systemd says of it, if that manages this computer", Status,
      "Services that only systemd knows are shown, too; the other commands do not act on them.\nExit code 1 when there "
      "is "
      "no such service.");
  add("start", "Run the script with \"start\"", Start,
      "Reports the id of the service's process. Exit code 1 when there is none as soon as the script has returned.");
  add("stop", "Run the script with \"stop\", and kill the process if it is still there", Stop,
      "Reports the ids of the processes that have ended. The first process that still has the name when the script "
      "has\n"
      "returned is killed, at once: SIGTERM and SIGKILL. Nothing is done when process 1 or zelctl itself has that "
      "name.\n"
      "Exit code 1 when a process of that name is left after two seconds.");
  add("restart", "Run the script with \"restart\", if the service runs", Restart,
      "Reports the id of the service's process. Exit code 1 when there is none as soon as the script has returned.");
}
