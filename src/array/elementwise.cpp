// Element-wise arithmetic, filling and clipping of real arrays and matrices. A matrix is walked as
// one array of rows x columns elements. The output may be any of the inputs.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::matrixSize;

FATHOM_MULTIVERSION void add(const double* a, const double* b, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = a[i] + b[i];
}

FATHOM_MULTIVERSION void subtract(const double* a, const double* b, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = a[i] - b[i];
}

FATHOM_MULTIVERSION void multiply(const double* a, const double* b, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = a[i] * b[i];
}

FATHOM_MULTIVERSION void divide(const double* a, const double* b, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = a[i] / b[i];
}

// False for NaN as well as for zero.
FATHOM_INLINE bool isDivisor(double b) {
  return fathom::fabs(b) > 0.0;
}

// Divides up to the first element that is no divisor; returns its index, or n. The divisors of a
// block are looked at before its quotients are written, which may replace them.
FATHOM_MULTIVERSION std::size_t divideChecked(const double* a, const double* b, std::size_t n,
                                              double* y) {
  constexpr std::size_t kBlock = 128;
  std::size_t start = 0;
  for (; start + kBlock <= n; start += kBlock) {
    std::int64_t unfit = 0;
    for (std::size_t i = start; i < start + kBlock; ++i) unfit |= isDivisor(b[i]) ? 0 : 1;
    if (unfit != 0) break;
    FATHOM_INDEPENDENT
    for (std::size_t i = start; i < start + kBlock; ++i) y[i] = a[i] / b[i];
  }
  for (; start < n && isDivisor(b[start]); ++start) y[start] = a[start] / b[start];
  return start;
}

FATHOM_MULTIVERSION void magnitude(const double* x, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = fathom::fabs(x[i]);
}

FATHOM_MULTIVERSION void negate(const double* x, std::size_t n, double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = -x[i];
}

FATHOM_MULTIVERSION void clip(const double* x, std::size_t n, double upper, double lower,
                              double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double notBelow = x[i] >= lower ? x[i] : lower;  // a NaN becomes the lower limit
    y[i] = x[i] > upper ? upper : notBelow;
  }
}

using Operation = void (*)(const double* a, const double* b, std::size_t n, double* y);

AnalysisStatus overArray(Operation operation, const double* a, const double* b, int32_t n,
                         double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  operation(a, b, static_cast<std::size_t>(n), y);
  return FATHOM_OK;
}

AnalysisStatus overMatrix(Operation operation, const double* a, const double* b, int32_t rows,
                          int32_t columns, double* y) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  operation(a, b, matrixSize(rows, columns), y);
  return FATHOM_OK;
}

}  // namespace

AnalysisStatus Add1D(const double* a, const double* b, int32_t n, double* y) {
  return overArray(add, a, b, n, y);
}

AnalysisStatus Sub1D(const double* a, const double* b, int32_t n, double* y) {
  return overArray(subtract, a, b, n, y);
}

AnalysisStatus Mul1D(const double* a, const double* b, int32_t n, double* y) {
  return overArray(multiply, a, b, n, y);
}

AnalysisStatus Div1D(const double* a, const double* b, int32_t n, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  return divideChecked(a, b, count, y) == count ? FATHOM_OK : FATHOM_ERR_DIVIDE_BY_ZERO;
}

AnalysisStatus Add2D(const double* a, const double* b, int32_t rows, int32_t columns, double* y) {
  return overMatrix(add, a, b, rows, columns, y);
}

AnalysisStatus Sub2D(const double* a, const double* b, int32_t rows, int32_t columns, double* y) {
  return overMatrix(subtract, a, b, rows, columns, y);
}

AnalysisStatus Mul2D(const double* a, const double* b, int32_t rows, int32_t columns, double* y) {
  return overMatrix(multiply, a, b, rows, columns, y);
}

AnalysisStatus Div2D(const double* a, const double* b, int32_t rows, int32_t columns, double* y) {
  return overMatrix(divide, a, b, rows, columns, y);
}

AnalysisStatus Abs1D(const double* x, int32_t n, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  magnitude(x, static_cast<std::size_t>(n), y);
  return FATHOM_OK;
}

AnalysisStatus Neg1D(const double* x, int32_t n, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  negate(x, static_cast<std::size_t>(n), y);
  return FATHOM_OK;
}

AnalysisStatus Clear1D(double* x, int32_t n) {
  return Set1D(x, n, 0.0);
}

AnalysisStatus Set1D(double* x, int32_t n, double value) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  std::fill_n(x, n, value);
  return FATHOM_OK;
}

AnalysisStatus Clip(const double* x, int32_t n, double upper, double lower, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(upper >= lower)) return FATHOM_ERR_LIMITS;
  clip(x, static_cast<std::size_t>(n), upper, lower, y);
  return FATHOM_OK;
}
