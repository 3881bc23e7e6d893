// After a power cut everything reported as done is there, and the library continues from there.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <unordered_set>

#include "stress/crashstates.h"
#include "stress/scenarios.h"
#include "stress/shim.h"
#include "stress/world.h"
#include "zelvane/zelvane.h"

namespace stress {
namespace {

constexpr char kLog[] = "root/logevt.rgt";
constexpr char kText[] = "root/a.log";
constexpr long kNew = 30000;  // the record or line of the call after the cut
constexpr long kNoBound = 1000000;
constexpr long kBound = 130;

enum Kind { kFiles, kRecords, kLines };

struct Case {
  char const* name;
  Kind kind;
  Files files;
  std::size_t steps;                        // how many steps report success
  bool (*step)(World& world, long number);  // steps are numbered from `first`
  long first = 0;                           // records and lines: the number at the start
  std::size_t payload = 64;
  long bound = kNoBound;
  long dropped = -1;                     // 0 or more: all records are the same, and the first step drops this many
  std::vector<std::string> kept = {};    // backup copies must contain these in the end
  bool (*next)(World& world) = nullptr;  // files: another change
  char const* changes = nullptr;         // the file that it changes
  std::size_t unit = 0;                  // size of the units that this change keeps: bytes, or 0 for lines
};

// ---- Steps ----

// Never only zeros, because missing bytes are zeros.
std::string Made(long number, std::size_t payload) { return Record(number + 1000, payload); }

std::string Log(long first, long end, std::size_t payload = 64) {
  std::string log;
  for (long i = first; i < end; i++) log += Made(i, payload);
  return log;
}

bool Append(World& world, long number, std::size_t payload, long bound) {
  LogClass log;
  std::string const record = Made(number, payload);
  log.SetFile(world.Path(kLog));
  log.SetMaxLines(static_cast<unsigned long>(bound));
  return log.WriteReg(number + 1000, record.data() + 4, payload);
}
bool AppendSmall(World& world, long number) { return Append(world, number, 64, kNoBound); }
bool AppendLarge(World& world, long number) { return Append(world, number, 5000, kNoBound); }
bool AppendBound(World& world, long number) { return Append(world, number, 64, kBound); }
bool AppendLargeBound(World& world, long number) { return Append(world, number, 5000, 4); }
bool AppendBoundOnce(World& world, long number) {
  return Append(world, number, 64, number == kBound ? kBound : kNoBound);
}

bool AppendAlikeBoundOnce(World& world, long number) {
  return Append(world, 0, 64, number == kBound ? kBound : kNoBound);
}

// The first step adds a copy of the damaged log that somebody has made and not synced.
bool AppendBesideCopy(World& world, long number) {
  std::string const bytes = world.Get()[kLog], copy = world.Path(kLog) + std::string(".bad");
  if (number > 0) return AppendSmall(world, number);
  int const fd = open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
  bool const made = fd >= 0 && write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  return close(fd) == 0 && made && AppendSmall(world, number);
}

bool Clear(World& world, long) {
  LogClass log;
  log.SetFile(world.Path(kLog));
  return log.ClearFile();
}
bool AppendNext(World& world) { return AppendSmall(world, kNew); }

std::string Line(long number) { return "message " + std::to_string(number); }

bool WriteLine(World& world, long number) {
  TextLogClass log(world.Path(kText));
  return log.WriteLine(kNow, Line(number).c_str());
}

std::string Text(long lines) {
  std::string text;
  for (long i = 0; i < lines; i++) text += "05/03/2004 08:07:09 1 " + Line(i) + "\n";
  return text;
}

bool Save(World& world, char const* name, char const* key, long value) {
  CfgClass file;
  return file.Open(world.Path(name)) && file.WriteInt("STEP", key, value) && file.Close() &&
         file.Open(world.Path(name)) && file.ReadInt("STEP", key, -1) == value;
}
template <char const* const& kName>
bool SaveStep(World& world, long number) {
  return Save(world, kName, "K", number);
}
template <char const* const& kName>
bool SaveNext(World& world) {
  return Save(world, kName, "NEXT", kNew);
}
constexpr char const* kCfg = "root/a.cfg";
constexpr char const* kClient = "root/upscli.cfg";
constexpr char const* kBrowse = "root/zelbrws.cfg";

bool AddToSchedule(World& world) {
  ProgList list;
  reg_proglist entry = {static_cast<int32_t>(kNow + 86400 * 40)};
  return list.SetFile(world.Root("prog")) && list.AddReg(&entry) && list.SetFile(world.Root("prog")) &&
         list.GetRegCount() >= 1;
}

// Two names for one file, then a change of it: no new file may replace it. The change fits into one sector, and the
// length stays.
bool SaveUnderTwoNames(World& world, long number) {
  if (number > 0) return Save(world, kCfg, "K", 8);
  int const folder = open(world.Root(""), O_RDONLY | O_DIRECTORY);
  bool const made = link(world.Path(kCfg), world.Path("root/b.cfg")) == 0 && fsync(folder) == 0;
  return close(folder) == 0 && made;
}

template <char const* const& kScenario>
bool RunScenario(World& world, long) {
  static Scenario const& scenario = Find(kScenario);
  return scenario.run(world);
}
constexpr char const* kSettings = "SetShutSrvConfig";
constexpr char const* kNewSettings = "SetShutSrvConfig, new files";
constexpr char const* kSaveAs = "CfgClass: SaveAs";
constexpr char const* kSchedule = "schedule, removing at once";
constexpr char const* kCascade = "browse list, cascade";
constexpr char const* kManyChanges = "CfgClass: many changes, one save";

bool SaveNewSettings(World& world) { return RunScenario<kNewSettings>(world, 0) && SaveNext<kClient>(world); }

// A configuration file, and the change that the next call makes to it.
Case Saves(char const* name, Files const& files, bool (*step)(World&, long), bool (*next)(World&), char const* changes,
           std::size_t unit = 0) {
  return {name, kFiles, files, 1, step, 0, 0, 0, -1, {}, next, changes, unit};
}

std::vector<Case> MakeCases() {
  std::string const scratch = std::string(kLog) + ".tmp", aside = std::string(kLog) + ".bad";
  std::string const bad = "what was torn before, " + Log(40, 44).substr(5), torn = Log(500, 503) + "x";
  std::string const mixed = Log(1, 61) + Log(60, kBound + 1), kept = Log(1, kBound + 1);
  std::string alike;
  for (long i = 0; i < kBound; i++) alike += Made(0, 64);
  Files const broken = {{kCfg, "[STEP]\nK = 7\n=\nlost = 1\n"}};
  return {
      {"log, new", kRecords, {}, 3, AppendSmall},
      {"log, 64 bytes", kRecords, {{kLog, Log(0, 20)}}, 3, AppendSmall, 20},
      {"log, 5,000 bytes", kRecords, {{kLog, Log(0, 2, 5000)}}, 3, AppendLarge, 2, 5000},
      {"log, page border", kRecords, {{kLog, Log(0, 60)}}, 3, AppendSmall, 60},
      {"log at its maximum", kRecords, {{kLog, Log(0, kBound)}}, 2, AppendBound, kBound, 64, kBound},
      {"log at its maximum, 5,000", kRecords, {{kLog, Log(0, 4, 5000)}}, 2, AppendLargeBound, 4, 5000, 4},
      {"log, maximum lowered", kRecords, {{kLog, Log(0, 160)}}, 2, AppendBound, 160, 64, kBound},
      {"log, cut and then grown", kRecords, {{kLog, Log(0, kBound)}}, 3, AppendBoundOnce, kBound, 64, kBound},
      {"log, cut, grown by the same", kRecords, {{kLog, alike}}, 3, AppendAlikeBoundOnce, kBound, 64, kNoBound, 1},
      {"log, cut interrupted", kRecords, {{kLog, mixed}, {scratch, kept}}, 2, AppendBound, kBound + 1, 64, kBound},
      {"log, cut interrupted, no maximum",
       kRecords,
       {{kLog, Log(0, 60) + Log(59, kBound)}, {scratch, Log(0, kBound)}},
       2,
       AppendSmall,
       kBound},
      {"log, torn", kRecords, {{kLog, torn}}, 2, AppendSmall, 0, 64, kNoBound, -1, {torn}},
      {"log, torn again", kRecords, {{kLog, torn}, {aside, bad}}, 2, AppendSmall, 0, 64, kNoBound, -1, {torn, bad}},
      {"log, torn, with a copy", kRecords, {{kLog, torn}}, 2, AppendBesideCopy, 0, 64, kNoBound, -1, {torn}},
      Saves("log cleared", {{kLog, Log(0, 3)}}, Clear, AppendNext, kLog, 68),
      Saves("log cleared, new", {}, Clear, AppendNext, kLog, 68),
      {"text log", kLines, {{kText, Text(20)}}, 3, WriteLine, 20},
      {"text log, new", kLines, {}, 3, WriteLine},
      Saves("engine save", {{kCfg, kClientFile}}, RunScenario<kManyChanges>, SaveNext<kCfg>, kCfg),
      Saves("engine save, new file", Find(kSaveAs).files, RunScenario<kSaveAs>, SaveNext<kCfg>, kCfg),
      Saves("engine save, syntax error", broken, SaveStep<kCfg>, SaveNext<kCfg>, kCfg),
      {"engine save, two names",
       kFiles,
       {{kCfg, "[STEP]\nK = 7\n"}},
       2,
       SaveUnderTwoNames,
       0,
       0,
       0,
       -1,
       {},
       SaveNext<kCfg>,
       kCfg},
      Saves("settings record", Find(kSettings).files, RunScenario<kSettings>, SaveNext<kClient>, kClient),
      Saves("settings record, new files", Find(kNewSettings).files, RunScenario<kNewSettings>, SaveNewSettings,
            kClient),
      Saves("schedule", Find(kSchedule).files, RunScenario<kSchedule>, AddToSchedule, "root/prog", 4),
      Saves("browse cascade", Find(kCascade).files, RunScenario<kCascade>, SaveNext<kBrowse>, kBrowse),
  };
}

std::vector<Case> const& Cases() {
  static std::vector<Case> const cases = MakeCases();
  return cases;
}

// ---- Results ----

// The files after each step, the initial ones first.
using History = std::vector<Files>;

struct Tally {
  long states = 0;
  long completed = 0;   // the record log was damaged, or a cut was interrupted
  long unfinished = 0;  // a part of the record that was being written stays in the log
};

char const* const kSound = nullptr;

std::string const* Have(Files const& files, std::string const& name) {
  auto const file = files.find(name);
  return file == files.end() ? nullptr : &file->second;
}

bool StartsWith(std::string const& text, std::string const& start) { return text.compare(0, start.size(), start) == 0; }

bool Matches(std::string const* bytes, std::string const* wanted) {
  return bytes == nullptr ? wanted == nullptr : wanted != nullptr && *bytes == *wanted;
}

// Each file is as reported, or as the current step makes it; backup copies come first.
char const* JudgeFiles(History const& history, std::size_t told, Files const& found) {
  Files const &old = history[told], &made = history[std::min(told + 1, history.size() - 1)];
  for (auto const& [name, bytes] : found) {
    if (name.back() == '/') continue;
    std::string const *const was = Have(old, name), *const is = Have(made, name);
    if (was == nullptr && is == nullptr) return "a file that nobody wrote";
    if (!Matches(&bytes, was) && !Matches(&bytes, is))
      return history.size() == told + 1 ? "what was told is not there" : "neither old nor new";
    std::string const aside = name + ".lost";
    if (!Matches(&bytes, was) && !Matches(Have(found, aside), Have(made, aside))) return "the kept lines are gone";
  }
  for (auto const& [name, bytes] : old)
    if (name.back() != '/' && found.count(name) == 0) return "a file is gone";
  return kSound;
}

// Returns whether each line, or unit of `unit` bytes, of `before` is in `after`, in order.
bool Keeps(std::string const& before, std::string const& after, std::size_t unit) {
  std::size_t from = 0;
  for (std::size_t at = 0, end = 0; at < before.size(); at = end) {
    end = unit > 0 ? at + unit : std::min(before.find('\n', at), before.size() - 1) + 1;
    std::size_t const there = after.find(before.substr(at, end - at), from);
    if (there == std::string::npos) return false;
    from = there + end - at;
  }
  return true;
}

// Returns whether a backup copy contains these bytes.
bool IsAside(Files const& files, std::string const& bytes) {
  return std::any_of(files.begin(), files.end(), [&](auto const& file) {
    return StartsWith(file.first, std::string(kLog) + ".bad") && file.second.find(bytes) != std::string::npos;
  });
}

// Checks the log after the next call: each reported record once and in order, perhaps one that was being written, and
// the record of that call.
char const* JudgeRecords(Case const& what, std::size_t told, Files const& before, Files const& after, Tally& tally) {
  std::size_t const length = 4 + what.payload;
  long const end = what.first + static_cast<long>(told), dropped = std::max(0L, std::min(end - what.bound, end));
  std::string const *const raw = Have(before, kLog), *const log = Have(after, kLog);
  for (std::string const& bytes : what.kept)
    if (!IsAside(after, bytes)) return "a torn log was not kept";
  if (after.count(std::string(kLog) + ".tmp") > 0) return "the scratch file stays";
  if (log == nullptr || log->size() % length != 0) return "no whole number of records";
  std::vector<std::string> records;
  for (std::size_t at = 0; at < log->size(); at += length) records.push_back(log->substr(at, length));
  if (records.empty() || records.back() != Made(kNew, what.payload)) return "the next record is not there";
  records.pop_back();
  bool const torn = raw != nullptr && raw->size() % length != 0;
  tally.completed += torn || before.count(std::string(kLog) + ".tmp") > 0;
  // A damaged log is started again, as always: its contents are in the copy beside it.
  if (torn && records.empty() && IsAside(after, Log(dropped, end, what.payload))) return kSound;
  long others = 0;
  bool const alike = what.dropped >= 0;
  auto const made = [&](long number) { return Made(alike ? 0 : number, what.payload); };
  if (!records.empty() && (end == 0 || records.back() != made(end - 1))) {
    if (told == what.steps) return "a record that was told is gone or damaged";
    tally.unfinished += records.back() != made(end);
    records.pop_back();
    others = 1;
  }
  long const wanted =
      alike ? end - what.dropped : std::min(end, what.bound == kNoBound ? end : what.bound - 1 - others);
  if (static_cast<long>(records.size()) < wanted) return "records that were told are gone";
  if (static_cast<long>(records.size()) > end + (alike && told < what.steps ? 1 : 0)) return "too many records";
  long number = end - static_cast<long>(records.size());
  for (std::string const& record : records)
    if (record != made(number++)) return "records out of order, twice or damaged";
  return kSound;
}

char const* JudgeLines(Case const& what, std::size_t told, Files const& before, Files const& after, Tally& tally) {
  std::string const *const raw = Have(before, kText), *const text = Have(after, kText);
  long const end = what.first + static_cast<long>(told);
  std::size_t at = 0;
  for (long i = 0; i < end; i++) {
    if (text == nullptr) return "the text log is gone";
    std::size_t const stop = text->find('\n', at);
    std::string const line = stop == std::string::npos ? "" : text->substr(at, stop - at);
    std::string const wanted = " " + Line(i);
    if (line.size() <= wanted.size() || line.compare(line.size() - wanted.size(), wanted.size(), wanted) != 0 ||
        line.find('\0') != std::string::npos)
      return "lines that were told are gone or damaged";
    at = stop + 1;
  }
  if (raw != nullptr && !StartsWith(*text, raw->substr(0, at))) return "the next call changed what was there";
  std::string const last = " " + Line(kNew) + "\n";
  if (text->size() < at + last.size() || text->compare(text->size() - last.size(), last.size(), last) != 0)
    return "the next line is not there";
  bool const more = raw != nullptr && raw->size() > at;
  tally.unfinished += more && raw->back() != '\n';
  return told == what.steps && more ? "a line that nobody wrote" : kSound;
}

Files Visible(World const& world) {
  Files files = world.Get();
  files.erase("zelvane.conf");
  return files;
}

// Makes the next call and checks the files in the world. Returns null if everything is right, otherwise what is wrong.
char const* Judge(Case const& what, History const& history, std::size_t told, World& world, Tally& tally) {
  tally.states++;
  Files const before = Visible(world);
  if (what.kind == kFiles) {
    if (char const* const wrong = JudgeFiles(history, told, before)) return wrong;
    if (!what.next(world)) return "the next call fails";
    Files after = Visible(world);
    std::string const* const was = Have(before, what.changes);
    std::string const now = after[what.changes] + after[std::string(what.changes) + ".lost"];
    if (was != nullptr && !Keeps(*was, now, what.unit)) return "the next call loses something";
    for (auto const& [name, bytes] : before)
      if (name != what.changes && !Matches(&bytes, Have(after, name))) return "the next call changed another file";
    return kSound;
  }
  bool const next = what.kind == kLines ? WriteLine(world, kNew) : Append(world, kNew, what.payload, what.bound);
  if (!next) return "the next call fails";
  return (what.kind == kLines ? JudgeLines : JudgeRecords)(what, told, before, Visible(world), tally);
}

// Runs all steps without a power cut. Returns an empty history if a step fails.
History Learn(World& world, Case const& what, Disk* disk) {
  History history = {Visible(world)};
  for (std::size_t i = 0; i < what.steps; i++) {
    if (!what.step(world, what.first + static_cast<long>(i))) return {};
    if (disk != nullptr) disk->Told();
    history.push_back(Visible(world));
  }
  return history;
}

// ---- All states, or a sample ----

struct Faults {
  long count = 0;
  std::string first;
};

void Restore(World& world, Disk::State const& state) {
  world.Set(state.files);
  for (auto const& [name, mode] : state.modes) (void)!chmod(world.Path(name.c_str()), mode);
}

// Visits each state once: all of them if there are few enough combinations, otherwise as many as chance draws. Returns
// whether it was all of them.
template <class Body>
bool ForEachState(Disk const& disk, long budget, Body&& body) {
  std::unordered_set<std::string> seen;
  auto const take = [&](Disk::State const& state) {
    std::string key = std::to_string(state.told);
    for (auto const& [name, bytes] : state.files)
      key += "\n" + name + " " + std::to_string(std::hash<std::string>()(bytes));
    if (seen.insert(key).second) body(state);
  };
  Choices all;
  long combinations = 1;
  for (disk.Cut(all); combinations <= budget && all.Next(); combinations++) disk.Cut(all);
  Choices choices;
  bool const some = combinations > budget;
  if (some) choices.ByChance(20261122);
  long drawn = 0;
  do take(disk.Cut(choices));
  while (some ? static_cast<long>(seen.size()) < budget && ++drawn < 10 * budget : choices.Next());
  return !some;
}

long Try(World& world, Case const& what, long budget) {
  world.Set(what.files);
  Disk disk(world);
  History const history = Learn(world, what, &disk);
  Files recorded = disk.Stop(), present = world.Get();
  for (auto file = present.begin(); file != present.end();)
    file = file->first.back() == '/' ? present.erase(file) : std::next(file);
  if (history.empty() || recorded != present) {
    std::printf("FAILED  power cut: %s: %s\n", what.name, history.empty() ? "a step fails" : "a call is not recorded");
    return 1;
  }
  Tally tally;
  std::map<std::string, Faults> faults;
  long bad = 0;
  ShimArm(SHIM_FORK, LONG_MAX, SHIM_ONCE, 0);  // nobody sleeps
  bool const all = ForEachState(disk, budget, [&](Disk::State const& state) {
    Restore(world, state);
    char const* const wrong = Judge(what, history, state.told, world, tally);
    if (wrong == kSound) return;
    bad++;
    Faults& fault = faults[wrong];
    if (fault.count++ == 0 || state.how.size() < fault.first.size()) fault.first = state.how;
  });
  ShimDisarm();
  std::printf("power cut: %-26s %6ld %-7s %6ld bad, %ld completed by the next call, %ld with an unfinished end\n",
              what.name, tally.states, all ? "(all)," : "drawn,", bad, tally.completed, tally.unfinished);
  for (auto const& [wrong, fault] : faults)
    std::printf("FAILED  %s: %s, %ld times; the shortest: %s\n", what.name, wrong.c_str(), fault.count,
                fault.first.c_str());
  std::fflush(stdout);
  return bad;
}

}  // namespace

int PowerCuts(World& world, bool brief, std::string const& only) {
  long bad = 0;
  for (Case const& what : Cases())
    if (only.empty() || only == what.name) bad += Try(world, what, brief ? 500 : 20000);
  return bad > 0;
}

// ---- Real file systems ----

int PowerCutCases() {
  for (std::size_t i = 0; i < Cases().size(); i++) std::printf("%zu %s\n", i, Cases()[i].name);
  return 0;
}

int PowerCutWrite(std::string const& base, std::size_t number) {
  Case const& what = Cases().at(number);
  World world(base);
  world.Set(what.files);
  int const folder = open(base.c_str(), O_RDONLY | O_DIRECTORY);
  bool const settled = folder >= 0 && syncfs(folder) == 0;
  close(folder);
  return settled && !Learn(world, what, nullptr).empty() ? 0 : 1;
}

int PowerCutJudge(World& world, std::string const& base, std::size_t number) {
  Case const& what = Cases().at(number);
  world.Set(what.files);
  History const history = Learn(world, what, nullptr);
  World found(base);
  Tally tally;
  char const* const wrong = Judge(what, history, what.steps, found, tally);
  std::printf("%s\n", wrong == kSound ? "kept" : wrong);
  return wrong != kSound;
}

}  // namespace stress
