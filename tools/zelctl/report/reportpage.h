// The report: one self-contained HTML page, without scripts, fonts or other files.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPAGE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPAGE_H

#include <string>
#include <vector>

#include "report/site.h"

// A value and its place in the files.
struct ShownSetting {
  std::string name;
  std::string value;
  std::string origin;  // "line 12", "upstype.cfg:3" or "default"
};

// The settings of one service. All services of one kind have the same names in the same order.
struct ShownSettings {
  std::string title;
  std::vector<ShownSetting> rows;
};

struct ShownServer {
  std::string name;
  std::string address;
  std::string port;
  std::string key;
};

struct ReportParts {
  Site site;
  std::string rootName;  // the root as the user named it
  std::vector<ShownSettings> services;
  ShownSettings shutdown;
  std::vector<ShownServer> servers;
};

std::string ReportPage(ReportParts const& parts);

#endif
