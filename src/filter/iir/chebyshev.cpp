// Chebyshev filters: equal ripple in the pass band, poles on an ellipse (C. M. Rader and B. Gold,
// "Digital filter design techniques in the frequency domain", Proceedings of the IEEE, 1967), by
// the bilinear transform.
#include "fathom.h"
#include "filter/iir/design.hpp"
#include "filter/iir/forms.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

// Of the ripple: q is the ripple as a ratio, sh and ch the half axes of the poles' ellipse.
struct Ellipse {
  explicit Ellipse(const Design& d) {
    const double r = pow(10.0, 0.1 * d.ripple), e = sqrt(r - 1.0);
    q = sqrt(r);
    const double y = pow((1.0 + q) / e, 1.0 / d.order);
    sh = (y - 1.0 / y) * 0.5;
    ch = (y + 1.0 / y) * 0.5;
  }
  double q, sh, ch;
};

// The squared distance of the pole at angle t from the origin, in both forms in which it is taken:
// the first is twice as large.
double twiceSquaredRadius(const Ellipse& el, double t) {
  const double dd = el.sh * el.sh - el.ch * el.ch, ss = el.sh * el.sh + el.ch * el.ch;
  return cos(2.0 * t) * dd + ss;
}
double squaredRadius(const Ellipse& el, double c) {
  return (el.sh * el.sh - el.ch * el.ch) * c * c + el.ch * el.ch;
}

Section lowpassFirst(const Ellipse& el, double O) {
  const double sO = el.sh * O, b0 = sO / (1.0 + sO);
  return sectionOf(Numerator::kSum, {b0, b0}, {-(1.0 - sO) / (1.0 + sO)});
}

// q divides the numerator: the pair's share of the ripple.
Section lowpassPair(const Ellipse& el, double O, double t, double q) {
  const double h = 0.5 * O * O, K2 = 2.0 * (el.sh * O);
  const double K = cos(t) * K2, E = twiceSquaredRadius(el, t) * h, D = 1.0 - K + E;
  const double b0 = E / (q * D);
  return sectionOf(Numerator::kSum, {b0, b0 + b0, b0}, {-(2.0 - 2.0 * E) / D, (1.0 + K + E) / D});
}

Section highpassFirst(const Ellipse& el, double O) {
  const double b0 = el.sh / (el.sh + O);
  return sectionOf(Numerator::kDifference, {b0, -b0}, {-(el.sh - O) / (el.sh + O)});
}

Section highpassPair(const Ellipse& el, double O, double t, double q) {
  const double Q2 = O * O, K2 = 2.0 * el.sh * O;
  const double E = twiceSquaredRadius(el, t) * 0.5, K = cos(t) * K2, D = E - K + Q2;
  const double b0 = E / (q * D);
  return sectionOf(Numerator::kDifference, {b0, -2.0 * b0, b0},
                   {(E - Q2) * -2.0 / D, (E + K + Q2) / D});
}

// Of the width that the band's odd pole has.
Section bandpassFirst(double P, double width) {
  const double D = (1.0 + P) + width, b0 = width / D;
  return sectionOf(Numerator::kBandpass, {b0, 0.0, -b0},
                   {(1.0 - P) * -2.0 / D, ((1.0 + P) - width) / D});
}

Section bandstopFirst(double P, double width) {
  const double D = (1.0 + P) + width;
  const double b0 = (1.0 + P) / D, b1 = (1.0 - P) * -2.0 / D;
  return sectionOf(Numerator::kNotch, {b0, b1, b0}, {b1, ((1.0 + P) - width) / D});
}

struct BandPoles {
  BandPoles(double P, double K, double Q) {
    const double KP = P * K, M = (K - KP) * 2.0;
    D = 1.0 + K + Q + KP + P * P;
    a1 = (-4.0 - M + 4.0 * P * P) / D;
    a2 = (6.0 - 2.0 * Q + 6.0 * P * P) / D;
    a3 = (M - 4.0 + 4.0 * P * P) / D;
    a4 = (1.0 - K + Q - KP + P * P) / D;
  }
  double D, a1, a2, a3, a4;
};

Section bandpassPair(const Ellipse& el, double P, double B, double c) {
  const double E = squaredRadius(el, c) * B * B;
  const BandPoles p(P, -2.0 * (B * el.sh) * c, 2.0 * P + E);
  const double b0 = E / p.D;
  return sectionOf(Numerator::kBandpass, {b0, 0.0, -2.0 * b0, 0.0, b0}, {p.a1, p.a2, p.a3, p.a4});
}

Section bandstopPair(const Ellipse& el, double P, double B, double c) {
  const double V = squaredRadius(el, c);
  const BandPoles p(P, -2.0 * el.sh * B * c / V, 2.0 * P + B * B / V);
  const double b0 = (1.0 + 2.0 * P + P * P) / p.D, b1 = (1.0 - P * P) * -4.0 / p.D;
  const double b2 = (6.0 - 2.0 * (2.0 * P) + 6.0 * P * P) / p.D;
  return sectionOf(Numerator::kGeneral, {b0, b1, b2, b1, b0}, {p.a1, p.a2, p.a3, p.a4});
}

