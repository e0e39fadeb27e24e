// sin, cos, sincos and tan, correctly rounded.
//
// Reduction: x = k pi / 256 + r with |r| < pi / 512 (1 + 2^-18). With the sine S and cosine C of
// k pi / 256 from a table,
//   sin x = S + C r + (C (sin r - r) + S (cos r - 1));
// the row k + 128, a quarter turn on, gives cos x. r = high + low, where high has 26 bits; so have
// the leading parts of S and C, hence S + C high is exact as a sum of two doubles. What is left is
// below 2^-14 of the result, and plain doubles do.
//
// The same lines serve one double and a vector of them. The few results whose rounding they leave
// in doubt are found again in double-double arithmetic, and where that does not settle it by
// slow::.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/trigonometric_table.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

constexpr std::size_t kRows = 512;
constexpr std::size_t kQuarter = kRows / 4;

// Rows of sine and cosine, each as a part of 26 bits and a tail.
struct RowTable {
  alignas(64) double row[kRows][4];
};
constexpr RowTable kTable = [] {
  RowTable t{};
  for (std::size_t k = 0; k < kRows; ++k) {
    const std::size_t j = k % kQuarter;
    const bool odd = k / kQuarter % 2 != 0;
    const double* sine = kQuarterSine[odd ? kQuarter - j : j];
    const double* cosine = kQuarterSine[odd ? j : kQuarter - j];
    const double sineSign = k < 2 * kQuarter ? 1.0 : -1.0;
    const double cosineSign = k < kQuarter || k >= 3 * kQuarter ? 1.0 : -1.0;
    for (std::size_t part = 0; part < 2; ++part) {
      t.row[k][part] = sineSign * sine[part];
      t.row[k][2 + part] = cosineSign * cosine[part];
    }
  }
  return t;
}();

// Sine and cosine of the rows that the low bits of `turns` name.
template <typename V>
struct Rows {
  V sine, sineTail, cosine, cosineTail;
};
template <typename V>
FATHOM_INLINE void loadRows(const double* turns, Rows<V>& r) {
  const auto row = [turns](std::size_t lane) -> const double* {
    return kTable.row[std::bit_cast<std::uint64_t>(turns[lane]) % kRows];
  };
  loadColumns(row, r.sine, r.sineTail, r.cosine, r.cosineTail);
}

// Adding it rounds to an integer, which then stands in the low bits. The second term keeps the bits
// above the lowest 34 as they are for all integers of the range below.
constexpr double kShift = 0x1.8p52 + 0x1p33;
constexpr double kStepsPerRadian = 81.48733086305042;

// The fast range, |k| < 2^33, and that of |k| < 2^11: the products of k with all parts of pi / 256
// but the last are exact.
constexpr double kFastRange = 0x1p26;
constexpr double kNearRange = 24.0;

// How much r may be off, through the last part of pi / 256, its product with k, and the last
// difference: k 2^-122 < |x| 2^-115, and in the near range k 2^-143. Angles are often the doubles
// next to multiples of pi / 2, where that must be little beside r.
template <bool near, typename V>
FATHOM_INLINE V angleError(const V& x) {
  if constexpr (near) {
    return V{} + 0x1p-132;
  } else {
    return rounded(magnitude(x) * 0x1p-115) + 0x1p-960;
  }
}

// r, with the terms of its sine and cosine beyond the leading ones.
template <typename V>
struct Angle {
  V high;
  V sine;    // sin r - high
  V cosine;  // cos r - 1
};

