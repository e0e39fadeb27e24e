// Harmonics of a power spectrum and its total distortion.
//
// A tone between two bins shows in both. The ratio of their amplitudes, set against that of the
// window's own spectrum, gives the tone's place between them and so its true amplitude.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/workspace.hpp"

namespace {

struct Window {
  double noiseBandwidth;  // in bins
  double mainLobe;        // half of its width, in bins
};

constexpr Window kWindows[] = {{1.0, 1.21},      {1.5, 2.0},       {1.36, 1.81},
                               {1.693699, 2.13}, {1.726757, 2.35}, {2.965606, 4.0},
                               {2.004353, 2.72}, {2.631905, 4.0}};
constexpr int32_t kWindowCount = 8;

// Cosine sums of the interpolator. From row 3 on its rows are not those of kWindows: that is kept.
struct CosineSum {
  std::size_t terms;
  double a[7];
};

constexpr CosineSum kCosineSums[] = {
    {1, {1.0}},
    {2, {0.5, 0.5}},
    {2, {0.54, 0.46}},
    {3, {0.42323, 0.49755, 0.07922}},
    {3, {0.4265907136715391, 0.4965606190885641, 0.07684866723989682}},
    {3, {0.42, 0.5, 0.08}},
    {3, {0.2810638602, 0.5208971735, 0.1980389663}},
    {4, {0.35875, 0.48829, 0.14128, 0.01168}}};

constexpr double kTolerance = 1e-8;  // of the position, in bins
constexpr double kEqualNeighbours = 1e-7;
constexpr int kMaxIterations = 100;

// sin(pi u) / (pi u), undefined at 0.
double sinc(double u) {
  const double t = fathom::kPi * u;
  return fathom::sin(t) / t;
}

// Spectrum of a cosine-sum window of `size` points, `delta` cycles per sample from a tone; at
// delta = 0 it tends to `size`.
double kernel(const double* a, std::size_t terms, double size, double delta) {
  constexpr double kTinyLeft = 0x1p-63;
  constexpr double kTinyRight = 1e-19;
  const double bins = size * delta;
  double sum = 0.0;
  for (std::size_t j = 1; j < terms; ++j) {
    const auto shift = static_cast<double>(j);
    const double above = sinc(bins - shift);
    const double below = sinc(delta - shift / size);
    const bool leftSingular = fathom::fabs(above) < kTinyLeft && fathom::fabs(below) < kTinyLeft;
    const double left = leftSingular ? 1.0 : above / below;
    const double above2 = sinc(bins + shift);
    const double below2 = sinc(delta + shift / size);
    const bool rightSingular =
        fathom::fabs(above2) <= kTinyRight && fathom::fabs(below2) <= kTinyRight;
    const double right = rightSingular ? 1.0 : above2 / below2;
    sum = sum + (left + right) * a[j];
  }
  const double centre = size * a[0] * sinc(bins) / sinc(delta);
  return (size * sum * 0.5 + centre) / a[0];
}

struct Tone {
  double amplitude;
  double position;  // solver: cycles per sample from the larger bin; interpolator: bin of the band
};

int signOf(double x) {
  return x > 0.0 ? 1 : x < 0.0 ? -1 : 0;
}

// The tone whose two bins have the amplitudes `larger` and `next`, by bisection.
AnalysisStatus solveRatio(double tolerance, int32_t window, double size, double larger, double next,
                          int maxIterations, Tone& tone) {
  const CosineSum& row = kCosineSums[window];
  fathom::Workspace<double> a(row.terms);
  if (!a) return FATHOM_ERR_MEMORY;
  std::copy_n(row.a, row.terms, a.data());
  const double ratio = larger / next;
  double delta = 1.0 / (2.0 * size);
  double step = 1.0 / (4.0 * size);
  double peak = 0.0;  // stays so when both bins are equal: the amplitude is then infinite
  int sign = signOf(1.0 - ratio);
  for (int i = 0; sign != 0 && tolerance / size < step && i < maxIterations; ++i) {
    peak = kernel(a.data(), row.terms, size, delta);
    const double side = kernel(a.data(), row.terms, size, 1.0 / size - delta);
    sign = signOf(fathom::fabs(peak / side) - ratio);
    delta = delta + step * sign;
    step *= 0.5;
  }
  tone = {size * larger / peak, delta};
  return FATHOM_OK;
}

// Largest bin p, its larger neighbour q and the other one, r, with their values.
struct Peak {
  double p, atP;
  double q, atQ;
  double r, atR;
};

// The tone within a band of m >= 3 bins. Beyond the band there is nothing: such a neighbour is 0.
AnalysisStatus interpolatePeak(const double* x, int32_t m, int32_t window, double size,
                               double tolerance, Tone& tone) {
  double maximum = 0.0, minimum = 0.0;
  int32_t p = 0, minimumIndex = 0;
  const AnalysisStatus status = MaxMin1D(x, m, &maximum, &p, &minimum, &minimumIndex);
  if (status != FATHOM_OK) return status;
  fathom::Workspace<Peak> peak(1);
  if (!peak) return FATHOM_ERR_MEMORY;
  const double bin = p;
  if (p == 0) {
    peak[0] = {bin, maximum, 1.0, x[1], 2.0, 0.0};
  } else {
    const double before = x[p - 1];
    const double after = p + 1 < m ? x[p + 1] : 0.0;
    if (after < before) {
      peak[0] = {bin, maximum, bin - 1.0, before, bin + 1.0, after};
    } else {
      peak[0] = {bin, maximum, bin + 1.0, after, bin - 1.0, before};
    }
  }
  // Divided by the neighbour's place in the band, which has no meaning but is what is promised.
  if (fathom::fabs((peak[0].atQ - peak[0].atR) / peak[0].q) <= kEqualNeighbours) {
    tone = {peak[0].atP, bin};
    return FATHOM_OK;
  }
  const AnalysisStatus solved = solveRatio(tolerance, window, size, fathom::sqrt(peak[0].atP),
                                           fathom::sqrt(peak[0].atQ), kMaxIterations, tone);
  if (solved != FATHOM_OK) return solved;
  const double offset = size * tone.position;
  tone.position = bin < peak[0].q ? bin + offset : bin - offset;
  return FATHOM_OK;
}

// How many of the harmonics asked for lie below half the sampling rate.
int32_t harmonicsBelowNyquist(int32_t harmonics, double samplingRate, double fundamental) {
  const double fitting = fathom::floor(samplingRate / (fundamental * 2.0));
  if (fitting >= harmonics) return std::max(harmonics, 0);
  return fitting > 0.0 ? static_cast<int32_t>(fitting) : 0;
}

}  // namespace

