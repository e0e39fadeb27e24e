// Systems, inverses and determinants by the type of the matrix: substitution for triangular ones,
// Cholesky factorisation for positive definite ones, LU or the singular values for general ones.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/workspace.hpp"
#include "linalg/element.hpp"
#include "linalg/lu.hpp"
#include "linalg/overloads.hpp"
#include "linalg/packed.hpp"

namespace fathom {
namespace {

bool isMatrixType(std::int32_t type) {
  return type >= FATHOM_GENERAL && type <= FATHOM_UPPER_TRIANGULAR;
}

// The triangle that is read of a matrix that is not general.
Triangle triangleOf(std::int32_t type) {
  return type == FATHOM_UPPER_TRIANGULAR ? Triangle::kUpper : Triangle::kLower;
}

// The exported routines by the type of their element.
AnalysisStatus factorLu(double* a, std::int32_t n, std::int32_t* pivots, std::int32_t* parity) {
  return LU(a, n, pivots, parity);
}
AnalysisStatus factorLu(ComplexNum* a, std::int32_t n, std::int32_t* pivots, std::int32_t* parity) {
  return CxLU(a, n, pivots, parity);
}
// sums[k] = 0 + conj(A(0, k)) b[0] + conj(A(1, k)) b[1] + ... over the rows of A.
template <typename Element>
void columnSums(const Element* a, std::size_t rows, std::size_t columns, const Element* b,
                Element* sums) {
  std::fill_n(sums, columns, Element{});
  for (std::size_t t = 0; t < rows; ++t) {
    const Element* const row = a + t * columns;
    for (std::size_t k = 0; k < columns; ++k) sums[k] = sums[k] + conjugate(row[k]) * b[t];
  }
}

// The least-squares solution of smallest norm, through the singular value decomposition of A, or of
// its conjugate transpose where that has more rows.
template <typename Element>
AnalysisStatus solveGeneral(const Element* a, std::int32_t m, std::int32_t n, const Element* b,
                            Element* x) {
  const std::int32_t tall = std::max(m, n), narrow = std::min(m, n);
  const auto columns = static_cast<std::size_t>(narrow);
  Workspace<Element> work(matrixSize(tall, narrow)), u(matrixSize(tall, narrow));
  Workspace<Element> v(matrixSize(narrow, narrow));
  if (!work || !u || !v) return FATHOM_ERR_MEMORY;
  Workspace<Element> s(columns), c(columns);
  if (!s || !c) return FATHOM_ERR_MEMORY;

  copyTall(a, m, n, work.data());
  const AnalysisStatus status = decompose(work.data(), tall, narrow, u.data(), s.data(), v.data());
  if (status != FATHOM_OK) return status;

  const std::size_t rank = rankOf(s.data(), columns, tall, -1.0);
  // A = L S R^H, where the transposed one is R S L^H.
  const Element* const left = m < n ? v.data() : u.data();
  const Element* const right = m < n ? u.data() : v.data();
  columnSums(left, static_cast<std::size_t>(m), columns, b, c.data());
  for (std::size_t k = 0; k < rank; ++k) c[k] = divide(c[k], realPart(s[k]));
  for (std::size_t t = 0; t < static_cast<std::size_t>(n); ++t) {
    Element sum{};
    for (std::size_t k = 0; k < rank; ++k) sum = sum + right[t * columns + k] * c[k];
    x[t] = sum;
  }
  return rank == columns ? FATHOM_OK : FATHOM_WARN_RANK;
}

template <typename Element>
AnalysisStatus solve(const Element* a, std::int32_t m, std::int32_t n, const Element* b,
                     std::int32_t type, Element* x) {
  if (n < 1 || m < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!isMatrixType(type)) return FATHOM_ERR_SELECTION;
  if (type == FATHOM_GENERAL) return solveGeneral(a, m, n, b, x);
  if (m != n) return FATHOM_ERR_NOT_SQUARE;
  Workspace<Element> packed(packedRequest(n));
  if (!packed) return FATHOM_ERR_MEMORY;
  const auto size = static_cast<std::size_t>(n);
  const Triangle triangle = triangleOf(type);
  const bool definite = type == FATHOM_POSITIVE_DEFINITE;
  pack(a, size, triangle, packed.data());
  const bool regular =
      definite ? factorCholesky(packed.data(), size) : isRegular(packed.data(), size, triangle);
  if (!regular) return FATHOM_ERR_SINGULAR;
  if (x != b) std::copy_n(b, size, x);
  if (definite) {
    solveCholesky(packed.data(), size, x);
  } else {
    solveTriangular(packed.data(), size, triangle, x);
  }
  return FATHOM_OK;
}

template <typename Element>
AnalysisStatus invertGeneral(const Element* a, std::int32_t n, Element* inverse) {
  const auto size = static_cast<std::size_t>(n);
  Workspace<Element> factor(scratchRequest<Element>(n));
  if (!factor) return FATHOM_ERR_MEMORY;
  Workspace<std::int32_t> pivots(size);
  if (!pivots) return FATHOM_ERR_MEMORY;
  std::copy_n(a, size * size, factor.data());
  std::int32_t parity;
  const AnalysisStatus status = factorLu(factor.data(), n, pivots.data(), &parity);
  if (status == FATHOM_ERR_SINGULAR) std::copy_n(factor.data(), size * size, inverse);
  if (status != FATHOM_OK) return status;
  invertFactored(factor.data(), size, pivots.data(), inverse, factor.data() + size * size);
  return FATHOM_OK;
}

template <typename Element>
AnalysisStatus invert(const Element* a, std::int32_t n, std::int32_t type, Element* inverse) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!isMatrixType(type)) return FATHOM_ERR_SELECTION;
  const bool definite = type == FATHOM_POSITIVE_DEFINITE;
  if (type == FATHOM_GENERAL || (definite && kIsComplex<Element>)) {
    return invertGeneral(a, n, inverse);
  }
  Workspace<Element> packed(packedRequest(n));
  if (!packed) return FATHOM_ERR_MEMORY;
  const auto size = static_cast<std::size_t>(n);
  const Triangle triangle = triangleOf(type);
  pack(a, size, triangle, packed.data());
  if constexpr (!kIsComplex<Element>) {
    if (definite) {
      if (!factorCholesky(packed.data(), size)) return FATHOM_ERR_SINGULAR;
      invertCholesky(packed.data(), size, packed.data() + size * (size + 1) / 2);
      unpackSymmetric(packed.data(), size, inverse);
      return FATHOM_OK;
    }
  }
  const bool regular = isRegular(packed.data(), size, triangle);
  if (regular) invertTriangular(packed.data(), size, triangle);
  // A complex triangle is handed out even when it is singular.
  if (regular || kIsComplex<Element>) unpack(packed.data(), size, triangle, inverse);
  return regular ? FATHOM_OK : FATHOM_ERR_SINGULAR;
}

