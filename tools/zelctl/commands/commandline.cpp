#include "commands/commandline.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <regex>
#include <sstream>
#include <type_traits>

#include "terminal/nearest.h"
#include "terminal/terminal.h"

namespace {

// ---- From the table to the parser ----

CLI::Option* AddFlag(CLI::App& app, Option const& option, Terminal& terminal) {
  std::function<void()> const set = std::visit(
      [&terminal](auto target) -> std::function<void()> {
        using Type = decltype(target);
        if constexpr (std::is_same_v<Type, bool*>) return [target] { *target = true; };
        if constexpr (std::is_same_v<Type, bool Terminal::*>) return [target, &terminal] { terminal.*target = true; };
        if constexpr (std::is_same_v<Type, void (Terminal::*)()>) return [target, &terminal] { (terminal.*target)(); };
        return nullptr;
      },
      option.target);
  auto const unlessFalse = [set](std::int64_t times) {
    if (times > 0) set();
  };
  return app.add_flag_function(option.name, unlessFalse, option.help);
}

CLI::Option* AddValue(CLI::App& app, Option const& option, Terminal& terminal) {
  if (auto const* text = std::get_if<std::string*>(&option.target)) {
    CLI::Option* const added = app.add_option(option.name, **text, option.help);
    return option.showDefault ? added->capture_default_str() : added;
  }
  if (auto const* list = std::get_if<std::vector<std::string>*>(&option.target))
    return app.add_option(option.name, **list, option.help);
  if (auto const* given = std::get_if<std::optional<std::string>*>(&option.target))
    return app.add_option_function<std::string>(
        option.name, [target = *given](std::string const& text) { *target = text; }, option.help);
  auto const set = std::get<void (Terminal::*)(std::string const&)>(option.target);
  return app.add_option_function<std::string>(
      option.name, [set, &terminal](std::string const& text) { (terminal.*set)(text); }, option.help);
}

CLI::Validator OneOf(std::vector<std::string> const& words) {
  std::string list;
  for (std::string const& word : words) list += (list.empty() ? "" : ", ") + word;
  auto const check = [words, list](std::string const& text) {
    if (std::find(words.begin(), words.end(), text) != words.end()) return std::string();
    return "unknown value \"" + text + "\"; values: " + list;
  };
  return {check, "{" + list + "}"};
}

void AddOption(CLI::App& app, Option const& option, Terminal& terminal) {
  CLI::Option* const added = option.IsFlag() ? AddFlag(app, option, terminal) : AddValue(app, option, terminal);
  if (option.hidden) added->group("");
  if (option.IsFlag()) return;
  added->required(option.required)->type_name(option.value);
  if (option.values.second > 0) added->expected(option.values.first, option.values.second);
  if (option.separated) added->delimiter(',')->allow_extra_args(false);  // an argument can follow
  if (!option.words.empty()) added->check(OneOf(option.words));
  if (option.filled || option.IsFile())
    added->check([](std::string const& text) { return std::string(text.empty() ? "must not be empty" : ""); }, "", "");
}

void AddOptions(CLI::App& app, Options const& options, Terminal& terminal) {
  for (Option const& option : options) AddOption(app, option, terminal);
  auto const named = [&app](std::string const& name) { return app.get_option(name.substr(name.find(',') + 1)); };
  for (Option const& option : options) {
    if (!option.excludes.empty()) named(option.name)->excludes(named(option.excludes));
    if (!option.needs.empty()) named(option.name)->needs(named(option.needs));
  }
}

using Words = std::vector<std::string>;

// Names all subcommands. Only those on the command line are built in full, with their options.
void AddCommand(CLI::App& app, Command const& command, Words const& words, Terminal& terminal) {
  AddOptions(app, Joined({CommonOptions(command), command.options}), terminal);
  app.footer(FooterOf(command));
  if (command.run) app.callback([&command, &terminal] { command.run(terminal); });
  if (!command.commands.empty()) app.require_subcommand(1);
  for (Command const& below : command.commands) {
    CLI::App* const added = app.add_subcommand(below.name, below.help);
    if (std::find(words.begin(), words.end(), below.name) != words.end()) AddCommand(*added, below, words, terminal);
  }
}

// Wraps the descriptions, which start after the names, at 80 columns.
class Wrapping : public CLI::Formatter {
 public:
  std::string make_option_usage(CLI::Option const* option) const override {
    return NamesEach(option) ? option->get_name(true) : CLI::Formatter::make_option_usage(option);
  }

