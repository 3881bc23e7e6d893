// Bars of how often something happened, a row for each hour, day, week, month or year, weekday or hour of the day.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_CHART_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_CHART_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

struct Terminal;

// In the order of Period, then those that go round.
enum class Step { kHour, kDay, kWeek, kMonth, kYear, kWeekday, kHourOfDay };
std::optional<Step> StepNamed(std::string const& name);

// One code's part of a chart.
struct ChartColumn {
  std::uint16_t code = 0;
  std::uint64_t events = 0;
  std::string text;                              // of the latest
  std::map<std::int64_t, std::uint64_t> counts;  // by row
};

class Chart {
 public:
  // `text` is what the event says of itself.
  void Add(std::uint16_t code, std::int32_t dateTime, std::string const& text);
  bool IsEmpty() const { return columns_.empty(); }

  // By hour if all of it lies within three days, else the finest step whose rows fit a page.
  Step FittingStep() const;
  // The codes in ascending order, by the rows of the step.
  std::vector<ChartColumn> By(Step step) const;

  // All bars have one scale. The codes stand below each other, or beside each other if wanted and if they fit.
  void Print(Step step, bool beside, Terminal const& terminal) const;

 private:
  std::map<std::uint16_t, ChartColumn> columns_;  // by hour
};

// The rows of a chart and what they are called.
std::string RowText(Step step, std::int64_t row);
std::int64_t NextRow(Step step, std::int64_t row);

// What stands between one row and the next: rows without an event, or the number of them in words when there are many.
struct ChartGap {
  std::vector<std::int64_t> rows;
  std::string words;
};
ChartGap GapBetween(Step step, std::int64_t from, std::int64_t to);
// The rows from the first with an event to the last; of steps that go round all of them.
struct RowRange {
  std::int64_t begin;
  std::int64_t end;
};
RowRange RangeOf(Step step, std::map<std::int64_t, std::uint64_t> const& counts);

#endif
