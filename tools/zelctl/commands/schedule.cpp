// zelctl schedule: the dates and times at which the product acts.
#include <errno.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>

#include "commands/families.h"
#include "files/edit.h"
#include "files/format.h"
#include "records/schedulecheck.h"
#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/progress.h"
#include "terminal/terminal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/proglist.h"

namespace {

namespace fs = std::filesystem;

struct Arguments {
  std::string file;
  std::vector<std::string> moments;
  Writing writing;
};

// Throws Failed if that is unknown.
fs::file_type TypeOf(std::string const& file) {
  std::error_code error;
  fs::file_type const type = fs::status(file, error).type();
  if (type == fs::file_type::none) throw Failed(CannotRead(file, error.value()));
  return type;
}

bool Exists(std::string const& file) { return TypeOf(file) != fs::file_type::not_found; }

// Loads a list that writes nothing before FlushCache. Throws if an existing file cannot be read: the first addition
// would otherwise replace it.
void Load(ProgList& list, std::string const& file, bool required) {
  if (Exists(file) && TypeOf(file) != fs::file_type::regular) throw Failed(file + ": not a regular file");
  list.SetCached(true);
  list.SetFile(file);
  Busy const busy("reading", {file});
  errno = 0;
  if (list.ReadFromFile()) return;
  if (Exists(file)) throw Failed(CannotRead(file, errno));
  if (required) throw Failed(file + ": no such file");
}

std::vector<reg_proglist> Entries(ProgList& list) {
  std::vector<reg_proglist> entries;
  reg_proglist entry = {};
  for (long i = 0; list.GetRegByIndex(i, &entry) != 0; i++) entries.push_back(entry);
  return entries;
}

// Bytes after the last complete entry.
std::uintmax_t Torn(std::string const& file) {
  std::error_code none;
  std::uintmax_t const size = fs::file_size(file, none);
  return none ? 0 : size % sizeof(reg_proglist);
}

// False for a file that is not a schedule; its contents are copied then. Throws Failed without --force.
bool RequireSchedule(std::string const& file, Writing const& writing, Terminal const& terminal) {
  ProgList list;
  Load(list, file, false);
  std::string const fault = ScheduleFault(Entries(list), Torn(file));
  if (fault.empty()) return true;
  if (!writing.force)
    throw Failed(file + ": not a schedule: " + fault + "; use --force to save it anyway (the old file is copied to " +
                 file + ".lost)");
  if (!writing.dryRun) terminal.Note(OldFileIn(file, KeepAsLost(file)));
  return false;
}

std::string AsLines(std::string const& bytes) {
  std::string lines;
  for (std::size_t at = 0; at + sizeof(reg_proglist) <= bytes.size(); at += sizeof(reg_proglist)) {
    std::int32_t dateTime = 0;
    memcpy(&dateTime, bytes.data() + at, sizeof dateTime);
    lines += TimeText(dateTime) + "\n";
  }
  return lines;
}

// Lets `act` change the list. `isSchedule` is false if the file was something else, so that its entries are noise.
// False after a dry run.
bool Change(Arguments const& arguments, bool required, Terminal const& terminal,
            std::function<void(ProgList&, bool isSchedule)> const& act) {
  if (required && !Exists(arguments.file)) throw Failed(arguments.file + ": no such file");
  if (!arguments.writing.dryRun) LockFoldersOf({arguments.file});
  bool const isSchedule = RequireSchedule(arguments.file, arguments.writing, terminal);
  Edit edit = {{arguments.file}};
  edit.noun = "date";
  edit.asLines = AsLines;
  return Make(edit, arguments.writing, terminal, [&] {
    ProgList list;
    Load(list, At(arguments.file), required);
    act(list, isSchedule);
    errno = 0;
    if (!list.FlushCache()) throw Failed(CannotWrite(arguments.file, errno));
  });
}

void PrintMoments(std::vector<reg_proglist> const& entries, Terminal const& terminal) {
  if (!terminal.json && !terminal.csv) return;
  Listing listing(terminal, {{"dateTime", 0}, {"time", 0}});
  for (reg_proglist const& entry : entries) listing.Row({entry.dateTime, TimeText(entry.dateTime)});
  listing.End();
}

// Lists the file as it is. Past entries are dropped only by the next write.
void List(Arguments const& arguments, Terminal const& terminal) {
  ProgList list;
  Load(list, arguments.file, false);
  std::vector<reg_proglist> entries = Entries(list);
  std::string const fault = ScheduleFault(entries, 0);
  if (!fault.empty()) throw Failed(arguments.file + ": not a schedule: " + fault);
  std::stable_sort(entries.begin(), entries.end(), fcomp);
  auto const now = static_cast<std::int32_t>(GetDateTime());
  auto const next = std::find_if(entries.begin(), entries.end(), [now](auto const& e) { return e.dateTime >= now; });
  Listing listing(terminal, {{"dateTime", 0, false}, {"time", 19}, {"state", 0}});
  for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
    std::string const time = TimeText(entry->dateTime);
    listing.Row({entry->dateTime, time.empty() ? Json() : Json(time),
                 entry < next    ? "passed"
                 : entry == next ? "next"
                                 : "later"});
  }
  listing.End();
  if (!Exists(arguments.file)) return terminal.Note(arguments.file + ": no such file; nothing is scheduled");
  std::string const tail = ScheduleFault({}, Torn(arguments.file));
  if (!tail.empty()) throw Failed(arguments.file + ": not a schedule: " + tail);
}

