// Output of many rows, printed as they come: a big log is never in memory as a whole.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_LISTING_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_LISTING_H

#include <cstddef>
#include <string>
#include <vector>

#include "terminal/terminal.h"

struct Column {
  char const* name;   // the member in JSON and CSV; in capitals the heading of a table
  std::size_t width;  // in a table; a longer cell shifts the following ones
  bool inTable = true;
};

// Prints a table, JSON (a list of objects, as PrintJson prints it) or CSV, as the terminal's options say. On a terminal
// each line of a table is cut at its width; the columns without space are named on standard error.
class Listing {
 public:
  Listing(Terminal const& terminal, std::vector<Column> columns);
  Listing(Listing const&) = delete;
  Listing& operator=(Listing const&) = delete;

  // One cell for every column: a text (Latin-1), a number or null; in CSV and JSON also a FileName.
  void Row(std::vector<Json> const& cells);
  // Prints the rows so far, for output that continues.
  void Flush();
  // Must be called after the last row.
  void End();

 private:
  void JsonRow(std::vector<Json> const& cells);
  void CsvRow(std::vector<Json> const& cells);
  void TableRow(std::vector<Json> const& cells);
  void Write(bool all);
  void LeaveOut();

  Terminal const& terminal_;
  std::size_t screen_;  // columns; 0 if not a terminal
  std::vector<Column> columns_;
  std::string left_;  // names of the columns without space
  bool empty_ = true;
  std::string out_;
};

// Prints the single row of a command for --json (the object, with texts in UTF-8) or --csv. False if neither was given.
bool PrintMachineRow(Terminal const& terminal, Json::Object const& row);

#endif
