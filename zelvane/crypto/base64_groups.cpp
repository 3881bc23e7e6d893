#include "zelvane/crypto/base64_groups_internal.h"

#include <endian.h>

#include <array>
#include <cstdint>
#include <cstring>

#include "zelvane/crypto/base64_tables_internal.h"

// The C library knows the features of the processor and the system. Asking the processor directly takes microseconds
// under a hypervisor, and keeping the answer would need writable data.
#if (defined(__x86_64__) || defined(__i386__)) && __has_include(<sys/platform/x86.h>)
#define ZELVANE_BASE64_VECTORS 1
#include <immintrin.h>
#define _Bool bool  // NOLINT(bugprone-reserved-identifier): the header is C's
#include <sys/platform/x86.h>
#undef _Bool
#endif

namespace zelvane::internal {
namespace {

// ---- Plain C++ ----

// Twelve bits to two characters: half as many look-ups as one character at a time.
struct Pair {
  char text[2];
};
constexpr std::array<Pair, 4096> MakePairs() {
  std::array<Pair, 4096> pairs{};
  for (unsigned i = 0; i < 4096; i++) pairs[i] = {{kBase64Alphabet[i >> 6], kBase64Alphabet[i & 63]}};
  return pairs;
}
constexpr std::array<Pair, 4096> kPairs = MakePairs();

unsigned char* PutPair(unsigned char* out, std::uint64_t bits) {
  std::memcpy(out, kPairs[bits & 4095].text, 2);
  return out + 2;
}

unsigned char* EncodePlain(unsigned char* out, unsigned char const* in, std::size_t count, std::size_t readable) {
  // Two groups at a time, from eight bytes of which six are used.
  for (; count >= 2 && readable >= 8; count -= 2, readable -= 6, in += 6) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, in, 8);
    bits = be64toh(bits);
    out = PutPair(PutPair(PutPair(PutPair(out, bits >> 52), bits >> 40), bits >> 28), bits >> 16);
  }
  for (; count > 0; count--, in += 3) {
    unsigned const bits = static_cast<unsigned>(in[0] << 16 | in[1] << 8 | in[2]);
    out = PutPair(PutPair(out, bits >> 12), bits);
  }
  return out;
}

std::size_t DecodePlain(unsigned char const* in, std::size_t count, unsigned char* out) {
  std::size_t done = 0;
  for (; done < count; done++, in += 4, out += 3) {
    std::uint32_t bits =
        kBase64Places[0][in[0]] | kBase64Places[1][in[1]] | kBase64Places[2][in[2]] | kBase64Places[3][in[3]];
    if ((bits & (kBase64Pad | kBase64Skipped)) != 0) break;
    bits = htobe32(bits);
    std::memcpy(out, &bits, 4);
  }
  return done;
}

constexpr Base64Loops kPlain = {"plain", EncodePlain, DecodePlain};

#ifdef ZELVANE_BASE64_VECTORS

// ---- Sixteen and thirty-two characters at a time ----
//
// The three bytes a b c of a group go to the 32-bit lane b a c b. There, each of the four 6-bit values is in a 16-bit
// half, at a position from which one multiplication by a power of two moves it into its own byte.
//
// A value becomes a character by adding a number that depends on its range: 65 up to 25, 71 up to 51, -4 for the
// digits, -19 and -16 for the last two. Subtracting 51 and stopping at 0 gives 0 for the letters and 1 to 12 for the
// others; 13 then marks the capitals. The result selects the summand.
//
// In the other direction the high half of a character selects its summand, except for "/", which has the same high half
// as "+". A character is outside the alphabet if both tables have a common bit for its halves.

#define ZELVANE_SUMMANDS 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0
#define ZELVANE_SUMMANDS_BACK 0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0
#define ZELVANE_BAD_LOW 0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1a, 0x1b, 0x1b, 0x1b, 0x1a
#define ZELVANE_BAD_HIGH 0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10
#define ZELVANE_TO_LANES 1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10
#define ZELVANE_FROM_LANES 2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1

