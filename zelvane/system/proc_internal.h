// The processes for functions that must tell "no such process" from "no memory to look": to ProcManager, which throws
// nothing, both are an empty table.
#ifndef ZELVANE_SYSTEM_PROC_INTERNAL_H
#define ZELVANE_SYSTEM_PROC_INTERNAL_H

#include <vector>

#include "zelvane/system/proc.h"

namespace zelvane::internal {

// Appends the processes that `ps` lists. False when `ps` cannot be run. Throws std::bad_alloc when memory runs out; the
// table then holds a part of them.
bool ListProcesses(std::vector<ProcClass>& table);

// ProcManager::GetProcByName, in that table; throws when memory runs out.
ProcClass* FindProcess(std::vector<ProcClass>& table, char const* name);

}  // namespace zelvane::internal

#endif
