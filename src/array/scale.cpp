// Scaling of real arrays and matrices into [-1, 1], or to zero mean and unit deviation.
#include <cstddef>
#include <cstdint>
#include <limits>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::matrixSize;

// The reciprocal is formed once and multiplied by: dividing would round differently.
FATHOM_MULTIVERSION void centreAndDivide(const double* x, std::size_t n, double centre,
                                         double divisor, double* y) {
  const double reciprocal = 1.0 / divisor;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = (x[i] - centre) * reciprocal;
}

void scaleBetween(const double* x, std::size_t n, double maximum, double minimum, double* y,
                  double* offset, double* scale) {
  *scale = (maximum - minimum) * 0.5;
  *offset = minimum + *scale;
  centreAndDivide(x, n, *offset, *scale, y);
}

// The largest magnitude, NaNs passed over. It does not depend on the order of the comparisons, so
// each lane may keep its own.
FATHOM_MULTIVERSION double largestMagnitude(const double* x, std::size_t n) {
  constexpr std::size_t kLanes = 32;
  double largest[kLanes] = {};
  std::size_t start = 0;
  for (; start + kLanes <= n; start += kLanes) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      const double m = fathom::fabs(x[start + i]);
      largest[i] = m > largest[i] ? m : largest[i];
    }
  }
  for (std::size_t i = 0; start + i < n; ++i) {
    const double m = fathom::fabs(x[start + i]);
    if (m > largest[i]) largest[i] = m;
  }
  double result = 0.0;
  for (const double m : largest) result = m > result ? m : result;
  return result;
}

FATHOM_MULTIVERSION void multiplyBy(const double* x, std::size_t n, double factor, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = x[i] * factor;
}

void scaleByLargest(const double* x, std::size_t n, double* y, double* largest) {
  const double magnitude = largestMagnitude(x, n);
  multiplyBy(x, n, 1.0 / magnitude, y);
  *largest = magnitude;
}

}  // namespace

AnalysisStatus Scale1D(const double* x, int32_t n, double* y, double* offset, double* scale) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  double maximum, minimum;
  int32_t maximumIndex, minimumIndex;
  MaxMin1D(x, n, &maximum, &maximumIndex, &minimum, &minimumIndex);
  scaleBetween(x, static_cast<std::size_t>(n), maximum, minimum, y, offset, scale);
  return FATHOM_OK;
}

AnalysisStatus Scale2D(const double* x, int32_t rows, int32_t columns, double* y, double* offset,
                       double* scale) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  double maximum, minimum;
  int32_t maximumRow, maximumColumn, minimumRow, minimumColumn;
  MaxMin2D(x, rows, columns, &maximum, &maximumRow, &maximumColumn, &minimum, &minimumRow,
           &minimumColumn);
  scaleBetween(x, matrixSize(rows, columns), maximum, minimum, y, offset, scale);
  return FATHOM_OK;
}

AnalysisStatus QScale1D(const double* x, int32_t n, double* y, double* largest) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  scaleByLargest(x, static_cast<std::size_t>(n), y, largest);
  return FATHOM_OK;
}

AnalysisStatus QScale2D(const double* x, int32_t rows, int32_t columns, double* y,
                        double* largest) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  scaleByLargest(x, matrixSize(rows, columns), y, largest);
  return FATHOM_OK;
}

AnalysisStatus Normal1D(const double* x, int32_t n, double* y, double* mean, double* deviation) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  StdDev(x, n, mean, deviation);
  centreAndDivide(x, static_cast<std::size_t>(n), *mean, *deviation, y);
  return FATHOM_OK;
}

AnalysisStatus Normal2D(const double* x, int32_t rows, int32_t columns, double* y, double* mean,
                        double* deviation) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  const std::size_t n = matrixSize(rows, columns);
  if (n <= std::numeric_limits<int32_t>::max()) {
    StdDev(x, static_cast<int32_t>(n), mean, deviation);
  } else {  // more elements than StdDev can count
    *mean = *deviation = std::numeric_limits<double>::quiet_NaN();
  }
  centreAndDivide(x, n, *mean, *deviation, y);
  return FATHOM_OK;
}
