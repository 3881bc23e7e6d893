// zelctl: the library's functions on the command line.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "families.h"
#include "terminal.h"

namespace {

using Family = void (*)(CLI::App& app, Terminal& terminal);
constexpr Family kFamilies[] = {AddShutdown, AddCfg,  AddB64,      AddUps,    AddType,   AddServer,
                                AddClient,   AddInfo, AddPorts,    AddDigest, AddCipher, AddProc,
                                AddSvc,      AddLog,  AddSchedule, AddLang,   AddBrowse, AddHelp};

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

int Complain(std::exception const& error, int code) {
  std::cerr << "zelctl: " << error.what() << '\n';
  return code;
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
    return app.exit(error) == 0 ? 0 : kWrongUsage;
  }
  // An answer that did not get through (a full disk behind a redirection) is no answer.
  if (!std::cout.flush()) throw Failed("the answer cannot be written");
  return terminal.status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (WrongUsage const& error) {
    return Complain(error, kWrongUsage);
  } catch (std::exception const& error) {
    return Complain(error, kFailed);
  }
}
