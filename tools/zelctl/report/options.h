// Options that `log outages`, `status` and `report` share.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_OPTIONS_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_OPTIONS_H

#include <string>
#include <vector>

#include "report/outages.h"
#include "terminal/option.h"

// The codes that begin and end an outage. Each program defines its own.
class OutageOptions {
 public:
  // With `required` both codes must be given; otherwise they default to 1 and 2.
  Options Asked(bool required);
  // Throws WrongUsage.
  OutageCodes Codes() const;

 private:
  std::string start_ = "1";
  std::vector<std::string> ends_ = {"2"};
};

// The library's installation root. Throws Failed if there is none or it is not a directory.
std::string RequireRoot();

#endif
