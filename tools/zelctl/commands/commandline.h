// The command line: turns the table of commands into a parser, and runs the command that was given.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMANDLINE_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_COMMANDLINE_H

#include <string>
#include <vector>

#include "commands/command.h"

// Throws WrongUsage and what the command throws.
void RunCommandLine(Command const& root, Terminal& terminal, int argc, char** argv);

// What --help prints for the command below `root` that the path names.
std::string HelpText(Command const& root, std::vector<std::string> const& path);

// The options that the parser gives the command beside its own.
Options CommonOptions(Command const& command);

#endif