#define ZELVANE_SSSE3 __attribute__((target("ssse3")))

ZELVANE_SSSE3 inline __m128i Load16(unsigned char const* in) {
  return _mm_loadu_si128(reinterpret_cast<__m128i const*>(in));
}

ZELVANE_SSSE3 unsigned char* EncodeSsse3(unsigned char* out, unsigned char const* in, std::size_t count,
                                         std::size_t readable) {
  for (; count >= 4 && readable >= 16; count -= 4, readable -= 12, in += 12, out += 16) {
    __m128i const lanes = _mm_shuffle_epi8(Load16(in), _mm_setr_epi8(ZELVANE_TO_LANES));
    __m128i const even = _mm_mulhi_epu16(_mm_and_si128(lanes, _mm_set1_epi32(0x0fc0fc00)), _mm_set1_epi32(0x04000040));
    __m128i const odd = _mm_mullo_epi16(_mm_and_si128(lanes, _mm_set1_epi32(0x003f03f0)), _mm_set1_epi32(0x01000010));
    __m128i const values = _mm_or_si128(even, odd);
    __m128i const capital = _mm_and_si128(_mm_cmpgt_epi8(_mm_set1_epi8(26), values), _mm_set1_epi8(13));
    __m128i const range = _mm_or_si128(_mm_subs_epu8(values, _mm_set1_epi8(51)), capital);
    __m128i const text = _mm_add_epi8(values, _mm_shuffle_epi8(_mm_setr_epi8(ZELVANE_SUMMANDS), range));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), text);
  }
  return EncodePlain(out, in, count, readable);
}

ZELVANE_SSSE3 std::size_t DecodeSsse3(unsigned char const* in, std::size_t count, unsigned char* out) {
  std::size_t done = 0;
  for (; done + 4 <= count; done += 4, in += 16, out += 12) {
    __m128i const text = Load16(in);
    __m128i const high = _mm_and_si128(_mm_srli_epi32(text, 4), _mm_set1_epi8(15));
    __m128i const low = _mm_and_si128(text, _mm_set1_epi8(15));
    __m128i const bad = _mm_and_si128(_mm_shuffle_epi8(_mm_setr_epi8(ZELVANE_BAD_LOW), low),
                                      _mm_shuffle_epi8(_mm_setr_epi8(ZELVANE_BAD_HIGH), high));
    auto const good = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bad, _mm_setzero_si128())));
    __m128i const slash = _mm_cmpeq_epi8(text, _mm_set1_epi8('/'));
    __m128i const summand = _mm_shuffle_epi8(_mm_setr_epi8(ZELVANE_SUMMANDS_BACK), _mm_add_epi8(high, slash));
    __m128i const pairs = _mm_maddubs_epi16(_mm_add_epi8(text, summand), _mm_set1_epi32(0x01400140));
    __m128i const groups = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(groups, _mm_setr_epi8(ZELVANE_FROM_LANES)));
    if (good != 0xffff) return done + static_cast<std::size_t>(__builtin_ctz(~good)) / 4;
  }
  return done + DecodePlain(in, count - done, out);
}

constexpr Base64Loops kSsse3 = {"ssse3", EncodeSsse3, DecodeSsse3};

#define ZELVANE_AVX2 __attribute__((target("avx2")))

// The same in two independent halves, with twelve bytes or sixteen characters each.

