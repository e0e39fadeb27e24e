// Direct convolution and correlation beside the plain double loops and Eigen's dot products. The
// loops are the ones to beat when compiled for this processor: FATHOM_BENCH_PEER_FLAGS.
#include <algorithm>

#include "table.hpp"

#if defined(FATHOM_BENCH_EIGEN)
#include <Eigen/Core>
#endif

namespace fathom::bench {
namespace {

struct Size {
  std::int32_t nx, ny;
  double convolveGoal, correlateGoal, dotGoal;
};
constexpr Size kConvolutions[] = {
    {5, 3, kNoGoal, kNoGoal, kNoGoal},   {64, 4, kNoGoal, kNoGoal, kNoGoal},
    {64, 64, kNoGoal, kNoGoal, kNoGoal}, {512, 512, kNoGoal, kNoGoal, kNoGoal},
    {4'096, 512, 2.0, 3.0, 1.5},         {30'000, 64, kNoGoal, kNoGoal, kNoGoal}};

void plainConvolve(const double* x, std::int32_t nx, const double* y, std::int32_t ny,
                   double* result) {
  std::fill_n(result, nx + ny - 1, 0.0);
  for (std::int32_t i = 0; i < nx; ++i) {
    for (std::int32_t j = 0; j < ny; ++j) result[i + j] += x[i] * y[j];
  }
}

void plainCorrelate(const double* x, std::int32_t nx, const double* y, std::int32_t ny,
                    double* result) {
  std::fill_n(result, nx + ny - 1, 0.0);
  for (std::int32_t j = 0; j < ny; ++j) {
    for (std::int32_t i = 0; i < nx; ++i) result[j + i] += x[nx - 1 - i] * y[j];
  }
}

using Routine = AnalysisStatus (*)(const double* x, std::int32_t nx, const double* y,
                                   std::int32_t ny, double* result);
using Plain = void (*)(const double* x, std::int32_t nx, const double* y, std::int32_t ny,
                       double* result);

std::string nameOf(const std::string& work, const Size& s) {
  return work + ", " + std::to_string(s.ny);
}

void addPlainRow(const std::string& work, const Size& s, double goal, Routine routine,
                 Plain plain) {
  addRow({nameOf(work, s), s.nx, "plain double loop", goal, [=]() -> Sides {
            const Array x = uniform(s.nx, -1.0, 1.0);
            const Array y = uniform(s.ny, -1.0, 1.0);
            const Array result = constant(s.nx + s.ny - 1, 0.0);
            return {[=] { return routine(x->data(), s.nx, y->data(), s.ny, result->data()); },
                    [=] { plain(x->data(), s.nx, y->data(), s.ny, result->data()); }};
          }});
}

#if defined(FATHOM_BENCH_EIGEN)
// One dot product for each result, of the reversed y with x between zeros.
void addDotRow(const Size& s) {
  addRow({nameOf("Convolve", s), s.nx, "Eigen dot products", s.dotGoal, [=]() -> Sides {
            const Array x = uniform(s.nx, -1.0, 1.0);
            const Array y = uniform(s.ny, -1.0, 1.0);
            const Array result = constant(s.nx + s.ny - 1, 0.0);
            const Array padded = constant(s.nx + 2 * (s.ny - 1), 0.0);
            const Array reversed = constant(s.ny, 0.0);
            std::copy(x->begin(), x->end(), padded->begin() + (s.ny - 1));
            std::reverse_copy(y->begin(), y->end(), reversed->begin());
            return {[=] { return Convolve(x->data(), s.nx, y->data(), s.ny, result->data()); },
                    [=] {
                      using Vector = Eigen::Map<const Eigen::VectorXd>;
                      const Vector taps(reversed->data(), s.ny);
                      for (std::int32_t k = 0; k < s.nx + s.ny - 1; ++k) {
                        result->data()[k] = taps.dot(Vector(padded->data() + k, s.ny));
                      }
                    }};
          }});
}
#endif

void addNumpyRow(const Size& s) {
  const auto seconds = [s] {
    return secondsByPython("import time\nimport numpy\nt=time.process_time\nx=numpy.ones(" +
                           std::to_string(s.nx) + ")\ny=numpy.ones(" + std::to_string(s.ny) +
                           ")\nb=1e9\nfor i in range(60):\n s=t()\n"
                           " for j in range(10): numpy.convolve(x,y)\n"
                           " b=min(b,t()-s)\nprint(b/10)\n");
  };
  if (!(seconds() > 0.0)) return leaveOut("NumPy", "Convolve");
  addRow({nameOf("Convolve", s), s.nx, "NumPy convolve", kNoGoal, [=]() -> Sides {
            const Array x = constant(s.nx, 1.0), y = constant(s.ny, 1.0);
            const Array result = constant(s.nx + s.ny - 1, 0.0);
            const double each = seconds();
            return {[=] { return Convolve(x->data(), s.nx, y->data(), s.ny, result->data()); },
                    [=] { spend(each); }};
          }});
}

}  // namespace

void addConvolveRows() {
  for (const Size& s : kConvolutions) {
    addPlainRow("Convolve", s, s.convolveGoal, Convolve, plainConvolve);
    addPlainRow("Correlate", s, s.correlateGoal, Correlate, plainCorrelate);
#if defined(FATHOM_BENCH_EIGEN)
    addDotRow(s);
#endif
  }
  addNumpyRow({4'096, 512, kNoGoal, kNoGoal, kNoGoal});
#if !defined(FATHOM_BENCH_EIGEN)
  leaveOut("Eigen", "Convolve");
#endif
}

}  // namespace fathom::bench
