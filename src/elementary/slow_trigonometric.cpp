// Slow paths of sin, cos, tan and their inverses: reduction modulo pi/2 and Taylor series in
// several limbs.
#include <bit>
#include <cstdint>
#include <limits>

#include "elementary/slow.hpp"
#include "elementary/wide.hpp"
#include "elementary/wide_series.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kHalfPi = kPi / 2;

// |x| = quadrant pi/2 + angle, modulo 2 pi, with |angle| <= pi/4 (or a little more, where that
// rounds to x).
template <int n>
struct Reduced {
  Wide<n> angle;
  unsigned quadrant;
};

// As Payne & Hanek (1983): |x| = m 2^e times those limbs of 2/pi whose products with it count
// modulo 4. No double comes nearer to a multiple of pi/2 than 2^-61, so the n + 3 limbs leave an
// error below 2^(-64 n - 12) of the angle, and the multiplication by pi/2 one of 2^(4 - 64 n).
template <int n>
Reduced<n> reduce(double x) {
  const double magnitude = fathom::fabs(x);
  if (magnitude < kHalfPi / 2) return {Wide<n>(magnitude), 0};
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  const std::uint64_t m = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
  const int e = static_cast<int>(bits >> 52) - 1075;
  constexpr int kUsed = n + 3;
  const int first = e < 2 ? 0 : (e - 2) / 64;
  Fixed<kUsed + 1> turns{};
  std::uint64_t carry = 0;
  for (int i = 0; i < kUsed; ++i) {
    const LimbPair part = multiplyAdd(kTwoOverPiLimbs[first + kUsed - 1 - i], m, carry, 0);
    turns.limb[i] = part.low;
    carry = part.high;
  }
  turns.limb[kUsed] = carry;
  // Two bits before the point, which are the quadrant; then none.
  turns = turns << (62 + e - 64 * first);
  unsigned quadrant = static_cast<unsigned>(turns.limb[kUsed] >> 62);
  turns = turns << 2;
  const bool above = (turns.limb[kUsed] >> 63) != 0;
  if (above) {
    turns = Fixed<kUsed + 1>{} - turns;
    quadrant = (quadrant + 1) & 3;
  }
  return {Wide<n>(turns, 0, above) * kWideHalfPi<n>, quadrant};
}

// Terms of the series of sin and cos up to a power k = 10 n + 16 of pi/4: (pi/4)^k / k! is below
// 2^(-64 n) for n up to 6.
template <int n>
inline constexpr int kSineTerms = 5 * n + 8;

// Both of |r| < 1, to within 2^(5 - 64 n), relative.
template <int n>
Wide<n> sine(const Wide<n>& r) {
  const Fixed<n> x = r.toFixed();
  const Fixed<n> series = powerSeries(kInverseFactorials<n>, 1, 2, kSineTerms<n>, x * x, true);
  return r * Wide<n>(series, 1);
}
template <int n>
Wide<n> cosine(const Wide<n>& r) {
  const Fixed<n> x = r.toFixed();
  return Wide<n>(powerSeries(kInverseFactorials<n>, 0, 2, kSineTerms<n>, x * x, true), 1);
}

// Sine of the angle that is `quarters` of a turn further.
double sineOf(const Reduced<kLimbs>& x, unsigned quarters) {
  const unsigned quadrant = (x.quadrant + quarters) & 3;
  const double s = ((quadrant & 1) != 0 ? cosine(x.angle) : sine(x.angle)).toDouble();
  return (quadrant & 2) != 0 ? -s : s;
}

// atan of t in [0, 1] to about 2^-49: two halvings of the angle, and the series.
double atanGuess(double t) {
  for (int i = 0; i < 2; ++i) t = t / (1.0 + fathom::sqrt(1.0 + t * t));
  const double t2 = t * t;
  double sum = 0.0;
  for (int k = 21; k > 0; k -= 2) sum = 1.0 / k - t2 * sum;
  return 4.0 * (t * sum);
}

// atan(y / x), x and y positive, to within 2^(8 - 64 n), relative. The axes are turned by a guess
// of the angle; what is left, below 2^-40, is a short series.
template <int n>
Wide<n> angle(const Wide<n>& y, const Wide<n>& x) {
  const bool steep = lessInMagnitude(x, y);
  const Wide<n>& far = steep ? y : x;
  const Wide<n>& near = steep ? x : y;
  const int distance = near.exponent - far.exponent;
  Wide<n> guess;
  Wide<n> up = near;
  Wide<n> along = far;
  if (distance > -41) {
    const double ratio = leadingDouble(near) / leadingDouble(far) *
                         std::bit_cast<double>(static_cast<std::uint64_t>(1023 + distance) << 52);
    guess = Wide<n>(atanGuess(ratio));
    const Wide<n> s = sine(guess);
    const Wide<n> c = cosine(guess);
    up = near * c - far * s;
    along = far * c + near * s;
  }
  const Wide<n> t = up / along;
  const Fixed<n> t1 = t.toFixed();
  // Terms of 2^-80 each.
  const Fixed<n> series = powerSeries(kReciprocals<n>, 1, 2, n, t1 * t1, true);
  const Wide<n> below = guess + t * Wide<n>(series, 1);
  return steep ? kWideHalfPi<n> - below : below;
}

