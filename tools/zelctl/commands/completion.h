// Shell completion: the candidates for the next word of a command line.
#ifndef ZELVANE_TOOLS_ZELCTL_COMMANDS_COMPLETION_H
#define ZELVANE_TOOLS_ZELCTL_COMMANDS_COMPLETION_H

#include <string>
#include <vector>

#include "commands/command.h"

// Candidates for the last word, which may be partial or "". `words` are the words after the command's name. "<file>"
// means any file name, "<directory>" any directory name. A candidate that ends with "=" is not complete.
std::vector<std::string> Completions(Command const& root, std::vector<std::string> const& words);

#endif
