#include "commands/command.h"

#include <sstream>

#include "terminal/page.h"

namespace {

void Give(std::string const& notes, std::vector<std::string> const& examples, std::string const& path,
          Command& command) {
  if (command.notes.empty()) command.notes = notes;
  for (std::string const& example : examples)
    if ((example + " ").find(path + " ") != std::string::npos) command.examples.push_back(example);
  for (Command& below : command.commands) Give(command.notes, examples, path + " " + below.name, below);
}

// Lines of a table begin with two blanks. Only their last column is wrapped, if the page has a place for it.
std::string WrappedNote(std::string const& line) {
  if (line.compare(0, 2, "  ") != 0) return Wrapped(line);
  constexpr std::size_t kShortestText = 20;
  std::size_t const column = line.rfind("  ") + 2;
  if (line.size() <= PageWidth() || column + kShortestText > PageWidth()) return line + "\n";
  return Wrapped(line.substr(column), line.substr(0, column), std::string(column, ' '));
}

}  // namespace

Command Family(char const* name, char const* help, std::string const& notes, std::vector<std::string> const& examples,
               std::vector<Command> commands) {
  Command family = {name, help, nullptr};
  family.commands = std::move(commands);
  Give(notes, examples, std::string("zelctl ") + name, family);
  return family;
}

std::string FooterOf(Command const& command) {
  std::istringstream lines(command.notes);
  std::string text;
  for (std::string line; std::getline(lines, line);) text += WrappedNote(line);
  if (!command.examples.empty()) text += text.empty() ? "Examples:\n" : "\nExamples:\n";
  for (std::string const& example : command.examples) text += "  " + example + "\n";
  if (!text.empty()) text.pop_back();
  return text;
}
