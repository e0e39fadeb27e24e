// Split complex arrays: arithmetic beside Eigen's arrays of interleaved complex numbers, the
// conversions to and from polar form beside the C library's calls that they need.
#include <cmath>

#include "table.hpp"

#if defined(FATHOM_BENCH_EIGEN)
#include <Eigen/Core>
#endif

namespace fathom::bench {
namespace {

#if defined(FATHOM_BENCH_EIGEN)
const std::string kEigen =
    "Eigen " + std::to_string(EIGEN_WORLD_VERSION) + "." + std::to_string(EIGEN_MAJOR_VERSION);

using Interleaved = Eigen::ArrayXcd;
using Complex = std::complex<double>;

// y = f(a, b), where b is the same number everywhere: the one that leaves y bounded in place,
// however often applied.
struct Arithmetic {
  const char* work;
  AnalysisStatus (*fathom)(const double* ar, const double* ai, const double* br, const double* bi,
                           std::int32_t n, double* re, double* im);
  void (*eigen)(const Interleaved& a, const Interleaved& b, Interleaved& y);
  Complex b;
};

const Arithmetic kArithmetic[] = {
    {"CxAdd1D", CxAdd1D, [](const auto& a, const auto& b, auto& y) { y = a + b; }, 0.0},
    {"CxSub1D", CxSub1D, [](const auto& a, const auto& b, auto& y) { y = a - b; }, 0.0},
    {"CxMul1D", CxMul1D, [](const auto& a, const auto& b, auto& y) { y = a * b; }, {0.0, 1.0}},
    {"CxDiv1D", CxDiv1D, [](const auto& a, const auto& b, auto& y) { y = a / b; }, {0.0, 1.0}},
    {"CxLinEv1D",
     [](const double* ar, const double* ai, const double*, const double*, std::int32_t n,
        double* re, double* im) { return CxLinEv1D(ar, ai, n, 0.0, 1.0, 0.25, -0.5, re, im); },
     [](const auto& a, const auto&, auto& y) { y = a * Complex(0.0, 1.0) + Complex(0.25, -0.5); },
     0.0},
};

void addEigenRows() {
  for (const Arithmetic& e : kArithmetic) {
    for (const std::int32_t n : kSizes) {
      for (const bool inPlace : {false, true}) {
        addRow({e.work + std::string(inPlace ? ", in place" : ""), n, kEigen, 1.0,
                [&e, n, inPlace]() -> Sides {
                  const Array ar = uniform(n, -1.0, 1.0), ai = uniform(n, -1.0, 1.0);
                  const Array br = constant(n, e.b.real()), bi = constant(n, e.b.imag());
                  const Array re = inPlace ? ar : constant(n, 0.0);
                  const Array im = inPlace ? ai : constant(n, 0.0);
                  const auto a = std::make_shared<Interleaved>(n);
                  for (std::int32_t i = 0; i < n; ++i) (*a)[i] = Complex((*ar)[i], (*ai)[i]);
                  const auto b = std::make_shared<Interleaved>(Interleaved::Constant(n, e.b));
                  const auto y = inPlace ? a : std::make_shared<Interleaved>(n);
                  return {[=] {
                            return e.fathom(ar->data(), ai->data(), br->data(), bi->data(), n,
                                            re->data(), im->data());
                          },
                          [=] { e.eigen(*a, *b, *y); }};
                }});
      }
    }
  }
}
#endif

void addConversionRows() {
  for (const std::int32_t n : kSizes) {
    addRow({"ToPolar1D", n, "libm sqrt, atan2", byLevel(3.0, 1.7, 1.0), [n]() -> Sides {
              const Array re = uniform(n, -1.0, 1.0), im = uniform(n, -2.0, 1.0);
              const Array magnitude = constant(n, 0.0), phase = constant(n, 0.0);
              return {[=] {
                        return ToPolar1D(re->data(), im->data(), n, magnitude->data(),
                                         phase->data());
                      },
                      [=] {
                        for (std::size_t i = 0; i < re->size(); ++i) {
                          const double x = (*re)[i], y = (*im)[i];
                          (*magnitude)[i] = std::sqrt(x * x + y * y);
                          (*phase)[i] = std::atan2(y, x);
                        }
                      }};
            }});
  }
  for (const std::int32_t n : kSizes) {
    addRow({"ToRect1D", n, "libm sincos", byLevel(3.0, 1.7, 1.0), [n]() -> Sides {
              const Array magnitude = uniform(n, 0.0, 1.0), phase = uniform(n, -3.0, 3.0);
              const Array re = constant(n, 0.0), im = constant(n, 0.0);
              return {[=] {
                        return ToRect1D(magnitude->data(), phase->data(), n, re->data(),
                                        im->data());
                      },
                      [=] {
                        for (std::size_t i = 0; i < re->size(); ++i) {
                          double s, c;
                          sincos((*phase)[i], &s, &c);
                          (*re)[i] = c * (*magnitude)[i];
                          (*im)[i] = s * (*magnitude)[i];
                        }
                      }};
            }});
  }
}

}  // namespace

void addArrayComplexRows() {
#if defined(FATHOM_BENCH_EIGEN)
  addEigenRows();
#else
  leaveOut("Eigen", "complex arrays");
#endif
  addConversionRows();
}

}  // namespace fathom::bench
