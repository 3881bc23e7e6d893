#include "zelvane/crypto/cipher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "support/slot.h"
#include "support/vectors.h"

namespace {

using test::Bytes;
using test::FromHex;
using test::Hex;
using test::ReadVectors;
using test::Slot;

std::string const kKey = FromHex("e7b40ec21cad7be3");

SaferMode Mode(int value) { return static_cast<SaferMode>(value); }

bool Key(Cipher_Safer& cipher, std::string const& key, int mode, void* iv = nullptr) {
  // A copy of exactly that size: a byte read beyond it is seen by the sanitizer.
  std::vector<char> const exact(key.begin(), key.end());
  return cipher.InitNew(exact.empty() ? "" : exact.data(), static_cast<long>(exact.size()), iv, Mode(mode));
}

std::string EncodeBlock(Cipher_Safer& cipher, std::string block = "12345678") {
  cipher.Encode(block.data());
  return Hex(block);
}

using Coder = bool (CipherClass::*)(void const*, void*, long);

std::string Code(CipherClass& cipher, Coder coder, std::string const& bytes) {
  std::string out(bytes.size(), '?');
  EXPECT_TRUE((cipher.*coder)(bytes.data(), out.data(), static_cast<long>(bytes.size()))) << bytes.size();
  return out;
}

// What a subclass may do: it says nothing new here, but the library cannot know.
struct Replaced : Cipher_Safer_SK64 {
  int blocks = 0;
  void Encode(void* block) override {
    blocks++;
    Cipher_Safer_SK64::Encode(block);
  }
  void Decode(void* block) override {
    blocks++;
    Cipher_Safer_SK64::Decode(block);
  }
};

// The chaining told again, with one block operation at a time.
class Model {
 public:
  Model(int mode, std::string const& iv) : mode_(mode), feedback_(iv) { Key(cipher_, kKey, SAFER_SK64); }

  std::string Run(bool encode, std::string text) {
    if (mode_ != 0 && mode_ != 4) return text;
    for (size_t at = 0; at < text.size(); at += 8) {
      std::string const in = text.substr(at, 8);
      text.replace(at, 8, mode_ == 0 ? Chained(encode, in) : Alone(encode, in));
    }
    return text;
  }

 private:
  std::string Block(bool encode, std::string block) {
    if (encode) {
      cipher_.Encode(block.data());
    } else {
      cipher_.Decode(block.data());
    }
    return block;
  }
  static std::string Xor(std::string a, std::string const& b) {
    for (size_t i = 0; i < a.size(); i++) a[i] = static_cast<char>(a[i] ^ b[i]);
    return a;
  }
  std::string Chained(bool encode, std::string const& in) {
    if (in.size() < 8) {
      scratch_ = Block(true, feedback_);
      feedback_ = Xor(feedback_, scratch_);
      return Xor(in, scratch_);
    }
    std::string const out = encode ? Block(true, Xor(in, feedback_)) : Xor(Block(false, in), feedback_);
    feedback_ = Xor(feedback_, encode ? out : in);
    return out;
  }
  std::string Alone(bool encode, std::string const& in) {
    if (in.size() == 8) return Block(encode, in);
    scratch_ = Block(true, in + scratch_.substr(in.size()));
    return scratch_.substr(0, in.size());
  }