  std::string make_option_opts(CLI::Option const* option) const override {
    return NamesEach(option) ? "" : CLI::Formatter::make_option_opts(option);
  }

  std::string make_option_desc(CLI::Option const* option) const override { return Folded(option->get_description()); }

  std::string make_subcommand(CLI::App const* command) const override {
    std::ostringstream text;
    CLI::detail::format_help(text, command->get_name(), Folded(command->get_description()), get_column_width());
    return text.str();
  }

 private:
  // "NAME ADDRESS [GROUP]" says which values can be left out.
  static bool NamesEach(CLI::Option const* option) { return option->get_name(true).find(' ') != std::string::npos; }

  std::string Folded(std::string text) const {
    std::size_t const width = 80 - get_column_width();
    for (std::size_t from = 0; text.size() - from > width;) {
      std::size_t const blank = text.rfind(' ', from + width);
      if (blank == std::string::npos || blank < from) break;
      text[blank] = '\n';
      from = blank + 1;
    }
    return text;
  }
};

void AddRoot(CLI::App& app, Command const& root, Words const& words, Terminal& terminal) {
  app.formatter(std::make_shared<Wrapping>());
  app.set_version_flag("--version", ZELVANE_VERSION);
  AddCommand(app, root, words, terminal);
}

// ---- Errors on the command line ----

// The command that was given, as far as it is known.
CLI::App const& Given(CLI::App const& app, std::string& path) {
  CLI::App const* command = &app;
  path = app.get_name();
  while (!command->get_subcommands().empty()) {
    command = command->get_subcommands().front();
    path += " " + command->get_name();
  }
  return *command;
}

std::vector<std::string> NamesBelow(CLI::App const& app) {
  std::vector<std::string> names;
  for (CLI::App const* below : app.get_subcommands([](CLI::App const*) { return true; }))
    names.push_back(below->get_name());
  return names;
}

// --csv is accepted before any command, but not every command prints rows.
void RequireCsv(CLI::App const& app, Terminal const& terminal) {
  std::string path;
  CLI::App const& command = Given(app, path);
  if (terminal.csv && command.get_option_no_throw("--csv") == nullptr)
    throw WrongUsage("--csv: `" + path + "` has no CSV; use --json");
  if (terminal.csv && terminal.json) throw WrongUsage("--csv excludes --json");
}

// The parser's message in the wording of the other messages.
std::string Reworded(CLI::ParseError const& error) {
  std::string what = error.what();
  // Other messages contain the user's words, of any length.
  if (dynamic_cast<CLI::ArgumentMismatch const*>(&error) == nullptr &&
      dynamic_cast<CLI::RequiredError const*>(&error) == nullptr)
    return what;
  static std::pair<std::regex, char const*> const kWordings[] = {
      {std::regex("(.*) is required"), "missing $1"},
      {std::regex("(.*): At Most 1 required but received .*"), "$1: given more than once"},
      {std::regex("(.*): At Most (.*) required but received (.*)"), "$1: expected at most $2 values, not $3"},
      {std::regex("(.*): At least (.*) required but received (.*)"), "$1: expected at least $2 values, not $3"},
      {std::regex("(.*): 1 required (.*) missing"), "$1: missing $2"},
      {std::regex("(.*): (.*) required (.*) missing"), "$1: expected at least $2 values of $3"}};
  for (auto const& [pattern, wording] : kWordings)
    if (std::regex_match(what, pattern)) return std::regex_replace(what, pattern, wording);
  return what;
}

std::vector<std::string> OptionNames(CLI::App const& command) {
  std::vector<std::string> names;
  for (CLI::Option const* option : command.get_options())
    for (std::string const& name : option->get_lnames())
      if (!option->get_group().empty()) names.push_back("--" + name);
  return names;
}

// A word that the command does not take.
std::string Unexpected(std::string const& word, CLI::App const& command, std::string const& path) {
  std::vector<std::string> const names = OptionNames(command);
  if (std::find(names.begin(), names.end(), word) != names.end()) return word + ": put it after `" + path + "`";
  std::string const nearest = word[0] == '-' ? DidYouMean(word, names) : "";
  return "unexpected argument \"" + word + "\"" + nearest + (nearest.empty() ? "; see" : " See") + " `" + path +
         " --help`";
}

// The error and how to correct it, in one line.
std::string Correction(CLI::App const& app, CLI::ParseError const& error) {
  std::string path;
  CLI::App const& command = Given(app, path);
  std::vector<std::string> left = command.remaining();
  if (left.empty()) left = app.remaining(true);  // words before the command
  std::vector<std::string> const names = NamesBelow(command);
  if (names.empty()) {
    bool const extra = dynamic_cast<CLI::ExtrasError const*>(&error) != nullptr && !left.empty();
    return extra ? Unexpected(left.front(), command, path) : Reworded(error) + "; see `" + path + " --help`";
  }
  auto const word =
      std::find_if(left.begin(), left.end(), [](std::string const& each) { return each.empty() || each[0] != '-'; });
  if (word == left.end() && !left.empty()) return Unexpected(left.front(), command, path);
  std::string list;
  for (std::string const& name : names) list += (list.empty() ? "" : ", ") + name;
  std::string const nearest = word == left.end() ? "" : DidYouMean(*word, names);
  std::string const wrong = word == left.end() ? "missing command" : "unknown command \"" + *word + "\"" + nearest;
  return wrong + (nearest.empty() ? "; c" : " C") + "ommands of `" + path + "`: " + list;
}

}  // namespace

