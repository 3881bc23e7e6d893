#include "zelvane/system/svc.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "support/child.h"
#include "support/processes.h"
#include "support/scratch.h"
#include "support/services.h"
#include "support/slot.h"

namespace {

using test::InChild;
using test::NoChild;
using test::OpenDescriptors;
using test::Scratch;
using test::Services;
using test::Sleeper;
using test::UniqueName;

std::string Names(SvcManager& services) {
  std::string names;
  for (unsigned long i = 0; i < services.GetSvcCount(); i++) names += services.GetSvcByIndex(i)->GetName() + "|";
  return names;
}

#if defined(__x86_64__) || defined(__i386__)
TEST(SvcSlots, Order) {
  using test::Slot;
  using M = SvcManager;
  EXPECT_EQ(Slot(&M::GetDaemonInfo), 0u);
  EXPECT_EQ(Slot(&M::GetDaemonDescr), 1u);
  EXPECT_EQ(Slot(&M::GetDaemonAuto), 2u);  // the destructor takes 3 and 4
  EXPECT_EQ(Slot(&M::Update), 5u);
  EXPECT_EQ(Slot(&M::Clear), 6u);
  EXPECT_EQ(Slot(&M::GetSvcCount), 7u);
  EXPECT_EQ(Slot(&M::GetSvcByIndex), 8u);
  EXPECT_EQ(Slot<SvcClass* (M::*)(char const*)>(&M::GetSvcByName), 9u);
  EXPECT_EQ(Slot<bool (M::*)(char const*)>(&M::IsRunning), 10u);
}
#endif

// ---- Reading the table ----

TEST(SvcTable, NamesInTheOrderOfTheFiles) {
  Services services;
  for (char const* file : {"x.y.sh", "rc.sendmail.sh", "rc.inetd", "name.sh", "plain", "rc.", "rcs", ".hidden", "a.",
                           "RC.upper", "rc.rc.local", "b c"})
    services.Add(file);
  services.Add("not-executable", "", 0644);
  services.scratch.Write("init.d/folder/inside", "");
  ASSERT_EQ(symlink("plain", services.scratch.Path("init.d/link").c_str()), 0);
  ASSERT_EQ(symlink("folder", services.scratch.Path("init.d/link-to-folder").c_str()), 0);
  ASSERT_EQ(symlink("nothing", services.scratch.Path("init.d/dangling").c_str()), 0);
  ASSERT_EQ(mkfifo(services.scratch.Path("init.d/pipe").c_str(), 0755), 0);
  EXPECT_TRUE(services.Update());
  EXPECT_EQ(Names(services), "|RC|a|b c|link|name|not-executable|pipe|plain||inetd|rc|sendmail|rcs|x.y|");
  SvcClass* const sendmail = services.GetSvcByName("sendmail");
  ASSERT_NE(sendmail, nullptr);
  EXPECT_EQ(sendmail, services.GetSvcByIndex(12));
  EXPECT_EQ(sendmail->GetDisplayName(), "sendmail");
  EXPECT_EQ(sendmail->GetFileName(), services.scratch.Path("init.d/rc.sendmail.sh"));
  EXPECT_EQ(sendmail->GetDescription(), "");
  EXPECT_FALSE(sendmail->GetAutomatic());
  EXPECT_EQ(services.GetSvcByIndex(15), nullptr);
  EXPECT_EQ(services.GetSvcByIndex(ULONG_MAX), nullptr);
  for (char const* other : {"Sendmail", "sendmai", "sendmail ", "rc.sendmail.sh", "/sendmail", "folder", "dangling"})
    EXPECT_EQ(services.GetSvcByName(other), nullptr) << other;
  EXPECT_EQ(services.GetSvcByName(nullptr), nullptr);
  EXPECT_FALSE(services.IsRunning(static_cast<char const*>(nullptr)));
}

TEST(SvcTable, FoldersThatGiveNothing) {
  Scratch const scratch;
  scratch.Write("with-folder/sub/file", "");
  scratch.Write("file", "");
  ASSERT_EQ(mkdir(scratch.Path("empty").c_str(), 0755), 0);
  SvcManager services;
  for (char const* folder : {"empty/", "with-folder/", "file/", "missing/"})
    EXPECT_FALSE(services.GetDaemonInfo(scratch.Path(folder))) << folder;
  EXPECT_TRUE(services.GetDaemonInfo(scratch.Path("with-folder/sub/")));
  EXPECT_TRUE(services.GetDaemonInfo(scratch.Path("empty/")));     // counts what the table has already
  EXPECT_FALSE(services.GetDaemonInfo(scratch.Path("missing/")));  // does not get that far
  EXPECT_TRUE(services.GetDaemonInfo(scratch.Path("with-folder/sub/")));
  EXPECT_EQ(Names(services), "file|file|");
}

// Which folders are read, and when.
TEST(SvcTable, OrderOfTheFolders) {
  struct Planned : SvcManager {
    bool GetDaemonInfo(std::string const& dir) override {
      asked += dir + " ";
      return asked.size() > 1 && results[calls++];
    }
    std::string asked;
    std::vector<bool> results;
    size_t calls = 0;
  };
  std::string const all = "/etc/init.d/ /etc/rc.d/ /usr/local/etc/rc.d/ ";
  struct {
    std::vector<bool> results;
    bool updated;
    std::string asked;
  } const cases[] = {{{true}, true, "/etc/init.d/ "},
                     {{false, true, false}, true, all},
                     {{false, true, true}, true, all},
                     {{false, false, true}, true, all},
                     {{false, false, false}, false, all}};
  for (auto const& c : cases) {
    Planned services;
    services.results = c.results;
    EXPECT_EQ(services.Update(), c.updated) << testing::PrintToString(c.results);
    EXPECT_EQ(services.asked, c.asked) << testing::PrintToString(c.results);
  }
}

TEST(SvcTable, AnEmptyTableIsReadAndAFilledOneKept) {
  struct Counting : Services {
    bool Update() override {
      updates++;
      return Services::Update();
    }
    int updates = 0;
  };
  Counting services;
  std::string const name = UniqueName();
  EXPECT_EQ(services.GetSvcCount(), 0u);
  EXPECT_EQ(services.GetSvcByName(name), nullptr);
  EXPECT_EQ(services.updates, 2);
  services.Add(name);
  auto sleeper = std::make_unique<Sleeper>(name);
  EXPECT_TRUE(services.IsRunning(name));
  EXPECT_EQ(services.updates, 3);
  sleeper.reset();
  services.Add("aaa");
  EXPECT_TRUE(services.IsRunning(name.c_str()));
  EXPECT_EQ(services.GetSvcCount(), 1u);
  EXPECT_EQ(services.updates, 3);
  EXPECT_TRUE(services.Update());
  EXPECT_FALSE(services.IsRunning(name));
  EXPECT_EQ(services.GetSvcCount(), 2u);
  services.Clear();
  EXPECT_NE(services.GetSvcByIndex(1), nullptr);
  EXPECT_EQ(services.updates, 5);
}

TEST(SvcTable, StepsCanBeReplaced) {
  struct Steps : Services {
    std::string GetDaemonDescr(std::string const& path) override { return "about " + path; }
    void GetDaemonAuto(SvcClass& svc, std::string const& path) override {
      svc.SetAutomatic(path == svc.GetFileName() && svc.GetDescription() == "about " + path);
    }
  };
  Steps services;
  services.Add("one");
  ASSERT_EQ(services.GetSvcCount(), 1u);
  EXPECT_EQ(services.GetSvcByIndex(0)->GetDescription(), "about " + services.scratch.Path("init.d/one"));
  EXPECT_TRUE(services.GetSvcByIndex(0)->GetAutomatic());
}

// ---- Descriptions ----

TEST(SvcDescription, Headers) {
  struct {
    char const* script;
    char const* description;
  } const cases[] = {
      {"# Description: Watches the line \\\n# power unit\n", "Watches the line power unit"},
      {"# Description: Watches\\\n#power\\\n#\t unit \n# more", "Watchespowerunit"},
      {"# Description: a \\\nexit 0\n\n  # b\n", "a b"},
      {"# Description: a\\\\\n# b\n", "a\\b"},
      {"# Description: \\\n# b \\\n# c", "b c"},
      {"# Description: a \\", "a "},
      {"# Description: a \\\nexit 0", "a "},
      {"# Description: a \\\n#\n# b", "a "},
      {"# Description: a \\\n# description: b", "a description: b"},
      {"#description:x", "x"},
      {" \t#\t DESCRIPTION\t :\t x: y \r\n", "x: y"},
      {"# Descriptions-de(1): x\n", "x"},
      {"# Description: \n# Description: second\n", ""},
      {"# Description without colon\n# Description: x\n", "x"},
      {"# Short-Description: no\n## Description: no\n# Descriptio: no\n# x Description: no\n", ""},
      {"Description: x\necho # Description: x\n; Description: x\n", ""},
      {"# colon : description\n", ""},
      {"", ""},
      {"#", ""},
      {"\n\n#!/bin/sh\n", ""},
  };
  Scratch const scratch;
  SvcManager services;
  for (auto const& c : cases)
    EXPECT_EQ(services.GetDaemonDescr(scratch.Write("script", c.script)), c.description) << "'" << c.script << "'";
  std::string const half(70000, 'x');
  scratch.Write("script", "# " + half + "\n# description: " + half + "\\\n# " + half);
  EXPECT_EQ(services.GetDaemonDescr(scratch.Path("script")), half + half);
}

TEST(SvcDescription, WholeScripts) {
  SvcManager services;
  std::string const folder = ZELVANE_FIXTURES "/initd/";
  EXPECT_EQ(services.GetDaemonDescr(folder + "lsb"), "Watches the units and tells the clients: batteries first.");
  EXPECT_EQ(services.GetDaemonDescr(folder + "chkconfig"), "Watches the line and the batteries,then shuts down ");
  EXPECT_EQ(services.GetDaemonDescr(folder + "latin1_crlf"), "A\xe7\xe3o do nobreakem falta");
}

TEST(SvcDescription, OnlyRegularFilesAreOpened) {
  Scratch const scratch;
  SvcManager services;
  std::string const target = scratch.Write("target", "# description: x\n");
  ASSERT_EQ(symlink(target.c_str(), scratch.Path("link").c_str()), 0);
  EXPECT_EQ(services.GetDaemonDescr(scratch.Path("link")), "x");
  EXPECT_EQ(services.GetDaemonDescr(scratch.Path("missing")), "");
  EXPECT_EQ(services.GetDaemonDescr(scratch.Path()), "");
  EXPECT_EQ(services.GetDaemonDescr("/dev/zero"), "");
  std::string const pipe = scratch.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0755), 0);
  int const watch = inotify_init1(IN_NONBLOCK);
  ASSERT_GE(inotify_add_watch(watch, pipe.c_str(), IN_OPEN), 0);
  EXPECT_EQ(services.GetDaemonDescr(pipe), "");
  EXPECT_TRUE(services.GetDaemonInfo(scratch.Path()));
  char event[1024];
  EXPECT_EQ(read(watch, event, sizeof event), -1) << "the pipe was opened";
  close(watch);
}

