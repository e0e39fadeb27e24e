// Normal, Student t, F and chi-square distributions: lower-tail probabilities by short published
// approximations, and their inverses, which but for the normal one are bisections of fixed width.
#include <algorithm>
#include <cstdint>
#include <limits>

#include "fathom.h"
#include "frame/elementary.hpp"

namespace {

constexpr double kInverseRootTwoPi = 0.3989422;  // to the digits of the approximations
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double normal(double x) {
  const double z = fathom::fabs(x);
  const double t = 1.0 / (1.0 + 0.33267 * z);
  const double upper = kInverseRootTwoPi * fathom::exp(-(z * z) * 0.5) * t *
                       (0.4361836 + t * (-0.1201676 + t * 0.937298));
  const double p = 1.0 - upper;
  return x < 0.0 ? 1.0 - p : p;
}

double normalQuantile(double p) {
  const double tail = p < 0.5 ? p : 1.0 - p;
  const double t = fathom::sqrt(fathom::log(1.0 / (tail * tail)));
  const double t2 = t * t;
  const double quotient = (2.515517 + 0.802853 * t + 0.010328 * t2) /
                          (1.0 + 1.432788 * t + 0.189269 * t2 + 0.001308 * (t2 * t));
  return p < 0.5 ? quotient - t : t - quotient;
}

// ln Gamma(z) by six terms of Lanczos's series.
double logGamma(double z) {
  constexpr double kTerms[] = {76.18009173,  -86.50532033,  24.01409822,
                               -1.231739516, 0.00120858003, -5.36382e-06};
  const double y = z - 1.0;
  const double shifted = y + 5.5;
  const double power = (y + 0.5) * fathom::log(shifted) - shifted;
  double series = 1.0;
  double divisor = y;
  for (const double term : kTerms) {
    divisor += 1.0;
    series += term / divisor;
  }
  return power + fathom::log(2.50662827465 * series);
}

// Regularised incomplete beta function of x in [0, 1], or NaN, for fixed a and b.
class IncompleteBeta {
 public:
  IncompleteBeta(double a, double b)
      : a_(a),
        b_(b),
        logScale_(logGamma(a + b) - logGamma(a) - logGamma(b)),
        crossover_((a + 1.0) / (a + b + 2.0)) {}

  struct Value {
    double integral;
    double density;  // x (1 - x) times the derivative; the fraction's factor
  };

  Value operator()(double x) const {
    if (x == 0.0 || x == 1.0) return {x, 0.0};
    const double density = fathom::exp(logScale_ + a_ * fathom::log(x) + b_ * fathom::log(1.0 - x));
    if (x < crossover_) return {density * fraction(a_, b_, x) / a_, density};
    return {1.0 - density * fraction(b_, a_, 1.0 - x) / b_, density};
  }

 private:
  // Convergents of the continued fraction, each scaled to the denominator 1, until one changes the
  // quotient by less than 1e-7 of it; the hundredth is taken as it is.
  static double fraction(double a, double b, double x) {
    double earlierNumerator = 1.0;
    double earlierDenominator = 1.0;
    double numerator = 1.0;
    double denominator = 1.0 - (a + b) * x / (a + 1.0);
    for (int32_t step = 1; step <= 100; ++step) {
      const double m = step;
      const double a2m = a + 2.0 * m;
      const double even = m * (b - m) * x / ((a2m - 1.0) * a2m);
      const double odd = -(a + m) * (a + b + m) * x / (a2m * (a2m + 1.0));
      const double evenNumerator = numerator + even * earlierNumerator;
      const double evenDenominator = denominator + even * earlierDenominator;
      const double oddNumerator = evenNumerator + odd * numerator;
      const double oddDenominator = evenDenominator + odd * denominator;
      const double before = numerator;
      earlierNumerator = evenNumerator / oddDenominator;
      earlierDenominator = evenDenominator / oddDenominator;
      numerator = oddNumerator / oddDenominator;
      denominator = 1.0;
      if (fathom::fabs((numerator - before) / numerator) < 1e-7) break;
    }
    return numerator;
  }

