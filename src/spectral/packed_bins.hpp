// Magnitude and phase of the inner bins, 1 to n/2 - 1, of a packed spectrum. Bin 0, which is real,
// is each caller's own.
#ifndef FATHOM_SPECTRAL_PACKED_BINS_HPP
#define FATHOM_SPECTRAL_PACKED_BINS_HPP

#include <cstdint>

namespace fathom {

// magnitude[k] = factor |X[k]| / divisor, in that order; the square root of the squared parts.
void packedMagnitudes(const double* packed, int32_t n, double factor, double divisor,
                      double* magnitude);

// phase[k] = atan2(Im X[k], Re X[k]).
void packedPhases(const double* packed, int32_t n, double* phase);

}  // namespace fathom

#endif
