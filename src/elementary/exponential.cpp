// exp: a table of 2^(j/256), a polynomial of degree 5, and a rounding test.
//
// x = k ln2/256 + r with |r| < ln2/512 (1 + 2^-30), and k = 256 e + j. The table holds T_j, which
// is 2^(j/256) to 25 bits, and t_j = ln(2^(j/256) / T_j), so that exp(x) = 2^e T_j exp(r + t_j).
//
// (Tang, Table-driven implementation of the exponential function in IEEE floating-point arithmetic,
// ACM Transactions on Mathematical Software 15, 1989; the rounding test: Ziv, Fast evaluation of
// elementary mathematical functions with correctly rounded last bit, the same, 17, 1991.)
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/exponential_table.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

// Adding it rounds to an integer, which then stands in the low bits.
constexpr double kToInteger = 0x1.8p52;
// Adding and subtracting it rounds to a multiple of 2^-27.
constexpr double kToMultiple = 0x1.8p25;

// Results are normal and finite up to here.
constexpr double kLargestArgument = 708.0;

// k, by kToInteger.
FATHOM_INLINE double stepsOf(double x) {
  return rounded(x * kStepsPerUnit) + kToInteger;
}
FATHOM_INLINE std::size_t rowOf(double steps) {
  return std::bit_cast<std::uint64_t>(steps) % kExponentialRows;
}

// Bounds, in units of 2^-70, for s + low as an approximation of T_j exp(r + t_j) in [0.99, 2.01]:
//
// k has 18 bits and kStep 35, so that k kStep is exact, and so is x - k kStep, a multiple of 2^-43
// or of the last bit of x that is below 2^-9. The rest of the step times k and t_j are below 2^-24:
// their roundings are below 2^-76 together. `leading` is a multiple of 2^-27 and T_j one of 2^-24:
// s, a multiple of 2^-51, is exact. What is left:
//   1.30  the polynomial, by kPolynomialError
//   0.5   q < 2^-20.05, which carries four roundings and that of its leading coefficient
//   0.18  r in q: its rounding of 2^-63 times |r|
//   0.1   the roundings of tail and tail + q
// which, times T_j < 2, is 4.16, and another 0.13 for the rounding of `low` and of low +- error.
constexpr double kError = 0x1p-67;
static_assert(kPolynomialError <= 1.3 * 0x1p-70);

FATHOM_INLINE RoundedResult fastExp(double x, double steps, TableRow row) {
  const double k = steps - kToInteger;
  const double near = x - rounded(k * kStep);
  const double rest = rounded(k * kStepRest) - row.second;
  const double leading = (near + kToMultiple) - kToMultiple;
  const double tail = (near - leading) - rest;
  const double r = near - rest;
  const double square = rounded(r * r);
  const double even = kPolynomial[0] + rounded(r * kPolynomial[1]);
  const double odd = kPolynomial[2] + rounded(r * kPolynomial[3]);
  const double q = rounded(square * (even + rounded(square * odd)));
  const double s = row.first + rounded(row.first * leading);
  const double low = rounded(row.first * (tail + q));
  const double above = s + (low + kError);
  const double below = s + (low - kError);

  const std::uint64_t exponent = (std::bit_cast<std::uint64_t>(steps) / kExponentialRows) << 52;
  const double value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(above) + exponent);
  return {value, differingBits(above, below) | outsideBits(x, kLargestArgument)};
}

FATHOM_MULTIVERSION bool fastExps(const double* x, std::size_t n, double* y, std::uint64_t* doubt) {
  alignas(64) double steps[kElementaryBlock];
  alignas(64) TableRow rows[kElementaryBlock];
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) steps[i] = stepsOf(x[i]);
  lookUpRows(kExponentialTable, n, rows, [&](std::size_t i) { return rowOf(steps[i]); });
  std::uint64_t any = 0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const RoundedResult result = fastExp(x[i], steps[i], rows[i]);
    y[i] = result.value;
    doubt[i] = result.doubt;
    any |= result.doubt;
  }
  return any != 0;
}

// Beyond the range of doubles nothing needs to be computed.
double exactExp(double x) {
  if (x > 710.0) return std::numeric_limits<double>::infinity();
  if (x < -746.0) return 0.0;
  return slow::exp(x);
}

}  // namespace

double exp(double x) {
  const double steps = stepsOf(x);
  const RoundedResult result = fastExp(x, steps, kExponentialTable[rowOf(steps)]);
  return result.doubt == 0 ? result.value : exactExp(x);
}

void exp(const double* x, std::size_t n, double* y) {
  evaluateArray(x, n, y, fastExps, exactExp);
}

}  // namespace fathom
