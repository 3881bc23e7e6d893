// zelctl help: all commands by group, and the candidates for shell completion.
#include <algorithm>
#include <iostream>

#include "commands/commandline.h"
#include "commands/completion.h"
#include "commands/families.h"
#include "commands/manual.h"
#include "terminal/nearest.h"
#include "terminal/page.h"
#include "terminal/terminal.h"

namespace {

struct Arguments {
  std::vector<std::string> path;
  bool words = false;
  bool manual = false;
};

// Throws WrongUsage unless there is a group or command at the path.
void RequireNamed(Command const& root, std::vector<std::string> const& path) {
  Command const* found = &root;
  for (std::string const& name : path) {
    std::vector<Command> const& below = found->commands;
    auto const match = std::find_if(below.begin(), below.end(), [&](Command const& each) { return each.name == name; });
    if (match == below.end()) {
      std::vector<std::string> names;
      names.reserve(below.size());
      for (Command const& each : below) names.push_back(each.name);
      std::string const nearest = DidYouMean(name, names);
      std::string text = "unknown command \"";
      text.append(name).append("\"").append(nearest).append(nearest.empty() ? "; see `zelctl help`"
                                                                            : " See `zelctl help`");
      throw WrongUsage(text);
    }
    found = &*match;
  }
}

void PrintLine(std::string const& indent, Command const& command) {
  constexpr std::size_t kHelpColumn = 13;
  std::string head = indent + command.name;
  head.resize(kHelpColumn, ' ');
  std::cout << Wrapped(command.help, head, std::string(kHelpColumn, ' '));
}

void PrintOverview(Command const& root) {
  for (Command const& family : root.commands) {
    if (family.name == "help") continue;
    PrintLine("", family);
    for (Command const& command : family.commands) PrintLine("  ", command);
    std::cout << '\n';
  }
  std::cout << "See `zelctl help GROUP COMMAND`.\n";
}

void Help(Command const& root, Arguments const& arguments) {
  if (arguments.manual) {
    std::cout << ManualText(root);
  } else if (arguments.words) {
    for (std::string const& word : Completions(root, arguments.path)) std::cout << word << '\n';
  } else if (arguments.path.empty()) {
    PrintOverview(root);
  } else {
    RequireNamed(root, arguments.path);
    std::cout << HelpText(root, arguments.path);
  }
}

}  // namespace

Command HelpCommand(Command const& root) {
  auto const arguments = std::make_shared<Arguments>();
  return {
      "help",
      "List all commands",
      [&root, arguments](Terminal const&) { Help(root, *arguments); },
      {Value("COMMAND", &arguments->path, "TEXT", "Group, and the command in it, to describe"),
       Flag("--words", &arguments->words, "For shell completion: what can stand in place of the last word").Hidden(),
       Flag("--manual", &arguments->manual, "For zelctl(1): the commands in mdoc(7)").Hidden()},
      "",
      {"zelctl help log outages"},
      Answers::kText};
}
