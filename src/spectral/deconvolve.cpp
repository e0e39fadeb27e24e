// Deconvolution: the quotient of two spectra, back in time.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/workspace.hpp"
#include "spectral/packed_bins.hpp"
#include "spectral/packed_real.hpp"

AnalysisStatus Deconvolve(const double* signal, int32_t ns, const double* kernel, int32_t nk,
                          double* result) {
  if (ns < 1 || nk < 1) return FATHOM_ERR_NO_SAMPLES;
  const int64_t results = int64_t{ns} - nk + 1;
  if (results < 0) return FATHOM_ERR_ARRAY_SIZE;
  const int64_t padded = fathom::paddedSize(ns);
  if (padded > INT32_MAX) return FATHOM_ERR_MEMORY;
  const auto n = static_cast<int32_t>(padded);
  fathom::Workspace<double> k(static_cast<std::size_t>(n));
  if (!k) return FATHOM_ERR_MEMORY;
  fathom::Workspace<double> s(static_cast<std::size_t>(n));
  if (!s) return FATHOM_ERR_MEMORY;
  // A kernel of ns + 1 samples may have one more than the transform.
  fathom::packedSpectrum(kernel, static_cast<std::size_t>(std::min(nk, n)), n, k.data());
  fathom::packedSpectrum(signal, static_cast<std::size_t>(ns), n, s.data());
  fathom::packedQuotient(k.data(), s.data(), n);
  fathom::PackedRealInvFFT(s.data(), n, fathom::Log2Size(n));
  std::copy_n(s.data(), results, result);
  return FATHOM_OK;
}
