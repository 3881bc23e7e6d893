// The conversions between text and numbers in strutils.h.
#include <endian.h>

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <locale>
#include <sstream>
#include <string_view>

#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::ToInt;
using zelvane::internal::View;

namespace {

// Inserts the fill of a number between its sign and its digits.
void Justify(std::string& text, int width, char fill) {
  if (width <= 0 || static_cast<std::size_t>(width) <= text.size()) return;
  text.insert(text.front() == '-' ? 1 : 0, static_cast<std::size_t>(width) - text.size(), fill);
}

// The low 32 bits of a `long` of either width, as a number.
std::int32_t Signed32(long value) { return static_cast<std::int32_t>(value); }
std::uint32_t Unsigned32(unsigned long value) { return static_cast<std::uint32_t>(value); }

// Returns the eight digits of a number below 10^8, the first one in the lowest byte. One word holds the steps: two
// numbers of four digits, four of two, eight of one. A multiplication and a shift divide all of them at once; a mask
// removes the bits that the shift moves in from the neighbour.
std::uint64_t EightDigits(std::uint32_t value) {
  constexpr std::uint64_t kZeros = 0x3030303030303030;  // "00000000"
  std::uint64_t const fours = value / 10000 | std::uint64_t{value % 10000} << 32;
  std::uint64_t const hundreds = (fours * 10486 >> 20) & 0x0000007f0000007f;  // 10486 / 2^20 is 1/100, closely enough
  std::uint64_t const pairs = hundreds | (fours - 100 * hundreds) << 16;
  std::uint64_t const tens = (pairs * 103 >> 10) & 0x000f000f000f000f;  // 103 / 2^10 is 1/10
  return (tens | (pairs - 10 * tens) << 8) + kZeros;
}

// Returns the number of decimal digits. The number of bits leaves two candidates; a comparison decides.
std::size_t DecimalLength(std::uint32_t value) {
  static constexpr std::uint32_t kPowers[] = {0,      10,      100,      1000,      10000,
                                              100000, 1000000, 10000000, 100000000, 1000000000};
  auto const bits = static_cast<std::size_t>(32 - __builtin_clz(value | 1));
  std::size_t const least = bits * 1233 >> 12;  // bits * log10(2)
  return least + (value >= kPowers[least] ? 1 : 0);
}

// Leading zeros are converted too and then shifted out: the processor cannot predict where a loop over the digits would
// end, and that costs more.
std::string DecimalText(std::uint32_t magnitude, bool negative) {
  constexpr std::uint32_t kEight = 100000000;
  std::size_t const length = DecimalLength(magnitude);
  std::string text("---------------", 15);  // as long as a string can be without memory of its own
  char* at = text.data() + (negative ? 1 : 0);
  std::size_t left = length;
  if (magnitude >= kEight) {
    std::uint32_t const first = magnitude / kEight;
    if (left == 10) *at++ = static_cast<char>('0' + first / 10);
    *at++ = static_cast<char>('0' + first % 10);
    left = 8;
  }
  std::uint64_t const digits = htole64(EightDigits(magnitude % kEight) >> (8 * (8 - left)));
  std::memcpy(at, &digits, sizeof digits);
  text.erase(length + (negative ? 1 : 0));
  return text;
}

std::string DecimalText(std::uint32_t magnitude, bool negative, int width, char fill) {
  std::string text = DecimalText(magnitude, negative);
  Justify(text, width, fill);
  return text;
}

template <int kBase>
std::string IntegerText(std::uint32_t value) {
  char digits[32];
  return std::string(digits, std::to_chars(digits, digits + sizeof digits, value, kBase).ptr);
}

// Digits of a double beyond these are zeros: no double has more, not even the smallest.
constexpr unsigned int kDoubleDigits = 767;

// "%#.<digits>g". In the standard library it depends on the C locale or, through a stream, on a stack that many digits
// overflow. It is assembled from the exponent notation.
std::string GeneralText(double value, unsigned int digits) {
  if (digits > INT_MAX) digits = 6;  // a stream would see a negative precision and use its default
  if (digits == 0) digits = 1;
  char text[kDoubleDigits + 16];
  int const precision = static_cast<int>(std::min(digits, kDoubleDigits)) - 1;
  char* const end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, precision).ptr;
  std::string_view const all(text, static_cast<std::size_t>(end - text));
  std::size_t const exponentAt = all.find('e');
  if (exponentAt == std::string_view::npos) return std::string(all);  // inf, nan

