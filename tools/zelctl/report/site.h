// A snapshot of one installation root for `status` and `report`. Nothing in the root is changed.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_SITE_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_SITE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "report/outages.h"

struct Terminal;

// The root itself or a unit's directory, where a service has its settings and logs.
struct SitePlace {
  std::string name;    // "" for the root
  std::string folder;  // ends in "/"

  // "logevt.rgt", "007/logevt.rgt": the path relative to the root.
  std::string File(std::string const& name) const;
  // "root" or "007"
  std::string Title() const { return name.empty() ? "root" : name; }
};

// The event log of one place.
struct SiteEvents {
  SitePlace place;
  std::string file;                // relative to the root
  std::optional<History> history;  // empty if the file cannot be an event log
  std::string fault;               // the reason
};

// Another log. Its record size is unknown, so nothing is checked.
struct SiteLog {
  std::string file;
  std::uint64_t bytes;
};

struct SiteFinding {
  std::string where;  // file, or file and line
  std::string what;
  std::string advice;  // a command, or ""
};

// A file or directory that exists and cannot be read.
struct SiteUnread {
  std::string file;  // relative to the root
  std::string reason;
};

struct SiteLint {
  std::string file;
  std::string path;  // for use on a command line
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
  std::vector<SitePlace> units;      // listed units that have a directory
  std::vector<std::string> missing;  // listed units that have none
  std::vector<SitePlace> services;   // places with settings of a UPS service
  std::vector<SiteEvents> events;    // places with an event log
  std::vector<SiteLog> otherLogs;
  bool hasSchedule = false;            // a schedule was given
  std::vector<PlannedMoment> planned;  // from now on, in order of time
  std::vector<PlannedMoment> passed;   // full discharges that are overdue
  std::vector<SiteLint> lint;          // files with findings
  std::vector<SiteUnread> unread;      // settings that hide what they say
  std::vector<SiteFinding> findings;   // everything that needs attention, the most urgent first
};

// `schedule` may be "". Throws Failed when the root or the schedule cannot be read.
Site LookAtSite(OutageCodes const& codes, std::string const& schedule, Terminal const& terminal);

// Whether the log is undamaged, so that its last outage shows the present state of the mains.
bool TellsMains(History const& history);
// Why the list of units is not known; "" if it is.
std::string UnitsFault(Site const& site);
// Whether there was any outage, including outages without a length.
bool HasOutage(History const& history);

#endif
