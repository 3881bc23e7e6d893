#include "zelvane/crypto/base64.h"

#include <cmath>

#include "support/test.h"

namespace {

using Call = std::tuple<unsigned long, unsigned long, unsigned, bool>;  // consumed, total, percent, finished
using Calls = std::vector<Call>;

std::string const kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// ---- A model of the codec, group by group, with the calls to the progress object ----

void Step(Calls& calls, size_t consumed, size_t total) {
  auto const percent = static_cast<unsigned>(std::lround(100.0 * static_cast<double>(consumed) / double(total)));
  unsigned const last = calls.empty() || std::get<3>(calls.back()) ? 0 : std::get<2>(calls.back());
  if (percent > last) calls.emplace_back(consumed, total, percent, false);
}

std::string NaiveEncode(std::string const& bytes, Calls& calls) {
  std::string text;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    Step(calls, at, bytes.size());
    if (at > 0 && at % 54 == 0) text += "\r\n";
    size_t value = 0;
    for (size_t i = at; i < at + 3; i++) value = value * 256 + (i < bytes.size() ? bytes[i] & 255 : 0);
    for (size_t i = 0; i < 4; i++) text += at + i <= bytes.size() ? kAlphabet[value >> (18 - 6 * i) & 63] : '=';
  }
  calls.emplace_back(bytes.size(), bytes.size(), 100, true);
  return text;
}

std::string NaiveDecode(std::string const& text, Calls& calls) {
  std::string bytes, kept = "    ";
  for (size_t at = 0; at < text.size() && kept.find('=', 2) > 3;) {
    Step(calls, at, text.size());
    size_t value = 0;
    for (kept.clear(); at < text.size() && kept.size() < 4; at++) {
      size_t const digit = text[at] == '=' ? 0 : kAlphabet.find(text[at]);
      if (digit < 64) kept += text[at], value = value * 64 + digit;
    }
    if (kept.size() < 4) break;
    for (size_t i = 0; i < (kept[2] == '=' ? 1 : kept[3] == '=' ? 2 : 3); i++)
      bytes += static_cast<char>(value >> (16 - 8 * i));
  }
  return bytes;
}

struct Recorder : ProgressClass {
  void Progress(ClassBase64*, unsigned long consumed, unsigned long total, unsigned short percent,
                bool finished) const override {
    calls.emplace_back(consumed, total, percent, finished);
  }
  mutable Calls calls;
};

std::string Result(ClassBase64& codec) {
  std::string bytes(codec.SaveToBuf(nullptr, 0), '\0');
  if (!bytes.empty()) EXPECT_EACH((codec.SaveToBuf(bytes.data(), bytes.size())), bytes.size());
  return bytes;
}

TEST(Base64, AgreesWithTheNaiveCodecInBytesAndCalls) {
  std::mt19937 random(20240229);
  auto const pick = [&](size_t below) { return std::uniform_int_distribution<size_t>(0, below - 1)(random); };
  for (size_t round = 0; round < 600; round++) {
    std::string bytes(round < 200 ? 1 + round : 1 + pick(3000), '\0');
    for (char& byte : bytes) byte = static_cast<char>(pick(256));
    Recorder recorder;  // each call pauses, so only some rounds use it
    Calls calls;
    EncodeBase64 encoder;
    DecodeBase64 decoder;
    encoder.SetProgress(round % 10 == 0 ? &recorder : nullptr);
    decoder.SetProgress(round % 10 == 0 ? &recorder : nullptr);
    std::vector<char> const exact(bytes.begin(), bytes.end());  // without a NUL after it
    ASSERT_TRUE(encoder.LoadFromBuf(exact.data(), exact.size()));
    std::string text = NaiveEncode(bytes, calls);
    ASSERT_EQ(Result(encoder), text) << "round " << round;
    for (size_t damage = pick(4); damage > 0; damage--)
      text.replace(pick(text.size()), pick(3), 1 + pick(3), pick(3) == 0 ? '=' : static_cast<char>(pick(256)));
    ASSERT_TRUE(decoder.LoadFromBuf(text.data(), text.size()));
    ASSERT_EQ(Result(decoder), NaiveDecode(text, calls)) << "round " << round << ": " << text;
    encoder.SetProgress(nullptr), encoder.LoadFromBuf("a", 1);
    ASSERT_EQ(recorder.calls, round % 10 == 0 ? calls : Calls()) << "round " << round << ": " << text;
  }
}

