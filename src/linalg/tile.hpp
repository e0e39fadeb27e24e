// Tiles of matrices in vector registers: runs of neighbouring elements, and squares transposed.
// Elements have 1 part or, when complex, 2; both are taken as doubles.
#ifndef FATHOM_LINALG_TILE_HPP
#define FATHOM_LINALG_TILE_HPP

#include <cstddef>
#include <type_traits>
#include <utility>

#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "frame/transpose.hpp"

namespace fathom {

// Lanes, and a plain double for a single lane.
template <std::size_t bytes>
struct TileLanesOf {
  using Type = Lanes<bytes>;
};
template <>
struct TileLanesOf<sizeof(double)> {
  using Type = double;
};
template <std::size_t bytes>
using TileLanes = typename TileLanesOf<bytes>::Type;

// Of two vectors of pairs: the first of each pair to x, the second to y. And back.
template <typename L, std::size_t... i>
FATHOM_INLINE void splitPairs(L& x, L& y, std::index_sequence<i...>) {
  const L first = __builtin_shufflevector(x, y, static_cast<int>(2 * i)...);
  y = __builtin_shufflevector(x, y, static_cast<int>(2 * i + 1)...);
  x = first;
}
template <typename L, std::size_t... i>
FATHOM_INLINE void joinPairs(L& x, L& y, std::index_sequence<i...>) {
  constexpr std::size_t kLanes = sizeof...(i);
  constexpr auto kSource = [](std::size_t k) {
    return static_cast<int>(k / 2 + (k % 2 == 0 ? 0 : kLanes));
  };
  const L low = __builtin_shufflevector(x, y, kSource(i)...);
  y = __builtin_shufflevector(x, y, kSource(kLanes + i)...);
  x = low;
}

// `vectors` vectors of neighbouring elements; of complex ones, the real parts and the imaginary
// parts in vectors of their own.
template <std::size_t bytes, std::size_t parts, std::size_t vectors>
struct Run {
  static constexpr std::size_t kLanes = kLanesOf<bytes>;
  static constexpr std::size_t kElements = vectors * kLanes;
  static constexpr std::size_t kDoubles = kElements * parts;

  TileLanes<bytes> at[vectors][parts];

  // As they are in memory, the parts apart.
  FATHOM_INLINE void load(const double* x) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) fathom::load(at[v][p], x + (v * parts + p) * kLanes);
    }
  }
  FATHOM_INLINE void store(double* x) const {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < vectors; ++v) {
      FATHOM_UNROLL
      for (std::size_t p = 0; p < parts; ++p) fathom::store(x + (v * parts + p) * kLanes, at[v][p]);
    }
  }

  // From and to a matrix.
  FATHOM_INLINE void gather(const double* x) {
    load(x);
    if constexpr (parts == 2 && kLanes > 1) {
      FATHOM_UNROLL
      for (std::size_t v = 0; v < vectors; ++v) {
        splitPairs(at[v][0], at[v][1], std::make_index_sequence<kLanes>());
      }
    }
  }
  FATHOM_INLINE void scatter(double* x) const {
    Run out = *this;
    if constexpr (parts == 2 && kLanes > 1) {
      FATHOM_UNROLL
      for (std::size_t v = 0; v < vectors; ++v) {
        joinPairs(out.at[v][0], out.at[v][1], std::make_index_sequence<kLanes>());
      }
    }
    out.store(x);
  }
};

template <typename L, std::size_t... i>
FATHOM_INLINE void negateSeconds(L& x, std::index_sequence<i...>) {
  x = __builtin_shufflevector(x, -x, static_cast<int>(i % 2 == 0 ? i : i + sizeof...(i))...);
}

// T = the transpose of A, conjugated where complex, of such a square. The strides are in doubles.
template <std::size_t bytes, std::size_t parts>
FATHOM_INLINE void transposeSquare(const double* a, std::size_t aStride, double* t,
                                   std::size_t tStride) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kSide = kLanes / parts;
  Lanes<bytes> row[kSide];
  FATHOM_UNROLL
  for (std::size_t i = 0; i < kSide; ++i) load(row[i], a + i * aStride);
  if constexpr (parts == 2) {
    FATHOM_UNROLL
    for (std::size_t i = 0; i < kSide; ++i) {
      negateSeconds(row[i], std::make_index_sequence<kLanes>());
    }
  }
  transpose<parts>(row);
  FATHOM_UNROLL
  for (std::size_t i = 0; i < kSide; ++i) store(t + i * tStride, row[i]);
}

}  // namespace fathom

#endif
