// What singular values tell of a matrix: pseudo-inverse, rank, norm, condition number.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "linalg/element.hpp"
#include "linalg/kernel.hpp"
#include "linalg/overloads.hpp"

namespace fathom {
namespace {

constexpr double kSmallestRatio = 0x1p-63;

AnalysisStatus valuesOf(const double* a, std::int32_t m, std::int32_t n, double* s) {
  return SVDS(a, m, n, s);
}
AnalysisStatus valuesOf(const ComplexNum* a, std::int32_t m, std::int32_t n, ComplexNum* s) {
  return CxSVDS(a, m, n, s);
}
// The first and last singular value, and how many of them exceed tol; a negative one stands for
// 2^-52 max(m, n) times the first.
struct Spectrum {
  double largest;
  double smallest;
  std::int32_t rank;
};

template <typename Element>
AnalysisStatus spectrumOf(const Element* a, std::int32_t m, std::int32_t n, double tol,
                          Element* tall, Spectrum& spectrum) {
  const std::int32_t rows = std::max(m, n), columns = std::min(m, n);
  Workspace<Element> s(static_cast<std::size_t>(columns));
  if (!s) return FATHOM_ERR_MEMORY;
  copyTall(a, m, n, tall);
  const AnalysisStatus status = valuesOf(tall, rows, columns, s.data());
  if (status != FATHOM_OK) return status;
  const std::size_t count = static_cast<std::size_t>(columns);
  spectrum = {realPart(s[0]), realPart(s[count - 1]),
              static_cast<std::int32_t>(rankOf(s.data(), count, rows, tol))};
  return FATHOM_OK;
}

// Divides each column of x by its singular value, or clears it where that is tol at most.
template <typename Element>
void divideColumns(Element* x, std::size_t rows, std::size_t columns, const Element* s,
                   double tol) {
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t k = 0; k < columns; ++k) {
      Element& xk = x[i * columns + k];
      const double value = realPart(s[k]);
      xk = value <= tol ? Element{} : divide(xk, value);
    }
  }
}

// `overwritten` is the matrix itself where its storage may take U, or null.
template <typename Element>
AnalysisStatus pseudoInverse(const Element* a, std::int32_t m, std::int32_t n, double tol,
                             Element* overwritten, Element* inverse) {
  if (m < 1 || n < 1) return FATHOM_ERR_NO_SAMPLES;
  const std::int32_t tallRows = std::max(m, n), tallColumns = std::min(m, n);
  const auto rows = static_cast<std::size_t>(tallRows);
  const auto columns = static_cast<std::size_t>(tallColumns);
  const std::size_t count = matrixSize(m, n);
  if (tol < 0.0) tol = kEpsilon * static_cast<double>(tallColumns);
  Workspace<Element> v(matrixSize(tallColumns, tallColumns)), s(columns);
  Workspace<Element> copy(overwritten != nullptr ? 0 : count);
  Workspace<Element> turned(m >= n ? count : matrixSize(tallColumns, tallColumns));
  if (!v || !s || !copy || !turned) return FATHOM_ERR_MEMORY;

  Element* u = overwritten != nullptr ? overwritten : copy.data();
  if (u != a) copyTall(a, m, n, u);
  const AnalysisStatus status = decompose(u, tallRows, tallColumns, u, s.data(), v.data());
  if (status != FATHOM_OK) return status;
  if (m >= n) {
    divideColumns(v.data(), columns, columns, s.data(), tol);
    conjugateTranspose(u, tallRows, tallColumns, turned.data());
    multiply(v.data(), columns, turned.data(), rows, inverse, rows, columns, columns, rows);
  } else {
    divideColumns(u, rows, columns, s.data(), tol);
    conjugateTranspose(v.data(), tallColumns, tallColumns, turned.data());
    multiply(u, columns, turned.data(), columns, inverse, columns, rows, columns, columns);
  }
  return FATHOM_OK;
}

