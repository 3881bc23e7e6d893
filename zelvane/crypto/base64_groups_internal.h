// The inner loops of Base64: runs of whole groups, three bytes to four characters and back. Each is there in plain C++
// and, for x86, in SSSE3 and AVX2 instructions; the processor at hand decides.
#ifndef ZELVANE_CRYPTO_BASE64_GROUPS_INTERNAL_H
#define ZELVANE_CRYPTO_BASE64_GROUPS_INTERNAL_H

#include <cstddef>
#include <vector>

namespace zelvane::internal {

struct Base64Loops {
  char const* name;
  // Writes the 4 * `count` characters of `count` groups and gives their end. `readable` bytes, at least 3 * `count`,
  // may be read at `in`.
  unsigned char* (*encode)(unsigned char* out, unsigned char const* in, std::size_t count, std::size_t readable);
  // Decodes at most `count` groups of neighbouring characters of the alphabet, and gives the number done: it stops at
  // the first group with any other character in it ("=" is one). Reads 4 * `count` characters, may write kBase64Slack
  // bytes beyond the 3 * `count`.
  std::size_t (*decode)(unsigned char const* in, std::size_t count, unsigned char* out);
};

constexpr std::size_t kBase64Slack = 32;

// The fastest that this processor has.
Base64Loops const& BestBase64Loops();
// All that this processor has, plain C++ first.
std::vector<Base64Loops> AllBase64Loops();

}  // namespace zelvane::internal

#endif
