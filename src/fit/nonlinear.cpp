// Fits of models that are not linear in their coefficients.
//
// The method is that of Levenberg and Marquardt as a trust region, with the coefficients in which
// the model is linear eliminated: they are solved for anew at every step of the others.
// - K. Levenberg, "A method for the solution of certain non-linear problems in least squares",
//   Quarterly of Applied Mathematics, 1944
// - D. W. Marquardt, "An algorithm for least-squares estimation of nonlinear parameters", Journal
// of
//   the Society for Industrial and Applied Mathematics, 1963
// - J. J. More, "The Levenberg-Marquardt algorithm: implementation and theory", Numerical Analysis,
//   Lecture Notes in Mathematics 630, 1978
// - G. H. Golub, V. Pereyra, "The differentiation of pseudo-inverses and nonlinear least squares
//   problems whose variables separate", SIAM Journal on Numerical Analysis, 1973; L. Kaufman, "A
//   variable projection method for solving separable nonlinear least squares problems", BIT, 1975
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include "array/matrix_size.hpp"
#include "fathom.h"
#include "fit/damped_least_squares.hpp"
#include "frame/elementary.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"
#include "linalg/element.hpp"
#include "linalg/householder.hpp"

namespace fathom {
namespace {

constexpr std::int32_t kDefaultIterations = 100;
// Where truncation and rounding of a central difference balance: the cube root of 2^-52, or so.
constexpr double kDifference = 0x1p-17;
// What then is lost of a derivative's digits, and what a dependence among them looks like.
constexpr double kDerivativeError = 0x1p-30;
// First radii of the trust region, in lengths of the coefficients: what a fit that stalls tries
// after another.
constexpr double kRadii[] = {0.3, 3.0, 0.1, 1.0};
// A step that promises to shorten the residual by less than this is the last.
constexpr double kConverged = 1e-9;

// The root of the sum of squares, each taken relative to the largest; not finite where x is not.
double norm(const double* x, std::size_t n) {
  double largest = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const double size = fabs(x[i]);
    if (size > largest || isNan(size)) largest = size;
  }
  if (largest == 0.0 || !isFinite(largest)) return largest;
  double sum = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const double ratio = x[i] / largest;
    sum += ratio * ratio;
  }
  return largest * sqrt(sum);
}

// Brings the first columns of A to a triangle by reflections, which take the place of what they
// annihilate, and applies them to the other columns.
void triangulate(MatrixBlock<double> a, std::size_t columns, double* tau, double* vector,
                 double* sums) {
  for (std::size_t j = 0; j < columns; ++j) {
    for (std::size_t i = j; i < a.rows; ++i) vector[i - j] = a.row(i)[j];
    const Reflector<double> h = reflector(vector[0], vector + 1, a.rows - j - 1);
    tau[j] = h.tau;
    a.row(j)[j] = h.beta;
    for (std::size_t i = j + 1; i < a.rows; ++i) a.row(i)[j] = vector[i - j];
    if (h.tau != 0.0 && j + 1 < a.columns) reflectLeft(a.from(j, j + 1), vector, h.tau, sums);
  }
}

// Applies the reflections that stand in the first columns of A to its columns from `first` on.
void reflectRest(MatrixBlock<double> a, std::size_t columns, const double* tau, double* vector,
                 double* sums) {
  for (std::size_t j = 0; j < columns; ++j) {
    if (tau[j] == 0.0) continue;
    vector[0] = 1.0;
    for (std::size_t i = j + 1; i < a.rows; ++i) vector[i - j] = a.row(i)[j];
    reflectLeft(a.from(j, columns), vector, tau[j], sums);
  }
}

struct Problem {
  const double* x;
  const double* y;
  std::size_t n;
  FathomModel model;
  std::size_t k;

  double at(std::size_t i, const double* c) const {
    return model(x[i], c, static_cast<std::int32_t>(k));
  }
};

