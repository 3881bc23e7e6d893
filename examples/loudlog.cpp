// A log that prints each event. It replaces one virtual hook of LogClass; the other operations call this hook.
//
//   loudlog FILE      appends four events of a power cut, and keeps the newest three
#include <zelvane/zelvane.h>

#include <array>
#include <iostream>

namespace {

using Event = std::array<unsigned char, 64>;  // the code, little-endian, then the program's own bytes

class LoudLog : public LogClass {
 public:
  using LogClass::WriteReg;
  bool WriteReg(long when, void const* data, unsigned long size) override {
    bool const written = LogClass::WriteReg(when, data, size);
    Event const& event = *static_cast<Event const*>(data);
    std::cout << DateTimeToStr(when) << "  event " << event[0] + 256 * event[1] << (written ? "" : "  NOT WRITTEN")
              << '\n';
    return written;
  }
};

Event MakeEvent(unsigned short code) {
  return Event{static_cast<unsigned char>(code & 0xFF), static_cast<unsigned char>(code >> 8)};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  LoudLog log;
  log.SetFile(argv[1]);
  long when = EncodeDateTime(2026, 3, 7, 22, 30, 0);
  for (unsigned short const code : {300, 301, 300}) {
    if (!log.WriteReg(when, MakeEvent(code).data(), sizeof(Event))) return 1;
    when += 90;
  }
  log.SetMaxLines(3);
  if (!log.WriteReg(when, MakeEvent(302).data(), sizeof(Event))) return 1;
  std::cout << log.GetFileRegCount(sizeof(Event)) << " records are left in the log.\n";
}
