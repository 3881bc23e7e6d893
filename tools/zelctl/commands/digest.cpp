// zelctl digest: RIPEMD-256 of files, in the format of the usual checksum tools.
#include <sys/stat.h>

#include <iostream>
#include <optional>

#include "commands/families.h"
#include "files/input.h"
#include "terminal/progress.h"
#include "terminal/terminal.h"
#include "zelvane/core/strutils.h"
#include "zelvane/crypto/hash.h"

namespace {

struct Arguments {
  std::vector<std::string> files = {"-"};
  bool check = false;
  bool ignoreMissing = false;
  bool quiet = false;
  bool status = false;
  bool strict = false;
  bool warn = false;
};

// From this size on, the length that a digest includes is no longer the message's (Hash_MD4::Done).
constexpr std::uint64_t kLongMessage = 512ULL * 1024 * 1024;
constexpr std::size_t kHexDigits = 64;
constexpr char kHex[] = "0123456789abcdef";

constexpr char kEscaped[] = "\\\n\r";
constexpr char kEscapes[] = "\\nr";

// The name on one line, with escapes.
std::string Escaped(std::string const& name) {
  std::string escaped;
  for (char const c : name) {
    char const* const special = c == '\0' ? nullptr : strchr(kEscaped, c);
    if (special != nullptr)
      escaped += {'\\', kEscapes[special - kEscaped]};
    else
      escaped += c;
  }
  return escaped;
}

// Checksum tools need every byte of a name; a terminal must not get control characters.
std::string OnScreen(std::string const& name, Terminal const& terminal) {
  return IsOnTerminal() ? terminal.ShownName(name) : name;
}

// Empty if a backslash starts no valid escape.
std::optional<std::string> Unescaped(std::string const& text) {
  std::string name;
  for (std::size_t i = 0; i < text.size(); i++) {
    if (text[i] != '\\') {
      name += text[i];
      continue;
    }
    char const* const escape = ++i < text.size() ? strchr(kEscapes, text[i]) : nullptr;
    if (escape == nullptr) return std::nullopt;
    name += kEscaped[escape - kEscapes];
  }
  return name;
}

struct Digest {
  std::string hex;
  std::uint64_t length;
};

Input OpenInput(std::string const& file) { return file == "-" ? Input("standard input") : Input(file, Escaped(file)); }

// Throws FileFailed.
Digest DigestOf(std::string const& file) {
  Input in = OpenInput(file);
  Hash_RipeMD256 hash;
  hash.Init();
  Digest digest = {};
  struct stat source = {};
  bool const isFile = fstat(in.Descriptor(), &source) == 0 && S_ISREG(source.st_mode);
  Progress progress(isFile ? static_cast<std::uint64_t>(source.st_size) : 0);
  char piece[65536];
  for (std::size_t got = 0; (got = in.Fill(piece, sizeof piece)) > 0; progress.Advance(got))
    hash.Calc(piece, static_cast<long>(got));
  digest.length = progress.Done();
  hash.Done();
  auto const* const bytes = static_cast<unsigned char const*>(hash.DigestKey());
  for (long i = 0; i < hash.DigestKeySize(); i++) digest.hex += {kHex[bytes[i] >> 4], kHex[bytes[i] & 15]};
  return digest;
}

void Print(Arguments const& arguments, Terminal& terminal) {
  Json::List json;
  for (std::string const& file : arguments.files) {
    try {
      Digest const digest = DigestOf(file);
      std::string const name = Escaped(file);
      if (digest.length >= kLongMessage)
        terminal.Note(name + ": 512 MiB or larger; this digest differs from standard RIPEMD-256");
      json.push_back({{"file", file}, {"digest", digest.hex}});
      if (!terminal.json)
        std::cout << (name == file ? "" : "\\") << digest.hex << "  " << OnScreen(name, terminal) << '\n';
    } catch (FileFailed const& failure) {
      Complain(failure.what());
      terminal.status = 1;
    }
  }
  if (terminal.json) terminal.PrintJson(json);
}

// ---- Checking ----

struct Entry {
  std::string hex;
  std::string file;
};

// Parses a line of a list; empty if it has another form.
std::optional<Entry> ParseEntry(std::string line) {
  if (!line.empty() && line.back() == '\r') line.pop_back();
  line.erase(0, line.find_first_not_of(" \t"));
  bool const escaped = !line.empty() && line[0] == '\\';
  if (escaped) line.erase(0, 1);
  Entry entry = {LowerCase(line.substr(0, kHexDigits)), ""};
  if (entry.hex.size() != kHexDigits || entry.hex.find_first_not_of(kHex) != std::string::npos) return std::nullopt;
  if (line.size() < kHexDigits + 3 || (line[kHexDigits] != ' ' && line[kHexDigits] != '\t')) return std::nullopt;
  // Some tools write an asterisk for files that they read in binary mode.
  if (line[kHexDigits + 1] != ' ' && line[kHexDigits + 1] != '*') return std::nullopt;
  std::optional<std::string> const name =
      escaped ? Unescaped(line.substr(kHexDigits + 2)) : line.substr(kHexDigits + 2);
  if (!name) return std::nullopt;
  entry.file = *name;
  return entry;
}

// Counts over the lines of a list.
struct Tally {
  long malformed = 0;
  long unreadable = 0;
  long mismatched = 0;
  long matched = 0;
  bool anyEntry = false;
};

// The result for a checked file, in the words of the usual tools; "" if nothing is printed.
std::string Verify(Entry const& entry, Arguments const& arguments, Tally& tally) {
  try {
    bool const matches = DigestOf(entry.file).hex == entry.hex;
    ++(matches ? tally.matched : tally.mismatched);
    if (matches) return arguments.quiet ? "" : "OK";
    return "FAILED";
  } catch (FileFailed const& failure) {
    if (arguments.ignoreMissing && failure.reason == ENOENT) return "";
    Complain(failure.what());
    tally.unreadable++;
    return "FAILED open or read";
  }
}

void Warn(std::string const& list, long count, char const* one, char const* many) {
  if (count > 0) Complain(list + ": " + std::to_string(count) + " " + (count == 1 ? one : many));
}

// Reports on the list as a whole. True if everything is as it should be.
bool Conclude(Tally const& tally, std::string const& list, Arguments const& arguments) {
  if (!tally.anyEntry) {
    Complain(list + ": contains no checksum line");
    return false;
  }
  if (!arguments.status) {
    Warn(list, tally.malformed, "line without a checksum ignored", "lines without a checksum ignored");
    Warn(list, tally.unreadable, "file cannot be read", "files cannot be read");
    Warn(list, tally.mismatched, "checksum differs", "checksums differ");
  }
  bool const idle = arguments.ignoreMissing && tally.matched == 0;
  if (idle && !arguments.status) Complain(list + ": no file was verified");
  return !idle && tally.unreadable + tally.mismatched == 0 && !(arguments.strict && tally.malformed > 0);
}

// True if everything in the list at `path` is correct. Throws FileFailed if it cannot be read.
bool CheckList(std::string const& path, Arguments const& arguments, Terminal const& terminal, Json::List& json) {
  Input in = OpenInput(path);
  std::string const list = path == "-" ? "standard input" : Escaped(path);
  Tally tally;
  std::string line;
  for (long number = 1; in.Line(line); number++) {
    if (line.empty() || line[0] == '#') continue;
    std::optional<Entry> const entry = ParseEntry(line);
    // A list read from standard input cannot name standard input.
    if (!entry || (entry->file == "-" && path == "-")) {
      tally.malformed++;
      if (arguments.warn) Complain(list + ":" + std::to_string(number) + ": not a checksum line");
      continue;
    }
    tally.anyEntry = true;
    std::string const word = Verify(*entry, arguments, tally);
    if (word.empty() || arguments.status) continue;
    json.push_back({{"file", entry->file}, {"result", word}});
    bool const manyLines = entry->file.find('\n') != std::string::npos;
    if (!terminal.json)
      std::cout << OnScreen(manyLines ? "\\" + Escaped(entry->file) : entry->file, terminal) << ": " << word << '\n';
  }
  return Conclude(tally, list, arguments);
}

void Check(Arguments const& arguments, Terminal& terminal) {
  Json::List json;
  for (std::string const& list : arguments.files) {
    try {
      if (!CheckList(list, arguments, terminal, json)) terminal.status = 1;
    } catch (FileFailed const& failure) {
      Complain(failure.what());
      terminal.status = 1;
    }
  }
  if (terminal.json) terminal.PrintJson(json);
}

}  // namespace

