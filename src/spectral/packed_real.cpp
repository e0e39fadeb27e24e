// The packed real transform and its inverse.
#include "spectral/packed_real.hpp"

#include "spectral/plain_first.hpp"

namespace fathom {

int32_t Log2Size(int32_t n) {
  if (n < 1) return -1;
  int32_t exponent = 0;
  for (; n > 1; n /= 2) ++exponent;
  return exponent;
}

AnalysisStatus PackedRealFFT(double* x, int32_t n, int32_t /*log2n*/) {
  plain::packedRealFft(x, n);
  return FATHOM_OK;
}

void PackedRealInvFFT(double* x, int32_t n, int32_t /*log2n*/) {
  plain::packedRealInvFft(x, n);
}

}  // namespace fathom
