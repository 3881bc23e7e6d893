// Compares the core module and Base64 with the usual alternatives: Abseil, fmt, fast_float, the `date` library,
// OpenSSL, GLib, and the C and C++ libraries.
#include <absl/strings/ascii.h>
#include <absl/strings/escaping.h>
#include <absl/strings/str_split.h>
#include <date/date.h>
#include <fast_float/fast_float.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <glib.h>
#include <openssl/evp.h>
#include <time.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench.h"
#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"
#include "zelvane/crypto/base64.h"

namespace {

// ---- Base64 of 1 MiB. OpenSSL and GLib break lines at widths of their own; everything else is compared. ----

std::string const& Bytes() {
  static std::string const bytes = [] {
    std::mt19937 random(1);
    std::string made(1 << 20, '\0');
    for (char& byte : made) byte = static_cast<char>(random());
    return made;
  }();
  return bytes;
}

// Each writes into a buffer that is large enough and returns the length. The buffer is allocated once, because the page
// faults of a fresh megabyte would outweigh the work.
std::size_t EncodeOurs(char* text, std::size_t size) {
  static EncodeBase64 codec;
  Require(codec.LoadFromBuf(Bytes().data(), Bytes().size()), "encode");
  return codec.SaveToBuf(text, size);
}

std::size_t EncodeOpenssl(char* text, std::size_t) {
  auto* const out = reinterpret_cast<unsigned char*>(text);
  EVP_ENCODE_CTX* const context = EVP_ENCODE_CTX_new();
  EVP_EncodeInit(context);
  int length = 0, rest = 0;
  EVP_EncodeUpdate(context, out, &length, reinterpret_cast<unsigned char const*>(Bytes().data()),
                   static_cast<int>(Bytes().size()));
  EVP_EncodeFinal(context, out + length, &rest);
  EVP_ENCODE_CTX_free(context);
  return static_cast<std::size_t>(length + rest);
}

std::size_t EncodeGlib(char* text, std::size_t) {
  gint saved = 0, step = 0;
  gsize const length =
      g_base64_encode_step(reinterpret_cast<guchar const*>(Bytes().data()), Bytes().size(), TRUE, text, &step, &saved);
  return length + g_base64_encode_close(TRUE, text + length, &step, &saved);
}

using Encoder = std::size_t (*)(char*, std::size_t);

std::string Unbroken(Encoder encode) {
  std::string text(2 * Bytes().size(), '\0');
  text.resize(encode(text.data(), text.size()));
  text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }), text.end());
  return text;
}

template <Encoder kEncode>
void Encode(benchmark::State& state) {
  Require(Unbroken(kEncode) == Unbroken(EncodeOurs), "encode");
  std::string text(2 * Bytes().size(), '\0');
  for (auto _ : state) benchmark::DoNotOptimize(kEncode(text.data(), text.size()));
}

void DecodeOurs(std::string const& text, std::string& bytes) {
  static DecodeBase64 codec;
  Require(codec.LoadFromBuf(text.data(), text.size()), "decode");
  bytes.resize(codec.SaveToBuf(nullptr, 0));
  codec.SaveToBuf(bytes.data(), bytes.size());
}

void DecodeAbseil(std::string const& text, std::string& bytes) {
  Require(absl::Base64Unescape(text, &bytes), "decode");
}

void DecodeGlib(std::string const& text, std::string& bytes) {
  bytes = text;
  gsize length = 0;
  g_base64_decode_inplace(bytes.data(), &length);
  bytes.resize(length);
}

template <void (*kDecode)(std::string const&, std::string&)>
void Decode(benchmark::State& state) {
  std::string text(2 * Bytes().size(), '\0'), bytes;
  text.resize(EncodeOurs(text.data(), text.size()));
  kDecode(text, bytes);
  Require(bytes.compare(0, Bytes().size(), Bytes()) == 0 && bytes.size() <= Bytes().size() + 2, "decode");
  for (auto _ : state) kDecode(text, bytes);
}

