// Bar charts of event counts: a row for each hour, day, week, month, year, weekday or hour of the day.
#ifndef ZELVANE_TOOLS_ZELCTL_TERMINAL_CHART_H
#define ZELVANE_TOOLS_ZELCTL_TERMINAL_CHART_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

struct Terminal;

// In the order of Period; then the cyclic ones.
enum class Step { kHour, kDay, kWeek, kMonth, kYear, kWeekday, kHourOfDay };
std::optional<Step> StepNamed(std::string const& name);

// The counts of one code.
struct ChartColumn {
  std::uint16_t code = 0;
  std::uint64_t events = 0;
  std::string text;                              // of the latest event
  std::map<std::int64_t, std::uint64_t> counts;  // by row
};

class Chart {
 public:
  // `text` is the text of the event.
  void Add(std::uint16_t code, std::int32_t dateTime, std::string const& text);
  bool IsEmpty() const { return columns_.empty(); }

  // By hour if all events are within three days, otherwise the finest step whose rows fit on a page.
  Step FittingStep() const;
  // The codes in ascending order, counted by the rows of the step.
  std::vector<ChartColumn> By(Step step) const;

  // All bars have one scale. Codes are printed one after another, or side by side on request if they fit.
  void Print(Step step, bool beside, Terminal const& terminal) const;

 private:
  std::map<std::uint16_t, ChartColumn> columns_;  // by hour
};

// The name of a row.
std::string RowText(Step step, std::int64_t row);
std::int64_t NextRow(Step step, std::int64_t row);

// The gap between two rows: rows without an event, or their number in words if there are many.
struct ChartGap {
  std::vector<std::int64_t> rows;
  std::string words;
};
ChartGap GapBetween(Step step, std::int64_t from, std::int64_t to);
// The rows from the first with an event to the last; of a cyclic step all rows.
struct RowRange {
  std::int64_t begin;
  std::int64_t end;
};
RowRange RangeOf(Step step, std::map<std::int64_t, std::uint64_t> const& counts);

#endif