TEST(Base64, ABufferIsFilledToItsSize) {
  DecodeBase64 codec;
  char buffer[6];
  EXPECT_NONE(codec.DecodeStr("Zm9", buffer, 6), codec.DecodeStr(nullptr, buffer, 6));
  ASSERT_TRUE(codec.LoadFromBuf("YWIAYw==", 8));  // "ab\0c"
  EXPECT_NONE(codec.LoadFromBuf(nullptr, 3), codec.LoadFromBuf("foo", 0), codec.LoadFromFile("/dev/zero"));
  buffer[0] = '?';
  EXPECT_NONE(codec.SaveToStr(nullptr, 6), codec.SaveToStr(buffer + 1, 0), codec.SaveToBuf(buffer, 0));
  EXPECT_EQ(buffer[0], '?');
  std::tuple<size_t, size_t, std::string> const rows[] = {{3, 3, {"ab\0...ab\0...", 12}},  // as bytes, then as text
                                                          {4, 4, {"ab\0c..ab\0\0..", 12}},
                                                          {6, 4, {"ab\0c\0\0ab\0c\0\0", 12}}};
  for (auto const& [size, copied, filled] : rows) {
    std::string both(12, '.');
    EXPECT_EQ(codec.SaveToBuf(&both[0], size), copied) << size;
    EXPECT_TRUE(codec.SaveToStr(&both[6], size)) << size;
    EXPECT_EQ(both, filled) << size;
  }
  codec.Unload();
  EXPECT_EQ(Result(codec), "");
}

TEST(Base64, EveryFormOfATextDoesTheSame) {
  // "?": fails, the output is unchanged.
  std::pair<char const*, char const*> const rows[] = {{"YWJjAA==", "abc"}, {"A", "?"}, {"!?", "?"}};
  for (auto const& [original, plain] : rows) {
    EncodeBase64 encoder;
    DecodeBase64 decoder;
    char out[9] = "?";
    std::string text = original, decoded = "?", encoded = "?";
    bool const done = *plain != '?';
    EXPECT_EACH((decoder.DecodeStr(text, decoded), decoder.DecodeStr(original, out, 9)), done) << text;
    EXPECT_EACH((decoded, out), plain) << text;
    EXPECT_EACH((decoder.DecodeStr(text), DecodeBase64ToStr(text)), done ? plain : "") << text;
    if (!done) continue;
    EXPECT_ALL(encoder.EncodeStr(decoded, encoded), encoder.EncodeStr(plain, out, 9));
    EXPECT_EACH((encoded, out, encoder.EncodeStr(decoded), EncodeBase64FromStr(decoded)), text);
  }
}

TEST(Base64, NothingFromNothing) {
  EncodeBase64 codec;
  char out[2] = "?";
  EXPECT_NONE(codec.EncodeStr(nullptr, out, 2), codec.EncodeStr("a", nullptr, 2), codec.EncodeStr("a", out, 0));
  EXPECT_NONE(codec.LoadFromStr(nullptr), codec.LoadFromFile(nullptr), codec.SaveToFile(nullptr));
  EXPECT_NONE(codec.EncodeFile("/etc/passwd", nullptr), codec.EncodeFile(nullptr, "/nonexistent"));
  for (unsigned long const length : {0UL, ~0UL}) EXPECT_FALSE(codec.EncodeDecodeFunction("a", length)) << length;
  EXPECT_NONE(codec.EncodeDecodeFunction(nullptr, 1), DecodeBase64().EncodeDecodeFunction(nullptr, 1),
              DecodeBase64().EncodeDecodeFunction("a", 0));
  EXPECT_STREQ(out, "?");
}

TEST(Base64, Files) {
  test::Scratch scratch;
  std::string const plain = scratch.Write("plain", "abc"), text = scratch.Write("text", "an older, longer text");
  EXPECT_TRUE(EncodeBase64().EncodeFile(plain, text));
  EXPECT_EQ(scratch.Read("text"), "YWJj");
  mode_t const mask = umask(022);
  EXPECT_TRUE(EncodeBase64().EncodeFile(plain, scratch.Path("new")));
  umask(mask);
  EXPECT_EQ(fs::status(scratch.Path("new")).permissions(), fs::perms(0644));
  EXPECT_TRUE(DecodeBase64().DecodeFile(text.c_str(), text.c_str()));  // it is loaded before it is written
  std::pair<std::string, std::string> const refused[] = {
      {scratch.Path("missing"), text}, {scratch.Path(), text}, {plain, ""}, {plain, "/dev/full"}};
  for (auto const& [from, to] : refused) EXPECT_FALSE(EncodeBase64().EncodeFile(from, to)) << from << " to " << to;
  EXPECT_EQ(scratch.Read("text"), "abc");
  EncodeBase64 codec;
  EXPECT_ALL(codec.LoadFromFile(plain), codec.SaveToFile(text), DecodeBase64().DecodeFile(text, text));
  EXPECT_EQ(scratch.Read("text"), "abc");
  EXPECT_NONE(codec.EncodeFile(scratch.Path("missing"), text), codec.EncodeFile(plain, ""));
  EXPECT_EACH((Result(codec)), "YWJj");
  std::string out(9, '?');
  EXPECT_EACH((codec.EncodeFile(plain, text), Result(codec), codec.EncodeStr("a", out.data(), 9), Result(codec),
               codec.EncodeStr(std::string("a"), out), Result(codec), codec.SaveToFile(text), scratch.Read("text")),
              true, "", true, "", true, "", true, "");
}

}  // namespace
