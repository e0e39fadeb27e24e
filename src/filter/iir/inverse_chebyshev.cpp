// Inverse Chebyshev filters: flat pass band, equal ripple in the stop band (A. V. Oppenheim and R.
// W. Schafer, "Digital Signal Processing", 1975), by the bilinear transform.
#include "fathom.h"
#include "filter/iir/design.hpp"
#include "filter/iir/forms.hpp"
#include "filter/iir/sections.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

// Of the attenuation: the half axes of the ellipse on which the inverses of the poles lie.
struct Ellipse {
  explicit Ellipse(const Design& d) {
    const double r = pow(10.0, 0.1 * d.attenuation), e = sqrt(r - 1.0), u = 1.0 / e;
    const double y = pow((sqrt(u * u + 1.0) + 1.0) / u, 1.0 / d.order);
    sh = (y - 1.0 / y) * 0.5;
    ch = (y + 1.0 / y) * 0.5;
  }
  double sh, ch;
};

// A pair of the prototype: its zeros at +-j z, its poles 1 / (pr +- j pi2).
struct Pair {
  Pair(const Ellipse& el, double t, std::int32_t k, std::int32_t order)
      : z(1.0 / sin(k * kPi / (2.0 * order))),
        pr(cos(t) * el.sh),
        pi2(sin(t) * el.ch),
        m(pr * pr + pi2 * pi2),
        re(pr / m),
        mag(1.0 / m) {}
  double z, pr, pi2, m, re, mag;
};

Section lowpassPair(const Pair& p, double O) {
  const double A2 = p.mag * O * O, Z2 = p.z * p.z * O * O, G = A2 / Z2;
  const double B1 = -2.0 * p.re * O, D = 1.0 + B1 + A2;
  const double b0 = (1.0 + Z2) * G / D, b1 = -2.0 * G * (1.0 - Z2) / D;
  return sectionOf(Numerator::kGeneral, {b0, b1, b0}, {(1.0 - A2) * -2.0 / D, (1.0 - B1 + A2) / D});
}

Section highpassFirst(const Ellipse& el, double O) {
  const double g = el.sh * O, D = g + 1.0, b0 = 1.0 / D;
  return sectionOf(Numerator::kDifference, {b0, -b0}, {-(1.0 - g) / D});
}

Section highpassPair(const Pair& p, double O) {
  const double B1 = -2.0 * p.pr * O, A2 = (p.pr * p.pr + p.pi2 * p.pi2) * O * O;
  const double Z2 = (1.0 / p.z) * (1.0 / p.z) * O * O, D = 1.0 + B1 + A2;
  const double b0 = (1.0 + Z2) / D, b1 = (1.0 - Z2) * -2.0 / D;
  return sectionOf(Numerator::kGeneral, {b0, b1, b0}, {(1.0 - A2) * -2.0 / D, (1.0 - B1 + A2) / D});
}

Section bandpassFirst(const Ellipse& el, double P, double B) {
  const double g = (1.0 / el.sh) * B, D = 1.0 + g + P, b0 = g / D;
  return sectionOf(Numerator::kBandpass, {b0, 0.0, -b0}, {(1.0 - P) * -2.0 / D, (1.0 - g + P) / D});
}

Section bandstopFirst(const Ellipse& el, double P, double B) {
  const double g = B * el.sh, D = 1.0 + g + P;
  const double b0 = (1.0 + P) / D, b1 = (1.0 - P) * -2.0 / D;
  return sectionOf(Numerator::kNotch, {b0, b1, b0}, {b1, (1.0 - g + P) / D});
}

BandPoles polesOf(double P, double K, double Q) {
  const double KP = P * K, D = 1.0 + K + Q + KP + P * P;
  return {D, -(2.0 * K + 4.0 - 2.0 * KP - 4.0 * P * P) / D, (6.0 - 2.0 * Q + 6.0 * P * P) / D,
          (2.0 * K - 4.0 - 2.0 * KP + 4.0 * P * P) / D, (1.0 - K + Q - KP + P * P) / D};
}

Section bandpassPair(const Pair& p, double P, double B) {
  const double G = p.mag / (p.z * p.z), Nz = (2.0 * P + p.z * p.z * B * B) * G;
  return bandPair(G, Nz, P, polesOf(P, -2.0 * B * p.re, 2.0 * P + p.mag * B * B));
}

Section bandstopPair(const Pair& p, double P, double B) {
  const double Qz = B * B / (p.z * p.z) + 2.0 * P;
  const BandPoles s = polesOf(P, -2.0 * B * p.pr, 2.0 * P + (p.pr * p.pr + p.pi2 * p.pi2) * B * B);
  const double b0 = (1.0 + Qz + P * P) / s.D, b1 = (1.0 - P * P) * -4.0 / s.D;
  const double b2 = (6.0 - 2.0 * Qz + 6.0 * P * P) / s.D;
  return sectionOf(Numerator::kGeneral, {b0, b1, b2, b1, b0}, {s.a1, s.a2, s.a3, s.a4});
}

