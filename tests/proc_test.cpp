#include "zelvane/system/proc.h"

#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "support/child.h"
#include "support/processes.h"
#include "support/scratch.h"
#include "support/slot.h"

namespace {

using test::Eventually;
using test::FakePs;
using test::InChild;
using test::NoChild;
using test::OpenDescriptors;
using test::Scratch;
using test::Sleeper;
using test::UniqueName;

using Signals = std::vector<std::pair<pid_t, int>>;

struct Row {
  unsigned long pid;
  unsigned long ppid;
  int priority;
  std::string name;
  std::string fileName;
};

std::string Fixture(char const* name) { return test::ReadFile(std::string(ZELVANE_FIXTURES "/ps/") + name); }

void ExpectTable(ProcManager& table, std::vector<Row> const& rows) {
  EXPECT_EQ(table.GetProcCount(), rows.size());
  for (size_t i = 0; i < rows.size(); i++) {
    ProcClass* const entry = table.GetProcByIndex(i);
    ASSERT_NE(entry, nullptr) << i;
    EXPECT_EQ(entry->GetPID(), rows[i].pid) << i;
    EXPECT_EQ(entry->GetPPID(), rows[i].ppid) << i;
    EXPECT_EQ(entry->GetPriority(), rows[i].priority) << i;
    EXPECT_EQ(entry->GetName(), rows[i].name) << i;
    EXPECT_EQ(entry->GetFileName(), rows[i].fileName) << i;
  }
}

#if defined(__x86_64__) || defined(__i386__)
TEST(ProcSlots, Order) {
  using test::Slot;
  EXPECT_EQ(Slot(&ProcClass::Kill), 2u);
  EXPECT_EQ(Slot(&ProcClass::GetPriority), 3u);
  EXPECT_EQ(Slot(&ProcClass::SetPriority), 4u);
  EXPECT_EQ(Slot(&ProcClass::GetName), 5u);
  EXPECT_EQ(Slot(&ProcClass::GetFileName), 6u);
  EXPECT_EQ(Slot(&ProcClass::GetPID), 7u);
  EXPECT_EQ(Slot(&ProcClass::GetPPID), 8u);
  using M = ProcManager;
  using P = char const*;
  EXPECT_EQ(Slot(&M::Update), 2u);
  EXPECT_EQ(Slot(&M::Clear), 3u);
  EXPECT_EQ(Slot(&M::GetProcCount), 4u);
  EXPECT_EQ(Slot(&M::GetProcByIndex), 5u);
  EXPECT_EQ(Slot<ProcClass* (M::*)(P)>(&M::GetProcByName), 6u);
  EXPECT_EQ(Slot(&M::GetProcByPID), 7u);
  EXPECT_EQ(Slot<bool (M::*)(P)>(&M::IsRunning), 8u);
  EXPECT_EQ(Slot<bool (M::*)(unsigned long)>(&M::IsRunning), 9u);
  EXPECT_EQ(Slot<bool (M::*)(P)>(&M::CreateNew), 10u);
  EXPECT_EQ((Slot<bool (M::*)(P, unsigned long)>(&M::CreateNew)), 11u);
  EXPECT_EQ((Slot<bool (M::*)(P, long)>(&M::CreateNewAndWait)), 12u);
  EXPECT_EQ((Slot<bool (M::*)(P, long, unsigned long)>(&M::CreateNewAndWait)), 13u);
}
#endif

// ---- Reading the table ----

TEST(ProcTable, CapturedOutputWithWideIds) {
  FakePs const ps(Fixture("wide_ids.txt"), 0);
  ProcManager table;
  ExpectTable(table, {
                         {1, 0, 1, "bash", "bash cap.sh"},
                         {4194000, 1, 1, "exactly15chars_", "bin/exactly15chars_ 300"},
                         {4194001, 1, 1, "sixteen_chars_a", "bin/sixteen_chars_ab 300"},
                         {4194002, 1, 0, "two", "words       bin/two words 300"},
                         {4194003, 1, 3, "sh", "sh -c sleep   301; :  two  blanks"},
                         {4194004, 1, 1, "sleep", "sleep 302"},
                         {4194005, 1, 1, "sleep", "sleep 303"},
                         {4194006, 1, 1, "sh", "sh -c sleep 304; : " + std::string(968, 'x')},  // of 3030 bytes
                         {4194007, 1, 1, "perl", "perl -e if(!fork){exit 0} sleep 305"},
                         {4194008, 1, 1, "sleep", "padded 306"},
                         {4194009, 1, 1, "a", "b  c          perl -e $n=\"a b  c\";syscall(157,15,$n); sleep 307"},
                         {4194010, 1, 1, "perl", "-e $n=\"\";syscall(157,15,$n); sleep 308"},
                         {4194011, 1, 1, "l.f.?", "perl -e $n=\"l\\nf\\t\\xe7\";syscall(157,15,$n); sleep 309"},
                         {4194012, 1, 1, "sleep", std::string(987, 'x')},  // a forged row of "upssrv" follows
                         {4194014, 4194003, 3, "sleep", "sleep 301"},
                         {4194015, 4194006, 1, "sleep", "sleep 304"},
                         {4194016, 4194007, 1, "perl", "[perl] <defunct>"},
                         {4194017, 1, 1, "ps", "ps xa -w -o pid -o ppid -o nice -o comm -o command"},
                     });
  EXPECT_EQ(ps.Read("arguments"), "xa -w -o pid -o ppid -o nice -o comm -o command\n");
  EXPECT_EQ(table.GetProcByName("sixteen_chars_ab"), nullptr);
  EXPECT_EQ(table.GetProcByName("sixteen_chars_a"), table.GetProcByIndex(2));
  EXPECT_EQ(table.GetProcByName("/bin/sleep"), table.GetProcByIndex(5));
  EXPECT_FALSE(table.IsRunning("upssrv"));
  EXPECT_FALSE(table.IsRunning(666));
}

TEST(ProcTable, CapturedKernelThreads) {
  FakePs const ps(Fixture("kernel_threads.txt"), 0);
  ProcManager table;
  ExpectTable(table, {
                         {2, 0, 1, "kthreadd", "[kthreadd]"},
                         {5, 2, 3, "kworker/R-sync_", "[kworker/R-sync_wq]"},
                         {18, 2, 1, "migration/0", "[migration/0]"},
                         {19, 2, 1, "cpuhp/0", "[cpuhp/0]"},
                         {21, 2, 1, "migration/1", "[migration/1]"},
                         {32, 2, 1, "kworker/u8:1-ev", "[kworker/u8:1-events_unbound]"},
                         {37, 2, 1, "ksmd", "[ksmd]"},
                         {38, 2, 0, "khugepaged", "[khugepaged]"},
                         {42, 2, 1, "watchdogd", "[watchdogd]"},
                         {45, 2, 1, "kswapd0", "[kswapd0]"},
                         {48, 2, 3, "kworker/u9:0", "[kworker/u9:0]"},
                         {77, 2, 1, "kdamond.0", "[kdamond.0]"},
                     });
  EXPECT_FALSE(table.IsRunning("kworker/u9:0"));  // only what follows the "/" is looked for
}

TEST(ProcTable, ThisMachine) {
  int const descriptors = OpenDescriptors();
  Sleeper const sleeper(UniqueName());
  ProcManager table;
  ASSERT_TRUE(table.Update());
  unsigned long const self = static_cast<unsigned long>(getpid());
  ProcClass* const own = table.GetProcByPID(self);
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(own->GetName(), test::CommandName(getpid()));
  EXPECT_EQ(own->GetPPID(), static_cast<unsigned long>(getppid()));
  ProcClass* const child = table.GetProcByPID(static_cast<unsigned long>(sleeper.Id()));
  ASSERT_NE(child, nullptr);
  EXPECT_EQ(child->GetPPID(), self);
  EXPECT_EQ(child->GetFileName(), sleeper.CommandLine());
  EXPECT_EQ(child->GetPriority(), own->GetPriority());
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST(ProcTable, WhenPsCannotBeRun) {
  int const descriptors = OpenDescriptors();
  struct {
    char const* output;
    int status;
    bool updated;
    unsigned long count;
  } const cases[] = {{"  PID  PPID  NI COMMAND COMMAND\n9 1 0 a a\n", 0, true, 1},
                     {"9 1 0 a a\n", 1, true, 1},
                     {"9 1 0 a a", 127, true, 1},
                     {"  PID  PPID  NI COMMAND COMMAND\n", 0, true, 0},
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
  ProcManager table;
  ASSERT_TRUE(table.Update());
  Scratch const empty;
  test::Environment const path("PATH", empty.Path());
  EXPECT_FALSE(table.Update());
  EXPECT_EQ(table.GetProcCount(), 0u);
  EXPECT_EQ(table.GetProcByName("sh"), nullptr);
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_TRUE(NoChild());
}

TEST(ProcTable, WhenThereIsNoPipe) {
  EXPECT_TRUE(InChild([] {
    ProcManager table;
    if (!table.Update()) return false;
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = static_cast<rlim_t>(0);
    setrlimit(RLIMIT_NOFILE, &limit);
    return !table.Update() && table.GetProcCount() == 0;
  }));
}

volatile sig_atomic_t g_alarms = 0;

TEST(ProcTable, SignalsInterruptNothing) {
  struct sigaction count = {};
  count.sa_handler = [](int) { g_alarms = g_alarms + 1; };  // without SA_RESTART: reads fail with EINTR
  struct sigaction old = {};
  sigaction(SIGALRM, &count, &old);
  {
    // The second half of each line comes only when alarms have come in between.
    FakePs const ps(
        "i=0\nwhile [ $i -lt 5 ]; do\n  printf '%s' \"$i 1 0 na\"\n  /bin/sleep 0.02\n  echo \"me command $i\"\n"
        "  i=$((i + 1))\ndone");
    itimerval const often = {{0, 1000}, {0, 1000}};
    itimerval const never = {};
    setitimer(ITIMER_REAL, &often, nullptr);
    ProcManager table;
    EXPECT_TRUE(table.Update());
    setitimer(ITIMER_REAL, &never, nullptr);
    ExpectTable(table, {{0, 1, 1, "name", "command 0"},
                        {1, 1, 1, "name", "command 1"},
                        {2, 1, 1, "name", "command 2"},
                        {3, 1, 1, "name", "command 3"},
                        {4, 1, 1, "name", "command 4"}});
  }
  sigaction(SIGALRM, &old, nullptr);
  EXPECT_GT(g_alarms, 0);
}

TEST(ProcTable, HostThatIgnoresItsChildren) {
  EXPECT_TRUE(InChild([] {
    signal(SIGCHLD, SIG_IGN);
    ProcManager table;
    return table.Update() && table.IsRunning(static_cast<unsigned long>(getpid())) && NoChild() &&
           signal(SIGCHLD, SIG_DFL) == SIG_IGN;
  }));
}

// ---- Finding ----

TEST(ProcLookup, ByName) {
  std::string const name = UniqueName();
  std::string const padded = (name + "_______________").substr(0, 15);
  Sleeper const first(name);
  Sleeper const second(name);
  Sleeper const longName(padded + "x");
  ProcManager table;
  ProcClass* const found = table.GetProcByName(name.c_str());
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->GetPID(), static_cast<unsigned long>(std::min(first.Id(), second.Id())));
  EXPECT_EQ(table.GetProcByName("/usr/sbin/" + name), found);
  EXPECT_EQ(table.GetProcByName("../" + name), found);
  EXPECT_TRUE(table.IsRunning(name));
  EXPECT_TRUE(table.IsRunning(padded));  // cut by the system
  std::string upper = name;
  upper[0] = 'Z';
  for (std::string const& other : {name.substr(1), name.substr(0, name.size() - 1), name + " ", name + "/", upper,
                                   padded + "x", first.CommandLine(), std::string()}) {
    EXPECT_EQ(table.GetProcByName(other), nullptr) << other;
    EXPECT_FALSE(table.IsRunning(other.c_str())) << other;
  }
  EXPECT_EQ(table.GetProcByName(nullptr), nullptr);
  EXPECT_FALSE(table.IsRunning(static_cast<char const*>(nullptr)));
}

TEST(ProcLookup, ByIndexAndId) {
  FakePs const ps("7 1 0 a a1\n8 1 0 b b1\n7 1 0 c c1\n", 0);
  ProcManager table;
  EXPECT_EQ(table.GetProcByPID(7), table.GetProcByIndex(0));
  EXPECT_EQ(table.GetProcByPID(8), table.GetProcByIndex(1));
  EXPECT_EQ(table.GetProcByPID(9), nullptr);
  EXPECT_FALSE(table.IsRunning(9));
  EXPECT_TRUE(table.IsRunning(8));
  EXPECT_NE(table.GetProcByIndex(2), nullptr);
  EXPECT_EQ(table.GetProcByIndex(3), nullptr);
  EXPECT_EQ(table.GetProcByIndex(ULONG_MAX), nullptr);
}

TEST(ProcLookup, AnEmptyTableIsReadAndAFilledOneKept) {
  struct Counting : ProcManager {
    bool Update() override {
      updates++;
      return ProcManager::Update();
    }
    int updates = 0;
  };
  auto sleeper = std::make_unique<Sleeper>(UniqueName());
  unsigned long const id = static_cast<unsigned long>(sleeper->Id());
  std::string const name = test::CommandName(sleeper->Id());
  std::function<bool(Counting&)> const questions[] = {
      [&](Counting& t) { return t.GetProcCount() > 0; }, [&](Counting& t) { return t.GetProcByIndex(0) != nullptr; },
      [&](Counting& t) { return t.GetProcByName(name.c_str()) != nullptr; },
      [&](Counting& t) { return t.GetProcByPID(id) != nullptr; }, [&](Counting& t) { return t.IsRunning(id); }};
  Counting table;
  for (auto const& ask : questions) {
    table.Clear();
    table.updates = 0;
    EXPECT_TRUE(ask(table)) << &ask - questions;
    EXPECT_EQ(table.updates, 1) << &ask - questions;
  }
  sleeper.reset();
  for (auto const& ask : questions) EXPECT_TRUE(ask(table)) << &ask - questions;
  EXPECT_EQ(table.updates, 1);
  table.Update();
  EXPECT_FALSE(table.IsRunning(id));
  FakePs const ps("", 127);
  table.Update();
  table.updates = 0;
  EXPECT_EQ(table.GetProcCount(), 0u);
  EXPECT_EQ(table.GetProcCount(), 0u);
  EXPECT_EQ(table.updates, 2);  // a failed one is tried again
}

TEST(ProcLookup, StepsCanBeReplaced) {
  struct Own : ProcManager {
    unsigned long GetProcCount() override { return 3; }
    ProcClass* GetProcByIndex(unsigned long i) override { return i == 1 ? nullptr : &entries[i]; }
    ProcClass entries[3] = {{5, 1, "five", "f", 1}, {6, 1, "six", "s", 1}, {7, 1, "seven", "s", 1}};
  };
  Own table;
  EXPECT_EQ(table.GetProcByName("/x/seven"), &table.entries[2]);
  EXPECT_EQ(table.GetProcByPID(7), &table.entries[2]);
  EXPECT_TRUE(table.IsRunning("five"));
  EXPECT_FALSE(table.IsRunning("six"));
  EXPECT_FALSE(table.IsRunning(6));
}

// ---- Acting on a process ----

TEST(Proc, NoProcessAtFirst) {
  ProcClass none;
  EXPECT_EQ(none.GetPID(), 0u);
  EXPECT_EQ(none.GetPPID(), 0u);
  EXPECT_EQ(none.GetName(), "");
  EXPECT_EQ(none.GetFileName(), "");
  EXPECT_EQ(none.GetPriority(), 1);
}

TEST(Proc, Kill) {
  for (bool const ignoresTerm : {false, true}) {
    Sleeper sleeper(UniqueName(), ignoresTerm);
    ProcManager table;
    ProcClass* const entry = table.GetProcByPID(static_cast<unsigned long>(sleeper.Id()));
    ASSERT_NE(entry, nullptr);
    Signals const both = {{sleeper.Id(), SIGTERM}, {sleeper.Id(), SIGKILL}};
    test::TakeSignals();
    EXPECT_TRUE(entry->Kill());
    EXPECT_EQ(test::TakeSignals(), both);
    int const ending = sleeper.EndingSignal();
    EXPECT_TRUE(ending == SIGKILL || (ending == SIGTERM && !ignoresTerm)) << ending << " " << ignoresTerm;
    EXPECT_FALSE(entry->Kill());  // waited for: the id is free
    EXPECT_EQ(test::TakeSignals(), Signals({both[0]}));
    EXPECT_FALSE(entry->SetPriority(0));
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
    EXPECT_FALSE(entry.Kill()) << pid;
    EXPECT_FALSE(entry.SetPriority(0)) << pid;
    EXPECT_EQ(entry.GetPriority(), 2) << pid;
  }
  EXPECT_EQ(test::TakeSignals(), Signals());
  EXPECT_EQ(getpriority(PRIO_PROCESS, static_cast<id_t>(id)), getpriority(PRIO_PROCESS, 0));
  for (unsigned long const pid : {1ul, 2147483647ul}) EXPECT_FALSE(ProcClass(pid, 1, "a", "a", 2).Kill()) << pid;
  EXPECT_EQ(test::TakeSignals(), Signals({{1, SIGTERM}, {2147483647, SIGTERM}}));  // asked for, and refused
}

TEST(Proc, SetPriority) {
  struct {
    int level;
    int nice;
    int stored;
  } const cases[] = {{1, 0, 1},  {2, -10, 2}, {3, -20, 3}, {-1, 0, 1},      {0, 19, 0}, {4, 0, 1},
                     {0, 19, 0}, {7, 0, 1},   {0, 19, 0},  {INT_MAX, 0, 1}, {0, 19, 0}, {INT_MIN, 0, 1}};
  Sleeper const sleeper(UniqueName());
  Sleeper const twin(UniqueName());
  auto const id = static_cast<id_t>(sleeper.Id());
  ProcClass entry(id, 1, "a", "a", 1);
  for (auto const& c : cases) {
    int const before = entry.GetPriority();
    int const niceBefore = getpriority(PRIO_PROCESS, id);
    // Whether this user may do it shows on another process.
    bool const allowed = setpriority(PRIO_PROCESS, static_cast<id_t>(twin.Id()), c.nice) == 0;
    EXPECT_EQ(entry.SetPriority(c.level), allowed) << c.level;
    EXPECT_EQ(getpriority(PRIO_PROCESS, id), allowed ? c.nice : niceBefore) << c.level;
    EXPECT_EQ(entry.GetPriority(), allowed ? c.stored : before) << c.level;
  }
}

TEST(Proc, PriorityThatIsRefused) {
  EXPECT_TRUE(test::AsOrdinaryUser([] {
    ProcClass self(static_cast<unsigned long>(getpid()), 1, "a", "a", 0);
    ProcClass init(1, 0, "a", "a", 0);
    return !self.SetPriority(3) && self.GetPriority() == 0 && !init.SetPriority(0);
  }));
}

// ---- New processes ----

// Runs a command that leaves its id and session in a file, waits for it, and gives the session's id.
pid_t SessionOf(std::function<bool(std::string const&)> const& create) {
  Scratch const scratch;
  std::string const done = scratch.Path("done");
  EXPECT_TRUE(create("read a b c d e sid g </proc/$$/stat; echo $$ $sid >'" + done + ".new'; mv '" + done + ".new' '" +
                     done + "'"));
  if (!Eventually([&] { return scratch.Exists("done"); })) return -1;
  long id = 0;
  long session = 0;
  sscanf(scratch.Read("done").c_str(), "%ld %ld", &id, &session);
  EXPECT_EQ(waitpid(static_cast<pid_t>(id), nullptr, 0), id);  // a child that nobody else waited for
  return static_cast<pid_t>(session == id ? 1 : session == getsid(0) ? 0 : -1);
}

TEST(ProcCreate, Session) {
  ProcManager m;
  int const descriptors = OpenDescriptors();
  using S = std::string const&;
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNew(c.c_str()); }), 1);
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNew(c); }), 1);
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNew(c.c_str(), 1); }), 1);
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNew(c, 0); }), 0);
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNew(c.c_str(), 2); }), 0);
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNew(c.c_str(), ULONG_MAX); }), 0);
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNewAndWait(c.c_str(), 0); }), 1);
  EXPECT_EQ(SessionOf([&](S c) { return m.CreateNewAndWait(c, -1, 7); }), 1);
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_TRUE(NoChild());
}

