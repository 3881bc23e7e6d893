// Outages by the hour of the day, a row for each day, month or year: one drawing for the report and for files.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGEPICTURE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGEPICTURE_H

#include <functional>
#include <string>
#include <vector>

#include "report/outages.h"
#include "terminal/period.h"

// The finest of day, month and year that gives at most 31 rows; else the year.
Period RowPeriod(std::vector<Outage> const& outages);

// How long the mains were off, in four steps: up to 1 minute, 10 minutes, 1 hour, and more, each times `factor`. Fixed,
// so that two pictures compare.
int StepOf(std::int64_t seconds, int factor = 1);
// "under 1 min" to "1 h and more"
std::string StepText(int step, int factor = 1);

// How a raster is placed.
struct RasterStyle {
  std::function<std::string(double hours)> position;                 // of a time of the day
  std::function<std::string(double hours)> width;                    // of so many hours
  std::function<std::string(int y, std::string const& text)> label;  // of a row
  std::function<std::string(int y, std::string const& text)> gap;    // words between two rows
  std::function<std::string(int y, OutageGroup const& group)> total;
};

struct Raster {
  std::string svg;
  int height;
};

// By day each outage stands at its time, as wide as it was long; otherwise a dot for each hour stands for those that
// began in it.
Raster DrawRaster(std::vector<Outage> const& outages, Period period, RasterStyle const& style);

// A picture of its own, with title, description, axes and sums. Throws WrongUsage when it would have too many rows.
std::string OutagePicture(std::vector<Outage> const& outages, Period period, History const& history);

// "2005-03-17 Thu 15:14:10 to 15:33:19, 0:19:09"
std::string OutageText(Outage const& outage);
// The end as one reads it after the beginning: the time alone on the same day; "still open".
std::string UntilText(Outage const& outage);

#endif
