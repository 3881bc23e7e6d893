// The processes of this machine as the commands on them see them.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_PROCESSES_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_PROCESSES_H

#include <string>
#include <vector>

#include "terminal/terminal.h"
#include "zelvane/system/proc.h"

using Processes = std::vector<ProcClass>;

// Those of this moment, in the order of `ps`. Throws Failed when it cannot be run.
Processes AllProcesses();

// Those of that name, which may be a path; without the ones that this command has started to look at the others. The
// first is the one that the programs find.
Processes ProcessesNamed(std::string const& name);

// This command itself, and process 1, without which nothing runs: they are never killed.
bool IsSpared(ProcClass& process);

// It has ended, but its parent has not waited for it: it still has its name and id, and no signal reaches it.
bool HasEnded(ProcClass& process);

// Those of that name that have not ended.
Processes LivingNamed(std::string const& name);

// What to say when no process has the name.
std::string NobodyNamed(std::string const& name);

// "process 12 (upssrv)"
std::string Shown(ProcClass& process);
// "12, 13"
std::string IdsOf(Processes processes);
Json JsonIdsOf(Processes processes);

// Gives killed processes up to two seconds to go; those that are still there and have not ended.
Processes WaitForEnd(Processes processes);

#endif
