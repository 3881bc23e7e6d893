// The command line: makes a parser from the table of commands and runs the command that was given.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMANDLINE_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMANDLINE_H

#include <string>
#include <vector>

#include "commands/command.h"

// Throws WrongUsage, and everything that the command throws.
void RunCommandLine(Command const& root, Terminal& terminal, int argc, char** argv);

// The --help text of the command at `path` below `root`.
std::string HelpText(Command const& root, std::vector<std::string> const& path);

// The options that the parser adds to the command's own.
Options CommonOptions(Command const& command);

#endif
