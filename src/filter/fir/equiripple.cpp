// Equiripple FIR designs: the checks of their bands, and the bands of the four standard filters.
#include <cstdint>

#include "fathom.h"
#include "filter/fir/exchange.hpp"
#include "frame/elementary.hpp"

namespace {

// What each type demands of the ends of its bands. How far the last edge lies from half the
// sampling frequency counts in the caller's unit; a distance that is not a number meets no demand.
AnalysisStatus checkEnds(int32_t type, bool odd, double first, double distance, double last) {
  constexpr double kAtHalf = 0.001;
  const bool atHalf = distance <= kAtHalf;
  bool designable = true;
  switch (type) {
    case FATHOM_FIR_MULTIBAND:
      designable = first == 0.0 && atHalf;
      if (designable && !odd && last != 0.0) return FATHOM_ERR_ODD_COEFFICIENTS;
      break;
    case FATHOM_FIR_DIFFERENTIATOR:
      designable = first == 0.0 && (odd ? distance >= 0.01 : atHalf);
      break;
    case FATHOM_FIR_HILBERT:
      designable = first != 0.0 && (odd ? distance >= 0.001 : atHalf);
      break;
    default:
      break;
  }
  return designable ? FATHOM_OK : FATHOM_ERR_FILTER_DESIGN;
}

AnalysisStatus check(const fathom::FirBands& bands, int32_t n) {
  constexpr int32_t kMostTerms = 509;
  if (n < 3) return FATHOM_ERR_FILTER_DESIGN;
  if (bands.count < 1) return FATHOM_ERR_NO_SAMPLES;
  if (!(bands.fs > 0.0)) return FATHOM_ERR_BAND;
  const int64_t edges = 2 * int64_t{bands.count};
  for (int64_t i = 0; i < edges; ++i) {
    if (bands.edges[i] < 0.0) return FATHOM_ERR_BAND;
  }
  for (int32_t band = 0; band < bands.count; ++band) {
    if (!(bands.weights[band] > 0.0) || bands.desired[band] < 0.0) return FATHOM_ERR_BAND;
  }
  const double last = bands.edges[edges - 1];
  if (last / bands.fs > 0.5) return FATHOM_ERR_NYQUIST;
  for (int64_t i = 1; i < edges; ++i) {
    if (!(bands.edges[i - 1] < bands.edges[i])) return FATHOM_ERR_BAND;
  }
  const double distance = fathom::fabs(last - bands.fs * 0.5);
  if (const AnalysisStatus status = checkEnds(bands.type, n % 2 != 0, bands.edges[0], distance,
                                              bands.desired[bands.count - 1]);
      status != FATHOM_OK) {
    return status;
  }
  return fathom::cosineTerms(bands, n) > kMostTerms ? FATHOM_ERR_MEMORY : FATHOM_OK;
}

// Bands of weight 1 that pass and stop in turn, up to half the sampling frequency. The deviation is
// written whatever becomes of the design.
template <int32_t count>
AnalysisStatus standardFilter(double fs, const double (&edges)[2 * count], double first, int32_t n,
                              double* h, double* deviation) {
  double desired[count], weights[count];
  for (int32_t band = 0; band < count; ++band) {
    desired[band] = band % 2 == 0 ? first : 1.0 - first;
    weights[band] = 1.0;
  }
  double reached = 0.0;
  const AnalysisStatus status =
      Equi_Ripple(count, desired, weights, fs, edges, FATHOM_FIR_MULTIBAND, n, h, &reached);
  *deviation = fathom::fabs(reached);
  return status;
}

}  // namespace

AnalysisStatus Equi_Ripple(int32_t bands, const double* desired, const double* weights, double fs,
                           const double* edges, int32_t type, int32_t n, double* h,
                           double* deviation) {
  const fathom::FirBands asked = {bands, desired, weights, fs, edges, type};
  if (const AnalysisStatus status = check(asked, n); status != FATHOM_OK) return status;
  return fathom::equirippleDesign(asked, n, h, deviation);
}

AnalysisStatus EquiRpl_LPF(double fs, double pass, double stop, int32_t n, double* h,
                           double* deviation) {
  return standardFilter<2>(fs, {0.0, pass, stop, fs * 0.5}, 1.0, n, h, deviation);
}

AnalysisStatus EquiRpl_HPF(double fs, double stop, double pass, int32_t n, double* h,
                           double* deviation) {
  if (n % 2 == 0) return FATHOM_ERR_ODD_COEFFICIENTS;
  return standardFilter<2>(fs, {0.0, stop, pass, fs * 0.5}, 0.0, n, h, deviation);
}

AnalysisStatus EquiRpl_BPF(double fs, double lowStop, double lowPass, double highPass,
                           double highStop, int32_t n, double* h, double* deviation) {
  return standardFilter<3>(fs, {0.0, lowStop, lowPass, highPass, highStop, fs * 0.5}, 0.0, n, h,
                           deviation);
}

AnalysisStatus EquiRpl_BSF(double fs, double lowPass, double lowStop, double highStop,
                           double highPass, int32_t n, double* h, double* deviation) {
  if (n % 2 == 0) return FATHOM_ERR_ODD_COEFFICIENTS;
  return standardFilter<3>(fs, {0.0, lowPass, lowStop, highStop, highPass, fs * 0.5}, 1.0, n, h,
                           deviation);
}
