// Structured matrices, real and complex: identity, diagonal, Toeplitz, Vandermonde, companion.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "linalg/element.hpp"
#include "linalg/powers.hpp"

namespace {

using fathom::element;

template <typename Element>
void buildDiagonal(const Element* a, std::size_t n, Element* m) {
  std::fill_n(m, n * n, Element{});
  for (std::size_t i = 0; i < n; ++i) m[i * (n + 1)] = a == nullptr ? element<Element>(1.0) : a[i];
}

// First column a, first row b without b[0].
template <typename Element>
void buildToeplitz(const Element* a, std::size_t rows, const Element* b, std::size_t columns,
                   Element* m) {
  for (std::size_t i = 0; i < rows; ++i, m += columns) {
    const std::size_t below = std::min(i + 1, columns);
    for (std::size_t j = 0; j < below; ++j) m[j] = a[i - j];
    std::copy(b + 1, b + 1 + (columns - below), m + below);
  }
}

// Descending powers.
void buildVandermonde(const double* x, std::size_t n, double* m) {
  fathom::fillPowers(x, n, n, static_cast<double>(n - 1), -1.0, m);
}
void buildVandermonde(const ComplexNum* x, std::size_t n, ComplexNum* m) {
  for (std::size_t i = 0; i < n; ++i, m += n) {
    ComplexNum power = {1.0, 0.0};
    for (std::size_t j = n; j-- > 0; power = power * x[i]) m[j] = power;
  }
}

double ofLeading(double a, double leading) {
  return a / -leading;
}
ComplexNum ofLeading(ComplexNum a, ComplexNum leading) {
  const double m = fathom::squaredModulus(leading);
  return a * ComplexNum{-leading.real / m, leading.imaginary / m};
}

template <typename Element>
void buildCompanion(const Element* a, std::size_t n, Element* m) {
  std::fill_n(m, n * n, Element{});
  for (std::size_t i = 1; i < n; ++i) m[i * n + (i - 1)] = element<Element>(1.0);
  for (std::size_t j = 0; j < n; ++j) m[j] = ofLeading(a[j + 1], a[0]);
}

template <typename Element>
AnalysisStatus build(int32_t type, int32_t size, const Element* a, int32_t na, const Element* b,
                     int32_t nb, Element* m) {
  const auto n = static_cast<std::size_t>(na);
  switch (type) {
    case FATHOM_MATRIX_IDENTITY:
      if (size < 1) return FATHOM_ERR_NO_SAMPLES;
      buildDiagonal<Element>(nullptr, static_cast<std::size_t>(size), m);
      return FATHOM_OK;
    case FATHOM_MATRIX_DIAGONAL:
      if (na < 1) return FATHOM_ERR_NO_SAMPLES;
      buildDiagonal(a, n, m);
      return FATHOM_OK;
    case FATHOM_MATRIX_TOEPLITZ:
      if (na < 1 || nb < 1 || nb > na) return FATHOM_ERR_NO_SAMPLES;
      buildToeplitz(a, n, b, static_cast<std::size_t>(nb), m);
      return FATHOM_OK;
    case FATHOM_MATRIX_VANDERMONDE:
      if (na < 1) return FATHOM_ERR_NO_SAMPLES;
      buildVandermonde(a, n, m);
      return FATHOM_OK;
    case FATHOM_MATRIX_COMPANION:
      if (na < 2) return FATHOM_ERR_NO_SAMPLES;
      buildCompanion(a, n - 1, m);
      return FATHOM_OK;
    default:
      return FATHOM_ERR_SELECTION;
  }
}

}  // namespace

AnalysisStatus SpecialMatrix(int32_t type, int32_t size, const double* a, int32_t na,
                             const double* b, int32_t nb, double* m) {
  return build(type, size, a, na, b, nb, m);
}

AnalysisStatus CxSpecialMatrix(int32_t type, int32_t size, const ComplexNum* a, int32_t na,
                               const ComplexNum* b, int32_t nb, ComplexNum* m) {
  return build(type, size, a, na, b, nb, m);
}
