// Bit-reversed order, a tile of 8 x 8 elements at a time.
//
// An index of n = 2^k >= 64 elements is read as (row, middle, column), with three bits for row and
// column. Reversal takes it to (reversed column, reversed middle, reversed row), so that a tile
// (all rows and columns of one middle) goes as a whole to the tile of the reversed middle, and the
// pair of them trades places. While its elements are in registers a tile also goes through the
// stages of the transform that lie within eight neighbours, as lanes of eight such groups at once.
#ifndef FATHOM_SPECTRAL_BIT_REVERSAL_HPP
#define FATHOM_SPECTRAL_BIT_REVERSAL_HPP

#include <bit>
#include <cstddef>

#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

inline constexpr std::size_t kTileSide = 8;
inline constexpr std::size_t kReversed3[kTileSide] = {0, 4, 2, 6, 1, 5, 3, 7};

// Eight lanes, whatever the width of the processor's registers.
using EightLanes = Lanes<kTileSide * sizeof(double)>;
typedef long long LaneMask __attribute__((vector_size(kTileSide * sizeof(double))));

FATHOM_INLINE void transpose(EightLanes (&v)[kTileSide]) {
  EightLanes a[kTileSide];
  for (int i = 0; i < 8; i += 2) {
    a[i] = __builtin_shufflevector(v[i], v[i + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    a[i + 1] = __builtin_shufflevector(v[i], v[i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
  EightLanes b[kTileSide];
  for (int i = 0; i < 8; i += 4) {
    for (int k = 0; k < 2; ++k) {
      b[i + k] = __builtin_shufflevector(a[i + k], a[i + k + 2], 0, 1, 8, 9, 4, 5, 12, 13);
      b[i + k + 2] = __builtin_shufflevector(a[i + k], a[i + k + 2], 2, 3, 10, 11, 6, 7, 14, 15);
    }
  }
  for (int i = 0; i < 4; ++i) {
    v[i] = __builtin_shufflevector(b[i], b[i + 4], 0, 1, 2, 3, 8, 9, 10, 11);
    v[i + 4] = __builtin_shufflevector(b[i], b[i + 4], 4, 5, 6, 7, 12, 13, 14, 15);
  }
}

// The reversal of a counter that runs up from 0, over `count` values, a power of two.
class ReversedCounter {
 public:
  explicit ReversedCounter(std::size_t count) : top_(count - 1) {}
  std::size_t value() const { return value_; }
  // To the reversal of `next`, the counter's next value: its trailing zeros were ones before.
  FATHOM_INLINE void advance(std::size_t next) {
    value_ ^= top_ & ~(top_ >> (std::countr_zero(next) + 1));
  }

 private:
  std::size_t top_;
  std::size_t value_ = 0;
};

// Sizes below a tile's, one element at a time.
template <typename Swap>
FATHOM_INLINE void reverseFew(std::size_t n, Swap swap) {
  ReversedCounter reversed(n);
  for (std::size_t i = 1; i < n; ++i) {
    reversed.advance(i);
    if (i < reversed.value()) swap(i, reversed.value());
  }
}

// A split-radix stage of some span works on the aligned blocks of that span whose number ends in an
// even count of ones; the others have been quartered by the stage before.
constexpr bool isWholeBlock(std::size_t number) {
  return std::countr_one(number) % 2 == 0;
}

// For Stages with members whole(v), the stages of eight neighbours that are one block, and
// split(v), those of two blocks of four. `number` is the blocks' number without its three highest
// bits, which differ from lane to lane.
template <typename Stages>
FATHOM_INLINE void tileStages(EightLanes (&v)[kTileSide], std::size_t number, std::size_t middles,
                              const Stages& stages) {
  if (number + 1 < middles) {
    if (isWholeBlock(number)) {
      stages.whole(v);
    } else {
      stages.split(v);
    }
    return;
  }
  // All ones: the lane's own bits decide.
  LaneMask whole;
  EightLanes parts[kTileSide];
  for (std::size_t k = 0; k < kTileSide; ++k) {
    whole[k] = isWholeBlock(kReversed3[k] * middles + number) ? -1 : 0;
    parts[k] = v[k];
  }
  stages.whole(v);
  stages.split(parts);
  for (std::size_t k = 0; k < kTileSide; ++k) v[k] = whole ? v[k] : parts[k];
}

// One tile on its way from `middle` to `other`, with the stages after the reversal or before.
template <bool reversalFirst, typename Stages>
FATHOM_INLINE void loadTile(EightLanes (&v)[kTileSide], const double* x, std::size_t rows,
                            std::size_t middle, std::size_t other, const Stages& stages) {
  for (std::size_t k = 0; k < kTileSide; ++k) {
    load(v[k], x + kReversed3[k] * rows + middle * kTileSide);
  }
  if (!reversalFirst) transpose(v);
  tileStages(v, reversalFirst ? other : middle, rows / kTileSide, stages);
  if (reversalFirst) transpose(v);
}

FATHOM_INLINE void storeTile(const EightLanes (&v)[kTileSide], double* x, std::size_t rows,
                             std::size_t middle) {
  for (std::size_t k = 0; k < kTileSide; ++k) {
    store(x + kReversed3[k] * rows + middle * kTileSide, v[k]);
  }
}

// The reversal of n >= 64 elements, together with the stages of spans 2, 4 and 8.
template <bool reversalFirst, typename Stages>
FATHOM_INLINE void reverseWithStages(double* x, std::size_t n, const Stages& stages) {
  const std::size_t rows = n / kTileSide, middles = rows / kTileSide;
  ReversedCounter reversed(middles);
  for (std::size_t middle = 0; middle < middles; reversed.advance(++middle)) {
    const std::size_t other = reversed.value();
    if (middle > other) continue;
    EightLanes v[kTileSide], held[kTileSide];
    loadTile<reversalFirst>(v, x, rows, middle, other, stages);
    if (middle < other) {
      loadTile<reversalFirst>(held, x, rows, other, middle, stages);
      storeTile(held, x, rows, middle);
    }
    storeTile(v, x, rows, other);
  }
}

}  // namespace fathom

#endif
