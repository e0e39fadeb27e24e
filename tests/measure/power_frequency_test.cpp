#include "support/testing.hpp"

namespace fathom::test {
namespace {

// Powers 1, 2, 4, ... from bin 0, with the largest in bin 6.
const Values kSpectrum = {1, 2, 4, 8, 16, 32, 1024, 128, 256, 512};

TEST(PowerFrequency, BandsAndTheirCentres) {
  const double aroundLargest = (5.0 * 32 + 6.0 * 1024 + 7.0 * 128);
  const struct {
    double search, df;
    std::int32_t span;
    double power, frequency;
  } cases[] = {
      // the whole spectrum is searched
      {-1.0, 2.0, 3, 1184, aroundLargest * 2.0 / 1184},
      {-kInf, 2.0, 3, 1184, aroundLargest * 2.0 / 1184},
      // the frequency names the bin, rounded down; no maximum is looked for
      {4.0, 2.0, 3, 14, (2 + 8.0 + 24 + 0) * 2 / 14},
      {5.999, 2.0, 3, 14, 34.0 * 2 / 14},
      // beyond the last bin: the largest
      {19.999, 2.0, 3, 768, (8.0 * 256 + 9 * 512) * 2 / 768},
      {20.0, 2.0, 3, 1184, aroundLargest * 2.0 / 1184},
      {1e300, 2.0, 3, 1184, aroundLargest * 2.0 / 1184},
      {kInf, 2.0, 3, 1184, aroundLargest * 2.0 / 1184},
      {kNan, 2.0, 3, 1184, aroundLargest * 2.0 / 1184},
      {5.0, 0.0, 3, 1184, 0.0},
      // spans: below 3 is 3, an even one is one wider, and both ends are cut off
      {6.0, 2.0, -5, 28, (2 * 4.0 + 3 * 8 + 4 * 16) * 2 / 28},
      {6.0, 2.0, 4, 62, (2.0 + 8 + 24 + 64 + 160) * 2 / 62},
      {6.0, 2.0, 5, 62, 258.0 * 2 / 62},
      {0.0, 2.0, 5, 7, (2.0 + 8) * 2 / 7},
      {0.0, 2.0, INT32_MAX, 1983, (258 + 6144 + 896 + 2048 + 4608) * 2.0 / 1983},
      // negative spacing: below the first bin, where a band may still reach in
      {3.0, -2.0, 3, 1, -0.0},
      {4.0, -2.0, 3, 0, 4.0},
      {1e300, -1e-300, 3, 0, kInf},
      {1.0, -0.0, 3, 0, kNan},
  };
  for (const auto& c : cases) {
    double frequency = -1.0, power = -1.0;
    ASSERT_EQ(PowerFrequencyEstimate(kSpectrum.data(), 10, c.search, 1.0, kNan, c.df, c.span,
                                     &frequency, &power),
              FATHOM_OK);
    EXPECT_TRUE(SameBits(power, c.power)) << c.search << ' ' << c.df << ' ' << c.span;
    EXPECT_TRUE(SameBits(frequency, c.frequency)) << c.search << ' ' << c.df << ' ' << c.span;
  }
}

TEST(PowerFrequency, DividesByTheNoiseBandwidth) {
  const Values silent(5, 0.0);
  double frequency, power;
  PowerFrequencyEstimate(kSpectrum.data(), 10, -1.0, 1.5, 0.0, 1.0, 3, &frequency, &power);
  EXPECT_EQ(power, 1184 / 1.5);
  PowerFrequencyEstimate(silent.data(), 5, 1.7, 1.5, 0.0, 0.5, 3, &frequency, &power);
  EXPECT_TRUE(power == 0.0 && frequency == 1.5);  // the bin's own, where there is no centre
}

}  // namespace
}  // namespace fathom::test
