// atan, atan2 and acos, correctly rounded: the fast path of atan2, which is the careful path of the
// two others. Theirs is in fast_inverse_trigonometric.hpp.
//
// Reduction: with 0 <= t = small / big <= 1, the quotient of the coordinates' magnitudes, and
// c = j / 256 the multiple of 1 / 256 nearest to t,
//
//   atan(t) = atan(c) + atan(u),   u = (small - c big) / (big + c small),   |u| <= 2^-9.
//
// c has nine bits, so that its products are exact by halves; small - c big is exact but for the low
// half, by Sterbenz' lemma. atan(c) is a row of the table, and atan(u) = u - u^3/3 + u^5/5 - u^7/7.
// The octant adds a multiple of pi/2, and never cancels.
//
// Error, relative to the result, in units of 2^-70: five roundings of the polynomial, whose terms
// beyond u are at most 2^-19.5 |u|, 0.9; the low half of u that is left out of the cube 1; three
// sums of the polynomial with the other low halves and one of the rounding test 0.7; the term
// u^9/9, the quotient, and the table less than 0.1. Together below 2.75.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "elementary/array_form.hpp"
#include "elementary/double_double.hpp"
#include "elementary/fast_inverse_trigonometric.hpp"
#include "elementary/inverse_trigonometric_table.hpp"
#include "elementary/slow.hpp"
#include "elementary/table_rows.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

constexpr double kRelativeError = 0x1.6p-69;
// Adding it rounds to a multiple of 1 / 256, whose number then stands in the low bits.
constexpr double kToRow = 0x1.8p44;
// Coordinates for which no part of a product under- or overflows.
constexpr double kSmallest = 0x1p-400;
constexpr double kLargest = 0x1p400;

constexpr DoubleDouble kStraight = {2.0 * kHalfPi.high, 2.0 * kHalfPi.low};

// As many rows as the bits of an index name: arguments that are not served need one, too.
constexpr std::size_t kRows = 512;
struct RowTable {
  alignas(64) double row[kRows][2];
};
constexpr RowTable kTable = [] {
  RowTable t{};
  for (std::size_t j = 0; j < std::size(kArctangent); ++j) {
    t.row[j][0] = kArctangent[j][0];
    t.row[j][1] = kArctangent[j][1];
  }
  return t;
}();

template <typename V>
struct Row {
  V angle, tail;
};
// The row that the low bits of `shifted` name.
template <typename V>
FATHOM_INLINE void loadRow(const double* shifted, Row<V>& r) {
  const auto row = [shifted](std::size_t lane) -> const double* {
    return kTable.row[std::bit_cast<std::uint64_t>(shifted[lane]) % kRows];
  };
  loadColumns(row, r.angle, r.tail);
}

// V is double or a vector of doubles. A point (x, y), y >= 0, as the smaller and the larger of |x|
// and y, and where that is x. The tails of the two are left out if `tails` is not set.
template <typename V>
struct Point {
  V small, big;
  V smallTail, bigTail;
  Bits<V> steep;
};

template <typename V>
FATHOM_INLINE V shiftedRatio(const V& small, const V& big) {
  return small / big + kToRow;
}

