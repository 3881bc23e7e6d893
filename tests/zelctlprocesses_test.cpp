// zelctl proc and svc with the tests' own processes and scripts. Transcripts cannot cover them, because ids differ.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>

#include "support/child.h"
#include "support/command.h"
#include "support/processes.h"

namespace {

using test::Sleeper, test::UniqueName, test::Zelctl, test::ZelctlLine;

constexpr char kRefusal[] =
    "zelctl: nothing killed: the only processes with that name are process 1, zelctl itself, or zombies\n[1]";

std::string Id(Sleeper const& process) { return std::to_string(process.Id()); }

std::string None(std::string const& name) { return "zelctl: no process named " + name + "\n[1]"; }

std::string Sent(std::string const& id, std::string const& name) {
  return "sent SIGTERM and SIGKILL to process " + id + " (" + name + ")\n";
}

// The output of `zelctl proc` with these words.
std::string Proc(std::string const& words) { return ZelctlLine("proc " + words); }

class ZelctlProcesses : public testing::Test {
 protected:
  void SetUp() override {
    if (*ZELVANE_ZELCTL == '\0') GTEST_SKIP() << "built without the command";
  }
};

TEST_F(ZelctlProcesses, FindsByNameAndSetsThePriority) {
  std::string const name = UniqueName();
  EXPECT_EQ(Proc("find " + name), None(name));
  Sleeper const process(name);
  EXPECT_EQ(Proc("priority " + Id(process) + " low --json").substr(0, 2), "{\n");
  EXPECT_EQ(getpriority(PRIO_PROCESS, static_cast<id_t>(process.Id())), 19);
  std::string const entry = "  {\n    \"pid\": " + Id(process) + ",\n    \"parent\": " + std::to_string(getpid()) +
                            ",\n    \"priority\": \"low\",\n    \"name\": \"" + name + "\",\n    \"command\": \"" +
                            process.CommandLine() + "\"\n  }";
  EXPECT_EQ(Proc("find /usr/sbin/" + name + " --json"), "[\n" + entry + "\n]\n");
  EXPECT_NE(Proc("list --json").find(entry), std::string::npos) << entry;
  std::string const table = Proc("find " + name);
  EXPECT_EQ(table.find(process.CommandLine()), table.find('\n') + 1 + table.find("COMMAND")) << "below\n" << table;

  std::pair<std::string, std::string> const cases[] = {
      {Id(process) + " 0", "process " + Id(process) + " (" + name + "): priority low, was low\n"},
      {Id(process) + " lowest", "zelctl: LEVEL: expected low, normal, high, highest, or 0 to 3\n[2]"},
      {"0 low", "zelctl: PID: expected a number from 1 to 2147483647\n[2]"},
      {"2147483647 3", "zelctl: process 2147483647 does not exist\n[1]"}};
  for (auto const& [words, answer] : cases) EXPECT_EQ(Proc("priority " + words), answer) << words;
}

TEST_F(ZelctlProcesses, KillsWhatIsNamedAndNothingElse) {
  std::string const name = UniqueName(), tooLong = name + "c2345678901234";
  Sleeper victim(name);
  Sleeper const longer(name + "b");
  EXPECT_EQ(Proc("kill " + name + " --pid " + Id(longer)),
            "zelctl: process " + Id(longer) + " is not named " + name + "\n[1]");
  EXPECT_TRUE(victim.IsAlive());
  EXPECT_EQ(Proc("kill " + name), Sent(Id(victim), name));
  EXPECT_EQ(Proc("kill " + name), kRefusal) << "of one that has ended and was not waited for";
  EXPECT_EQ(victim.EndingSignal(), SIGTERM);
  EXPECT_TRUE(longer.IsAlive());
  EXPECT_EQ(Proc("kill " + name), None(name));
  EXPECT_EQ(Proc("kill " + tooLong), None(tooLong + "; names have at most 15 characters: " + tooLong.substr(0, 15)));
  Sleeper stubborn(name, true);
  EXPECT_EQ(Proc("kill /sbin/" + name + " --json"),
            "[\n  {\n    \"pid\": " + Id(stubborn) + ",\n    \"name\": \"" + name + "\"\n  }\n]\n");
  EXPECT_EQ(stubborn.EndingSignal(), SIGKILL);
}

TEST_F(ZelctlProcesses, KillsNoneOfSeveralUnlessTold) {
  std::string const name = UniqueName();
  Sleeper first(name), second(name), third(name);
  EXPECT_EQ(Proc("kill " + name + " --pid " + Id(second)), Sent(Id(second), name));
  EXPECT_EQ(second.EndingSignal(), SIGTERM);
  std::string const least = std::to_string(std::min(first.Id(), third.Id()));  // in the order of `ps`
  std::string const most = std::to_string(std::max(first.Id(), third.Id()));
  EXPECT_EQ(Proc("kill " + name), "zelctl: nothing killed: several processes have that name: " + least + ", " + most +
                                      "; use --pid or --all\n[1]");
  EXPECT_ALL(first.IsAlive(), third.IsAlive());
  std::string const answer = Proc("kill " + name + " --all");
  for (Sleeper* process : {&first, &third}) {
    EXPECT_NE(answer.find(Sent(Id(*process), name)), std::string::npos) << answer;
    EXPECT_EQ(process->EndingSignal(), SIGTERM);
  }
}

// Under another name than zelctl: a command that spares only itself would kill another test's zelctl.
TEST_F(ZelctlProcesses, SparesItself) {
  test::Scratch const scratch;
  std::string const name = UniqueName();
  std::string const program = scratch.Path(name);
  ASSERT_EQ(symlink(ZELVANE_ZELCTL, program.c_str()), 0);
  EXPECT_EQ(test::Answer(program, {"proc", "kill", name}), kRefusal);
  EXPECT_EQ(test::Answer(program, {"proc", "kill", name, "--all"}), kRefusal);
  Sleeper other(name);
  EXPECT_EQ(test::Answer(program, {"proc", "kill", name}), Sent(Id(other), name));
  EXPECT_EQ(other.EndingSignal(), SIGTERM);
}

// In a process-id namespace in which process 1 is a child of the test.
TEST_F(ZelctlProcesses, SparesProcessOne) {
  std::string const name = UniqueName();
  test::Scratch const scratch;
  auto const result = test::InChildWithEmptyFolders([&] {
    return unshare(CLONE_NEWPID) != 0 || test::InChild([&] {
             if (getpid() != 1 || mount("proc", "/proc", "proc", 0, nullptr) != 0) return true;
             scratch.Write("made", "");
             prctl(PR_SET_NAME, name.c_str());
             for (char const* which : {"", " --pid 1", " --all"}) EXPECT_EQ(Proc("kill " + name + which), kRefusal);
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
  EXPECT_EQ(Proc("kill " + name), Sent(std::to_string(id), name));

  // The time that the shell takes to fail depends on the machine; the command waits only briefly.
  std::string failure;
  EXPECT_TRUE(test::Eventually([&] {
    failure = Zelctl({"proc", "start", "exit 3"});
    return failure.substr(0, 8) != "started ";
  }));
  EXPECT_EQ(failure.substr(failure.size() - 31), " already ended: exit code 3\n[1]") << failure;
}

// ---- Services ----

TEST_F(ZelctlProcesses, RunsServices) {
  test::Scratch const scratch;
  std::string const name = UniqueName(), script = "/etc/init.d/rc." + name + ".sh";
  ASSERT_EQ(symlink("/bin/sleep", scratch.Path(name).c_str()), 0);
  // `start` returns once the process has its name. `stop` does not need the ended process to be reaped.
  std::string const start = "#!/bin/sh\n# Description: Watches the line\ncd '" + scratch.Path() +
                            "' || exit\ncase $1 in\nrestart) ;;\nstart)\n  \"$PWD/" + name +
                            "\" 300 >/dev/null 2>&1 &\n  echo $! >id\n  until [ \"$(cat /proc/$!/comm)\" = " + name +
                            " ]; do :; done ;;\n";
  std::string const stop =
      "stop) kill \"$(cat id)\"; while [ \"$(cat /proc/$(cat id)/cmdline | wc -c)\" != 0 ]; do :; done ;;\n";
  auto const id = [&] { return std::to_string(atoi(scratch.Read("id").c_str())); };
  auto const svc = [&](std::string const& action, std::string const& more = "") {
    return ZelctlLine("svc " + action + " " + name + more);
  };
  auto const expect = [&](std::string const& action, std::string const& answer) { EXPECT_EQ(svc(action), answer); };

  auto const result = test::InChildWithEmptyFolders([&] {
    // No other process may wait for them: an ended process still has its name.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    auto const forget = [&] { waitpid(atoi(id().c_str()), nullptr, 0); };
    std::string const none = "no init scripts found in /etc/init.d, /etc/rc.d or /usr/local/etc/rc.d\n";
    EXPECT_EQ(ZelctlLine("svc list"), "zelctl: note: " + none + "NAME  RUNNING  AUTOMATIC  SCRIPT  DESCRIPTION\n");
    EXPECT_EQ(ZelctlLine("svc list --json"), "zelctl: note: " + none + "[]\n");
    expect("start", "zelctl: " + none + "[1]");
    expect("status", "zelctl: service " + name + " does not exist\n[1]");

    mkdir("/etc/init.d", 0755);
    test::WriteFile(script, start + "esac\n");
    expect("start", "zelctl: " + script + ": not executable\n[1]");
    EXPECT_EQ(svc("start", "x"), "zelctl: no init script for " + name + "x\n[1]");
    expect("restart", "zelctl: " + name + " is not running, not restarted: no process named " + name + "\n[1]");
    expect("stop", name + " stopped: no process of that name\n");
    EXPECT_FALSE(scratch.Exists("id"));

    chmod(script.c_str(), 0755);
    std::string answer = svc("start");
    EXPECT_EQ(answer, name + " started: process " + id() + "\n");
    EXPECT_EQ(svc("status", " --json"),
              "{\n  \"name\": \"" + name + "\",\n  \"running\": true,\n  \"processes\": [\n    " + id() +
                  "\n  ],\n  \"script\": \"" + script + "\",\n  \"automatic\": \"unknown\",\n  \"unit\": \"\",\n" +
                  "  \"description\": \"Watches the line\"\n}\n");
    expect("restart", name + " restarted: process " + id() + "\n");
    // The script's "stop" does nothing, so the remaining process is killed.
    EXPECT_EQ(
        svc("stop", " --json"),
        "{\n  \"name\": \"" + name + "\",\n  \"action\": \"stopped\",\n  \"processes\": [\n    " + id() + "\n  ]\n}\n");
    EXPECT_EQ(svc("status").find("\nrunning      yes"), std::string::npos) << "one that has ended";
    forget();
    EXPECT_NE(svc("status").find("\nrunning      no "), std::string::npos);

    test::WriteFile(script, start + stop + "esac\n");
    answer = svc("start");
    EXPECT_EQ(answer, name + " started: process " + id() + "\n");
    expect("stop", name + " stopped: process " + id() + "\n");
    test::WriteFile(script, "#!/bin/sh\n");
    expect("start", "zelctl: " + script + " ran, but there is no process named " + name + "\n[1]");  // it has ended
    forget();
    // The script's own output is not part of the result. Its failure is the command's failure.
    test::WriteFile(script, "#!/bin/sh\necho \"$1\"\nexit 3\n");
    expect("start", "start\nzelctl: " + script + " start: exit code 3\n[1]");
    return !HasFailure();
  });
  if (!result) GTEST_SKIP() << "no child with folders of its own on this system";
  EXPECT_TRUE(*result);
}

}  // namespace
