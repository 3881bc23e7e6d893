// Shared by the tests of the settings records and of their lists.
#ifndef ZELVANE_TESTS_SUPPORT_RECORDS_H
#define ZELVANE_TESTS_SUPPORT_RECORDS_H

#include <cstring>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "support/table.h"

namespace test {

inline std::vector<Case> Cases(std::string const& file, std::string const& table) {
  return Table("api/" + file, table);
}

// Returns a whole file of fixtures/api.
inline std::string Fixture(std::string const& file) { return ReadFile(ZELVANE_FIXTURES "/api/" + file); }

// Returns whether the lines are in the text, one after the other.
inline testing::AssertionResult Holds(std::string const& text, std::string const& lines) {
  bool const holds = ("\n" + text + "\n").find("\n" + lines + "\n") != std::string::npos;
  return testing::AssertionResult(holds) << (holds ? "holds: " : "has no: ") << lines << "\n" << text;
}

// Fills a char array with the text and zeros after it. A text of its width or longer gets no NUL.
template <std::size_t N>
void Put(char (&field)[N], std::string const& text) {
  std::memset(field, 0, N);
  text.copy(field, N);
}

// Returns the values, each followed by a space.
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

// Returns a server in the notation of the table of entries.
template <class Record>
std::string Server(Record const& record) {
  return std::string(record.serverName) + "|" + record.serverAddress + "|" + std::to_string(record.serverPort);
}

// Changes the current directory for the lifetime of the object.
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
