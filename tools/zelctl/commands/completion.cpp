#include "commands/completion.h"

#include <algorithm>
#include <sstream>

#include "commands/commandline.h"
#include "terminal/terminal.h"

namespace {

std::vector<std::string> Parts(std::string const& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

// The possible values of an option or argument.
std::vector<std::string> ValuesOf(Option const& option, std::string const& begun) {
  if (option.suggest) return option.suggest(begun);
  if (!option.words.empty()) return option.words;
  std::string const& name = option.Word();
  if (name == "DIR") return {"<directory>"};
  if (option.IsFile()) return {"<file>"};
  return name.find('|') == std::string::npos ? std::vector<std::string>() : Parts(name, '|');
}

// The state after the words so far.
struct Place {
  Command const* command;
  Options options;
  Option const* open = nullptr;  // the option whose value is next
  int values = 0;                // values that it can still take
  std::size_t arguments = 0;     // arguments so far
  bool onlyArguments = false;    // after "--"

  explicit Place(Command const& root) { Enter(root); }

  void Enter(Command const& to) {
    command = &to;
    options = Joined({CommonOptions(to), to.options});
  }

  void See(std::string const& word) {
    if (open != nullptr) {
      if (open->name == "--root") Terminal().SetRoot(word);
      if (--values == 0) open = nullptr;
    } else if (!onlyArguments && word == "--") {
      onlyArguments = true;
    } else if (!onlyArguments && word.size() > 1 && word[0] == '-') {
      open = OptionNamed(word);
      values = open == nullptr ? 0 : std::max(1, open->values.second);
      if (open != nullptr && open->IsFlag()) open = nullptr;
    } else if (Command const* below = CommandNamed(word)) {
      Enter(*below);
    } else {
      arguments++;
    }
  }

  Option const* OptionNamed(std::string const& word) const {
    auto const found = std::find_if(options.begin(), options.end(), [&](Option const& option) {
      std::vector<std::string> const names = Parts(option.name, ',');
      return std::find(names.begin(), names.end(), word) != names.end();
    });
    return found == options.end() ? nullptr : &*found;
  }

  Command const* CommandNamed(std::string const& word) const {
    auto const found = std::find_if(command->commands.begin(), command->commands.end(),
                                    [&](Command const& each) { return each.name == word; });
    return found == command->commands.end() ? nullptr : &*found;
  }

  // The next argument; a list takes all remaining ones.
  Option const* Argument() const {
    std::size_t place = 0;
    for (Option const& option : options) {
      if (!option.IsArgument()) continue;
      if (place == arguments || std::holds_alternative<std::vector<std::string>*>(option.target)) return &option;
      place++;
    }
    return nullptr;
  }
};

std::vector<std::string> Names(Command const& command) {
  std::vector<std::string> names;
  for (Command const& below : command.commands) names.push_back(below.name);
  return names;
}

std::vector<std::string> OptionNames(Place const& place, bool isRoot) {
  std::vector<std::string> names = {"--help"};
  if (isRoot) names.emplace_back("--version");
  for (Option const& option : place.options)
    if (!option.IsArgument() && !option.hidden) names.push_back(option.name.substr(option.name.find("--")));
  return names;
}

}  // namespace

std::vector<std::string> Completions(Command const& root, std::vector<std::string> const& words) {
  bool const isHelp = words[0] == "help" && words.size() > 1;
  std::string const& begun = words.back();
  Place place(root);
  for (std::size_t i = isHelp ? 1 : 0; i + 1 < words.size(); i++) place.See(words[i]);
  if (place.arguments > 0 && !place.command->commands.empty()) return {};  // unknown command
  if (place.open != nullptr) return ValuesOf(*place.open, begun);
  std::vector<std::string> offered = Names(*place.command);
  Option const* const argument = isHelp ? nullptr : place.Argument();
  if (argument != nullptr) offered = ValuesOf(*argument, begun);
  if (isHelp || place.onlyArguments) return offered;
  bool const wantsOption = begun.compare(0, 1, "-") == 0 || (argument == nullptr && offered.empty());
  return wantsOption ? OptionNames(place, place.command == &root) : offered;
}
