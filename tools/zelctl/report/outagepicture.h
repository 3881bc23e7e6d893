// Outages by hour of the day, one row for each day, month or year. The report and the picture files share the drawing.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGEPICTURE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGEPICTURE_H

#include <functional>
#include <string>
#include <vector>

#include "report/outages.h"
#include "terminal/period.h"

// The finest of day, month and year that needs at most 31 rows; otherwise the year.
Period RowPeriod(std::vector<Outage> const& outages);

// The step of an outage length: up to 1 minute, 10 minutes, 1 hour, and more, each times `factor`. The limits are
// fixed, so pictures can be compared.
int StepOf(std::int64_t seconds, int factor = 1);
// "under 1 min" to "1 h and more"
std::string StepText(int step, int factor = 1);

// Positions of the parts of a raster.
struct RasterStyle {
  std::function<std::string(double hours)> position;                 // of an hour of the day
  std::function<std::string(double hours)> width;                    // of a number of hours
  std::function<std::string(int y, std::string const& text)> label;  // of a row
  std::function<std::string(int y, std::string const& text)> gap;    // text between two rows
  std::function<std::string(int y, OutageGroup const& group)> total;
};

struct Raster {
  std::string svg;
  int height;
};

// By day, each outage is drawn at its time and with its length. Otherwise a dot for each hour counts the outages that
// began in it.
Raster DrawRaster(std::vector<Outage> const& outages, Period period, RasterStyle const& style);

// A stand-alone picture with title, description, axes and totals. Throws WrongUsage if it would have too many rows.
std::string OutagePicture(std::vector<Outage> const& outages, Period period, History const& history);

// "2005-03-17 Thu 15:14:10 to 15:33:19, 0:19:09"
std::string OutageText(Outage const& outage);
// The end for display after the beginning: only the time on the same day; "still open" without an end.
std::string UntilText(Outage const& outage);

#endif
