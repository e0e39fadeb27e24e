// The Remez exchange, piece by piece: dense grid, barycentric interpolation, search for the
// extremal frequencies, impulse response.
#include "filter/fir/exchange.hpp"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>

#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace fathom {
namespace {

constexpr std::size_t kDensity = 16;     // grid points per term of the cosine series
constexpr int kPassLimit = 100;          // of a counter that is decremented before each pass
constexpr double kSameError = 1e-9;      // and share of it that an error may exceed it by
constexpr double kSameDeviation = 1e-9;  // change of the deviation that counts as none
constexpr double kRippleShare = 4e-6;    // of the deviation that the coefficients may miss it by
constexpr std::size_t kTogether = 4;     // nodes that evaluate() takes at once
constexpr std::size_t kTile = 32;        // points that evaluate() takes at once, at the widest
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double gridStep(int32_t terms) {
  return 0.5 / static_cast<double>(kDensity * static_cast<std::size_t>(terms));
}

std::size_t wholeFours(std::size_t nodes) {
  return (nodes + kTogether - 1) / kTogether * kTogether;
}

// The response of a multiband filter needs no factor for an odd length; the factors of the others
// vanish at one half, except that of an antisymmetric filter of even length.
bool vanishesAtHalf(bool symmetric, int32_t n) {
  return symmetric == (n % 2 == 0);
}

double desiredAt(const FirBands& bands, int32_t band, double f) {
  return bands.type == FATHOM_FIR_DIFFERENTIATOR ? bands.desired[band] * f : bands.desired[band];
}

// A differentiator's error counts relative to the frequency, in the bands that pass something.
double weightAt(const FirBands& bands, int32_t band, double f) {
  constexpr double kLeastPassed = 0.0001;
  const bool relative =
      bands.type == FATHOM_FIR_DIFFERENTIATOR && bands.desired[band] >= kLeastPassed;
  return relative ? bands.weights[band] / f : bands.weights[band];
}

// The sums over the nodes go by fours on a common denominator: one division for four nodes. Every
// point has a lane, and its own sums in the order of the nodes.
template <std::size_t bytes>
FATHOM_INLINE void evaluateTilesOf(const double* x, std::size_t points, const double* nodes,
                                   const double* w, const double* wy, std::size_t count,
                                   double* value) {
  using L = Lanes<bytes>;
  constexpr std::size_t kRegisters = 4;
  constexpr std::size_t kWidth = bytes / sizeof(double);
  static_assert(kTile % (kRegisters * kWidth) == 0);
  for (std::size_t i = 0; i < points; i += kRegisters * kWidth) {
    L at[kRegisters], numerator[kRegisters], denominator[kRegisters];
    FATHOM_UNROLL
    for (std::size_t r = 0; r < kRegisters; ++r) {
      load(at[r], x + i + r * kWidth);
      numerator[r] = L{};
      denominator[r] = L{};
    }
    for (std::size_t k = 0; k < count; k += kTogether) {
      FATHOM_UNROLL
      for (std::size_t r = 0; r < kRegisters; ++r) {
        const L d0 = at[r] - nodes[k], d1 = at[r] - nodes[k + 1];
        const L d2 = at[r] - nodes[k + 2], d3 = at[r] - nodes[k + 3];
        const L d01 = d0 * d1, d23 = d2 * d3;
        const L inverse = 1.0 / (d01 * d23);
        numerator[r] +=
            ((wy[k] * d1 + wy[k + 1] * d0) * d23 + (wy[k + 2] * d3 + wy[k + 3] * d2) * d01) *
            inverse;
        denominator[r] +=
            ((w[k] * d1 + w[k + 1] * d0) * d23 + (w[k + 2] * d3 + w[k + 3] * d2) * d01) * inverse;
      }
    }
    FATHOM_UNROLL
    for (std::size_t r = 0; r < kRegisters; ++r) {
      store(value + i + r * kWidth, L(numerator[r] / denominator[r]));
    }
  }
}

FATHOM_BY_WIDTH(evaluateTiles,
                (const double* x, std::size_t points, const double* nodes, const double* w,
                 const double* wy, std::size_t count, double* value),
                (x, points, nodes, w, wy, count, value))

// Products of x[j] - x[k] over k other than j, as mantissa x 2^exponent: some would leave the range
// of a double.
FATHOM_MULTIVERSION void differenceProducts(const double* x, std::size_t count, std::size_t first,
                                            double* mantissa, double* exponent) {
  constexpr std::size_t kRenormalise = 16;  // the least difference of two cosines is 2^-53
  double at[kTile], product[kTile], power[kTile];
  for (std::size_t i = 0; i < kTile; ++i) {
    at[i] = x[std::min(first + i, count - 1)];
    product[i] = 1.0;
    power[i] = 0.0;
  }
  for (std::size_t begin = 0; begin < count; begin += kRenormalise) {
    const std::size_t end = std::min(begin + kRenormalise, count);
    for (std::size_t k = begin; k < end; ++k) {
      FATHOM_INDEPENDENT
      for (std::size_t i = 0; i < kTile; ++i) {
        product[i] *= first + i == k ? 1.0 : at[i] - x[k];
      }
    }
    for (std::size_t i = 0; i < kTile; ++i) {
      // A zero, an infinity and what is not a number stay what they are.
      const auto bits = std::bit_cast<std::uint64_t>(product[i]);
      const std::uint64_t field = (bits >> 52) & 0x7FF;
      const bool usual = field != 0 && field != 0x7FF;
      const std::uint64_t one =
          (bits & ~(std::uint64_t{0x7FF} << 52)) | (std::uint64_t{1023} << 52);
      product[i] = usual ? std::bit_cast<double>(one) : product[i];
      power[i] += usual ? static_cast<double>(static_cast<std::int64_t>(field) - 1023) : 0.0;
    }
  }
  for (std::size_t i = 0; i < kTile; ++i) {
    mantissa[i] = product[i];
    exponent[i] = power[i];
  }
}

double powerOfTwo(double exponent) {
  const auto e = static_cast<std::int64_t>(std::max(exponent, -1022.0));
  return std::bit_cast<double>(static_cast<std::uint64_t>(e + 1023) << 52);
}

FATHOM_MULTIVERSION void weightedError(const DenseGrid& grid, const double* response,
                                       double* error) {
  const double* desired = grid.desired.data();
  const double* weight = grid.weight.data();
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < grid.count; ++i) error[i] = weight[i] * (desired[i] - response[i]);
}

