#include <unistd.h>

#include <cstring>

#include "stress/scenarios.h"
#include "zelvane/zelvane.h"

namespace stress {

std::string Record(long stamp, std::size_t payload) {
  std::string record(4 + payload, static_cast<char>(stamp % 251));
  for (int i = 0; i < 4; i++) record[static_cast<std::size_t>(i)] = static_cast<char>(stamp >> 8 * i);
  record[4] = static_cast<char>(stamp % 3);
  record[5] = 0;
  return record;
}

namespace {

constexpr unsigned long kPayload = 64;

std::string Log(long count) {
  std::string log;
  for (long i = 0; i < count; i++) log += Record(i, kPayload);
  return log;
}

std::string Schedule() {
  std::string file;
  for (long day = 1; day < 4; day++) file += Record(kNow + 86400 * day, kPayload).substr(0, 4);
  return file;
}

unsigned char const* Payload(long stamp) {
  static unsigned char bytes[kPayload];
  std::memset(bytes, static_cast<int>(stamp % 251), sizeof bytes);
  bytes[0] = static_cast<unsigned char>(stamp % 3);
  bytes[1] = 0;
  return bytes;
}

bool Append(World& world, long stamp, unsigned long most) {
  LogClass log;
  if (log.SetFile(world.Root("logevt.rgt")) != 1) return false;
  log.SetMaxLines(most);
  return log.WriteReg(stamp, Payload(stamp), kPayload);
}

// A log that had nine records and gets one more: at most nine, of which only the first may be missing. What an
// interrupted cut needs is there, complete.
bool KeepsNewest(Files const&, Files const& after, bool ok) {
  auto const log = after.find("root/logevt.rgt"), scratch = after.find("root/logevt.rgt.tmp");
  bool const passing = scratch == after.end() || scratch->second == Log(10).substr(kPayload + 4);
  return log != after.end() && HoldsNewest(log->second, kPayload, ok ? 9 : 8, ok ? 9 : 8) && passing &&
         after.size() == (scratch == after.end() ? 2 : 3);
}

// The records 1 to 8, mixed by a cut, and complete in its scratch file.
bool Mends(Files const&, Files const& after, bool ok) {
  std::string const log = after.at("root/logevt.rgt");
  if (ok) return HoldsNewest(log, kPayload, 8, 9);
  return after.count("root/logevt.rgt.tmp") == 1 || HoldsNewest(log, kPayload, 7, 8);
}

}  // namespace

bool HoldsNewest(std::string const& log, std::size_t payload, long newest, long last) {
  if (log.size() % (4 + payload) != 0) return false;
  for (long stamp = last - newest + 1; stamp <= last; stamp++) {
    std::string const record = Record(stamp, payload);
    std::size_t at = log.find(record);
    while (at != std::string::npos && at % (4 + payload) != 0) at = log.find(record, at + 1);
    if (at == std::string::npos) return false;
  }
  return true;
}

Table LogsScenarios() {
  return {
      {"record log, appending", {{"root/logevt.rgt", Log(3)}}, [](World& w) { return Append(w, 3, 1000000); }, kTwice},
      {"record log, new",
       {},
       [](World& w) { return Append(w, 3, 100); },
       kTwice,
       {},
       [](Files const&, Files const& after, bool ok) {
         return after == Files{{"root/logevt.rgt", Record(3, kPayload)}} ||
                (!ok && (after.empty() || after == Files{{"root/logevt.rgt", ""}}));
       }},
      {"record log at its maximum",
       {{"root/logevt.rgt", Log(9)}, {"root/other", ""}},
       [](World& w) { return Append(w, 9, 9); },
       kTwice | kForgives,  // a failed cut is no failure
       {},
       KeepsNewest},
      {"record log, its cut broken off",
       {{"root/logevt.rgt", Log(9).substr(kPayload + 4, 300) + Log(9).substr(300)},
        {"root/logevt.rgt.tmp", Log(9).substr(kPayload + 4)}},
       [](World& w) { return Append(w, 9, 8); },
       kTwice | kForgives,
       {},
       Mends},
      {"record log, damaged",
       {{"root/logevt.rgt", Log(3) + "x"}},
       [](World& w) { return Append(w, 3, 100); },
       kTwice,
       {},
       [](Files const& before, Files const& after, bool ok) {
         std::string const &log = after.at("root/logevt.rgt"), &old = before.at("root/logevt.rgt");
         auto const kept = after.find("root/logevt.rgt.bad");
         if (kept == after.end()) return !ok && log == old;
         return kept->second == old && (log == Record(3, kPayload) || (!ok && (log.empty() || log == old)));
       }},
      {"record log, reading",
       {{"root/logevt.rgt", Log(5)}},
       [](World& w) {
         LogClass log;
         if (log.SetFile(w.Root("logevt.rgt")) != 1) return false;
         long when = 0;
         unsigned char data[kPayload] = {};
         unsigned long const count = log.LoadFile(kPayload);
         bool const read = log.ReadReg(4, &when, data, kPayload);
         bool const direct = log.ReadFileReg(2, &when, data, kPayload);
         if (count != 5 || !read || !direct) return false;
         w.Note("%lu %ld %d", count, when, data[9]);
         return true;
       }},
      {"record log, emptying",
       {{"root/logevt.rgt", Log(5)}},
       [](World& w) {
         LogClass log;
         return log.SetFile(w.Root("logevt.rgt")) == 1 && log.ClearFile();
       }},
      {"text log",
       {{"root/a.log", "05/03/2004 08:07:09 1 on\n"}},
       [](World& w) {
         TextLogClass log;
         return log.SetFile(w.Root("a.log")) == 1 && log.WriteLine("off") && log.WriteLine(kNow, "on");
       },
       kTwice},
      {"log statistics",
       {{"root/logevt.rgt", Log(60)}},
       [](World& w) {
         void* const log = LogReaderOpen(w.Root("logevt.rgt"));
         unsigned long const count = LogReaderRegCount(log);
         w.Note("%lu %ld", LogReaderCountEvents(log, 1, 0, kNow), LogReaderTimeEvents(log, 0, 1, 2, 0, kNow));
         LogReaderClose(log);
         if (count != 60) w.TakeNotes();
         return count == 60;
       }},
      {"schedule, adding",
       {{"root/prog", Schedule()}},
       [](World& w) {
         void* const list = OpenProgList(w.Root("prog"));
         reg_proglist const entry = {static_cast<int32_t>(kNow + 50)};
         // The caller decides whether to save a list with the wrong contents.
         bool const read = GetProgListRegCount(list) == 3;
         bool const added = read && AddProgListReg(list, &entry) == 1 && GetProgListRegCount(list) == 4;
         return CloseProgList(list) == 1 && added;
       },
       kTwice},
      {"schedule, removing and emptying",
       {{"root/prog", Schedule()}},
       [](World& w) {
         void* const list = OpenProgList(w.Root("prog"));
         reg_proglist const entry = {static_cast<int32_t>(kNow + 86400)};
         bool const done = GetProgListRegCount(list) == 3 && RemProgListReg(list, &entry) == 1 &&
                           GetProgListRegCount(list) == 2 && ClearProgList(list) == 1;
         return CloseProgList(list) == 1 && done;
       },
       kTwice},
      {"schedule, removing from a file of two names",  // written in place, but not again at the end
       {{"root/prog", Schedule()}},
       [](World& w) {
         unlink(w.Root("linked"));
         if (link(w.Root("prog"), w.Root("linked")) != 0) return false;
         ProgList list;
         reg_proglist const entry = {static_cast<int32_t>(kNow + 86400)};
         bool const done = list.SetFile(w.Root("linked")) && list.GetRegCount() >= 2 && list.RemReg(&entry);
         unlink(w.Root("linked"));
         return done;
       },
       kClass | kTwice},
      {"schedule, removing at once",
       {{"root/prog", Schedule()}},
       [](World& w) {
         ProgList list;
         reg_proglist const entry = {static_cast<int32_t>(kNow + 86400)};
         return list.SetFile(w.Root("prog")) && list.GetRegCount() >= 2 && list.RemReg(&entry);
       },
       kClass | kTwice},
  };
}

}  // namespace stress
