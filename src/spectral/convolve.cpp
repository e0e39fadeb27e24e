// Convolution and correlation, summed directly. The shorter operand is the taps and the longer the
// signal: result k is the sum of tap(m) signal[k - m], which starts at +0.0 and takes one product
// after another. A tile of neighbouring results keeps its sums in registers.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "fathom.h"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"

namespace {

// Taps and results may be stored backwards; which tap comes first is what the order of the sums
// hangs on.
struct Operands {
  const double* tap;  // tap(0)
  std::ptrdiff_t tapStep;
  std::size_t taps;
  const double* signal;
  std::size_t n;  // of the signal, at least `taps`
  bool lastTapFirst;
  double* result;
  bool resultBackwards;

  std::size_t results() const { return n + taps - 1; }
};

// Registers of a tile whose lanes all have the same taps, and of one at the ends of the results,
// where they have not.
constexpr std::size_t kInnerRegisters = 8;
constexpr std::size_t kEndRegisters = 4;
constexpr std::size_t kLargestEnd = kEndRegisters * 8;

template <std::size_t bytes>
struct MaskOf {
  typedef int64_t Type __attribute__((vector_size(bytes)));  // NOLINT(modernize-use-using)
};
template <std::size_t bytes>
using Mask = typename MaskOf<bytes>::Type;

// Taps from which on it pays that the registers of a tile start one after another.
constexpr std::size_t kManyTaps = 256;

// Products that are cheaper one at a time than by tiles.
constexpr std::size_t kFewProducts = 128;

// For each cell of a signal's ends, as below, all ones or, where there is no sample, all zeros.
struct Presence {
  int64_t cells[4 * kLargestEnd] = {};
  constexpr Presence() {
    for (std::size_t i = kLargestEnd; i < 3 * kLargestEnd; ++i) cells[i] = -1;
  }
};
constexpr Presence kPresence;

// The start and the end of the signal, one after the other between cells for the lanes that reach
// beyond them. Of a signal so short that one tile may reach beyond both, all of it.
class SignalEnds {
 public:
  FATHOM_INLINE SignalEnds(const double* signal, std::size_t n) {
    std::fill_n(cells_, kLargestEnd, 0.0);
    if (n >= kLargestEnd) {
      std::memcpy(cells_ + kLargestEnd, signal, sizeof cells_ / 4);
      std::memcpy(cells_ + 2 * kLargestEnd, signal + (n - kLargestEnd), sizeof cells_ / 4);
      std::fill_n(cells_ + 3 * kLargestEnd, kLargestEnd, 0.0);
      present_ = kPresence.cells;
      last_ = 3 * kLargestEnd - n;
      return;
    }
    std::fill_n(cells_ + kLargestEnd, 2 * kLargestEnd, 0.0);
    std::fill_n(few_, 3 * kLargestEnd, int64_t{0});
    for (std::size_t i = 0; i < n; ++i) {
      cells_[kLargestEnd + i] = signal[i];
      few_[kLargestEnd + i] = -1;
    }
    present_ = few_;
    last_ = kLargestEnd;
  }

  // The cell of signal[index], the first of a tile with lanes beyond an end.
  FATHOM_INLINE std::size_t cell(std::ptrdiff_t index) const {
    return static_cast<std::size_t>(index) + (index < 0 ? kLargestEnd : last_);
  }
  template <std::size_t bytes>
  FATHOM_INLINE void load(std::size_t cell, fathom::Lanes<bytes>& x, Mask<bytes>& present) const {
    std::memcpy(&x, cells_ + cell, bytes);
    std::memcpy(&present, present_ + cell, bytes);
  }

 private:
  const int64_t* present_;
  std::size_t last_;  // modulo 2^w: the cell of a sample at the signal's end less its index
  double cells_[4 * kLargestEnd];
  int64_t few_[3 * kLargestEnd];
};

template <std::size_t bytes, std::size_t... i>
FATHOM_INLINE void reverse(fathom::Lanes<bytes>& lanes, std::index_sequence<i...>) {
  lanes = __builtin_shufflevector(lanes, lanes, static_cast<int>(sizeof...(i) - 1 - i)...);
}

// The sums of `registers` vectors of results from result `start` on.
template <std::size_t bytes, std::size_t registers>
class Tile {
 public:
  static constexpr std::size_t kLanes = bytes / sizeof(double);
  static constexpr std::size_t kResults = registers * kLanes;

