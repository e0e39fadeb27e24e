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
#include "frame/transpose.hpp"

namespace fathom {

inline constexpr std::size_t kTileSide = 8;
inline constexpr std::size_t kReversed3[kTileSide] = {0, 4, 2, 6, 1, 5, 3, 7};

// A strip of a tile: as many of its rows as a register has lanes, eight columns each, or as many of
// its columns. The arrays transformed together (one, or real and imaginary parts) have one each.
template <std::size_t bytes, std::size_t parts>
using Strip = Lanes<bytes>[parts][kTileSide];
template <std::size_t bytes>
inline constexpr std::size_t kStrips = kTileSide / kLanesOf<bytes>;

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

// For Stages with members whole(strip), the stages of eight neighbours that are one block, and
// split(strip), those of two blocks of four. `number` is the blocks' number without its three
// highest bits, which differ from lane to lane: those of the first lane are kReversed3[lane].
template <typename L, std::size_t parts, typename Stages>
FATHOM_INLINE void stripStages(L (&strip)[parts][kTileSide], std::size_t lane, std::size_t number,
                               std::size_t middles, const Stages& stages) {
  if (number + 1 < middles) {
    if (isWholeBlock(number)) {
      stages.whole(strip);
    } else {
      stages.split(strip);
    }
    return;
  }
  // All ones: the lane's own bits decide.
  decltype(L{} < L{}) whole;
  for (std::size_t k = 0; k < sizeof(L) / sizeof(double); ++k) {
    whole[k] = isWholeBlock(kReversed3[lane + k] * middles + number) ? -1 : 0;
  }
  L fours[parts][kTileSide];
  FATHOM_UNROLL
  for (std::size_t p = 0; p < parts; ++p) {
    FATHOM_UNROLL
    for (std::size_t k = 0; k < kTileSide; ++k) fours[p][k] = strip[p][k];
  }
  stages.whole(strip);
  stages.split(fours);
  FATHOM_UNROLL
  for (std::size_t p = 0; p < parts; ++p) {
    FATHOM_UNROLL
    for (std::size_t k = 0; k < kTileSide; ++k) {
      strip[p][k] = whole ? strip[p][k] : fours[p][k];
    }
  }
}

// The squares of a strip, one after another.
template <typename L>
FATHOM_INLINE void transposeSquares(L (&strip)[kTileSide]) {
  constexpr std::size_t kSide = sizeof(L) / sizeof(double);
  FATHOM_UNROLL
  for (std::size_t i = 0; i < kTileSide; i += kSide) {
    L square[kSide];
    FATHOM_UNROLL
    for (std::size_t k = 0; k < kSide; ++k) square[k] = strip[i + k];
    transpose<1>(square);
    FATHOM_UNROLL
    for (std::size_t k = 0; k < kSide; ++k) strip[i + k] = square[k];
  }
}

// Where vector k of the strip that begins with row, or column, `lane` lies in its tile: the rows of
// a strip of rows are in reversed order, and those that a strip of columns crosses.
template <std::size_t lanes>
FATHOM_INLINE std::size_t placeInRows(std::size_t lane, std::size_t k, std::size_t rows) {
  return kReversed3[lane + k % lanes] * rows + k / lanes * lanes;
}
FATHOM_INLINE std::size_t placeInColumns(std::size_t lane, std::size_t k, std::size_t rows) {
  return kReversed3[k] * rows + lane;
}

// One strip of the tile `middle` on its way to `other`, with the stages after the reversal or
// before.
template <bool reversalFirst, typename L, std::size_t parts, typename Stages>
FATHOM_INLINE void loadStrip(L (&strip)[parts][kTileSide], double* const (&x)[parts],
                             std::size_t lane, std::size_t rows, std::size_t middle,
                             std::size_t other, const Stages& stages) {
  constexpr std::size_t kLanes = sizeof(L) / sizeof(double);
  FATHOM_UNROLL
  for (std::size_t p = 0; p < parts; ++p) {
    const double* const tile = x[p] + middle * kTileSide;
    FATHOM_UNROLL
    for (std::size_t k = 0; k < kTileSide; ++k) {
      load(strip[p][k], tile + (reversalFirst ? placeInColumns(lane, k, rows)
                                              : placeInRows<kLanes>(lane, k, rows)));
    }
    if (!reversalFirst) transposeSquares(strip[p]);
  }
  stripStages(strip, lane, reversalFirst ? other : middle, rows / kTileSide, stages);
  if (!reversalFirst) return;
  FATHOM_UNROLL
  for (std::size_t p = 0; p < parts; ++p) transposeSquares(strip[p]);
}

template <bool reversalFirst, typename L, std::size_t parts>
FATHOM_INLINE void storeStrip(const L (&strip)[parts][kTileSide], double* const (&x)[parts],
                              std::size_t lane, std::size_t rows, std::size_t middle) {
  constexpr std::size_t kLanes = sizeof(L) / sizeof(double);
  FATHOM_UNROLL
  for (std::size_t p = 0; p < parts; ++p) {
    double* const tile = x[p] + middle * kTileSide;
    FATHOM_UNROLL
    for (std::size_t k = 0; k < kTileSide; ++k) {
      store(tile + (reversalFirst ? placeInRows<kLanes>(lane, k, rows)
                                  : placeInColumns(lane, k, rows)),
            strip[p][k]);
    }
  }
}

// The reversal of n >= 64 elements of each array, together with the stages of spans 2, 4 and 8.
template <std::size_t bytes, bool reversalFirst, std::size_t parts, typename Stages>
FATHOM_INLINE void reverseWithStages(double* const (&x)[parts], std::size_t n,
                                     const Stages& stages) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  const std::size_t rows = n / kTileSide, middles = rows / kTileSide;
  ReversedCounter reversed(middles);
  for (std::size_t middle = 0; middle < middles; reversed.advance(++middle)) {
    const std::size_t other = reversed.value();
    if (middle > other) continue;
    Strip<bytes, parts> held[kStrips<bytes>];
    for (std::size_t s = 0; s < kStrips<bytes>; ++s) {
      Strip<bytes, parts> strip;
      loadStrip<reversalFirst>(strip, x, s * kLanes, rows, middle, other, stages);
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) {
        FATHOM_UNROLL
        for (std::size_t k = 0; k < kTileSide; ++k) held[s][p][k] = strip[p][k];
      }
    }
    for (std::size_t s = 0; s < kStrips<bytes> && middle < other; ++s) {
      Strip<bytes, parts> strip;
      loadStrip<reversalFirst>(strip, x, s * kLanes, rows, other, middle, stages);
      storeStrip<reversalFirst>(strip, x, s * kLanes, rows, middle);
    }
    for (std::size_t s = 0; s < kStrips<bytes>; ++s) {
      storeStrip<reversalFirst>(held[s], x, s * kLanes, rows, other);
    }
  }
}

}  // namespace fathom

#endif
