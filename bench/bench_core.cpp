// The toolkit and Base64 beside what GLib and the C and C++ libraries offer for the same work.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <time.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "zelvane/core/datetime.h"
#include "zelvane/core/strutils.h"
#include "zelvane/crypto/base64.h"

namespace {

[[noreturn]] void Different(char const* what) {
  std::fprintf(stderr, "ours and the peer differ: %s\n", what);
  std::exit(1);
}

// ---- Base64 of 1 MiB in lines of 72 characters. ----

std::string const& Bytes() {
  static std::string const bytes = [] {
    std::mt19937 random(1);
    std::string made(1 << 20, '\0');
    for (char& byte : made) byte = static_cast<char>(random());
    return made;
  }();
  return bytes;
}

std::string Encoded() {
  EncodeBase64 codec;
  if (!codec.LoadFromBuf(Bytes().data(), Bytes().size())) Different("encode");
  std::string text(codec.SaveToBuf(nullptr, 0), '\0');
  codec.SaveToBuf(text.data(), text.size());
  return text;
}

void OursEncode(benchmark::State& state) {
  gchar* plain = g_base64_encode(reinterpret_cast<guchar const*>(Bytes().data()), Bytes().size());
  std::string ours = Encoded();
  for (std::size_t at; (at = ours.find("\r\n")) != std::string::npos;) ours.erase(at, 2);
  if (ours != plain) Different("encode");
  g_free(plain);
  for (auto _ : state) {
    EncodeBase64 codec;
    benchmark::DoNotOptimize(codec.LoadFromBuf(Bytes().data(), Bytes().size()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(Bytes().size()));
}

void PeerEncode(benchmark::State& state) {
  std::size_t const size = Bytes().size();
  for (auto _ : state) {
    // GLib breaks its lines at 72 characters too when it encodes in steps.
    std::vector<gchar> text((size / 3 + 1) * 4 + (size / 3 + 1) * 4 / 72 + 5);
    gint saved = 0, step = 0;
    gsize length =
        g_base64_encode_step(reinterpret_cast<guchar const*>(Bytes().data()), size, TRUE, text.data(), &step, &saved);
    length += g_base64_encode_close(TRUE, text.data() + length, &step, &saved);
    benchmark::DoNotOptimize(length);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(size));
}

void OursDecode(benchmark::State& state) {
  std::string const text = Encoded();
  DecodeBase64 check;
  std::string back(Bytes().size() + 1, '\0');
  if (!check.LoadFromBuf(text.data(), text.size()) || check.SaveToBuf(back.data(), back.size()) != Bytes().size() ||
      back.compare(0, Bytes().size(), Bytes()) != 0)
    Different("decode");
  for (auto _ : state) {
    DecodeBase64 codec;
    benchmark::DoNotOptimize(codec.LoadFromBuf(text.data(), text.size()));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(Bytes().size()));
}

void PeerDecode(benchmark::State& state) {
  std::string const text = Encoded();
  for (auto _ : state) {
    gsize length = 0;
    guchar* bytes = g_base64_decode(text.c_str(), &length);
    if (length != Bytes().size()) Different("decode");
    g_free(bytes);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<long>(Bytes().size()));
}

// ---- A million fields. ----

std::string const& Fields() {
  static std::string const text = [] {
    std::string made;
    for (int i = 0; i < 1000000; i++) made += std::to_string(i) + ";";
    return made;
  }();
  return text;
}

void OursTokenize(benchmark::State& state) {
  std::vector<std::string> pieces;
  for (auto _ : state) Tokenize(pieces, Fields(), ';');
  if (pieces.size() != 1000000 || pieces.back() != "999999") Different("tokenize");
}

void PeerTokenize(benchmark::State& state) {
  for (auto _ : state) {
    gchar** pieces = g_strsplit(Fields().c_str(), ";", -1);
    benchmark::DoNotOptimize(pieces);
    g_strfreev(pieces);
  }
}

// ---- Numbers and dates, a thousand a turn. ----

std::vector<std::string> const& NumberTexts() {
  static std::vector<std::string> const texts = [] {
    std::mt19937 random(2);
    std::vector<std::string> made(1000);
    for (auto& text : made) text = std::to_string(static_cast<int>(random()));
    return made;
  }();
  return texts;
}

void OursTextToInt(benchmark::State& state) {
  for (auto const& text : NumberTexts())
    if (StrToIntDef(text, 7) != std::atol(text.c_str())) Different("text to int");
  for (auto _ : state)
    for (auto const& text : NumberTexts()) benchmark::DoNotOptimize(StrToIntDef(text, 0));
}

void PeerTextToInt(benchmark::State& state) {
  for (auto _ : state)
    for (auto const& text : NumberTexts()) {
      int value = 0;
      std::from_chars(text.data(), text.data() + text.size(), value);
      benchmark::DoNotOptimize(value);
    }
}

void OursIntToText(benchmark::State& state) {
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) benchmark::DoNotOptimize(IntToStr(i * 7919));
}

void PeerIntToText(benchmark::State& state) {
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) {
      char buffer[16];
      benchmark::DoNotOptimize(std::string(buffer, std::to_chars(buffer, buffer + sizeof buffer, i * 7919).ptr));
    }
}

long DateOf(int i) { return 1000000000L + i * 100003L; }

void OursDateDecode(benchmark::State& state) {
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) {
      int year, month, day, hour, minute, second;
      DecodeDateTime(DateOf(i), &year, &month, &day, &hour, &minute, &second, nullptr, nullptr);
      benchmark::DoNotOptimize(year + second);
    }
}