// The angle in [0, pi] as high + low. x is that of the point, for its sign.
template <bool tails, typename V>
FATHOM_INLINE void angle(const Point<V>& point, const V& x, const double* shifted, V& high,
                         V& low) {
  Row<V> row;
  loadRow(shifted, row);
  V c;
  load(c, shifted);
  c = c - kToRow;

  // small - c big, exact as a sum of two, and big + c small to 2^-105, as the sum of two that
  // overlap.
  const V &small = point.small, &big = point.big;
  const V bigHead = leading26Bits(big), smallHead = leading26Bits(small);
  const V difference = small - rounded(c * bigHead);
  V differenceTail = rounded(-c * (big - bigHead));
  const V product = rounded(c * smallHead);
  const V sum = big + product;
  V sumTail = ((big - sum) + product) + rounded(c * (small - smallHead));
  if constexpr (tails) {
    differenceTail += point.smallTail - rounded(c * point.bigTail);
    sumTail += point.bigTail + rounded(c * point.smallTail);
  }

  // u, to 2^-77, and its series.
  const V divisor = sum + sumTail;
  const V reciprocal = 1.0 / divisor;
  const V u = rounded((difference + differenceTail) * reciprocal);
  const V uHead = leading26Bits(u), divisorHead = leading26Bits(divisor);
  const V divisorRest = (sum - divisorHead) + sumTail;
  const V remainder = ((difference - rounded(uHead * divisorHead)) +
                       (differenceTail - rounded(uHead * divisorRest))) -
                      rounded((u - uHead) * divisor);
  const V square = rounded(u * u);
  const V series = -1.0 / 3.0 + rounded(square * (0.2 - rounded(square * (1.0 / 7.0))));
  const V uTail = rounded(remainder * reciprocal) + rounded(rounded(u * square) * series);

  // In the four octants of the upper half plane: a, pi/2 - a, pi/2 + a, pi - a.
  const V a = row.angle + u;
  const V aTail = ((row.angle - a) + u) + (row.tail + uTail);
  const auto xBits = std::bit_cast<Bits<V>>(x);
  const Bits<V> sense = (point.steep ^ xBits) & kSignBit;
  const Bits<V> back = (std::uint64_t{0} - (xBits >> 63)) & ~point.steep;
  const auto base = std::bit_cast<V>((point.steep & std::bit_cast<std::uint64_t>(kHalfPi.high)) |
                                     (back & std::bit_cast<std::uint64_t>(kStraight.high)));
  const auto baseTail = std::bit_cast<V>((point.steep & std::bit_cast<std::uint64_t>(kHalfPi.low)) |
                                         (back & std::bit_cast<std::uint64_t>(kStraight.low)));
  const auto part = std::bit_cast<V>(std::bit_cast<Bits<V>>(a) ^ sense);
  const auto partTail = std::bit_cast<V>(std::bit_cast<Bits<V>>(aTail) ^ sense);
  high = base + part;
  low = ((base - high) + part) + (baseTail + partTail);
}

template <bool tails, typename V>
FATHOM_INLINE Bits<V> roundedAngle(const Point<V>& point, const V& x, const double* shifted,
                                   V& value) {
  V high, low;
  angle<tails>(point, x, shifted, high, low);
  return roundWithin(high, low, rounded(kRelativeError * high), value);
}

// Not 0 unless each magnitude is in the range or 0, and one is not 0. The bits of magnitudes are
// ordered as these are, NaN last.
FATHOM_INLINE std::uint64_t outsideRange(double magnitude) {
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  return (std::bit_cast<std::uint64_t>(kLargest) - bits) |
         ((bits - std::bit_cast<std::uint64_t>(kSmallest)) & ~(bits - 1));
}
FATHOM_INLINE std::uint64_t outsideRange(double y, double x) {
  const auto bothZero = (std::bit_cast<std::uint64_t>(y) | std::bit_cast<std::uint64_t>(x)) - 1;
  return (outsideRange(y) | outsideRange(x) | bothZero) & kSignBit;
}

template <typename V>
FATHOM_INLINE V withSignOf(const V& sign, const V& magnitude) {
  return std::bit_cast<V>(std::bit_cast<Bits<V>>(magnitude) ^
                          (std::bit_cast<Bits<V>>(sign) & kSignBit));
}

RoundedResult fastAtan2(double y, double x) {
  const double yMagnitude = magnitude(y), xMagnitude = magnitude(x);
  const Point<double> point = {smaller(xMagnitude, yMagnitude), larger(xMagnitude, yMagnitude), 0.0,
                               0.0, bitsWhereLess(xMagnitude, yMagnitude)};
  const double shifted = shiftedRatio(point.small, point.big);
  double value;
  const std::uint64_t doubt = roundedAngle<false>(point, x, &shifted, value);
  return {withSignOf(y, value), doubt | outsideRange(yMagnitude, xMagnitude)};
}

// The careful paths stay out of line, where they cost the fast ones no registers.
[[gnu::noinline]] double carefulAtan(double x) {
  const RoundedResult result = fastAtan2(x, 1.0);
  return result.doubt == 0 ? result.value : slow::atan(x);
}

