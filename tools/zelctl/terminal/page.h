// Text for people, as wide as the terminal.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_PAGE_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_PAGE_H

#include <cstddef>
#include <cstdint>
#include <string>

// The columns of the terminal; otherwise the value of the variable COLUMNS, or 80.
std::size_t PageWidth();

// Wraps the text at single blanks. Each line ends with a line feed. The first line starts with `head`, the others with
// `indent`; both are printed unchanged.
std::string Wrapped(std::string const& text, std::string const& head = "", std::string const& indent = "");

// The length of a bar if the highest count has length `width`. A bar shorter than one character has length 1; only a
// count of 0 has length 0.
std::size_t BarLength(std::uint64_t count, std::uint64_t greatest, std::size_t width);

#endif
