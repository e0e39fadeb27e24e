// Fourier transforms of real data with full, two-sided spectra.
#include <cstddef>

#include "fathom.h"
#include "spectral/packed_real.hpp"

AnalysisStatus ReFFT(double* re, double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  im[0] = 0.0;
  if (n == 1) return FATHOM_OK;
  fathom::PackedRealFFT(re, n, fathom::Log2Size(n));
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t k = 1; k < size / 2; ++k) {
    im[k] = re[size - k];
    im[size - k] = -re[size - k];
    re[size - k] = re[k];
  }
  im[size / 2] = 0.0;
  return FATHOM_OK;
}

AnalysisStatus ReInvFFT(double* re, const double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  if (n == 1) return FATHOM_OK;
  // The Hartley coefficients of a spectrum: H[k] = Re X[k] - Im X[k], from the upper half of im.
  const auto size = static_cast<std::size_t>(n);
  for (std::size_t k = 1; k < size / 2; ++k) {
    const double real = re[k];
    re[size - k] = real - im[size - k];
    re[k] = real + im[size - k];
  }
  return InvFHT(re, n);
}
