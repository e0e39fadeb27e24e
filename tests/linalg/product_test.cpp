#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "linalg/kernel.hpp"
#include "support/testing.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::SameBits;
using test::Values;

// The routines of real matrices and those of complex ones, on doubles that are their elements.
struct Real {
  using Element = double;
  static constexpr std::size_t kParts = 1;
  static constexpr auto multiply = MatrixMul;
  static constexpr auto transpose = Transpose;
  static constexpr auto dot = DotProduct;
  static constexpr auto outer = OuterProduct;
};
struct Complex {
  using Element = ComplexNum;
  static constexpr std::size_t kParts = 2;
  static constexpr auto multiply = CxMatrixMul;
  static constexpr auto transpose = CxTranspose;
  static constexpr auto dot = CxDotProduct;
  static constexpr auto outer = CxOuterProduct;
};

template <typename T>
class Product : public testing::Test {
 protected:
  using Element = typename T::Element;
  static constexpr std::size_t kParts = T::kParts;

  static const Element* in(const Values& x) { return reinterpret_cast<const Element*>(x.data()); }
  static Element* out(Guarded& x) { return reinterpret_cast<Element*>(x.data()); }

  // The sum at `s` takes sign x[0] y[0]; volatile keeps each rounding.
  static void add(double* s, const double* x, const double* y, double sign) {
    if (kParts == 1) {
      const volatile double product = x[0] * y[0];
      s[0] += sign * product;
      return;
    }
    const volatile double rr = x[0] * y[0], ii = x[1] * y[1], ri = x[0] * y[1], ir = x[1] * y[0];
    const volatile double re = rr - ii, im = ri + ir;
    s[0] += sign * re;
    s[1] += sign * im;
  }

  static Values plain(const Values& a, const Values& b, std::size_t r, std::size_t k, std::size_t c,
                      Values sums, double sign) {
    for (std::size_t i = 0; i < r; ++i) {
      for (std::size_t j = 0; j < c; ++j) {
        for (std::size_t t = 0; t < k; ++t) {
          add(&sums[(i * c + j) * kParts], &a[(i * k + t) * kParts], &b[(t * c + j) * kParts],
              sign);
        }
      }
    }
    return sums;
  }

  static void compare(const Values& a, const Values& b, std::size_t r, std::size_t k,
                      std::size_t c) {
    Guarded result(r * c * kParts), difference(test::uniform(r * c * kParts));
    const auto rows = static_cast<int32_t>(r), terms = static_cast<int32_t>(k);
    ASSERT_EQ(T::multiply(in(a), in(b), rows, terms, static_cast<int32_t>(c), out(result)),
              FATHOM_OK);
    const Values sums = plain(a, b, r, k, c, Values(r * c * kParts), 1.0);
    ASSERT_TRUE(SameBits(result.values(), sums) && result.intact()) << r << ' ' << k << ' ' << c;
    const Values left = plain(a, b, r, k, c, difference.values(), -1.0);
    subtractProduct(in(a), k, in(b), c, out(difference), c, r, k, c);
    ASSERT_TRUE(SameBits(difference.values(), left) && difference.intact())
        << r << ' ' << k << ' ' << c;
  }
};

using Kinds = testing::Types<Real, Complex>;
TYPED_TEST_SUITE(Product, Kinds);

TYPED_TEST(Product, KeepsTheBitsOfTheTripleLoop) {
  constexpr std::size_t p = TypeParam::kParts;
  const auto both = [&](std::size_t r, std::size_t k, std::size_t c) {
    this->compare(test::uniform(r * k * p, r), test::uniform(k * c * p, c + 50), r, k, c);
    this->compare(test::awkward(r * k * p, r), test::awkward(k * c * p, c + 50), r, k, c);
  };
  for (std::size_t i = 0; i < 1600; i += 3) both(1 + i % 40, 1 + i * 7 % 37, 1 + i / 40);
  both(300, 300, 300);
  both(9, 256, 33);
  both(258, 513, 5);
  both(1, 1000, 70);
}

TYPED_TEST(Product, TransposesEveryShape) {
  constexpr std::size_t p = TypeParam::kParts;
  for (std::size_t i = 0; i < 1602; ++i) {
    const std::size_t r = i < 1600 ? 1 + i % 40 : 101, c = i < 1600 ? 1 + i / 40 : 163;
    const Values a = test::awkward(r * c * p, i);
    Values expected(a.size());
    for (std::size_t k = 0; k < a.size(); ++k) {
      const std::size_t row = k / p / c, column = k / p % c;
      expected[(column * r + row) * p + k % p] = k % p == 0 ? a[k] : -a[k];
    }
    Guarded t(a.size());
    ASSERT_EQ(TypeParam::transpose(this->in(a), static_cast<int32_t>(r), static_cast<int32_t>(c),
                                   this->out(t)),
              FATHOM_OK);
    ASSERT_TRUE(SameBits(t.values(), expected) && t.intact()) << r << ' ' << c;
  }
}

// As matrix products with one row, one term or one column.
TYPED_TEST(Product, OfVectors) {
  constexpr std::size_t p = TypeParam::kParts;
  for (std::size_t n : test::sizes({1000, 2500})) {
    for (auto data : {test::awkward, test::uniform}) {
      const Values x = data(3 * p, n), y = data(n * p, 7), z = data(n * p, n);
      const auto count = static_cast<int32_t>(n);
      Guarded sum(p), products(3 * n * p);
      ASSERT_EQ(TypeParam::dot(this->in(y), this->in(z), count, this->out(sum)), FATHOM_OK);
      ASSERT_EQ(TypeParam::outer(this->in(x), 3, this->in(y), count, this->out(products)),
                FATHOM_OK);
      EXPECT_TRUE(SameBits(sum.values(), this->plain(y, z, 1, n, 1, Values(p), 1.0))) << n;
      Values expected(3 * n * p, -0.0);  // the product as it is
      expected = this->plain(x, y, 3, 1, n, expected, 1.0);
      EXPECT_TRUE(SameBits(products.values(), expected) && products.intact()) << n;
    }
  }
}

TEST(ProductOf, TracesStartFromZero) {
  const Values a = {-0.0, 1, 2, 3, -0.0, 4, 5, 6, 0.5}, minus = {-0.0, 1, 2, -0.0};
  double trace = 9;
  EXPECT_EQ(Trace(a.data(), 3, &trace), FATHOM_OK);
  EXPECT_TRUE(SameBits(trace, 0.5));
  EXPECT_EQ(Trace(minus.data(), 2, &trace), FATHOM_OK);
  EXPECT_TRUE(SameBits(trace, 0.0));
  const ComplexNum z[6] = {{1, -2}, {9, 9}, {9, 9}, {9, 9}, {3, 5}, {9, 9}};
  ComplexNum sum;
  for (const auto& [r, c, re, im] : {std::array{2, 3, 4, 3}, {3, 2, 10, 7}, {1, 6, 1, -2}}) {
    EXPECT_EQ(CxTrace(z, r, c, &sum), FATHOM_OK);
    EXPECT_TRUE(sum.real == re && sum.imaginary == im) << r << ' ' << c;
  }
}

}  // namespace
}  // namespace fathom
