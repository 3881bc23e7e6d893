// Helpers for the cipher sources.
#ifndef ZELVANE_CRYPTO_CIPHER_INTERNAL_H
#define ZELVANE_CRYPTO_CIPHER_INTERNAL_H

#include <cstdint>
#include <cstring>

namespace zelvane::internal {

// Combines `count` bytes of `from` with `to` by exclusive-or, at any addresses. Works in words: a block is usually one
// word, and the block functions read it back as one.
inline void XorInto(unsigned char* to, unsigned char const* from, long count) {
  for (; count >= 8; count -= 8, to += 8, from += 8) {
    std::uint64_t a;
    std::uint64_t b;
    std::memcpy(&a, to, sizeof a);
    std::memcpy(&b, from, sizeof b);
    a ^= b;
    std::memcpy(to, &a, sizeof a);
  }
  for (long i = 0; i < count; i++) to[i] ^= from[i];
}

// Stores the results of a GetContext, whose pointers can be null.
inline void TellSizes(long* block, long* key, long* context, long blockSize, long keySize, long contextSize) {
  if (block != nullptr) *block = blockSize;
  if (key != nullptr) *key = keySize;
  if (context != nullptr) *context = contextSize;
}

}  // namespace zelvane::internal

#endif
