// Tables of cases in text files: one line per case, written as a fact.
#ifndef ZELVANE_TESTS_SUPPORT_TABLE_H
#define ZELVANE_TESTS_SUPPORT_TABLE_H

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "support/scratch.h"

namespace test {

// One line of a table: columns separated by " | ". \n, \r, \t and \xHH are bytes, and \e is the empty text. Failures
// show the line as written.
struct Case {
  std::vector<std::string> columns;
  std::string line;

  std::string const& operator[](std::size_t column) const { return columns.at(column); }
  int Int(std::size_t column) const { return static_cast<int>(std::stoll(columns.at(column), nullptr, 0)); }
  unsigned int UInt(std::size_t column) const {
    return static_cast<unsigned int>(std::stoll(columns.at(column), nullptr, 0));
  }
};

inline std::ostream& operator<<(std::ostream& out, Case const& c) { return out << c.line; }

inline std::string Unescaped(std::string const& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i++) {
    if (text[i] != '\\') {
      bytes += text[i];
      continue;
    }
    char const kind = text.at(++i);
    if (kind == 'x') bytes += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)), i += 2;
    if (kind != 'x' && kind != 'e') bytes += kind == 'n' ? '\n' : kind == 'r' ? '\r' : '\t';
  }
  return bytes;
}

// Returns the lines after "== table" in a file of the fixtures. A leading "#" makes a line a comment.
inline std::vector<Case> Table(std::string const& file, std::string const& table) {
  std::vector<Case> cases;
  std::istringstream in(ReadFile(ZELVANE_FIXTURES "/" + file));
  bool inside = false;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("==", 0) == 0) inside = line == "== " + table;
    if (!inside || line.empty() || line[0] == '#' || line[0] == '=') continue;
    cases.push_back({{}, line});
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 3) {
      end = line.find(" | ", begin);
      std::string column = line.substr(begin, end == std::string::npos ? end : end - begin);
      column.erase(0, column.find_first_not_of(' '));
      column.erase(column.find_last_not_of(' ') + 1);
      cases.back().columns.push_back(Unescaped(column));
    }
  }
  EXPECT_FALSE(cases.empty()) << file << " == " << table;
  return cases;
}

}  // namespace test

#endif
