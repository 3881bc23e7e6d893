// Processes that a test starts, each with a name that no other process of the machine has, and a `ps` of its own.
//
// The test program has its own kill(), which the library finds before the C library's: signals go only to the test's
// own children. A fault in the library must not reach any other process, above all not as kill(-1) by root.
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

// Returns a new name of at most 15 characters.
std::string UniqueName();

// Waits until the condition holds. Returns false if it does not within half a minute.
bool Eventually(std::function<bool()> const& condition);

// Returns the command name that the system shows for the process; "" if there is no such process.
std::string CommandName(pid_t id);

// Returns the calls of kill() since the last time, as process id and signal, including those that were blocked.
std::vector<std::pair<pid_t, int>> TakeSignals();

// Returns true if this process has no child, running or finished.
bool NoChild();

// Waits for the end of a child and returns the signal that ended it; -1 for another end. A child that does not end is
// killed; the result is then 0.
int EndingSignal(pid_t child);

// A process with that program name. It runs until it is killed, or until the object or its thread ends.
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

// Sets an environment variable for the lifetime of the object.
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

// Replaces `ps` for the lifetime of the object: a script that runs `body`, in a shell whose PATH finds nothing else,
// and stores its arguments in the file "arguments". `body` can use $dir, the directory.
class FakePs : public Scratch {
 public:
  explicit FakePs(std::string const& body);
  // Prints the text and exits with the status.
  FakePs(std::string const& output, int status);

 private:
  Environment path_;
};

// Runs `body` in a child process that finds /etc and /usr/local empty and can fill them; no other process sees that.
// Returns the result of `body`; nothing if the system does not allow such a child.
std::optional<bool> InChildWithEmptyFolders(std::function<bool()> const& body);

}  // namespace test

#endif
