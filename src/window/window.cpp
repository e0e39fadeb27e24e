// Time-domain windows, applied in place. The symmetric ones share a walk from both ends inward, a
// tile of weights at a time; the cosine sums among them differ by a row of coefficients.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::kPi;
using fathom::kTwoPi;

// Long enough to vectorise, short enough that the additions that advance the angle overlap with
// the elementary functions of the tile before.
constexpr std::size_t kTile = 64;

// A value that starts at `first` and advances by repeated addition.
class Running {
 public:
  Running(double first, double step) : value_(first), step_(step) {}
  void fill(double* tile, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      tile[i] = value_;
      value_ += step_;
    }
  }

 private:
  double value_;
  double step_;
};

FATHOM_MULTIVERSION void multiply(double* x, const double* w, std::size_t n) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) x[i] *= w[i];
}

// x[0], x[-1], x[-2], ...
FATHOM_MULTIVERSION void multiplyDownward(double* x, const double* w, std::size_t n) {
  double* const last = x - (n - 1);
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) last[i] *= w[n - 1 - i];
}

FATHOM_MULTIVERSION void square(double* w, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) w[i] *= w[i];
}

// Multiplies front[k] and back[-k], for k = 1 ... pairs, by one weight. `weights(w, n)` makes the
// next n of them.
template <typename Weights>
void walkInward(double* front, double* back, std::size_t pairs, Weights weights) {
  double w[kTile];
  for (std::size_t k = 0; k < pairs; k += kTile) {
    const std::size_t n = std::min(kTile, pairs - k);
    weights(w, n);
    multiply(front + (k + 1), w, n);
    multiplyDownward(back - (k + 1), w, n);
  }
}

// The walk over x[k] and x[n - k]: x[0] has no partner, nor has x[n / 2] of an even count.
template <typename Weights>
void walkSymmetric(double* x, int32_t n, Weights weights) {
  walkInward(x, x + n, static_cast<std::size_t>((n - 1) / 2), weights);
}

// sin(t)^2 for t = step, step + step, ...
class SineSquared {
 public:
  explicit SineSquared(double step) : angle_(step, step) {}
  void operator()(double* w, std::size_t n) {
    angle_.fill(w, n);
    fathom::sin(w, n, w);
    square(w, n);
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

FATHOM_MULTIVERSION void evaluateRow(const CosineRow& row, double* c, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) c[i] = (row.a - row.b * c[i]) + (row.d * c[i]) * c[i];
}

AnalysisStatus applyRow(double* x, int32_t n, const CosineRow& row) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  x[0] *= row.edge;
  const double step = kTwoPi / n;
  walkSymmetric(x, n, [&row, angle = Running(step, step)](double* w, std::size_t count) mutable {
    angle.fill(w, count);
    fathom::cos(w, count, w);
    evaluateRow(row, w, count);
  });
  return FATHOM_OK;
}

// sum += or -= a * term
FATHOM_MULTIVERSION void addTerm(double* sum, double a, const double* term, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) sum[i] += a * term[i];
}

constexpr double kBesselTolerance = 1e-8;
constexpr int kBesselTerms = 25;

// Modified Bessel function of the first kind, order 0, by its power series. Every element stops at
// its own term; the others of the tile go on.
FATHOM_MULTIVERSION void besselI0(const double* x, std::size_t n, double* sum) {
  double term[kTile], previous[kTile];
  for (std::size_t i = 0; i < n; ++i) {
    sum[i] = 1.0;
    term[i] = 1.0;
    previous[i] = 0.0;
  }
  double k = 0.0;
  bool active = true;
  for (int terms = 0; active && terms < kBesselTerms; ++terms) {
    k += 2.0;
    const double divisor = k * k;
    int32_t open = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const bool more = fathom::fabs(sum[i] - previous[i]) > kBesselTolerance;
      term[i] = term[i] * (x[i] * x[i]) / divisor;
      const double next = sum[i] + term[i];
      previous[i] = more ? sum[i] : previous[i];
      sum[i] = more ? next : sum[i];
      open |= more ? 1 : 0;
    }
    active = open != 0;
  }
}

double besselI0(double x) {
  double sum;
  besselI0(&x, 1, &sum);
  return sum;
}

FATHOM_MULTIVERSION void kaiserArgument(double* t, std::size_t n, double beta) {
  for (std::size_t i = 0; i < n; ++i) t[i] = beta * fathom::sqrt(1.0 - t[i] * t[i]);
}

FATHOM_MULTIVERSION void divide(double* w, std::size_t n, double divisor) {
  for (std::size_t i = 0; i < n; ++i) w[i] /= divisor;
}

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
  walkSymmetric(x, n, [a, m, angle = Running(step, step)](double* w, std::size_t count) mutable {
    double theta[kTile], multiple[kTile], cosine[kTile];
    angle.fill(theta, count);
    std::fill_n(multiple, count, 0.0);
    std::fill_n(w, count, a[0]);
    for (int32_t j = 1; j < m; ++j) {
      addTerm(multiple, 1.0, theta, count);
      fathom::cos(multiple, count, cosine);
      addTerm(w, j % 2 == 0 ? a[j] : -a[j], cosine, count);
    }
  });
  if (n % 2 == 0) x[n / 2] *= middle;
  return FATHOM_OK;
}

AnalysisStatus KsrWin(double* x, int32_t n, double beta) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const double peak = besselI0(beta);
  x[0] *= besselI0(0.0) / peak;
  const double step = 2.0 / n;
  walkSymmetric(x, n,
                [beta, peak, t = Running(1.0 - step, -step)](double* w, std::size_t count) mutable {
                  double argument[kTile];
                  t.fill(argument, count);
                  kaiserArgument(argument, count, beta);
                  besselI0(argument, count, w);
                  divide(w, count, peak);
                });
  return FATHOM_OK;
}

AnalysisStatus TriWin(double* x, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  x[0] = 0.0;
  const double step = 1.0 / (n / 2);  // infinite for n = 1, which has no pairs
  walkSymmetric(x, n, [factor = Running(step, step)](double* w, std::size_t count) mutable {
    factor.fill(w, count);
  });
  return FATHOM_OK;
}

AnalysisStatus CosTaperedWin(double* x, int32_t n) {
  const int32_t m = n / 10;
  if (m < 1) return FATHOM_OK;
  x[0] = 0.0;
  x[n - 1] = 0.0;
  walkInward(x, x + (n - 1), static_cast<std::size_t>(m - 1), SineSquared(kPi / (m * 2.0)));
  return FATHOM_OK;
}

AnalysisStatus ExpWin(double* x, int32_t n, double finalValue) {
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  Running exponent(0.0, fathom::log(finalValue) / (n - 1));
  const auto size = static_cast<std::size_t>(n);
  double w[kTile];
  for (std::size_t k = 0; k < size; k += kTile) {
    const std::size_t count = std::min(kTile, size - k);
    exponent.fill(w, count);
    fathom::exp(w, count, w);
    multiply(x + k, w, count);
  }
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
