// zelctl: the library's functions on the command line.
#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <string>

#include "commands/commandline.h"
#include "commands/families.h"
#include "terminal/terminal.h"

namespace {

constexpr Command (*kCommands[])() = {ShutdownCommands, CfgCommands,    B64Commands,   UpsCommands,  TypeCommands,
                                      ServerCommands,   ClientCommands, InfoCommand,   PortsCommand, DigestCommand,
                                      CipherCommands,   ProcCommands,   SvcCommands,   LogCommands,  ScheduleCommands,
                                      LangCommands,     BrowseCommands, StatusCommand, ReportCommand};

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

// Output that was not written (a redirection to a full disk) is an error.
void RequireAnswered() {
  errno = 0;
  if (!std::cout.flush())
    throw Failed("cannot write the output" + (errno == 0 ? "" : std::string(": ") + strerror(errno)));
}

// Keeps the first opened file from taking the place of a stream that the caller closed.
void HoldStreams() {
  int fd = 0;
  while ((fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0 && fd <= STDERR_FILENO) continue;
  close(fd);
}

int Run(int argc, char** argv) {
  Command root = {"zelctl", "Read and change the settings, logs and lists of the Zelvane UPS programs", nullptr};
  root.notes = "See `zelctl FAMILY COMMAND --help`. Exit codes: 0 success, 1 failure, 2 usage error.";
  for (Command (*const make)() : kCommands) root.commands.push_back(make());
  root.commands.push_back(HelpCommand(root));
  Terminal terminal;
  RunCommandLine(root, terminal, argc, argv);
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
