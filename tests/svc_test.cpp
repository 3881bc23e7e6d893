#include "zelvane/system/svc.h"

#include "support/processes.h"
#include "support/services.h"
#include "support/test.h"
#include "zelvane/system/procsvc.h"

namespace {

using test::Scratch, test::Services, test::Sleeper, test::UniqueName;

std::string Names(SvcManager& services) {
  std::string names;
  for (unsigned long i = 0; i < services.GetSvcCount(); i++) names += services.GetSvcByIndex(i)->GetName() + "|";
  return names;
}

TEST(SvcManager, NamesInTheOrderOfTheFiles) {
  Services services;
  for (char const* file : {"x.y.sh", "rc.sendmail.sh", "rc.inetd", "name.sh", "plain", "rc.", "rcs", ".hidden", "a.",
                           "RC.upper", "rc.rc.local", "b c"})
    services.Add(file);
  services.Add("not-executable", "", 0644);
  services.scratch.Write("init.d/folder/inside", "");
  ASSERT_EQ(symlink("plain", services.scratch.Path("init.d/link").c_str()), 0);
  ASSERT_EQ(symlink("nothing", services.scratch.Path("init.d/dangling").c_str()), 0);
  ASSERT_EQ(mkfifo(services.scratch.Path("init.d/pipe").c_str(), 0755), 0);
  EXPECT_TRUE(services.Update());
  EXPECT_EQ(Names(services), "|RC|a|b c|link|name|not-executable|pipe|plain||inetd|rc|sendmail|rcs|x.y|");
  SvcClass* const sendmail = services.GetSvcByName("sendmail");
  ASSERT_EACH((sendmail != nullptr, sendmail), true, services.GetSvcByIndex(12));
  EXPECT_EACH((sendmail->GetDisplayName(), sendmail->GetFileName(), sendmail->GetDescription()), "sendmail",
              services.scratch.Path("init.d/rc.sendmail.sh"), "");
  EXPECT_NONE(services.GetSvcByIndex(15), services.GetSvcByIndex(ULONG_MAX), services.GetSvcByName(nullptr));
  for (char const* other : {"Sendmail", "sendmai", "sendmail ", "rc.sendmail.sh", "/sendmail", "folder", "dangling"})
    EXPECT_EQ(services.GetSvcByName(other), nullptr) << other;
  SvcClass* const nameless = services.GetSvcByName("");
  EXPECT_NONE(nameless->Start(-1), nameless->Stop(-1), nameless->SetAutomatic(true), nameless->GetAutomatic());
  EXPECT_EQ(services.Log(), "");
}

TEST(SvcManager, Descriptions) {
  Scratch const scratch;
  SvcManager services;
  for (test::Case const& c : test::Table("initd/descriptions.txt", "scripts"))
    EXPECT_EQ(services.GetDaemonDescr(scratch.Write("script", c[1])), c[0]) << c;
  for (auto const& [path, description] :
       {std::pair(ZELVANE_FIXTURES "/initd/latin1_crlf", "A\xe7\xe3o do nobreakem falta"),
        {ZELVANE_FIXTURES "/initd/chkconfig", "Watches the line and the batteries,then shuts down "},
        {ZELVANE_FIXTURES "/initd/lsb", "Watches the units and tells the clients: batteries first."}})
    EXPECT_EQ(services.GetDaemonDescr(path), description) << path;
  // Files that are not regular are not opened: opening alone can have effects, or take data meant for others.
  std::string const pipe = scratch.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0755), 0);
  int const fd = open(pipe.c_str(), O_RDWR);
  EXPECT_EQ(write(fd, "#description:x\n", 15), 15);
  for (std::string const& path : {pipe, scratch.Path("missing"), scratch.Path()})
    EXPECT_EQ(services.GetDaemonDescr(path), "") << path;
  char taken[15];
  EXPECT_EACH((fcntl(fd, F_SETFL, O_NONBLOCK), read(fd, taken, sizeof taken)), 0, 15);
  close(fd);
}