// values - the cosine series at x; cos k theta and sin k theta by repeated rotation.
FATHOM_MULTIVERSION void subtractSeries(const double* x, std::size_t count, const double* a,
                                        std::size_t terms, double* values) {
  for (std::size_t first = 0; first < count; first += kTile) {
    const std::size_t lanes = std::min(kTile, count - first);
    double cosine[kTile], sine[kTile], c[kTile], s[kTile], sum[kTile];
    for (std::size_t i = 0; i < kTile; ++i) {
      cosine[i] = x[std::min(first + i, count - 1)];
      sine[i] = sqrt((1.0 - cosine[i]) * (1.0 + cosine[i]));
      c[i] = 1.0;
      s[i] = 0.0;
      sum[i] = 0.0;
    }
    for (std::size_t k = 0; k < terms; ++k) {
      FATHOM_INDEPENDENT
      for (std::size_t i = 0; i < kTile; ++i) {
        sum[i] += a[k] * c[i];
        const double next = c[i] * cosine[i] - s[i] * sine[i];
        s[i] = s[i] * cosine[i] + c[i] * sine[i];
        c[i] = next;
      }
    }
    for (std::size_t i = 0; i < lanes; ++i) values[first + i] -= sum[i];
  }
}

// What the search makes of a pass.
enum class Pass { kSettled, kMoved, kFailed };

// What an error may exceed the deviation by: a share of the deviation, and the rounding of values
// up to `largest`.
struct Tolerance {
  double share;
  double deviation;
  double largest;

  double at(double weight) const {
    constexpr double kRounding = 0x1p-46;
    return share * deviation + kRounding * largest * weight;
  }
};

// The error alternates evenly already when it exceeds the deviation nowhere.
Pass judge(const DenseGrid& grid, const double* error, const Tolerance& tolerance) {
  Pass pass = Pass::kSettled;
  for (std::size_t i = 0; i < grid.count; ++i) {
    const double magnitude = fabs(error[i]);
    if (isNan(magnitude)) return Pass::kFailed;
    if (magnitude > tolerance.deviation + tolerance.at(grid.weight[i])) pass = Pass::kMoved;
  }
  return pass;
}

// Removes peaks[i ... i + gone) of `count`.
void remove(std::size_t* peaks, std::size_t& count, std::size_t i, std::size_t gone) {
  std::copy(peaks + i + gone, peaks + count, peaks + i);
  count -= gone;
}

}  // namespace

