// Text of dates and numbers: written values are read back.
#include <stdexcept>

#include "fuzz.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"

int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
  std::string rest = fuzz::Text(data, size);
  long const time = static_cast<int32_t>(fuzz::Number(rest));
  std::string const text = fuzz::Take(rest, rest.size() / 2);
  try {
    long const read = StrToDateTime(text, rest, -1);
    fuzz::Check(read >= -1 && read <= 2147483647L, "32 bits");
  } catch (std::out_of_range const&) {  // documented: text shorter than its format
  }
  DateTimeToStr(rest, time);
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  bool const valid = DecodeDateTime(time, &year, &month, &day, &hour, &minute, &second, nullptr, nullptr);
  fuzz::Check(valid == (time >= 0), "valid from 0 on");
  if (valid) {
    bool const odd = year % 4 == 0 && (DayOfYear(time) == 60 || (month == 1 && day == 1));
    if (!odd) fuzz::Check(EncodeDateTime(year, month, day, hour, minute, second) == time, "encode(decode(t)) = t");
    if (!odd) fuzz::Check(StrToDateTime(DateTimeToStr(time), "", -1) == time, "read(write(t)) = t");
  }
  fuzz::Check(StrToIntDef(IntToStr(time), 0) == time, "read(write(n)) = n");
  if (time >= 0) fuzz::Check(HexToIntDef(IntToHex(time), 0) == time, "and in hexadecimal");
  fuzz::Check(!StrIsInt(text) || StrIsFloat(text) || text.size() == 1, "an integer is a number");
  StrToFloatDef(text, 0);
  std::vector<std::string> pieces;
  Tokenize(pieces, text, ';');
  std::string joined;
  for (std::string const& piece : pieces) joined += piece + ";";
  fuzz::Check(joined == text || joined == text + ";", "pieces joined");
  fuzz::Check(AnsiUpperCase(AnsiLowerCase(AnsiUpperCase(text))) == AnsiUpperCase(text), "case and back");
  return 0;
}
