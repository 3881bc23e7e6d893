// The pictures of the report, inline SVG that the page's style sheet colours. A table follows each.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPICTURES_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPICTURES_H

#include <string>
#include <vector>

#include "report/outages.h"

// How the days of a log are drawn: a cell with text for each, a square for each, or a cell for each month. It depends
// on how many months the log goes through.
enum class CalendarKind { kDays, kSquares, kMonths };

struct Calendar {
  CalendarKind kind;
  std::string svg;
  std::string legend;  // the four steps
};

// Of a log with outages.
Calendar CalendarOf(History const& history);
// Each outage, or hour with outages, at its time of the day.
std::string HoursPicture(std::vector<Outage> const& outages);
// A bar that fills the cell in which the longest outage stands.
std::string LengthBar(Outage const& outage, std::int64_t longest);

#endif
