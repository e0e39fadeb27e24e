// Splines beside GSL's, roots of polynomials beside GSL's and NumPy's, integration beside plain
// loops.
#include <algorithm>
#include <numeric>

#include "table.hpp"

#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_interp.h>
#include <gsl/gsl_poly.h>
#endif

namespace fathom::bench {
namespace {

constexpr std::int32_t kValues = 1'000;  // of a spline, in each call
constexpr double kNaturalEnd = 1e30;

// Ascending abscissas at random distances.
Array abscissas(std::int32_t n) {
  Array x = uniform(n, 0.1, 1.1);
  std::partial_sum(x->begin(), x->end(), x->begin());
  return x;
}

#if defined(FATHOM_BENCH_GSL)
std::shared_ptr<gsl_interp> splineOfGsl(const Array& x, const Array& y) {
  std::shared_ptr<gsl_interp> spline(gsl_interp_alloc(gsl_interp_cspline, x->size()),
                                     gsl_interp_free);
  gsl_interp_init(spline.get(), x->data(), y->data(), x->size());
  return spline;
}

void addSplineRows(std::int32_t n) {
  addRow({"Spline", n, "GSL cspline, init", 1.0, [=]() -> Sides {
            const Array x = abscissas(n), y = uniform(n, -1.0, 1.0), y2 = constant(n, 0.0);
            return {[=] {
                      return Spline(x->data(), y->data(), n, kNaturalEnd, kNaturalEnd, y2->data());
                    },
                    [=] { splineOfGsl(x, y); }};
          }});
  for (const bool ascending : {false, true}) {
    const std::string order = ascending ? ", ascending" : ", at random";
    for (const bool remembers : {false, true}) {
      if (remembers && !ascending) continue;
      const std::string peer = remembers ? "GSL eval, accelerator" : "GSL eval";
      addRow({"SpInterp x 1000" + order, n, peer, remembers ? kNoGoal : 1.0, [=]() -> Sides {
                const Array x = abscissas(n), y = uniform(n, -1.0, 1.0), y2 = constant(n, 0.0);
                const Array at = uniform(kValues, x->front(), x->back());
                if (ascending) std::sort(at->begin(), at->end());
                const Array result = constant(kValues, 0.0);
                Spline(x->data(), y->data(), n, kNaturalEnd, kNaturalEnd, y2->data());
                const std::shared_ptr<gsl_interp> spline = splineOfGsl(x, y);
                const std::shared_ptr<gsl_interp_accel> memory(gsl_interp_accel_alloc(),
                                                               gsl_interp_accel_free);
                return {
                    [=] {
                      for (std::size_t i = 0; i < kValues; ++i) {
                        SpInterp(x->data(), y->data(), y2->data(), n, (*at)[i], result->data() + i);
                      }
                      return FATHOM_OK;
                    },
                    [=] {
                      for (std::size_t i = 0; i < kValues; ++i) {
                        (*result)[i] = gsl_interp_eval(spline.get(), x->data(), y->data(), (*at)[i],
                                                       remembers ? memory.get() : nullptr);
                      }
                    }};
              }});
    }
  }
}

void addRootsOfGslRow(std::int32_t degree) {
  addRow({"CxPolyRoots", degree, "GSL poly_complex_solve", kNoGoal, [=]() -> Sides {
            const Array a = uniform(degree + 1, 0.5, 1.0), roots = constant(2 * degree, 0.0);
            return {[=] {
                      return CxPolyRoots(a->data(), degree + 1,
                                         reinterpret_cast<ComplexNum*>(roots->data()));
                    },
                    [=] {
                      const auto size = static_cast<std::size_t>(degree) + 1;
                      auto* const work = gsl_poly_complex_workspace_alloc(size);
                      gsl_poly_complex_solve(a->data(), size, work, roots->data());
                      gsl_poly_complex_workspace_free(work);
                    }};
          }});
}
#endif

void addRootsOfNumpyRow(std::int32_t degree) {
  const auto roots = [=] {
    return secondsByPython(
        "import time\nimport numpy\nt=time.process_time\n"
        "a=numpy.random.default_rng(1).uniform(0.5,1," +
        std::to_string(degree + 1) +
        ")\nb=1e9\nfor i in range(300):\n s=t()\n numpy.roots(a)\n b=min(b,t()-s)\nprint(b)\n");
  };
  if (!(roots() > 0.0)) return leaveOut("NumPy", "CxPolyRoots");
  addRow({"CxPolyRoots", degree, "NumPy roots", degree == 50 ? 1.0 : kNoGoal, [=]() -> Sides {
            const Array a = uniform(degree + 1, 0.5, 1.0), z = constant(2 * degree, 0.0);
            const double seconds = roots();
            return {[=] {
                      return CxPolyRoots(a->data(), degree + 1,
                                         reinterpret_cast<ComplexNum*>(z->data()));
                    },
                    [=] { spend(seconds); }};
          }});
}

double integratePlainly(const double* x, std::int32_t n, std::int32_t method) {
  double s = 0.0;
  const std::int32_t last = n - 1;
  switch (method) {
    case FATHOM_INTEGRATION_TRAPEZOIDAL:
      s = 0.5 * (x[0] + x[last]);
      for (std::int32_t i = 1; i < last; ++i) s += x[i];
      break;
    case FATHOM_INTEGRATION_SIMPSON:
      for (std::int32_t i = 0; i + 2 <= last; i += 2) s += 4.0 * x[i + 1] + x[i] + x[i + 2];
      break;
    case FATHOM_INTEGRATION_SIMPSON_3_8:
      for (std::int32_t i = 0; i + 3 <= last; i += 3)
        s += 3.0 * x[i] + 9.0 * x[i + 1] + 9.0 * x[i + 2] + 3.0 * x[i + 3];
      break;
    default:
      for (std::int32_t i = 0; i + 4 <= last; i += 4)
        s += 14.0 * x[i] + 64.0 * x[i + 1] + 24.0 * x[i + 2] + 64.0 * x[i + 3] + 14.0 * x[i + 4];
  }
  return s;
}

void addIntegrationRow(std::int32_t method, const std::string& name, std::int32_t n) {
  addRow({"NumericIntegration, " + name, n, "plain loop", kNoGoal, [=]() -> Sides {
            const Array x = uniform(n, -1.0, 1.0), integral = constant(1, 0.0);
            return {[=] { return NumericIntegration(x->data(), n, 0.1, method, integral->data()); },
                    [=] { (*integral)[0] = integratePlainly(x->data(), n, method); }};
          }});
}

}  // namespace

void addInterpolationRows() {
#if defined(FATHOM_BENCH_GSL)
  for (const std::int32_t n : {100, 1'000, 30'000, 4'000'000}) addSplineRows(n);
  for (const std::int32_t degree : {10, 50, 100}) addRootsOfGslRow(degree);
#else
  leaveOut("GSL", "Spline, SpInterp, CxPolyRoots");
#endif
  for (const std::int32_t degree : {10, 50}) addRootsOfNumpyRow(degree);
  for (const std::int32_t n : kSizes) {
    addIntegrationRow(FATHOM_INTEGRATION_TRAPEZOIDAL, "trapezoids", n);
    addIntegrationRow(FATHOM_INTEGRATION_SIMPSON, "Simpson", n);
    addIntegrationRow(FATHOM_INTEGRATION_SIMPSON_3_8, "3/8", n);
    addIntegrationRow(FATHOM_INTEGRATION_BODE, "Bode", n);
  }
}

}  // namespace fathom::bench
