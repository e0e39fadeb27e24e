#include <cfloat>
#include <string>

#include "elementary/reference.hpp"
#include "elementary/slow.hpp"
#include "support/testing.hpp"

namespace fathom::test {

void PrintTo(const Elementary& f, std::ostream* out) {
  *out << f.name;
}

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr int kThinning = 10;
#else
constexpr int kThinning = 1;
#endif

class CorrectRounding : public ::testing::TestWithParam<Elementary> {
 protected:
  using Form = double (*)(double, double);

  // The results of `form` at hard and special arguments and at `count` random ones.
  static void expectRounded(Form form, int count) {
    const Elementary& f = GetParam();
    std::vector<Arguments> arguments = f.hard;
    constexpr double kSpecial[] = {0.0,    1.0,        0.5,     2.0,     3.0,       10.0,
                                   0x1p53, 0x1p52 + 1, DBL_MAX, DBL_MIN, kDenormal, kInf};
    for (double x : kSpecial) {
      for (double y : kSpecial) {
        for (double u : {x, -x, kNan}) {
          for (double v : {y, -y, kNan}) arguments.push_back({u, v});
        }
      }
    }
    Random random(1);
    while (static_cast<int>(arguments.size()) < count / kThinning) {
      arguments.push_back(f.draw(random));
    }
    for (const Arguments& a : arguments) {
      ASSERT_TRUE(SameBits(form(a.first, a.second), correctlyRounded(f, a)))
          << f.name << " of " << std::hexfloat << a.first << ", " << a.second;
    }
  }
};

TEST_P(CorrectRounding, OfSlowPath) {
  expectRounded(GetParam().slow, 20000);
}

TEST_P(CorrectRounding, OfFunction) {
  expectRounded(GetParam().function, 1000000);
}

INSTANTIATE_TEST_SUITE_P(Elementary, CorrectRounding, ::testing::ValuesIn(elementaryFunctions()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SlowPath, PairIsSineAndCosine) {
  for (double x : {0.0, -0.0, 0.7, -2.5, 1e22, -1e300, kInf, kNan}) {
    double s = 0.0, c = 0.0;
    slow::sincos(x, s, c);
    EXPECT_TRUE(SameBits(s, slow::sin(x)));
    EXPECT_TRUE(SameBits(c, slow::cos(x)));
  }
}

}  // namespace
}  // namespace fathom::test
