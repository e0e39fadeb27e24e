// The real-input transform that the spectra stand on, in place in one array.
//
// Packed spectrum of n real samples: Re X[0], ..., Re X[n/2], Im X[n/2-1], ..., Im X[1], with
// X[k] = sum of x[m] exp(-i 2 pi k m / n).
#ifndef FATHOM_SPECTRAL_PACKED_REAL_HPP
#define FATHOM_SPECTRAL_PACKED_REAL_HPP

#include <cstdint>

#include "fathom.h"

namespace fathom {

// Floor of the base-2 logarithm of n; -1 for n < 1.
int32_t Log2Size(int32_t n);

// Samples to packed spectrum. n is a power of two, log2n its logarithm; nothing is checked, and
// nothing is done for n <= 1. Always FATHOM_OK.
AnalysisStatus PackedRealFFT(double* x, int32_t n, int32_t log2n);

// Packed spectrum to samples, including the factor 1/n; otherwise as PackedRealFFT.
void PackedRealInvFFT(double* x, int32_t n, int32_t log2n);

}  // namespace fathom

#endif