template <bool near, typename V>
FATHOM_INLINE void reduce(const V& x, const V& k, Angle<V>& angle) {
  V r, low;
  if constexpr (near) {
    const V first = x - rounded(k * kNearStepParts[0]);  // exact
    const V second = rounded(k * kNearStepParts[1]);
    const V third = rounded(k * kNearStepParts[2]);
    r = (first - second) - third;
    angle.high = leading26Bits(r);
    low = ((first - angle.high) - second) - third;
  } else {
    // Exact: multiples of 2^-52 |x| and of the last bit of a part, of diminishing size.
    const V first = (x - rounded(k * kStepParts[0])) - rounded(k * kStepParts[1]);
    const V third = rounded(k * kStepParts[2]);
    const V fourth = rounded(k * kStepParts[3]);
    r = (first - third) - fourth;
    angle.high = leading26Bits(r);
    low = ((first - angle.high) - third) - fourth;
  }
  // Taylor's series: the next terms are below 2^-77 |r| and 2^-74.
  const V square = rounded(r * r);
  const V fifth = 0x1.1111111111111p-7 - rounded(square * 0x1.a01a01a01a01ap-13);
  const V cubic = -0x1.5555555555555p-3 + rounded(square * fifth);
  angle.sine = low + rounded(rounded(r * square) * cubic);
  const V fourthOrder = 0x1.5555555555555p-5 - rounded(square * 0x1.6c16c16c16c17p-10);
  angle.cosine = rounded(square * (-0.5 + rounded(square * fourthOrder)));
}

// A sine or cosine as high + low, |low| < 2^-14 |high|. Its error is below kRelativeError |high| +
// angleError(). Most are roundings of S (cos r - 1) and of sums as small: with T = |S| r^2 / 2 <
// 2^-15.7 |S|, at most 8 x 2^-53 T for the first row, where |S| is up to 2 |sin x|, and 11 x 2^-53
// T for the others, where it is at most 4/3 |sin x|. For k = 0 there is no S, and the terms of
// third order take its place, with T < 2^-17 |r|. (2^-65.8 was seen.)
template <typename V>
struct Sum {
  V high, low;
};
constexpr double kRelativeError = 0x1.8p-65;

// first cos r + second sin r, or the difference.
template <bool minus, typename V>
FATHOM_INLINE void rotate(const V& first, const V& firstTail, const V& second, const V& secondTail,
                          const Angle<V>& angle, Sum<V>& sum) {
  const V leading = rounded(second * angle.high);
  const V cross = rounded(secondTail * angle.high);
  const V rest = rounded((second + secondTail) * angle.sine);
  sum.high = minus ? first - leading : first + leading;
  const V gone = first - sum.high;
  const V lost = minus ? gone - leading : gone + leading;
  const V small = minus ? ((lost + firstTail) - cross) - rest : ((lost + firstTail) + cross) + rest;
  sum.low = small + rounded((first + firstTail) * angle.cosine);
}
template <typename V>
FATHOM_INLINE void sine(const Rows<V>& row, const Angle<V>& angle, Sum<V>& sum) {
  rotate<false>(row.sine, row.sineTail, row.cosine, row.cosineTail, angle, sum);
}
template <typename V>
FATHOM_INLINE void cosine(const Rows<V>& row, const Angle<V>& angle, Sum<V>& sum) {
  rotate<true>(row.cosine, row.cosineTail, row.sine, row.sineTail, angle, sum);
}

template <typename V>
FATHOM_INLINE Bits<V> roundSum(const Sum<V>& sum, const V& angleError, V& value) {
  const V error = rounded(magnitude(sum.high) * kRelativeError) + angleError;
  return roundWithin(sum.high, sum.low, error, value);
}

// Quotient q of two sums. Its error is twice theirs, that of the angle times 1 + q^2, and less than
// 2^-66.5 |q| from the roundings here, of a remainder made of terms below 2^-13 of the dividend.
constexpr double kQuotientError = 0x1.bp-64;

