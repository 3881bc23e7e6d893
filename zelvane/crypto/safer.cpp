#include "zelvane/crypto/safer_internal.h"

#include <algorithm>
#include <array>
#include <cstring>

// HOW A ROUND IS COMPUTED
//
// As published, a round mixes a subkey into the eight bytes (exclusive-or at bytes 0 3 4 7, addition at 1 2 5 6), sends
// each through exp (0 3 4 7) or log (1 2 5 6), mixes in the second subkey (addition and exclusive-or change sides), and
// multiplies the eight bytes by a fixed 8x8 matrix, all modulo 256.
//
// Here one 64-bit word holds four bytes, each in a lane of 16 bits. The upper bits of a lane leave space for sums;
// above the low 8 bits its contents have no meaning. A table entry is the result of exp or log, already multiplied by
// its column of half the matrix (four lanes). The sum of the entries of four bytes is their product with that half; one
// sum and one difference of the two halves complete the matrix. Its entries are powers of two up to sign, and shifting
// a byte commutes with exclusive-or, so the subkey after the table is mixed in multiplied too ("late"). The matrix is
// linear, so subkeys that are added can be multiplied and combined beforehand ("add"). The exclusive-or before the next
// table remains ("flip").
//
// Decryption applies the inverse matrix first, then the inverse tables. Its rounds are divided differently, from table
// through matrix to the key before the next table, so that they have the same shape; half a round remains at either
// end.
namespace zelvane::internal {
namespace {

using Column = std::array<int, 4>;

constexpr std::uint64_t Lanes(int a, int b, int c, int d) {
  return std::uint64_t{static_cast<unsigned char>(a)} | std::uint64_t{static_cast<unsigned char>(b)} << 16 |
         std::uint64_t{static_cast<unsigned char>(c)} << 32 | std::uint64_t{static_cast<unsigned char>(d)} << 48;
}

constexpr std::uint64_t kLow = Lanes(255, 255, 255, 255);
constexpr std::uint64_t kOne = Lanes(1, 1, 1, 1);

// The columns for bytes 0 1 2 3, and again for 4 5 6 7. The resulting lanes are bytes 0 2 4 6 and 1 3 5 7 of the next
// round (encode), 0 1 4 5 and 2 3 6 7 of the previous round (decode).
constexpr Column kEncodeColumn[4] = {{4, 2, 2, 1}, {2, 2, 1, 1}, {2, 1, 2, 1}, {1, 1, 1, 1}};
constexpr Column kDecodeColumn[4] = {{1, -1, -1, 1}, {-1, 1, 2, -2}, {-1, 2, 1, -2}, {1, -2, -2, 4}};

constexpr std::uint64_t Times(int value, Column const& c) {
  return Lanes(c[0] * value, c[1] * value, c[2] * value, c[3] * value);
}

// For values that a late key is mixed into: a negative product is stored as its complement, which stays a complement
// under exclusive-or. Each such lane is then too small by one.
constexpr int Complement(int factor, int value) { return factor < 0 ? ~(-factor * value) : factor * value; }

constexpr std::uint64_t TimesForLate(int value, Column const& c) {
  return Lanes(Complement(c[0], value), Complement(c[1], value), Complement(c[2], value), Complement(c[3], value));
}

constexpr std::uint64_t LateKey(int value, Column const& c) { return TimesForLate(value, c) ^ TimesForLate(0, c); }

// The amount by which the two complemented columns, those of bytes 0 and 3, are too small in decryption.
constexpr std::uint64_t kDecodeLack = Lanes(0, 2, 2, 0);

// Multiples of 256 that keep every lane of the two differences in a decryption round from becoming negative.
constexpr int kFirstReserve = 15 * 256;
constexpr int kSecondReserve = 10 * 256;
constexpr int kMostInLane = 5 * 255;  // four table entries and a key
static_assert(0 + kFirstReserve >= kMostInLane + kSecondReserve, "the first difference");
static_assert(0 + kSecondReserve >= kMostInLane + kFirstReserve - kSecondReserve, "the second difference");

struct Tables {
  unsigned char exp[256];
  unsigned char log[256];
  std::uint64_t encode[4][256];
  std::uint64_t decode[4][256];
};

constexpr Tables MakeTables() {
  Tables tables{};
  int power = 1;  // of 45 modulo 257; 256 is stored as 0
  for (int i = 0; i < 256; i++) {
    tables.exp[i] = static_cast<unsigned char>(power);
    tables.log[tables.exp[i]] = static_cast<unsigned char>(i);
    power = power * 45 % 257;
  }
  for (int i = 0; i < 256; i++) {
    int const exp = tables.exp[i];
    int const log = tables.log[i];
    tables.encode[0][i] = Times(exp, kEncodeColumn[0]);
    tables.encode[1][i] = TimesForLate(log, kEncodeColumn[1]);
    tables.encode[2][i] = TimesForLate(log, kEncodeColumn[2]);
    tables.encode[3][i] = Times(exp, kEncodeColumn[3]);
    tables.decode[0][i] = TimesForLate(log, kDecodeColumn[0]);
    tables.decode[1][i] = Times(exp, kDecodeColumn[1]);
    tables.decode[2][i] = Times(exp, kDecodeColumn[2]);
    tables.decode[3][i] = TimesForLate(log, kDecodeColumn[3]);
  }
  return tables;
}

constexpr Tables kTables = MakeTables();

// Eight bytes as a number, the first lowest. Written out, because compilers turn this form into one load or store.
inline std::uint64_t Load(unsigned char const* b) {
  return std::uint64_t{b[0]} | std::uint64_t{b[1]} << 8 | std::uint64_t{b[2]} << 16 | std::uint64_t{b[3]} << 24 |
         std::uint64_t{b[4]} << 32 | std::uint64_t{b[5]} << 40 | std::uint64_t{b[6]} << 48 | std::uint64_t{b[7]} << 56;
}

inline void Store(unsigned char* b, std::uint64_t value) {
  b[0] = static_cast<unsigned char>(value);
  b[1] = static_cast<unsigned char>(value >> 8);
  b[2] = static_cast<unsigned char>(value >> 16);
  b[3] = static_cast<unsigned char>(value >> 24);
  b[4] = static_cast<unsigned char>(value >> 32);
  b[5] = static_cast<unsigned char>(value >> 40);
  b[6] = static_cast<unsigned char>(value >> 48);
  b[7] = static_cast<unsigned char>(value >> 56);
}

template <int kLane>
inline unsigned char Byte(std::uint64_t word) {
  return static_cast<unsigned char>(word >> (16 * kLane));
}

// A block between two rounds.
struct State {
  std::uint64_t first, second;
};

// Where the bytes of a half are before a round, what they go through, and how the key after that is mixed in:
//
//   byte    encryption                           decryption
//   0  4    first, lane 0  2    exp  added       first, lane 0  2     log  late
//   1  5    second      0  2    log  late        first       1  3     exp  added
//   2  6    first       1  3    log  late        second      0  2     exp  added
//   3  7    second      1  3    exp  added       second      1  3     log  late

// A half, multiplied by half the matrix.
template <int kHalf>
inline std::uint64_t EncodeHalf(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3,
                                SaferRound const& key) {
  auto const& t = kTables.encode;
  return (t[0][b0] + key.add[kHalf] + t[3][b3]) +
         ((t[1][b1] ^ key.late[2 * kHalf]) + (t[2][b2] ^ key.late[2 * kHalf + 1]));
}

template <int kHalf>
inline std::uint64_t DecodeHalf(unsigned char b0, unsigned char b1, unsigned char b2, unsigned char b3,
                                SaferRound const& key) {
  auto const& t = kTables.decode;
  return (t[1][b1] + key.add[kHalf] + t[2][b2]) +
         ((t[0][b0] ^ key.late[2 * kHalf]) + (t[3][b3] ^ key.late[2 * kHalf + 1]));
}

inline State EncodeRound(State s, SaferRound const& key) {
  std::uint64_t const low =
      EncodeHalf<0>(Byte<0>(s.first), Byte<0>(s.second), Byte<1>(s.first), Byte<1>(s.second), key);
  std::uint64_t const high =
      EncodeHalf<1>(Byte<2>(s.first), Byte<2>(s.second), Byte<3>(s.first), Byte<3>(s.second), key);
  std::uint64_t const sum = low + high;
  return {(low + sum) ^ key.flip[0], sum ^ key.flip[1]};
}

inline State DecodeRound(State s, SaferRound const& key) {
  std::uint64_t const low =
      DecodeHalf<0>(Byte<0>(s.first), Byte<1>(s.first), Byte<0>(s.second), Byte<1>(s.second), key);
  std::uint64_t const high =
      DecodeHalf<1>(Byte<2>(s.first), Byte<3>(s.first), Byte<2>(s.second), Byte<3>(s.second), key);
  std::uint64_t const difference = low - high;
  return {difference ^ key.flip[0], (high - difference) ^ key.flip[1]};
}

inline State EncodeBegin(unsigned char const* block, unsigned char const* subkey) {
  std::uint64_t const bytes = Load(block);
  std::uint64_t const key = Load(subkey);
  return {((bytes & kLow) + (key & Lanes(0, 255, 0, 255))) ^ (key & Lanes(255, 0, 255, 0)),
          ((bytes >> 8 & kLow) + (key >> 8 & Lanes(255, 0, 255, 0))) ^ (key >> 8 & Lanes(0, 255, 0, 255))};
}

inline void EncodeEnd(unsigned char* block, State s) { Store(block, (s.first & kLow) | (s.second & kLow) << 8); }

// The bytes on the far side of the tables: the look-ups of the first round then return the contents of the block, and
// its late and added keys remove the last subkey.
inline State DecodeBegin(unsigned char const* b, SaferContext const& c) {
  return {Lanes(c.exp[b[0]], c.log[b[1]], c.exp[b[4]], c.log[b[5]]),
          Lanes(c.log[b[2]], c.exp[b[3]], c.log[b[6]], c.exp[b[7]])};
}

inline void DecodeEnd(unsigned char* block, State s, SaferContext const& c) {
  unsigned char const* const k = c.subkeys;
  unsigned char const bytes[kSaferBlock] = {static_cast<unsigned char>(c.log[Byte<0>(s.first)] ^ k[0]),
                                            static_cast<unsigned char>(c.exp[Byte<1>(s.first)] - k[1]),
                                            static_cast<unsigned char>(c.exp[Byte<0>(s.second)] - k[2]),
                                            static_cast<unsigned char>(c.log[Byte<1>(s.second)] ^ k[3]),
                                            static_cast<unsigned char>(c.log[Byte<2>(s.first)] ^ k[4]),
                                            static_cast<unsigned char>(c.exp[Byte<3>(s.first)] - k[5]),
                                            static_cast<unsigned char>(c.exp[Byte<2>(s.second)] - k[6]),
                                            static_cast<unsigned char>(c.log[Byte<3>(s.second)] ^ k[7])};
  std::memcpy(block, bytes, sizeof bytes);
}

// The half keys that the schedule uses in turn, each of eight bytes and a ninth for the strengthened schedule.
struct HalfKeys {
  unsigned char first[9] = {};
  unsigned char second[9] = {};

