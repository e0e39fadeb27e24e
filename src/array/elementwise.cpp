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

// y[i] = element(i) for every i. Long outputs are brought to a cache line first: a register's store
// that straddles two of them costs twice.
template <typename Element>
FATHOM_INLINE void forEach(std::size_t n, double* y, Element element) {
  constexpr std::size_t kLine = 64;
  std::size_t start = 0;
  if (n >= 256) {
    const std::size_t past = reinterpret_cast<std::uintptr_t>(y) % kLine;
    const std::size_t head = (kLine - past) % kLine / sizeof(double);
    for (; start < head; ++start) y[start] = element(start);
  }
  FATHOM_INDEPENDENT
  for (std::size_t i = start; i < n; ++i) y[i] = element(i);
}

FATHOM_MULTIVERSION void add(const double* a, const double* b, std::size_t n, double* y) {
  forEach(n, y, [=](std::size_t i) { return a[i] + b[i]; });
}

FATHOM_MULTIVERSION void subtract(const double* a, const double* b, std::size_t n, double* y) {
  forEach(n, y, [=](std::size_t i) { return a[i] - b[i]; });
}

FATHOM_MULTIVERSION void multiply(const double* a, const double* b, std::size_t n, double* y) {
  forEach(n, y, [=](std::size_t i) { return a[i] * b[i]; });
}

FATHOM_MULTIVERSION void divide(const double* a, const double* b, std::size_t n, double* y) {
  forEach(n, y, [=](std::size_t i) { return a[i] / b[i]; });
}

// False for NaN as well as for zero.
FATHOM_INLINE bool isDivisor(double b) {
  return fathom::fabs(b) > 0.0;
}

// Divides up to the first element that is no divisor; returns its index, or n. The quotients of a
// block wait until all its divisors are known to be fit, since they may replace them.
FATHOM_MULTIVERSION std::size_t divideChecked(const double* a, const double* b, std::size_t n,
                                              double* y) {
  constexpr std::size_t kBlock = 64;
  double quotients[kBlock];
  std::size_t start = 0;
  while (start < n) {
    const std::size_t length = std::min(kBlock, n - start);
    std::int64_t unfit = 0;
    for (std::size_t i = 0; i < length; ++i) {
      quotients[i] = a[start + i] / b[start + i];
      unfit |= isDivisor(b[start + i]) ? 0 : 1;
    }
    if (unfit != 0) break;
    std::copy_n(quotients, length, y + start);
    start += length;
  }
  for (; start < n && isDivisor(b[start]); ++start) y[start] = a[start] / b[start];
  return start;
}

FATHOM_MULTIVERSION void magnitude(const double* x, std::size_t n, double* y) {
  forEach(n, y, [=](std::size_t i) { return fathom::fabs(x[i]); });
}

FATHOM_MULTIVERSION void negate(const double* x, std::size_t n, double* y) {
  forEach(n, y, [=](std::size_t i) { return -x[i]; });
}

// A NaN becomes the lower limit in both forms. The first compares in the direction of the
// processor's own maximum; the second keeps the sign of a zero that equals its limit.
FATHOM_MULTIVERSION void clip(const double* x, std::size_t n, double upper, double lower,
                              double* y) {
  if (lower < 0.0 || lower > 0.0) {
    forEach(n, y, [=](std::size_t i) {
      const double notBelow = x[i] > lower ? x[i] : lower;
      return upper < notBelow ? upper : notBelow;
    });
  } else {
    forEach(n, y, [=](std::size_t i) {
      const double notBelow = x[i] >= lower ? x[i] : lower;
      return upper < notBelow ? upper : notBelow;
    });
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
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  std::fill_n(x, n, 0.0);
  return FATHOM_OK;
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
