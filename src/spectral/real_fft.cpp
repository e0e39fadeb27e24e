// Fourier transforms of real data with full, two-sided spectra.
#include <cstddef>

#include "fathom.h"
#include "frame/multiversion.hpp"
#include "spectral/packed_real.hpp"

namespace fathom {
namespace {

// From the packed spectrum to both halves of every bin but 0 and n/2.
FATHOM_MULTIVERSION
void unpack(double* re, double* im, std::ptrdiff_t n) {
  FATHOM_INDEPENDENT
  for (std::ptrdiff_t k = 1; k < n / 2; ++k) {
    const double imaginary = re[n - k];
    im[k] = imaginary;
    im[n - k] = -imaginary;
    re[n - k] = re[k];
  }
}

// The Hartley coefficients of a spectrum, Re X[k] - Im X[k], from the upper half of im.
FATHOM_MULTIVERSION
void hartleyCoefficients(double* re, const double* im, std::ptrdiff_t n) {
  FATHOM_INDEPENDENT
  for (std::ptrdiff_t k = 1; k < n / 2; ++k) {
    const double real = re[k], imaginary = im[n - k];
    re[n - k] = real - imaginary;
    re[k] = real + imaginary;
  }
}

}  // namespace
}  // namespace fathom

AnalysisStatus ReFFT(double* re, double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  im[0] = 0.0;
  if (n == 1) return FATHOM_OK;
  fathom::PackedRealFFT(re, n, fathom::Log2Size(n));
  fathom::unpack(re, im, n);
  im[n / 2] = 0.0;
  return FATHOM_OK;
}

AnalysisStatus ReInvFFT(double* re, const double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  if (n == 1) return FATHOM_OK;
  fathom::hartleyCoefficients(re, im, n);
  return InvFHT(re, n);
}
