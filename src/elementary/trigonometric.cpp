// sin, cos, sincos and tan, correctly rounded.
//
// The reduction and its rotation are those of trigonometric_core.hpp; tan is a quotient of two such
// sums. The same lines serve one double and a vector of them. The few results whose rounding they
// leave in doubt are found again with one more term exact, and where that does not settle it by
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
#include "elementary/trigonometric_core.hpp"
#include "elementary/trigonometric_table.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

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
  SineRows<V> row;
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

// What the fast path leaves in doubt: the same rotation, with one more term of it exact and what is
// left below 2^-24 of S and C.

// Below it, sin x and tan x round to x, and cos x to 1: what is missing of x is below 2^-55 x.
constexpr double kTiny = 0x1p-27;
// k has 47 bits.
constexpr double kCarefulRange = 0x1p40;

// r = high + low, where high has 26 bits, and how much that may be off.
struct CarefulAngle {
  std::size_t row;
  double high, low;
  double error;
};

// For k of up to 47 bits. The error is that of the last product, below 2^-122, and of sums of the
// low halves, which are below 2^-59.
void reduceLong(double x, double k, CarefulAngle& angle) {
  const DoubleDouble first = twoProduct(k, kLongStepParts[0]);
  const DoubleDouble second = twoProduct(k, kLongStepParts[1]);
  const DoubleDouble near = twoSum(x - first.high, -first.low);  // exact: x is near first.high
  const DoubleDouble rest{-second.high, -second.low - rounded(k * kLongStepParts[2])};
  const DoubleDouble r = near + rest;
  angle.high = leading26Bits(r.high);
  angle.low = (r.high - angle.high) + r.low;
  angle.error = 0x1p-110;
}

CarefulAngle reduceCarefully(double x) {
  const double turns = rounded(x * kStepsPerRadian) + kShift;
  const double k = turns - kShift;
  CarefulAngle angle;
  angle.row = static_cast<std::size_t>(std::bit_cast<std::uint64_t>(turns) % kSineRows);
  double r;
  if (magnitude(x) <= kNearRange) {
    reduce<true>(x, k, r, angle.high, angle.low);
    angle.error = angleError<true>(x);
  } else if (magnitude(x) <= kFastRange) {
    reduce<false>(x, k, r, angle.high, angle.low);
    angle.error = angleError<false>(x);
  } else {
    reduceLong(x, k, angle);
  }
  return angle;
}

// A sine or cosine as high + low, and how much that may be off.
struct CarefulSum {
  double high, low;
  double error;
};

// The sine `quarters` quarter turns ahead: S + C h - S h^2 / 2, exact as high and what it lost, and
//   C (l + sin r - r) + S (cos r - 1 + h^2 / 2)
// with r = h + l. Error: of the term of C, below 2^-24.4, at most 14 roundings to 53 bits, and
// 2^-76 of the result where its two parts cancel, which they do for S = 0 alone; of all others,
// which are below 2^-25 |S|, and of l, less than 2^-76 of the result.
CarefulSum carefulSine(const CarefulAngle& angle, std::size_t quarters) {
  const double* row = kSineTable.row[(angle.row + quarters * kQuarter) % kSineRows];
  const double s = row[0], sTail = row[1], c = row[2], cTail = row[3];
  const double h = angle.high, l = angle.low;
  const double hSquare = rounded(h * h);  // exact
  const double hSquareHead = leading26Bits(hSquare);

  const double lead = rounded(c * h);
  const double sum = s + lead;
  const double quadratic = rounded(-0.5 * s * hSquareHead);
  const double high = sum + quadratic;
  const double lost = ((s - sum) + lead) + ((sum - high) + quadratic);

  const double r = h + l;
  const double square = rounded(r * r);
  double cubic, fourth;
  longSeries(square, cubic, fourth);

  const double ofCosine = rounded((c + cTail) * (l + rounded(rounded(r * square) * cubic)));
  const double even = rounded(rounded(square * square) * fourth) - rounded(l * (h + 0.5 * l));
  const double ofSine = rounded((s + sTail) * (even - 0.5 * (hSquare - hSquareHead)));
  const double ofTails = rounded(cTail * h) - rounded(sTail * (0.5 * hSquareHead));
  const double low = (lost + (ofTails + ofSine)) + (sTail + ofCosine);
  return {
      high, low,
      (rounded(magnitude(high) * 0x1p-75) + rounded(magnitude(ofCosine) * 0x1p-49)) + angle.error};
}

double roundedSine(double x, const CarefulAngle& angle, std::size_t quarters,
                   double (*slow)(double)) {
  const CarefulSum sum = carefulSine(angle, quarters);
  double value;
  return roundWithin(sum.high, sum.low, sum.error, value) == 0 ? value : slow(x);
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

// The quotient's error is the sum of the two relative ones, and 2^-98 from the arithmetic here.
double carefulTangent(double x) {
  if (fabs(x) < kTiny) return x;
  if (!(fabs(x) < kCarefulRange)) return slow::tan(x);
  const CarefulAngle angle = reduceCarefully(x);
  const CarefulSum sine = carefulSine(angle, 0);
  const CarefulSum cosine = carefulSine(angle, 1);
  const DoubleDouble s = fastTwoSum(sine.high, sine.low);
  const DoubleDouble c = fastTwoSum(cosine.high, cosine.low);
  const double q = s.high / c.high;
  const DoubleDouble product = c * q;
  const DoubleDouble remainder = s + DoubleDouble{-product.high, -product.low};
  const DoubleDouble quotient = fastTwoSum(q, remainder.high / c.high);
  const double relative = (sine.error / fabs(s.high) + cosine.error / fabs(c.high)) + 0x1p-98;
  const RoundedResult result = roundedWithin(quotient, fabs(q) * relative * 0x1.01p0);
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
