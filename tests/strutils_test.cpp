// Text and numbers: every byte, splitting against a direct model, numbers against the C library.
#include "zelvane/core/strutils.h"

#include <cfloat>
#include <cmath>
#include <locale>

#include "support/test.h"

namespace {

TEST(TextFunctions, EveryByteInBothForms) {
  for (int b = 0; b < 256; b++) {
    auto const around = [](int c) { return std::string(2, static_cast<char>(c)) + "." + static_cast<char>(c); };
    std::string const text = around(b);
    bool const low = b >= 'a' && b <= 'z';
    bool const up = b >= 'A' && b <= 'Z';
    bool const blank = b == ' ' || b == '\n' || b == '\t' || b == '\r';
    auto const check = [&](auto const& argument) {
      EXPECT_EQ(UpperCase(argument), around(low ? b - 0x20 : b)) << b;
      EXPECT_EQ(LowerCase(argument), around(up ? b + 0x20 : b)) << b;
      EXPECT_EQ(AnsiUpperCase(argument), around(low || (b >= 0xE0 && b <= 0xFE && b != 0xF7) ? b - 0x20 : b)) << b;
      EXPECT_EQ(AnsiLowerCase(argument), around(up || (b >= 0xC0 && b <= 0xDE && b != 0xD7) ? b + 0x20 : b)) << b;
      EXPECT_EQ(TrimLeft(argument), blank ? text.substr(2) : text) << b;
      EXPECT_EQ(TrimRight(argument), blank ? text.substr(0, 3) : text) << b;
      EXPECT_EQ(Trim(argument), blank ? "." : text) << b;
      EXPECT_EQ(QuotedStr(argument), b == '"' ? text : '"' + text + '"') << b;
    };
    check(text);
    if (b != 0) check(text.c_str());
  }
  EXPECT_EACH((Trim(" \n\t\r"), TrimLeft(" "), TrimRight(" "), Trim(" a \t b ")), "", "", "", "a \t b");
  EXPECT_EACH((QuotedStr(""), QuotedStr("\""), QuotedStr("\"a"), QuotedStr("a\"")), "\"\"", "\"", "\"a\"", "\"a\"");
  EXPECT_EACH((UpperCase(test::kNull), LowerCase(test::kNull), AnsiUpperCase(test::kNull), AnsiLowerCase(test::kNull),
               QuotedStr(test::kNull)),
              "");
}

TEST(TextFunctions, FillUpToAWidth) {
  for (auto const& [width, stars] : {std::pair(4, "**"), {3, "*"}, {2, ""}, {INT_MIN, ""}}) {
    std::string const ab = "ab", left = stars + ab, right = ab + stars;
    EXPECT_EACH((FillLeft("ab", width, '*'), FillLeft(ab, width, '*')), left) << width;
    EXPECT_EACH((FillRight("ab", width, '*'), FillRight(ab, width, '*')), right) << width;
  }
  EXPECT_EACH((FillLeft(test::kNull, 3, '*'), FillRight(test::kNull, 3, '*'), FillLeft("", 2, '*')), "", "", "**");
}

// The documented rule, literally: the text loses its front after every token.
test::Names ModelTokenize(std::string rest, test::Names const& separators, unsigned long count) {
  test::Names out;
  while (!rest.empty() && (count == 0 || out.size() < count)) {
    std::string cut;
    for (std::string const& separator : separators)
      if (cut.empty() && rest.find(separator) != std::string::npos) cut = separator;
    out.push_back(rest.substr(0, cut.empty() ? std::string::npos : rest.find(cut)));
    rest.erase(0, out.back().size() + cut.size());
  }
  out.resize(std::max<std::size_t>(out.size(), count));
  return out;
}

TEST(Tokenize, EveryFormLikeTheModel) {
  std::mt19937 random(20041231);
  std::string noise;
  while (noise.size() < 100000) noise += "ab;, \t\xE7"[random() % 7];
  for (int round = 0; round < 20000 && !HasFailure(); round++) {
    std::string const text = noise.substr(random() % 90000, random() % 24);
    test::Names separators(random() % 4);
    for (std::string& separator : separators) separator = noise.substr(random() % 90000, random() % 3);
    unsigned long const count = random() % 6;
    SCOPED_TRACE(text + " by " + testing::PrintToString(separators) + " limit " + std::to_string(count));
    auto const check = [&](auto const& separator) {
      test::Names expected = ModelTokenize(text, separators, count), out = {"old"}, twin;
      Tokenize(out, text, separator, count), Tokenize(twin, text.c_str(), separator, count);
      EXPECT_EACH((out, twin), expected);
      for (std::string& piece : expected) piece = Trim(piece);
      TrimTokenize(out, text, separator, count), TrimTokenize(twin, text.c_str(), separator, count);
      EXPECT_EACH((out, twin), expected);
    };
    check(separators);
    if (separators.size() != 1) continue;
    check(separators[0]), check(separators[0].c_str());
    if (separators[0].size() == 1) check(separators[0][0]);
  }
}

TEST(Tokenize, NullNulSharedArgumentsAndAMillionFields) {
  test::Names out = {"old"};
  EXPECT_EQ((Tokenize(out, test::kNull, ";", ULONG_MAX), out), test::Names());  // must not reserve memory for it
  EXPECT_EQ((Tokenize(out, "a;b", test::kNull), out), test::Names{"a;b"});
  EXPECT_EQ((Tokenize(out, std::string("a\0b;c", 5), '\0'), out), (test::Names{"a", "b;c"}));
  out = {"a text in memory of its own; b"};
  EXPECT_EQ((Tokenize(out, out[0], "; "), out), (test::Names{"a text in memory of its own", "b"}));
  EXPECT_EQ((TrimTokenize(out, "a own b ", out = {"-", "own"}), out), (test::Names{"a", "b"}));
  std::string text;
  for (int i = 0; i < 1000000; i++) text += "x;";
  test::Names separators(50, "=");  // each is searched for once, not once a field
  separators.emplace_back(";");
  EXPECT_TRUE((Tokenize(out, text, separators), out) == test::Names(1000000, "x")) << out.size();
}

TEST(Numbers, IntegersToText) {
  EXPECT_EACH((IntToStr(-5, 4), IntToStr(5, 3, ' '), IntToStr(-5, INT_MIN), IntToStr(INT32_MIN)), "-005", "  5", "-5",
              "-2147483648");
  EXPECT_EACH((UIntToStr(4294967295ul), UIntToStr(static_cast<unsigned long>(-5l), 12, '_')), "4294967295",
              "__4294967291");
  for (std::int64_t power = 1; power <= 10000000000; power *= 10) {  // the first and the last number of each length
    for (std::int64_t const number : {power - 1, power, power + power / 9 * 8}) {
      auto const whole = static_cast<std::int32_t>(number);
      EXPECT_EQ(IntToStr(whole), std::to_string(whole)) << number;
      EXPECT_EQ(IntToStr(-static_cast<long>(whole)), std::to_string(-static_cast<long>(whole))) << number;
      EXPECT_EQ(UIntToStr(static_cast<std::uint32_t>(number)), std::to_string(static_cast<std::uint32_t>(number)))
          << number;
    }
  }
  EXPECT_EACH((IntToHex(0xBEEF, 6, false, 'X'), IntToHex(0xBEEF, 6, true, 'x'), IntToHex(-1)), "XXbeef", "xxBEEF",
              "FFFFFFFF");
  EXPECT_EACH((IntToBin(0), IntToBin(10, 8), IntToBin(-2)), "0", "00001010", std::string(31, '1') + "0");
#if LONG_MAX > 0x7FFFFFFF
  EXPECT_EACH((IntToStr(0x180000000), UIntToStr(0x100000007), IntToHex(0x7FFFFFFF00000001), IntToBin(0x100000002)),
              "-2147483648", "7", "1", "10");
#endif
}

TEST(Numbers, FloatsToTextAsPrintfWritesThem) {
  double const longest = 2.2250738585072009e-308;  // has 767 significant digits, the most that a double can have
  for (double const value : {0.0, -2.5, 99999.95, 0.0001, 0.00009999995, 1e22, 123456789e-200, longest, DBL_MAX,
                             DBL_TRUE_MIN, double{INFINITY}, double{NAN}}) {
    for (int const digits : {0, 1, 6, 17, 766, 767, 768, 1100}) {
      char text[1500];
      snprintf(text, sizeof text, "%#.*g", digits, value);
      EXPECT_EQ(FloatToStr(value, 0, static_cast<unsigned>(digits)), text) << value << " digits " << digits;
    }
  }
  // In the last case printf itself can lose the zeros.
  EXPECT_EACH((FloatToStr(-1e20, 14), FloatToStr(0.25, 9, UINT_MAX, ' '), FloatToStr(999999.5)), "-001.00000e+20",
              " 0.250000", "1.00000e+06");
  EXPECT_EQ(FloatToStr(0.25, 0, 1000000), "0.25" + std::string(999998, '0'));
}

TEST(Numbers, TextToNumbersAsTheCLibraryReadsIt) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
  };
  std::locale const old = std::locale::global(std::locale(std::locale(), new Comma));  // must have no effect
  auto const fits = [](long long value) { return value == static_cast<std::int32_t>(value); };
  for (test::Case const& c : test::Table("core/numbers.txt", "texts")) {
    bool const isInt = strchr(c[1].c_str(), 'i'), isHex = strchr(c[1].c_str(), 'h'),
               isFloat = strchr(c[1].c_str(), 'f');
    long long const integer = strtoll(c[0].c_str(), nullptr, 10), hex = strtoll(c[0].c_str(), nullptr, 16);
    double const real = strtod(c[0].c_str(), nullptr);
    auto const check = [&](auto const& text) {
      EXPECT_EACH((StrIsInt(text), StrIsHex(text), StrIsFloat(text)), isInt, isHex, isFloat) << c;
      EXPECT_FALSE(StrIsIPNumber(text)) << c;
      EXPECT_EQ(StrToIntDef(text, -7), isInt && isFloat && fits(integer) ? integer : -7) << c;
      EXPECT_EQ(HexToIntDef(text, -7), isHex && fits(hex) ? hex : -7) << c;
      EXPECT_EQ(StrToFloatDef(text, -7), isFloat && std::isfinite(real) ? real : -7) << c;
    };
    check(c[0]), check(c[0].c_str());
  }
  std::mt19937_64 random(1);
  for (int round = 0; round < 20000; round++) {  // few and many digits, small and great exponents
    std::string text = std::to_string(random() >> random() % 64);
    if (random() % 2 == 0) text.insert(random() % (text.size() + 1), ".");
    if (random() % 4 == 0) text.insert(0, random() % 30, '0');
    if (random() % 2 == 0) text += "E" + std::to_string(static_cast<int>(random() % 60) - 30);
    if (random() % 2 == 0) text.insert(0, "-");
    double const real = strtod(text.c_str(), nullptr), read = StrToFloatDef(text, -7);
    ASSERT_EACH((read, std::signbit(read)), real, std::signbit(real)) << text;
  }
  for (int const zeros : {989, 1009, 70000}) {  // more than a three-digit exponent can offset
    std::string const text =
        "0." + std::string(static_cast<std::size_t>(zeros), '0') + "1E" + std::to_string(zeros + 1);
    EXPECT_EQ(StrToFloatDef(text, -7), 1) << zeros << " zeros after the point";
  }
  EXPECT_NONE(StrIsInt(test::kNull), StrIsHex(test::kNull), StrIsFloat(test::kNull), StrIsInt(std::string("1\0", 2)));
  EXPECT_EACH((StrToIntDef(test::kNull, 1), HexToIntDef(test::kNull, 2), StrToFloatDef(test::kNull, 4)), 1, 2, 4);
  std::locale::global(old);
}

}  // namespace
