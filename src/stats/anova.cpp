// Analysis of variance: one factor with levels of any size, and balanced designs of two and three
// factors with fixed or random effects.
//
// One pass in index order gathers a sum for each level, each cell and the whole; a sum of squares
// then adds square by square, levels and cells ascending. These orders decide the last bits.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/lanes.hpp"
#include "frame/workspace.hpp"

namespace {

struct Factor {
  const int32_t* level;  // of each observation
  std::size_t levels;
};

// The effects of a design in the order of the result table's rows, as sets of factors: bit 0 stands
// for A, bit 1 for B, bit 2 for C. The last is the interaction of all factors; its cells are those
// of the design. The row after it is the error's.
template <int factors>
constexpr int kEffectCount = (1 << factors) - 1;
template <int factors>
constexpr int kEffects[kEffectCount<factors>] = {1};
template <>
constexpr int kEffects<2>[] = {1, 2, 3};
template <>
constexpr int kEffects<3>[] = {1, 2, 4, 3, 5, 6, 7};

// The number of levels behind a signed count, whose sign tells fixed from random effects.
std::size_t levelsOf(int32_t count) {
  return static_cast<std::size_t>(count < 0 ? -int64_t{count} : int64_t{count});
}

// The number of observations in a balanced design; where int32_t does not hold it, a number that
// int32_t does not hold either.
template <int factors>
int64_t observationsOf(const Factor (&factor)[factors], int32_t replicates) {
  constexpr int64_t kTooMany = (int64_t{1} << 31) + 1;
  int64_t product = replicates;
  for (const Factor& f : factor) {
    product = std::clamp(product * static_cast<int64_t>(f.levels), -kTooMany, kTooMany);
  }
  return product;
}

template <int factors>
bool hasTooFewLevels(const Factor (&factor)[factors]) {
  return std::any_of(factor, factor + factors, [](const Factor& f) { return f.levels < 2; });
}

template <int factors>
std::size_t cellsOf(const Factor (&factor)[factors], int effect) {
  std::size_t cells = 1;
  for (int f = 0; f < factors; ++f) {
    if ((effect >> f & 1) != 0) cells *= factor[f].levels;
  }
  return cells;
}

template <int factors>
int32_t degreesOfFreedom(const Factor (&factor)[factors], int effect) {
  std::size_t degrees = 1;  // below the number of observations
  for (int f = 0; f < factors; ++f) {
    if ((effect >> f & 1) != 0) degrees *= factor[f].levels - 1;
  }
  return static_cast<int32_t>(degrees);
}

template <int factors>
struct Sums {
  double values = 0.0;
  double squares = 0.0;
  double* effect[kEffectCount<factors>];  // the sum of each of its cells
  int32_t* observations;                  // the number in each cell of the design
};

// The one pass. Levels are checked before they index anything; false at the first that does not
// exist.
template <int factors>
bool gather(const double* y, std::size_t n, const Factor (&factor)[factors], Sums<factors>& sums) {
  double values = 0.0;
  double squares = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    std::size_t level[factors];
    FATHOM_UNROLL
    for (int f = 0; f < factors; ++f) {
      level[f] = static_cast<uint32_t>(factor[f].level[i]);
      if (level[f] >= factor[f].levels) return false;
    }
    const double value = y[i];
    values += value;
    squares += value * value;
    std::size_t cell = 0;
    FATHOM_UNROLL
    for (int row = 0; row < kEffectCount<factors>; ++row) {
      cell = 0;
      FATHOM_UNROLL
      for (int f = 0; f < factors; ++f) {
        if ((kEffects<factors>[row] >> f & 1) != 0) cell = cell * factor[f].levels + level[f];
      }
      sums.effect[row][cell] += value;
    }
    ++sums.observations[cell];  // the last row's cell is that of all factors
  }
  sums.values = values;
  sums.squares = squares;
  return true;
}

