#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "fathom.h"
#include "spectral/packed_real.hpp"
#include "spectral/plain_transforms.hpp"
#include "support/bits.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::SameBits;

// Random values; with infinities, NaNs, denormals and zeros of both signs strewn in; all -0.0.
std::vector<std::vector<double>> signals(std::size_t n, std::uint64_t seed) {
  std::vector<double> random = test::uniform(n, seed), awkward = random;
  const double strange[] = {-0.0, 0.0, test::kInf, test::kDenormal, 1e300, -test::kInf, test::kNan};
  for (std::size_t i = 0; i < n; i += 3) awkward[i] = strange[i / 3 % (n > 64 ? 7 : 2)];
  return {random, awkward, std::vector<double>(n, -0.0)};
}

std::vector<std::size_t> powersOfTwo() {
  std::vector<std::size_t> sizes;
  for (std::size_t n = 1; n <= (1u << 18); n *= 2) sizes.push_back(n);
  sizes.push_back(1u << 20);
  return sizes;
}

TEST(Transforms, HaveTheBitsOfThePlainLoops) {
  for (const std::size_t size : powersOfTwo()) {
    const auto n = static_cast<int32_t>(size);
    const auto xs = signals(size, 1), ys = signals(size, 2);
    for (std::size_t s = 0; s < xs.size(); ++s) {
      SCOPED_TRACE(::testing::Message() << "n = " << n << ", signal " << s);
      Guarded re(xs[s]), im(ys[s]);
      std::vector<double> x = xs[s], y = ys[s];
      EXPECT_EQ(FFT(re, im, n), FATHOM_OK);
      test::plain::fft(x, y);
      EXPECT_TRUE(SameBits(re.values(), x));
      EXPECT_TRUE(SameBits(im.values(), y));
      EXPECT_TRUE(re.intact() && im.intact());

      Guarded real(xs[s]);
      x = xs[s];
      EXPECT_EQ(PackedRealFFT(real, n, Log2Size(n)), FATHOM_OK);
      test::plain::packedRealFft(x);
      EXPECT_TRUE(SameBits(real.values(), x));
      EXPECT_TRUE(real.intact());

      Guarded packed(xs[s]);
      x = xs[s];
      PackedRealInvFFT(packed, n, Log2Size(n));
      test::plain::packedRealInvFft(x);
      EXPECT_TRUE(SameBits(packed.values(), x));
      EXPECT_TRUE(packed.intact());

      Guarded hartley(xs[s]);
      x = xs[s];
      EXPECT_EQ(FHT(hartley, n), FATHOM_OK);
      test::plain::fht(x);
      EXPECT_TRUE(SameBits(hartley.values(), x));
      EXPECT_TRUE(hartley.intact());
    }
  }
}

TEST(Transforms, CheckTheSizeFirst) {
  double re[16] = {3.0}, im[16] = {5.0};
  for (int32_t n : {0, -1, -8, INT32_MIN, 3, 6, 12, INT32_MAX}) {
    const AnalysisStatus expected = n < 1 ? FATHOM_ERR_NO_SAMPLES : FATHOM_ERR_POWER_OF_TWO;
    EXPECT_EQ(FFT(re, im, n), expected);
    EXPECT_EQ(InvFFT(re, im, n), expected);
    EXPECT_EQ(ReFFT(re, im, n), expected);
    EXPECT_EQ(ReInvFFT(re, im, n), expected);
    EXPECT_EQ(FHT(re, n), expected);
    EXPECT_EQ(InvFHT(re, n), expected);
  }
  EXPECT_EQ(FFT(re, im, 1) + InvFFT(re, im, 1) + ReInvFFT(re, im, 1) + FHT(re, 1) + InvFHT(re, 1),
            FATHOM_OK);
  EXPECT_TRUE(re[0] == 3.0 && im[0] == 5.0);
  EXPECT_EQ(ReFFT(re, im, 1), FATHOM_OK);
  EXPECT_TRUE(re[0] == 3.0 && im[0] == 0.0);
}

TEST(Transforms, Log2SizeIsTheFloor) {
  const int32_t cases[][2] = {{INT32_MIN, -1}, {0, -1},    {1, 0},        {2, 1},         {3, 1},
                              {1023, 9},       {1024, 10}, {1 << 30, 30}, {INT32_MAX, 30}};
  for (const auto& c : cases) EXPECT_EQ(Log2Size(c[0]), c[1]) << c[0];
}

double largest(const std::vector<double>& a, const std::vector<double>& b) {
  double e = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) e = std::max(e, std::fabs(a[i] - b[i]));
  return e;
}

// Every transform of the same samples, against the defining sums.
TEST(Transforms, AgreeWithTheDefinition) {
  for (const int32_t n : {2, 4, 8, 16, 32, 64, 128}) {
    SCOPED_TRACE(n);
    const auto size = static_cast<std::size_t>(n);
    const std::vector<double> x = test::uniform(size, 3), y = test::uniform(size, 4);
    std::vector<double> cxRe(size), cxIm(size), realRe(size), realIm(size), hartley(size);
    for (int32_t k = 0; k < n; ++k) {
      for (int32_t m = 0; m < n; ++m) {
        const double c = std::cos(2 * M_PI * (k * m % n) / n),
                     s = std::sin(2 * M_PI * (k * m % n) / n);
        realRe[k] += x[m] * c;
        realIm[k] -= x[m] * s;
        hartley[k] += x[m] * (c + s);
        cxRe[k] += x[m] * c + y[m] * s;
        cxIm[k] += y[m] * c - x[m] * s;
      }
    }
    const double tolerance = 1e-13 * n;
    std::vector<double> re = x, im = y;
    FFT(re.data(), im.data(), n);
    EXPECT_LT(largest(re, cxRe) + largest(im, cxIm), tolerance);
    InvFFT(re.data(), im.data(), n);
    EXPECT_LT(largest(re, x) + largest(im, y), 1e-15 * n);

    re = x;
    im.assign(size, test::kNan);
    ReFFT(re.data(), im.data(), n);
    EXPECT_LT(largest(re, realRe) + largest(im, realIm), tolerance);
    EXPECT_TRUE(SameBits(im[0], 0.0) && SameBits(im[size / 2], 0.0));
    for (std::size_t k = 0; k <= size / 2; ++k) im[k] = test::kNan;  // never read
    for (std::size_t k = size / 2 + 1; k < size; ++k) re[k] = test::kNan;
    const std::vector<double> before = im;
    ReInvFFT(re.data(), im.data(), n);
    EXPECT_LT(largest(re, x), 1e-15 * n);
    EXPECT_TRUE(SameBits(im, before));

    FHT(re.data(), n);
    EXPECT_LT(largest(re, hartley), tolerance);
    InvFHT(re.data(), n);
    EXPECT_LT(largest(re, x), 1e-15 * n);

    PackedRealFFT(re.data(), n, Log2Size(n));
    PackedRealInvFFT(re.data(), n, Log2Size(n));
    EXPECT_LT(largest(re, x), 1e-15 * n);
  }
}

TEST(Transforms, ImpulseIsFlatExactly) {
  std::vector<double> re(64, 0.0), im(64, 7.0);
  re[0] = 1.0;
  ReFFT(re.data(), im.data(), 64);
  for (std::size_t k = 0; k < 64; ++k) EXPECT_TRUE(re[k] == 1.0 && im[k] == 0.0) << k;
}

}  // namespace
}  // namespace fathom
