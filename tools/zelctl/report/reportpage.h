// The report: one page of HTML that needs nothing else, no script, no font and no other file.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPAGE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_REPORTPAGE_H

#include <string>
#include <vector>

#include "report/site.h"

// A value with the place in the files that it comes from.
struct ShownSetting {
  std::string name;
  std::string value;
  std::string origin;  // "line 12", "upstype.cfg:3" or "default"
};

// The settings of one service. All of one kind have the same names in the same order.
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
  std::string rootName;  // how the root was called
  std::vector<ShownSettings> services;
  ShownSettings shutdown;
  std::vector<ShownServer> servers;
};

std::string ReportPage(ReportParts const& parts);

#endif
