// Parameters of a single positive pulse: its two levels from the histogram of the samples, and the
// times at which it crosses fractions of the step between them.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/multiversion.hpp"

namespace {

struct Range {
  double minimum;
  double maximum;
};

// Neither takes a NaN, unless it comes first: then both are that NaN.
FATHOM_MULTIVERSION Range rangeOf(const double* x, std::size_t n) {
  constexpr std::size_t kLanes = 32;
  double minima[kLanes];
  double maxima[kLanes];
  for (std::size_t j = 0; j < kLanes; ++j) minima[j] = maxima[j] = x[0];
  std::size_t i = 0;
  for (; i + kLanes <= n; i += kLanes) {
    for (std::size_t j = 0; j < kLanes; ++j) {
      minima[j] = x[i + j] < minima[j] ? x[i + j] : minima[j];
      maxima[j] = x[i + j] > maxima[j] ? x[i + j] : maxima[j];
    }
  }
  Range range{x[0], x[0]};
  const auto take = [&range](double low, double high) {
    if (low < range.minimum) range.minimum = low;
    if (high > range.maximum) range.maximum = high;
  };
  for (std::size_t j = 0; j < kLanes; ++j) take(minima[j], maxima[j]);
  for (; i < n; ++i) take(x[i], x[i]);
  // Of zeros of both signs the first counts; the minimum's sign shows in no result.
  if (range.maximum == 0.0) range.maximum = *std::find(x, x + n, 0.0);
  return range;
}

struct Levels {
  double base;
  double top;
};

// The centres of the fullest intervals of the lower and of the upper half, of equal ones the
// outermost. The interval in the middle belongs to neither.
Levels levelsOf(const double* x, int32_t n, const Range& range) {
  constexpr int32_t kIntervals = 25;
  int32_t counts[kIntervals];
  double axis[kIntervals];
  if (Histogram(x, n, range.minimum, range.maximum, counts, axis, kIntervals) != FATHOM_OK) {
    return {range.minimum, range.maximum};  // equal samples, or a NaN in front
  }
  int32_t low = 0;
  int32_t high = kIntervals - 1;
  for (int32_t i = 1; i < kIntervals / 2; ++i) {
    if (counts[i] > counts[low]) low = i;
    if (counts[kIntervals - 1 - i] > counts[high]) high = kIntervals - 1 - i;
  }
  return {axis[low], axis[high]};
}

struct Edges {
  int32_t delay;
  int32_t width;
  int32_t rise;
  int32_t fall;
};

// One pass; a crossing that is not found is at n.
Edges edgesOf(const double* x, int32_t n, double low, double middle, double high) {
  Edges edges{};
  int32_t i = 0;
  int32_t lastLow = 0;
  for (; i < n && x[i] < middle; ++i) {
    if (x[i] < low) lastLow = i;
  }
  edges.delay = i;
  while (i < n && x[i] < high) ++i;
  edges.rise = i - lastLow;
  int32_t lastHigh = i;
  for (; i < n && x[i] > middle; ++i) {
    if (x[i] > high) lastHigh = i;
  }
  edges.width = i - edges.delay;
  while (i < n && x[i] > low) ++i;
  edges.fall = i - lastHigh;
  return edges;
}

}  // namespace

AnalysisStatus PulseParam(const double* x, int32_t n, double* amplitude, double* highReference,
                          double* middleReference, double* lowReference, double* top, double* base,
                          double* overshoot, double* preshoot, int32_t* delay, int32_t* width,
                          int32_t* riseTime, int32_t* fallTime, double* slewRate) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const Range range = rangeOf(x, static_cast<std::size_t>(n));
  const Levels levels = levelsOf(x, n, range);
  const double step = levels.top - levels.base;
  const double low = 0.1 * step;
  const double middle = 0.5 * step;
  const double high = 0.9 * step;
  const Edges edges = edgesOf(x, n, low + levels.base, middle + levels.base, high + levels.base);
  *amplitude = step;
  *highReference = high;
  *middleReference = middle;
  *lowReference = low;
  *top = levels.top;
  *base = levels.base;
  *overshoot = range.maximum - levels.top;
  *preshoot = levels.base - range.minimum;
  *delay = edges.delay;
  *width = edges.width;
  *riseTime = edges.rise;
  *fallTime = edges.fall;
  *slewRate = edges.rise != 0 ? (high - low) / edges.rise : 1e30;
  return FATHOM_OK;
}
