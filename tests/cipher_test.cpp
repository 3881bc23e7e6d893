#include "zelvane/crypto/cipher.h"

#include "support/test.h"
#include "support/vectors.h"

namespace {

using test::Bytes, test::FromHex, test::Hex, test::ReadVectors;

std::string const kKey = FromHex("e7b40ec21cad7be3");
std::string g_iv = "initial.";

bool Key(Cipher_Safer& cipher, std::string const& key, int mode, void* iv = nullptr) {
  // A copy of exactly that size, so that the sanitizer sees a read past its end.
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

// A subclass: its override changes nothing, but the library cannot know that.
struct Replaced : Cipher_Safer_SK64 {
  size_t blocks = 0;
  void Encode(void* block) override { blocks++, Cipher_Safer_SK64::Encode(block); }
  void Decode(void* block) override { blocks++, Cipher_Safer_SK64::Decode(block); }
};

// Sets the key after another key and a partial block; the cipher is back at its initial block.
void Begin(Cipher_Safer& cipher, int mode) {
  for (CipherMode before : {CIPHER_CODE_BOOK, CIPHER_CHAINED}) {
    ASSERT_TRUE(Key(cipher, kKey, SAFER_SK64, g_iv.data()));
    cipher.SetMode(before);
    Code(cipher, kCoders[0], before == CIPHER_CHAINED ? "moves the blocks" : "rest");
  }
  cipher.Done();
  cipher.SetMode(CipherMode(mode));
}

TEST(Cipher, KnownAnswersAtAnyAddressAloneAndInABuffer) {
  auto const lines = ReadVectors("safer.txt");
  ASSERT_EQ(lines.size(), 21U);
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
      EXPECT_EQ(text, dots + coded + "!") << line[0] << " " << line[2] << " + " << shift;
      cipher.Decode(&text[shift]);
      EXPECT_EQ(text, dots + plain + "!") << line[0] << " " << line[2] << " + " << shift;
      for (size_t i = 0; i < 9 * shift + 1; i++) plains += plain, codeds += coded;
      EXPECT_EQ(Code(cipher, kCoders[0], plains), codeds) << line[2] << ", " << plains.size();
      EXPECT_EQ(Code(cipher, kCoders[1], codeds), plains) << line[2] << ", " << plains.size();
    }
  }
}

TEST(Cipher, KnownAnswersOfBuffersThatGoOnFromEachOther) {
  auto const lines = ReadVectors("safer_buffers.txt");
  ASSERT_EQ(lines.size(), 17U);
  for (auto const& line : lines) {
    Cipher_Safer_SK64 cipher;
    Begin(cipher, std::stoi(line[0]));
    for (size_t turn = 0; turn < 4; turn++)
      EXPECT_EQ(Hex(Code(cipher, kCoders[turn % 2], Bytes(line[1].size() / 2))), line[1 + turn]) << line[0] << line[1];
  }
}

TEST(Cipher, ASubclassIsAskedForEveryBlock) {
  for (int mode : {0, 4, 5}) {
    for (size_t length : {7, 15, 63, 64, 65, 511, 512, 513, 519, 520, 1111}) {
      Cipher_Safer_SK64 plain;
      Replaced replaced;
      Begin(plain, mode), Begin(replaced, mode);
      replaced.blocks = 0;
      for (Coder coder : {kCoders[0], kCoders[1], kCoders[0]}) {
        std::string text = "." + Bytes(length), expected = Code(plain, coder, text.substr(1));
        EXPECT_TRUE((replaced.*coder)(&text[1], &text[1], static_cast<long>(length))) << "in place, at an odd address";
        EXPECT_EQ(text, "." + expected) << mode << ", " << length;
      }
      EXPECT_EQ(replaced.blocks, mode == 5 ? 0 : 3 * ((length + 7) / 8)) << mode << ", " << length;
    }
  }
}