template <typename Element>
AnalysisStatus matrixRank(const Element* a, std::int32_t m, std::int32_t n, double tol,
                          std::int32_t* rank) {
  *rank = -1;
  if (m < 1 || n < 1) return FATHOM_ERR_NO_SAMPLES;
  Workspace<Element> tall(matrixSize(m, n));
  if (!tall) return FATHOM_ERR_MEMORY;
  Spectrum spectrum = {};
  const AnalysisStatus status = spectrumOf(a, m, n, tol, tall.data(), spectrum);
  if (status == FATHOM_OK) *rank = spectrum.rank;
  return status;
}

// The largest of the columns' sums of magnitudes, each from the top down.
template <typename Element>
FATHOM_INLINE double columnSumNormOf(const Element* a, std::size_t rows, std::size_t columns) {
  constexpr std::size_t kColumns = 64;
  double norm = 0.0;
  for (std::size_t j = 0; j < columns; j += kColumns) {
    const std::size_t count = std::min(kColumns, columns - j);
    double sums[kColumns] = {};
    for (std::size_t i = 0; i < rows; ++i) {
      const Element* row = a + i * columns + j;
      for (std::size_t k = 0; k < count; ++k) sums[k] += magnitude(row[k]);
    }
    for (std::size_t k = 0; k < count; ++k) {
      if (sums[k] > norm) norm = sums[k];
    }
  }
  return norm;
}

// The same of the rows, from left to right.
template <typename Element>
FATHOM_INLINE double rowSumNormOf(const Element* a, std::size_t rows, std::size_t columns) {
  constexpr std::size_t kRows = 8;
  double norm = 0.0;
  for (std::size_t i = 0; i < rows; i += kRows) {
    const std::size_t count = std::min(kRows, rows - i);
    const Element* block = a + i * columns;
    double sums[kRows] = {};
    if (count == kRows) {
      for (std::size_t j = 0; j < columns; ++j) {
        for (std::size_t k = 0; k < kRows; ++k) sums[k] += magnitude(block[k * columns + j]);
      }
    } else {
      for (std::size_t k = 0; k < count; ++k) {
        for (std::size_t j = 0; j < columns; ++j) sums[k] += magnitude(block[k * columns + j]);
      }
    }
    for (std::size_t k = 0; k < count; ++k) {
      if (sums[k] > norm) norm = sums[k];
    }
  }
  return norm;
}

FATHOM_MULTIVERSION double columnSumNorm(const double* a, std::size_t rows, std::size_t columns) {
  return columnSumNormOf(a, rows, columns);
}
FATHOM_MULTIVERSION double columnSumNorm(const ComplexNum* a, std::size_t rows,
                                         std::size_t columns) {
  return columnSumNormOf(a, rows, columns);
}
FATHOM_MULTIVERSION double rowSumNorm(const double* a, std::size_t rows, std::size_t columns) {
  return rowSumNormOf(a, rows, columns);
}
FATHOM_MULTIVERSION double rowSumNorm(const ComplexNum* a, std::size_t rows, std::size_t columns) {
  return rowSumNormOf(a, rows, columns);
}

