// Array forms: a fast path that the compiler vectorises, block by block, and the slow path for the
// few results whose rounding it leaves in doubt.
#ifndef FATHOM_ELEMENTARY_ARRAY_FORM_HPP
#define FATHOM_ELEMENTARY_ARRAY_FORM_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace fathom {

inline constexpr std::size_t kElementaryBlock = 128;
// Blocks are padded to whole vectors of the widest kind.
inline constexpr std::size_t kWidestLanes = 8;

// y[i] = f(x[i]). `fast(x, n, y, doubt)`, for n a multiple of kWidestLanes, says whether any result
// is in doubt; `slow(x)` is the function itself. y may be x.
template <typename Fast, typename Slow>
void evaluateArray(const double* x, std::size_t n, double* y, Fast fast, Slow slow) {
  double argument[kElementaryBlock];
  double value[kElementaryBlock];
  std::uint64_t doubt[kElementaryBlock];
  for (std::size_t start = 0; start < n; start += kElementaryBlock) {
    const std::size_t count = std::min(kElementaryBlock, n - start);
    const std::size_t padded = (count + kWidestLanes - 1) / kWidestLanes * kWidestLanes;
    std::copy_n(x + start, count, argument);
    std::fill(argument + count, argument + padded, 1.0);
    if (fast(argument, padded, value, doubt)) {
      for (std::size_t i = 0; i < count; ++i) {
        if (doubt[i] != 0) value[i] = slow(argument[i]);
      }
    }
    std::copy_n(value, count, y + start);
  }
}

}  // namespace fathom

#endif
