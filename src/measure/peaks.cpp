// Peaks and valleys of a signal that may come in blocks: a quadratic is fitted to every run of
// `width` samples, and each stretch of runs that are curved alike holds one extremum at most.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/module.hpp"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// What the fit needs of a run x[c + k], |k| <= (w - 1) / 2, whose middle sample is m (the lower of
// the two when w is even): with a = x[c + k] - m and b = x[c - k] - m, sums over k > 0 of
//   slope  2 k (a - b)
//   bend   p (a + b), where p = 12 k^2 - (w^2 - 1), an integer, is orthogonal to the constant
//   level  a + b
// In a run of equal samples all three are exactly 0. Every run is summed anew, from its middle
// outwards: sums that slide along the signal would carry the rounding of all that has passed, and a
// NaN for ever. Runs lie side by side in the lanes of a vector.
constexpr std::size_t kBatch = 128;

struct Sums {
  double slope[kBatch];
  double bend[kBatch];
  double level[kBatch];
};

// The sums of consecutive runs, the first of which begins at x: a register holds one or more.
template <typename Lanes, std::size_t registers>
FATHOM_INLINE void sumTile(const double* x, int64_t width, std::size_t first, Sums& sums) {
  constexpr std::size_t kLanes = sizeof(Lanes) / sizeof(double);
  const double* const middle = x + first + (width - 1) / 2;
  const double* const mirror = middle + (width % 2 == 0 ? 1 : 0);
  Lanes m[registers];
  Lanes slope[registers] = {};
  Lanes bend[registers] = {};
  Lanes level[registers] = {};
  FATHOM_UNROLL
  for (std::size_t r = 0; r < registers; ++r) fathom::load(m[r], middle + r * kLanes);
  const double moment = static_cast<double>(width) * static_cast<double>(width) - 1.0;
  double twiceK = width % 2 == 0 ? 1.0 : 2.0;
  for (int64_t i = 1; i <= width / 2; ++i) {
    const double p = 3.0 * twiceK * twiceK - moment;
    FATHOM_UNROLL
    for (std::size_t r = 0; r < registers; ++r) {
      Lanes above;
      Lanes below;
      fathom::load(above, middle + r * kLanes + i);
      fathom::load(below, mirror + r * kLanes - i);
      above -= m[r];
      below -= m[r];
      const Lanes y = above + below;
      slope[r] += twiceK * (above - below);
      bend[r] += p * y;
      level[r] += y;
    }
    twiceK += 2.0;
  }
  FATHOM_UNROLL
  for (std::size_t r = 0; r < registers; ++r) {
    fathom::store(sums.slope + first + r * kLanes, slope[r]);
    fathom::store(sums.bend + first + r * kLanes, bend[r]);
    fathom::store(sums.level + first + r * kLanes, level[r]);
  }
}

// The last tile goes back over runs that are done, to end with the last run.
template <std::size_t bytes>
FATHOM_INLINE void sumRunsOf(const double* x, std::size_t runs, int64_t width, Sums& sums) {
  constexpr std::size_t kRegisters = 2;
  constexpr std::size_t kTile = kRegisters * bytes / sizeof(double);
  if (runs < kTile) {
    for (std::size_t r = 0; r < runs; ++r) sumTile<double, 1>(x, width, r, sums);
    return;
  }
  for (std::size_t r = 0; r < runs; r += kTile)
    sumTile<fathom::Lanes<bytes>, kRegisters>(x, width, std::min(r, runs - kTile), sums);
}

FATHOM_BY_WIDTH(sumRuns, (const double* x, std::size_t runs, int64_t width, Sums& sums),
                (x, runs, width, sums))

struct Peak {
  double location;
  double amplitude;
  double secondDerivative;
};

// The peaks of one call, in memory that grows.
class Peaks {
 public:
  Peaks() = default;
  ~Peaks() { std::free(peaks_); }
  Peaks(const Peaks&) = delete;
  Peaks& operator=(const Peaks&) = delete;

