// A window chosen by number, divided by its coherent gain, with its properties.
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "fathom.h"
#include "frame/multiversion.hpp"

namespace {

constexpr double kFourTerms[] = {0.35875, 0.48829, 0.14128, 0.01168};
constexpr double kSevenTerms[] = {
    0.27105140069342415,  0.43329793923448606,   0.21812299954311062,   0.0659254463880309,
    0.010811742098372268, 0.0007765848252250934, 1.3887217350903198e-05};

AnalysisStatus leave(double* /*x*/, int32_t /*n*/) {
  return FATHOM_OK;
}
AnalysisStatus fourTermBlackmanHarris(double* x, int32_t n) {
  return GenCosWin(x, n, kFourTerms, static_cast<int32_t>(std::size(kFourTerms)));
}
AnalysisStatus sevenTermBlackmanHarris(double* x, int32_t n) {
  return GenCosWin(x, n, kSevenTerms, static_cast<int32_t>(std::size(kSevenTerms)));
}

struct WindowRow {
  AnalysisStatus (*apply)(double* x, int32_t n);
  WindowProperties properties;
};

// Indexed by FathomWindow.
constexpr WindowRow kWindows[] = {
    {leave, {1.0, 1.0}},
    {HanWin, {1.5, 0.5}},
    {HamWin, {1.36, 0.54}},
    {BlkHarrisWin, {1.708538, 0.42323}},
    {ExBkmanWin, {1.693699, 0.42659071367}},
    {BkmanWin, {1.726757, 0.42}},
    {FlatTopWin, {2.965606, 0.28106388}},
    {fourTermBlackmanHarris, {2.004353, 0.35875}},
    {sevenTermBlackmanHarris, {2.631905, 0.27105140069342415}},
};
constexpr auto kWindowCount = static_cast<int32_t>(std::size(kWindows));
static_assert(kWindowCount == FATHOM_WINDOW_SEVEN_TERM_BLACKMAN_HARRIS + 1);

FATHOM_MULTIVERSION void multiply(double* x, std::size_t n, double factor) {
  for (std::size_t i = 0; i < n; ++i) x[i] *= factor;
}

}  // namespace

AnalysisStatus ScaledWindow(double* x, int32_t n, int32_t window, WindowProperties* properties) {
  if (n < 0) return FATHOM_ERR_NEGATIVE_SAMPLES;
  const bool known = window >= 0 && window < kWindowCount;
  const WindowRow& row = kWindows[known ? window : FATHOM_WINDOW_RECTANGULAR];
  row.apply(x, n);  // refuses n = 0, which is no failure here
  *properties = row.properties;
  multiply(x, static_cast<std::size_t>(n), 1.0 / row.properties.coherentGain);
  return FATHOM_OK;
}
