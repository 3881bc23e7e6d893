// The compression function of RIPEMD-256.
#ifndef ZELVANE_CRYPTO_RIPEMD_INTERNAL_H
#define ZELVANE_CRYPTO_RIPEMD_INTERNAL_H

#include <cstdint>

namespace zelvane::internal {

// Updates the eight words of `state` with 64 bytes, at any address.
void RipeMd256Compress(std::uint32_t* state, unsigned char const* block);

}  // namespace zelvane::internal

#endif
