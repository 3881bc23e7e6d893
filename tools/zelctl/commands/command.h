// Commands as data: what they are called, what they take, what they do. commandline.cpp makes the parser of them,
// help.cpp the overview, manual.cpp the manual page, completion.cpp what shells offer.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMAND_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMAND_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "terminal/option.h"

struct Terminal;

// The common options that a command has beside its own.
enum class Answers {
  kText,      // none
  kJson,      // --root, --json, --utf8, --bytes
  kJsonOrCsv  // and --csv
};

// A command, or a family of them.
struct Command {
  std::string name;
  std::string help;                    // one line
  std::function<void(Terminal&)> run;  // null of a family
  Options options = {};
  std::string notes = {};  // what the help says below the options; lines that begin with two blanks are not joined
  std::vector<std::string> examples = {};
  Answers answers = Answers::kJson;
  std::vector<Command> commands = {};
};

// A family of commands. Each of its examples is also one of the command that it shows, and its notes are those of the
// commands that have none.
Command Family(char const* name, char const* help, std::string const& notes, std::vector<std::string> const& examples,
               std::vector<Command> commands);

// What the help of the command says below its options.
std::string FooterOf(Command const& command);

// The function on the arguments that the options set.
template <class Arguments, class Act>
std::function<void(Terminal&)> On(std::shared_ptr<Arguments> const& arguments, Act act) {
  return [arguments, act](Terminal& terminal) { act(*arguments, terminal); };
}

#endif