// ---- Automatic start ----

TEST(SvcAutomatic, Flags) {
  SvcClass none;
  EXPECT_FALSE(none.SetAutomatic(true));
  EXPECT_FALSE(none.GetAutomatic());
  Services services;
  services.Add("named");
  SvcClass* const named = services.GetSvcByName("named");
  ASSERT_NE(named, nullptr);
  std::string const script = services.scratch.Read("init.d/named");
  for (bool const on : {true, false, true}) {
    EXPECT_TRUE(named->SetAutomatic(on));
    EXPECT_EQ(named->GetAutomatic(), on);
    for (int const level : {INT_MIN, -1}) EXPECT_EQ(named->GetAutomatic(level), on) << level;
    for (int const level : {0, 1, 6, 7, 8, INT_MAX}) EXPECT_FALSE(named->GetAutomatic(level)) << level;
  }
  for (bool const on : {true, false}) {
    for (int const level : {INT_MIN, -1, 0, 6}) EXPECT_TRUE(named->SetAutomatic(level, on)) << level;
    for (int const level : {7, 8, INT_MAX}) EXPECT_FALSE(named->SetAutomatic(level, on)) << level;
    EXPECT_TRUE(named->GetAutomatic());
    EXPECT_FALSE(named->GetAutomatic(0));
  }
  EXPECT_EQ(services.scratch.List(), (std::vector<std::string>{"init.d/", "init.d/named"}));
  EXPECT_EQ(services.scratch.Read("init.d/named"), script);
  services.GetDaemonAuto(*named, named->GetFileName());
  EXPECT_FALSE(named->GetAutomatic());
  services.Update();
  EXPECT_FALSE(services.GetSvcByName("named")->GetAutomatic());
}

