// What a log says of the mains: when they failed, for how long, and what happened meanwhile. All commands that speak of
// outages have their numbers from here.
//
// An outage goes from a record of the code that begins one to the next record of a code that ends one. A beginning
// inside an outage and an end outside one count for nothing: that is the rule of the library's LogReaderTimeEvents, so
// the lengths add up to its sum. An outage without an end is open: it lasts until the last record.
#ifndef ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGES_H
#define ZELVANE_TOOLS_ZELCTL_REPORT_OUTAGES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "terminal/period.h"

class RecordLog;
struct Record;
struct Terminal;

struct OutageCodes {
  std::uint16_t start;
  std::vector<std::uint16_t> ends;

  bool IsEnd(std::uint16_t code) const;
  // "1 or 2", "1, 2 or 4"
  std::string Text() const;
};

struct LogEvent {
  std::int32_t stamp;
  std::string text;
};

struct Outage {
  std::int32_t begin = 0;
  std::int32_t end = 0;  // of an open one the stamp of the last record
  bool open = false;
  std::vector<LogEvent> during;  // the last of the other records between begin and end
  std::uint64_t passedOver = 0;  // those before them

  std::int64_t Seconds() const { return static_cast<std::int64_t>(end) - begin; }
};

struct CodeSummary {
  std::uint64_t count = 0;
  LogEvent last = {};
};

// One log, read from its first record to its last.
struct History {
  OutageCodes codes;
  std::string path;
  std::uint64_t records = 0;
  std::uint64_t recordSize = 0;
  std::uint64_t torn = 0;       // bytes after the last whole record
  std::uint64_t early = 0;      // records stamped before 1990
  std::uint64_t backwards = 0;  // records stamped before the one before them
  std::int32_t last = -1;       // stamp of the last record
  std::int32_t earliest = -1;   // of all that have a date-time; -1 when none has
  std::int32_t latest = -1;
  std::map<std::uint16_t, CodeSummary> byCode;

  std::vector<Outage> outages;  // in the order of the log, but for those below
  // With an end that is stamped before the beginning, or a beginning without a date-time: they have no length.
  std::uint64_t setBack = 0;
  bool isOpen = false;  // the log ends inside an outage
  Outage current;       // that one, whether or not it is among the outages

  // The programs stamp what they record: a file with more than half of its stamps before 1990 is something else.
  bool IsNoEventLog() const { return early > records / 2; }
};

// Throws Failed when the log cannot be read.
History ReadHistory(RecordLog const& log, OutageCodes const& codes);
// The same for an event log. Throws Failed, too, when the file's records cannot be events.
History ReadEventHistory(std::string const& path, OutageCodes const& codes);
// "is no event log: ..."
std::string NoEventLogText(History const& history);

struct Totals {
  std::uint64_t count = 0;
  std::int64_t seconds = 0;
  std::int64_t longest = 0;
  std::int64_t half = 0;      // the lower middle length: half of the outages are no longer
  std::size_t longestAt = 0;  // the first of that length
};
Totals TotalsOf(std::vector<Outage> const& outages);

// What falls in one period. An outage over the end of a period begins in the first one only, and gives each its
// seconds.
struct OutageGroup {
  std::int64_t from = 0;  // first second of the period
  std::uint64_t begun = 0;
  std::int64_t seconds = 0;
  std::int64_t longest = 0;  // of those that begin here, the whole length
};
// In order of time, without empty ones.
std::vector<OutageGroup> GroupsOf(std::vector<Outage> const& outages, Period period);

// 'code 1, "Mains failed", to code 2, "Mains back"': with the texts of the last record of each, where there is one.
std::string CodesText(History const& history);

// "0:01:07", with "+" after the length of an open one.
std::string ClockText(std::int64_t seconds);
std::string LengthText(Outage const& outage);

#endif
