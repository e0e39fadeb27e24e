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

#include "elementary/exponential_table.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/vector.hpp"
#include "frame/lanes.hpp"

namespace fathom {

// Results are normal and finite up to here.
inline constexpr double kLargestExponent = 708.0;

// Adding it rounds to an integer, which then stands in the low bits.
inline constexpr double kToInteger = 0x1.8p52;
// Adding and subtracting it rounds to a multiple of 2^-27.
inline constexpr double kToMultiple = 0x1.8p25;

// k, plus kToInteger.
template <typename V>
FATHOM_INLINE V stepsOf(const V& x) {
  return rounded(x * kStepsPerUnit) + kToInteger;
}

template <typename V>
struct ExponentialRow {
  V power, rest;  // T and t
};
template <typename V>
FATHOM_INLINE void loadRow(const double* steps, ExponentialRow<V>& r) {
  const auto row = [steps](std::size_t lane) -> const double* {
    return kExponentialTable[std::bit_cast<std::uint64_t>(steps[lane]) % kExponentialRows];
  };
  loadColumns(row, r.power, r.rest);
}

// (s + low) 2^e with s + low in [0.98, 2.02]; the power of two as an integer to be added to the
// bits of a double.
template <typename V>
struct ScaledSum {
  V s;
  V low;
  Bits<V> exponentBits;
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

// e^(head + tail) for |head + tail| <= 709, |tail| < 2^-7; `steps` are those of the sum.
template <typename V>
FATHOM_INLINE void exponential(const V& head, const V& tail, const double* steps,
                               ScaledSum<V>& sum) {
  V shifted;
  load(shifted, steps);
  ExponentialRow<V> row;
  loadRow(steps, row);
  const V k = shifted - kToInteger;
  const V near = head - rounded(k * kStep);
  const V rest = (rounded(k * kStepRest) - row.rest) - tail;
  const V leading = (near + kToMultiple) - kToMultiple;
  const V small = (near - leading) - rest;
  const V r = near - rest;
  const V square = rounded(r * r);
  const V even = kPolynomial[0] + rounded(r * kPolynomial[1]);
  const V odd = kPolynomial[2] + rounded(r * kPolynomial[3]);
  const V q = rounded(square * (even + rounded(square * odd)));
  sum.s = row.power + rounded(row.power * leading);
  sum.low = rounded(row.power * (small + q));
  sum.exponentBits = (std::bit_cast<Bits<V>>(shifted) / kExponentialRows) << 52;
}

// Rounds a sum that is off by at most `error`. Returns bits that are not 0 where that is in doubt.
template <typename V>
FATHOM_INLINE Bits<V> roundAndScale(const ScaledSum<V>& x, const V& error, V& value) {
  V unscaled;
  const Bits<V> doubt = roundWithin(x.s, x.low, error, unscaled);
  value = std::bit_cast<V>(std::bit_cast<Bits<V>>(unscaled) + x.exponentBits);
  return doubt;
}

}  // namespace fathom

#endif