void PeerDateDecode(benchmark::State& state) {
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) {
      time_t const when = DateOf(i);
      struct tm fields;
      benchmark::DoNotOptimize(gmtime_r(&when, &fields));
    }
}

void OursDateToText(benchmark::State& state) {
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) benchmark::DoNotOptimize(DateTimeToStr(DateOf(i)));
}

void PeerDateToText(benchmark::State& state) {
  for (int i = 0; i < 1000; i++) {
    time_t const when = DateOf(i);
    struct tm fields;
    char text[32];
    strftime(text, sizeof text, "%d/%m/%Y %H:%M:%S", gmtime_r(&when, &fields));
    bool const odd = fields.tm_year % 4 == 0 && (fields.tm_yday == 59 || fields.tm_yday == 365);  // kept on purpose
    if (!odd && DateTimeToStr(DateOf(i)) != text) Different("date to text");
  }
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) {
      time_t const when = DateOf(i);
      struct tm fields;
      char text[32];
      std::size_t const length = strftime(text, sizeof text, "%d/%m/%Y %H:%M:%S", gmtime_r(&when, &fields));
      benchmark::DoNotOptimize(std::string(text, length));
    }
}

void OursTextToDate(benchmark::State& state) {
  std::string const text = "07/03/2005 11:22:33";
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) benchmark::DoNotOptimize(StrToDateTime(text.c_str(), nullptr, -1));
}

void PeerTextToDate(benchmark::State& state) {
  for (auto _ : state)
    for (int i = 0; i < 1000; i++) {
      struct tm fields = {};
      strptime("07/03/2005 11:22:33", "%d/%m/%Y %H:%M:%S", &fields);
      benchmark::DoNotOptimize(timegm(&fields));
    }
}

#define ZELVANE_PAIR(task, ours, peer, name)                          \
  BENCHMARK(ours)->Name(task "/ours")->Unit(benchmark::kMicrosecond); \
  BENCHMARK(peer)->Name(task "/" name)->Unit(benchmark::kMicrosecond)
ZELVANE_PAIR("base64-encode-1MiB", OursEncode, PeerEncode, "glib");
ZELVANE_PAIR("base64-decode-1MiB", OursDecode, PeerDecode, "glib");
ZELVANE_PAIR("tokenize-1000000", OursTokenize, PeerTokenize, "glib");
ZELVANE_PAIR("text-to-int-1000", OursTextToInt, PeerTextToInt, "from_chars");
ZELVANE_PAIR("int-to-text-1000", OursIntToText, PeerIntToText, "to_chars");
ZELVANE_PAIR("date-decode-1000", OursDateDecode, PeerDateDecode, "gmtime_r");
ZELVANE_PAIR("date-to-text-1000", OursDateToText, PeerDateToText, "strftime");
ZELVANE_PAIR("text-to-date-1000", OursTextToDate, PeerTextToDate, "strptime");

}  // namespace
