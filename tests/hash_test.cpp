#include "zelvane/crypto/hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
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

std::string State(HashClass& hash, size_t size = 32) {
  return std::string(static_cast<char const*>(hash.DigestKey()), size);
}

// Hashes the pieces one after the other.
std::string Digest(std::vector<std::string> pieces) {
  Hash_RipeMD256 hash;
  hash.Init();
  for (std::string& piece : pieces) hash.Calc(piece.data(), static_cast<long>(piece.size()));
  hash.Done();
  return Hex(State(hash));
}

// The frame with the blocks that reach Transform in hexadecimal, and the calls of Protect between them.
struct Spy : Hash_MD4 {
  std::vector<std::string> seen;
  void Transform(long* block) override { seen.push_back(Hex(std::string(reinterpret_cast<char const*>(block), 64))); }
  void Protect(bool active) override { seen.emplace_back(active ? "on" : "off"); }

  void SetCount(std::uint32_t count) { count_ = count; }
  std::uint32_t Count() const { return count_; }
  std::string Block() const { return std::string(reinterpret_cast<char const*>(block_), sizeof block_); }
};

TEST(Hash, KnownAnswers) {
  auto const lines = ReadVectors("ripemd256.txt");
  ASSERT_EQ(10U, lines.size());
  for (auto const& line : lines) {
    std::string const message = FromHex(line[1]);
    ASSERT_EQ(line[0], std::to_string(message.size()));
    EXPECT_EQ(line[2], Digest({message})) << line[1];
    for (size_t cut = 0; cut <= message.size(); cut++)
      EXPECT_EQ(line[2], Digest({message.substr(0, cut), message.substr(cut)})) << line[1] << " cut at " << cut;
  }
}

TEST(Hash, PiecesAtAnyAddressGiveTheDigestOfTheWhole) {
  std::mt19937 random(8);
  for (size_t length : {0, 1, 55, 56, 57, 63, 64, 65, 119, 120, 127, 128, 129, 1000}) {
    std::string const message = Bytes(length);
    std::string const whole = Digest({message});
    Hash_RipeMD256 single;
    single.Init();
    for (char byte : message) single.Calc(&byte, 1);
    single.Done();
    EXPECT_EQ(whole, Hex(State(single))) << length;
    for (int round = 0; round < 20; round++) {
      std::string shifted = std::string(random() % 8, '?') + message;
      size_t const shift = shifted.size() - length;
      Hash_RipeMD256 hash;
      hash.Init();
      for (size_t at = 0; at < length;) {
        size_t const piece = std::min<size_t>(random() % 150, length - at);
        hash.Calc(&shifted[shift + at], static_cast<long>(piece));
        at += piece;
      }
      hash.Done();
      EXPECT_EQ(whole, Hex(State(hash))) << length << ", address + " << shift << ", round " << round;
    }
  }
}

TEST(Hash, NothingToCalcLeavesTheStateAlone) {
  Hash_RipeMD256 hash;
  hash.Init();
  std::string data = "abc";
  hash.Calc(data.data(), 3);
  std::string const before = State(hash, 40);
  hash.Calc(nullptr, 3);
  for (long length : {0L, -1L, -64L, std::numeric_limits<long>::min()}) hash.Calc(data.data(), length);
  EXPECT_EQ(before, State(hash, 40));
  hash.Done();
  EXPECT_EQ("afbd6e228b9d8cbbcef5ca2d03e6dba10ac0bc7dcbe4680e1e42d2e975459b65", Hex(State(hash)));
}

TEST(Hash, InitForgetsAndLoadsTheStartValues) {
  Hash_RipeMD256 hash;
  std::string data = Bytes(100);
  for (int round = 0; round < 2; round++) {
    hash.Init();
    EXPECT_EQ(
        "0123456789abcdeffedcba98765432101032547698badcfeefcdab8967452301"
        "f0e1d2c30f1e2d3c",
        Hex(State(hash, 40)))
        << round;
    hash.Calc(data.data(), 100);
  }
}

TEST(Hash, PaddingEndsTheLastBlock) {
  struct {
    size_t length;
    size_t blocks;
    std::string lengthField;
  } const cases[] = {{0, 1, "0000000000000000"},   {55, 1, "b801000000000000"}, {56, 2, "c001000000000000"},
                     {63, 2, "f801000000000000"},  {64, 2, "0002000000000000"}, {119, 2, "b803000000000000"},
                     {120, 3, "c003000000000000"}, {128, 3, "0004000000000000"}};
  for (auto const& c : cases) {
    Spy spy;
    std::string message = Bytes(c.length);
    spy.Calc(message.data(), static_cast<long>(c.length));
    spy.Done();
    ASSERT_EQ(c.blocks + 1, spy.seen.size()) << c.length;
    EXPECT_EQ("off", spy.seen.back()) << c.length;
    std::string all;
    for (size_t i = 0; i < c.blocks; i++) all += spy.seen[i];
    size_t const zeros = 64 * c.blocks - c.length - 9;
    EXPECT_EQ(Hex(message) + "80" + std::string(2 * zeros, '0') + c.lengthField, all) << c.length;
    EXPECT_EQ(std::string(64, '\0'), spy.Block()) << c.length;
  }
}

