// Descriptive statistics: mean, deviation, central moments and median of one real sequence.
//
// Sums run in index order in one accumulator each; their order decides the last bits.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace {

struct Sums {
  double values;
  double squares;
};

// Two independent chains of additions in one pass, which hide each other's latency.
Sums sumsOf(const double* x, int32_t n) {
  Sums sums{0.0, 0.0};
  for (int32_t i = 0; i < n; ++i) {
    sums.values += x[i];
    sums.squares += x[i] * x[i];
  }
  return sums;
}

constexpr std::size_t kTile = 32;

// power[i] = deviation[i] multiplied by itself order - 1 times. A power that returns after two
// steps (zero, one, infinity, a value that no longer rounds away) returns for ever, so that only
// the parity of the steps still to do counts.
FATHOM_MULTIVERSION void raise(const double* deviation, int32_t order, double* power) {
  constexpr int32_t kStepsBetweenLooks = 32;
  double before[kTile];
  std::copy_n(deviation, kTile, power);
  int32_t steps = order - 1;
  while (steps > kStepsBetweenLooks) {
    for (int32_t s = 2; s < kStepsBetweenLooks; ++s) {
      for (std::size_t i = 0; i < kTile; ++i) power[i] *= deviation[i];
    }
    bool settled = true;
    for (std::size_t i = 0; i < kTile; ++i) {
      before[i] = power[i];
      power[i] = power[i] * deviation[i] * deviation[i];
      settled = settled && !(power[i] < before[i] || power[i] > before[i]);
    }
    steps -= kStepsBetweenLooks;
    if (settled) steps %= 2;
  }
  for (; steps > 0; --steps) {
    for (std::size_t i = 0; i < kTile; ++i) power[i] *= deviation[i];
  }
}

}  // namespace

AnalysisStatus Mean(const double* x, int32_t n, double* mean) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double sum = 0.0;
  for (int32_t i = 0; i < n; ++i) sum += x[i];
  *mean = sum / n;
  return FATHOM_OK;
}

AnalysisStatus StdDev(const double* x, int32_t n, double* mean, double* deviation) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const Sums sums = sumsOf(x, n);
  const double average = sums.values / n;
  *mean = average;
  *deviation = fathom::sqrt(fathom::fabs(sums.squares / n - average * average));
  return FATHOM_OK;
}

AnalysisStatus Variance(const double* x, int32_t n, double* mean, double* variance) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const Sums sums = sumsOf(x, n);
  const double average = sums.values / n;
  *mean = average;
  *variance = sums.squares / n - average * average;
  return FATHOM_OK;
}

AnalysisStatus RMS(const double* x, int32_t n, double* rms) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double squares = 0.0;
  for (int32_t i = 0; i < n; ++i) squares += x[i] * x[i];
  *rms = fathom::sqrt(squares / n);
  return FATHOM_OK;
}

AnalysisStatus Moment(const double* x, int32_t n, int32_t order, double* moment) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (order < 1) return FATHOM_ERR_ORDER;
  double mean = 0.0;
  Mean(x, n, &mean);
  const auto count = static_cast<std::size_t>(n);
  double sum = 0.0;
  for (std::size_t start = 0; start < count; start += kTile) {
    const std::size_t length = std::min(kTile, count - start);
    double deviation[kTile] = {};
    double power[kTile];
    for (std::size_t i = 0; i < length; ++i) deviation[i] = x[start + i] - mean;
    raise(deviation, order, power);
    for (std::size_t i = 0; i < length; ++i) sum += power[i];
  }
  *moment = sum / n;
  return FATHOM_OK;
}

AnalysisStatus Median(const double* x, int32_t n, double* median) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  fathom::Workspace<double> sorted(count);
  if (!sorted) return FATHOM_ERR_MEMORY;
  std::copy_n(x, count, sorted.data());
  if (n > 1) Sort(sorted.data(), n, 0, sorted.data());
  const std::size_t middle = count / 2;
  *median = n % 2 == 1 ? sorted[middle] : (sorted[middle] + sorted[middle - 1]) * 0.5;
  return FATHOM_OK;
}
