/// @file
/// Services (svc.h) and processes (proc.h) for programs in any language. Those headers say how a service and a process
/// are identified, and what starting, stopping and killing them means. C++ programs can use them directly.
///
///     void* services = OpenSvcManager();
///     int running = 0;
///     if (GetSvcStatus(services, "upssrv", &running, NULL) && !running) SvcStart(services, "upssrv");
///     CloseSvcManager(services);
///
/// One thread at a time may use a service handle. Every call of a process function reads the processes again; several
/// threads may call these functions. None throws: when memory runs out, a function returns its failure value.
#ifndef ZELVANE_SYSTEM_PROCSVC_H
#define ZELVANE_SYSTEM_PROCSVC_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "zelvane/export.h"

ZELVANE_C_BEGIN

/// @name Services
///
/// All functions return false for a null handle or name, and for a service that the handle does not have.
/// @{

/// Reads the services and returns their handle; free it with CloseSvcManager. C++ programs can use it as a SvcManager*.
/// Returns null if there is no init script, or when memory runs out.
ZELVANE_API void* OpenSvcManager(void);

/// Frees the handle. Returns false only for null.
ZELVANE_API bool CloseSvcManager(void* manager);

/// Stores 1 or 0 in `running` and `automatic`; either can be null. The values are those in the handle, from its opening
/// and from the functions below. On false nothing is stored.
ZELVANE_API bool GetSvcStatus(void* manager, char const* name, int* running, int* automatic);

/// Same as SvcClass::Start, Stop and Restart. They return when the script has returned.
ZELVANE_API bool SvcStart(void* manager, char const* name);
ZELVANE_API bool SvcStop(void* manager, char const* name);
ZELVANE_API bool SvcRestart(void* manager, char const* name);

/// Sets the value that GetSvcStatus returns for `automatic` (any number except 0 counts as 1). This changes only the
/// handle, nothing in the system.
ZELVANE_API bool SetSvcAuto(void* manager, char const* name, int automatic);
/// @}

/// @name Processes
/// @{

/// Stores 1 in `running` (unless it is null) if there is a process with that name, otherwise 0. Also stores 0 if `ps`
/// cannot be run. Returns true. Returns false and stores nothing for a null name, or when memory runs out.
///
/// The processes include the `ps` that lists them and, with most shells, the "sh" that started it. So the answer for
/// "ps" is always 1, and for "sh" nearly always.
ZELVANE_API bool GetProcStatus(char const* name, int* running);

/// Kills the first process with that name (SIGTERM, then SIGKILL without a pause) and waits 200 ms. Returns whether the
/// signal could be sent. Returns false immediately if there is no such process, or for a null name. The process is
/// found and killed in one call, but only its name is checked: it can be the caller itself.
ZELVANE_API bool KillProc(char const* name);

/// Starts a command line through /bin/sh in a session of its own. Waits for nothing: the time-out is not used. Returns
/// true once the process exists; it does not learn how the command ends. Returns false for null, if no process could be
/// created, AND IN THE CHILD if the shell cannot be executed: see ProcManager::CreateNew. The child stays a zombie
/// until the host waits for it.
ZELVANE_API bool CreateNewProc(char const* command, long timeout);

/// Always returns false; nothing is stored or changed. Processes have no automatic start.
ZELVANE_API bool GetProcAuto(char const* name, int* automatic);
ZELVANE_API bool SetProcAuto(char const* name, int automatic);

/// Returns whether another process has the same command line as this one, or the same name (proc.h; another program can
/// have it, too). Copies started with other arguments count. So do zombies, and forked children of this process that
/// have not executed another program: call this before forking. A child that another thread is just starting counts
/// too. Returns false if the processes cannot be read, or when memory runs out. Nothing is locked: two copies that
/// start together can each see the other.
ZELVANE_API bool AlreadyRunning(void);
/// @}

ZELVANE_C_END

#endif