Options CommonOptions(Command const& command) {
  if (command.answers == Answers::kText) return {};
  Options options = {
      Value("--root", &Terminal::SetRoot, "DIR", "Use the installation in DIR, not this computer's"),
      Flag("--json", &Terminal::json, "Print JSON (always UTF-8)"),
      Flag("--utf8", &Terminal::SetUtf8, "Treat the terminal as UTF-8, whatever the locale").Excludes("--bytes"),
      Flag("--bytes", &Terminal::SetBytes, "Show and take the files' Latin-1 bytes as they are")};
  Option const csv = Flag("--csv", &Terminal::csv, "Print CSV, with column names in the first line");
  // Also accepted before the command; RequireCsv then rejects it for a command without CSV.
  bool const isFamily = !command.commands.empty();
  if (isFamily) options.push_back(Option(csv).Hidden());
  if (command.answers == Answers::kJsonOrCsv) options.push_back(Option(csv).Excludes("--json"));
  if (isFamily && command.name != "zelctl")
    for (Option& option : options) option.hidden = true;
  return options;
}

void RunCommandLine(Command const& root, Terminal& terminal, int argc, char** argv) {
  CLI::App app(root.help, root.name);
  AddRoot(app, root, Words(argv, argv + argc), terminal);
  app.parse_complete_callback([&] { RequireCsv(app, terminal); });
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    if (error.get_exit_code() != 0) throw WrongUsage(Correction(app, error));
    app.exit(error);
  }
}

std::string HelpText(Command const& root, std::vector<std::string> const& path) {
  Terminal terminal;
  CLI::App app(root.help, root.name);
  AddRoot(app, root, path, terminal);
  CLI::App const* named = &app;
  std::string before;
  for (std::string const& name : path) {
    before += (before.empty() ? "" : " ") + named->get_name();
    named = named->get_subcommand(name);
  }
  return named->help(before);
}
