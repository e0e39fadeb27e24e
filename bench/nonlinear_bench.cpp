// Nonlinear fits beside GSL's Levenberg-Marquardt with central differences, on reference problems
// and the same starts. A row's name says how often each evaluates the model at all points.
#include "table.hpp"

#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_multifit_nlinear.h>

#include <cmath>
#include <fstream>
#endif

namespace fathom::bench {

#if defined(FATHOM_BENCH_GSL)
namespace {

std::int64_t evaluations = 0;

double decays(double x, const double* b, std::int32_t) {
  ++evaluations;
  return b[0] * std::exp(-b[1] * x) + b[2] * std::exp(-b[3] * x) + b[4] * std::exp(-b[5] * x);
}
double peaks(double x, const double* b, std::int32_t) {
  ++evaluations;
  const double u = (x - b[3]) / b[4], v = (x - b[6]) / b[7];
  return b[0] * std::exp(-b[1] * x) + b[2] * std::exp(-u * u) + b[5] * std::exp(-v * v);
}
double cubics(double x, const double* b, std::int32_t) {
  ++evaluations;
  return (b[0] + x * (b[1] + x * (b[2] + x * b[3]))) / (1.0 + x * (b[4] + x * (b[5] + x * b[6])));
}
double logistic(double x, const double* b, std::int32_t) {
  ++evaluations;
  return b[0] / (1.0 + std::exp(b[1] - b[2] * x));
}
double decay(double x, const double* b, std::int32_t) {
  ++evaluations;
  return std::exp(-b[0] * x) / (b[1] + b[2] * x);
}

struct Problem {
  std::string name;
  FathomModel model;
  std::vector<double> x = {}, y = {}, start = {};

  Problem(const char* file, FathomModel m) : name(file), model(m) {
    std::ifstream in(std::string(FATHOM_REFERENCE_DATA "/nonlinear/") + file + ".dat");
    std::string word;
    std::size_t n = 0, k = 0;
    in >> word >> n >> k >> word;
    start.resize(k);
    for (double& value : start) in >> value;
    for (int line = 0; line < 5; ++line) std::getline(in, word);
    for (double u = 0.0, v = 0.0; in >> u >> v;) {
      x.push_back(u);
      y.push_back(v);
    }
  }
};

AnalysisStatus byFathom(const Problem& p) {
  std::vector<double> c = p.start, fitted(p.x.size());
  double error = 0.0;
  return NonLinearFit(p.x.data(), p.y.data(), static_cast<std::int32_t>(p.x.size()), p.model,
                      c.data(), static_cast<std::int32_t>(c.size()), fitted.data(), &error);
}

int residuals(const gsl_vector* c, void* problem, gsl_vector* r) {
  const Problem& p = *static_cast<const Problem*>(problem);
  for (std::size_t i = 0; i < p.x.size(); ++i) {
    gsl_vector_set(r, i,
                   p.model(p.x[i], c->data, static_cast<std::int32_t>(p.start.size())) - p.y[i]);
  }
  return 0;
}

void byGsl(const Problem& p) {
  Problem copy = p;
  gsl_multifit_nlinear_fdf system = {};
  system.f = residuals;
  system.n = p.x.size();
  system.p = p.start.size();
  system.params = &copy;
  gsl_multifit_nlinear_parameters parameters = gsl_multifit_nlinear_default_parameters();
  parameters.fdtype = GSL_MULTIFIT_NLINEAR_CTRDIFF;
  gsl_multifit_nlinear_workspace* work =
      gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &parameters, system.n, system.p);
  const gsl_vector_view start = gsl_vector_view_array(copy.start.data(), system.p);
  gsl_multifit_nlinear_init(&start.vector, &system, work);
  int info = 0;
  gsl_multifit_nlinear_driver(1000, 1e-8, 1e-8, 0.0, nullptr, nullptr, &info, work);
  gsl_multifit_nlinear_free(work);
}

template <typename Fit>
std::string evaluationsOf(const Problem& p, Fit fit) {
  evaluations = 0;
  fit(p);
  return std::to_string(evaluations / static_cast<std::int64_t>(p.x.size()));
}

}  // namespace

void addNonlinearRows() {
  for (const Problem& p :
       {Problem("rat42", logistic), Problem("chwirut1", decay), Problem("gauss1", peaks),
        Problem("thurber", cubics), Problem("lanczos3", decays)}) {
    const std::string work = "NonLinearFit " + p.name + " " + evaluationsOf(p, byFathom) + "x";
    const std::string peer = "GSL nlinear " + evaluationsOf(p, byGsl) + "x";
    addRow({work, static_cast<std::int32_t>(p.x.size()), peer, kNoGoal, [p]() -> Sides {
              return {[p] { return byFathom(p); }, [p] { byGsl(p); }};
            }});
  }
}
#else
void addNonlinearRows() {
  leaveOut("GSL", "nonlinear fits");
}
#endif

}  // namespace fathom::bench
