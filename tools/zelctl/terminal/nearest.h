// What somebody may have meant.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_NEAREST_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_NEAREST_H

#include <string>
#include <vector>

// The name that differs from `word` by the fewest steps, whatever its case; "" when all of it would be another one.
std::string Nearest(std::string const& word, std::vector<std::string> const& names);
// The same as the end of a message; "" without one.
std::string DidYouMean(std::string const& word, std::vector<std::string> const& names);

#endif
