// What the slow paths share: their precision, constants and power series.
#ifndef FATHOM_ELEMENTARY_WIDE_SERIES_HPP
#define FATHOM_ELEMENTARY_WIDE_SERIES_HPP

#include <cstdint>

#include "elementary/wide.hpp"
#include "elementary/wide_constants.hpp"

namespace fathom {

// Functions of one argument are computed with 256 bits, and are off by less than 2^-240, relative
// (the logarithm by less than 2^-200, where it is small). What comes nearest to the middle between
// two doubles is about 2^-120 away: that is what chance gives 2^64 arguments, what Lefevre & Muller
// (2001) found, and, with 2^-132 for the tangent, what the first terms of a series bring about at
// small arguments.
inline constexpr int kLimbs = 4;
// Functions of two arguments have 2^127 pairs of them, of which chance brings the nearest to about
// 2^-180. They are computed with 320 bits; atan2 is off by less than 2^-310, pow by less than
// 2^-250.
inline constexpr int kPairLimbs = 5;

template <int n, int m>
constexpr Wide<n> wideConstant(const std::uint64_t (&limbs)[m], int exponent) {
  static_assert(n <= m);
  Fixed<n> fraction{};
  for (int i = 0; i < n; ++i) fraction.limb[n - 1 - i] = limbs[i];
  return Wide<n>(fraction, exponent);
}
template <int n>
inline constexpr Wide<n> kWideHalfPi = wideConstant<n>(kHalfPiLimbs, 1);
template <int n>
inline constexpr Wide<n> kWideLn2 = wideConstant<n>(kLn2Limbs, 0);
template <int n>
inline constexpr Wide<n> kWideInverseLn10 = wideConstant<n>(kInverseLn10Limbs, -1);

// Coefficients stand halved, so that 1 is a fraction, too; each is off by less than 2 ulp.
template <int n>
struct Coefficients {
  static constexpr int kCount = 10 * n + 18;
  Fixed<n> at[kCount];
};

// at[k] = 1 / (2 k!)
template <int n>
constexpr Coefficients<n> inverseFactorials() {
  Coefficients<n> c{};
  c.at[0].limb[n - 1] = std::uint64_t{1} << 63;
  for (std::uint32_t k = 1; k < Coefficients<n>::kCount; ++k) c.at[k] = c.at[k - 1] / k;
  return c;
}
// at[k] = 1 / (2 k), at[0] unused
template <int n>
constexpr Coefficients<n> reciprocals() {
  Coefficients<n> c{};
  c.at[1].limb[n - 1] = std::uint64_t{1} << 63;
  for (std::uint32_t k = 2; k < Coefficients<n>::kCount; ++k) c.at[k] = c.at[1] / k;
  return c;
}
template <int n>
inline constexpr Coefficients<n> kInverseFactorials = inverseFactorials<n>();
template <int n>
inline constexpr Coefficients<n> kReciprocals = reciprocals<n>();

// c[first] +- x c[first + stride] + x^2 c[first + 2 stride] +- ..., `terms` of them, by Horner's
// rule. Every partial sum must be in [0, 1). Off by less than 4 / (1 - x) ulp.
template <int n>
Fixed<n> powerSeries(const Coefficients<n>& c, int first, int stride, int terms, const Fixed<n>& x,
                     bool alternating) {
  int k = first + (terms - 1) * stride;
  Fixed<n> sum = c.at[k];
  while (k > first) {
    k -= stride;
    const Fixed<n> product = x * sum;
    sum = alternating ? c.at[k] - product : c.at[k] + product;
  }
  return sum;
}

}  // namespace fathom

#endif
