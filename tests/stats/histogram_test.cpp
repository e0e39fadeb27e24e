#include "support/testing.hpp"

namespace fathom::test {
namespace {

std::vector<int32_t> countsPlainly(const Values& x, double base, double top, int32_t intervals) {
  std::vector<int32_t> counts(static_cast<std::size_t>(intervals), 0);
  const double inverse = 1.0 / ((top - base) / intervals);
  for (double v : x) {
    const double k = std::floor((v - base) * inverse);
    if (k >= 0 && k < intervals) {
      ++counts[static_cast<std::size_t>(k)];
    } else if (v == top) {
      ++counts.back();
    }
  }
  return counts;
}

TEST(Histogram, CountsAndAxisAgainstTheDefinition) {
  const struct {
    double base, top;
  } ranges[] = {{0, 1},     {-1, 1},      {-0.3, 0.1}, {0, 5e-324}, {-1e308, 1e308},
                {1e9, 2e9}, {-1e-320, 1}, {-kInf, 0},  {0, kInf}};
  for (std::size_t n : sizes({255, 256, 257, 511, 513, 5000})) {
    Values x = uniform(n, n);
    const double awkward[] = {1.0,  0.0,   -0.0,   1e300, -1e300,
                              kNan, kInf,  -kInf,  0.1,   5e-324,
                              2e9,  1e308, -1e308, 3e10,  std::nextafter(1.0, 0.0)};
    for (std::size_t i = 0; i < n && i < 30; i += 2) x[n - 1 - i] = awkward[i / 2];
    for (const auto& range : ranges) {
      for (int32_t intervals : {1, 2, 3, 7, 100, 1000}) {
        std::vector<int32_t> counts(static_cast<std::size_t>(intervals) + 2, -7);
        Guarded axis(static_cast<std::size_t>(intervals));
        ASSERT_EQ(Histogram(x.data(), static_cast<int32_t>(n), range.base, range.top,
                            counts.data() + 1, axis, intervals),
                  FATHOM_OK);
        ASSERT_TRUE(counts.front() == -7 && counts.back() == -7 && axis.intact());
        ASSERT_EQ(std::vector<int32_t>(counts.begin() + 1, counts.end() - 1),
                  countsPlainly(x, range.base, range.top, intervals))
            << n << ' ' << range.base << ' ' << range.top << ' ' << intervals;
        const double width = (range.top - range.base) / intervals;
        double centre = width * 0.5 + range.base;
        for (double a : axis.values()) {
          ASSERT_TRUE(SameBits(a, centre));
          centre += width;
        }
      }
    }
  }
}

TEST(Histogram, StatusesInOrder) {
  const double x = 0.5;
  int32_t counts = 7;
  double axis = 7, mode = 7;
  for (double base : {1.0, 2.0, kNan}) {
    EXPECT_EQ(Histogram(&x, 0, base, 1.0, &counts, &axis, 0), FATHOM_ERR_BASE_TOP);
    EXPECT_EQ(Mode(&x, 0, base, 1.0, 1, &mode), FATHOM_ERR_BASE_TOP);
    EXPECT_EQ(Mode(&x, 0, base, 1.0, 0, &mode), FATHOM_ERR_NO_SAMPLES);
  }
  for (int request : {1, 2}) {  // memory comes before the checks of the histogram
    const FailingMalloc failing(request);
    EXPECT_EQ(Mode(&x, 0, 2.0, 1.0, 4, &mode), FATHOM_ERR_MEMORY);
    EXPECT_EQ(failing.requests(), request);
  }
  EXPECT_TRUE(counts == 7 && axis == 7 && mode == 7);
}

TEST(Histogram, ModeIsTheCentreOfTheLowestFullestInterval) {
  const double x[] = {0.3, 0.9, 0.95, 0.4, 0.6};
  double modes[3];
  Mode(x, 5, 0, 1, 4, &modes[0]);
  Mode(x + 1, 4, 0, 1, 4, &modes[1]);
  Mode(x, 5, 5, 6, 4, &modes[2]);  // no sample inside
  EXPECT_EQ(Values(modes, modes + 3), (Values{0.375, 0.875, 5.125}));
}

}  // namespace
}  // namespace fathom::test