  double a_;
  double b_;
  double logScale_;
  double crossover_;
};

// A tail's probability, and the size of its derivative by the logarithm of its end.
struct Tail {
  double probability;
  double slope;
};

// The distributions as functions of one variable; what only the degrees of freedom decide is
// computed once for all steps of a bisection.
class StudentT {
 public:
  explicit StudentT(int32_t df) : df_(df), beta_(df_ * 0.5, 0.5) {}
  double operator()(double t) const {
    const double half = 0.5 * beta_(df_ / (df_ + t * t)).integral;
    return t < 0.0 ? half : 1.0 - half;
  }
  Tail upperTail(double t) const {
    const IncompleteBeta::Value beta = beta_(df_ / (df_ + t * t));
    return {0.5 * beta.integral, beta.density};
  }

 private:
  double df_;
  IncompleteBeta beta_;
};

class FisherF {
 public:
  FisherF(int32_t df1, int32_t df2) : df1_(df1), df2_(df2), beta_(df2_ * 0.5, df1_ * 0.5) {}
  double operator()(double f) const { return f > 0.0 ? 1.0 - upperTail(f).probability : 0.0; }
  Tail upperTail(double f) const {
    const IncompleteBeta::Value beta = beta_(df2_ / (df2_ + df1_ * f));
    return {beta.integral, beta.density};
  }

