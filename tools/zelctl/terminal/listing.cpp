#include "terminal/listing.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iostream>

#include "terminal/latin1.h"
#include "zelvane/core/strutils.h"

namespace {

Json InUtf8(Json const& cell) {
  auto const* const text = cell.As<std::string>();
  return text == nullptr ? cell : Json(ToUtf8(*text));
}

std::string CellText(Json const& cell, char const* whenNull) {
  if (cell.IsNull()) return whenNull;
  if (auto const* const text = cell.As<std::string>()) return *text;
  if (auto const* const number = cell.As<std::int64_t>()) return std::to_string(*number);
  return JsonText(cell, -1);
}

std::string CsvText(std::string const& text) {
  if (text.find_first_of(",\"") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char const c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

}  // namespace

Listing::Listing(Terminal const& terminal, std::vector<Column> columns)
    : terminal_(terminal), screen_(TerminalColumns()), columns_(std::move(columns)) {
  std::vector<Json> names;
  for (Column& column : columns_) {
    names.emplace_back(terminal_.csv ? column.name : UpperCase(column.name));
    column.width = std::max(column.width, std::strlen(column.name));
  }
  if (!terminal_.json && !terminal_.csv) LeaveOut();
  if (terminal_.json)
    out_ = "[";
  else
    terminal_.csv ? CsvRow(names) : TableRow(names);
}

// After the first column without space, the following ones are omitted too. Long texts are cut to fit.
void Listing::LeaveOut() {
  constexpr std::size_t kEnough = 20;
  std::size_t at = 0;
  for (Column& column : columns_) {
    if (!column.inTable) continue;
    column.inTable = screen_ == 0 || (left_.empty() && at + std::min(column.width, kEnough) <= screen_);
    if (!column.inTable) left_ += (left_.empty() ? "" : ", ") + UpperCase(column.name);
    at += column.width + 2;
  }
}

void Listing::Row(std::vector<Json> const& cells) {
  if (terminal_.json)
    JsonRow(cells);
  else
    terminal_.csv ? CsvRow(cells) : TableRow(cells);
  empty_ = false;
  Write(false);
}

void Listing::Flush() {
  Write(true);
  std::cout.flush();
}

void Listing::End() {
  if (terminal_.json) out_ += empty_ ? "]\n" : "\n]\n";
  Write(true);
  if (!left_.empty()) terminal_.NoteLeftOut(left_);
}

void Listing::JsonRow(std::vector<Json> const& cells) {
  out_ += empty_ ? "\n  {" : ",\n  {";
  for (std::size_t i = 0; i < columns_.size(); i++) {
    out_.append(i == 0 ? "\n    \"" : ",\n    \"").append(columns_[i].name).append("\": ");
    out_ += JsonText(InUtf8(cells[i]), -1);
  }
  out_ += "\n  }";
}

void Listing::CsvRow(std::vector<Json> const& cells) {
  for (std::size_t i = 0; i < columns_.size(); i++) {
    auto const* const name = cells[i].As<FileName>();
    std::string const text =
        name != nullptr ? terminal_.ShownName(name->bytes) : terminal_.Shown(CellText(cells[i], ""));
    out_.append(i == 0 ? "" : ",").append(CsvText(text));
  }
  out_ += '\n';
}

void Listing::TableRow(std::vector<Json> const& cells) {
  std::string line;
  for (std::size_t i = 0; i < columns_.size(); i++) {
    if (!columns_[i].inTable) continue;
    std::string const text = Printable(CellText(cells[i], "-"));
    line.append(line.empty() ? "" : "  ").append(text);
    if (text.size() < columns_[i].width) line.append(columns_[i].width - text.size(), ' ');
  }
  if (screen_ > 0 && line.size() > screen_) line.resize(screen_);
  line.erase(line.find_last_not_of(' ') + 1);
  out_.append(FromLatin1(line, terminal_.Charset())) += '\n';
}

void Listing::Write(bool all) {
  constexpr std::size_t kBlock = 65536;
  if (!all && out_.size() < kBlock) return;
  std::cout << out_;
  out_.clear();
}

bool PrintMachineRow(Terminal const& terminal, Json::Object const& row) {
  if (terminal.json) {
    Json::Object members;
    for (auto const& [name, value] : row) members.push_back({name, InUtf8(value)});
    terminal.PrintJson(members);
  } else if (terminal.csv) {
    std::vector<Column> columns;
    std::vector<Json> cells;
    for (auto const& [name, value] : row) {
      columns.push_back({name.c_str(), 0});
      cells.push_back(value);
    }
    Listing listing(terminal, columns);
    listing.Row(cells);
    listing.End();
  }
  return terminal.json || terminal.csv;
}
