// The transpose of a square in vector registers.
#ifndef FATHOM_FRAME_TRANSPOSE_HPP
#define FATHOM_FRAME_TRANSPOSE_HPP

#include <cstddef>
#include <utility>

#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

// Of rows x and y of a square: exchanges the blocks of `half` doubles of x that belong to y, those
// at odd places, with those of y at even places.
template <std::size_t half, typename L, std::size_t... i>
FATHOM_INLINE void exchangeBlocks(L& x, L& y, std::index_sequence<i...>) {
  constexpr std::size_t kLanes = sizeof...(i);
  constexpr auto kSource = [](std::size_t k, bool second) {
    const bool odd = k / half % 2 != 0;
    const std::size_t from = odd == second ? k : second ? k + half : k - half;
    return static_cast<int>(from + (odd ? kLanes : 0));
  };
  const L first = __builtin_shufflevector(x, y, kSource(i, false)...);
  y = __builtin_shufflevector(x, y, kSource(i, true)...);
  x = first;
}

// Transposes a square of as many elements squared as fit in a vector, each of `parts` doubles.
template <std::size_t parts, typename L, std::size_t side>
FATHOM_INLINE void transpose(L (&row)[side]) {
  constexpr auto kAll = std::make_index_sequence<side * parts>();
  if constexpr (side > 1) {
    FATHOM_UNROLL
    for (std::size_t i = 0; i < side; i += 2) exchangeBlocks<parts>(row[i], row[i + 1], kAll);
  }
  if constexpr (side > 2) {
    FATHOM_UNROLL
    for (std::size_t i = 0; i < side; i += 4) {
      exchangeBlocks<2 * parts>(row[i], row[i + 2], kAll);
      exchangeBlocks<2 * parts>(row[i + 1], row[i + 3], kAll);
    }
  }
  if constexpr (side > 4) {
    FATHOM_UNROLL
    for (std::size_t i = 0; i < 4; ++i) exchangeBlocks<4 * parts>(row[i], row[i + 4], kAll);
  }
}

}  // namespace fathom

#endif