class Fit {
 public:
  // Elements of the workspace. With n k below PTRDIFF_MAX / 64 the count does not overflow.
  static std::uint64_t room(const Problem& p) {
    return std::uint64_t{p.n} * (p.k + 1) + 7 * std::uint64_t{p.n} + 4 * std::uint64_t{p.k} * p.k +
           21 * (std::uint64_t{p.k} + 1);
  }

  Fit(const Problem& problem, double* space, std::size_t* order)
      : p_(problem), space_(space), order_(order) {}

  // False where the start has no residuals.
  bool start(const double* c) {
    yNorm_ = norm(p_.y, p_.n);
    std::copy_n(c, p_.k, start_);
    std::copy_n(c, p_.k, now_.c);
    std::fill_n(ratio_, p_.k, kDifference);
    std::fill_n(slope_, p_.k, 0.0);
    for (std::size_t j = 0; j < p_.k; ++j) {
      order_[j] = j;
      largest_[j] = fabs(c[j]);
    }
    return evaluate(now_);
  }

  // True where the best point is a solution.
  bool run(std::int32_t maxIterations) {
    left_ = maxIterations;
    bool solved = false;
    for (std::size_t attempt = 0; attempt < std::size(kRadii); ++attempt) {
      if (attempt > 0) {
        std::copy_n(start_, p_.k, next_.c);
        if (!complete(next_)) break;
        std::swap(now_, next_);
      }
      const Outcome outcome = descend(kRadii[attempt]);
      const bool good = outcome == kSolved || outcome == kVanished;
      if (attempt == 0 || now_.size < best_.size * (good && !solved ? 1.0 + 1e-6 : 1.0)) {
        std::swap(now_, best_);
        solved = good;
      }
      if (outcome == kSolved || outcome == kExhausted) break;
    }
    return solved;
  }

  const double* coefficients() const { return best_.c; }
  const double* fitted() const { return best_.f; }

 private:
  enum Outcome { kSolved, kVanished, kStalled, kExhausted };

  struct Point {
    double *c, *f, *r;
    double size;  // |r|
  };

  double* take(std::size_t count) {
    double* taken = space_;
    space_ += count;
    return taken;
  }
  Point takePoint() { return {take(p_.k), take(p_.n), take(p_.n), 0.0}; }

  // Fit and residuals. False where one of the coefficients or values is not finite; then it has no
  // size.
  bool evaluate(Point& at) const {
    at.size = std::numeric_limits<double>::infinity();
    if (!values(at.c, at.f)) return false;
    for (std::size_t i = 0; i < p_.n; ++i) at.r[i] = p_.y[i] - at.f[i];
    at.size = norm(at.r, p_.n);
    return isFinite(at.size);
  }
  bool values(const double* c, double* f) const {
    if (!std::all_of(c, c + p_.k, isFinite)) return false;
    for (std::size_t i = 0; i < p_.n; ++i) {
      f[i] = p_.at(i, c);
      if (!isFinite(f[i])) return false;
    }
    return true;
  }

  // The derivatives by coefficient j, in a column of the matrix. True where rounding hides any
  // bend.
  bool differentiate(std::size_t j, std::size_t column) {
    const std::size_t n = p_.n;
    double total = 0.0, peak = 0.0;
    for (std::size_t i = 0; i < n; ++i) {
      total += fabs(now_.f[i]);
      peak = std::max(peak, fabs(now_.f[i]));
    }
    // A coefficient that comes near zero keeps a step that the model can tell from none.
    double unit = fabs(now_.c[j]);
    largest_[j] = std::max(largest_[j], unit);
    if (slope_[j] > 0.0) {
      unit = std::max(unit, std::min(largest_[j], peak / slope_[j] / 16.0));
    }
    if (!(unit > 0x1p-1000)) unit = 1.0;
    for (int tries = 0;; ++tries) {
      const double h = ratio_[j] * unit;
      std::copy_n(now_.c, p_.k, at_);
      const double up = at_[j] = now_.c[j] + h;
      for (std::size_t i = 0; i < n; ++i) vector_[i] = p_.at(i, at_);
      const double down = at_[j] = now_.c[j] - h;
      double slope = 0.0, bend = 0.0;
      bool straight = true;
      for (std::size_t i = 0; i < n; ++i) {
        const double above = vector_[i], below = p_.at(i, at_), here = now_.f[i];
        double derivative = (above - below) / (up - down);
        if (isFinite(above) && isFinite(below)) {
          const double second = (above - here) - (here - below);
          slope += fabs(above - below);
          bend += fabs(second);
          if (fabs(second) > 8.0 * kEpsilon * peak) straight = false;
        } else {
          straight = false;
          derivative = isFinite(below) ? (here - below) / (now_.c[j] - down)
                                       : (above - here) / (up - now_.c[j]);
        }
        row(i)[column] = isFinite(derivative) ? derivative : 0.0;
      }
      // Too long a step for the model's bends.
      if (tries < 4 && bend > 0x1p-7 * slope && bend > 0x1p-40 * total) {
        ratio_[j] *= 0x1p-10;
        continue;
      }
      slope_[j] = columnNorm(column);
      return straight;
    }
  }

