#include "files/edit.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>
#include <unordered_map>

#include "files/format.h"
#include "files/heldsignals.h"
#include "files/input.h"
#include "files/output.h"
#include "terminal/latin1.h"
#include "terminal/progress.h"
#include "terminal/terminal.h"
#include "zelvane/config/cfgclass.h"
#include "zelvane/config/paths.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"

namespace {

namespace fs = std::filesystem;

// ---- Rehearsals ----

// The directory of the copies during a rehearsal, and the current directory before it.
std::string g_scratch;
std::string g_directory;

std::optional<std::string> Home() {
  char const* const home = getenv("HOME");
  return home == nullptr ? std::nullopt : std::optional<std::string>(home);
}

void Copy(std::string const& file) {
  std::string const folder = ExtractFilePath(file);
  if (fs::is_directory(folder.empty() ? "." : folder)) fs::create_directories(fs::path(At(file)).parent_path());
  std::error_code error;
  if (fs::exists(file) && !fs::is_directory(file)) fs::copy_file(file, At(file), error);
  if (error) throw Failed(file + ": cannot copy to " + fs::temp_directory_path().string() + ": " + error.message());
}

// ---- What changed ----

using Bytes = std::optional<std::string>;  // empty for a file that does not exist

Bytes BytesOf(std::string const& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::vector<std::string> LinesOf(Bytes const& bytes, Edit const& edit) {
  std::vector<std::string> lines;
  if (!bytes) return lines;
  std::istringstream text(edit.asLines ? edit.asLines(*bytes) : *bytes);
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

struct Difference {
  char sign;  // '-' or '+'; ' ' between lines that are not adjacent
  std::string line;
};

// Marks the lines without a counterpart in `others`.
std::vector<bool> Lone(std::vector<std::string> const& lines, std::vector<std::string> const& others) {
  std::unordered_map<std::string, long> partners;
  for (std::string const& line : others) partners[line]++;
  std::vector<bool> lone;
  lone.reserve(lines.size());
  for (std::string const& line : lines) lone.push_back(--partners[line] < 0);
  return lone;
}

// The engine adds, replaces and removes lines but moves none, so common lines have the same order. Some repeated lines
// may be reported as replaced.
std::vector<Difference> Differences(std::vector<std::string> before, std::vector<std::string> after) {
  auto const [b, a] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
  before.erase(before.begin(), b);
  after.erase(after.begin(), a);
  while (!before.empty() && !after.empty() && before.back() == after.back()) before.pop_back(), after.pop_back();
  std::vector<bool> const gone = Lone(before, after);
  std::vector<bool> const come = Lone(after, before);
  std::vector<Difference> differences;
  bool parted = false;  // common lines are in another order
  for (std::size_t i = 0, j = 0; i < before.size() || j < after.size();) {
    if (i < before.size() && (gone[i] || parted || j == after.size())) {
      differences.push_back({'-', before[i++]});
    } else if (j < after.size() && (come[j] || parted || i == before.size())) {
      differences.push_back({'+', after[j++]});
    } else if (before[i] == after[j]) {
      differences.push_back({' ', ""});
      i++, j++;
    } else {
      parted = true;
    }
  }
  return differences;
}

bool IsConfiguration(Edit const& edit) { return !edit.asLines; }

struct Counts {
  std::uint64_t changed = 0;
  std::uint64_t added = 0;
  std::uint64_t removed = 0;
};

// A removed line next to an added one counts as changed, unless `separate`.
Counts CountsOf(std::vector<Difference> const& differences, bool separate) {
  Counts counts;
  std::uint64_t gone = 0;
  std::uint64_t come = 0;
  auto const settle = [&] {
    std::uint64_t const pairs = separate ? 0 : std::min(gone, come);
    counts.changed += pairs;
    counts.removed += gone - pairs;
    counts.added += come - pairs;
    gone = come = 0;
  };
  for (Difference const& difference : differences) {
    if (difference.sign == ' ') settle();
    gone += difference.sign == '-' ? 1 : 0;
    come += difference.sign == '+' ? 1 : 0;
  }
  settle();
  return counts;
}

std::string ShortName(std::string const& file) {
  std::string const home = GetUserPath();
  return home.size() > 2 && file.compare(0, home.size(), home) == 0 ? "~/" + file.substr(home.size()) : file;
}

std::string Summary(std::vector<Difference> const& differences, Edit const& edit) {
  Counts const counts = CountsOf(differences, !IsConfiguration(edit));
  std::string text;
  auto const add = [&](std::uint64_t number, std::string const& what) {
    if (number == 0) return;
    text += text.empty() ? Counted(number, edit.noun) : ", " + std::to_string(number);
    text += " " + what;
  };
  add(counts.changed, "changed");
  add(counts.added, edit.added);
  add(counts.removed, "removed");
  return text.empty() ? "line end changed" : text;
}

// A file before and after the change.
struct Changed {
  std::string file;
  Bytes before;
  Bytes after;
  std::string copy;  // the name that the library gives to a copy of the old file
};

std::string Summary(std::vector<Changed> const& changes, Edit const& edit) {
  std::string text;
  for (Changed const& change : changes) {
    text += (text.empty() ? "" : "; ") + ShortName(change.file);
    if (!change.before || !change.after)
      text += change.before ? " removed" : " created";
    else
      text += ": " + Summary(Differences(LinesOf(change.before, edit), LinesOf(change.after, edit)), edit);
  }
  return text.empty() ? "nothing changed" : text;
}

void PrintDifferences(std::vector<Changed> const& changes, Edit const& edit, Terminal const& terminal) {
  Json::List json;
  for (Changed const& change : changes) {
    Json::List lines;
    if (!terminal.json) std::cout << terminal.ShownName(change.file) << '\n';
    for (auto const& [sign, line] : Differences(LinesOf(change.before, edit), LinesOf(change.after, edit))) {
      if (sign == ' ') continue;
      std::string const open = WithoutPassword(line, terminal.showPasswords);
      std::string const text = sign + (" " + (open == Trim(line) ? line : open));  // with the blanks, which can be all
      if (terminal.json)
        lines.emplace_back(ToUtf8(text));
      else
        std::cout << terminal.Shown(text) << '\n';
    }
    json.push_back({{"file", change.file}, {"lines", lines}});
  }
  if (terminal.json) return terminal.PrintJson(json);
  std::cout << (changes.empty() ? "nothing would change\n" : "");
}

// The name that the next copy of the file gets.
std::string FreeLostName(std::string const& path) {
  std::string name = path + ".lost";
  std::error_code none;
  for (int i = 1; fs::exists(name, none); i++) name = path + ".lost." + std::to_string(i);
  return name;
}

// ---- Changes that are refused ----

// A root that is only the directory of the command is no installation.
void RequireStatedRoot(std::vector<std::string> const& files, Terminal const& terminal) {
  if (!terminal.root.empty() || HasRootSetting()) return;
  std::string const root = GetZelvanePath();
  auto const inRoot = [&root](std::string const& file) { return file.compare(0, root.size(), root) == 0; };
  if (std::any_of(files.begin(), files.end(), inRoot))
    throw Failed("no installation: " + std::string(kSettingsFile) +
                 " does not name its root (PATH in [ZELVANE]), and " + root +
                 " is only where zelctl is; use --root DIR");
}

// Without HOME the library names the user's files in the current directory.
void NoteHome(std::vector<std::string> const& files, Terminal const& terminal) {
  std::string const user = GetUserPath();
  for (std::string const& file : files)
    if (user.compare(0, 1, "~") == 0 && file.compare(0, user.size(), user) == 0)
      return terminal.Note("HOME is not set; the user's file is " + file + " in the current directory");
}

// A save drops all lines after a bad line. Lines that are there afterwards come from the change.
void RequireReadable(std::string const& file) {
  long const badLine = InspectFile(At(file)).badLine;
  if (badLine == 0) return;
  std::vector<std::string> const lines = LinesOf(BytesOf(At(file)), {});
  for (auto line = static_cast<std::size_t>(badLine); line < lines.size(); line++)
    if (!Trim(lines[line]).empty())
      throw Failed(StoppedAt(file, badLine) + "; \"" + lines[line] +
                   "\" would be one of them. Correct that line first");
}

// ---- The steps of a change ----

// `stops` is set if the load of a file stops at a bad line.
std::vector<Changed> FilesBefore(Edit const& edit, bool force, bool& stops) {
  std::vector<Changed> files;
  for (std::string const& file : edit.files) {
    if (IsConfiguration(edit)) RequireWholeLoad(file, force);
    stops = stops || (IsConfiguration(edit) && InspectFile(file).badLine != 0);
    files.push_back({file, BytesOf(file), std::nullopt, FreeLostName(file)});
  }
  return files;
}

// With --force. The library itself copies a file whose load stops.
void KeepBinary(Edit const& edit, std::vector<Changed> const& files) {
  for (Changed const& each : files)
    if (IsConfiguration(edit) && each.before && !BinaryFault(*each.before).empty() &&
        InspectFile(each.file).badLine == 0)
      KeepAsLost(each.file);
}

// The files that differ now.
std::vector<Changed> ChangesOf(std::vector<Changed> const& files) {
  std::vector<Changed> changed;
  for (Changed const& each : files) {
    Changed now = {each.file, each.before, BytesOf(At(each.file)), each.copy};
    if (now.after != now.before) changed.push_back(std::move(now));
  }
  return changed;
}

// What the change does to copies of the files. Throws Failed if a file would lose lines or cannot be written.
std::vector<Changed> Rehearsed(Edit const& edit, Terminal const& terminal, std::vector<Changed> const& files,
                               std::function<void()> const& act) {
  std::vector<Changed> changed;
  {
    Rehearsal const rehearsal(edit, terminal);
    act();
    changed = ChangesOf(files);
    for (Changed const& change : changed)
      if (IsConfiguration(edit)) RequireReadable(change.file);
  }
  for (Changed const& change : changed)
    if (!CanBeWritten(change.file)) throw Failed(CannotWrite(change.file));
  return changed;
}

// ---- One writer at a time ----

constexpr int kLockTries = 1000;
constexpr useconds_t kLockPause = 10000;  // in all 10 s: a process that hangs must not block the administrator

// The locked directories, by device and inode. The lock ends with the process.
std::map<std::pair<dev_t, ino_t>, int> g_locked;

void Lock(int directory) {
  for (int i = 0; i < kLockTries && flock(directory, LOCK_EX | LOCK_NB) != 0; i++) {
    if (errno != EWOULDBLOCK && errno != EINTR) return;
    usleep(kLockPause);
  }
}

}  // namespace

void LockFoldersOf(std::vector<std::string> const& files) {
  std::map<std::pair<dev_t, ino_t>, int> found;
  for (std::string const& file : files) {
    std::string const folder = ExtractFilePath(file);
    int const directory = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    struct stat status = {};
    if (directory < 0) continue;
    bool const isNew = fstat(directory, &status) == 0 && g_locked.count({status.st_dev, status.st_ino}) == 0 &&
                       found.emplace(std::pair(status.st_dev, status.st_ino), directory).second;
    if (!isNew) close(directory);
  }
  // In the order of the map, so that two processes cannot wait for each other.
  for (auto const& [identity, directory] : found) Lock(directory);
  g_locked.insert(found.begin(), found.end());
}

Options WritingOptions(Writing& writing) {
  return {Flag("--force", &writing.force, "Save even if the file is binary, or loses the lines below a syntax error"),
          DryRun(writing)};
}

Option DryRun(Writing& writing) {
  return Flag("--dry-run", &writing.dryRun, "Change nothing; show the lines that would differ");
}

Option Yes(Writing& writing) { return Flag("--yes", &writing.yes, "Do not ask; required without a terminal"); }

Option Overwrite(Replacing& replacing) {
  return Flag("--overwrite", &replacing.any, "Replace OUT if it exists; never settings, logs and schedules");
}

Option DryOutput(bool& dryRun) {
  return Flag("--dry-run", &dryRun, "Write nothing; show how many bytes OUT would have");
}

void TellOutput(std::string const& path, std::uint64_t bytes, bool dryRun, Terminal const& terminal) {
  if (terminal.json) return terminal.PrintJson({{"file", path}, {"bytes", bytes}, {"written", !dryRun}});
  terminal.PrintText(path + ": " + Counted(bytes, "byte") + (dryRun ? " would be written" : " written"));
}

void RequireConsent(std::string const& file, std::string const& what, Writing const& writing) {
  if (writing.yes || writing.dryRun) return;
  std::string const told = file + ": " + what;
  if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0) throw WrongUsage(told + "; use --yes to confirm");
  Bytes const before = BytesOf(file);
  Complain(told);
  std::cerr << "Continue? [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer != "y" && answer != "Y" && answer != "yes") throw Failed("nothing changed");
  if (BytesOf(file) != before) throw Failed(file + ": was changed by another program meanwhile; run the command again");
}

std::string At(std::string const& path) {
  return g_scratch.empty() ? path : g_scratch + (fs::path(g_directory) / path).string();
}

Rehearsal::Rehearsal(Edit const& edit, Terminal const& terminal) : root_(terminal.root), home_(Home()) {
  std::string const installation = GetZelvanePath();
  std::error_code removed;
  g_directory = fs::current_path(removed);
  if (removed) g_directory = "/";
  g_scratch = folder_.Path();
  HideInMessages(g_scratch);
  try {
    fs::create_directories(At("."));
    for (std::string const& file : edit.files) Copy(file);
    for (std::string const& file : edit.reads) Copy(file);
    if (SetZelvanePath(At(installation).c_str()) == 0) throw std::bad_alloc();
    // The library names the user's files in the current directory if HOME is not set.
    std::string const user = GetUserPath();
    if (user.compare(0, 1, "/") == 0)
      setenv("HOME", At(user).c_str(), 1);
    else
      fs::current_path(At("."));
  } catch (...) {
    End();
    throw;
  }
}

Rehearsal::~Rehearsal() { End(); }

void Rehearsal::End() const {
  std::error_code ignored;
  fs::current_path(g_directory, ignored);
  g_scratch.clear();
  SetZelvanePath(root_.c_str());
  if (home_) setenv("HOME", home_->c_str(), 1);
}

bool Make(Edit const& edit, Writing const& writing, Terminal const& terminal, std::function<void()> const& act) {
  RequireStatedRoot(edit.files, terminal);
  NoteHome(edit.files, terminal);
  if (!writing.dryRun) LockFoldersOf(edit.files);
  std::optional<Busy> busy(std::in_place, "changing", edit.files);
  bool stops = false;
  std::vector<Changed> files = FilesBefore(edit, writing.force, stops);
  if (writing.dryRun || stops) {
    std::vector<Changed> const changed = Rehearsed(edit, terminal, files, act);
    if (writing.dryRun) {
      busy.reset();
      PrintDifferences(changed, edit, terminal);
      return false;
    }
  }
  HeldSignals const held;  // until the change is complete and reported
  KeepBinary(edit, files);
  try {
    act();
  } catch (Failed const&) {
    std::vector<Changed> const changed = ChangesOf(files);
    if (!changed.empty()) Complain(Summary(changed, edit));
    throw;
  }
  std::string const summary = Summary(ChangesOf(files), edit);
  busy.reset();
  for (Changed const& each : files)
    if (std::error_code none; fs::exists(each.copy, none)) terminal.Note(OldFileIn(each.file, each.copy));
  if (!terminal.json && !terminal.csv) terminal.PrintNames(summary);
  std::cout.flush();
  return true;
}

bool IsWritable(std::string const& path) {
  std::string const folder = ExtractFilePath(path);
  bool const exists = access(path.c_str(), F_OK) == 0;
  return access(exists ? path.c_str() : folder.empty() ? "." : folder.c_str(), W_OK) == 0;
}

bool CanBeWritten(std::string const& file) {
  std::string folder = ExtractFilePath(file);
  if (!folder.empty()) folder.pop_back();
  std::error_code none;
  return IsWritable(folder.empty() || fs::exists(folder, none) ? file : folder);
}

std::string OldFileIn(std::string const& path, std::string const& copy) {
  return path + ": the old file is copied to " + copy;
}

std::string KeepAsLost(std::string const& path) {
  std::string kept = FreeLostName(path);
  Input in(path, path);
  struct stat source = {};
  if (fstat(in.Descriptor(), &source) != 0) throw FileFailed(path);
  Output out(kept, source, {});
  char piece[65536];
  while (std::size_t const got = in.Fill(piece, sizeof piece)) out.Write(piece, got);
  out.Keep();
  if (chown(kept.c_str(), source.st_uid, source.st_gid) != 0) errno = 0;  // the user's own copy then
  return kept;
}

bool RemoveKey(std::string const& path, std::string const& section, std::string const& key, Writing const& writing,
               Terminal const& terminal, std::function<void()> const& remove) {
  std::string const name = "[" + section + "] " + key;
  RequireWholeLoad(path, writing.force);
  if (!HasKey(path, section, key)) throw Failed(path + ": key " + name + " does not exist");
  bool const done = Make({{path}}, writing, terminal, [&] {
    Bytes const before = BytesOf(At(path));
    errno = 0;
    remove();
    int const error = errno;
    if (BytesOf(At(path)) == before) throw Failed(CannotWrite(path, error));
  });
  if (done && HasKey(path, section, key))
    throw Failed(path + ": " + name + " is still there: a repeated line now counts");
  return done;
}
