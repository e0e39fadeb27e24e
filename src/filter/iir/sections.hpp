// Section formulas that several families have in common, down to the order of their operations: of
// the one real pole of an odd prototype, and of a pair of poles in a band filter.
#ifndef FATHOM_FILTER_IIR_SECTIONS_HPP
#define FATHOM_FILTER_IIR_SECTIONS_HPP

#include "filter/iir/design.hpp"

namespace fathom {

// Of the real pole at -g in the warped plane.
inline Section lowpassFirst(double g) {
  const double b0 = g / (1.0 + g);
  return sectionOf(Numerator::kSum, {b0, b0}, {-(1.0 - g) / (1.0 + g)});
}

// Of the prototype's real pole at -1, or at any other place.
inline Section highpassFirst(double O) {
  const double g = 1.0 / (1.0 + O);
  return sectionOf(Numerator::kDifference, {g, -g}, {-(1.0 - O) * g});
}
inline Section highpassFirst(double pole, double O) {
  const double b0 = pole / (pole + O);
  return sectionOf(Numerator::kDifference, {b0, -b0}, {-(pole - O) / (pole + O)});
}

// Of the bandwidth that belongs to the real pole.
inline Section bandpassFirst(double P, double width) {
  const double S = 1.0 + P, D = S + width, b0 = width / D;
  return sectionOf(Numerator::kBandpass, {b0, 0.0, -b0}, {(1.0 - P) * -2.0 / D, (S - width) / D});
}
inline Section bandstopFirst(double P, double width) {
  const double S = 1.0 + P, D = S + width;
  const double b0 = S / D, b1 = (1.0 - P) * -2.0 / D;
  return sectionOf(Numerator::kNotch, {b0, b1, b0}, {b1, (S - width) / D});
}

// Denominator of a pair in a band filter; what it was divided by, the numerator has to be as well.
struct BandPoles {
  double D, a1, a2, a3, a4;
};

// Of s^4 + K s^3 + Q s^2 + P K s + P^2.
inline BandPoles bandPoles(double P, double K, double Q) {
  const double KP = P * K, M = (K - KP) * 2.0;
  const double D = 1.0 + K + Q + KP + P * P;
  return {D, (-4.0 - M + 4.0 * P * P) / D, (6.0 - 2.0 * Q + 6.0 * P * P) / D,
          (M - 4.0 + 4.0 * P * P) / D, (1.0 - K + Q - KP + P * P) / D};
}

// Numerator E s^2: no zeros but those at 0 and half the rate.
inline Section bandpassPair(double E, const BandPoles& p) {
  const double b0 = E / p.D;
  return sectionOf(Numerator::kBandpass, {b0, 0.0, -2.0 * b0, 0.0, b0}, {p.a1, p.a2, p.a3, p.a4});
}

// Numerator (s^2 + P)^2: all zeros at the centre.
inline Section bandstopPair(double P, const BandPoles& p) {
  const double b0 = (1.0 + 2.0 * P + P * P) / p.D, b1 = (1.0 - P * P) * -4.0 / p.D;
  const double b2 = (6.0 - 2.0 * (2.0 * P) + 6.0 * P * P) / p.D;
  return sectionOf(Numerator::kGeneral, {b0, b1, b2, b1, b0}, {p.a1, p.a2, p.a3, p.a4});
}

// Numerator G s^4 + N s^2 + G P^2: zeros at two frequencies, one on either side of the centre.
inline Section bandPair(double G, double N, double P, const BandPoles& p) {
  const double NP = P * P * G;
  const double b0 = (G + N + NP) / p.D, b1 = (G - NP) * -4.0 / p.D;
  const double b2 = (6.0 * G - 2.0 * N + 6.0 * NP) / p.D;
  return sectionOf(Numerator::kGeneral, {b0, b1, b2, b1, b0}, {p.a1, p.a2, p.a3, p.a4});
}

// Filters with ripple in the pass band have even orders' gain at the reference frequency, 1 / q, in
// one pair: that of lowpass and highpass filters is the first, that of band filters the last.
inline double firstPairDivisor(const Design& d, std::int32_t s, double q) {
  return !d.odd() && s == 0 ? q : 1.0;
}
inline Section lastPairScaled(const Design& d, std::int32_t s, double q, Section section) {
  if (d.odd() || s + 1 != d.sections()) return section;
  const double factor = 1.0 / q;
  for (double& b : section.b) b *= factor;
  return section;
}

}  // namespace fathom

#endif
