// Singular values beside GSL and, from OpenBLAS, LAPACK. The copies of their input, which they
// overwrite, are timed with them, as SVD makes its own.
#include <algorithm>

#include "table.hpp"

#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_linalg.h>
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
extern "C" void dgesvd_(const char* jobU, const char* jobV, const int* m, const int* n, double* a,
                        const int* aStride, double* s, double* u, const int* uStride, double* v,
                        const int* vStride, double* work, const int* workSize, int* info,
                        std::size_t jobULength, std::size_t jobVLength);
#endif

namespace fathom::bench {
namespace {

struct Size {
  std::int32_t m, n;
  double gslGoal, lapackGoal;
};
constexpr Size kShapes[] = {
    {10, 10, kNoGoal, kNoGoal}, {50, 50, kNoGoal, kNoGoal}, {200, 200, 3.0, 0.5},
    {1'000, 50, 3.0, 0.5},      {500, 500, 3.0, 0.5},
};

std::function<AnalysisStatus()> fathomSide(const Array& a, const Size& s, bool vectors) {
  const Array u = constant(s.m * s.n, 0.0), v = constant(s.n * s.n, 0.0), values = constant(s.n, 0);
  if (!vectors) return [=] { return SVDS(a->data(), s.m, s.n, values->data()); };
  return [=] { return SVD(a->data(), s.m, s.n, u->data(), values->data(), v->data()); };
}

}  // namespace

void addSvdRows() {
  for (const Size& s : kShapes) {
    for (const bool vectors : {true, false}) {
      const std::string work = (vectors ? "SVD, " : "SVDS, ") + std::to_string(s.m) + " rows";
#if defined(FATHOM_BENCH_GSL)
      addRow({work, s.n, "GSL SV_decomp", s.gslGoal, [=]() -> Sides {
                const Array a = uniform(s.m * s.n, -1.0, 1.0), u = constant(s.m * s.n, 0.0);
                const Array v = constant(s.n * s.n, 0.0), values = constant(2 * s.n, 0.0);
                const auto m = static_cast<std::size_t>(s.m), n = static_cast<std::size_t>(s.n);
                return {fathomSide(a, s, vectors), [=] {
                          std::copy(a->begin(), a->end(), u->begin());
                          auto ofU = gsl_matrix_view_array(u->data(), m, n);
                          auto ofV = gsl_matrix_view_array(v->data(), n, n);
                          auto ofS = gsl_vector_view_array(values->data(), n);
                          auto ofWork = gsl_vector_view_array(values->data() + n, n);
                          gsl_linalg_SV_decomp(&ofU.matrix, &ofV.matrix, &ofS.vector,
                                               &ofWork.vector);
                        }};
              }});
#else
      leaveOut("GSL", work);
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
      addRow({work, s.n, "LAPACK dgesvd", s.lapackGoal, [=]() -> Sides {
                const Array a = uniform(s.m * s.n, -1.0, 1.0), u = constant(s.m * s.n, 0.0);
                const Array v = constant(s.n * s.n, 0.0), values = constant(s.n, 0.0);
                const Array room = constant(70 * (s.m + s.n), 0.0);
                return {fathomSide(a, s, vectors), [=] {
                          const char *jobU = vectors ? "O" : "N", *jobV = vectors ? "A" : "N";
                          const int size = 70 * (s.m + s.n);
                          int info = 0;
                          std::copy(a->begin(), a->end(), u->begin());
                          dgesvd_(jobU, jobV, &s.m, &s.n, u->data(), &s.m, values->data(), nullptr,
                                  &s.m, v->data(), &s.n, room->data(), &size, &info, 1, 1);
                        }};
              }});
#else
      leaveOut("LAPACK", work);
#endif
    }
  }
}

}  // namespace fathom::bench
