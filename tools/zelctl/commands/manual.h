// The part of zelctl(1) that lists the commands.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_MANUAL_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_MANUAL_H

#include <string>

#include "commands/command.h"

// mdoc(7) text: each group, and each command with its arguments, options and examples. Common options are not repeated.
std::string ManualText(Command const& root);

#endif
