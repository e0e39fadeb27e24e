// Power and frequency of one peak of a power spectrum.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"

namespace {

int32_t largestBin(const double* spectrum, int32_t n) {
  double maximum = 0.0, minimum = 0.0;
  int32_t maximumIndex = 0, minimumIndex = 0;
  MaxMin1D(spectrum, n, &maximum, &maximumIndex, &minimum, &minimumIndex);
  return maximumIndex;
}

// The integer part; a zero is positive.
double truncate(double x) {
  return (x < 0.0 ? fathom::ceil(x) : fathom::floor(x)) + 0.0;
}

}  // namespace

AnalysisStatus PowerFrequencyEstimate(const double* spectrum, int32_t n, double searchFrequency,
                                      double noiseBandwidth, double /*reserved*/, double df,
                                      int32_t span, double* peakFrequency, double* peakPower) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  // The bin stays a double: with a negative df it may be far below any integer.
  double peak = n;
  if (!(searchFrequency < 0.0)) peak = truncate(searchFrequency / df);
  if (!(peak < n)) peak = largestBin(spectrum, n);

  const int32_t reach = std::max(span, 3) / 2;  // bins on either side
  double sum = 0.0;
  double moment = 0.0;
  if (peak >= -reach) {
    const auto centre = static_cast<int64_t>(peak);
    const int64_t last = std::min<int64_t>(centre + reach, n - 1);
    for (int64_t j = std::max<int64_t>(centre - reach, 0); j <= last; ++j) {
      sum += spectrum[j];
      moment += static_cast<double>(j) * spectrum[j];
    }
  }
  *peakPower = sum / noiseBandwidth;
  *peakFrequency = sum > 0.0 ? moment * df / sum : peak * df;
  return FATHOM_OK;
}
