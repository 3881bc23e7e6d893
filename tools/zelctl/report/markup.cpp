#include "report/markup.h"

#include <cstdio>

#include "terminal/latin1.h"

namespace {

std::string Opened(char const* name, Attributes const& attributes) {
  std::string tag = std::string("<") + name;
  for (auto const& [key, value] : attributes)
    if (*key != '\0') tag.append(" ").append(key).append("=\"").append(Escaped(value)).append("\"");
  return tag;
}

}  // namespace

std::string Escaped(std::string const& latin1) { return EscapedName(ToUtf8(Printable(latin1))); }

std::string EscapedName(std::string const& name) {
  std::string escaped;
  for (char const c : PrintableBytes(name, true)) {
    switch (c) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '"': escaped += "&quot;"; break;
      case '\'': escaped += "&#39;"; break;
      default: escaped += c;
    }
  }
  return escaped;
}

std::string Element(char const* name, Attributes const& attributes, std::string const& content) {
  return Opened(name, attributes) + ">" + content + "</" + name + ">";
}

std::string Shape(char const* name, Attributes const& attributes) { return Opened(name, attributes) + "/>"; }

std::string Coordinate(double number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.2f", number);
  std::string trimmed = text;
  trimmed.erase(trimmed.find_last_not_of('0') + 1);
  if (trimmed.back() == '.') trimmed.pop_back();
  return trimmed == "-0" ? "0" : trimmed;
}
