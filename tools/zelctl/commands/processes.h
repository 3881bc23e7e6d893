// The processes of this machine.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_PROCESSES_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_PROCESSES_H

#include <string>
#include <vector>

#include "terminal/terminal.h"
#include "zelvane/system/proc.h"

using Processes = std::vector<ProcClass>;

// The current processes, in the order of `ps`. Throws Failed if `ps` cannot be run.
Processes AllProcesses();

// The processes with that name, which may be a path, without those that this command started to list processes. The
// first one is the one that the library finds.
Processes ProcessesNamed(std::string const& name);

// True for this command itself and for process 1, without which nothing runs. They are never killed.
bool IsSpared(ProcClass& process);

// True if the process has ended but its parent has not waited for it. It keeps its name and id, and no signal reaches
// it.
bool HasEnded(ProcClass& process);

// The processes with that name that have not ended.
Processes LivingNamed(std::string const& name);

// The message if no process has the name.
std::string NobodyNamed(std::string const& name);

// "process 12 (upssrv)"
std::string Shown(ProcClass& process);
// "12, 13"
std::string IdsOf(Processes processes);
Json JsonIdsOf(Processes processes);

// Waits up to two seconds for killed processes to end. Returns those that remain.
Processes WaitForEnd(Processes processes);

#endif
