// Interpolation between tabulated points: by the polynomial and by the diagonal rational function
// through all of them, each with an error estimate, and by the cubic spline.
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "frame/multiversion.hpp"
#include "frame/workspace.hpp"

namespace {

// A column of the triangular scheme of Neville's kind: the corrections c and d of `count` rows, in
// place. Row i spans the abscissas near[i] to far[i]. False where two abscissas, or a denominator,
// rule the column out; it is computed nonetheless.
using Column = bool (*)(const double* near, const double* far, double x0, std::size_t count,
                        double* c, double* d);

FATHOM_MULTIVERSION bool polynomialColumn(const double* near, const double* far, double x0,
                                          std::size_t count, double* c, double* d) {
  int equal = 0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < count; ++i) {
    equal |= near[i] == far[i] ? 1 : 0;
    const double w = c[i] - d[i];
    const double span = near[i] - far[i];
    d[i] = (far[i] - x0) * w / span;
    c[i] = (near[i] - x0) * w / span;
  }
  return equal == 0;
}

FATHOM_MULTIVERSION bool rationalColumn(const double* near, const double* far, double x0,
                                        std::size_t count, double* c, double* d) {
  int pole = 0;
  FATHOM_INDEPENDENT
  for (std::size_t i = 0; i < count; ++i) {
    const double t = (near[i] - x0) * d[i] / (far[i] - x0);
    const double denominator = t - c[i];
    pole |= denominator == 0.0 ? 1 : 0;
    const double q = (c[i] - d[i]) / denominator;
    d[i] = c[i] * q;
    c[i] = t * q;
  }
  return pole == 0;
}

std::size_t closest(const double* x, std::size_t n, double x0) {
  std::size_t index = 0;
  double least = fathom::fabs(x0 - x[0]);
  for (std::size_t i = 1; i < n; ++i) {
    const double distance = fathom::fabs(x0 - x[i]);
    if (distance < least) {
      least = distance;
      index = i;
    }
  }
  return index;
}

// From the point closest to x0 through the columns to the tip of the triangle, by the corrections
// that keep nearest to the middle. Column m has n - m rows; row i keeps its c at c[i + m], so that
// every row is updated in its place. False with the columns before the failing one in y0.
bool interpolate(const double* x, const double* y, std::size_t n, double x0, Column column,
                 double* c, double* d, double* y0, double* errorEstimate) {
  std::size_t row = closest(x, n, x0);
  *y0 = y[row];
  double correction = 0.0;
  for (std::size_t m = 1; m < n; ++m) {
    if (!column(x, x + m, x0, n - m, c + m, d)) return false;
    // row <= n - m here, and row 0 takes its c: both branches stay inside the column.
    correction = 2 * row < n - m ? c[row + m] : d[--row];
    *y0 += correction;
  }
  *errorEstimate = correction;
  return true;
}

// Slopes above this stand for a natural end.
constexpr double kNatural = 9.9e29;

// Inner points of a spline that are prepared together: few enough that the sweep over one block
// overlaps with the divisions of the next.
constexpr std::size_t kBlock = 16;

// What the sweep needs of `count` inner points apart from its own results: the share of the
// interval before each in the two around it, and the divided difference of the slopes times 6. x
// and y begin one point before the first. Returns how many points precede the first with equal
// abscissas.
FATHOM_MULTIVERSION std::size_t prepare(const double* x, const double* y, std::size_t count,
                                        double* share, double* bend) {
  int equal = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const double before = x[i + 1] - x[i], after = x[i + 2] - x[i + 1], both = x[i + 2] - x[i];
    equal |=
        (x[i + 2] == x[i] ? 1 : 0) | (x[i + 1] == x[i] ? 1 : 0) | (x[i + 2] == x[i + 1] ? 1 : 0);
    share[i] = before / both;
    bend[i] = 6.0 * ((y[i + 2] - y[i + 1]) / after - (y[i + 1] - y[i]) / before) / both;
  }
  if (equal == 0) return count;
  std::size_t i = 0;
  while (x[i + 2] != x[i] && x[i + 1] != x[i] && x[i + 2] != x[i + 1]) ++i;
  return i;
}

struct Bracket {
  std::size_t lo, hi;
};

