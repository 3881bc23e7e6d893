#include "terminal/latin1.h"

#include <cstddef>

std::string ToUtf8(std::string const& latin1) {
  std::string utf8;
  for (char const c : latin1) {
    auto const byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | (byte >> 6));
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

std::optional<std::string> FromUtf8(std::string const& utf8) {
  std::string latin1;
  for (std::size_t i = 0; i < utf8.size(); i++) {
    auto const byte = static_cast<unsigned char>(utf8[i]);
    if (byte < 0x80) {
      latin1 += utf8[i];
      continue;
    }
    // The characters from 0x80 to 0xFF are exactly the pairs that begin with C2 or C3.
    if ((byte != 0xC2 && byte != 0xC3) || i + 1 == utf8.size()) return std::nullopt;
    auto const next = static_cast<unsigned char>(utf8[++i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    latin1 += static_cast<char>(((byte & 0x03) << 6) | (next & 0x3F));
  }
  return latin1;
}

std::string Printable(std::string const& latin1) {
  static char const kHex[] = "0123456789ABCDEF";
  std::string shown;
  for (char const c : latin1) {
    auto const byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && (byte < 0x7F || byte >= 0xA0)) {
      shown += c;
    } else {
      shown += "\\x";
      shown += kHex[byte >> 4];
      shown += kHex[byte & 0x0F];
    }
  }
  return shown;
}
