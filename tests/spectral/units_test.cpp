#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "fathom.h"
#include "frame/extended.hpp"
#include "support/bits.hpp"
#include "support/failing_malloc.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::SameBits;

// Step by step over the whole array.
std::vector<double> plain(std::vector<double> x, int kind, int scale, int unit, double bandwidth,
                          double df) {
  const SoftExtended perMilliwatt({0xD2634D974F9C572Fu, -63});
  const double k = 1.0 / (bandwidth * df);
  for (std::size_t i = 0; i < x.size(); ++i) {
    double& v = x[i];
    if (kind == 2) {
      if (scale != 0) v = 20.0 * std::log10(std::fabs(v));
      continue;
    }
    if (kind != 0) v = v * v;
    if (unit & 4) v = v * k;
    if ((unit & 1) && scale != 2 && i > 0) v = v * 2.0;
    if (!(unit & 2) && scale == 0) v = std::sqrt(std::fabs(v));
    if (scale == 2) v = (perMilliwatt * std::fabs(v)).toDouble();
    if (scale == 1 || scale == 2) v = 10.0 * std::log10(std::fabs(v));
  }
  return x;
}

TEST(Units, ValuesHaveTheBitsOfTheSteps) {
  for (std::size_t n : {1u, 2u, 3u, 17u, 512u, 513u, 514u, 1500u}) {
    std::vector<double> x = test::uniform(n);
    if (n == 17) x = {0.0, -0.0, test::kInf, test::kNan, test::kDenormal, 1e-300, 1e300, -1e200, 1};
    for (int kind : {0, 1, 2, 3, -1}) {
      for (int scale : {0, 1, 2, 3, -1}) {
        for (int unit : {0, 1, 2, 3, 4, 5, 6, 7, 8, 13, -1, -6}) {
          std::vector<double> y = x;
          char label[64] = "V";
          ASSERT_EQ(SpectrumUnitConversion(y.data(), static_cast<std::int32_t>(x.size()), kind,
                                           scale, unit, 1.5, 0.3, test::kNan, y.data(), label),
                    0);
          ASSERT_TRUE(SameBits(y, plain(x, kind, scale, unit, 1.5, 0.3)))
              << n << ' ' << kind << ' ' << scale << ' ' << unit;
        }
      }
    }
  }
}

// Kind, scale, unit; the longest label fills the room that it is to have.
TEST(Units, Labels) {
  const struct {
    int kind, scale, unit;
    const char* label;
  } cases[] = {{0, 0, 0, "Vrms"},        {0, 0, 1, "Vpk"},
               {1, 0, 2, "Vrms^2"},      {0, 0, 3, "Vpk^2"},
               {0, 0, 4, "Vrms/rtHz"},   {1, 0, 5, "Vpk/rtHz"},
               {0, 0, 6, "Vrms^2/Hz"},   {0, 0, 7, "Vpk^2/Hz"},
               {0, 1, 0, "dBVrms"},      {1, 1, 1, "dBVpk"},
               {0, 1, 2, "dBVrms"},      {0, 1, 3, "dBVpk"},
               {0, 1, 4, "dBVrms/rtHz"}, {0, 1, 5, "dBVpk/rtHz"},
               {0, 1, 6, "dBVrms^2/Hz"}, {0, 1, 7, "dBVpk^2/Hz"},
               {0, 0, 8, "V"},           {0, 1, -1, "dBV"},
               {0, 2, 1, "dBm"},         {1, 2, 9, "dBm"},
               {0, 3, 2, "Vrms^2"},      {2, 0, 3, ""},
               {2, 1, 0, "dB"},          {2, 2, 7, "dB"}};
  for (const auto& c : cases) {
    std::string buffer = "V" + std::string(1, '\0') + std::string(11, '#');
    double y = 0.0;
    SpectrumUnitConversion(&y, 1, c.kind, c.scale, c.unit, 1.0, 1.0, 0.0, &y, buffer.data());
    EXPECT_STREQ(buffer.c_str(), c.label) << c.kind << ' ' << c.scale << ' ' << c.unit;
    EXPECT_EQ(buffer[12], '#');
  }
}

TEST(Units, FailedCopyOfTheLabelLeavesItAndTheValues) {
  double y = 9.0;
  char label[16] = "V";
  const test::FailingMalloc failing(1);
  EXPECT_EQ(SpectrumUnitConversion(&y, 1, 0, 0, 0, 1, 1, 0, &y, label), FATHOM_ERR_MEMORY);
  EXPECT_EQ(y, 3.0);
  EXPECT_STREQ(label, "V");
}

}  // namespace
}  // namespace fathom