  bool add(const Peak& peak) {
    if (count_ == capacity_) {
      const std::size_t capacity = std::max<std::size_t>(16, 2 * capacity_);
      if (capacity > PTRDIFF_MAX / sizeof(Peak)) return false;
      auto* grown = static_cast<Peak*>(std::malloc(capacity * sizeof(Peak)));
      if (grown == nullptr) return false;
      std::copy_n(peaks_, count_, grown);
      std::free(peaks_);
      peaks_ = grown;
      capacity_ = capacity;
    }
    peaks_[count_++] = peak;
    return true;
  }

  std::size_t count() const { return count_; }

  // A new array of one member of every peak, or null.
  double* column(double Peak::*member) const {
    auto* values = static_cast<double*>(std::malloc(count_ * sizeof(double)));
    for (std::size_t i = 0; values != nullptr && i < count_; ++i) values[i] = peaks_[i].*member;
    return values;
  }

 private:
  Peak* peaks_ = nullptr;
  std::size_t count_ = 0;
  std::size_t capacity_ = 0;
};

// Where the search stands before its next run.
class Search {
 public:
  Search() = default;
  Search(double threshold, int32_t width, int32_t polarity)
      : width_(width),
        sign_(polarity == FATHOM_POLARITY_PEAKS ? 1.0 : -1.0),
        threshold_(sign_ * threshold) {}

  int64_t width() const { return width_; }

  // The next runs, the first of which begins at x. False when memory fails.
  bool pass(const double* x, int64_t runs, Peaks& peaks) {
    Sums sums;
    for (int64_t done = 0; done < runs;) {
      const std::size_t batch = std::min(kBatch, static_cast<std::size_t>(runs - done));
      sumRuns(x + done, batch, width_, sums);
      const double* const middle = x + done + (width_ - 1) / 2;
      for (std::size_t r = 0; r < batch; ++r) {
        if (!passRun(middle[r], sums.slope[r], sums.bend[r], sums.level[r], peaks)) return false;
      }
      done += static_cast<int64_t>(batch);
    }
    return true;
  }

  // The stretch ends, and holds no location past `limit`. False when memory fails.
  bool endStretch(double limit, Peaks& peaks) {
    const bool reported = distance_ < kInfinity && nearest_.location <= limit &&
                          sign_ * nearest_.amplitude > threshold_;
    distance_ = kInfinity;
    return !reported || peaks.add(nearest_);
  }

 private:
  bool passRun(double middle, double slope, double bend, double level, Peaks& peaks) {
    const auto w = static_cast<double>(width_);
    const double reach = 0.5 * (w - 1.0);
    const double centre = static_cast<double>(next_++) + reach;
    const double curvature = sign_ * bend;
    if (!(fathom::fabs(bend) < kInfinity)) {
      start_ = -kInfinity;
      return endStretch(kInfinity, peaks);
    }
    if (curvature > 0.0) {
      start_ = centre;
      return endStretch(centre, peaks);
    }
    const double fourth = w * w - 4.0;
    const double offset = -(fourth * slope) / (5.0 * bend);
    const double distance = fathom::fabs(offset);
    if (!(distance <= reach && distance < distance_ && centre + offset > start_)) return true;
    const double second = w * w - 1.0;
    const double atCentre = middle + (level - 1.25 * bend / fourth) / w;
    const double amplitude = atCentre + 3.0 * slope * offset / (w * second);
    if (!(fathom::fabs(amplitude) < kInfinity)) return true;
    distance_ = distance;
    nearest_ = {centre + offset, amplitude, bend / (w * second * fourth / 30.0)};
    return true;
  }

  int64_t width_ = 0;
  double sign_ = 1.0;            // 1 for peaks, -1 for valleys
  double threshold_ = 0.0;       // of the signal times sign
  int64_t next_ = 0;             // the run's first sample
  double start_ = -kInfinity;    // the stretch holds no location up to here
  double distance_ = kInfinity;  // of `nearest` from its run's centre; infinite when there is none
  Peak nearest_ = {};
};

