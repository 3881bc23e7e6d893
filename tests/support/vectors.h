// Known answers: lines of columns, and bytes in hexadecimal.
#ifndef ZELVANE_TESTS_SUPPORT_VECTORS_H
#define ZELVANE_TESTS_SUPPORT_VECTORS_H

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace test {

inline std::string Hex(std::string const& bytes) {
  std::string text;
  for (unsigned char const byte : bytes) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

// "-" means no bytes.
inline std::string FromHex(std::string const& text) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2)
    bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
  return bytes;
}

// Returns the columns of every line of a fixture that is not a comment.
inline std::vector<std::vector<std::string>> ReadVectors(std::string const& name) {
  std::vector<std::vector<std::string>> lines;
  std::ifstream in(std::string(ZELVANE_FIXTURES "/") + name);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream columns(line);
    lines.emplace_back();
    for (std::string column; columns >> column;) lines.back().push_back(column);
  }
  return lines;
}

// (7 * i + 3) mod 256, as used by the vectors.
inline std::string Bytes(std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; i++) bytes += static_cast<char>(7 * i + 3);
  return bytes;
}

}  // namespace test

#endif
