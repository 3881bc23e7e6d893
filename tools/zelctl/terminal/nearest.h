// What somebody may have meant.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_NEAREST_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_NEAREST_H

#include <string>
#include <vector>

// The name that differs from `word` by the fewest steps; there must be one.
std::string Nearest(std::string const& word, std::vector<std::string> const& names);

#endif
