// The product's files hold Latin-1; terminals and JSON mostly want UTF-8.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_LATIN1_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_LATIN1_H

#include <optional>
#include <string>

// The character set of the user's locale, by the name that iconv knows; "" when it is Latin-1, or no more than ASCII:
// bytes go through as they are then.
std::string LocaleCharset();

// In a set that lacks a character "?" takes its place. A set of "" changes nothing.
std::string FromLatin1(std::string const& latin1, std::string const& charset);

// Nothing when the text cannot be converted. `lacking` is then the character that Latin-1 lacks, such as "'€'
// (U+20AC)", or "" when the text is not of that set at all.
std::optional<std::string> ToLatin1(std::string const& text, std::string const& charset, std::string& lacking);

std::string ToUtf8(std::string const& latin1);

// The text with its control characters as \xNN: what a file holds must not drive the terminal it is shown on. One byte
// stays one column.
std::string Printable(std::string const& latin1);

// The same for bytes that are meant for the terminal already, such as names of files. In UTF-8, parts of characters
// stay as they are; what is no character is shown as its bytes.
std::string PrintableBytes(std::string const& bytes, bool isUtf8);

#endif
