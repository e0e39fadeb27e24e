// The walk of the element-wise routines: y[i] = element(i), where y may be what element reads. y is
// an array, or anything with beforeLine, fetchAhead and set.
#ifndef FATHOM_ARRAY_FOR_EACH_HPP
#define FATHOM_ARRAY_FOR_EACH_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/multiversion.hpp"

namespace fathom {

// Elements are taken in blocks of eight cache lines.
inline constexpr std::size_t kLineBytes = 64;
inline constexpr std::size_t kBlock = 8 * kLineBytes / sizeof(double);

// Arrays of this length, two or three of them, leave the first-level cache.
inline constexpr std::size_t kWorthFetching = 2048;

// How many elements of y come before the first that begins a cache line; n if none does. A
// register's store that straddles two lines costs twice.
FATHOM_INLINE std::size_t beforeLine(const double* y, std::size_t n) {
  constexpr std::size_t kLine = kLineBytes / sizeof(double);
  const std::size_t past = reinterpret_cast<std::uintptr_t>(y) % kLineBytes / sizeof(double);
  return std::min(n, (kLine - past) % kLine);
}

// Has the processor fetch the lines of the elements that lie two blocks after x[0..count-1]. What
// it fetches by itself follows the loads, so that a store would wait for its line. Only a hint:
// they may lie beyond the array.
template <std::size_t count>
FATHOM_INLINE void fetchAhead(const double* x) {
  const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(x) + 2 * kBlock * sizeof(double);
  for (std::size_t offset = 0; offset < count * sizeof(double); offset += kLineBytes) {
    __builtin_prefetch(reinterpret_cast<const void*>(ahead + offset));
  }
}

FATHOM_INLINE void fetchAhead(double* y, std::size_t start) {
  fetchAhead<kBlock>(y + start);
}
FATHOM_INLINE void set(double* y, std::size_t i, double value) {
  y[i] = value;
}

template <typename Output, typename Element>
FATHOM_INLINE void forEach(std::size_t n, Output y, Element element) {
  constexpr std::size_t kWorthAligning = 256;
  std::size_t start = 0;
  if (n >= kWorthAligning) {
    const std::size_t head = beforeLine(y, n);
    for (; start < head; ++start) set(y, start, element(start));
  }
  if (n >= kWorthFetching) {
    for (; start + kBlock <= n; start += kBlock) {
      fetchAhead(y, start);
      FATHOM_INDEPENDENT
      for (std::size_t i = 0; i < kBlock; ++i) set(y, start + i, element(start + i));
    }
  }
  FATHOM_INDEPENDENT
  for (std::size_t i = start; i < n; ++i) set(y, i, element(i));
}

}  // namespace fathom

#endif
