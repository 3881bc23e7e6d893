#include "support/test.h"
#include "support/vectors.h"
#include "zelvane/crypto/cipher.h"

namespace {

using test::Bytes, test::Scratch;

struct RipeManager : HashManager {
  Hash_RipeMD256 hash;
  HashClass* GetHashObject() override { return &hash; }
};

// Has a hash and, unless the phrase is null, a key.
struct Keyed : CipherManager {
  RipeManager hashes;
  explicit Keyed(char const* phrase = "open sesame") {
    SetHashManager(&hashes);
    SetAlgorithm(CIPHER_SAFER_SK64);
    EXPECT_EQ(InitKey(phrase), phrase != nullptr);
  }
};

std::string Encoded(std::string text, CipherMode mode = CIPHER_CHAINED) {
  Keyed manager;
  manager.SetMode(mode);
  EXPECT_EQ(manager.EncodeBuffer(text.data(), text.data(), text.size()), !text.empty());
  return text;
}

TEST(CipherManager, WhatCannotBeDoneFails) {
  Scratch s;
  std::string const text = Bytes(5000), source = s.Write("source", text), kept = s.Write("kept", "old");
  ASSERT_EACH((symlink(source.c_str(), s.Path("soft").c_str()), link(source.c_str(), s.Path("hard").c_str())), 0);
  HashManager hashes;
  EXPECT_EACH((hashes.GetDigest(), hashes.GetDigestString(1), hashes.GetDigestSize()), "", "", 0);
  CipherManager bare;
  Keyed unkeyed(nullptr), keyed;
  char bytes[] = "12345678";
  for (CipherManager* m : {&bare, static_cast<CipherManager*>(&unkeyed)}) {
    EXPECT_NONE(m->EncodeBuffer(bytes, bytes, 8), m->DecodeBuffer(bytes, bytes, 8)) << (m == &bare);
    EXPECT_NONE(m->EncodeFile(source, kept), m->DecodeFile(source, kept)) << (m == &bare);
    EXPECT_EACH((m->EncodeString("text"), m->DecodeString("text")), "") << (m == &bare);
  }
  EXPECT_NONE(bare.InitKey("phrase"), bare.GetCipherObject(), keyed.EncodeBuffer(nullptr, bytes, 1));
  for (unsigned long length : {0UL, 0x80000000UL, ULONG_MAX})
    EXPECT_NONE(keyed.EncodeBuffer(bytes, bytes, length), keyed.DecodeBuffer(bytes, bytes, length)) << length;
  std::pair<std::string, std::string> const refused[] = {
      {s.Path("missing"), kept}, {s.Path(), kept},     {source, source}, {source, s.Path("soft")},
      {source, s.Path("hard")},  {"", kept},           {source, ""},     {source, s.Path("none/such")},
      {source, s.Path()},        {source, "/dev/full"}};
  for (auto const& [from, to] : refused)
    EXPECT_NONE(keyed.EncodeFile(from, to), keyed.DecodeFile(from, to)) << from << " to " << to;
  EXPECT_EACH((s.Read("source"), s.Read("kept"), bytes), text, "old", "12345678");
  EXPECT_TRUE(keyed.EncodeFile(source, kept));  // a failed call does not advance the stream
  EXPECT_EQ(s.Read("kept"), Encoded(text));
  keyed.SetAlgorithm(CipherAlgorithm(-1));  // a new cipher without a key, for any number
  EXPECT_EACH((keyed.EncodeString("text").empty(), keyed.GetAlgorithm(), keyed.InitKey("phrase")), true, -1, true);
}

TEST(CipherManager, FilesOfAnyLength) {
  Scratch s;
  for (CipherMode mode : {CIPHER_CHAINED, CIPHER_CODE_BOOK, CipherMode(2)}) {
    Keyed manager;
    manager.SetMode(mode);
    for (size_t length : {0, 1, 7, 8, 4095, 4096, 4097, 8192, 12299}) {
      std::string const text = Bytes(length), coded = s.Write("coded", std::string(20000, 'x')), back = s.Path("back");
      EXPECT_ALL(manager.EncodeFile(s.Write("source", text), coded), manager.DecodeFile(coded, back)) << length;
      size_t const sure = mode == CIPHER_CODE_BOOK ? length - length % 8 : length;
      EXPECT_EQ(s.Read("coded").size(), length) << mode;
      EXPECT_EQ(s.Read("coded").substr(0, sure), Encoded(text, mode).substr(0, sure)) << length << " " << mode;
      EXPECT_EQ(s.Read("back").substr(0, sure), text.substr(0, sure)) << length << " " << mode;
    }
  }
}

TEST(CipherManager, StringsBeginTheirOwnStreamAndEndAtANul) {
  Keyed manager;
  EXPECT_EACH((manager.EncodeString(static_cast<char const*>(nullptr)), manager.EncodeString("")), "");
  int cut = 0;
  for (int i = 0; i < 2000; i++) {
    std::string const text = "texto n\xfamero " + std::to_string(i), coded = Encoded(text).c_str();
    ASSERT_EQ(manager.EncodeString(text), coded) << text;
    cut += coded.size() < text.size();
    if (coded.size() == text.size()) ASSERT_EACH((manager.DecodeString(coded)), text);
  }
  EXPECT_GT(cut, 0);
}

TEST(CipherManager, EveryFormDoesTheSame) {
  Scratch s;
  std::string const text = Bytes(99), source = s.Write("source", text), coded = s.Path("coded"), back = s.Path("back");
  Keyed m(nullptr);
  EXPECT_EACH((m.GetHashManager(), m.InitKey(std::string("open sesame"))), &m.hashes, true);
  std::string const expected = Keyed().EncodeString("text");
  EXPECT_EACH((m.EncodeString(std::string("text")), m.DecodeString(expected), m.DecodeString(expected.c_str())),
              expected, "text", "text");
  EXPECT_ALL(m.EncodeFile(source.c_str(), coded.c_str()), m.DecodeFile(coded.c_str(), back.c_str()));
  EXPECT_EACH((s.Read("coded"), s.Read("back")), Encoded(text), text);
  EXPECT_NONE(m.EncodeFile(nullptr, coded.c_str()), m.DecodeFile(source.c_str(), nullptr));
  EXPECT_EACH((m.InitKey(std::string("open sesame"), nullptr), m.GetMode()), true, CIPHER_CHAINED);
  m.SetMode(CIPHER_CODE_BOOK);
  CipherMode const current = m.GetCipherObject()->GetMode();
  m.SetAlgorithm(CIPHER_SAFER_SK64);
  EXPECT_EACH((current, m.GetCipherObject()->GetMode()), CIPHER_CODE_BOOK) << "of the cipher, and of a new one";
}

}  // namespace
