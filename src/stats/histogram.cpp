// Histogram of one real sequence over equal intervals, and its most populated interval.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace {

constexpr std::size_t kTile = 256;

struct Scale {
  double base;
  double top;
  double inverseWidth;
  int32_t intervals;
};

// Interval of each sample, -1 for those that belong to none; returns how many those are. Truncation
// is the floor inside the range, and nothing outside it (NaN neither) is converted.
FATHOM_MULTIVERSION int32_t locate(const double* x, std::size_t n, const Scale& scale,
                                   int32_t* interval) {
  const double base = scale.base;
  const double top = scale.top;
  const double inverseWidth = scale.inverseWidth;
  const double limit = scale.intervals;
  const double last = limit - 1.0;
  int32_t ignored = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double t = (x[i] - base) * inverseWidth;
    const double edge = x[i] == top ? last : -1.0;
    const double position = t >= 0.0 && t < limit ? t : edge;
    interval[i] = static_cast<int32_t>(position);
    ignored += interval[i] < 0 ? 1 : 0;
  }
  return ignored;
}

}  // namespace

AnalysisStatus Mode(const double* x, int32_t n, double base, double top, int32_t intervals,
                    double* mode) {
  if (intervals < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(intervals);
  fathom::Workspace<int32_t> counts(size);
  if (!counts) return FATHOM_ERR_MEMORY;
  fathom::Workspace<double> axis(size);
  if (!axis) return FATHOM_ERR_MEMORY;
  const AnalysisStatus status = Histogram(x, n, base, top, counts.data(), axis.data(), intervals);
  if (status != FATHOM_OK) return status;
  std::size_t fullest = 0;
  for (std::size_t i = 1; i < size; ++i) {
    if (counts[i] > counts[fullest]) fullest = i;
  }
  *mode = axis[fullest];
  return FATHOM_OK;
}

AnalysisStatus Histogram(const double* x, int32_t n, double base, double top, int32_t* counts,
                         double* axis, int32_t intervals) {
  if (!(base < top)) return FATHOM_ERR_BASE_TOP;
  if (n < 1 || intervals < 1) return FATHOM_ERR_NO_SAMPLES;
  const double width = (top - base) / intervals;
  double centre = width * 0.5 + base;
  for (int32_t i = 0; i < intervals; ++i) {
    axis[i] = centre;
    counts[i] = 0;
    centre += width;  // the running sum, whose rounding is part of the axis
  }
  const Scale scale{base, top, 1.0 / width, intervals};
  const auto count = static_cast<std::size_t>(n);
  int32_t interval[kTile];
  for (std::size_t start = 0; start < count; start += kTile) {
    std::size_t length = std::min(kTile, count - start);
    if (locate(x + start, length, scale, interval) > 0) {
      std::size_t kept = 0;
      for (std::size_t i = 0; i < length; ++i) {
        interval[kept] = interval[i];
        kept += interval[i] >= 0 ? 1 : 0;
      }
      length = kept;
    }
    for (std::size_t i = 0; i < length; ++i) ++counts[interval[i]];
  }
  return FATHOM_OK;
}
