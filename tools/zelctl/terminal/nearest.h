// Suggestions for misspelled names.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_NEAREST_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_NEAREST_H

#include <string>
#include <vector>

// The name that `word` begins, or the one with the smallest edit distance, ignoring case and leading dashes; "" if more
// than about a third of it would change.
std::string Nearest(std::string const& word, std::vector<std::string> const& names);
// The suggestion as the end of a message; "" if there is none.
std::string DidYouMean(std::string const& word, std::vector<std::string> const& names);

#endif
