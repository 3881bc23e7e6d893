// zelctl help: every command by family, and the words that the completion of the shell asks for.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <iomanip>
#include <iostream>

#include "commands/families.h"
#include "terminal/terminal.h"

namespace {

std::vector<CLI::App const*> Commands(CLI::App const& parent) {
  return parent.get_subcommands([](CLI::App const*) { return true; });
}

// The family or command that the path names, with `arguments` behind it or without; null when there is none.
CLI::App const* Named(CLI::App const& root, std::vector<std::string> const& path, bool arguments) {
  CLI::App const* found = &root;
  for (std::string const& name : path) {
    std::vector<CLI::App const*> const below = Commands(*found);
    auto const match = std::find_if(below.begin(), below.end(), [&](auto each) { return each->get_name() == name; });
    if (match == below.end()) return arguments && below.empty() ? found : nullptr;
    found = *match;
  }
  return found;
}

void PrintLine(std::string const& indent, CLI::App const& app) {
  std::cout << indent << std::left << std::setw(static_cast<int>(12 - indent.size())) << app.get_name() << ' '
            << app.get_description() << '\n';
}

void PrintOverview(CLI::App const& root) {
  for (CLI::App const* family : Commands(root)) {
    if (family->get_name() == "help") continue;
    PrintLine("", *family);
    for (CLI::App const* command : Commands(*family)) PrintLine("  ", *command);
    std::cout << '\n';
  }
  std::cout << "See `zelctl help FAMILY COMMAND`.\n";
}

void PrintWords(CLI::App const& app) {
  for (CLI::App const* command : Commands(app)) std::cout << command->get_name() << '\n';
  for (CLI::Option const* option : app.get_options())
    for (std::string const& name : option->get_lnames()) std::cout << "--" << name << '\n';
}

}  // namespace

void AddHelp(CLI::App& app, Terminal&) {
  CLI::App* const help = app.add_subcommand("help", "List all commands");
  auto const path = std::make_shared<std::vector<std::string>>();
  auto const words = std::make_shared<bool>(false);
  help->add_option("COMMAND", *path, "Family, and command of it, to describe");
  help->add_flag("--words", *words, "For shell completion: possible next words, one per line")->group("");
  help->callback([&app, path, words] {
    CLI::App const* const named = Named(app, *path, *words);
    if (*words) {
      if (named != nullptr) PrintWords(*named);
    } else if (named == nullptr) {
      throw WrongUsage("unknown command; see `zelctl help`");
    } else if (path->empty()) {
      PrintOverview(app);
    } else {
      std::cout << named->help(path->size() == 1 ? "zelctl" : "zelctl " + path->front());
    }
  });
}