 private:
  double df1_;
  double df2_;
  IncompleteBeta beta_;
};

// Whether multiplying the finite `power` >= 1 by x > 1 that many times reaches infinity. Rounding
// moves the logarithm of the product by at most 2^-53 a step. That leaves one or two neighbouring x
// undecided for each number of steps; for those the product is formed, one multiplication a step.
bool overflowsWithin(double power, double x, int32_t steps) {
  constexpr double kRounding = 0x1.01p-53;
  const double rate = fathom::log(x);
  const double room = fathom::log(kLargest) - fathom::log(power);
  const double slack = 1e-11;
  if (steps * (rate * (1.0 - 1e-14) - kRounding) > room + slack) return true;
  if (steps * (rate * (1.0 + 1e-14) + kRounding) < room - slack) return false;
  for (int32_t k = 0; k < steps; ++k) {
    power *= x;
    if (power > kLargest) return true;
  }
  return false;
}

// sum + the terms power x^k / (factor (factor + 2) ... (factor + 2 k - 2)), k = 1 to steps, with
// running products above and below. The lower one is infinite after at most 151 steps. From there
// on a term is zero, which changes nothing, while the upper one is finite, and NaN, for good, from
// the first one for which it is not. Only a factor above 1 can take it there.
double chiSquareSeries(double sum, double power, double factor, double x, int32_t steps) {
  double product = 1.0;
  for (int32_t k = 1; k <= steps; ++k) {
    power *= x;
    product *= factor;
    factor += 2.0;
    sum += power / product;
    if (product > kLargest) {
      const bool finite = power <= kLargest;
      if (x <= 1.0 || (finite && !overflowsWithin(power, x, steps - k))) return sum;
      return std::numeric_limits<double>::quiet_NaN();
    }
  }
  return sum;
}

double chiSquare(double x, int32_t df) {
  if (!(x > 0.0)) return 0.0;
  const double e = fathom::exp(-x * 0.5);
  const double root = fathom::sqrt(x);
  const int32_t steps = (df - 1) / 2;
  if (df % 2 == 0) return 1.0 - e * chiSquareSeries(1.0, 1.0, 2.0, x, steps);
  const double upper = 1.0 - normal(root);
  if (df == 1) return 1.0 - 2.0 * upper;
  const double sum = chiSquareSeries(0.0, 1.0 / root, 1.0, x, steps);
  return 1.0 - 2.0 * (kInverseRootTwoPi * e * sum + upper);
}

// What is certain before a bisection begins: up to `below` the distribution is less than p, and
// from `above` on it is not.
struct Known {
  double below = -kInfinity;
  double above = kInfinity;
};

// The lower end of the last bracket. A NaN, of p or of the distribution, moves the upper end.
template <typename Distribution>
double bisect(double lo, double hi, double p, const Distribution& distribution,
              const Known& known = {}) {
  while (fathom::fabs(hi - lo) > 1e-4) {
    const double mid = (lo + hi) * 0.5;
    const bool certain = mid <= known.below || mid >= known.above;
    const bool less = certain ? mid <= known.below : distribution(mid) < p;
    lo = less ? mid : lo;
    hi = less ? hi : mid;
  }
  return lo;
}

// Most steps of a bisection are decided by the distribution's values on either side of the
// quantile. Up to kMostDegrees no continued fraction takes more than 60 steps, and a computed value
// is within 2e-8 of the true one (docs/distributions.md), which never falls. So one that differs
// from p by more than kMargin decides for all points beyond its own.
constexpr double kMargin = 1e-6;
constexpr int32_t kMostDegrees = 10000;

// Those values are taken at the quantile, `sign` times what Newton's method finds from `start` for
// the logarithms of tail and variable, less and plus a distance that should suffice. A logarithm of
// a tail bends downwards, which is what brings Newton's method there.
template <typename Distribution>
Known bound(const Distribution& distribution, double p, double start, bool upper, double sign) {
  const double target = p < 0.5 ? p : 1.0 - p;
  double at = start;
  double distance = 0.0;
  for (int32_t step = 0; step < 8; ++step) {
    const Tail tail = distribution.upperTail(at);
    const double probability = upper ? tail.probability : 1.0 - tail.probability;
    const double change = fathom::log(probability / target) * probability / tail.slope;
    const double square = at * change * change;
    distance = square + at * (2.0 * kMargin / tail.slope) + 2e-5;
    at *= fathom::exp(upper ? change : -change);
    if (square < 5e-5) break;
  }
  Known known;
  for (const double point : {sign * at - distance, sign * at + distance}) {
    const double value = distribution(point);
    if (value < p - kMargin) known.below = point;
    if (value > p + kMargin && point < known.above) known.above = point;
  }
  return known;
}

// The normal quantile within 6e-7 for p from 1e-6 to 1 - 1e-6: M. J. Wichura, "Algorithm AS 241:
// The percentage points of the normal distribution", Applied Statistics, 1988 (its shorter form).
double wichuraQuantile(double p) {
  const double q = p - 0.5;
  if (fathom::fabs(q) <= 0.425) {
    const double r = 0.180625 - q * q;
    const double above = ((59.10937472 * r + 159.29113202) * r + 50.434271938) * r + 3.3871327179;
    return q * above / (((67.1875636 * r + 78.757757664) * r + 17.895169469) * r + 1.0);
  }
  const double r = fathom::sqrt(-fathom::log(q < 0.0 ? p : 1.0 - p)) - 1.6;
  const double above = ((0.17023821103 * r + 1.3067284816) * r + 2.75681539) * r + 1.4234372777;
  const double z = above / ((0.12021132975 * r + 0.7370016425) * r + 1.0);
  return q < 0.0 ? -z : z;
}

// From kExpandedDegrees to kMostDegrees, and with kLeastTail of probability on either side,
// Student's quantile is the normal one with four terms of the Cornish-Fisher expansion
// (M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964, 26.7.5), within 1e-6.
// Computed values being within 2e-8 of true ones, points whose true value differs from p by 5e-8
// are decided. The normal density over its tail is convex in |z|, so above its tangent at 0,
// 0.79 + 0.63 |z|; the smaller figures below leave room for Student's and for its change nearby.
constexpr int32_t kExpandedDegrees = 100;
constexpr double kLeastTail = 1e-6;

Known expand(double p, int32_t df) {
  const double z = wichuraQuantile(p);
  const double w = z * z;
  const double v = 1.0 / df;
  const double first = (w + 1.0) / 4.0;
  const double second = ((5.0 * w + 16.0) * w + 3.0) / 96.0;
  const double third = (((3.0 * w + 19.0) * w + 17.0) * w - 15.0) / 384.0;
  const double fourth = ((((79.0 * w + 776.0) * w + 1482.0) * w - 1920.0) * w - 945.0) / 92160.0;
  const double t = z + z * v * (first + v * (second + v * (third + v * fourth)));
  const double density = std::min(p, 1.0 - p) * (0.73 + 0.58 * fathom::fabs(z));
  const double distance = 1e-6 + 5e-8 / density;
  return {t - distance, t + distance};
}

}  // namespace

