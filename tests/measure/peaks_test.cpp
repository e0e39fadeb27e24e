#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "fathom.h"
#include "frame/module.hpp"
#include "support/bits.hpp"
#include "support/failing_malloc.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::SameBits;
using Values = std::vector<double>;

// Location, amplitude and second derivative of each peak of one block; the status if that failed.
Values block(const double* x, std::size_t n, double threshold, std::int32_t width,
             std::int32_t polarity, bool first, bool last) {
  double never = 0.0;
  double* out[3] = {&never, &never, &never};
  std::int32_t count = 0;
  const AnalysisStatus status =
      PeakDetector(x, static_cast<std::int32_t>(n), threshold, width, polarity, first, last,
                   &out[0], &out[1], &out[2], &count);
  if (status != FATHOM_OK) return {static_cast<double>(status)};
  Values found;
  for (std::int32_t i = 0; i < count; ++i)
    found.insert(found.end(), {out[0][i], out[1][i], out[2][i]});
  for (double* p : out) FreeAnalysisMem(p);  // null when there are none, or the checker speaks
  return found;
}

// The signal in a first block of `cut` samples and others of `step`.
Values detect(const Values& x, double threshold, std::int32_t width, std::int32_t polarity = 0,
              std::size_t cut = 1u << 20, std::size_t step = 1u << 20) {
  Values all;
  for (std::size_t at = 0, end; at < x.size(); at = end) {
    end = std::min(x.size(), at + (at == 0 ? cut : step));
    for (double v : block(&x[at], end - at, threshold, width, polarity, at == 0, end == x.size()))
      all.push_back(v);
  }
  return all;
}

struct Bell {  // a parabola if sigma = 100
  double centre, height, sigma;
};

Values bells(std::size_t n, double noise, const std::vector<Bell>& all) {
  Values x = test::uniform(n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] *= noise;
    for (const auto& [centre, height, sigma] : all) {
      const double s = 0.5 * std::pow((static_cast<double>(i) - centre) / sigma, 2.0);
      x[i] += sigma < 100 ? height * std::exp(-s) : height - s;
    }
  }
  return x;
}

TEST(Peaks, KnownCentres) {
  for (std::int32_t w : {3, 4, 5, 8, 16, 31, 64, 101}) {
    const double middle = 200 + (w % 2 == 0 ? 0.5 : 0.0);  // of a run
    for (const Bell& b : {Bell{0.25, 3, 100}, Bell{123.4567, 3, 100}, Bell{398, 3, 100},
                          Bell{middle, 1, 0.7}, Bell{middle, 1, 3}, Bell{middle, 1, 60}}) {
      const Values p = detect(bells(400, 0.0, {b}), b.sigma < 100 ? 0.2 / w : 2.5, w);
      ASSERT_EQ(p.size(), 3u) << w << ' ' << b.sigma;
      EXPECT_NEAR(p[0], b.centre, 1e-9) << w << ' ' << b.sigma;
      EXPECT_TRUE(b.sigma < 100 || std::fabs(p[1] - 3) + std::fabs(p[2] + 1e-4) < 1e-9) << w;
    }
  }
}

TEST(Peaks, SmallSignals) {
  const std::tuple<Values, std::int32_t, Values> cases[] = {
      {{0, 1, 0}, INT32_MAX, {}},
      {{0, 1, 0.5, 1, 0}, 3, {1 + 1.0 / 6, 3 - 1.0 / 6}},  // two in little more than a run
      {{0, 0, 1, 1, 1, 1, 0, 0}, 3, {2.5}},                // a plateau longer than the run
      {{6, 4, 1, 0}, 3, {}},                               // the maximum is outside the run
      {{0.9, 0.9, 0.9, 0.9, 0.9, 0.9}, 5, {}},
      {{0, 1, 0, 0, 0, 0.5, 0, 0}, 3, {1}},  // the second: at the threshold
      {{1, 3, 1, test::kNan, 1, 3, 1, test::kInf, 1, 3, 1}, 3, {1, 5, 9}},  // those beside stay
      {{test::kNan, 3, 3.5, 3, 2, 0.5}, 5, {3 - 91 / 90.0}},
      {{0, 3, 4.5, 5.3, 5.6, 9, 14, 20, 27}, 5, {}},  // a shoulder: denied by the next run
      {{27, 20, 14, 9, 5.6, 5.3, 4.5, 3, 0}, 5, {}},  // and by the one before
      {{1e308, 1.1e308, 1e308}, 3, {1}},
  };
  for (const auto& [x, width, locations] : cases) {
    const Values p = detect(x, 0.5, width);
    ASSERT_EQ(p.size(), 3 * locations.size()) << ::testing::PrintToString(x);
    for (std::size_t i = 0; i < p.size(); i += 3) EXPECT_NEAR(p[i], locations[i / 3], 1e-12);
  }
}

