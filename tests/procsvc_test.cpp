#include "zelvane/system/procsvc.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <optional>

#include "support/processes.h"
#include "support/scratch.h"
#include "support/services.h"

using std::chrono::steady_clock;
using test::Eventually;
using test::NoChild;
using test::Scratch;
using test::Services;
using test::Sleeper;
using test::UniqueName;

namespace {

void* Handle(SvcManager& services) { return &services; }

// An int between two others: only the one in the middle may change.
struct Flag {
  int before = 7;
  int value = 7;
  int after = 7;
  bool Is(int expected) const { return before == 7 && value == expected && after == 7; }
};

TEST(SvcHandle, NullAndUnknown) {
  Services services;
  services.Add("known");
  void* const handle = Handle(services);
  struct {
    void* handle;
    char const* name;
  } const cases[] = {{nullptr, "known"}, {handle, nullptr}, {nullptr, nullptr},
                     {handle, "other"},  {handle, ""},      {handle, "KNOWN"}};
  for (auto const& c : cases) {
    char const* const shown = c.name == nullptr ? "(null)" : c.name;
    Flag running;
    Flag automatic;
    EXPECT_FALSE(GetSvcStatus(c.handle, c.name, &running.value, &automatic.value)) << shown;
    EXPECT_TRUE(running.Is(7) && automatic.Is(7)) << shown;
    EXPECT_FALSE(SvcStart(c.handle, c.name)) << shown;
    EXPECT_FALSE(SvcStop(c.handle, c.name)) << shown;
    EXPECT_FALSE(SvcRestart(c.handle, c.name)) << shown;
    EXPECT_FALSE(SetSvcAuto(c.handle, c.name, 1)) << shown;
  }
  EXPECT_FALSE(CloseSvcManager(nullptr));
  EXPECT_FALSE(services.scratch.Exists("log"));
}

TEST(SvcHandle, StatusStartRestartStop) {
  Services services;
  std::string const name = UniqueName();
  services.Add(name);
  void* const handle = Handle(services);
  auto const status = [&](int running, int automatic) {
    Flag r;
    Flag a;
    return GetSvcStatus(handle, name.c_str(), &r.value, &a.value) && r.Is(running) && a.Is(automatic);
  };
  EXPECT_TRUE(status(0, 0));
  EXPECT_TRUE(GetSvcStatus(handle, name.c_str(), nullptr, nullptr));
  EXPECT_FALSE(SvcRestart(handle, name.c_str()));
  Sleeper process(name);
  EXPECT_TRUE(status(0, 0));  // as it was when the services were read
  EXPECT_TRUE(SvcStart(handle, name.c_str()));
  EXPECT_TRUE(status(1, 0));
  EXPECT_TRUE(SvcRestart(handle, name.c_str()));
  for (int const flag : {1, 0, 2, INT_MIN}) {
    EXPECT_TRUE(SetSvcAuto(handle, name.c_str(), flag)) << flag;
    EXPECT_TRUE(status(1, flag != 0)) << flag;
  }
  EXPECT_TRUE(SvcStop(handle, name.c_str()));
  EXPECT_TRUE(status(0, 1));
  EXPECT_GT(process.EndingSignal(), 0);
  Flag alone;
  EXPECT_TRUE(GetSvcStatus(handle, name.c_str(), nullptr, &alone.value));
  EXPECT_TRUE(alone.Is(1));
  EXPECT_TRUE(GetSvcStatus(handle, name.c_str(), &alone.value, nullptr));
  EXPECT_TRUE(alone.Is(0));
  EXPECT_EQ(services.Log(), "start\nrestart\nstop\n");
}

TEST(SvcHandle, CloseDestroys) {
  struct Told : SvcManager {
    ~Told() override { *destroyed = true; }
    bool* destroyed = nullptr;
  };
  bool destroyed = false;
  auto* const services = new Told;
  services->destroyed = &destroyed;
  EXPECT_TRUE(CloseSvcManager(Handle(*services)));
  EXPECT_TRUE(destroyed);
}

TEST(SvcHandle, OpenReadsTheSystemsFolders) {
  int const descriptors = test::OpenDescriptors();
  auto const result = test::InChildWithEmptyFolders([] {
    EXPECT_EQ(OpenSvcManager(), nullptr);
    mkdir("/etc/init.d", 0755);
    mkdir("/etc/init.d/folder", 0755);
    EXPECT_EQ(OpenSvcManager(), nullptr);
    mkdir("/etc/rc.d", 0755);
    std::string const name = UniqueName();
    test::WriteFile("/etc/rc.d/rc." + name, "");
    void* const handle = OpenSvcManager();
    Flag running;
    EXPECT_TRUE(GetSvcStatus(handle, name.c_str(), &running.value, nullptr));
    EXPECT_TRUE(running.Is(0));
    EXPECT_TRUE(CloseSvcManager(handle));
    return !testing::Test::HasFailure();
  });
  if (!result) GTEST_SKIP() << "no child with folders of its own on this system";
  EXPECT_TRUE(*result);
  // Whatever this machine has.
  void* const handle = OpenSvcManager();
  EXPECT_EQ(CloseSvcManager(handle), handle != nullptr);
  EXPECT_EQ(test::OpenDescriptors(), descriptors);
  EXPECT_TRUE(NoChild());
}

TEST(ProcStatus, RunningOrNot) {
  std::string const name = UniqueName();
  Flag flag;
  EXPECT_FALSE(GetProcStatus(nullptr, &flag.value));
  EXPECT_TRUE(flag.Is(7));
  EXPECT_TRUE(GetProcStatus(name.c_str(), &flag.value));
  EXPECT_TRUE(flag.Is(0));
  {
    Sleeper const process(name);
    EXPECT_TRUE(GetProcStatus(("/usr/sbin/" + name).c_str(), &flag.value));
    EXPECT_TRUE(flag.Is(1));
    EXPECT_TRUE(GetProcStatus(name.c_str(), nullptr));
    test::FakePs const ps("", 127);
    EXPECT_TRUE(GetProcStatus(name.c_str(), &flag.value));
    EXPECT_TRUE(flag.Is(0));
  }
  EXPECT_TRUE(GetProcStatus(name.c_str(), &flag.value));
  EXPECT_TRUE(flag.Is(0));
  EXPECT_TRUE(NoChild());
}

constexpr auto kPause = std::chrono::milliseconds(200);  // never shorter, whatever the load

TEST(KillProc, OnlyTheFirstOfThatName) {
  std::string const name = UniqueName();
  Sleeper first(name);
  Sleeper second(name, true);
  Sleeper const other(UniqueName());
  EXPECT_FALSE(KillProc(nullptr));
  EXPECT_FALSE(KillProc((name + "x").c_str()));
  Sleeper& lower = first.Id() < second.Id() ? first : second;
  Sleeper& higher = first.Id() < second.Id() ? second : first;
  auto const begin = steady_clock::now();
  EXPECT_TRUE(KillProc(name.c_str()));
  EXPECT_GE(steady_clock::now() - begin, kPause);
  EXPECT_GT(lower.EndingSignal(), 0);
  EXPECT_TRUE(higher.IsAlive());
  EXPECT_TRUE(KillProc(("/sbin/" + name).c_str()));
  EXPECT_GT(higher.EndingSignal(), 0);
  EXPECT_TRUE(other.IsAlive());
}

// A process that is gone, or a row that cannot be one: no signal, but the pause.
TEST(KillProc, CannotBeSent) {
  for (char const* id : {"0", "-1", "-", "4294967295", "99999999999"}) {
    test::FakePs const ps(std::string(id) + " 1 0 upssrv upssrv\n", 0);
    auto const begin = steady_clock::now();
    EXPECT_FALSE(KillProc("upssrv")) << id;
    EXPECT_GE(steady_clock::now() - begin, kPause) << id;
  }
}

TEST(CreateNewProc, RunsACommandLine) {
  Scratch const scratch;
  EXPECT_FALSE(CreateNewProc(nullptr, -1));
  EXPECT_TRUE(NoChild());
  EXPECT_TRUE(CreateNewProc(("echo \"a  b\" >'" + scratch.Path("done") + "'").c_str(), 0));
  EXPECT_GT(waitpid(-1, nullptr, 0), 0);
  EXPECT_EQ(scratch.Read("done"), "a  b\n");
}

TEST(ProcAuto, DoesNothing) {
  Flag flag;
  EXPECT_FALSE(GetProcAuto("init", &flag.value));
  EXPECT_FALSE(GetProcAuto(nullptr, nullptr));
  EXPECT_FALSE(SetProcAuto("init", 1));
  EXPECT_FALSE(SetProcAuto(nullptr, 0));
  EXPECT_TRUE(flag.Is(7));
}

// ---- AlreadyRunning: this program, started again under a name that nobody else has ----

constexpr char kRole[] = "ZELVANE_TEST_ALREADY_RUNNING";

// The part of a started copy: what it finds is its exit status.
void PlayRole(std::string const& role) {
  if (role == "fork") {
    pid_t const child = fork();
    if (child == 0) {
      pause();
      _exit(0);
    }
    bool const running = AlreadyRunning();
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    _exit(running ? 1 : 0);
  }
  if (role == "without ps") setenv("PATH", "/nonexistent", 1);
  if (role != "look" && role != "without ps") {  // a name to take, and to keep until killed
    prctl(PR_SET_NAME, role.c_str());
    pause();
  }
  _exit(AlreadyRunning() ? 1 : 0);
}

class Copies {
 public:
  explicit Copies(std::string const& name) : program_(folder_.Path(name)) {
    char self[PATH_MAX] = {};
    if (readlink("/proc/self/exe", self, sizeof self - 1) < 0 || symlink(self, program_.c_str()) != 0)
      ADD_FAILURE() << "no link " << program_;
  }
  pid_t Start(std::string const& role, char const* argument = "--gtest_brief=1") const {
    pid_t const child = fork();
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setenv(kRole, role.c_str(), 1);
    execl(program_.c_str(), program_.c_str(), "--gtest_filter=AlreadyRunning.Copies", argument, nullptr);
    _exit(127);
  }
  int Run(std::string const& role, char const* argument = "--gtest_brief=1") const {
    int status = 0;
    waitpid(Start(role, argument), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  Scratch folder_;
  std::string program_;
};

TEST(AlreadyRunning, Copies) {
  if (char const* const role = getenv(kRole)) PlayRole(role);
  std::string const name = UniqueName();
  Copies const copies(name);
  EXPECT_EQ(copies.Run("look"), 0);
  EXPECT_EQ(copies.Run("fork"), 1);
  {
    Sleeper other(name);  // the same file name, elsewhere, with other arguments
    EXPECT_EQ(copies.Run("look"), 1);
    EXPECT_EQ(copies.Run("without ps"), 0);
    kill(other.Id(), SIGKILL);
    EXPECT_EQ(copies.Run("look"), 1);  // not waited for
    EXPECT_EQ(other.EndingSignal(), SIGKILL);
  }
  EXPECT_EQ(copies.Run("look"), 0);
  // The same command line under another name.
  std::string const taken = UniqueName();
  pid_t const holder = copies.Start(taken);
  EXPECT_TRUE(Eventually([&] { return test::CommandName(holder) == taken; }));
  EXPECT_EQ(copies.Run("look"), 1);
  EXPECT_EQ(copies.Run("look", "--gtest_brief=true"), 0);
  kill(holder, SIGKILL);
  waitpid(holder, nullptr, 0);
  EXPECT_EQ(copies.Run("look"), 0);
}

}  // namespace
