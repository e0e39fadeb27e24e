// Packed spectra of padded records, their quotient, and the magnitude and phase of their inner
// bins, 1 to n/2 - 1. Magnitude and phase of bin 0, which is real, are each caller's own.
#ifndef FATHOM_SPECTRAL_PACKED_BINS_HPP
#define FATHOM_SPECTRAL_PACKED_BINS_HPP

#include <cstddef>
#include <cstdint>

namespace fathom {

// The power of two at or above n >= 1. Beyond 2^30 it is more than a transform can address.
int64_t paddedSize(int32_t n);

// The packed spectrum of n samples, followed by zeros up to `size`.
void packedSpectrum(const double* x, std::size_t n, int32_t size, double* packed);

// y = y / x, all bins; x and y are packed spectra of n samples.
void packedQuotient(const double* x, double* y, int32_t n);

// magnitude[k] = factor |X[k]| / divisor, in that order; the square root of the squared parts.
void packedMagnitudes(const double* packed, int32_t n, double factor, double divisor,
                      double* magnitude);

// phase[k] = atan2(Im X[k], Re X[k]).
void packedPhases(const double* packed, int32_t n, double* phase);

}  // namespace fathom

#endif
