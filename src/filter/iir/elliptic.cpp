// Elliptic (Cauer) filters: equal ripple in both bands, by the bilinear transform. Poles and zeros
// are Jacobi elliptic functions, evaluated by Landen's transformation (S. J. Orfanidis, "Lecture
// Notes on Elliptic Filter Design", 2006; real and imaginary parts apart as in A. Antoniou,
// "Digital Filters: Analysis, Design, and Applications", 1993).
#include "fathom.h"
#include "filter/iir/design.hpp"
#include "filter/iir/forms.hpp"
#include "filter/iir/sections.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

// k and the complementary modulus k' = sqrt(1 - k^2), both to full relative precision.
struct Modulus {
  double k, complement;
};

// The modulus whose nome has this logarithm, by the theta functions of the nome or, where that is
// the smaller one, of the complementary nome. None is above exp(-pi): the first terms do.
Modulus modulusOfNome(double logNome) {
  const double logOther = kPi * kPi / logNome;
  const bool other = logNome > logOther;
  const double root = exp(0.5 * (other ? logOther : logNome)), q = root * root;
  const double q2 = q * q, q4 = q2 * q2, q6 = q4 * q2, q9 = q4 * q4 * q;
  const double theta2 = 1.0 + (q2 + (q6 + q6 * q6));  // over 2 q^(1/4)
  const double theta3 = 1.0 + 2.0 * (q + (q4 + q9)), theta4 = 1.0 - 2.0 * (q - (q4 - q9));
  const double small = 4.0 * root * ((theta2 / theta3) * (theta2 / theta3));
  const double large = (theta4 / theta3) * (theta4 / theta3);
  return other ? Modulus{large, small} : Modulus{small, large};
}

// The arithmetic-geometric mean of 1 and b, 0 <= b <= 1.
double meanWithOne(double b) {
  double a = 1.0;
  for (int i = 0; i < 20 && a != b; ++i) {
    const double mean = 0.5 * (a + b);
    b = sqrt(a * b);
    a = mean;
  }
  return a;
}

// The descending sequence of Landen moduli from k on, and what is carried along it. Going up, sn,
// cn and dn are sums, products and quotients of positive numbers, so that small values of each keep
// their relative precision.
class Landen {
 public:
  explicit Landen(const Modulus& m) : k_{m.k} {
    double complement = m.complement;
    while (count_ < kMost && k_[count_] > 1e-20) {
      const double root = k_[count_] / (1.0 + complement);
      k_[++count_] = root * root;
      less_[count_] = 2.0 * complement / (1.0 + complement);
      complement = 2.0 * sqrt(complement) / (1.0 + complement);
    }
  }

  // sn(u K), cn(u K) and dn(u K).
  struct Values {
    double s, c, d;
  };
  // From s = sin(u pi / 2) and c = cos(u pi / 2).
  Values ascend(double s, double c) const {
    Values v = {s, c, 1.0};
    for (int i = count_; i > 0; --i) {
      const double divisor = 1.0 + k_[i] * (v.s * v.s);
      v = {(1.0 + k_[i]) * v.s / divisor, v.c * v.d / divisor,
           (less_[i] + k_[i] * (v.c * v.c)) / divisor};
    }
    return v;
  }

  // The same for an imaginary argument: y = sinh(v pi / 2) becomes Im sn(i v K), and back.
  double ascendImaginary(double y) const {
    for (int i = count_; i > 0; --i) y = (1.0 + k_[i]) * y / (1.0 - k_[i] * (y * y));
    return y;
  }
  double descendImaginary(double y) const {
    for (int i = 1; i <= count_; ++i) {
      const double ky = k_[i - 1] * y;
      y = 2.0 * y / ((1.0 + k_[i]) * (1.0 + sqrt(1.0 + ky * ky)));
    }
    return y;
  }

 private:
  static constexpr int kMost = 16;
  double k_[kMost + 1];
  double less_[kMost + 1] = {};  // 1 - k_
  int count_ = 0;
};

