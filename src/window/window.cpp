// Time-domain windows, applied in place. The symmetric ones share a walk from both ends inward; the
// cosine sums among them differ by a row of coefficients.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::kPi;
using fathom::kTwoPi;

// A value that starts at `first` and advances by repeated addition.
class Running {
 public:
  Running(double first, double step) : value_(first), step_(step) {}
  double next() {
    const double value = value_;
    value_ += step_;
    return value;
  }

 private:
  double value_;
  double step_;
};

// Multiplies front[k] and back[-k], for k = 1 ... pairs, by weight(). One pair after another is the
// quickest: the additions and products hide behind the sine or cosine that a weight takes.
template <typename Weight>
void walkInward(double* front, double* back, int32_t pairs, Weight weight) {
  for (int32_t k = 1; k <= pairs; ++k) {
    const double w = weight();
    *++front *= w;
    *--back *= w;
  }
}

// The walk over x[k] and x[n - k]: x[0] has no partner, nor has x[n / 2] of an even count.
template <typename Weight>
void walkSymmetric(double* x, int32_t n, Weight weight) {
  walkInward(x, x + n, (n - 1) / 2, weight);
}

// sin(t)^2 for t = step, step + step, ...
class SineSquared {
 public:
  explicit SineSquared(double step) : angle_(step, step) {}
  double operator()() {
    const double s = fathom::sin(angle_.next());
    return s * s;
  }

 private:
  Running angle_;
};

// a - b cos t + d cos^2 t, and its value at the edge as these windows are published: the rounded
// a - b + d, which is neither zero nor positive for all of them.
struct CosineRow {
  double a, b, d;
  double edge;
};

// Without a square term (d = 0) the last addition adds zero to a value that is not zero.
constexpr CosineRow kHamming = {0.54, 0.46, 0.0, 0.08};
constexpr CosineRow kBlackman = {0.33999999999999997, 0.5, 0.16, -1.3877787807814457e-17};
constexpr CosineRow kExactBlackman = {0.3497420464316423, 0.4965606190885641, 0.15369733447979364,
                                      0.006878761822871883};
constexpr CosineRow kBlackmanHarris = {0.34401, 0.49755, 0.15844, 0.004900000000000002};
constexpr CosineRow kFlatTop = {0.08302489390000001, 0.5208971735, 0.3960779326,
                                -0.041794346999999954};

AnalysisStatus applyRow(double* x, int32_t n, const CosineRow& row) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  x[0] *= row.edge;
  const double step = kTwoPi / n;
  walkSymmetric(x, n, [row, angle = Running(step, step)]() mutable {
    const double c = fathom::cos(angle.next());
    return (row.a - row.b * c) + (row.d * c) * c;
  });
  return FATHOM_OK;
}

constexpr double kBesselTolerance = 1e-8;
constexpr int kBesselTerms = 25;
constexpr std::size_t kLanes = 32;

// Modified Bessel function of the first kind, order 0, by its power series. Every element stops at
// its own term while the others go on.
FATHOM_MULTIVERSION void besselI0(const double* x, double* sum) {
  double term[kLanes], previous[kLanes];
  for (std::size_t i = 0; i < kLanes; ++i) {
    sum[i] = 1.0;
    term[i] = 1.0;
    previous[i] = 0.0;
  }
  double k = 0.0;
  int64_t open = 1;
  for (int terms = 0; open != 0 && terms < kBesselTerms; ++terms) {
    k += 2.0;
    open = 0;
    for (std::size_t i = 0; i < kLanes; ++i) {
      const bool more = fathom::fabs(sum[i] - previous[i]) > kBesselTolerance;
      term[i] = term[i] * (x[i] * x[i]) / (k * k);
      const double next = sum[i] + term[i];
      previous[i] = more ? sum[i] : previous[i];
      sum[i] = more ? next : sum[i];
      open |= more ? 1 : 0;
    }
  }
}

double besselI0(double x) {
  double arguments[kLanes], sums[kLanes];
  std::fill_n(arguments, kLanes, x);
  besselI0(arguments, sums);
  return sums[0];
}

