#include "linalg/matrices.hpp"

namespace fathom::test {
namespace {

template <typename T>
constexpr auto qr = QR;
template <>
constexpr auto qr<Complex> = CxQR;

template <typename T>
class QrFactorisation : public ::testing::Test {};
using Elements = ::testing::Types<double, Complex>;
TYPED_TEST_SUITE(QrFactorisation, Elements);

TYPED_TEST(QrFactorisation, ReproducesTheMatrixByUnitaryAndTriangularFactors) {
  double largest = 0.0;
  for (const auto& [m, n] : std::vector<std::pair<std::size_t, std::size_t>>{
           {1, 1}, {1, 6}, {6, 1}, {2, 2}, {3, 4}, {5, 5}, {9, 8}, {13, 17}, {40, 23}, {70, 70}}) {
    forEachKind([&, m = m, n = n](Kind kind) {
      const Matrix<TypeParam> a = make<TypeParam>(kind, m, n);
      Matrix<TypeParam> copy = a, q{m, m}, r{m, n};
      ASSERT_EQ(qr<TypeParam>(pointer(copy.at), static_cast<int32_t>(m), static_cast<int32_t>(n),
                              pointer(q.at), pointer(r.at)),
                FATHOM_OK);
      EXPECT_EQ(copy, a);
      for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t j = 0; j < std::min(i, n); ++j) ASSERT_EQ(r(i, j), TypeParam(0.0));
        if (i < n) {
          EXPECT_EQ(std::imag(r(i, i)), 0.0);
        }
      }
      // Scaled where the squares of the norm would be lost.
      Matrix<TypeParam> original = a, again = product(q, r);
      for (auto* x : {&original, &again}) {
        for (TypeParam& v : x->at) v *= kind == Kind::kFarOff ? 0x1p520 : 1.0;
      }
      for (double value : {residual(again, original, norm(original.at)), departureFromUnitary(q)}) {
        EXPECT_LT(value, kLargestResidual) << m << " x " << n;
        largest = std::max(largest, value);
      }
    });
  }
  this->RecordProperty("residual", std::to_string(largest));
}

TEST(Qr, LeavesATriangularMatrixAndReflectsColumns) {
  const Values triangle = {3, -1, 2, 0, -2, 5, 0, 0, 0.5}, one = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  Values q(9), r(9);
  ASSERT_EQ(QR(triangle.data(), 3, 3, q.data(), r.data()), FATHOM_OK);
  EXPECT_TRUE(SameBits(q, one) && SameBits(r, triangle));
  const Values column = {3, 4};
  ASSERT_EQ(QR(column.data(), 2, 1, q.data(), r.data()), FATHOM_OK);
  EXPECT_DOUBLE_EQ(r[0], -5.0);
  EXPECT_DOUBLE_EQ(q[0], -0.6);
  EXPECT_DOUBLE_EQ(q[2], -0.8);
  // A lone imaginary element is turned to the real axis.
  const ComplexNum i = {0.0, 2.0};
  ComplexNum cq, cr;
  ASSERT_EQ(CxQR(&i, 1, 1, &cq, &cr), FATHOM_OK);
  EXPECT_DOUBLE_EQ(std::fabs(cr.real), 2.0);
  EXPECT_DOUBLE_EQ(cq.imaginary * cr.real, 2.0);
}

TEST(Qr, NeitherOverflowsNorUnderflowsBeforeItsResultsDo) {
  for (const double unit : {1e300, 1e-300, kDenormal}) {
    const Values column = {3 * unit, 4 * unit};
    Values q(4), r(2);
    ASSERT_EQ(QR(column.data(), 2, 1, q.data(), r.data()), FATHOM_OK);
    EXPECT_DOUBLE_EQ(r[0], -5 * unit);
    EXPECT_DOUBLE_EQ(q[0], -0.6);
  }
}

TEST(Qr, SpreadsNaNsAndRefusesSizesThatCannotBe) {
  const Values a = {1, 2, kNan, 4};
  Values q(4), r(4);
  ASSERT_EQ(QR(a.data(), 2, 2, q.data(), r.data()), FATHOM_OK);
  EXPECT_TRUE(std::isnan(r[0]) && std::isnan(q[0]));
  for (const int32_t n : {1, INT32_MAX}) {
    EXPECT_EQ(QR(a.data(), INT32_MAX, n, q.data(), r.data()), FATHOM_ERR_MEMORY);
    EXPECT_EQ(CxQR(nullptr, INT32_MAX, n, nullptr, nullptr), FATHOM_ERR_MEMORY);
  }
}

}  // namespace
}  // namespace fathom::test
