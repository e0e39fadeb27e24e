// Lines that serve one double and a vector of them: what they need beyond the arithmetic operators.
// V is double or Lanes<bytes>.
#ifndef FATHOM_ELEMENTARY_VECTOR_HPP
#define FATHOM_ELEMENTARY_VECTOR_HPP

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

#if defined(__GNUC__) && !defined(__clang__)
// No vector is ever passed: these functions are inlined.
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

namespace fathom {

template <typename V>
struct BitsOf {
  using Type = std::uint64_t;
};
template <>
struct BitsOf<Lanes<16>> {
  typedef std::uint64_t Type __attribute__((vector_size(16)));  // NOLINT(modernize-use-using)
};
template <>
struct BitsOf<Lanes<32>> {
  typedef std::uint64_t Type __attribute__((vector_size(32)));  // NOLINT(modernize-use-using)
};
template <>
struct BitsOf<Lanes<64>> {
  typedef std::uint64_t Type __attribute__((vector_size(64)));  // NOLINT(modernize-use-using)
};
template <typename V>
using Bits = typename BitsOf<V>::Type;

// A shuffle, as GCC 12 makes one instruction of it, two of x + V{} and many of a list of lanes.
template <typename V>
FATHOM_INLINE V inAllLanes(double x) {
  if constexpr (sizeof(V) == sizeof(double)) {
    return x;
  } else {
    const V first = {x};
    if constexpr (sizeof(V) == 16) return __builtin_shufflevector(first, first, 0, 0);
    if constexpr (sizeof(V) == 32) return __builtin_shufflevector(first, first, 0, 0, 0, 0);
    if constexpr (sizeof(V) == 64) {
      return __builtin_shufflevector(first, first, 0, 0, 0, 0, 0, 0, 0, 0);
    }
  }
}
template <typename V>
FATHOM_INLINE V masked(const V& x, std::uint64_t mask) {
  return std::bit_cast<V>(std::bit_cast<Bits<V>>(x) & mask);
}
template <typename V>
FATHOM_INLINE V magnitude(const V& x) {
  return masked(x, 0x7FFF'FFFF'FFFF'FFFF);
}
template <typename V>
FATHOM_INLINE V leading26Bits(const V& x) {
  return masked(x, 0xFFFF'FFFF'F800'0000);
}

// All bits set where a < b.
FATHOM_INLINE std::uint64_t bitsWhereLess(double a, double b) {
  return std::uint64_t{0} - static_cast<std::uint64_t>(a < b);
}
template <typename V>
FATHOM_INLINE Bits<V> bitsWhereLess(const V& a, const V& b) {
  return std::bit_cast<Bits<V>>(a < b);
}
template <typename V>
FATHOM_INLINE V larger(const V& a, const V& b) {
  return a > b ? a : b;
}
template <typename V>
FATHOM_INLINE V smaller(const V& a, const V& b) {
  return a < b ? a : b;
}

template <typename V>
FATHOM_INLINE V withBits(const V& x, const Bits<V>& bits) {
  return std::bit_cast<V>(std::bit_cast<Bits<V>>(x) | bits);
}

// Not 0 where two numbers differ or one is NaN, and where |x| is above `limit` or NaN. Unlike
// comparisons, these are quick for two lanes, too.
template <typename V>
FATHOM_INLINE Bits<V> differingBits(const V& a, const V& b) {
  return std::bit_cast<Bits<V>>(a - b);
}
inline constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;
template <typename V>
FATHOM_INLINE Bits<V> outsideBits(const V& x, double limit) {
  return (std::bit_cast<std::uint64_t>(limit) - std::bit_cast<Bits<V>>(magnitude(x))) & kSignBit;
}

// Rounds a pair that is off by at most `error` (absolute, above 0). Returns bits that are not 0
// where that is in doubt: another value within the bound would round to another double, or NaN. The
// result must be a normal number.
template <typename V>
FATHOM_INLINE Bits<V> roundWithin(const V& high, const V& low, const V& error, V& value) {
  value = high + (low + error);
  return differingBits<V>(value, high + (low - error));
}

// Whether a lane of `bits` is not 0.
template <typename B>
FATHOM_INLINE bool anyBits(const B& bits) {
  std::uint64_t any = 0;
  for (std::size_t lane = 0; lane < sizeof bits / sizeof any; ++lane) any |= bits[lane];
  return any != 0;
}
template <typename B>
FATHOM_INLINE void storeBits(std::uint64_t* y, const B& bits) {
  std::memcpy(y, &bits, sizeof bits);
}

}  // namespace fathom

#endif
