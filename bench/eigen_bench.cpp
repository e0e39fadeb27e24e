// QR factorisations and eigenvalues beside GSL and, from OpenBLAS, LAPACK. The copies of their
// input, which they overwrite, are timed with them, as Fathom makes its own.
#include <algorithm>

#include "table.hpp"

#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_eigen.h>
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
extern "C" {
void dsyev_(const char* job, const char* triangle, const int* n, double* a, const int* aStride,
            double* w, double* work, const int* workSize, int* info, std::size_t jobLength,
            std::size_t triangleLength);
void dgeev_(const char* jobLeft, const char* jobRight, const int* n, double* a, const int* aStride,
            double* real, double* imaginary, double* left, const int* leftStride, double* right,
            const int* rightStride, double* work, const int* workSize, int* info,
            std::size_t jobLeftLength, std::size_t jobRightLength);
void zgeev_(const char* jobLeft, const char* jobRight, const int* n, double* a, const int* aStride,
            double* w, double* left, const int* leftStride, double* right, const int* rightStride,
            double* work, const int* workSize, double* reals, int* info, std::size_t jobLeftLength,
            std::size_t jobRightLength);
void dgeqrf_(const int* m, const int* n, double* a, const int* aStride, double* tau, double* work,
             const int* workSize, int* info);
void dorgqr_(const int* m, const int* n, const int* k, double* a, const int* aStride, double* tau,
             double* work, const int* workSize, int* info);
}
#endif

namespace fathom::bench {
namespace {

ComplexNum* complex(const Array& x) {
  return reinterpret_cast<ComplexNum*>(x->data());
}

// What every row has: the matrix, of `parts` doubles each element, a copy, and room for results.
struct Data {
  Data(std::int32_t n, std::int32_t parts)
      : size(70 * parts * n),
        a(uniform(parts * n * n, -1.0, 1.0)),
        copy(constant(parts * n * n, 0.0)),
        values(constant(2 * n, 0.0)),
        vectors(constant(2 * n * n, 0.0)),
        work(constant(size, 0.0)),
        more(constant(2 * n, 0.0)) {}

  void restore() const { std::copy(a->begin(), a->end(), copy->begin()); }

  int size;
  Array a, copy, values, vectors, work, more;
};

using Call = std::function<void(const Data&, std::int32_t n)>;

void add(const std::string& work, std::int32_t n, std::int32_t parts, const std::string& peer,
         double goal, const Call& fathom, const Call& call) {
  addRow({work, n, peer, n == 200 ? goal : kNoGoal, [=]() -> Sides {
            const Data ours(n, parts), theirs(n, parts);
            return {[=] {
                      fathom(ours, n);
                      return FATHOM_OK;
                    },
                    [=] {
                      theirs.restore();
                      call(theirs, n);
                    }};
          }});
}

}  // namespace

void addEigenvalueRows() {
  const Call symmetric = [](const Data& d, std::int32_t n) {
    SymEigenValueVector(d.a->data(), n, FATHOM_EIGEN_VECTORS, d.values->data(), d.vectors->data());
  };
  const Call general = [](const Data& d, std::int32_t n) {
    GenEigenValueVector(d.a->data(), n, FATHOM_EIGEN_VECTORS, complex(d.values),
                        complex(d.vectors));
  };
  for (const std::int32_t n : {20, 200, 600}) {
#if defined(FATHOM_BENCH_GSL)
    if (n <= 200) {
      add("SymEigenValueVector", n, 1, "GSL symmv", 2.0, symmetric,
          [](const Data& d, std::int32_t size) {
            const auto k = static_cast<std::size_t>(size);
            auto a = gsl_matrix_view_array(d.copy->data(), k, k);
            auto values = gsl_vector_view_array(d.values->data(), k);
            auto vectors = gsl_matrix_view_array(d.vectors->data(), k, k);
            gsl_eigen_symmv_workspace* work = gsl_eigen_symmv_alloc(k);
            gsl_eigen_symmv(&a.matrix, &values.vector, &vectors.matrix, work);
            gsl_eigen_symmv_free(work);
          });
      add("GenEigenValueVector", n, 1, "GSL nonsymmv", 2.0, general,
          [](const Data& d, std::int32_t size) {
            const auto k = static_cast<std::size_t>(size);
            auto a = gsl_matrix_view_array(d.copy->data(), k, k);
            auto values = gsl_vector_complex_view_array(d.values->data(), k);
            auto vectors = gsl_matrix_complex_view_array(d.vectors->data(), k, k);
            gsl_eigen_nonsymmv_workspace* work = gsl_eigen_nonsymmv_alloc(k);
            gsl_eigen_nonsymmv(&a.matrix, &values.vector, &vectors.matrix, work);
            gsl_eigen_nonsymmv_free(work);
          });
    }
#else
    leaveOut("GSL", "eigenvalues");
#endif
#if defined(FATHOM_BENCH_OPENBLAS)
    add("SymEigenValueVector", n, 1, "LAPACK dsyev", 0.4, symmetric,
        [](const Data& d, std::int32_t size) {
          int info = 0;
          dsyev_("V", "U", &size, d.copy->data(), &size, d.values->data(), d.work->data(), &d.size,
                 &info, 1, 1);
        });
    add("GenEigenValueVector", n, 1, "LAPACK dgeev", 0.4, general,
        [](const Data& d, std::int32_t size) {
          int info = 0;
          dgeev_("N", "V", &size, d.copy->data(), &size, d.values->data(), d.more->data(), nullptr,
                 &size, d.vectors->data(), &size, d.work->data(), &d.size, &info, 1, 1);
        });
    add(
        "CxEigenValueVector", n, 2, "LAPACK zgeev", kNoGoal,
        [](const Data& d, std::int32_t size) {
          CxEigenValueVector(complex(d.a), size, FATHOM_EIGEN_VECTORS, complex(d.values),
                             complex(d.vectors));
        },
        [](const Data& d, std::int32_t size) {
          const int room = d.size / 2;
          int info = 0;
          zgeev_("N", "V", &size, d.copy->data(), &size, d.values->data(), nullptr, &size,
                 d.vectors->data(), &size, d.work->data(), &room, d.more->data(), &info, 1, 1);
        });
    add(
        "QR", n, 1, "LAPACK dgeqrf, dorgqr", kNoGoal,
        [](const Data& d, std::int32_t size) {
          QR(d.a->data(), size, size, d.vectors->data(), d.copy->data());
        },
        [](const Data& d, std::int32_t size) {
          int info = 0;
          dgeqrf_(&size, &size, d.copy->data(), &size, d.values->data(), d.work->data(), &d.size,
                  &info);
          dorgqr_(&size, &size, &size, d.copy->data(), &size, d.values->data(), d.work->data(),
                  &d.size, &info);
        });
#else
    leaveOut("LAPACK", "eigenvalues, QR");
#endif
  }
}

}  // namespace fathom::bench
