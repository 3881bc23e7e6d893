// The mains failures in a log: beginning, length, and the records meanwhile. All commands on outages use these numbers.
//
// An outage lasts from a record with a beginning code to the next record with an end code. A beginning inside an outage
// and an end outside one are ignored. LogReaderTimeEvents has the same rule, so the lengths add up to its sum. An
// outage without an end is open: it lasts until the last record.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGES_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "records/eventcheck.h"
#include "terminal/period.h"

class RecordLog;
struct Record;
struct Terminal;

struct OutageCodes {
  std::uint16_t start;
  std::vector<std::uint16_t> ends;

  bool IsEnd(std::uint16_t code) const;
};

struct LogEvent {
  std::int32_t stamp;
  std::string text;
};

struct Outage {
  std::int32_t begin = 0;
  std::int32_t end = 0;  // of an open outage: the time stamp of the last record
  bool open = false;
  std::vector<LogEvent> during;  // the last of the other records between begin and end
  std::uint64_t passedOver = 0;  // the number of earlier ones

  std::int64_t Seconds() const { return static_cast<std::int64_t>(end) - begin; }
};

struct CodeSummary {
  std::uint64_t count = 0;
  LogEvent last = {};
};

// One log, read from the first record to the last.
struct History {
  OutageCodes codes;
  std::string path;
  std::uint64_t records = 0;
  std::uint64_t recordSize = 0;
  std::uint64_t torn = 0;       // bytes after the last complete record
  std::uint64_t backwards = 0;  // records with an earlier time stamp than the one before
  std::int32_t last = -1;       // time stamp of the last record
  std::int32_t earliest = -1;   // of all valid time stamps; -1 if there is none
  std::int32_t latest = -1;
  std::map<std::uint16_t, CodeSummary> byCode;

  std::vector<Outage> outages;  // in the order of the log, without those in `setBack`
  // Outages without a length: the end has an earlier time stamp than the beginning, or the beginning has no valid one.
  std::uint64_t setBack = 0;
  bool isOpen = false;  // the log ends inside an outage
  Outage current;       // the open outage, also if it is not in `outages`
  EventCheck check;     // whether the file can be an event log
};

// Throws Failed if the log cannot be read.
History ReadHistory(RecordLog const& log, OutageCodes const& codes);
// The same for an event log. Also throws Failed if the file cannot be one.
History ReadEventHistory(std::string const& path, OutageCodes const& codes);

struct Totals {
  std::uint64_t count = 0;
  std::int64_t seconds = 0;
  std::int64_t longest = 0;
  std::int64_t half = 0;      // the lower median: at least half of the outages are no longer
  std::size_t longestAt = 0;  // the first outage of that length
};
Totals TotalsOf(std::vector<Outage> const& outages);

// The outages of one period. An outage that crosses the end of a period counts as begun in the first one only; each
// period gets its own seconds.
struct OutageGroup {
  std::int64_t from = 0;  // first second of the period
  std::uint64_t begun = 0;
  std::int64_t seconds = 0;
  std::int64_t longest = 0;  // of outages that begin here; the complete length
};
// In order of time, without empty groups.
std::vector<OutageGroup> GroupsOf(std::vector<Outage> const& outages, Period period);

// 'code 1, "Mains failed", to code 2, "Mains back"', with the text of the last record of each code; says so if there is
// none.
std::string CodesText(History const& history);

// The codes that no record has, "2 or 4", if the start or every end is one of them: no outage can begin, or end.
std::string AbsentCodes(History const& history);

// "0:01:07"; with a trailing "+" for an open outage.
std::string ClockText(std::int64_t seconds);
std::string LengthText(Outage const& outage);

#endif