class Chebyshev {
 public:
  explicit Chebyshev(const Design& d) : d_(d), ellipse_(d), edge_(d), band_(d), angles_(d.order) {}

  Section next() {
    const std::int32_t s = index_++;
    return d_.odd() && s == 0 ? first() : pair(s);
  }

 private:
  Section first() const {
    const double P = band_.P, B = band_.B, sh = ellipse_.sh;
    switch (d_.type) {
      case FATHOM_LOWPASS:
        return lowpassFirst(ellipse_, edge_.O);
      case FATHOM_HIGHPASS:
        return highpassFirst(ellipse_, edge_.O);
      case FATHOM_BANDPASS:  // of order 1 without regard to the ripple
        return bandpassFirst(P, d_.order == 1 ? B : B * sh);
      default: {
        Section section = bandstopFirst(P, d_.order == 1 ? B : B / sh);
        section.shortNumerator = d_.order != 1;
        return section;
      }
    }
  }

  // Even orders put the ripple's share into one pair: the first, or the last of a band filter.
  Section pair(std::int32_t s) {
    const double t = angles_.next(), P = band_.P, B = band_.B;
    const double q = !d_.odd() && s == 0 ? ellipse_.q : 1.0;
    switch (d_.type) {
      case FATHOM_LOWPASS:
        return lowpassPair(ellipse_, edge_.O, t, q);
      case FATHOM_HIGHPASS:
        return highpassPair(ellipse_, edge_.O, t, q);
      case FATHOM_BANDPASS:
        return inBand(bandpassPair(ellipse_, P, B, cos(t)), s);
      default:
        return inBand(bandstopPair(ellipse_, P, B, cos(t)), s);
    }
  }

  Section inBand(Section section, std::int32_t s) const {
    if (d_.odd() || s + 1 != d_.sections()) return section;
    const double factor = 1.0 / ellipse_.q;
    for (double& b : section.b) {
      if (b != 0.0) b *= factor;
    }
    return section;
  }

  Design d_;
  Ellipse ellipse_;
  Edge edge_;
  BandEdges band_;
  PoleAngles angles_;
  std::int32_t index_ = 0;
};

using enum Check;
constexpr auto kOfRecord = {kOrder, kLow, kHigh, kBand, kRate, kHighNyquist, kLowNyquist, kRipple};
constexpr auto kOfDirectForm = {kOrder, kLow, kHigh, kRate, kRipple, kBand, kHighNyquist};
constexpr auto kOfOneEdge = {kOrder, kLow, kRate, kRipple, kLowNyquist};
constexpr auto kOfBand = {kOrder, kLow, kHigh, kRate, kBand, kRipple, kHighNyquist};

}  // namespace
}  // namespace fathom

AnalysisStatus Ch_CascadeCoef(double fs, double low, double high, double ripple,
                              IIRFilterPtr record) {
  fathom::Design d = fathom::designOf(*record, fs, low, high);
  d.ripple = ripple;
  return fathom::fillRecord<fathom::Chebyshev>(d, fathom::kOfRecord, *record);
}

AnalysisStatus Ch_Coef(int32_t type, int32_t order, double fs, double low, double high,
                       double ripple, double* a, int32_t aCapacity, double* b, int32_t bCapacity) {
  const double top =
      type == FATHOM_LOWPASS || type == FATHOM_HIGHPASS ? fathom::highOfOneEdge(fs, low) : high;
  return fathom::directForm<fathom::Chebyshev>({type, order, fs, low, top, ripple},
                                               fathom::kOfDirectForm, a, aCapacity, b, bCapacity);
}

AnalysisStatus Ch_LPF(const double* x, int32_t n, double fs, double cutoff, double ripple,
                      int32_t order, double* y) {
  return fathom::filterOnce<fathom::Chebyshev>({FATHOM_LOWPASS, order, fs, cutoff, 0.0, ripple},
                                               fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus Ch_HPF(const double* x, int32_t n, double fs, double cutoff, double ripple,
                      int32_t order, double* y) {
  return fathom::filterOnce<fathom::Chebyshev>({FATHOM_HIGHPASS, order, fs, cutoff, 0.0, ripple},
                                               fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus Ch_BPF(const double* x, int32_t n, double fs, double low, double high, double ripple,
                      int32_t order, double* y) {
  return fathom::filterOnce<fathom::Chebyshev>({FATHOM_BANDPASS, order, fs, low, high, ripple},
                                               fathom::kOfBand, x, n, y);
}

AnalysisStatus Ch_BSF(const double* x, int32_t n, double fs, double low, double high, double ripple,
                      int32_t order, double* y) {
  return fathom::filterOnce<fathom::Chebyshev>({FATHOM_BANDSTOP, order, fs, low, high, ripple},
                                               fathom::kOfBand, x, n, y);
}
