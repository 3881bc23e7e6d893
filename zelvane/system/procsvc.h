// Services (svc.h) and processes (proc.h) for programs in any language. Those headers tell what a service and a process
// are known by, and what starting, stopping and killing them means; C++ programs can use them directly.
//
//   void* services = OpenSvcManager();
//   int running = 0;
//   if (GetSvcStatus(services, "upssrv", &running, NULL) && !running) SvcStart(services, "upssrv");
//   CloseSvcManager(services);
//
// A service handle is used by one thread at a time. The functions of processes look at the processes anew in every call
// and may be called from several threads. None throws; out of memory is the failing result.
#ifndef ZELVANE_SYSTEM_PROCSVC_H
#define ZELVANE_SYSTEM_PROCSVC_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "zelvane/export.h"

ZELVANE_C_BEGIN

// ---- Services: false for a null handle or name, and for a service that the handle does not know. ----

// Reads the services and returns their handle, to be given back to CloseSvcManager; C++ programs may use it as a
// SvcManager*. Null when no init script is found, and when memory runs out.
ZELVANE_API void* OpenSvcManager(void);

// Frees the handle. False only for null.
ZELVANE_API bool CloseSvcManager(void* manager);

// Stores 1 or 0 in `running` and `automatic`, either of which may be null: what the handle knows, from its opening and
// from the functions below. On false nothing is stored.
ZELVANE_API bool GetSvcStatus(void* manager, char const* name, int* running, int* automatic);

// SvcClass::Start, Stop and Restart: whether the service runs, is stopped, runs. They return when its script has.
ZELVANE_API bool SvcStart(void* manager, char const* name);
ZELVANE_API bool SvcStop(void* manager, char const* name);
ZELVANE_API bool SvcRestart(void* manager, char const* name);

// What GetSvcStatus gives for `automatic` from now on (any number but 0 counts as 1). In the handle only: nothing is
// changed in the system.
ZELVANE_API bool SetSvcAuto(void* manager, char const* name, int automatic);

// ---- Processes ----

// Stores 1 in `running` (unless it is null) if there is a process of that name, otherwise 0. Also stores 0 when `ps`
// cannot be run. True. False with nothing stored for a null name, and when memory runs out.
//
// The processes include the `ps` that lists them and, with most shells, the "sh" that started it. So the answer for
// "ps" is always 1, and for "sh" nearly always.
ZELVANE_API bool GetProcStatus(char const* name, int* running);

// Kills the first process of that name (SIGTERM and at once SIGKILL) and waits 200 ms. Whether the signal could be
// sent. False at once when there is no such process, and for a null name. The process is found and killed in one go,
// but what bears the name is not checked further: it may be the caller itself.
ZELVANE_API bool KillProc(char const* name);

// Starts a command line through /bin/sh in a session of its own, and waits for nothing: the time-out is not used. True
// when the process exists; what becomes of the command is not learned. False for null and when there could be no
// process, AND IN THE CHILD when the shell cannot be executed: see ProcManager::CreateNew. The host may wait for the
// child, which stays a zombie until then.
ZELVANE_API bool CreateNewProc(char const* command, long timeout);

// Always false, with nothing stored or changed: processes have no automatic start.
ZELVANE_API bool GetProcAuto(char const* name, int* automatic);
ZELVANE_API bool SetProcAuto(char const* name, int automatic);

// Whether another process has the command line of this one, or its command name (as `ps` shows it: 15 characters, so
// another program may have the same). Copies started with other arguments count. So do zombies, and children that this
// process has forked and that have not executed another program: ask before forking. A child that another thread is
// starting at that moment counts too. False when the processes cannot be read, and when memory runs out. Nothing is
// locked: of two copies that start together, each may see the other.
ZELVANE_API bool AlreadyRunning(void);

ZELVANE_C_END

#endif