// The system's own folders, in a child process that has them to itself.
TEST(SvcTable, TheSystemsFolders) {
  auto const result = test::InChildWithEmptyFolders([] {
    auto const add = [](std::string const& path, mode_t mode) {
      test::WriteFile(path, "#!/bin/sh\n# description: " + path + "\n");
      chmod(path.c_str(), mode);
    };
    SvcManager services;
    EXPECT_FALSE(services.Update());
    for (char const* folder : {"/etc/init.d", "/etc/rc.d", "/usr/local/etc", "/usr/local/etc/rc.d"})
      mkdir(folder, 0755);
    EXPECT_FALSE(services.Update());
    EXPECT_EQ(services.GetSvcCount(), 0u);
    add("/usr/local/etc/rc.d/b-owner", 0700);
    add("/usr/local/etc/rc.d/b-other", 0601);
    add("/usr/local/etc/rc.d/a-none", 0666);
    EXPECT_TRUE(services.Update());
    EXPECT_EQ(Names(services), "a-none|b-other|b-owner|");
    add("/etc/rc.d/z", 0755);
    EXPECT_TRUE(services.Update());
    EXPECT_EQ(Names(services), "z|a-none|b-other|b-owner|");
    EXPECT_EQ(services.GetSvcByName("z")->GetDescription(), "/etc/rc.d/z");
    for (int level = -1; level < 8; level++) {
      EXPECT_EQ(services.GetSvcByName("b-owner")->GetAutomatic(level), level < 7) << level;
      EXPECT_EQ(services.GetSvcByName("b-other")->GetAutomatic(level), level < 7) << level;
      EXPECT_FALSE(services.GetSvcByName("a-none")->GetAutomatic(level)) << level;
      EXPECT_FALSE(services.GetSvcByName("z")->GetAutomatic(level)) << level;
    }
    services.GetDaemonAuto(*services.GetSvcByName("z"), "/usr/local/etc/rc.d/../rc.d/b-owner");
    EXPECT_FALSE(services.GetSvcByName("z")->GetAutomatic());
    services.GetDaemonAuto(*services.GetSvcByName("b-owner"), "/usr/local/etc/rc.d/missing");
    EXPECT_FALSE(services.GetSvcByName("b-owner")->GetAutomatic(3));
    add("/etc/init.d/only", 0755);
    EXPECT_TRUE(services.Update());
    EXPECT_EQ(Names(services), "only|");
    EXPECT_FALSE(services.GetSvcByName("only")->GetAutomatic());
    return !testing::Test::HasFailure();
  });
  if (!result) GTEST_SKIP() << "no child with folders of its own on this system";
  EXPECT_TRUE(*result);
}