// Bisection. The first steps are written to become branches, which are predicted when abscissas
// come in order; the others to become selections, with nothing to mispredict when they do not.
Bracket bracket(const double* x, std::size_t last, double x0) {
  constexpr int kBranches = 4;
  Bracket b = {0, last};
  for (int i = 0; i < kBranches && b.hi - b.lo > 1; ++i) {
    const std::size_t k = (b.hi + b.lo) / 2;
    if (x[k] > x0) [[likely]] {
      b.hi = k;
    } else {
      b.lo = k;
    }
  }
  while (b.hi - b.lo > 1) {
    const std::size_t k = (b.hi + b.lo) / 2;
    if (x[k] > x0) {
      b.hi = k;
    } else {
      b.lo = k;
    }
  }
  return b;
}

}  // namespace

AnalysisStatus PolyInterp(const double* x, const double* y, int32_t n, double x0, double* y0,
                          double* errorEstimate) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> c(size), d(size);
  if (!c || !d) return FATHOM_ERR_MEMORY;
  for (std::size_t i = 0; i < size; ++i) c[i] = d[i] = y[i];
  const bool done =
      interpolate(x, y, size, x0, polynomialColumn, c.data(), d.data(), y0, errorEstimate);
  return done ? FATHOM_OK : FATHOM_ERR_DISTINCT_X;
}

AnalysisStatus RatInterp(const double* x, const double* y, int32_t n, double x0, double* y0,
                         double* errorEstimate) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto size = static_cast<std::size_t>(n);
  fathom::Workspace<double> c(size), d(size);
  if (!c || !d) return FATHOM_ERR_MEMORY;
  for (std::size_t i = 0; i < size; ++i) {
    if (x0 - x[i] != 0.0) continue;
    *y0 = y[i];
    *errorEstimate = 0.0;
    return FATHOM_OK;
  }
  constexpr double kApart = 1e-10;  // keeps 0 / 0 out of the first column
  for (std::size_t i = 0; i < size; ++i) {
    c[i] = y[i];
    d[i] = y[i] + kApart;
  }
  const bool done =
      interpolate(x, y, size, x0, rationalColumn, c.data(), d.data(), y0, errorEstimate);
  return done ? FATHOM_OK : FATHOM_ERR_POLE;
}

AnalysisStatus Spline(const double* x, const double* y, int32_t n, double firstSlope,
                      double lastSlope, double* secondDerivatives) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  if (n < 2) return FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;
  const auto last = static_cast<std::size_t>(n) - 1;
  fathom::Workspace<double> u(last);
  if (!u) return FATHOM_ERR_MEMORY;
  double* const y2 = secondDerivatives;

  y2[0] = u[0] = 0.0;
  if (!(firstSlope > kNatural)) {
    const double h = x[1] - x[0];
    y2[0] = -0.5;
    u[0] = (3.0 / h) * ((y[1] - y[0]) / h - firstSlope);
  }
  double share[kBlock] = {}, bend[kBlock] = {};
  for (std::size_t i = 1; i < last; i += kBlock) {
    const std::size_t count = last - i < kBlock ? last - i : kBlock;
    const std::size_t distinct = prepare(x + i - 1, y + i - 1, count, share, bend);
    for (std::size_t k = 0; k < distinct; ++k) {
      const double p = share[k] * y2[i + k - 1] + 2.0;
      y2[i + k] = (share[k] - 1.0) / p;
      u[i + k] = (bend[k] - share[k] * u[i + k - 1]) / p;
    }
    if (distinct < count) return FATHOM_ERR_DISTINCT_X;
  }
  double half = 0.0, end = 0.0;
  if (!(lastSlope > kNatural)) {
    const double h = x[last] - x[last - 1];
    half = 0.5;
    end = (3.0 / h) * (lastSlope - (y[last] - y[last - 1]) / h);
  }
  y2[last] = (end - half * u[last - 1]) / (half * y2[last - 1] + 1.0);
  for (std::size_t k = last; k-- > 0;) y2[k] = y2[k] * y2[k + 1] + u[k];
  return FATHOM_OK;
}

AnalysisStatus SpInterp(const double* x, const double* y, const double* secondDerivatives,
                        int32_t n, double x0, double* y0) {
  if (n < 1) return FATHOM_ERR_NO_SAMPLES;
  const auto [lo, hi] = bracket(x, static_cast<std::size_t>(n) - 1, x0);
  const double h = x[hi] - x[lo];
  if (h == 0.0) return FATHOM_ERR_DISTINCT_X;
  const double a = (x[hi] - x0) / h;
  const double b = (x0 - x[lo]) / h;
  const double bent =
      (a * a * a - a) * secondDerivatives[lo] + (b * b * b - b) * secondDerivatives[hi];
  *y0 = a * y[lo] + b * y[hi] + (bent * (h * h) * fathom::kOneSixth).toDouble();
  return FATHOM_OK;
}
