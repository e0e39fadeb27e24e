// A cascade of sections run as a wave: the lanes of a row of vectors are the sections, each of them
// kSkew samples behind the one before it, so that all work at once and each keeps its own order of
// operations.
//
// A section's arithmetic is a class template over its element E, a vector or one double, and the
// number of them in a row. next(t) takes the sections' inputs in the row t and leaves their outputs
// there; `state` is what it keeps from one sample to the next, and keep(active, before) puts that
// of the lanes that are not active back.
#ifndef FATHOM_FILTER_IIR_WAVE_HPP
#define FATHOM_FILTER_IIR_WAVE_HPP

#include <cstddef>

#include "frame/lanes.hpp"

namespace fathom {

// An output reaches the next lane this many steps later: enough for the additions of the numerator
// and the way across lanes to stay off the path of the recursion.
inline constexpr std::size_t kSkew = 3;

// Samples from which on a wave of several sections outruns one sample after another.
inline constexpr std::size_t kWaveSamples = 32;

template <typename E>
inline constexpr std::size_t kLanesIn = sizeof(E) / sizeof(double);

// A row is one register or two. Registers of 64 bytes are left alone: a wave waits for its
// additions, and those of narrower ones are done sooner.
template <std::size_t bytes>
using RowRegister = Lanes < bytes<32 ? bytes : 32>;
template <std::size_t bytes>
inline constexpr std::size_t kWaveSections = 2 * kLanesIn<RowRegister<bytes>>;

// Calls run with a Row that has a lane for each of at most kWaveSections sections.
template <typename E, int vectors>
struct Row {
  using Element = E;
  static constexpr int kVectors = vectors;
};
template <std::size_t bytes, typename Run>
FATHOM_INLINE void byRow(std::size_t sections, Run run) {
  using E = RowRegister<bytes>;
  if (sections <= kLanesIn<E>) {
    run(Row<E, 1>{});
  } else {
    run(Row<E, 2>{});
  }
}

// What follows reads and writes rows in memory as lane after lane.
template <typename E, int vectors>
FATHOM_INLINE void loadRow(E (&row)[vectors], const double* lanes) {
  FATHOM_UNROLL
  for (int v = 0; v < vectors; ++v) load(row[v], lanes + v * kLanesIn<E>);
}
template <typename E, int vectors>
FATHOM_INLINE void storeRow(double* lanes, const E (&row)[vectors]) {
  FATHOM_UNROLL
  for (int v = 0; v < vectors; ++v) store(lanes + v * kLanesIn<E>, row[v]);
}

template <typename E, int vectors>
FATHOM_INLINE void copyRow(E (&to)[vectors], const E (&from)[vectors]) {
  FATHOM_UNROLL
  for (int v = 0; v < vectors; ++v) to[v] = from[v];
}

// Moves the lanes of a row up by one, and the last one round to the first.
template <typename E, int vectors>
FATHOM_INLINE void rotate(E (&row)[vectors]) {
  E before = row[vectors - 1];
  FATHOM_UNROLL
  for (int v = 0; v < vectors; ++v) {
    const E from = row[v];
    if constexpr (kLanesIn<E> == 2) {
      row[v] = __builtin_shufflevector(before, from, 1, 2);
    } else {
      row[v] = __builtin_shufflevector(before, from, 3, 4, 5, 6);
    }
    before = from;
  }
}

// The Source of a wave whose first section takes the samples themselves.
struct Samples {
  FATHOM_INLINE double next(double x) const { return x; }
};

// The sections are the last lanes, so that a rotation brings the last one's output to the first
// lane. Source's next(v) makes the first section's input of the sample v. y may be x.
template <typename E, int vectors, template <typename, int> typename Stage, typename Source>
class Wave {
 public:
  FATHOM_INLINE Wave(Stage<E, vectors>& stage, Source source, std::size_t sections)
      : stage_(stage), source_(source), lag_(kSkew * sections) {
    double enters[kLanes] = {}, start[kLanes];
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      const std::size_t after = kLanes - 1 - lane;
      start[lane] = after < sections ? static_cast<double>(kSkew * (sections - 1 - after))
                                     : 0x1p60;  // a lane without a section never starts
    }
    enters[kLanes - sections] = 1.0;
    E row[vectors];
    loadRow(row, enters);
    for (int v = 0; v < vectors; ++v) enters_[v] = row[v] > 0.0;
    loadRow(start_, start);
  }

  FATHOM_INLINE void run(const double* x, std::size_t n, double* y) {
    E pending[kSkew][vectors] = {};  // outputs on their way, the oldest first
    std::size_t k = 0;
    for (std::size_t guarded = lag_;; guarded = n + lag_) {
      // Steps in which some lanes have no sample yet, or none any more.
      for (; k < guarded; ++k) {
        E row[vectors];
        copyRow(row, pending[0]);
        if (k >= lag_) y[k - lag_] = row[0][0];
        guardedStep(row, k, x, n);
        FATHOM_UNROLL
        for (std::size_t d = 1; d < kSkew; ++d) copyRow(pending[d - 1], pending[d]);
        copyRow(pending[kSkew - 1], row);
      }
      if (k == n + lag_) return;
      for (; k + kSkew <= n; k += kSkew) {
        FATHOM_UNROLL
        for (std::size_t d = 0; d < kSkew; ++d) {
          y[k + d - lag_] = pending[d][0][0];
          step(pending[d], source_.next(x[k + d]));
        }
      }
    }
  }

 private:
  using Mask = decltype(E{} < E{});
  static constexpr std::size_t kLanes = kLanesIn<E> * vectors;

  FATHOM_INLINE void step(E (&row)[vectors], double input) {
    FATHOM_UNROLL
    for (int v = 0; v < vectors; ++v) {
      row[v] = enters_[v] ? input - E{} : row[v];  // a sum with 0 would lose the sign of -0
    }
    stage_.next(row);
    rotate(row);
  }

  FATHOM_INLINE void guardedStep(E (&row)[vectors], std::size_t k, const double* x, std::size_t n) {
    const auto before = stage_.state;
    step(row, k < n ? source_.next(x[k]) : 0.0);
    const auto now = static_cast<double>(k), end = static_cast<double>(n);
    Mask active[vectors];
    FATHOM_UNROLL
    for (int v = 0; v < vectors; ++v) active[v] = (now >= start_[v]) & (now - start_[v] < end);
    stage_.keep(active, before);
  }

  Stage<E, vectors>& stage_;
  Source source_;
  std::size_t lag_;  // from a sample's entry to its output
  Mask enters_[vectors];
  E start_[vectors];  // the steps in which the lanes take their first samples
};

}  // namespace fathom

#endif
