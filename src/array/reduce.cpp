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

// The scan is defined element by element: a NaN is taken as the minimum, and whatever follows it
// that is no new maximum replaces it. Blocks in which no element would be taken are passed over.
FATHOM_MULTIVERSION Extremes findExtremes(const double* x, std::size_t n) {
  constexpr std::size_t kBlock = 64;
  Extremes e{x[0], 0, x[0], 0};
  for (std::size_t start = 0; start < n;) {
    const std::size_t end = n - start < kBlock ? n : start + kBlock;
    std::int64_t taken = 0;
    if (end - start == kBlock) {
      const double* block = x + start;
      const double maximum = e.maximum;
      const double minimum = e.minimum;
      for (std::size_t i = 0; i < kBlock; ++i) {
        taken |= (block[i] <= maximum ? 0 : 1) | (block[i] >= minimum ? 0 : 1);
      }
    } else {
      taken = 1;
    }
    if (taken != 0) {
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
    start = end;
  }
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
