// Double-double arithmetic: an unevaluated sum high + low of two doubles, about 106 bits, made of
// additions, multiplications and bit masks only.
//
// Everything is branch-free, so that a loop over it vectorises. u stands for 2^-53. Bounds hold as
// long as nothing overflows and no part of a product falls below 2^-1022.
#ifndef FATHOM_ELEMENTARY_DOUBLE_DOUBLE_HPP
#define FATHOM_ELEMENTARY_DOUBLE_DOUBLE_HPP

#include <cstdint>

#include "elementary/vector.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

struct DoubleDouble {
  double high;
  double low;
};

// a + b exactly, for |a| >= |b| or a = 0.
FATHOM_INLINE DoubleDouble fastTwoSum(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

// a + b exactly.
FATHOM_INLINE DoubleDouble twoSum(double a, double b) {
  const double sum = a + b;
  const double part = sum - a;
  return {sum, (a - (sum - part)) + (b - part)};
}

// The 26 leading bits of a, and the 27 that remain.
FATHOM_INLINE DoubleDouble split(double a) {
  const double high = leading26Bits(a);
  return {high, a - high};
}

// a b to within 2^-105 |a b|; only the product of the two tails is rounded. The parts are those of
// split(), so that a constant is split once.
FATHOM_INLINE DoubleDouble twoProduct(double a, DoubleDouble aParts, double b,
                                      DoubleDouble bParts) {
  const double product = rounded(a * b);
  const double error = ((rounded(aParts.high * bParts.high) - product) +
                        rounded(aParts.high * bParts.low) + rounded(aParts.low * bParts.high)) +
                       rounded(aParts.low * bParts.low);
  return {product, error};
}
FATHOM_INLINE DoubleDouble twoProduct(double a, double b) {
  return twoProduct(a, split(a), b, split(b));
}

// Sum of two pairs, to within 3 u^2 (|a| + |b|): relative to the operands, not to the sum.
FATHOM_INLINE DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble sum = twoSum(a.high, b.high);
  return fastTwoSum(sum.high, sum.low + (a.low + b.low));
}
FATHOM_INLINE DoubleDouble operator+(DoubleDouble a, double b) {
  const DoubleDouble sum = twoSum(a.high, b);
  return fastTwoSum(sum.high, sum.low + a.low);
}

// Product of two pairs, to within 8 u^2 |a b|.
FATHOM_INLINE DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble product = twoProduct(a.high, b.high);
  const double cross = rounded(a.high * b.low) + rounded(a.low * b.high);
  return fastTwoSum(product.high, product.low + cross);
}
FATHOM_INLINE DoubleDouble operator*(DoubleDouble a, double b) {
  const DoubleDouble product = twoProduct(a.high, b);
  return fastTwoSum(product.high, product.low + rounded(a.low * b));
}

// A rounded result, and whether its rounding is in doubt: not 0 where another value within the
// error bound would round to another double. 64 bits wide, as the lanes it is computed in.
struct RoundedResult {
  double value;
  std::uint64_t doubt;
};

FATHOM_INLINE RoundedResult roundedWithin(DoubleDouble x, double error) {
  RoundedResult result;
  result.doubt = roundWithin(x.high, x.low, error, result.value);
  return result;
}

}  // namespace fathom

#endif