TEST(Hash, TheLengthHas32Bits) {
  struct {
    std::uint32_t count;
    std::string lengthField;
  } const cases[] = {
      {0x1FFFFFC0U, "00feffff00000000"}, {0x20000000U, "0000000000000000"}, {0xFFFFFFC0U, "00feffff00000000"}};
  for (auto const& c : cases) {
    Spy spy;
    spy.SetCount(c.count);
    spy.Done();
    EXPECT_EQ(c.lengthField, spy.seen[0].substr(112)) << std::hex << c.count;
  }
  for (std::uint32_t const count : {0x7FFFFFC0U, 0xFFFFFFC0U}) {
    Spy spy;
    spy.SetCount(count);
    std::string data = Bytes(128);
    spy.Calc(data.data(), 128);
    EXPECT_EQ(count + 128U, spy.Count());
    EXPECT_EQ((std::vector<std::string>{Hex(data.substr(0, 64)), Hex(data.substr(64))}), spy.seen);
  }
}

TEST(Hash, ProtectFramesTheMessage) {
  struct Protected : Hash_RipeMD256 {
    std::vector<std::string> seen;
    void Protect(bool active) override { seen.push_back((active ? "on " : "off ") + Hex(State(*this, 4))); }
  } hash;
  hash.Init();
  hash.Done();
  EXPECT_EQ((std::vector<std::string>{"on 01234567", "off 02ba4c4e"}), hash.seen);

  struct Plain : HashClass {
    std::vector<bool> seen;
    void Calc(void*, long) override {}
    void Protect(bool active) override { seen.push_back(active); }
  } plain;
  plain.Init();
  plain.Done();
  EXPECT_EQ((std::vector<bool>{true, false}), plain.seen);
  EXPECT_EQ(0, plain.DigestKeySize());
  EXPECT_EQ(nullptr, plain.DigestKey());
}

TEST(Hash, TheFrameAloneHasNoDigest) {
  Spy spy;
  spy.Init();
  EXPECT_TRUE(spy.seen.empty());
  Hash_MD4 frame;
  std::string data = Bytes(200);
  frame.Calc(data.data(), 200);
  frame.Done();
  EXPECT_EQ(0, frame.DigestKeySize());
  EXPECT_EQ(std::string(40, '\0'), State(frame, 40));
  EXPECT_EQ(32, Hash_RipeMD256().DigestKeySize());
}

TEST(Hash, TheManagerDoesNothing) {
  HashManager manager;
  std::string const text = "abc";
  manager.CalcBuffer(text.data(), 3);
  manager.CalcString("abc");
  manager.CalcString(text);
  manager.CalcFile("/etc/hostname");
  manager.CalcFile(text);
  manager.SetDigest("abc");
  manager.SetDigest(text);
  for (int value : {0, 1, -1, 1000000}) manager.SetAlgorithm(static_cast<HashAlgorithm>(value));
  EXPECT_EQ(HASH_RIPEMD256, manager.GetAlgorithm());
  EXPECT_EQ(nullptr, manager.GetHashObject());
  EXPECT_EQ("", manager.GetDigest());
  EXPECT_EQ(0, manager.GetDigestSize());
  for (long format : {0L, 1L, -1L}) EXPECT_EQ("", manager.GetDigestString(format)) << format;
}

TEST(Hash, VirtualOperationsKeepTheirSlots) {
  using H = Hash_RipeMD256;
  EXPECT_EQ(0U, Slot(&H::Protect));  // the destructor takes 1 and 2
  EXPECT_EQ(3U, Slot(&H::DigestKeySize));
  EXPECT_EQ(4U, Slot(&H::Init));
  EXPECT_EQ(5U, Slot(&H::Done));
  EXPECT_EQ(6U, Slot(&H::Calc));
  EXPECT_EQ(7U, Slot(&H::DigestKey));
  EXPECT_EQ(8U, Slot(&H::Transform));
  using M = HashManager;
  EXPECT_EQ(2U, Slot(&M::GetHashObject));  // the destructor takes 0 and 1
  EXPECT_EQ(3U, Slot(&M::CalcBuffer));
  EXPECT_EQ(4U, Slot(static_cast<void (M::*)(char const*)>(&M::CalcString)));
  EXPECT_EQ(5U, Slot(static_cast<void (M::*)(char const*)>(&M::CalcFile)));
  EXPECT_EQ(6U, Slot(&M::GetDigest));
  EXPECT_EQ(7U, Slot(static_cast<void (M::*)(char const*)>(&M::SetDigest)));
  EXPECT_EQ(8U, Slot(&M::GetDigestSize));
  EXPECT_EQ(9U, Slot(&M::GetDigestString));
  EXPECT_EQ(10U, Slot(&M::SetAlgorithm));
  EXPECT_EQ(11U, Slot(&M::GetAlgorithm));
}

}  // namespace
