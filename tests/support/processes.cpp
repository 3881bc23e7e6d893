#include "support/processes.h"

#include <errno.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace {

std::vector<std::pair<pid_t, int>> g_signals;

bool IsOwnChild(pid_t id) {
  siginfo_t child = {};
  return id > 0 && waitid(P_PID, static_cast<id_t>(id), &child, WEXITED | WNOHANG | WNOWAIT) == 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int kill(pid_t id, int number) noexcept {
  g_signals.emplace_back(id, number);
  if (IsOwnChild(id)) return static_cast<int>(syscall(SYS_kill, id, number));
  errno = EPERM;
  return -1;
}

namespace test {

std::vector<std::pair<pid_t, int>> TakeSignals() { return std::exchange(g_signals, {}); }

std::string UniqueName() {
  static int number = 0;
  return "zt" + std::to_string(getpid()) + "x" + std::to_string(++number);
}

bool Eventually(std::function<bool()> const& condition) {
  for (int i = 0; i < 6000; i++) {
    if (condition()) return true;
    usleep(5000);
  }
  return condition();
}

std::string CommandName(pid_t id) {
  std::string const name = ReadFile("/proc/" + std::to_string(id) + "/comm");
  return name == "<missing>" ? "" : name.substr(0, name.find('\n'));
}

bool NoChild() {
  siginfo_t child = {};
  return waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) == -1 && errno == ECHILD;
}

Sleeper::Sleeper(std::string const& name, bool ignoresTerm) : program_(folder_.Path(name)) {
  if (symlink("/bin/sleep", program_.c_str()) != 0) throw std::runtime_error("no link " + program_);
  id_ = fork();
  if (id_ == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (ignoresTerm) signal(SIGTERM, SIG_IGN);
    execl(program_.c_str(), program_.c_str(), "300", nullptr);
    _exit(127);
  }
  std::string const shown = name.substr(0, 15);
  if (!Eventually([&] { return CommandName(id_) == shown; })) throw std::runtime_error("not started: " + program_);
}

Sleeper::~Sleeper() {
  if (id_ <= 0) return;
  kill(id_, SIGKILL);
  waitpid(id_, nullptr, 0);
}

bool Sleeper::IsAlive() const {
  siginfo_t child = {};
  return waitid(P_PID, static_cast<id_t>(id_), &child, WEXITED | WNOHANG | WNOWAIT) == 0 && child.si_pid == 0;
}

int Sleeper::EndingSignal() { return test::EndingSignal(std::exchange(id_, -1)); }

int EndingSignal(pid_t child) {
  int status = 0;
  if (!Eventually([&] { return waitpid(child, &status, WNOHANG) != 0; })) {
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return 0;
  }
  return WIFSIGNALED(status) ? WTERMSIG(status) : -1;
}

Environment::Environment(std::string const& name, std::string const& value) : name_(name) {
  char const* const old = getenv(name.c_str());
  had_ = old != nullptr;
  if (had_) old_ = old;
  setenv(name.c_str(), value.c_str(), 1);
}

Environment::~Environment() {
  if (had_)
    setenv(name_.c_str(), old_.c_str(), 1);
  else
    unsetenv(name_.c_str());
}

namespace {

bool HideFolders() {
  std::string const user = std::to_string(geteuid());
  std::string const group = std::to_string(getegid());
  bool const root = user == "0";
  if (unshare(CLONE_NEWNS | (root ? 0 : CLONE_NEWUSER)) != 0) return false;
  if (!root) {
    // The owner of new files must be mapped in the namespace.
    WriteFile("/proc/self/setgroups", "deny");
    WriteFile("/proc/self/uid_map", "0 " + user + " 1");
    WriteFile("/proc/self/gid_map", "0 " + group + " 1");
  }
  return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
         mount("none", "/etc", "tmpfs", 0, nullptr) == 0 && mount("none", "/usr/local", "tmpfs", 0, nullptr) == 0;
}

}  // namespace

std::optional<bool> InChildWithEmptyFolders(std::function<bool()> const& body) {
  pid_t const child = fork();
  if (child == 0) {
    bool hidden = false;
    try {
      hidden = HideFolders();
    } catch (std::runtime_error const&) {
    }
    _exit(!hidden ? 2 : body() ? 0 : 1);
  }
  int status = -1;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 2) return std::nullopt;
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

FakePs::FakePs(std::string const& body) : path_("PATH", Path("only")) {
  Write("only/ps", "#!/bin/sh\ndir='" + Path() + "'\necho \"$@\" >\"$dir/arguments\"\n" + body + "\n");
  chmod(Path("only/ps").c_str(), 0755);
}

FakePs::FakePs(std::string const& output, int status)
    : FakePs("/bin/cat \"$dir/output\"\nexit " + std::to_string(status)) {
  Write("output", output);
}

}  // namespace test