// ---- Texts. ----

std::string Joined(char separator, int count) {
  std::string made;
  for (int i = 0; i < count; i++) made += std::to_string(i * 7919LL % 1000003) + " volts" + separator;
  return made;
}

void TokenizeOurs(std::vector<std::string>& pieces, std::string const& text, char separator) {
  Tokenize(pieces, text, separator);
}

void TokenizeByHand(std::vector<std::string>& pieces, std::string const& text, char separator) {
  pieces.clear();
  std::size_t start = 0;
  for (std::size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + 1)
    pieces.push_back(text.substr(start, end - start));
  if (start < text.size()) pieces.push_back(text.substr(start));
}

void TokenizeAbseil(std::vector<std::string>& pieces, std::string const& text, char separator) {
  pieces = absl::StrSplit(text, separator);
  pieces.pop_back();  // ours adds no empty token after the last separator
}

// A thousand lines of a file, each split at its own separators; or one long line.
template <auto kSplit, int kPieces, int kLines>
void Tokenizing(benchmark::State& state) {
  std::string const line = Joined(';', kPieces);
  std::vector<std::string> pieces, same;
  TokenizeOurs(same, line, ';');
  kSplit(pieces, line, ';');
  Require(pieces == same, "tokenize");
  for (auto _ : state)
    for (int i = 0; i < kLines; i++) kSplit(pieces, line, ';');
}

// Passes each input to kWork, whose result must equal that of kSame.
template <auto kInputs, auto kWork, auto kSame>
void Each(benchmark::State& state) {
  auto const& inputs = kInputs();
  for (auto const& input : inputs) Require(kWork(input) == kSame(input), "result");
  for (auto _ : state)
    for (auto const& input : inputs) benchmark::DoNotOptimize(kWork(input));
}

std::vector<std::string> const& Texts() {
  static std::vector<std::string> const texts = [] {
    std::vector<std::string> made;
    for (int i = 0; i < 1000; i++)
      made.push_back(std::string(i % 5, ' ') + "Battery of unit " + std::to_string(i) + std::string(i % 3, '\t'));
    return made;
  }();
  return texts;
}

std::string TrimOurs(std::string const& text) { return Trim(text); }
std::string TrimAbseil(std::string const& text) { return std::string(absl::StripAsciiWhitespace(text)); }
std::string UpperOurs(std::string const& text) { return AnsiUpperCase(text); }
std::string UpperAbseil(std::string const& text) { return absl::AsciiStrToUpper(text); }
std::string UpperStd(std::string const& text) {
  std::string result = text;
  std::transform(result.begin(), result.end(), result.begin(),
                 [](char c) { return static_cast<char>(std::toupper(static_cast<unsigned char>(c))); });
  return result;
}

// ---- Numbers, a thousand per iteration. ----

std::vector<int> const& Integers() {
  static std::vector<int> const integers = [] {
    std::mt19937 random(2);
    std::vector<int> made;
    for (int i = 0; i < 1000; i++) made.push_back(static_cast<int>(random()) >> random() % 31);
    return made;
  }();
  return integers;
}

std::vector<double> const& Floats() {
  static std::vector<double> const floats = [] {
    std::mt19937 random(3);
    std::vector<double> made;
    while (made.size() < 1000) {
      double const value = std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 40) - 35);
      if (value >= 1e5 && value < 1e6) continue;  // six digits without a fraction: fmt writes ".0" there, not "."
      made.push_back(value);
    }
    return made;
  }();
  return floats;
}

// Returns the texts of some values.
template <auto kInputs, auto kText>
std::vector<std::string> const& TextsOf() {
  static std::vector<std::string> const texts = [] {
    std::vector<std::string> made;
    for (auto const& input : kInputs()) made.push_back(kText(input));
    return made;
  }();
  return texts;
}