// The lowpass prototype, with the pass band's edge at 1 and the stop band's at 1 / k.
class Prototype {
 public:
  explicit Prototype(const Design& d)
      : q(sqrt(pow(10.0, 0.1 * d.ripple))),
        order_(d.order),
        ratio_(ratioOf(d)),
        modulus_(modulusOfNome(kPi * (meanWithOne(ratio_.complement) / -meanWithOne(ratio_.k)) /
                               d.order)),
        landen_(modulus_) {
    const double y = 1.0 / sqrt(pow(10.0, 0.1 * d.ripple) - 1.0);
    if (order_ == 1) {
      real = y;
      return;
    }
    const double below = Landen(ratio_).descendImaginary(y);
    const double g = pow(below + sqrt(below * below + 1.0), 1.0 / order_);
    real = landen_.ascendImaginary((g - 1.0 / g) * 0.5);
  }

  // A pair of poles at -sigma +- i omega, of squared radius m, and its zeros at +-i / sqrt(zeta).
  struct Pair {
    double sigma, m, zeta;
  };
  // The pair i from 1, that next to the imaginary axis first.
  Pair pair(std::int32_t i) const {
    const double angle = (2.0 * i - 1.0) * kPi / (2.0 * order_);
    const Landen::Values v = landen_.ascend(cos(angle), sin(angle));
    const double ks = modulus_.k * v.s, kr = modulus_.k * real,
                 divisor = 1.0 + ks * ks * (real * real);
    const double sigma = v.c * v.d * real / divisor;
    const double omega = v.s * sqrt((1.0 + real * real) * (1.0 + kr * kr)) / divisor;
    return {sigma, sigma * sigma + omega * omega, ks * ks};
  }

  double q;     // the ripple as a ratio
  double real;  // distance of an odd order's real pole from the origin

 private:
  // Of the deviations in the two bands.
  static Modulus ratioOf(const Design& d) {
    const double k =
        sqrt(pow(10.0, 0.1 * d.ripple) - 1.0) / sqrt(pow(10.0, 0.1 * d.attenuation) - 1.0);
    return {k, sqrt((1.0 - k) * (1.0 + k))};
  }

  std::int32_t order_;
  Modulus ratio_, modulus_;
  Landen landen_;
};

// A lowpass or highpass pair: (n0 + n2 s^2) / (d0 + d1 s + d2 s^2), the numerator divided by q.
Section pairOf(double n0, double n2, double d0, double d1, double d2, double q) {
  const double D = d0 + d1 + d2, b0 = (n0 + n2) / (q * D), b1 = (n0 - n2) * 2.0 / (q * D);
  return sectionOf(Numerator::kGeneral, {b0, b1, b0}, {(d0 - d2) * 2.0 / D, (d0 - d1 + d2) / D});
}

class Elliptic {
 public:
  explicit Elliptic(const Design& d) : d_(d), prototype_(d), edge_(d), band_(d) {}

  Section next() {
    const std::int32_t s = index_++;
    return d_.odd() && s == 0 ? first() : pair(s);
  }

 private:
  Section first() const {
    const double real = prototype_.real;
    switch (d_.type) {
      case FATHOM_LOWPASS:
        return lowpassFirst(real * edge_.O);
      case FATHOM_HIGHPASS:
        return highpassFirst(real, edge_.O);
      case FATHOM_BANDPASS:
        return bandpassFirst(band_.P, band_.B * real);
      default:
        return bandstopFirst(band_.P, band_.B / real);
    }
  }

