// Processes for functions that must distinguish "no such process" from "out of memory": in ProcManager, which does not
// throw, both are an empty table.
#ifndef ZELVANE_SYSTEM_PROC_INTERNAL_H
#define ZELVANE_SYSTEM_PROC_INTERNAL_H

#include <vector>

#include "zelvane/system/proc.h"

namespace zelvane::internal {

// Appends the processes that `ps` lists. Returns false if `ps` cannot be run. Throws std::bad_alloc when memory runs
// out; the table then has only some of them.
bool ListProcesses(std::vector<ProcClass>& table);

// ProcManager::GetProcByName in that table. Throws when memory runs out.
ProcClass* FindProcess(std::vector<ProcClass>& table, char const* name);

}  // namespace zelvane::internal

#endif
