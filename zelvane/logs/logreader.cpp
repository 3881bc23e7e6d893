#include "zelvane/logs/logreader.h"

#include <sys/stat.h>

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "zelvane/core/barrier_internal.h"
#include "zelvane/core/bytes_internal.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/datetime_internal.h"
#include "zelvane/core/fileutils.h"
#include "zelvane/core/strutils.h"
#include "zelvane/logs/logclass_internal.h"

using zelvane::internal::Descriptor;
using zelvane::internal::FileLock;
using zelvane::internal::Guard;
using zelvane::internal::kDaySeconds;
using zelvane::internal::kLongestWait;
using zelvane::internal::kStampSize;
using zelvane::internal::LoadLe32;
using zelvane::internal::LogRecords;
using zelvane::internal::Open;

namespace {

constexpr unsigned long kEventSize = 64;  // of the payload
constexpr unsigned long kRecordSize = kStampSize + kEventSize;
constexpr std::int32_t kNoTime = -1;
constexpr int kLoads = 100;  // attempts at a log that keeps changing

LogClass* Log(void* handle) { return static_cast<LogClass*>(handle); }

std::int32_t TimeOf(unsigned char const* record) { return static_cast<std::int32_t>(LoadLe32(record)); }

std::uint16_t CodeOf(unsigned char const* record) {
  return static_cast<std::uint16_t>(record[kStampSize] | record[kStampSize + 1] << 8);
}

// Returns `t` with its time of day replaced; -1 if either is not valid.
std::int32_t AtTimeOfDay(long t, int hour, int minute, int second) {
  int year = 0;
  int month = 0;
  int day = 0;
  if (!DecodeDateTime(t, &year, &month, &day, nullptr, nullptr, nullptr, nullptr, nullptr)) return kNoTime;
  return static_cast<std::int32_t>(EncodeDateTime(year, month, day, hour, minute, second));
}

class DaySpan {
 public:
  DaySpan(long from, long to) : first_(AtTimeOfDay(from, 0, 0, 0)), last_(AtTimeOfDay(to, 23, 59, 59)) {}

  std::int32_t Last() const { return last_; }

  bool HasTime(std::int32_t t) const { return t >= 0 && t >= first_ && t <= last_; }

  // Returns whether the first second of the date of `t` is in the span. Records of one day follow each other in a log,
  // so the answer for the last day is kept.
  bool HasDate(std::int32_t t) {
    if (t < 0) return false;
    if (t / kDaySeconds != day_) {
      day_ = t / kDaySeconds;
      hasDay_ = HasTime(AtTimeOfDay(t, 0, 0, 0));
    }
    return hasDay_;
  }

 private:
  std::int32_t first_;
  std::int32_t last_;
  std::int32_t day_ = -1;
  bool hasDay_ = false;
};

using Codes = std::bitset<65536>;

Codes EndCodes(short const* codes, unsigned long count) {
  Codes ends;
  for (unsigned long i = 0; i < count; i++)
    if (codes[i] >= 0) ends.set(static_cast<std::uint16_t>(codes[i]));
  return ends;
}

// The interval that is open at a record of the scan, if one is, and the seconds of the earlier ones.
class Interval {
 public:
  bool IsOpen() const { return begin_ != kNoTime; }
  bool WasMoved() const { return moved_; }
  std::int32_t Total() const { return static_cast<std::int32_t>(total_); }

  void Begin(std::int32_t t) { begin_ = t; }
  // One interval of a scan is cut to the span, and no other.
  bool MayMove() const { return IsOpen() && !moved_; }
  void MoveBegin(std::int32_t t) {
    begin_ = t;
    moved_ = true;
  }
  void CountUpTo(std::int32_t t) { total_ += static_cast<std::uint32_t>(t) - static_cast<std::uint32_t>(begin_); }
  void End() { begin_ = kNoTime; }

