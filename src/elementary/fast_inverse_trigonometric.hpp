// The fast path of atan and acos of one value.
//
// Every octave of |x|, or for acos of 1 - |x|, is cut into 32 cells, each about a point c. The
// angle is that of c, from the table, and a small one, whose tangent t takes one division:
//
//   atan(x)     = atan(c)     + atan(t),   t = (x - c) / (1 + c x),
//   acos(x) / 2 = acos(c) / 2 + atan(t),   t = (c - x) / (sqrt(1 - c^2) + sqrt(1 - x^2)),
//
// the half angle, because nothing cancels in its tangent. x - c is exact, by Sterbenz' lemma;
// |t| <= 2^-7, and atan(t) = t - t^3/3 + t^5/5 - t^7/7. Beyond the cells, atan(x) = pi/2 -
// atan(1 / x).
//
// Error, relative to t, in units of u = 2^-53: the quotient of atan is rounded three times, 3. In
// that of acos, the root of a product of two sums is off by 2.5, the other by 1, and they are
// nearly equal, 1.76; with their sum and the quotient 3.76. The term t^9/9 is less than 0.015, and
// the roundings of the terms beyond t, 2^-15.5 |t| together, 0.0002. What the sum of the table's
// angle and t leaves, and the table's tail, are at most 2^-53, and rounded five times: 2^-103.5.
#ifndef FATHOM_ELEMENTARY_FAST_INVERSE_TRIGONOMETRIC_HPP
#define FATHOM_ELEMENTARY_FAST_INVERSE_TRIGONOMETRIC_HPP

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "elementary/double_double.hpp"
#include "elementary/inverse_trigonometric_table.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

inline constexpr DoubleDouble kHalfPi = {0x1.921fb54442d18p+0, 0x1.1a62633145c07p-54};

inline constexpr double kFastAtanError = 0x1.88p-52;  // 3.06 u
inline constexpr double kFastAcosError = 0x1.e8p-52;  // 3.81 u
inline constexpr double kFastAbsoluteError = 0x1p-103;
// Below the cells, where |x| < 2^-8 takes the place of t and is exact. Relative to x, the term
// x^9/9 is below 2^-67.1, and the roundings of those beyond x are below 2^-68.
inline constexpr double kFastSmallError = 0x1p-66;

// Where the cells start, and end for atan; the bits of a double below those that tell cells apart.
inline constexpr double kCellsStart = 0x1p-8;
inline constexpr double kTangentCellsEnd = 0x1p7;
inline constexpr int kBitsInCell = 52 - std::countr_zero(kCellsPerOctave);
inline constexpr std::uint64_t kMostCells = 512;
static_assert(std::size(kArctangentCells) <= kMostCells &&
              std::size(kArccosineCells) / 2 <= kMostCells);

// Whether x is in the cells. The bits of doubles are ordered as they are; those of negative ones
// and of NaN come last.
FATHOM_INLINE bool inCells(double x, double last) {
  constexpr auto first = std::bit_cast<std::uint64_t>(kCellsStart);
  return std::bit_cast<std::uint64_t>(x) - first <= std::bit_cast<std::uint64_t>(last) - first;
}
// The number of the cell whose point is nearest to x, which is in the cells. The remainder tells
// the compiler that the sign's bit does not matter, whether magnitude() has cleared it or not.
FATHOM_INLINE std::size_t nearestCell(double x) {
  constexpr auto half = std::uint64_t{1} << (kBitsInCell - 1);
  constexpr auto start = std::bit_cast<std::uint64_t>(kCellsStart) - half;
  const auto number = (std::bit_cast<std::uint64_t>(x) - start) >> kBitsInCell;
  return static_cast<std::size_t>(number % kMostCells);
}

// atan(t) - t
FATHOM_INLINE double arctangentBeyondFirst(double t) {
  const double square = rounded(t * t);
  const double series = rounded(square * (0.2 - rounded(square * (1.0 / 7.0)))) - 1.0 / 3.0;
  return rounded(rounded(t * square) * series);
}

// angle + tail + atan(t), angle > |t|.
FATHOM_INLINE RoundedResult addArctangent(double angle, double tail, double t,
                                          double relativeError) {
  const DoubleDouble sum = fastTwoSum(angle, t);
  return roundedWithin({sum.high, sum.low + (tail + arctangentBeyondFirst(t))},
                       rounded(magnitude(t) * relativeError) + kFastAbsoluteError);
}

// atan of x >= 0 or NaN.
FATHOM_INLINE RoundedResult fastAtanOutsideCells(double x) {
  if (x < 0x1p-27) return {x, 0};
  if (x < kCellsStart) {
    return roundedWithin({x, arctangentBeyondFirst(x)}, rounded(x * kFastSmallError));
  }
  if (x > kTangentCellsEnd) {
    return addArctangent(kHalfPi.high, kHalfPi.low, -1.0 / x, kFastAtanError);
  }
  return {x, 1};
}
FATHOM_INLINE RoundedResult fastAtan(double x) {
  if (!inCells(x, kTangentCellsEnd)) return fastAtanOutsideCells(x);
  const double* const row = kArctangentCells[nearestCell(x)];
  const double c = row[0];
  const double t = (x - c) / (1.0 + rounded(c * x));
  return addArctangent(row[1], row[2], t, kFastAtanError);
}

FATHOM_INLINE RoundedResult fastAcos(double x) {
  constexpr std::size_t cells = std::size(kArccosineCells) / 2;
  // Rounded where |x| < 1/2, but x - c is exact all the same: 2^-7 is the end of the cell of 0.
  const double z = 1.0 - magnitude(x);
  if (!inCells(z, 1.0)) return {x, 1};
  const double* const row = kArccosineCells[nearestCell(z) + (x < 0.0 ? cells : 0)];
  const double root = sqrt((1.0 - x) * (1.0 + x));
  const double t = (row[0] - x) / (row[1] + root);
  const RoundedResult half = addArctangent(row[2], row[3], t, kFastAcosError);
  return {2.0 * half.value, half.doubt};
}

}  // namespace fathom

#endif
