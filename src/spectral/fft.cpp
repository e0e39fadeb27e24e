// Complex fast Fourier transforms of split real and imaginary arrays, in place: split-radix,
// decimation in frequency, with a separate bit reversal.
#include "fathom.h"
#include "spectral/plain_first.hpp"

AnalysisStatus FFT(double* re, double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  fathom::plain::fft(re, im, n);
  return FATHOM_OK;
}

AnalysisStatus InvFFT(double* re, double* im, int32_t n) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if ((n & (n - 1)) != 0) return FATHOM_ERR_POWER_OF_TWO;
  if (n == 1) return FATHOM_OK;
  const double factor = 1.0 / n;
  for (int32_t i = 0; i < n; ++i) {
    re[i] *= factor;
    im[i] *= -factor;
  }
  FFT(re, im, n);
  for (int32_t i = 0; i < n; ++i) im[i] = -im[i];
  return FATHOM_OK;
}
