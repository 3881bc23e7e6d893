#include "report/outages.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "files/recordlog.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"

namespace {

constexpr std::size_t kMostDuring = 12;

// Processes the records in order.
class Reader {
 public:
  explicit Reader(History& history) : history_(history) {}

  void See(Record const& record) {
    Order(record.stamp);
    history_.check.See(record);
    std::optional<std::uint16_t> const code = record.Code();
    if (!code) return;
    Count(*code, record);
    if (!history_.isOpen) {
      if (*code != history_.codes.start) return;
      history_.isOpen = true;
      history_.current = {};
      history_.current.begin = record.stamp;
    } else if (history_.codes.IsEnd(*code)) {
      history_.isOpen = false;
      Close(record.stamp);
    } else if (*code != history_.codes.start) {
      Remember(record);
    }
  }

  void End() {
    if (!history_.isOpen) return;
    history_.current.open = true;
    Close(history_.last);
  }

 private:
  void Order(std::int32_t stamp) {
    if (history_.records++ > 0 && stamp < history_.last) history_.backwards++;
    history_.last = stamp;
    if (stamp < 0) return;
    if (history_.earliest < 0 || stamp < history_.earliest) history_.earliest = stamp;
    history_.latest = std::max(history_.latest, stamp);
  }

  void Count(std::uint16_t code, Record const& record) {
    CodeSummary& summary = history_.byCode[code];
    summary.count++;
    summary.last = {record.stamp, record.Text()};
  }

  void Remember(Record const& record) {
    std::vector<LogEvent>& during = history_.current.during;
    if (during.size() == kMostDuring) {
      during.erase(during.begin());
      history_.current.passedOver++;
    }
    during.push_back({record.stamp, record.Text()});
  }

  void Close(std::int32_t end) {
    history_.current.end = end;
    if (history_.current.begin < 0 || end < history_.current.begin)
      history_.setBack++;
    else
      history_.outages.push_back(history_.current);
  }

  History& history_;
};

}  // namespace

bool OutageCodes::IsEnd(std::uint16_t code) const { return std::find(ends.begin(), ends.end(), code) != ends.end(); }

History ReadHistory(RecordLog const& log, OutageCodes const& codes) {
  History history;
  history.codes = codes;
  history.path = log.Path();
  history.recordSize = log.RecordSize();
  history.torn = log.Torn();
  Reader reader(history);
  log.ForEach([&reader](Record const& record) { reader.See(record); });
  reader.End();
  return history;
}

History ReadEventHistory(std::string const& path, OutageCodes const& codes) {
  RecordLog const log(path, kEventSize);
  History history = ReadHistory(log, codes);
  history.check.Require(log);
  return history;
}

Totals TotalsOf(std::vector<Outage> const& outages) {
  Totals totals;
  std::vector<std::int64_t> lengths;
  for (Outage const& outage : outages) {
    std::int64_t const seconds = outage.Seconds();
    if (lengths.empty() || seconds > totals.longest) {
      totals.longest = seconds;
      totals.longestAt = lengths.size();
    }
    lengths.push_back(seconds);
    totals.seconds += seconds;
  }
  totals.count = lengths.size();
  if (lengths.empty()) return totals;
  auto const middle = lengths.begin() + static_cast<std::ptrdiff_t>((lengths.size() - 1) / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  totals.half = *middle;
  return totals;
}

std::vector<OutageGroup> GroupsOf(std::vector<Outage> const& outages, Period period) {
  std::map<std::int64_t, OutageGroup> groups;
  // Changes of the number of outages that fill a period completely, so that a long outage is not added period by
  // period.
  std::map<std::int64_t, std::int64_t> filled;
  for (Outage const& outage : outages) {
    std::int64_t const home = BeginOf(period, outage.begin);
    std::int64_t const next = NextBegin(period, home);
    OutageGroup& group = groups[home];
    group.begun++;
    group.seconds += std::min<std::int64_t>(outage.end, next) - outage.begin;
    group.longest = std::max(group.longest, outage.Seconds());
    if (outage.end <= next) continue;
    std::int64_t const last = BeginOf(period, static_cast<std::int64_t>(outage.end) - 1);
    groups[last].seconds += outage.end - last;
    filled[next]++;
    filled[last]--;
  }
  std::int64_t depth = 0;
  for (auto change = filled.begin(); change != filled.end(); ++change) {
    depth += change->second;
    if (depth == 0) continue;
    for (std::int64_t from = change->first, next = 0; from < std::next(change)->first; from = next) {
      next = NextBegin(period, from);
      groups[from].seconds += depth * (next - from);
    }
  }
  std::vector<OutageGroup> list;
  for (auto& [from, group] : groups) {
    group.from = from;
    list.push_back(group);
  }
  return list;
}

std::string CodesText(History const& history) {
  auto const named = [&history](std::uint16_t code) {
    auto const found = history.byCode.find(code);
    std::string const text = "code " + std::to_string(code);
    if (found == history.byCode.end()) return text + ", which no record has,";
    return found->second.last.text.empty() ? text : text + ", \"" + found->second.last.text + "\",";
  };
  std::string text = named(history.codes.start) + " to ";
  for (std::size_t i = 0; i < history.codes.ends.size(); i++)
    text += (i == 0 ? "" : i + 1 == history.codes.ends.size() ? " or " : " ") + named(history.codes.ends[i]);
  if (text.back() == ',') text.pop_back();
  return text;
}

std::string AbsentCodes(History const& history) {
  std::vector<std::uint16_t> absent;
  auto const see = [&](std::uint16_t code) {
    if (history.byCode.count(code) == 0) absent.push_back(code);
  };
  std::vector<std::uint16_t> const& ends = history.codes.ends;
  see(history.codes.start);
  bool const noStart = !absent.empty();
  std::for_each(ends.begin(), ends.end(), see);
  if (!noStart && absent.size() < ends.size()) return "";
  std::string text;
  for (std::size_t i = 0; i < absent.size(); i++)
    text += (i == 0 ? "" : i + 1 == absent.size() ? " or " : ", ") + std::to_string(absent[i]);
  return text;
}

std::string ClockText(std::int64_t seconds) {
  auto const twoDigits = [](std::int64_t n) { return (n < 10 ? "0" : "") + std::to_string(n); };
  return std::to_string(seconds / kHourSeconds) + ":" + twoDigits(seconds / 60 % 60) + ":" + twoDigits(seconds % 60);
}

std::string LengthText(Outage const& outage) { return ClockText(outage.Seconds()) + (outage.open ? "+" : ""); }
