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
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

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

constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
constexpr DoubleDouble kHalfPi = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};
constexpr DoubleDouble kStraight = {2.0 * kHalfPi.high, 2.0 * kHalfPi.low};

// As many rows as the bits of an index name: arguments that are not served need one, too.
constexpr std::size_t kRows = 512;
struct RowTable {
  double row[kRows][2];
};
constexpr RowTable kTable = [] {
  RowTable t{};
  for (std::size_t j = 0; j < std::size(kArctangent); ++j) {
    t.row[j][0] = kArctangent[j][0];
    t.row[j][1] = kArctangent[j][1];
  }
  return t;
}();

// Choices by bits, for they vectorise for two lanes, which comparisons do badly. The bits of
// magnitudes are ordered as these are, NaN last.
FATHOM_INLINE std::uint64_t bitsOf(double x) {
  return std::bit_cast<std::uint64_t>(x);
}
FATHOM_INLINE std::uint64_t allBitsIfNegative(std::uint64_t bits) {
  return 0 - (bits >> 63);
}
FATHOM_INLINE double chosen(std::uint64_t mask, double a, double b) {
  return std::bit_cast<double>(bitsOf(b) ^ ((bitsOf(a) ^ bitsOf(b)) & mask));
}
FATHOM_INLINE double flipped(double x, std::uint64_t sign) {
  return std::bit_cast<double>(bitsOf(x) ^ sign);
}

// a / b to within 2^-101.
FATHOM_INLINE DoubleDouble quotient(DoubleDouble a, DoubleDouble b) {
  const double reciprocal = 1.0 / b.high;
  const double first = a.high * reciprocal;
  const DoubleDouble product = twoProduct(first, b.high);
  const double remainder =
      ((a.high - product.high) - product.low) + (a.low - rounded(first * b.low));
  return fastTwoSum(first, remainder * reciprocal);
}

// The angle in [0, pi] of the point (x, y), y >= 0, given |x| and the sign of x. Without tails, the
// low halves are 0 and left out.
template <bool tails>
FATHOM_INLINE RoundedResult angle(DoubleDouble y, DoubleDouble x, double xSign) {
  const std::uint64_t steep = allBitsIfNegative(bitsOf(x.high) - bitsOf(y.high));
  const DoubleDouble small = {chosen(steep, x.high, y.high), chosen(steep, x.low, y.low)};
  const DoubleDouble big = {chosen(steep, y.high, x.high), chosen(steep, y.low, x.low)};

  const double shifted = small.high / big.high * 256.0 + kToInteger;
  const std::uint64_t row = bitsOf(shifted) % kRows;
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
  const std::uint64_t left = allBitsIfNegative(bitsOf(xSign));
  const std::uint64_t sense = (steep ^ left) & kSign;
  const DoubleDouble base = {chosen(steep, kHalfPi.high, chosen(left, kStraight.high, 0.0)),
                             chosen(steep, kHalfPi.low, chosen(left, kStraight.low, 0.0))};
  const DoubleDouble table = {flipped(kTable.row[row][0], sense),
                              flipped(kTable.row[row][1], sense)};
  const DoubleDouble rest = {flipped(u.high, sense), flipped(u.low + series, sense)};
  const DoubleDouble result = (base + table) + rest;
  return roundedWithin(result, kRelativeError * result.high);
}

// Not 0 unless each magnitude is in the range or 0, and one is not 0.
FATHOM_INLINE std::uint64_t outsideRange(double magnitude) {
  const std::uint64_t bits = bitsOf(magnitude);
  return (bitsOf(kLargest) - bits) | ((bits - bitsOf(kSmallest)) & ~(bits - 1));
}
FATHOM_INLINE std::uint64_t outsideRange(double y, double x) {
  const std::uint64_t bothZero = (bitsOf(y) | bitsOf(x)) - 1;
  return (outsideRange(y) | outsideRange(x) | bothZero) & kSign;
}

FATHOM_INLINE RoundedResult fastAtan2(double y, double x) {
  const double yMagnitude = magnitude(y);
  const double xMagnitude = magnitude(x);
  const RoundedResult result = angle<false>({yMagnitude, 0.0}, {xMagnitude, 0.0}, x);
  return {flipped(result.value, bitsOf(y) & kSign),
          result.doubt | outsideRange(yMagnitude, xMagnitude)};
}

// The angle of (x, sqrt(1 - x^2)).
FATHOM_INLINE RoundedResult fastAcos(double x) {
  const DoubleDouble square = fastTwoSum(1.0, -x) * fastTwoSum(1.0, x);
  const double root = sqrt(square.high);
  const DoubleDouble rootSquare = twoProduct(root, root);
  const double tail =
      (((square.high - rootSquare.high) - rootSquare.low) + square.low) / (2.0 * root);
  const RoundedResult result = angle<true>({root, tail}, {magnitude(x), 0.0}, x);
  // Beyond 1 the root is NaN.
  return {result.value, result.doubt | outsideBits(x, 0x1.fffffffffffffp-1)};
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