// Peaks of scipy.signal.find_peaks(x, height=0.5, prominence=0.5), SciPy 1.10.1.
TEST(Peaks, AgreesWithSciPyInNoise) {
  const double scipy[] = {60, 149, 258, 334, 469};
  const std::vector<Bell> all = {
      {60.3, 1, 8}, {145.8, 2, 12}, {260.1, 1.5, 15}, {333.6, 1, 10}, {470, 3, 14}};
  const Values p = detect(bells(520, 0.2, all), 0.5, 21);
  ASSERT_EQ(p.size(), 15u);
  for (std::size_t i = 0; i < 5; ++i) EXPECT_NEAR(p[3 * i], scipy[i], 4.0);
}

// Every cut into two blocks, one sample at a time, and the signal upside down: the same bits.
TEST(Peaks, AnyBlocks) {
  Values x = test::uniform(200, 3), y;
  for (std::size_t i = 0; i < 200; ++i) x[i] += 3.0 * std::sin(0.1 * static_cast<double>(i));
  x[120] = test::kNan;
  for (double v : x) y.push_back(-v);
  for (std::int32_t w : {3, 4, 7, 20, 77}) {
    Values whole = detect(x, 0.5, w);
    EXPECT_FALSE(whole.empty()) << w;
    for (std::size_t cut = 1; cut < 200; ++cut)
      EXPECT_TRUE(SameBits(detect(x, 0.5, w, 0, cut), whole)) << w << ' ' << cut;
    EXPECT_TRUE(SameBits(detect(x, 0.5, w, 0, 1, 1), whole)) << w;
    for (std::size_t i = 0; i < whole.size(); ++i) whole[i] *= i % 3 == 0 ? 1.0 : -1.0;
    EXPECT_TRUE(SameBits(detect(y, -0.5, w, 1), whole)) << w;
  }
}

// Each request for memory fails in turn: the call, repeated, goes on as if it had not been made.
TEST(Peaks, AFailedCallChangesNothing) {
  const Values x = test::uniform(300, 5), failed = {FATHOM_ERR_MEMORY};
  Values all;
  for (std::size_t start = 0; start < 300; start += 60) {
    Values found = failed;
    for (int k = 1; found == failed; ++k) {
      const test::FailingMalloc failing(k);
      found = block(&x[start], 60, 0.1, 5, 0, start == 0, start == 240);
      EXPECT_TRUE(found == failed || k > 4) << k;
    }
    all.insert(all.end(), found.begin(), found.end());
    const test::FailingMalloc failing(1);  // another signal, which does not begin
    EXPECT_EQ(block(&x[0], 300, 0, 99, 1, true, start == 240), failed) << start;
  }
  EXPECT_TRUE(SameBits(all, detect(x, 0.1, 5)));
}

TEST(Peaks, BeginsEndsAndBeginsAgain) {
  const double x[] = {0, 1, 0, 0, 2, 0};
  EXPECT_EQ(block(x, 0, 0, 2, 2, true, false), Values{FATHOM_ERR_NO_SAMPLES});
  EXPECT_EQ(block(x, 6, 0, 2, 0, true, false), Values{FATHOM_ERR_SELECTION});
  EXPECT_EQ(block(x, 6, 0, 3, -1, true, false), Values{FATHOM_ERR_SELECTION});
  EXPECT_EQ(block(x, 3, 0, 3, 0, false, false), Values{});  // begins, though not told to
  EXPECT_EQ(block(nullptr, 0, 0, 3, 0, false, true), (Values{1, 1, -2}));
  EXPECT_EQ(block(x, 3, 0, 3, 0, false, false), Values{});
  EXPECT_EQ(block(x, 3, 0, 3, 0, true, false), Values{});  // and again; width and polarity stay
  EXPECT_EQ(block(x, 6, 9, 5, 1, false, false), (Values{1, 1, -2, 4, 1, -2}));
  stopModule();  // as when the library is unloaded
  ASSERT_TRUE(startModule());
  EXPECT_EQ(block(nullptr, 0, 0, 3, 0, false, true), Values{});
}

}  // namespace
}  // namespace fathom
