// Builds HTML and SVG. All text from files goes through Escaped(), here and nowhere else: a name or the text of a
// record can neither end nor start an element.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_MARKUP_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_MARKUP_H

#include <string>
#include <utility>
#include <vector>

// Latin-1 to UTF-8 that is safe between tags and in quoted attributes. Control characters become \xNN.
std::string Escaped(std::string const& latin1);
// The same for the name of a file, which is UTF-8 or any bytes.
std::string EscapedName(std::string const& name);

// Values are escaped. An attribute with an empty name is omitted.
using Attributes = std::vector<std::pair<char const*, std::string>>;

// <name attributes>content</name>; `content` is markup.
std::string Element(char const* name, Attributes const& attributes, std::string const& content);
// <name attributes/>
std::string Shape(char const* name, Attributes const& attributes);

// At most two digits after the decimal point.
std::string Coordinate(double number);

#endif
