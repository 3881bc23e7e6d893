// zelctl log outages: the mains failures in a log.
#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>

#include "commands/families.h"
#include "files/picturefile.h"
#include "files/recordlog.h"
#include "records/fields.h"
#include "report/options.h"
#include "report/outagepicture.h"
#include "report/outages.h"
#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/page.h"
#include "terminal/terminal.h"

namespace {

constexpr std::size_t kNarrow = 62;      // below this width the weekday and the end are left out
constexpr std::size_t kShortestBar = 6;  // of the longest outage, on any terminal

struct Arguments {
  std::string file;
  OutageOptions codes;
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::optional<std::string> last;
  std::optional<std::string> by;
  PictureFile picture;
};

// Empty: one row for each outage.
std::optional<Period> PeriodOf(std::optional<std::string> const& by) {
  if (!by || *by == "outage") return std::nullopt;
  std::optional<Period> const period = PeriodNamed(*by);
  if (!period || *period == Period::kHour) throw WrongUsage("--by: expected outage, day, week, month or year");
  return period;
}

// Outages that begin in the span.
std::vector<Outage> Chosen(std::vector<Outage> const& outages, Arguments const& arguments) {
  std::int32_t const first = arguments.from ? ParseMoment("--from", *arguments.from).first : 0;
  std::int32_t const last = arguments.to ? ParseMoment("--to", *arguments.to).last : INT32_MAX;
  if (first > last) throw WrongUsage("--from is later than --to");
  std::vector<Outage> chosen;
  std::copy_if(outages.begin(), outages.end(), std::back_inserter(chosen),
               [&](Outage const& outage) { return outage.begin >= first && outage.begin <= last; });
  return chosen;
}

std::string StampText(std::int32_t stamp) { return stamp < 0 ? "no date-time" : TimeText(stamp); }

// ---- Tables ----

std::string Right(std::string const& text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

std::string Left(std::string const& text, std::size_t width) {
  return text.size() < width ? text + std::string(width - text.size(), ' ') : text;
}

void PrintLine(std::string line) {
  line.erase(line.find_last_not_of(' ') + 1);
  std::cout << line << '\n';
}

std::size_t WidthAfter(std::size_t taken) {
  std::size_t const width = PageWidth();
  return width < taken + kShortestBar ? kShortestBar : width - taken;
}

std::string Bar(std::int64_t seconds, std::int64_t longest, std::size_t width) {
  auto const most = static_cast<std::uint64_t>(std::max<std::int64_t>(longest, 1));
  // Even an outage of length 0 is visible.
  return std::string(BarLength(static_cast<std::uint64_t>(std::max<std::int64_t>(seconds, 1)), most, width), '#');
}

// The end of an outage, for display after its beginning.
std::string EndText(Outage const& outage) {
  if (outage.open) return "open";
  std::string const end = TimeText(outage.end);
  return end.substr(0, 10) == DayText(outage.begin) ? end.substr(11) : end;
}

void PrintOutages(std::vector<Outage> const& outages, std::size_t toSkip) {
  bool const isWide = PageWidth() >= kNarrow;
  std::size_t ends = 8;
  std::size_t mark = 0;
  std::int64_t longest = 0;
  for (std::size_t i = toSkip; i < outages.size(); i++) {
    longest = std::max(longest, outages[i].Seconds());
    ends = std::max(ends, EndText(outages[i]).size());
    mark = outages[i].open ? 1 : mark;
  }
  std::size_t const lengths = ClockText(longest).size();
  std::size_t const stamp = isWide ? 23 : 19;
  std::size_t const width = WidthAfter(stamp + (isWide ? 2 + ends : 0) + 2 + lengths + mark + 2);
  PrintLine(Left("BEGIN", stamp) + (isWide ? "  " + Left("END", ends) : "") + "  " + Right("LENGTH", lengths));
  for (std::size_t i = toSkip; i < outages.size(); i++) {
    Outage const& outage = outages[i];
    std::string line = isWide
                           ? DayText(outage.begin) + " " + WeekdayText(outage.begin) + TimeText(outage.begin).substr(10)
                           : TimeText(outage.begin);
    if (isWide) line += "  " + Left(EndText(outage), ends);
    line += "  " + Right(ClockText(outage.Seconds()), lengths) + Left(outage.open ? "+" : "", mark) + "  ";
    line += Bar(outage.Seconds(), longest, width);
    if (outage.open) line.back() = '>';
    PrintLine(line);
  }
}

struct GroupTable {
  Period period;
  bool isWide = PageWidth() >= kNarrow;
  std::size_t label = 0;
  std::size_t total = 0;
  std::int64_t most = 0;

  void Print(std::vector<OutageGroup> const& groups, std::size_t toSkip) {
    label = TextOf(period, 0, isWide).size();
    std::int64_t widest = 0;
    for (std::size_t i = toSkip; i < groups.size(); i++) {
      most = std::max(most, groups[i].seconds);
      widest = std::max(widest, groups[i].longest);
    }
    total = std::max<std::size_t>(ClockText(std::max(most, widest)).size(), 7);
    std::string head = NameOf(period);
    std::transform(head.begin(), head.end(), head.begin(), [](char c) { return static_cast<char>(c - 'a' + 'A'); });
    PrintLine(Left(head, label) + "  OUTAGES  " + Right("TOTAL", total) +
              (isWide ? "  " + Right("LONGEST", total) : ""));
    for (std::size_t i = toSkip; i < groups.size(); i++) {
      if (i > toSkip) Gap(NextBegin(period, groups[i - 1].from), groups[i].from);
      Row(groups[i]);
    }
  }

 private:
  void Row(OutageGroup const& group) const {
    std::string line = Left(TextOf(period, group.from, isWide), label) + "  " + Right(std::to_string(group.begun), 7);
    std::string const longest = group.begun == 0 ? "-" : ClockText(group.longest);
    line += "  " + Right(ClockText(group.seconds), total) + (isWide ? "  " + Right(longest, total) : "");
    std::size_t const taken = label + 2 + 7 + 2 + total + (isWide ? 2 + total : 0) + 2;
    PrintLine(line + "  " + Bar(group.seconds, most, WidthAfter(taken)));
  }

  // Up to two periods without an outage get a row each; more are summed up in words.
  void Gap(std::int64_t from, std::int64_t to) const {
    std::uint64_t count = 0;
    for (std::int64_t at = from; at < to; at = NextBegin(period, at)) count++;
    if (count > 2) return PrintLine("... " + Counted(count, NameOf(period)) + " without");
    for (std::int64_t at = from; at < to; at = NextBegin(period, at))
      PrintLine(Left(TextOf(period, at, isWide), label) + "  " + Right("0", 7));
  }
};

void PrintSummary(std::vector<Outage> const& outages, Totals const& totals, History const& history) {
  if (totals.count == 0) {
    std::cout << "No outages.\n";
  } else {
    std::string text = Counted(totals.count, "outage") + ", " + ClockText(totals.seconds) + " in all";
    if (totals.count > 1) text += "; the longest " + ClockText(totals.longest);
    if (totals.count > 2) text += ", half of them up to " + ClockText(totals.half);
    std::cout << '\n' << Wrapped(text + ".");
    if (outages.back().open)
      std::cout << Wrapped("The last one is open: its length is that until the last record, " +
                           StampText(history.last) + ".");
  }
  if (history.records == 0)
    std::cout << "The log is empty.\n";
  else if (history.records == 1)
    std::cout << Wrapped("The log has one record, of " + StampText(history.last) + ".");
  else
    std::cout << Wrapped("The log runs from " + StampText(history.earliest) + " to " + StampText(history.latest) + ".");
}

// ---- CSV and JSON ----

void ListOutages(std::vector<Outage> const& outages, std::size_t toSkip, Terminal const& terminal) {
  Listing listing(terminal, {{"begin", 0}, {"end", 0}, {"seconds", 0}, {"open", 0}});
  for (std::size_t i = toSkip; i < outages.size(); i++) {
    Outage const& outage = outages[i];
    Json const open = terminal.json ? Json(outage.open) : Json(outage.open ? 1 : 0);
    listing.Row({TimeText(outage.begin), outage.open ? Json() : Json(TimeText(outage.end)), outage.Seconds(), open});
  }
  listing.End();
}

void ListGroups(std::vector<OutageGroup> const& groups, Period period, std::size_t toSkip, Terminal const& terminal) {
  Listing listing(terminal, {{"from", 0}, {"outages", 0}, {"seconds", 0}, {"longest", 0}});
  for (std::size_t i = toSkip; i < groups.size(); i++)
    listing.Row({TextOf(period, groups[i].from, false), groups[i].begun, groups[i].seconds, groups[i].longest});
  listing.End();
}

// ---- The command ----

void NoteOddities(History const& history, Terminal const& terminal) {
  std::string const absent = AbsentCodes(history);
  if (!absent.empty() && history.records > 0)
    terminal.Note("no record has the code " + absent + "; `zelctl log chart " + history.path + "` lists the codes");
  if (history.setBack > 0)
    terminal.Note(Counted(history.setBack, "outage") +
                  " omitted, because the clock was set back meanwhile; `zelctl log time` counts otherwise");
  if (history.backwards > 0)
    terminal.Note("the times step back " + Counted(history.backwards, "time") + "; `zelctl log verify " + history.path +
                  "` shows where");
}

void WritePicture(std::vector<Outage> const& outages, std::optional<Period> period, History const& history,
                  Arguments const& arguments, Terminal const& terminal) {
  if (outages.empty()) return terminal.Note(arguments.picture.path + " not written: no outages");
  Period const rows = period ? *period : RowPeriod(outages);
  std::string const svg = OutagePicture(outages, rows, history);
  arguments.picture.Write(svg);
  std::size_t const groups = GroupsOf(outages, rows).size();
  arguments.picture.Tell(Counted(outages.size(), "outage") + " on " + Counted(groups, NameOf(rows)),
                         {{"outages", outages.size()}}, svg.size(), terminal);
}

void ShowOutages(Arguments const& arguments, Terminal& terminal) {
  OutageCodes const codes = arguments.codes.Codes();
  std::optional<Period> const period = PeriodOf(arguments.by);
  auto const last = arguments.last ? NumberArgument("--last", *arguments.last, 1, kHighestNumber) : kHighestNumber;
  if (arguments.picture) arguments.picture.RequireFree(arguments.file);
  History const history = ReadEventHistory(arguments.file, codes);
  std::vector<Outage> const outages = Chosen(history.outages, arguments);
  std::vector<OutageGroup> const groups = period ? GroupsOf(outages, *period) : std::vector<OutageGroup>();
  std::size_t const rows = period ? groups.size() : outages.size();
  std::size_t const toSkip = rows - std::min(rows, static_cast<std::size_t>(last));
  Totals const totals = TotalsOf(outages);
  bool const isTable = !arguments.picture && !terminal.json && !terminal.csv;
  bool const isCut = isTable && period && rows > 0 && PageWidth() < kNarrow;
  if (arguments.picture) {
    WritePicture(outages, period, history, arguments, terminal);
  } else if (terminal.json || terminal.csv) {
    period ? ListGroups(groups, *period, toSkip, terminal) : ListOutages(outages, toSkip, terminal);
  } else {
    if (period && rows > 0) GroupTable{*period}.Print(groups, toSkip);
    if (!period && rows > 0) PrintOutages(outages, toSkip);
    PrintSummary(outages, totals, history);
  }
  if (isCut) terminal.NoteLeftOut("LONGEST");
  NoteOddities(history, terminal);
  RecordLog(arguments.file, kEventSize).NoteDamage(terminal);
}

}  // namespace

Command OutagesCommand() {
  auto const arguments = std::make_shared<Arguments>();
  return {
      "outages", "List mains failures: begin, end, length, total", On(arguments, ShowOutages),
      Joined({{Argument("FILE", &arguments->file, "The log").Required()},
              arguments->codes.Asked(true),
              {Value("--from", &arguments->from, "TIME", "Only outages that begin at this time or later"),
               Value("--to", &arguments->to, "TIME", "Only outages that begin at this time or earlier"),
               Value("--last", &arguments->last, "N", "Only the last N rows; totals include all"),
               Value("--by", &arguments->by, "outage|day|week|month|year",
                     "Period of each row; default: one row for each outage")},
              arguments->picture.Asked("--svg", "Write an SVG picture to FILE instead")}),
      "An outage begins with the first record of --start and ends with the next one of --end, as in `log time`. An "
      "outage without an end is open: its length, marked \"+\", is measured to the last record. The longest bar fills "
      "the width. By day, week, month or year, OUTAGES and LONGEST count the outages that begin in it; TOTAL is the "
      "outage time in it."};
}
