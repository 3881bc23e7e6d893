// Compares the logs with the minimum work on the same bytes: appending event records with bare system calls, and the
// statistics over a million of them with loops over an array. Files are in memory.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "bench.h"
#include "zelvane/logs/logclass.h"
#include "zelvane/logs/logreader.h"

namespace {

constexpr size_t kPayload = 64;
constexpr size_t kRecord = 4 + kPayload;
constexpr int kRecords = 1000000;
constexpr std::uint16_t kStart = 7, kEnd = 8;

std::string ReadAll(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// ---- Appending ----

void AppendPeer(std::string const& path, std::int32_t when, char const* payload) {
  char record[kRecord];
  std::memcpy(record, &when, 4);
  std::memcpy(record + 4, payload, kPayload);
  int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  Require(file >= 0 && write(file, record, kRecord) == static_cast<ssize_t>(kRecord) && close(file) == 0, "write");
}

void CheckAppend() {
  ScratchFile const ours("ours"), peer("peer");
  LogClass log;
  log.SetFile(ours.Path());
  char payload[kPayload];
  for (int i = 0; i < 1000; i++) {
    std::memset(payload, i, sizeof payload);
    Require(log.WriteReg(i, payload, kPayload), "append");
    AppendPeer(peer.Path(), i, payload);
  }
  Require(ReadAll(ours.Path()) == ReadAll(peer.Path()), "appended records");
}

void OursAppend(benchmark::State& state) {
  CheckAppend();
  ScratchFile const file("append");
  std::string const& path = file.Path();
  char const payload[kPayload] = "mains failed";
  LogClass log;
  log.SetFile(path);
  log.SetMaxLines(UINT32_MAX);
  std::int32_t when = 0;
  for (auto _ : state) Require(log.WriteReg(when++, payload, kPayload), "append");
}

void PeerAppend(benchmark::State& state) {
  ScratchFile const file("append");
  std::string const& path = file.Path();
  char const payload[kPayload] = "mains failed";
  std::int32_t when = 0;
  for (auto _ : state) AppendPeer(path, when++, payload);
}

// The lower bound for a log with the same guarantees: the same calls, plus those that count the records before and
// after, look for the scratch file of an earlier cut, examine the file (a new one needs a synced name) and sync the
// record.
void LowerBoundAppend(benchmark::State& state) {
  ScratchFile const log("append");
  std::string const &path = log.Path(), scratch = path + ".tmp";
  char const payload[kPayload] = "mains failed";
  std::int32_t when = 0;
  auto const count = [&] {
    struct stat status = {};
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file >= 0) fstat(file, &status), close(file);
    benchmark::DoNotOptimize(status);
  };
  for (auto _ : state) {
    struct stat status = {};
    lstat(scratch.c_str(), &status);
    count();
    char record[kRecord];
    std::memcpy(record, &when, 4);
    std::memcpy(record + 4, payload, kPayload);
    when++;
    int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    fstat(file, &status);
    Require(file >= 0 && write(file, record, kRecord) == static_cast<ssize_t>(kRecord), "write");
    count();
    Require(fdatasync(file) == 0 && close(file) == 0, "sync");
  }
}

// ---- Reading ----

constexpr unsigned long kReads = 1000;

void FillLog(std::string const& path, int records) {
  std::ofstream out(path, std::ios::binary);
  for (std::int32_t i = 0; i < records; i++) {
    char record[kRecord] = {};
    std::memcpy(record, &i, 4);
    record[4] = static_cast<char>(i);
    out.write(record, kRecord);
  }
}

void OursOpen(benchmark::State& state) {
  ScratchFile const file("open");
  FillLog(file.Path(), static_cast<int>(state.range(0)));
  LogClass log;
  log.SetFile(file.Path());
  for (auto _ : state) {
    Require(log.LoadFile(kPayload) == static_cast<unsigned long>(state.range(0)), "load");
    log.UnloadFile();
  }
}

void LowerBoundOpen(benchmark::State& state) {
  ScratchFile const scratch("open");
  FillLog(scratch.Path(), static_cast<int>(state.range(0)));
  for (auto _ : state) {
    int const file = open(scratch.Path().c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    fstat(file, &status);
    void* const bytes = std::malloc(static_cast<std::size_t>(status.st_size));
    Require(read(file, bytes, static_cast<std::size_t>(status.st_size)) == status.st_size, "read");
    close(file);
    std::free(bytes);
  }
}

// Each call asks for the length of the file, then opens it again and reads one record. The log must do both for every
// record, because another program can cut the file at any time.
void OursReadByIndex(benchmark::State& state) {
  ScratchFile const file("read");
  FillLog(file.Path(), 10000);
  LogClass log;
  log.SetFile(file.Path());
  char payload[kPayload];
  for (auto _ : state)
    for (unsigned long i = 0; i < kReads; i++) {
      long when = 0;
      Require(log.ReadFileReg(i * 7 % 10000, &when, payload, kPayload) && when == static_cast<long>(i * 7 % 10000),
              "record");
    }
}

void LowerBoundReadByIndex(benchmark::State& state) {
  ScratchFile const scratch("read");
  FillLog(scratch.Path(), 10000);
  char record[kRecord];
  for (auto _ : state)
    for (unsigned long i = 0; i < kReads; i++) {
      struct stat status = {};
      int const file = open(scratch.Path().c_str(), O_RDONLY | O_CLOEXEC);
      fstat(file, &status);
      Require(pread(file, record, kRecord, static_cast<off_t>(i * 7 % 10000 * kRecord)) == kRecord, "record");
      close(file);
      benchmark::DoNotOptimize(record);
    }
}

// ---- Statistics ----

// A record about every minute for two years; one in ten has the code that is counted.
struct Sample {
  std::string bytes;
  void* handle = nullptr;
  std::int32_t first = 0, last = 0;  // the bounds of a span of whole days in the middle

  Sample() {
    std::mt19937 random(1);
    bytes.reserve(kRecord * kRecords);
    std::int32_t when = 1100000000;
    for (int i = 0; i < kRecords; i++) {
      char record[kRecord] = {};
      auto const code = static_cast<std::uint16_t>(random() % 10);
      std::memcpy(record, &when, 4);
      std::memcpy(record + 4, &code, 2);
      bytes.append(record, kRecord);
      when += static_cast<std::int32_t>(random() % 120);
    }
    first = static_cast<std::int32_t>(EncodeProgDateTime(2005, 3, 1, 0, 0, 0));
    last = static_cast<std::int32_t>(EncodeProgDateTime(2006, 3, 1, 23, 59, 59));
    ScratchFile const file("sample");
    std::string const& path = file.Path();
    std::ofstream(path, std::ios::binary) << bytes;
    handle = LogReaderOpen(path.c_str());
    Require(LogReaderRegCount(handle) == kRecords, "load");
  }
  ~Sample() { LogReaderClose(handle); }

  static Sample const& Get() {
    static Sample const sample;
    return sample;
  }
};

// The span has no leap day, so a date is in it if its time stamp is.
unsigned long CountPeer(Sample const& sample, std::uint16_t code) {
  unsigned long count = 0;
  char const* const end = sample.bytes.data() + sample.bytes.size();
  for (char const* record = sample.bytes.data(); record != end; record += kRecord) {
    std::int32_t when;
    std::uint16_t found;
    std::memcpy(&when, record, 4);
    std::memcpy(&found, record + 4, 2);
    if (found == code && when >= sample.first && when <= sample.last) count++;
  }
  return count;
}

void OursCount(benchmark::State& state) {
  Sample const& sample = Sample::Get();
  for (std::uint16_t code = 0; code < 11; code++)
    Require(LogReaderCountEvents(sample.handle, code, sample.first, sample.last) == CountPeer(sample, code), "counts");
  for (auto _ : state) benchmark::DoNotOptimize(LogReaderCountEvents(sample.handle, kStart, sample.first, sample.last));
}

void PeerCount(benchmark::State& state) {
  Sample const& sample = Sample::Get();
  for (auto _ : state) benchmark::DoNotOptimize(CountPeer(sample, kStart));
}

// Correct for logs in chronological order that continue after the span.
long TimePeer(Sample const& sample) {
  long total = 0;
  std::int32_t begun = -1;
  bool cut = false;
  char const* const end = sample.bytes.data() + sample.bytes.size();
  for (char const* record = sample.bytes.data(); record != end; record += kRecord) {
    std::int32_t when;
    std::uint16_t code;
    std::memcpy(&when, record, 4);
    std::memcpy(&code, record + 4, 2);
    if (when > sample.last) return begun < 0 ? total : total + sample.last - begun;
    if (begun < 0 && code == kStart) begun = when;
    if (begun < 0) continue;
    if (!cut && when >= sample.first) {
      begun = when;
      cut = true;
    }
    if (code != kEnd) continue;
    if (when >= sample.first) total += when - begun;
    begun = -1;
  }
  return total;
}

void OursTime(benchmark::State& state) {
  Sample const& sample = Sample::Get();
  Require(LogReaderTimeEvents(sample.handle, kStart, kEnd, -1, sample.first, sample.last) == TimePeer(sample), "times");
  for (auto _ : state)
    benchmark::DoNotOptimize(LogReaderTimeEvents(sample.handle, kStart, kEnd, -1, sample.first, sample.last));
}

void PeerTime(benchmark::State& state) {
  Sample const& sample = Sample::Get();
  for (auto _ : state) benchmark::DoNotOptimize(TimePeer(sample));
}

BENCHMARK(OursAppend)->Name("log-append/ours/68");
BENCHMARK(PeerAppend)->Name("log-append/bare/68");
BENCHMARK(LowerBoundAppend)->Name("log-append/lower-bound/68");
BENCHMARK(OursOpen)->Name("log-open/ours")->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(LowerBoundOpen)->Name("log-open/lower-bound")->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(OursReadByIndex)->Name("log-read-by-index/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK(LowerBoundReadByIndex)->Name("log-read-by-index/lower-bound")->Unit(benchmark::kMicrosecond);
BENCHMARK(OursCount)->Name("count-events/ours/1000000")->Unit(benchmark::kMicrosecond);
BENCHMARK(PeerCount)->Name("count-events/lower-bound/1000000")->Unit(benchmark::kMicrosecond);
BENCHMARK(OursTime)->Name("time-events/ours/1000000")->Unit(benchmark::kMicrosecond);
BENCHMARK(PeerTime)->Name("time-events/lower-bound/1000000")->Unit(benchmark::kMicrosecond);

}  // namespace
