// Exported routines under one name for both elements, for templates that call them.
#ifndef FATHOM_LINALG_OVERLOADS_HPP
#define FATHOM_LINALG_OVERLOADS_HPP

#include <algorithm>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"

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

}  // namespace fathom

#endif