template <typename V>
FATHOM_INLINE void divide(const Sum<V>& a, const Sum<V>& b, Sum<V>& quotient) {
  const V divisor = b.high + b.low;
  const V reciprocal = 1.0 / divisor;
  const V q = rounded((a.high + a.low) * reciprocal);
  const V qHead = leading26Bits(q), divisorHead = leading26Bits(b.high);
  const V divisorRest = (b.high - divisorHead) + b.low;
  const V remainder = ((a.high - rounded(qHead * divisorHead)) - rounded(qHead * divisorRest)) +
                      (a.low - rounded((q - qHead) * divisor));
  quotient.high = q;
  quotient.low = rounded(remainder * reciprocal);
}

enum class Function { kSine, kCosine, kSineCosine, kTangent };

// k + shiftOf<f> stands for k; its low bits for the row.
template <Function f>
constexpr double shiftOf = kShift + (f == Function::kCosine ? kQuarter : 0);

// The function of x in `value`, for sincos the cosine in `second`. Returns bits that are not 0
// where they are in doubt, as for a zero, whose sign is lost.
template <Function f, bool near, typename V>
FATHOM_INLINE Bits<V> evaluate(const V& x, const double* turns, V& value, V& second) {
  V k;
  std::memcpy(&k, turns, sizeof k);
  Rows<V> row;
  Angle<V> angle;
  Sum<V> sum;
  loadRows(turns, row);
  reduce<near>(x, k - shiftOf<f>, angle);
  sine(row, angle, sum);
  const V fromAngle = angleError<near>(x);
  if constexpr (f == Function::kTangent) {
    Sum<V> divisor, quotient;
    cosine(row, angle, divisor);
    divide(sum, divisor, quotient);
    const V& q = quotient.high;
    const V error =
        rounded(magnitude(q) * kQuotientError) + (rounded(rounded(q * q) * fromAngle) + fromAngle);
    return roundWithin(q, quotient.low, error, value);
  } else {
    Bits<V> doubt = roundSum(sum, fromAngle, value);
    if constexpr (f == Function::kSineCosine) {
      cosine(row, angle, sum);
      doubt |= roundSum(sum, fromAngle, second);
    }
    return doubt;
  }
}

// Lanes of a block, all in the fast range or, if `near`, in that.
template <std::size_t bytes, Function f, bool near>
FATHOM_INLINE bool evaluateLanes(const double* x, std::size_t n, const double* turns, double* y,
                                 double* z, std::uint64_t* doubts) {
  using V = Lanes<bytes>;
  Bits<V> any{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    V value, second;
    const Bits<V> doubt = evaluate<f, near>(vectorAt<V>(x + i), turns + i, value, second);
    store(y + i, value);
    if constexpr (f == Function::kSineCosine) store(z + i, second);
    storeBits(doubts + i, doubt);
    any |= doubt;
  }
  return anyBits(any);
}

// A block of an array form. First every k, so that the rows' indices come from memory. An argument
// beyond the fast range puts the whole block in doubt.
template <std::size_t bytes, Function f>
FATHOM_INLINE bool evaluateBlock(const double* x, std::size_t n, double* y, double* z,
                                 std::uint64_t* doubts) {
  using V = Lanes<bytes>;
  alignas(64) double turns[kElementaryBlock];
  V reached{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    const auto v = vectorAt<V>(x + i);
    reached = larger(magnitude(v), reached);
    store(turns + i, rounded(v * kStepsPerRadian) + shiftOf<f>);
  }
  double largest = 0.0;
  for (std::size_t lane = 0; lane < kLanesOf<bytes>; ++lane) {
    largest = larger(reached[lane], largest);
  }
  if (largest <= kNearRange) return evaluateLanes<bytes, f, true>(x, n, turns, y, z, doubts);
  if (largest <= kFastRange) return evaluateLanes<bytes, f, false>(x, n, turns, y, z, doubts);
  std::fill_n(doubts, n, 1);
  return true;
}

