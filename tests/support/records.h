// What the tests of the settings records and of their lists share.
#ifndef ZELVANE_TESTS_SUPPORT_RECORDS_H
#define ZELVANE_TESTS_SUPPORT_RECORDS_H

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/scratch.h"

namespace test {

// One line of a table in fixtures/api: columns parted by " | ", in which \n, \r, \t and \xHH stand for bytes and \e for
// nothing at all. Failures show it as it is written there.
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

// The lines behind "== table" in a file of fixtures/api; "#" in front makes a line a remark.
inline std::vector<Case> Cases(std::string const& file, std::string const& table) {
  std::vector<Case> cases;
  std::istringstream in(ReadFile(ZELVANE_FIXTURES "/api/" + file));
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

// A whole file of fixtures/api.
inline std::string Fixture(std::string const& file) { return ReadFile(ZELVANE_FIXTURES "/api/" + file); }

// Whether the lines stand in the text, one after the other.
inline bool Holds(std::string const& text, std::string const& lines) {
  return ("\n" + text + "\n").find("\n" + lines + "\n") != std::string::npos;
}

// Fills a char array with the text and zeros behind it; text of its width or longer leaves it without a NUL.
template <std::size_t N>
void Put(char (&field)[N], std::string const& text) {
  std::memset(field, 0, N);
  text.copy(field, N);
}

// The values with a blank behind each.
template <class... Values>
std::string Words(Values const&... values) {
  std::ostringstream out;
  ((out << values << ' '), ...);
  return out.str();
}

template <class Record>
std::string Bytes(Record const& record) {
  return std::string(reinterpret_cast<char const*>(&record), sizeof record);
}

// A server in the notation of the table of entries.
template <class Record>
std::string Server(Record const& record) {
  return std::string(record.serverName) + "|" + record.serverAddress + "|" + std::to_string(record.serverPort);
}

// Another current folder, until the object goes.
class InFolder {
 public:
  explicit InFolder(std::string const& path) { std::filesystem::current_path(path); }
  ~InFolder() { std::filesystem::current_path(old_); }
  InFolder(InFolder const&) = delete;
  InFolder& operator=(InFolder const&) = delete;

 private:
  std::filesystem::path const old_ = std::filesystem::current_path();
};

}  // namespace test

#endif
