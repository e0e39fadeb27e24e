// pow: ln |x| to about 2^-77, its exact product with y, the exponential of that, and a rounding
// test; the sign and whether the power is real from the bits of x and y.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "elementary/array_form.hpp"
#include "elementary/exponential_core.hpp"
#include "elementary/exponential_table.hpp"
#include "elementary/logarithm_reduction.hpp"
#include "elementary/logarithm_table.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"

namespace fathom {
namespace {

// y ln |x| as head + tail, and a bound for what that costs the power, relative to its power of two.
//
// The head is a product of 26 bits by 26, exact. Of the tail, below 2^-24 |head| + |y z^3| / 2, the
// product of the two low parts is rounded, as are its second factor and the sum: below 2^-76 |head|
// + 1.1 2^-53 |y z^3|. The logarithm itself is off by 5 2^-53 |y z^3|, two roundings of the tail in
// the exponential add as much as those here, and the factor below 2 of its table makes 2^-74 |head|
// + 2^-49 |y z^3| of it.
template <typename V>
struct ScaledLogarithm {
  V head;
  V tail;
  V error;
};

template <typename V>
FATHOM_INLINE void scaledLogarithm(const V& base, const std::uint64_t* cells, const V& y,
                                   ScaledLogarithm<V>& scaled) {
  ReducedLogarithm<V> reduced;
  LogarithmSum<V> log;
  reduceLogarithm(base, cells, reduced);
  accurateLogarithm(reduced, log);
  const V logHead = leading26Bits(log.high);
  const V logTail = (log.high - logHead) + log.low;
  const V yHead = leading26Bits(y);
  scaled.head = rounded(yHead * logHead);
  scaled.tail = rounded((y - yHead) * logHead) + rounded(y * logTail);
  scaled.error = rounded(magnitude(scaled.head) * 0x1p-74) +
                 rounded(magnitude(rounded(y * log.cube)) * 0x1p-49);
}

// Bit 63: the sign of x^y.
template <typename V>
FATHOM_INLINE Bits<V> signOfPower(const V& x, const V& y) {
  const V unit = magnitude(y) + 0x1p52;  // its last bit: that of y
  return std::bit_cast<Bits<V>>(x) & (std::bit_cast<Bits<V>>(unit) << 63);
}
// Not 0 where x < 0 and y is not an integer of at most 2^52.
template <typename V>
FATHOM_INLINE Bits<V> notRealBits(const V& x, const V& y) {
  const V integer = (magnitude(y) + 0x1p52) - 0x1p52;
  const Bits<V> negative = std::uint64_t{0} - (std::bit_cast<Bits<V>>(x) >> 63);
  return (differingBits<V>(integer, magnitude(y)) | outsideBits(y, 0x1p52)) & negative;
}

// Returns bits that are not 0 where the power is in doubt.
template <typename V>
FATHOM_INLINE Bits<V> fastPower(const V& x, const V& y, const ScaledLogarithm<V>& log,
                                const double* steps, V& power) {
  ScaledSum<V> sum;
  exponential(log.head, log.tail, steps, sum);
  V positive;
  const Bits<V> doubt = roundAndScale(sum, kExponentialError + log.error, positive);
  power = withBits(positive, signOfPower(x, y));
  return doubt | outsideBits(log.head, kLargestExponent) | notRealBits(x, y);
}

// A block of the array form. First the cells of the logarithms, then these with the steps of the
// exponentials, so that the tables' indices come from memory.
template <std::size_t bytes>
FATHOM_INLINE void powerBlockOf(const double* x, const double* y, std::size_t n, double* power,
                                std::uint64_t* doubts, bool& anyDoubt) {
  using V = Lanes<bytes>;
  alignas(64) std::uint64_t cells[kElementaryBlock];
  alignas(64) double heads[kElementaryBlock];
  alignas(64) double tails[kElementaryBlock];
  alignas(64) double errors[kElementaryBlock];
  alignas(64) double steps[kElementaryBlock];
  Bits<V> outside{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    const V base = magnitude(vectorAt<V>(x + i));
    outside |= outsideCellsSign(base);
    storeBits(cells + i, cellOf(base));
  }
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    ScaledLogarithm<V> log;
    scaledLogarithm(magnitude(vectorAt<V>(x + i)), cells + i, vectorAt<V>(y + i), log);
    store(heads + i, log.head);
    store(tails + i, log.tail);
    store(errors + i, log.error);
    store(steps + i, stepsOf<V>(log.head + log.tail));
  }
  Bits<V> any{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    const ScaledLogarithm<V> log = {vectorAt<V>(heads + i), vectorAt<V>(tails + i),
                                    vectorAt<V>(errors + i)};
    V value;
    const Bits<V> doubt = fastPower(vectorAt<V>(x + i), vectorAt<V>(y + i), log, steps + i, value);
    store(power + i, value);
    storeBits(doubts + i, doubt);
    any |= doubt;
  }
  anyDoubt = anyBits(any);
  if (!anyBits(outside & kSignBit)) return;
  anyDoubt = true;
  for (std::size_t i = 0; i < n; ++i) doubts[i] |= outsideCells(magnitude(x[i]));
}
FATHOM_BY_WIDTH(powerBlock,
                (const double* x, const double* y, std::size_t n, double* power,
                 std::uint64_t* doubts, bool& anyDoubt),
                (x, y, n, power, doubts, anyDoubt))

double exactPower(double x, double y) {
  if (y == 1.0) return x;
  if (y == 2.0) return x * x;
  // Beyond the range of doubles, the rounded logarithm is enough.
  const double base = magnitude(x);
  if ((outsideCells(base) | notRealBits(x, y)) == 0) {
    const auto sign = std::bit_cast<double>(signOfPower(x, y));
    const std::uint64_t cell = cellOf(base);
    ScaledLogarithm<double> log;
    scaledLogarithm(base, &cell, y, log);
    if (log.head > 710.0) return copysign(std::numeric_limits<double>::infinity(), sign);
    if (log.head < -746.0) return sign;
  }
  return slow::pow(x, y);
}

}  // namespace

double pow(double x, double y) {
  const double base = magnitude(x);
  const std::uint64_t cell = cellOf(base);
  ScaledLogarithm<double> log;
  scaledLogarithm(base, &cell, y, log);
  const double steps = stepsOf(log.head + log.tail);
  double value;
  const std::uint64_t doubt = fastPower(x, y, log, &steps, value);
  return (doubt | outsideCells(base)) == 0 ? value : exactPower(x, y);
}

void pow(const double* x, const double* y, std::size_t n, double* power) {
  evaluateArrays<2, 1>(
      {x, y}, n, {power},
      [](ElementaryBlock<2, 1>& b, std::size_t count) {
        bool any = false;
        powerBlock(b.argument[0], b.argument[1], count, b.value[0], b.doubt, any);
        return any;
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
  double exponents[kElementaryBlock];
  std::fill_n(exponents, kElementaryBlock, y);
  evaluateArray(
      x, n, power,
      [&exponents](const double* base, std::size_t count, double* value, std::uint64_t* doubt,
                   bool& any) { powerBlock(base, exponents, count, value, doubt, any); },
      [y](double base) { return exactPower(base, y); });
}

}  // namespace fathom
