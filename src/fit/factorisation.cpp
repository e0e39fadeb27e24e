// The six factorisations of a tall matrix, block of rows by block, and the solution of the
// augmented system with each.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "fathom.h"
#include "fit/least_squares.hpp"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "linalg/tile.hpp"

namespace fathom {
namespace {

constexpr double kNegligible = 0x1p-900;  // squares this small count as zero

// The sum of kPartial partial sums and more, pair by pair.
template <std::size_t count>
FATHOM_INLINE double folded(double (&partial)[count]) {
  for (std::size_t half = count / 2; half > 0; half /= 2) {
    for (std::size_t l = 0; l < half; ++l) partial[l] += partial[l + half];
  }
  return partial[0];
}

// sums[c] = the sum of x[i] y[c rows + i], over a multiple of kPartial rows.
template <std::size_t bytes, std::size_t count>
FATHOM_INLINE void dotsOf(const double* x, const double* y, std::size_t rows, double* sums) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kVectors = kPartial / kLanes;
  Lanes<bytes> partial[count][kVectors] = {};
  for (std::size_t i = 0; i < rows; i += kPartial) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < kVectors; ++v) {
      Lanes<bytes> xs, ys;
      load(xs, x + i + v * kLanes);
      FATHOM_UNROLL
      for (std::size_t c = 0; c < count; ++c) {
        load(ys, y + c * rows + i + v * kLanes);
        partial[c][v] = partial[c][v] + xs * ys;
      }
    }
  }
  for (std::size_t c = 0; c < count; ++c) {
    double parts[kPartial];
    for (std::size_t v = 0; v < kVectors; ++v) store(parts + v * kLanes, partial[c][v]);
    sums[c] = folded(parts);
  }
}

// One sum alone has four times as many parts, as each waits for its own last addition. With
// `subtracts`, y = y - factor z comes first.
template <std::size_t bytes, bool subtracts>
FATHOM_INLINE double dotOf(const double* x, std::conditional_t<subtracts, double*, const double*> y,
                           double factor, const double* z, std::size_t rows) {
  constexpr std::size_t kLanes = kLanesOf<bytes>, kVectors = kPartial / kLanes;
  constexpr std::size_t kChains = 4, kSpan = kChains * kPartial;
  Lanes<bytes> partial[kChains * kVectors] = {};
  const auto take = [&](std::size_t i, Lanes<bytes> & sum) __attribute__((always_inline)) {
    Lanes<bytes> xs, ys;
    load(xs, x + i);
    load(ys, y + i);
    if constexpr (subtracts) {
      Lanes<bytes> zs;
      load(zs, z + i);
      ys = ys - zs * factor;
      store(y + i, ys);
    }
    sum = sum + xs * ys;
  };
  std::size_t i = 0;
  for (; i + kSpan <= rows; i += kSpan) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < kChains * kVectors; ++v) take(i + v * kLanes, partial[v]);
  }
  for (; i < rows; i += kPartial) {
    FATHOM_UNROLL
    for (std::size_t v = 0; v < kVectors; ++v) take(i + v * kLanes, partial[v]);
  }
  double parts[kSpan];
  for (std::size_t v = 0; v < kChains * kVectors; ++v) store(parts + v * kLanes, partial[v]);
  return folded(parts);
}
template <std::size_t bytes>
FATHOM_INLINE double dotOf(const double* x, const double* y, std::size_t rows) {
  return dotOf<bytes, false>(x, y, 0.0, nullptr, rows);
}

template <std::size_t bytes>
FATHOM_INLINE void dotsIntoOf(const double* x, const double* y, std::size_t count, std::size_t rows,
                              double* sums) {
  std::size_t c = 0;
  for (; c + 4 <= count; c += 4) dotsOf<bytes, 4>(x, y + c * rows, rows, sums + c);
  for (; c < count; ++c) sums[c] = dotOf<bytes>(x, y + c * rows, rows);
}
FATHOM_BY_WIDTH(dotsInto,
                (const double* x, const double* y, std::size_t count, std::size_t rows,
                 double* sums),
                (x, y, count, rows, sums))

