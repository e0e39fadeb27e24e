// What the fast path of sin, cos and tan leaves in doubt: the same rotation, with one more term of
// it exact and what is left below 2^-24 of S and C.
#include <bit>
#include <cstddef>
#include <cstdint>

#include "elementary/careful.hpp"
#include "elementary/double_double.hpp"
#include "elementary/slow.hpp"
#include "elementary/trigonometric_core.hpp"
#include "elementary/trigonometric_table.hpp"
#include "elementary/vector.hpp"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace fathom::careful {
namespace {

// Below it, sin x and tan x round to x, and cos x to 1: what is missing of x is below 2^-55 x.
constexpr double kTiny = 0x1p-27;
// k has 47 bits.
constexpr double kRange = 0x1p40;

// r = high + low, where high has 26 bits, and how much that may be off.
struct SplitAngle {
  std::size_t row;
  double high, low;
  double error;
};

// For k of up to 47 bits. The error is that of the last product, below 2^-122, and of sums of the
// low halves, which are below 2^-59.
void reduceLong(double x, double k, SplitAngle& angle) {
  const DoubleDouble first = twoProduct(k, kLongStepParts[0]);
  const DoubleDouble second = twoProduct(k, kLongStepParts[1]);
  const DoubleDouble near = twoSum(x - first.high, -first.low);  // exact: x is near first.high
  const DoubleDouble rest{-second.high, -second.low - rounded(k * kLongStepParts[2])};
  const DoubleDouble r = near + rest;
  angle.high = leading26Bits(r.high);
  angle.low = (r.high - angle.high) + r.low;
  angle.error = 0x1p-110;
}

SplitAngle reduced(double x) {
  const double turns = rounded(x * kStepsPerRadian) + kShift;
  const double k = turns - kShift;
  SplitAngle angle;
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
struct BoundedSum {
  double high, low;
  double error;
};

// The sine `quarters` quarter turns ahead: S + C h - S h^2 / 2, exact as high and what it lost, and
//   C (l + sin r - r) + S (cos r - 1 + h^2 / 2)
// with r = h + l. Error: of the term of C, below 2^-24.4, at most 14 roundings to 53 bits, and
// 2^-76 of the result where its two parts cancel, which they do for S = 0 alone; of all others,
// which are below 2^-25 |S|, and of l, less than 2^-76 of the result.
BoundedSum sineAhead(const SplitAngle& angle, std::size_t quarters) {
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

double roundedSine(double x, const SplitAngle& angle, std::size_t quarters,
                   double (*slow)(double)) {
  const BoundedSum sum = sineAhead(angle, quarters);
  double value;
  return roundWithin(sum.high, sum.low, sum.error, value) == 0 ? value : slow(x);
}

}  // namespace

double sin(double x) {
  if (fabs(x) < kTiny) return x;
  if (!(fabs(x) < kRange)) return slow::sin(x);
  return roundedSine(x, reduced(x), 0, slow::sin);
}

double cos(double x) {
  if (fabs(x) < kTiny) return 1.0;
  if (!(fabs(x) < kRange)) return slow::cos(x);
  return roundedSine(x, reduced(x), 1, slow::cos);
}

void sincos(double x, double& s, double& c) {
  if (!(fabs(x) >= kTiny && fabs(x) < kRange)) {
    s = sin(x);
    c = cos(x);
    return;
  }
  const SplitAngle angle = reduced(x);
  s = roundedSine(x, angle, 0, slow::sin);
  c = roundedSine(x, angle, 1, slow::cos);
}

// The quotient's error is the sum of the two relative ones, and 2^-98 from the arithmetic here.
double tan(double x) {
  if (fabs(x) < kTiny) return x;
  if (!(fabs(x) < kRange)) return slow::tan(x);
  const SplitAngle angle = reduced(x);
  const BoundedSum sine = sineAhead(angle, 0);
  const BoundedSum cosine = sineAhead(angle, 1);
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

}  // namespace fathom::careful
