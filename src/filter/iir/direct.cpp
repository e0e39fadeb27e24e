// Direct forms: filtering with one pair of coefficient arrays, and making that pair.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "filter/iir/forms.hpp"
#include "frame/lanes.hpp"
#include "frame/workspace.hpp"

namespace fathom {

void multiplyPolynomial(double* p, std::size_t length, const double* q, int degree, double* copy) {
  std::copy_n(p, length, copy);
  const auto d = static_cast<std::size_t>(degree);
  for (std::size_t k = 0; k < length + d; ++k) {
    double sum = 0.0;
    const std::size_t last = std::min(k, length - 1);
    for (std::size_t j = last + 1; j-- > 0 && k - j <= d;) sum += copy[j] * q[k - j];
    p[k] = sum;
  }
}

}  // namespace fathom

namespace {

// Samples that are filtered at a time; the most sums that a register tile and a register have.
constexpr std::size_t kTile = 128, kMostSums = 32, kMostLanes = 8;

// The samples of a tile with those before it: `older` in the state, of which the last `kept` stand
// in `recent` too, in front of the tile's own.
struct Window {
  const double* state;
  std::size_t older;
  std::size_t kept;
  double recent[kMostSums + kTile + kMostLanes];
};

// The sums from `first` on, each over its own samples from the oldest to the newest. What a sum
// past the tile's end reads is zero.
template <typename E, int vectors>
FATHOM_INLINE void sumTile(const Window& w, const double* b, std::size_t first, double* sums) {
  constexpr std::size_t kLanes = sizeof(E) / sizeof(double), kSums = kLanes * vectors;
  E sum[vectors] = {};
  const auto addProducts = [&](double coefficient, const double* samples)
      __attribute__((always_inline)) {
    FATHOM_UNROLL
    for (int v = 0; v < vectors; ++v) {
      E lanes;
      fathom::load(lanes, samples + v * kLanes);
      sum[v] += coefficient * lanes;
    }
  };
  const std::size_t inState = w.older + 1 > first + kSums ? w.older + 1 - first - kSums : 0;
  for (std::size_t k = 0; k < inState; ++k) addProducts(b[w.older - k], w.state + first + k);
  for (std::size_t k = inState; k <= w.older; ++k) {
    addProducts(b[w.older - k], w.recent + (first + k + w.kept - w.older));
  }
  for (int v = 0; v < vectors; ++v) fathom::store(sums + first + v * kLanes, sum[v]);
}

template <std::size_t bytes>
FATHOM_INLINE void feedForwardOf(const Window& w, const double* b, std::size_t n, double* sums) {
  using E = fathom::Lanes<bytes>;
  constexpr std::size_t kLanes = sizeof(E) / sizeof(double);
  std::size_t first = 0;
  for (; first + 4 * kLanes <= n; first += 4 * kLanes) sumTile<E, 4>(w, b, first, sums);
  for (; first < n; first += kLanes) sumTile<E, 1>(w, b, first, sums);
}
FATHOM_BY_WIDTH(feedForward, (const Window& w, const double* b, std::size_t n, double* sums),
                (w, b, n, sums))

// Makes outputs of the feed-forward sums, in place. The state slides by one place as it is taken,
// the oldest first; the newest output waits in a register.
void feedBack(const double* a, std::size_t na, double* outputs, std::size_t n, double* y) {
  double last = na > 1 ? outputs[na - 2] : 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    double sum = y[i];
    for (std::size_t k = 0; k + 3 < na; ++k) {
      sum -= a[na - 1 - k] * outputs[k];
      outputs[k] = outputs[k + 1];
    }
    if (na > 2) {
      sum -= a[2] * outputs[na - 3];
      outputs[na - 3] = last;
    }
    if (na > 1) sum -= a[1] * last;
    last = sum / a[0];
    y[i] = last;
  }
  if (na > 1) outputs[na - 2] = last;
}

// Moves n samples into a state of the last `older` ones.
void push(double* state, std::size_t older, const double* samples, std::size_t n) {
  const std::size_t stay = older > n ? older - n : 0;
  std::copy(state + (older - stay), state + older, state);
  std::copy_n(samples + (n - (older - stay)), older - stay, state + stay);
}

