// zelctl log: the records of a log, and what they say about mains failures.
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include "commands/families.h"
#include "files/damage.h"
#include "files/edit.h"
#include "files/input.h"
#include "files/output.h"
#include "files/picturefile.h"
#include "files/recordlog.h"
#include "records/choice.h"
#include "records/eventcheck.h"
#include "records/fields.h"
#include "records/recordlisting.h"
#include "report/chartpicture.h"
#include "terminal/chart.h"
#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/logclass.h"
#include "zelvane/logs/logreader.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kLargestPayload = 4294967291;  // the maximum of LogClass
constexpr std::int64_t kHighestCode = 65535;
constexpr std::int64_t kHighestEndCode = 32767;  // end codes are signed in the library
// The last day that a span can end with: the end of the next day is past the last valid date-time.
char const kLastDay[] = "2038-01-18";

struct Arguments {
  std::string file;
  std::string out;
  std::optional<std::string> size;
  std::optional<std::string> code;
  ChoiceOptions choice;
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::optional<std::string> last;
  std::optional<std::string> start;
  std::vector<std::string> ends;
  std::optional<std::string> by;
  bool reverse = false;
  PictureFile picture;
  Replacing replacing = {false, ".rgt"};
  bool dryRun = false;
  bool text = false;
};

RecordLog OpenLog(Arguments const& arguments) {
  auto const size = arguments.size ? NumberArgument("--size", *arguments.size, 0, kLargestPayload)
                                   : static_cast<std::int64_t>(kEventSize);
  return {arguments.file, static_cast<std::uint64_t>(size)};
}

std::optional<std::uint16_t> CodeArgument(char const* name, std::optional<std::string> const& code) {
  if (!code) return std::nullopt;
  return static_cast<std::uint16_t>(NumberArgument(name, *code, 0, kHighestCode));
}

void RequireOrder(std::int32_t from, std::int32_t to) {
  if (from > to) throw WrongUsage("--from is later than --to");
}

// ---- show ----

void Show(Arguments const& arguments, Terminal& terminal) {
  Choice const choice = arguments.choice.Get(terminal);
  auto const last = arguments.last ? NumberArgument("--last", *arguments.last, 1, kHighestNumber) : kHighestNumber;
  RecordLog const log = OpenLog(arguments);
  // The records are read twice: the first pass finds the width of the table and the number of chosen records.
  constexpr std::size_t kWidest = 48;
  std::uint64_t chosen = 0;
  std::size_t width = 0;
  EventCheck check;
  log.ForEach([&](Record const& record) {
    check.See(record);
    if (!choice(record)) return;
    chosen++;
    if (terminal.json || terminal.csv) return;
    std::size_t const length = record.Text().size();
    if (length <= kWidest) width = std::max(width, length);
  });

  check.Require(log);
  std::uint64_t toSkip = chosen - std::min(chosen, static_cast<std::uint64_t>(last));
  std::uint64_t toShow = chosen - toSkip;
  if (arguments.reverse) toSkip = 0;
  RecordListing listing(terminal, log.Count(), width);
  auto const see = [&](Record const& record) {
    if (toShow == 0 || !choice(record) || (toSkip > 0 && toSkip-- > 0)) return;
    toShow--;
    listing.Row(record);
  };
  // The rows themselves show progress on a terminal.
  if (arguments.reverse)
    log.ForEachReversed(see);
  else if (IsOnTerminal())
    log.ForEach(see, 0, log.Count());
  else
    log.ForEach(see);
  listing.End();
  log.NoteDamage(terminal);
}

// ---- count and time: the library's statistics ----

struct Days {
  std::int32_t from;
  std::int32_t to;
};

void NoteOddDay(char const* name, std::int32_t day, Terminal const& terminal) {
  std::string const taken = DateTimeToStr("yyyy-mm-dd", day);
  if (taken != DayText(day))
    terminal.Note(std::string(name) + ": " + DayText(day) + " counts as " + taken + " in the programs and here");
}

Days DaysOf(Arguments const& arguments, Terminal const& terminal) {
  std::int32_t const latest = ParseDay("", kLastDay).first;
  Days const days = {arguments.from ? ParseDay("--from", *arguments.from).first : 0,
                     arguments.to ? ParseDay("--to", *arguments.to).first : latest};
  if (days.to > latest) throw WrongUsage(std::string("--to: expected a day up to ") + kLastDay);
  RequireOrder(days.from, days.to);
  NoteOddDay("--from", days.from, terminal);
  NoteOddDay("--to", days.to, terminal);
  return days;
}

