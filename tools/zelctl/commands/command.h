// Commands as data: names, arguments and functions. commandline.cpp makes the parser from them, help.cpp the overview,
// manual.cpp the manual page, completion.cpp the shell completion.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMAND_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMAND_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "terminal/option.h"

struct Terminal;

// The common options of a command, in addition to its own.
enum class Answers {
  kText,      // none
  kJson,      // --root, --json, --utf8, --bytes
  kJsonOrCsv  // and --csv
};

// A command or a group of commands.
struct Command {
  std::string name;
  std::string help;                    // one line
  std::function<void(Terminal&)> run;  // null for a group
  Options options = {};
  std::string notes = {};  // printed below the options in the help; lines that begin with two blanks are not joined
  std::vector<std::string> examples = {};
  Answers answers = Answers::kJson;
  std::vector<Command> commands = {};
};

// A group of commands. An example of the group is also an example of the command that it shows. Commands without notes
// use those of the group.
Command Family(char const* name, char const* help, std::string const& notes, std::vector<std::string> const& examples,
               std::vector<Command> commands);

// The text below the options in the help of the command.
std::string FooterOf(Command const& command);

// Binds the function to the arguments that the options set.
template <class Arguments, class Act>
std::function<void(Terminal&)> On(std::shared_ptr<Arguments> const& arguments, Act act) {
  return [arguments, act](Terminal& terminal) { act(*arguments, terminal); };
}

#endif