template <std::size_t bytes>
FATHOM_INLINE void evaluateBlockOf(Function f, const double* x, std::size_t n, double* y, double* z,
                                   std::uint64_t* doubts, bool& anyDoubt) {
  switch (f) {
    case Function::kSine:
      anyDoubt = evaluateBlock<bytes, Function::kSine>(x, n, y, z, doubts);
      break;
    case Function::kCosine:
      anyDoubt = evaluateBlock<bytes, Function::kCosine>(x, n, y, z, doubts);
      break;
    case Function::kSineCosine:
      anyDoubt = evaluateBlock<bytes, Function::kSineCosine>(x, n, y, z, doubts);
      break;
    case Function::kTangent:
      anyDoubt = evaluateBlock<bytes, Function::kTangent>(x, n, y, z, doubts);
      break;
  }
}
FATHOM_BY_WIDTH(evaluateBlock,
                (Function f, const double* x, std::size_t n, double* y, double* z,
                 std::uint64_t* doubts, bool& anyDoubt),
                (f, x, n, y, z, doubts, anyDoubt))

template <Function f>
FATHOM_INLINE bool evaluateScalar(double x, double& value, double& second) {
  const double turns = rounded(x * kStepsPerRadian) + shiftOf<f>;
  if (magnitude(x) <= kNearRange) return evaluate<f, true>(x, &turns, value, second) == 0;
  if (magnitude(x) <= kFastRange) return evaluate<f, false>(x, &turns, value, second) == 0;
  return false;
}

// What the fast path leaves in doubt: the same sums as double-doubles throughout.

// Below it, sin x and tan x round to x, and cos x to 1: what is missing of x is below 2^-55 x.
constexpr double kTiny = 0x1p-27;
// Products of two double-doubles with k are exact enough, and k has 47 bits.
constexpr double kCarefulRange = 0x1p40;
// The parts of S and C hold 79 bits, and nothing else is as far off.
constexpr double kCarefulError = 0x1p-75;

struct CarefulAngle {
  std::size_t row;
  DoubleDouble sine;    // sin r
  DoubleDouble cosine;  // cos r - 1
};

CarefulAngle reduceCarefully(double x) {
  const double turns = rounded(x * kStepsPerRadian) + 0x1.8p52;
  const double k = turns - 0x1.8p52;
  const DoubleDouble first = twoProduct(k, kLongStepParts[0]);
  const DoubleDouble second = twoProduct(k, kLongStepParts[1]);
  const DoubleDouble near = twoSum(x - first.high, -first.low);  // exact: x is near first.high
  const DoubleDouble rest{-second.high, -second.low - k * kLongStepParts[2]};
  const DoubleDouble r = near + rest;

  const DoubleDouble square = r * r;
  const double t = square.high;
  const double fifth =
      t * (0x1.1111111111111p-7 - t * (0x1.a01a01a01a01ap-13 - t * 0x1.71de3a556c734p-19));
  const double fourth =
      t * (0x1.5555555555555p-5 - t * (0x1.6c16c16c16c17p-10 - t * 0x1.a01a01a01a01ap-16));
  const DoubleDouble cubic = DoubleDouble{-0x1.5555555555555p-3, -0x1.5555555555555p-57} + fifth;
  const auto row = static_cast<std::size_t>(std::bit_cast<std::uint64_t>(turns) % kRows);
  return {row, r + r * (square * cubic), square * fastTwoSum(-0.5, fourth)};
}

// The sine `quarters` quarter turns ahead.
DoubleDouble carefulSine(const CarefulAngle& angle, std::size_t quarters) {
  const double* row = kTable.row[(angle.row + quarters * kQuarter) % kRows];
  const DoubleDouble s = fastTwoSum(row[0], row[1]);
  const DoubleDouble c = fastTwoSum(row[2], row[3]);
  return s + (c * angle.sine + s * angle.cosine);
}

double roundedSine(double x, const CarefulAngle& angle, std::size_t quarters,
                   double (*slow)(double)) {
  const DoubleDouble sum = carefulSine(angle, quarters);
  const RoundedResult result = roundedWithin(sum, fabs(sum.high) * kCarefulError);
  return result.doubt == 0 ? result.value : slow(x);
}