  // The prototype's (1 + zeta s^2) m / (s^2 + 2 sigma s + m) with s / O, O / s, (s^2 + P) / (B s)
  // or its inverse for s.
  Section pair(std::int32_t s) const {
    const auto [sigma, m, zeta] = prototype_.pair(d_.odd() ? s : s + 1);
    const double O = edge_.O, P = band_.P, B = band_.B, B2 = B * B, G = m * zeta, q = prototype_.q;
    switch (d_.type) {
      case FATHOM_LOWPASS:
        return pairOf(m * (O * O), G, m * (O * O), 2.0 * sigma * O, 1.0,
                      firstPairDivisor(d_, s, q));
      case FATHOM_HIGHPASS:
        return pairOf(G * (O * O), m, O * O, 2.0 * sigma * O, m, firstPairDivisor(d_, s, q));
      case FATHOM_BANDPASS: {
        const BandPoles poles = bandPoles(P, 2.0 * sigma * B, 2.0 * P + m * B2);
        return lastPairScaled(d_, s, q, bandPair(G, 2.0 * P * G + m * B2, P, poles));
      }
      default: {
        const BandPoles poles = bandPoles(P, 2.0 * sigma * B / m, 2.0 * P + B2 / m);
        return lastPairScaled(d_, s, q, bandPair(1.0, 2.0 * P + zeta * B2, P, poles));
      }
    }
  }

  Design d_;
  Prototype prototype_;
  Edge edge_;
  BandEdges band_;
  std::int32_t index_ = 0;
};

using enum Check;
constexpr auto kOfRecord = {kOrder,      kLow,    kHigh,   kBand,        kRate,       kHighNyquist,
                            kLowNyquist, kRipple, kRecord, kAttenuation, kAboveRipple};
constexpr auto kOfDirectForm = {kOrder,       kLow,      kHigh, kRate,        kRipple,     kBand,
                                kHighNyquist, kCapacity, kType, kAttenuation, kAboveRipple};
constexpr auto kOfOneEdge = {kOrder, kLow, kRate, kRipple, kLowNyquist, kAttenuation, kAboveRipple};
constexpr auto kOfBand = {kOrder,  kLow,         kHigh,        kRate,       kBand,
                          kRipple, kHighNyquist, kAttenuation, kAboveRipple};

}  // namespace
}  // namespace fathom

AnalysisStatus Elp_CascadeCoef(double fs, double low, double high, double ripple,
                               double attenuation, IIRFilterPtr record) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  fathom::Design d = fathom::designOf(*record, fs, low, high);
  d.ripple = ripple;
  d.attenuation = attenuation;
  return fathom::fillRecord<fathom::Elliptic>(d, fathom::kOfRecord, *record);
}

AnalysisStatus Elp_Coef(int32_t type, int32_t order, double fs, double low, double high,
                        double ripple, double attenuation, double* a, int32_t aCapacity, double* b,
                        int32_t bCapacity) {
  const double top = fathom::hasOneEdge(type) ? fathom::highOfOneEdge(fs, low) : high;
  return fathom::directForm<fathom::Elliptic>({type, order, fs, low, top, ripple, attenuation},
                                              fathom::kOfDirectForm, a, aCapacity, b, bCapacity);
}

AnalysisStatus Elp_LPF(const double* x, int32_t n, double fs, double cutoff, double ripple,
                       double attenuation, int32_t order, double* y) {
  return fathom::filterOnce<fathom::Elliptic>(
      {FATHOM_LOWPASS, order, fs, cutoff, 0.0, ripple, attenuation}, fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus Elp_HPF(const double* x, int32_t n, double fs, double cutoff, double ripple,
                       double attenuation, int32_t order, double* y) {
  return fathom::filterOnce<fathom::Elliptic>(
      {FATHOM_HIGHPASS, order, fs, cutoff, 0.0, ripple, attenuation}, fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus Elp_BPF(const double* x, int32_t n, double fs, double low, double high,
                       double ripple, double attenuation, int32_t order, double* y) {
  return fathom::filterOnce<fathom::Elliptic>(
      {FATHOM_BANDPASS, order, fs, low, high, ripple, attenuation}, fathom::kOfBand, x, n, y);
}

AnalysisStatus Elp_BSF(const double* x, int32_t n, double fs, double low, double high,
                       double ripple, double attenuation, int32_t order, double* y) {
  return fathom::filterOnce<fathom::Elliptic>(
      {FATHOM_BANDSTOP, order, fs, low, high, ripple, attenuation}, fathom::kOfBand, x, n, y);
}
