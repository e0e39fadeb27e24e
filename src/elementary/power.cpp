// pow: ln |x| to about 2^-77, its exact product with y, the exponential of that, and a rounding
// test; the sign and whether the power is real from the bits of x and y.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/exponential_core.hpp"
#include "elementary/exponential_table.hpp"
#include "elementary/logarithm_reduction.hpp"
#include "elementary/logarithm_table.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

// y ln |x| as head + tail, and a bound for what that costs the power, relative to its power of two.
//
// The head is a product of 26 bits by 26, exact. Of the tail, below 2^-24 |head| + |y z^3| / 2, the
// product of the two low parts is rounded, as are its second factor and the sum: below 2^-76 |head|
// + 1.1 2^-53 |y z^3|. The logarithm itself is off by 5 2^-53 |y z^3|, two roundings of the tail in
// the exponential add as much as those here, and the factor below 2 of its table makes 2^-74 |head|
// + 2^-49 |y z^3| of it.
struct ScaledLogarithm {
  double head;
  double tail;
  double error;
};

FATHOM_INLINE ScaledLogarithm scaledLogarithm(const LogarithmSum& log, double y) {
  const double logHigh = split(log.high).high;
  const double logLow = (log.high - logHigh) + log.low;
  const DoubleDouble yParts = split(y);
  const double head = rounded(yParts.high * logHigh);
  const double tail = rounded(yParts.low * logHigh) + rounded(y * logLow);
  return {head, tail,
          rounded(magnitude(head) * 0x1p-74) + rounded(magnitude(y * log.cube) * 0x1p-49)};
}

// Bit 63: the sign of x^y.
FATHOM_INLINE std::uint64_t signOfPower(double x, double y) {
  const double unit = magnitude(y) + 0x1p52;  // its last bit: that of y
  return std::bit_cast<std::uint64_t>(x) & (std::bit_cast<std::uint64_t>(unit) << 63);
}
// Not 0 where x < 0 and y is not an integer of at most 2^52.
FATHOM_INLINE std::uint64_t notRealBits(double x, double y) {
  const double integer = (magnitude(y) + 0x1p52) - 0x1p52;
  const std::uint64_t negative = std::uint64_t{0} - (std::bit_cast<std::uint64_t>(x) >> 63);
  return (differingBits(integer, magnitude(y)) | outsideBits(y, 0x1p52)) & negative;
}

FATHOM_INLINE LogarithmSum logarithmOf(double x, const LogarithmRow& row) {
  return accurateLogarithm(reduceLogarithm(x, row));
}

FATHOM_INLINE RoundedResult fastPower(double x, double y, const ScaledLogarithm& log, double steps,
                                      TableRow row) {
  const std::uint64_t outside =
      outsideBits(log.head, kLargestExponent) | outsideCells(magnitude(x)) | notRealBits(x, y);
  const RoundedResult power = roundedAndScaled(exponential(log.head, log.tail, steps, row),
                                               kExponentialError + log.error, outside);
  const auto bits = std::bit_cast<std::uint64_t>(power.value) | signOfPower(x, y);
  return {std::bit_cast<double>(bits), power.doubt};
}

// Base and exponent of a block are arrays or one value for all.
struct OneValue {
  double value;
  FATHOM_INLINE double operator[](std::size_t /*i*/) const { return value; }
};

template <typename Base, typename Exponent>
FATHOM_INLINE bool fastPowersOf(Base x, Exponent y, std::size_t n, double* power,
                                std::uint64_t* doubt) {
  LogarithmRows logarithms;
  alignas(64) TableRow rows[kElementaryBlock];
  alignas(64) double bases[kElementaryBlock];
  alignas(64) double heads[kElementaryBlock];
  alignas(64) double tails[kElementaryBlock];
  alignas(64) double errors[kElementaryBlock];
  alignas(64) double steps[kElementaryBlock];
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) bases[i] = magnitude(x[i]);
  lookUpLogarithms(bases, n, logarithms);
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const ScaledLogarithm log = scaledLogarithm(logarithmOf(bases[i], logarithms[i]), y[i]);
    heads[i] = log.head;
    tails[i] = log.tail;
    errors[i] = log.error;
    steps[i] = stepsOf(log.head + log.tail);
  }
  lookUpExponentials(steps, n, rows);
  std::uint64_t any = 0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const RoundedResult result =
        fastPower(x[i], y[i], {heads[i], tails[i], errors[i]}, steps[i], rows[i]);
    power[i] = result.value;
    doubt[i] = result.doubt;
    any |= result.doubt;
  }
  return any != 0;
}

FATHOM_MULTIVERSION bool fastPowers(const double* x, const double* y, std::size_t n, double* power,
                                    std::uint64_t* doubt) {
  return fastPowersOf(x, y, n, power, doubt);
}
FATHOM_MULTIVERSION bool fastPowers(const double* x, OneValue y, std::size_t n, double* power,
                                    std::uint64_t* doubt) {
  return fastPowersOf(x, y, n, power, doubt);
}

double exactPower(double x, double y) {
  if (y == 1.0) return x;
  if (y == 2.0) return x * x;
  // Beyond the range of doubles, the rounded logarithm is enough.
  const double base = magnitude(x);
  if ((outsideCells(base) | notRealBits(x, y)) == 0) {
    const auto sign = std::bit_cast<double>(signOfPower(x, y));
    const double head = scaledLogarithm(logarithmOf(base, kLogarithmTable[cellOf(base)]), y).head;
    if (head > 710.0) return copysign(std::numeric_limits<double>::infinity(), sign);
    if (head < -746.0) return sign;
  }
  return slow::pow(x, y);
}

}  // namespace

double pow(double x, double y) {
  const double base = magnitude(x);
  const ScaledLogarithm log = scaledLogarithm(logarithmOf(base, kLogarithmTable[cellOf(base)]), y);
  const double steps = stepsOf(log.head + log.tail);
  const RoundedResult result = fastPower(x, y, log, steps, kExponentialTable[rowOf(steps)]);
  return result.doubt == 0 ? result.value : exactPower(x, y);
}

void pow(const double* x, const double* y, std::size_t n, double* power) {
  evaluateArrays<2, 1>(
      {x, y}, n, {power},
      [](ElementaryBlock<2, 1>& b, std::size_t count) {
        return fastPowers(b.argument[0], b.argument[1], count, b.value[0], b.doubt);
      },
      [](ElementaryBlock<2, 1>& b, std::size_t i) {
        b.value[0][i] = exactPower(b.argument[0][i], b.argument[1][i]);
      });
}

void pow(const double* x, double y, std::size_t n, double* power) {
  if (y == 0.0) {
    std::fill_n(power, n, 1.0);
    return;
  }
  if (y == 1.0 || y == 2.0) {
    for (std::size_t i = 0; i < n; ++i) power[i] = exactPower(x[i], y);
    return;
  }
  evaluateArray(
      x, n, power,
      [y](const double* base, std::size_t count, double* value, std::uint64_t* doubt) {
        return fastPowers(base, OneValue{y}, count, value, doubt);
      },
      [y](double base) { return exactPower(base, y); });
}

}  // namespace fathom
