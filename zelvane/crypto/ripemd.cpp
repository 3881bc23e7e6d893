#include "zelvane/crypto/ripemd_internal.h"

#include <cstring>
#include <utility>

#include "zelvane/core/bytes_internal.h"

// Two lines of 64 steps process the same 16 words, each in its own order. A step depends on the previous one of its
// line, so the code alternates between the lines: the processor works on one while the other waits. Every index below
// is a compile-time constant, which keeps both lines in registers.
namespace zelvane::internal {
namespace {

constexpr int kLeft = 0;
constexpr int kRight = 1;

// The word that a step adds: [line][round][step].
constexpr unsigned char kWord[2][4][16] = {{{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
                                            {7, 4, 13, 1, 10, 6, 15, 3, 12, 0, 9, 5, 2, 14, 11, 8},
                                            {3, 10, 14, 4, 9, 15, 8, 1, 2, 7, 0, 6, 13, 11, 5, 12},
                                            {1, 9, 11, 10, 0, 8, 12, 4, 13, 3, 7, 15, 14, 5, 6, 2}},
                                           {{5, 14, 7, 0, 9, 2, 11, 4, 13, 6, 15, 8, 1, 10, 3, 12},
                                            {6, 11, 3, 7, 0, 13, 5, 10, 14, 15, 8, 12, 4, 9, 1, 2},
                                            {15, 5, 1, 3, 7, 14, 6, 9, 11, 8, 12, 2, 10, 0, 4, 13},
                                            {8, 6, 4, 1, 3, 11, 15, 0, 5, 12, 2, 13, 9, 7, 10, 14}}};

// The number of bits by which it rotates.
constexpr unsigned char kTurn[2][4][16] = {{{11, 14, 15, 12, 5, 8, 7, 9, 11, 13, 14, 15, 6, 7, 9, 8},
                                            {7, 6, 8, 13, 11, 9, 7, 15, 7, 12, 15, 9, 11, 7, 13, 12},
                                            {11, 13, 6, 7, 14, 9, 13, 15, 14, 8, 13, 6, 5, 12, 7, 5},
                                            {11, 12, 14, 15, 14, 15, 9, 8, 9, 14, 5, 6, 8, 6, 5, 12}},
                                           {{8, 9, 9, 11, 13, 15, 15, 5, 7, 7, 8, 11, 14, 14, 12, 6},
                                            {9, 13, 15, 7, 12, 8, 9, 11, 7, 7, 12, 7, 6, 15, 13, 11},
                                            {9, 7, 15, 11, 8, 6, 6, 14, 12, 13, 5, 14, 13, 13, 7, 5},
                                            {15, 5, 8, 11, 14, 14, 6, 14, 6, 9, 12, 9, 12, 5, 15, 8}}};

constexpr std::uint32_t kConstant[2][4] = {{0x00000000, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC},
                                           {0x50A28BE6, 0x5C4DD124, 0x6D703EF3, 0x00000000}};

template <int kLine, int kRound, int kStep>
[[gnu::always_inline]] inline void Step(std::uint32_t (&line)[4], std::uint32_t const (&words)[16]) {
  // The words of a line rotate from step to step; here the indices rotate instead.
  std::uint32_t& a = line[(16 - kStep) % 4];
  std::uint32_t const b = line[(17 - kStep) % 4];
  std::uint32_t const c = line[(18 - kStep) % 4];
  std::uint32_t const d = line[(19 - kStep) % 4];
  constexpr int kBits = kTurn[kLine][kRound][kStep];
  a += words[kWord[kLine][kRound][kStep]] + kConstant[kLine][kRound];
  // The mixing functions; the right line has them in reverse order.
  constexpr int kMix = kLine == kLeft ? kRound : 3 - kRound;
  if constexpr (kMix == 0) a += b ^ c ^ d;
  if constexpr (kMix == 1) a += ((c ^ d) & b) ^ d;
  if constexpr (kMix == 2) a += (b | ~c) ^ d;
  if constexpr (kMix == 3) {
    // The halves share no bit, so they can be added one by one: first the one that does not depend on b, the result of
    // the previous step.
    a += c & ~d;
    a += b & d;
  }
  a = a << kBits | a >> (32 - kBits);
}

template <int kRound, int... kStep>
[[gnu::always_inline]] inline void Round(std::uint32_t (&left)[4], std::uint32_t (&right)[4],
                                         std::uint32_t const (&words)[16], std::integer_sequence<int, kStep...>) {
  ((Step<kLeft, kRound, kStep>(left, words), Step<kRight, kRound, kStep>(right, words)), ...);
  std::swap(left[kRound], right[kRound]);
}

}  // namespace

void RipeMd256Compress(std::uint32_t* state, unsigned char const* block) {
  std::uint32_t words[16];
  std::memcpy(words, block, sizeof words);
#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
  for (std::uint32_t& word : words) word = LoadLe32(reinterpret_cast<unsigned char const*>(&word));
#endif

  std::uint32_t left[4] = {state[0], state[1], state[2], state[3]};
  std::uint32_t right[4] = {state[4], state[5], state[6], state[7]};
  constexpr std::make_integer_sequence<int, 16> kSteps{};
  Round<0>(left, right, words, kSteps);
  Round<1>(left, right, words, kSteps);
  Round<2>(left, right, words, kSteps);
  Round<3>(left, right, words, kSteps);
  for (int i = 0; i < 4; i++) {
    state[i] += left[i];
    state[4 + i] += right[i];
  }
}

}  // namespace zelvane::internal
