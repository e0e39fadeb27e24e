// atan, atan2 and acos, correctly rounded.
//
// Reduction: with 0 <= t = small / big <= 1, the quotient of the coordinates' magnitudes, and
// c = j / 256 the multiple of 1 / 256 nearest to t,
//
//   atan(t) = atan(c) + atan(u),   u = (small - c big) / (big + c small),   |u| <= 2^-9.
//
// c has nine bits, so that its products are exact by halves; small - c big is exact but for the low
// half, by Sterbenz' lemma. atan(c) is a row of the table, and atan(u) = u - u^3/3 + u^5/5 - u^7/7.
// The octant adds a multiple of pi/2, and never cancels.
//
// Error, relative to the result: u as a pair 2^-101; of the polynomial, whose terms beyond u are at
// most 2^-19.5 |u|, five roundings 2^-70.2, the low half of u that is left out of the cube 2^-71,
// the term u^9/9 2^-75; table and sums 2^-103. Together below 2^-69.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/inverse_trigonometric_table.hpp"
#include "elementary/slow.hpp"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

constexpr double kRelativeError = 0x1p-69;
constexpr double kToInteger = 0x1.8p52;
// Coordinates for which no part of a product under- or overflows.
constexpr double kSmallest = 0x1p-400;
constexpr double kLargest = 0x1p400;

constexpr DoubleDouble kHalfPi = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};

// a / b to within 2^-101.
FATHOM_INLINE DoubleDouble quotient(DoubleDouble a, DoubleDouble b) {
  const double reciprocal = 1.0 / b.high;
  const double first = a.high * reciprocal;
  const DoubleDouble product = twoProduct(first, b.high);
  const double remainder =
      ((a.high - product.high) - product.low) + (a.low - rounded(first * b.low));
  return fastTwoSum(first, remainder * reciprocal);
}

// The angle in [0, pi] of the point (x, |y|). Without tails, the low halves are 0 and left out.
template <bool tails>
FATHOM_INLINE RoundedResult angle(DoubleDouble y, DoubleDouble x, double xSign) {
  const bool steep = y.high > x.high;
  const DoubleDouble small = {steep ? x.high : y.high, steep ? x.low : y.low};
  const DoubleDouble big = {steep ? y.high : x.high, steep ? y.low : x.low};

  const double shifted = small.high / big.high * 256.0 + kToInteger;
  // At most 256; NaN, of arguments that are not served, needs a row, too.
  const std::uint64_t row =
      std::min(std::bit_cast<std::uint64_t>(shifted) & 511, std::uint64_t{256});
  const double c = (shifted - kToInteger) * 0x1p-8;

  const DoubleDouble bigParts = split(big.high);
  const DoubleDouble smallParts = split(small.high);
  DoubleDouble numerator =
      twoSum(small.high - rounded(c * bigParts.high), rounded(-c * bigParts.low));
  const double cSmall = rounded(c * small.high);
  const double cSmallError = (rounded(c * smallParts.high) - cSmall) + rounded(c * smallParts.low);
  DoubleDouble denominator = fastTwoSum(big.high, cSmall);
  denominator.low += cSmallError;
  if constexpr (tails) {
    numerator.low += small.low - rounded(c * big.low);
    denominator.low += big.low + rounded(c * small.low);
  }

  const DoubleDouble u = quotient(numerator, denominator);
  const double square = u.high * u.high;
  const double series = u.high * square * (-1.0 / 3.0 + square * (0.2 - square * (1.0 / 7.0)));

  // In the four octants of the upper half plane: a, pi/2 - a, pi/2 + a, pi - a.
  const bool left = xSign < 0.0;
  const double sense = steep != left ? -1.0 : 1.0;
  const double quarters = steep ? 1.0 : (left ? 2.0 : 0.0);
  const DoubleDouble base = {quarters * kHalfPi.high, quarters * kHalfPi.low};
  const DoubleDouble table = {sense * kArctangent[row][0], sense * kArctangent[row][1]};
  const DoubleDouble rest = {sense * u.high, sense * (u.low + series)};
  const DoubleDouble result = (base + table) + rest;
  return roundedWithin(result, kRelativeError * result.high);
}

FATHOM_INLINE RoundedResult fastAtan2(double y, double x) {
  const double yMagnitude = fabs(y);
  const double xMagnitude = fabs(x);
  RoundedResult result = angle<false>({yMagnitude, 0.0}, {xMagnitude, 0.0}, x);
  const double big = yMagnitude > xMagnitude ? yMagnitude : xMagnitude;
  const double small = yMagnitude > xMagnitude ? xMagnitude : yMagnitude;
  const bool served =
      (big <= kLargest) & (big >= kSmallest) & ((small >= kSmallest) | (small == 0.0));
  result.doubt |= static_cast<std::uint64_t>(!served);
  result.value = copysign(result.value, y);
  return result;
}

// The angle of (x, sqrt(1 - x^2)).
FATHOM_INLINE RoundedResult fastAcos(double x) {
  const DoubleDouble square = fastTwoSum(1.0, -x) * fastTwoSum(1.0, x);
  const double root = sqrt(square.high);
  const DoubleDouble rootSquare = twoProduct(root, root);
  const double tail =
      (((square.high - rootSquare.high) - rootSquare.low) + square.low) / (2.0 * root);
  RoundedResult result = angle<true>({root, tail}, {fabs(x), 0.0}, x);
  const bool served = fabs(x) < 1.0;
  result.doubt |= static_cast<std::uint64_t>(!served);
  return result;
}

FATHOM_MULTIVERSION bool atan2Block(const double* y, const double* x, std::size_t n, double* result,
                                    std::uint64_t* doubt) {
  std::uint64_t any = 0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const RoundedResult r = fastAtan2(y[i], x[i]);
    result[i] = r.value;
    doubt[i] = r.doubt;
    any |= r.doubt;
  }
  return any != 0;
}

}  // namespace

double atan2(double y, double x) {
  const RoundedResult result = fastAtan2(y, x);
  return result.doubt == 0 ? result.value : slow::atan2(y, x);
}

double atan(double x) {
  const RoundedResult result = fastAtan2(x, 1.0);
  return result.doubt == 0 ? result.value : slow::atan(x);
}

double acos(double x) {
  const RoundedResult result = fastAcos(x);
  return result.doubt == 0 ? result.value : slow::acos(x);
}

void atan2(const double* y, const double* x, std::size_t n, double* angle) {
  using Block = ElementaryBlock<2, 1>;
  evaluateArrays<2, 1>(
      {y, x}, n, {angle},
      [](Block& b, std::size_t count) {
        return atan2Block(b.argument[0], b.argument[1], count, b.value[0], b.doubt);
      },
      [](Block& b, std::size_t i) {
        b.value[0][i] = slow::atan2(b.argument[0][i], b.argument[1][i]);
      });
}

}  // namespace fathom
