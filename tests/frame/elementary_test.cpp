#include "frame/elementary.hpp"

#include "support/testing.hpp"

namespace fathom::test {
namespace {

Values angles() {
  Values x = {0.0, -0.0, kPi, kTwoPi, 1e22, -1e300, kInf, kNan, 1e-310};
  for (double v : uniform(500)) x.push_back(v * 100.0);
  return x;
}

// What the generators and transforms rely on: one value or an array, both functions at once or one
// after the other, the bits are the same, and an array may be overwritten by its results.
TEST(Elementary, EveryFormGivesTheSameBits) {
  const Values x = angles();
  Values s(x.size()), c(x.size()), s2 = x, c2 = x, e = x;
  sincos(x.data(), x.size(), s.data(), c.data());
  sin(s2.data(), x.size(), s2.data());
  cos(c2.data(), x.size(), c2.data());
  exp(e.data(), x.size(), e.data());
  for (std::size_t i = 0; i < x.size(); ++i) {
    EXPECT_TRUE(SameBits(s[i], std::sin(x[i])));
    EXPECT_TRUE(SameBits(c[i], std::cos(x[i])));
    EXPECT_TRUE(SameBits(s2[i], s[i]));
    EXPECT_TRUE(SameBits(c2[i], c[i]));
    EXPECT_TRUE(SameBits(e[i], exp(x[i])));
  }
}

TEST(Elementary, ConstantsAreTheNearestDoubles) {
  EXPECT_EQ(kPi, std::acos(-1.0));
  EXPECT_EQ(kTwoPi, 2.0 * kPi);
  EXPECT_EQ(kRadiansPerDegree, kPi / 180.0);
}

}  // namespace
}  // namespace fathom::test
