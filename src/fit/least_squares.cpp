// General least squares, weighted or not, with iterative refinement of what a factorisation gives.
//
// Refinement is that of the augmented system r + A x = b, A^T r = 0 for the residuals r and the
// solution x together (A. Bjoerck, "Iterative refinement of linear least squares solutions I", BIT,
// 1967). What is left over of both equations is summed in twice the precision (T. Ogita,
// S. M. Rump, S. Oishi, "Accurate sum and dot product", SIAM Journal on Scientific Computing,
// 2005).
#include "fit/least_squares.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "elementary/double_double.hpp"
#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/lanes.hpp"
#include "frame/multiversion.hpp"
#include "linalg/tile.hpp"

namespace fathom {
namespace {

constexpr std::size_t kBlockDoubles = 3072;
constexpr int kIterations = 10;
// Coefficients of what is nearly orthogonal to all columns are as small as their corrections.
constexpr double kUnsolved = 0x1p-20;
// The smallest element of a null vector that is divided by.
constexpr double kLead = 0x1p-20;

// The largest deviation, in units of the smallest: with more, a point counts no less.
constexpr double kFar = 0x1p300;

// The leading power of two of x > 0; 1 where there is none that serves as a scale.
double scaleOf(double x) {
  if (!(x > 0.0) || !(x <= 0x1.fffffffffffffp1023)) return 1.0;
  const double power = std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) & 0x7FF0000000000000u);
  return power > 0x1p-1022 ? power : 0x1p-1022;
}

// For a block of A: sum + low = sum + low - A x, and the partial sums of A^T (q + qLow), each with
// twice the precision. x is given by the parts of its elements' negatives.
FATHOM_MULTIVERSION void accurateProducts(const double* a, std::size_t rows, std::size_t k,
                                          const double* minusX, const double* q, const double* qLow,
                                          double* sum, double* low, double* g, double* gLow) {
  for (std::size_t i = 0; i < rows; i += kPartial) {
    double s[kPartial], c[kPartial], weight[kPartial], high[kPartial], tail[kPartial];
    for (std::size_t l = 0; l < kPartial; ++l) {
      s[l] = sum[i + l];
      c[l] = low[i + l];
      weight[l] = q[i + l];
      high[l] = split(weight[l]).high;
      tail[l] = split(weight[l]).low;
    }
    for (std::size_t j = 0; j < k; ++j) {
      const double x = minusX[j];
      const DoubleDouble xParts = split(x);
      FATHOM_INDEPENDENT
      for (std::size_t l = 0; l < kPartial; ++l) {
        const double element = a[j * rows + i + l];
        const DoubleDouble parts = split(element);
        const DoubleDouble p = twoProduct(element, parts, x, xParts);
        const DoubleDouble t = twoSum(s[l], p.high);
        s[l] = t.high;
        c[l] += p.low + t.low;
        const DoubleDouble w = twoProduct(element, parts, weight[l], {high[l], tail[l]});
        const DoubleDouble u = twoSum(g[j * kPartial + l], w.high);
        g[j * kPartial + l] = u.high;
        gLow[j * kPartial + l] += (w.low + u.low) + element * qLow[i + l];
      }
    }
    for (std::size_t l = 0; l < kPartial; ++l) {
      sum[i + l] = s[l];
      low[i + l] = c[l];
    }
  }
}

// Copies rows of `h` to a block, column after column.
template <std::size_t bytes>
FATHOM_INLINE void gatherBlockOf(const double* h, std::size_t rows, std::size_t filled,
                                 std::size_t k, double* a) {
  constexpr std::size_t kLanes = kLanesOf<bytes>;
  std::size_t i = 0;
  for (; i + kLanes <= filled; i += kLanes) {
    std::size_t j = 0;
    for (; j + kLanes <= k; j += kLanes) {
      transposeSquare<bytes, 1>(h + i * k + j, k, a + j * rows + i, rows);
    }
    for (; j < k; ++j) {
      for (std::size_t l = 0; l < kLanes; ++l) a[j * rows + i + l] = h[(i + l) * k + j];
    }
  }
  for (; i < rows; ++i) {
    for (std::size_t j = 0; j < k; ++j) a[j * rows + i] = i < filled ? h[i * k + j] : 0.0;
  }
}
FATHOM_BY_WIDTH(gatherBlock,
                (const double* h, std::size_t rows, std::size_t filled, std::size_t k, double* a),
                (h, rows, filled, k, a))

