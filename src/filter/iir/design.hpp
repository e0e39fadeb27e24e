// What the design of every IIR family starts from: the request with its checks, the pre-warped
// edges, the angles of the poles, and the sections that come out.
#ifndef FATHOM_FILTER_IIR_DESIGN_HPP
#define FATHOM_FILTER_IIR_DESIGN_HPP

#include <cstdint>
#include <initializer_list>

#include "fathom.h"
#include "frame/elementary.hpp"

namespace fathom {

inline bool isBandType(std::int32_t type) {
  return type == FATHOM_BANDPASS || type == FATHOM_BANDSTOP;
}

inline bool hasOneEdge(std::int32_t type) {
  return type == FATHOM_LOWPASS || type == FATHOM_HIGHPASS;
}

inline bool isBand(std::int32_t type) {
  return type >= FATHOM_LOWPASS && type <= FATHOM_BANDSTOP;
}

// What a caller asks of a family. Fields that a routine does not take keep their defaults.
struct Design {
  std::int32_t type;
  std::int32_t order;  // of the lowpass prototype
  double fs;
  double low;  // the cutoff, of lowpass and highpass filters
  double high;
  double ripple = 0.0;       // dB, in the pass band
  double attenuation = 0.0;  // dB, in the stop band
  bool fits = true;          // the coefficients, into the record or the arrays meant for them

  bool odd() const { return order % 2 != 0; }
  std::int32_t sections() const { return order / 2 + order % 2; }
  // Number of coefficients of the direct form.
  std::int64_t length() const {
    return type < FATHOM_BANDPASS ? std::int64_t{order} + 1 : 2 * std::int64_t{order} + 1;
  }
};

// What can be wrong with a design. Families check in orders of their own.
enum class Check {
  kOrder,
  kRate,
  kLow,
  kHigh,
  kBand,  // low below high
  kRipple,
  kAttenuation,
  kAboveRipple,  // attenuation above ripple
  kLowNyquist,
  kHighNyquist,
  kRecord,    // fits into the record
  kCapacity,  // fits into the arrays
  kType
};

// Status of the first of the checks that fails, or FATHOM_OK.
AnalysisStatus firstFailure(const Design& d, std::initializer_list<Check> checks);

// The design's high edge where it has none of its own: between the cutoff and half the rate.
inline double highOfOneEdge(double fs, double low) {
  return (fs * 0.5 + low) * 0.5;
}

// Pre-warped: where the bilinear transform takes the frequency f.
inline double warped(double f, double fs) {
  return tan(kPi * f / fs);
}

// The warped edges: O of a lowpass or highpass filter; P and B, the squared centre and the width,
// of a band filter.
struct Edge {
  explicit Edge(const Design& d) : O(warped(d.low, d.fs)) {}
  double O;
};
struct BandEdges {
  explicit BandEdges(const Design& d) : BandEdges(warped(d.low, d.fs), warped(d.high, d.fs)) {}
  BandEdges(double Ol, double Oh) : P(Oh * Ol), B(Oh - Ol) {}
  double P, B;
};

// The angles of a prototype's poles in the upper left quarter plane, one per pair, that of the pair
// next to the imaginary axis first.
class PoleAngles {
 public:
  explicit PoleAngles(std::int32_t order) : step_(kPi / order), angle_((kPi + step_) * 0.5) {}
  double next() {
    const double angle = angle_;
    angle_ += step_;
    return angle;
  }

 private:
  double step_, angle_;
};

// How a section's numerator is evaluated when data is filtered in one call; b0 is the factor of the
// first three. x1 is the input before x, and so on.
enum class Numerator {
  kSum,         // x + x1, or x + x1 + x1 + x2
  kDifference,  // x - x1, or x - x1 - x1 + x2
  kBandpass,    // x - x2, or x - 2 x2 + x4
  kNotch,       // of degree 2, with b1 = a1
  kGeneral      // symmetric
};

// One stage of a filter: (b0 + b1 z^-1 + ...) / (1 + a1 z^-1 + ...), of degree 1 or 2, or of degree
// 2 or 4 in a band filter. What lies past the degree is zero.
struct Section {
  Numerator numerator = Numerator::kGeneral;
  int degree = 0;
  double a[4] = {};  // a1, a2, ...
  double b[5] = {};
  bool shortNumerator = false;  // a record keeps what its slots past the degree held
};

inline Section sectionOf(Numerator numerator, std::initializer_list<double> b,
                         std::initializer_list<double> a) {
  Section s;
  s.numerator = numerator;
  s.degree = static_cast<int>(a.size());
  double* to = s.b;
  for (double v : b) *to++ = v;
  to = s.a;
  for (double v : a) *to++ = v;
  return s;
}

}  // namespace fathom

#endif