TEST(ProcCreate, NothingIsWaitedFor) {
  Scratch const scratch;
  std::string const wait = "cd '" + scratch.Path() + "'; until [ -e go ]; do sleep 0.01; done; echo >done";
  ASSERT_TRUE(ProcManager().CreateNewAndWait(wait, 10000));
  EXPECT_FALSE(scratch.Exists("done"));
  scratch.Write("go", "");
  EXPECT_TRUE(Eventually([&] { return scratch.Exists("done"); }));
  EXPECT_GT(waitpid(-1, nullptr, 0), 0);
}

// A command longer than the system takes: the child comes back with false, the caller has true.
TEST(ProcCreate, ChildOfAFailedStartGoesOn) {
  std::string const tooLong(300000, ' ');
  pid_t const self = getpid();
  bool const created = ProcManager().CreateNew(tooLong);
  if (getpid() != self) _exit(created ? 1 : 42);
  EXPECT_TRUE(created);
  int status = 0;
  waitpid(-1, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 42) << status;
}

TEST(ProcCreate, NullAndNoProcess) {
  ProcManager m;
  char const* const null = nullptr;
  EXPECT_FALSE(m.CreateNew(null));
  EXPECT_FALSE(m.CreateNew(null, 0));
  EXPECT_FALSE(m.CreateNewAndWait(null, 0));
  EXPECT_FALSE(m.CreateNewAndWait(null, 0, 0));
  EXPECT_TRUE(NoChild());
  EXPECT_TRUE(test::AsOrdinaryUser([] {
    rlimit const none = {0, 0};
    setrlimit(RLIMIT_NPROC, &none);
    return !ProcManager().CreateNew("true");
  }));
}

TEST(ProcCreate, FormsCallEachOther) {
  struct Spy : ProcManager {
    using ProcManager::CreateNew;
    using ProcManager::CreateNewAndWait;
    bool CreateNew(char const* command) override {
      calls += "New " + std::string(command) + "; ";
      return ProcManager::CreateNew(command);
    }
    bool CreateNew(char const* command, unsigned long detach) override {
      calls += "New " + std::string(command) + " " + std::to_string(detach) + "; ";
      return false;
    }
    bool CreateNewAndWait(char const* command, long timeout, unsigned long flags) override {
      calls += "Wait " + std::string(command) + " " + std::to_string(timeout) + " " + std::to_string(flags) + "; ";
      return ProcManager::CreateNewAndWait(command, timeout, flags);
    }
    std::string calls;
  };
  Spy spy;
  EXPECT_FALSE(spy.CreateNewAndWait("x", 5));
  EXPECT_EQ(spy.calls, "Wait x 5 0; New x; New x 1; ");
  spy.calls.clear();
  EXPECT_FALSE(spy.CreateNew(std::string("y")));
  EXPECT_EQ(spy.calls, "New y; New y 1; ");
}

}  // namespace