  // Taps first .. end, in their order; every lane has them.
  FATHOM_INLINE void addTaps(const Operands& o, std::size_t start, std::size_t first,
                             std::size_t end) {
    if (first >= end) return;
    const std::ptrdiff_t direction = o.lastTapFirst ? -1 : 1;
    const auto m = static_cast<std::ptrdiff_t>(o.lastTapFirst ? end - 1 : first);
    const double* tap = o.tap + m * o.tapStep;
    const double* signal = o.signal + (static_cast<std::ptrdiff_t>(start) - m);
    const std::ptrdiff_t tapStep = direction * o.tapStep;
    for (std::size_t count = end - first; count != 0; --count) {
      const double factor = *tap;
      FATHOM_UNROLL
      for (std::size_t r = 0; r < registers; ++r) {
        fathom::Lanes<bytes> x;
        fathom::load(x, signal + r * kLanes);
        sum_[r] = sum_[r] + factor * x;
      }
      tap += tapStep;
      signal -= direction;
    }
  }

  // All taps, more than a tile has results; every lane has them. A register is as many taps ahead
  // of the one before as that has lanes, so that all work on the same samples.
  template <std::ptrdiff_t tapStep, bool lastTapFirst>
  FATHOM_INLINE void addAllTaps(const Operands& o, std::size_t start) {
    addInGroups<tapStep, lastTapFirst>(o, start, std::make_index_sequence<registers - 1>());
  }

  // The same as addTaps for taps that not every lane has; a lane without one keeps its sum as it
  // is, for even a zero added could change it.
  FATHOM_INLINE void addEndTaps(const Operands& o, const SignalEnds& ends, std::size_t start,
                                std::size_t first, std::size_t end) {
    for (std::size_t count = 0; first + count < end; ++count) {
      const auto m = static_cast<std::ptrdiff_t>(o.lastTapFirst ? end - 1 - count : first + count);
      const double factor = o.tap[m * o.tapStep];
      const std::size_t at = ends.cell(static_cast<std::ptrdiff_t>(start) - m);
      FATHOM_UNROLL
      for (std::size_t r = 0; r < registers; ++r) {
        fathom::Lanes<bytes> x;
        Mask<bytes> present;
        ends.load<bytes>(at + r * kLanes, x, present);
        const auto sum = (Mask<bytes>)(sum_[r]), next = (Mask<bytes>)(sum_[r] + factor * x);
        sum_[r] = (fathom::Lanes<bytes>)((next & present) | (sum & ~present));
      }
    }
  }

  FATHOM_INLINE void store(const Operands& o, std::size_t start) {
    const std::size_t count = std::min(kResults, o.results() - start);
    double cells[kResults];
    double* const tile = count < kResults    ? cells
                         : o.resultBackwards ? o.result + (o.results() - start - kResults)
                                             : o.result + start;
    FATHOM_UNROLL
    for (std::size_t r = 0; r < registers; ++r) {
      if (o.resultBackwards) reverse<bytes>(sum_[r], std::make_index_sequence<kLanes>());
      fathom::store(tile + (o.resultBackwards ? registers - 1 - r : r) * kLanes, sum_[r]);
    }
    if (tile != cells) return;
    if (o.resultBackwards) {
      std::copy_n(cells + (kResults - count), count, o.result);
    } else {
      std::copy_n(cells, count, o.result + start);
    }
  }

 private:
  // i runs over all registers but one: those that start alone, then those that end alone.
  template <std::ptrdiff_t tapStep, bool lastTapFirst, std::size_t... i>
  FATHOM_INLINE void addInGroups(const Operands& o, std::size_t start, std::index_sequence<i...>) {
    constexpr auto kSpan = static_cast<std::ptrdiff_t>(kResults - kLanes);
    const auto taps = static_cast<std::ptrdiff_t>(o.taps);
    const std::size_t shared = o.taps - (kResults - kLanes);
    std::ptrdiff_t m = lastTapFirst ? taps - 1 : -kSpan;  // the tap of register 0
    const double* const signal = o.signal + start;
    if constexpr (lastTapFirst) {
      (addShared<tapStep, -1, 0, i + 1>(o.tap, signal, m, kLanes), ...);
      addShared<tapStep, -1, 0, registers>(o.tap, signal, m, shared);
      (addShared<tapStep, -1, i + 1, registers>(o.tap, signal, m, kLanes), ...);
    } else {
      (addShared<tapStep, 1, registers - 1 - i, registers>(o.tap, signal, m, kLanes), ...);
      addShared<tapStep, 1, 0, registers>(o.tap, signal, m, shared);
      (addShared<tapStep, 1, 0, registers - 1 - i>(o.tap, signal, m, kLanes), ...);
    }
  }

