// Commands as data: what they are called, what they take, what they do. commandline.cpp makes the parser of them,
// help.cpp the overview and the manual page.
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
  std::string notes = {};     // what the help says below the options; lines that begin with two blanks are not joined
  std::string examples = {};  // lines, each with two blanks in front
  Answers answers = Answers::kJson;
  std::vector<Command> commands = {};

  std::string Footer() const { return notes + (notes.empty() || examples.empty() ? "" : "\n\n") + examples; }
};

inline Command Family(char const* name, std::string help, std::string notes, std::string examples,
                      std::vector<Command> commands) {
  return {name,           std::move(help),    nullptr, {}, std::move(notes), std::move(examples),
          Answers::kJson, std::move(commands)};
}

// The function on the arguments that the options set.
template <class Arguments, class Act>
std::function<void(Terminal&)> On(std::shared_ptr<Arguments> const& arguments, Act act) {
  return [arguments, act](Terminal& terminal) { act(*arguments, terminal); };
}

#endif
