// sin, cos, sincos and tan, correctly rounded.
//
// The reduction and its rotation are those of trigonometric_core.hpp; tan is a quotient of two such
// sums. The same lines serve one double and a vector of them. What they leave in doubt is
// careful::'s.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "elementary/array_form.hpp"
#include "elementary/careful.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/trigonometric_core.hpp"
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
  return careful::sin(x);
}

double cos(double x) {
  double y, unused;
  if (evaluateScalar<Function::kCosine>(x, y, unused)) [[likely]]
    return y;
  return careful::cos(x);
}

void sincos(double x, double& s, double& c) {
  if (evaluateScalar<Function::kSineCosine>(x, s, c)) [[likely]]
    return;
  careful::sincos(x, s, c);
}

double tan(double x) {
  double y, unused;
  if (evaluateScalar<Function::kTangent>(x, y, unused)) [[likely]]
    return y;
  return careful::tan(x);
}

void sin(const double* x, std::size_t n, double* s) {
  evaluateArray(Function::kSine, careful::sin, x, n, s);
}

void cos(const double* x, std::size_t n, double* c) {
  evaluateArray(Function::kCosine, careful::cos, x, n, c);
}

void tan(const double* x, std::size_t n, double* t) {
  evaluateArray(Function::kTangent, careful::tan, x, n, t);
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
        careful::sincos(b.argument[0][i], b.value[0][i], b.value[1][i]);
      });
}

}  // namespace fathom