template <typename Element>
AnalysisStatus matrixNorm(const Element* a, std::int32_t m, std::int32_t n, std::int32_t type,
                          double* norm) {
  *norm = 0.0;
  if (m < 1 || n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto rows = static_cast<std::size_t>(m), columns = static_cast<std::size_t>(n);
  const std::size_t count = matrixSize(m, n);
  switch (type) {
    case FATHOM_NORM_2: {
      Workspace<Element> tall(count);
      if (!tall) return FATHOM_ERR_MEMORY;
      Spectrum spectrum = {};
      const AnalysisStatus status = spectrumOf(a, m, n, 0.0, tall.data(), spectrum);
      if (status == FATHOM_OK) *norm = spectrum.largest;
      return status;
    }
    case FATHOM_NORM_1:
      *norm = columnSumNorm(a, rows, columns);
      return FATHOM_OK;
    case FATHOM_NORM_FROBENIUS: {
      double sum = 0.0;
      for (std::size_t i = 0; i < count; ++i) sum += squaredModulus(a[i]);
      *norm = sqrt(sum);
      return FATHOM_OK;
    }
    case FATHOM_NORM_INFINITY:
      *norm = rowSumNorm(a, rows, columns);
      return FATHOM_OK;
    default:
      return FATHOM_ERR_SELECTION;
  }
}

template <typename Element, typename Invert>
AnalysisStatus conditionNumber(const Element* a, std::int32_t m, std::int32_t n, std::int32_t type,
                               double* cond, Invert invert) {
  *cond = 0.0;
  if (m < 1 || n < 1) return FATHOM_ERR_NO_SAMPLES;
  Workspace<Element> work(matrixSize(m, n));
  if (!work) return FATHOM_ERR_MEMORY;
  if (type != FATHOM_NORM_2) {
    if (type < FATHOM_NORM_1 || type > FATHOM_NORM_INFINITY) return FATHOM_ERR_SELECTION;
    if (m != n) return FATHOM_ERR_NOT_SQUARE;
    double norm, ofInverse;
    AnalysisStatus status = matrixNorm(a, n, n, type, &norm);
    if (status == FATHOM_OK) status = invert(a, n, work.data());
    if (status == FATHOM_OK) status = matrixNorm(work.data(), n, n, type, &ofInverse);
    if (status == FATHOM_OK) *cond = norm * ofInverse;
    return status;
  }
  Spectrum spectrum = {};
  const AnalysisStatus status = spectrumOf(a, m, n, 0.0, work.data(), spectrum);
  if (status != FATHOM_OK) return status;
  const double largest = spectrum.largest, smallest = spectrum.smallest;
  const double bound = fabs(largest) * static_cast<double>(std::max(m, n)) * kSmallestRatio;
  if (smallest == 0.0 || fabs(smallest) < bound) return FATHOM_ERR_SINGULAR;
  *cond = largest / smallest;
  return FATHOM_OK;
}

}  // namespace
}  // namespace fathom

AnalysisStatus PseudoInverse(double* a, int32_t m, int32_t n, double tol, double* inverse) {
  return fathom::pseudoInverse(a, m, n, tol, m >= n && inverse != a ? a : nullptr, inverse);
}

AnalysisStatus CxPseudoInverse(const ComplexNum* a, int32_t m, int32_t n, double tol,
                               ComplexNum* inverse) {
  return fathom::pseudoInverse<ComplexNum>(a, m, n, tol, nullptr, inverse);
}

AnalysisStatus MatrixRank(const double* a, int32_t m, int32_t n, double tol, int32_t* rank) {
  return fathom::matrixRank(a, m, n, tol, rank);
}

AnalysisStatus CxMatrixRank(const ComplexNum* a, int32_t m, int32_t n, double tol, int32_t* rank) {
  return fathom::matrixRank(a, m, n, tol, rank);
}

AnalysisStatus MatrixNorm(const double* a, int32_t m, int32_t n, int32_t type, double* norm) {
  return fathom::matrixNorm(a, m, n, type, norm);
}

AnalysisStatus CxMatrixNorm(const ComplexNum* a, int32_t m, int32_t n, int32_t type, double* norm) {
  return fathom::matrixNorm(a, m, n, type, norm);
}

AnalysisStatus ConditionNumber(const double* a, int32_t m, int32_t n, int32_t type, double* cond) {
  return fathom::conditionNumber(a, m, n, type, cond, InvMatrix);
}

AnalysisStatus CxConditionNumber(const ComplexNum* a, int32_t m, int32_t n, int32_t type,
                                 double* cond) {
  const auto invert = [](const ComplexNum* x, int32_t size, ComplexNum* inverse) {
    return CxGenInvMatrix(x, size, FATHOM_GENERAL, inverse);
  };
  return fathom::conditionNumber(a, m, n, type, cond, invert);
}
