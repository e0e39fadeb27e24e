// Bessel-like filters of nearly linear phase: poles on the unit circle whose imaginary parts are
// equally spaced (L. R. Rabiner and B. Gold, "Theory and Application of Digital Signal Processing",
// 1975), by the bilinear transform.
#include "fathom.h"
#include "filter/iir/design.hpp"
#include "filter/iir/forms.hpp"
#include "filter/iir/sections.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

Section lowpassPair(double O, double s) {
  const double K = s * (2.0 * O), D = 1.0 + K + O * O, b0 = O * O / D;
  return sectionOf(Numerator::kSum, {b0, b0 + b0, b0},
                   {-(2.0 - 2.0 * O * O) / D, (1.0 - K + O * O) / D});
}

Section highpassPair(double O, double s) {
  const double K = s * (2.0 * O), g = 1.0 / (1.0 + K + O * O);
  return sectionOf(Numerator::kDifference, {g, -2.0 * g, g},
                   {-(2.0 - 2.0 * O * O) * g, (1.0 - K + O * O) * g});
}

Section bandpassFirstOf(double P, double B) {
  const double D = (1.0 + B) + P;
  return sectionOf(Numerator::kBandpass, {B / D, 0.0, -B / D},
                   {(1.0 - P) * -2.0 / D, (1.0 + P - B) / D});
}

Section bandpassPair(double P, double B, double s) {
  const double K = s * (2.0 * B), KP = K * P, S = KP + K;
  const double T = P * P + (2.0 * P + B * B) + 1.0, D = S + T;
  const double F = 4.0 - 4.0 * P * P, M = (K - KP) * 2.0, b0 = B * B / D;
  const double a2 = -(2.0 * (2.0 * P + B * B) - 6.0 * P * P - 6.0) / D;
  return sectionOf(Numerator::kBandpass, {b0, 0.0, -2.0 * b0, 0.0, b0},
                   {-(F + M) / D, a2, -(F - M) / D, -(S - T) / D});
}

Section bandstopPair(double P, double B, double s) {
  const double K = s * (2.0 * B), KP = K * P, S = KP + K;
  const double T = P * P + (2.0 * P + B * B) + 1.0, D = T + S;
  const double G = 4.0 * P * P - 4.0, M = (K - KP) * 2.0;
  const double b0 = (2.0 * P + 1.0 + P * P) / D, b1 = G / D;
  const double b2 = (6.0 - 4.0 * P + 6.0 * P * P) / D;
  const double a2 = -(2.0 * (2.0 * P + B * B) - 6.0 * P * P - 6.0) / D;
  return sectionOf(Numerator::kGeneral, {b0, b1, b2, b1, b0},
                   {-(M - G) / D, a2, (M + G) / D, (T - S) / D});
}

class Bessel {
 public:
  explicit Bessel(const Design& d)
      : type_(d.type),
        first_(d.odd()),
        step_(2.0 / d.order),
        c_(1.0 - 0.5 * step_),
        edge_(d),
        band_(d) {}

  Section next() {
    if (first_) {
      first_ = false;
      return firstSection();
    }
    const double s = sqrt(1.0 - c_ * c_);
    c_ -= step_;
    switch (type_) {
      case FATHOM_LOWPASS:
        return lowpassPair(edge_.O, s);
      case FATHOM_HIGHPASS:
        return highpassPair(edge_.O, s);
      case FATHOM_BANDPASS:
        return bandpassPair(band_.P, band_.B, s);
      default:
        return bandstopPair(band_.P, band_.B, s);
    }
  }

 private:
  Section firstSection() const {
    switch (type_) {
      case FATHOM_LOWPASS:
        return lowpassFirst(edge_.O);
      case FATHOM_HIGHPASS:
        return highpassFirst(edge_.O);
      case FATHOM_BANDPASS:
        return bandpassFirstOf(band_.P, band_.B);
      default:
        return bandstopFirst(band_.P, band_.B);
    }
  }

  std::int32_t type_;
  bool first_;
  double step_;
  double c_;  // imaginary part of the next pair's poles
  Edge edge_;
  BandEdges band_;
};

using enum Check;
constexpr auto kOfRecord = {kOrder, kLow, kHigh, kBand, kRate, kHighNyquist, kLowNyquist, kRecord};
constexpr auto kOfDirectForm = {kOrder, kLow, kHigh, kRate, kBand, kHighNyquist, kCapacity, kType};

}  // namespace
}  // namespace fathom

AnalysisStatus Bessel_CascadeCoef(double fs, double low, double high, IIRFilterPtr record) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  fathom::Design d = fathom::designOf(*record, fs, low, high);
  return fathom::fillRecord<fathom::Bessel>(d, fathom::kOfRecord, *record);
}

AnalysisStatus Bessel_Coef(int32_t type, int32_t order, double fs, double low, double high,
                           double* a, int32_t aCapacity, double* b, int32_t bCapacity) {
  const double top = type < FATHOM_BANDPASS ? fathom::highOfOneEdge(fs, low) : high;
  return fathom::directForm<fathom::Bessel>({type, order, fs, low, top}, fathom::kOfDirectForm, a,
                                            aCapacity, b, bCapacity);
}
