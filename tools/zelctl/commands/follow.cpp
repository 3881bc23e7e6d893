// zelctl log follow: new records of a log as they arrive.
#include <errno.h>
#include <signal.h>
#include <time.h>

#include <algorithm>
#include <deque>
#include <fstream>
#include <memory>
#include <optional>

#include "commands/families.h"
#include "files/recordlog.h"
#include "records/choice.h"
#include "records/eventcheck.h"
#include "records/fields.h"
#include "records/recordlisting.h"
#include "terminal/terminal.h"

namespace {

constexpr std::size_t kRemembered = 32;
constexpr std::size_t kTextWidth = 40;

volatile sig_atomic_t g_stopped = 0;

extern "C" void Stop(int) { g_stopped = 1; }

struct Arguments {
  std::string file;
  std::string last = "10";
  std::optional<std::string> size;
  ChoiceOptions choice;
};

// A position in a log that other processes write. A log at its maximum loses its oldest records, so the others move
// toward the start of the file. The last records seen say where to continue.
class Follower {
 public:
  Follower(std::string path, std::uint64_t payloadSize) : path_(std::move(path)), payload_(payloadSize) {}

  // The records since the last call. Returns why the log cannot be opened, or "".
  template <class See>
  std::string Read(See see) {
    std::string fault;
    std::optional<RecordLog> const log = Opened(fault);
    if (!log) return fault;
    try {
      if (log->Count() < position_ || !IsAsBefore(*log)) position_ = Found(*log);
      std::uint64_t const from = position_;
      log->ForEach(
          [&](Record const& record) {
            Remember(record);
            position_ = record.index + 1;
            see(record);
          },
          from, log->Count() - from);
    } catch (Failed const&) {
      // The log was cut during the read; the next call reads it again.
    }
    return "";
  }

 private:
  std::optional<RecordLog> Opened(std::string& fault) const {
    try {
      return RecordLog(path_, payload_);
    } catch (Failed const& error) {
      fault = error.what();
      return std::nullopt;
    }
  }

  static std::string BytesOf(Record const& record) {
    std::string bytes(reinterpret_cast<char const*>(record.payload), record.size);
    return std::to_string(record.stamp) + ":" + bytes;
  }

  void Remember(Record const& record) {
    if (seen_.size() == kRemembered) seen_.pop_front();
    seen_.push_back(BytesOf(record));
  }

  bool IsAsBefore(RecordLog const& log) const {
    if (seen_.empty()) return true;
    bool same = false;
    try {
      log.ForEach([&](Record const& record) { same = BytesOf(record) == seen_.back(); }, position_ - 1, 1);
    } catch (Failed const&) {
      return false;
    }
    return same;
  }

  // The position after the longest match with the records seen; the last one of several.
  std::uint64_t Found(RecordLog const& log) const {
    std::uint64_t position = 0;
    std::size_t best = 0;
    std::deque<std::string> window;
    log.ForEach([&](Record const& record) {
      if (window.size() == seen_.size()) window.pop_front();
      window.push_back(BytesOf(record));
      auto const differ = std::mismatch(window.rbegin(), window.rend(), seen_.rbegin(), seen_.rend());
      auto const alike = static_cast<std::size_t>(differ.first - window.rbegin());
      if (alike == 0 || alike < best) return;
      best = alike;
      position = record.index + 1;
    });
    return position;
  }

  std::string path_;
  std::uint64_t payload_;
  std::uint64_t position_ = 0;
  std::deque<std::string> seen_;
};

// Reports once that the log is missing, and once that it is back.
class Absence {
 public:
  void See(std::string const& fault, std::string const& path, Terminal const& terminal) {
    constexpr int kReplaced = 2;  // a log that is being replaced can be missing for a short time
    if (!fault.empty() && ++reads_ == kReplaced) terminal.Note(fault + "; waiting for it");
    if (!fault.empty()) return;
    if (reads_ >= kReplaced) terminal.Note(path + ": can be read again");
    reads_ = 0;
  }

 private:
  int reads_ = 0;  // in a row
};

void Wait() {
  timespec const pause = {0, 250000000};
  nanosleep(&pause, nullptr);
}

void Follow(Arguments const& arguments, Terminal const& terminal) {
  constexpr std::int64_t kLargestPayload = 4294967291;
  Choice const choice = arguments.choice.Get(terminal);
  auto const last = static_cast<std::size_t>(NumberArgument("--last", arguments.last, 0, kHighestNumber));
  auto const size = arguments.size ? NumberArgument("--size", *arguments.size, 0, kLargestPayload)
                                   : static_cast<std::int64_t>(kEventSize);
  RecordLog const log(arguments.file, static_cast<std::uint64_t>(size));  // reports a file that is not a log
  EventCheck check;
  std::uint64_t chosen = 0;
  log.ForEach([&](Record const& record) {
    check.See(record);
    chosen += choice(record) ? 1 : 0;
  });
  check.Require(log);
  log.NoteDamage(terminal);

  struct sigaction action = {};
  action.sa_handler = Stop;
  for (int const number : {SIGINT, SIGTERM}) sigaction(number, &action, nullptr);

  Follower follower(arguments.file, static_cast<std::uint64_t>(size));
  std::uint64_t toSkip = chosen - std::min<std::uint64_t>(chosen, last);
  RecordListing listing(terminal, log.Count() * 10, kTextWidth);
  Absence absence;
  while (g_stopped == 0) {
    std::string const fault = follower.Read([&](Record const& record) {
      if (!choice(record) || (toSkip > 0 && toSkip-- > 0)) return;
      listing.Row(record);
    });
    toSkip = 0;
    listing.Flush();
    absence.See(fault, arguments.file, terminal);
    Wait();
  }
  listing.End();
}

}  // namespace

Command FollowCommand() {
  auto const arguments = std::make_shared<Arguments>();
  return {"follow", "Show the last records, then new ones as they come", On(arguments, Follow),
          Joined({{Argument("FILE", &arguments->file, "The log").Required(),
                   Value("--last", &arguments->last, "N", "Existing records to show first").ShowingDefault()},
                  arguments->choice.Code(),
                  arguments->choice.Grep(),
                  {Value("--size", &arguments->size, "N", "Payload size in bytes; default 64")}}),
          "Ends with Ctrl+C. When the programs cut a log that has reached its maximum, the record numbers start "
          "again; no record is shown twice. If the file is removed, the command waits for a new one."};
}