double carefulSine(double x) {
  if (fabs(x) < kTiny) return x;
  if (!(fabs(x) < kCarefulRange)) return slow::sin(x);
  return roundedSine(x, reduceCarefully(x), 0, slow::sin);
}

double carefulCosine(double x) {
  if (fabs(x) < kTiny) return 1.0;
  if (!(fabs(x) < kCarefulRange)) return slow::cos(x);
  return roundedSine(x, reduceCarefully(x), 1, slow::cos);
}

void carefulSineCosine(double x, double& s, double& c) {
  if (!(fabs(x) >= kTiny && fabs(x) < kCarefulRange)) {
    s = carefulSine(x);
    c = carefulCosine(x);
    return;
  }
  const CarefulAngle angle = reduceCarefully(x);
  s = roundedSine(x, angle, 0, slow::sin);
  c = roundedSine(x, angle, 1, slow::cos);
}

double carefulTangent(double x) {
  if (fabs(x) < kTiny) return x;
  if (!(fabs(x) < kCarefulRange)) return slow::tan(x);
  const CarefulAngle angle = reduceCarefully(x);
  const DoubleDouble s = carefulSine(angle, 0);
  const DoubleDouble c = carefulSine(angle, 1);
  const double q = s.high / c.high;
  const DoubleDouble product = c * q;
  const DoubleDouble remainder = s + DoubleDouble{-product.high, -product.low};
  const DoubleDouble quotient = fastTwoSum(q, remainder.high / c.high);
  const RoundedResult result = roundedWithin(quotient, fabs(q) * (3 * kCarefulError));
  return result.doubt == 0 ? result.value : slow::tan(x);
}

// y[i] = f(x[i]), with `careful` for what is in doubt.
void evaluateArray(Function f, double (*careful)(double), const double* x, std::size_t n,
                   double* y) {
  const auto fast = [f](const double* argument, std::size_t count, double* value,
                        std::uint64_t* doubt, bool& any) {
    evaluateBlock(f, argument, count, value, nullptr, doubt, any);
  };
  fathom::evaluateArray(x, n, y, fast, careful);
}

}  // namespace

double sin(double x) {
  double y, unused;
  if (evaluateScalar<Function::kSine>(x, y, unused)) [[likely]]
    return y;
  return carefulSine(x);
}

double cos(double x) {
  double y, unused;
  if (evaluateScalar<Function::kCosine>(x, y, unused)) [[likely]]
    return y;
  return carefulCosine(x);
}

void sincos(double x, double& s, double& c) {
  if (evaluateScalar<Function::kSineCosine>(x, s, c)) [[likely]]
    return;
  carefulSineCosine(x, s, c);
}

double tan(double x) {
  double y, unused;
  if (evaluateScalar<Function::kTangent>(x, y, unused)) [[likely]]
    return y;
  return carefulTangent(x);
}

void sin(const double* x, std::size_t n, double* s) {
  evaluateArray(Function::kSine, carefulSine, x, n, s);
}

void cos(const double* x, std::size_t n, double* c) {
  evaluateArray(Function::kCosine, carefulCosine, x, n, c);
}

void tan(const double* x, std::size_t n, double* t) {
  evaluateArray(Function::kTangent, carefulTangent, x, n, t);
}

void sincos(const double* x, std::size_t n, double* s, double* c) {
  using Block = ElementaryBlock<1, 2>;
  evaluateArrays<1, 2>(
      {x}, n, {s, c},
      [](Block& b, std::size_t count) {
        bool any = false;
        evaluateBlock(Function::kSineCosine, b.argument[0], count, b.value[0], b.value[1], b.doubt,
                      any);
        return any;
      },
      [](Block& b, std::size_t i) {
        carefulSineCosine(b.argument[0][i], b.value[0][i], b.value[1][i]);
      });
}

}  // namespace fathom