// The complete records, also of a damaged file, which LogReaderOpen treats as empty.
std::vector<unsigned char> Load(RecordLog const& log, Terminal const& terminal) {
  std::vector<unsigned char> bytes = LoadRecords(log);
  auto const size = static_cast<std::size_t>(log.RecordSize());
  EventCheck check;
  for (std::size_t at = 0; at < bytes.size(); at += size)
    check.See({at / size, StampOf(&bytes[at]), &bytes[at] + kStampSize, size - static_cast<std::size_t>(kStampSize)});
  check.Require(log);
  log.NoteDamage(terminal);
  return bytes;
}

// A handle for the library's statistics: the handle of an open log is a LogClass.
std::unique_ptr<LogClass> HandleOf(std::vector<unsigned char>& bytes) {
  auto log = std::make_unique<LogClass>();
  if (!bytes.empty() && !log->SetBuffer(bytes.data(), static_cast<unsigned long>(bytes.size())))
    throw Failed("cannot load the log: out of memory");
  return log;
}

Json DayJson(std::optional<std::string> const& given, std::int32_t day) { return given ? Json(DayText(day)) : Json(); }

void Count(Arguments const& arguments, Terminal& terminal) {
  std::uint16_t const code = *CodeArgument("--code", arguments.code);
  Days const days = DaysOf(arguments, terminal);
  std::vector<unsigned char> bytes = Load(OpenLog(arguments), terminal);
  std::unique_ptr<LogClass> const log = HandleOf(bytes);
  unsigned long const count = LogReaderCountEvents(log.get(), code, days.from, days.to);
  if (!PrintMachineRow(terminal, {{"code", code},
                                  {"from", DayJson(arguments.from, days.from)},
                                  {"to", DayJson(arguments.to, days.to)},
                                  {"count", count}}))
    terminal.PrintText(std::to_string(count));
}

std::string Clock(std::int64_t seconds) {
  auto const twoDigits = [](std::int64_t n) { return (n < 10 ? "0" : "") + std::to_string(n); };
  return std::to_string(seconds / kHourSeconds) + ":" + twoDigits(seconds / 60 % 60) + ":" + twoDigits(seconds % 60);
}

struct Condition {
  std::uint16_t start;
  std::vector<short> ends;
  Days days;

  std::int32_t Seconds(std::vector<unsigned char>& bytes) const {
    std::unique_ptr<LogClass> const log = HandleOf(bytes);
    return static_cast<std::int32_t>(LogReaderTimeEvents2(log.get(), static_cast<short>(start), ends.data(),
                                                          static_cast<unsigned long>(ends.size()), days.from, days.to));
  }

  bool IsOwn(int code) const {
    return code == start || std::find(ends.begin(), ends.end(), static_cast<short>(code)) != ends.end();
  }

  // The record that ends the library's scan must not begin the condition: the library would subtract its distance from
  // the end of the span. Given an unrelated code, the record still ends the scan.
  void Disarm(std::vector<unsigned char>& bytes, std::uint64_t recordSize) const {
    std::int32_t const last = days.to + kDaySeconds - 1;
    int neutral = 0;
    while (IsOwn(neutral)) neutral++;
    for (std::size_t at = 0; at < bytes.size(); at += static_cast<std::size_t>(recordSize)) {
      Record const record = {0, StampOf(&bytes[at]), &bytes[at + kStampSize], kEventSize};
      if (record.stamp < last) continue;
      if (record.stamp > last && record.Code() == start) {
        bytes[at + kStampSize] = static_cast<unsigned char>(neutral & 0xFF);
        bytes[at + kStampSize + 1] = static_cast<unsigned char>(neutral >> 8);
      }
      return;
    }
  }
};

