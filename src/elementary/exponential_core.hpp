// e^x by a table of 2^(j/256) and a polynomial of degree 5, for exp and pow.
//
// x = k ln2/256 + r with |r| < ln2/512 (1 + 2^-30), and k = 256 e + j. The table holds T_j, which
// is 2^(j/256) to 25 bits, and t_j = ln(2^(j/256) / T_j), so that e^x = 2^e T_j exp(r + t_j).
//
// (Tang, Table-driven implementation of the exponential function in IEEE floating-point arithmetic,
// ACM Transactions on Mathematical Software 15, 1989.)
#ifndef FATHOM_ELEMENTARY_EXPONENTIAL_CORE_HPP
#define FATHOM_ELEMENTARY_EXPONENTIAL_CORE_HPP

#include <bit>
#include <cstddef>
#include <cstdint>

#include "elementary/double_double.hpp"
#include "elementary/exponential_table.hpp"
#include "elementary/table_rows.hpp"

namespace fathom {

// Results are normal and finite up to here.
inline constexpr double kLargestExponent = 708.0;

// Adding it rounds to an integer, which then stands in the low bits.
inline constexpr double kToInteger = 0x1.8p52;
// Adding and subtracting it rounds to a multiple of 2^-27.
inline constexpr double kToMultiple = 0x1.8p25;

// k, plus kToInteger.
FATHOM_INLINE double stepsOf(double x) {
  return rounded(x * kStepsPerUnit) + kToInteger;
}
FATHOM_INLINE std::size_t rowOf(double steps) {
  return std::bit_cast<std::uint64_t>(steps) % kExponentialRows;
}

// n is a multiple of 4.
FATHOM_INLINE void lookUpExponentials(const double* steps, std::size_t n, TableRow* rows) {
  for (std::size_t i = 0; i < n; i += 4) {
    rows[i] = kExponentialTable[rowOf(steps[i])];
    rows[i + 1] = kExponentialTable[rowOf(steps[i + 1])];
    rows[i + 2] = kExponentialTable[rowOf(steps[i + 2])];
    rows[i + 3] = kExponentialTable[rowOf(steps[i + 3])];
  }
}

// (s + low) 2^e with s + low in [0.98, 2.02]; the power of two as an integer to be added to the
// bits of a double.
struct ScaledSum {
  double s;
  double low;
  std::uint64_t exponentBits;
};

// Bounds of s + low, in units of 2^-70, where x = head and tail = 0:
//
// k has 18 bits and kStep 35, so that k kStep is exact, and so is head - k kStep, a multiple of
// 2^-43 or of the last bit of head that is below 2^-7. The rest of the step times k and t_j are
// below 2^-24: their roundings are below 2^-76 together. `leading` is a multiple of 2^-27 and T_j
// one of 2^-24: s, a multiple of 2^-51, is exact. What is left:
//   1.30  the polynomial, by kPolynomialError
//   0.5   q < 2^-20.05, which carries four roundings and that of its leading coefficient
//   0.18  r in q: its rounding of 2^-63 times |r|
//   0.1   the roundings of `small` and small + q
// which, times T_j < 2, is 4.16, and another 0.13 for the rounding of `low` and of low +- error:
// together below kExponentialError. A tail adds two roundings, below 2^-51 |tail| with T_j.
inline constexpr double kExponentialError = 0x1p-67;
static_assert(kPolynomialError <= 1.3 * 0x1p-70);

// e^(head + tail) for |head + tail| <= 709, |tail| < 2^-7; `steps` and `row` are those of the sum.
FATHOM_INLINE ScaledSum exponential(double head, double tail, double steps, TableRow row) {
  const double k = steps - kToInteger;
  const double near = head - rounded(k * kStep);
  const double rest = (rounded(k * kStepRest) - row.second) - tail;
  const double leading = (near + kToMultiple) - kToMultiple;
  const double small = (near - leading) - rest;
  const double r = near - rest;
  const double square = rounded(r * r);
  const double even = kPolynomial[0] + rounded(r * kPolynomial[1]);
  const double odd = kPolynomial[2] + rounded(r * kPolynomial[3]);
  const double q = rounded(square * (even + rounded(square * odd)));
  const double s = row.first + rounded(row.first * leading);
  const double low = rounded(row.first * (small + q));
  return {s, low, (std::bit_cast<std::uint64_t>(steps) / kExponentialRows) << 52};
}

// Rounds a sum that is off by at most `error`, and marks the result if `outside` is not 0.
FATHOM_INLINE RoundedResult roundedAndScaled(ScaledSum x, double error, std::uint64_t outside) {
  const RoundedResult result = roundedWithin({x.s, x.low}, error);
  const auto bits = std::bit_cast<std::uint64_t>(result.value) + x.exponentBits;
  return {std::bit_cast<double>(bits), result.doubt | outside};
}

}  // namespace fathom

#endif
