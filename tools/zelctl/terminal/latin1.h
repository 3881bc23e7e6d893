// Conversion between the Latin-1 of the product's files and the character set of the terminal and of JSON.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_LATIN1_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_LATIN1_H

#include <cstddef>
#include <optional>
#include <string>

// The character set of the user's locale, as an iconv name; "" for Latin-1 and for plain ASCII, where bytes are not
// converted.
std::string LocaleCharset();

// Characters missing from `charset` become "?". A charset of "" changes nothing.
std::string FromLatin1(std::string const& latin1, std::string const& charset);

// Empty if the text cannot be converted. `lacking` is then the character that Latin-1 lacks, such as "'€' (U+20AC)", or
// "" if the text is not valid in `charset`.
std::optional<std::string> ToLatin1(std::string const& text, std::string const& charset, std::string& lacking);

std::string ToUtf8(std::string const& latin1);

// The text with control characters as \xNN, because file contents must not drive the terminal. Each other byte keeps
// one column.
std::string Printable(std::string const& latin1);

// The same for bytes in the terminal's encoding, such as file names. UTF-8 characters are unchanged; control characters
// and invalid bytes are shown as \xNN.
std::string PrintableBytes(std::string const& bytes, bool isUtf8);

// Columns of a text on the terminal.
std::size_t WidthOf(std::string const& shown, bool isUtf8);
// The position after the first `columns` columns from `at`, which the text must have.
std::size_t EndOf(std::string const& shown, std::size_t at, std::size_t columns, bool isUtf8);

#endif
