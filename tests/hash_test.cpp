#include "zelvane/crypto/hash.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "support/slot.h"
#include "support/vectors.h"

namespace {

using test::Bytes, test::FromHex, test::Hex, test::ReadVectors, test::Slot;

std::string State(HashClass& hash, size_t size = 32) {
  return std::string(static_cast<char const*>(hash.DigestKey()), size);
}

// Hashes the message in two pieces, the second at that distance from an aligned address.
std::string Digest(std::string message, size_t cut, size_t shift = 0) {
  Hash_RipeMD256 hash;
  std::string second = std::string(shift, '?') + message.substr(cut);
  hash.Init();
  hash.Calc(message.data(), static_cast<long>(cut));
  hash.Calc(&second[shift], static_cast<long>(second.size() - shift));
  hash.Done();
  return Hex(State(hash));
}

// The frame with the blocks that reach Transform in hexadecimal, and the calls of Protect between them.
struct Spy : Hash_MD4 {
  std::vector<std::string> seen;
  void Transform(long* block) override { seen.push_back(Hex(std::string(reinterpret_cast<char const*>(block), 64))); }
  void Protect(bool active) override { seen.emplace_back(active ? "on" : "off"); }
  explicit Spy(std::uint32_t count = 0) { count_ = count; }
  std::string Block() const { return std::string(reinterpret_cast<char const*>(block_), sizeof block_); }
};

TEST(Hash, KnownAnswersInPieces) {
  auto const lines = ReadVectors("ripemd256.txt");
  ASSERT_EQ(10U, lines.size());
  for (auto const& line : lines)
    for (size_t cut = 0; cut <= line[1].size() / 2 && cut <= FromHex(line[1]).size(); cut++)
      EXPECT_EQ(line[2], Digest(FromHex(line[1]), cut)) << line[1] << " cut at " << cut;
  std::string const whole = Digest(Bytes(1000), 1000);
  for (size_t cut = 0; cut < 200; cut++) EXPECT_EQ(whole, Digest(Bytes(1000), cut, cut % 8)) << cut;
}

TEST(Hash, InitLoadsTheStartValuesAndNothingToCalcLeavesThem) {
  Hash_RipeMD256 hash;
  std::string data = Bytes(100);
  hash.Calc(data.data(), 100);
  hash.Init();
  hash.Calc(nullptr, 3);
  for (long length : {0L, -1L, -64L, std::numeric_limits<long>::min()}) hash.Calc(data.data(), length);
  EXPECT_EQ("0123456789abcdeffedcba98765432101032547698badcfeefcdab8967452301f0e1d2c30f1e2d3c", Hex(State(hash, 40)));
}

TEST(Hash, PaddingEndsTheLastBlockWithALengthOf32Bits) {
  struct {
    std::uint32_t count;
    size_t length, blocks;
    std::string lengthField;
  } const cases[] = {{0, 0, 1, "00000000"},           {0, 55, 1, "b8010000"},         {0, 56, 2, "c0010000"},
                     {0, 63, 2, "f8010000"},          {0, 64, 2, "00020000"},         {0, 119, 2, "b8030000"},
                     {0, 120, 3, "c0030000"},         {0, 128, 3, "00040000"},        {0x1FFFFFC0, 0, 1, "00feffff"},
                     {0x20000000, 0, 1, "00000000"},  {0xFFFFFFC0, 0, 1, "00feffff"}, {0x7FFFFFC0, 128, 3, "00020000"},
                     {0xFFFFFFC0, 128, 3, "00020000"}};
  for (auto const& c : cases) {
    Spy spy(c.count);
    std::string message = Bytes(c.length), all;
    spy.Calc(message.data(), static_cast<long>(c.length));
    spy.Done();
    ASSERT_EQ(c.blocks + 1, spy.seen.size()) << c.count << " + " << c.length;
    for (std::string const& block : spy.seen) all += block;
    std::string const zeros(2 * (64 * c.blocks - c.length - 9), '0');
    EXPECT_EQ(Hex(message) + "80" + zeros + c.lengthField + "00000000off", all) << c.count << " + " << c.length;
    EXPECT_EQ(std::string(64, '\0'), spy.Block()) << c.length;
  }
}

TEST(Hash, TheManagerDoesNothing) {
  HashManager manager;
  manager.SetAlgorithm(HashAlgorithm(7));
  manager.CalcString("abc");
  manager.SetDigest("abc");
  manager.CalcBuffer("abc", 3);
  manager.CalcFile("/nonexistent");
  for (std::string const& text : {std::string(), std::string("abc")})
    manager.CalcString(text), manager.CalcFile(text), manager.SetDigest(text);
  EXPECT_EQ("", manager.GetDigest() + manager.GetDigestString(0));
  EXPECT_TRUE(manager.GetDigestSize() == 0 && manager.GetHashObject() == nullptr);
  EXPECT_EQ(HASH_RIPEMD256, manager.GetAlgorithm());
}

TEST(Hash, TheBaseOnlyProtects) {
  struct : HashClass {
    std::string seen;
    void Protect(bool active) override { HashClass::Protect(active), seen += active ? "on " : "off "; }
    void Calc(void*, long) override {}
  } hash;
  hash.Init(), hash.Done();
  EXPECT_EQ("on off ", hash.seen);
  Hash_MD4 frame;
  frame.Init(), frame.Transform(nullptr);
  EXPECT_TRUE(hash.DigestKey() == nullptr && hash.DigestKeySize() == 0 && frame.DigestKeySize() == 0);
}

TEST(Hash, VirtualOperationsKeepTheirSlots) {
  using H = Hash_RipeMD256;
  EXPECT_EQ((std::vector<size_t>{0, 3, 4, 5, 6, 7, 8}),  // the destructor takes 1 and 2
            (std::vector<size_t>{Slot(&H::Protect), Slot(&H::DigestKeySize), Slot(&H::Init), Slot(&H::Done),
                                 Slot(&H::Calc), Slot(&H::DigestKey), Slot(&H::Transform)}));
  using M = HashManager;
  using V = void (M::*)(char const*);
  EXPECT_EQ(
      (std::vector<size_t>{2, 3, 4, 5, 6, 7, 8, 9, 10, 11}),  // the destructor takes 0 and 1
      (std::vector<size_t>{Slot(&M::GetHashObject), Slot(&M::CalcBuffer), Slot<V>(&M::CalcString),
                           Slot<V>(&M::CalcFile), Slot(&M::GetDigest), Slot<V>(&M::SetDigest), Slot(&M::GetDigestSize),
                           Slot(&M::GetDigestString), Slot(&M::SetAlgorithm), Slot(&M::GetAlgorithm)}));
}

}  // namespace
