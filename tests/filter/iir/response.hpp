// The response of a cascade or a direct form, from its coefficients, in extended precision and at
// frequencies of the prototype.
#ifndef FATHOM_TESTS_FILTER_IIR_RESPONSE_HPP
#define FATHOM_TESTS_FILTER_IIR_RESPONSE_HPP

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>

#include "filter/iir/iir.hpp"

namespace fathom::test {

using Real = long double;

// What a design is asked for; fs is 1.
struct Wanted {
  int32_t type, order;
  double low, high, ripple = 0.0, attenuation = 0.0;
};

// Takes the prototype's frequency to x = tan(pi f / fs); negative ones go below the centre of a
// band filter.
class Warp {
 public:
  explicit Warp(const Wanted& w)
      : type_(w.type),
        low_(std::tan(std::numbers::pi_v<Real> * w.low)),
        high_(std::tan(std::numbers::pi_v<Real> * w.high)) {}
  Real operator()(Real omega) const {
    if (type_ == FATHOM_LOWPASS) return low_ * omega;
    if (type_ == FATHOM_HIGHPASS) return low_ / omega;
    const Real half = (high_ - low_) / 2 * (type_ == FATHOM_BANDPASS ? omega : 1 / omega);
    const Real root = std::sqrt(half * half + low_ * high_);
    return half < 0 ? low_ * high_ / (root - half) : root + half;
  }

 private:
  int32_t type_;
  Real low_, high_;
};

struct Level {
  Real db;
  Real slack;  // dB that the rounding of each coefficient to within its last bit can make
};

// A value on the way to a polynomial's at the point (c, s), by Horner's rule.
struct Horner {
  Real re = 0, im = 0;
  void step(Real c, Real s, Real coefficient) {
    const Real next = re * c - im * s + coefficient;
    im = re * s + im * c;
    re = next;
  }
};

// a without the leading 1 if it has m entries, b with m + 1.
inline Level levelOf(const double* a, const double* b, std::size_t m, Real x) {
  // z^-1 = (1 - i x) / (1 + i x)
  const Real c = std::fabs(x) > 1e20L ? -1 : (1 - x * x) / (1 + x * x);
  const Real s = std::fabs(x) > 1e20L ? 0 : -2 * x / (1 + x * x);
  Horner numerator, denominator;
  Real top = 0, bottom = 1;
  for (std::size_t j = m + 1; j-- > 0;) {
    numerator.step(c, s, b[j]);
    denominator.step(c, s, j == 0 ? 1 : a[j - 1]);
    top += std::fabs(b[j]);
    if (j > 0) bottom += std::fabs(a[j - 1]);
  }
  const Real n = std::hypot(numerator.re, numerator.im);
  const Real d = std::hypot(denominator.re, denominator.im);
  return {20 * std::log10(n / d), 8.7L * 0x1p-53L * (top / n + bottom / d)};
}

inline Level levelOf(const IIRFilter& r, Real x) {
  Level sum = {0, 0};
  const int sections = (r.order + 1) / 2, m = r.na / sections;
  for (int s = 0; s < sections; ++s) {
    const Level one = levelOf(r.a + s * m, r.b + s * (m + 1), static_cast<std::size_t>(m), x);
    sum = {sum.db + one.db, sum.slack + one.slack};
  }
  return sum;
}

}  // namespace fathom::test

#endif
