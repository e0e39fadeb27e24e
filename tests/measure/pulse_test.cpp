#include "support/testing.hpp"

namespace fathom::test {
namespace {

// Base, top, overshoot, preshoot, slew rate; then delay, width, rise and fall time.
Values measure(const Values& x) {
  double amplitude, high, middle, low, base, top, overshoot, preshoot, slew;
  int t[4];
  PulseParam(x.data(), count(x), &amplitude, &high, &middle, &low, &top, &base, &overshoot,
             &preshoot, t, t + 1, t + 2, t + 3, &slew);
  EXPECT_TRUE(SameBits({amplitude, low, middle, high},
                       {top - base, .1 * amplitude, .5 * amplitude, .9 * amplitude}));
  return {base, top, overshoot, preshoot, slew, 1. * t[0], 1. * t[1], 1. * t[2], 1. * t[3]};
}

TEST(Pulse, LevelsAndTimes) {
  const std::pair<Values, Values> cases[] = {
      {{0, 0, 0, .05, .15, .25, .45, .65, .85, .95, 1, 1, 1, .95, .7, .45, .3, .05, 0},
       {.02, .98, .02, .02, .128, 7, 8, 6, 4}},
      {{0, 0, 0, 1, 1, 1}, {.02, .98, .02, .02, .768, 3, 3, 1, 1}},            // never falls
      {{1, 1, 1, 0, 0}, {.02, .98, .02, .02, 1e30, 0, 3, 0, 1}},               // never rises
      {{0, 1, 0, 1}, {.02, .98, .02, .02, .768, 1, 1, 1, 1}},                  // the first of two
      {{0, .4, .4, 0, .6, .6, 1, 1}, {.02, .98, .02, .02, .256, 4, 4, 3, 1}},  // ties
      {{0, .21, .21, .51, .51, .51, .79, .79, 1}, {.22, .78, .22, .22, .112, 3, 6, 4, 1}},
      {{0, 0, kNan, 0, 1, 1}, {.02, .98, .02, .02, .768, 2, 0, 1, 0}},
      {{3, 3, 3}, {3, 3, 0, 0, 1e30, 0, 0, 0, 0}},
  };
  for (const auto& [x, expected] : cases) {
    const Values results = measure(x);
    for (std::size_t k = 0; k < 9; ++k) EXPECT_NEAR(results[k], expected[k], 1e-12) << k;
  }
}

// Each sample in turn is the largest, then the smallest, with a NaN behind it.
TEST(Pulse, ShootsAreOfTheExtremes) {
  for (std::size_t p = 0; p < 70; ++p) {
    Values x = uniform(71), low = x;
    x[p] = 5.0, low[p] = -5.0;
    x[p + 1] = low[p + 1] = kNan;
    EXPECT_TRUE(SameBits(measure(x)[2], 5.0 - measure(x)[1]));
    EXPECT_TRUE(SameBits(measure(low)[3], measure(low)[0] + 5.0));
  }
  Values x(70, -24 * kDenormal);  // whose top is 0
  x[5] = -0.0, x[33] = 0.0;
  EXPECT_TRUE(SameBits(measure(x)[2], -0.0));
}

}  // namespace
}  // namespace fathom::test
