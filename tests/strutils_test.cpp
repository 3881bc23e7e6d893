// Text and numbers: byte sets, splitting beside a literal model, number text beside classic streams.
#include "zelvane/core/strutils.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

namespace {

using Strings = std::vector<std::string>;

constexpr char const* kNull = nullptr;

// Numbers must come out the same whatever the program has made its locale.
class StrangeLocale {
 public:
  StrangeLocale() : old_(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
  ~StrangeLocale() { std::locale::global(old_); }
  StrangeLocale(StrangeLocale const&) = delete;
  StrangeLocale& operator=(StrangeLocale const&) = delete;

 private:
  struct Punctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  std::locale old_;
};

TEST(Case, EveryByte) {
  for (int b = 0; b < 256; b++) {
    bool const lowAscii = b >= 'a' && b <= 'z';
    bool const upAscii = b >= 'A' && b <= 'Z';
    bool const low = lowAscii || (b >= 0xE0 && b <= 0xF6) || (b >= 0xF8 && b <= 0xFE);
    bool const up = upAscii || (b >= 0xC0 && b <= 0xD6) || (b >= 0xD8 && b <= 0xDE);
    std::string const byte(1, static_cast<char>(b));
    auto const moved = [b](bool move, int by) { return std::string(1, static_cast<char>(move ? b + by : b)); };
    EXPECT_EQ(UpperCase(byte), moved(lowAscii, -0x20)) << b;
    EXPECT_EQ(LowerCase(byte), moved(upAscii, 0x20)) << b;
    EXPECT_EQ(AnsiUpperCase(byte), moved(low, -0x20)) << b;
    EXPECT_EQ(AnsiLowerCase(byte), moved(up, 0x20)) << b;
    EXPECT_EQ(Trim(byte), b == ' ' || b == '\n' || b == '\t' || b == '\r' ? "" : byte) << b;
  }
}

TEST(TextFunctions, BothFormsAndNull) {
  struct {
    std::string (*pointer)(char const*);
    std::string (*string)(std::string const&);
    char const* text;
    char const* result;
  } const rows[] = {{UpperCase, UpperCase, "aZ1\xE7", "AZ1\xE7"},
                    {LowerCase, LowerCase, "aZ1\xC7", "az1\xC7"},
                    {AnsiUpperCase, AnsiUpperCase, "a\xE7\xF7\xFF", "A\xC7\xF7\xFF"},
                    {AnsiLowerCase, AnsiLowerCase, "A\xC7\xD7\xDF", "a\xE7\xD7\xDF"},
                    {Trim, Trim, "\r\n\t a \t b \n", "a \t b"},
                    {Trim, Trim, " \n\t\r", ""},
                    {Trim, Trim, "\fa\v", "\fa\v"},
                    {TrimLeft, TrimLeft, " \r\n\ta ", "a "},
                    {TrimLeft, TrimLeft, "  ", ""},
                    {TrimRight, TrimRight, " a\r\n\t ", " a"},
                    {TrimRight, TrimRight, "  ", ""},
                    {QuotedStr, QuotedStr, "", "\"\""},
                    {QuotedStr, QuotedStr, "\"", "\""},
                    {QuotedStr, QuotedStr, "\"a", "\"a\""},
                    {QuotedStr, QuotedStr, "a\"", "\"a\""},
                    {QuotedStr, QuotedStr, "a\"b", "\"a\"b\""}};
  for (auto const& row : rows) {
    EXPECT_EQ(row.pointer(row.text), row.result) << row.text;
    EXPECT_EQ(row.string(row.text), row.result) << row.text;
    EXPECT_EQ(row.pointer(nullptr), "") << row.text;
  }
  EXPECT_EQ(UpperCase(std::string("a\0b", 3)), std::string("A\0B", 3));
  EXPECT_EQ(Trim(std::string(" a\0b ", 5)), std::string("a\0b", 3));
}

TEST(Fill, Widths) {
  struct {
    char const* text;
    int width;
    char const* left;
    char const* right;
  } const rows[] = {{"ab", 4, "**ab", "ab**"}, {"ab", 3, "*ab", "ab*"}, {"ab", 2, "ab", "ab"},
                    {"ab", 1, "ab", "ab"},     {"", 2, "**", "**"},     {"ab", INT_MIN, "ab", "ab"}};
  for (auto const& row : rows) {
    EXPECT_EQ(FillLeft(row.text, row.width, '*'), row.left) << row.text << " to " << row.width;
    EXPECT_EQ(FillRight(row.text, row.width, '*'), row.right) << row.text << " to " << row.width;
    EXPECT_EQ(FillLeft(std::string(row.text), row.width, '*'), row.left) << row.text << " to " << row.width;
    EXPECT_EQ(FillRight(std::string(row.text), row.width, '*'), row.right) << row.text << " to " << row.width;
  }
  EXPECT_EQ(FillLeft(kNull, 3, '*') + FillRight(kNull, 3, '*'), "");
}

// Every piece with a "|" behind it.
std::string Show(Strings const& pieces) {
  std::string text;
  for (std::string const& piece : pieces) text += piece + "|";
  return text;
}

TEST(Tokenize, PiecesAndLimits) {
  struct {
    char const* text;
    Strings separators;
    unsigned long count;
    char const* pieces;
    char const* trimmed = pieces;
  } const rows[] = {{"", {";"}, 0, ""},
                    {"", {";"}, 3, "|||"},
                    {";", {";"}, 0, "|"},
                    {"a;;b", {";"}, 0, "a||b|"},
                    {"a;b;", {";"}, 0, "a|b|"},
                    {"a;b;", {";"}, 3, "a|b||"},
                    {";a", {";"}, 0, "|a|"},
                    {"a;b;c;d", {";"}, 1, "a|"},
                    {"a;b;c;d", {";"}, 2, "a|b|"},
                    {"a;b;c;d", {";"}, 4, "a|b|c|d|"},
                    {"a;b;c;d", {";"}, 5, "a|b|c|d||"},
                    {"a,b;c,d", {";", ","}, 0, "a,b|c|d|"},
                    {"a,b;c,d", {",", ";"}, 0, "a|b;c|d|"},
                    {"aaa", {"aa"}, 0, "|a|"},
                    {"a;b", {}, 0, "a;b|"},
                    {"a;b", {""}, 2, "a;b||"},
                    {"a;b", {"", ";"}, 0, "a|b|"},
                    {" a ; \t;b\f", {";"}, 0, " a | \t|b\f|", "a||b\f|"},
                    {"a b", {" "}, 0, "a|b|"}};
  for (auto const& row : rows) {
    SCOPED_TRACE(std::string(row.text) + " by " + Show(row.separators) + " limit " + std::to_string(row.count));
    auto const check = [&row](auto const& text, auto const& separators) {
      Strings out = {"old"};
      Tokenize(out, text, separators, row.count);
      EXPECT_EQ(Show(out), row.pieces);
      TrimTokenize(out, text, separators, row.count);
      EXPECT_EQ(Show(out), row.trimmed);
    };
    auto const checkBoth = [&](auto const& separators) {
      check(row.text, separators);
      check(std::string(row.text), separators);
    };
    checkBoth(row.separators);
    if (row.separators.size() != 1) continue;
    checkBoth(row.separators[0]);
    checkBoth(row.separators[0].c_str());
    if (row.separators[0].size() == 1) checkBoth(row.separators[0][0]);
  }
}

TEST(Tokenize, NullNulAndSharedArguments) {
  Strings out = {"old"};
  Tokenize(out, kNull, ";", ULONG_MAX);  // nothing may be reserved for it
  EXPECT_EQ(Show(out), "");
  out = {"old"};
  TrimTokenize(out, kNull, Strings{";"}, 2);
  EXPECT_EQ(Show(out), "");
  Tokenize(out, "a;b", kNull);
  EXPECT_EQ(Show(out), "a;b|");
  Tokenize(out, std::string("a\0b;c", 5), '\0');
  EXPECT_EQ(Show(out), "a|b;c|");
  out = {"a;b c", ";"};
  Tokenize(out, out[0], out[1]);
  EXPECT_EQ(Show(out), "a|b c|");
  out = {" ", ";"};
  TrimTokenize(out, "a;b c", out);
  EXPECT_EQ(Show(out), "a;b|c|");
}

// The rule as it reads, with the front of the text cut off after every piece.
Strings ModelTokenize(std::string rest, Strings const& separators, unsigned long count) {
  Strings out;
  while (!rest.empty()) {
    std::size_t used = 0;
    while (used < separators.size() && rest.find(separators[used]) == std::string::npos) used++;
    if (used == separators.size() || (count != 0 && out.size() == count)) {
      if (count == 0 || out.size() < count) out.push_back(rest);
      break;
    }
    out.push_back(rest.substr(0, rest.find(separators[used])));
    rest.erase(0, rest.find(separators[used]) + separators[used].size());
  }
  while (out.size() < count) out.emplace_back();
  return out;
}

TEST(Tokenize, LikeTheModel) {
  std::mt19937 random(20041231);
  auto const text = [&random](std::size_t length) {
    std::string result;
    while (result.size() < length) result += "ab;,\xE7"[random() % 5];
    return result;
  };
  for (int round = 0; round < 20000; round++) {
    std::string const whole = text(random() % 24);
    Strings separators(random() % 4);
    for (std::string& separator : separators) separator = text(1 + random() % 2);
    unsigned long const count = random() % 6;
    Strings out;
    Tokenize(out, whole, separators, count);
    ASSERT_EQ(out, ModelTokenize(whole, separators, count))
        << whole << " by " << Show(separators) << " limit " << count;
  }
}

TEST(Tokenize, AMillionFieldsAndManySeparators) {
  std::string text;
  for (int i = 0; i < 1000000; i++) text += "x;";
  Strings separators(50, "=");
  separators.emplace_back(";");
  Strings out;
  Tokenize(out, text, separators);
  EXPECT_TRUE(out == Strings(1000000, "x")) << out.size();
}

TEST(NumbersToText, Integers) {
  std::pair<std::string, std::string> const rows[] = {
    {IntToStr(0), "0"},
    {IntToStr(-5, 4), "-005"},
    {IntToStr(-5, 4, ' '), "-  5"},
    {IntToStr(-5, 2), "-5"},
    {IntToStr(12345, 3), "12345"},
    {IntToStr(-7, INT_MIN), "-7"},
    {IntToStr(INT32_MIN), "-2147483648"},
    {UIntToStr(4294967295ul), "4294967295"},
    {UIntToStr(static_cast<unsigned long>(-5l), 12, '_'), "__4294967291"},
    {IntToHex(0), "0"},
    {IntToHex(0xBEEF), "BEEF"},
    {IntToHex(0xBEEF, 6, false, 'X'), "XXbeef"},
    {IntToHex(0xBEEF, 6, true, 'x'), "xxBEEF"},
    {IntToHex(-1), "FFFFFFFF"},
    {IntToBin(0), "0"},
    {IntToBin(10, 8), "00001010"},
    {IntToBin(-2), "11111111111111111111111111111110"},
#if LONG_MAX > 0x7FFFFFFF
    {IntToStr(0x180000000), "-2147483648"},
    {UIntToStr(0x100000007), "7"},
    {IntToHex(0x7FFFFFFF00000001), "1"},
    {IntToBin(0x100000002), "10"},
#endif
  };
  for (auto const& [text, expected] : rows) EXPECT_EQ(text, expected);
}

std::string StreamText(double value, int width, unsigned int digits, char fill) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << std::showpoint << std::internal << std::setprecision(static_cast<int>(digits)) << std::setw(width)
         << std::setfill(fill) << value;
  return stream.str();
}

TEST(NumbersToText, FloatsAsAClassicStreamWritesThem) {
  StrangeLocale const locale;
  EXPECT_EQ(FloatToStr(1.5, 0, 6, ' '), "1.50000");
  EXPECT_EQ(FloatToStr(-1e20, 14), "-001.00000e+20");
  EXPECT_EQ(FloatToStr(0.25, 0, UINT_MAX), "0.250000");
  EXPECT_EQ(FloatToStr(0.25, 0, 1000000), "0.25" + std::string(999998, '0'));

  using Limits = std::numeric_limits<double>;
  double const longest = 2.2250738585072009e-308;  // has all the 767 significant digits that a double can have
  std::vector<double> values = {0.0,
                                9.5,
                                0.5,
                                99999.95,
                                999999.5,
                                0.0001,
                                0.00009999995,
                                Limits::max(),
                                Limits::min(),
                                1e22,
                                2.5,
                                longest,
                                Limits::denorm_min(),
                                Limits::infinity(),
                                Limits::quiet_NaN()};
  for (unsigned int const digits : {0u, 1u, 766u, 767u, 768u, 1100u}) {
    for (double const value : values) {
      EXPECT_EQ(FloatToStr(value, 9, digits), StreamText(value, 9, digits, '0')) << value << " digits " << digits;
    }
  }
  std::mt19937_64 random(1999);
  for (int i = 0; i < 40000; i++) {
    std::uint64_t const bits = random();
    double value = static_cast<double>(static_cast<std::int64_t>(bits) >> (bits % 64)) / 1000;
    if (i % 2 == 0) std::memcpy(&value, &bits, sizeof value);
    auto const digits = static_cast<unsigned int>(random() % 24);
    int const width = static_cast<int>(random() % 30);
    ASSERT_EQ(FloatToStr(value, width, digits, '_'), StreamText(value, width, digits, '_'))
        << std::hexfloat << value << " width " << width << " digits " << digits;
  }
}

// What `text` reads as in a classic stream, once the syntax test has let it pass.
template <typename Value>
Value StreamValue(bool passed, std::string const& text, Value def, std::ios_base& (*base)(std::ios_base&)) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  Value value = 0;
  return passed && stream >> base >> value ? value : def;
}