// y = y - factor x
FATHOM_INLINE void subtract(double* y, double factor, const double* x, std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) y[i] -= factor * x[i];
}

FATHOM_MULTIVERSION void subtractFrom(double* y, const double* factors, std::size_t count,
                                      const double* x, std::size_t rows) {
  for (std::size_t c = 0; c < count; ++c) subtract(y + c * rows, factors[c], x, rows);
}
FATHOM_MULTIVERSION void subtractAll(double* y, const double* factors, std::size_t count,
                                     const double* x, std::size_t rows) {
  for (std::size_t c = 0; c < count; ++c) subtract(y, factors[c], x + c * rows, rows);
}

// Reflects the rows of a block, column after column, into the triangle R above it.
template <std::size_t bytes>
FATHOM_INLINE void reflectBlockOf(double* q, std::size_t rows, std::size_t k, double* r,
                                  Reflection* reflections, double* sums) {
  for (std::size_t j = 0; j < k; ++j) {
    double *v = q + j * rows, *row = r + j * k;
    const double square = dotOf<bytes>(v, v, rows);
    if (square < kNegligible) {
      reflections[j] = {0.0, 0.0};
      continue;
    }
    const double alpha = row[j], norm = sqrt(alpha * alpha + square);
    const double beta = alpha > 0.0 ? -norm : norm;
    const double pivot = alpha - beta, gamma = -beta * pivot;
    reflections[j] = {pivot, gamma};
    row[j] = beta;
    const std::size_t rest = k - j - 1;
    dotsIntoOf<bytes>(v, v + rows, rest, rows, sums);
    for (std::size_t c = 0; c < rest; ++c) {
      const double factor = (pivot * row[j + 1 + c] + sums[c]) / gamma;
      row[j + 1 + c] -= factor * pivot;
      subtract(v + (1 + c) * rows, factor, v, rows);
    }
  }
}

FATHOM_BY_WIDTH(reflectBlock,
                (double* q, std::size_t rows, std::size_t k, double* r, Reflection* reflections,
                 double* sums),
                (q, rows, k, r, reflections, sums))

// Applies one block's reflections, in their order or from the last to the first, to the vector of
// `top`, which goes with R, and the block's rows of f.
template <std::size_t bytes>
FATHOM_INLINE void applyReflectionsOf(const double* q, std::size_t rows, std::size_t k,
                                      const Reflection* reflections, bool backwards, double* top,
                                      double* f) {
  const auto vectorAt = [=](std::size_t i) { return q + (backwards ? k - 1 - i : i) * rows; };
  double sum = dotOf<bytes>(vectorAt(0), f, rows);
  for (std::size_t i = 0; i < k; ++i) {
    const std::size_t j = backwards ? k - 1 - i : i;
    const auto [pivot, gamma] = reflections[j];
    const double factor = gamma == 0.0 ? 0.0 : (pivot * top[j] + sum) / gamma;
    top[j] -= factor * pivot;
    if (i + 1 == k) {
      subtract(f, factor, vectorAt(i), rows);
    } else {
      sum = dotOf<bytes, true>(vectorAt(i + 1), f, factor, vectorAt(i), rows);
    }
  }
}
FATHOM_BY_WIDTH(applyReflections,
                (const double* q, std::size_t rows, std::size_t k, const Reflection* reflections,
                 bool backwards, double* top, double* f),
                (q, rows, k, reflections, backwards, top, f))

// Givens rotations of pairs of rows x and z: sine and cosine go to where they are kept.
FATHOM_INLINE void rotationsOf(double* x, double* z, double* cosines, std::size_t count) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < count; ++i) {
    const double square = x[i] * x[i] + z[i] * z[i];
    const bool none = square < kNegligible;
    const double length = sqrt(square);
    cosines[i] = none ? 1.0 : x[i] / length;
    z[i] = none ? 0.0 : z[i] / length;
    x[i] = none ? x[i] : length;
  }
}
// The rows of a block are rotated into each other by halves, so that rotations run side by side.
constexpr std::size_t lowerHalf(std::size_t rows) {
  return rows - rows / 2;
}

