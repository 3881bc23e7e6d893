#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "support/scratch.h"
#include "support/slot.h"
#include "support/vectors.h"
#include "zelvane/crypto/cipher.h"

namespace {

using test::Bytes;
using test::Scratch;
using test::Slot;

struct RipeManager : HashManager {
  Hash_RipeMD256 hash;
  HashClass* GetHashObject() override { return &hash; }
};

// With a hash and, unless the phrase is null, a key.
struct Keyed : CipherManager {
  RipeManager hashes;
  explicit Keyed(char const* phrase = "open sesame") {
    SetHashManager(&hashes);
    SetAlgorithm(CIPHER_SAFER_SK64);
    EXPECT_EQ(phrase != nullptr, InitKey(phrase));
  }
};

std::string Encoded(std::string text, CipherMode mode = CIPHER_CHAINED) {
  Keyed manager;
  manager.SetMode(mode);
  EXPECT_EQ(!text.empty(), manager.EncodeBuffer(text.data(), text.data(), text.size()));
  return text;
}

TEST(CipherManager, WithoutACipherEverythingFails) {
  Scratch scratch;
  std::string const source = scratch.Write("source", "text");
  std::string const kept = scratch.Write("kept", "old");
  CipherManager manager;
  char text[] = "12345678";
  EXPECT_EQ(nullptr, manager.GetCipherObject());
  EXPECT_EQ(nullptr, manager.GetHashManager());
  EXPECT_EQ(CIPHER_CHAINED, manager.GetMode());
  EXPECT_FALSE(manager.InitKey("phrase"));
  EXPECT_FALSE(manager.InitKey("phrase", nullptr));
  EXPECT_FALSE(manager.EncodeBuffer(text, text, 8));
  EXPECT_FALSE(manager.DecodeBuffer(text, text, 8));
  EXPECT_EQ("", manager.EncodeString("text"));
  EXPECT_EQ("", manager.DecodeString("text"));
  EXPECT_FALSE(manager.EncodeFile(source, kept));
  EXPECT_FALSE(manager.DecodeFile(source, kept));
  // A cipher without a key is no better.
  Keyed unkeyed(nullptr);
  EXPECT_FALSE(unkeyed.EncodeFile(source, kept));
  EXPECT_EQ("", unkeyed.EncodeString("text"));
  EXPECT_EQ("old", scratch.Read("kept"));
  EXPECT_STREQ("12345678", text);
}

TEST(CipherManager, EveryAlgorithmIsSaferSk64) {
  RipeManager hashes;
  for (int value : {0, 1, -1, std::numeric_limits<int>::max()}) {
    CipherManager manager;
    manager.SetMode(CIPHER_CODE_BOOK);
    manager.SetHashManager(&hashes);
    manager.SetAlgorithm(static_cast<CipherAlgorithm>(value));
    EXPECT_EQ(value, manager.GetAlgorithm());
    ASSERT_NE(nullptr, dynamic_cast<Cipher_Safer_SK64*>(manager.GetCipherObject())) << value;
    EXPECT_EQ(CIPHER_CODE_BOOK, manager.GetCipherObject()->GetMode());
    manager.SetMode(CIPHER_CHAINED);
    EXPECT_EQ(CIPHER_CHAINED, manager.GetCipherObject()->GetMode());
    EXPECT_EQ(&hashes, manager.GetHashManager());
    EXPECT_TRUE(manager.InitKey("phrase"));
    // A new object has no key, and no hash when the manager has none to give.
    HashManager empty;
    manager.SetHashManager(&empty);
    manager.SetAlgorithm(static_cast<CipherAlgorithm>(value));
    EXPECT_EQ("", manager.EncodeString("text"));
    EXPECT_FALSE(manager.InitKey("phrase"));
  }
}

TEST(CipherManager, BuffersGoOnInPieces) {
  std::string const text = Bytes(100);
  std::string iv = "initial.";
  Keyed manager;
  for (void* start : {static_cast<void*>(nullptr), static_cast<void*>(iv.data())}) {
    Hash_RipeMD256 hash;
    Cipher_Safer_SK64 cipher;
    cipher.SetHash(&hash);
    ASSERT_TRUE(cipher.InitKey("open sesame", start) && manager.InitKey(std::string("open sesame"), start));
    std::string expected(100, '?'), coded(100, '?'), back(100, '?');
    EXPECT_TRUE(cipher.EncodeBuffer(text.data(), expected.data(), 100));
    EXPECT_TRUE(manager.EncodeBuffer(text.data(), coded.data(), 40));
    EXPECT_TRUE(manager.EncodeBuffer(&text[40], &coded[40], 60));
    EXPECT_EQ(expected, coded);
    manager.GetCipherObject()->Done();
    EXPECT_TRUE(manager.DecodeBuffer(coded.data(), back.data(), 100));
    EXPECT_EQ(text, back);
  }
  char byte = 0;
  EXPECT_FALSE(manager.EncodeBuffer(&byte, &byte, 0));
  EXPECT_FALSE(manager.EncodeBuffer(nullptr, &byte, 1));
  for (unsigned long length : {0x80000000UL, std::numeric_limits<unsigned long>::max()}) {
    EXPECT_FALSE(manager.EncodeBuffer(&byte, &byte, length)) << length;
    EXPECT_FALSE(manager.DecodeBuffer(&byte, &byte, length)) << length;
  }
}

TEST(CipherManager, FilesOfAnyLength) {
  Scratch scratch;
  int const descriptors = test::OpenDescriptors();
  for (CipherMode mode : {CIPHER_CHAINED, CIPHER_CODE_BOOK, static_cast<CipherMode>(2)}) {
    Keyed manager;
    manager.SetMode(mode);
    for (size_t length : {0, 1, 7, 8, 9, 4095, 4096, 4097, 8192, 12299}) {
      std::string const text = Bytes(length);
      std::string const source = scratch.Write("source", text);
      std::string const coded = scratch.Write("coded", std::string(20000, 'x'));
      EXPECT_TRUE(manager.EncodeFile(source, coded)) << length;
      size_t const sure = mode == CIPHER_CODE_BOOK ? length - length % 8 : length;
      EXPECT_EQ(length, scratch.Read("coded").size());
      EXPECT_EQ(Encoded(text, mode).substr(0, sure), scratch.Read("coded").substr(0, sure))
          << length << ", mode " << mode;
      EXPECT_TRUE(manager.DecodeFile(coded.c_str(), scratch.Path("back").c_str())) << length;
      EXPECT_EQ(length, scratch.Read("back").size());
      EXPECT_EQ(text.substr(0, sure), scratch.Read("back").substr(0, sure)) << length << ", mode " << mode;
      EXPECT_EQ(text, scratch.Read("source"));
    }
  }
  EXPECT_EQ(descriptors, test::OpenDescriptors());
}

TEST(CipherManager, FilesThatCannotBe) {
  Scratch scratch;
  Keyed manager;
  int const descriptors = test::OpenDescriptors();
  std::string const text = Bytes(5000);
  std::string const source = scratch.Write("source", text);
  std::string const kept = scratch.Write("kept", "old");
  ASSERT_EQ(0, symlink(source.c_str(), scratch.Path("soft").c_str()));
  ASSERT_EQ(0, link(source.c_str(), scratch.Path("hard").c_str()));
  struct {
    std::string from, to;
  } const cases[] = {{scratch.Path("missing"), kept},
                     {scratch.Path(), kept},
                     {source, source},
                     {source, scratch.Path("soft")},
                     {source, scratch.Path("hard")},
                     {scratch.Path("soft"), source},
                     {source, scratch.Path("none/such")},
                     {source, scratch.Path()},
                     {source, ""},
                     {"", kept},
                     {source, "/dev/full"}};
  for (auto const& c : cases) {
    EXPECT_FALSE(manager.EncodeFile(c.from, c.to)) << c.from << " to " << c.to;
    EXPECT_FALSE(manager.DecodeFile(c.from, c.to)) << c.from << " to " << c.to;
  }
  char const* const none = nullptr;
  EXPECT_FALSE(manager.EncodeFile(none, kept.c_str()));
  EXPECT_FALSE(manager.EncodeFile(source.c_str(), none));
  EXPECT_EQ(text, scratch.Read("source"));
  EXPECT_EQ("old", scratch.Read("kept"));
  EXPECT_EQ((std::vector<std::string>{"hard", "kept", "soft", "source"}), scratch.List());
  EXPECT_EQ(descriptors, test::OpenDescriptors());
  // What failed has not moved the stream.
  EXPECT_TRUE(manager.EncodeFile(source, kept));
  EXPECT_EQ(Encoded(text), scratch.Read("kept"));
}

TEST(CipherManager, ChunksPassThroughTheManager) {
  struct Spy : CipherManager {
    std::vector<unsigned long> seen;
    bool EncodeBuffer(void const* in, void* out, unsigned long length) override {
      seen.push_back(length);
      std::memmove(out, in, length);
      return seen.size() < 3;
    }
  } spy;
  Scratch scratch;
  std::string const out = scratch.Path("out");
  EXPECT_TRUE(spy.EncodeFile(scratch.Write("two", Bytes(4100)), out));
  EXPECT_EQ((std::vector<unsigned long>{4096, 4}), spy.seen);
  EXPECT_EQ(Bytes(4100), scratch.Read("out"));
  spy.seen.clear();
  EXPECT_FALSE(spy.EncodeFile(scratch.Write("three", Bytes(9000)), out));
  EXPECT_EQ(Bytes(8192), scratch.Read("out"));
}

TEST(CipherManager, StringsBeginAndEndTheirOwnStream) {
  Keyed manager;
  for (std::string const text : {"a", "12345678", "Acentuação em Latin-1", "a text of more than one block"}) {
    std::string const expected = Encoded(text).c_str();
    EXPECT_EQ(expected, manager.EncodeString(text)) << text;
    EXPECT_EQ(expected, manager.EncodeString(text.c_str())) << text;
    ASSERT_EQ(expected.size(), text.size()) << "choose another text: " << text;
    EXPECT_EQ(text, manager.DecodeString(expected));
  }
  char const* const none = nullptr;
  EXPECT_EQ("", manager.EncodeString(none));
  EXPECT_EQ("", manager.DecodeString(none));
  EXPECT_EQ("", manager.EncodeString(""));

  // A ciphertext with a NUL comes back cut: the texts are tried until there is one.
  int cut = 0;
  for (int i = 0; i < 2000; i++) {
    std::string const text = "text number " + std::to_string(i);
    std::string const coded = Encoded(text);
    size_t const end = std::min(coded.find('\0'), coded.size());
    ASSERT_EQ(coded.substr(0, end), manager.EncodeString(text)) << text;
    if (end < coded.size()) cut++;
  }
  EXPECT_GT(cut, 0);
}

TEST(CipherManager, VirtualOperationsKeepTheirSlots) {
  using M = CipherManager;
  using Text = char const*;  // the destructor takes 0 and 1
  EXPECT_EQ(2U, Slot(static_cast<bool (M::*)(Text, void*)>(&M::InitKey)));
  EXPECT_EQ(3U, Slot(static_cast<bool (M::*)(Text)>(&M::InitKey)));
  EXPECT_EQ(4U, Slot(static_cast<bool (M::*)(Text, Text)>(&M::EncodeFile)));
  EXPECT_EQ(5U, Slot(static_cast<bool (M::*)(Text, Text)>(&M::DecodeFile)));
  EXPECT_EQ(6U, Slot(&M::EncodeBuffer));
  EXPECT_EQ(7U, Slot(&M::DecodeBuffer));
  EXPECT_EQ(8U, Slot(static_cast<std::string (M::*)(Text)>(&M::EncodeString)));
  EXPECT_EQ(9U, Slot(static_cast<std::string (M::*)(Text)>(&M::DecodeString)));
  EXPECT_EQ(10U, Slot(&M::SetAlgorithm));
  EXPECT_EQ(11U, Slot(&M::GetAlgorithm));
  EXPECT_EQ(12U, Slot(&M::SetMode));
  EXPECT_EQ(13U, Slot(&M::GetMode));
  EXPECT_EQ(14U, Slot(&M::SetHashManager));
  EXPECT_EQ(15U, Slot(&M::GetHashManager));
  EXPECT_EQ(16U, Slot(&M::GetCipherObject));
}

}  // namespace
