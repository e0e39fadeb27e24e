// Linear systems, inverses and determinants beside GSL and, from OpenBLAS, LAPACK. The copies of
// their input, which they overwrite, are timed with them, as Fathom makes its own.
#include <algorithm>

#include "table.hpp"

#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_linalg.h>
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
extern "C" {
void dgesv_(const int* n, const int* sides, double* a, const int* stride, int* pivots, double* b,
            const int* bStride, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* stride, int* pivots, int* info);
void dgetri_(const int* n, double* a, const int* stride, const int* pivots, double* work,
             const int* workSize, int* info);
}
#endif

namespace fathom::bench {
namespace {

enum class Work { kSolve, kInvert, kDeterminant };

struct Case {
  Work work;
  const char* name;
  std::int32_t n;
  double lapackGoal, gslGoal;
};
constexpr Case kCases[] = {
    {Work::kSolve, "LinEqs", 10, kNoGoal, kNoGoal},     {Work::kSolve, "LinEqs", 100, 0.6, 2.5},
    {Work::kSolve, "LinEqs", 1'000, 0.6, 3.0},          {Work::kInvert, "InvMatrix", 500, 0.5, 3.0},
    {Work::kDeterminant, "Determinant", 500, 0.5, 3.0},
};

std::function<AnalysisStatus()> fathomSide(const Case& c, const Array& a, const Array& b) {
  const Array x = constant(c.n * c.n, 0.0);
  const std::int32_t n = c.n;
  switch (c.work) {
    case Work::kSolve:
      return [=] { return LinEqs(a->data(), b->data(), n, x->data()); };
    case Work::kInvert:
      return [=] { return InvMatrix(a->data(), n, x->data()); };
    default:
      return [=] { return Determinant(a->data(), n, x->data()); };
  }
}

#if defined(FATHOM_BENCH_OPENBLAS)
// A matrix stored row after row is its own transpose to LAPACK, at the same cost.
std::function<void()> lapackSide(const Case& c, const Array& a, const Array& b) {
  const Array lu = constant(c.n * c.n, 0.0), x = constant(c.n, 0.0), room = constant(64 * c.n, 0.0);
  const auto pivots = std::make_shared<std::vector<int>>(static_cast<std::size_t>(c.n));
  const Work work = c.work;
  const int n = c.n;
  return [=] {
    int info = 0;
    std::copy(a->begin(), a->end(), lu->begin());
    if (work == Work::kSolve) {
      const int one = 1;
      std::copy(b->begin(), b->end(), x->begin());
      dgesv_(&n, &one, lu->data(), &n, pivots->data(), x->data(), &n, &info);
      return;
    }
    dgetrf_(&n, &n, lu->data(), &n, pivots->data(), &info);
    const int size = 64 * n;
    if (work == Work::kInvert) {
      dgetri_(&n, lu->data(), &n, pivots->data(), room->data(), &size, &info);
    }
  };
}
#endif

#if defined(FATHOM_BENCH_GSL)
std::function<void()> gslSide(const Case& c, const Array& a, const Array& b) {
  const auto n = static_cast<std::size_t>(c.n);
  const Array lu = constant(c.n * c.n, 0.0), x = constant(c.n * c.n, 0.0);
  const std::shared_ptr<gsl_permutation> p(gsl_permutation_alloc(n), gsl_permutation_free);
  const Work work = c.work;
  return [=] {
    int sign = 0;
    std::copy(a->begin(), a->end(), lu->begin());
    auto ofLu = gsl_matrix_view_array(lu->data(), n, n);
    gsl_linalg_LU_decomp(&ofLu.matrix, p.get(), &sign);
    if (work == Work::kSolve) {
      auto ofB = gsl_vector_view_array(b->data(), n), ofX = gsl_vector_view_array(x->data(), n);
      gsl_linalg_LU_solve(&ofLu.matrix, p.get(), &ofB.vector, &ofX.vector);
    } else if (work == Work::kInvert) {
      auto ofX = gsl_matrix_view_array(x->data(), n, n);
      gsl_linalg_LU_invert(&ofLu.matrix, p.get(), &ofX.matrix);
    } else {
      (*x)[0] = gsl_linalg_LU_det(&ofLu.matrix, sign);
    }
  };
}
#endif

}  // namespace

void addLuRows() {
  for (const Case& c : kCases) {
#if defined(FATHOM_BENCH_OPENBLAS)
    addRow({c.name, c.n, "LAPACK", c.lapackGoal, [=]() -> Sides {
              const Array a = uniform(c.n * c.n, -1.0, 1.0), b = uniform(c.n, -1.0, 1.0);
              return {fathomSide(c, a, b), lapackSide(c, a, b)};
            }});
#else
    leaveOut("LAPACK", c.name);
#endif
#if defined(FATHOM_BENCH_GSL)
    addRow({c.name, c.n, "GSL", c.gslGoal, [=]() -> Sides {
              const Array a = uniform(c.n * c.n, -1.0, 1.0), b = uniform(c.n, -1.0, 1.0);
              return {fathomSide(c, a, b), gslSide(c, a, b)};
            }});
#else
    leaveOut("GSL", c.name);
#endif
  }
}

}  // namespace fathom::bench
