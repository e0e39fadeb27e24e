#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

double plain(double v, bool first, int kind, int scale, int unit, double k) {
  if (kind == 2) return scale != 0 ? 20.0 * fathom::log10(std::fabs(v)) : v;
  if (kind != 0) v = v * v;
  if (unit & 4) v = v * k;
  if ((unit & 1) && scale != 2 && !first) v = v * 2.0;
  if (!(unit & 2) && scale == 0) v = std::sqrt(std::fabs(v));
  if (scale == 2) v = (SoftExtended({0xD2634D974F9C572Fu, -63}) * std::fabs(v)).toDouble();
  return scale == 1 || scale == 2 ? 10.0 * fathom::log10(std::fabs(v)) : v;
}

const char* const kSuffixes[] = {"rms",      "pk",      "rms^2",    "pk^2",
                                 "rms/rtHz", "pk/rtHz", "rms^2/Hz", "pk^2/Hz"};

TEST(Units, ValuesAndLabelsOfEveryChoice) {
  for (std::size_t n : {1u, 2u, 50u, 513u, 1500u}) {
    const Values x = n == 50 ? awkward(n, 1) : uniform(n);
    for (int choice = 0; choice < 5 * 5 * 20; ++choice) {
      const int kind = choice % 5 - 1, scale = choice / 5 % 5 - 1, unit = choice / 25 - 8;
      Values values = x;
      for (double& v : values) v = plain(v, &v == &values[0], kind, scale, unit, 1.0 / (1.5 * 0.3));
      std::string expected = scale == 1 ? "dBV" : scale == 2 ? "dBm" : "V";
      const int row = scale == 1 && (unit == 2 || unit == 3) ? unit - 2 : unit;
      if (scale != 2 && unit >= 0 && unit < 8) expected += kSuffixes[row];
      if (kind == 2) expected = scale != 0 ? "dB" : "";
      expectBits(x, values, [&](const double* in, double* y) {
        std::string label = std::string("V\0", 2) + "##########!";  // room for 11 more than "V"
        const AnalysisStatus status = SpectrumUnitConversion(in, count(x), kind, scale, unit, 1.5,
                                                             0.3, kNan, y, label.data());
        // As far as its terminator. NOLINTNEXTLINE(readability-redundant-string-cstr)
        EXPECT_EQ(label.c_str() + label.substr(12), expected + "!");
        return status;
      });
    }
  }
}

TEST(Units, FailedCopyOfTheLabelLeavesItAndTheValues) {
  double y = 9.0;
  char label[16] = "V";
  const FailingMalloc failing(1);
  EXPECT_EQ(SpectrumUnitConversion(&y, 1, 0, 0, 0, 1, 1, 0, &y, label), FATHOM_ERR_MEMORY);
  EXPECT_EQ(y, 3.0);
  EXPECT_STREQ(label, "V");
}

}  // namespace
}  // namespace fathom::test
