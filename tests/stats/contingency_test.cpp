#include "support/testing.hpp"

namespace fathom::test {
namespace {

using Counts = std::vector<int32_t>;

TEST(Contingency, BitsOfThePlainSums) {
  std::vector<std::pair<std::size_t, std::size_t>> shapes = {{1000, 1000}, {3, 2'200'000}};
  for (std::size_t c = 2; c < 70; ++c) shapes.emplace_back(2 + c % 5, c);
  for (const auto& [r, c] : shapes) {
    for (double largest : {9.0, 2147483646.0}) {  // with the latter, the second's total is rounded
      Counts counts;
      for (double u : uniform(r * c, r + c))
        counts.push_back(static_cast<int32_t>((1.5 + 0.5 * u) / 2.0 * largest));
      Values rowSum(r, 0.0), columnSum(c, 0.0);
      double total = 0.0, expected = 0.0;
      for (std::size_t i = 0; i < r * c; ++i) {
        rowSum[i / c] += counts[i];
        columnSum[i % c] += counts[i];
        total += counts[i];
      }
      for (std::size_t i = 0; i < r * c; ++i) {
        const double e = rowSum[i / c] * columnSum[i % c] / total;
        expected += (counts[i] - e) * (counts[i] - e) / e;
      }
      const auto rows = static_cast<int32_t>(r), columns = static_cast<int32_t>(c);
      double chi2 = -7, p = -7, lower = -7;
      ASSERT_EQ(Contingency_Table(rows, columns, counts.data(), &chi2, &p), FATHOM_OK);
      XX_Dist(expected, (rows - 1) * (columns - 1), &lower);
      ASSERT_TRUE(SameBits(chi2, expected) && SameBits(p, 1.0 - lower)) << r << " x " << c;
    }
  }
}

TEST(Contingency, StatusesInOrderAndKnownTables) {
  const Counts known = {10, 20, 30, 40}, negative = {1, 2, 3, -1}, zeros = {1, 2, 0, 0};
  constexpr int32_t kMost = INT32_MAX;
  double chi2 = -7, p = -7;
  EXPECT_EQ(Contingency_Table(kMost, kMost, negative.data(), &chi2, &p), FATHOM_ERR_MEMORY);
  EXPECT_EQ(Contingency_Table(1, 4, negative.data(), &chi2, &p), FATHOM_ERR_CATEGORIES);
  EXPECT_EQ(Contingency_Table(2, 2, negative.data(), &chi2, &p), FATHOM_ERR_NEGATIVE_TABLE);
  EXPECT_TRUE(chi2 == -7 && p == -7);
  EXPECT_EQ(Contingency_Table(2, 2, zeros.data(), &chi2, &p), FATHOM_OK);
  EXPECT_TRUE(chi2 != chi2 && p == 1.0);
  EXPECT_EQ(Contingency_Table(2, 2, known.data(), &chi2, &p), FATHOM_OK);
  EXPECT_NEAR(chi2, 50.0 / 63.0, 1e-14);  // 100 (10 40 - 20 30)^2 / (30 70 40 60)
  EXPECT_NEAR(p, std::erfc(std::sqrt(25.0 / 63.0)), 1e-4);
}

}  // namespace
}  // namespace fathom::test