FATHOM_MULTIVERSION void rotateBlock(double* q, std::size_t rows, std::size_t k, double* r,
                                     double* cosines) {
  for (std::size_t j = 0; j < k; ++j) {
    double *x = q + j * rows, *c = cosines + j * rows;
    for (std::size_t left = rows; left > 1;) {
      const std::size_t half = lowerHalf(left), count = left - half;
      rotationsOf(x, x + half, c + half, count);
      for (std::size_t other = 1; other < k - j; ++other) {
        double* y = x + other * rows;
        rotate(y, y + half, c + half, x + half, 1.0, count);
      }
      left = half;
    }
    double* row = r + j * k;
    rotationsOf(row + j, x, c, 1);
    for (std::size_t other = 1; other < k - j; ++other) {
      rotate(row + j + other, x + other * rows, c, x, 1.0, 1);
    }
  }
}

FATHOM_MULTIVERSION void applyRotations(const double* q, std::size_t rows, std::size_t k,
                                        const double* cosines, bool backwards, double* top,
                                        double* f) {
  for (std::size_t i = 0; i < k; ++i) {
    const std::size_t j = backwards ? k - 1 - i : i;
    const double *s = q + j * rows, *c = cosines + j * rows;
    std::size_t halves[64], stages = 0;
    for (std::size_t left = rows; left > 1; left = halves[stages++])
      halves[stages] = lowerHalf(left);
    const double sign = backwards ? -1.0 : 1.0;
    if (backwards) rotate(top + j, f, c, s, sign, 1);
    for (std::size_t stage = 0; stage < stages; ++stage) {
      const std::size_t at = backwards ? stages - 1 - stage : stage, half = halves[at];
      const std::size_t left = at == 0 ? rows : halves[at - 1];
      rotate(f, f + half, c + half, s + half, sign, left - half);
    }
    if (!backwards) rotate(top + j, f, c, s, sign, 1);
  }
}

// a = a scale, and q = a / deviations.
FATHOM_MULTIVERSION void scaleColumn(double* a, double* q, double scale, const double* deviations,
                                     std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) a[i] = a[i] * scale;
  if (deviations == nullptr) {
    std::copy_n(a, rows, q);
    return;
  }
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) q[i] = a[i] / deviations[i];
}

}  // namespace

void LeastSquares::prepare(std::size_t first, std::size_t rows) {
  for (std::size_t j = 0; j < k_; ++j) {
    const std::size_t column = first * k_ + j * rows;
    scaleColumn(a_ + column, q_ + column, scale_[j], deviationsFrom(first), rows);
  }
}

AnalysisStatus LeastSquares::factor() {
  rank_ = k_;
  std::fill_n(r_, k_ * k_, 0.0);
  switch (algorithm_) {
    case FATHOM_LS_GIVENS:
      forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
        prepare(first, rows);
        rotateBlock(q, rows, k_, r_, cosines_ + first * k_);
      });
      break;
    case FATHOM_LS_GRAM_SCHMIDT:
      orthonormalise();
      break;
    case FATHOM_LS_NORMAL_LU:
    case FATHOM_LS_NORMAL_CHOLESKY:
      return factorNormal();
    default:
      forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
        prepare(first, rows);
        reflectBlock(q, rows, k_, r_, reflections_ + first / blockRows_ * k_, sums_);
      });
  }
  if (algorithm_ == FATHOM_LS_SINGULAR_VALUES) return decompose();
  return isRegular(tolerance()) ? FATHOM_OK : FATHOM_ERR_SINGULAR;
}

bool LeastSquares::isRegular(double part) const {
  for (std::size_t j = 0; j < k_; ++j) {
    double sum = 0.0;
    for (std::size_t i = 0; i <= j; ++i) sum += r_[i * k_ + j] * r_[i * k_ + j];
    if (!(fabs(r_[j * k_ + j]) > part * sqrt(sum))) return false;
  }
  return true;
}