  HalfKeys(unsigned char const* key, long length, SaferKeySize size) {
    unsigned char bytes[16] = {};
    long const most = static_cast<long>(size);
    if (length > 0) std::memcpy(bytes, key, static_cast<std::size_t>(std::min(length, most)));
    std::memcpy(first, bytes, kSaferBlock);
    std::memcpy(second, bytes + (size == SaferKeySize::k128 ? kSaferBlock : 0), kSaferBlock);
    explicit_bzero(bytes, sizeof bytes);
    for (auto* half : {first, second}) {
      if (size == SaferKeySize::kShort) {
        Stretch(half);
      } else {
        for (int i = 0; i < kSaferBlock; i++) half[8] ^= half[i];
      }
    }
  }
  ~HalfKeys() { explicit_bzero(this, sizeof *this); }
  HalfKeys(HalfKeys const&) = delete;
  HalfKeys& operator=(HalfKeys const&) = delete;

 private:
  // Expands five bytes to nine.
  static void Stretch(unsigned char* k) {
    k[5] = static_cast<unsigned char>(k[0] ^ k[2] ^ 129);
    k[6] = static_cast<unsigned char>(k[0] ^ k[3] ^ k[4] ^ 66);
    k[7] = static_cast<unsigned char>(k[1] ^ k[2] ^ k[4] ^ 36);
    k[8] = static_cast<unsigned char>(k[1] ^ k[3] ^ 24);
  }
};

// With a single block the processor waits for its look-ups. Independent blocks go through the rounds together and fill
// the gaps.
constexpr long kGroup = 8;

template <int kCount>
void EncodeGroup(SaferContext const& context, SaferSchedule const& schedule, long rounds, unsigned char* blocks) {
  State states[kCount];
  for (int i = 0; i < kCount; i++) states[i] = EncodeBegin(blocks + i * kSaferBlock, context.subkeys);
  for (long round = 0; round < rounds; round++)
    for (State& state : states) state = EncodeRound(state, schedule.encode[round]);
  for (int i = 0; i < kCount; i++) EncodeEnd(blocks + i * kSaferBlock, states[i]);
}

template <int kCount>
void DecodeGroup(SaferContext const& context, SaferSchedule const& schedule, long rounds, unsigned char* blocks) {
  State states[kCount];
  for (int i = 0; i < kCount; i++) states[i] = DecodeBegin(blocks + i * kSaferBlock, context);
  for (long round = rounds; round-- > 0;)
    for (State& state : states) state = DecodeRound(state, schedule.decode[round]);
  for (int i = 0; i < kCount; i++) DecodeEnd(blocks + i * kSaferBlock, states[i], context);
}

}  // namespace

void SaferTables(SaferContext& context) {
  std::memcpy(context.exp, kTables.exp, sizeof context.exp);
  std::memcpy(context.log, kTables.log, sizeof context.log);
}

void SaferExpand(SaferContext& context, unsigned char const* key, long length, SaferKeySize size, bool strengthened) {
  HalfKeys const halves(key, length, size);
  for (int n = 0; n < kSaferSubkeys; n++) {
    unsigned char const* const half = n % 2 == 0 ? halves.second : halves.first;
    int const turn = 3 * n % 8;
    for (int j = 0; j < kSaferBlock; j++) {
      unsigned const byte = half[strengthened ? (n + j) % 9 : j];
      unsigned const turned = byte << turn | byte >> (8 - turn);
      // The first subkey is unchanged key bytes; the others include a constant each, so that they differ for any key.
      unsigned const bias = n == 0 ? 0 : context.exp[context.exp[9 * n + 10 + j]];
      context.subkeys[n * kSaferBlock + j] = static_cast<unsigned char>(turned + bias);
    }
  }
}

void SaferArrange(SaferContext const& context, SaferSchedule& schedule) {
  for (int i = 0; i < kSaferMaxRounds; i++) {
    SaferRound& e = schedule.encode[i];
    SaferRound& d = schedule.decode[i];
    unsigned char const* const k = context.subkeys + (2 * i + 1) * kSaferBlock;  // after the tables of this round
    unsigned char const* const n = k + kSaferBlock;                              // before those of the next
    for (int h = 0; h < 2; h++) {
      e.late[2 * h] = LateKey(k[4 * h + 1], kEncodeColumn[1]);
      e.late[2 * h + 1] = LateKey(k[4 * h + 2], kEncodeColumn[2]);
      e.add[h] = Times(k[4 * h], kEncodeColumn[0]) + Times(k[4 * h + 3], kEncodeColumn[3]);
      d.late[2 * h] = LateKey(n[4 * h], kDecodeColumn[0]);
      d.late[2 * h + 1] = LateKey(n[4 * h + 3], kDecodeColumn[3]);
      d.add[h] = Times(-n[4 * h + 1], kDecodeColumn[1]) + Times(-n[4 * h + 2], kDecodeColumn[2]) + kDecodeLack;
    }
    e.flip[0] = Lanes(n[0], 0, n[4], 0);
    e.flip[1] = Lanes(0, n[3], 0, n[7]);
    d.flip[0] = Lanes(0, k[1], 0, k[5]);
    d.flip[1] = Lanes(k[2], 0, k[6], 0);
    // The amounts added to the two result words of a round, moved back through its last step: encoding computes (2 low
    // + high, low + high), decoding (low - high, 2 high - low). In a lane, 256 - x is -x.
    std::uint64_t const e0 = Lanes(0, n[2], 0, n[6]);
    std::uint64_t const e1 = Lanes(n[1], 0, n[5], 0);
    std::uint64_t const d0 = Lanes(-k[0], 0, -k[4], 0);
    std::uint64_t const d1 = Lanes(0, -k[3], 0, -k[7]);
    e.add[0] = (e.add[0] + e0 + (kOne * 256 - e1)) & kLow;
    e.add[1] = (e.add[1] + 2 * e1 + (kOne * 256 - e0)) & kLow;
    d.add[0] = ((d.add[0] + 2 * d0 + d1) & kLow) + kOne * kFirstReserve;
    d.add[1] = ((d.add[1] + d0 + d1) & kLow) + kOne * kSecondReserve;
  }
}

void SaferEncode(SaferContext const& context, SaferSchedule const& schedule, long rounds, unsigned char* blocks,
                 long count) {
  for (; count >= kGroup; count -= kGroup, blocks += kGroup * kSaferBlock)
    EncodeGroup<kGroup>(context, schedule, rounds, blocks);
  for (; count > 0; count--, blocks += kSaferBlock) EncodeGroup<1>(context, schedule, rounds, blocks);
}

void SaferDecode(SaferContext const& context, SaferSchedule const& schedule, long rounds, unsigned char* blocks,
                 long count) {
  for (; count >= kGroup; count -= kGroup, blocks += kGroup * kSaferBlock)
    DecodeGroup<kGroup>(context, schedule, rounds, blocks);
  for (; count > 0; count--, blocks += kSaferBlock) DecodeGroup<1>(context, schedule, rounds, blocks);
}

}  // namespace zelvane::internal