AnalysisStatus determinantOfGeneral(const double* a, std::int32_t n, double* det) {
  return Determinant(a, n, det);
}
AnalysisStatus determinantOfGeneral(const ComplexNum* a, std::int32_t n, ComplexNum* det) {
  const auto size = static_cast<std::size_t>(n);
  Workspace<std::int32_t> pivots(size);
  Workspace<ComplexNum> copy(matrixSize(n, n));
  if (!pivots || !copy) return FATHOM_ERR_MEMORY;
  std::copy_n(a, size * size, copy.data());
  std::int32_t parity;
  const AnalysisStatus status = CxLU(copy.data(), n, pivots.data(), &parity);
  if (status == FATHOM_ERR_SINGULAR) return FATHOM_OK;
  if (status == FATHOM_OK) *det = determinantOfFactored(copy.data(), size, parity);
  return status;
}

template <typename Element>
AnalysisStatus determinant(const Element* a, std::int32_t n, std::int32_t type, Element* det) {
  *det = Element{};
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!isMatrixType(type)) return FATHOM_ERR_SELECTION;
  if (type == FATHOM_GENERAL) return determinantOfGeneral(a, n, det);
  const auto size = static_cast<std::size_t>(n);
  if (type != FATHOM_POSITIVE_DEFINITE) {
    *det = determinantOfFactored(a, size, 0);
    return FATHOM_OK;
  }
  Workspace<Element> packed(packedRequest(n));
  if (!packed) return FATHOM_ERR_MEMORY;
  pack(a, size, Triangle::kLower, packed.data());
  if (!factorCholesky(packed.data(), size)) return FATHOM_OK;
  const Element root = productOfDiagonal(packed.data(), size, Triangle::kLower);
  *det = root * root;
  return FATHOM_OK;
}

}  // namespace
}  // namespace fathom

AnalysisStatus GenLinEqs(const double* a, int32_t m, int32_t n, const double* b, int32_t type,
                         double* x) {
  return fathom::solve(a, m, n, b, type, x);
}

AnalysisStatus GenInvMatrix(const double* a, int32_t n, int32_t type, double* inverse) {
  return fathom::invert(a, n, type, inverse);
}

AnalysisStatus GenDeterminant(const double* a, int32_t n, int32_t type, double* det) {
  return fathom::determinant(a, n, type, det);
}

AnalysisStatus CxDeterminant(const ComplexNum* a, int32_t n, int32_t type, ComplexNum* det) {
  return fathom::determinant(a, n, type, det);
}

AnalysisStatus CxGenLinEqs(const ComplexNum* a, int32_t m, int32_t n, const ComplexNum* b,
                           int32_t type, ComplexNum* x) {
  return fathom::solve(a, m, n, b, type, x);
}

AnalysisStatus CxGenInvMatrix(const ComplexNum* a, int32_t n, int32_t type, ComplexNum* inverse) {
  return fathom::invert(a, n, type, inverse);
}
