// Linear-phase FIR filters from the ideal response, cut off or weighted by a window (L. R. Rabiner
// and B. Gold, "Theory and Application of Digital Signal Processing", 1975).
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "frame/running_sum.hpp"
#include "frame/workspace.hpp"

namespace {

constexpr std::size_t kTile = 128;

// The sines of an edge, tap by tap towards the centre.
class Sines {
 public:
  Sines(double w, double lengthLessOne) : w_(w), t_(-w * lengthLessOne * 0.5) {}
  void next(std::size_t count, double* sine) {
    t_ = fathom::runningSum(t_, w_, count, sine);
    fathom::sin(sine, count, sine);
  }

 private:
  double w_, t_;
};

// Both halves of the taps: sines less others, of which either may be left out, over pi times the
// tap's distance from the centre. The middle tap, which an even number has not, is given.
void fill(int32_t n, double* h, double centre, Sines* plus, Sines* minus) {
  const auto size = static_cast<std::size_t>(n);
  const double lengthLessOne = n - 1;
  double d = lengthLessOne * -fathom::kPi * 0.5;
  double numerator[kTile], subtrahend[kTile], distance[kTile];
  for (std::size_t start = 0; start < size / 2; start += kTile) {
    const std::size_t count = std::min(kTile, size / 2 - start);
    d = fathom::runningSum(d, fathom::kPi, count, distance);
    if (plus != nullptr) plus->next(count, numerator);
    if (minus != nullptr) minus->next(count, subtrahend);
    for (std::size_t i = 0; i < count; ++i) {
      const double difference = minus == nullptr  ? numerator[i]
                                : plus == nullptr ? -subtrahend[i]
                                                  : numerator[i] - subtrahend[i];
      h[start + i] = h[size - 1 - start - i] = difference / distance[i];
    }
  }
  if (n % 2 != 0) h[size / 2] = centre;
}

void idealResponse(int32_t type, double fs, double low, double high, int32_t n, double* h) {
  constexpr fathom::Extended kOneOverPi{fathom::extendedReciprocal(fathom::kPi)};
  const bool oneEdge = type == FATHOM_LOWPASS || type == FATHOM_HIGHPASS;
  const double wl = fathom::kTwoPi * low / fs, wh = oneEdge ? 0.0 : fathom::kTwoPi * high / fs;
  const double share = ((oneEdge ? wl : wh - wl) * kOneOverPi).toDouble();
  Sines lower(wl, n - 1), upper(wh, n - 1);
  switch (type) {
    case FATHOM_LOWPASS:
      fill(n, h, share, &lower, nullptr);
      break;
    case FATHOM_HIGHPASS:
      fill(n, h, 1.0 - share, nullptr, &lower);
      break;
    case FATHOM_BANDPASS:
      fill(n, h, share, &upper, &lower);
      break;
    default:
      fill(n, h, 1.0 - share, &lower, &upper);
      break;
  }
}

// The ideal response weighted by a window. The window's routine shapes one point less than there
// are taps: the last is the first.
template <typename Window>
AnalysisStatus design(int32_t type, double fs, double low, double high, int32_t n, double* h,
                      Window window) {
  const AnalysisStatus failure = FIR_Coef(type, fs, low, high, n, h);
  if (failure != FATHOM_OK) return failure;
  fathom::Workspace<double> w(static_cast<std::size_t>(n));
  if (!w) return FATHOM_ERR_MEMORY;
  Set1D(w.data(), n, 1.0);
  const AnalysisStatus status = window(w.data(), n - 1);
  w[static_cast<std::size_t>(n) - 1] = w[0];
  Mul1D(h, w.data(), n, h);
  return status;
}

AnalysisStatus rectangular(double*, int32_t) {
  return FATHOM_OK;
}

AnalysisStatus windowed(int32_t type, double fs, double low, double high, int32_t n, double* h,
                        int32_t window) {
  switch (window) {
    case FATHOM_FIR_RECTANGULAR:
      return design(type, fs, low, high, n, h, rectangular);
    case FATHOM_FIR_TRIANGULAR:
      return design(type, fs, low, high, n, h, TriWin);
    case FATHOM_FIR_HANNING:
      return design(type, fs, low, high, n, h, HanWin);
    case FATHOM_FIR_BLACKMAN:
      return design(type, fs, low, high, n, h, BkmanWin);
    default:
      return design(type, fs, low, high, n, h, HamWin);
  }
}

AnalysisStatus kaiser(int32_t type, double fs, double low, double high, int32_t n, double* h,
                      double beta) {
  constexpr double kDefaultBeta = 4.5;
  const double shape = beta < 0.0 ? kDefaultBeta : beta;
  return design(type, fs, low, high, n, h,
                [shape](double* x, int32_t points) { return KsrWin(x, points, shape); });
}

}  // namespace

AnalysisStatus FIR_Coef(int32_t type, double fs, double low, double high, int32_t n, double* h) {
  const bool oneEdge = type == FATHOM_LOWPASS || type == FATHOM_HIGHPASS;
  const bool oddOnly = type == FATHOM_HIGHPASS || type == FATHOM_BANDSTOP;
  const double top = oneEdge ? (fs * 0.5 + low) * 0.5 : high;
  if (type < FATHOM_LOWPASS || type > FATHOM_BANDSTOP) return FATHOM_ERR_SELECTION;
  if (n < 1) return FATHOM_ERR_ORDER;
  if (low > fs * 0.5 || top > fs * 0.5) return FATHOM_ERR_NYQUIST;
  if (!(fs > 0.0) || !(low > 0.0)) return FATHOM_ERR_BAND;
  if (!oneEdge && (!(high > 0.0) || !(low < high))) return FATHOM_ERR_BAND;
  if (oddOnly && n % 2 == 0) return FATHOM_ERR_ODD_COEFFICIENTS;
  idealResponse(type, fs, low, high, n, h);
  return FATHOM_OK;
}

AnalysisStatus Wind_LPF(double fs, double cutoff, int32_t n, double* h, int32_t window) {
  return windowed(FATHOM_LOWPASS, fs, cutoff, 0.0, n, h, window);
}

AnalysisStatus Wind_HPF(double fs, double cutoff, int32_t n, double* h, int32_t window) {
  return windowed(FATHOM_HIGHPASS, fs, cutoff, 0.0, n, h, window);
}

AnalysisStatus Wind_BPF(double fs, double low, double high, int32_t n, double* h, int32_t window) {
  return windowed(FATHOM_BANDPASS, fs, low, high, n, h, window);
}

AnalysisStatus Wind_BSF(double fs, double low, double high, int32_t n, double* h, int32_t window) {
  return windowed(FATHOM_BANDSTOP, fs, low, high, n, h, window);
}

AnalysisStatus Ksr_LPF(double fs, double cutoff, int32_t n, double* h, double beta) {
  return kaiser(FATHOM_LOWPASS, fs, cutoff, 0.0, n, h, beta);
}

AnalysisStatus Ksr_HPF(double fs, double cutoff, int32_t n, double* h, double beta) {
  return kaiser(FATHOM_HIGHPASS, fs, cutoff, 0.0, n, h, beta);
}

AnalysisStatus Ksr_BPF(double fs, double low, double high, int32_t n, double* h, double beta) {
  return kaiser(FATHOM_BANDPASS, fs, low, high, n, h, beta);
}

AnalysisStatus Ksr_BSF(double fs, double low, double high, int32_t n, double* h, double beta) {
  return kaiser(FATHOM_BANDSTOP, fs, low, high, n, h, beta);
}
