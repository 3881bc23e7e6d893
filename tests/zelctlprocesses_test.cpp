// zelctl proc and svc on processes and scripts of the tests' own: what no transcript can tell, because ids differ.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <set>

#include "support/child.h"
#include "support/command.h"
#include "support/processes.h"

namespace {

using test::Sleeper;
using test::UniqueName;
using test::Zelctl;

constexpr char kRefusal[] =
    "zelctl: nothing killed: only process 1, zelctl itself or processes that have ended have that name\n[1]";

std::string Id(Sleeper const& process) { return std::to_string(process.Id()); }

std::string Called(Sleeper const& process, std::string const& name) {
  return "process " + Id(process) + " (" + name + ")";
}

class ZelctlProcesses : public testing::Test {
 protected:
  void SetUp() override {
    if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  }
};

TEST_F(ZelctlProcesses, FindsByNameAndSetsThePriority) {
  std::string const name = UniqueName();
  EXPECT_EQ(Zelctl({"proc", "find", name}), "zelctl: no process is named " + name + "\n[1]");
  Sleeper const process(name);
  EXPECT_EQ(Zelctl({"proc", "priority", Id(process), "low", "--json"}).substr(0, 2), "{\n");
  EXPECT_EQ(getpriority(PRIO_PROCESS, static_cast<id_t>(process.Id())), 19);
  std::string const parent = std::to_string(getpid());
  std::string const json = "[\n  {\n    \"pid\": " + Id(process) + ",\n    \"parent\": " + parent +
                           ",\n    \"priority\": \"low\",\n    \"name\": \"" + name + "\",\n    \"command\": \"" +
                           process.CommandLine() + "\"\n  }\n]\n";
  EXPECT_EQ(Zelctl({"proc", "find", "/usr/sbin/" + name, "--json"}), json);
  std::string const list = Zelctl({"proc", "list", "--json"});
  EXPECT_NE(list.find(json.substr(2, json.size() - 5)), std::string::npos) << list;

  std::string const table = Zelctl({"proc", "find", name});
  std::size_t const command = table.find("COMMAND");
  ASSERT_NE(command, std::string::npos) << table;
  EXPECT_EQ(table.find(process.CommandLine()), table.find('\n') + 1 + command) << "below its heading\n" << table;

  EXPECT_EQ(Zelctl({"proc", "priority", Id(process), "0"}), Called(process, name) + ": priority low, was low\n");
  EXPECT_EQ(Zelctl({"proc", "priority", Id(process), "lowest"}),
            "zelctl: LEVEL: low, normal, high or highest, or 0 to 3\n[2]");
  EXPECT_EQ(Zelctl({"proc", "priority", "0", "low"}), "zelctl: PID: a number from 1 to 2147483647\n[2]");
  EXPECT_EQ(Zelctl({"proc", "priority", "2147483647", "low"}), "zelctl: no process 2147483647\n[1]");
}

TEST_F(ZelctlProcesses, KillsWhatIsNamedAndNothingElse) {
  std::string const name = UniqueName();
  Sleeper victim(name);
  Sleeper const longer(name + "b");
  EXPECT_EQ(Zelctl({"proc", "kill", name, "--pid", Id(longer)}),
            "zelctl: process " + Id(longer) + " is not named " + name + "\n[1]");
  EXPECT_TRUE(victim.IsAlive());
  EXPECT_EQ(Zelctl({"proc", "kill", name}), "sent SIGTERM and SIGKILL to " + Called(victim, name) + "\n");
  EXPECT_EQ(Zelctl({"proc", "kill", name}), kRefusal) << "of one that has ended and was not waited for";
  EXPECT_EQ(victim.EndingSignal(), SIGTERM);
  EXPECT_TRUE(longer.IsAlive());
  EXPECT_EQ(Zelctl({"proc", "kill", name}), "zelctl: no process is named " + name + "\n[1]");
  EXPECT_EQ(Zelctl({"proc", "kill", name + "c2345678901234"}),
            "zelctl: no process is named " + name + "c2345678901234; the system keeps 15 characters of a name: " +
                (name + "c2345678901234").substr(0, 15) + "\n[1]");

  Sleeper stubborn(name, true);
  EXPECT_EQ(Zelctl({"proc", "kill", "/sbin/" + name, "--json"}),
            "[\n  {\n    \"pid\": " + Id(stubborn) + ",\n    \"name\": \"" + name + "\"\n  }\n]\n");
  EXPECT_EQ(stubborn.EndingSignal(), SIGKILL);
}

TEST_F(ZelctlProcesses, WantsToKnowWhichOfSeveral) {
  std::string const name = UniqueName();
  Sleeper first(name);
  Sleeper second(name);
  Sleeper third(name);
  // In the order of `ps`.
  std::set<pid_t> const ids = {first.Id(), second.Id(), third.Id()};
  std::string listed;
  for (pid_t const id : ids) listed += (listed.empty() ? "" : ", ") + std::to_string(id);
  EXPECT_EQ(Zelctl({"proc", "kill", name}), "zelctl: nothing killed: several processes have that name: " + listed +
                                                "; --pid chooses one, --all kills all of them\n[1]");
  EXPECT_TRUE(first.IsAlive() && second.IsAlive() && third.IsAlive());
  EXPECT_EQ(Zelctl({"proc", "kill", name, "--pid", Id(second)}),
            "sent SIGTERM and SIGKILL to " + Called(second, name) + "\n");
  EXPECT_EQ(second.EndingSignal(), SIGTERM);
  EXPECT_TRUE(first.IsAlive() && third.IsAlive());
  std::string const answer = Zelctl({"proc", "kill", name, "--all"});
  for (Sleeper* process : {&first, &third}) {
    EXPECT_NE(answer.find("sent SIGTERM and SIGKILL to " + Called(*process, name) + "\n"), std::string::npos) << answer;
    EXPECT_EQ(process->EndingSignal(), SIGTERM);
  }
}

// Under another name than zelctl: a command that spares only itself would kill that of another test.
TEST_F(ZelctlProcesses, SparesItself) {
  test::Scratch const scratch;
  std::string const name = UniqueName();
  std::string const program = scratch.Path(name);
  ASSERT_EQ(symlink(ZELVANE_ZELCTL, program.c_str()), 0);
  EXPECT_EQ(test::Answer(program, {"proc", "kill", name}), kRefusal);
  EXPECT_EQ(test::Answer(program, {"proc", "kill", name, "--all"}), kRefusal);
  Sleeper other(name);
  EXPECT_EQ(test::Answer(program, {"proc", "kill", name}), "sent SIGTERM and SIGKILL to " + Called(other, name) + "\n");
  EXPECT_EQ(other.EndingSignal(), SIGTERM);
}

// In a process-id namespace, whose process 1 is a child of the test's.
TEST_F(ZelctlProcesses, SparesProcessOne) {
  std::string const name = UniqueName();
  test::Scratch const scratch;
  auto const result = test::InChildWithEmptyFolders([&] {
    return unshare(CLONE_NEWPID) != 0 || test::InChild([&] {
             if (getpid() != 1 || mount("proc", "/proc", "proc", 0, nullptr) != 0) return true;
             scratch.Write("made", "");
             prctl(PR_SET_NAME, name.c_str());
             EXPECT_EQ(Zelctl({"proc", "kill", name}), kRefusal);
             EXPECT_EQ(Zelctl({"proc", "kill", name, "--pid", "1"}), kRefusal);
             EXPECT_EQ(Zelctl({"proc", "kill", name, "--all"}), kRefusal);
             return !HasFailure();
           });
  });
  if (!result || !scratch.Exists("made")) GTEST_SKIP() << "no such namespace on this system";
  EXPECT_TRUE(*result);
}

TEST_F(ZelctlProcesses, StartsInTheBackground) {
  test::Scratch const scratch;
  std::string const name = UniqueName();
  ASSERT_EQ(symlink("/bin/sleep", scratch.Path(name).c_str()), 0);
  std::string const answer = Zelctl({"proc", "start", "exec " + scratch.Path(name) + " 300"});
  ASSERT_EQ(answer.substr(0, 16), "started process ");
  pid_t const id = std::stoi(answer.substr(16));
  EXPECT_TRUE(test::Eventually([&] { return test::CommandName(id) == name; })) << answer;
  EXPECT_EQ(getsid(id), id) << "a session of its own";
  EXPECT_EQ(Zelctl({"proc", "kill", name}),
            "sent SIGTERM and SIGKILL to process " + std::to_string(id) + " (" + name + ")\n");

  // How long the shell takes to fail depends on the machine; the command looks for a moment only.
  std::string failure;
  EXPECT_TRUE(test::Eventually([&] {
    failure = Zelctl({"proc", "start", "exit 3"});
    return failure.substr(0, 8) != "started ";
  }));
  EXPECT_EQ(failure.substr(failure.size() - 40), " has ended already, with exit code 3\n[1]") << failure;
}

// ---- Services ----

TEST_F(ZelctlProcesses, RunsServices) {
  test::Scratch const scratch;
  std::string const name = UniqueName();
  std::string const script = "/etc/init.d/rc." + name + ".sh";
  ASSERT_EQ(symlink("/bin/sleep", scratch.Path(name).c_str()), 0);
  std::string const none =
      "there is no init script on this machine: none in /etc/init.d, /etc/rc.d and /usr/local/etc/rc.d\n";
  // The script returns when its process has its name, and counts on nobody to notice the end of it.
  std::string const start = "#!/bin/sh\n# Description: Watches the line\ncd '" + scratch.Path() +
                            "' || exit\ncase $1 in\n" + "restart) ;;\nstart)\n  \"$PWD/" + name +
                            "\" 300 >/dev/null 2>&1 &\n  echo $! >id\n" +
                            "  until [ \"$(cat /proc/$!/comm)\" = " + name + " ]; do :; done ;;\n";
  std::string const stop =
      "stop) kill \"$(cat id)\"; while [ \"$(cat /proc/$(cat id)/cmdline | wc -c)\" != 0 ]; do :; done ;;\n";
  auto const id = [&] {
    std::string const line = scratch.Read("id");
    return line.substr(0, line.find('\n'));
  };

  auto const result = test::InChildWithEmptyFolders([&] {
    // Nobody else may wait for them, and an ended process still has its name.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    auto const forget = [&] { waitpid(atoi(id().c_str()), nullptr, 0); };
    EXPECT_EQ(Zelctl({"svc", "list"}), "zelctl: note: " + none + "NAME  RUNNING  AUTOMATIC  SCRIPT  DESCRIPTION\n");
    EXPECT_EQ(Zelctl({"svc", "list", "--json"}), "zelctl: note: " + none + "[]\n");
    EXPECT_EQ(Zelctl({"svc", "start", name}), "zelctl: " + none + "[1]");
    EXPECT_EQ(Zelctl({"svc", "status", name}), "zelctl: no service is named " + name + "\n[1]");

    mkdir("/etc/init.d", 0755);
    test::WriteFile(script, start + "esac\n");
    EXPECT_EQ(Zelctl({"svc", "start", name}), "zelctl: " + script + ": nobody may execute it\n[1]");
    EXPECT_EQ(Zelctl({"svc", "start", name + "x"}), "zelctl: no init script is named " + name + "x\n[1]");
    EXPECT_EQ(Zelctl({"svc", "restart", name}),
              "zelctl: " + name + " does not run, so it is not restarted: no process is named " + name + "\n[1]");
    EXPECT_EQ(Zelctl({"svc", "stop", name}), name + " stopped: no process of that name\n");
    EXPECT_FALSE(scratch.Exists("id"));

    chmod(script.c_str(), 0755);
    std::string answer = Zelctl({"svc", "start", name});
    EXPECT_EQ(answer, name + " started: process " + id() + "\n");
    std::string const shown = "\n  \"name\": \"" + name + "\",\n  \"running\": true,\n  \"processes\": [\n    " + id() +
                              "\n  ],\n  \"script\": \"" + script +
                              "\",\n  \"automatic\": \"unknown\",\n  \"unit\": \"\",\n" +
                              "  \"description\": \"Watches the line\"\n}\n";
    EXPECT_EQ(Zelctl({"svc", "status", name, "--json"}), "{" + shown);
    EXPECT_EQ(Zelctl({"svc", "restart", name}), name + " restarted: process " + id() + "\n");
    // Its "stop" does nothing: what is left is killed.
    EXPECT_EQ(
        Zelctl({"svc", "stop", name, "--json"}),
        "{\n  \"name\": \"" + name + "\",\n  \"action\": \"stopped\",\n  \"processes\": [\n    " + id() + "\n  ]\n}\n");
    EXPECT_EQ(Zelctl({"svc", "status", name}).find("\nrunning      yes"), std::string::npos) << "one that has ended";
    forget();
    EXPECT_NE(Zelctl({"svc", "status", name}).find("\nrunning      no "), std::string::npos);

    test::WriteFile(script, start + stop + "esac\n");
    answer = Zelctl({"svc", "start", name});
    EXPECT_EQ(answer, name + " started: process " + id() + "\n");
    EXPECT_EQ(Zelctl({"svc", "stop", name}), name + " stopped: process " + id() + "\n");
    test::WriteFile(script, "#!/bin/sh\n");
    EXPECT_EQ(Zelctl({"svc", "start", name}),
              "zelctl: " + script + " has run, but no process is named " + name + "\n[1]")
        << "one that has ended";
    forget();
    EXPECT_EQ(Zelctl({"svc", "start", name}),
              "zelctl: " + script + " has run, but no process is named " + name + "\n[1]");
    return !HasFailure();
  });
  if (!result) GTEST_SKIP() << "no child with folders of its own on this system";
  EXPECT_TRUE(*result);
}

}  // namespace