class InverseChebyshev {
 public:
  explicit InverseChebyshev(const Design& d)
      : d_(d),
        first_(d.odd()),
        k_(d.odd() ? 0 : -1),
        ellipse_(d),
        edge_(d),
        band_(d),
        angles_(d.order) {}

  Section next() {
    if (first_) {
      first_ = false;
      return firstSection();
    }
    k_ += 2;
    const Pair pair(ellipse_, angles_.next(), k_, d_.order);
    switch (d_.type) {
      case FATHOM_LOWPASS:
        return lowpassPair(pair, edge_.O);
      case FATHOM_HIGHPASS:
        return highpassPair(pair, edge_.O);
      case FATHOM_BANDPASS:
        return bandpassPair(pair, band_.P, band_.B);
      default:
        return bandstopPair(pair, band_.P, band_.B);
    }
  }

 private:
  Section firstSection() const {
    switch (d_.type) {
      case FATHOM_LOWPASS:
        return lowpassFirst((1.0 / ellipse_.sh) * edge_.O);
      case FATHOM_HIGHPASS:
        return highpassFirst(ellipse_, edge_.O);
      case FATHOM_BANDPASS:
        return bandpassFirst(ellipse_, band_.P, band_.B);
      default:
        return bandstopFirst(ellipse_, band_.P, band_.B);
    }
  }

  Design d_;
  bool first_;
  std::int32_t k_;  // of the last pair's zero
  Ellipse ellipse_;
  Edge edge_;
  BandEdges band_;
  PoleAngles angles_;
};

using enum Check;
constexpr auto kOfRecord = {kOrder,       kLow,         kHigh,       kBand,  kRate,
                            kAttenuation, kHighNyquist, kLowNyquist, kRecord};
constexpr auto kOfDirectForm = {kOrder,       kLow,         kHigh,     kRate, kBand,
                                kAttenuation, kHighNyquist, kCapacity, kType};
constexpr auto kOfOneEdge = {kOrder, kLow, kRate, kAttenuation, kLowNyquist};
constexpr auto kOfBand = {kOrder, kLow, kHigh, kRate, kBand, kAttenuation, kHighNyquist};

}  // namespace
}  // namespace fathom

AnalysisStatus InvCh_CascadeCoef(double fs, double low, double high, double attenuation,
                                 IIRFilterPtr record) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  fathom::Design d = fathom::designOf(*record, fs, low, high);
  d.attenuation = attenuation;
  return fathom::fillRecord<fathom::InverseChebyshev>(d, fathom::kOfRecord, *record);
}

AnalysisStatus InvCh_Coef(int32_t type, int32_t order, double fs, double low, double high,
                          double attenuation, double* a, int32_t aCapacity, double* b,
                          int32_t bCapacity) {
  const double top = fathom::hasOneEdge(type) ? fathom::highOfOneEdge(fs, low) : high;
  return fathom::directForm<fathom::InverseChebyshev>({type, order, fs, low, top, 0.0, attenuation},
                                                      fathom::kOfDirectForm, a, aCapacity, b,
                                                      bCapacity);
}

AnalysisStatus InvCh_LPF(const double* x, int32_t n, double fs, double cutoff, double attenuation,
                         int32_t order, double* y) {
  return fathom::filterOnce<fathom::InverseChebyshev>(
      {FATHOM_LOWPASS, order, fs, cutoff, 0.0, 0.0, attenuation}, fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus InvCh_HPF(const double* x, int32_t n, double fs, double cutoff, double attenuation,
                         int32_t order, double* y) {
  return fathom::filterOnce<fathom::InverseChebyshev>(
      {FATHOM_HIGHPASS, order, fs, cutoff, 0.0, 0.0, attenuation}, fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus InvCh_BPF(const double* x, int32_t n, double fs, double low, double high,
                         double attenuation, int32_t order, double* y) {
  return fathom::filterOnce<fathom::InverseChebyshev>(
      {FATHOM_BANDPASS, order, fs, low, high, 0.0, attenuation}, fathom::kOfBand, x, n, y);
}

AnalysisStatus InvCh_BSF(const double* x, int32_t n, double fs, double low, double high,
                         double attenuation, int32_t order, double* y) {
  return fathom::filterOnce<fathom::InverseChebyshev>(
      {FATHOM_BANDSTOP, order, fs, low, high, 0.0, attenuation}, fathom::kOfBand, x, n, y);
}
