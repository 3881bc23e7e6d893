// Processes, services and facts about the system.
#include <memory>
#include <vector>

#include "binding.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/system/proc.h"
#include "zelvane/system/procsvc.h"
#include "zelvane/system/svc.h"

namespace {

std::vector<ProcClass> Processes() {
  return Unlocked([] {
    ProcManager table;
    Must("", "ps cannot be run", [&] { return table.Update(); });
    std::vector<ProcClass> processes;
    for (unsigned long i = 0, count = table.GetProcCount(); i < count; i++)
      processes.push_back(*table.GetProcByIndex(i));
    return processes;
  });
}

std::vector<SvcClass> Services() {
  return Unlocked([] {
    SvcManager table;
    table.Update();
    std::vector<SvcClass> services;
    for (unsigned long i = 0, count = table.GetSvcCount(); i < count; i++) services.push_back(*table.GetSvcByIndex(i));
    return services;
  });
}

SvcClass FindService(Text const& name) {
  for (SvcClass const& service : Services()) {
    if (service.GetName() == name.bytes) return service;
  }
  PyErr_SetObject(PyExc_KeyError, py::cast(name).ptr());
  throw py::error_already_set();
}

// Without Python's lock, on a copy: a script may take minutes.
template <bool (SvcClass::*Operation)(long)>
void Run(SvcClass& service) {
  SvcClass copy = service;
  Unlocked([&] {
    if (!(copy.*Operation)(-1))
      throw Failure(0, copy.GetFileName(), "the script has not changed the state of the service");
  });
  service = copy;
}

void RequireSignal(bool sent) {
  if (sent) return;
  PyErr_SetFromErrno(PyExc_OSError);
  throw py::error_already_set();
}

}  // namespace

void BindSystem(py::module_& module) {
  py::class_<ProcClass>(module, "Process",
                        "A process from the list of ps. It may have ended, and another one may have its number.")
      .def_property_readonly("pid", On(&ProcClass::GetPID), "Its number.")
      .def_property_readonly("ppid", On(&ProcClass::GetPPID), "The number of its parent.")
      .def_property_readonly(
          "name", [](ProcClass& process) { return Text{process.GetName()}; },
          "The first 15 characters of the program's name.")
      .def_property_readonly(
          "command", [](ProcClass& process) { return Text{process.GetFileName()}; },
          "The command line, as far as ps shows it.")
      .def_property(
          "priority", On(&ProcClass::GetPriority),
          [](ProcClass& process, int level) {
            errno = EINVAL;
            RequireSignal(level >= 0 && level <= 3 && process.SetPriority(level));
          },
          "0 low, 1 normal, 2 high, 3 highest. OSError if it cannot be set.")
      .def(
          "kill",
          [](ProcClass& process) {
            errno = ESRCH;
            RequireSignal(process.Kill());
          },
          "Sends SIGTERM and immediately SIGKILL; OSError if SIGTERM cannot be sent.")
      .def("__repr__", [](ProcClass& process) {
        return py::str("Process({}, {!r})").format(process.GetPID(), Text{process.GetName()});
      });
  module.def("processes", &Processes, "The processes of this machine, as ps lists them.");
  module.def(
      "already_running", [] { return Unlocked(AlreadyRunning); },
      "Whether another process has the command line or name of this one.");

  py::class_<SvcClass>(module, "Service",
                       "A service with an init script. It is running when a process has its name.\n\n"
                       "    zelvane.Service(\"upssrv\").restart()")
      .def(py::init(&FindService), "name"_a, "KeyError for an unknown service.")
      .def_property_readonly(
          "name", [](SvcClass const& service) { return Text{service.GetName()}; }, "Its name.")
      .def_property_readonly(
          "path", [](SvcClass const& service) { return Path{service.GetFileName()}; }, "Its script.")
      .def_property_readonly(
          "description", [](SvcClass const& service) { return Text{service.GetDescription()}; },
          "From the script, \"\" for none.")
      .def_property_readonly("running", On(&SvcClass::IsRunning),
                             "The state at look-up, or after start(), stop() or restart().")
      .def_property_readonly(
          "automatic", [](SvcClass const& service) { return service.GetAutomatic(); },
          "Whether the library sees that it starts with the system.")
      .def("start", &Run<&SvcClass::Start>, "Runs the script. Error if no process has its name afterwards.")
      .def("stop", &Run<&SvcClass::Stop>, "Runs the script, and kills remaining processes. Error if that fails.")
      .def(
          "restart",
          [](SvcClass& service) {
            SvcClass copy = service;
            Unlocked([&] {
              if (!copy.Restart(-1, -1)) throw Failure(0, copy.GetFileName(), "the service is not running");
            });
          },
          "Runs the script of a running service. Error if it is not running before or afterwards.")
      .def("__repr__", [](SvcClass const& service) {
        return py::str("Service({!r}, running={})").format(Text{service.GetName()}, service.IsRunning());
      });
  module.def("services", &Services, "The services of this machine that have an init script.");
  module.def(
      "os_version", [] { return Text{Unlocked(GetOSVersion)}; },
      "\"Debian GNU/Linux 12 - Linux 6.1.0 in x86_64\": distribution, kernel, machine.");
}