std::size_t wholeTiles(std::size_t points) {
  return (points + kTile - 1) / kTile * kTile;
}

std::size_t gridCapacity(const FirBands& bands, int32_t terms) {
  // The bands together are no wider than 1/2; each has at most two points more than it has steps.
  return wholeTiles(kDensity * static_cast<std::size_t>(terms) +
                    2 * static_cast<std::size_t>(bands.count));
}

void makeGrid(const FirBands& bands, int32_t n, DenseGrid& grid) {
  const double step = gridStep(cosineTerms(bands, n));
  std::size_t count = 0;
  const auto put = [&](std::size_t i, int32_t band, double f) {
    grid.f[i] = f;
    grid.desired[i] = desiredAt(bands, band, f);
    grid.weight[i] = weightAt(bands, band, f);
  };
  double f = bands.edges[0] / bands.fs;
  if (!bands.symmetric() && f < step) f = step;
  for (int32_t band = 0; band < bands.count; ++band) {
    const double* edges = bands.edges + 2 * static_cast<std::size_t>(band);
    const double upper = edges[1] / bands.fs;
    if (band > 0) f = edges[0] / bands.fs;
    do {  // once at least: a first band may end before its raised first point
      put(count++, band, f);
      f += step;
    } while (f <= upper);
    put(count - 1, band, upper);
  }
  const bool vanishes = vanishesAtHalf(bands.symmetric(), n);
  if (vanishes && count > 0 && grid.f[count - 1] > 0.5 - step) --count;
  grid.count = count;
}

void toCosineSeries(const FirBands& bands, int32_t n, DenseGrid& grid) {
  const bool odd = n % 2 != 0;
  for (std::size_t i = 0; i < grid.count; ++i) grid.x[i] = kTwoPi * grid.f[i];
  cos(grid.x.data(), grid.count, grid.x.data());
  for (std::size_t i = 0; i < grid.count; ++i) {
    const double f = grid.f[i];
    if (bands.symmetric() && odd) continue;
    const double factor = bands.symmetric() ? cos(kPi * f) : (odd ? sin(kTwoPi * f) : sin(kPi * f));
    grid.desired[i] /= factor;
    grid.weight[i] *= factor;
  }
  // The rest of the last tile.
  for (std::size_t i = grid.count; i < wholeTiles(grid.count); ++i) grid.x[i] = 1.0;
}

bool barycentricWeights(Interpolant& p) {
  double mantissa[kTile], exponent[kTile];
  double least = kInfinity;
  for (std::size_t first = 0; first < p.count; first += kTile) {
    differenceProducts(p.x.data(), p.count, first, mantissa, exponent);
    const std::size_t lanes = std::min(kTile, p.count - first);
    for (std::size_t i = 0; i < lanes; ++i) {
      if (mantissa[i] == 0.0 || !isFinite(mantissa[i])) return false;
      p.w[first + i] = 1.0 / mantissa[i];
      p.y[first + i] = exponent[i];  // until the least is known
      least = std::min(least, exponent[i]);
    }
  }
  for (std::size_t k = 0; k < p.count; ++k) p.w[k] *= powerOfTwo(least - p.y[k]);
  return true;
}

double levelledDeviation(const Interpolant& p, const double* values, const double* weight) {
  double numerator = 0.0;
  double denominator = 0.0;
  double sign = 1.0;
  for (std::size_t k = 0; k < p.count; ++k) {
    numerator += p.w[k] * values[k];
    denominator += sign * p.w[k] / weight[k];
    sign = -sign;
  }
  return numerator / denominator;
}

void setValues(Interpolant& p, const double* values, const double* weight, double deviation) {
  double alternating = deviation;
  for (std::size_t k = 0; k < p.count; ++k) {
    p.y[k] = values[k] - alternating / weight[k];
    p.wy[k] = p.w[k] * p.y[k];
    alternating = -alternating;
  }
  // Company for the last nodes where they are not a multiple: far from all points, without weight.
  for (std::size_t k = p.count; k < wholeFours(p.count); ++k) {
    p.x[k] = 2.0;
    p.w[k] = p.wy[k] = 0.0;
  }
}

