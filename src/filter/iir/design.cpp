#include "filter/iir/design.hpp"

namespace fathom {
namespace {

AnalysisStatus verdict(const Design& d, Check check) {
  switch (check) {
    case Check::kOrder:
      return d.order >= 1 ? FATHOM_OK : FATHOM_ERR_ORDER;
    case Check::kRate:
      return d.fs > 0.0 ? FATHOM_OK : FATHOM_ERR_BAND;
    case Check::kLow:
      return d.low > 0.0 ? FATHOM_OK : FATHOM_ERR_BAND;
    case Check::kHigh:
      return d.high > 0.0 ? FATHOM_OK : FATHOM_ERR_BAND;
    case Check::kBand:
      return d.low < d.high ? FATHOM_OK : FATHOM_ERR_BAND;
    case Check::kRipple:
      return d.ripple > 0.0 ? FATHOM_OK : FATHOM_ERR_RIPPLE;
    case Check::kAttenuation:
      return d.attenuation > 0.0 ? FATHOM_OK : FATHOM_ERR_ATTENUATION;
    case Check::kAboveRipple:
      return d.attenuation > d.ripple ? FATHOM_OK : FATHOM_ERR_ATTENUATION_BELOW_RIPPLE;
    case Check::kLowNyquist:
      return d.low <= d.fs * 0.5 ? FATHOM_OK : FATHOM_ERR_NYQUIST;
    case Check::kHighNyquist:
      return d.high <= d.fs * 0.5 ? FATHOM_OK : FATHOM_ERR_NYQUIST;
    case Check::kRecord:
      return d.fits ? FATHOM_OK : FATHOM_ERR_FILTER_RECORD;
    case Check::kCapacity:
      return d.fits ? FATHOM_OK : FATHOM_ERR_ARRAY_SIZE;
    case Check::kType:
      return isBand(d.type) ? FATHOM_OK : FATHOM_ERR_SELECTION;
  }
  return FATHOM_OK;
}

}  // namespace

AnalysisStatus firstFailure(const Design& d, std::initializer_list<Check> checks) {
  for (Check check : checks) {
    if (const AnalysisStatus status = verdict(d, check); status != FATHOM_OK) return status;
  }
  return FATHOM_OK;
}

}  // namespace fathom
