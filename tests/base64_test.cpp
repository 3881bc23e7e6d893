#include "zelvane/crypto/base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <tuple>
#include <vector>

#include "support/scratch.h"
#include "support/slot.h"

namespace {

using test::Scratch;
using test::Slot;

using Call = std::tuple<unsigned long, unsigned long, unsigned, bool>;  // consumed, total, percent, finished

std::string const kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// ---- The codec told again, group by group, with the calls that a progress object gets ----

void Step(std::vector<Call>& calls, unsigned long consumed, unsigned long total) {
  auto const percent =
      static_cast<unsigned>(std::lround(100.0 * static_cast<double>(consumed) / static_cast<double>(total)));
  unsigned const last = calls.empty() || std::get<3>(calls.back()) ? 0 : std::get<2>(calls.back());
  if (percent > last) calls.emplace_back(consumed, total, percent, false);
}

std::string NaiveEncode(std::string const& bytes, std::vector<Call>& calls) {
  std::string text;
  for (size_t at = 0, written = 0; at < bytes.size(); at += 3) {
    Step(calls, at, bytes.size());
    std::string const group = bytes.substr(at, 3);
    size_t value = 0;
    for (size_t i = 0; i < 3; i++) value = value * 256 + (i < group.size() ? static_cast<unsigned char>(group[i]) : 0);
    for (size_t i = 0; i < 4; i++, written++) {
      if (written > 0 && written % 72 == 0) text += "\r\n";
      text += i <= group.size() ? kAlphabet[value >> (18 - 6 * i) & 63] : '=';
    }
  }
  calls.emplace_back(bytes.size(), bytes.size(), 100, true);
  return text;
}

std::string NaiveDecode(std::string const& text, std::vector<Call>& calls) {
  std::string bytes;
  size_t at = 0;
  while (at < text.size()) {
    Step(calls, at, text.size());
    std::string kept;
    while (at < text.size() && kept.size() < 4) {
      char const c = text[at++];
      if (c == '=' || (c != '\0' && kAlphabet.find(c) != std::string::npos)) kept += c;
    }
    if (kept.size() < 4) break;
    size_t value = 0;
    for (char c : kept) value = value * 64 + (c == '=' ? 0 : kAlphabet.find(c));
    size_t const size = kept[2] == '=' ? 1 : kept[3] == '=' ? 2 : 3;
    for (size_t i = 0; i < size; i++) bytes += static_cast<char>(value >> (16 - 8 * i));
    if (size < 3) break;
  }
  return bytes;
}

// ---- Helpers ----

std::string Result(ClassBase64& codec) {
  std::string bytes(codec.SaveToBuf(nullptr, 0), '\0');
  EXPECT_TRUE(bytes.empty() || bytes.size() == codec.SaveToBuf(bytes.data(), bytes.size()));
  return bytes;
}

struct Recorder : ProgressClass {
  void Progress(ClassBase64*, unsigned long consumed, unsigned long total, unsigned short percent,
                bool finished) const override {
    calls.emplace_back(consumed, total, percent, finished);
  }
  mutable std::vector<Call> calls;
};

// ---- Layout ----

#if defined(__x86_64__) || defined(__i386__)
TEST(Base64, VirtualOperationsKeepTheirSlots) {
  using C = ClassBase64;
  using S = std::string const&;
  EXPECT_EQ(3U, Slot(&C::LoadFromBuf));
  EXPECT_EQ(5U, Slot(static_cast<bool (C::*)(char const*)>(&C::LoadFromStr)));
  EXPECT_EQ(12U, Slot(&C::SaveToBuf));
  EXPECT_EQ(14U, Slot(&C::Unload));
  using E = EncodeBase64;
  EXPECT_EQ(16U, Slot(static_cast<std::string (E::*)(S)>(&E::EncodeStr)));
  EXPECT_EQ(19U, Slot(static_cast<bool (E::*)(char const*, char const*)>(&E::EncodeFile)));
  EXPECT_EQ(16U, Slot(static_cast<std::string (DecodeBase64::*)(S)>(&DecodeBase64::DecodeStr)));
  EXPECT_EQ(2U, Slot(&ProgressClass::Progress));
}
#endif

// ---- Conversion ----

TEST(Base64, AgreesWithTheNaiveCodecInBytesAndCalls) {
  std::mt19937 random(20240229);
  auto const pick = [&](size_t below) { return std::uniform_int_distribution<size_t>(0, below - 1)(random); };
  for (int round = 0; round < 600; round++) {
    std::string bytes;
    for (size_t length = round < 200 ? 1 + static_cast<size_t>(round) : 1 + pick(3000); length > 0; length--)
      bytes += static_cast<char>(pick(256));
    Recorder recorder;  // each call costs a pause: watched now and then only
    EncodeBase64 encoder;
    DecodeBase64 decoder;
    for (ClassBase64* codec : {static_cast<ClassBase64*>(&encoder), static_cast<ClassBase64*>(&decoder)})
      codec->SetProgress(round % 10 == 0 ? &recorder : nullptr);
    std::vector<char> const exact(bytes.begin(), bytes.end());  // without a NUL behind it
    ASSERT_TRUE(encoder.LoadFromBuf(exact.data(), exact.size()));
    std::vector<Call> calls;
    std::string text = NaiveEncode(bytes, calls);
    ASSERT_EQ(text, Result(encoder)) << "round " << round;
    for (size_t damage = pick(4); damage > 0; damage--)
      text.replace(pick(text.size()), pick(3),
                   std::string(1 + pick(3), pick(3) == 0 ? '=' : static_cast<char>(pick(256))));
    ASSERT_TRUE(decoder.LoadFromBuf(text.data(), text.size()));
    ASSERT_EQ(NaiveDecode(text, calls), Result(decoder)) << "round " << round << ": " << text;
    ASSERT_EQ(round % 10 == 0 ? calls : std::vector<Call>(), recorder.calls) << "round " << round << ": " << text;
  }
}

// ---- The result ----

TEST(Base64, TextAndBuffers) {
  EXPECT_EQ("YWJjAA==", EncodeBase64().EncodeStr("abc"));  // converted with its NUL
  DecodeBase64 codec;
  char buffer[6];
  EXPECT_FALSE(codec.DecodeStr("Zm9", buffer, 6) || codec.DecodeStr(nullptr, buffer, 6));
  ASSERT_TRUE(codec.LoadFromBuf("YWIAYw==", 8));  // "ab\0c"
  EXPECT_FALSE(codec.LoadFromBuf(nullptr, 3) || codec.LoadFromBuf("foo", 0) || codec.LoadFromFile("/dev/zero"));
  EXPECT_FALSE(codec.SaveToStr(nullptr, 6) || codec.SaveToStr(buffer, 0) || codec.SaveToBuf(buffer, 0));
  for (auto const& [size, bytes, text] :
       std::vector<std::tuple<unsigned long, std::string, std::string>>{{3, {"ab\0...", 6}, {"ab\0...", 6}},
                                                                        {4, {"ab\0c..", 6}, {"ab\0\0..", 6}},
                                                                        {6, {"ab\0c\0\0", 6}, {"ab\0c\0\0", 6}}}) {
    memset(buffer, '.', 6);
    EXPECT_EQ(std::min(size, 4UL), codec.SaveToBuf(buffer, size)) << size;
    EXPECT_EQ(bytes, std::string(buffer, 6)) << size;
    memset(buffer, '.', 6);
    EXPECT_TRUE(codec.SaveToStr(buffer, size)) << size;
    EXPECT_EQ(text, std::string(buffer, 6)) << size;
  }
  codec.Unload();
  EXPECT_EQ("", Result(codec));
}

TEST(Base64, EveryFormOfATextDoesTheSame) {
  struct {
    char const *text, *decoded;  // "?": refused, the output is as it was
  } const rows[] = {{"YWJjAA==", "abc"}, {"A", "?"}, {"!?", "?"}};
  for (auto const& row : rows) {
    SCOPED_TRACE(row.text);
    EncodeBase64 encoder;
    DecodeBase64 decoder;
    char out[9] = "?";
    std::string text = row.text, decoded = "?", encoded = "?";
    bool const done = *row.decoded != '?';
    EXPECT_EQ(done, decoder.DecodeStr(text, decoded));
    EXPECT_EQ(done, decoder.DecodeStr(row.text, out, sizeof out));
    EXPECT_EQ(decoded + out, std::string(row.decoded) + row.decoded);
    EXPECT_EQ(decoder.DecodeStr(text) + DecodeBase64ToStr(text), done ? decoded + decoded : "");
    if (!done) continue;
    EXPECT_TRUE(encoder.EncodeStr(decoded, encoded) && encoder.EncodeStr(row.decoded, out, sizeof out));
    EXPECT_EQ(encoded + out + encoder.EncodeStr(decoded) + EncodeBase64FromStr(decoded), text + text + text + text);
  }
  EncodeBase64 codec;
  char out[2] = "?";
  EXPECT_FALSE(codec.EncodeStr(nullptr, out, 2) || codec.EncodeStr("a", nullptr, 2) || codec.EncodeStr("a", out, 0) ||
               codec.LoadFromStr(nullptr) || codec.LoadFromFile(nullptr) || codec.SaveToFile(nullptr) ||
               codec.EncodeDecodeFunction(nullptr, 1) || codec.EncodeDecodeFunction("a", 0) ||
               codec.EncodeDecodeFunction("a", ~0UL) || DecodeBase64().EncodeDecodeFunction(nullptr, 1) ||
               DecodeBase64().EncodeDecodeFunction("a", 0) || codec.EncodeFile("/etc/passwd", nullptr) ||
               codec.EncodeFile(nullptr, "/nonexistent"));
  EXPECT_STREQ("?", out);
}

// ---- Files ----

TEST(Base64, Files) {
  Scratch scratch;
  std::string const plain = scratch.Write("plain", "abc"), text = scratch.Write("text", "an older, longer text");
  EXPECT_TRUE(EncodeBase64().EncodeFile(plain, text));
  EXPECT_EQ("YWJj", scratch.Read("text"));
  EXPECT_TRUE(DecodeBase64().DecodeFile(text.c_str(), text.c_str()));  // loaded before it is written
  EXPECT_EQ("abc", scratch.Read("text"));
  EncodeBase64 codec;
  EXPECT_TRUE(codec.LoadFromFile(plain) && codec.SaveToFile(scratch.Path("kept")));
  EXPECT_TRUE(DecodeBase64().DecodeFile(scratch.Path("kept"), scratch.Path("kept")));
  EXPECT_EQ("abc", scratch.Read("kept"));
  for (auto const& [from, to] : std::vector<std::pair<std::string, std::string>>{
           {scratch.Path("missing"), text}, {scratch.Path(), text}, {plain, ""}, {plain, "/dev/full"}})
    EXPECT_FALSE(EncodeBase64().EncodeFile(from, to)) << from << " to " << to;
  EXPECT_EQ("abc", scratch.Read("text"));
}

}  // namespace