// The largest magnitude of x / deviations and `largest`, by the bits, which order magnitudes.
FATHOM_MULTIVERSION double largestOf(const double* x, const double* deviations, std::size_t rows,
                                     double largest) {
  constexpr std::int64_t kMagnitude = INT64_MAX;
  std::int64_t partial[kPartial];
  for (std::int64_t& size : partial) size = std::bit_cast<std::int64_t>(largest);
  for (std::size_t i = 0; i < rows; i += kPartial) {
    double values[kPartial];
    for (std::size_t l = 0; l < kPartial; ++l) values[l] = x[i + l];
    if (deviations != nullptr) {
      for (std::size_t l = 0; l < kPartial; ++l) values[l] /= deviations[i + l];
    }
    for (std::size_t l = 0; l < kPartial; ++l) {
      const std::int64_t size = std::bit_cast<std::int64_t>(values[l]) & kMagnitude;
      partial[l] = size > partial[l] ? size : partial[l];
    }
  }
  return std::bit_cast<double>(*std::max_element(partial, partial + kPartial));
}

DoubleDouble quotient(DoubleDouble a, double b) {
  const double high = a.high / b;
  const DoubleDouble product = twoProduct(high, b);
  return {high, ((a.high - product.high) - product.low + a.low) / b};
}

// high + low = (high + low) / deviations
FATHOM_MULTIVERSION void divideAll(double* high, double* low, const double* deviations,
                                   std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) {
    const DoubleDouble q = quotient({high[i], low[i]}, deviations[i]);
    high[i] = q.high;
    low[i] = q.low;
  }
}

// high + low = high + low + x
FATHOM_MULTIVERSION void addAll(double* high, double* low, const double* x, std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) {
    const DoubleDouble sum = DoubleDouble{high[i], low[i]} + x[i];
    high[i] = sum.high;
    low[i] = sum.low;
  }
}

// f = f + fLow - x - xLow
FATHOM_MULTIVERSION void differences(double* f, const double* fLow, const double* x,
                                     const double* xLow, std::size_t rows) {
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < rows; ++i) {
    const DoubleDouble left = DoubleDouble{f[i], fLow[i]} + -x[i];
    f[i] = left.high + (left.low - xLow[i]);
  }
}

AnalysisStatus check(std::int32_t n, std::int32_t k, std::int32_t algorithm,
                     const double* deviations) {
  if (n < 1 || k < 1) return FATHOM_ERR_NO_SAMPLES;
  if (k > n) return FATHOM_ERR_ARRAY_SIZE;
  if (algorithm < FATHOM_LS_SINGULAR_VALUES || algorithm > FATHOM_LS_NORMAL_CHOLESKY) {
    return FATHOM_ERR_SELECTION;
  }
  for (std::int32_t i = 0; i < n && deviations != nullptr; ++i) {
    if (!(deviations[i] > 0.0)) return FATHOM_ERR_SELECTION;
  }
  return FATHOM_OK;
}

}  // namespace

LeastSquares::LeastSquares(const double* h, std::int32_t n, std::int32_t k, const double* y,
                           const double* deviations, std::int32_t algorithm)
    : points_(static_cast<std::size_t>(n)),
      k_(static_cast<std::size_t>(k)),
      blockRows_(
          std::clamp(kBlockDoubles / k_ / kPartial * kPartial, 2 * kPartial, std::size_t{512})),
      rows_((points_ + kPartial - 1) / kPartial * kPartial),
      blocks_((rows_ + blockRows_ - 1) / blockRows_),
      weighted_(deviations != nullptr),
      algorithm_(algorithm),
      memory_(request()),
      pivots_(k_) {
  if (!memory_ || !pivots_) return;
  double* next = memory_.data();
  const auto take = [&next](std::size_t count) {
    double* taken = next;
    next += count;
    return taken;
  };
  const std::size_t cells = rows_ * k_;
  a_ = take(cells);
  q_ = take(cells);
  cosines_ = algorithm == FATHOM_LS_GIVENS ? take(cells) : nullptr;
  for (double** column :
       {&b_, &deviations_, &residual_, &residualLow_, &f_, &low_, &weight_, &weightLow_}) {
    *column = take(rows_);
  }
  for (double** square : {&r_, &u_, &v_, &root_}) *square = take(k_ * k_);
  for (double** row : {&scale_, &s_, &x_, &dx_, &g_, &top_, &h_, &sums_}) *row = take(k_);
  partial_ = take(2 * kPartial * k_);
  reflections_ = reinterpret_cast<Reflection*>(take(2 * blocks_ * k_));
  load(h, y, deviations);
}