void ExpectStreamValues(std::string const& text) {
  EXPECT_EQ(StrToIntDef(text, -77), StreamValue<std::int32_t>(StrIsInt(text), text, -77, std::dec)) << text;
  EXPECT_EQ(HexToIntDef(text, -77), StreamValue<std::int32_t>(StrIsHex(text), text, -77, std::hex)) << text;
  EXPECT_EQ(StrToFloatDef(text, -77), StreamValue<double>(StrIsFloat(text), text, -77, std::dec)) << text;
  EXPECT_EQ(StrToIntDef(text.c_str(), -77), StrToIntDef(text, -77)) << text;
  EXPECT_EQ(HexToIntDef(text.c_str(), -77), HexToIntDef(text, -77)) << text;
  EXPECT_EQ(StrToFloatDef(text.c_str(), -77), StrToFloatDef(text, -77)) << text;
}

TEST(TextToNumbers, Syntax) {
  // The tests passed: i(nteger), h(exadecimal), f(loat).
  std::pair<char const*, char const*> const rows[] = {
      {"0", "ihf"},  {"+5", "if"},    {"-12", "if"},  {"-", "i"},     {"+", "i"},    {"+-5", ""}, {"--5", ""},
      {"5-", ""},    {"12a", "h"},    {" 1", ""},     {"1 ", ""},     {"0x10", ""},  {"-A", ""},  {"g", ""},
      {"aF09", "h"}, {"1.5", "f"},    {"1.", "f"},    {"-.5", "f"},   {".", ""},     {"+.", ""},  {"1.2.3", ""},
      {"1,5", ""},   {"1E2", "hf"},   {"1.E+2", "f"}, {"15E-1", "f"}, {"1e2", "h"},  {"E2", "h"}, {".E2", ""},
      {"1E", "h"},   {"1E+", ""},     {"1E2.5", ""},  {"1E2E3", "h"}, {"1E2-3", ""}, {"1-2", ""}, {"inf", ""},
      {"\xB2", ""},  {"1E999", "hf"}, {"", ""},       {nullptr, ""}};
  for (auto const& [text, passed] : rows) {
    SCOPED_TRACE(text == nullptr ? "null" : text);
    auto const tests = [](auto const& argument) {
      return std::string(StrIsInt(argument) ? "i" : "") + (StrIsHex(argument) ? "h" : "") +
             (StrIsFloat(argument) ? "f" : "") + (StrIsIPNumber(argument) ? "address" : "");
    };
    EXPECT_EQ(tests(text), passed);
    EXPECT_EQ(tests(std::string(text == nullptr ? "" : text)), passed);
  }
  EXPECT_FALSE(StrIsInt(std::string("1\0", 2)) || StrIsHex(std::string("1\0", 2)) || StrIsFloat(std::string("1\0", 2)));
  EXPECT_FALSE(StrIsIPNumber("10.0.0.1") || StrIsIPNumber(std::string("10.0.0.1")));
}

