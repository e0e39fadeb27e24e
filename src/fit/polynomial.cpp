// Polynomials by the general least-squares fit of a matrix of powers.
#include <cstddef>
#include <cstdint>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "frame/workspace.hpp"
#include "linalg/powers.hpp"

AnalysisStatus PolyFit(const double* x, const double* y, int32_t n, int32_t order, double* fitted,
                       double* coefficients, double* meanSquaredError) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (order < 0) return FATHOM_ERR_NEGATIVE_ORDER;
  if (order >= n) return FATHOM_ERR_SIZE_BELOW_ORDER;
  const int32_t columns = order + 1;
  fathom::Workspace<double> powers(fathom::matrixSize(n, columns));
  if (!powers) return FATHOM_ERR_MEMORY;
  fathom::fillPowers(x, static_cast<std::size_t>(n), static_cast<std::size_t>(columns), 0.0, 1.0,
                     powers.data());
  return GenLSFit(powers.data(), n, columns, y, nullptr, FATHOM_LS_SINGULAR_VALUES, fitted,
                  coefficients, nullptr, meanSquaredError);
}