void LeastSquares::orthonormalise() {
  forBlocks(q_, false, [&](double*, std::size_t first, std::size_t rows) { prepare(first, rows); });
  for (std::size_t j = 0; j < k_; ++j) {
    double* row = r_ + j * k_;
    const auto sumsOfBlocks = [&](std::size_t from, std::size_t count) {
      std::fill_n(row + from, count, 0.0);
      forBlocks(q_, false, [&](double* q, std::size_t, std::size_t rows) {
        dotsInto(q + j * rows, q + from * rows, count, rows, sums_);
        for (std::size_t c = 0; c < count; ++c) row[from + c] += sums_[c];
      });
    };
    sumsOfBlocks(j, 1);
    row[j] = sqrt(row[j]);
    if (!(row[j] > 0.0)) return;
    const double inverse = 1.0 / row[j];
    forBlocks(q_, false, [&](double* q, std::size_t, std::size_t rows) {
      for (std::size_t i = 0; i < rows; ++i) q[j * rows + i] *= inverse;
    });
    sumsOfBlocks(j + 1, k_ - j - 1);
    forBlocks(q_, false, [&](double* q, std::size_t, std::size_t rows) {
      subtractFrom(q + (j + 1) * rows, row + j + 1, k_ - j - 1, q + j * rows, rows);
    });
  }
}

AnalysisStatus LeastSquares::decompose() {
  std::copy_n(r_, k_ * k_, root_);
  const auto side = static_cast<std::int32_t>(k_);
  const AnalysisStatus status = SVD(root_, side, side, u_, s_, v_);
  if (status != FATHOM_OK) return status;
  rank_ = 0;
  while (rank_ < k_ && s_[rank_] > tolerance() * s_[0]) ++rank_;
  return FATHOM_OK;
}

AnalysisStatus LeastSquares::factorNormal() {
  double* gram = u_;
  std::fill_n(gram, k_ * k_, 0.0);
  forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
    prepare(first, rows);
    for (std::size_t j = 0; j < k_; ++j) {
      dotsInto(q + j * rows, q + j * rows, k_ - j, rows, sums_);
      for (std::size_t c = j; c < k_; ++c) gram[j * k_ + c] += sums_[c - j];
    }
  });
  for (std::size_t j = 0; j < k_; ++j) {
    for (std::size_t c = 0; c < j; ++c) gram[j * k_ + c] = gram[c * k_ + j];
  }
  const auto side = static_cast<std::int32_t>(k_);
  if (algorithm_ == FATHOM_LS_NORMAL_LU) {
    std::copy_n(gram, k_ * k_, r_);
    std::int32_t parity;
    return LU(r_, side, pivots_.data(), &parity);
  }
  const AnalysisStatus status = Cholesky(gram, side, v_);
  if (status != FATHOM_OK) return status;
  for (std::size_t i = 0; i < k_; ++i) {
    for (std::size_t j = i; j < k_; ++j) r_[i * k_ + j] = v_[j * k_ + i];
  }
  return isRegular(sqrt(tolerance())) ? FATHOM_OK : FATHOM_ERR_SINGULAR;
}

void LeastSquares::solveFactor(double* x) {
  if (algorithm_ != FATHOM_LS_SINGULAR_VALUES) {
    for (std::size_t i = k_; i-- > 0;) {
      for (std::size_t j = i + 1; j < k_; ++j) x[i] -= r_[i * k_ + j] * x[j];
      x[i] /= r_[i * k_ + i];
    }
    return;
  }
  turn(u_, v_, x);
}

void LeastSquares::solveTransposed(double* x) {
  if (algorithm_ != FATHOM_LS_SINGULAR_VALUES) {
    for (std::size_t i = 0; i < k_; ++i) {
      x[i] /= r_[i * k_ + i];
      for (std::size_t j = i + 1; j < k_; ++j) x[j] -= r_[i * k_ + j] * x[i];
    }
    return;
  }
  turn(v_, u_, x);
}

