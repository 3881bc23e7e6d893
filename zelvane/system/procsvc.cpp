#include "zelvane/system/procsvc.h"

#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/system/proc.h"
#include "zelvane/system/proc_internal.h"
#include "zelvane/system/svc.h"

using zelvane::internal::FindProcess;
using zelvane::internal::Guard;
using zelvane::internal::ListProcesses;

namespace {

constexpr long kNoLimit = -1;
constexpr unsigned long kKillPause = 200;  // milliseconds

SvcManager* Manager(void* handle) { return static_cast<SvcManager*>(handle); }

// Returns the result of `action` for the service; false if there is none.
template <class Action>
bool WithService(void* manager, char const* name, Action&& action) {
  if (manager == nullptr || name == nullptr) return false;
  return Guard(false, [&] {
    SvcClass* const service = Manager(manager)->GetSvcByName(name);
    return service != nullptr && action(*service);
  });
}

}  // namespace

void* OpenSvcManager(void) {
  return Guard<void*>(nullptr, []() -> void* {
    auto manager = std::make_unique<SvcManager>();
    return manager->Update() ? manager.release() : nullptr;
  });
}

bool CloseSvcManager(void* manager) {
  delete Manager(manager);
  return manager != nullptr;
}

bool GetSvcStatus(void* manager, char const* name, int* running, int* automatic) {
  return WithService(manager, name, [&](SvcClass const& service) {
    if (running != nullptr) *running = service.IsRunning() ? 1 : 0;
    if (automatic != nullptr) *automatic = service.GetAutomatic() ? 1 : 0;
    return true;
  });
}

bool SvcStart(void* manager, char const* name) {
  return WithService(manager, name, [](SvcClass& service) { return service.Start(kNoLimit); });
}

bool SvcStop(void* manager, char const* name) {
  return WithService(manager, name, [](SvcClass& service) { return service.Stop(kNoLimit); });
}

bool SvcRestart(void* manager, char const* name) {
  return WithService(manager, name, [](SvcClass& service) { return service.Restart(kNoLimit, kNoLimit); });
}

bool SetSvcAuto(void* manager, char const* name, int automatic) {
  return WithService(manager, name, [&](SvcClass& service) { return service.SetAutomatic(automatic != 0); });
}

bool GetProcStatus(char const* name, int* running) {
  if (name == nullptr) return false;
  return Guard(false, [&] {
    std::vector<ProcClass> processes;
    ListProcesses(processes);  // without `ps` nothing counts as running
    int const found = FindProcess(processes, name) != nullptr ? 1 : 0;
    if (running != nullptr) *running = found;
    return true;
  });
}

bool KillProc(char const* name) {
  if (name == nullptr) return false;
  return Guard(false, [&] {
    ProcManager processes;
    ProcClass* const process = processes.GetProcByName(name);
    if (process == nullptr) return false;
    bool const killed = process->Kill();
    Delay(kKillPause);
    return killed;
  });
}

bool CreateNewProc(char const* command, long timeout) {
  return command != nullptr && Guard(false, [&] { return ProcManager().CreateNewAndWait(command, timeout); });
}

bool GetProcAuto(char const*, int*) { return false; }

bool SetProcAuto(char const*, int) { return false; }

bool AlreadyRunning(void) {
  return Guard(false, [] {
    ProcManager processes;
    auto const self = static_cast<unsigned long>(getpid());
    ProcClass* const own = processes.GetProcByPID(self);
    if (own == nullptr) return false;
    std::string const name = own->GetName();
    std::string const fileName = own->GetFileName();
    if (name.empty()) return false;
    unsigned long const count = processes.GetProcCount();
    for (unsigned long i = 0; i < count; i++) {
      ProcClass* const other = processes.GetProcByIndex(i);
      if (other == nullptr || other->GetPID() == self) continue;
      if (other->GetFileName() == fileName || other->GetName() == name) return true;
    }
    return false;
  });
}
