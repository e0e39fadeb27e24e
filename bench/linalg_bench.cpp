// Matrix products beside OpenBLAS, transposes and vector products beside Eigen and plain loops. The
// goals of products are for processors on which a multiplication and an addition take as long as
// two fused ones; where their units are separate, twice as much is to be had. OpenBLAS chooses its
// kernel by OPENBLAS_CORETYPE; it runs on one thread.
#include <algorithm>

#include "table.hpp"

#if defined(FATHOM_BENCH_EIGEN)
#include <Eigen/Core>
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
// The Fortran names: the C ones may be those of the plain loops that GSL brings.
extern "C" {
void dgemm_(const char* transA, const char* transB, const int* rows, const int* columns,
            const int* terms, const double* alpha, const double* a, const int* aStride,
            const double* b, const int* bStride, const double* beta, double* c, const int* cStride);
void zgemm_(const char* transA, const char* transB, const int* rows, const int* columns,
            const int* terms, const double* alpha, const double* a, const int* aStride,
            const double* b, const int* bStride, const double* beta, double* c, const int* cStride);
void openblas_set_num_threads(int threads);
}
#endif

namespace fathom::bench {
namespace {

struct Size {
  std::int32_t n;
  double goal;
};
constexpr Size kProducts[] = {{3, kNoGoal}, {8, kNoGoal}, {32, kNoGoal},
                              {96, 0.45},   {480, 0.5},   {960, 0.5}};
constexpr Size kComplexProducts[] = {{4, kNoGoal}, {32, kNoGoal}, {300, 0.35}};
constexpr Size kTransposes[] = {{8, kNoGoal}, {100, kNoGoal}, {1'000, kNoGoal}, {4'000, 1.5}};

const ComplexNum* elements(const Array& x) {
  return reinterpret_cast<const ComplexNum*>(x->data());
}

void plainProduct(const double* a, const double* b, std::int32_t n, double* c) {
  for (std::int32_t i = 0; i < n; ++i) {
    for (std::int32_t j = 0; j < n; ++j) {
      double sum = 0.0;
      for (std::int32_t t = 0; t < n; ++t) sum += a[i * n + t] * b[t * n + j];
      c[i * n + j] = sum;
    }
  }
}

#if defined(FATHOM_BENCH_OPENBLAS)
// C = A B of matrices stored by rows, which by columns is the product of the transposes, B first.
void squareProduct(decltype(dgemm_) gemm, int n, const std::vector<double>& a,
                   const std::vector<double>& b, std::vector<double>& c) {
  const double one[] = {1.0, 0.0}, zero[] = {0.0, 0.0};
  gemm("N", "N", &n, &n, &n, one, b.data(), &n, a.data(), &n, zero, c.data(), &n);
}
#endif

void addProductRows() {
  for (const Size& s : kProducts) {
    const std::int32_t n = s.n;
    if (n <= 480) {
      addRow({"MatrixMul", n, "plain triple loop", kNoGoal, [=]() -> Sides {
                const Array a = uniform(n * n, -1.0, 1.0), b = uniform(n * n, 1.0, 2.0);
                const Array c = constant(n * n, 0.0);
                return {[=] { return MatrixMul(a->data(), b->data(), n, n, n, c->data()); },
                        [=] { plainProduct(a->data(), b->data(), n, c->data()); }};
              }});
    }
#if defined(FATHOM_BENCH_OPENBLAS)
    addRow({"MatrixMul", n, "OpenBLAS dgemm", s.goal, [=]() -> Sides {
              const Array a = uniform(n * n, -1.0, 1.0), b = uniform(n * n, 1.0, 2.0);
              const Array c = constant(n * n, 0.0);
              return {[=] { return MatrixMul(a->data(), b->data(), n, n, n, c->data()); },
                      [=] { squareProduct(dgemm_, n, *a, *b, *c); }};
            }});
#endif
  }
#if defined(FATHOM_BENCH_OPENBLAS)
  for (const Size& s : kComplexProducts) {
    const std::int32_t n = s.n;
    addRow({"CxMatrixMul", n, "OpenBLAS zgemm", s.goal, [=]() -> Sides {
              const Array a = uniform(2 * n * n, -1.0, 1.0), b = uniform(2 * n * n, 1.0, 2.0);
              const Array c = constant(2 * n * n, 0.0);
              return {[=] {
                        return CxMatrixMul(elements(a), elements(b), n, n, n,
                                           reinterpret_cast<ComplexNum*>(c->data()));
                      },
                      [=] { squareProduct(zgemm_, n, *a, *b, *c); }};
            }});
  }
#else
  leaveOut("OpenBLAS", "MatrixMul, CxMatrixMul");
#endif
}

// At the latency of one addition after the other, as the plain loop; at the bandwidth of memory.
void addVectorRows() {
  for (std::int32_t n : kSizes) {
    addRow({"DotProduct", n, "plain loop", 1.0, [=]() -> Sides {
              const Array x = uniform(n, -1.0, 1.0), y = uniform(n, 1.0, 2.0);
              const Array result = constant(2, 0.0);
              return {[=] { return DotProduct(x->data(), y->data(), n, result->data()); },
                      [=] {
                        double sum = 0.0;
                        for (std::int32_t i = 0; i < n; ++i) sum += (*x)[i] * (*y)[i];
                        (*result)[1] = sum;
                      }};
            }});
  }
  for (std::int32_t n : {30, 150, 2'000}) {
    addRow(
        {"OuterProduct", n, "std::fill_n of the result", n < 2'000 ? kNoGoal : 0.9, [=]() -> Sides {
           const Array x = uniform(n, -1.0, 1.0), y = uniform(n, 1.0, 2.0);
           const Array p = constant(n * n, 0.0);
           return {[=] { return OuterProduct(x->data(), n, y->data(), n, p->data()); },
                   [=] { std::fill_n(p->data(), n * n, (*x)[0]); }};
         }});
  }
}

#if defined(FATHOM_BENCH_EIGEN)
using Matrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

void addEigenRows() {
  for (const Size& s : kTransposes) {
    const std::int32_t n = s.n;
    addRow({"Transpose", n, "Eigen", s.goal, [=]() -> Sides {
              const Array a = uniform(n * n, -1.0, 1.0), t = constant(n * n, 0.0);
              return {[=] { return Transpose(a->data(), n, n, t->data()); },
                      [=] {
                        Eigen::Map<Matrix>(t->data(), n, n) =
                            Eigen::Map<const Matrix>(a->data(), n, n).transpose();
                      }};
            }});
  }
  for (std::int32_t n : {30, 150, 2'000}) {
    addRow({"OuterProduct", n, "Eigen", 1.0, [=]() -> Sides {
              const Array x = uniform(n, -1.0, 1.0), y = uniform(n, 1.0, 2.0);
              const Array p = constant(n * n, 0.0);
              return {[=] { return OuterProduct(x->data(), n, y->data(), n, p->data()); },
                      [=] {
                        using Vector = Eigen::Map<const Eigen::VectorXd>;
                        Eigen::Map<Matrix>(p->data(), n, n).noalias() =
                            Vector(x->data(), n) * Vector(y->data(), n).transpose();
                      }};
            }});
  }
}
#endif

}  // namespace

void addLinalgRows() {
#if defined(FATHOM_BENCH_OPENBLAS)
  openblas_set_num_threads(1);
#endif
  addProductRows();
  addVectorRows();
#if defined(FATHOM_BENCH_EIGEN)
  addEigenRows();
#else
  leaveOut("Eigen", "Transpose, OuterProduct");
#endif
}

}  // namespace fathom::bench
