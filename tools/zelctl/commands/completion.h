// What the shells offer for the next word of a command line.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_COMPLETION_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_COMPLETION_H

#include <string>
#include <vector>

#include "commands/command.h"

// The words that may stand in place of the last one, which may be begun or "". `words` are those after the command's
// name. "<file>" stands for names of files, "<directory>" for those of directories; a word that ends with "=" is not
// complete.
std::vector<std::string> Completions(Command const& root, std::vector<std::string> const& words);

#endif
