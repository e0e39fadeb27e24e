// Slow paths of exp, log, log10 and pow: reduction by ln 2 and Taylor series in several limbs.
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
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// e^v for |v| < 2^12, to within 2^(13 - 64 n), relative (where v is exact).
//
// v = k ln 2 + r; q = (e^(r / 256) - 1) / 2 by its series, and eight squarings, each of which at
// most doubles the error: (1 + 2 q)^2 = 1 + 2 (2 (q + q^2)).
template <int n>
Wide<n> exponential(const Wide<n>& v) {
  int k = static_cast<int>(v.toDouble() * 1.4426950408889634);
  if (v.negative) --k;
  Wide<n> r = v - Wide<n>(k) * kWideLn2<n>;
  // The estimate of k may be off by one where r is near 0 or ln 2.
  if (r.negative && !r.isZero()) {
    r = r + kWideLn2<n>;
    --k;
  }
  const Fixed<n> x = r.scaled(-8).toFixed();
  // (2^-8.5)^j / j! is below 2^(-64 n - 8) for j = 5 n + 3 and n up to 6.
  Fixed<n> q = x * powerSeries(kInverseFactorials<n>, 1, 1, 5 * n + 3, x, false);
  for (int i = 0; i < 8; ++i) q = (q + q * q) << 1;
  return (Wide<n>(1.0) + Wide<n>(q, 1)).scaled(k);
}

// log of m in [0.7, 1.42] to about 2^-50: 2 artanh((m - 1) / (m + 1)) by its series.
double logGuess(double m) {
  const double s = (m - 1.0) / (m + 1.0);
  const double s2 = s * s;
  double sum = 0.0;
  for (int k = 21; k > 0; k -= 2) sum = sum * s2 + 1.0 / k;
  return 2.0 * (s * sum);
}

// log x for finite x > 0, to within 2^(14 - 64 n), relative where |log x| > 1 and absolute
// elsewhere; where |x - 1| < 2^-40, to within 2^(6 - 64 n), relative. So relative errors stay below
// 2^(54 - 64 n).
//
// x = m 2^e; the quotient of m and the exponential of a guess of its logarithm is 1 + z with
// |z| < 2^-39, whose logarithm is a short series.
template <int n>
Wide<n> logarithm(double x) {
  const Wide<n> w(x);
  double m = leadingDouble(w);
  int e = w.exponent;
  if (m < 0.7071067811865476) {
    m *= 2.0;
    --e;
  }
  const double guess = fathom::fabs(m - 1.0) < 0x1p-40 ? 0.0 : logGuess(m);
  Wide<n> z(m);
  if (guess != 0.0) z = z * exponential(Wide<n>(-guess));
  z = z - Wide<n>(1.0);
  const Fixed<n> series =
      powerSeries(kReciprocals<n>, 1, 1, 64 * n / 39 + 2, z.toFixed(), !z.negative);
  return Wide<n>(e) * kWideLn2<n> + (Wide<n>(guess) + z * Wide<n>(series, 1));
}

// x = odd 2^exponent
struct Dyadic {
  explicit Dyadic(double x) {
    const Wide<1> w(x);
    const int zeros = std::countr_zero(w.fraction.limb[0]);
    odd = w.fraction.limb[0] >> zeros;
    exponent = w.exponent - 64 + zeros;
  }
  std::uint64_t odd;
  int exponent;
};

// Whether x^y, x > 0 and not 1, y not 0, is a number of at most 54 bits: a double, or halfway
// between two. All others are irrational or have more bits, so their rounding is decided by
// finitely many.
bool exactPower(double x, double y, Wide<kPairLimbs>& power) {
  constexpr double kLargest = 4096.0;  // beyond, any power but 1 overflows or has too many bits
  if (!(fathom::fabs(y) < kLargest)) return false;
  Dyadic base(x);
  Dyadic times(y);
  // Fractions of y are square roots.
  for (; times.exponent < 0; ++times.exponent) {
    const auto root = static_cast<std::uint64_t>(fathom::sqrt(static_cast<double>(base.odd)));
    if (base.exponent % 2 != 0 || root * root != base.odd) return false;
    base.odd = root;
    base.exponent /= 2;
  }
  const int count = static_cast<int>(times.odd << times.exponent);
  std::uint64_t odd = 1;
  if (base.odd != 1) {
    if (y < 0.0) return false;
    for (int i = 0; i < count; ++i) {
      const LimbPair product = multiplyAdd(odd, base.odd, 0, 0);
      if (product.high != 0 || (product.low >> 54) != 0) return false;
      odd = product.low;
    }
  }
  power = Wide<kPairLimbs>(Fixed<1>{{odd}}, 64 + base.exponent * (y < 0.0 ? -count : count));
  return true;
}

}  // namespace

namespace slow {

double exp(double x) {
  if (isNan(x)) return kNotANumber;
  if (x > 1000.0) return kInfinity;
  if (x < -1000.0) return 0.0;
  return exponential(Wide<kLimbs>(x)).toDouble();
}

double log(double x) {
  if (!(x >= 0.0)) return kNotANumber;
  if (x == 0.0) return -kInfinity;
  if (x == kInfinity) return x;
  return logarithm<kLimbs>(x).toDouble();
}

// Of a power of ten, an integer: what is off by so little still rounds to it.
double log10(double x) {
  if (!(x >= 0.0)) return kNotANumber;
  if (x == 0.0) return -kInfinity;
  if (x == kInfinity) return x;
  return (logarithm<kLimbs>(x) * kWideInverseLn10<kLimbs>).toDouble();
}

double pow(double x, double y) {
  if (y == 0.0 || x == 1.0) return 1.0;
  if (isNan(x) || isNan(y)) return kNotANumber;
  const double magnitude = fathom::fabs(x);
  const double length = fathom::fabs(y);
  // Doubles from 2^53 on are even.
  const bool integer = length >= 0x1p53 || fathom::floor(y) == y;
  const bool odd = integer && length < 0x1p53 && fathom::floor(y * 0.5) != y * 0.5;
  const double sign = odd && std::bit_cast<std::int64_t>(x) < 0 ? -1.0 : 1.0;
  if (magnitude == 1.0) return length == kInfinity ? 1.0 : integer ? sign : kNotANumber;
  const bool grows = (magnitude > 1.0) == (y > 0.0);
  if (magnitude == 0.0 || magnitude == kInfinity || length == kInfinity) {
    return grows ? sign * kInfinity : sign * 0.0;
  }
  if (x < 0.0 && !integer) return kNotANumber;
  Wide<kPairLimbs> power;
  if (!exactPower(magnitude, y, power)) {
    // Below 2^11, so that the error of the logarithm becomes one of 2^-255 in the power.
    const Wide<kPairLimbs> v = logarithm<kPairLimbs>(magnitude) * Wide<kPairLimbs>(y);
    if (v.exponent > 11) return grows ? sign * kInfinity : sign * 0.0;
    power = exponential(v);
  }
  return sign * power.toDouble();
}

}  // namespace slow
}  // namespace fathom