// na is 0 without feedback.
void filterTiles(const double* x, std::size_t n, const double* a, double* outputs, std::size_t na,
                 const double* b, double* inputs, std::size_t nb, double* y) {
  Window w;
  w.state = inputs;
  w.older = nb - 1;
  w.kept = std::min(w.older, kMostSums);
  double* tile = w.recent + w.kept;
  double sums[kTile];
  for (std::size_t done = 0; done < n; done += kTile) {
    const std::size_t size = std::min(n - done, kTile);
    std::copy_n(inputs + (w.older - w.kept), w.kept, w.recent);
    std::copy_n(x + done, size, tile);
    std::fill_n(tile + size, kMostLanes, 0.0);
    feedForward(w, b, size, sums);
    push(inputs, w.older, tile, size);
    if (na > 0) feedBack(a, na, outputs, size, sums);
    std::copy_n(sums, size, y + done);
  }
}

void filterSamples(const double* x, std::size_t n, const double* a, double* outputs, std::size_t na,
                   const double* b, double* inputs, std::size_t nb, double* y) {
  for (std::size_t i = 0; i < n; ++i) {
    double sum = 0.0;
    for (std::size_t k = 0; k + 2 < nb; ++k) {
      sum += b[nb - 1 - k] * inputs[k];
      inputs[k] = inputs[k + 1];
    }
    if (nb > 1) {
      sum += b[1] * inputs[nb - 2];
      inputs[nb - 2] = x[i];
    }
    sum += b[0] * x[i];
    if (na > 0) feedBack(a, na, outputs, 1, &sum);
    y[i] = sum;
  }
}

}  // namespace

AnalysisStatus IIRFiltering(const double* x, int32_t n, const double* a, double* outputs,
                            int32_t na, const double* b, double* inputs, int32_t nb, double* y) {
  const bool recursive = na >= 1 && a != nullptr && outputs != nullptr;
  if (nb < 1 || n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto count = static_cast<std::size_t>(n);
  const auto forward = static_cast<std::size_t>(nb);
  // Tiles take their time to set up.
  const bool tiled = count >= 12 && static_cast<std::uint64_t>(count) * forward >= 256;
  (tiled ? filterTiles : filterSamples)(
      x, count, a, outputs, recursive ? static_cast<std::size_t>(na) : 0, b, inputs, forward, y);
  return FATHOM_OK;
}

AnalysisStatus CascadeToDirectCoef(IIRFilterPtr record, double* a, int32_t aCapacity, double* b,
                                   int32_t bCapacity) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  if (record->order < 1) return FATHOM_ERR_ORDER;
  if (!fathom::isBand(record->type)) return FATHOM_ERR_SELECTION;
  const int m = fathom::sectionWidth(record->type);
  const std::int64_t order = record->order, sections = (order + 1) >> 1;
  const std::int64_t wanted = m == 2 ? order + 1 : 2 * order + 1;
  if (sections * m != record->na) return FATHOM_ERR_FILTER_RECORD;
  if (sections * (m + 1) != record->nb || aCapacity < wanted || bCapacity < wanted) {
    return FATHOM_ERR_FILTER_RECORD;
  }
  const auto size = static_cast<std::size_t>(sections * m) + 1;
  fathom::Workspace<double> small(static_cast<std::size_t>(m) + 1), feedback(size), forward(size);
  if (!small || !feedback || !forward) return FATHOM_ERR_MEMORY;
  small[0] = feedback[0] = 1.0;
  std::copy_n(record->a, m, feedback.data() + 1);
  std::copy_n(record->b, m + 1, forward.data());
  int32_t length = m + 1;
  for (std::int64_t s = 1; s < sections; ++s) {
    // The caller's arrays hold the running copies; the last may be cut where only zeros follow.
    std::copy_n(record->a + s * m, m, small.data() + 1);
    std::copy_n(feedback.data(), length, a);
    std::copy_n(forward.data(), length, b);
    Convolve(small.data(), m + 1, a, length, feedback.data());
    Convolve(record->b + s * (m + 1), m + 1, b, length, forward.data());
    length += m;
  }
  std::copy_n(feedback.data(), wanted, a);
  std::copy_n(forward.data(), wanted, b);
  return FATHOM_OK;
}
