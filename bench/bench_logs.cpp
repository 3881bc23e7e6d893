// The logs beside what the machine does with the same bytes: appending event records against bare system calls, and the
// statistics over a million of them against loops over an array. Files lie in memory.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "zelvane/logs/logclass.h"
#include "zelvane/logs/logreader.h"

namespace {

constexpr size_t kPayload = 64;
constexpr size_t kRecord = 4 + kPayload;
constexpr int kRecords = 1000000;
constexpr std::uint16_t kStart = 7, kEnd = 8;

[[noreturn]] void Different(char const* what) {
  std::fprintf(stderr, "ours and the peer differ: %s\n", what);
  std::exit(1);
}

std::string Scratch(char const* name) { return "/dev/shm/zelvane-bench-" + std::to_string(getpid()) + "-" + name; }

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
  if (file < 0 || write(file, record, kRecord) != static_cast<ssize_t>(kRecord) || close(file) != 0) Different("write");
}

void CheckAppend() {
  std::string const ours = Scratch("ours"), peer = Scratch("peer");
  LogClass log;
  log.SetFile(ours);
  char payload[kPayload];
  for (int i = 0; i < 1000; i++) {
    std::memset(payload, i, sizeof payload);
    if (!log.WriteReg(i, payload, kPayload)) Different("append");
    AppendPeer(peer, i, payload);
  }
  if (ReadAll(ours) != ReadAll(peer)) Different("appended records");
  unlink(ours.c_str());
  unlink(peer.c_str());
}

void OursAppend(benchmark::State& state) {
  CheckAppend();
  std::string const path = Scratch("append");
  char const payload[kPayload] = "mains failed";
  LogClass log;
  log.SetFile(path);
  log.SetMaxLines(UINT32_MAX);
  std::int32_t when = 0;
  for (auto _ : state)
    if (!log.WriteReg(when++, payload, kPayload)) Different("append");
  unlink(path.c_str());
}

void PeerAppend(benchmark::State& state) {
  std::string const path = Scratch("append");
  char const payload[kPayload] = "mains failed";
  std::int32_t when = 0;
  for (auto _ : state) AppendPeer(path, when++, payload);
  unlink(path.c_str());
}

// The same calls with what the log owes its callers on top: how many records there are before and after, and no scratch
// file left of an earlier cut.
void FloorAppend(benchmark::State& state) {
  std::string const path = Scratch("append"), scratch = path + ".tmp";
  char const payload[kPayload] = "mains failed";
  std::int32_t when = 0;
  auto const count = [&] {
    struct stat status = {};
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file >= 0) fstat(file, &status), close(file);
    benchmark::DoNotOptimize(status);
  };
  for (auto _ : state) {
    count();
    AppendPeer(path, when++, payload);
    unlink(scratch.c_str());
    count();
  }
  unlink(path.c_str());
}

// ---- Statistics ----

// A record every minute or so for two years, one in ten with the code that is asked for.
struct Sample {
  std::string bytes;
  void* handle = nullptr;
  std::int32_t first = 0, last = 0;  // the bounds of a span in the middle, on whole days

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
    std::string const path = Scratch("sample");
    std::ofstream(path, std::ios::binary) << bytes;
    handle = LogReaderOpen(path.c_str());
    unlink(path.c_str());
    if (LogReaderRegCount(handle) != kRecords) Different("load");
  }
  ~Sample() { LogReaderClose(handle); }

  static Sample const& Get() {
    static Sample const sample;
    return sample;
  }
};

// No leap day lies in the span, so that a date is in it when its moment is.
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
    if (LogReaderCountEvents(sample.handle, code, sample.first, sample.last) != CountPeer(sample, code))
      Different("counts");
  for (auto _ : state) benchmark::DoNotOptimize(LogReaderCountEvents(sample.handle, kStart, sample.first, sample.last));
}

void PeerCount(benchmark::State& state) {
  Sample const& sample = Sample::Get();
  for (auto _ : state) benchmark::DoNotOptimize(CountPeer(sample, kStart));
}

// Right for logs in order of time that go on beyond the span.
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
  if (LogReaderTimeEvents(sample.handle, kStart, kEnd, -1, sample.first, sample.last) != TimePeer(sample))
    Different("times");
  for (auto _ : state)
    benchmark::DoNotOptimize(LogReaderTimeEvents(sample.handle, kStart, kEnd, -1, sample.first, sample.last));
}

void PeerTime(benchmark::State& state) {
  Sample const& sample = Sample::Get();
  for (auto _ : state) benchmark::DoNotOptimize(TimePeer(sample));
}

BENCHMARK(OursAppend)->Name("append/ours/68");
BENCHMARK(PeerAppend)->Name("append/raw/68");
BENCHMARK(FloorAppend)->Name("append/same-calls/68");
BENCHMARK(OursCount)->Name("count-events/ours/1000000")->Unit(benchmark::kMicrosecond);
BENCHMARK(PeerCount)->Name("count-events/loop/1000000")->Unit(benchmark::kMicrosecond);
BENCHMARK(OursTime)->Name("time-events/ours/1000000")->Unit(benchmark::kMicrosecond);
BENCHMARK(PeerTime)->Name("time-events/loop/1000000")->Unit(benchmark::kMicrosecond);

}  // namespace
