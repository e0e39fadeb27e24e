#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/testing.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::kInf;
using test::kNan;
using test::SameBits;
using test::Values;

struct Case {
  int32_t type, size;
  Values a, b;
  AnalysisStatus status;
  Values matrix;
};

// Real and imaginary parts in turn, where complex.
const Case kReal[] = {
    {0, 2, {}, {}, FATHOM_OK, {1, 0, 0, 1}},
    {0, 0, {}, {}, FATHOM_ERR_NO_SAMPLES, {}},
    {1, 0, {7, -0.0}, {}, FATHOM_OK, {7, 0, 0, -0.0}},
    {2, 0, {1, 2, 3}, {9, 5, 6}, FATHOM_OK, {1, 5, 6, 2, 1, 5, 3, 2, 1}},
    {2, 0, {1, 2, 3, 4}, {9, 5}, FATHOM_OK, {1, 5, 2, 1, 3, 2, 4, 3}},
    {2, 0, {1, 2}, {9, 5, 6}, FATHOM_ERR_NO_SAMPLES, {}},
    {3, 0, {0, -2, kNan}, {}, FATHOM_OK, {0, 0, 1, 4, -2, 1, kNan, kNan, 1}},
    {4, 0, {2, -6, 4}, {}, FATHOM_OK, {3, -2, 1, 0}},
    {4, 0, {0, 1, 0, -1}, {}, FATHOM_OK, {-kInf, kNan, kInf, 1, 0, 0, 0, 1, 0}},
    {4, 0, {3, 1}, {}, FATHOM_OK, {1 / -3.0}},
    {4, 0, {3}, {}, FATHOM_ERR_NO_SAMPLES, {}},
    {5, 0, {}, {}, FATHOM_ERR_SELECTION, {}},
    {-1, 0, {}, {}, FATHOM_ERR_SELECTION, {}},
};
const Case kComplex[] = {
    {0, 1, {}, {}, FATHOM_OK, {1, 0}},
    {1, 0, {7, 8, 1, 2}, {}, FATHOM_OK, {7, 8, 0, 0, 0, 0, 1, 2}},
    {2, 0, {1, -1, 2, -2}, {9, 9, 5, 3}, FATHOM_OK, {1, -1, 5, 3, 2, -2, 1, -1}},
    {3, 0, {0, 1, 2, 0}, {}, FATHOM_OK, {0, 1, 1, 0, 2, 0, 1, 0}},
    // 1 + 0i times infinity has 0 times infinity in its imaginary part.
    {3, 0, {kInf, 0, 0, 0}, {}, FATHOM_OK, {kInf, kNan, 1, 0, 0, 0, 1, 0}},
    // -1 / (2 + i) = -0.4 + 0.2i.
    {4, 0, {2, 1, 5, 0, 0, 10}, {}, FATHOM_OK, {5 * -0.4, 1, 10 * -0.2, 10 * -0.4, 1, 0, 0, 0}},
    {4, 0, {3, 1}, {}, FATHOM_ERR_NO_SAMPLES, {}},
    {5, 0, {}, {}, FATHOM_ERR_SELECTION, {}},
};

template <typename Element, typename Routine, std::size_t n>
void check(const Case (&cases)[n], Routine routine) {
  constexpr std::size_t kParts = sizeof(Element) / sizeof(double);
  for (const Case& k : cases) {
    Guarded m(k.matrix.size());
    const auto count = [](const Values& x) { return static_cast<int32_t>(x.size() / kParts); };
    EXPECT_EQ(routine(k.type, k.size, reinterpret_cast<const Element*>(k.a.data()), count(k.a),
                      reinterpret_cast<const Element*>(k.b.data()), count(k.b),
                      reinterpret_cast<Element*>(m.data())),
              k.status);
    EXPECT_TRUE(SameBits(m.values(), k.matrix) && m.intact()) << k.type << ' ' << &k - cases;
  }
}

TEST(Structured, HoldsTheTabulatedElements) {
  check<double>(kReal, SpecialMatrix);
  check<ComplexNum>(kComplex, CxSpecialMatrix);
}

TEST(Structured, ToeplitzIsConstantAlongDiagonals) {
  const Values a = test::uniform(23, 1), b = test::uniform(17, 2);
  Guarded m(23 * 17);
  ASSERT_EQ(SpecialMatrix(FATHOM_MATRIX_TOEPLITZ, 0, a.data(), 23, b.data(), 17, m), FATHOM_OK);
  Values expected;
  for (std::size_t i = 0; i < 23; ++i) {
    for (std::size_t j = 0; j < 17; ++j) expected.push_back(j > i ? b[j - i] : a[i - j]);
  }
  EXPECT_TRUE(SameBits(m.values(), expected) && m.intact());
}

}  // namespace
}  // namespace fathom
