// The Base64 loops for every instruction set, since each machine that runs the tests would use only one of them.
#include "zelvane/crypto/base64_groups_internal.h"

#include "support/test.h"

namespace {

using zelvane::internal::AllBase64Loops;
using zelvane::internal::Base64Loops;
using zelvane::internal::kBase64Slack;
using Bytes = std::vector<unsigned char>;

constexpr size_t kGroups = 40;  // several vectors and a remainder

Bytes Encoded(Base64Loops const& loops, Bytes const& bytes, size_t count) {
  Bytes text(count * 4);
  EXPECT_EQ(loops.encode(text.data(), bytes.data(), count, bytes.size()) - text.data(), text.end() - text.begin())
      << loops.name << ", " << count << " groups";
  return text;
}

TEST(Base64Loops, EncodeWhatThePlainOneEncodes) {
  std::mt19937 random(7);
  for (Base64Loops const& loops : AllBase64Loops()) {
    for (size_t count = 0; count <= kGroups; count++) {
      for (size_t more : {0, 1, 2, 30}) {
        Bytes bytes(count * 3 + more);
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
        EXPECT_EQ(Encoded(loops, bytes, count), Encoded(AllBase64Loops()[0], bytes, count))
            << loops.name << ", " << count << " groups, " << more << " bytes after them";
      }
    }
  }
}

TEST(Base64Loops, DecodeUpToTheFirstGroupWithAnotherCharacter) {
  std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (Base64Loops const& loops : AllBase64Loops()) {
    for (size_t at = 0; at < kGroups * 4; at++) {
      for (unsigned byte = 0; byte < 256; byte++) {
        Bytes text(kGroups * 4), out(kGroups * 3 + kBase64Slack), expected = out;
        for (size_t i = 0; i < text.size(); i++) text[i] = static_cast<unsigned char>(alphabet[(i * 7 + byte) % 64]);
        text[at] = static_cast<unsigned char>(byte);
        bool const known = alphabet.find(static_cast<char>(byte)) != std::string::npos;
        size_t const done = loops.decode(text.data(), kGroups, out.data());
        ASSERT_EQ(done, known ? kGroups : at / 4) << loops.name << ", byte " << byte << " at " << at;
        AllBase64Loops()[0].decode(text.data(), done, expected.data());
        out.resize(done * 3);
        expected.resize(done * 3);
        ASSERT_EQ(out, expected) << loops.name << ", byte " << byte << " at " << at;
      }
    }
  }
}

}  // namespace
