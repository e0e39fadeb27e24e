// Least-squares fits beside GSL and, from OpenBLAS, LAPACK; where the closed-form sums decide,
// beside the plain loop, whose sums wait for their own additions and nothing else.
#include <algorithm>
#include <cmath>

#include "table.hpp"

#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_fit.h>
#include <gsl/gsl_multifit.h>
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
extern "C" void dgels_(const char* transposed, const int* m, const int* n, const int* sides,
                       double* a, const int* aStride, double* b, const int* bStride, double* work,
                       const int* workSize, int* info, std::size_t transposedLength);
#endif

namespace fathom::bench {
namespace {

// Four sums in step, then the squared differences.
double plainLine(const double* x, const double* y, std::size_t n, double* fitted) {
  double sx = 0.0, sxx = 0.0, sy = 0.0, sxy = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    sx += x[i];
    sxx += x[i] * x[i];
    sy += y[i];
    sxy += x[i] * y[i];
  }
  const double points = static_cast<double>(n), d = sx * sx - points * sxx;
  const double slope = (sx * sy - points * sxy) / d, intercept = (sx * sxy - sy * sxx) / d;
  double error = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    fitted[i] = slope * x[i] + intercept;
    error += (fitted[i] - y[i]) * (fitted[i] - y[i]);
  }
  return error / points;
}

double plainExponential(const double* x, const double* y, std::size_t n, double* fitted) {
  double sx = 0.0, sxx = 0.0, sl = 0.0, sxl = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const double l = std::log(y[i]);
    sx += x[i];
    sxx += x[i] * x[i];
    sl += l;
    sxl += x[i] * l;
  }
  const double points = static_cast<double>(n);
  const double damping = (points * sxl - sx * sl) / (points * sxx - sx * sx);
  const double amplitude = std::exp((sl - damping * sx) / points);
  double error = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    fitted[i] = std::exp(damping * x[i]) * amplitude;
    error += (fitted[i] - y[i]) * (fitted[i] - y[i]);
  }
  return error / points;
}

void addLineRows(std::int32_t n) {
  const auto sides = [n](bool exponential, auto peer) -> Sides {
    const Array x = uniform(n, -1.0, 1.0), y = uniform(n + 1, 1.0, 2.0);
    const Array fitted = constant(n, 0.0), scalars = constant(4, 0.0);
    double* s = scalars->data();
    const auto fathomSide = [=] {
      return exponential ? ExpFit(x->data(), y->data(), n, fitted->data(), s, s + 1, s + 2)
                         : LinFit(x->data(), y->data(), n, fitted->data(), s, s + 1, s + 2);
    };
    return {fathomSide,
            [=] { scalars->at(3) = peer(x->data(), y->data(), x->size(), fitted->data()); }};
  };
  addRow({"LinFit", n, "loop", 1.0, [=] { return sides(false, plainLine); }});
#if defined(FATHOM_BENCH_GSL)
  addRow({"LinFit", n, "GSL fit_linear", kNoGoal, [=] {
            return sides(false, [](const double* x, const double* y, std::size_t size, double*) {
              double a, b, c, d, e, squares;
              gsl_fit_linear(x, 1, y, 1, size, &a, &b, &c, &d, &e, &squares);
              return squares;
            });
          }});
#else
  leaveOut("GSL", "LinFit");
#endif
  addRow({"ExpFit", n, "loop", 1.0, [=] { return sides(true, plainExponential); }});
}

struct Shape {
  std::int32_t n, k;
  double gslGoal, lapackGoal;
};
constexpr Shape kShapes[] = {
    {50, 4, kNoGoal, kNoGoal}, {10'000, 10, 3.0, 0.6}, {1'000, 100, kNoGoal, kNoGoal}};

struct System {
  explicit System(const Shape& s)
      : h(uniform(s.n * s.k, -1.0, 1.0)),
        y(uniform(s.n, -1.0, 1.0)),
        fitted(constant(s.n, 0.0)),
        c(constant(s.k, 0.0)),
        covariance(constant(s.k * s.k, 0.0)),
        error(constant(1, 0.0)) {}
  Array h, y, fitted, c, covariance, error;
};

void addGeneralRows(const Shape& shape) {
#if defined(FATHOM_BENCH_GSL)
  for (const std::int32_t algorithm : {FATHOM_LS_SINGULAR_VALUES, FATHOM_LS_HOUSEHOLDER}) {
    addRow({"GenLSFit " + std::to_string(algorithm) + ", " + std::to_string(shape.n) + " rows",
            shape.k, "GSL multifit_linear", shape.gslGoal, [=]() -> Sides {
              const System s(shape);
              const auto n = static_cast<std::size_t>(shape.n),
                         k = static_cast<std::size_t>(shape.k);
              const std::shared_ptr<gsl_multifit_linear_workspace> work(
                  gsl_multifit_linear_alloc(n, k), gsl_multifit_linear_free);
              return {[=] {
                        return GenLSFit(s.h->data(), shape.n, shape.k, s.y->data(), nullptr,
                                        algorithm, s.fitted->data(), s.c->data(),
                                        s.covariance->data(), s.error->data());
                      },
                      [=] {
                        auto h = gsl_matrix_view_array(s.h->data(), n, k);
                        auto y = gsl_vector_view_array(s.y->data(), n);
                        auto c = gsl_vector_view_array(s.c->data(), k);
                        auto covariance = gsl_matrix_view_array(s.covariance->data(), k, k);
                        gsl_multifit_linear(&h.matrix, &y.vector, &c.vector, &covariance.matrix,
                                            s.error->data(), work.get());
                      }};
            }});
  }
#else
  leaveOut("GSL", "GenLSFit");
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
  // Its matrix comes column after column, as it wants it; the copy of what it overwrites is timed.
  addRow({"GenLSFitCoef, " + std::to_string(shape.n), shape.k, "LAPACK dgels", shape.lapackGoal,
          [=]() -> Sides {
            const System s(shape);
            const Array a = constant(shape.n * shape.k, 0.0), b = constant(shape.n, 0.0);
            const Array room = constant(64 * (shape.n + shape.k), 0.0);
            return {[=] {
                      return GenLSFitCoef(s.h->data(), shape.n, shape.k, s.y->data(),
                                          FATHOM_LS_HOUSEHOLDER, s.c->data());
                    },
                    [=] {
                      const int one = 1, size = 64 * (shape.n + shape.k);
                      int info = 0;
                      std::copy(s.h->begin(), s.h->end(), a->begin());
                      std::copy(s.y->begin(), s.y->end(), b->begin());
                      dgels_("N", &shape.n, &shape.k, &one, a->data(), &shape.n, b->data(),
                             &shape.n, room->data(), &size, &info, 1);
                    }};
          }});
#else
  leaveOut("LAPACK", "GenLSFit");
#endif
}

}  // namespace

void addFitRows() {
  for (const std::int32_t n : kSizes) addLineRows(n);
  for (const Shape& shape : kShapes) addGeneralRows(shape);
}

}  // namespace fathom::bench