// What outlives a call: the search, and the samples from its next run on, at most width - 1.
class Signal {
 public:
  bool begun() const { return begun_; }
  const Search& search() const { return search_; }
  int64_t count() const { return count_; }
  double* samples() { return samples_; }

  // Room for `count` samples, with those that are held. False when memory fails.
  bool reserve(int64_t count) {
    if (count <= capacity_) return true;
    // Twice the room, so that a signal that comes sample by sample is not copied for each.
    const int64_t capacity = std::max(count, 2 * capacity_);
    if (capacity > static_cast<int64_t>(PTRDIFF_MAX / sizeof(double))) return false;
    auto* grown =
        static_cast<double*>(std::malloc(static_cast<std::size_t>(capacity) * sizeof(double)));
    if (grown == nullptr) return false;
    std::copy_n(samples_, count_, grown);
    std::free(samples_);
    samples_ = grown;
    capacity_ = capacity;
    return true;
  }

  void keep(const Search& search, int64_t count) {
    begun_ = true;
    search_ = search;
    count_ = count;
  }

  void forget() {
    std::free(samples_);
    *this = Signal();
  }

 private:
  bool begun_ = false;
  Search search_;
  double* samples_ = nullptr;
  int64_t count_ = 0;
  int64_t capacity_ = 0;
};

Signal state;
bool releasedAtExit = false;

void release() {
  state.forget();
  releasedAtExit = false;
}

}  // namespace

AnalysisStatus PeakDetector(const double* x, int32_t n, double threshold, int32_t width,
                            int32_t polarity, int32_t initialize, int32_t endOfData,
                            double** locations, double** amplitudes, double** secondDerivatives,
                            int32_t* count) {
  const bool last = endOfData != 0;
  if (n < 0 || (n == 0 && !last)) return FATHOM_ERR_NO_SAMPLES;
  if (width < 3) return FATHOM_ERR_SELECTION;
  if (polarity != FATHOM_POLARITY_PEAKS && polarity != FATHOM_POLARITY_VALLEYS)
    return FATHOM_ERR_SELECTION;

  const bool fresh = initialize != 0 || !state.begun();
  Search search = fresh ? Search(threshold, width, polarity) : state.search();
  const int64_t overlap = search.width() - 1;
  const int64_t held = fresh ? 0 : state.count();
  const int64_t head = fresh ? 0 : std::min<int64_t>(n, overlap);
  const int64_t kept = last ? 0 : std::min(held + n, overlap);
  if (!releasedAtExit) releasedAtExit = fathom::addExitFunction(release) == 0;
  if (!state.reserve(std::max(held + head, kept))) return FATHOM_ERR_MEMORY;

  // Runs that begin among the samples held, then those that lie in this block. Up to the last
  // request for memory nothing is changed that is held.
  Peaks peaks;
  std::copy_n(x, head, state.samples() + held);
  if (!search.pass(state.samples(), std::max<int64_t>(held + head - overlap, 0), peaks) ||
      !search.pass(x, std::max<int64_t>(n - overlap, 0), peaks) ||
      (last && !search.endStretch(kInfinity, peaks))) {
    return FATHOM_ERR_MEMORY;
  }
  double* columns[3] = {};
  if (peaks.count() > 0) {
    columns[0] = peaks.column(&Peak::location);
    columns[1] = peaks.column(&Peak::amplitude);
    columns[2] = peaks.column(&Peak::secondDerivative);
    if (columns[0] == nullptr || columns[1] == nullptr || columns[2] == nullptr) {
      for (double* column : columns) std::free(column);
      return FATHOM_ERR_MEMORY;
    }
  }

  if (last) {
    state.forget();
  } else {
    const int64_t fromBlock = std::min<int64_t>(n, kept);
    std::copy_n(state.samples() + held - (kept - fromBlock), kept - fromBlock, state.samples());
    std::copy_n(x + n - fromBlock, fromBlock, state.samples() + kept - fromBlock);
    state.keep(search, kept);
  }
  *locations = columns[0];
  *amplitudes = columns[1];
  *secondDerivatives = columns[2];
  *count = static_cast<int32_t>(peaks.count());
  return FATHOM_OK;
}
