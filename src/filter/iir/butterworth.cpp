// Butterworth filters: poles on the circle, maximally flat (S. Butterworth, "On the theory of
// filter amplifiers", Experimental Wireless and the Wireless Engineer, 1930), by the bilinear
// transform.
#include "fathom.h"
#include "filter/iir/design.hpp"
#include "filter/iir/forms.hpp"
#include "filter/iir/sections.hpp"
#include "frame/elementary.hpp"

namespace fathom {
namespace {

Section lowpassPair(double O, double c) {
  const double K = c * (2.0 * O), D = (1.0 + O * O) - K;
  const double b0 = O * O / D;
  return sectionOf(Numerator::kSum, {b0, b0 + b0, b0},
                   {-(2.0 - 2.0 * O * O) / D, (1.0 + O * O + K) / D});
}

Section highpassPair(double O, double c) {
  const double K = c * (2.0 * O), g = 1.0 / ((1.0 + O * O) - K);
  return sectionOf(Numerator::kDifference, {g, -2.0 * g, g},
                   {-(2.0 - 2.0 * O * O) * g, (1.0 + O * O + K) * g});
}

BandPoles polesOf(double P, double B, double c) {
  return bandPoles(P, c * (-2.0 * B), 2.0 * P + B * B);
}

class Butterworth {
 public:
  explicit Butterworth(const Design& d)
      : type_(d.type), first_(d.odd()), edge_(d), band_(d), angles_(d.order) {}

  Section next() {
    const bool first = first_;
    first_ = false;
    const double c = first ? 0.0 : cos(angles_.next());
    switch (type_) {
      case FATHOM_LOWPASS:
        return first ? lowpassFirst(edge_.O) : lowpassPair(edge_.O, c);
      case FATHOM_HIGHPASS:
        return first ? highpassFirst(edge_.O) : highpassPair(edge_.O, c);
      case FATHOM_BANDPASS:
        return first ? bandpassFirst(band_.P, band_.B)
                     : bandpassPair(band_.B * band_.B, polesOf(band_.P, band_.B, c));
      default:
        return first ? bandstopFirst(band_.P, band_.B)
                     : bandstopPair(band_.P, polesOf(band_.P, band_.B, c));
    }
  }

 private:
  std::int32_t type_;
  bool first_;
  Edge edge_;
  BandEdges band_;
  PoleAngles angles_;
};

using enum Check;
constexpr auto kOfRecord = {kOrder, kLow, kHigh, kBand, kRate, kHighNyquist, kLowNyquist, kRecord};
constexpr auto kOfDirectForm = {kOrder, kLow, kHigh, kRate, kBand, kHighNyquist, kCapacity, kType};
constexpr auto kOfOneEdge = {kOrder, kLow, kRate, kLowNyquist};
constexpr auto kOfBand = {kOrder, kLow, kHigh, kRate, kBand, kHighNyquist};

}  // namespace
}  // namespace fathom

AnalysisStatus Bw_CascadeCoef(double fs, double low, double high, IIRFilterPtr record) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  return fathom::fillRecord<fathom::Butterworth>(fathom::designOf(*record, fs, low, high),
                                                 fathom::kOfRecord, *record);
}

AnalysisStatus Bw_Coef(int32_t type, int32_t order, double fs, double low, double high, double* a,
                       int32_t aCapacity, double* b, int32_t bCapacity) {
  const double top = type < FATHOM_BANDPASS ? fathom::highOfOneEdge(fs, low) : high;
  return fathom::directForm<fathom::Butterworth>({type, order, fs, low, top}, fathom::kOfDirectForm,
                                                 a, aCapacity, b, bCapacity);
}

AnalysisStatus Bw_LPF(const double* x, int32_t n, double fs, double cutoff, int32_t order,
                      double* y) {
  return fathom::filterOnce<fathom::Butterworth>({FATHOM_LOWPASS, order, fs, cutoff, 0.0},
                                                 fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus Bw_HPF(const double* x, int32_t n, double fs, double cutoff, int32_t order,
                      double* y) {
  return fathom::filterOnce<fathom::Butterworth>({FATHOM_HIGHPASS, order, fs, cutoff, 0.0},
                                                 fathom::kOfOneEdge, x, n, y);
}

AnalysisStatus Bw_BPF(const double* x, int32_t n, double fs, double low, double high, int32_t order,
                      double* y) {
  return fathom::filterOnce<fathom::Butterworth>({FATHOM_BANDPASS, order, fs, low, high},
                                                 fathom::kOfBand, x, n, y);
}

AnalysisStatus Bw_BSF(const double* x, int32_t n, double fs, double low, double high, int32_t order,
                      double* y) {
  return fathom::filterOnce<fathom::Butterworth>({FATHOM_BANDSTOP, order, fs, low, high},
                                                 fathom::kOfBand, x, n, y);
}
