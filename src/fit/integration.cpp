// Integration of uniformly sampled signals by the closed Newton-Cotes rules of one to four
// intervals.
#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "frame/multiversion.hpp"

namespace {

using fathom::kOne45th;
using fathom::kOneThird;

// A rule's weighted sum over one group of intervals that begins at x.
struct Simpson {
  static constexpr std::size_t kIntervals = 2;
  static double sum(const double* x) { return (4.0 * x[1] + x[0]) + x[2]; }
};
struct Simpson38 {
  static constexpr std::size_t kIntervals = 3;
  static double sum(const double* x) {
    return ((3.0 * x[0] + 9.0 * x[1]) + 9.0 * x[2]) + 3.0 * x[3];
  }
};
struct Bode {
  static constexpr std::size_t kIntervals = 4;
  static double sum(const double* x) {
    return (((14.0 * x[0] + 64.0 * x[1]) + 24.0 * x[2]) + 64.0 * x[3]) + 14.0 * x[4];
  }
};

// The groups' sums are independent, their total is one chain of additions. Blocks are so short that
// the sums of the next are under way while the chain of the one before still runs.
constexpr std::size_t kBlock = 8;

template <typename Rule>
FATHOM_INLINE double totalOf(const double* x, std::size_t intervals) {
  constexpr std::size_t kStep = Rule::kIntervals;
  std::size_t groups = intervals / kStep;
  double total = 0.0;
  for (; groups >= kBlock; groups -= kBlock, x += kBlock * kStep) {
    double sums[kBlock];
    for (std::size_t k = 0; k < kBlock; ++k) sums[k] = Rule::sum(x + k * kStep);
    for (const double sum : sums) total += sum;
  }
  for (; groups > 0; --groups, x += kStep) total += Rule::sum(x);
  return total;
}

FATHOM_MULTIVERSION double simpsonTotal(const double* x, std::size_t intervals) {
  return totalOf<Simpson>(x, intervals);
}
FATHOM_MULTIVERSION double simpson38Total(const double* x, std::size_t intervals) {
  return totalOf<Simpson38>(x, intervals);
}
FATHOM_MULTIVERSION double bodeTotal(const double* x, std::size_t intervals) {
  return totalOf<Bode>(x, intervals);
}

double trapezoidal(const double* x, std::size_t last, double h) {
  double total = 0.5 * (x[0] + x[last]);
  for (std::size_t i = 1; i < last; ++i) total += x[i];
  return h * total;
}

double simpson(const double* x, std::size_t last, double h) {
  double integral = (kOneThird * h * simpsonTotal(x, last)).toDouble();
  if (last % 2 == 1) integral += 0.5 * h * (x[last] + x[last - 1]);
  return integral;
}

// The rules for the intervals left over differ in the order of their additions from one method to
// the next.
double simpson38(const double* x, std::size_t last, double h) {
  const double integral = h * 0.125 * simpson38Total(x, last);
  const double* const end = x + last;
  switch (last % 3) {
    case 1:
      return integral + 0.5 * h * (end[-1] + end[0]);
    case 2:
      return integral + (((4.0 * end[-1] + end[-2]) + end[0]) * h * kOneThird).toDouble();
    default:
      return integral;
  }
}

double bode(const double* x, std::size_t last, double h) {
  const double integral = (h * bodeTotal(x, last) * kOne45th).toDouble();
  const double* const end = x + last;
  switch (last % 4) {
    case 1:
      return integral + (end[0] + end[-1]) * 0.5 * h;
    case 2:
      return integral + (((4.0 * end[-1] + end[0]) + end[-2]) * h * kOneThird).toDouble();
    case 3:
      return integral + ((end[0] + end[-3]) * 3.0 + (end[-1] + end[-2]) * 9.0) * h * 0.125;
    default:
      return integral;
  }
}

using Rule = double (*)(const double* x, std::size_t last, double h);
constexpr Rule kRules[] = {trapezoidal, simpson, simpson38, bode};

}  // namespace

AnalysisStatus NumericIntegration(const double* x, int32_t n, double dt, int32_t method,
                                  double* integral) {
  if (method < FATHOM_INTEGRATION_TRAPEZOIDAL || method > FATHOM_INTEGRATION_BODE)
    return FATHOM_ERR_SELECTION;
  if (n < method + 2) return FATHOM_ERR_ARRAY_SIZE;  // one group of the method's intervals
  *integral = kRules[method](x, static_cast<std::size_t>(n) - 1, fathom::fabs(dt));
  return FATHOM_OK;
}