 private:
  std::int32_t begin_ = kNoTime;
  bool moved_ = false;
  std::uint32_t total_ = 0;  // unsigned, to wrap: damaged logs hold any stamp
};

std::int32_t TimeEvents(LogRecords const& log, std::uint16_t startCode, Codes const& ends, DaySpan const& span) {
  Interval interval;
  unsigned char const* record = log.bytes;
  unsigned char const* const end = log.bytes + log.count * kRecordSize;
  for (; record != end; record += kRecordSize) {
    std::int32_t const t = TimeOf(record);
    if (!interval.IsOpen() && CodeOf(record) == startCode) interval.Begin(t);
    if (interval.MayMove() && span.HasTime(t)) interval.MoveBegin(t);
    if (interval.IsOpen() && (t > span.Last() || ends.test(CodeOf(record)))) {
      std::int32_t const stop = std::min(t, span.Last());
      if (span.HasTime(stop)) interval.CountUpTo(stop);
      interval.End();
    }
    if (t >= span.Last()) break;
  }
  if (interval.IsOpen() && interval.WasMoved() && record != log.bytes) interval.CountUpTo(TimeOf(record - kRecordSize));
  return interval.Total();
}

bool IsUnchanged(struct stat const& before, struct stat const& now) {
  return before.st_size == now.st_size && before.st_mtim.tv_sec == now.st_mtim.tv_sec &&
         before.st_mtim.tv_nsec == now.st_mtim.tv_nsec;
}

// Loads the whole file as it was at one time. Waits while a cut copies records to its beginning, and loads it again if
// it has changed meanwhile.
void Load(LogClass& log, Descriptor const& file) {
  FileLock const lock(file.Get(), FileLock::kShared, kLongestWait);
  for (int tries = 0; tries < kLoads; tries++) {
    struct stat before = {}, now = {};
    (void)fstat(file.Get(), &before);
    log.UnloadFile();
    log.LoadFile(kEventSize);
    if (fstat(file.Get(), &now) != 0 || IsUnchanged(before, now)) return;
    Delay(1);
  }
}

void LoadEarlierGeneration(LogClass& log, char const* path) {
  void* records = nullptr;
  unsigned long const length = Load_Zelvane3x_Log(path, &records);
  if (length > 0) log.SetBuffer(records, length);
  Close_Zelvane3x_Log(&records);
}

}  // namespace

void* LogReaderOpen(char const* path) {
  if (path == nullptr || *path == '\0') return nullptr;
  return Guard<void*>(nullptr, [&]() -> void* {
    Descriptor const file = Open(path, O_RDONLY | O_NONBLOCK);
    if (!file) return nullptr;
    auto log = std::make_unique<LogClass>();
    if (AnsiLowerCase(ExtractFileExt(path)) == "cry") {
      LoadEarlierGeneration(*log, path);
    } else {
      log->SetFile(path);
      Load(*log, file);
    }
    return log.release();
  });
}

int LogReaderClose(void* log) {
  if (log == nullptr) return 0;
  Log(log)->UnloadFile();
  delete Log(log);
  return 1;
}

unsigned long LogReaderRegCount(void* log) { return log == nullptr ? 0 : Log(log)->GetRegCount(kEventSize); }

int LogReaderReadReg(void* log, unsigned long index, long* when, void* data) {
  if (log == nullptr || when == nullptr || data == nullptr) return 0;
  return Log(log)->ReadReg(index, when, data, kEventSize) ? 1 : 0;
}

unsigned long LogReaderCountEvents(void* log, unsigned short code, long from, long to) {
  if (log == nullptr) return 0;
  LogRecords const records(*Log(log), kEventSize);
  DaySpan span(from, to);
  unsigned long count = 0;
  for (unsigned long i = 0; i < records.count; i++) {
    unsigned char const* const record = records.bytes + i * kRecordSize;
    if (CodeOf(record) == code && span.HasDate(TimeOf(record))) count++;
  }
  return count;
}

long LogReaderTimeEvents(void* log, short startCode, short endCodeA, short endCodeB, long from, long to) {
  short const endCodes[] = {endCodeA, endCodeB};
  return LogReaderTimeEvents2(log, startCode, endCodes, 2, from, to);
}

long LogReaderTimeEvents2(void* log, short startCode, short const* endCodes, unsigned long count, long from, long to) {
  if (log == nullptr || endCodes == nullptr || count == 0) return 0;
  return TimeEvents(LogRecords(*Log(log), kEventSize), static_cast<std::uint16_t>(startCode), EndCodes(endCodes, count),
                    DaySpan(from, to));
}

int DecodeProgDateTime(long dateTime, int* year, int* month, int* day, int* hour, int* minute, int* second) {
  return DecodeDateTime(dateTime, year, month, day, hour, minute, second, nullptr, nullptr) ? 1 : 0;
}

long EncodeProgDateTime(int year, int month, int day, int hour, int minute, int second) {
  return EncodeDateTime(year, month, day, hour, minute, second);
}

unsigned long Load_Zelvane3x_Log(char const* /*path*/, void** records) {
  if (records != nullptr) *records = nullptr;
  return 0;
}

void Close_Zelvane3x_Log(void** records) {
  if (records == nullptr) return;
  std::free(*records);
  *records = nullptr;
}
