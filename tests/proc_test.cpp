#include "zelvane/system/proc.h"

#include <sys/resource.h>
#include <chrono>

#include "support/child.h"
#include "support/processes.h"
#include "support/services.h"
#include "support/test.h"
#include "zelvane/system/procsvc.h"

namespace {

using test::FakePs, test::NoChild, test::Scratch, test::Sleeper, test::Services, test::UniqueName;
using Signals = std::vector<std::pair<pid_t, int>>;

// ---- Reading the table ----

// Id, parent's id, priority, name and command line of every process that a `ps` with this output lists.
std::string TableOf(std::string const& output) {
  FakePs const ps(output, 0);
  ProcManager table;
  std::string shown;
  for (unsigned long i = 0; i < table.GetProcCount(); i++) {
    ProcClass& entry = *table.GetProcByIndex(i);
    shown += std::to_string(entry.GetPID()) + "|" + std::to_string(entry.GetPPID()) + "|" +
             std::to_string(entry.GetPriority()) + "|" + entry.GetName() + "|" + entry.GetFileName() + "\n";
  }
  EXPECT_EQ(ps.Read("arguments"), "xa -w -o pid -o ppid -o nice -o comm -o command\n");
  return shown;
}

TEST(ProcTable, FieldsOfALine) {
  for (std::string const name : {"odd_fields", "wide_ids", "kernel_threads"}) {
    std::string const output = test::ReadFile(ZELVANE_FIXTURES "/ps/" + name + ".txt");
    EXPECT_EQ(TableOf(output), test::ReadFile(ZELVANE_FIXTURES "/ps/" + name + ".table")) << name;
  }
}

// A line counts up to its limit. Text after that, such as forged rows at any position, is ignored.
TEST(ProcTable, ALineBeyondItsLimit) {
  for (size_t const length : {1022u, 1023u, 1024u, 2046u, 9000u, 30000u}) {
    std::string line = "9 1 0 sleep x";
    while (line.size() < length) line += "  666  1  0 upssrv  upssrv -d";
    line.resize(length, 'x');
    std::string const kept = line.substr(12, 1023 - 12);
    EXPECT_EQ(TableOf(line + "\n8 1 0 a b"),
              "9|1|1|sleep|" + kept.substr(0, kept.find_last_not_of(' ') + 1) + "\n8|1|1|a|b\n");
  }
}

// With SIGCHLD at its default, and ignored: then the exit status is not available.
TEST(ProcTable, WhenPsCannotBeRun) {
  std::tuple<char const*, int, bool, unsigned long> const cases[] = {
      {"9 1 0 a a", 127, true, 1}, {"", 126, true, 0}, {"", 0, true, 0}, {"usage\n", 127, false, 0}};
  for (bool const ignored : {false, true}) {
    signal(SIGCHLD, ignored ? SIG_IGN : SIG_DFL);
    for (auto const& [output, status, updated, count] : cases) {
      FakePs const ps(output, status);
      ProcManager table;
      EXPECT_EQ(table.Update(), updated || ignored) << "'" << output << "' " << status << ignored;
      EXPECT_EQ(table.GetProcCount(), count) << "'" << output << "' " << status << ignored;
    }
  }
  signal(SIGCHLD, SIG_DFL);
}

// The signal arrives and is handled while the table waits for the first line.
TEST(ProcTable, InterruptedByASignal) {
  static std::string mark;
  struct sigaction interrupts = {}, before;
  interrupts.sa_handler = [](int) { unlink(mark.c_str()); };
  sigaction(SIGUSR1, &interrupts, &before);
  {
    FakePs const ps("until read a b state c </proc/" + std::to_string(getpid()) +
                    "/stat && [ $state = S ]; do :; done; : >\"$dir/mark\"; kill -USR1 $a; "
                    "while [ -e \"$dir/mark\" ]; do :; done; echo 7 1 0 a a");
    mark = ps.Path("mark");
    ProcManager table;
    EXPECT_ALL(table.Update(), table.IsRunning(7));
  }
  sigaction(SIGUSR1, &before, nullptr);
}

// ---- Finding ----

TEST(ProcLookup, TheFirstInATableThatIsReadOnce) {
  struct Counting : ProcManager {
    bool Update() override { return updates++, ProcManager::Update(); }
    int updates = 0;
  } table;
  FakePs const ps("7 1 0 ab x\n8 1 0 ab y\n9 1 0 c y\n10 1", 0);
  std::pair<char const*, unsigned long> const names[] = {{"ab", 7},  {"/x/ab", 7}, {"../c", 9}, {"b", 0}, {"AB", 0},
                                                         {"ab ", 0}, {"ab/", 10},  {"abc", 0},  {"x", 0}, {"", 10}};
  for (auto const& [name, id] : names) {
    ProcClass* const found = table.GetProcByName(name);
    EXPECT_EQ(found == nullptr ? 0 : found->GetPID(), id) << name;
    EXPECT_EACH((table.IsRunning(name), table.GetProcByName(std::string(name))), (id != 0), found) << name;
  }
  EXPECT_EACH((table.GetProcByPID(8), table.IsRunning(9), table.GetProcCount()), table.GetProcByIndex(1), true, 4);
  EXPECT_NONE(table.GetProcByIndex(4), table.GetProcByIndex(ULONG_MAX), table.GetProcByPID(1), table.IsRunning(0ul),
              table.GetProcByName(nullptr));
  EXPECT_EQ(table.updates, 1);
  for (int i = 0; i < 2; i++) {
    table.Clear();
    EXPECT_TRUE(i == 0 ? table.GetProcByIndex(0) : table.GetProcByPID(9)) << "read again";
  }
  ps.Write("output", "");
  EXPECT_EACH((table.Update(), table.GetProcCount(), table.updates), true, 0, 5);
}

// ---- Acting on a process ----

// Ids that the system would treat as groups or as all processes, or that match a process only in their low 32 bits.
TEST(Proc, OnlyOneProcessIsEverMeant) {
  auto const self = static_cast<unsigned long>(getpid());
  std::vector<unsigned long> wrong = {0,        INT32_MAX + 1ul, UINT32_MAX, static_cast<std::uint32_t>(0 - self),
                                      0 - self, ULONG_MAX};
  if (sizeof(long) > 4) wrong.push_back((ULONG_MAX << 31 << 1) + self);
  int const before = getpriority(PRIO_PROCESS, 0);
  test::TakeSignals();
  for (unsigned long const pid : wrong) {
    ProcClass entry(pid, 1, "a", "a", 2);
    EXPECT_EACH((entry.Kill(), entry.SetPriority(0), entry.GetPriority()), false, false, 2) << pid;
  }
  EXPECT_EQ(test::TakeSignals(), (Signals()));
  EXPECT_EQ(getpriority(PRIO_PROCESS, 0), before);
  // A process that the system refuses to signal gets no second signal.
  ProcClass refused(INT32_MAX, 1, "a", "a", 2);
  EXPECT_EACH((refused.Kill(), refused.SetPriority(0), refused.GetPriority()), false, false, 2);
  EXPECT_EQ(test::TakeSignals(), (Signals{{INT32_MAX, SIGTERM}}));
}

TEST(Proc, SetPriority) {
  Sleeper const sleeper(UniqueName()), twin(UniqueName());
  auto const nice = [&] { return getpriority(PRIO_PROCESS, static_cast<id_t>(sleeper.Id())); };
  ProcClass entry(static_cast<unsigned long>(sleeper.Id()), 1, "a", "a", 1);
  for (auto const& [level, niceness, stored] :
       {std::tuple(1, 0, 1), {2, -10, 2}, {3, -20, 3}, {-1, 0, 1}, {0, 19, 0}, {4, 0, 1}}) {
    int const before = entry.GetPriority(), niceBefore = nice();
    // Another process shows whether this user has the permission.
    bool const allowed = setpriority(PRIO_PROCESS, static_cast<id_t>(twin.Id()), niceness) == 0;
    EXPECT_EQ(entry.SetPriority(level), allowed) << level;
    EXPECT_EQ(nice(), allowed ? niceness : niceBefore) << level;
    EXPECT_EQ(entry.GetPriority(), allowed ? stored : before) << level;
  }
}

// ---- New processes ----

TEST(ProcCreate, InASessionOfItsOwn) {
  ProcManager m;
  using S = std::string const&;
  std::function<bool(S)> const forms[] = {[&](S c) { return m.CreateNew(c, 0); },  // the first two keep the session
                                          [&](S c) { return m.CreateNew(c.c_str(), 2); },
                                          [&](S c) { return m.CreateNew(c); },
                                          [&](S c) { return m.CreateNew(c, 1); },
                                          [&](S c) { return m.CreateNewAndWait(c, 10000); },
                                          [&](S c) { return m.CreateNewAndWait(c, -1, 7); },
                                          [&](S c) { return CreateNewProc(c.c_str(), 0); }};
  for (auto const& create : forms) {
    Scratch const scratch;
    // The call does not wait: the command ends only after it is released.
    EXPECT_TRUE(
        create("cd '" + scratch.Path() +
               "'; until [ -e go ]; do sleep 0.01; done; read a b c d e sid g </proc/$$/stat; echo \"a  $sid\" >done"));
    EXPECT_FALSE(scratch.Exists("done"));
    scratch.Write("go", "");
    pid_t const id = waitpid(-1, nullptr, 0);  // a child that nobody has waited for
    EXPECT_EQ(scratch.Read("done"), "a  " + std::to_string(&create - forms < 2 ? getsid(0) : id) + "\n")
        << &create - forms;
  }
  char const* const null = nullptr;
  EXPECT_NONE(m.CreateNew(null), m.CreateNew(null, 0), m.CreateNewAndWait(null, 0), m.CreateNewAndWait(null, 0, 0));
}

// A command that is too long for the system: the child returns false, the caller true.
TEST(ProcCreate, ChildOfAFailedStartGoesOn) {
  pid_t const self = getpid();
  bool const created = ProcManager().CreateNew(std::string(300000, ' '));
  if (getpid() != self) _exit(created ? 1 : 42);
  int status = 0;
  EXPECT_EACH((created, waitpid(-1, &status, 0) > 0, WEXITSTATUS(status)), true, true, 42) << status;
}

// ---- The plain C functions ----

TEST(ProcFunctions, StatusAndKillOfTheFirstOfThatName) {
  std::string const name = UniqueName();
  auto const status = [&] {
    int flags[3] = {7, 7, 7};  // only the middle one may change
    EXPECT_EACH((GetProcStatus(("/sbin/" + name).c_str(), &flags[1]), flags[0], flags[2]), true, 7, 7);
    return flags[1];
  };
  EXPECT_EACH((status(), GetProcStatus(name.c_str(), nullptr)), 0, true);
  Sleeper first(name), second(name, true);
  EXPECT_FALSE(KillProc((name + "x").c_str()));
  bool const inOrder = first.Id() < second.Id();
  Sleeper* const order[] = {inOrder ? &first : &second, inOrder ? &second : &first};  // the order of `ps`
  for (Sleeper* sleeper : order) {
    pid_t const id = sleeper->Id();
    test::TakeSignals();
    auto const began = std::chrono::steady_clock::now();
    EXPECT_EACH((status(), order[1]->IsAlive(), KillProc(("/sbin/" + name).c_str())), 1, true, true);
    EXPECT_EQ(test::TakeSignals(), (Signals{{id, SIGTERM}, {id, SIGKILL}}));
    EXPECT_GE(std::chrono::steady_clock::now() - began, std::chrono::milliseconds(200));
    EXPECT_GT(sleeper->EndingSignal(), 0);
  }
  EXPECT_EQ(status(), 0);
}

// A user who may start no more processes.
TEST(ProcFunctions, WhenNothingCanBeStarted) {
  Services services;
  services.Add("service");
  services.Update();
  chmod(services.scratch.Path().c_str(), 0755);
  EXPECT_TRUE(test::AsOrdinaryUser([&] {
    rlimit const none = {0, 0};
    int running = 7;
    EXPECT_EQ(setrlimit(RLIMIT_NPROC, &none), 0);
    EXPECT_NONE(CreateNewProc("true", -1), ProcManager().CreateNew("true", 0), ProcManager().Update(), AlreadyRunning(),
                SvcStart(&services, "service"), SvcStop(&services, "service"));
    EXPECT_EACH((GetProcStatus("sh", &running), running, NoChild()), true, 0, true);
  }));
}

TEST(ProcFunctions, AlreadyRunning) {
  std::string const self = std::to_string(getpid());
  std::pair<std::string, bool> const cases[] = {{self + " 1 0 a x y\n8 1 0 b x\n9 1 0 A x  y\n", false},
                                                {self + " 1 0 a x y\n8 1 0 a z\n", true},
                                                {"8 1 0 b x y\n" + self + " 1 0 a x y\n", true},
                                                {self + " 1\n8 1\n", false},  // nameless
                                                {"8 1 0 a x y\n9 1 0 a x y\n", false}};
  for (auto const& [table, running] : cases) {
    FakePs const ps(table, 0);
    EXPECT_EQ(AlreadyRunning(), running) << table;
  }
}

}  // namespace
