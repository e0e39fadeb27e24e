// log and log10: the reduction of logarithm_reduction.hpp, a polynomial of degree 6 and a rounding
// test; where that leaves the rounding in doubt, mostly beside 1, the same with the term z^2 / 2 of
// the series taken exactly.
//
// (Tang, Table-driven implementation of the logarithm function in IEEE floating-point arithmetic,
// ACM Transactions on Mathematical Software 16, 1990.)
#include <cstddef>
#include <cstdint>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/logarithm_reduction.hpp"
#include "elementary/logarithm_table.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"

namespace fathom {
namespace {

// Bounds, u = 2^-53: of z^2 P(z), |P| near 1/2, the square is off by u / 2 z^2, P by 3.4 u z^2 (two
// roundings and kFromSquareError), the product by u / 2 z^2; as much again come from the sum that
// is `low` and from low +- error: 5.4 u z^2.
constexpr double kLogSquareError = 0x1.8p-51;
// The product with 1 / ln 10 shrinks that by 0.44 and rounds the tail three times.
constexpr double kLog10SquareError = 0x1.cp-52;
// What is left of `low`, the rests, is below 2^-32, and its products and sums are off by less than
// 2^-84 together. Where |z| < 2^-30 beside 1 they are 0, and results are left in doubt for nothing.
constexpr double kNaturalError = 0x1p-84;
constexpr double kDecimalError = 0x1p-74;
static_assert(kFromSquareError <= 0x1.3p-52);

struct Natural {
  template <typename V>
  FATHOM_INLINE static void toBase(V& /*high*/, V& /*low*/) {}
  FATHOM_INLINE static DoubleDouble accurateInBase(DoubleDouble x) { return x; }
  template <typename V>
  FATHOM_INLINE static V error(const V& square, const V& /*sum*/) {
    return rounded(square * kLogSquareError) + kNaturalError;
  }
  static double slow(double x) { return slow::log(x); }
};

struct Decimal {
  template <typename V>
  FATHOM_INLINE static void toBase(V& high, V& low) {
    const V leading = leading26Bits(high);
    const V tail = (high - leading) + low;
    high = rounded(leading * kInverseLn10[0]);
    low = rounded(leading * kInverseLn10[1]) + rounded(tail * kInverseLn10Pair[0]);
  }
  FATHOM_INLINE static DoubleDouble accurateInBase(DoubleDouble x) {
    return fastTwoSum(x.high, x.low) * DoubleDouble{kInverseLn10Pair[0], kInverseLn10Pair[1]};
  }
  template <typename V>
  FATHOM_INLINE static V error(const V& square, const V& sum) {
    return rounded(square * kLog10SquareError) + rounded(magnitude(sum) * kDecimalError);
  }
  static double slow(double x) { return slow::log10(x); }
};

// Returns bits that are not 0 where the value is in doubt.
template <typename Base, typename V>
FATHOM_INLINE Bits<V> fastLog(const V& x, const std::uint64_t* cells, V& value) {
  ReducedLogarithm<V> reduced;
  reduceLogarithm(x, cells, reduced);
  const V& z = reduced.z;
  const V square = rounded(z * z);
  const V a = kFromSquare[0] + rounded(z * kFromSquare[1]);
  const V b = kFromSquare[2] + rounded(z * kFromSquare[3]);
  const V p = a + rounded(square * (b + rounded(square * kFromSquare[4])));
  // Exact: `leading` is 0 or a multiple of the last bit of z.
  const V s = reduced.leading + z;
  const V lost = (reduced.leading - s) + z;
  V high = s, low = rounded(square * p) + (lost + reduced.rest);
  Base::toBase(high, low);
  return roundWithin(high, low, Base::error(square, s), value);
}

template <typename Base>
double exactLog(double x) {
  if (x == 1.0) return 0.0;
  if (outsideCells(x) != 0) return Base::slow(x);
  const std::uint64_t cell = cellOf(x);
  ReducedLogarithm<double> reduced;
  reduceLogarithm(x, &cell, reduced);
  LogarithmSum<double> sum;
  accurateLogarithm(reduced, sum);
  const double error = magnitude(sum.cube) * 0x1.8p-51 + magnitude(sum.high) * 0x1p-81;
  const RoundedResult result = roundedWithin(Base::accurateInBase({sum.high, sum.low}), error);
  return result.doubt == 0 ? result.value : Base::slow(x);
}

// A block of an array form. First the numbers of the cells, so that the table's indices come from
// memory.
template <std::size_t bytes, typename Base>
FATHOM_INLINE void logBlockOf(Base /*base*/, const double* x, std::size_t n, double* y,
                              std::uint64_t* doubts, bool& anyDoubt) {
  using V = Lanes<bytes>;
  alignas(64) std::uint64_t cells[kElementaryBlock];
  Bits<V> outside{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    const auto v = vectorAt<V>(x + i);
    outside |= outsideCellsSign(v);
    storeBits(cells + i, cellOf(v));
  }
  Bits<V> any{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    V value;
    const Bits<V> doubt = fastLog<Base>(vectorAt<V>(x + i), cells + i, value);
    store(y + i, value);
    storeBits(doubts + i, doubt);
    any |= doubt;
  }
  anyDoubt = anyBits(any);
  if (!anyBits(outside & kSignBit)) return;
  anyDoubt = true;
  for (std::size_t i = 0; i < n; ++i) doubts[i] |= outsideCells(x[i]);
}

FATHOM_BY_WIDTH(logBlock,
                (Natural base, const double* x, std::size_t n, double* y, std::uint64_t* doubts,
                 bool& anyDoubt),
                (base, x, n, y, doubts, anyDoubt))
FATHOM_BY_WIDTH(logBlock,
                (Decimal base, const double* x, std::size_t n, double* y, std::uint64_t* doubts,
                 bool& anyDoubt),
                (base, x, n, y, doubts, anyDoubt))

template <typename Base>
void logs(const double* x, std::size_t n, double* l) {
  const auto fast = [](const double* argument, std::size_t count, double* value,
                       std::uint64_t* doubts,
                       bool& any) { logBlock(Base{}, argument, count, value, doubts, any); };
  evaluateArray(x, n, l, fast, exactLog<Base>);
}

template <typename Base>
FATHOM_INLINE double logOf(double x) {
  const std::uint64_t cell = cellOf(x);
  double value;
  const std::uint64_t doubt = fastLog<Base>(x, &cell, value);
  return (doubt | outsideCells(x)) == 0 ? value : exactLog<Base>(x);
}

}  // namespace

double log(double x) {
  return logOf<Natural>(x);
}

double log10(double x) {
  return logOf<Decimal>(x);
}

void log(const double* x, std::size_t n, double* l) {
  logs<Natural>(x, n, l);
}

void log10(const double* x, std::size_t n, double* l) {
  logs<Decimal>(x, n, l);
}

}  // namespace fathom