// The sums of squares of a balanced design, row by row, the error last: those of the sums of the
// cells, less the correction for the mean, less those of the effects that are part of this one.
template <int factors>
AnalysisStatus sumsOfSquares(const double* y, int32_t n, const Factor (&factor)[factors],
                             int32_t replicates, double (&ss)[1 << factors]) {
  constexpr int kRows = kEffectCount<factors>;
  std::size_t total = 0;
  for (const int effect : kEffects<factors>) total += cellsOf(factor, effect);
  const std::size_t cells = cellsOf(factor, kEffects<factors>[kRows - 1]);
  fathom::Workspace<double> sumOf(total);
  if (!sumOf) return FATHOM_ERR_MEMORY;
  fathom::Workspace<int32_t> observations(cells);
  if (!observations) return FATHOM_ERR_MEMORY;

  std::fill_n(sumOf.data(), total, 0.0);
  std::fill_n(observations.data(), cells, 0);
  Sums<factors> sums;
  sums.observations = observations.data();
  double* next = sumOf.data();
  for (int row = 0; row < kRows; ++row) {
    sums.effect[row] = next;
    next += cellsOf(factor, kEffects<factors>[row]);
  }
  if (!gather(y, static_cast<std::size_t>(n), factor, sums)) return FATHOM_ERR_FACTOR_LEVEL;
  for (std::size_t cell = 0; cell < cells; ++cell) {
    if (observations[cell] != replicates) return FATHOM_ERR_UNBALANCED;
  }

  const double correction = sums.values * sums.values / n;
  for (int row = 0; row < kRows; ++row) {
    const int effect = kEffects<factors>[row];
    const std::size_t size = cellsOf(factor, effect);
    const std::size_t inEach = static_cast<std::size_t>(n) / size;
    double squares = 0.0;
    for (std::size_t cell = 0; cell < size; ++cell) {
      const double sum = sums.effect[row][cell];
      squares += sum * sum / static_cast<double>(inEach);
    }
    ss[row] = squares - correction;
    if (row == kRows - 1) ss[kRows] = sums.squares - correction - ss[row];
    for (int part = 0; part < row; ++part) {
      if ((kEffects<factors>[part] & ~effect) == 0) ss[row] -= ss[part];
    }
  }
  return FATHOM_OK;
}

// The upper tail of the F distribution. Degrees of freedom of 1 or more are never refused.
double significance(double ratio, int32_t numerator, int32_t denominator) {
  double lowerTail = 0.0;
  F_Dist(ratio, numerator, denominator, &lowerTail);
  return 1.0 - lowerTail;
}

// One row of a result table but for its last cell, the F ratio.
void putRow(double* row, double ss, int32_t degrees, double meanSquare) {
  row[0] = ss;
  row[1] = degrees;
  row[2] = meanSquare;
}

enum ThreeFactorRow : int8_t { A, B, C, AB, AC, BC, ABC, E, None };

// The row whose mean square an effect's is tested against, by model (4 where A is random, plus 2
// where B is, plus 1 where C is) and effect: the one with the same expectation but for the effect
// itself. None where no row has it.
constexpr ThreeFactorRow kDenominator[8][7] = {
    {E, E, E, E, E, E, E},          {AC, BC, E, ABC, E, E, E},
    {AB, E, BC, E, ABC, E, E},      {None, BC, BC, ABC, ABC, E, E},
    {E, AB, AC, E, E, ABC, E},      {AC, None, AC, ABC, E, ABC, E},
    {AB, AB, None, E, ABC, ABC, E}, {None, None, None, ABC, ABC, ABC, E},
};

}  // namespace

AnalysisStatus ANOVA1Way(const double* y, const int32_t* level, int32_t n, int32_t k, double* ssA,
                         double* msA, double* f, double* p, double* ssE, double* msE, double* ssT) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (k < 2 || k >= n) return FATHOM_ERR_LEVEL_COUNT;
  const Factor factor[] = {{level, static_cast<std::size_t>(k)}};
  fathom::Workspace<double> sumOf(factor[0].levels);
  if (!sumOf) return FATHOM_ERR_MEMORY;
  fathom::Workspace<int32_t> observations(factor[0].levels);
  if (!observations) return FATHOM_ERR_MEMORY;

  std::fill_n(sumOf.data(), k, 0.0);
  std::fill_n(observations.data(), k, 0);
  Sums<1> sums;
  sums.effect[0] = sumOf.data();
  sums.observations = observations.data();
  if (!gather(y, static_cast<std::size_t>(n), factor, sums)) return FATHOM_ERR_FACTOR_LEVEL;

  const double correction = sums.values * sums.values / n;
  double squares = 0.0;
  for (std::size_t j = 0; j < factor[0].levels; ++j) {
    if (observations[j] == 0) return FATHOM_ERR_EMPTY_LEVEL;
    squares += sumOf[j] * sumOf[j] / observations[j];
  }
  const double total = sums.squares - correction;
  const double between = squares - correction;
  const double within = total - between;
  const double meanBetween = between / (k - 1);
  const double meanWithin = within / (n - k);
  const double ratio = meanBetween / meanWithin;
  *ssA = between;
  *msA = meanBetween;
  *f = ratio;
  *p = significance(ratio, k - 1, n - k);
  *ssE = within;
  *msE = meanWithin;
  *ssT = total;
  return FATHOM_OK;
}

