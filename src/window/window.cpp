// Time-domain windows, applied in place. The symmetric ones share a walk from both ends inward; the
// cosine sums among them differ by a row of coefficients.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "frame/running_sum.hpp"

namespace {

using fathom::kPi;
using fathom::kTwoPi;
using fathom::Lanes;

// A value that starts at `first` and advances by repeated addition.
class Running {
 public:
  Running(double first, double step) : value_(first), step_(step) {}
  void next(std::size_t count, double* values) {
    value_ = fathom::runningSum(value_, step_, count, values);
  }

 private:
  double value_;
  double step_;
};

// Weights are made a tile at a time.
constexpr std::size_t kTile = 256;

template <std::size_t bytes>
FATHOM_INLINE void reversed(const Lanes<bytes>& x, Lanes<bytes>& y) {
  if constexpr (bytes == 16) y = __builtin_shufflevector(x, x, 1, 0);
  if constexpr (bytes == 32) y = __builtin_shufflevector(x, x, 3, 2, 1, 0);
  if constexpr (bytes == 64) y = __builtin_shufflevector(x, x, 7, 6, 5, 4, 3, 2, 1, 0);
}

// Multiplies front[k] and back[-k] by factor[k] or its square, which is what is reversed: once,
// where the samples at the back would be twice.
template <std::size_t bytes, bool squared>
FATHOM_INLINE void multiplyPairs(double* front, double* back, std::size_t pairs,
                                 const double* factor) {
  constexpr std::size_t kWidth = fathom::kLanesOf<bytes>;
  std::size_t k = 0;
  for (; k + kWidth <= pairs; k += kWidth) {
    Lanes<bytes> weight, backWeight, x, y;
    double* const last = back - k - (kWidth - 1);
    fathom::load(weight, factor + k);
    fathom::load(x, front + k);
    fathom::load(y, last);
    if constexpr (squared) weight *= weight;
    reversed<bytes>(weight, backWeight);
    x *= weight;
    y *= backWeight;
    fathom::store(front + k, x);
    fathom::store(last, y);
  }
  for (; k < pairs; ++k) {
    const double weight = squared ? factor[k] * factor[k] : factor[k];
    front[k] *= weight;
    back[-static_cast<std::ptrdiff_t>(k)] *= weight;
  }
}

// What a walk is given: weights, or their square roots.
enum class Given { kWeights, kRoots };

template <std::size_t bytes>
FATHOM_INLINE void multiplyInwardOf(double* front, double* back, std::size_t pairs,
                                    const double* factor, Given given) {
  if (given == Given::kRoots) {
    multiplyPairs<bytes, true>(front, back, pairs, factor);
  } else {
    multiplyPairs<bytes, false>(front, back, pairs, factor);
  }
}
FATHOM_BY_WIDTH(multiplyInward,
                (double* front, double* back, std::size_t pairs, const double* factor, Given given),
                (front, back, pairs, factor, given))

// Samples in memory are on their way while their weights are made.
void prefetch(const double* front, const double* back, std::size_t pairs) {
  constexpr std::size_t kLine = 8;
  for (std::size_t k = 0; k < pairs; k += kLine) {
    __builtin_prefetch(front + k);
    __builtin_prefetch(back - k);
  }
}
// Fewer are likely near already.
constexpr std::size_t kFarPairs = 2048;

// Multiplies front[k] and back[-k], for k = 1 ... pairs, by the weights that one call after another
// of weights(count, tile) gives, or whose roots it gives.
template <typename Weights>
void walkInward(double* front, double* back, int32_t pairs, Weights&& weights,
                Given given = Given::kWeights) {
  double tile[kTile];
  const std::size_t all = pairs > 0 ? static_cast<std::size_t>(pairs) : 0;
  for (std::size_t left = all; left > 0;) {
    const std::size_t count = std::min(left, kTile);
    if (all > kFarPairs) prefetch(front + 1, back - 1, count);
    weights(count, tile);
    multiplyInward(front + 1, back - 1, count, tile, given);
    front += count;
    back -= count;
    left -= count;
  }
}

// The walk over x[k] and x[n - k]: x[0] has no partner, nor has x[n / 2] of an even count.
template <typename Weights>
void walkSymmetric(double* x, int32_t n, Weights&& weights, Given given = Given::kWeights) {
  walkInward(x, x + n, (n - 1) / 2, std::forward<Weights>(weights), given);
}

FATHOM_MULTIVERSION void multiply(double* x, const double* factor, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) x[i] *= factor[i];
}

