#include "report/reportpage.h"

#include <algorithm>
#include <cstdio>

#include "report/markup.h"
#include "report/outagepicture.h"
#include "report/reportpictures.h"
#include "report/reportstyle.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"

namespace {

constexpr std::size_t kMostRows = 100;
constexpr std::size_t kMostColumns = 3;  // units side by side in a table

// "10,000"
std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

std::string GroupedNoun(std::uint64_t number, std::string const& noun) {
  return Grouped(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string Muted(std::string const& text) { return Element("span", {{"class", "m"}}, Escaped(text)); }
// For texts with the name of a file.
std::string MutedName(std::string const& text) { return Element("span", {{"class", "m"}}, EscapedName(text)); }
std::string Unbroken(std::string const& text) { return Element("span", {{"class", "nb"}}, Escaped(text)); }
std::string Paragraph(std::string const& text) { return Element("p", {{"class", "m"}}, Escaped(text)); }
std::string Heading(std::string const& text) { return Element("h2", {}, Escaped(text)); }
std::string Capitalised(std::string text) {
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}
std::string Section(std::string const& content) { return Element("section", {}, content) + "\n"; }

// "2005-03-26 Sat 13:45:28"
std::string DayTime(std::int32_t stamp) {
  return Unbroken(DayText(stamp)) + " " + WeekdayText(stamp) + Escaped(TimeText(stamp).substr(10));
}

// ---- Tables ----

using Cells = std::vector<std::string>;  // markup

std::string Table(char const* type, std::string const& caption, Cells const& heads, std::vector<Cells> const& rows) {
  std::string head;
  for (std::string const& each : heads) head += Element("th", {{"scope", "col"}}, each);
  std::string body;
  for (Cells const& row : rows) {
    std::string cells = Element("th", {{"scope", "row"}}, row[0]);
    for (std::size_t i = 1; i < row.size(); i++) cells += Element("td", {}, row[i]);
    body += Element("tr", {}, cells);
  }
  return Element("table", {{*type != '\0' ? "class" : "", type}},
                 Element("caption", {}, Escaped(caption)) + Element("thead", {}, Element("tr", {}, head)) +
                     Element("tbody", {}, body));
}

// ---- One event log ----

class EventsPart {
 public:
  EventsPart(Site const& site, SiteEvents const& events)
      : site_(site), events_(events), history_(*events.history), totals_(TotalsOf(history_.outages)) {}

  // A sentence, five numbers and pictures.
  std::string Overview() const {
    return Element("p", {{"class", "lead"}}, Lead()) + Element("dl", {{"class", "tiles"}}, Tiles()) + Pictures() + "\n";
  }

  std::string Outages() const {
    if (totals_.count == 0) return "";
    std::size_t const count = history_.outages.size();
    std::vector<Cells> rows;
    for (std::size_t i = 0; i < std::min(count, kMostRows); i++) rows.push_back(Row(history_.outages[count - 1 - i]));
    std::string caption = "Newest first; lengths in h:mm:ss.";
    if (count > kMostRows) caption += " The " + Grouped(count - kMostRows) + " before them: zelctl log outages.";
    if (history_.outages.back().open) caption += " + = until the last record.";
    return Section(Heading("Outages" + Of()) +
                   Table("out", caption, {"Begin and end", "Length", "Recorded meanwhile"}, rows));
  }

  std::string Events() const {
    std::vector<Cells> rows;
    for (auto const& [code, summary] : history_.byCode) {
      std::string const last = TimeText(summary.last.stamp);
      rows.push_back({std::to_string(code), Grouped(summary.count),
                      Unbroken(last.substr(0, 10)) + Escaped(last.empty() ? "" : last.substr(10, 6)),
                      Escaped(summary.last.text)});
    }
    return Heading("Events" + Of()) + Table("ev", "All records by code, with the text of the last one.",
                                            {"Code", "Records", "Last", "Text"}, rows);
  }

  std::string Footer() const {
    return "Outages" + Of() + " run from " + CodesText(history_) + ", in " + events_.file +
           (history_.earliest < 0 ? "" : ", " + TimeText(history_.earliest) + " to " + TimeText(history_.latest)) +
           ". ";
  }

 private:
  // Names the log if there are several.
  std::string Of() const { return site_.events.size() > 1 ? " of " + events_.place.Title() : ""; }

  std::string Mains() const {
    if (!TellsMains(history_))
      return Element("strong", {}, "The event log is damaged") + " after its record of " + DayTime(history_.last) + ".";
    if (!HasOutage(history_)) return "No outage in the log.";
    std::int32_t const since = history_.isOpen ? history_.current.begin : history_.current.end;
    return Element("strong", {}, history_.isOpen ? "The mains have been off" : "The mains have been on") + " since " +
           DayTime(since) + ".";
  }

  std::string Lead() const {
    std::string const place = site_.events.size() > 1 ? Escaped(events_.place.Title() + ": ") : "";
    if (&events_ != &site_.events.front()) return place + Mains();
    std::size_t const count = site_.findings.size();
    std::string const link = Element("a", {{"href", "#findings"}}, GroupedNoun(count, "finding"));
    return place + Mains() + (count == 0 ? " No findings." : " " + link + " below.");
  }

  static std::string Tile(char const* name, std::string const& value, std::string const& note) {
    return Element(
        "div", {},
        Element("dt", {}, name) + Element("dd", {}, Element("b", {}, value) + Element("span", {}, Escaped(note))));
  }

  std::string ShareText() const {
    std::int64_t const span = static_cast<std::int64_t>(history_.latest) - history_.earliest;
    if (span <= 0) return "the log spans no time";
    char share[32];
    std::snprintf(share, sizeof share, "%.2f", static_cast<double>(totals_.seconds) * 100 / static_cast<double>(span));
    char days[32];
    std::snprintf(days, sizeof days, "%.1f", static_cast<double>(span) / kDaySeconds);
    std::string const logged = span <= 2 * kDaySeconds ? ClockText(span)
                               : span < 100 * kDaySeconds
                                   ? std::string(days) + " days"
                                   : Grouped(static_cast<std::uint64_t>(span / kDaySeconds)) + " days";
    return std::string(share) + " % of the " + logged + " logged";
  }

  std::string PlannedNote() const {
    if (!site_.planned.empty())
      return site_.planned[0].what + TimeText(site_.planned[0].when).insert(0, ", ").erase(2, 11);
    std::string note = site_.hasSchedule ? "the schedule is empty" : "no schedule was named";
    for (PlannedMoment const& passed : site_.passed)
      note += "; the " + passed.what + " was due " + DayText(passed.when);
    return note;
  }

  std::string Tiles() const {
    std::vector<Outage> const& outages = history_.outages;
    bool const any = totals_.count > 0;
    std::string const dash = "&#8211;";
    return Tile("Outages", Grouped(totals_.count),
                totals_.count > 2 ? "half of them up to " + ClockText(totals_.half) : "in this log") +
           Tile("Total time", ClockText(totals_.seconds), ShareText()) +
           Tile("Longest", any ? ClockText(totals_.longest) : dash, any ? Named(outages[totals_.longestAt]) : "") +
           Tile("Last", any ? LengthText(outages.back()) : dash, any ? Named(outages.back()) : "") +
           Tile("Next planned", site_.planned.empty() ? "Nothing" : DayText(site_.planned[0].when), PlannedNote());
  }

  static std::string Named(Outage const& outage) {
    return DayText(outage.begin) + " " + WeekdayText(outage.begin) + TimeText(outage.begin).substr(10);
  }

  std::string Pictures() const {
    if (totals_.count == 0) return "";
    static char const* const kHeads[] = {"Days", "Days", "Months"};
    static char const* const kTold[] = {
        "Time without mains in each day, and how many outages began (5\xD7) if more than one. The log knows nothing of "
        "the days that are missing.",
        "A row is a week from Monday to Sunday. Size and colour of a square show the time without mains; a dot is a "
        "day "
        "without an outage.",
        "How many outages began in each month; colour and line show the time without mains."};
    Calendar const calendar = CalendarOf(history_);
    auto const kind = static_cast<std::size_t>(calendar.kind);
    bool const byDay = RowPeriod(history_.outages) == Period::kDay;
    std::string const left = Heading(kHeads[kind] + Of()) + Element("div", {{"class", "cals"}}, calendar.svg) +
                             calendar.legend + Paragraph(kTold[kind]);
    std::string const right =
        Heading("Hours" + Of()) + HoursPicture(history_.outages) +
        Paragraph(
            byDay ? "Each mark is an outage at its time of the day, as wide as it was long, but never too thin to see."
                  : "A dot is the outages that began in that hour; a bigger dot is a longer time.");
    bool const beside = calendar.kind != CalendarKind::kSquares;
    return Element("section", {{"class", beside ? "two pics" : "pics"}},
                   Element("div", {}, left) + Element("div", {}, right));
  }

  Cells Row(Outage const& outage) const {
    std::string meanwhile = outage.passedOver > 0 ? Grouped(outage.passedOver) + " more; " : "";
    for (LogEvent const& event : outage.during)
      meanwhile += (&event == &outage.during.front() ? "" : "; ") + event.text;
    // On a phone the end can wrap below the beginning, but neither is broken.
    std::string const times = Unbroken(TimeText(outage.begin).substr(11)) + " &#8211; " + Unbroken(UntilText(outage));
    return {Escaped(DayText(outage.begin)) + " " + WeekdayText(outage.begin) + " " + times, LengthText(outage),
            LengthBar(outage, totals_.longest) + (meanwhile.empty() ? "" : Muted(meanwhile))};
  }

  Site const& site_;
  SiteEvents const& events_;
  History const& history_;
  Totals totals_;
};

// ---- Findings, logs, servers and settings ----

std::string FindingsSection(Site const& site) {
  std::vector<Cells> rows;
  for (SiteFinding const& finding : site.findings)
    rows.push_back({Escaped(finding.where), Escaped(Capitalised(finding.what)) +
                                                (finding.advice.empty() ? "" : "<br>" + MutedName(finding.advice))});
  return Element("section", {{"id", "findings"}},
                 Heading("Findings") + (rows.empty()
                                            ? Element("p", {}, "None.")
                                            : Table("find", "Items that need attention.", {"Where", "What"}, rows))) +
         "\n";
}

std::string LogsTable(Site const& site) {
  std::vector<Cells> rows;
  for (SiteEvents const& events : site.events) {
    if (!events.history) {
      rows.push_back({Escaped(events.file), "", Escaped(events.fault)});
      continue;
    }
    History const& history = *events.history;
    std::string const state = history.torn == 0 ? "sound" : "<strong>damaged</strong>";
    rows.push_back({Escaped(events.file), Grouped(history.records * history.recordSize + history.torn),
                    GroupedNoun(history.records, "record") + ", " + state});
  }
  for (SiteLog const& log : site.otherLogs)
    rows.push_back({EscapedName(log.file), Grouped(log.bytes), "size of its records unknown: not checked"});
  return Heading("Logs") + Table("", "Logs found.", {"File", "Bytes", "State"}, rows);
}

std::string ServersTable(std::vector<ShownServer> const& servers) {
  std::vector<Cells> rows;
  rows.reserve(servers.size());
  for (ShownServer const& server : servers)
    rows.push_back({Escaped(server.name), Escaped(server.address), Escaped(server.port), Muted(server.key)});
  return Heading("Servers") + Table("", "The UPS servers that this computer\x27s clients know, by key of upscli.cfg.",
                                    {"Name", "Address", "Port", "Key"}, rows);
}

std::string ValueMarkup(ShownSetting const& setting) {
  return setting.value.empty() ? Muted("empty") : Escaped(setting.value);
}

// Services side by side, a few at a time.
std::string ServicesSections(std::vector<ShownSettings> const& services) {
  std::string sections;
  for (std::size_t first = 0; first < services.size(); first += kMostColumns) {
    std::size_t const end = std::min(first + kMostColumns, services.size());
    Cells heads = {"Setting"};
    std::string names;
    std::vector<Cells> rows(services[first].rows.size());
    for (std::size_t i = first; i < end; i++) {
      heads.push_back(Escaped(services[i].title));
      names += (i == first ? "" : ", ") + services[i].title.substr(0, services[i].title.find(':'));
      for (std::size_t row = 0; row < rows.size(); row++) {
        ShownSetting const& setting = services[i].rows[row];
        if (rows[row].empty()) rows[row].push_back(Escaped(setting.name));
        rows[row].push_back(ValueMarkup(setting) + " " + Element("span", {{"class", "m"}}, Escaped(setting.origin)));
      }
    }
    sections += Section(
        Heading("UPS: " + names) +
        Table("ups", "Settings of the UPS services, and the line of upssrv.cfg or another file that each comes from.",
              heads, rows));
  }
  return sections;
}

std::string ShutdownSection(ShownSettings const& settings) {
  std::vector<Cells> rows;
  for (ShownSetting const& setting : settings.rows)
    rows.push_back({Escaped(setting.name), ValueMarkup(setting), Muted(setting.origin)});
  return Section(Heading("When the UPS orders a shutdown") +
                 Table("set", settings.title, {"Setting", "Value", "From"}, rows));
}

std::string FooterOf(ReportParts const& parts, std::vector<EventsPart> const& events) {
  Site const& site = parts.site;
  std::string text = "Made " + TimeText(site.now) + " by zelctl " ZELVANE_VERSION " from the root ";
  std::string rest = ". ";
  for (EventsPart const& part : events) rest += part.Footer();
  rest += "Times are local, as the programs stamp them. Nothing in the root was changed.";
  return Element("footer", {},
                 Element("p", {}, Escaped(text) + Element("b", {}, EscapedName(parts.rootName)) + Escaped(rest)));
}

std::string Head(ReportParts const& parts) {
  std::string const title = "UPS report " + DayText(parts.site.now) + ", " + parts.rootName;
  return "<head><meta charset=\"utf-8\"><meta name=\"viewport\" content=\"width=device-width,initial-scale=1\">"
         "<meta name=\"color-scheme\" content=\"light dark\">" +
         Element("title", {}, EscapedName(title)) + "\n" + Element("style", {}, std::string("\n") + kReportStyle) +
         "</head>\n";
}

}  // namespace

std::string ReportPage(ReportParts const& parts) {
  Site const& site = parts.site;
  std::vector<EventsPart> events;
  for (SiteEvents const& each : site.events)
    if (each.history) events.emplace_back(site, each);
  std::string body = Element("header", {},
                             Element("h1", {},
                                     EscapedName("UPS report: " + parts.rootName + " ") +
                                         Element("span", {}, Escaped(TimeText(site.now).substr(0, 16))))) +
                     "\n";
  if (events.empty())
    body += Element("p", {{"class", "lead"}},
                    site.events.empty() ? "There is no event log." : "No event log could be read.");
  for (EventsPart const& part : events) body += part.Overview();
  body += FindingsSection(site);
  std::string tables;
  for (EventsPart const& part : events) {
    body += part.Outages();
    tables += part.Events();
  }
  body += Element("section", {{"class", "two"}},
                  Element("div", {}, tables) + Element("div", {}, LogsTable(site) + ServersTable(parts.servers))) +
          "\n" + ServicesSections(parts.services) + ShutdownSection(parts.shutdown) + FooterOf(parts, events) + "\n";
  return "<!DOCTYPE html>\n<html lang=\"en\">" + Head(parts) + Element("body", {}, Element("main", {}, body)) +
         "</html>\n";
}
