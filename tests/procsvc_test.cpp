#include "zelvane/system/procsvc.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/child.h"
#include "support/processes.h"
#include "support/scratch.h"
#include "support/services.h"
#include "zelvane/system/proc.h"

using test::NoChild, test::Scratch, test::Services, test::Sleeper, test::UniqueName;

namespace {

// An int between two others: only the one in the middle may change.
struct Flag {
  int before = 7, value = 7, after = 7;
  bool Is(int expected) const { return before == 7 && value == expected && after == 7; }
};

TEST(SvcHandle, NullAndUnknown) {
  Services services;
  services.Add("known");
  void* const handle = &services;
  std::pair<void*, char const*> const cases[] = {{nullptr, "known"}, {handle, nullptr}, {nullptr, nullptr},
                                                 {handle, "other"},  {handle, ""},      {handle, "KNOWN"}};
  for (auto const& [h, name] : cases) {
    Flag running, automatic;
    EXPECT_FALSE(GetSvcStatus(h, name, &running.value, &automatic.value)) << (name ? name : "null");
    EXPECT_TRUE(running.Is(7) && automatic.Is(7)) << (name ? name : "null");
    EXPECT_FALSE(SvcStart(h, name) || SvcStop(h, name) || SvcRestart(h, name) || SetSvcAuto(h, name, 1))
        << (name ? name : "null");
  }
  void* const machine = OpenSvcManager();  // whatever it has
  EXPECT_EQ(CloseSvcManager(machine), machine != nullptr);
  EXPECT_FALSE(CloseSvcManager(nullptr) || services.scratch.Exists("log"));
}

TEST(SvcHandle, StatusStartRestartStop) {
  Services services;
  std::string const name = UniqueName();
  char const* const n = name.c_str();
  services.Add(name);
  auto const status = [&](int running, int automatic) {
    Flag r, a;
    return GetSvcStatus(&services, n, &r.value, &a.value) && r.Is(running) && a.Is(automatic) &&
           GetSvcStatus(&services, n, nullptr, nullptr);
  };
  EXPECT_TRUE(status(0, 0) && !SvcRestart(&services, n));
  Sleeper process(name);
  EXPECT_TRUE(status(0, 0));  // as it was when the services were read
  EXPECT_TRUE(SvcStart(&services, n) && status(1, 0) && SvcRestart(&services, n));
  for (int const flag : {1, 0, INT_MIN}) EXPECT_TRUE(SetSvcAuto(&services, n, flag) && status(1, flag != 0)) << flag;
  EXPECT_TRUE(SvcStop(&services, n) && status(0, 1) && process.EndingSignal() > 0);
  EXPECT_EQ(services.Log(), "start\nrestart\nstop\n");
}

TEST(ProcFunctions, StatusAndKillOfTheFirstOfThatName) {
  std::string const name = UniqueName();
  auto const status = [&](int running) {
    Flag flag;
    return GetProcStatus(("/sbin/" + name).c_str(), &flag.value) && flag.Is(running);
  };
  EXPECT_TRUE(status(0) && GetProcStatus(name.c_str(), nullptr) && !GetProcStatus(nullptr, nullptr));
  Sleeper first(name), second(name, true);
  EXPECT_FALSE(KillProc(nullptr) || KillProc((name + "x").c_str()));
  Sleeper& lower = first.Id() < second.Id() ? first : second;
  Sleeper& higher = first.Id() < second.Id() ? second : first;
  for (Sleeper* sleeper : {&lower, &higher}) {
    pid_t const id = sleeper->Id();
    test::TakeSignals();
    EXPECT_TRUE(status(1) && higher.IsAlive() && KillProc(("/sbin/" + name).c_str()));
    EXPECT_EQ(test::TakeSignals(), (std::vector<std::pair<pid_t, int>>{{id, SIGTERM}, {id, SIGKILL}}));
    EXPECT_GT(sleeper->EndingSignal(), 0);
  }
  EXPECT_TRUE(status(0));
}

// A user who may have no process more.
TEST(ProcFunctions, WhenNothingCanBeStarted) {
  Services services;
  services.Add("service");
  services.Update();
  chmod(services.scratch.Path().c_str(), 0755);
  EXPECT_TRUE(test::AsOrdinaryUser([&] {
    rlimit const none = {0, 0};
    Flag flag;
    return setrlimit(RLIMIT_NPROC, &none) == 0 && !CreateNewProc("true", -1) && !ProcManager().CreateNew("true", 0) &&
           !ProcManager().Update() && GetProcStatus("sh", &flag.value) && flag.Is(0) && !AlreadyRunning() &&
           !SvcStart(&services, "service") && !SvcStop(&services, "service") && NoChild();
  }));
}

TEST(ProcFunctions, CreateRunsACommandLineAndAutoDoesNothing) {
  Scratch const scratch;
  EXPECT_TRUE(!CreateNewProc(nullptr, -1) && NoChild());
  EXPECT_TRUE(CreateNewProc(("echo \"a  b\" >'" + scratch.Path("done") + "'").c_str(), 0));
  EXPECT_GT(waitpid(-1, nullptr, 0), 0);
  EXPECT_EQ(scratch.Read("done"), "a  b\n");
  Flag flag;
  EXPECT_FALSE(GetProcAuto("init", &flag.value) || SetProcAuto("init", 1) || !flag.Is(7));
}

// This program, started again under a name that nobody else has: what it finds is its exit status.
TEST(AlreadyRunning, Copies) {
  if (getenv("ZELVANE_TEST_ALREADY_RUNNING") != nullptr) _exit(AlreadyRunning() ? 1 : 0);
  Scratch const folder;
  std::string const name = UniqueName(), program = folder.Path(name);
  char self[PATH_MAX] = {};
  ASSERT_TRUE(readlink("/proc/self/exe", self, sizeof self - 1) > 0 && symlink(self, program.c_str()) == 0);
  std::string const command =
      "ZELVANE_TEST_ALREADY_RUNNING=1 exec '" + program + "' --gtest_brief=1 --gtest_filter=AlreadyRunning.Copies";
  auto const copy = [&] { return WEXITSTATUS(system(command.c_str())); };
  EXPECT_EQ(copy(), 0);
  Sleeper other(name);  // the same file name, elsewhere, with other arguments
  EXPECT_EQ(copy(), 1);
  kill(other.Id(), SIGKILL);
  EXPECT_EQ(copy(), 1);  // not waited for
  EXPECT_EQ(other.EndingSignal(), SIGKILL);
  EXPECT_EQ(copy(), 0);
}

}  // namespace