std::string IntTextOurs(int value) { return IntToStr(value); }
std::string IntTextToChars(int value) {
  char buffer[16];
  return std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}
long IntOurs(std::string const& text) { return StrToIntDef(text, 0); }
long IntFromChars(std::string const& text) {
  int value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}
std::string FloatTextOurs(double value) { return FloatToStr(value, 0, 6, ' '); }
std::string FloatTextFmt(double value) { return fmt::format("{:#.6g}", value); }
std::string FloatDigits(double value) {
  std::string text = fmt::format("{:.9g}", value);
  std::replace(text.begin(), text.end(), 'e', 'E');
  return text;
}
double FloatOurs(std::string const& text) { return StrToFloatDef(text, 0); }
double FloatFastFloat(std::string const& text) {
  double value = 0;
  fast_float::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

// ---- Dates, a thousand per iteration. Without leap days and 31 December of leap years, which ours decodes
// differently. ----

struct Date {
  int year, month, day, hour, minute, second;
  bool operator==(Date const& other) const { return std::memcmp(this, &other, sizeof other) == 0; }
};

std::vector<long> const& Moments() {
  static std::vector<long> const moments = [] {
    std::mt19937 random(4);
    std::vector<long> made;
    while (made.size() < 1000) {
      time_t const when = static_cast<time_t>(random() % 2147483647);
      struct tm fields;
      gmtime_r(&when, &fields);
      if (fields.tm_year % 4 != 0 || (fields.tm_yday != 59 && fields.tm_yday != 365)) made.push_back(when);
    }
    return made;
  }();
  return moments;
}

Date DateOurs(long t) {
  Date d;
  DecodeDateTime(t, &d.year, &d.month, &d.day, &d.hour, &d.minute, &d.second, nullptr, nullptr);
  return d;
}

Date DateLibrary(long t) {
  date::sys_seconds const when{std::chrono::seconds(t)};
  auto const days = date::floor<date::days>(when);
  date::year_month_day const ymd(days);
  date::hh_mm_ss<std::chrono::seconds> const time(when - days);
  return {static_cast<int>(ymd.year()),
          static_cast<int>(static_cast<unsigned>(ymd.month())),
          static_cast<int>(static_cast<unsigned>(ymd.day())),
          static_cast<int>(time.hours().count()),
          static_cast<int>(time.minutes().count()),
          static_cast<int>(time.seconds().count())};
}

long MomentOurs(Date const& d) { return EncodeDateTime(d.year, d.month, d.day, d.hour, d.minute, d.second); }
long MomentLibrary(Date const& d) {
  auto const ymd = date::year(d.year) / d.month / d.day;
  if (!ymd.ok()) return -1;
  return (date::sys_days(ymd).time_since_epoch() + std::chrono::hours(d.hour) + std::chrono::minutes(d.minute) +
          std::chrono::seconds(d.second))
      .count();
}

std::string DateTextOurs(long t) { return DateTimeToStr(t); }
std::string DateTextFmt(long t) { return fmt::format("{:%d/%m/%Y %H:%M:%S}", fmt::gmtime(static_cast<time_t>(t))); }
long TextDateOurs(std::string const& text) { return StrToDateTime(text.c_str(), nullptr, -1); }
long TextDateStrptime(std::string const& text) {
  struct tm fields = {};
  if (strptime(text.c_str(), "%d/%m/%Y %H:%M:%S", &fields) == nullptr) return -1;
  return timegm(&fields);
}

std::vector<Date> const& Dates() {
  static std::vector<Date> const dates = [] {
    std::vector<Date> made;
    for (long const t : Moments()) made.push_back(DateLibrary(t));
    return made;
  }();
  return dates;
}

#define ZELVANE_ROW(name, ...) BENCHMARK(__VA_ARGS__)->Name(name)->Unit(benchmark::kMicrosecond)
ZELVANE_ROW("base64-encode-1MiB/ours", Encode<EncodeOurs>);
ZELVANE_ROW("base64-encode-1MiB/openssl", Encode<EncodeOpenssl>);
ZELVANE_ROW("base64-encode-1MiB/glib", Encode<EncodeGlib>);
ZELVANE_ROW("base64-decode-1MiB/ours", Decode<DecodeOurs>);
ZELVANE_ROW("base64-decode-1MiB/abseil", Decode<DecodeAbseil>);
ZELVANE_ROW("base64-decode-1MiB/glib", Decode<DecodeGlib>);
ZELVANE_ROW("tokenize-lines/ours", Tokenizing<TokenizeOurs, 8, 1000>);
ZELVANE_ROW("tokenize-lines/find+substr", Tokenizing<TokenizeByHand, 8, 1000>);
ZELVANE_ROW("tokenize-lines/abseil", Tokenizing<TokenizeAbseil, 8, 1000>);
ZELVANE_ROW("tokenize-long-line/ours", Tokenizing<TokenizeOurs, 100000, 1>);
ZELVANE_ROW("tokenize-long-line/find+substr", Tokenizing<TokenizeByHand, 100000, 1>);
ZELVANE_ROW("tokenize-long-line/abseil", Tokenizing<TokenizeAbseil, 100000, 1>);
ZELVANE_ROW("trim/ours", Each<Texts, TrimOurs, TrimAbseil>);
ZELVANE_ROW("trim/abseil", Each<Texts, TrimAbseil, TrimOurs>);
ZELVANE_ROW("upper-case/ours", Each<Texts, UpperOurs, UpperAbseil>);
ZELVANE_ROW("upper-case/abseil", Each<Texts, UpperAbseil, UpperOurs>);
ZELVANE_ROW("upper-case/std", Each<Texts, UpperStd, UpperOurs>);
ZELVANE_ROW("int-to-text/ours", Each<Integers, IntTextOurs, IntTextToChars>);
ZELVANE_ROW("int-to-text/to_chars", Each<Integers, IntTextToChars, IntTextOurs>);
ZELVANE_ROW("text-to-int/ours", Each<TextsOf<Integers, IntTextToChars>, IntOurs, IntFromChars>);
ZELVANE_ROW("text-to-int/from_chars", Each<TextsOf<Integers, IntTextToChars>, IntFromChars, IntOurs>);
ZELVANE_ROW("float-to-text/ours", Each<Floats, FloatTextOurs, FloatTextFmt>);
ZELVANE_ROW("float-to-text/fmt", Each<Floats, FloatTextFmt, FloatTextOurs>);
ZELVANE_ROW("text-to-float/ours", Each<TextsOf<Floats, FloatDigits>, FloatOurs, FloatFastFloat>);
ZELVANE_ROW("text-to-float/fast_float", Each<TextsOf<Floats, FloatDigits>, FloatFastFloat, FloatOurs>);
ZELVANE_ROW("date-encode/ours", Each<Dates, MomentOurs, MomentLibrary>);
ZELVANE_ROW("date-encode/date", Each<Dates, MomentLibrary, MomentOurs>);
ZELVANE_ROW("date-decode/ours", Each<Moments, DateOurs, DateLibrary>);
ZELVANE_ROW("date-decode/date", Each<Moments, DateLibrary, DateOurs>);
ZELVANE_ROW("date-to-text/ours", Each<Moments, DateTextOurs, DateTextFmt>);
ZELVANE_ROW("date-to-text/fmt", Each<Moments, DateTextFmt, DateTextOurs>);
ZELVANE_ROW("text-to-date/ours", Each<TextsOf<Moments, DateTextFmt>, TextDateOurs, TextDateStrptime>);
ZELVANE_ROW("text-to-date/strptime", Each<TextsOf<Moments, DateTextFmt>, TextDateStrptime, TextDateOurs>);

}  // namespace
