// The conversions between text and numbers of strutils.h.
#include <algorithm>
#include <cfloat>
#include <charconv>
#include <climits>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string_view>

#include "zelvane/core/strutils.h"
#include "zelvane/core/strutils_internal.h"

using zelvane::internal::ToInt;
using zelvane::internal::View;

namespace {

// Fills the text of a number: between its sign and its digits.
void Justify(std::string& text, int width, char fill) {
  if (width <= 0 || static_cast<std::size_t>(width) <= text.size()) return;
  text.insert(text.front() == '-' ? 1 : 0, static_cast<std::size_t>(width) - text.size(), fill);
}

// The low 32 bits of a `long` of either width, as a number of their own.
std::int32_t Signed32(long value) { return static_cast<std::int32_t>(value); }
std::uint32_t Unsigned32(unsigned long value) { return static_cast<std::uint32_t>(value); }

template <int kBase, typename Integer>
std::string IntegerText(Integer value) {
  char digits[33];  // a sign, and 32 of them to the base of 2
  return std::string(digits, std::to_chars(digits, digits + sizeof digits, value, kBase).ptr);
}

template <int kBase, typename Integer>
std::string IntegerText(Integer value, int width, char fill) {
  if (width <= 1) return IntegerText<kBase>(value);
  std::string text = IntegerText<kBase>(value);
  Justify(text, width, fill);
  return text;
}

// Digits of a double beyond these are zeros: none has more, not even the smallest ones.
constexpr unsigned int kDoubleDigits = 767;

// "%#.<digits>g", which the standard library offers only at the mercy of the C locale or, through a stream, on a stack
// that many digits overflow. It is put together from the exponent notation.
std::string GeneralText(double value, unsigned int digits) {
  if (digits > INT_MAX) digits = 6;  // a stream sees a negative precision there and falls back to its own default
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
  if (result.size() > sign + 1) result.erase(sign + 1, 1);  // the point, until its place is known
  result.resize(sign + digits, '0');

  if (exponent < -4 || exponent >= static_cast<int>(digits)) {
    return result.insert(sign + 1, 1, '.').append(all.substr(exponentAt));
  }
  if (exponent < 0) return result.insert(sign, "0.000", static_cast<std::size_t>(1 - exponent));
  return result.insert(sign + 1 + static_cast<std::size_t>(exponent), 1, '.');
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }

// The following take something off the front of `text`, if it is there.

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

// What the text of a floating-point number says: digits * 10^exponent, as far as both are small.
struct Decimal {
  std::uint64_t digits = 0;
  int exponent = 0;
  bool valid = false;
  bool small = true;
};

constexpr std::uint64_t kMostDigits = std::uint64_t{1} << 53;  // the integers that a double holds exactly

// Takes the digits off the front of `text` into `decimal`, each worth ten of the next; gives how many there were.
std::size_t TakeDigits(std::string_view& text, Decimal& decimal) {
  return Skip(text, [&decimal](char c) {
    if (!IsDigit(c)) return false;
    if (decimal.digits > kMostDigits / 16) decimal.small = false;
    if (decimal.small) decimal.digits = decimal.digits * 10 + static_cast<unsigned>(c - '0');
    return true;
  });
}

// An exponent of more than three digits is none of a small number.
bool TakeExponent(std::string_view& text, Decimal& decimal) {
  bool const negative = !SkipChar(text, '+') && SkipChar(text, '-');
  int value = 0;
  std::size_t const count = Skip(text, [&value](char c) {
    if (IsDigit(c) && value < 1000) value = value * 10 + (c - '0');
    return IsDigit(c);
  });
  decimal.exponent += negative ? -value : value;
  return count > 0;
}

Decimal ParseFloat(std::string_view text) {
  Decimal decimal;
  SkipSign(text);
  std::size_t count = TakeDigits(text, decimal);
  if (SkipChar(text, '.')) {
    std::size_t const places = TakeDigits(text, decimal);
    count += places;
    decimal.exponent = -static_cast<int>(std::min<std::size_t>(places, 1000));
  }
  decimal.valid = count > 0 && (text.empty() || (SkipChar(text, 'E') && TakeExponent(text, decimal) && text.empty()));
  return decimal;
}

bool IsFloat(std::string_view text) { return ParseFloat(text).valid; }

// from_chars takes digits behind an optional minus sign, and the rest of the text has to be empty.
long ReadHex(std::string_view text, long def) {
  if (SkipChar(text, '-')) return def;
  std::int32_t value = 0;
  char const* const end = text.data() + text.size();
  auto const [stop, error] = std::from_chars(text.data(), end, value, 16);
  return error == std::errc() && stop == end ? value : def;
}

// Powers of ten that a double holds exactly.
constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                              1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMostPower = 22;

double ReadFloat(std::string_view text, double def) {
  Decimal const decimal = ParseFloat(text);
  if (!decimal.valid) return def;
  // Two exact numbers make one correctly rounded quotient or product, unless the machine computes wider than a double.
  if (decimal.small && decimal.exponent >= -kMostPower && decimal.exponent <= kMostPower && FLT_EVAL_METHOD == 0) {
    auto const digits = static_cast<double>(decimal.digits);
    double const value =
        decimal.exponent < 0 ? digits / kPowers[-decimal.exponent] : digits * kPowers[decimal.exponent];
    return text.front() == '-' ? -value : value;
  }
  SkipChar(text, '+');
  double value = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc()) return value;
  // Too large and too small look alike to from_chars; a stream takes the small ones.
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  return stream >> value ? value : def;
}

}  // namespace

// Judged once, at the end: a test and a way out for each digit would take longer than summing it up.
long zelvane::internal::ToInt(std::string_view text, long def) {
  constexpr std::size_t kSafeDigits = 18;  // no number of so many is too large for 64 bits
  bool const negative = !SkipChar(text, '+') && SkipChar(text, '-');
  while (text.size() > kSafeDigits && text.front() == '0') text.remove_prefix(1);
  if (text.empty() || text.size() > kSafeDigits) return def;
  std::uint64_t sum = 0;
  bool digits = true;
  for (char const c : text) {
    auto const digit = static_cast<unsigned>(c - '0');
    digits &= digit <= 9;
    sum = sum * 10 + digit;
  }
  if (!digits) return def;
  auto const value = negative ? -static_cast<std::int64_t>(sum) : static_cast<std::int64_t>(sum);
  return value == static_cast<std::int32_t>(value) ? static_cast<long>(value) : def;
}

std::string IntToStr(long value, int width, char fill) { return IntegerText<10>(Signed32(value), width, fill); }

std::string UIntToStr(unsigned long value, int width, char fill) {
  return IntegerText<10>(Unsigned32(value), width, fill);
}

std::string IntToHex(long value, int width, bool upper, char fill) {
  std::string text = IntegerText<16>(Unsigned32(static_cast<unsigned long>(value)), 0, fill);
  if (upper) text = AnsiUpperCase(text);
  Justify(text, width, fill);
  return text;
}

std::string IntToBin(long value, int width, char fill) {
  return IntegerText<2>(Unsigned32(static_cast<unsigned long>(value)), width, fill);
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