// A script is read only up to its description, and no line is kept in memory whole, whatever its length.
TEST(SvcManager, DescriptionsOfHugeScripts) {
  Scratch const scratch;
  SvcManager services;
  auto const bytesRead = [] {
    std::string const io = test::ReadFile("/proc/self/io");
    return std::stoll(io.substr(io.find("rchar: ") + 7));
  };
  std::string const script = scratch.Write("script", "#!/bin/sh\n# description: short\n");
  ASSERT_EQ(truncate(script.c_str(), 1 << 30), 0);
  long long const before = bytesRead();
  EXPECT_EQ(services.GetDaemonDescr(script), "short");
  EXPECT_LT(bytesRead() - before, 1 << 20);
  std::string const line(3 << 20, '#');
  EXPECT_EQ(services.GetDaemonDescr(scratch.Write("script", line + "\n# description: late\n")), "");
  EXPECT_EQ(services.GetDaemonDescr(scratch.Write("script", "# description: early \\\n" + line)), "early ");
  std::string const block = "# description: " + std::string(4096 - 15, 'x');  // read in one block
  EXPECT_EQ(services.GetDaemonDescr(scratch.Write("script", block + "z")).back(), 'z');
  std::string endless = "# description: ";
  for (int i = 0; i < 5000; i++) endless += std::string(1000, 'x') + "\\\n# ";
  EXPECT_LT(services.GetDaemonDescr(scratch.Write("script", endless)).size(), 2U << 20);
}

// The system's own directories, in a child process that sees private ones.
TEST(SvcManager, TheSystemsFolders) {
  auto const result = test::InChildWithEmptyFolders([] {
    SvcManager services;
    for (char const* folder : {"/etc/init.d", "/etc/rc.d", "/usr/local/etc", "/usr/local/etc/rc.d"})
      EXPECT_EACH((services.Update(), OpenSvcManager(), mkdir(folder, 0755)), false, false, 0) << folder;
    for (auto const& [path, mode] : {std::pair("/usr/local/etc/rc.d/owner", 0700),
                                     {"/usr/local/etc/rc.d/our", 0610},
                                     {"/usr/local/etc/rc.d/other", 0601},
                                     {"/usr/local/etc/rc.d/none", 0666},
                                     {"/etc/rc.d/z", 0755}}) {
      test::WriteFile(path, std::string("# description: ") + path);
      chmod(path, static_cast<mode_t>(mode));
    }
    EXPECT_TRUE(services.Update());
    EXPECT_EQ(Names(services), "z|none|other|our|owner|");
    EXPECT_EQ(services.GetSvcByIndex(0)->GetDescription(), "/etc/rc.d/z");
    for (int level = -1; level < 8; level++)
      for (std::string const name : {"owner", "our", "other", "none", "z"})
        EXPECT_EQ(services.GetSvcByName(name)->GetAutomatic(level), name[0] == 'o' && level < 7) << name << level;
    EXPECT_EQ(rename("/usr/local/etc/rc.d", "/usr/local/etc/gone"), 0);
    EXPECT_TRUE(services.Update());
    EXPECT_EQ(Names(services), "z|");
    test::WriteFile("/etc/init.d/only", "");
    EXPECT_TRUE(services.Update());
    EXPECT_EQ(Names(services), "only|");
    return !testing::Test::HasFailure();
  });
  if (!result) GTEST_SKIP() << "no child with folders of its own on this system";
  EXPECT_TRUE(*result);
}

// Runs the file with that exact name; the shell interprets no part of it.
TEST(SvcHandle, AnyFileName) {
  for (char const* start : {"two words", "it's", "''", "a;touch hacked;", "$(touch hacked)", "`touch hacked`", "a&b",
                            "a|touch hacked", ">hacked", "*", "\"", "\\", "~", "#", "-n", "a\nb", "$HOME"}) {
    std::string const file = start + UniqueName();  // other runs of this test also have running scripts
    Services services;
    services.Add(file);
    ASSERT_EQ(services.GetSvcCount(), 1u) << file;
    EXPECT_EACH((services.GetSvcByIndex(0)->Start(-1), services.GetSvcByIndex(0)->Stop(-1)), false, true) << file;
    EXPECT_EQ(services.Log(), "start\nstop\n") << file;
    EXPECT_EQ(services.scratch.List(), (test::Names{"init.d/", "init.d/" + file})) << file;
  }
}