  int exponent = 0;
  char const* const exponentText = text + exponentAt + 1;
  std::from_chars(exponentText + (*exponentText == '+' ? 1 : 0), end, exponent);
  std::string result(all.substr(0, exponentAt));
  std::size_t const sign = result.front() == '-' ? 1 : 0;
  if (result.size() > sign + 1) result.erase(sign + 1, 1);  // the point, until its position is known
  result.resize(sign + digits, '0');

  if (exponent < -4 || exponent >= static_cast<int>(digits)) {
    return result.insert(sign + 1, 1, '.').append(all.substr(exponentAt));
  }
  if (exponent < 0) return result.insert(sign, "0.000", static_cast<std::size_t>(1 - exponent));
  return result.insert(sign + 1 + static_cast<std::size_t>(exponent), 1, '.');
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }

// These functions remove something from the front of `text` if it is there.

bool SkipChar(std::string_view& text, char wanted) {
  if (text.empty() || text.front() != wanted) return false;
  text.remove_prefix(1);
  return true;
}

void SkipSign(std::string_view& text) {
  if (!SkipChar(text, '+')) SkipChar(text, '-');
}

template <typename IsWanted>
std::size_t Skip(std::string_view& text, IsWanted isWanted) {
  std::size_t count = 0;
  while (count < text.size() && isWanted(text[count])) count++;
  text.remove_prefix(count);
  return count;
}

std::size_t SkipDigits(std::string_view& text) {
  return Skip(text, [](char c) { return IsDigit(c); });
}

bool IsInt(std::string_view text) {
  if (text.empty()) return false;
  SkipSign(text);
  SkipDigits(text);
  return text.empty();
}

bool IsHex(std::string_view text) { return Skip(text, IsHexDigit) > 0 && text.empty(); }

bool IsFloat(std::string_view text) {
  SkipSign(text);
  std::size_t digits = SkipDigits(text);
  if (SkipChar(text, '.')) digits += SkipDigits(text);
  if (digits == 0) return false;
  if (!SkipChar(text, 'E')) return text.empty();
  SkipSign(text);
  return SkipDigits(text) > 0 && text.empty();
}

// from_chars of the whole of `text`: anything after the number makes it invalid. It accepts a minus sign, but no plus.
template <typename Number, typename... Base>
std::errc ReadNumber(std::string_view text, Number& value, Base... base) {
  char const* const end = text.data() + text.size();
  auto const [stop, error] = std::from_chars(text.data(), end, value, base...);
  return stop == end ? error : std::errc::invalid_argument;
}

// Removes a plus sign. Returns false if a minus sign follows it.
bool SkipPlus(std::string_view& text) { return !SkipChar(text, '+') || text.empty() || text.front() != '-'; }

long ReadHex(std::string_view text, long def) {
  if (SkipChar(text, '-')) return def;
  std::int32_t value = 0;
  return ReadNumber(text, value, 16) == std::errc() ? value : def;
}

// If the processor computes with more precision than a double, from_chars rounds some numbers twice.
constexpr bool kRoundsTwice = FLT_EVAL_METHOD != 0;

// from_chars has the syntax of StrIsFloat, but also accepts "e", infinities and not-a-numbers.
__attribute__((noinline)) double ReadAnyFloat(std::string_view text, double def) {
  double value = 0;
  if (!SkipPlus(text)) return def;
  std::errc const error = ReadNumber(text, value);
  bool const isFloat = error != std::errc::invalid_argument && text.find('e') == std::string_view::npos;
  if (!isFloat || !std::isfinite(value)) return def;
  if (error == std::errc() && !kRoundsTwice) return value;
  // from_chars does not distinguish too large from too small; a stream converts the small ones.
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  return stream >> value ? value : def;
}

// Appends the digits at the front of the text to those of `value`. Returns where they end.
char const* TakeDigits(char const* at, char const* end, std::uint64_t& value) {
  for (; at != end && IsDigit(*at); at++) value = value * 10 + static_cast<std::uint64_t>(*at - '0');
  return at;
}