void evaluate(const Interpolant& p, const double* x, std::size_t points, double* value) {
  evaluateTiles(x, wholeTiles(points), p.x.data(), p.w.data(), p.wy.data(), wholeFours(p.count),
                value);
  for (std::size_t i = 0; i < points; ++i) {
    if (isFinite(value[i])) continue;
    std::size_t k = 0;
    while (k < p.count && p.x[k] != x[i]) ++k;
    if (k < p.count) value[i] = p.y[k];
  }
}

bool exchange(const double* error, std::size_t points, double deviation, std::size_t* extremal,
              std::size_t count, std::size_t* peaks) {
  // The largest error of every run of one sign; errors below the deviation are no extremal ones.
  std::size_t found = 0;
  bool negative = false;
  for (std::size_t i = 0; i < points; ++i) {
    if (fabs(error[i]) < deviation) continue;
    const bool below = std::bit_cast<std::int64_t>(error[i]) < 0;
    if (found == 0 || below != negative) {
      peaks[found++] = i;
      negative = below;
    } else if (fabs(error[i]) > fabs(error[peaks[found - 1]])) {
      peaks[found - 1] = i;
    }
  }
  if (found < count) return false;
  // Too many: signs go on alternating when one of the ends goes, or two neighbours.
  const auto size = [&](std::size_t k) { return fabs(error[peaks[k]]); };
  while (found > count) {
    const std::size_t last = found - 1;
    std::size_t least = size(last) < size(0) ? last : 0;
    if (found - count > 1) {
      for (std::size_t k = 1; k < last; ++k) {
        if (size(k) < size(least)) least = k;
      }
    }
    if (least == 0 || least == last) {
      remove(peaks, found, least, 1);
    } else {
      remove(peaks, found, size(least - 1) < size(least + 1) ? least - 1 : least, 2);
    }
  }
  std::copy_n(peaks, count, extremal);
  return true;
}

std::size_t seriesScratch(std::size_t terms) {
  return 2 * wholeTiles(terms) + (2 * terms - 1) + terms + (terms + 1);
}

void cosineSeries(Interpolant& p, const double* weight, std::size_t terms, double* a,
                  double* scratch) {
  constexpr int kRounds = 5;
  // Samples at the frequencies m / period have the series as their cosine transform.
  const std::size_t period = 2 * terms - 1;
  double* x = scratch;
  double* samples = x + wholeTiles(terms);
  double* cosines = samples + wholeTiles(terms);
  double* correction = cosines + period;
  double* target = correction + terms;
  for (std::size_t m = 0; m < period; ++m) {
    cosines[m] = kTwoPi * (static_cast<double>(m) / static_cast<double>(period));
  }
  cos(cosines, period, cosines);
  std::fill_n(x, wholeTiles(terms), 1.0);
  std::copy_n(cosines, terms, x);
  std::copy_n(p.y.data(), p.count, target);
  std::fill_n(a, terms, 0.0);
  // Between the bands the polynomial may be far larger than in them, or far less well determined by
  // its points, and so may be the rounding of the samples; what it costs at the points is designed
  // in turn, as a residue that is interpolated as the response was.
  double worst = kInfinity;
  for (int round = 0; round < kRounds; ++round) {
    evaluate(p, x, terms, samples);
    for (std::size_t k = 0; k < terms; ++k) {
      double sum = 0.0;
      std::size_t angle = 0;
      for (std::size_t m = 1; m < terms; ++m) {
        angle += k;
        if (angle >= period) angle -= period;
        sum += samples[m] * cosines[angle];
      }
      const double scale = (k == 0 ? 1.0 : 2.0) / static_cast<double>(period);
      correction[k] = (samples[0] + 2.0 * sum) * scale;
    }
    for (std::size_t k = 0; k < terms; ++k) a[k] += correction[k];
    std::copy_n(target, p.count, p.y.data());
    subtractSeries(p.x.data(), p.count, a, terms, p.y.data());
    const double previous = worst;
    worst = 0.0;
    for (std::size_t k = 0; k < p.count; ++k) {
      const double error = fabs(p.y[k] * weight[k]);
      if (!(error <= worst)) worst = error;
    }
    if (!(worst < 0.25 * previous) || round + 1 == kRounds) return;
    setValues(p, p.y.data(), weight, levelledDeviation(p, p.y.data(), weight));
  }
}