  Cipher_Safer_SK64 cipher_;
  int mode_;
  std::string feedback_;
  std::string scratch_ = std::string(8, '\0');
};

TEST(Cipher, KnownAnswersAtAnyAddressAloneAndInABuffer) {
  auto const lines = ReadVectors("safer.txt");
  ASSERT_EQ(21U, lines.size());
  for (auto const& line : lines) {
    int const mode = std::stoi(line[0]);
    std::string const plain = FromHex(line[3]);
    std::string const coded = FromHex(line[4]);
    Cipher_Safer cipher;
    cipher.SetRounds(std::stol(line[1]));
    ASSERT_TRUE(Key(cipher, FromHex(line[2]), mode));
    cipher.SetMode(CIPHER_CODE_BOOK);
    for (size_t shift = 0; shift < 8; shift++) {
      std::string text = std::string(shift, '.') + plain + "!";
      cipher.Encode(&text[shift]);
      EXPECT_EQ(std::string(shift, '.') + coded + "!", text) << line[0] << " " << line[2] << " + " << shift;
      cipher.Decode(&text[shift]);
      EXPECT_EQ(std::string(shift, '.') + plain + "!", text) << line[0] << " " << line[2] << " + " << shift;
    }
    for (size_t count : {1, 7, 8, 9, 16, 65}) {
      std::string plains, codeds;
      for (size_t i = 0; i < count; i++) plains += plain, codeds += coded;
      EXPECT_EQ(codeds, Code(cipher, &CipherClass::EncodeBuffer, plains)) << line[2] << ", " << count << " blocks";
      EXPECT_EQ(plains, Code(cipher, &CipherClass::DecodeBuffer, codeds)) << line[2] << ", " << count << " blocks";
    }
  }
}

// One block as the cipher is published: byte by byte, with powers and not tables of them, and one pair at a time.
class Published {
 public:
  Published(std::string const& key, int rounds) : rounds_(rounds) {  // SK-128
    std::vector<int> halves[2];
    for (int half : {0, 1}) {
      int sum = 0;
      for (size_t j = 0; j < 8; j++) {
        halves[half].push_back(static_cast<unsigned char>(key[8 * (1 - static_cast<size_t>(half)) + j]));
        sum ^= halves[half].back();
      }
      halves[half].push_back(sum);
    }
    for (int n = 0; n <= 2 * rounds; n++) {
      for (int j = 0; j < 8; j++) {
        int const byte = halves[n % 2][static_cast<size_t>((n + j) % 9)];
        int const turned = (byte << 3 * n % 8 | byte >> (8 - 3 * n % 8)) & 255;
        subkeys_.push_back(n == 0 ? turned : turned + Power(Power(9 * (n + 1) + j + 1)));
      }
    }
  }

  std::string Encode(std::string const& block) const {
    std::vector<int> bytes;
    for (char byte : block) bytes.push_back(static_cast<unsigned char>(byte));
    auto key = subkeys_.begin();
    auto const mix = [&](bool odd) {
      for (size_t j = 0; j < 8; j++, ++key)
        bytes[j] = ((j % 4 == 0 || j % 4 == 3) == odd ? bytes[j] ^ *key : bytes[j] + *key) & 255;
    };
    for (int round = 0; round < rounds_; round++) {
      mix(true);
      for (size_t j = 0; j < 8; j++) bytes[j] = j % 4 == 0 || j % 4 == 3 ? Power(bytes[j]) : Logarithm(bytes[j]);
      mix(false);
      for (int layer = 0; layer < 3; layer++) {
        std::vector<int> next(8);
        for (size_t pair = 0; pair < 4; pair++) {
          // The firsts in front of the seconds, but not after the last layer.
          bool const last = layer == 2;
          next[last ? 2 * pair : pair] = (2 * bytes[2 * pair] + bytes[2 * pair + 1]) & 255;
          next[last ? 2 * pair + 1 : pair + 4] = (bytes[2 * pair] + bytes[2 * pair + 1]) & 255;
        }
        bytes = next;
      }
    }
    mix(true);
    return std::string(bytes.begin(), bytes.end());
  }

 private:
  static int Power(int exponent) {
    int power = 1;
    for (int i = 0; i < exponent % 256; i++) power = power * 45 % 257;
    return power % 256;
  }
  static int Logarithm(int value) {
    int exponent = 0;
    while (Power(exponent) != value) exponent++;
    return exponent;
  }