  double* row(std::size_t i) const { return matrix_ + i * (p_.k + 1); }
  MatrixBlock<double> block(std::size_t i, std::size_t j, std::size_t columns) const {
    return {row(i) + j, p_.k + 1, p_.n - i, columns};
  }
  double columnNorm(std::size_t column) {
    for (std::size_t i = 0; i < p_.n; ++i) vector_[i] = row(i)[column];
    return norm(vector_, p_.n);
  }
  void divideColumn(std::size_t column, double divisor) const {
    if (divisor == 0.0) return;
    for (std::size_t i = 0; i < p_.n; ++i) row(i)[column] /= divisor;
  }

  // Whether the model is linear in the first `count` of order_ together: a long step in all of them
  // does what their derivatives say.
  bool linearTogether(std::size_t count) {
    std::copy_n(now_.c, p_.k, at_);
    for (std::size_t j = 0; j < count; ++j) {
      const std::size_t o = order_[j];
      at_[o] += at_[o] != 0.0 ? 0.5 * at_[o] : longStep(o);
    }
    if (!values(at_, vector_)) return false;
    double largest = 0.0, error = 0.0;
    for (std::size_t i = 0; i < p_.n; ++i) {
      double expected = now_.f[i];
      largest = std::max(largest, fabs(expected));
      for (std::size_t j = 0; j < count; ++j) {
        const double change = row(i)[order_[j]] * (at_[order_[j]] - now_.c[order_[j]]);
        largest = std::max(largest, fabs(change));
        expected += change;
      }
      error = std::max(error, fabs(vector_[i] - expected));
    }
    return error <= 1e-8 * largest;
  }
  // A step in a coefficient that changes the fit by about what there is to fit.
  double longStep(std::size_t j) const {
    const double step = yNorm_ / slope_[j];
    return slope_[j] > 0.0 && yNorm_ > 0.0 && isFinite(step) ? step : 1.0;
  }

  // Puts first those coefficients in which the model is linear.
  void separate() {
    for (std::size_t j = 0; j < p_.k; ++j) {
      if (differentiate(j, j)) order_[linear_++] = j;
    }
    const std::size_t candidates = linear_;
    if (candidates > 0 && !linearTogether(candidates)) {
      linear_ = 0;
      for (std::size_t j = 0; j < candidates; ++j) {
        std::swap(order_[linear_], order_[j]);
        if (linearTogether(linear_ + 1)) ++linear_;
      }
    }
    std::fill_n(u_, p_.k, 0.0);
    for (std::size_t j = 0; j < linear_; ++j) u_[order_[j]] = 1.0;
    std::size_t first = 0, second = linear_;
    for (std::size_t j = 0; j < p_.k; ++j) order_[u_[j] == 1.0 ? first++ : second++] = j;
    derived_ = linear_ == 0;
    if (linear_ == 0) return;
    std::copy_n(now_.c, p_.k, next_.c);
    if (complete(next_) && next_.size <= now_.size * (1.0 + 1e-9)) {
      std::swap(now_, next_);
    } else {
      join();
    }
  }

