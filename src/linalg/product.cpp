// Products of matrices and vectors, transpose and trace, real and complex.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/for_each.hpp"
#include "fathom.h"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "linalg/element.hpp"
#include "linalg/kernel.hpp"
#include "linalg/tile.hpp"

namespace {

// Columns of A whose elements of a few rows stay in the first-level cache until all of their lines
// are used, and whose rows of T the processor can keep apart.
constexpr std::size_t kStripColumns = 32;

void copyTransposed(double a, double* t) {
  *t = a;
}
void copyTransposed(ComplexNum a, ComplexNum* t) {
  *t = {a.real, -a.imaginary};
}

// Squares of A go through registers, strip of columns by strip of columns; what is left over goes
// one element at a time.
template <std::size_t bytes, typename Element>
FATHOM_INLINE void transpose(const Element* a, std::size_t rows, std::size_t columns, Element* t) {
  constexpr std::size_t kParts = sizeof(Element) / sizeof(double);
  constexpr std::size_t kSide = fathom::kLanesOf<bytes> / kParts;
  const std::size_t squareRows = rows / kSide * kSide, squareColumns = columns / kSide * kSide;
  for (std::size_t strip = 0; strip < squareColumns; strip += kStripColumns) {
    const std::size_t end = std::min(strip + kStripColumns, squareColumns);
    for (std::size_t i = 0; i < squareRows; i += kSide) {
      for (std::size_t j = strip; j < end; j += kSide) {
        fathom::transposeSquare<bytes, kParts>(
            reinterpret_cast<const double*>(a + i * columns + j), columns * kParts,
            reinterpret_cast<double*>(t + j * rows + i), rows * kParts);
      }
    }
  }
  for (std::size_t i = 0; i < rows; ++i) {
    const std::size_t first = i < squareRows ? squareColumns : 0;
    for (std::size_t j = first; j < columns; ++j) {
      copyTransposed(a[i * columns + j], t + (j * rows + i));
    }
  }
}

template <std::size_t bytes>
FATHOM_INLINE void transposeRealOf(const double* a, std::size_t rows, std::size_t columns,
                                   double* t) {
  transpose<bytes>(a, rows, columns, t);
}
FATHOM_BY_WIDTH(transposeReal, (const double* a, std::size_t rows, std::size_t columns, double* t),
                (a, rows, columns, t))

template <std::size_t bytes>
FATHOM_INLINE void transposeComplexOf(const ComplexNum* a, std::size_t rows, std::size_t columns,
                                      ComplexNum* t) {
  transpose<bytes>(a, rows, columns, t);
}
FATHOM_BY_WIDTH(transposeComplex,
                (const ComplexNum* a, std::size_t rows, std::size_t columns, ComplexNum* t),
                (a, rows, columns, t))

template <typename Element>
Element sumOfDiagonal(const Element* a, std::size_t n, std::size_t columns) {
  Element sum{};
  for (std::size_t i = 0; i < n; ++i) sum = sum + a[i * (columns + 1)];
  return sum;
}

template <typename Element>
Element sumOfProducts(const Element* x, const Element* y, std::size_t n) {
  Element sum{};
  for (std::size_t i = 0; i < n; ++i) sum = sum + x[i] * y[i];
  return sum;
}

FATHOM_MULTIVERSION void multiplyOuter(const double* x, std::size_t nx, const double* y,
                                       std::size_t ny, double* p) {
  for (std::size_t i = 0; i < nx; ++i) {
    const double factor = x[i];
    fathom::forEach(ny, p + i * ny, [=](std::size_t j) { return factor * y[j]; });
  }
}

FATHOM_MULTIVERSION void multiplyOuter(const ComplexNum* x, std::size_t nx, const ComplexNum* y,
                                       std::size_t ny, ComplexNum* p) {
  for (std::size_t i = 0; i < nx; ++i) {
    const ComplexNum factor = x[i];
    ComplexNum* const row = p + i * ny;
    FATHOM_INDEPENDENT
    for (std::size_t j = 0; j < ny; ++j) row[j] = factor * y[j];
  }
}

template <typename Element>
AnalysisStatus product(const Element* a, const Element* b, int32_t r, int32_t k, int32_t c,
                       Element* result) {
  if (r < 1 || c < 1 || k < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto rows = static_cast<std::size_t>(r), terms = static_cast<std::size_t>(k);
  const auto columns = static_cast<std::size_t>(c);
  fathom::multiply(a, terms, b, columns, result, columns, rows, terms, columns);
  return FATHOM_OK;
}

template <typename Element>
AnalysisStatus dot(const Element* x, const Element* y, int32_t n, Element* result) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  *result = sumOfProducts(x, y, static_cast<std::size_t>(n));
  return FATHOM_OK;
}

template <typename Element>
AnalysisStatus outer(const Element* x, int32_t nx, const Element* y, int32_t ny, Element* p) {
  if (nx < 1 || ny < 1) return FATHOM_ERR_NO_SAMPLES;
  multiplyOuter(x, static_cast<std::size_t>(nx), y, static_cast<std::size_t>(ny), p);
  return FATHOM_OK;
}

}  // namespace

AnalysisStatus MatrixMul(const double* a, const double* b, int32_t r, int32_t k, int32_t c,
                         double* result) {
  return product(a, b, r, k, c, result);
}

AnalysisStatus Transpose(const double* a, int32_t r, int32_t c, double* t) {
  if (r < 1 || c < 1) return FATHOM_ERR_NO_SAMPLES;
  transposeReal(a, static_cast<std::size_t>(r), static_cast<std::size_t>(c), t);
  return FATHOM_OK;
}

AnalysisStatus Trace(const double* a, int32_t n, double* trace) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  *trace = sumOfDiagonal(a, static_cast<std::size_t>(n), static_cast<std::size_t>(n));
  return FATHOM_OK;
}

AnalysisStatus DotProduct(const double* x, const double* y, int32_t n, double* dotProduct) {
  return dot(x, y, n, dotProduct);
}

AnalysisStatus OuterProduct(const double* x, int32_t nx, const double* y, int32_t ny, double* p) {
  return outer(x, nx, y, ny, p);
}

AnalysisStatus CxMatrixMul(const ComplexNum* a, const ComplexNum* b, int32_t r, int32_t k,
                           int32_t c, ComplexNum* result) {
  return product(a, b, r, k, c, result);
}

AnalysisStatus CxTranspose(const ComplexNum* a, int32_t r, int32_t c, ComplexNum* t) {
  if (r < 1 || c < 1) return FATHOM_ERR_NO_SAMPLES;
  transposeComplex(a, static_cast<std::size_t>(r), static_cast<std::size_t>(c), t);
  return FATHOM_OK;
}

AnalysisStatus CxTrace(const ComplexNum* a, int32_t r, int32_t c, ComplexNum* trace) {
  if (r < 1 || c < 1) return FATHOM_ERR_NO_SAMPLES;
  *trace = sumOfDiagonal(a, static_cast<std::size_t>(std::min(r, c)), static_cast<std::size_t>(c));
  return FATHOM_OK;
}

AnalysisStatus CxDotProduct(const ComplexNum* x, const ComplexNum* y, int32_t n,
                            ComplexNum* dotProduct) {
  return dot(x, y, n, dotProduct);
}

AnalysisStatus CxOuterProduct(const ComplexNum* x, int32_t nx, const ComplexNum* y, int32_t ny,
                              ComplexNum* p) {
  return outer(x, nx, y, ny, p);
}
