// A schedule: sorted, without past entries, and unchanged after a save and a load.
#include "fuzz.h"
#include "zelvane/core/datetime.h"
#include "zelvane/logs/proglist.h"

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  static fuzz::File const disk;
  std::string rest = fuzz::Text(data, size);
  reg_proglist entry = {static_cast<int32_t>(fuzz::Number(rest))};
  disk.Write(rest);
  void* const list = OpenProgList(disk.Path().c_str());
  fuzz::Check(list != nullptr && AddProgListReg(list, &entry) == 1, "an entry is added");
  unsigned long const count = GetProgListRegCount(list);
  long const now = GetDateTime();
  fuzz::Check(count <= rest.size() / 4 + 1, "no entries of its own");
  long last = 0;
  for (unsigned long i = 0; i < count; i++) {
    reg_proglist each = {0};
    fuzz::Check(GetProgListRegByIndex(list, static_cast<long>(i), &each) == 1, "every one is there");
    fuzz::Check(each.dateTime >= last && each.dateTime >= now - 5, "in order, none of the past");
    last = each.dateTime;
  }
  fuzz::Check(CloseProgList(list) == 1, "saved");
  std::string const saved = disk.Read();
  fuzz::Check(saved.size() % 4 == 0 && saved.size() <= 4 * count, "entries x 4 = length");
  void* const again = OpenProgList(disk.Path().c_str());
  fuzz::Check(CloseProgList(again) == 1, "saved again");
  std::string const twice = disk.Read();
  fuzz::Check(twice.size() <= saved.size() && saved.compare(saved.size() - twice.size(), twice.size(), twice) == 0,
              "load, save, load");
  return 0;
}