// Removes a sign. Returns true if it was a minus.
bool TakeMinus(char const*& at, char const* end) {
  bool const minus = at != end && *at == '-';
  if (minus || (at != end && *at == '+')) at++;
  return minus;
}

// Few digits and a small power of ten, as nearly all numbers in files are: a double holds both exactly, and their one
// product or quotient is rounded as from_chars rounds it.
double ReadFloat(std::string_view text, double def) {
  static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  constexpr std::ptrdiff_t kMostPower = 22;
  constexpr std::ptrdiff_t kMostDigits = 15;  // below 2^53
  char const* const end = text.data() + text.size();
  char const* at = text.data();
  bool const negative = TakeMinus(at, end);

  char const* const first = at;
  std::uint64_t digits = 0;
  at = TakeDigits(at, end, digits);
  std::ptrdiff_t count = at - first, power = 0;
  if (at != end && *at == '.') {
    char const* const fraction = ++at;
    at = TakeDigits(at, end, digits);
    power = fraction - at;
    count -= power;
  }
  if (kRoundsTwice || count == 0 || count > kMostDigits) return ReadAnyFloat(text, def);

  if (at != end) {
    if (*at++ != 'E' || end - at > 3) return ReadAnyFloat(text, def);
    bool const down = TakeMinus(at, end);
    std::uint64_t exponent = 0;
    if (at == end || TakeDigits(at, end, exponent) != end) return ReadAnyFloat(text, def);
    power += down ? -static_cast<std::ptrdiff_t>(exponent) : static_cast<std::ptrdiff_t>(exponent);
  }
  if (power < -kMostPower || power > kMostPower) return ReadAnyFloat(text, def);
  auto const whole = static_cast<double>(digits);
  double const value = power < 0 ? whole / kPowers[-power] : whole * kPowers[power];
  return negative ? -value : value;
}

}  // namespace

long zelvane::internal::ToInt(std::string_view text, long def) {
  std::int64_t value = 0;  // with 64 bits from_chars checks fewer digits for overflow
  if (!SkipPlus(text) || ReadNumber(text, value, 10) != std::errc()) return def;
  return value == static_cast<std::int32_t>(value) ? static_cast<long>(value) : def;
}

std::string IntToStr(long value, int width, char fill) {
  auto const bits = Unsigned32(static_cast<unsigned long>(value));
  bool const negative = Signed32(value) < 0;
  return DecimalText(negative ? 0 - bits : bits, negative, width, fill);
}

std::string UIntToStr(unsigned long value, int width, char fill) {
  return DecimalText(Unsigned32(value), false, width, fill);
}

std::string IntToHex(long value, int width, bool upper, char fill) {
  std::string text = IntegerText<16>(Unsigned32(static_cast<unsigned long>(value)));
  if (upper) text = AnsiUpperCase(text);
  Justify(text, width, fill);
  return text;
}

std::string IntToBin(long value, int width, char fill) {
  std::string text = IntegerText<2>(Unsigned32(static_cast<unsigned long>(value)));
  Justify(text, width, fill);
  return text;
}

std::string FloatToStr(double value, int width, unsigned int digits, char fill) {
  std::string text = GeneralText(value, digits);
  Justify(text, width, fill);
  return text;
}

long StrToIntDef(char const* text, long def) { return ToInt(View(text), def); }
long StrToIntDef(std::string const& text, long def) { return ToInt(text, def); }

long HexToIntDef(char const* text, long def) { return ReadHex(View(text), def); }
long HexToIntDef(std::string const& text, long def) { return ReadHex(text, def); }

double StrToFloatDef(char const* text, double def) { return ReadFloat(View(text), def); }
double StrToFloatDef(std::string const& text, double def) { return ReadFloat(text, def); }

bool StrIsInt(char const* text) { return IsInt(View(text)); }
bool StrIsInt(std::string const& text) { return IsInt(text); }

bool StrIsHex(char const* text) { return IsHex(View(text)); }
bool StrIsHex(std::string const& text) { return IsHex(text); }

bool StrIsFloat(char const* text) { return IsFloat(View(text)); }
bool StrIsFloat(std::string const& text) { return IsFloat(text); }

bool StrIsIPNumber(char const* /*text*/) { return false; }
bool StrIsIPNumber(std::string const& /*text*/) { return false; }
