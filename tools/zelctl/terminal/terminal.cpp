#include "terminal/terminal.h"

#include <errno.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <numeric>

#include "terminal/latin1.h"
#include "zelvane/config/paths.h"

namespace {

// The character set of the terminal, by the options so far. Messages need it before a Terminal exists.
std::string g_charset = LocaleCharset();

std::string g_hidden;

constexpr std::size_t kWidest = 48;     // a longer cell does not widen its column
constexpr std::size_t kNarrowest = 12;  // minimum of a column on a narrow terminal, unless it needs less
constexpr std::size_t kBetween = 2;

using Row = std::vector<std::string>;

std::size_t TotalWidth(std::vector<std::size_t> const& widths) {
  return std::accumulate(widths.begin(), widths.end(), kBetween * (widths.size() - 1));
}

// Narrows the widest columns until the table fits. If that is not enough, removes the last column and starts again, so
// that the others get its place.
void FitInto(std::size_t screen, std::vector<std::size_t>& widths) {
  std::vector<std::size_t> const full = widths;
  while (TotalWidth(widths) > screen) {
    auto const widest = std::max_element(widths.begin(), widths.end());
    if (*widest > kNarrowest)
      --*widest;
    else if (widths.size() > 1)
      widths.assign(full.begin(), full.begin() + static_cast<std::ptrdiff_t>(widths.size()) - 1);
    else
      return;
  }
}

bool IsUtf8() { return g_charset == "UTF-8"; }

// Splits the text into parts of at most `width` characters, at blanks where possible.
Row Folded(std::string const& text, std::size_t width) {
  Row pieces;
  std::size_t at = 0;
  for (std::size_t left = WidthOf(text, IsUtf8()); left > width;) {
    std::size_t const full = EndOf(text, at, width, IsUtf8());
    std::size_t const blank = text.rfind(' ', full);
    std::size_t const end = blank == std::string::npos || blank <= at ? full : blank;
    pieces.push_back(text.substr(at, end - at));
    at = end + (end == blank ? 1 : 0);
    left -= WidthOf(pieces.back(), IsUtf8()) + (end == blank ? 1 : 0);
  }
  pieces.push_back(text.substr(at));
  return pieces;
}

std::string Aligned(Row const& cells, std::vector<std::size_t> const& widths) {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); i++) {
    line.append(i == 0 ? 0 : kBetween, ' ').append(cells[i]);
    std::size_t const width = WidthOf(cells[i], IsUtf8());
    if (width < widths[i]) line.append(widths[i] - width, ' ');
  }
  return line.erase(line.find_last_not_of(' ') + 1);
}

// The lines of a row in which no cell is wider than its column.
std::vector<std::string> FoldedRow(Row const& cells, std::vector<std::size_t> const& widths) {
  std::vector<Row> columns;
  std::size_t height = 0;
  for (std::size_t i = 0; i < std::min(cells.size(), widths.size()); i++) {
    columns.push_back(Folded(cells[i], widths[i]));
    height = std::max(height, columns.back().size());
  }
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < height; i++) {
    Row pieces;
    for (Row const& column : columns) pieces.push_back(i < column.size() ? column[i] : "");
    lines.push_back(Aligned(pieces, widths));
  }
  return lines;
}

}  // namespace

char const kHiddenPassword[] = "(not shown)";

void Terminal::SetRoot(std::string const& directory) {
  root = directory;
  struct stat found = {};
  if (root.empty()) throw WrongUsage("--root: must not be empty");
  if (stat(root.c_str(), &found) != 0) throw Failed(root + ": " + strerror(errno));
  if (!S_ISDIR(found.st_mode)) throw Failed(root + ": " + strerror(ENOTDIR));
  if (SetZelvanePath(root.c_str()) == 0) throw std::bad_alloc();
}

void Terminal::SetUtf8() {
  utf8 = true;
  g_charset = "UTF-8";
}

void Terminal::SetBytes() {
  bytes = true;
  g_charset = "";
}

std::string const& Terminal::Charset() const { return g_charset; }

std::string Terminal::FromArgument(std::string const& name, std::string const& text) const {
  std::string lacking;
  std::optional<std::string> const converted = ToLatin1(text, g_charset.empty() ? "UTF-8" : g_charset, lacking);
  if (g_charset.empty()) {
    if (converted && *converted != text && !bytes)
      Note(name + " looks like UTF-8 but is used unchanged; use --utf8 to convert it to Latin-1");
    return text;
  }
  if (converted) return *converted;
  if (!lacking.empty()) throw WrongUsage(name + ": contains " + lacking + ", which Latin-1 lacks");
  if (utf8) throw WrongUsage(name + ": not valid " + g_charset);
  Note(name + ": not valid " + g_charset + "; used unchanged");
  return text;
}

std::string Terminal::Shown(std::string const& latin1) const { return FromLatin1(Printable(latin1), g_charset); }

std::string Terminal::ShownName(std::string const& name) const { return PrintableBytes(name, IsUtf8()); }

void Terminal::PrintTable(Table const& rows) const {
  std::size_t const screen = TerminalColumns();
  std::vector<std::size_t> widths;
  for (auto const& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); i++) {
      std::size_t const width = WidthOf(ShownCell(row[i]), IsUtf8());
      if (width <= kWidest || screen > 0) widths[i] = std::max(widths[i], std::min(width, kWidest));
    }
  }
  std::size_t const columns = widths.size();
  if (screen > 0) FitInto(screen, widths);
  for (auto const& row : rows) {
    Row cells;
    for (Cell const& cell : row) cells.push_back(ShownCell(cell));
    if (screen == 0) cells = {Aligned(cells, widths)};
    for (std::string const& line : screen > 0 ? FoldedRow(cells, widths) : cells) std::cout << line << '\n';
  }
  if (widths.size() == columns) return;
  std::string left;
  for (std::size_t i = widths.size(); i < columns; i++) left += (left.empty() ? "" : ", ") + rows[0][i].text;
  NoteLeftOut(left);
}

void Terminal::NoteLeftOut(std::string const& columns) const {
  Note("too narrow for " + columns + "; use a wider terminal or --json");
}

void Terminal::PrintJson(Json const& value) const { std::cout << JsonText(value, 2) << '\n'; }

void Terminal::PrintText(std::string const& latin1) const {
  for (std::size_t at = 0; at <= latin1.size();) {
    std::size_t const end = std::min(latin1.find('\n', at), latin1.size());
    std::cout << Shown(latin1.substr(at, end - at)) << '\n';
    at = end + 1;
  }
}

void Terminal::PrintNames(std::string const& text) const { std::cout << ShownName(text) << '\n'; }

void Terminal::PrintValue(std::string const& latin1) const {
  std::cout << (IsOnTerminal() ? Shown(latin1) : utf8 ? ToUtf8(latin1) : latin1) << '\n';
}

void Terminal::Note(std::string const& text) const { Complain("note: " + text); }

void Complain(std::string const& text) {
  std::string shown = text;
  for (std::size_t at = 0; !g_hidden.empty() && (at = shown.find(g_hidden)) != std::string::npos;)
    shown.erase(at, g_hidden.size());
  std::cerr << "zelctl: " << PrintableBytes(shown, IsUtf8()) << '\n';
}

void HideInMessages(std::string const& text) { g_hidden = text; }

std::string Counted(std::uint64_t number, std::string const& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::size_t TerminalColumns() {
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool IsOnTerminal() { return isatty(STDOUT_FILENO) == 1; }

Option ShowPassword() {
  return Flag("--show-password", &Terminal::showPasswords, "Show passwords instead of \"(not shown)\"");
}
