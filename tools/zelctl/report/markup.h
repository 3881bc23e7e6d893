// HTML and SVG from pieces. Whatever comes from a file goes through Escaped(), here and nowhere else: a name or a text
// of a record can neither end an element nor begin one.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_MARKUP_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_MARKUP_H

#include <string>
#include <utility>
#include <vector>

// Latin-1 as text in UTF-8, safe between tags and in quoted attributes; control characters as \xNN.
std::string Escaped(std::string const& latin1);

// The values are escaped; an attribute with an empty name is left out.
using Attributes = std::vector<std::pair<char const*, std::string>>;

// <name attributes>content</name>; the content is markup already.
std::string Element(char const* name, Attributes const& attributes, std::string const& content);
// <name attributes/>
std::string Shape(char const* name, Attributes const& attributes);

// With at most two digits after the point.
std::string Coordinate(double number);

#endif
