// How commands read arguments, print results and end.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_TERMINAL_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_TERMINAL_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "terminal/json.h"
#include "terminal/option.h"

// Ends the command with exit code 1: it could not do its work.
struct Failed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Ends the command with exit code 2: wrong usage. Nothing has been written.
struct WrongUsage : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// A cell of a table: a Latin-1 text, or the name of a file.
struct Cell {
  // NOLINTBEGIN(google-explicit-constructor)
  Cell(std::string latin1) : text(std::move(latin1)) {}
  Cell(char const* latin1) : text(latin1) {}
  Cell(FileName name) : text(std::move(name.bytes)), isName(true) {}
  // NOLINTEND(google-explicit-constructor)

  std::string text;
  bool isName = false;
};

using Table = std::vector<std::vector<Cell>>;

// The common options, and the output that follows them. Texts inside the command are Latin-1.
struct Terminal {
  bool json = false;
  bool csv = false;    // for commands that list records
  bool utf8 = false;   // the terminal uses UTF-8, whatever the locale
  bool bytes = false;  // texts are not converted, whatever the locale
  bool showPasswords = false;
  std::string root;  // the installation of --root; "" for this computer's own
  int status = 0;    // exit code of a command that ran to its end

  // --root: throws Failed if the path is not a directory.
  void SetRoot(std::string const& directory);
  void SetUtf8();
  void SetBytes();

  // The character set of the terminal: from the options, otherwise from the locale. "" means no conversion.
  std::string const& Charset() const;

  // Command line text in the encoding of the files. `name` names the argument in messages.
  std::string FromArgument(std::string const& name, std::string const& text) const;

  // The text in the terminal's encoding with visible control characters, for tables and messages.
  std::string Shown(std::string const& latin1) const;
  // A file name, which is already in the terminal's encoding.
  std::string ShownName(std::string const& name) const;
  std::string ShownCell(Cell const& cell) const { return cell.isName ? ShownName(cell.text) : Shown(cell.text); }

  // One row a line, with aligned columns; the first row is the heading. A cell longer than 48 characters shifts only
  // its own row. On a terminal no row is wider than the terminal: long cells continue on the next line, and columns
  // without space are named on standard error.
  void PrintTable(Table const& rows) const;
  // Always UTF-8.
  void PrintJson(Json const& value) const;
  // A line for people.
  void PrintText(std::string const& latin1) const;
  // The same for a line that begins with the name of a file.
  void PrintNames(std::string const& text) const;
  // A value for scripts, and a line feed. On a terminal it is printed as by Shown(); otherwise the bytes are unchanged,
  // or converted with --utf8.
  void PrintValue(std::string const& latin1) const;
  // Names the columns that do not fit on a narrow terminal.
  void NoteLeftOut(std::string const& columns) const;
  // A remark on standard error; the command continues.
  void Note(std::string const& text) const;
};

// Prints an error on standard error, on one line whatever the names in it contain.
void Complain(std::string const& text);

// Omits the text from all later messages: a path that the user did not give.
void HideInMessages(std::string const& text);

// "1 day", "2 days"
std::string Counted(std::uint64_t number, std::string const& noun);

// Columns of the terminal that gets the output; 0 if the output is not a terminal.
std::size_t TerminalColumns();
bool IsOnTerminal();

// Printed in place of a password unless it was requested.
extern char const kHiddenPassword[];

Option ShowPassword();

#endif
