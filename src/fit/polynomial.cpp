// Polynomials by the general least-squares fit of a matrix of powers.
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/workspace.hpp"

AnalysisStatus PolyFit(const double* x, const double* y, int32_t n, int32_t order, double* fitted,
                       double* coefficients, double* meanSquaredError) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (order < 0) return FATHOM_ERR_NEGATIVE_ORDER;
  if (order >= n) return FATHOM_ERR_SIZE_BELOW_ORDER;
  const int32_t columns = order + 1;
  fathom::Workspace<double> powers(fathom::matrixSize(n, columns));
  if (!powers) return FATHOM_ERR_MEMORY;
  double* power = powers.data();
  for (int32_t i = 0; i < n; ++i) {
    for (int32_t j = 0; j < columns; ++j) *power++ = fathom::pow(x[i], j);
  }
  return GenLSFit(powers.data(), n, columns, y, nullptr, FATHOM_LS_SINGULAR_VALUES, fitted,
                  coefficients, nullptr, meanSquaredError);
}
