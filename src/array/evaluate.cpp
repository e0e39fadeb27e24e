// Evaluation of a line or a polynomial at every element of an array or matrix.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/for_each.hpp"
#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace {

FATHOM_MULTIVERSION void evaluateLine(const double* x, std::size_t n, double a, double b,
                                      double* y) {
  fathom::forEach(n, y, [=](std::size_t i) { return x[i] * a + b; });
}

// One tile, its powers and sums in registers, for m of at least 2. Low powers come first: the order
// decides the last bits.
constexpr std::size_t kRegisters = 4;

template <std::size_t bytes>
FATHOM_INLINE void evaluateTile(const double* x, const double* c, int32_t m, double* y) {
  using Lanes = fathom::Lanes<bytes>;
  constexpr std::size_t kLanes = bytes / sizeof(double);
  Lanes at[kRegisters], power[kRegisters], sum[kRegisters];
  FATHOM_UNROLL
  for (std::size_t r = 0; r < kRegisters; ++r) {
    fathom::load(at[r], x + r * kLanes);
    power[r] = at[r];
    sum[r] = c[0] + c[1] * at[r];
  }
  for (int32_t j = 2; j < m; ++j) {
    FATHOM_UNROLL
    for (std::size_t r = 0; r < kRegisters; ++r) {
      power[r] *= at[r];
      sum[r] += c[j] * power[r];
    }
  }
  FATHOM_UNROLL
  for (std::size_t r = 0; r < kRegisters; ++r) fathom::store(y + r * kLanes, sum[r]);
}

template <std::size_t bytes>
FATHOM_INLINE void evaluatePolynomialOf(const double* x, std::size_t n, const double* c, int32_t m,
                                        double* y) {
  if (m == 1) {
    std::fill_n(y, n, c[0]);
    return;
  }
  constexpr std::size_t kTile = kRegisters * bytes / sizeof(double);
  std::size_t start = 0;
  for (; start + kTile <= n; start += kTile) {
    if (n >= fathom::kWorthFetching) {
      fathom::fetchAhead<kTile>(x + start);
      fathom::fetchAhead<kTile>(y + start);
    }
    evaluateTile<bytes>(x + start, c, m, y + start);
  }
  if (start == n) return;
  double rest[kTile] = {};
  std::copy_n(x + start, n - start, rest);
  evaluateTile<bytes>(rest, c, m, rest);
  std::copy_n(rest, n - start, y + start);
}

FATHOM_BY_WIDTH(evaluatePolynomial,
                (const double* x, std::size_t n, const double* c, int32_t m, double* y),
                (x, n, c, m, y))

}  // namespace

AnalysisStatus LinEv1D(const double* x, int32_t n, double a, double b, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  evaluateLine(x, static_cast<std::size_t>(n), a, b, y);
  return FATHOM_OK;
}

AnalysisStatus LinEv2D(const double* x, int32_t rows, int32_t columns, double a, double b,
                       double* y) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  evaluateLine(x, fathom::matrixSize(rows, columns), a, b, y);
  return FATHOM_OK;
}

AnalysisStatus PolyEv1D(const double* x, int32_t n, const double* c, int32_t m, double* y) {
  if (n < 1 || m < 1) return FATHOM_ERR_NO_SAMPLES;
  evaluatePolynomial(x, static_cast<std::size_t>(n), c, m, y);
  return FATHOM_OK;
}

AnalysisStatus PolyEv2D(const double* x, int32_t rows, int32_t columns, const double* c, int32_t m,
                        double* y) {
  if (rows < 1 || columns < 1 || m < 1) return FATHOM_ERR_NO_SAMPLES;
  evaluatePolynomial(x, fathom::matrixSize(rows, columns), c, m, y);
  return FATHOM_OK;
}
