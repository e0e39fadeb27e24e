#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "fathom.h"
#include "support/bits.hpp"
#include "support/failing_malloc.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::SameBits;

TEST(Deconvolve, RecoversWhatWasConvolved) {
  for (std::int32_t n = 1; n <= 70; ++n) {
    for (std::int32_t nk : {1, 2, 3, 7, 16, 40}) {
      const std::vector<double> x = test::uniform(static_cast<std::size_t>(n), 3);
      std::vector<double> kernel = test::uniform(static_cast<std::size_t>(nk), 5);
      kernel[0] += nk;  // keeps every bin of its spectrum well away from zero
      std::vector<double> signal(x.size() + kernel.size() - 1);
      ASSERT_EQ(Convolve(x.data(), n, kernel.data(), nk, signal.data()), FATHOM_OK);
      const auto ns = static_cast<std::int32_t>(signal.size());
      Guarded result(x.size());
      ASSERT_EQ(Deconvolve(signal.data(), ns, kernel.data(), nk, result), FATHOM_OK);
      ASSERT_TRUE(result.intact());
      for (std::size_t i = 0; i < x.size(); ++i) {
        ASSERT_NEAR(result.data()[i], x[i], 1e-13) << n << ' ' << nk << ' ' << i;
      }
      ASSERT_EQ(Deconvolve(signal.data(), ns, kernel.data(), nk, signal.data()), FATHOM_OK);
      signal.resize(x.size());
      ASSERT_TRUE(SameBits(signal, result.values())) << "in place";
    }
  }
}

// Lengths at the limit, and sizes whose transform would be 2^31.
TEST(Deconvolve, KernelsAsLongAsTheSignal) {
  const std::vector<double> kernel = {2.0, 0.5, 0.25, 8.0, 1.0, 1.0};
  for (std::int32_t ns = 1; ns <= 4; ++ns) {
    Guarded result(1), none(0);
    const std::vector<double> signal(kernel.begin(), kernel.begin() + ns);
    EXPECT_EQ(Deconvolve(signal.data(), ns, kernel.data(), ns, result), FATHOM_OK);
    EXPECT_NEAR(result.data()[0], 1.0, 1e-15);
    EXPECT_EQ(Deconvolve(signal.data(), ns, kernel.data(), ns + 1, none), FATHOM_OK);
    EXPECT_TRUE(none.untouched());
    EXPECT_EQ(Deconvolve(signal.data(), ns, kernel.data(), ns + 2, none), FATHOM_ERR_ARRAY_SIZE);
  }
  const test::FailingMalloc counter(0);
  double x = 1.0;
  for (std::int32_t ns : {(1 << 30) + 1, INT32_MAX}) {
    EXPECT_EQ(Deconvolve(&x, ns, &x, 1, &x), FATHOM_ERR_MEMORY);
  }
  EXPECT_EQ(Deconvolve(&x, 1, &x, INT32_MAX, &x), FATHOM_ERR_ARRAY_SIZE);
  EXPECT_EQ(counter.requests(), 0);
}

}  // namespace
}  // namespace fathom
