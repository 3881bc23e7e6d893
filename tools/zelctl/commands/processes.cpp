#include "commands/processes.h"

#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <set>

#include "terminal/latin1.h"
#include "zelvane/core/fileutils.h"

namespace {

constexpr std::size_t kLongestName = 15;

}  // namespace

Processes AllProcesses() {
  ProcManager table;
  if (!table.Update()) throw Failed("cannot run `ps` to list processes");
  Processes processes;
  unsigned long const count = table.GetProcCount();
  processes.reserve(count);
  for (unsigned long i = 0; i < count; i++) processes.push_back(*table.GetProcByIndex(i));
  return processes;
}

Processes ProcessesNamed(std::string const& name) {
  std::string const wanted = ExtractFileName(name);
  // The shell that runs `ps`, and `ps` itself. A parent is listed before its children.
  std::set<unsigned long> own = {static_cast<unsigned long>(getpid())};
  Processes named;
  for (ProcClass& process : AllProcesses()) {
    if (own.count(process.GetPPID()) != 0)
      own.insert(process.GetPID());
    else if (process.GetName() == wanted)
      named.push_back(process);
  }
  return named;
}

bool HasEnded(ProcClass& process) {
  // "PID (NAME) STATE ...". The name can contain any character.
  std::string stat;
  std::getline(std::ifstream("/proc/" + std::to_string(process.GetPID()) + "/stat"), stat, '\0');
  std::size_t const name = stat.rfind(") ");
  return name == std::string::npos || strchr("ZX", stat[name + 2]) != nullptr;
}

bool IsSpared(ProcClass& process) {
  return process.GetPID() == 1 || process.GetPID() == static_cast<unsigned long>(getpid());
}

Processes LivingNamed(std::string const& name) {
  Processes named = ProcessesNamed(name);
  named.erase(std::remove_if(named.begin(), named.end(), HasEnded), named.end());
  return named;
}

std::string NobodyNamed(std::string const& name) {
  std::string const wanted = ExtractFileName(name);
  std::string text = "no process named " + (wanted.empty() ? name : wanted);
  if (wanted.size() <= kLongestName) return text;
  return text + "; names have at most 15 characters: " + wanted.substr(0, kLongestName);
}

std::string Shown(ProcClass& process) {
  return "process " + std::to_string(process.GetPID()) + " (" + Printable(process.GetName()) + ")";
}

std::string IdsOf(Processes processes) {
  std::string ids;
  for (ProcClass& process : processes) ids += (ids.empty() ? "" : ", ") + std::to_string(process.GetPID());
  return ids;
}

Json JsonIdsOf(Processes processes) {
  Json::List ids;
  for (ProcClass& process : processes) ids.push_back(process.GetPID());
  return ids;
}

Processes WaitForEnd(Processes processes) {
  constexpr int kLooks = 20;
  constexpr unsigned long kPause = 100;  // milliseconds
  for (int i = 0; i < kLooks && !processes.empty(); i++) {
    if (i > 0) Delay(kPause);
    Processes left;
    for (ProcClass& now : AllProcesses()) {
      bool const same = std::any_of(processes.begin(), processes.end(), [&now](ProcClass& before) {
        return now.GetPID() == before.GetPID() && now.GetName() == before.GetName();
      });
      if (same && !HasEnded(now)) left.push_back(now);
    }
    processes = std::move(left);
  }
  return processes;
}
