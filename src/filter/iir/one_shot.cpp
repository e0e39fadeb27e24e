// Filtering data in one call, from zero state: the sections in direct form I, as a wave.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "filter/iir/forms.hpp"
#include "filter/iir/wave.hpp"

namespace fathom {
namespace {

// How a section's output is formed from its inputs and outputs. An odd order's first section, of
// half the degree of the others, is one of the first four.
enum class Formula {
  kFirstSum,
  kFirstDifference,
  kResonator,
  kNotch,
  kSum,
  kDifference,
  kSecond,
  kBandpass,
  kFourth
};

bool isHead(Formula f) {
  return f <= Formula::kNotch;
}

Formula formulaOf(const Section& s) {
  switch (s.numerator) {
    case Numerator::kSum:
      return s.degree == 1 ? Formula::kFirstSum : Formula::kSum;
    case Numerator::kDifference:
      return s.degree == 1 ? Formula::kFirstDifference : Formula::kDifference;
    case Numerator::kBandpass:
      return s.degree == 2 ? Formula::kResonator : Formula::kBandpass;
    case Numerator::kNotch:
      return Formula::kNotch;
    case Numerator::kGeneral:
      break;
  }
  return s.degree == 2 ? Formula::kSecond : Formula::kFourth;
}

// The first section of an odd order, one sample at a time.
template <Formula formula>
class Head {
 public:
  FATHOM_INLINE explicit Head(const Section& s)
      : g_(s.b[0]), b1_(s.b[1]), c1_(-s.a[0]), c2_(-s.a[1]) {}

  FATHOM_INLINE double next(double x) {
    double y;
    if constexpr (formula == Formula::kFirstSum) {
      y = (x + x1_) * g_ + c1_ * y1_;
    } else if constexpr (formula == Formula::kFirstDifference) {
      y = (x - x1_) * g_ + c1_ * y1_;
    } else if constexpr (formula == Formula::kResonator) {
      y = (x - x2_) * g_ + c1_ * y1_ + c2_ * y2_;
    } else {
      y = (x + x2_) * g_ + (x1_ - y1_) * b1_ + c2_ * y2_;
    }
    x2_ = x1_;
    x1_ = x;
    y2_ = y1_;
    y1_ = y;
    return y;
  }

 private:
  double g_, b1_, c1_, c2_;
  double x1_ = 0.0, x2_ = 0.0, y1_ = 0.0, y2_ = 0.0;
};

// The other sections, all of one formula, in the lanes of rows.
template <Formula formula>
struct Pairs {
  static constexpr int kDegree =
      formula == Formula::kBandpass || formula == Formula::kFourth ? 4 : 2;

  template <typename E, int vectors>
  struct Stage {
    struct State {
      E x[kDegree][vectors], y[kDegree][vectors];  // the latest first
    };
    E b[3][vectors], c[kDegree][vectors];
    State state;

    FATHOM_INLINE Stage(const Section* sections, std::size_t count) {
      constexpr std::size_t kLanes = kLanesIn<E> * vectors;
      double numerator[3][kLanes] = {}, denominator[kDegree][kLanes] = {};
      for (std::size_t i = 0; i < count; ++i) {
        const std::size_t lane = kLanes - count + i;
        for (int j = 0; j < 3; ++j) numerator[j][lane] = sections[i].b[j];
        for (int j = 0; j < kDegree; ++j) denominator[j][lane] = -sections[i].a[j];
      }
      for (int j = 0; j < 3; ++j) loadRow(b[j], numerator[j]);
      for (int j = 0; j < kDegree; ++j) {
        loadRow(c[j], denominator[j]);
        for (int v = 0; v < vectors; ++v) state.x[j][v] = state.y[j][v] = E{};
      }
    }

    FATHOM_INLINE void next(E (&t)[vectors]) {
      FATHOM_UNROLL
      for (int v = 0; v < vectors; ++v) {
        auto& [x, y] = state;
        const E x0 = t[v];
        E out;
        if constexpr (formula == Formula::kSum) {
          out =
              c[0][v] * y[0][v] + c[1][v] * y[1][v] + (x0 + x[0][v] + x[0][v] + x[1][v]) * b[0][v];
        } else if constexpr (formula == Formula::kDifference) {
          out =
              c[0][v] * y[0][v] + c[1][v] * y[1][v] + (x0 - x[0][v] - x[0][v] + x[1][v]) * b[0][v];
        } else if constexpr (formula == Formula::kSecond) {
          out = c[0][v] * y[0][v] + c[1][v] * y[1][v] +
                ((x0 + x[1][v]) * b[0][v] + x[0][v] * b[1][v]);
        } else {
          if constexpr (formula == Formula::kBandpass) {
            out = (x0 - 2.0 * x[1][v] + x[3][v]) * b[0][v];
          } else {
            out = (x0 + x[3][v]) * b[0][v] + (x[0][v] + x[2][v]) * b[1][v] + x[1][v] * b[2][v];
          }
          out = out + c[0][v] * y[0][v] + c[1][v] * y[1][v] + c[2][v] * y[2][v] + c[3][v] * y[3][v];
        }
        FATHOM_UNROLL
        for (int j = kDegree - 1; j > 0; --j) {
          x[j][v] = x[j - 1][v];
          y[j][v] = y[j - 1][v];
        }
        x[0][v] = x0;
        y[0][v] = out;
        t[v] = out;
      }
    }

