// Chebyshev filters: equal ripple in the pass band, poles on an ellipse (C. M. Rader and B. Gold,
// "Digital filter design techniques in the frequency domain", Proceedings of the IEEE, 1967), by
// the bilinear transform.
#include "fathom.h"
#include "filter/iir/design.hpp"
#include "filter/iir/forms.hpp"
#include "filter/iir/sections.hpp"
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

// q divides the numerator: the pair's share of the ripple.
Section lowpassPair(const Ellipse& el, double O, double t, double q) {
  const double h = 0.5 * O * O, K2 = 2.0 * (el.sh * O);
  const double K = cos(t) * K2, E = twiceSquaredRadius(el, t) * h, D = 1.0 - K + E;
  const double b0 = E / (q * D);
  return sectionOf(Numerator::kSum, {b0, b0 + b0, b0}, {-(2.0 - 2.0 * E) / D, (1.0 + K + E) / D});
}

Section highpassPair(const Ellipse& el, double O, double t, double q) {
  const double Q2 = O * O, K2 = 2.0 * el.sh * O;
  const double E = twiceSquaredRadius(el, t) * 0.5, K = cos(t) * K2, D = E - K + Q2;
  const double b0 = E / (q * D);
  return sectionOf(Numerator::kDifference, {b0, -2.0 * b0, b0},
                   {(E - Q2) * -2.0 / D, (E + K + Q2) / D});
}

Section bandpassPair(const Ellipse& el, double P, double B, double c) {
  const double E = squaredRadius(el, c) * B * B;
  return bandpassPair(E, bandPoles(P, -2.0 * (B * el.sh) * c, 2.0 * P + E));
}

Section bandstopPair(const Ellipse& el, double P, double B, double c) {
  const double V = squaredRadius(el, c);
  return bandstopPair(P, bandPoles(P, -2.0 * el.sh * B * c / V, 2.0 * P + B * B / V));
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
        return lowpassFirst(sh * edge_.O);
      case FATHOM_HIGHPASS:
        return highpassFirst(sh, edge_.O);
      case FATHOM_BANDPASS:  // of order 1 without regard to the ripple
        return bandpassFirst(P, d_.order == 1 ? B : B * sh);
      default: {
        Section section = bandstopFirst(P, d_.order == 1 ? B : B / sh);
        section.shortNumerator = d_.order != 1;
        return section;
      }
    }
  }

  Section pair(std::int32_t s) {
    const double t = angles_.next(), P = band_.P, B = band_.B, q = ellipse_.q;
    switch (d_.type) {
      case FATHOM_LOWPASS:
        return lowpassPair(ellipse_, edge_.O, t, firstPairDivisor(d_, s, q));
      case FATHOM_HIGHPASS:
        return highpassPair(ellipse_, edge_.O, t, firstPairDivisor(d_, s, q));
      case FATHOM_BANDPASS:
        return lastPairScaled(d_, s, q, bandpassPair(ellipse_, P, B, cos(t)));
      default:
        return lastPairScaled(d_, s, q, bandstopPair(ellipse_, P, B, cos(t)));
    }
  }

  Design d_;
  Ellipse ellipse_;
  Edge edge_;
  BandEdges band_;
  PoleAngles angles_;
  std::int32_t index_ = 0;
};

using enum Check;
constexpr auto kOfRecord = {kOrder,       kLow,        kHigh,   kBand,  kRate,
                            kHighNyquist, kLowNyquist, kRipple, kRecord};
constexpr auto kOfDirectForm = {kOrder, kLow,         kHigh,     kRate, kRipple,
                                kBand,  kHighNyquist, kCapacity, kType};
constexpr auto kOfOneEdge = {kOrder, kLow, kRate, kRipple, kLowNyquist};
constexpr auto kOfBand = {kOrder, kLow, kHigh, kRate, kBand, kRipple, kHighNyquist};

}  // namespace
}  // namespace fathom

AnalysisStatus Ch_CascadeCoef(double fs, double low, double high, double ripple,
                              IIRFilterPtr record) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  fathom::Design d = fathom::designOf(*record, fs, low, high);
  d.ripple = ripple;
  return fathom::fillRecord<fathom::Chebyshev>(d, fathom::kOfRecord, *record);
}

AnalysisStatus Ch_Coef(int32_t type, int32_t order, double fs, double low, double high,
                       double ripple, double* a, int32_t aCapacity, double* b, int32_t bCapacity) {
  const double top = fathom::hasOneEdge(type) ? fathom::highOfOneEdge(fs, low) : high;
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