void impulseResponse(const double* a, int32_t terms, bool symmetric, int32_t n, double* h) {
  // Twice the constant term counts as the coefficient of cos 0; past the last there is none.
  const auto at = [&](int32_t k) { return k == 0 ? 2.0 * a[0] : (k < terms ? a[k] : 0.0); };
  const bool odd = n % 2 != 0;
  if (odd) h[n / 2] = symmetric ? a[0] : 0.0;
  for (int32_t m = 1; m <= n / 2; ++m) {  // distance from the centre
    double tap = 0.0;
    if (symmetric) {
      tap = odd ? 0.5 * a[m] : 0.25 * (at(m - 1) + at(m));
    } else {
      tap = 0.25 * (at(m - 1) - (odd ? at(m + 1) : at(m)));
    }
    h[n / 2 - m] = tap;
    h[n - 1 - n / 2 + m] = symmetric ? tap : -tap;
  }
}

AnalysisStatus equirippleDesign(const FirBands& bands, int32_t n, double* h, double* deviation) {
  const int32_t terms = cosineTerms(bands, n);
  if (terms < 1) return FATHOM_ERR_FILTER_DESIGN;
  const auto seriesTerms = static_cast<std::size_t>(terms);
  const std::size_t count = seriesTerms + 1;  // of extremal frequencies
  const std::size_t capacity = gridCapacity(bands, terms);
  DenseGrid grid(capacity);
  Interpolant p(count);
  Workspace<double> error(capacity), values(count), weight(count), a(seriesTerms),
      scratch(seriesScratch(seriesTerms));
  Workspace<std::size_t> extremal(count), peaks(capacity);
  if (!grid || !p || !error || !values || !weight || !a || !scratch || !extremal || !peaks) {
    return FATHOM_ERR_MEMORY;
  }
  makeGrid(bands, n, grid);
  toCosineSeries(bands, n, grid);
  // Some extremal frequencies would be the same, with a product of zero.
  if (grid.count < count) return FATHOM_ERR_FILTER_DESIGN;
  for (std::size_t k = 0; k < count; ++k) {
    extremal[k] = static_cast<std::size_t>(std::uint64_t{k} * (grid.count - 1) / seriesTerms);
  }

  double previous = -1.0;
  Pass pass = Pass::kMoved;
  double largestValue = 0.0;
  for (int left = kPassLimit; pass == Pass::kMoved && --left > 0;) {
    for (std::size_t k = 0; k < count; ++k) {
      p.x[k] = grid.x[extremal[k]];
      values[k] = grid.desired[extremal[k]];
      weight[k] = grid.weight[extremal[k]];
    }
    if (!barycentricWeights(p)) return FATHOM_ERR_FILTER_DESIGN;
    const double signedDeviation = levelledDeviation(p, values.data(), weight.data());
    const double reached = fabs(signedDeviation);
    *deviation = reached;
    if (!isFinite(reached)) return FATHOM_ERR_FILTER_DESIGN;
    setValues(p, values.data(), weight.data(), signedDeviation);
    largestValue = 0.0;
    for (std::size_t k = 0; k < count; ++k) largestValue = std::max(largestValue, fabs(p.y[k]));
    evaluate(p, grid.x.data(), grid.count, error.data());
    weightedError(grid, error.data(), error.data());
    double alternating = signedDeviation;
    for (std::size_t k = 0; k < count; ++k) {
      error[extremal[k]] = alternating;
      alternating = -alternating;
    }
    pass = judge(grid, error.data(), {kSameError, reached, largestValue});
    if (pass == Pass::kMoved &&
        !exchange(error.data(), grid.count, reached, extremal.data(), count, peaks.data())) {
      pass = Pass::kFailed;
    }
    // A deviation that has just moved asks for one more pass, which would repeat this one.
    if (pass == Pass::kSettled && !(fabs(reached - previous) < kSameDeviation) && left == 1) {
      pass = Pass::kMoved;
    }
    previous = reached;
  }
  if (pass != Pass::kSettled) return FATHOM_ERR_FILTER_DESIGN;
  cosineSeries(p, weight.data(), seriesTerms, a.data(), scratch.data());
  const Tolerance tolerance = {kRippleShare, *deviation, largestValue};
  for (std::size_t k = 0; k < count; ++k) {
    if (!(fabs(p.y[k]) * weight[k] <= tolerance.at(weight[k]))) return FATHOM_ERR_FILTER_DESIGN;
  }
  for (std::size_t k = 0; k < seriesTerms; ++k) {
    if (!isFinite(a[k])) return FATHOM_ERR_FILTER_DESIGN;
  }
  impulseResponse(a.data(), terms, bands.symmetric(), n, h);
  return FATHOM_OK;
}

}  // namespace fathom