void LeastSquares::turn(const double* from, const double* to, double* x) {
  for (std::size_t t = 0; t < rank_; ++t) {
    double sum = 0.0;
    for (std::size_t i = 0; i < k_; ++i) sum += from[i * k_ + t] * x[i];
    sums_[t] = sum / s_[t];
  }
  for (std::size_t i = 0; i < k_; ++i) {
    double sum = 0.0;
    for (std::size_t t = 0; t < rank_; ++t) sum += to[i * k_ + t] * sums_[t];
    x[i] = sum;
  }
}

void LeastSquares::applyFactor(bool backwards) {
  forBlocks(q_, backwards, [&](double* q, std::size_t first, std::size_t rows) {
    if (algorithm_ == FATHOM_LS_GIVENS) {
      applyRotations(q, rows, k_, cosines_ + first * k_, backwards, top_, f_ + first);
    } else {
      applyReflections(q, rows, k_, reflections_ + first / blockRows_ * k_, backwards, top_,
                       f_ + first);
    }
  });
}

void LeastSquares::correct() {
  if (algorithm_ == FATHOM_LS_NORMAL_LU || algorithm_ == FATHOM_LS_NORMAL_CHOLESKY) {
    columnSums(dx_);
    for (std::size_t j = 0; j < k_; ++j) dx_[j] -= g_[j];
    if (algorithm_ == FATHOM_LS_NORMAL_LU) {
      const auto side = static_cast<std::int32_t>(k_);
      ForwSub(r_, dx_, side, top_, pivots_.data());
      BackSub(r_, top_, side, dx_);
    } else {
      solveTransposed(dx_);
      solveFactor(dx_);
    }
    forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
      subtractAll(f_ + first, dx_, k_, q, rows);
    });
    return;
  }
  std::copy_n(g_, k_, h_);
  solveTransposed(h_);
  if (algorithm_ == FATHOM_LS_GRAM_SCHMIDT) {
    for (std::size_t j = 0; j < k_; ++j) top_[j] = projected(j, 0.0);
    for (std::size_t j = 0; j < k_; ++j) dx_[j] = top_[j] - h_[j];
    for (std::size_t j = k_; j-- > 0;) projected(j, h_[j]);
  } else {
    std::fill_n(top_, k_, 0.0);
    applyFactor(false);
    for (std::size_t j = 0; j < k_; ++j) dx_[j] = top_[j] - h_[j];
    std::copy_n(h_, k_, top_);
    applyFactor(true);
  }
  solveFactor(dx_);
}

double LeastSquares::projected(std::size_t j, double kept) {
  double dot = 0.0;
  forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
    dotsInto(f_ + first, q + j * rows, 1, rows, sums_);
    dot += sums_[0];
  });
  const double factor = dot - kept;
  forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
    subtractAll(f_ + first, &factor, 1, q + j * rows, rows);
  });
  return dot;
}

void LeastSquares::columnSums(double* sums) {
  std::fill_n(sums, k_, 0.0);
  forBlocks(q_, false, [&](double* q, std::size_t first, std::size_t rows) {
    dotsInto(f_ + first, q, k_, rows, sums_);
    for (std::size_t j = 0; j < k_; ++j) sums[j] += sums_[j];
  });
}

AnalysisStatus LeastSquares::invert() {
  if (algorithm_ == FATHOM_LS_NORMAL_LU) {
    return InvMatrix(u_, static_cast<std::int32_t>(k_), root_);
  }
  for (std::size_t t = 0; t < rank_; ++t) {
    for (std::size_t i = 0; i < k_; ++i) h_[i] = i == t ? 1.0 : 0.0;
    if (algorithm_ == FATHOM_LS_SINGULAR_VALUES) {
      for (std::size_t i = 0; i < k_; ++i) h_[i] = v_[i * k_ + t] / s_[t];
    } else {
      solveFactor(h_);
    }
    if (rank_ < k_) shorten(h_);
    for (std::size_t i = 0; i < k_; ++i) root_[i * k_ + t] = h_[i];
  }
  return FATHOM_OK;
}

}  // namespace fathom
