#include "terminal/chart.h"

#include <algorithm>
#include <iostream>
#include <limits>

#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/page.h"
#include "terminal/period.h"
#include "terminal/terminal.h"

namespace {

using Counts = std::map<std::int64_t, std::uint64_t>;

constexpr std::size_t kShortestBar = 10;  // of the highest count, on any terminal
constexpr std::size_t kShortestBeside = 6;
constexpr std::int64_t kFewHours = 72;
constexpr std::size_t kPageRows = 50;
constexpr char const* kWeekdays[] = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};

bool GoesRound(Step step) { return step == Step::kWeekday || step == Step::kHourOfDay; }
Period PeriodOf(Step step) { return static_cast<Period>(step); }

std::int64_t RowOf(Step step, std::int64_t dateTime) {
  if (step == Step::kHourOfDay) return dateTime % kDaySeconds / kHourSeconds;
  if (step == Step::kWeekday) return (dateTime / kDaySeconds + 3) % 7;  // 1970-01-01 was a Thursday
  return BeginOf(PeriodOf(step), dateTime);
}

char const* NounOf(Step step) {
  if (GoesRound(step)) return step == Step::kHourOfDay ? "hour" : "day";
  return NameOf(PeriodOf(step));
}

std::uint64_t GreatestOf(std::vector<ChartColumn> const& columns) {
  std::uint64_t greatest = 1;
  for (ChartColumn const& column : columns)
    for (auto const& [row, count] : column.counts) greatest = std::max(greatest, count);
  return greatest;
}

std::string Head(ChartColumn const& column) {
  std::string const head = "code " + std::to_string(column.code) + ": " + Counted(column.events, "event");
  return column.text.empty() ? head : head + ", the last one: " + column.text;
}

// Calls `row` for each row of the range, and `words` for several rows that are summed up.
template <class OnRow, class OnWords>
void ForEachRow(Step step, Counts const& counts, OnRow row, OnWords words) {
  RowRange const range = RangeOf(step, counts);
  std::int64_t next = range.begin;
  auto const gap = [&](std::int64_t to) {
    ChartGap const between = GapBetween(step, next, to);
    if (!between.words.empty()) words(between.words);
    for (std::int64_t const each : between.rows) row(each);
  };
  for (auto const& [at, count] : counts) {
    gap(at);
    row(at);
    next = NextRow(step, at);
  }
  gap(range.end);
}

std::uint64_t CountAt(Counts const& counts, std::int64_t row) {
  auto const found = counts.find(row);
  return found == counts.end() ? 0 : found->second;
}

std::string BarText(std::uint64_t count, std::uint64_t greatest, std::size_t width) {
  return std::string(BarLength(count, greatest, width), '#') + (count == 0 ? "" : " ") + std::to_string(count);
}

void PrintBelow(std::vector<ChartColumn> const& columns, Step step, Terminal const& terminal) {
  std::uint64_t const greatest = GreatestOf(columns);
  std::size_t const taken = RowText(step, 0).size() + std::to_string(greatest).size() + 3;
  std::size_t const width = std::max(PageWidth(), taken + kShortestBar) - taken;
  for (ChartColumn const& column : columns) {
    terminal.PrintText((&column == &columns.front() ? "" : "\n") + Head(column).substr(0, PageWidth()));
    ForEachRow(
        step, column.counts,
        [&](std::int64_t row) {
          std::cout << RowText(step, row) << "  " << BarText(CountAt(column.counts, row), greatest, width) << '\n';
        },
        [](std::string const& words) { std::cout << "... " << words << " without\n"; });
  }
}

// False if they do not fit.
bool PrintBeside(std::vector<ChartColumn> const& columns, Step step, Terminal const& terminal) {
  std::uint64_t const greatest = GreatestOf(columns);
  std::size_t const label = RowText(step, 0).size();
  std::size_t const digits = std::to_string(greatest).size() + 1;
  std::size_t const width = PageWidth();
  if (width < label + columns.size() * (2 + kShortestBeside + digits)) return false;
  std::size_t const cell = (width - label) / columns.size() - 2;
  Counts all;
  std::string heads(label, ' ');
  for (ChartColumn const& column : columns) {
    terminal.PrintText(Head(column).substr(0, width));
    for (auto const& [row, count] : column.counts) all[row] += count;
    std::string head = "code " + std::to_string(column.code);
    head.resize(cell, ' ');
    heads += "  " + head;
  }
  std::cout << '\n' << heads.substr(0, heads.find_last_not_of(' ') + 1) << '\n';
  ForEachRow(
      step, all,
      [&](std::int64_t row) {
        std::string line = RowText(step, row);
        for (ChartColumn const& column : columns) {
          std::string bar = BarText(CountAt(column.counts, row), greatest, cell - digits);
          bar.resize(cell, ' ');
          line += "  " + bar;
        }
        std::cout << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
      },
      [](std::string const& words) { std::cout << "... " << words << " without\n"; });
  return true;
}

