// Roots of real polynomials: the eigenvalues of the companion matrix.
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/workspace.hpp"

AnalysisStatus CxPolyRoots(const double* coefficients, int32_t n, ComplexNum* roots) {
  if (n == 1) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  fathom::Workspace<double> companion(fathom::matrixSize(n - 1, n - 1));
  if (!companion) return FATHOM_ERR_MEMORY;
  const AnalysisStatus status =
      SpecialMatrix(FATHOM_MATRIX_COMPANION, n, coefficients, n, coefficients, n, companion.data());
  if (status != FATHOM_OK) return status;
  return GenEigenValueVector(companion.data(), n - 1, FATHOM_EIGEN_VALUES, roots, nullptr);
}
