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
#include "frame/elementary.hpp"

namespace fathom {
namespace {

// Bounds, u = 2^-53: of z^2 P(z), |P| near 1/2, the square is off by u / 2 z^2, P by 3.4 u z^2 (two
// roundings and kFromSquareError), the product by u / 2 z^2; as much again come from the sum that
// is `low` and from low +- error: 5.4 u z^2. The other terms of `low` are below 2^-43 |s|.
constexpr double kLogSquareError = 0x1.8p-51;
// The product with 1 / ln 10 shrinks that by 0.44 and rounds the tail three times.
constexpr double kLog10SquareError = 0x1.cp-52;
constexpr double kSumError = 0x1p-74;
static_assert(kFromSquareError <= 0x1.3p-52);

struct Natural {
  static constexpr double kSquareError = kLogSquareError;

  FATHOM_INLINE static DoubleDouble inBase(DoubleDouble x) { return x; }
  FATHOM_INLINE static DoubleDouble accurateInBase(DoubleDouble x) { return x; }
  static double slow(double x) { return slow::log(x); }
};

struct Decimal {
  static constexpr double kSquareError = kLog10SquareError;

  FATHOM_INLINE static DoubleDouble inBase(DoubleDouble x) {
    const double leading = split(x.high).high;
    const double tail = (x.high - leading) + x.low;
    return {rounded(leading * kInverseLn10[0]),
            rounded(leading * kInverseLn10[1]) + rounded(tail * kInverseLn10Pair[0])};
  }
  FATHOM_INLINE static DoubleDouble accurateInBase(DoubleDouble x) {
    return fastTwoSum(x.high, x.low) * DoubleDouble{kInverseLn10Pair[0], kInverseLn10Pair[1]};
  }
  static double slow(double x) { return slow::log10(x); }
};

template <typename Base>
FATHOM_INLINE RoundedResult fastLog(double x, const LogarithmRow& row) {
  const ReducedLogarithm reduced = reduceLogarithm(x, row);
  const double z = reduced.z;
  const double square = rounded(z * z);
  const double a = kFromSquare[0] + rounded(z * kFromSquare[1]);
  const double b = kFromSquare[2] + rounded(z * kFromSquare[3]);
  const double p = a + rounded(square * (b + rounded(square * kFromSquare[4])));
  // Exact: `leading` is 0 or a multiple of the last bit of z.
  const double s = reduced.leading + z;
  const double lost = (reduced.leading - s) + z;
  const DoubleDouble y = Base::inBase({s, rounded(square * p) + (lost + reduced.rest)});
  const double error = rounded(square * Base::kSquareError) + rounded(magnitude(s) * kSumError);
  const RoundedResult result = roundedWithin(y, error);
  return {result.value, result.doubt | outsideCells(x)};
}

template <typename Base>
double exactLog(double x) {
  if (outsideCells(x) != 0) return Base::slow(x);
  const LogarithmSum sum = accurateLogarithm(reduceLogarithm(x, kLogarithmTable[cellOf(x)]));
  const double error = magnitude(sum.cube) * 0x1.8p-51 + magnitude(sum.high) * 0x1p-81;
  const RoundedResult result = roundedWithin(Base::accurateInBase({sum.high, sum.low}), error);
  return result.doubt == 0 ? result.value : Base::slow(x);
}

template <typename Base>
FATHOM_INLINE bool fastLogs(const double* x, std::size_t n, double* y, std::uint64_t* doubt) {
  LogarithmRows rows;
  lookUpLogarithms(x, n, rows);
  std::uint64_t any = 0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const RoundedResult result = fastLog<Base>(x[i], rows[i]);
    y[i] = result.value;
    doubt[i] = result.doubt;
    any |= result.doubt;
  }
  return any != 0;
}

FATHOM_MULTIVERSION bool naturalLogs(const double* x, std::size_t n, double* y,
                                     std::uint64_t* doubt) {
  return fastLogs<Natural>(x, n, y, doubt);
}
FATHOM_MULTIVERSION bool decimalLogs(const double* x, std::size_t n, double* y,
                                     std::uint64_t* doubt) {
  return fastLogs<Decimal>(x, n, y, doubt);
}

template <typename Base>
FATHOM_INLINE double logOf(double x) {
  const RoundedResult result = fastLog<Base>(x, kLogarithmTable[cellOf(x)]);
  return result.doubt == 0 ? result.value : exactLog<Base>(x);
}

}  // namespace

double log(double x) {
  return logOf<Natural>(x);
}

double log10(double x) {
  return logOf<Decimal>(x);
}

void log(const double* x, std::size_t n, double* l) {
  evaluateArray(x, n, l, naturalLogs, exactLog<Natural>);
}

void log10(const double* x, std::size_t n, double* l) {
  evaluateArray(x, n, l, decimalLogs, exactLog<Decimal>);
}

}  // namespace fathom
