// Discrete Hartley transform, in place: radix 2, decimation in frequency.
#include "fathom.h"
#include "spectral/plain_first.hpp"

AnalysisStatus FHT(double* x, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  fathom::plain::fht(x, n);
  return FATHOM_OK;
}

AnalysisStatus InvFHT(double* x, int32_t n) {
  const AnalysisStatus status = FHT(x, n);
  if (status != FATHOM_OK) return status;
  const double factor = 1.0 / n;
  for (int32_t i = 0; i < n; ++i) x[i] *= factor;
  return FATHOM_OK;
}