ZELVANE_AVX2 unsigned char* EncodeAvx2(unsigned char* out, unsigned char const* in, std::size_t count,
                                       std::size_t readable) {
  __m256i const toLanes = _mm256_setr_epi8(ZELVANE_TO_LANES, ZELVANE_TO_LANES);
  __m256i const summands = _mm256_setr_epi8(ZELVANE_SUMMANDS, ZELVANE_SUMMANDS);
  for (; count >= 8 && readable >= 28; count -= 8, readable -= 24, in += 24, out += 32) {
    __m256i const bytes =
        _mm256_loadu2_m128i(reinterpret_cast<__m128i const*>(in + 12), reinterpret_cast<__m128i const*>(in));
    __m256i const lanes = _mm256_shuffle_epi8(bytes, toLanes);
    __m256i const even =
        _mm256_mulhi_epu16(_mm256_and_si256(lanes, _mm256_set1_epi32(0x0fc0fc00)), _mm256_set1_epi32(0x04000040));
    __m256i const odd =
        _mm256_mullo_epi16(_mm256_and_si256(lanes, _mm256_set1_epi32(0x003f03f0)), _mm256_set1_epi32(0x01000010));
    __m256i const values = _mm256_or_si256(even, odd);
    __m256i const capital = _mm256_and_si256(_mm256_cmpgt_epi8(_mm256_set1_epi8(26), values), _mm256_set1_epi8(13));
    __m256i const range = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), capital);
    __m256i const text = _mm256_add_epi8(values, _mm256_shuffle_epi8(summands, range));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), text);
  }
  return EncodeSsse3(out, in, count, readable);
}

ZELVANE_AVX2 std::size_t DecodeAvx2(unsigned char const* in, std::size_t count, unsigned char* out) {
  __m256i const badLow = _mm256_setr_epi8(ZELVANE_BAD_LOW, ZELVANE_BAD_LOW);
  __m256i const badHigh = _mm256_setr_epi8(ZELVANE_BAD_HIGH, ZELVANE_BAD_HIGH);
  __m256i const summands = _mm256_setr_epi8(ZELVANE_SUMMANDS_BACK, ZELVANE_SUMMANDS_BACK);
  __m256i const fromLanes = _mm256_setr_epi8(ZELVANE_FROM_LANES, ZELVANE_FROM_LANES);
  std::size_t done = 0;
  for (; done + 8 <= count; done += 8, in += 32, out += 24) {
    __m256i const text = _mm256_loadu_si256(reinterpret_cast<__m256i const*>(in));
    __m256i const high = _mm256_and_si256(_mm256_srli_epi32(text, 4), _mm256_set1_epi8(15));
    __m256i const low = _mm256_and_si256(text, _mm256_set1_epi8(15));
    __m256i const bad = _mm256_and_si256(_mm256_shuffle_epi8(badLow, low), _mm256_shuffle_epi8(badHigh, high));
    auto const good = static_cast<unsigned>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bad, _mm256_setzero_si256())));
    __m256i const slash = _mm256_cmpeq_epi8(text, _mm256_set1_epi8('/'));
    __m256i const summand = _mm256_shuffle_epi8(summands, _mm256_add_epi8(high, slash));
    __m256i const pairs = _mm256_maddubs_epi16(_mm256_add_epi8(text, summand), _mm256_set1_epi32(0x01400140));
    __m256i const groups = _mm256_shuffle_epi8(_mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000)), fromLanes);
    _mm256_storeu2_m128i(reinterpret_cast<__m128i*>(out + 12), reinterpret_cast<__m128i*>(out), groups);
    if (good != 0xffffffff) return done + static_cast<std::size_t>(__builtin_ctz(~good)) / 4;
  }
  return done + DecodeSsse3(in, count - done, out);
}

constexpr Base64Loops kAvx2 = {"avx2", EncodeAvx2, DecodeAvx2};

#endif

}  // namespace

Base64Loops const& BestBase64Loops() {
#ifdef ZELVANE_BASE64_VECTORS
  if (CPU_FEATURE_ACTIVE(AVX2)) return kAvx2;
  if (CPU_FEATURE_ACTIVE(SSSE3)) return kSsse3;
#endif
  return kPlain;
}

std::vector<Base64Loops> AllBase64Loops() {
  std::vector<Base64Loops> loops = {kPlain};
#ifdef ZELVANE_BASE64_VECTORS
  if (CPU_FEATURE_ACTIVE(SSSE3)) loops.push_back(kSsse3);
  if (CPU_FEATURE_ACTIVE(AVX2)) loops.push_back(kAvx2);
#endif
  return loops;
}

}  // namespace zelvane::internal
