// Array forms: a fast path that the compiler vectorises, block by block, and the slow path for the
// few results whose rounding it leaves in doubt.
#ifndef FATHOM_ELEMENTARY_ARRAY_FORM_HPP
#define FATHOM_ELEMENTARY_ARRAY_FORM_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "frame/multiversion.hpp"

namespace fathom {

inline constexpr std::size_t kElementaryBlock = 256;
// Blocks are padded to whole vectors of the widest kind.
inline constexpr std::size_t kWidestLanes = 8;
constexpr std::size_t inWholeVectors(std::size_t n) {
  return (n + kWidestLanes - 1) / kWidestLanes * kWidestLanes;
}

// Arguments of a block, which its results may not overwrite as they may the caller's, and where
// results go: straight to the caller when they are whole vectors.
template <std::size_t inputs, std::size_t outputs>
struct ElementaryBlock {
  alignas(64) double argument[inputs][kElementaryBlock];
  double* value[outputs];
  alignas(64) std::uint64_t doubt[kElementaryBlock];
};

// Whether any of n is not 0.
template <std::size_t n>
FATHOM_INLINE bool anyInDoubt(const std::uint64_t* doubt) {
  std::uint64_t ofLane[kWidestLanes] = {};
  for (std::size_t i = 0; i < n; i += kWidestLanes) {
    for (std::size_t lane = 0; lane < kWidestLanes; ++lane) ofLane[lane] |= doubt[i + lane];
  }
  std::uint64_t any = 0;
  for (const std::uint64_t bits : ofLane) any |= bits;
  return any != 0;
}

// As many as are worth a call at the processor's level.
inline constexpr std::size_t kManyDoubts = 8 * kWidestLanes;
FATHOM_MULTIVERSION static bool anyOfManyInDoubt(const std::uint64_t* doubt) {
  return anyInDoubt<kManyDoubts>(doubt);
}

// Calls slow(i) for each i below n whose doubt is not 0. There is room for whole vectors.
template <typename Slow>
void eachInDoubt(const std::uint64_t* doubt, std::size_t n, Slow slow) {
  for (std::size_t start = 0; start < n; start += kManyDoubts) {
    if (n - start >= kManyDoubts && !anyOfManyInDoubt(doubt + start)) continue;
    const std::size_t end = std::min(start + kManyDoubts, n);
    for (std::size_t first = start; first < end; first += kWidestLanes) {
      if (!anyInDoubt<kWidestLanes>(doubt + first)) continue;
      for (std::size_t i = first; i < std::min(first + kWidestLanes, end); ++i) {
        if (doubt[i] != 0) slow(i);
      }
    }
  }
}

// Functions of several arguments, or with several results. `fast(block, n)` computes n values, a
// multiple of kWidestLanes, and says whether any is in doubt; `slow(block, i)` computes value i.
template <std::size_t inputs, std::size_t outputs, typename Fast, typename Slow>
void evaluateArrays(const double* const (&x)[inputs], std::size_t n, double* const (&y)[outputs],
                    Fast fast, Slow slow) {
  ElementaryBlock<inputs, outputs> block;
  alignas(64) double value[outputs][kElementaryBlock];
  for (std::size_t start = 0; start < n; start += kElementaryBlock) {
    const std::size_t count = std::min(kElementaryBlock, n - start);
    const std::size_t padded = inWholeVectors(count);
    const bool whole = count == padded;
    for (std::size_t k = 0; k < inputs; ++k) {
      std::copy_n(x[k] + start, count, block.argument[k]);
      std::fill(block.argument[k] + count, block.argument[k] + padded, 1.0);
    }
    for (std::size_t k = 0; k < outputs; ++k) block.value[k] = whole ? y[k] + start : value[k];
    if (fast(block, padded)) {
      eachInDoubt(block.doubt, count, [&block, slow](std::size_t i) { slow(block, i); });
    }
    for (std::size_t k = 0; !whole && k < outputs; ++k) std::copy_n(value[k], count, y[k] + start);
  }
}

// y[i] = f(x[i]), with `fast(x, n, y, doubt, any)` and `slow(x)`.
template <typename Fast, typename Slow>
void evaluateArray(const double* x, std::size_t n, double* y, Fast fast, Slow slow) {
  using Block = ElementaryBlock<1, 1>;
  evaluateArrays<1, 1>(
      {x}, n, {y},
      [fast](Block& b, std::size_t count) {
        bool any = false;
        fast(b.argument[0], count, b.value[0], b.doubt, any);
        return any;
      },
      [slow](Block& b, std::size_t i) { b.value[0][i] = slow(b.argument[0][i]); });
}

}  // namespace fathom

#endif
