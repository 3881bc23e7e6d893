// The part of zelctl(1) that lists the commands.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_MANUAL_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_MANUAL_H

#include <string>

#include "commands/command.h"

// In the language of mdoc(7): each family, and each command with its arguments, options and examples. The options that
// all commands have are not repeated.
std::string ManualText(Command const& root);

#endif
