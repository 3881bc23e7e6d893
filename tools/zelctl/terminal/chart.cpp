#include "terminal/chart.h"

#include <algorithm>
#include <iostream>
#include <limits>

#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/page.h"
#include "terminal/terminal.h"

namespace {

constexpr std::size_t kShortestBar = 10;  // of the greatest number, however narrow the terminal
constexpr std::int32_t kFewHours = 72;
constexpr std::int32_t kHoursPerDay = kDaySeconds / kHourSeconds;

std::string Label(std::int32_t step, bool byHour) {
  std::int32_t const first = step * (byHour ? kHourSeconds : kDaySeconds);
  return DayText(first) + " " + WeekdayText(first) + (byHour ? " " + TimeText(first).substr(11, 5) : "");
}

// How the bars of one chart are drawn.
struct Style {
  bool byHour;
  std::size_t width;  // of the screen
  std::uint64_t greatest;

  void Row(std::int32_t step, std::uint64_t count) const {
    std::string const label = Label(step, byHour);
    std::size_t const taken = label.size() + std::to_string(greatest).size() + 3;
    std::size_t const room = width < taken + kShortestBar ? kShortestBar : width - taken;
    std::string const bar(BarLength(count, greatest, room), '#');
    std::cout << label << "  " << bar << (count == 0 ? "" : " ") << count << '\n';
  }

  // The steps between two bars: a gap is what one looks for. A long one is told in words.
  void Gap(std::int32_t from, std::int32_t to) const {
    constexpr std::int32_t kShownGap = 2;
    if (to - from > kShownGap)
      std::cout << "... " << Counted(static_cast<std::uint64_t>(to - from), byHour ? "hour" : "day") << " without\n";
    else
      for (std::int32_t step = from; step < to; step++) Row(step, 0);
  }
};

}  // namespace

void Chart::Add(std::uint16_t code, std::int32_t dateTime, std::string const& text) {
  Code& events = codes_[code];
  events.counts[dateTime / kHourSeconds]++;
  events.events++;
  events.text = text;
}

bool Chart::IsByHour(Step step) const {
  if (step != Step::kAutomatic) return step == Step::kHour;
  std::int32_t first = std::numeric_limits<std::int32_t>::max();
  std::int32_t last = 0;
  for (auto const& [number, code] : codes_) {
    first = std::min(first, code.counts.begin()->first);
    last = std::max(last, code.counts.rbegin()->first);
  }
  return last - first < kFewHours;
}

Chart::Codes Chart::ByDay() const {
  Codes codes = codes_;
  for (auto& [number, code] : codes) {
    Counts days;
    for (auto const& [hour, count] : code.counts) days[hour / kHoursPerDay] += count;
    code.counts = std::move(days);
  }
  return codes;
}

void Chart::Print(Step step, Terminal const& terminal) const {
  bool const byHour = IsByHour(step);
  Codes const codes = byHour ? codes_ : ByDay();
  if (terminal.json || terminal.csv) {
    Listing listing(terminal, {{"code", 0}, {"from", 0}, {"count", 0}});
    for (auto const& [number, code] : codes)
      for (auto const& [at, count] : code.counts)
        listing.Row({number, byHour ? TimeText(at * kHourSeconds) : DayText(at * kDaySeconds), count});
    return listing.End();
  }
  if (codes.empty()) terminal.Note("no event to draw");
  Style style = {byHour, PageWidth(), 1};
  for (auto const& [number, code] : codes)
    for (auto const& [at, count] : code.counts) style.greatest = std::max(style.greatest, count);
  for (auto const& [number, code] : codes) {
    std::string head = "code " + std::to_string(number) + ": " + Counted(code.events, "event");
    if (!code.text.empty()) head += ", the last one: " + code.text;
    terminal.PrintText((number == codes.begin()->first ? "" : "\n") + head.substr(0, style.width));
    std::int32_t next = code.counts.begin()->first;
    for (auto const& [at, count] : code.counts) {
      style.Gap(next, at);
      style.Row(at, count);
      next = at + 1;
    }
  }
}
