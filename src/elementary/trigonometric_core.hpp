// Sine and cosine as a table's row and a rotation by a small angle, for sin, cos, sincos and tan.
//
// Reduction: x = k pi / 256 + r with |r| < pi / 512 (1 + 2^-18), for |x| to 2^26. With the sine S
// and cosine C of k pi / 256 from a table,
//   sin x = S + C r + (C (sin r - r) + S (cos r - 1));
// the row k + 128, a quarter turn on, gives cos x. r = high + low, where high has 26 bits; so have
// the leading parts of S and C, hence S + C high is exact as a sum of two doubles. What is left is
// below 2^-14 of the result, and plain doubles do.
#ifndef FATHOM_ELEMENTARY_TRIGONOMETRIC_CORE_HPP
#define FATHOM_ELEMENTARY_TRIGONOMETRIC_CORE_HPP

#include <bit>
#include <cstddef>
#include <cstdint>

#include "elementary/table_rows.hpp"
#include "elementary/trigonometric_table.hpp"
#include "elementary/vector.hpp"
#include "frame/multiversion.hpp"

namespace fathom {

inline constexpr std::size_t kSineRows = 512;
inline constexpr std::size_t kQuarter = kSineRows / 4;

// Rows of sine and cosine, each as a part of 26 bits and a tail.
struct SineTable {
  alignas(64) double row[kSineRows][4];
};
inline constexpr SineTable kSineTable = [] {
  SineTable t{};
  for (std::size_t k = 0; k < kSineRows; ++k) {
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
struct SineRows {
  V sine, sineTail, cosine, cosineTail;
};
template <typename V>
FATHOM_INLINE void loadRows(const double* turns, SineRows<V>& r) {
  const auto row = [turns](std::size_t lane) -> const double* {
    return kSineTable.row[std::bit_cast<std::uint64_t>(turns[lane]) % kSineRows];
  };
  loadColumns(row, r.sine, r.sineTail, r.cosine, r.cosineTail);
}

// Adding it rounds to an integer, which then stands in the low bits. The second term keeps the bits
// above the lowest 34 as they are for all integers of the range below.
inline constexpr double kShift = 0x1.8p52 + 0x1p33;
inline constexpr double kStepsPerRadian = 81.48733086305042;

// The fast range, |k| < 2^33, and that of |k| < 2^11: the products of k with all parts of pi / 256
// but the last are exact.
inline constexpr double kFastRange = 0x1p26;
inline constexpr double kNearRange = 24.0;

// How much r may be off, through the last part of pi / 256, its product with k, and the last
// difference: k 2^-122 < |x| 2^-115, and in the near range k 2^-143. Angles are often the doubles
// next to multiples of pi / 2, where that must be little beside r. (Where |r| < 2^-70 |x|, so small
// that the difference with its leading bits is not exact, this bound puts the result in doubt. In
// the near range no double but 0 comes closer to a multiple than 2^-54.)
template <bool near, typename V>
FATHOM_INLINE V angleError(const V& x) {
  if constexpr (near) {
    return inAllLanes<V>(0x1p-132);
  } else {
    return rounded(magnitude(x) * 0x1p-115) + 0x1p-960;
  }
}

// r = high + low, where high has 26 bits.
template <bool near, typename V>
FATHOM_INLINE void reduce(const V& x, const V& k, V& r, V& high, V& low) {
  if constexpr (near) {
    const V first = x - rounded(k * kNearStepParts[0]);  // exact
    const V second = rounded(k * kNearStepParts[1]);
    const V third = rounded(k * kNearStepParts[2]);
    r = (first - second) - third;
    high = leading26Bits(r);
    low = ((first - high) - second) - third;
  } else {
    // Exact: multiples of 2^-52 |x| and of the last bit of a part, of diminishing size.
    const V first = (x - rounded(k * kStepParts[0])) - rounded(k * kStepParts[1]);
    const V third = rounded(k * kStepParts[2]);
    const V fourth = rounded(k * kStepParts[3]);
    r = (first - third) - fourth;
    high = leading26Bits(r);
    low = ((first - high) - third) - fourth;
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
  reduce<near>(x, k, r, angle.high, low);
  // Taylor's series: the next terms are below 2^-77 |r| and 2^-74.
  const V square = rounded(r * r);
  const V fifth = 0x1.1111111111111p-7 - rounded(square * 0x1.a01a01a01a01ap-13);
  const V cubic = -0x1.5555555555555p-3 + rounded(square * fifth);
  angle.sine = low + rounded(rounded(r * square) * cubic);
  const V fourthOrder = 0x1.5555555555555p-5 - rounded(square * 0x1.6c16c16c16c17p-10);
  angle.cosine = rounded(square * (-0.5 + rounded(square * fourthOrder)));
}

// Longer series, of square = r^2: (sin r - r) / r^3 and (cos r - 1 + r^2 / 2) / r^4. What is left
// out of the sine and cosine is below 2^-72 |r| and 2^-69 for |r| < 0.037.
template <typename V>
FATHOM_INLINE void longSeries(const V& square, V& cubic, V& fourth) {
  const V seventh = -0x1.a01a01a01a01ap-13 + rounded(square * 0x1.71de3a556c734p-19);
  const V fifth = 0x1.1111111111111p-7 + rounded(square * seventh);
  cubic = -0x1.5555555555555p-3 + rounded(square * fifth);
  const V sixth = -0x1.6c16c16c16c17p-10 + rounded(square * 0x1.a01a01a01a01ap-16);
  fourth = 0x1.5555555555555p-5 + rounded(square * sixth);
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
inline constexpr double kRelativeError = 0x1.8p-65;

// first cos r + second sin r, or the difference. Each is a part of 26 bits and a tail, and comes
// with their sum.
template <bool minus, typename V>
FATHOM_INLINE void rotate(const V& first, const V& firstTail, const V& firstSum, const V& second,
                          const V& secondTail, const V& secondSum, const Angle<V>& angle,
                          Sum<V>& sum) {
  const V leading = rounded(second * angle.high);
  const V cross = rounded(secondTail * angle.high);
  const V rest = rounded(secondSum * angle.sine);
  sum.high = minus ? first - leading : first + leading;
  const V gone = first - sum.high;
  const V lost = minus ? gone - leading : gone + leading;
  const V small = minus ? ((lost + firstTail) - cross) - rest : ((lost + firstTail) + cross) + rest;
  sum.low = small + rounded(firstSum * angle.cosine);
}
template <typename V>
FATHOM_INLINE void sine(const SineRows<V>& row, const Angle<V>& angle, Sum<V>& sum) {
  rotate<false>(row.sine, row.sineTail, V(row.sine + row.sineTail), row.cosine, row.cosineTail,
                V(row.cosine + row.cosineTail), angle, sum);
}
template <typename V>
FATHOM_INLINE void cosine(const SineRows<V>& row, const Angle<V>& angle, Sum<V>& sum) {
  rotate<true>(row.cosine, row.cosineTail, V(row.cosine + row.cosineTail), row.sine, row.sineTail,
               V(row.sine + row.sineTail), angle, sum);
}

template <typename V>
FATHOM_INLINE Bits<V> roundSum(const Sum<V>& sum, const V& angleError, V& value) {
  const V error = rounded(magnitude(sum.high) * kRelativeError) + angleError;
  return roundWithin(sum.high, sum.low, error, value);
}

}  // namespace fathom

#endif
