#include "terminal/json.h"

#include <nlohmann/json.hpp>

namespace {

using Printed = nlohmann::ordered_json;

Printed PrintedOf(Json const& json) {
  if (auto const* flag = json.As<bool>()) return *flag;
  if (auto const* number = json.As<std::int64_t>()) return *number;
  if (auto const* text = json.As<std::string>()) return *text;
  if (auto const* name = json.As<FileName>()) return name->bytes;
  if (auto const* list = json.As<Json::List>()) {
    Printed printed = Printed::array();
    for (Json const& element : *list) printed.push_back(PrintedOf(element));
    return printed;
  }
  auto const* members = json.As<Json::Object>();
  if (members == nullptr) return nullptr;
  // The JSON library's own insertion searches all members.
  Printed::object_t printed;
  for (auto const& [name, value] : *members) printed.emplace_back(name, PrintedOf(value));
  return printed;
}

}  // namespace

std::string JsonText(Json const& json, int indent) {
  if (auto const* number = json.As<std::int64_t>()) return std::to_string(*number);  // most cells are numbers
  // A file name can contain any bytes. Bytes that are not UTF-8 must not end the command.
  std::string const text = PrintedOf(json).dump(indent, ' ', false, Printed::error_handler_t::replace);
  // The other control characters are already escaped. All of them are in strings.
  static char const kHex[] = "0123456789abcdef";
  std::string safe;
  for (std::size_t i = 0; i < text.size(); i++) {
    auto const next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    bool const isC1 = text[i] == '\xC2' && next < 0xA0;
    if (isC1 || text[i] == '\x7F')
      safe.append("\\u00").append({kHex[isC1 ? next >> 4 : 7], kHex[isC1 ? next & 15 : 15]});
    else
      safe += text[i];
    i += isC1 ? 1 : 0;
  }
  return safe;
}
