// Histogram of one real sequence over equal intervals, and its most populated interval.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace {

constexpr std::size_t kTile = 256;
constexpr int32_t kFewIntervals = 512;

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

// Moves the intervals that are none (-1) out of the list; returns how many are left.
std::size_t keepCounted(int32_t* interval, std::size_t n) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < n; ++i) {
    interval[kept] = interval[i];
    kept += interval[i] >= 0 ? 1 : 0;
  }
  return kept;
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
  // Neighbouring samples tend to share an interval, and each increment of a count waits for the one
  // before: where the axis is short, four samples in turn are counted in four tables.
  int32_t partial[3][kFewIntervals];
  const bool split = intervals <= kFewIntervals && n / 4 >= intervals;
  int32_t* table[4] = {counts, counts, counts, counts};
  for (int32_t k = 1; split && k < 4; ++k) {
    table[k] = partial[k - 1];
    std::fill_n(table[k], intervals, 0);
  }

  const Scale scale{base, top, 1.0 / width, intervals};
  const auto count = static_cast<std::size_t>(n);
  int32_t interval[kTile];
  for (std::size_t start = 0; start < count; start += kTile) {
    std::size_t length = std::min(kTile, count - start);
    if (locate(x + start, length, scale, interval) > 0) length = keepCounted(interval, length);
    std::size_t i = 0;
    for (; i + 4 <= length; i += 4) {
      ++table[0][interval[i]];
      ++table[1][interval[i + 1]];
      ++table[2][interval[i + 2]];
      ++table[3][interval[i + 3]];
    }
    for (; i < length; ++i) ++counts[interval[i]];
  }

  for (int32_t i = 0; split && i < intervals; ++i) {
    counts[i] += partial[0][i] + partial[1][i] + partial[2][i];
  }
  return FATHOM_OK;
}
