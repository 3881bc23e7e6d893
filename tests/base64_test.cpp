#include "zelvane/crypto/base64.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <random>
#include <tuple>
#include <vector>

#include "support/scratch.h"
#include "support/slot.h"

namespace {
bool g_noMemory = false;
}

// The codecs ask for their result through this form alone, so that a test can refuse it.
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept {
  if (g_noMemory) return nullptr;
  try {
    return ::operator new[](size);
  } catch (...) {
    return nullptr;
  }
}

namespace {

using test::Scratch;
using test::Slot;

using Call = std::tuple<unsigned long, unsigned long, unsigned, bool>;  // consumed, total, percent, finished

std::string const kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// ---- The codec told again, group by group, with the calls that a progress object gets ----

void Step(std::vector<Call>& calls, unsigned long consumed, unsigned long total) {
  auto const percent =
      static_cast<unsigned>(std::lround(100.0 * static_cast<double>(consumed) / static_cast<double>(total)));
  unsigned const last = calls.empty() ? 0 : std::get<2>(calls.back());
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
  unsigned long const copied = bytes.empty() ? 0 : codec.SaveToBuf(bytes.data(), bytes.size());
  EXPECT_EQ(bytes.size(), copied);
  return bytes;
}

template <class Codec>
std::string Convert(std::string const& in) {
  Codec codec;
  EXPECT_TRUE(codec.LoadFromBuf(in.data(), in.size())) << in;
  return Result(codec);
}

class Recorder : public ProgressClass {
 public:
  void Progress(ClassBase64* codec, unsigned long consumed, unsigned long total, unsigned short percent,
                bool finished) const override {
    EXPECT_EQ(expected, codec);
    calls.emplace_back(consumed, total, percent, finished);
  }
  ClassBase64* expected = nullptr;
  mutable std::vector<Call> calls;
};

// ---- Layout ----

#if defined(__x86_64__) || defined(__i386__)
TEST(Base64, VirtualOperationsKeepTheirSlots) {
  using C = ClassBase64;
  using S = std::string const&;
  EXPECT_EQ(0U, Slot(&C::EncodeDecodeFunction));  // the destructor takes 1 and 2
  EXPECT_EQ(3U, Slot(&C::LoadFromBuf));
  EXPECT_EQ(4U, Slot(static_cast<bool (C::*)(S)>(&C::LoadFromStr)));
  EXPECT_EQ(5U, Slot(static_cast<bool (C::*)(char const*)>(&C::LoadFromStr)));
  EXPECT_EQ(6U, Slot(static_cast<bool (C::*)(S)>(&C::LoadFromFile)));
  EXPECT_EQ(7U, Slot(static_cast<bool (C::*)(char const*)>(&C::LoadFromFile)));
  EXPECT_EQ(8U, Slot(static_cast<bool (C::*)(S)>(&C::SaveToFile)));
  EXPECT_EQ(9U, Slot(static_cast<bool (C::*)(char const*)>(&C::SaveToFile)));
  EXPECT_EQ(10U, Slot(static_cast<bool (C::*)(std::string&)>(&C::SaveToStr)));
  EXPECT_EQ(11U, Slot(static_cast<bool (C::*)(char*, unsigned long)>(&C::SaveToStr)));
  EXPECT_EQ(12U, Slot(&C::SaveToBuf));
  EXPECT_EQ(13U, Slot(&C::SetProgress));
  EXPECT_EQ(14U, Slot(&C::Unload));
  using E = EncodeBase64;
  EXPECT_EQ(15U, Slot(static_cast<bool (E::*)(S, std::string&)>(&E::EncodeStr)));
  EXPECT_EQ(16U, Slot(static_cast<std::string (E::*)(S)>(&E::EncodeStr)));
  EXPECT_EQ(17U, Slot(static_cast<bool (E::*)(char const*, char*, unsigned long)>(&E::EncodeStr)));
  EXPECT_EQ(18U, Slot(static_cast<bool (E::*)(S, S)>(&E::EncodeFile)));
  EXPECT_EQ(19U, Slot(static_cast<bool (E::*)(char const*, char const*)>(&E::EncodeFile)));
  using D = DecodeBase64;
  EXPECT_EQ(15U, Slot(static_cast<bool (D::*)(S, std::string&)>(&D::DecodeStr)));
  EXPECT_EQ(16U, Slot(static_cast<std::string (D::*)(S)>(&D::DecodeStr)));
  EXPECT_EQ(17U, Slot(static_cast<bool (D::*)(char const*, char*, unsigned long)>(&D::DecodeStr)));
  EXPECT_EQ(18U, Slot(static_cast<bool (D::*)(S, S)>(&D::DecodeFile)));
  EXPECT_EQ(19U, Slot(static_cast<bool (D::*)(char const*, char const*)>(&D::DecodeFile)));
  EXPECT_EQ(2U, Slot(&ProgressClass::Progress));
}
#endif

TEST(Base64, OperationsCallEachOtherVirtually) {
  struct Spy : EncodeBase64 {
    bool LoadFromBuf(void const* data, unsigned long length) override {
      return Note("load", length), EncodeBase64::LoadFromBuf(data, length);
    }
    unsigned long SaveToBuf(void* buffer, unsigned long size) override {
      return Note("save", size), EncodeBase64::SaveToBuf(buffer, size);
    }
    void Unload() override { Note("unload", 0), EncodeBase64::Unload(); }
    void Note(char const* name, unsigned long size) { seen += name + std::to_string(size) + ";"; }
    std::string seen;
  } spy;
  char out[9];
  EXPECT_TRUE(spy.EncodeStr("abc", out, sizeof out));
  EXPECT_STREQ("YWJjAA==", out);
  EXPECT_EQ(0U, spy.seen.find("load4;unload0;")) << spy.seen;
  EXPECT_NE(std::string::npos, spy.seen.find("save9;unload0;")) << spy.seen;
}

// ---- Conversion ----

TEST(Base64, PublishedVectors) {  // RFC 4648, section 10
  for (auto const& [bytes, text] : std::vector<std::pair<std::string, std::string>>{{"f", "Zg=="},
                                                                                    {"fo", "Zm8="},
                                                                                    {"foo", "Zm9v"},
                                                                                    {"foob", "Zm9vYg=="},
                                                                                    {"fooba", "Zm9vYmE="},
                                                                                    {"foobar", "Zm9vYmFy"}}) {
    EXPECT_EQ(text, Convert<EncodeBase64>(bytes));
    EXPECT_EQ(bytes, Convert<DecodeBase64>(text));
  }
}

TEST(Base64, LinesHold72CharactersAndTheLastHasNoBreak) {
  std::string const line(72, 'A');
  std::string const two = line + "\r\n" + line;
  for (auto const& [length, text] : std::vector<std::pair<size_t, std::string>>{{53, std::string(71, 'A') + "="},
                                                                                {54, line},
                                                                                {55, line + "\r\nAA=="},
                                                                                {57, line + "\r\nAAAA"},
                                                                                {108, two},
                                                                                {110, two + "\r\nAAA="}})
    EXPECT_EQ(text, Convert<EncodeBase64>(std::string(length, '\0'))) << length;
}

TEST(Base64, DecodingSkipsStopsAndDrops) {
  struct Row {
    std::string text, bytes;
  };
  for (Row const& row : std::vector<Row>{
           {" \tZ\r\nm-9*v\x80\xff\x01", "foo"},  // whatever is not in the alphabet
           {"Zm8=Zm9v", "fo"},                    // nothing after a padded group
           {"Zm9vZg==Zm9v", "foof"},
           {"Zm9vZm8", "foo"},  // three at the end
           {"Zm9", ""},
           {"====", std::string(1, '\0')},
           {"Z=9v", std::string("\x64\x0f\x6f")},  // "=" elsewhere is a character of value 0
           {"=m9v", std::string("\x02\x6f\x6f")},
           {"Zm=vZm9v", "f"},  // the third decides
           {"Zg=\r\n=", "f"},
           {std::string("Zm9v\0Zm9v", 9), "foofoo"},
           {"\r\n", ""},
       })
    EXPECT_EQ(row.bytes, Convert<DecodeBase64>(row.text)) << testing::PrintToString(row.text);
}

TEST(Base64, AgreesWithTheNaiveCodecInBytesAndCalls) {
  std::mt19937 random(20240229);
  auto const pick = [&](size_t below) { return std::uniform_int_distribution<size_t>(0, below - 1)(random); };
  for (int round = 0; round < 600; round++) {
    std::string bytes;
    for (size_t length = round < 200 ? 1 + static_cast<size_t>(round) : 1 + pick(3000); length > 0; length--)
      bytes += static_cast<char>(pick(256));
    bool const watched = round % 10 == 0;  // each call costs a pause
    Recorder recorder;
    EncodeBase64 encoder;
    recorder.expected = &encoder;
    encoder.SetProgress(watched ? &recorder : nullptr);
    std::vector<char> const exact(bytes.begin(), bytes.end());  // without a NUL behind it
    ASSERT_TRUE(encoder.LoadFromBuf(exact.data(), exact.size()));
    std::vector<Call> calls;
    std::string text = NaiveEncode(bytes, calls);
    ASSERT_EQ(text, Result(encoder)) << "round " << round;
    ASSERT_EQ(watched ? calls : std::vector<Call>(), recorder.calls) << "round " << round;
    ASSERT_EQ(bytes, Convert<DecodeBase64>(text)) << "round " << round;

    for (size_t damage = pick(4); damage > 0; damage--) {
      std::string const junk = pick(3) == 0 ? "=" : std::string(1 + pick(5), static_cast<char>(pick(256)));
      text.replace(pick(text.size()), pick(3), junk);
    }
    DecodeBase64 decoder;
    recorder.calls.clear();
    recorder.expected = &decoder;
    decoder.SetProgress(watched ? &recorder : nullptr);
    ASSERT_TRUE(decoder.LoadFromBuf(text.data(), text.size()));
    calls.clear();
    ASSERT_EQ(NaiveDecode(text, calls), Result(decoder)) << "round " << round << ": " << text;
    ASSERT_EQ(watched ? calls : std::vector<Call>(), recorder.calls) << "round " << round << ": " << text;
  }
}

TEST(Base64, ProgressOfSmallInputs) {
  Recorder recorder;
  EncodeBase64 encoder;
  recorder.expected = &encoder;
  encoder.SetProgress(&recorder);
  encoder.LoadFromBuf("abcdefgh", 8);
  EXPECT_EQ((std::vector<Call>{{3, 8, 38, false}, {6, 8, 75, false}, {8, 8, 100, true}}), recorder.calls);
  recorder.calls.clear();
  DecodeBase64 decoder;
  recorder.expected = &decoder;
  decoder.SetProgress(&recorder);
  decoder.LoadFromBuf("YWJj\r\nZGVm\n", 11);  // the line feed at the end is input, too
  EXPECT_EQ((std::vector<Call>{{4, 11, 36, false}, {10, 11, 91, false}}), recorder.calls);
}

// ---- Text ----

TEST(Base64, TextIsConvertedWithItsNul) {
  struct Row {
    std::string plain, text;
  };
  for (Row const& row :
       std::vector<Row>{{"abc", "YWJjAA=="}, {"", "AA=="}, {"ab", "YWIA"}, {"\xe7\xe3o", "5+NvAA=="}}) {
    std::string plain = row.plain;
    std::string text = row.text;
    EXPECT_EQ(text, EncodeBase64FromStr(plain));
    EXPECT_EQ(plain, DecodeBase64ToStr(text));
    EXPECT_EQ(row.plain, plain);
    EXPECT_EQ(row.text, text);
  }
  std::string const cut("ab\0cd", 5);
  EXPECT_EQ("YWIA", EncodeBase64().EncodeStr(cut));
  EXPECT_EQ("foo", DecodeBase64().DecodeStr("Zm9v"));  // another tool's, without the NUL
}

TEST(Base64, TextWithoutAResultFails) {
  for (char const* text : {"", "Zm9", "-*-"}) {
    std::string out = "old";
    char buffer[] = "old";
    EXPECT_FALSE(DecodeBase64().DecodeStr(text, out)) << text;
    EXPECT_EQ("old", out) << text;
    EXPECT_EQ("", DecodeBase64().DecodeStr(text)) << text;
    EXPECT_FALSE(DecodeBase64().DecodeStr(text, buffer, sizeof buffer)) << text;
    EXPECT_EQ(0, buffer[3]) << text;
  }
  std::string out = "old";
  EXPECT_TRUE(DecodeBase64().DecodeStr("AGE=", out));  // a result that begins with a NUL
  EXPECT_EQ("", out);
}

TEST(Base64, CharacterFormsRefuseNullAndCutToTheirSize) {
  char out[] = "..........";
  EXPECT_FALSE(EncodeBase64().EncodeStr(nullptr, out, 5));
  EXPECT_FALSE(EncodeBase64().EncodeStr("abc", nullptr, 5));
  EXPECT_FALSE(DecodeBase64().DecodeStr("YWJj", out, 0));
  EXPECT_STREQ("..........", out);
  EXPECT_TRUE(EncodeBase64().EncodeStr("abc", out, 5));
  EXPECT_STREQ("YWJj", out);
  EXPECT_EQ('.', out[5]);
  EXPECT_TRUE(DecodeBase64().DecodeStr("Zm9vYmFy", out, 11));
  EXPECT_STREQ("foobar", out);
  EXPECT_EQ(std::string(4, '\0'), std::string(out + 6, 4));
}

// ---- The result ----

TEST(Base64, SavingToBuffers) {
  DecodeBase64 codec;
  char buffer[6] = {'.', '.', '.', '.', '.', '.'};
  std::string text = "old";
  EXPECT_EQ(0U, codec.SaveToBuf(buffer, 6));  // nothing loaded yet
  EXPECT_EQ(0U, codec.SaveToBuf(nullptr, 6));
  EXPECT_EQ("......", std::string(buffer, 6));
  EXPECT_FALSE(codec.SaveToStr(text));
  EXPECT_FALSE(codec.SaveToStr(buffer, 5));
  EXPECT_EQ(std::string("....\0.", 6), std::string(buffer, 6));

  ASSERT_TRUE(codec.LoadFromBuf("YWIAYw==", 8));  // "ab\0c"
  EXPECT_EQ(4U, codec.SaveToBuf(nullptr, 0));
  EXPECT_EQ(0U, codec.SaveToBuf(buffer, 0));
  EXPECT_FALSE(codec.SaveToStr(nullptr, 6));
  EXPECT_FALSE(codec.SaveToStr(buffer, 0));
  EXPECT_EQ(std::string("....\0.", 6), std::string(buffer, 6));
  struct Row {
    unsigned long size, copied;
    std::string bytes, text;
  };
  for (Row const& row : std::vector<Row>{{3, 3, {"ab\0...", 6}, {"ab\0...", 6}},
                                         {4, 4, {"ab\0c..", 6}, {"ab\0\0..", 6}},
                                         {5, 4, {"ab\0c\0.", 6}, {"ab\0c\0.", 6}},
                                         {6, 4, {"ab\0c\0\0", 6}, {"ab\0c\0\0", 6}}}) {
    memset(buffer, '.', 6);
    EXPECT_EQ(row.copied, codec.SaveToBuf(buffer, row.size)) << row.size;
    EXPECT_EQ(row.bytes, std::string(buffer, 6)) << row.size;
    memset(buffer, '.', 6);
    EXPECT_TRUE(codec.SaveToStr(buffer, row.size)) << row.size;
    EXPECT_EQ(row.text, std::string(buffer, 6)) << row.size;
  }
  EXPECT_TRUE(codec.SaveToStr(text));
  EXPECT_EQ("ab", text);
  codec.Unload();
  EXPECT_EQ("", Result(codec));
}

TEST(Base64, RefusedLoadsKeepTheOldResultAndFailedOnesDoNot) {
  Scratch scratch;
  EncodeBase64 codec;
  ASSERT_TRUE(codec.LoadFromBuf("foo", 3));
  EXPECT_FALSE(codec.LoadFromBuf(nullptr, 3));
  EXPECT_FALSE(codec.LoadFromBuf("foo", 0));
  EXPECT_FALSE(codec.LoadFromStr(static_cast<char const*>(nullptr)));
  EXPECT_FALSE(codec.LoadFromFile(static_cast<char const*>(nullptr)));
  EXPECT_FALSE(codec.LoadFromFile(scratch.Path("missing")));
  EXPECT_FALSE(codec.LoadFromFile(scratch.Write("empty", "")));
  EXPECT_FALSE(codec.LoadFromFile(scratch.Path()));
  EXPECT_FALSE(codec.LoadFromFile("/dev/zero"));
  int pipeEnds[2];
  ASSERT_TRUE(pipe(pipeEnds) == 0 && write(pipeEnds[1], "foo", 3) == 3 && close(pipeEnds[1]) == 0);
  EXPECT_FALSE(codec.LoadFromFile("/dev/fd/" + std::to_string(pipeEnds[0])));
  close(pipeEnds[0]);
  EXPECT_FALSE(codec.EncodeDecodeFunction(nullptr, 3));
  EXPECT_FALSE(codec.EncodeDecodeFunction("foo", 0));
  EXPECT_EQ("Zm9v", Result(codec));
  EXPECT_TRUE(codec.EncodeDecodeFunction("bar", 3));
  EXPECT_EQ("YmFy", Result(codec));
  EXPECT_FALSE(codec.EncodeDecodeFunction("bar", static_cast<unsigned long>(-1)));  // no memory holds the text
  EXPECT_EQ("", Result(codec));

  DecodeBase64 decoder;
  ASSERT_TRUE(decoder.LoadFromBuf("Zm9v", 4));
  g_noMemory = true;
  bool const loaded = decoder.LoadFromBuf("Zm9v", 4) || codec.LoadFromBuf("foo", 3);
  g_noMemory = false;
  EXPECT_FALSE(loaded);
  EXPECT_EQ("", Result(decoder));
}

// ---- Files ----

TEST(Base64, FilesThereAndBack) {
  Scratch scratch;
  std::string bytes;
  for (int i = 0; i < 100000; i++) bytes += static_cast<char>(i * 31 >> 3);
  std::string const plain = scratch.Write("plain", bytes);
  std::string const text = scratch.Write("text", "an older, longer text" + std::string(200000, '.'));
  EncodeBase64 encoder;
  EXPECT_TRUE(encoder.EncodeFile(plain, text));
  EXPECT_EQ("", Result(encoder));
  EXPECT_EQ(Convert<EncodeBase64>(bytes), scratch.Read("text"));
  EXPECT_TRUE(DecodeBase64().DecodeFile(text.c_str(), scratch.Path("back").c_str()));
  EXPECT_EQ(bytes, scratch.Read("back"));
  EXPECT_TRUE(DecodeBase64().DecodeFile(text, text));  // loaded before it is written
  EXPECT_EQ(bytes, scratch.Read("text"));
  EXPECT_TRUE(DecodeBase64().DecodeFile(scratch.Write("junk", "-*-"), scratch.Write("none", "old")));
  EXPECT_EQ("", scratch.Read("none"));
}

TEST(Base64, FileFailuresStopAtTheFirst) {
  Scratch scratch;
  std::string const full = scratch.Write("full", "abc");
  std::string const kept = scratch.Write("kept", "old");
  scratch.Write("empty", "");
  int const descriptors = test::OpenDescriptors();
  struct Row {
    std::string source, destination;
  };
  for (Row const& row : std::vector<Row>{{scratch.Path("missing"), kept},
                                         {scratch.Path("empty"), kept},
                                         {scratch.Path(), kept},
                                         {"/dev/zero", kept},
                                         {full, ""},
                                         {full, scratch.Path("no/such/folder")},
                                         {full, kept + "/x"},
                                         {full, scratch.Path()},
                                         {full, "/dev/full"}}) {
    EncodeBase64 codec;
    EXPECT_FALSE(codec.EncodeFile(row.source, row.destination)) << row.source << " to " << row.destination;
    EXPECT_EQ("", Result(codec)) << row.source << " to " << row.destination;
  }
  EXPECT_FALSE(EncodeBase64().EncodeFile(nullptr, kept.c_str()));
  EXPECT_FALSE(DecodeBase64().DecodeFile(full.c_str(), nullptr));
  EXPECT_FALSE(EncodeBase64().SaveToFile(static_cast<char const*>(nullptr)));
  EXPECT_EQ("old", scratch.Read("kept"));
  EXPECT_EQ((std::vector<std::string>{"empty", "full", "kept"}), scratch.List());
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  EXPECT_TRUE(EncodeBase64().SaveToFile(kept));  // no result: no bytes
  EXPECT_EQ("", scratch.Read("kept"));
}

}  // namespace
