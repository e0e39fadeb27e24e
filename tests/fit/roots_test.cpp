#include <complex>

#include "support/testing.hpp"

namespace fathom::test {
namespace {

AnalysisStatus rootsOf(const Values& a, int32_t n, double* roots) {
  return CxPolyRoots(a.data(), n, reinterpret_cast<ComplexNum*>(roots));
}

// Bit for bit the eigenvalues of the companion matrix, so in the same order too; and residuals that
// rounding errors of the coefficients make as well.
TEST(PolynomialRoots, AreEigenvaluesWithSmallResiduals) {
  Values wilkinson = {1}, unity(51);
  for (int root = 1; root <= 20; ++root) {
    wilkinson.push_back(0);
    for (int k = root; k > 0; --k) wilkinson[k] -= root * wilkinson[k - 1];
  }
  unity[0] = 1;
  unity[50] = -1;
  const Values fourfold = {1, -8, 24, -32, 16};
  std::vector<Values> polynomials = {wilkinson, unity, fourfold, {2, -6, 4}, {3, -1, 2, 0, 0}};
  for (const std::size_t n : sizes({})) polynomials.push_back(uniform(n + 1, n));
  for (const Values& a : polynomials) {
    Values matrix(a.size() * a.size());
    Guarded z(2 * a.size() - 2), values(z.size());
    SpecialMatrix(FATHOM_MATRIX_COMPANION, 0, a.data(), count(a), nullptr, 0, matrix.data());
    GenEigenValueVector(matrix.data(), count(a) - 1, FATHOM_EIGEN_VALUES,
                        reinterpret_cast<ComplexNum*>(values.data()), nullptr);
    expectSame(rootsOf(a, count(a), z), z, FATHOM_OK, values);
    for (std::size_t i = 0; i < z.size(); i += 2) {
      const std::complex<long double> x(z[i], z[i + 1]);
      std::complex<long double> p = 0;
      long double size = 0;
      for (const long double c : a) {
        p = p * x + c;
        size = size * std::abs(x) + std::fabs(c);
      }
      EXPECT_LE(std::abs(p), 3e-15L * size * static_cast<long double>(a.size())) << a.size();
    }
  }
}

TEST(PolynomialRoots, NeedAFirstCoefficient) {
  for (const Values& a : {Values{0, 1}, {0, 0}, {-0.0, 1, 2}, {0, 0, 1, 5}, {kNan, 1}, {1, kInf}}) {
    Guarded z(2 * a.size());
    EXPECT_EQ(rootsOf(a, count(a), z), FATHOM_ERR_ITERATIONS);
    EXPECT_EQ(rootsOf(a, 1, z), FATHOM_ERR_FEWER_THAN_TWO_SAMPLES);
    EXPECT_TRUE(z.untouched());
  }
}

}  // namespace
}  // namespace fathom::test
