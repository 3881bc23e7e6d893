// The inner loops of Base64: runs of complete groups, three bytes to four characters and back. They exist in plain C++
// and, for x86, with SSSE3 and AVX2 instructions; the processor at run time decides.
#ifndef ZELVANE_CRYPTO_BASE64_GROUPS_INTERNAL_H
#define ZELVANE_CRYPTO_BASE64_GROUPS_INTERNAL_H

#include <cstddef>
#include <vector>

namespace zelvane::internal {

struct Base64Loops {
  char const* name;
  // Writes the 4 * `count` characters of `count` groups and returns their end. `readable` bytes, at least 3 * `count`,
  // may be read at `in`.
  unsigned char* (*encode)(unsigned char* out, unsigned char const* in, std::size_t count, std::size_t readable);
  // Decodes at most `count` groups of adjacent characters of the alphabet, and returns the number done: it stops at the
  // first group with any other character ("=" is one). Reads 4 * `count` characters; may write kBase64Slack bytes
  // beyond the 3 * `count`.
  std::size_t (*decode)(unsigned char const* in, std::size_t count, unsigned char* out);
};

constexpr std::size_t kBase64Slack = 32;

// The fastest loops for this processor.
Base64Loops const& BestBase64Loops();
// All loops for this processor, plain C++ first.
std::vector<Base64Loops> AllBase64Loops();

}  // namespace zelvane::internal

#endif