  // Gives the elimination up.
  void join() {
    linear_ = 0;
    for (std::size_t j = 0; j < p_.k; ++j) order_[j] = j;
    derived_ = false;
  }

  // Evaluates a point after its linear coefficients have been solved for. The reflections of their
  // columns are left in the matrix.
  bool complete(Point& at) {
    if (!evaluate(at)) return false;
    if (linear_ == 0 || at.size == 0.0) return true;
    for (std::size_t j = 0; j < linear_; ++j) {
      const std::size_t o = order_[j];
      std::copy_n(at.c, p_.k, at_);
      at_[o] += std::max(fabs(at_[o]), longStep(o));
      const double width = at_[o] - at.c[o];
      if (!values(at_, vector_)) return false;
      for (std::size_t i = 0; i < p_.n; ++i) row(i)[j] = (vector_[i] - at.f[i]) / width;
      slope_[o] = columnNorm(j);
      if (!isFinite(slope_[o])) return false;
      divideColumn(j, slope_[o]);
    }
    const double before = at.size;
    for (std::size_t i = 0; i < p_.n; ++i) row(i)[linear_] = at.r[i] / before;
    triangulate(block(0, 0, linear_ + 1), linear_, linearTau_, vector_, sums_);
    for (std::size_t j = 0; j < linear_; ++j) q_[j] = row(j)[linear_];
    linearPart_.set(block(0, 0, linear_), linear_, q_, static_cast<double>(p_.n) * kEpsilon);
    linearPart_.solve(0.0, u_);
    for (std::size_t j = 0; j < linear_; ++j) {
      if (slope_[order_[j]] > 0.0) at.c[order_[j]] += u_[j] * before / slope_[order_[j]];
    }
    if (!evaluate(at)) return false;
    const double expected = before * sqrt(std::max(0.0, 1.0 - linearPart_.gain(0.0)));
    bent_ = at.size > 1.001 * expected + 1e-6 * (before + yNorm_);
    return !bent_;
  }

