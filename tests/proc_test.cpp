#include "zelvane/system/proc.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/processes.h"
#include "support/scratch.h"
#include "support/slot.h"

namespace {

using test::FakePs, test::NoChild, test::OpenDescriptors, test::Scratch, test::Sleeper, test::UniqueName;
using Signals = std::vector<std::pair<pid_t, int>>;

#if defined(__x86_64__) || defined(__i386__)
TEST(Proc, VirtualOperationsKeepTheirSlots) {
  using test::Slot;
  using C = ProcClass;
  EXPECT_EQ((std::vector<size_t>{2, 3, 4, 5, 6, 7, 8}),
            (std::vector<size_t>{Slot(&C::Kill), Slot(&C::GetPriority), Slot(&C::SetPriority), Slot(&C::GetName),
                                 Slot(&C::GetFileName), Slot(&C::GetPID), Slot(&C::GetPPID)}));
  using M = ProcManager;
  using P = char const*;
  EXPECT_EQ(
      (std::vector<size_t>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}),
      (std::vector<size_t>{Slot(&M::Update), Slot(&M::Clear), Slot(&M::GetProcCount), Slot(&M::GetProcByIndex),
                           Slot<ProcClass* (M::*)(P)>(&M::GetProcByName), Slot(&M::GetProcByPID),
                           Slot<bool (M::*)(P)>(&M::IsRunning), Slot<bool (M::*)(unsigned long)>(&M::IsRunning),
                           Slot<bool (M::*)(P)>(&M::CreateNew), Slot<bool (M::*)(P, unsigned long)>(&M::CreateNew),
                           Slot<bool (M::*)(P, long)>(&M::CreateNewAndWait),
                           Slot<bool (M::*)(P, long, unsigned long)>(&M::CreateNewAndWait)}));
}
#endif

// ---- Reading the table ----

TEST(ProcTable, CapturedOutputWithWideIds) {
  FakePs const ps(test::ReadFile(ZELVANE_FIXTURES "/ps/wide_ids.txt"), 0);
  ProcManager table;
  std::string shown;
  for (unsigned long i = 0; i < table.GetProcCount(); i++)
    shown += std::to_string(table.GetProcByIndex(i)->GetPID()) + table.GetProcByIndex(i)->GetName() + " ";
  EXPECT_EQ(shown,
            "1bash 4194000exactly15chars_ 4194001sixteen_chars_a 4194002two 4194003sh 4194004sleep 4194005sleep "
            "4194006sh 4194007perl 4194008sleep 4194009a 4194010perl 4194011l.f.? 4194012sleep 4194014sleep "
            "4194015sleep 4194016perl 4194017ps ");
  EXPECT_EQ(table.GetProcByIndex(7)->GetFileName(), "sh -c sleep 304; : " + std::string(968, 'x'));  // of 3030 bytes
  EXPECT_EQ(ps.Read("arguments"), "xa -w -o pid -o ppid -o nice -o comm -o command\n");
  EXPECT_EQ(table.GetProcByName("/bin/sleep"), table.GetProcByIndex(5));
}

