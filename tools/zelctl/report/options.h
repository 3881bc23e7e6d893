// What `log outages`, `status` and `report` ask alike.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_OPTIONS_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_OPTIONS_H

#include <string>
#include <vector>

#include "report/outages.h"

namespace CLI {
class App;
}

// The codes that begin and end an outage: their meaning is the programs' own.
class OutageOptions {
 public:
  // With `required` they must be given; otherwise they are 1 and 2.
  void AddTo(CLI::App* command, bool required);
  // Throws WrongUsage.
  OutageCodes Codes() const;

 private:
  std::string start_ = "1";
  std::vector<std::string> ends_ = {"2"};
};

// Another installation than this computer's own.
class RootOption {
 public:
  void AddTo(CLI::App* command);
  bool IsGiven() const { return !path_.empty(); }
  // From now on the library takes the folder for its root. Throws Failed when there is no root, or no such folder.
  void Use() const;

 private:
  std::string path_;
};

#endif