  // From now_, with the first radius in units of the scaled coefficients' length.
  Outcome descend(double firstRadius) {
    const std::size_t n = p_.n, k = p_.k;
    std::fill_n(scale_, k, 0.0);
    double radius = -1.0, lastMove = 0.0;
    bool secant = false;  // whether the last step was Newton's
    for (;;) {
      if (now_.size == 0.0) return kSolved;
      if (left_ == 0) return kExhausted;
      --left_;
      if (!separated_) {
        separate();
        separated_ = true;
        if (now_.size == 0.0) return kSolved;
      }
      const std::size_t m = k - linear_;
      if (m == 0) {
        // Once more, from residuals that are small.
        std::copy_n(now_.c, k, next_.c);
        if (complete(next_) && next_.size <= now_.size * (1.0 + 1e-9)) std::swap(now_, next_);
        return kSolved;
      }
      if (!derived_) {
        for (std::size_t j = linear_; j < k; ++j) differentiate(order_[j], j);
      }
      derived_ = false;
      for (std::size_t j = linear_; j < k; ++j) {
        const std::size_t o = order_[j];
        scale_[o] = std::max(scale_[o], slope_[o]);
        divideColumn(j, scale_[o]);
      }
      for (std::size_t i = 0; i < n; ++i) row(i)[k] = now_.r[i] / now_.size;
      reflectRest(block(0, 0, k + 1), linear_, linearTau_, vector_, sums_);
      const MatrixBlock<double> rest = block(linear_, linear_, m + 1);
      triangulate(rest, m, tau_, vector_, sums_);
      for (std::size_t j = 0; j < m; ++j) q_[j] = rest.row(j)[m];
      steps_.set(rest, m, q_, kDerivativeError);

      if (radius < 0.0) {
        for (std::size_t j = 0; j < m; ++j) {
          u_[j] = scale_[order_[linear_ + j]] * now_.c[order_[linear_ + j]];
        }
        radius = firstRadius * norm(u_, m);
        if (!(radius > 0.0) || !isFinite(radius)) radius = now_.size;
      }
      // Everything is in units of |r|: how far Newton's step would move the fit, and what rounding
      // does to the fit and to the sum of squares.
      const double gain = steps_.gain(0.0), move = sqrt(gain);
      const double noise = 4.0 * kEpsilon * yNorm_ / now_.size;
      const double fuzz = std::max(1e-13, 16.0 * noise);
      const bool blind = gain <= fuzz;
      const double rate = lastMove > 0.0 ? move / lastMove : 1.0;
      const bool last = move <= std::max(noise, kConverged) ||
                        (blind && (rate >= 0.95 || move * rate / (1.0 - rate) <= kConverged));
      lastMove = move;

      bool accepted = false, trySecant = secant;
      secant = false;
      while (!accepted) {
        const double damping = steps_.dampingFor(radius / now_.size);
        steps_.solve(damping, u_);
        const double length = norm(u_, m), predicted = steps_.gain(damping);
        for (std::size_t j = 0; j < m; ++j) {
          const std::size_t o = order_[linear_ + j];
          step_[j] = scale_[o] > 0.0 ? u_[j] / scale_[o] * now_.size : 0.0;
        }
        const bool useSecant = damping == 0.0 && trySecant && bendBySecant(length);
        trySecant = false;
        std::copy_n(now_.c, k, next_.c);
        bool moved = false;
        for (std::size_t j = 0; j < m; ++j) {
          const std::size_t o = order_[linear_ + j];
          next_.c[o] += useSecant ? trial_[j] : step_[j];
          moved = moved || next_.c[o] != now_.c[o];
        }
        if (!moved || !(predicted > kEpsilon * kEpsilon) || (!blind && predicted < kEpsilon)) {
          return gain <= 1e-8 ? finish() : kStalled;
        }
        bent_ = false;
        const bool finite = complete(next_);
        if (bent_) {
          join();
          break;
        }
        const double actual =
            finite ? (1.0 - next_.size / now_.size) * (1.0 + next_.size / now_.size) : -1.0;
        if (blind && damping == 0.0) {
          accepted = actual >= -20.0 * fuzz;
        } else {
          accepted = actual > (useSecant ? 0.0 : 1e-4 * predicted);
          if (!useSecant) {
            const double quality = actual / predicted;
            if (!(quality > 0.25)) {
              radius =
                  length * now_.size *
                  (finite && actual >= 0.0 ? 0.5
                                           : std::max(0.1, 0.5 * predicted / (predicted - actual)));
            } else if (quality > 0.75 && quality < 4.0) {
              radius = std::max(radius, 2.0 * length * now_.size);
            }
          }
        }
        if (accepted) {
          if (damping == 0.0) {
            secant = true;
            for (std::size_t j = 0; j < m; ++j) {
              before_[j] = now_.c[order_[linear_ + j]];
              lastStep_[j] = step_[j];
            }
          }
          std::swap(now_, next_);
        }
        if (last) return finish();
        if (!accepted && blind && damping == 0.0 && !useSecant) return finish();
      }
    }
  }

  // Newton's steps shrink by about the same factor from one to the next where residuals are large.
  // The last two tell where they lead. (D. G. Anderson, "Iterative procedures for nonlinear
  // integral equations", Journal of the ACM, 1965.)
  bool bendBySecant(double length) {
    const std::size_t m = p_.k - linear_;
    double product = 0.0, square = 0.0;
    for (std::size_t j = 0; j < m; ++j) {
      const double unit = scale_[order_[linear_ + j]] / now_.size;
      const double change = (step_[j] - lastStep_[j]) * unit;
      product += step_[j] * unit * change;
      square += change * change;
    }
    const double factor = product / square;
    double sum = 0.0;
    for (std::size_t j = 0; j < m; ++j) {
      const std::size_t o = order_[linear_ + j];
      trial_[j] = step_[j] - factor * (now_.c[o] - before_[j] + (step_[j] - lastStep_[j]));
      const double u = trial_[j] * (scale_[o] / now_.size);
      sum += u * u;
    }
    return sqrt(sum) < 5.0 * length;
  }