void Add(Arguments const& arguments, Terminal const& terminal) {
  std::vector<reg_proglist> added;
  std::set<std::int32_t> given;
  for (std::string const& text : arguments.moments) {
    Moment const moment = ParseMoment("WHEN", text);
    if (moment.isDay) throw WrongUsage("WHEN: expected a day and a time, such as \"" + text + " 22:30\"");
    reg_proglist const entry = {moment.first};
    if (folddatetime(entry)) throw WrongUsage("WHEN: " + TimeText(entry.dateTime) + " is in the past");
    if (!given.insert(entry.dateTime).second)
      throw WrongUsage("WHEN: " + TimeText(entry.dateTime) + " is given more than once");
    added.push_back(entry);
  }
  bool const done = Change(arguments, false, terminal, [&](ProgList& list, bool isSchedule) {
    if (!isSchedule) list.ClearList();
    std::set<std::int32_t> listed;
    for (reg_proglist const& entry : Entries(list)) listed.insert(entry.dateTime);
    for (reg_proglist& entry : added) {
      if (!listed.insert(entry.dateTime).second) throw Failed(TimeText(entry.dateTime) + " is already scheduled");
      list.AddReg(&entry);
    }
  });
  if (done) PrintMoments(added, terminal);
}

// The library removes the first entry of a day, so the entries of that day before the requested one are added again.
reg_proglist RemoveMoment(ProgList& list, std::vector<reg_proglist> const& entries, Moment const& moment) {
  auto const meant = std::find_if(entries.begin(), entries.end(), [&moment](reg_proglist const& entry) {
    return entry.dateTime >= moment.first && entry.dateTime <= moment.last;
  });
  if (meant == entries.end())
    throw Failed("nothing is scheduled for " + (moment.isDay ? DayText(moment.first) : TimeText(moment.first)));
  auto const sameDay = [day = meant->dateTime / kDaySeconds](auto const& e) { return e.dateTime / kDaySeconds == day; };
  auto const first = std::find_if(entries.begin(), entries.end(), sameDay);
  for (auto entry = first; entry <= meant; ++entry) list.RemReg(&*entry);
  for (auto entry = first; entry < meant; ++entry) {
    reg_proglist back = *entry;
    list.AddReg(&back);
  }
  return *meant;
}

void Remove(Arguments const& arguments, Terminal const& terminal) {
  std::vector<Moment> moments;
  for (std::string const& text : arguments.moments) moments.push_back(ParseMoment("WHEN", text));
  std::vector<reg_proglist> removed;
  bool const done = Change(arguments, true, terminal, [&](ProgList& list, bool) {
    for (Moment const& moment : moments) {
      list.RefreshList();
      removed.push_back(RemoveMoment(list, Entries(list), moment));
    }
  });
  if (done) PrintMoments(removed, terminal);
}

void Clear(Arguments const& arguments, Terminal const& terminal) {
  std::string const& file = arguments.file;
  ProgList before;
  Load(before, file, true);
  std::vector<reg_proglist> const entries = Entries(before);
  // Another file is refused, or copied with --force.
  if (!entries.empty() && ScheduleFault(entries, Torn(file)).empty())
    RequireConsent(file,
                   "removes " + Counted(entries.size(), "date") + ", the last " + TimeText(entries.back().dateTime),
                   arguments.writing);
  std::size_t removed = 0;
  bool const done = Change(arguments, true, terminal, [&removed](ProgList& list, bool) {
    removed = Entries(list).size();
    list.ClearList();
  });
  if (done) PrintMachineRow(terminal, {{"removed", removed}});
}

}  // namespace

Command ScheduleCommands() {
  auto const arguments = std::make_shared<Arguments>();
  Options const file = {Argument("FILE", &arguments->file, "The schedule").Required()};
  auto const writer = [&](std::string const& whatElse) {
    return Joined({file,
                   {Flag("--force", &arguments->writing.force,
                         "Save even if the file is not a schedule; it is copied to FILE.lost first" + whatElse),
                    DryRun(arguments->writing)}});
  };
  auto const when = [&](char const* help) { return Options{Argument("WHEN", &arguments->moments, help).Required()}; };
  std::vector<Command> commands = {
      {"list", "List all entries, past ones too", On(arguments, List), file},
      {"add", "Add entries; create the file if it is missing", On(arguments, Add),
       Joined({writer(", and the new list has only the added dates"),
               when("Such as \"2030-03-07 22:30\" or \"07/03/2030 22:30:15\"")})},
      {"remove", "Remove entries", On(arguments, Remove),
       Joined({writer(""), when("A time, or a day to remove its first entry")})},
      {"clear", "Remove all entries", On(arguments, Clear), Joined({writer(""), {Yes(arguments->writing)}})}};
  for (Command& command : commands) command.answers = Answers::kJsonOrCsv;
  return Family("schedule", "Times at which the product acts", "Times are local. Every write removes past entries.",
                {"zelctl schedule list proglist.dat", "zelctl schedule add proglist.dat \"2030-03-07 22:30\"",
                 "zelctl schedule remove proglist.dat 2030-03-07", "zelctl schedule clear proglist.dat --dry-run"},
                std::move(commands));
}