AnalysisStatus ANOVA2Way(const double* y, const int32_t* levelA, const int32_t* levelB, int32_t n,
                         int32_t replicates, int32_t a, int32_t b, double* table, double* pA,
                         double* pB, double* pAB) {
  const Factor factor[] = {{levelA, levelsOf(a)}, {levelB, levelsOf(b)}};
  if (observationsOf(factor, replicates) != n) return FATHOM_ERR_TOTAL_POINTS;
  if (hasTooFewLevels(factor)) return FATHOM_ERR_LEVEL_COUNT;
  if (replicates < 1) return FATHOM_ERR_EMPTY_LEVEL;
  double ss[4];
  const AnalysisStatus status = sumsOfSquares(y, n, factor, replicates, ss);
  if (status != FATHOM_OK) return status;
  const bool replicated = replicates > 1;
  if (!replicated && (a < 0 || b < 0)) return FATHOM_ERR_FIXED_EFFECT;

  enum : int { kAB = 2, kError = 3 };  // rows; A and B are 0 and 1
  int32_t degrees[4];
  for (int row = 0; row < kError; ++row) {
    degrees[row] = degreesOfFreedom(factor, kEffects<2>[row]);
  }
  degrees[kError] = n - n / replicates;
  if (!replicated) {  // the interaction serves as error
    std::swap(ss[kAB], ss[kError]);
    std::swap(degrees[kAB], degrees[kError]);
    ss[kAB] = 0.0;
  }
  double ms[4];
  for (int row = 0; row < 4; ++row) {
    ms[row] = row == kAB && !replicated ? 0.0 : ss[row] / degrees[row];
    putRow(table + 4 * row, ss[row], degrees[row], ms[row]);
  }

  const int denominator[] = {b < 0 ? kAB : kError, a < 0 ? kAB : kError, kError};
  double* const p[] = {pA, pB, pAB};
  for (int row = 0; row < kError; ++row) {
    const bool tested = row != kAB || replicated;
    const double ratio = tested ? ms[row] / ms[denominator[row]] : 0.0;
    table[4 * row + 3] = ratio;
    // Over the error's degrees of freedom, also where the ratio is formed over the interaction.
    *p[row] = tested ? significance(ratio, degrees[row], degrees[kError]) : 0.0;
  }
  return FATHOM_OK;
}

AnalysisStatus ANOVA3Way(const double* y, const int32_t* levelA, const int32_t* levelB,
                         const int32_t* levelC, int32_t n, int32_t replicates, int32_t a, int32_t b,
                         int32_t c, double* table, double* pA, double* pB, double* pC, double* pAB,
                         double* pAC, double* pBC, double* pABC) {
  const Factor factor[] = {{levelA, levelsOf(a)}, {levelB, levelsOf(b)}, {levelC, levelsOf(c)}};
  if (observationsOf(factor, replicates) != n) return FATHOM_ERR_TOTAL_POINTS;
  if (replicates < 2) return FATHOM_ERR_EMPTY_LEVEL;
  if (hasTooFewLevels(factor)) return FATHOM_ERR_LEVEL_COUNT;
  double ss[8];
  const AnalysisStatus status = sumsOfSquares(y, n, factor, replicates, ss);
  if (status != FATHOM_OK) return status;

  int32_t degrees[8];
  for (int row = 0; row < E; ++row) degrees[row] = degreesOfFreedom(factor, kEffects<3>[row]);
  degrees[E] = n - n / replicates;
  double ms[8];
  for (int row = 0; row < 8; ++row) {
    ms[row] = ss[row] / degrees[row];
    putRow(table + 4 * row, ss[row], degrees[row], ms[row]);
  }

  const int model = (a < 0 ? 4 : 0) + (b < 0 ? 2 : 0) + (c < 0 ? 1 : 0);
  double* const p[] = {pA, pB, pC, pAB, pAC, pBC, pABC};
  for (int row = 0; row < E; ++row) {
    const ThreeFactorRow under = kDenominator[model][row];
    double ratio = -1.0;
    double lowerTail = 2.0;  // becomes the -1 that says there is no test
    if (under != None) {
      ratio = ms[row] / ms[under];
      F_Dist(ratio, degrees[row], degrees[under], &lowerTail);
    }
    table[4 * row + 3] = ratio;
    *p[row] = 1.0 - lowerTail;
  }
  table[4 * E + 3] = 0.0;
  return FATHOM_OK;
}