    template <typename Mask>
    FATHOM_INLINE void keep(const Mask (&active)[vectors], const State& before) {
      for (int j = 0; j < kDegree; ++j) {
        for (int v = 0; v < vectors; ++v) {
          state.x[j][v] = active[v] ? state.x[j][v] : before.x[j][v];
          state.y[j][v] = active[v] ? state.y[j][v] : before.y[j][v];
        }
      }
    }
  };
};

template <Formula formula>
FATHOM_INLINE void runHead(Head<formula> head, const double* x, std::size_t n, double* y) {
  for (std::size_t i = 0; i < n; ++i) y[i] = head.next(x[i]);
}

FATHOM_INLINE void runHead(const Section& s, const double* x, std::size_t n, double* y) {
  switch (formulaOf(s)) {
    case Formula::kFirstSum:
      return runHead(Head<Formula::kFirstSum>(s), x, n, y);
    case Formula::kFirstDifference:
      return runHead(Head<Formula::kFirstDifference>(s), x, n, y);
    case Formula::kResonator:
      return runHead(Head<Formula::kResonator>(s), x, n, y);
    default:
      return runHead(Head<Formula::kNotch>(s), x, n, y);
  }
}

template <Formula formula>
FATHOM_INLINE void runPair(const Section& section, const double* x, std::size_t n, double* y) {
  typename Pairs<formula>::template Stage<double, 1> stage(&section, 1);
  for (std::size_t i = 0; i < n; ++i) {
    double t[1] = {x[i]};
    stage.next(t);
    y[i] = t[0];
  }
}

// What may be run as one: a first section, or none, and further sections of one formula.
struct Group {
  const Section* head;
  const Section* sections;
  std::size_t count;
};

template <std::size_t bytes, Formula formula, typename Source>
FATHOM_INLINE void runWave(Source source, const Section* sections, std::size_t count,
                           const double* x, std::size_t n, double* y) {
  byRow<bytes>(
      count, [&](auto row) __attribute__((always_inline)) {
        using R = decltype(row);
        typename Pairs<formula>::template Stage<typename R::Element, R::kVectors> stage(sections,
                                                                                        count);
        Wave<typename R::Element, R::kVectors, Pairs<formula>::template Stage, Source>(
            stage, source, count)
            .run(x, n, y);
      });
}

// The head in front of the wave's first lane, if its formula is the one that was compiled for.
template <std::size_t bytes, Formula formula, Formula head>
FATHOM_INLINE bool runFused(const Group& g, std::size_t count, const double* x, std::size_t n,
                            double* y) {
  if (formulaOf(*g.head) != head) return false;
  runWave<bytes, formula>(Head<head>(*g.head), g.sections, count, x, n, y);
  return true;
}

template <std::size_t bytes, Formula formula, Formula... heads>
FATHOM_INLINE void runGroup(const Group& g, const double* x, std::size_t n, double* y) {
  std::size_t done = 0;
  if (g.head != nullptr) {
    const std::size_t size = std::min(g.count, kWaveSections<bytes>);
    if (n >= kWaveSamples && (runFused<bytes, formula, heads>(g, size, x, n, y) || ...)) {
      done = size;
    } else {
      runHead(*g.head, x, n, y);
    }
    x = y;
  }
  while (done < g.count) {
    std::size_t size = 1;
    if (n < kWaveSamples) {
      runPair<formula>(g.sections[done], x, n, y);
    } else {
      size = std::min(g.count - done, kWaveSections<bytes>);
      runWave<bytes, formula>(Samples{}, g.sections + done, size, x, n, y);
    }
    x = y;
    done += size;
  }
}

template <std::size_t bytes>
FATHOM_INLINE void runAlikeOf(const Group& g, const double* x, std::size_t n, double* y) {
  if (g.count == 0) {
    if (g.head != nullptr) runHead(*g.head, x, n, y);
    return;
  }
  switch (formulaOf(*g.sections)) {
    case Formula::kSum:
      return runGroup<bytes, Formula::kSum, Formula::kFirstSum>(g, x, n, y);
    case Formula::kDifference:
      return runGroup<bytes, Formula::kDifference, Formula::kFirstDifference>(g, x, n, y);
    case Formula::kSecond:
      return runGroup<bytes, Formula::kSecond, Formula::kFirstSum, Formula::kFirstDifference>(g, x,
                                                                                              n, y);
    case Formula::kBandpass:
      return runGroup<bytes, Formula::kBandpass, Formula::kResonator>(g, x, n, y);
    default:
      return runGroup<bytes, Formula::kFourth, Formula::kResonator, Formula::kNotch>(g, x, n, y);
  }
}
FATHOM_BY_WIDTH(runAlike, (const Group& g, const double* x, std::size_t n, double* y), (g, x, n, y))

}  // namespace

void runSections(const Section* sections, std::size_t count, const double* x, std::size_t n,
                 double* y) {
  for (std::size_t i = 0; i < count;) {
    const Section* head = isHead(formulaOf(sections[i])) ? &sections[i++] : nullptr;
    std::size_t end = i;
    while (end < count && !isHead(formulaOf(sections[end])) &&
           formulaOf(sections[end]) == formulaOf(sections[i])) {
      ++end;
    }
    runAlike({head, sections + i, end - i}, x, n, y);
    x = y;
    i = end;
  }
}

}  // namespace fathom