// ---- Start, stop, restart ----

TEST(SvcStart, ResultIsWhetherTheProcessIsThere) {
  Services services;
  std::string const name = UniqueName();
  services.Add(name, "exit 3\n");
  SvcClass* const service = services.GetSvcByName(name);
  ASSERT_NE(service, nullptr);
  EXPECT_FALSE(service->Start(-1));
  EXPECT_FALSE(service->IsRunning());
  EXPECT_EQ(services.Log(), "start\n");
  {
    Sleeper const process(name);
    EXPECT_TRUE(service->Start(0));
    EXPECT_TRUE(service->IsRunning());
  }
  EXPECT_FALSE(service->Start(1000));
  EXPECT_TRUE(service->IsRunning());  // left as it was
  EXPECT_EQ(services.Log(), "start\nstart\n");
  EXPECT_TRUE(NoChild());
}

TEST(SvcStart, WithoutAScriptThatMayBeExecuted) {
  Services services;
  std::string const name = UniqueName();
  Sleeper const process(name);
  for (mode_t const mode : {0644u, 0600u, 0u}) {
    services.Add(name, "", mode);
    services.Update();
    EXPECT_FALSE(services.GetSvcByName(name)->Start(-1)) << mode;
  }
  unlink(services.scratch.Path("init.d/" + name).c_str());
  EXPECT_FALSE(services.GetSvcByName(name)->Start(-1));
  EXPECT_EQ(services.Log(), "");
  for (mode_t const mode :
       {0100u, 0010u, 0001u}) {  // any of the bits; whether it can then be run is the shell's affair
    services.Add(name, "", mode);
    EXPECT_TRUE(services.GetSvcByName(name)->Start(-1)) << mode;
  }
}