AnalysisStatus HarmonicAnalyzer(double* spectrum, int32_t n, int32_t fftSize, int32_t harmonics,
                                int32_t window, double samplingRate, double fundamental,
                                double* amplitudes, double* frequencies, double* distortion,
                                double* distortionPlusNoise) {
  if (window < 0 || window >= kWindowCount) return FATHOM_ERR_SELECTION;
  const int64_t points = fftSize < 1 ? 2 * int64_t{n} : fftSize;
  const auto size = static_cast<double>(points);
  const int32_t measured = harmonicsBelowNyquist(harmonics, samplingRate, fundamental);
  const auto lobe = static_cast<int32_t>(fathom::ceil(kWindows[window].mainLobe));
  for (int32_t k = 0; k < std::min(2 * lobe, n); ++k) spectrum[k] = 0.0;

  double maximum = 0.0, minimum = 0.0;
  int32_t k1 = 0, minimumIndex = 0;
  AnalysisStatus status = MaxMin1D(spectrum, n, &maximum, &k1, &minimum, &minimumIndex);
  if (status != FATHOM_OK) return status;
  // The bin of the given frequency counts only where no bin could be right: in transforms of fewer
  // than four points.
  const double expected = fundamental / samplingRate * size;
  if (expected > -1.0 && expected < 2.0) {
    const auto k = static_cast<int32_t>(expected);
    if (k > points / 2 - 1) k1 = k;
  }

  const auto count = static_cast<std::size_t>(n);
  fathom::Workspace<double> rest(count);  // all but the fundamental
  if (!rest) return FATHOM_ERR_MEMORY;
  Copy1D(spectrum, n, rest.data());
  for (int64_t k = int64_t{k1} - lobe + 1; k < int64_t{k1} + lobe; ++k) {
    if (k >= 0 && k < n) rest[static_cast<std::size_t>(k)] = 0.0;
  }
  double restPower = 0.0;
  status = Sum1D(rest.data(), n, &restPower);
  if (status != FATHOM_OK) return status;
  fathom::Workspace<double> band(count);
  if (!band) return status;  // success without results: kept for those who rely on it

  const int32_t width = 2 * lobe + 1;
  const double spacing = samplingRate / size;
  double harmonicPower = 0.0;
  for (int32_t h = 0; h < measured; ++h) {
    const int64_t start = (int64_t{h} + 1) * k1 - lobe;
    status = Subset1D(spectrum, n, static_cast<int32_t>(std::min<int64_t>(start, INT32_MAX)), width,
                      band.data());
    if (status != FATHOM_OK) return status;
    Tone tone{};
    status = interpolatePeak(band.data(), width, window, size, kTolerance, tone);
    if (status != FATHOM_OK) return status;
    amplitudes[h] = tone.amplitude;
    frequencies[h] = (static_cast<double>(start) + tone.position) * spacing;
    if (h > 0) harmonicPower += tone.amplitude * tone.amplitude;
  }
  for (int32_t h = measured; h < harmonics; ++h) {
    amplitudes[h] = 0.0;
    frequencies[h] = 0.0;
  }
  const double percent = 100.0 / (harmonics > 0 ? amplitudes[0] : 0.0);
  *distortionPlusNoise = fathom::sqrt(restPower / kWindows[window].noiseBandwidth) * percent;
  *distortion = fathom::sqrt(harmonicPower) * percent;
  return FATHOM_OK;
}
