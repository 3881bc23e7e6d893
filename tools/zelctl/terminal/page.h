// Answers for people that are as wide as the terminal.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_PAGE_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_PAGE_H

#include <cstddef>
#include <cstdint>
#include <string>

// Columns of the terminal; elsewhere those that the variable COLUMNS names, or 80.
std::size_t PageWidth();

// The text in lines of that width, broken at single blanks, each with its line feed. `head` stands before the
// first line, `indent` before the others; both are kept as they are.
std::string Wrapped(std::string const& text, std::string const& head = "", std::string const& indent = "");

// Length of a bar where the greatest number has `room`. The rest of a bar that would be shorter than one character is
// still seen; 0 has none.
std::size_t BarLength(std::uint64_t count, std::uint64_t greatest, std::size_t room);

#endif
