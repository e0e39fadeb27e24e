// Extremes with their positions, sums and products of real arrays and matrices.
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/multiversion.hpp"

namespace {

using fathom::matrixSize;

struct Extremes {
  double maximum;
  std::size_t maximumAt;
  double minimum;
  std::size_t minimumAt;
};

// The scan that defines the result: a NaN is taken as the minimum, and whatever follows it that is
// no new maximum replaces it.
void scan(const double* x, std::size_t start, std::size_t end, Extremes& e) {
  for (std::size_t i = start; i < end; ++i) {
    if (x[i] > e.maximum) {
      e.maximum = x[i];
      e.maximumAt = i;
    } else if (!(x[i] >= e.minimum)) {
      e.minimum = x[i];
      e.minimumAt = i;
    }
  }
}

FATHOM_INLINE std::size_t findFrom(const double* x, std::size_t start, double value) {
  constexpr std::size_t kBlock = 32;
  for (;; start += kBlock) {
    std::int64_t found = 0;
    for (std::size_t i = start; i < start + kBlock; ++i) found |= x[i] == value ? 1 : 0;
    if (found != 0) break;
  }
  while (x[start] != value) ++start;
  return start;
}

// Blocks are searched for their extremes as values, in lanes, and for a place only when one is new.
// Without a NaN that gives what the scan gives, the sign of a zero included, because the first of
// equal values is found. A block that holds a NaN, or follows one that is still held, is scanned.
FATHOM_MULTIVERSION Extremes findExtremes(const double* x, std::size_t n) {
  constexpr std::size_t kLanes = 32;
  constexpr std::size_t kBlock = 32 * kLanes;
  Extremes e{x[0], 0, x[0], 0};
  std::size_t start = 0;
  while (n - start >= kLanes) {
    const std::size_t end = n - start < kBlock ? n - (n - start) % kLanes : start + kBlock;
    double maxima[kLanes];
    double minima[kLanes];
    std::int64_t unordered[kLanes] = {};
    for (std::size_t j = 0; j < kLanes; ++j) {
      maxima[j] = e.maximum;
      minima[j] = e.minimum;
    }
    for (std::size_t i = start; i < end; i += kLanes) {
      for (std::size_t j = 0; j < kLanes; ++j) {
        const double v = x[i + j];
        maxima[j] = v > maxima[j] ? v : maxima[j];
        minima[j] = v < minima[j] ? v : minima[j];
        unordered[j] |= v == v ? 0 : 1;
      }
    }
    double maximum = e.maximum;
    double minimum = e.minimum;
    std::int64_t unfit = maximum == maximum && minimum == minimum ? 0 : 1;
    for (std::size_t j = 0; j < kLanes; ++j) {
      maximum = maxima[j] > maximum ? maxima[j] : maximum;
      minimum = minima[j] < minimum ? minima[j] : minimum;
      unfit |= unordered[j];
    }
    if (unfit != 0) {
      scan(x, start, end, e);
    } else {
      if (maximum > e.maximum) {
        e.maximumAt = findFrom(x, start, maximum);
        e.maximum = x[e.maximumAt];
      }
      if (minimum < e.minimum) {
        e.minimumAt = findFrom(x, start, minimum);
        e.minimum = x[e.minimumAt];
      }
    }
    start = end;
  }
  scan(x, start, n, e);
  return e;
}

double sumOf(const double* x, std::size_t n) {
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) sum += x[i];
  return sum;
}

}  // namespace

AnalysisStatus MaxMin1D(const double* x, int32_t n, double* maximum, int32_t* maximumIndex,
                        double* minimum, int32_t* minimumIndex) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const Extremes e = findExtremes(x, static_cast<std::size_t>(n));
  *maximum = e.maximum;
  *maximumIndex = static_cast<int32_t>(e.maximumAt);
  *minimum = e.minimum;
  *minimumIndex = static_cast<int32_t>(e.minimumAt);
  return FATHOM_OK;
}

AnalysisStatus MaxMin2D(const double* x, int32_t rows, int32_t columns, double* maximum,
                        int32_t* maximumRow, int32_t* maximumColumn, double* minimum,
                        int32_t* minimumRow, int32_t* minimumColumn) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  const Extremes e = findExtremes(x, matrixSize(rows, columns));
  const auto rowLength = static_cast<std::size_t>(columns);
  *maximum = e.maximum;
  *maximumRow = static_cast<int32_t>(e.maximumAt / rowLength);
  *maximumColumn = static_cast<int32_t>(e.maximumAt % rowLength);
  *minimum = e.minimum;
  *minimumRow = static_cast<int32_t>(e.minimumAt / rowLength);
  *minimumColumn = static_cast<int32_t>(e.minimumAt % rowLength);
  return FATHOM_OK;
}

AnalysisStatus Sum1D(const double* x, int32_t n, double* sum) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  *sum = sumOf(x, static_cast<std::size_t>(n));
  return FATHOM_OK;
}

AnalysisStatus Sum2D(const double* x, int32_t rows, int32_t columns, double* sum) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  *sum = sumOf(x, matrixSize(rows, columns));
  return FATHOM_OK;
}

AnalysisStatus Prod1D(const double* x, int32_t n, double* product) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double running = 1.0;
  for (int32_t i = 0; i < n; ++i) running *= x[i];
  *product = running;
  return FATHOM_OK;
}