AnalysisStatus LeastSquares::solve() {
  const AnalysisStatus status = factor();
  if (status != FATHOM_OK) return status;
  if (rank_ == k_) return refine();
  solveDeficient();
  return FATHOM_OK;
}

void LeastSquares::coefficients(double* c) const {
  for (std::size_t j = 0; j < k_; ++j) c[j] = x_[j] * unit_ * scale_[j];
}

void LeastSquares::fitted(const double* y, double* fitted) const {
  for (std::size_t i = 0; i < points_; ++i) {
    fitted[i] = y[i] - residual_[i] * deviations_[i] * unit_;
  }
}

double LeastSquares::sumOfSquares() const {
  const double unit = unit_ / deviationUnit_;
  double sum = 0.0;
  for (std::size_t i = 0; i < points_; ++i) {
    const double x = residual_[i] * unit;
    sum += x * x;
  }
  return sum;
}

void LeastSquares::covariance(double factor, double* c) const {
  for (std::size_t i = 0; i < k_; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = 0.0;
      if (algorithm_ == FATHOM_LS_NORMAL_LU) {
        sum = root_[i * k_ + j];
      } else {
        for (std::size_t t = 0; t < rank_; ++t) sum += root_[i * k_ + t] * root_[j * k_ + t];
      }
      sum = sum * deviationUnit_ * scale_[i] * (deviationUnit_ * scale_[j]) * factor;
      c[i * k_ + j] = c[j * k_ + i] = sum;
    }
  }
}

std::size_t LeastSquares::request() const {
  // k is no larger than n; where their product is no size, neither are the rest.
  const std::uint64_t rows = rows_, k = k_, limit = PTRDIFF_MAX / 64;
  if (rows > limit / k) return SIZE_MAX;
  const std::uint64_t cells = rows * k * (algorithm_ == FATHOM_LS_GIVENS ? 3 : 2) + 8 * rows +
                              4 * k * k + (8 + 2 * kPartial) * k + 2 * blocks_ * k;
  return cells <= PTRDIFF_MAX / sizeof(double) ? static_cast<std::size_t>(cells) : SIZE_MAX;
}

void LeastSquares::load(const double* h, const double* y, const double* deviations) {
  std::fill_n(deviations_, rows_, 1.0);
  if (weighted_) {
    double smallest = deviations[0];
    for (std::size_t i = 1; i < points_; ++i) smallest = std::min(smallest, deviations[i]);
    deviationUnit_ = scaleOf(smallest);
    for (std::size_t i = 0; i < points_; ++i)
      deviations_[i] = std::min(deviations[i] / deviationUnit_, kFar);
  }
  std::fill_n(scale_, k_, 0.0);
  forBlocks(a_, false, [&](double* a, std::size_t first, std::size_t rows) {
    gatherBlock(h + first * k_, rows, std::min(rows, points_ - first), k_, a);
    for (std::size_t j = 0; j < k_; ++j) {
      scale_[j] = largestOf(a + j * rows, deviationsFrom(first), rows, scale_[j]);
    }
  });
  for (std::size_t j = 0; j < k_; ++j) scale_[j] = 1.0 / scaleOf(scale_[j]);
  std::copy_n(y, points_, b_);
  std::fill(b_ + points_, b_ + rows_, 0.0);
  unit_ = scaleOf(largestOf(b_, deviationsFrom(0), rows_, 0.0));
  const double factor = 1.0 / unit_;
  for (std::size_t i = 0; i < rows_; ++i) {
    b_[i] *= factor;
    f_[i] = b_[i] / deviations_[i];
  }
}

