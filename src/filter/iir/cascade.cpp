// Filtering through the sections of a record, which keeps its delay state between calls.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "filter/iir/wave.hpp"
#include "frame/lanes.hpp"

namespace {

// Sections of width m in direct form II, in the lanes of rows.
template <int m>
struct Width {
  template <typename E, int vectors>
  struct Stage {
    struct State {
      E s[m][vectors];
    };
    // c are the feedback coefficients with their signs turned: the bits are those of subtractions,
    // and an addition can take the product, for which it waits, as either operand.
    E c[m][vectors], b[m + 1][vectors];
    State state;

    FATHOM_INLINE void next(E (&t)[vectors]) {
      FATHOM_UNROLL
      for (int v = 0; v < vectors; ++v) {
        E sum = t[v];
        FATHOM_UNROLL
        for (int j = 0; j < m; ++j) sum += c[j][v] * state.s[j][v];
        const E w = sum;
        sum *= b[0][v];
        FATHOM_UNROLL
        for (int j = 0; j < m; ++j) sum += b[j + 1][v] * state.s[j][v];
        FATHOM_UNROLL
        for (int j = m - 1; j > 0; --j) state.s[j][v] = state.s[j - 1][v];
        state.s[0][v] = w;
        t[v] = sum;
      }
    }

    template <typename Mask>
    FATHOM_INLINE void keep(const Mask (&active)[vectors], const State& before) {
      for (int j = 0; j < m; ++j) {
        for (int v = 0; v < vectors; ++v)
          state.s[j][v] = active[v] ? state.s[j][v] : before.s[j][v];
      }
    }
  };
};

// The slices of a record that belong to consecutive sections.
struct Slices {
  const double* a;
  const double* b;
  double* state;
};

template <typename E, int vectors, int m>
FATHOM_INLINE void runLanes(const Slices& from, std::size_t sections, const double* x,
                            std::size_t n, double* y) {
  constexpr std::size_t kLanes = fathom::kLanesIn<E> * vectors;
  const std::size_t unused = kLanes - sections;
  double c[m][kLanes] = {}, b[m + 1][kLanes] = {}, state[m][kLanes] = {};
  for (std::size_t s = 0; s < sections; ++s) {
    for (int j = 0; j < m; ++j) {
      c[j][unused + s] = -from.a[s * m + j];
      state[j][unused + s] = from.state[s * m + j];
    }
    for (int j = 0; j <= m; ++j) b[j][unused + s] = from.b[s * (m + 1) + j];
  }
  using Stage = typename Width<m>::template Stage<E, vectors>;
  Stage stage;
  for (int j = 0; j < m; ++j) {
    fathom::loadRow(stage.c[j], c[j]);
    fathom::loadRow(stage.state.s[j], state[j]);
  }
  for (int j = 0; j <= m; ++j) fathom::loadRow(stage.b[j], b[j]);
  fathom::Wave<E, vectors, Width<m>::template Stage, fathom::Samples>(stage, {}, sections)
      .run(x, n, y);
  for (int j = 0; j < m; ++j) fathom::storeRow(state[j], stage.state.s[j]);
  for (std::size_t s = 0; s < sections; ++s) {
    for (int j = 0; j < m; ++j) from.state[s * m + j] = state[j][unused + s];
  }
}

// One section: eight samples at a time, so that the state seldom moves from register to register.
template <int m>
FATHOM_INLINE void runScalar(const Slices& from, const double* x, std::size_t n, double* y) {
  typename Width<m>::template Stage<double, 1> stage;
  for (int j = 0; j < m; ++j) {
    stage.c[j][0] = -from.a[j];
    stage.state.s[j][0] = from.state[j];
  }
  for (int j = 0; j <= m; ++j) stage.b[j][0] = from.b[j];
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    FATHOM_UNROLL
    for (std::size_t j = i; j < i + 8; ++j) {
      double t[1] = {x[j]};
      stage.next(t);
      y[j] = t[0];
    }
  }
  for (; i < n; ++i) {
    double t[1] = {x[i]};
    stage.next(t);
    y[i] = t[0];
  }
  for (int j = 0; j < m; ++j) from.state[j] = stage.state.s[j][0];
}

// Sample by sample through all sections, for blocks that are over before a wave has got going.
template <int m>
FATHOM_INLINE void runShort(const Slices& from, std::size_t sections, const double* x,
                            std::size_t n, double* y) {
  for (std::size_t i = 0; i < n; ++i) {
    double t = x[i];
    for (std::size_t s = 0; s < sections; ++s) {
      const double *a = from.a + s * m, *b = from.b + s * (m + 1);
      double* state = from.state + s * m;
      for (int j = 0; j < m; ++j) t -= a[j] * state[j];
      const double w = t;
      t *= b[0];
      for (int j = 0; j < m; ++j) t += b[j + 1] * state[j];
      for (int j = m - 1; j > 0; --j) state[j] = state[j - 1];
      state[0] = w;
    }
    y[i] = t;
  }
}

template <std::size_t bytes, int m>
FATHOM_INLINE void runGroups(const IIRFilter& record, const double* x, std::size_t n, double* y) {
  const std::size_t sections = static_cast<std::size_t>(record.na) / m;
  if (n < fathom::kWaveSamples && sections > 1) {
    runShort<m>({record.a, record.b, record.state}, sections, x, n, y);
    return;
  }
  for (std::size_t done = 0; done < sections;) {
    const std::size_t size = std::min(sections - done, fathom::kWaveSections<bytes>);
    const Slices from = {record.a + done * m, record.b + done * (m + 1), record.state + done * m};
    if (size == 1) {
      runScalar<m>(from, x, n, y);
    } else {
      fathom::byRow<bytes>(
          size, [&](auto row) __attribute__((always_inline)) {
            runLanes<typename decltype(row)::Element, decltype(row)::kVectors, m>(from, size, x, n,
                                                                                  y);
          });
    }
    x = y;
    done += size;
  }
}

template <std::size_t bytes>
FATHOM_INLINE void filterOf(const IIRFilter& record, std::size_t m, const double* x, std::size_t n,
                            double* y) {
  if (m == 2) {
    runGroups<bytes, 2>(record, x, n, y);
  } else {
    runGroups<bytes, 4>(record, x, n, y);
  }
}
FATHOM_BY_WIDTH(filter,
                (const IIRFilter& record, std::size_t m, const double* x, std::size_t n, double* y),
                (record, m, x, n, y))

// Width of the record's sections, or 0 when its counts contradict each other.
int32_t widthOf(const IIRFilter& record) {
  const std::int64_t sections = (std::int64_t{record.order} + 1) >> 1;
  if (sections < 1) return 0;
  const std::int64_t m = record.na / sections;
  if (m != 2 && m != 4) return 0;
  if (m * sections != record.na || (m + 1) * sections != record.nb) return 0;
  return record.stateCount == record.na ? static_cast<std::int32_t>(m) : 0;
}

}  // namespace

AnalysisStatus IIRCascadeFiltering(const double* x, int32_t n, IIRFilterPtr record, double* y) {
  if (record == nullptr) return FATHOM_ERR_FILTER_RECORD;
  const int32_t m = widthOf(*record);
  if (m == 0) return FATHOM_ERR_FILTER_RECORD;
  if (record->reset != 0) {
    std::fill_n(record->state, record->stateCount, 0.0);
    record->reset = 0;
  }
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  filter(*record, static_cast<std::size_t>(m), x, static_cast<std::size_t>(n), y);
  return FATHOM_OK;
}