  template <std::ptrdiff_t tapStep, std::ptrdiff_t direction, std::size_t first, std::size_t end>
  FATHOM_INLINE void addShared(const double* tap, const double* signal, std::ptrdiff_t& m,
                               std::size_t count) {
    for (; count != 0; --count) {
      fathom::Lanes<bytes> x;
      fathom::load(x, signal - m);
      FATHOM_UNROLL
      for (std::size_t r = first; r < end; ++r) {
        sum_[r] = sum_[r] + tap[(m + static_cast<std::ptrdiff_t>(r * kLanes)) * tapStep] * x;
      }
      m += direction;
    }
  }

  fathom::Lanes<bytes> sum_[registers] = {};
};

template <std::size_t bytes, std::size_t registers>
FATHOM_INLINE void endTile(const Operands& o, const SignalEnds& ends, std::size_t start) {
  using T = Tile<bytes, registers>;
  const std::size_t last = start + T::kResults - 1;
  // Taps first .. end have a product in some lane, low .. high in all of them.
  const std::size_t first = start < o.n ? 0 : start - o.n + 1;
  const std::size_t end = std::min(o.taps, last + 1);
  const std::size_t low = std::clamp(last < o.n ? 0 : last - o.n + 1, first, end);
  const std::size_t high = std::clamp(start + 1, low, end);
  T tile;
  if (o.lastTapFirst) {
    tile.addEndTaps(o, ends, start, high, end);
    tile.addTaps(o, start, low, high);
    tile.addEndTaps(o, ends, start, first, low);
  } else {
    tile.addEndTaps(o, ends, start, first, low);
    tile.addTaps(o, start, low, high);
    tile.addEndTaps(o, ends, start, high, end);
  }
  tile.store(o, start);
}

template <std::size_t bytes>
FATHOM_INLINE void sumTilesOf(const Operands& o) {
  using Inner = Tile<bytes, kInnerRegisters>;
  constexpr std::size_t kLanes = Inner::kLanes;
  const SignalEnds ends(o.signal, o.n);
  for (std::size_t start = 0; start < o.results();) {
    if (start + 1 >= o.taps && start + Inner::kResults <= o.n) {
      Inner tile;
      if (o.taps < kManyTaps) {
        tile.addTaps(o, start, 0, o.taps);
      } else if (!o.lastTapFirst) {
        tile.template addAllTaps<1, false>(o, start);
      } else if (o.tapStep > 0) {
        tile.template addAllTaps<1, true>(o, start);
      } else {
        tile.template addAllTaps<-1, true>(o, start);
      }
      tile.store(o, start);
      start += Inner::kResults;
    } else if (o.results() - start > kLanes) {
      endTile<bytes, kEndRegisters>(o, ends, start);
      start += kEndRegisters * kLanes;
    } else {
      endTile<bytes, 1>(o, ends, start);
      start += kLanes;
    }
  }
}
FATHOM_BY_WIDTH(sumTiles, (const Operands& o), (o))

void sumProducts(const Operands& o) {
  if (o.taps * o.n > kFewProducts) {
    sumTiles(o);
    return;
  }
  for (std::size_t k = 0; k < o.results(); ++k) {
    const std::size_t first = k < o.n ? 0 : k - o.n + 1, end = std::min(o.taps, k + 1);
    double sum = 0.0;
    for (std::size_t count = 0; first + count < end; ++count) {
      const std::size_t m = o.lastTapFirst ? end - 1 - count : first + count;
      sum += o.tap[static_cast<std::ptrdiff_t>(m) * o.tapStep] * o.signal[k - m];
    }
    o.result[o.resultBackwards ? o.results() - 1 - k : k] = sum;
  }
}

}  // namespace

AnalysisStatus Convolve(const double* x, int32_t nx, const double* y, int32_t ny, double* result) {
  if (nx < 1 || ny < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto n = static_cast<std::size_t>(nx), m = static_cast<std::size_t>(ny);
  // The index of x ascends in every sum, so that of y descends.
  if (n <= m) {
    sumProducts({x, 1, n, y, m, false, result, false});
  } else {
    sumProducts({y, 1, m, x, n, true, result, false});
  }
  return FATHOM_OK;
}

AnalysisStatus Correlate(const double* x, int32_t nx, const double* y, int32_t ny, double* result) {
  if (nx < 1 || ny < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto n = static_cast<std::size_t>(nx), m = static_cast<std::size_t>(ny);
  // Either the taps or, with the signal forwards, both taps and results run backwards. The indices
  // of x and y ascend in every sum.
  if (n <= m) {
    sumProducts({x + (n - 1), -1, n, y, m, true, result, false});
  } else {
    sumProducts({y + (m - 1), -1, m, x, n, true, result, true});
  }
  return FATHOM_OK;
}
