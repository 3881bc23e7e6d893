// zelctl schedule: the moments at which the product is to act.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <memory>

#include "commands/families.h"
#include "terminal/listing.h"
#include "terminal/moment.h"
#include "terminal/terminal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/proglist.h"

namespace {

namespace fs = std::filesystem;

struct Arguments {
  std::string file;
  std::vector<std::string> moments;
};

fs::file_type TypeOf(std::string const& file) {
  std::error_code none;
  return fs::status(file, none).type();
}

bool Exists(std::string const& file) { return TypeOf(file) != fs::file_type::not_found; }

// Loads a list that writes nothing before FlushCache. A file that is there but cannot be read is not gone on with:
// with the first addition the list would replace it.
void Load(ProgList& list, std::string const& file, bool required) {
  if (Exists(file) && TypeOf(file) != fs::file_type::regular) throw Failed(file + ": not a file");
  list.SetCached(true);
  list.SetFile(file);
  if (list.ReadFromFile()) return;
  if (Exists(file)) throw Failed(file + ": cannot be read");
  if (required) throw Failed(file + ": no such file");
}

void Save(ProgList& list, std::string const& file) {
  if (!list.FlushCache()) throw Failed(file + ": cannot be written");
}

std::vector<reg_proglist> Entries(ProgList& list) {
  std::vector<reg_proglist> entries;
  reg_proglist entry = {};
  for (long i = 0; list.GetRegByIndex(i, &entry) != 0; i++) entries.push_back(entry);
  return entries;
}

void PrintMoments(std::vector<reg_proglist> const& entries, Terminal const& terminal) {
  if (!terminal.json && !terminal.csv) return;
  Listing listing(terminal, {{"dateTime", 0}, {"time", 0}});
  for (reg_proglist const& entry : entries) listing.Row({entry.dateTime, TimeText(entry.dateTime)});
  listing.End();
}

// As the file has them: those whose moment has passed are dropped when the file is written next, not before.
void List(Arguments const& arguments, Terminal const& terminal) {
  ProgList list;
  Load(list, arguments.file, false);
  std::vector<reg_proglist> entries = Entries(list);
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
  if (!Exists(arguments.file)) return terminal.Note(arguments.file + " does not exist: nothing is scheduled");
  std::error_code none;
  if (fs::file_size(arguments.file, none) % sizeof(reg_proglist) != 0)
    terminal.Note(arguments.file + ": the bytes behind its last whole entry are ignored");
}

void Add(Arguments const& arguments, Terminal const& terminal) {
  std::vector<reg_proglist> added;
  for (std::string const& text : arguments.moments) {
    Moment const moment = ParseMoment("WHEN", text);
    if (moment.isDay) throw WrongUsage("WHEN: a time of day behind the day is wanted, such as " + text + " 22:30");
    reg_proglist const entry = {moment.first};
    if (folddatetime(entry)) throw WrongUsage("WHEN: " + TimeText(entry.dateTime) + " has passed; only later is kept");
    added.push_back(entry);
  }
  ProgList list;
  Load(list, arguments.file, false);
  for (reg_proglist& entry : added) {
    std::vector<reg_proglist> const listed = Entries(list);
    if (std::any_of(listed.begin(), listed.end(), [&](auto const& e) { return e.dateTime == entry.dateTime; }))
      throw Failed(TimeText(entry.dateTime) + " is listed already");
    list.AddReg(&entry);
  }
  Save(list, arguments.file);
  PrintMoments(added, terminal);
}

// The library removes the first entry of a day, so those of the day that come before the meant one are put back.
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
  ProgList list;
  Load(list, arguments.file, true);
  std::vector<reg_proglist> removed;
  for (Moment const& moment : moments) {
    list.RefreshList();
    removed.push_back(RemoveMoment(list, Entries(list), moment));
  }
  Save(list, arguments.file);
  PrintMoments(removed, terminal);
}

void Clear(Arguments const& arguments, Terminal const& terminal) {
  ProgList list;
  Load(list, arguments.file, true);
  std::vector<reg_proglist> const entries = Entries(list);
  list.ClearList();
  Save(list, arguments.file);
  PrintMachineRow(terminal, {{"removed", 0}}, {entries.size()});
}

}  // namespace

void AddSchedule(CLI::App& app, Terminal& terminal) {
  CLI::App* const family = app.add_subcommand("schedule", "The moments at which the product is to act");
  family->require_subcommand(1);
  family->footer(
      "Times are local. Whenever a schedule is written, moments that have passed are dropped from it.\n\n"
      "  zelctl schedule add proglist.dat \"2030-03-07 22:30\"\n"
      "  zelctl schedule remove proglist.dat 2030-03-07");
  auto const arguments = std::make_shared<Arguments>();
  auto const add = [&](char const* name, char const* description, void (*act)(Arguments const&, Terminal const&)) {
    CLI::App* const command = AddCommand(family, terminal, name, description);
    AddCsv(command, terminal);
    command->add_option("FILE", arguments->file, "The schedule")->required()->type_name("");
    command->callback([arguments, act, &terminal] { act(*arguments, terminal); });
    return command;
  };
  add("list", "All moments, also those that have passed", List);
  add("add", "Add moments; the file is created if need be", Add)
      ->add_option("WHEN", arguments->moments, "Such as \"2030-03-07 22:30\" or \"07/03/2030 22:30:15\"")
      ->required()
      ->type_name("");
  add("remove", "Remove moments", Remove)
      ->add_option("WHEN", arguments->moments, "The moment, or a day for the first one of that day")
      ->required()
      ->type_name("");
  add("clear", "Remove all moments", Clear);
}