// atan(y / x) where the quotient is so small that it is just above the angle: the quotient to 110
// bits, diminished where it is exact. The result may be subnormal, and the quotient then exactly
// halfway between two doubles; otherwise it is at least 2^-107 away from there.
double smallAngle(double y, double x) {
  const Wide<1> above(y), below(x);
  const std::uint64_t divisor = below.fraction.limb[0] >> 11;
  std::uint64_t remainder = above.fraction.limb[0] >> 11;
  Fixed<2> quotient{};
  // Twelve steps of 10 bits: y's fraction over x's is in (1/2, 2), and stands 2^119 times here.
  for (int i = 0; i < 12; ++i) {
    quotient = (quotient << 10) + Fixed<2>{{remainder / divisor, 0}};
    remainder = (remainder % divisor) << 10;
  }
  if (remainder == 0) quotient = quotient - Fixed<2>{{1, 0}};
  return Wide<2>(quotient, above.exponent - below.exponent + 128 - 110).toDouble();
}

}  // namespace

namespace slow {

double sin(double x) {
  if (!isFinite(x)) return kNotANumber;
  const double s = sineOf(reduce<kLimbs>(x), 0);
  return std::bit_cast<std::int64_t>(x) < 0 ? -s : s;
}

double cos(double x) {
  if (!isFinite(x)) return kNotANumber;
  return sineOf(reduce<kLimbs>(x), 1);
}

void sincos(double x, double& s, double& c) {
  s = c = kNotANumber;
  if (!isFinite(x)) return;
  const Reduced<kLimbs> reduced = reduce<kLimbs>(x);
  const double sineOfMagnitude = sineOf(reduced, 0);
  s = std::bit_cast<std::int64_t>(x) < 0 ? -sineOfMagnitude : sineOfMagnitude;
  c = sineOf(reduced, 1);
}

double tan(double x) {
  if (!isFinite(x)) return kNotANumber;
  const Reduced<kLimbs> reduced = reduce<kLimbs>(x);
  const Wide<kLimbs> s = sine(reduced.angle);
  const Wide<kLimbs> c = cosine(reduced.angle);
  const double t = ((reduced.quadrant & 1) != 0 ? -c / s : s / c).toDouble();
  return std::bit_cast<std::int64_t>(x) < 0 ? -t : t;
}

double atan2(double y, double x) {
  if (isNan(x) || isNan(y)) return kNotANumber;
  const bool behind = std::bit_cast<std::int64_t>(x) < 0;
  const double up = fathom::fabs(y);
  const double along = fathom::fabs(x);
  double result = 0.0;
  if (up == 0.0) {
    result = behind ? kPi : 0.0;
  } else if (along == 0.0 || (!isFinite(y) && isFinite(x))) {
    result = kHalfPi;
  } else if (!isFinite(x)) {
    const double quarter = kHalfPi / 2;
    result = isFinite(y) ? (behind ? kPi : 0.0) : (behind ? 2.356194490192345 : quarter);
  } else {
    const Wide<kPairLimbs> wideY(up), wideX(along);
    if (!behind && wideY.exponent - wideX.exponent < -100) {
      result = smallAngle(up, along);
    } else {
      const Wide<kPairLimbs> theta = angle(wideY, wideX);
      result = (behind ? kWideHalfPi<kPairLimbs>.scaled(1) - theta : theta).toDouble();
    }
  }
  return fathom::copysign(result, y);
}

double atan(double x) {
  if (isNan(x)) return kNotANumber;
  if (x == 0.0) return x;
  if (!isFinite(x)) return fathom::copysign(kHalfPi, x);
  const double theta = angle(Wide<kLimbs>(fathom::fabs(x)), Wide<kLimbs>(1.0)).toDouble();
  return fathom::copysign(theta, x);
}

double acos(double x) {
  if (!(fathom::fabs(x) <= 1.0)) return kNotANumber;
  if (x == 1.0) return 0.0;
  if (x == 0.0) return kHalfPi;
  // 1 - x^2 is exact unless x is so small that it does not count.
  const Wide<kLimbs> along(fathom::fabs(x));
  const Wide<kLimbs> up = squareRoot(Wide<kLimbs>(1.0) - along * along);
  if (up.isZero()) return kPi;
  const Wide<kLimbs> theta = angle(up, along);
  return (x < 0.0 ? kWideHalfPi<kLimbs>.scaled(1) - theta : theta).toDouble();
}

}  // namespace slow
}  // namespace fathom
