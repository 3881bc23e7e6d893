// zelctl: the library's functions on the command line.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "commands/families.h"
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
  if (!std::cout.flush()) throw Failed("the answer cannot be written");
}

// A stream that the caller has closed is not to be taken over by the first file that is opened.
void HoldStreams() {
  int fd = 0;
  while ((fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0 && fd <= STDERR_FILENO) continue;
  close(fd);
}

std::string NamesBelow(CLI::App const& app) {
  std::string names;
  for (CLI::App const* below : app.get_subcommands([](CLI::App const*) { return true; }))
    names += (names.empty() ? "" : ", ") + below->get_name();
  return names;
}

// What is wrong and what is right, in one line.
std::string Correction(CLI::App const& app, CLI::ParseError const& error) {
  CLI::App const* command = &app;
  std::string path = app.get_name();
  while (!command->get_subcommands().empty()) {
    command = command->get_subcommands().front();
    path += " " + command->get_name();
  }
  std::vector<std::string> const left = command->remaining();
  std::string const names = NamesBelow(*command);
  if (names.empty()) {
    bool const extra = dynamic_cast<CLI::ExtrasError const*>(&error) != nullptr && !left.empty();
    return (extra ? "\"" + left.front() + "\" is not expected" : error.what()) + "; `" + path +
           " --help` shows how it is used";
  }
  auto const word =
      std::find_if(left.begin(), left.end(), [](std::string const& each) { return each.empty() || each[0] != '-'; });
  std::string const wrong = word == left.end() ? "a command is wanted" : "no command \"" + *word + "\"";
  return wrong + "; `" + path + "` has " + names;
}

int Run(int argc, char** argv) {
  Terminal terminal;
  CLI::App app("Reads and writes the settings of the Zelvane UPS programs.", "zelctl");
  app.set_version_flag("--version", ZELVANE_VERSION);
  app.require_subcommand(1);
  app.footer("`zelctl FAMILY COMMAND --help` tells the rest. Exit codes: 0 done, 1 failed, 2 wrong usage.");
  for (Family const add : kFamilies) add(app, terminal);
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