// The file of that name is run, and nothing that a shell could make of it.
TEST(SvcStart, AnyFileName) {
  for (char const* start :
       {"two words", "it's", "''", "'", "a;touch hacked;", "$(touch hacked)", "`touch hacked`", "a&b", "a|touch hacked",
        ">hacked", "*", "\"", "\\", "~", "#", "-n", "a\nb", "$HOME", "!!"}) {
    std::string const file = start + UniqueName();  // other runs of this test have scripts that run, too
    Services services;
    services.Add(file);
    ASSERT_EQ(services.GetSvcCount(), 1u) << file;
    EXPECT_FALSE(services.GetSvcByIndex(0)->Start(-1)) << file;
    EXPECT_TRUE(services.GetSvcByIndex(0)->Stop(-1)) << file;
    EXPECT_EQ(services.Log(), "start\nstop\n") << file;
    EXPECT_EQ(services.scratch.List(), (std::vector<std::string>{"init.d/", "init.d/" + file})) << file;
  }
}

TEST(SvcStop, SurvivorsAreKilled) {
  struct {
    mode_t mode;
    bool ignoresTerm;
    char const* log;
  } const cases[] = {{0755, false, "stop\n"}, {0755, true, "stop\n"}, {0644, false, ""}, {0644, true, ""}};
  for (auto const& c : cases) {
    Services services;
    std::string const name = UniqueName();
    services.Add(name, "exit 1\n", c.mode);
    Sleeper process(name, c.ignoresTerm);
    SvcClass* const service = services.GetSvcByName(name);
    EXPECT_TRUE(service->IsRunning());
    EXPECT_TRUE(service->Stop(-1)) << c.mode << c.ignoresTerm;
    EXPECT_FALSE(service->IsRunning()) << c.mode << c.ignoresTerm;
    EXPECT_EQ(services.Log(), c.log) << c.mode << c.ignoresTerm;
    int const ending = process.EndingSignal();
    EXPECT_TRUE(ending == SIGKILL || (ending == SIGTERM && !c.ignoresTerm)) << ending;
  }
}

TEST(SvcStop, SurvivorThatCannotBeKilled) {
  Services services;
  services.Add("upssrv");
  test::FakePs const ps("4294967295 1 0 upssrv upssrv\n", 0);
  SvcClass* const service = services.GetSvcByName("upssrv");
  ASSERT_NE(service, nullptr);
  EXPECT_FALSE(service->Stop(-1));
  EXPECT_TRUE(service->IsRunning());
  EXPECT_EQ(services.Log(), "stop\n");
}

TEST(SvcStop, NothingRunsAndNoScript) {
  Services services;
  std::string const name = UniqueName();
  std::string const plain = UniqueName();
  services.Add(name);
  services.Add(plain, "", 0644);
  EXPECT_TRUE(services.GetSvcByName(name)->Stop(-1));
  EXPECT_TRUE(services.GetSvcByName(plain)->Stop(-1));
  EXPECT_EQ(services.Log(), "stop\n");
  Sleeper const process(name);
  services.Update();
  unlink(services.scratch.Path("init.d/" + name).c_str());
  EXPECT_FALSE(services.GetSvcByName(name)->Stop(-1));
  EXPECT_TRUE(services.IsRunning(name));
  EXPECT_TRUE(process.IsAlive());
}