TEST(ProcTable, WhenPsCannotBeRun) {
  int const descriptors = OpenDescriptors();
  struct {
    char const* output;
    int status;
    bool updated;
    unsigned long count;
  } const cases[] = {{"  PID  PPID  NI COMMAND COMMAND\n9 1 0 a a\n", 0, true, 1},
                     {"9 1 0 a a", 127, true, 1},
                     {"", 1, true, 0},
                     {"", 126, true, 0},
                     {"usage\n", 127, false, 0},
                     {"", 127, false, 0}};
  for (auto const& c : cases) {
    FakePs const ps(c.output, c.status);
    ProcManager table;
    EXPECT_EQ(table.Update(), c.updated) << "'" << c.output << "' " << c.status;
    EXPECT_EQ(table.GetProcCount(), c.count) << "'" << c.output << "' " << c.status;
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

// ---- Finding ----

TEST(ProcLookup, ByNameAndId) {
  std::string const name = UniqueName(), padded = (name + "_______________").substr(0, 15);
  Sleeper const first(name), second(name), longName(padded + "x");
  ProcManager table;
  ProcClass* const found = table.GetProcByName(name);
  ASSERT_NE(found, nullptr);
  unsigned long const id = found->GetPID();
  EXPECT_EQ(id, static_cast<unsigned long>(std::min(first.Id(), second.Id())));
  EXPECT_EQ(found->GetPPID(), static_cast<unsigned long>(getpid()));
  EXPECT_TRUE(table.GetProcByName("../" + name) == found && table.GetProcByPID(id) == found && table.IsRunning(id));
  EXPECT_TRUE(table.IsRunning(padded));  // cut by the system
  for (std::string const& other : {name.substr(1), name.substr(0, name.size() - 1), name + " ", name + "/",
                                   "Z" + name.substr(1), padded + "x", first.CommandLine(), std::string()})
    EXPECT_FALSE(table.GetProcByName(other) || table.IsRunning(other.c_str())) << other;
  EXPECT_FALSE(table.GetProcByName(nullptr) || table.IsRunning(static_cast<char const*>(nullptr)));
  EXPECT_FALSE(table.GetProcByIndex(table.GetProcCount()) || table.GetProcByIndex(ULONG_MAX) || table.IsRunning(0ul));
}

TEST(ProcLookup, AnEmptyTableIsReadAndAFilledOneKept) {
  struct Counting : ProcManager {
    bool Update() override { return updates++, ProcManager::Update(); }
    int updates = 0;
  } table;
  FakePs const ps("7 1 0 a a1\n", 0);
  std::function<bool()> const questions[] = {[&] { return table.GetProcCount() == 1; },
                                             [&] { return table.GetProcByIndex(0) && table.GetProcByName("a"); },
                                             [&] { return table.GetProcByPID(7) && table.IsRunning(7); }};
  for (auto const& ask : questions) {
    table.Clear();
    table.updates = 0;
    EXPECT_TRUE(ask() && ask() && table.updates == 1) << &ask - questions;
  }
  ps.Write("output", "");
  EXPECT_TRUE(table.Update() && table.GetProcCount() == 0 && table.updates == 3);
}

// ---- Acting on a process ----

TEST(Proc, KillAsksThenForces) {
  for (bool const ignoresTerm : {false, true}) {
    Sleeper sleeper(UniqueName(), ignoresTerm);
    ProcClass entry(static_cast<unsigned long>(sleeper.Id()), 1, "a", "a", 1);
    test::TakeSignals();
    EXPECT_TRUE(entry.Kill());
    EXPECT_EQ(test::TakeSignals(), (Signals{{sleeper.Id(), SIGTERM}, {sleeper.Id(), SIGKILL}}));
    EXPECT_GT(sleeper.EndingSignal(), 0);
    EXPECT_FALSE(entry.Kill() || entry.SetPriority(0));  // waited for: the id is free
  }
}

// Ids that the system would take for groups or for everybody, or that only their low 32 bits make a process.
TEST(Proc, OnlyOneProcessIsEverMeant) {
  Sleeper const sleeper(UniqueName());
  unsigned long const id = static_cast<unsigned long>(sleeper.Id());
  std::vector<unsigned long> wrong = {0,      2147483648ul, 4294967295ul, static_cast<std::uint32_t>(0 - id),
                                      0 - id, ULONG_MAX};
  if (sizeof(long) > 4) wrong.push_back((ULONG_MAX << 31 << 1) + id);
  test::TakeSignals();
  for (unsigned long const pid : wrong) {
    ProcClass entry(pid, 1, "a", "a", 2);
    EXPECT_FALSE(entry.Kill() || entry.SetPriority(0)) << pid;
    EXPECT_EQ(entry.GetPriority(), 2) << pid;
  }
  EXPECT_EQ(test::TakeSignals(), Signals());
  EXPECT_EQ(getpriority(PRIO_PROCESS, static_cast<id_t>(id)), getpriority(PRIO_PROCESS, 0));
}

TEST(Proc, SetPriority) {
  struct {
    int level, nice, stored;
  } const cases[] = {{1, 0, 1},  {2, -10, 2}, {3, -20, 3}, {-1, 0, 1},
                     {0, 19, 0}, {4, 0, 1},   {0, 19, 0},  {INT_MAX, 0, 1}};
  Sleeper const sleeper(UniqueName()), twin(UniqueName());
  auto const id = static_cast<id_t>(sleeper.Id());
  ProcClass entry(id, 1, "a", "a", 1);
  for (auto const& c : cases) {
    int const before = entry.GetPriority(), niceBefore = getpriority(PRIO_PROCESS, id);
    // Whether this user may do it shows on another process.
    bool const allowed = setpriority(PRIO_PROCESS, static_cast<id_t>(twin.Id()), c.nice) == 0;
    EXPECT_EQ(entry.SetPriority(c.level), allowed) << c.level;
    EXPECT_EQ(getpriority(PRIO_PROCESS, id), allowed ? c.nice : niceBefore) << c.level;
    EXPECT_EQ(entry.GetPriority(), allowed ? c.stored : before) << c.level;
  }
}

// ---- New processes ----

TEST(ProcCreate, InASessionOfItsOwn) {
  ProcManager m;
  using S = std::string const&;
  std::pair<bool, std::function<bool(S)>> const cases[] = {{true, [&](S c) { return m.CreateNew(c.c_str()); }},
                                                           {true, [&](S c) { return m.CreateNew(c, 1); }},
                                                           {false, [&](S c) { return m.CreateNew(c, 0); }},
                                                           {false, [&](S c) { return m.CreateNew(c.c_str(), 2); }},
                                                           {true, [&](S c) { return m.CreateNewAndWait(c, 10000); }},
                                                           {true, [&](S c) { return m.CreateNewAndWait(c, -1, 7); }}};
  for (auto const& [own, create] : cases) {
    Scratch const scratch;
    // Nothing is waited for: the command ends after it was let go.
    EXPECT_TRUE(
        create("cd '" + scratch.Path() +
               "'; until [ -e go ]; do sleep 0.01; done; read a b c d e sid g </proc/$$/stat; echo $sid >done"));
    EXPECT_FALSE(scratch.Exists("done"));
    scratch.Write("go", "");
    pid_t const id = waitpid(-1, nullptr, 0);  // a child that nobody else waited for
    EXPECT_EQ(scratch.Read("done"), std::to_string(own ? id : getsid(0)) + "\n") << &own - &cases[0].first;
  }
  char const* const null = nullptr;
  EXPECT_FALSE(m.CreateNew(null) || m.CreateNew(null, 0) || m.CreateNewAndWait(null, 0) ||
               m.CreateNewAndWait(null, 0, 0));
  EXPECT_TRUE(NoChild());
}

// A command longer than the system takes: the child comes back with false, the caller has true.
TEST(ProcCreate, ChildOfAFailedStartGoesOn) {
  pid_t const self = getpid();
  bool const created = ProcManager().CreateNew(std::string(300000, ' '));
  if (getpid() != self) _exit(created ? 1 : 42);
  int status = 0;
  EXPECT_TRUE(created && waitpid(-1, &status, 0) > 0 && WEXITSTATUS(status) == 42) << status;
}

}  // namespace