// sin t for t = step, step + step, ...
class Sines {
 public:
  explicit Sines(double step) : angle_(step, step), spacing_(step) {}
  void operator()(std::size_t count, double* sine) {
    double angle[kTile];
    angle_.next(count, angle);
    fathom::sin(spacing_, angle, count, sine);
  }

 private:
  Running angle_;
  fathom::AngleSpacing spacing_;
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

FATHOM_MULTIVERSION void cosineWeights(const CosineRow& row, double* c, std::size_t n) {
  const double a = row.a, b = row.b, d = row.d;
  for (std::size_t i = 0; i < n; ++i) c[i] = (a - b * c[i]) + (d * c[i]) * c[i];
}

class CosineWeights {
 public:
  CosineWeights(const CosineRow& row, double step)
      : row_(row), angle_(step, step), spacing_(step) {}
  void operator()(std::size_t count, double* weight) {
    double angle[kTile];
    angle_.next(count, angle);
    fathom::cos(spacing_, angle, count, weight);
    cosineWeights(row_, weight, count);
  }

 private:
  CosineRow row_;
  Running angle_;
  fathom::AngleSpacing spacing_;
};

AnalysisStatus applyRow(double* x, int32_t n, const CosineRow& row) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  x[0] *= row.edge;
  walkSymmetric(x, n, CosineWeights(row, kTwoPi / n));
  return FATHOM_OK;
}

// y += factor x. A factor's sign may go with the product's.
FATHOM_MULTIVERSION void addTo(double* y, const double* x, double factor, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) y[i] += factor * x[i];
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

// I0(beta sqrt(1 - t^2)) / I0(beta) for t = 1 - step, 1 - step - step, ...
class Kaiser {
 public:
  Kaiser(double beta, double peak, double step) : beta_(beta), peak_(peak), t_(1.0 - step, -step) {}
  void operator()(std::size_t count, double* weight) {
    for (std::size_t start = 0; start < count; start += kLanes) {
      const std::size_t size = std::min(kLanes, count - start);
      double arguments[kLanes] = {}, sums[kLanes];
      t_.next(size, arguments);
      for (std::size_t i = 0; i < size; ++i) {
        arguments[i] = beta_ * fathom::sqrt(1.0 - arguments[i] * arguments[i]);
      }
      besselI0(arguments, sums);
      for (std::size_t i = 0; i < size; ++i) weight[start + i] = sums[i] / peak_;
    }
  }

 private:
  double beta_;
  double peak_;
  Running t_;
};

}  // namespace

AnalysisStatus HanWin(double* x, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  x[0] *= 0.0;
  walkSymmetric(x, n, Sines(kPi / n), Given::kRoots);
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
  walkSymmetric(x, n, [a, m, angle = Running(step, step)](std::size_t count, double* w) mutable {
    double theta[kTile], multiple[kTile], cosine[kTile];
    angle.next(count, theta);
    std::fill_n(multiple, count, 0.0);
    std::fill_n(w, count, a[0]);
    for (int32_t j = 1; j < m; ++j) {
      addTo(multiple, theta, 1.0, count);
      fathom::cos(multiple, count, cosine);
      addTo(w, cosine, j % 2 == 0 ? a[j] : -a[j], count);
    }
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
  walkSymmetric(x, n, [factor = Running(step, step)](std::size_t count, double* w) mutable {
    factor.next(count, w);
  });
  return FATHOM_OK;
}

AnalysisStatus CosTaperedWin(double* x, int32_t n) {
  const int32_t m = n / 10;
  if (m < 1) return FATHOM_OK;
  x[0] = 0.0;
  x[n - 1] = 0.0;
  walkInward(x, x + (n - 1), m - 1, Sines(kPi / (m * 2.0)), Given::kRoots);
  return FATHOM_OK;
}

AnalysisStatus ExpWin(double* x, int32_t n, double finalValue) {
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  Running exponent(0.0, fathom::log(finalValue) / (n - 1));
  const auto size = static_cast<std::size_t>(n);
  double weight[kTile];
  for (std::size_t start = 0; start < size; start += kTile) {
    const std::size_t count = std::min(kTile, size - start);
    exponent.next(count, weight);
    fathom::exp(weight, count, weight);
    multiply(x + start, weight, count);
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
