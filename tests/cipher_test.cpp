#include "zelvane/crypto/cipher.h"

#include <gtest/gtest.h>
#include <limits.h>

#include <tuple>
#include <vector>

#include "support/slot.h"
#include "support/vectors.h"

namespace {

using test::Bytes, test::FromHex, test::Hex, test::ReadVectors, test::Slot;

std::string const kKey = FromHex("e7b40ec21cad7be3");
std::string g_iv = "initial.";

bool Key(Cipher_Safer& cipher, std::string const& key, int mode, void* iv = nullptr) {
  // A copy of exactly that size: a byte read beyond it is seen by the sanitizer.
  std::vector<char> const exact(key.begin(), key.end());
  return cipher.InitNew(exact.empty() ? "" : exact.data(), static_cast<long>(key.size()), iv, SaferMode(mode));
}

std::string EncodeBlock(Cipher_Safer& cipher, std::string block = "12345678") {
  cipher.Encode(block.data());
  return Hex(block);
}

using Coder = bool (CipherClass::*)(void const*, void*, long);
constexpr Coder kCoders[] = {&CipherClass::EncodeBuffer, &CipherClass::DecodeBuffer};

std::string Code(CipherClass& cipher, Coder coder, std::string const& bytes) {
  std::string out(bytes.size(), '?');
  EXPECT_TRUE((cipher.*coder)(bytes.data(), out.data(), static_cast<long>(bytes.size()))) << bytes.size();
  return out;
}

// What a subclass may do: it says nothing new here, but the library cannot know.
struct Replaced : Cipher_Safer_SK64 {
  size_t blocks = 0;
  void Encode(void* block) override { blocks++, Cipher_Safer_SK64::Encode(block); }
  void Decode(void* block) override { blocks++, Cipher_Safer_SK64::Decode(block); }
};

// The chaining told again, with one block operation at a time.
struct Model {
  Cipher_Safer_SK64 cipher;
  std::string feedback = g_iv, scratch = std::string(8, '\0');

