// Numbers in files are little-endian on every machine.
#ifndef ZELVANE_CORE_BYTES_INTERNAL_H
#define ZELVANE_CORE_BYTES_INTERNAL_H

#include <cstdint>

namespace zelvane::internal {

// `bytes` need no alignment; both functions access exactly four of them.
inline void StoreLe32(unsigned char* bytes, std::uint32_t value) {
  for (int i = 0; i < 4; i++) bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

inline std::uint32_t LoadLe32(unsigned char const* bytes) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; i++) value |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
  return value;
}

}  // namespace zelvane::internal

#endif
