// A record log and its statistics: records x size = length, both ways of reading agree, no count exceeds the number of
// records.
#include "fuzz.h"
#include "zelvane/logs/logclass.h"
#include "zelvane/logs/logreader.h"

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  static fuzz::File const disk;
  std::string rest = fuzz::Text(data, size);
  unsigned long const payload = fuzz::Number(rest) % 100;
  long const from = static_cast<int32_t>(fuzz::Number(rest)), to = static_cast<int32_t>(fuzz::Number(rest));
  uint32_t const codes = fuzz::Number(rest);
  disk.Write(rest);
  unlink((disk.Path() + ".bad").c_str());

  LogClass log;
  log.SetFile(disk.Path());
  unsigned long const count = log.LoadFile(payload);
  fuzz::Check(count == (rest.size() % (payload + 4) == 0 ? rest.size() / (payload + 4) : 0), "records x size = length");
  char one[100] = {}, other[100] = {};
  long when = 0, alsoWhen = 0;
  for (unsigned long i = 0; i < count; i++) {
    fuzz::Check(log.ReadReg(i, &when, one, payload) && log.ReadFileReg(i, &alsoWhen, other, payload), "each is read");
    fuzz::Check(when == alsoWhen && std::string(one, payload) == std::string(other, payload), "the same in both ways");
  }
  fuzz::Check(!log.ReadReg(count, &when, one, payload), "and no more");

  void* const reader = LogReaderOpen(disk.Path().c_str());
  unsigned long const events = LogReaderRegCount(reader);
  auto const code = static_cast<uint16_t>(codes);
  fuzz::Check(LogReaderCountEvents(reader, code, from, to) <= events, "no more events than records");
  auto const start = static_cast<int16_t>(codes), end = static_cast<int16_t>(codes >> 16);
  short const ends[] = {end, -1};
  fuzz::Check(
      LogReaderTimeEvents(reader, start, end, -1, from, to) == LogReaderTimeEvents2(reader, start, ends, 2, from, to),
      "two end codes as a list of two");
  LogReaderClose(reader);

  log.SetMaxLines(codes % 5 + 1);
  fuzz::Check(log.WriteReg(77, one, payload), "a record is appended");
  unsigned long const now = log.GetFileRegCount(payload);
  fuzz::Check(now >= 1 && now <= codes % 5 + 1 && log.ReadFileReg(now - 1, &when, other, payload) && when == 77,
              "last, and within the bound");
  return 0;
}
