// Cholesky factors against the walk over columns, and the matrices that are just not positive.
#include <cmath>
#include <cstring>

#include "linalg/element.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

template <typename Element>
void expectPlainFactor(std::size_t n) {
  const Values values = uniform(n * n * sizeof(Element) / 8, n);
  std::vector<Element> a(n * n), l, separate(n * n);
  std::copy(values.begin(), values.end(), reinterpret_cast<double*>(a.data()));
  for (std::size_t i = 0; i < n; ++i) a[i * n + i] = element<Element>(static_cast<double>(n) + 1.0);
  l = a;
  for (std::size_t j = 0; j < n; ++j) {
    for (std::size_t i = 0; i < n; ++i) {
      Element& s = l[i * n + j];
      if (i < j) s = {};
      for (std::size_t t = 0; t < j && i >= j; ++t) s = s - l[i * n + t] * conjugate(l[j * n + t]);
      if (i == j) s = element<Element>(std::sqrt(realPart(s)));
      if (i > j) s = divide(s, realPart(l[j * n + j]));
    }
  }
  const auto factor = [n](Element* x, Element* y) {
    if constexpr (kIsComplex<Element>) return CxCholesky(x, static_cast<int32_t>(n), y);
    if constexpr (!kIsComplex<Element>) return Cholesky(x, static_cast<int32_t>(n), y);
  };
  ASSERT_EQ(factor(a.data(), separate.data()), FATHOM_OK);
  ASSERT_EQ(factor(a.data(), a.data()), FATHOM_OK);
  ASSERT_EQ(std::memcmp(a.data(), l.data(), sizeof(Element) * n * n), 0) << n;
  ASSERT_EQ(std::memcmp(separate.data(), l.data(), sizeof(Element) * n * n), 0) << n;
}

TEST(Cholesky, HasTheBitsOfTheWalkOverColumns) {
  for (const std::size_t n : sizes({530})) expectPlainFactor<double>(n);
  for (const std::size_t n : sizes({100})) expectPlainFactor<ComplexNum>(n);
}

TEST(Cholesky, RefusesWhatIsNotPositiveDefinite) {
  constexpr double kLeast = 3.2927225399135965e-10;
  const double below = std::nextafter(kLeast, 0.0);
  const struct {
    Values a;  // 2 x 2, lower triangle
    AnalysisStatus status;
  } cases[] = {
      {{1, kNan, 0, 0}, FATHOM_ERR_SINGULAR},
      {{1, kNan, 0, -1}, FATHOM_ERR_SINGULAR},
      {{1, kNan, 0, kNan}, FATHOM_ERR_SINGULAR},
      {{kNan, 0, 0, 1}, FATHOM_ERR_SINGULAR},
      {{1, kNan, 0, 1.0842021724855047e-19}, FATHOM_OK},               // 2^-63 and two units
      {{1, kNan, 0, 1.0842021724855034e-19}, FATHOM_ERR_SINGULAR},     // a later one too small
      {{1.0842021724855034e-19, kNan, 0, 1}, FATHOM_ERR_SINGULAR},     // an earlier one, in the end
      {{1, kNan, 1 / below, 2 / below / below}, FATHOM_ERR_SINGULAR},  // against the largest of all
      {{1, kNan, 1e9, 1.5e18}, FATHOM_OK},
  };
  for (const auto& c : cases) {
    Guarded l(4), complexL(8);
    Values complex(8);
    for (std::size_t i = 0; i < 4; ++i) complex[2 * i] = c.a[i];
    const auto* const cx = reinterpret_cast<const ComplexNum*>(complex.data());
    SCOPED_TRACE(::testing::PrintToString(c.a));
    EXPECT_EQ(Cholesky(c.a.data(), 2, l), c.status);
    EXPECT_EQ(CxCholesky(cx, 2, reinterpret_cast<ComplexNum*>(complexL.data())), c.status);
    EXPECT_EQ(l.untouched() && complexL.untouched(), c.status != FATHOM_OK);
  }
}

TEST(CheckPosDef, LooksAtBothTrianglesAndTheDiagonal) {
  const double least = 0x1p-38, above = std::nextafter(least, 1.0);  // 2^-40 of 4
  const struct {
    Values a;  // 2 x 2, complex
    int32_t expected;
  } cases[] = {{{4, 0, 1, 2, 1, -2, 4, 0}, 1},     {{4, 0, 1, 2, 1, 2, 4, 0}, 0},
               {{4, 0, 0, least, 0, 0, 4, 0}, 1},  {{4, 0, 0, above, 0, 0, 4, 0}, 0},
               {{4, 0, 0, 0, least, 0, 4, 0}, 1},  {{4, 0, above, 0, 0, 0, 4, 0}, 0},
               {{4, above, 0, 0, 0, 0, 4, 0}, 0},  {{4, 0, 5, 0, 5, 0, 4, 0}, 0},
               {{4, 0, kNan, 0, 0, 0, 4, 0}, 0},   {{-4, 0, 0, 0, 0, 0, 4, 0}, 0},
               {{kInf, 0, 1, 0, 1, 0, kInf, 0}, 0}};
  for (const auto& c : cases) {
    int32_t yes = -1, complexYes = -1;
    const Values real = {c.a[0], c.a[2], c.a[4], c.a[6]};
    const bool isReal = c.a[1] == 0 && c.a[3] == 0 && c.a[5] == 0;
    ASSERT_EQ(CheckPosDef(real.data(), 2, &yes), FATHOM_OK);
    ASSERT_EQ(CxCheckPosDef(reinterpret_cast<const ComplexNum*>(c.a.data()), 2, &complexYes), 0);
    EXPECT_EQ(complexYes, c.expected) << ::testing::PrintToString(c.a);
    if (isReal) {
      EXPECT_EQ(yes, c.expected) << ::testing::PrintToString(c.a);
    }
  }
}

}  // namespace
}  // namespace fathom::test