  int rounds_;
  std::vector<int> subkeys_;
};

TEST(Cipher, RandomBlocksFollowThePublishedSteps) {
  std::mt19937 random(7);
  auto const bytes = [&](size_t count) {
    std::string text(count, '\0');
    for (char& byte : text) byte = static_cast<char>(random());
    return text;
  };
  for (int rounds = 4; rounds <= 13; rounds++) {
    std::string const key = bytes(16);
    Published const published(key, rounds);
    Cipher_Safer cipher;
    cipher.SetRounds(rounds);
    ASSERT_TRUE(Key(cipher, key, SAFER_SK128));
    cipher.SetMode(CIPHER_CODE_BOOK);
    std::string const block = bytes(8);
    EXPECT_EQ(Hex(published.Encode(block)), EncodeBlock(cipher, block)) << Hex(key) << " " << Hex(block);
    std::string const many = bytes(80000);
    EXPECT_EQ(many, Code(cipher, &CipherClass::DecodeBuffer, Code(cipher, &CipherClass::EncodeBuffer, many)))
        << Hex(key);
  }
}

TEST(Cipher, DefaultRounds) {
  for (auto const& line : ReadVectors("safer.txt")) {
    int const mode = std::stoi(line[0]);
    long const rounds = mode % 4 == 1 ? 5 : mode % 4 == 2 ? 6 : 10;
    if (std::stol(line[1]) != rounds) continue;
    Cipher_Safer cipher;
    ASSERT_TRUE(Key(cipher, FromHex(line[2]), mode));
    EXPECT_EQ(line[4], EncodeBlock(cipher, FromHex(line[3]))) << line[0] << " " << line[2];
  }
}

TEST(Cipher, BuffersFollowTheModel) {
  std::string iv = FromHex("0123456789abcdef");
  for (int mode : {0, 1, 2, 3, 4, 5, -1}) {
    for (size_t length : {1, 7, 8, 9, 12, 15, 16, 63, 64, 65, 511, 512, 513, 519, 520, 1111}) {
      Cipher_Safer_SK64 plain;
      Replaced replaced;
      Model model(mode, iv);
      for (Cipher_Safer* cipher : {static_cast<Cipher_Safer*>(&plain), static_cast<Cipher_Safer*>(&replaced)}) {
        ASSERT_TRUE(cipher->Init(kKey.data(), 8, iv.data()));
        cipher->SetMode(static_cast<CipherMode>(mode));
      }
      int blocks = 0;
      // Two ways in turn, so that the second goes on from registers that a rest has moved.
      for (int turn = 0; turn < 4; turn++) {
        bool const encode = turn % 2 == 0;
        Coder const coder = encode ? &CipherClass::EncodeBuffer : &CipherClass::DecodeBuffer;
        std::string const text = Bytes(length + static_cast<size_t>(turn));
        std::string const expected = model.Run(encode, text);
        blocks += static_cast<int>((text.size() + 7) / 8);
        EXPECT_EQ(expected, Code(plain, coder, text)) << mode << ", " << length << ", turn " << turn;
        // In place, at an odd address.
        std::string shifted = "." + text;
        EXPECT_TRUE((replaced.*coder)(&shifted[1], &shifted[1], static_cast<long>(text.size())));
        EXPECT_EQ("." + expected, shifted) << mode << ", " << length << ", turn " << turn;
      }
      EXPECT_EQ(mode == 0 || mode == 4 ? blocks : 0, replaced.blocks) << mode << ", " << length;
    }
  }
}

TEST(Cipher, PiecesOfWholeBlocksGiveTheWhole) {
  std::mt19937 random(5);
  std::string const text = Bytes(2005);
  for (Coder coder : {&CipherClass::EncodeBuffer, &CipherClass::DecodeBuffer}) {
    Cipher_Safer_SK64 cipher;
    ASSERT_TRUE(cipher.Init(kKey.data(), 8, nullptr));
    std::string const whole = Code(cipher, coder, text);
    for (int round = 0; round < 20; round++) {
      cipher.Done();
      std::string joined;
      while (joined.size() < text.size())
        joined += Code(cipher, coder, text.substr(joined.size(), 8 * (1 + random() % (round < 10 ? 4 : 100))));
      EXPECT_EQ(whole, joined) << round;
    }
  }
}

TEST(Cipher, ARestComesBackInTheChainOnly) {
  for (CipherMode mode : {CIPHER_CHAINED, CIPHER_CODE_BOOK}) {
    std::string const text = "twelve bytes";
    Cipher_Safer_K64 ours, theirs;
    ASSERT_TRUE(ours.Init(kKey.data(), 8, nullptr) && theirs.Init(kKey.data(), 8, nullptr));
    ours.SetMode(mode);
    theirs.SetMode(mode);
    std::string const back = Code(theirs, &CipherClass::DecodeBuffer, Code(ours, &CipherClass::EncodeBuffer, text));
    EXPECT_EQ(text.substr(0, 8), back.substr(0, 8)) << mode;
    EXPECT_EQ(mode == CIPHER_CHAINED, text.substr(8) == back.substr(8)) << mode;
  }
}

TEST(Cipher, DoneGoesBackToTheInitialBlock) {
  std::string iv = "initial.";
  std::string zeros(8, '\0');
  Cipher_Safer_SK64 cipher;
  auto const stream = [&] { return Code(cipher, &CipherClass::EncodeBuffer, "sixteen bytes ..plus"); };
  ASSERT_TRUE(cipher.Init(kKey.data(), 8, iv.data()));
  std::string const first = stream();
  EXPECT_NE(first, stream());
  cipher.Done();
  EXPECT_EQ(first, stream());
  ASSERT_TRUE(cipher.Init(kKey.data(), 8, nullptr));
  std::string const fromNull = stream();
  EXPECT_NE(first, fromNull);
  ASSERT_TRUE(cipher.Init(kKey.data(), 8, zeros.data()));
  EXPECT_EQ(fromNull, stream());
}

TEST(Cipher, WithoutAKeyNothingHappens) {
  struct Unsized : CipherClass {
    bool Init(void const*, long length, void* iv) override {
      if (!InitBegin(&length)) return false;
      InitEnd(iv);
      return true;
    }
    void Encode(void*) override { FAIL(); }
    void Decode(void*) override { FAIL(); }
  } unsized;
  EXPECT_FALSE(unsized.Init("k", 1, nullptr));
  Cipher_Safer fresh, stepped, forgotten;
  fresh.SetFlag(0, true);
  fresh.Done();
  fresh.InitEnd(nullptr);
  fresh.Internal_InitTab();
  fresh.Internal_InitKey(kKey.data(), 8);
  EXPECT_FALSE(fresh.InitNew(nullptr, 8, nullptr, SAFER_SK));
  EXPECT_FALSE(fresh.Init(nullptr, 8, nullptr));
  long length = -5;
  EXPECT_TRUE(stepped.InitBegin(&length));
  EXPECT_EQ(0, length);
  EXPECT_TRUE(stepped.InitBegin(nullptr));
  ASSERT_TRUE(Key(forgotten, kKey, SAFER_SK64));
  forgotten.Protect();
  for (CipherClass* cipher : {static_cast<CipherClass*>(&unsized), static_cast<CipherClass*>(&fresh),
                              static_cast<CipherClass*>(&stepped), static_cast<CipherClass*>(&forgotten)}) {
    for (int mode : {0, 1, 4}) {
      cipher->SetMode(static_cast<CipherMode>(mode));
      std::string text = "unchanged";
      EXPECT_FALSE(cipher->EncodeBuffer("12345678", text.data(), 8));
      EXPECT_FALSE(cipher->DecodeBuffer("12345678", text.data(), 8));
      if (cipher != &unsized) {
        cipher->Encode(text.data());
        cipher->Decode(text.data());
      }
      EXPECT_EQ("unchanged", text);
    }
  }
}

TEST(Cipher, BadBuffersAreRefused) {
  Cipher_Safer cipher;
  Replaced replaced;
  for (Cipher_Safer* c : {&cipher, static_cast<Cipher_Safer*>(&replaced)}) {
    ASSERT_TRUE(Key(*c, kKey, SAFER_SK64));
    c->Encode(nullptr);
    c->Decode(nullptr);
    for (int mode : {0, 2, 4}) {
      c->SetMode(static_cast<CipherMode>(mode));
      for (Coder coder : {&CipherClass::EncodeBuffer, &CipherClass::DecodeBuffer}) {
        std::string text = "unchanged";
        EXPECT_FALSE((c->*coder)(nullptr, text.data(), 8));
        EXPECT_FALSE((c->*coder)(text.data(), nullptr, 8));
        for (long length : {0L, -1L, -8L, std::numeric_limits<long>::min()})
          EXPECT_FALSE((c->*coder)("12345678", text.data(), length)) << length;
        EXPECT_EQ("unchanged", text);
      }
    }
  }
}

TEST(Cipher, TheKeyLengthChoosesTheVariant) {
  std::string const key = FromHex("097d6dbf5689cd9201ccf5d7bcc7c674aa55");
  for (int family : {SAFER_K, SAFER_SK}) {
    for (size_t length = 0; length <= key.size(); length++) {
      Cipher_Safer chosen, told;
      ASSERT_TRUE(Key(chosen, key.substr(0, length), family));
      // Filled with zeros or cut to what the variant takes.
      int const variant = family + (length < 6 ? 1 : length <= 8 ? 2 : 3);
      std::string padded = key.substr(0, length);
      padded.resize(length < 6 ? 5 : length <= 8 ? 8 : 16);
      ASSERT_TRUE(Key(told, padded, variant));
      EXPECT_EQ(EncodeBlock(told), EncodeBlock(chosen)) << family << ", length " << length;
    }
    Cipher_Safer negative, empty;
    ASSERT_TRUE(negative.InitNew(key.data(), -5, nullptr, Mode(family)));
    ASSERT_TRUE(Key(empty, "", family));
    EXPECT_EQ(EncodeBlock(empty), EncodeBlock(negative));
  }
  // A short key for a long variant, and a long one for a short.
  for (int variant : {1, 2, 3, 5, 6, 7}) {
    size_t const takes = variant % 4 == 1 ? 5 : variant % 4 == 2 ? 8 : 16;
    for (size_t length : {size_t{0}, size_t{3}, takes - 1, takes, takes + 1, key.size()}) {
      Cipher_Safer given, told;
      std::string padded = key.substr(0, length);
      padded.resize(takes);
      ASSERT_TRUE(Key(given, key.substr(0, length), variant) && Key(told, padded, variant));
      EXPECT_EQ(EncodeBlock(told), EncodeBlock(given)) << variant << ", length " << length;
    }
  }
}

TEST(Cipher, UnknownVariantsAreKByLengthWithEightRounds) {
  for (int unknown : {8, -1, 100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    for (size_t length : {5, 6, 8, 9, 16}) {
      Cipher_Safer odd, known;
      known.SetRounds(8);
      std::string const key = Bytes(length);
      ASSERT_TRUE(Key(odd, key, unknown) && Key(known, key, SAFER_K));
      EXPECT_EQ(EncodeBlock(known), EncodeBlock(odd)) << unknown << ", length " << length;
    }
  }
}

TEST(Cipher, EachClassHasItsVariantAndSizes) {
  struct {
    std::unique_ptr<Cipher_Safer> cipher;
    int variant;
    long keySize;
  } const cases[] = {{std::make_unique<Cipher_Safer>(), SAFER_SK, 16},
                     {std::make_unique<Cipher_Safer_K64>(), SAFER_K64, 8},
                     {std::make_unique<Cipher_Safer_SK64>(), SAFER_SK64, 8}};
  std::string const key = Bytes(16);
  for (auto const& c : cases) {
    for (size_t length : {5, 8, 16}) {
      Cipher_Safer told;
      ASSERT_TRUE(c.cipher->Init(key.data(), static_cast<long>(length), nullptr));
      long const rounds = c.variant == SAFER_SK ? 5 : 6;  // taken with the first key, of 5 bytes, and kept
      told.SetRounds(rounds);
      ASSERT_TRUE(Key(told, key.substr(0, length), c.variant));
      EXPECT_EQ(EncodeBlock(told), EncodeBlock(*c.cipher)) << c.variant << ", length " << length;
    }
    long block = 0, keySize = 0, context = 0;
    c.cipher->GetContext(&block, &keySize, &context);
    EXPECT_EQ((std::vector<long>{8, c.keySize, 768}), (std::vector<long>{block, keySize, context}));
    c.cipher->GetContext(nullptr, nullptr, nullptr);
  }
}

TEST(Cipher, RoundsOnceTakenStay) {
  struct {
    long asked;
    long taken;  // before there is a key
  } const cases[] = {{3, 8}, {4, 4}, {13, 13}, {14, 8}, {20, 8}, {0, 8}, {-6, 8}, {12, 12}};
  for (auto const& c : cases) {
    for (int variant : {SAFER_SK64, SAFER_K128}) {
      Cipher_Safer cipher, later;
      cipher.SetRounds(c.asked);
      ASSERT_TRUE(Key(cipher, kKey, variant) && Key(later, kKey, variant));
      later.SetRounds(c.taken);  // counts without a new key
      EXPECT_EQ(EncodeBlock(later), EncodeBlock(cipher)) << c.asked << ", variant " << variant;
      later.SetRounds(c.asked);  // with a key the default is the variant's
      Cipher_Safer expected;
      if (c.asked >= 4 && c.asked <= 13) expected.SetRounds(c.asked);
      ASSERT_TRUE(Key(expected, kKey, variant));
      EXPECT_EQ(EncodeBlock(expected), EncodeBlock(later)) << c.asked << ", variant " << variant;
    }
  }
  // The default of the first variant serves the second, which has another of its own.
  Cipher_Safer first, second;
  ASSERT_TRUE(Key(first, kKey, SAFER_SK64) && Key(first, kKey, SAFER_SK128));
  second.SetRounds(6);
  ASSERT_TRUE(Key(second, kKey, SAFER_SK128));
  EXPECT_EQ(EncodeBlock(second), EncodeBlock(first));
}

TEST(Cipher, ANullKeyLeavesTheKeyBefore) {
  Cipher_Safer_SK64 cipher;
  ASSERT_TRUE(Key(cipher, kKey, SAFER_SK64));
  std::string const before = EncodeBlock(cipher);
  EXPECT_FALSE(cipher.Init(nullptr, 8, nullptr));
  EXPECT_FALSE(cipher.InitKey(nullptr, nullptr));
  EXPECT_FALSE(cipher.InitKey("no hash", nullptr));
  EXPECT_FALSE(cipher.GetFlag(0));
  EXPECT_EQ(before, EncodeBlock(cipher));
}

std::string DigestOf(std::string text) {
  Hash_RipeMD256 hash;
  hash.Init();
  hash.Calc(text.data(), static_cast<long>(text.size()));
  hash.Done();
  return std::string(static_cast<char const*>(hash.DigestKey()), 32);
}

TEST(Cipher, APhraseBecomesTheKeyAndItsDigestIsHidden) {
  std::string iv = "initial.";
  Cipher_Safer_SK64 short8;
  Cipher_Safer long16;
  for (std::string const phrase :
       {"", "abc", "a longer phrase than one block of the hash, so that two are needed....."}) {
    for (Cipher_Safer* cipher : {static_cast<Cipher_Safer*>(&short8), &long16}) {
      long const keySize = cipher == &long16 ? 16 : 8;
      std::string const digest = DigestOf(phrase);
      Hash_RipeMD256 hash;
      cipher->SetHash(&hash);
      ASSERT_TRUE(cipher->InitKey(phrase, iv.data())) << phrase;
      EXPECT_TRUE(cipher->GetFlag(0));
      std::string const hidden(static_cast<char const*>(hash.DigestKey()), 32);
      Cipher_Safer told;
      ASSERT_TRUE(Key(told, digest.substr(0, static_cast<size_t>(keySize)), SAFER_SK, iv.data()));
      EXPECT_EQ(Code(told, &CipherClass::EncodeBuffer, digest), hidden) << phrase;
      told.Done();
      // And the stream begins at the initial block.
      EXPECT_EQ(Code(told, &CipherClass::EncodeBuffer, "text"), Code(*cipher, &CipherClass::EncodeBuffer, "text"));
      cipher->SetHash(nullptr);
      EXPECT_FALSE(cipher->InitKey(phrase.c_str(), iv.data()));
    }
  }
  Hash_MD4 none;
  short8.SetHash(&none);
  EXPECT_FALSE(short8.InitKey("abc", nullptr));
}

TEST(Cipher, InitKeyGoesThroughTheVirtualSteps) {
  struct Spy : Cipher_Safer_SK64 {
    std::string seen;
    bool fail = false;
    bool Init(void const* key, long length, void* iv) override {
      seen += "Init" + std::to_string(length) + " ";
      return Cipher_Safer_SK64::Init(key, length, iv);
    }
    bool InitBegin(long* length) override {
      seen += "InitBegin ";
      return Cipher_Safer_SK64::InitBegin(length);
    }
    void SetRounds(long rounds) override {
      seen += "SetRounds ";
      Cipher_Safer_SK64::SetRounds(rounds);
    }
    void Internal_InitTab() override {
      seen += "Tab ";
      Cipher_Safer_SK64::Internal_InitTab();
    }
    void Internal_InitKey(void const* key, long length) override {
      seen += "Key" + std::to_string(length) + " ";
      Cipher_Safer_SK64::Internal_InitKey(key, length);
    }
    void InitEnd(void* iv) override {
      seen += "InitEnd ";
      Cipher_Safer_SK64::InitEnd(iv);
    }
    bool EncodeBuffer(void const* in, void* out, long length) override {
      seen += "EncodeBuffer" + std::to_string(length) + " ";
      return !fail && Cipher_Safer_SK64::EncodeBuffer(in, out, length);
    }
    void Done() override {
      seen += "Done ";
      Cipher_Safer_SK64::Done();
    }
  } spy;
  Hash_RipeMD256 hash;
  spy.SetHash(&hash);
  EXPECT_TRUE(spy.InitKey("abc", nullptr));
  EXPECT_EQ("Init8 InitBegin SetRounds Tab Key8 InitEnd EncodeBuffer32 Done ", spy.seen);
  spy.fail = true;
  EXPECT_FALSE(spy.InitKey("abc", nullptr));
  EXPECT_FALSE(spy.GetFlag(0));
  EXPECT_EQ(std::string(32, '\0'), std::string(static_cast<char const*>(hash.DigestKey()), 32));
}

TEST(Cipher, Flags) {
  Cipher_Safer cipher;
  for (int number : {0, 1, 31}) {
    EXPECT_FALSE(cipher.GetFlag(number));
    cipher.SetFlag(number, true);
    EXPECT_TRUE(cipher.GetFlag(number)) << number;
    cipher.SetFlag(number, false);
    EXPECT_FALSE(cipher.GetFlag(number)) << number;
  }
  for (int number : {-1, 32, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    cipher.SetFlag(number, true);
    EXPECT_FALSE(cipher.GetFlag(number)) << number;
  }
}

TEST(Cipher, VirtualOperationsKeepTheirSlots) {
  using C = Cipher_Safer;
  EXPECT_EQ(0U, Slot(&C::InitBegin));
  EXPECT_EQ(1U, Slot(&C::InitEnd));
  EXPECT_EQ(2U, Slot(&C::Protect));
  EXPECT_EQ(3U, Slot(&C::SetFlag));
  EXPECT_EQ(4U, Slot(&C::GetContext));  // the destructor takes 5 and 6
  EXPECT_EQ(7U, Slot(&C::Init));
  EXPECT_EQ(8U, Slot(&C::Done));
  EXPECT_EQ(9U, Slot(&C::Encode));
  EXPECT_EQ(10U, Slot(&C::Decode));
  EXPECT_EQ(11U, Slot(static_cast<bool (C::*)(char const*, void*)>(&C::InitKey)));
  EXPECT_EQ(12U, Slot(&C::DecodeBuffer));
  EXPECT_EQ(13U, Slot(&C::EncodeBuffer));
  EXPECT_EQ(14U, Slot(&C::SetMode));
  EXPECT_EQ(15U, Slot(&C::GetMode));
  EXPECT_EQ(16U, Slot(&C::SetHash));
  EXPECT_EQ(17U, Slot(&C::Internal_InitKey));
  EXPECT_EQ(18U, Slot(&C::Internal_InitTab));
  EXPECT_EQ(19U, Slot(&C::InitNew));
  EXPECT_EQ(20U, Slot(&C::SetRounds));
  EXPECT_EQ(11U, Slot(static_cast<bool (CipherClass::*)(char const*, void*)>(&CipherClass::InitKey)));
  EXPECT_EQ(16U, Slot(&CipherClass::SetHash));
}

}  // namespace