Command DigestCommand() {
  auto const arguments = std::make_shared<Arguments>();
  auto const add = [](char const* name, bool& target, char const* help) {
    return Flag(name, &target, help).Needs("--check");
  };
  return {
      "digest",
      "Compute or check RIPEMD-256 checksums",
      [arguments](Terminal& terminal) { arguments->check ? Check(*arguments, terminal) : Print(*arguments, terminal); },
      {Argument("FILE", &arguments->files, "Files; \"-\" or no FILE for standard input"),
       Flag("-c,--check", &arguments->check, "Verify the checksums listed in FILE"),
       add("--ignore-missing", arguments->ignoreMissing, "With --check: skip missing files"),
       add("--quiet", arguments->quiet, "With --check: do not print OK lines"),
       add("--status", arguments->status, "With --check: print nothing, set only the exit code"),
       add("--strict", arguments->strict, "With --check: exit with 1 for malformed lines"),
       add("-w,--warn", arguments->warn, "With --check: report malformed lines")},
      "Output: one line per file, digest, two spaces and name, like the usual checksum tools. If a name contains a "
      "line feed, carriage return or backslash, it is escaped and the line starts with a backslash. Files that cannot "
      "be read are reported on standard error; the others are still processed. Exit codes: 0 success, 1 failure, 2 "
      "usage error. For files of 512 MiB or more the digest differs from standard RIPEMD-256: the programs have stored "
      "such digests.",
      {"zelctl digest *.cfg > sums", "zelctl digest --check sums"}};
}