// Every action on every kind of script (-1: deleted), with and without the service's process, marked as running or not.
// The host ignores its children, except that it waits for the killed one.
TEST(SvcHandle, StartRestartStop) {
  for (int const mode : {0755, 0644, -1}) {
    for (int state = 0; state < 12; state++) {
      bool const process = state & 1, marked = state & 2, start = state < 4, stop = state >= 8, exists = mode >= 0;
      std::string const action = start ? "start" : stop ? "stop" : "restart", name = UniqueName();
      SCOPED_TRACE(action + " " + std::to_string(mode) + (process ? " process" : "") + (marked ? " marked" : ""));
      Services services;
      services.Add(name, "exit 127\n", exists ? static_cast<mode_t>(mode) : 0755);
      auto sleeper = marked ? std::make_unique<Sleeper>(name, true) : nullptr;
      EXPECT_EQ(services.IsRunning(name), marked);
      if (!exists) unlink(services.scratch.Path("init.d/" + name).c_str());
      if (process != marked) sleeper = process ? std::make_unique<Sleeper>(name) : nullptr;

      if (!stop) signal(SIGCHLD, SIG_IGN);
      bool const result = (start ? SvcStart : stop ? SvcStop : SvcRestart)(&services, name.c_str());
      signal(SIGCHLD, SIG_DFL);
      bool const runs = mode == 0755 && (marked || start || stop);
      EXPECT_EQ(result, start ? runs && process : stop ? exists : exists && marked && process);
      EXPECT_EQ(services.IsRunning(name), stop ? marked && !result : marked || (start && result));
      if (process) EXPECT_ALL(stop && result ? sleeper->EndingSignal() > 0 : sleeper->IsAlive());
      EXPECT_EQ(services.Log(), runs ? action + "\n" : "");
    }
  }
}

TEST(SvcHandle, StatusIsKeptInTheHandleOnly) {
  Services services;
  std::string const name = UniqueName();
  Sleeper const process(name);
  services.Add(name);
  SvcClass* const service = services.GetSvcByName(name);
  for (int const automatic : {1, 0, INT_MIN}) {
    int running[3] = {7, 7, 7}, flag[3] = {7, 7, 7};  // only the middle ones may change
    EXPECT_EACH((GetSvcStatus(&services, "other", &running[1], &flag[1]), running[1], flag[1]), false, 7, 7);
    EXPECT_TRUE(SetSvcAuto(&services, name.c_str(), automatic));
    EXPECT_TRUE(GetSvcStatus(&services, name.c_str(), nullptr, nullptr));
    EXPECT_TRUE(GetSvcStatus(&services, name.c_str(), &running[1], &flag[1]));
    EXPECT_EACH((testing::PrintToString(running), testing::PrintToString(flag)), "{ 7, 1, 7 }",
                automatic ? "{ 7, 1, 7 }" : "{ 7, 0, 7 }");
    for (int const level : {INT_MIN, -1, 0, 6, 7, INT_MAX}) {
      EXPECT_EQ(service->SetAutomatic(level, !automatic), level < 7) << level;
      EXPECT_EQ(service->GetAutomatic(level), automatic && level < 0) << level;
    }
  }
  for (char const* other : {static_cast<char const*>(nullptr), "other", ""})
    EXPECT_NONE(SvcStart(&services, other), SvcStop(&services, other), SvcRestart(&services, other),
                SetSvcAuto(&services, other, 1))
        << (other ? other : "null");
  EXPECT_EQ(services.scratch.List(), (test::Names{"init.d/", "init.d/" + name}));
  void* const machine = OpenSvcManager();  // depends on the machine
  EXPECT_EQ(CloseSvcManager(machine), machine != nullptr);
}

TEST(SvcHandle, StopOfWhatCannotBeKilled) {
  Services services;
  services.Add("upssrv");
  test::FakePs const ps("4294967295 1 0 upssrv upssrv\n", 0);
  EXPECT_EACH((SvcStop(&services, "upssrv"), KillProc("upssrv"), services.IsRunning("upssrv")), false, false, true);
}

}  // namespace
