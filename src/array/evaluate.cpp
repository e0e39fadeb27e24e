// Evaluation of a line or a polynomial at every element of an array or matrix.
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/multiversion.hpp"

namespace {

FATHOM_MULTIVERSION void evaluateLine(const double* x, std::size_t n, double a, double b,
                                      double* y) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) y[i] = x[i] * a + b;
}

constexpr std::size_t kTile = 32;

// The terms are added from the constant upward, each with its power by repeated multiplication.
FATHOM_MULTIVERSION void evaluatePolynomial(const double* x, std::size_t n, const double* c,
                                            int32_t m, double* y) {
  std::size_t start = 0;
  for (; start + kTile <= n; start += kTile) {
    double at[kTile], power[kTile], sum[kTile];
    for (std::size_t i = 0; i < kTile; ++i) {
      at[i] = x[start + i];
      power[i] = 1.0;
      sum[i] = c[0];
    }
    for (int32_t j = 1; j < m; ++j) {
      for (std::size_t i = 0; i < kTile; ++i) {
        power[i] *= at[i];
        sum[i] += c[j] * power[i];
      }
    }
    for (std::size_t i = 0; i < kTile; ++i) y[start + i] = sum[i];
  }
  for (; start < n; ++start) {
    const double at = x[start];
    double power = 1.0;
    double sum = c[0];
    for (int32_t j = 1; j < m; ++j) {
      power *= at;
      sum += c[j] * power;
    }
    y[start] = sum;
  }
}

std::size_t elements(int32_t rows, int32_t columns) {
  return static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
}

}  // namespace

AnalysisStatus LinEv1D(const double* x, int32_t n, double a, double b, double* y) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  evaluateLine(x, static_cast<std::size_t>(n), a, b, y);
  return FATHOM_OK;
}

AnalysisStatus LinEv2D(const double* x, int32_t rows, int32_t columns, double a, double b,
                       double* y) {
  if (rows < 1 || columns < 1) return FATHOM_ERR_NO_SAMPLES;
  evaluateLine(x, elements(rows, columns), a, b, y);
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
  evaluatePolynomial(x, elements(rows, columns), c, m, y);
  return FATHOM_OK;
}
