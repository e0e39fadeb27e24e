#include <gtest/gtest.h>

#include <cmath>

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
  double* out[3];
  std::int32_t count = 0;
  const auto samples = static_cast<std::int32_t>(n);
  const AnalysisStatus status = PeakDetector(x, samples, threshold, width, polarity, first, last,
                                             &out[0], &out[1], &out[2], &count);
  if (status != FATHOM_OK) return {static_cast<double>(status)};
  Values found;
  for (std::int32_t i = 0; i < count; ++i)
    found.insert(found.end(), {out[0][i], out[1][i], out[2][i]});
  for (double* p : out) {
    EXPECT_EQ(p == nullptr, count == 0);
    FreeAnalysisMem(p);
  }
  return found;
}

// The signal in a first block of `cut` samples and others of `step`.
Values detect(const Values& x, double threshold, std::int32_t width, std::int32_t polarity = 0,
              std::size_t cut = 1u << 20, std::size_t step = 1u << 20) {
  Values all;
  for (std::size_t at = 0, end; at < x.size(); at = end) {
    end = std::min(x.size(), at + (at == 0 ? cut : step));
    const Values found =
        block(&x[at], end - at, threshold, width, polarity, at == 0, end == x.size());
    all.insert(all.end(), found.begin(), found.end());
  }
  return all;
}

struct Bell {
  double centre, height, sigma;
  double operator()(std::size_t i) const {
    const double t = (static_cast<double>(i) - centre) / sigma;
    return sigma < 100 ? height * std::exp(-0.5 * t * t) : height - 0.5 * t * t;
  }
};

TEST(Peaks, KnownCentres) {
  for (std::int32_t w : {3, 4, 5, 8, 16, 31, 64, 101}) {
    const double middle = 200 + (w % 2 == 0 ? 0.5 : 0.0);  // of a run; sigma = 100: a parabola
    for (const Bell& bell : {Bell{0.25, 3, 100}, Bell{123.4567, 3, 100}, Bell{398, 3, 100},
                             Bell{middle, 1, 0.7}, Bell{middle, 1, 3}, Bell{middle, 1, 60}}) {
      Values x(400);
      for (std::size_t i = 0; i < 400; ++i) x[i] = bell(i);
      const Values p = detect(x, bell.sigma < 100 ? 0.2 / w : 2.5, w);
      ASSERT_EQ(p.size(), 3u) << w << ' ' << bell.sigma;
      EXPECT_NEAR(p[0], bell.centre, 1e-9) << w << ' ' << bell.sigma;
      if (bell.sigma < 100) continue;
      EXPECT_LT(std::fabs(p[1] - 3) + std::fabs(p[2] + 1e-4), 1e-9) << w;
    }
  }
}

TEST(Peaks, SmallSignals) {
  struct {
    Values x;
    std::int32_t width;
    Values locations;
  } const cases[] = {
      {{0, 1, 0}, INT32_MAX, {}},
      {{0, 1, 0.5, 1, 0}, 3, {1 + 1.0 / 6, 3 - 1.0 / 6}},  // two in little more than a run
      {{0, 0, 1, 1, 1, 1, 0, 0}, 3, {2.5}},                // a plateau longer than the run
      {{6, 4, 1, 0}, 3, {}},                               // the maximum is outside the run
      {{0.9, 0.9, 0.9, 0.9, 0.9, 0.9, 0.9}, 5, {}},
      {{0, 1, 0, 0, 0, 0.5, 0, 0}, 3, {1}},  // the second: at the threshold
      {{1, 3, 1, test::kNan, 1, 3, 1, test::kInf, 1, 3, 1}, 3, {1, 5, 9}},  // neighbours stay
      {{1e308, 1.1e308, 1e308}, 3, {1}},
  };
  for (const auto& c : cases) {
    const Values p = detect(c.x, 0.5, c.width);
    ASSERT_EQ(p.size(), 3 * c.locations.size()) << &c - cases;
    for (std::size_t i = 0; i < p.size(); i += 3) EXPECT_NEAR(p[i], c.locations[i / 3], 1e-12);
  }
}

// Nine bells in noise; scipy.signal.find_peaks(x, height=0.5, prominence=0.5) of SciPy 1.10.1.
TEST(Peaks, AgreesWithSciPyInNoise) {
  const Bell bells[] = {{60.3, 1, 8},     {145.8, 2, 12}, {260.1, 1.5, 15},
                        {333.6, 1, 10},   {470, 3, 14},   {555.5, 1.2, 9},
                        {700.7, 2.5, 20}, {790.2, 1, 8},  {935.9, 1.8, 12}};
  const double scipy[] = {60, 149, 258, 334, 469, 555, 698, 791, 937};
  Values x = test::uniform(1000);
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] *= 0.2;
    for (const Bell& bell : bells) x[i] += bell(i);
  }
  const Values p = detect(x, 0.5, 21);
  ASSERT_EQ(p.size(), 27u);
  for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(p[3 * i], scipy[i], 4.0);
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
  EXPECT_EQ(block(x, 6, 0, 2, 2, true, false), Values{FATHOM_ERR_SELECTION});
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
