// The command zelctl, started by a test where a transcript cannot express the circumstances.
#ifndef ZELVANE_TESTS_SUPPORT_COMMAND_H
#define ZELVANE_TESTS_SUPPORT_COMMAND_H

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "support/scratch.h"

namespace test {

// Starts the program with these arguments and streams.
inline pid_t StartCommand(std::string const& program, std::vector<std::string> arguments, int out, int err) {
  std::vector<char*> pointers = {const_cast<char*>(program.c_str())};
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  pid_t const child = fork();
  if (child != 0) return child;
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  execv(program.c_str(), pointers.data());
  _exit(127);
}

// Returns its output to both streams, followed by its exit code in brackets ("[1]") unless it is 0. Does not wait for
// processes that it starts and leaves running.
inline std::string Answer(std::string const& program, std::vector<std::string> const& arguments) {
  Scratch const scratch;
  int const file = open(scratch.Path("answer").c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  pid_t const child = StartCommand(program, arguments, file, file);
  int status = -1;
  waitpid(child, &status, 0);
  close(file);
  int const code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return scratch.Read("answer") + (code == 0 ? "" : "[" + std::to_string(code) + "]");
}

inline std::string Zelctl(std::vector<std::string> const& arguments) { return Answer(ZELVANE_ZELCTL, arguments); }

// Same, with the arguments separated by spaces.
inline std::string ZelctlLine(std::string const& words) {
  std::istringstream in(words);
  return Zelctl(std::vector<std::string>(std::istream_iterator<std::string>(in), {}));
}

}  // namespace test

#endif
