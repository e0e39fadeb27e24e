// Exported routines under one name for both elements, for templates that call them.
#ifndef FATHOM_LINALG_OVERLOADS_HPP
#define FATHOM_LINALG_OVERLOADS_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "linalg/element.hpp"

namespace fathom {

inline AnalysisStatus decompose(double* a, std::int32_t m, std::int32_t n, double* u, double* s,
                                double* v) {
  return SVD(a, m, n, u, s, v);
}
inline AnalysisStatus decompose(ComplexNum* a, std::int32_t m, std::int32_t n, ComplexNum* u,
                                ComplexNum* s, ComplexNum* v) {
  return CxSVD(a, m, n, u, s, v);
}

// The conjugate transpose of an m x n matrix.
inline AnalysisStatus conjugateTranspose(const double* a, std::int32_t m, std::int32_t n,
                                         double* t) {
  return Transpose(a, m, n, t);
}
inline AnalysisStatus conjugateTranspose(const ComplexNum* a, std::int32_t m, std::int32_t n,
                                         ComplexNum* t) {
  return CxTranspose(a, m, n, t);
}

// The matrix or its conjugate transpose: the one that has no fewer rows than columns.
template <typename Element>
void copyTall(const Element* a, std::int32_t m, std::int32_t n, Element* tall) {
  if (m >= n) {
    std::copy_n(a, matrixSize(m, n), tall);
  } else {
    conjugateTranspose(a, m, n, tall);
  }
}

// The rank by n singular values: those above tol, or, where that is negative, above 2^-52 times
// the first and `longer`, the larger of the matrix's numbers of rows and columns.
template <typename Element>
std::size_t rankOf(const Element* s, std::size_t n, std::int32_t longer, double tol) {
  if (tol < 0.0) tol = kEpsilon * static_cast<double>(longer) * realPart(s[0]);
  std::size_t rank = 0;
  for (std::size_t k = 0; k < n; ++k) {
    if (realPart(s[k]) > tol) ++rank;
  }
  return rank;
}

}  // namespace fathom

#endif