void Time(Arguments const& arguments, Terminal& terminal) {
  Condition condition = {*CodeArgument("--start", arguments.start), {}, {}};
  std::string list;
  for (std::string const& end : arguments.ends) {
    condition.ends.push_back(static_cast<short>(NumberArgument("--end", end, 0, kHighestEndCode)));
    list += (list.empty() ? "" : ",") + std::to_string(condition.ends.back());
  }
  Days const days = condition.days = DaysOf(arguments, terminal);
  RecordLog const log = OpenLog(arguments);
  std::vector<unsigned char> bytes = Load(log, terminal);
  std::int32_t const counted = condition.Seconds(bytes);
  condition.Disarm(bytes, log.RecordSize());
  std::int32_t const seconds = condition.Seconds(bytes);
  if (seconds != counted)
    terminal.Note("the programs compute " + std::to_string(counted) +
                  " s: the first record after --to starts the condition again, and they subtract that time");
  Json const shownEnds = terminal.json ? Json::ListOf(condition.ends) : Json(list);
  if (!PrintMachineRow(terminal, {{"start", condition.start},
                                  {"end", shownEnds},
                                  {"from", DayJson(arguments.from, days.from)},
                                  {"to", DayJson(arguments.to, days.to)},
                                  {"seconds", seconds}}))
    terminal.PrintText(std::to_string(seconds) + " s" + (seconds < 0 ? "" : " (" + Clock(seconds) + ")"));
}

// ---- chart ----

Step StepOf(Arguments const& arguments, Chart const& chart) {
  if (!arguments.by) return chart.FittingStep();
  std::optional<Step> const step = StepNamed(*arguments.by);
  if (!step) throw WrongUsage("--by: expected hour, day, week, month, year, weekday or hour-of-day");
  return *step;
}

void WriteChart(Arguments const& arguments, Chart const& chart, Step step, Terminal const& terminal) {
  if (chart.IsEmpty()) return terminal.Note(arguments.picture.path + " not written: no events");
  std::string const name = arguments.file.substr(arguments.file.rfind('/') + 1);
  std::string const svg = ChartPicture(chart, step, name);
  arguments.picture.Write(svg);
  std::uint64_t events = 0;
  for (ChartColumn const& column : chart.By(step)) events += column.events;
  arguments.picture.Tell(Counted(events, "event"), {{"events", events}}, svg.size(), terminal);
}

void DrawChart(Arguments const& arguments, Terminal& terminal) {
  Choice const choice = arguments.choice.Get(terminal);
  if (arguments.by) StepOf(arguments, Chart());
  if (arguments.picture) arguments.picture.RequireFree(arguments.file);
  RecordLog const log = OpenLog(arguments);
  Chart chart;
  EventCheck check;
  std::uint64_t without = 0;
  log.ForEach([&](Record const& record) {
    check.See(record);
    if (!choice(record)) return;
    std::optional<std::uint16_t> const code = record.Code();
    if (!code || record.stamp < 0) {
      without++;
    } else {
      chart.Add(*code, record.stamp, record.Text());
    }
  });
  check.Require(log);
  Step const step = StepOf(arguments, chart);
  if (arguments.picture)
    WriteChart(arguments, chart, step, terminal);
  else
    chart.Print(step, arguments.choice.HasCodes(), terminal);
  if (without > 0) terminal.Note(Counted(without, "record") + " without a valid time or code not in the chart");
  log.NoteDamage(terminal);
}

// ---- verify ----

// Problems with the time stamps of a log.
struct Inspection {
  Fault outOfOrder = {"outOfOrder", "out of order"};
  Fault inFuture = {"inFuture", "in the future"};
  Fault withoutTime = {"withoutTime", "invalid time"};
  std::int32_t first = -1;
  std::int32_t last = -1;

  explicit Inspection(RecordLog const& log) {
    auto const now = static_cast<std::int32_t>(GetDateTime());
    log.ForEach([&](Record const& record) {
      if (record.index == 0) first = record.stamp;
      if (record.index > 0 && record.stamp < last) outOfOrder.Add(record.index);
      if (record.stamp > now) inFuture.Add(record.index);
      if (record.stamp < 0) withoutTime.Add(record.index);
      last = record.stamp;
    });
  }
};

// Reports files next to a damaged log, or next to one whose cut was interrupted.
void NoteCopies(RecordLog const& log, Terminal const& terminal) {
  if (fs::exists(fs::symlink_status(log.Path() + ".bad")))
    terminal.Note(log.Path() + ".bad: copy of an earlier damaged file; see `zelctl log salvage`");
  if (fs::exists(fs::symlink_status(log.Path() + ".tmp")))
    terminal.Note(log.Path() + ".tmp: left by an interrupted cut; see `zelctl log salvage`");
}