TEST(SvcRestart, OnlyWhatRuns) {
  Services services;
  std::string const name = UniqueName();
  services.Add(name, "exit 1\n");
  SvcClass* const service = services.GetSvcByName(name);
  ASSERT_NE(service, nullptr);
  auto process = std::make_unique<Sleeper>(name);
  EXPECT_FALSE(service->Restart(-1, -1));  // not known to run
  EXPECT_EQ(services.Log(), "");
  EXPECT_TRUE(service->Start(-1));
  EXPECT_TRUE(service->Restart(0, 7));
  EXPECT_EQ(services.Log(), "start\nrestart\n");
  process.reset();
  EXPECT_FALSE(service->Restart(-1, -1));
  EXPECT_TRUE(service->IsRunning());
  EXPECT_EQ(services.Log(), "restart\n");
  process = std::make_unique<Sleeper>(name);
  chmod(service->GetFileName().c_str(), 0644);
  EXPECT_TRUE(service->Restart(-1, -1));
  unlink(service->GetFileName().c_str());
  EXPECT_FALSE(service->Restart(-1, -1));
  EXPECT_EQ(services.Log(), "");
}

TEST(SvcClass, NoService) {
  SvcClass none;
  EXPECT_EQ(none.GetName() + none.GetDisplayName() + none.GetFileName() + none.GetDescription(), "");
  EXPECT_FALSE(none.IsRunning());
  EXPECT_FALSE(none.Start(-1));
  EXPECT_FALSE(none.Stop(-1));
  EXPECT_FALSE(none.Restart(-1, -1));
  // A file whose name is nothing but its extension.
  Services services;
  services.Add(".sh");
  SvcClass* const nameless = services.GetSvcByIndex(0);
  ASSERT_NE(nameless, nullptr);
  EXPECT_FALSE(nameless->Start(-1) || nameless->Stop(-1) || nameless->SetAutomatic(true));
  EXPECT_EQ(services.Log(), "");
}

// A daemon that its script starts and stops, with the ids written down.
TEST(SvcClass, ScriptWithADaemon) {
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);  // what the script leaves behind becomes this program's child
  int const descriptors = OpenDescriptors();
  {
    Services services;
    std::string const name = UniqueName();
    std::string const program = services.scratch.Path(name);
    ASSERT_EQ(symlink("/bin/sleep", program.c_str()), 0);
    services.Add(name, "[ $1 = start ] || kill $(cat pid)\n[ $1 = stop ] && exit\n./" + name +
                           " 300 >/dev/null 2>&1 &\n"
                           "until [ \"$(cat /proc/$!/comm)\" = " +
                           name + " ]; do :; done\necho $! >pid\n");
    auto const id = [&] { return static_cast<pid_t>(std::stol(services.scratch.Read("pid"))); };
    SvcClass* const service = services.GetSvcByName(name);
    ASSERT_NE(service, nullptr);
    EXPECT_TRUE(service->Start(-1));
    EXPECT_TRUE(service->IsRunning());
    pid_t const first = id();
    EXPECT_TRUE(service->Restart(-1, -1));
    pid_t const second = id();
    EXPECT_NE(first, second);
    EXPECT_EQ(test::EndingSignal(first), SIGTERM);
    EXPECT_TRUE(service->Stop(-1));
    EXPECT_FALSE(service->IsRunning());
    EXPECT_GT(test::EndingSignal(second), 0);
    EXPECT_EQ(services.Log(), "start\nrestart\nstop\n");
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_TRUE(NoChild());
  prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST(SvcClass, HostThatIgnoresItsChildren) {
  EXPECT_TRUE(InChild([] {
    Services services;
    std::string const name = UniqueName();
    services.Add(name);
    Sleeper const process(name);
    signal(SIGCHLD, SIG_IGN);
    SvcClass* const service = services.GetSvcByName(name);
    bool const done = service->Start(-1) && service->Restart(-1, -1) && service->Stop(-1);
    return done && services.Log() == "start\nrestart\nstop\n" && signal(SIGCHLD, SIG_DFL) == SIG_IGN;
  }));
}

TEST(SvcClass, ShellThatCannotBeStarted) {
  EXPECT_TRUE(test::AsOrdinaryUser([] {
    Services services;
    std::string const name = UniqueName();
    services.Add(name);
    Sleeper const process(name);
    SvcClass* const service = services.GetSvcByName(name);
    if (!service->Start(-1)) return false;
    rlimit const none = {0, 0};
    setrlimit(RLIMIT_NPROC, &none);
    return !service->Start(-1) && !service->Restart(-1, -1) && !service->Stop(-1) && service->IsRunning() &&
           services.Log() == "start\n" && process.IsAlive();
  }));
}

}  // namespace