void LeastSquares::leftOver() {
  const double *weight = residual_, *weightLow = residualLow_;
  if (weighted_) {
    std::copy_n(residual_, rows_, weight_);
    std::copy_n(residualLow_, rows_, weightLow_);
    divideAll(weight_, weightLow_, deviations_, rows_);
    weight = weight_;
    weightLow = weightLow_;
  }
  std::copy_n(b_, rows_, f_);
  std::fill_n(low_, rows_, 0.0);
  for (std::size_t j = 0; j < k_; ++j) dx_[j] = -x_[j];
  std::fill_n(partial_, 2 * kPartial * k_, 0.0);
  double* partialLow = partial_ + kPartial * k_;
  forBlocks(a_, false, [&](double* a, std::size_t first, std::size_t rows) {
    accurateProducts(a, rows, k_, dx_, weight + first, weightLow + first, f_ + first, low_ + first,
                     partial_, partialLow);
  });
  for (std::size_t j = 0; j < k_; ++j) {
    DoubleDouble sum = {0.0, 0.0};
    for (std::size_t l = 0; l < kPartial; ++l) {
      sum = sum + DoubleDouble{partial_[j * kPartial + l], partialLow[j * kPartial + l]};
    }
    g_[j] = -(sum.high + sum.low);
  }
  if (weighted_) divideAll(f_, low_, deviations_, rows_);
  differences(f_, low_, residual_, residualLow_, rows_);
}

AnalysisStatus LeastSquares::refine() {
  std::fill_n(g_, k_, 0.0);
  std::fill_n(x_, k_, 0.0);
  std::fill_n(residual_, rows_, 0.0);
  std::fill_n(residualLow_, rows_, 0.0);
  double before = 2.0;  // the last correction, in units of the largest coefficient
  for (int pass = 0; pass < kIterations; ++pass) {
    if (pass > 0) leftOver();
    correct();
    double correction = 0.0, largest = 0.0;
    for (std::size_t j = 0; j < k_; ++j) {
      correction = std::max(correction, fabs(dx_[j]));
      largest = std::max(largest, fabs(x_[j] + dx_[j]));
    }
    const bool grows = correction > kUnsolved && correction >= 0.5 * largest;
    if (pass == 1 && grows && algorithm_ != FATHOM_LS_SINGULAR_VALUES) return FATHOM_ERR_SINGULAR;
    correction /= largest;
    if (pass > 0 && !(correction < 0.5 * before)) break;
    for (std::size_t j = 0; j < k_; ++j) x_[j] += dx_[j];
    addAll(residual_, residualLow_, f_, rows_);
    if (pass == 0) continue;
    // The next correction would be smaller by the rate of the last two, of which the first is
    // guessed, with room to spare, from the first correction alone.
    const double rate = pass == 1 ? 0x1p10 * correction : correction / before;
    double smallest = largest;
    for (std::size_t j = 0; j < k_; ++j) smallest = std::min(smallest, fabs(x_[j]));
    smallest = std::max(smallest, 0x1p-30 * largest);
    if (rate * correction * largest <= 0x1p-55 * smallest) break;
    before = correction;
  }
  return FATHOM_OK;
}

void LeastSquares::solveDeficient() {
  std::fill_n(top_, k_, 0.0);
  applyFactor(false);
  std::copy_n(top_, k_, x_);
  solveFactor(x_);
  makeNullSpace();
  shorten(x_);
  std::fill_n(residual_, rows_, 0.0);
  std::fill_n(residualLow_, rows_, 0.0);
  leftOver();
  std::copy_n(f_, rows_, residual_);
}