void VerifyText(Arguments const& arguments, Terminal& terminal) {
  TextDamage const found = InspectText(ReadText(arguments.file));
  if (!PrintMachineRow(terminal, {{"file", FileName{arguments.file}},
                                  {"length", found.length},
                                  {"lines", found.lines},
                                  {"nulRuns", found.nulRuns},
                                  {"nulBytes", found.nulBytes},
                                  {"tornBytes", found.tornBytes}}))
    terminal.PrintTable({{"CHECK", "FOUND", ""},
                         {"length", std::to_string(found.length), "bytes"},
                         {"lines", std::to_string(found.lines), ""},
                         {"runs of NUL", std::to_string(found.nulRuns),
                          found.nulRuns == 0 ? "" : std::to_string(found.nulBytes) + " bytes"},
                         {"partial last line", std::to_string(found.tornBytes), found.tornBytes == 0 ? "" : "bytes"}});
  terminal.status = found.nulRuns == 0 && found.tornBytes == 0 ? 0 : 1;
}

void Verify(Arguments const& arguments, Terminal& terminal) {
  if (arguments.text) return VerifyText(arguments, terminal);
  RecordLog const log = OpenLog(arguments);
  Inspection const found(log);
  Damage const damage(LoadRecords(log), log.RecordSize());
  auto const time = [](std::int32_t stamp) { return stamp < 0 ? Json() : Json(TimeText(stamp)); };
  Json::Object row = {{"file", FileName{log.Path()}}, {"length", log.Length()},     {"recordSize", log.RecordSize()},
                      {"records", log.Count()},       {"first", time(found.first)}, {"last", time(found.last)},
                      {"tornBytes", log.Torn()}};
  std::string const span =
      found.first < 0 || found.last < 0 ? "" : ", " + TimeText(found.first) + " to " + TimeText(found.last);
  Table rows = {{"CHECK", "FOUND", ""},
                {"length", std::to_string(log.Length()), "bytes"},
                {"records", std::to_string(log.Count()), "of " + std::to_string(log.RecordSize()) + " bytes" + span},
                {"partial record", std::to_string(log.Torn()), log.Torn() == 0 ? "" : "bytes"}};
  bool sound = log.Torn() == 0;
  for (Fault const& fault :
       {found.outOfOrder, found.inFuture, found.withoutTime, damage.zero, damage.doubled, damage.mixed}) {
    sound = sound && fault.count == 0;
    row.push_back({fault.name, fault.count});
    rows.push_back({fault.shown, std::to_string(fault.count),
                    fault.count == 0 ? "" : "first: record " + std::to_string(fault.first)});
  }
  if (!PrintMachineRow(terminal, row)) terminal.PrintTable(rows);
  NoteCopies(log, terminal);
  terminal.status = sound ? 0 : 1;
}

// ---- salvage ----

struct stat StatusOf(std::string const& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) throw FileFailed(path);
  return status;
}

char const* Saved(Arguments const& arguments) { return arguments.dryRun ? " would be saved, " : " saved, "; }

void SalvageText(Arguments const& arguments, Terminal& terminal) {
  std::string const text = ReadText(arguments.file);
  TextDamage const found = InspectText(text);
  struct stat const source = StatusOf(arguments.file);
  RequireWritable(arguments.out, source, arguments.replacing);
  std::string const kept = WithoutNul(text);
  if (kept.empty()) throw Failed(arguments.file + ": no text to save");
  if (!arguments.dryRun) {
    Output file(arguments.out, source, arguments.replacing);
    file.Write(kept.data(), kept.size());
    file.Keep();
  }
  if (!PrintMachineRow(terminal, {{"file", FileName{arguments.out}},
                                  {"lines", found.lines},
                                  {"nulRuns", found.nulRuns},
                                  {"nulBytes", found.nulBytes}}))
    terminal.PrintNames(arguments.out + ": " + Counted(found.lines, "line") + Saved(arguments) +
                        Counted(found.nulBytes, "NUL byte") + " removed");
}

