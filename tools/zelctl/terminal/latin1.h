// The product's files hold Latin-1; terminals and JSON mostly want UTF-8.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_LATIN1_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_LATIN1_H

#include <optional>
#include <string>

std::string ToUtf8(std::string const& latin1);

// Nothing when the text is not UTF-8 or has a character that Latin-1 lacks.
std::optional<std::string> FromUtf8(std::string const& utf8);

// The text with its control characters as \xNN: what a file holds must not drive the terminal it is shown on. One byte
// stays one column.
std::string Printable(std::string const& latin1);

#endif