// I0(beta sqrt(1 - t^2)) / I0(beta) for t = 1 - step, 1 - step - step, ..., some ahead of need.
class Kaiser {
 public:
  Kaiser(double beta, double peak, double step) : beta_(beta), peak_(peak), t_(1.0 - step, -step) {}
  double operator()() {
    if (used_ == kLanes) {
      double arguments[kLanes];
      for (double& argument : arguments) {
        const double t = t_.next();
        argument = beta_ * fathom::sqrt(1.0 - t * t);
      }
      besselI0(arguments, sums_);
      used_ = 0;
    }
    return sums_[used_++] / peak_;
  }

 private:
  double beta_;
  double peak_;
  Running t_;
  double sums_[kLanes];
  std::size_t used_ = kLanes;
};

}  // namespace

AnalysisStatus HanWin(double* x, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  x[0] *= 0.0;
  walkSymmetric(x, n, SineSquared(kPi / n));
  return FATHOM_OK;
}

AnalysisStatus HamWin(double* x, int32_t n) {
  return applyRow(x, n, kHamming);
}

AnalysisStatus BkmanWin(double* x, int32_t n) {
  return applyRow(x, n, kBlackman);
}

AnalysisStatus ExBkmanWin(double* x, int32_t n) {
  return applyRow(x, n, kExactBlackman);
}

AnalysisStatus BlkHarrisWin(double* x, int32_t n) {
  return applyRow(x, n, kBlackmanHarris);
}

AnalysisStatus FlatTopWin(double* x, int32_t n) {
  return applyRow(x, n, kFlatTop);
}

AnalysisStatus GenCosWin(double* x, int32_t n, const double* a, int32_t m) {
  if (n < 1 || m < 1) return FATHOM_ERR_NO_SAMPLES;
  double edge = a[0];
  double middle = a[0];
  for (int32_t j = 1; j < m; ++j) {
    edge += j % 2 == 0 ? a[j] : -a[j];
    middle += a[j];
  }
  x[0] *= edge;
  const double step = kTwoPi / n;
  walkSymmetric(x, n, [a, m, angle = Running(step, step)]() mutable {
    const double theta = angle.next();
    double multiple = 0.0;
    double w = a[0];
    for (int32_t j = 1; j < m; ++j) {
      multiple += theta;
      const double term = a[j] * fathom::cos(multiple);
      w += j % 2 == 0 ? term : -term;
    }
    return w;
  });
  if (n % 2 == 0) x[n / 2] *= middle;
  return FATHOM_OK;
}

AnalysisStatus KsrWin(double* x, int32_t n, double beta) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const double peak = besselI0(beta);
  x[0] *= besselI0(0.0) / peak;
  walkSymmetric(x, n, Kaiser(beta, peak, 2.0 / n));
  return FATHOM_OK;
}

AnalysisStatus TriWin(double* x, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  x[0] = 0.0;
  const int32_t half = n / 2;
  const double step = 1.0 / half;  // infinite for n = 1, which has no pairs
  walkSymmetric(x, n, [factor = Running(step, step)]() mutable { return factor.next(); });
  return FATHOM_OK;
}

AnalysisStatus CosTaperedWin(double* x, int32_t n) {
  const int32_t m = n / 10;
  if (m < 1) return FATHOM_OK;
  x[0] = 0.0;
  x[n - 1] = 0.0;
  walkInward(x, x + (n - 1), m - 1, SineSquared(kPi / (m * 2.0)));
  return FATHOM_OK;
}

AnalysisStatus ExpWin(double* x, int32_t n, double finalValue) {
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  Running exponent(0.0, fathom::log(finalValue) / (n - 1));
  for (int32_t k = 0; k < n; ++k) x[k] *= fathom::exp(exponent.next());
  return FATHOM_OK;
}

AnalysisStatus ForceWin(double* x, int32_t n, double dutyCycle) {
  const double d = 0.01 * dutyCycle;
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  const double kept = n * d;
  int32_t m = 0;  // also when the duty cycle is not a number
  if (kept >= n) m = n;
  if (kept > 0.0 && kept < n) m = static_cast<int32_t>(kept);
  std::fill(x + m, x + n, 0.0);
  return FATHOM_OK;
}