// The records of the log, or of its scratch file if an interrupted cut left only that one complete.
std::vector<unsigned char> Rescued(RecordLog const& log, Terminal const& terminal) {
  std::vector<unsigned char> bytes = LoadRecords(log);
  std::string const scratch = log.Path() + ".tmp";
  std::error_code none;
  if (!fs::is_regular_file(fs::symlink_status(scratch, none))) return bytes;
  RecordLog const copy(scratch, log.RecordSize() - kStampSize);
  std::vector<unsigned char> whole = copy.Torn() == 0 ? LoadRecords(copy) : std::vector<unsigned char>();
  std::uint64_t const lacking = RecordsLacking(bytes, whole, log.RecordSize());
  if (lacking == 0) return bytes;
  terminal.Note(scratch + " has " + Counted(lacking, "record") + " that " + log.Path() +
                " lacks, left by an interrupted cut; its records are saved");
  return whole;
}

// Throws Failed if none is left, or if those of an event log are something else. Returns their number.
std::uint64_t RequireSaved(std::vector<unsigned char> const& bytes, Damage const& damage, RecordLog const& log,
                           Arguments const& arguments) {
  auto const size = static_cast<std::size_t>(log.RecordSize());
  EventCheck check;
  std::uint64_t saved = 0;
  for (std::size_t i = 0; i < damage.isLeftOut.size(); i++) {
    if (damage.isLeftOut[i]) continue;
    unsigned char const* const record = &bytes[i * size];
    check.See({saved++, StampOf(record), record + kStampSize, size - static_cast<std::size_t>(kStampSize)});
  }
  if (saved == 0) throw Failed(log.Path() + ": no record to save");
  if (!arguments.size) check.Require(log);
  return saved;
}

void WriteRecords(std::vector<unsigned char> const& bytes, Damage const& damage, std::uint64_t recordSize,
                  struct stat const& source, Arguments const& arguments) {
  auto const size = static_cast<std::size_t>(recordSize);
  Output file(arguments.out, source, arguments.replacing);
  for (std::size_t i = 0; i < damage.isLeftOut.size(); i++)
    if (!damage.isLeftOut[i]) file.Write(&bytes[i * size], size);
  file.Keep();
}

void Salvage(Arguments const& arguments, Terminal& terminal) {
  if (arguments.text) return SalvageText(arguments, terminal);
  std::string const& out = arguments.out;
  RecordLog const log = OpenLog(arguments);
  struct stat const source = StatusOf(log.Path());
  RequireWritable(out, source, arguments.replacing);
  std::vector<unsigned char> const bytes = Rescued(log, terminal);
  Damage const damage(bytes, log.RecordSize());
  std::uint64_t const saved = RequireSaved(bytes, damage, log, arguments);
  if (!arguments.dryRun) WriteRecords(bytes, damage, log.RecordSize(), source, arguments);
  Json::Object row = {{"file", FileName{out}}, {"records", saved}, {"tornBytes", log.Torn()}};
  std::string leftOut;
  for (Fault const& fault : {damage.zero, damage.doubled, damage.mixed}) {
    row.push_back({fault.name, fault.count});
    if (fault.count > 0)
      leftOut +=
          std::string(leftOut.empty() ? ", records skipped: " : ", ") + fault.shown + " " + std::to_string(fault.count);
  }
  if (!PrintMachineRow(terminal, row))
    terminal.PrintNames(out + ": " + Counted(saved, "record") + Saved(arguments) +
                        Counted(log.Torn(), "trailing byte") + " skipped" + leftOut);
}

// ---- The command line ----

char const kCalendarHelp[] =
    "--from and --to are whole days, inclusive; default: the whole log. As in the programs, 29 February counts as 1 "
    "February, and 31 December of a leap year as 1 January of that year.";

// Options that several commands share.
struct Asked {
  Arguments& to;

  Options File() const { return {Argument("FILE", &to.file, "The log").Required()}; }
  Option Size() const { return Value("--size", &to.size, "N", "Payload size in bytes; default 64"); }
  Options Days() const {
    return {Value("--from", &to.from, "DAY", "First day to include"),
            Value("--to", &to.to, "DAY", "Last day to include")};
  }
  Option Text() const { return Flag("--text", &to.text, "FILE is a text log"); }
};

