// A chart as a picture: the numbers of `log chart`, with the codes side by side.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_CHARTPICTURE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_CHARTPICTURE_H

#include <string>

#include "terminal/chart.h"

// SVG with title, description and labels. `name` is the name of the log. Throws WrongUsage if there are too many rows
// or codes.
std::string ChartPicture(Chart const& chart, Step step, std::string const& name);

#endif
