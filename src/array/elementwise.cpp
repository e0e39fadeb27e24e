// Element-wise arithmetic, filling and clipping of real arrays and matrices. A matrix is walked as
// one array of rows x columns elements. The output may be any of the inputs.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/for_each.hpp"
#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::forEach;
using fathom::matrixSize;

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

// Divides up to the first element that is no divisor and gives its index, or n. The divisors of a
// block are known to be fit before its quotients, which may replace them, are stored. Registers of
// 64 bytes would divide a little slower than twice as many of 32.
template <std::size_t bytes>
FATHOM_INLINE void divideCheckedOf(const double* a, const double* b, std::size_t n, double* y,
                                   std::size_t* divided) {
  constexpr std::size_t kBytes = std::min<std::size_t>(bytes, 32);
  constexpr std::size_t kLanes = kBytes / sizeof(double);
  std::size_t i = 0;
  while (i < n) {
    const std::size_t head = fathom::beforeLine(y + i, n - i);
    const std::size_t end = std::min(n, i + (head > 0 ? head : fathom::kBlock));
    std::int64_t unfit = 0;
    for (std::size_t k = i; k < end; ++k) unfit |= isDivisor(b[k]) ? 0 : 1;
    if (unfit != 0) break;
    fathom::fetchAhead<fathom::kBlock>(y + i);
    for (; i + kLanes <= end; i += kLanes) {
      fathom::Lanes<kBytes> dividend, divisor;
      fathom::load(dividend, a + i);
      fathom::load(divisor, b + i);
      fathom::store(y + i, dividend / divisor);
    }
    for (; i < end; ++i) y[i] = a[i] / b[i];
  }
  for (; i < n && isDivisor(b[i]); ++i) y[i] = a[i] / b[i];
  *divided = i;
}

FATHOM_BY_WIDTH(divideChecked,
                (const double* a, const double* b, std::size_t n, double* y, std::size_t* divided),
                (a, b, n, y, divided))

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
  std::size_t divided = 0;
  divideChecked(a, b, count, y, &divided);
  return divided == count ? FATHOM_OK : FATHOM_ERR_DIVIDE_BY_ZERO;
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
