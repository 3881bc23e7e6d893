// One installation root, looked at once: what `status` and `report` tell. Nothing in the root is changed.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_SITE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_SITE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "report/outages.h"

struct Terminal;

// The root itself or the directory of a unit, where a service keeps its settings and logs.
struct SitePlace {
  std::string name;    // "" for the root
  std::string folder;  // ends in "/"

  // "logevt.rgt", "007/logevt.rgt": the file as one reads it from the root.
  std::string File(std::string const& name) const;
  // "root" or "007"
  std::string Title() const { return name.empty() ? "root" : name; }
};

// The event log of one place.
struct SiteEvents {
  SitePlace place;
  std::string file;                // as one reads it from the root
  std::optional<History> history;  // none when the file cannot be an event log
  std::string fault;               // why
};

// Another log: nobody tells how long its records are, so nothing is checked.
struct SiteLog {
  std::string file;
  std::uint64_t bytes;
};

struct SiteFinding {
  std::string where;  // file, or file and line
  std::string what;
  std::string advice;  // a command, or ""
};

struct SiteLint {
  std::string file;
  std::string path;  // for a command line
  std::size_t findings;
};

struct PlannedMoment {
  std::int32_t when;
  std::string what;
};

struct Site {
  std::string root;
  std::int32_t now = 0;
  OutageCodes codes = {};
  std::vector<SitePlace> units;      // the listed ones that have a directory
  std::vector<std::string> missing;  // those that have none
  std::vector<SitePlace> services;   // the places with settings of a UPS service
  std::vector<SiteEvents> events;    // the places that have an event log
  std::vector<SiteLog> otherLogs;
  bool hasSchedule = false;            // a schedule was named
  std::vector<PlannedMoment> planned;  // from now on, in order
  std::vector<PlannedMoment> passed;   // full discharges that were due
  std::vector<SiteLint> lint;          // files with findings
  std::vector<SiteFinding> findings;   // all that wants a look, the most urgent first
};

// `schedule` may be "". Throws Failed when the schedule cannot be read.
Site LookAtSite(OutageCodes const& codes, std::string const& schedule, Terminal const& terminal);

// Whether the history is whole, so that its last outage says how the mains are now.
bool TellsMains(History const& history);
// Whether there was an outage at all, also one without a length.
bool HasOutage(History const& history);

#endif