void LeastSquares::makeNullSpace() {
  std::copy_n(scale_, k_, h_);
  largestScale_ = *std::max_element(scale_, scale_ + k_);
  for (std::size_t t = rank_; t < k_; ++t) pivots_[t] = -1;
  std::size_t next = rank_;
  for (std::size_t step = 0; step < k_ && next < k_; ++step) {
    const auto row = static_cast<std::size_t>(std::max_element(h_, h_ + k_) - h_);
    h_[row] = 0.0;
    for (std::size_t t = next + 1; t < k_; ++t) {
      const double x = nullVector(row, next), z = nullVector(row, t);
      const double length = sqrt(x * x + z * z);
      if (length == 0.0) continue;
      const double cosine = x / length, sine = z / length;
      for (std::size_t i = 0; i < k_; ++i) {
        rotate(&nullVector(i, next), &nullVector(i, t), &cosine, &sine, 1.0, 1);
      }
      nullVector(row, t) = 0.0;
    }
    if (fabs(nullVector(row, next)) > kLead) {
      pivots_[next++] = static_cast<std::int32_t>(row);
    } else if (fabs(nullVector(row, next)) <= tolerance()) {
      nullVector(row, next) = 0.0;
    }
  }
  for (std::size_t t = rank_; t < k_; ++t) {
    double largest = 0.0;
    for (std::size_t i = 0; i < k_; ++i) {
      basis(i, t) = nullVector(i, t) * (scale_[i] / largestScale_);
      largest = std::max(largest, fabs(basis(i, t)));
    }
    const double unit = 1.0 / scaleOf(largest);
    for (std::size_t i = 0; i < k_; ++i) basis(i, t) *= unit;
    for (int pass = 0; pass < 2; ++pass) {
      for (std::size_t e = rank_; e < t; ++e) dropComponent(&basis(0, t), k_, e);
    }
    double square = 0.0;
    for (std::size_t i = 0; i < k_; ++i) square += basis(i, t) * basis(i, t);
    // What rounding left of a direction is none.
    const double inverse = square > 0x1p-80 ? 1.0 / sqrt(square) : 0.0;
    for (std::size_t i = 0; i < k_; ++i) basis(i, t) *= inverse;
  }
}

void LeastSquares::dropComponent(double* x, std::size_t stride, std::size_t t) {
  double sum = 0.0;
  for (std::size_t i = 0; i < k_; ++i) sum += basis(i, t) * x[i * stride];
  for (std::size_t i = 0; i < k_; ++i) x[i * stride] -= sum * basis(i, t);
}

void LeastSquares::shorten(double* x) {
  for (std::size_t t = rank_; t < k_; ++t) {
    if (pivots_[t] < 0) continue;
    const auto lead = static_cast<std::size_t>(pivots_[t]);
    const double factor = x[lead] / nullVector(lead, t);
    for (std::size_t i = 0; i < k_; ++i) x[i] -= factor * nullVector(i, t);
    x[lead] = 0.0;
  }
  for (std::size_t i = 0; i < k_; ++i) x[i] *= scale_[i] / largestScale_;
  for (int pass = 0; pass < 2; ++pass) {
    for (std::size_t t = rank_; t < k_; ++t) dropComponent(x, 1, t);
  }
  for (std::size_t i = 0; i < k_; ++i) x[i] /= scale_[i] / largestScale_;
}

}  // namespace fathom

AnalysisStatus GenLSFit(const double* h, int32_t n, int32_t k, const double* y,
                        const double* standardDeviations, int32_t algorithm, double* fitted,
                        double* coefficients, double* covariance, double* meanSquaredError) {
  AnalysisStatus status = fathom::check(n, k, algorithm, standardDeviations);
  if (status != FATHOM_OK) return status;
  fathom::LeastSquares fit(h, n, k, y, standardDeviations, algorithm);
  if (!fit) return FATHOM_ERR_MEMORY;
  status = fit.solve();
  if (status == FATHOM_OK && covariance != nullptr) status = fit.invert();
  if (status != FATHOM_OK) return status;
  fit.coefficients(coefficients);
  fit.fitted(y, fitted);
  const double squares = fit.sumOfSquares();
  *meanSquaredError = squares / n;
  if (covariance != nullptr) {
    const bool scales = standardDeviations == nullptr && n > k;
    fit.covariance(scales ? squares / (n - k) : 1.0, covariance);
  }
  return FATHOM_OK;
}

AnalysisStatus GenLSFitCoef(const double* h, int32_t n, int32_t k, const double* y,
                            int32_t algorithm, double* coefficients) {
  AnalysisStatus status = fathom::check(n, k, algorithm, nullptr);
  if (status != FATHOM_OK) return status;
  fathom::LeastSquares fit(h, n, k, y, nullptr, algorithm);
  if (!fit) return FATHOM_ERR_MEMORY;
  status = fit.solve();
  if (status == FATHOM_OK) fit.coefficients(coefficients);
  return status;
}
