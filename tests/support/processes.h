// Processes that a test starts, each under a name that no other process of the machine has, and a `ps` of its own.
//
// The test program has a kill() of its own, which the library finds before the C library's: signals go to the test's
// own children only. A fault in the library must not reach anybody else's process, least of all as kill(-1) by root.
#ifndef ZELVANE_TESTS_SUPPORT_PROCESSES_H
#define ZELVANE_TESTS_SUPPORT_PROCESSES_H

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/scratch.h"

namespace test {

// A new name of at most 15 characters.
std::string UniqueName();

// Waits until the condition holds; false when it does not within half a minute.
bool Eventually(std::function<bool()> const& condition);

// The command name that the system shows for the process; "" when there is no such process.
std::string CommandName(pid_t id);

// The calls of kill() since the last time, as process id and signal, whether or not they were let through.
std::vector<std::pair<pid_t, int>> TakeSignals();

// True when this process has no child, running or finished.
bool NoChild();

// Waits for the end of a child and gives the signal that brought it about; -1 for another end. One that does not end is
// killed, and gives 0.
int EndingSignal(pid_t child);

// A process of that program name, running until it is killed, at the latest with the object or its thread.
class Sleeper {
 public:
  explicit Sleeper(std::string const& name, bool ignoresTerm = false);
  ~Sleeper();
  Sleeper(Sleeper const&) = delete;
  Sleeper& operator=(Sleeper const&) = delete;

  pid_t Id() const { return id_; }
  std::string CommandLine() const { return program_ + " 300"; }
  bool IsAlive() const;
  int EndingSignal();

 private:
  Scratch folder_;
  std::string program_;
  pid_t id_ = -1;
};

// An environment variable with another value, until the object goes.
class Environment {
 public:
  Environment(std::string const& name, std::string const& value);
  ~Environment();
  Environment(Environment const&) = delete;
  Environment& operator=(Environment const&) = delete;

 private:
  std::string name_;
  std::string old_;
  bool had_;
};

// In the place of `ps`, until the object goes: a script that runs `body`, in a shell whose PATH finds nothing else, and
// keeps the arguments it was given in the file "arguments". `body` may use $dir, the folder.
class FakePs : public Scratch {
 public:
  explicit FakePs(std::string const& body);
  // Prints the text and exits with the status.
  FakePs(std::string const& output, int status);

 private:
  Environment path_;
};

// Runs `body` in a child process that finds /etc and /usr/local empty, and may fill them: nobody else sees it. What it
// returned there; nothing where the system does not allow such a child.
std::optional<bool> InChildWithEmptyFolders(std::function<bool()> const& body);

}  // namespace test

#endif