TEST(Cipher, WithoutAKeyOrABufferNothingHappens) {
  Cipher_Safer_K64 fresh, forgotten;
  Replaced keyed;
  fresh.InitEnd(nullptr);
  fresh.Internal_InitTab(), fresh.Internal_InitKey(kKey.data(), 8);  // no buffer yet
  ASSERT_ALL(Key(forgotten, kKey, SAFER_SK64), Key(keyed, kKey, SAFER_SK64), forgotten.InitBegin(nullptr));
  keyed.Internal_InitKey(nullptr, 8);
  char text[] = "unchanged";
  std::tuple<Cipher_Safer*, char const*, char*, long> const cases[] = {
      {&fresh, "12345678", text, 8},       {&forgotten, "12345678", text, 8}, {&keyed, nullptr, text, 8},
      {&keyed, text, nullptr, 8},          {&keyed, "12345678", text, 0},     {&keyed, "12345678", text, -8},
      {&keyed, "12345678", text, LONG_MIN}};
  for (auto const& [cipher, in, to, length] : cases) {
    EXPECT_NONE(cipher->Init(nullptr, 8, nullptr), cipher->InitKey("no hash", nullptr));
    cipher->Encode(cipher == &keyed ? nullptr : text);
    cipher->Decode(cipher == &keyed ? nullptr : text);
    for (Coder coder : kCoders) EXPECT_FALSE((cipher->*coder)(in, to, length)) << length;
  }
  EXPECT_STREQ(text, "unchanged");
  for (int const flag : {-1, 32, 31}) keyed.SetFlag(flag, true);
  EXPECT_EACH((keyed.GetFlag(-1), keyed.GetFlag(32), keyed.GetFlag(31), keyed.GetFlag(0)), false, false, true, false);
  EXPECT_TRUE(keyed.EncodeBuffer("12345678", text, 8)) << "its key stays";
  keyed.GetContext(nullptr, nullptr, nullptr), keyed.CipherClass::GetContext(nullptr, nullptr, nullptr);
}

TEST(Cipher, KeysOfAnyLengthArePaddedOrCut) {
  std::string const key = FromHex("097d6dbf5689cd9201ccf5d7bcc7c674aa55");
  for (int mode : {0, 1, 2, 3, 4, 5, 6, 7, 8, -1}) {
    for (size_t length = 0; length <= key.size(); length++) {
      // A family without a variant takes the one for the length; an unknown one is K with eight rounds.
      int const byLength = length < 6 ? 1 : length <= 8 ? 2 : 3;
      int const variant = mode < 0 || mode > 7 ? byLength : mode % 4 == 0 ? mode + byLength : mode;
      std::string padded = key.substr(0, length);
      padded.resize(variant % 4 == 1 ? 5 : variant % 4 == 2 ? 8 : 16);
      Cipher_Safer given, told;
      if (mode < 0 || mode > 7) told.SetRounds(8);
      ASSERT_ALL(Key(given, key.substr(0, length), mode), Key(told, padded, variant));
      EXPECT_EQ(EncodeBlock(given), EncodeBlock(told)) << mode << ", length " << length;
    }
  }
}

TEST(Cipher, RoundsOnceTakenStay) {
  for (auto const& [asked, taken] : {std::pair(3L, 8L), {4, 4}, {13, 13}, {14, 8}, {-6, 8}}) {  // before there is a key
    Cipher_Safer cipher, later, expected;
    cipher.SetRounds(asked);
    ASSERT_ALL(Key(cipher, kKey, SAFER_K128), Key(later, kKey, SAFER_K128));
    later.SetRounds(taken);  // takes effect without a new key
    EXPECT_EQ(EncodeBlock(cipher), EncodeBlock(later)) << asked;
    later.SetRounds(asked);  // with a key the default is that of the variant
    if (asked == taken) expected.SetRounds(asked);
    ASSERT_TRUE(Key(expected, kKey, SAFER_K128));
    EXPECT_EQ(EncodeBlock(later), EncodeBlock(expected)) << asked;
  }
}

TEST(Cipher, InitKeyCallsTheVirtualHooks) {
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
  EXPECT_ALL(spy.InitKey("abc", g_iv.data()), spy.GetFlag(0));
  EXPECT_EQ(spy.seen, "Init Begin Rounds Tab Key End Encode Done ");
  // The digest is hidden, and the stream starts at the initial block.
  Cipher_Safer told;
  ASSERT_TRUE(Key(told, FromHex(digest.substr(0, 16)), SAFER_SK64, g_iv.data()));
  EXPECT_EQ(Hex(std::string(static_cast<char const*>(hash.DigestKey()), 32)),
            Hex(Code(told, kCoders[0], FromHex(digest))));
  told.Done();
  EXPECT_EQ(Code(spy, kCoders[0], "text"), Code(told, kCoders[0], "text"));
}

// A cipher with any block size, as a subclass can have.
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
    SCOPED_TRACE(testing::Message() << "block " << block << ", context " << context);
    Sized cipher(block, context);
    char bytes[] = "12345678";
    cipher.SetHash(hash);
    EXPECT_EQ(cipher.InitKey("phrase", nullptr), keyed);
    EXPECT_EACH((cipher.GetFlag(0), cipher.EncodeBuffer(bytes, bytes, 8)), keyed);
    if (keyed) EXPECT_EACH((cipher.Init("", 0, nullptr), cipher.GetFlag(0)), true, false) << "the flag is a phrase's";
    EXPECT_EQ(cipher.InitKey(std::string("phrase"), nullptr), keyed);
    cipher.block += 8;  // the next key needs a larger buffer
    if (keyed) EXPECT_ALL(cipher.InitKey("phrase", nullptr));
  }
}

}  // namespace
