// Display units of spectra: RMS or peak, amplitude or power, per hertz or not, linear or in
// decibels, with the label that names the unit.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace {

// 1 / 0.78^2: dBm are referred to 0.78 V, which is about 1 mW in 600 ohm.
constexpr fathom::Extended kPerMilliwatt{fathom::extendedReciprocal(0.6084)};

// Indexed by the bits of FathomUnit.
constexpr const char* kSuffixes[] = {"rms",      "pk",      "rms^2",    "pk^2",
                                     "rms/rtHz", "pk/rtHz", "rms^2/Hz", "pk^2/Hz"};
constexpr int32_t kUnits = 2 * FATHOM_UNIT_DENSITY;

const char* suffixOf(int32_t unit, int32_t scale) {
  if (unit < 0 || unit >= kUnits) return "";
  // In decibels a power is the same as its amplitude.
  const bool asAmplitude = scale == FATHOM_SCALE_DB && (unit & FATHOM_UNIT_DENSITY) == 0;
  return kSuffixes[asAmplitude ? unit & FATHOM_UNIT_PEAK : unit];
}

// What becomes of a value, from left to right.
struct Steps {
  bool square;
  double density;  // this factor and the next are 1, which changes nothing, where they do not apply
  double peak;
  bool root;
  bool perMilliwatt;
  double decibels;  // the factor of the logarithm; 0 for none
};

FATHOM_MULTIVERSION void powers(const double* x, std::size_t n, const Steps& steps, double* y) {
  const auto [square, density, peak, root, perMilliwatt, decibels] = steps;
  const bool magnitude = root || decibels != 0.0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < n; ++i) {
    const double power = (square ? x[i] * x[i] : x[i]) * density * peak;
    y[i] = magnitude ? fathom::fabs(power) : power;
  }
}

FATHOM_MULTIVERSION void roots(double* y, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) y[i] = fathom::sqrt(y[i]);
}

FATHOM_MULTIVERSION void multiply(double* y, std::size_t n, double factor) {
  for (std::size_t i = 0; i < n; ++i) y[i] *= factor;
}

void referToMilliwatt(double* y, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) y[i] = (y[i] * kPerMilliwatt).toDouble();
}

// The logarithms find nothing to wait for: all else is done in passes of its own over a tile.
void convert(const double* spectrum, std::size_t n, const Steps& steps, double* converted) {
  constexpr std::size_t kTile = 128;
  double power[kTile];
  for (std::size_t start = 0; start < n; start += kTile) {
    const std::size_t length = std::min(kTile, n - start);
    double* y = converted + start;
    if (steps.decibels == 0.0) {
      powers(spectrum + start, length, steps, y);
      if (steps.root) roots(y, length);
      continue;
    }
    powers(spectrum + start, length, steps, power);
    if (steps.perMilliwatt) referToMilliwatt(power, length);
    fathom::log10(power, length, y);
    multiply(y, length, steps.decibels);
  }
}

// Writes the text at `at` and returns where it ends.
char* append(char* at, const char* text) {
  const std::size_t length = std::strlen(text);
  std::memcpy(at, text, length + 1);
  return at + length;
}

}  // namespace

AnalysisStatus SpectrumUnitConversion(const double* spectrum, int32_t n, int32_t kind,
                                      int32_t scale, int32_t unit, double noiseBandwidth, double df,
                                      double /*reserved*/, double* converted, char* label) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  if (kind == FATHOM_SPECTRUM_MAGNITUDE) {
    const bool linear = scale == FATHOM_SCALE_LINEAR;
    convert(spectrum, count, {false, 1.0, 1.0, false, false, linear ? 0.0 : 20.0}, converted);
    append(label, linear ? "" : "dB");
    return FATHOM_OK;
  }

  Steps steps{kind != FATHOM_SPECTRUM_POWER, 1.0, 1.0, false, scale == FATHOM_SCALE_DBM, 0.0};
  if ((unit & FATHOM_UNIT_DENSITY) != 0) steps.density = 1.0 / (noiseBandwidth * df);
  if (scale == FATHOM_SCALE_LINEAR) steps.root = (unit & FATHOM_UNIT_POWER) == 0;
  if (scale == FATHOM_SCALE_DB || scale == FATHOM_SCALE_DBM) steps.decibels = 10.0;
  convert(spectrum, 1, steps, converted);  // a constant's peak is its RMS value
  if (scale != FATHOM_SCALE_DBM && (unit & FATHOM_UNIT_PEAK) != 0) steps.peak = 2.0;
  convert(spectrum + 1, count - 1, steps, converted + 1);

  if (scale == FATHOM_SCALE_DBM) {
    append(label, "dBm");
    return FATHOM_OK;
  }
  const std::size_t length = std::strlen(label);
  fathom::Workspace<char> base(length + 1);
  if (!base) return FATHOM_ERR_MEMORY;
  append(base.data(), label);
  char* end = append(label, scale == FATHOM_SCALE_DB ? "dB" : "");
  end = append(end, base.data());
  append(end, suffixOf(unit, scale));
  return FATHOM_OK;
}
