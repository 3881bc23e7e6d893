// What `log outages`, `status` and `report` ask alike.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_OPTIONS_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_OPTIONS_H

#include <string>
#include <vector>

#include "report/outages.h"
#include "terminal/option.h"

// The codes that begin and end an outage: their meaning is the programs' own.
class OutageOptions {
 public:
  // With `required` they must be given; otherwise they are 1 and 2.
  Options Asked(bool required);
  // Throws WrongUsage.
  OutageCodes Codes() const;

 private:
  std::string start_ = "1";
  std::vector<std::string> ends_ = {"2"};
};

// The root that the library goes by. Throws Failed when there is none, or no such directory.
std::string RequireRoot();

#endif
