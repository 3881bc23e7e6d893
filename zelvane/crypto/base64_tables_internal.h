// The Base64 alphabet and the values of its characters.
#ifndef ZELVANE_CRYPTO_BASE64_TABLES_INTERNAL_H
#define ZELVANE_CRYPTO_BASE64_TABLES_INTERNAL_H

#include <array>
#include <cstdint>

namespace zelvane::internal {

inline constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Character to value, one table for each position in a group of four. The value is already in its place in the upper 24
// bits: a group is four look-ups joined by "or". The low byte marks characters that need special treatment.
constexpr std::uint32_t kBase64Pad = 0x40;      // "=", of value 0
constexpr std::uint32_t kBase64Skipped = 0x80;  // not in the alphabet
constexpr std::array<std::array<std::uint32_t, 256>, 4> MakeBase64Places() {
  std::array<std::array<std::uint32_t, 256>, 4> places{};
  for (unsigned place = 0; place < 4; place++) {
    for (auto& value : places[place]) value = kBase64Skipped;
    for (unsigned i = 0; i < 64; i++)
      places[place][static_cast<unsigned char>(kBase64Alphabet[i])] = i << (26 - 6 * place);
    places[place]['='] = kBase64Pad;
  }
  return places;
}
inline constexpr std::array<std::array<std::uint32_t, 256>, 4> kBase64Places = MakeBase64Places();

}  // namespace zelvane::internal

#endif