// The angle of (x, sqrt(1 - x^2)).
[[gnu::noinline]] double carefulAcos(double x) {
  const DoubleDouble square = fastTwoSum(1.0, -x) * fastTwoSum(1.0, x);
  const double root = sqrt(square.high);
  const DoubleDouble rootSquare = twoProduct(root, root);
  const double tail =
      (((square.high - rootSquare.high) - rootSquare.low) + square.low) / (2.0 * root);
  const double base = magnitude(x);
  const bool steep = base < root;
  const Point<double> point = {steep ? base : root, steep ? root : base, steep ? 0.0 : tail,
                               steep ? tail : 0.0, bitsWhereLess(base, root)};
  const double shifted = shiftedRatio(point.small, point.big);
  double value;
  const std::uint64_t doubt = roundedAngle<true>(point, x, &shifted, value);
  // Beyond 1 the root is NaN.
  return (doubt | outsideBits(x, 0x1.fffffffffffffp-1)) == 0 ? value : slow::acos(x);
}

// A block of the array form. First the ratios, so that the rows' indices come from memory.
template <std::size_t bytes>
FATHOM_INLINE void atan2BlockOf(const double* y, const double* x, std::size_t n, double* result,
                                std::uint64_t* doubts, bool& anyDoubt) {
  using V = Lanes<bytes>;
  alignas(64) double shifted[kElementaryBlock];
  Bits<V> signs{};
  const auto leastRoom = [](const Bits<V>& bits) -> Bits<V> {
    return (std::bit_cast<std::uint64_t>(kLargest) - bits) |
           (bits - std::bit_cast<std::uint64_t>(kSmallest));
  };
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    const V u = magnitude(vectorAt<V>(x + i)), v = magnitude(vectorAt<V>(y + i));
    signs |= leastRoom(std::bit_cast<Bits<V>>(u)) | leastRoom(std::bit_cast<Bits<V>>(v));
    store(shifted + i, shiftedRatio(smaller(u, v), larger(u, v)));
  }
  Bits<V> any{};
  for (std::size_t i = 0; i < n; i += kLanesOf<bytes>) {
    V u, v, value;
    load(u, x + i);
    load(v, y + i);
    const V xMagnitude = magnitude(u), yMagnitude = magnitude(v);
    Point<V> point;
    point.small = smaller(xMagnitude, yMagnitude);
    point.big = larger(xMagnitude, yMagnitude);
    point.steep = bitsWhereLess(xMagnitude, yMagnitude);
    const Bits<V> doubt = roundedAngle<false>(point, u, shifted + i, value);
    store(result + i, withSignOf(v, value));
    storeBits(doubts + i, doubt);
    any |= doubt;
  }
  anyDoubt = anyBits(any);
  if (!anyBits(signs & kSignBit)) return;
  // Zeros among them, which outsideRange() lets pass.
  for (std::size_t i = 0; i < n; ++i) {
    doubts[i] |= outsideRange(magnitude(y[i]), magnitude(x[i]));
    anyDoubt |= doubts[i] != 0;
  }
}
FATHOM_BY_WIDTH(atan2Block,
                (const double* y, const double* x, std::size_t n, double* result,
                 std::uint64_t* doubts, bool& anyDoubt),
                (y, x, n, result, doubts, anyDoubt))

}  // namespace

double atan2(double y, double x) {
  const RoundedResult result = fastAtan2(y, x);
  return result.doubt == 0 ? result.value : slow::atan2(y, x);
}

double atan(double x) {
  const RoundedResult result = fastAtan(magnitude(x));
  return result.doubt == 0 ? withSignOf(x, result.value) : carefulAtan(x);
}

double acos(double x) {
  const RoundedResult result = fastAcos(x);
  return result.doubt == 0 ? result.value : carefulAcos(x);
}

void atan2(const double* y, const double* x, std::size_t n, double* angle) {
  using Block = ElementaryBlock<2, 1>;
  evaluateArrays<2, 1>(
      {y, x}, n, {angle},
      [](Block& b, std::size_t count) {
        bool any = false;
        atan2Block(b.argument[0], b.argument[1], count, b.value[0], b.doubt, any);
        return any;
      },
      [](Block& b, std::size_t i) {
        b.value[0][i] = slow::atan2(b.argument[0][i], b.argument[1][i]);
      });
}

}  // namespace fathom