  std::string Block(bool encode, std::string block) {
    encode ? cipher.Encode(block.data()) : cipher.Decode(block.data());
    return block;
  }
  static std::string Xor(std::string a, std::string const& b) {
    for (size_t i = 0; i < a.size(); i++) a[i] = static_cast<char>(a[i] ^ b[i]);
    return a;
  }
  std::string Run(int mode, bool encode, std::string const& text) {
    if (mode != 0 && mode != 4) return text;
    std::string all;
    for (size_t at = 0; at < text.size(); at += 8) {
      std::string in = text.substr(at, 8), mask = mode == 0 ? feedback : std::string(8, '\0');
      bool const rest = in.size() < 8;
      if (rest) scratch = Block(true, mode == 0 ? feedback : in + scratch.substr(in.size()));
      all += rest     ? mode == 0 ? Xor(in, scratch) : scratch.substr(0, in.size())
                 : encode ? Block(true, Xor(in, mask))
                      : Xor(Block(false, in), mask);
      feedback = Xor(feedback, rest ? scratch : encode ? all.substr(at) : in);
    }
    return all;
  }
};

TEST(Cipher, KnownAnswersAtAnyAddressAloneAndInABuffer) {
  auto const lines = ReadVectors("safer.txt");
  ASSERT_EQ(21U, lines.size());
  for (auto const& line : lines) {
    int const mode = std::stoi(line[0]);
    long const rounds = std::stol(line[1]);
    std::string const plain = FromHex(line[3]), coded = FromHex(line[4]);
    Cipher_Safer cipher;
    if (rounds != (mode % 4 == 1 ? 5 : mode % 4 == 2 ? 6 : 10)) cipher.SetRounds(rounds);
    ASSERT_TRUE(Key(cipher, FromHex(line[2]), mode));
    cipher.SetMode(CIPHER_CODE_BOOK);
    for (size_t shift = 0; shift < 8; shift++) {
      std::string const dots(shift, '.');
      std::string text = dots + plain + "!", plains, codeds;
      cipher.Encode(&text[shift]);
      EXPECT_EQ(dots + coded + "!", text) << line[0] << " " << line[2] << " + " << shift;
      cipher.Decode(&text[shift]);
      EXPECT_EQ(dots + plain + "!", text) << line[0] << " " << line[2] << " + " << shift;
      for (size_t i = 0; i < 9 * shift + 1; i++) plains += plain, codeds += coded;
      EXPECT_EQ(codeds, Code(cipher, kCoders[0], plains)) << line[2] << ", " << plains.size();
      EXPECT_EQ(plains, Code(cipher, kCoders[1], codeds)) << line[2] << ", " << plains.size();
    }
  }
}

TEST(Cipher, BuffersFollowTheModel) {
  for (int mode : {0, 1, 2, 3, 4, 5, -1}) {
    for (size_t length : {1, 7, 8, 9, 12, 15, 16, 63, 64, 65, 511, 512, 513, 519, 520, 1111}) {
      Cipher_Safer_SK64 plain;
      Replaced replaced;
      Model model;
      for (Cipher_Safer* cipher : {static_cast<Cipher_Safer*>(&plain), static_cast<Cipher_Safer*>(&replaced)}) {
        ASSERT_TRUE(cipher->Init(kKey.data(), 8, g_iv.data()) && Key(model.cipher, kKey, SAFER_SK64));
        // Done goes back to the initial block.
        Code(*cipher, kCoders[0], "moves the blocks");
        cipher->Done();
        cipher->SetMode(CipherMode(mode));
      }
      // Two ways in turn, so that the second goes on from registers that a rest has moved.
      for (size_t turn = 0; turn < 4; turn++) {
        Coder const coder = kCoders[turn % 2];
        std::string const text = Bytes(length);
        std::string const expected = model.Run(mode, turn % 2 == 0, text);
        EXPECT_EQ(expected, Code(plain, coder, text)) << mode << ", " << length << ", turn " << turn;
        // In place, at an odd address.
        std::string shifted = "." + text;
        EXPECT_TRUE((replaced.*coder)(&shifted[1], &shifted[1], static_cast<long>(text.size())));
        EXPECT_EQ("." + expected, shifted) << mode << ", " << length << ", turn " << turn;
      }
      EXPECT_EQ(mode == 0 || mode == 4 ? 2 + 4 * ((length + 7) / 8) : 2, replaced.blocks) << mode << ", " << length;
    }
  }
}

TEST(Cipher, WithoutAKeyOrABufferNothingHappens) {
  Cipher_Safer fresh, forgotten;
  Replaced keyed;
  fresh.InitEnd(nullptr);
  ASSERT_TRUE(Key(forgotten, kKey, SAFER_SK64) && Key(keyed, kKey, SAFER_SK64));
  forgotten.Protect();
  std::string text = "unchanged";
  char* const out = text.data();
  std::tuple<Cipher_Safer*, char const*, char*, long> const cases[] = {
      {&fresh, "12345678", out, 8},       {&forgotten, "12345678", out, 8}, {&keyed, nullptr, out, 8},
      {&keyed, out, nullptr, 8},          {&keyed, "12345678", out, 0},     {&keyed, "12345678", out, -8},
      {&keyed, "12345678", out, LONG_MIN}};
  for (auto const& [cipher, in, to, length] : cases) {
    EXPECT_FALSE(cipher->Init(nullptr, 8, nullptr) || cipher->InitKey("no hash", nullptr));
    cipher->Encode(cipher == &keyed ? nullptr : out);
    cipher->Decode(cipher == &keyed ? nullptr : out);
    for (Coder coder : kCoders) EXPECT_FALSE((cipher->*coder)(in, to, length)) << length;
  }
  EXPECT_EQ("unchanged", text);
}

TEST(Cipher, NullsAndFlagsOutOfRange) {
  Cipher_Safer_K64 cipher;
  cipher.Internal_InitTab(), cipher.Internal_InitKey(kKey.data(), 8);  // no room yet
  EXPECT_TRUE(cipher.InitBegin(nullptr) && cipher.Init(kKey.data(), 8, nullptr));
  cipher.Internal_InitKey(nullptr, 8);
  char text[] = "unchanged";
  for (Coder coder : kCoders) EXPECT_FALSE((cipher.*coder)(nullptr, text, 8) || (cipher.*coder)(text, nullptr, 8));
  EXPECT_STREQ("unchanged", text);
  for (int const flag : {-1, 32, 31}) cipher.SetFlag(flag, true);
  EXPECT_TRUE(!cipher.GetFlag(-1) && !cipher.GetFlag(32) && cipher.GetFlag(31) && !cipher.GetFlag(0));
  cipher.GetContext(nullptr, nullptr, nullptr), cipher.CipherClass::GetContext(nullptr, nullptr, nullptr);
}

TEST(Cipher, KeysOfAnyLengthArePaddedOrCut) {
  std::string const key = FromHex("097d6dbf5689cd9201ccf5d7bcc7c674aa55");
  for (int mode : {0, 1, 2, 3, 4, 5, 6, 7, 8, -1}) {
    for (size_t length = 0; length <= key.size(); length++) {
      // The family alone takes the variant by the length; an unknown one is K with eight rounds.
      int const byLength = length < 6 ? 1 : length <= 8 ? 2 : 3;
      int const variant = mode < 0 || mode > 7 ? byLength : mode % 4 == 0 ? mode + byLength : mode;
      std::string padded = key.substr(0, length);
      padded.resize(variant % 4 == 1 ? 5 : variant % 4 == 2 ? 8 : 16);
      Cipher_Safer given, told;
      if (mode < 0 || mode > 7) told.SetRounds(8);
      ASSERT_TRUE(Key(given, key.substr(0, length), mode) && Key(told, padded, variant));
      EXPECT_EQ(EncodeBlock(told), EncodeBlock(given)) << mode << ", length " << length;
    }
  }
}

TEST(Cipher, RoundsOnceTakenStay) {
  std::pair<long, long> const cases[] = {{3, 8}, {4, 4}, {13, 13}, {14, 8}, {0, 8}, {-6, 8}};  // before there is a key
  for (auto const& [asked, taken] : cases) {
    for (int variant : {SAFER_SK64, SAFER_K128}) {
      Cipher_Safer cipher, later, expected;
      cipher.SetRounds(asked);
      ASSERT_TRUE(Key(cipher, kKey, variant) && Key(later, kKey, variant));
      later.SetRounds(taken);  // counts without a new key
      EXPECT_EQ(EncodeBlock(later), EncodeBlock(cipher)) << asked << ", variant " << variant;
      later.SetRounds(asked);  // with a key the default is the variant's
      if (asked == taken) expected.SetRounds(asked);
      ASSERT_TRUE(Key(expected, kKey, variant));
      EXPECT_EQ(EncodeBlock(expected), EncodeBlock(later)) << asked << ", variant " << variant;
    }
  }
}

TEST(Cipher, KeyingForgetsTheRestBefore) {
  Cipher_Safer used, fresh;
  for (Cipher_Safer* cipher : {&used, &fresh}) {
    cipher->SetMode(CIPHER_CODE_BOOK);
    ASSERT_TRUE(Key(*cipher, kKey, SAFER_SK64));
    if (cipher == &used) Code(used, kCoders[0], "rest");
    ASSERT_TRUE(Key(*cipher, kKey, SAFER_SK64));
  }
  EXPECT_EQ(Hex(Code(fresh, kCoders[0], "text")), Hex(Code(used, kCoders[0], "text")));
}

TEST(Cipher, APhraseGoesThroughTheVirtualSteps) {
  struct Spy : Cipher_Safer_SK64 {
    using Base = Cipher_Safer_SK64;
    std::string seen;
    bool Init(void const* key, long n, void* iv) override { return seen += "Init ", Base::Init(key, n, iv); }
    bool InitBegin(long* length) override { return seen += "Begin ", Base::InitBegin(length); }
    void SetRounds(long rounds) override { seen += "Rounds ", Base::SetRounds(rounds); }
    void Internal_InitTab() override { seen += "Tab ", Base::Internal_InitTab(); }
    void Internal_InitKey(void const* key, long n) override { seen += "Key ", Base::Internal_InitKey(key, n); }
    void InitEnd(void* iv) override { seen += "End ", Base::InitEnd(iv); }
    bool EncodeBuffer(void const* a, void* b, long n) override {
      return seen += "Encode ", Base::EncodeBuffer(a, b, n);
    }
    void Done() override { seen += "Done ", Base::Done(); }
  } spy;
  std::string const digest = "afbd6e228b9d8cbbcef5ca2d03e6dba10ac0bc7dcbe4680e1e42d2e975459b65";
  Hash_RipeMD256 hash;
  spy.SetHash(&hash);
  EXPECT_TRUE(spy.InitKey("abc", g_iv.data()) && spy.GetFlag(0));
  EXPECT_EQ("Init Begin Rounds Tab Key End Encode Done ", spy.seen);
  // The digest is hidden, and the stream begins at the initial block.
  Cipher_Safer told;
  ASSERT_TRUE(Key(told, FromHex(digest.substr(0, 16)), SAFER_SK64, g_iv.data()));
  EXPECT_EQ(Hex(Code(told, kCoders[0], FromHex(digest))),
            Hex(std::string(static_cast<char const*>(hash.DigestKey()), 32)));
  told.Done();
  EXPECT_EQ(Code(told, kCoders[0], "text"), Code(spy, kCoders[0], "text"));
}

// A cipher with blocks of any size, as a subclass may bring one.
struct Sized : CipherClass {
  long block, context;
  Sized(long blockSize, long contextSize) : block(blockSize), context(contextSize) {}
  void GetContext(long* b, long* key, long* c) override { *b = block, *key = 4, *c = context; }
  bool Init(void const*, long length, void* iv) override { return InitBegin(&length) && (InitEnd(iv), true); }
  void Encode(void* bytes) override { *static_cast<char*>(bytes) ^= 'E'; }
  void Decode(void* bytes) override { Encode(bytes); }
};

TEST(Cipher, NoKeyWithoutADigestOrABlock) {
  Hash_RipeMD256 digest;
  Hash_MD4 none;
  std::tuple<long, long, HashClass*, bool> const cases[] = {{8, 0, &digest, true},   {1, 9, &digest, true},
                                                            {0, 9, &digest, false},  {-1, 9, &digest, false},
                                                            {8, -1, &digest, false}, {8, 9, &none, false}};
  for (auto const& [block, context, hash, keyed] : cases) {
    Sized cipher(block, context);
    cipher.SetHash(hash);
    EXPECT_EQ(keyed, cipher.InitKey("phrase", nullptr)) << block << ", " << context;
    EXPECT_EQ(keyed, cipher.GetFlag(0)) << block << ", " << context;
    char bytes[] = "12345678";
    EXPECT_EQ(keyed, cipher.EncodeBuffer(bytes, bytes, 8)) << block << ", " << context;
    EXPECT_TRUE(!keyed || (cipher.Init("", 0, nullptr) && !cipher.GetFlag(0))) << "the flag is a phrase's";
    EXPECT_EQ(keyed, cipher.InitKey(std::string("phrase"), nullptr)) << block << ", " << context;
    cipher.block += 8;  // the next key takes new room
    EXPECT_TRUE(!keyed || cipher.InitKey("phrase", nullptr)) << block << ", " << context;
  }
}

TEST(Cipher, VirtualOperationsKeepTheirSlots) {
  using C = Cipher_Safer;  // the destructor takes 5 and 6
  EXPECT_EQ((std::vector<size_t>{0, 1, 2, 3, 4, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20}),
            (std::vector<size_t>{Slot(&C::InitBegin), Slot(&C::InitEnd), Slot(&C::Protect), Slot(&C::SetFlag),
                                 Slot(&C::GetContext), Slot(&C::Init), Slot(&C::Done), Slot(&C::Encode),
                                 Slot(&C::Decode), Slot<bool (C::*)(char const*, void*)>(&C::InitKey),
                                 Slot(&C::DecodeBuffer), Slot(&C::EncodeBuffer), Slot(&C::SetMode), Slot(&C::GetMode),
                                 Slot(&C::SetHash), Slot(&C::Internal_InitKey), Slot(&C::Internal_InitTab),
                                 Slot(&C::InitNew), Slot(&C::SetRounds)}));
}

}  // namespace
