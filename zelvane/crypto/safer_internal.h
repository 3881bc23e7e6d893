// The SAFER block cipher: its tables, its key schedule, and blocks of eight bytes.
#ifndef ZELVANE_CRYPTO_SAFER_INTERNAL_H
#define ZELVANE_CRYPTO_SAFER_INTERNAL_H

#include <cstdint>

namespace zelvane::internal {

constexpr long kSaferBlock = 8;
constexpr long kSaferMinRounds = 4;
constexpr long kSaferMaxRounds = 13;
constexpr long kSaferSubkeys = 2 * kSaferMaxRounds + 1;

// The cipher as published: two tables and the subkeys, eight bytes each. A round uses two subkeys, and one more follows
// the last round.
struct SaferContext {
  unsigned char exp[256];
  unsigned char log[256];
  unsigned char subkeys[256];
};
static_assert(kSaferSubkeys * kSaferBlock <= 256, "the longest schedule fits");

// The number of key bytes of a variant.
enum class SaferKeySize : long { kShort = 5, k64 = 8, k128 = 16 };

// The subkeys again, one entry per round, in the form that the block functions use (safer.cpp).
struct SaferRound {
  std::uint64_t add[2];
  std::uint64_t late[4];
  std::uint64_t flip[2];
};
struct SaferSchedule {
  SaferRound encode[kSaferMaxRounds];
  SaferRound decode[kSaferMaxRounds];
};

// Fills `exp` and `log`.
void SaferTables(SaferContext& context);

// Fills the subkeys from `length` bytes of key, padded with zeros or cut to `size`; SK is the strengthened schedule.
// The tables must be filled first.
void SaferExpand(SaferContext& context, unsigned char const* key, long length, SaferKeySize size, bool strengthened);

// Fills the schedule from the subkeys.
void SaferArrange(SaferContext const& context, SaferSchedule& schedule);

// Encrypt or decrypt `count` blocks in place, each by itself, with 0 to kSaferMaxRounds rounds. The blocks need no
// alignment.
void SaferEncode(SaferContext const& context, SaferSchedule const& schedule, long rounds, unsigned char* blocks,
                 long count);
void SaferDecode(SaferContext const& context, SaferSchedule const& schedule, long rounds, unsigned char* blocks,
                 long count);

}  // namespace zelvane::internal

#endif
