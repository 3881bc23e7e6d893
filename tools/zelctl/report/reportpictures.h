// The pictures of the report: inline SVG, coloured by the page's style sheet. A table follows each.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPICTURES_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPICTURES_H

#include <string>
#include <vector>

#include "report/outages.h"

// How the days of a log are drawn: a cell with text for each day, a square for each day, or a cell for each month. The
// number of months in the log decides.
enum class CalendarKind { kDays, kSquares, kMonths };

struct Calendar {
  CalendarKind kind;
  std::string svg;
  std::string legend;  // the four steps
};

// Requires a log with outages.
Calendar CalendarOf(History const& history);
// Each outage, or each hour with outages, at its time of day.
std::string HoursPicture(std::vector<Outage> const& outages);
// A bar; that of the longest outage fills its cell.
std::string LengthBar(Outage const& outage, std::int64_t longest);

#endif
