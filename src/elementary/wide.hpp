// Numbers of several 64-bit limbs: the arithmetic behind the slow paths of the elementary
// functions.
//
// Fixed is an unsigned fraction, Wide a floating-point number on top of it. Results are truncated;
// an ulp is 2^-64n for n limbs. Only integers are used, so every machine computes the same limbs.
#ifndef FATHOM_ELEMENTARY_WIDE_HPP
#define FATHOM_ELEMENTARY_WIDE_HPP

#include <bit>
#include <cstdint>

#include "frame/elementary.hpp"
#include "frame/extended.hpp"

namespace fathom {

struct LimbPair {
  std::uint64_t high;
  std::uint64_t low;
};

// a b + c + d, which never exceeds 128 bits.
constexpr LimbPair portableMultiplyAdd(std::uint64_t a, std::uint64_t b, std::uint64_t c,
                                       std::uint64_t d) {
  constexpr std::uint64_t kHalf = 0xFFFF'FFFF;
  const std::uint64_t a1 = a >> 32, a0 = a & kHalf, b1 = b >> 32, b0 = b & kHalf;
  const std::uint64_t bottom = a0 * b0 + (c & kHalf) + (d & kHalf);
  const std::uint64_t middle = a1 * b0 + (c >> 32) + (bottom >> 32);
  const std::uint64_t middle2 = a0 * b1 + (d >> 32) + (middle & kHalf);
  return {a1 * b1 + (middle >> 32) + (middle2 >> 32), (middle2 << 32) | (bottom & kHalf)};
}
#if defined(__SIZEOF_INT128__)
constexpr LimbPair multiplyAdd(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t d) {
  __extension__ using Double = unsigned __int128;
  const Double sum = static_cast<Double>(a) * b + c + d;
  return {static_cast<std::uint64_t>(sum >> 64), static_cast<std::uint64_t>(sum)};
}
#else
constexpr LimbPair multiplyAdd(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t d) {
  return portableMultiplyAdd(a, b, c, d);
}
#endif

// A fraction in [0, 1): the sum of limb[i] 2^(64 (i - n)). Sums and differences are modulo 1.
template <int n>
struct Fixed {
  std::uint64_t limb[n];
};

template <int n>
constexpr Fixed<n> operator+(const Fixed<n>& a, const Fixed<n>& b) {
  Fixed<n> sum{};
  std::uint64_t carry = 0;
  for (int i = 0; i < n; ++i) {
    const std::uint64_t part = a.limb[i] + carry;
    sum.limb[i] = part + b.limb[i];
    carry = static_cast<std::uint64_t>(part < carry) | (sum.limb[i] < part);
  }
  return sum;
}

template <int n>
constexpr Fixed<n> operator-(const Fixed<n>& a, const Fixed<n>& b) {
  Fixed<n> difference{};
  std::uint64_t borrow = 0;
  for (int i = 0; i < n; ++i) {
    const std::uint64_t part = a.limb[i] - b.limb[i];
    difference.limb[i] = part - borrow;
    borrow = static_cast<std::uint64_t>(a.limb[i] < b.limb[i]) | (part < borrow);
  }
  return difference;
}

// Never above a b, and less than (1 + 2^-60) ulp below it: partial products more than a limb below
// the last are left out.
template <int n>
constexpr Fixed<n> operator*(const Fixed<n>& a, const Fixed<n>& b) {
  std::uint64_t sum[n + 2] = {};  // from limb n - 2 of the full product
  for (int i = 0; i < n; ++i) {
    std::uint64_t carry = 0;
    for (int j = (i < n - 2 ? n - 2 - i : 0); j < n; ++j) {
      const int k = i + j - (n - 2);
      const LimbPair part = multiplyAdd(a.limb[i], b.limb[j], sum[k], carry);
      sum[k] = part.low;
      carry = part.high;
    }
    sum[i + 2] = carry;
  }
  Fixed<n> product{};
  for (int i = 0; i < n; ++i) product.limb[i] = sum[i + 2];
  return product;
}

// a / divisor, truncated.
template <int n>
constexpr Fixed<n> operator/(const Fixed<n>& a, std::uint32_t divisor) {
  Fixed<n> quotient{};
  std::uint64_t remainder = 0;
  for (int i = n - 1; i >= 0; --i) {
    const std::uint64_t upper = (remainder << 32) | (a.limb[i] >> 32);
    const std::uint64_t lower = (upper % divisor) << 32 | (a.limb[i] & 0xFFFF'FFFF);
    quotient.limb[i] = (upper / divisor) << 32 | lower / divisor;
    remainder = lower % divisor;
  }
  return quotient;
}

template <int n>
constexpr Fixed<n> operator>>(const Fixed<n>& a, int bits) {
  const int limbs = bits / 64, rest = bits % 64;
  Fixed<n> shifted{};
  for (int i = 0; i + limbs < n; ++i) {
    shifted.limb[i] = a.limb[i + limbs] >> rest;
    if (rest != 0 && i + limbs + 1 < n) shifted.limb[i] |= a.limb[i + limbs + 1] << (64 - rest);
  }
  return shifted;
}

template <int n>
constexpr Fixed<n> operator<<(const Fixed<n>& a, int bits) {
  const int limbs = bits / 64, rest = bits % 64;
  Fixed<n> shifted{};
  for (int i = n - 1; i >= limbs; --i) {
    shifted.limb[i] = a.limb[i - limbs] << rest;
    if (rest != 0 && i > limbs) shifted.limb[i] |= a.limb[i - limbs - 1] >> (64 - rest);
  }
  return shifted;
}

template <int n>
constexpr int leadingZeros(const Fixed<n>& a) {
  for (int i = n - 1; i >= 0; --i) {
    if (a.limb[i] != 0) return 64 * (n - 1 - i) + std::countl_zero(a.limb[i]);
  }
  return 64 * n;
}

// The leading limbs of a, or a with zeros after it.
template <int n, int m>
constexpr Fixed<n> resized(const Fixed<m>& a) {
  Fixed<n> b{};
  for (int i = (n < m ? 0 : n - m); i < n; ++i) b.limb[i] = a.limb[i - n + m];
  return b;
}

// +- fraction 2^exponent, the fraction in [1/2, 1); or zero.
template <int n>
struct Wide {
  Fixed<n> fraction{};
  int exponent = 0;
  bool negative = false;

  constexpr Wide() = default;

  // Exact.
  constexpr explicit Wide(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const int field = static_cast<int>((bits >> 52) & 0x7FF);
    std::uint64_t significand = bits & ((std::uint64_t{1} << 52) - 1);
    if (field != 0) significand |= std::uint64_t{1} << 52;
    negative = (bits >> 63) != 0;
    if (significand == 0) return;
    const int shift = std::countl_zero(significand);
    fraction.limb[n - 1] = significand << shift;
    exponent = (field == 0 ? 1 : field) - 1011 - shift;
  }

  // +- a 2^power, truncated.
  template <int m>
  constexpr Wide(const Fixed<m>& a, int power, bool isNegative = false) : negative(isNegative) {
    const int shift = leadingZeros(a);
    if (shift == 64 * m) return;
    fraction = resized<n>(a << shift);
    exponent = power - shift;
  }

  constexpr bool isZero() const { return fraction.limb[n - 1] == 0; }

  // Rounded to nearest, ties to even; subnormal, zero or infinite where the exponent demands.
  constexpr double toDouble() const {
    if (isZero()) return negative ? -0.0 : 0.0;
    // The last bit of the leading limb speaks for all that follow: it is below half a unit of any
    // double.
    std::uint64_t leading = fraction.limb[n - 1];
    for (int i = 0; i < n - 1; ++i) leading |= static_cast<std::uint64_t>(fraction.limb[i] != 0);
    const double magnitude = SoftExtended(ExtendedConstant{leading, exponent - 64}).toDouble();
    return negative ? -magnitude : magnitude;
  }

  // |value| as a fraction, truncated; it must be below 1.
  constexpr Fixed<n> toFixed() const {
    return isZero() || exponent <= -64 * n ? Fixed<n>{} : fraction >> -exponent;
  }

  // value 2^power
  constexpr Wide scaled(int power) const {
    Wide w = *this;
    if (!isZero()) w.exponent += power;
    return w;
  }

  constexpr Wide operator-() const {
    Wide w = *this;
    w.negative = !negative;
    return w;
  }
};

// Off by less than 2^(1 - 64 n), relative to the sum; exact where the operands nearly cancel.
template <int n>
constexpr Wide<n> operator+(const Wide<n>& a, const Wide<n>& b) {
  if (b.isZero()) return a;
  if (a.isZero()) return b;
  const Wide<n>& large = a.exponent >= b.exponent ? a : b;
  const Wide<n>& small = a.exponent >= b.exponent ? b : a;
  const int distance = large.exponent - small.exponent;
  if (distance > 64 * n + 1) return large;
  // A limb more below, a bit more above.
  const Fixed<n + 1> f = resized<n + 1>(large.fraction) >> 1;
  const Fixed<n + 1> g = resized<n + 1>(small.fraction) >> (distance + 1);
  if (large.negative == small.negative) {
    return Wide<n>(f + g, large.exponent + 1, large.negative);
  }
  const Fixed<n + 1> difference = f - g;
  if ((difference.limb[n] >> 63) == 0) {
    return Wide<n>(difference, large.exponent + 1, large.negative);
  }
  return Wide<n>(Fixed<n + 1>{} - difference, large.exponent + 1, small.negative);
}
template <int n>
constexpr Wide<n> operator-(const Wide<n>& a, const Wide<n>& b) {
  return a + -b;
}

// Below |a b| by less than 2^(3 - 64 n), relative.
template <int n>
constexpr Wide<n> operator*(const Wide<n>& a, const Wide<n>& b) {
  return Wide<n>(a.fraction * b.fraction, a.exponent + b.exponent, a.negative != b.negative);
}

// |a| < |b|
template <int n>
constexpr bool lessInMagnitude(const Wide<n>& a, const Wide<n>& b) {
  if (a.isZero() || b.isZero()) return !b.isZero();
  if (a.exponent != b.exponent) return a.exponent < b.exponent;
  for (int i = n - 1; i >= 0; --i) {
    if (a.fraction.limb[i] != b.fraction.limb[i]) return a.fraction.limb[i] < b.fraction.limb[i];
  }
  return false;
}

// The fraction's leading 53 bits.
template <int n>
constexpr double leadingDouble(const Wide<n>& a) {
  return static_cast<double>(a.fraction.limb[n - 1] >> 11) * 0x1p-53;
}

// a / b, b not 0, to within 2^(5 - 64 n), relative, for n up to 6: Newton's iteration for 1 / b,
// from 51 bits to 102, 204 and 408.
template <int n>
constexpr Wide<n> operator/(const Wide<n>& a, const Wide<n>& b) {
  static_assert(n <= 6);
  const Wide<n> one(1.0);
  Wide<n> f = b;
  f.exponent = 0;
  f.negative = false;
  Wide<n> inverse(1.0 / leadingDouble(b));
  for (int i = 0; i < 3; ++i) inverse = inverse + inverse * (one - f * inverse);
  Wide<n> quotient = a * inverse;
  if (!quotient.isZero()) quotient.exponent -= b.exponent;
  quotient.negative = a.negative != b.negative;
  return quotient;
}

// The root of a >= 0 to within 2^(5 - 64 n), relative, for n up to 6: Newton's iteration for
// 1 / sqrt(a), from 51 bits to 101, 201 and 401.
template <int n>
Wide<n> squareRoot(const Wide<n>& a) {
  static_assert(n <= 6);
  if (a.isZero()) return a;
  const Wide<n> one(1.0);
  const int odd = a.exponent & 1;
  Wide<n> f = a;
  f.exponent = -odd;  // f in [1/4, 1)
  Wide<n> inverse(1.0 / fathom::sqrt(odd != 0 ? leadingDouble(a) * 0.5 : leadingDouble(a)));
  for (int i = 0; i < 3; ++i) {
    inverse = inverse + (inverse * (one - f * inverse * inverse)).scaled(-1);
  }
  return (f * inverse).scaled((a.exponent + odd) / 2);
}

}  // namespace fathom

#endif