std::vector<Command> Views(std::shared_ptr<Arguments> const& arguments) {
  Asked const asked = {*arguments};
  ChoiceOptions& choice = arguments->choice;
  return {
      {"show", "List records: time, code, text, payload in hexadecimal", On(arguments, Show),
       Joined({asked.File(),
               choice.Span(),
               choice.Code(),
               choice.Grep(),
               {Flag("--reverse", &arguments->reverse, "Newest record first"),
                Value("--last", &arguments->last, "N", "Only the last N records"), asked.Size()}}),
       "CODE is the first two bytes of the payload, TEXT the rest (\".\" for unprintable bytes). Trailing zeros are "
       "omitted; lines are cut at the terminal width. --from starts at the first second of a day or minute, --to ends "
       "at its last."},
      {"chart", "Chart events by hour, day, week, month or year, for each code", On(arguments, DrawChart),
       Joined({asked.File(),
               {Value("--by", &arguments->by, "hour|day|week|month|year|weekday|hour-of-day",
                      "Period of each bar; default: the finest that fits a page")},
               choice.Span(),
               choice.Code(),
               arguments->picture.Asked("--svg", "Write an SVG picture to FILE instead"),
               {asked.Size()}}),
       "All bars have the same scale, up to the terminal width. Three or more consecutive empty rows are shown as one "
       "line. The "
       "codes of --code are side by side if they fit."}};
}

std::vector<Command> Statistics(std::shared_ptr<Arguments> const& arguments) {
  Asked const asked = {*arguments};
  return {
      {"count", "Count how often an event occurred", On(arguments, Count),
       Joined({asked.File(), {Value("--code", &arguments->code, "N", "Code of the event").Required()}, asked.Days()}),
       kCalendarHelp},
      {"time", "Add up how long a condition lasted, from start events to end events", On(arguments, Time),
       Joined({asked.File(),
               {Value("--start", &arguments->start, "N", "Code of the start event").Required(),
                Value("--end", &arguments->ends, "A,B", "Codes of the end events").Separated().Required()},
               asked.Days()}),
       kCalendarHelp}};
}

std::vector<Command> Rescue(std::shared_ptr<Arguments> const& arguments) {
  Asked const asked = {*arguments};
  return {
      {"verify", "Check the file length and the time stamps", On(arguments, Verify),
       Joined({asked.File(), {asked.Text(), asked.Size()}}),
       "Exit code 1 for a partial last record; for a time stamp that is out of order, in the future, or invalid; and "
       "for damage from a power failure: trailing records of zeros, a record repeated by the next one, a time stamp "
       "out of "
       "order with the payload of the previous or next record. In a text log: NUL bytes, a last line without a line "
       "end."},
      {"salvage", "Copy the complete records of a damaged log or leftover .tmp file to a new log",
       On(arguments, Salvage),
       Joined(
           {asked.File(),
            {asked.Text(), Argument("OUT", &arguments->out, "Output file").Required(), Overwrite(arguments->replacing),
             Flag("--dry-run", &arguments->dryRun, "Write nothing; show what would be saved"), asked.Size()}}),
       "Skips damage from a power failure; see `verify`. If a cut was interrupted and only FILE.tmp has all "
       "records, they are taken from there."}};
}

}  // namespace

Command LogCommands() {
  auto const arguments = std::make_shared<Arguments>();
  std::vector<Command> commands;
  for (std::vector<Command> const& part :
       {Views(arguments), {FollowCommand(), OutagesCommand()}, Statistics(arguments), Rescue(arguments)})
    commands.insert(commands.end(), part.begin(), part.end());
  for (Command& command : commands) command.answers = Answers::kJsonOrCsv;
  return Family(
      "log", "Show, chart, count, check and recover record logs (*.rgt)",
      "These commands never change a log; only `salvage` writes a file, OUT. A damaged log counts as empty in the "
      "programs; here its complete records are read. Times are local: 2005-03-07 10:06:40 or 07/03/2005 10:06.",
      {"zelctl log show logevt.rgt --last 20", "zelctl log chart logevt.rgt --from 2005-03-01 --to 2005-03-31",
       "zelctl log chart logevt.rgt --code 1,3 --by weekday", "zelctl log follow logevt.rgt --code 1,2",
       "zelctl log outages logevt.rgt --start 1 --end 2",
       "zelctl log outages logevt.rgt --start 1 --end 2 --by month --csv",
       "zelctl log outages logevt.rgt --start 1 --end 2 --svg outages.svg",
       "zelctl log count logevt.rgt --code 1 --from 2005-03-01",
       "zelctl log time logevt.rgt --start 1 --end 2,4 --from 2005-03-01", "zelctl log verify logevt.rgt && echo sound",
       "zelctl log salvage logevt.rgt.bad saved.rgt", "zelctl log salvage logevt.rgt.tmp saved.rgt"},
      std::move(commands));
}