  // A coefficient may have moved to where the model no longer depends on it.
  Outcome finish() const {
    for (std::size_t j = linear_; j < p_.k; ++j) {
      if (slope_[order_[j]] < 1e-10 * scale_[order_[j]]) return kVanished;
    }
    return kSolved;
  }

  Problem p_;
  double* space_;
  std::size_t* order_;
  std::size_t linear_ = 0;
  std::int32_t left_ = 0;
  bool separated_ = false, derived_ = false, bent_ = false;
  double yNorm_ = 0.0;
  double* matrix_ = take(p_.n * (p_.k + 1));
  Point now_ = takePoint(), next_ = takePoint(), best_ = takePoint();
  double* vector_ = take(p_.n);
  DampedLeastSquares steps_{take(p_.k * p_.k), take(p_.k* p_.k), take(p_.k), take(p_.k)};
  DampedLeastSquares linearPart_{take(p_.k * p_.k), take(p_.k* p_.k), take(p_.k), take(p_.k)};
  double *start_ = take(p_.k), *at_ = take(p_.k), *ratio_ = take(p_.k), *slope_ = take(p_.k),
         *largest_ = take(p_.k), *scale_ = take(p_.k), *tau_ = take(p_.k), *linearTau_ = take(p_.k),
         *sums_ = take(p_.k + 1), *u_ = take(p_.k), *q_ = take(p_.k), *step_ = take(p_.k),
         *trial_ = take(p_.k), *before_ = take(p_.k), *lastStep_ = take(p_.k);
};

}  // namespace
}  // namespace fathom

AnalysisStatus NonLinearFit(const double* x, const double* y, int32_t n, FathomModel model,
                            double* coefficients, int32_t k, double* fitted,
                            double* meanSquaredError) {
  return NonLinearFitWithMaxIters(x, y, n, model, coefficients, k, fathom::kDefaultIterations,
                                  fitted, meanSquaredError);
}

AnalysisStatus NonLinearFitWithMaxIters(const double* x, const double* y, int32_t n,
                                        FathomModel model, double* coefficients, int32_t k,
                                        int32_t maxIterations, double* fitted,
                                        double* meanSquaredError) {
  if (model == nullptr) return FATHOM_ERR_SELECTION;
  if (n < 1 || k < 1) return FATHOM_ERR_NO_SAMPLES;
  if (n < k) return FATHOM_ERR_ARRAY_SIZE;
  if (maxIterations < 1) return FATHOM_ERR_SELECTION;
  if (fathom::matrixSize(n, k) > PTRDIFF_MAX / 64) return FATHOM_ERR_MEMORY;
  const fathom::Problem problem = {x, y, static_cast<std::size_t>(n), model,
                                   static_cast<std::size_t>(k)};
  const std::uint64_t room = fathom::Fit::room(problem);
  fathom::Workspace<double> space(room <= SIZE_MAX ? static_cast<std::size_t>(room) : SIZE_MAX);
  fathom::Workspace<std::size_t> order(problem.k);
  if (!space || !order) return FATHOM_ERR_MEMORY;

  fathom::Fit fit(problem, space.data(), order.data());
  if (!fit.start(coefficients)) return FATHOM_ERR_ITERATIONS;
  const bool solved = fit.run(maxIterations);
  double sum = 0.0;
  for (std::size_t i = 0; i < problem.n; ++i) {
    const double residual = y[i] - fit.fitted()[i];
    sum += residual * residual;
  }
  std::copy_n(fit.coefficients(), problem.k, coefficients);
  std::copy_n(fit.fitted(), problem.n, fitted);
  *meanSquaredError = sum / static_cast<double>(n);
  return solved ? FATHOM_OK : FATHOM_ERR_ITERATIONS;
}