std::string MachineText(Step step, std::int64_t row) {
  if (step == Step::kHour) return TimeText(static_cast<std::int32_t>(row));
  return GoesRound(step) ? RowText(step, row) : TextOf(PeriodOf(step), row, false);
}

}  // namespace

std::optional<Step> StepNamed(std::string const& name) {
  if (name == "weekday") return Step::kWeekday;
  if (name == "hour-of-day") return Step::kHourOfDay;
  std::optional<Period> const period = PeriodNamed(name);
  return period ? std::optional<Step>(static_cast<Step>(*period)) : std::nullopt;
}

std::string RowText(Step step, std::int64_t row) {
  if (step == Step::kWeekday) return kWeekdays[row];
  if (step == Step::kHourOfDay) return (row < 10 ? "0" : "") + std::to_string(row) + ":00";
  return TextOf(PeriodOf(step), row);
}

std::int64_t NextRow(Step step, std::int64_t row) { return GoesRound(step) ? row + 1 : NextBegin(PeriodOf(step), row); }

ChartGap GapBetween(Step step, std::int64_t from, std::int64_t to) {
  constexpr std::size_t kShown = 2;
  ChartGap gap;
  std::uint64_t count = 0;
  for (std::int64_t row = from; row < to; row = NextRow(step, row), count++)
    if (count <= kShown || step == Step::kWeekday) gap.rows.push_back(row);
  if (count <= kShown || step == Step::kWeekday) return gap;
  return {{}, Counted(count, NounOf(step))};
}

RowRange RangeOf(Step step, Counts const& counts) {
  if (GoesRound(step)) return {0, step == Step::kWeekday ? 7 : 24};
  return {counts.begin()->first, NextRow(step, counts.rbegin()->first)};
}

void Chart::Add(std::uint16_t code, std::int32_t dateTime, std::string const& text) {
  ChartColumn& column = columns_[code];
  column.code = code;
  column.counts[RowOf(Step::kHour, dateTime)]++;
  column.events++;
  column.text = text;
}

Step Chart::FittingStep() const {
  std::int64_t first = std::numeric_limits<std::int64_t>::max();
  std::int64_t last = 0;
  for (auto const& [code, column] : columns_) {
    first = std::min(first, column.counts.begin()->first);
    last = std::max(last, column.counts.rbegin()->first);
  }
  if (last - first < kFewHours * kHourSeconds) return Step::kHour;
  for (Step const step : {Step::kDay, Step::kWeek, Step::kMonth}) {
    std::size_t most = 0;
    for (ChartColumn const& column : By(step)) {
      std::size_t rows = 0;
      ForEachRow(
          step, column.counts, [&](std::int64_t) { rows++; }, [&](std::string const&) { rows++; });
      most = std::max(most, rows);
    }
    if (most <= kPageRows) return step;
  }
  return Step::kYear;
}

std::vector<ChartColumn> Chart::By(Step step) const {
  std::vector<ChartColumn> columns;
  for (auto const& [code, hours] : columns_) {
    columns.push_back({code, hours.events, hours.text, {}});
    for (auto const& [hour, count] : hours.counts) columns.back().counts[RowOf(step, hour)] += count;
  }
  return columns;
}

void Chart::Print(Step step, bool beside, Terminal const& terminal) const {
  std::vector<ChartColumn> const columns = By(step);
  if (terminal.json || terminal.csv) {
    Listing listing(terminal, {{"code", 0}, {"from", 0}, {"count", 0}});
    for (ChartColumn const& column : columns)
      for (auto const& [row, count] : column.counts) listing.Row({column.code, MachineText(step, row), count});
    return listing.End();
  }
  if (columns.empty()) return terminal.Note("no event to draw");
  if (!beside || columns.size() < 2 || !PrintBeside(columns, step, terminal)) PrintBelow(columns, step, terminal);
}
