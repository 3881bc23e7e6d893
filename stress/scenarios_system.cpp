#include <sys/stat.h>
#include <sys/wait.h>

#include "stress/scenarios.h"
#include "support/processes.h"
#include "zelvane/zelvane.h"

namespace stress {
namespace {

constexpr char kPs[] =
    "  PID  PPID  NI COMMAND         COMMAND\n"
    "    1     0   0 init            /sbin/init\n"
    "   77     1 -20 upssrv          /opt/upssrv -d\n";

// The services of the directory init.d.
class Services : public SvcManager {
 public:
  explicit Services(World& world) : folder_(world.Path("init.d/")) {}
  bool GetDaemonInfo(std::string const& dir) override {
    return dir == "/etc/init.d/" && SvcManager::GetDaemonInfo(folder_);
  }

 private:
  std::string const folder_;
};

}  // namespace

Table SystemScenarios() {
  Files const ps = {{"only/output", kPs}};
  return {
      {"GetProcStatus", ps,
       [](World& w) {
         int running = -1;
         bool const done = GetProcStatus("upssrv", &running);
         w.Note("%d", running);
         return done;
       },
       kNeedsPs | kSlow},
      {"AlreadyRunning", ps, [](World&) { return !AlreadyRunning(); }, kAnyNotes | kSlow},
      {"KillProc of nobody", ps, [](World&) { return !KillProc("nobody") && test::TakeSignals().empty(); },
       kAnyNotes | kSlow},
      {"CreateNewProc",
       {},
       [](World&) {
         bool const started = CreateNewProc(":", 0);
         while (waitpid(-1, nullptr, 0) > 0) {
         }
         return started;
       },
       kSlow},
      {"services",
       {{"only/output", kPs}, {"init.d/upssrv", "#!/bin/sh\n# description: ups\n:\n"}},
       [](World& w) {
         Services services(w);
         int running = -1, automatic = -1;
         if (!services.Update() || !GetSvcStatus(&services, "upssrv", &running, &automatic)) return false;
         w.Note("%d %d", running, automatic);
         return true;
       },
       kClass | kNeedsPs | kSlow},
      {"services, a survivor",
       {{"only/output", "4294967295 1 0 upssrv upssrv\n"}, {"init.d/upssrv", "#!/bin/sh\n:\n"}},
       [](World& w) {
         Services services(w);
         if (!services.Update()) return false;
         w.Note("%d", SvcStop(&services, "upssrv"));  // 0: nobody can kill it
         return true;
       },
       kClass | kNeedsPs | kSlow},
      {"services, started and stopped",
       {{"only/output", kPs}, {"init.d/upssrv", "#!/bin/sh\n:\n"}, {"init.d/absent", "#!/bin/sh\n:\n"}},
       [](World& w) {
         Services services(w);
         for (char const* script : {"init.d/upssrv", "init.d/absent"})
           if (chmod(w.Path(script), 0755) != 0) return false;
         return services.Update() && SvcStart(&services, "upssrv") && SvcRestart(&services, "upssrv") &&
                SvcStop(&services, "absent");
       },
       kClass | kAnyNotes | kSlow},
  };
}

}  // namespace stress