TEST(TextToNumbers, Values) {
  StrangeLocale const locale;
  constexpr long kDef = -7;
  struct {
    char const* text;
    long integer;
    long hex;
    double number;
  } const rows[] = {{nullptr, kDef, kDef, kDef},
                    {"", kDef, kDef, kDef},
                    {"-", kDef, kDef, kDef},
                    {"+5", 5, kDef, 5},
                    {"12a", kDef, 0x12A, kDef},
                    {"00000000000000000012", 12, 18, 12},
                    {"2147483647", 2147483647, kDef, 2147483647},
                    {"2147483648", kDef, kDef, 2147483648.0},
                    {"-2147483648", INT32_MIN, kDef, -2147483648.0},
                    {"-2147483649", kDef, kDef, -2147483649.0},
                    {"7fFFffff", kDef, 2147483647, kDef},
                    {"80000000", 80000000, kDef, 80000000},
                    {"FFFFFFFF", kDef, kDef, kDef},
                    {"-12.5E+1", kDef, kDef, -125},
                    {"1E999", kDef, 0x1E999, kDef},
                    {"1E-999", kDef, kDef, 0},
                    {"1E-310", kDef, kDef, 1e-310}};
  for (auto const& row : rows) {
    SCOPED_TRACE(row.text == nullptr ? "null" : row.text);
    EXPECT_EQ(StrToIntDef(row.text, kDef), row.integer);
    EXPECT_EQ(HexToIntDef(row.text, kDef), row.hex);
    EXPECT_EQ(StrToFloatDef(row.text, kDef), row.number);
  }
}

TEST(TextToNumbers, AsAClassicStreamReadsThem) {
  std::mt19937 random(2038);
  std::string const alphabet = "0123456789019283745601+-.EEaAfF";
  for (int round = 0; round < 50000 && !HasFailure(); round++) {
    std::string text;
    for (auto length = 1 + random() % 14; length > 0; length--) text += alphabet[random() % alphabet.size()];
    ExpectStreamValues(text);
    // Around the limits of 32 bits and of a double.
    ExpectStreamValues((round % 2 ? "-" : "+") + std::to_string(2147483000ll + static_cast<int>(random() % 2000)));
    ExpectStreamValues(std::to_string(random()) + "E" + std::to_string(static_cast<int>(random() % 800) - 400));
  }
}

}  // namespace
