// DC level and AC RMS level of a record, from its mean and variance under a Hanning window.
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace {

// 8/3: the mean square of the window is 3/8.
constexpr fathom::Extended kEightThirds{fathom::extendedReciprocal(0.375)};

FATHOM_MULTIVERSION void subtract(const double* x, std::size_t n, double level, double* y) {
  for (std::size_t i = 0; i < n; ++i) y[i] = x[i] - level;
}

}  // namespace

AnalysisStatus ACDCEstimator(const double* x, int32_t n, double* ac, double* dc) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double level = 0.0;
  Mean(x, n, &level);
  const auto count = static_cast<std::size_t>(n);
  fathom::Workspace<double> windowed(count);
  if (!windowed) return FATHOM_ERR_MEMORY;
  subtract(x, count, level, windowed.data());
  HanWin(windowed.data(), n);
  double mean = 0.0;
  double variance = 0.0;
  Variance(windowed.data(), n, &mean, &variance);
  // The window, of mean 1/2, leaves 2 mean of DC, whose share of the variance is mean^2 / 2.
  const double rest = variance - 0.5 * (mean * mean);
  *ac = fathom::sqrt((rest * kEightThirds).toDouble());
  *dc = 2.0 * mean + level;
  return FATHOM_OK;
}
