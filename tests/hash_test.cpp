#include "zelvane/crypto/hash.h"

#include "support/test.h"
#include "support/vectors.h"

namespace {

using test::Bytes, test::FromHex, test::Hex, test::ReadVectors;

std::string State(HashClass& hash, size_t size = 32) {
  return std::string(static_cast<char const*>(hash.DigestKey()), size);
}

// Hashes the message in two parts; the second starts `shift` bytes after an aligned address.
std::string Digest(std::string message, size_t cut, size_t shift = 0) {
  Hash_RipeMD256 hash;
  message.insert(cut, shift, '?');
  hash.Init();
  hash.Calc(message.data(), static_cast<long>(cut));
  hash.Calc(&message[cut + shift], static_cast<long>(message.size() - cut - shift));
  hash.Done();
  return Hex(State(hash));
}

// A hash that records the blocks passed to Transform in hexadecimal, and the calls of Protect between them.
struct Spy : Hash_MD4 {
  test::Names seen;
  void Transform(long* block) override { seen.push_back(Hex(std::string(reinterpret_cast<char const*>(block), 64))); }
  void Protect(bool active) override { seen.emplace_back(active ? "on" : "off"); }
  explicit Spy(std::uint32_t count = 0) { count_ = count; }
  std::string Block() const { return std::string(reinterpret_cast<char const*>(block_), sizeof block_); }
};

TEST(Hash, KnownAnswersInPieces) {
  auto const lines = ReadVectors("ripemd256.txt");
  ASSERT_EQ(lines.size(), 10U);
  for (auto const& line : lines)
    for (size_t cut = 0; cut <= line[1].size() / 2 && cut <= FromHex(line[1]).size(); cut++)
      EXPECT_EQ(Digest(FromHex(line[1]), cut), line[2]) << line[1] << " cut at " << cut;
  std::string const whole = Digest(Bytes(1000), 1000);
  for (size_t cut = 0; cut < 200; cut++) EXPECT_EQ(Digest(Bytes(1000), cut, cut % 8), whole) << cut;
}

TEST(Hash, InitLoadsTheStartValuesAndNothingToCalcLeavesThem) {
  Hash_RipeMD256 hash;
  std::string data = Bytes(100);
  hash.Calc(data.data(), 100);
  hash.Init();
  hash.Calc(nullptr, 3);
  for (long length : {0L, -1L, -64L, LONG_MIN}) hash.Calc(data.data(), length);
  hash.Transform(nullptr);
  EXPECT_EQ(Hex(State(hash, 40)), "0123456789abcdeffedcba98765432101032547698badcfeefcdab8967452301674523010f1e2d3c");
}

TEST(Hash, PaddingEndsTheLastBlockWithALengthOf32Bits) {
  std::tuple<std::uint32_t, size_t, size_t, char const*> const rows[] = {
      // bytes before; bytes, blocks, length in bits
      {0, 0, 1, "00000000"},           {0, 55, 1, "b8010000"},         {0, 56, 2, "c0010000"},
      {0, 63, 2, "f8010000"},          {0, 64, 2, "00020000"},         {0, 120, 3, "c0030000"},
      {0x20000000, 0, 1, "00000000"},  {0xFFFFFFC0, 0, 1, "00feffff"}, {0x7FFFFFC0, 128, 3, "00020000"},
      {0xFFFFFFC0, 128, 3, "00020000"}};
  for (auto const& [count, length, blocks, lengthField] : rows) {
    Spy spy(count);
    std::string message = Bytes(length), all;
    spy.Calc(message.data(), static_cast<long>(length));
    spy.Done();
    ASSERT_EQ(spy.seen.size(), blocks + 1) << count << " + " << length;
    for (std::string const& block : spy.seen) all += block;
    std::string const zeros(2 * (64 * blocks - length - 9), '0');
    EXPECT_EQ(all, Hex(message) + "80" + zeros + lengthField + "00000000off") << count << " + " << length;
    EXPECT_EQ(spy.Block(), std::string(64, '\0')) << length;
  }
}

}  // namespace
