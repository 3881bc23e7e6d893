// Answers of many rows, printed as they come: those of a big log are never in memory together.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_LISTING_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_LISTING_H

#include <cstddef>
#include <string>
#include <vector>

#include "terminal/terminal.h"

struct Column {
  char const* name;   // of the member in JSON and in CSV; in capitals the heading in a table
  std::size_t width;  // in a table; a longer cell pushes aside the rest of its row
  bool inTable = true;
};

// A table (on a terminal each line is cut at its width, and columns for which there is no room are named on the error
// stream instead), JSON (a list of objects, as PrintJson would print it) or CSV,
// as the terminal wants it.
class Listing {
 public:
  Listing(Terminal const& terminal, std::vector<Column> columns);
  Listing(Listing const&) = delete;
  Listing& operator=(Listing const&) = delete;

  // A cell for every column: a text (Latin-1), a number or null.
  void Row(std::vector<Json> const& cells);
  // Prints the rows so far: for answers that continue.
  void Flush();
  // To be called after the last row.
  void End();

 private:
  void JsonRow(std::vector<Json> const& cells);
  void CsvRow(std::vector<Json> const& cells);
  void TableRow(std::vector<Json> const& cells);
  void Write(bool all);
  void LeaveOut();

  Terminal const& terminal_;
  std::size_t screen_;  // columns; 0 without a terminal
  std::vector<Column> columns_;
  std::string left_;  // names of the columns for which there is no room
  bool empty_ = true;
  std::string out_;
};

// The one row of a command that answers with one, for --json (the object itself, texts in UTF-8) and --csv. False when
// neither was asked for.
bool PrintMachineRow(Terminal const& terminal, Json::Object const& row);

#endif