AnalysisStatus N_Dist(double x, double* p) {
  *p = normal(x);
  return FATHOM_OK;
}

AnalysisStatus InvN_Dist(double p, double* x) {
  if (!(p < 1.0)) return FATHOM_ERR_PROBABILITY;
  if (!(p > 0.0)) return FATHOM_ERR_PROBABILITY;
  *x = normalQuantile(p);
  return FATHOM_OK;
}

AnalysisStatus T_Dist(double t, int32_t df, double* p) {
  if (df < 1) return FATHOM_ERR_DEGREES_OF_FREEDOM;
  *p = StudentT(df)(t);
  return FATHOM_OK;
}

AnalysisStatus InvT_Dist(double p, int32_t df, double* t) {
  if (df < 1) return FATHOM_ERR_DEGREES_OF_FREEDOM;
  if (p >= 1.0 || p <= 0.0) return FATHOM_ERR_PROBABILITY;
  const bool expanded =
      df >= kExpandedDegrees && df <= kMostDegrees && p >= kLeastTail && 1.0 - p >= kLeastTail;
  Known known;
  if (expanded) {
    // Every bracket's ends are multiples of the last one's width, exactly.
    constexpr double kLastWidth = 20000.0 / (1 << 28);
    known = expand(p, df);
    const double lo = fathom::floor(known.below / kLastWidth) * kLastWidth;
    if (lo + kLastWidth >= known.above) {
      *t = lo;
      return FATHOM_OK;
    }
  }
  const StudentT distribution(df);
  if (!expanded && df <= kMostDegrees) {
    const double z = std::max(fathom::fabs(normalQuantile(p)), 1e-3);
    const double start = z + z * (z * z + 1.0) / (4.0 * df);
    known = bound(distribution, p, start, true, p < 0.5 ? -1.0 : 1.0);
  }
  *t = bisect(-10000.0, 10000.0, p, distribution, known);
  return FATHOM_OK;
}

AnalysisStatus F_Dist(double f, int32_t df1, int32_t df2, double* p) {
  if (df1 < 1 || df2 < 1) return FATHOM_ERR_DEGREES_OF_FREEDOM;
  *p = FisherF(df1, df2)(f);
  return FATHOM_OK;
}

AnalysisStatus InvF_Dist(double p, int32_t df1, int32_t df2, double* f) {
  if (df1 < 1 || df2 < 1) return FATHOM_ERR_DEGREES_OF_FREEDOM;
  if (p >= 1.0 || p <= 0.0) return FATHOM_ERR_PROBABILITY;
  const FisherF distribution(df1, df2);
  Known known;
  if (df1 <= kMostDegrees && df2 <= kMostDegrees) {
    const double deviation = fathom::sqrt(2.0 / df1 + 2.0 / df2);  // of ln f, about
    const double start = fathom::exp(normalQuantile(p) * deviation);
    known = bound(distribution, p, start, p >= 0.5, 1.0);
  }
  *f = bisect(1e-6, 10000.0, p, distribution, known);
  return FATHOM_OK;
}

AnalysisStatus XX_Dist(double x, int32_t df, double* p) {
  if (df < 1) return FATHOM_ERR_DEGREES_OF_FREEDOM;
  *p = chiSquare(x, df);
  return FATHOM_OK;
}

AnalysisStatus InvXX_Dist(double p, int32_t df, double* x) {
  if (p >= 1.0 || p <= 0.0) return FATHOM_ERR_PROBABILITY;
  if (df < 1) return FATHOM_ERR_DEGREES_OF_FREEDOM;
  *x = bisect(0.0, 10000.0, p, [df](double at) { return chiSquare(at, df); });
  return FATHOM_OK;
}
