// zelctl: the library's functions on the command line.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "commands/families.h"
#include "terminal/nearest.h"
#include "terminal/terminal.h"

namespace {

using Family = void (*)(CLI::App& app, Terminal& terminal);
constexpr Family kFamilies[] = {AddShutdown, AddCfg,   AddB64,    AddUps,    AddType,   AddServer, AddClient,
                                AddInfo,     AddPorts, AddDigest, AddCipher, AddProc,   AddSvc,    AddLog,
                                AddSchedule, AddLang,  AddBrowse, AddStatus, AddReport, AddHelp};

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// An answer that did not get through (a full disk behind a redirection) is no answer.
void RequireAnswered() {
  errno = 0;
  if (!std::cout.flush())
    throw Failed("cannot write the output" + (errno == 0 ? "" : std::string(": ") + strerror(errno)));
}

// A stream that the caller has closed is not to be taken over by the first file that is opened.
void HoldStreams() {
  int fd = 0;
  while ((fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0 && fd <= STDERR_FILENO) continue;
  close(fd);
}

std::vector<std::string> NamesBelow(CLI::App const& app) {
  std::vector<std::string> names;
  for (CLI::App const* below : app.get_subcommands([](CLI::App const*) { return true; }))
    names.push_back(below->get_name());
  return names;
}

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

// --csv stands in front of any command; not every one has rows.
void RequireCsv(CLI::App const& app, Terminal const& terminal) {
  std::string path;
  CLI::App const& command = Given(app, path);
  if (terminal.csv && command.get_option_no_throw("--csv") == nullptr)
    throw WrongUsage("--csv: `" + path + "` has no CSV; use --json");
  if (terminal.csv && terminal.json) throw WrongUsage("--csv excludes --json");
}

// "X is required" in the words of the other messages.
std::string Missing(std::string const& what) {
  std::string const end = " is required";
  bool const required = what.size() > end.size() && what.compare(what.size() - end.size(), end.size(), end) == 0;
  return required ? "missing " + what.substr(0, what.size() - end.size()) : what;
}

// What is wrong and what is right, in one line.
std::string Correction(CLI::App const& app, CLI::ParseError const& error) {
  std::string path;
  CLI::App const& command = Given(app, path);
  std::vector<std::string> const left = command.remaining();
  std::vector<std::string> const names = NamesBelow(command);
  if (names.empty()) {
    bool const extra = dynamic_cast<CLI::ExtrasError const*>(&error) != nullptr && !left.empty();
    return (extra ? "unexpected argument \"" + left.front() + "\"" : Missing(error.what())) + "; see `" + path +
           " --help`";
  }
  auto const word =
      std::find_if(left.begin(), left.end(), [](std::string const& each) { return each.empty() || each[0] != '-'; });
  std::string list;
  for (std::string const& name : names) list += (list.empty() ? "" : ", ") + name;
  std::string const nearest = word == left.end() ? "" : DidYouMean(*word, names);
  std::string const wrong = word == left.end() ? "missing command" : "unknown command \"" + *word + "\"" + nearest;
  return wrong + (nearest.empty() ? "; c" : " C") + "ommands of `" + path + "`: " + list;
}

int Run(int argc, char** argv) {
  Terminal terminal;
  CLI::App app("Read and change the settings, logs and lists of the Zelvane UPS programs", "zelctl");
  app.set_version_flag("--version", ZELVANE_VERSION);
  app.require_subcommand(1);
  app.footer("See `zelctl FAMILY COMMAND --help`. Exit codes: 0 success, 1 failure, 2 usage error.");
  for (Family const add : kFamilies) add(app, terminal);
  AddCommonOptions(&app, terminal, true);
  for (CLI::App* const family : app.get_subcommands([](CLI::App const*) { return true; }))
    if (!NamesBelow(*family).empty()) AddCommonOptions(family, terminal, false);
  app.parse_complete_callback([&] { RequireCsv(app, terminal); });
  try {
    app.parse(argc, argv);
  } catch (CLI::ParseError const& error) {
    if (error.get_exit_code() != 0) throw WrongUsage(Correction(app, error));
    app.exit(error);
  }
  RequireAnswered();
  return terminal.status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    HoldStreams();
    return Run(argc, argv);
  } catch (WrongUsage const& error) {
    Complain(error.what());
    return kWrongUsage;
  } catch (std::exception const& error) {
    Complain(error.what());
    return kFailed;
  }
}
