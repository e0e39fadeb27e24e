#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "support/bits.hpp"
#include "support/guarded.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::SameBits;
using Samples = std::vector<double>;

// Applies `window` between guard cells and compares with `plain`, for short and tiled lengths.
void compare(const std::string& name, const std::function<AnalysisStatus(double*, int32_t)>& window,
             const std::function<void(Samples&)>& plain, int32_t shortest = 1) {
  SCOPED_TRACE(name);
  for (int32_t n = shortest; n < 1200; n += n < 70 ? 1 : 113) {
    Samples expected = test::uniform(static_cast<std::size_t>(n), 5);
    if (n > 4) expected[3] = -0.0;
    Guarded x(expected);
    ASSERT_EQ(window(x, n), FATHOM_OK);
    plain(expected);
    ASSERT_TRUE(SameBits(x.values(), expected)) << "n = " << n;
    ASSERT_TRUE(x.intact());
  }
}

// Multiplies x[k] and x[n - k] by weight() for each pair, one after the other.
template <typename Weight>
void multiplyPairs(Samples& x, Weight weight) {
  const std::size_t n = x.size();
  for (std::size_t k = 1; 2 * k < n; ++k) {
    const double w = weight(k);
    x[k] *= w;
    x[n - k] *= w;
  }
}

TEST(Window, CosineSumsEqualThePlainLoop) {
  struct Row {
    const char* name;
    AnalysisStatus (*window)(double*, int32_t);
    double a, b, d, edge;
  };
  const Row rows[] = {
      {"BkmanWin", BkmanWin, 0.33999999999999997, 0.5, 0.16, -0x1p-56},
      {"ExBkmanWin", ExBkmanWin, 0.3497420464316423, 0.4965606190885641, 0.15369733447979364,
       0.006878761822871883},
      {"BlkHarrisWin", BlkHarrisWin, 0.34401, 0.49755, 0.15844, 0.004900000000000002},
      {"FlatTopWin", FlatTopWin, 0.08302489390000001, 0.5208971735, 0.3960779326,
       -0.041794346999999954},
  };
  for (const Row& row : rows) {
    EXPECT_NEAR(row.a - row.b + row.d, row.edge, 1e-15);
    compare(row.name, row.window, [&](Samples& x) {
      const double step = kTwoPi / static_cast<double>(x.size());
      double theta = step;
      x[0] *= row.edge;
      multiplyPairs(x, [&](std::size_t) {
        const double c = std::cos(theta);
        theta += step;
        return (row.a - row.b * c) + (row.d * c) * c;
      });
    });
  }
  compare("HamWin", HamWin, [](Samples& x) {
    const double step = kTwoPi / static_cast<double>(x.size());
    double theta = step;
    x[0] *= 0.08;
    multiplyPairs(x, [&](std::size_t) {
      const double w = 0.54 - 0.46 * std::cos(theta);
      theta += step;
      return w;
    });
  });
}

TEST(Window, HanningAndTaperEqualThePlainLoop) {
  compare("HanWin", HanWin, [](Samples& x) {
    const double step = kPi / static_cast<double>(x.size());
    double theta = step;
    x[0] *= 0.0;
    multiplyPairs(x, [&](std::size_t) {
      const double s = std::sin(theta);
      theta += step;
      return s * s;
    });
  });
  compare("CosTaperedWin", CosTaperedWin, [](Samples& x) {
    const std::size_t m = x.size() / 10;
    if (m == 0) return;
    x.front() = x.back() = 0.0;
    const double step = kPi / (static_cast<double>(m) * 2.0);
    double theta = step;
    for (std::size_t j = 1; j < m; ++j, theta += step) {
      const double s = std::sin(theta);
      x[j] *= s * s;
      x[x.size() - 1 - j] *= s * s;
    }
  });
}

TEST(Window, GeneralCosineSumEqualsThePlainLoop) {
  const Samples a = {0.27, -0.43, 0.22, 0.066, 0.0, 1e-5, 3.0};
  for (int32_t m = 1; m <= 7; ++m) {
    compare(
        "GenCosWin " + std::to_string(m),
        [&](double* x, int32_t n) { return GenCosWin(x, n, a.data(), m); },
        [&](Samples& x) {
          const auto sum = [&](double theta) {
            double w = a[0];
            double angle = 0.0;
            for (int32_t j = 1; j < m; ++j) {
              angle += theta;
              const double term = a[static_cast<std::size_t>(j)] * std::cos(angle);
              w = j % 2 == 1 ? w - term : w + term;
            }
            return w;
          };
          const std::size_t n = x.size();
          const double step = kTwoPi / static_cast<double>(n);
          double theta = step;
          x[0] *= sum(0.0);
          multiplyPairs(x, [&](std::size_t) {
            const double w = sum(theta);
            theta += step;
            return w;
          });
          if (n % 2 == 1) return;
          double middle = a[0];
          for (int32_t j = 1; j < m; ++j) middle += a[static_cast<std::size_t>(j)];
          x[n / 2] *= middle;
        });
  }
}

double plainBessel(double x) {
  double sum = 1.0, term = 1.0, previous = 0.0, k = 0.0;
  for (int added = 0; std::fabs(sum - previous) > 1e-8 && added < 25; ++added) {
    previous = sum;
    k += 2.0;
    term = term * (x * x) / (k * k);
    sum += term;
  }
  return sum;
}

TEST(Window, KaiserEqualsThePlainLoopAndThePublishedBesselFunction) {
  EXPECT_NEAR(plainBessel(1.0), 1.2660658777520084, 1e-9);  // Abramowitz & Stegun, table 9.8
  EXPECT_NEAR(plainBessel(5.0), 27.239871823604442, 1e-7);
  for (double beta : {0.0, 0.5, 6.0, -9.0, 60.0, 1e200, test::kInf, test::kNan}) {
    compare(
        "KsrWin " + std::to_string(beta), [&](double* x, int32_t n) { return KsrWin(x, n, beta); },
        [&](Samples& x) {
          const double step = 2.0 / static_cast<double>(x.size());
          const double peak = plainBessel(beta);
          double t = 1.0;
          x[0] *= 1.0 / peak;
          multiplyPairs(x, [&](std::size_t) {
            t -= step;
            return plainBessel(beta * std::sqrt(1.0 - t * t)) / peak;
          });
        });
  }
}

TEST(Window, TriangleAndExponentialEqualThePlainLoop) {
  compare("TriWin", TriWin, [](Samples& x) {
    const std::size_t half = x.size() / 2;
    const double step = 1.0 / static_cast<double>(half);
    double factor = 0.0;
    x[0] = 0.0;
    multiplyPairs(x, [&](std::size_t) { return factor += step; });
  });
  for (double last : {0.5, 1.0, 3.0, 1e-300, 0.0, -1.0}) {
    compare(
        "ExpWin " + std::to_string(last), [&](double* x, int32_t n) { return ExpWin(x, n, last); },
        [&](Samples& x) {
          const double step = std::log(last) / static_cast<double>(x.size() - 1);
          double e = 0.0;
          for (double& v : x) {
            v *= std::exp(e);
            e += step;
          }
        },
        2);
  }
}

TEST(Window, ClosedFormValues) {
  const auto onOnes = [](std::size_t n, const std::function<void(double*, int32_t)>& window) {
    Samples x(n, 1.0);
    window(x.data(), static_cast<int32_t>(n));
    return x;
  };
  EXPECT_TRUE(SameBits(onOnes(1, BkmanWin)[0], -0x1p-56));
  EXPECT_TRUE(SameBits(onOnes(1, HanWin)[0], 0.0));
  EXPECT_EQ(onOnes(2, HamWin), (Samples{0.08, 1.0}));
  EXPECT_EQ(onOnes(4, TriWin), (Samples{0.0, 0.5, 1.0, 0.5}));
  EXPECT_EQ(onOnes(5, TriWin), (Samples{0.0, 0.5, 1.0, 1.0, 0.5}));
  const double low = (1.0 - std::sqrt(0.5)) / 2, high = (1.0 + std::sqrt(0.5)) / 2;
  const Samples hanning = {0.0, low, 0.5, high, 1.0, high, 0.5, low};
  const Samples exponential = {1.0, std::sqrt(0.5), 0.5};
  const Samples eight = onOnes(8, HanWin);
  const Samples three = onOnes(3, [](double* x, int32_t n) { ExpWin(x, n, 0.5); });
  for (std::size_t k = 0; k < 8; ++k) EXPECT_NEAR(eight[k], hanning[k], 1e-15);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(three[k], exponential[k], 1e-15);
}

TEST(Window, ForceKeepsTheLeadingPart) {
  struct Row {
    double duty;
    std::size_t kept;
  };
  for (const Row& row : {Row{50, 5},
                         {0, 0},
                         {-1e300, 0},
                         {19.9, 1},
                         {99.9, 9},
                         {100, 10},
                         {1e300, 10},
                         {test::kInf, 10},
                         {-test::kInf, 0},
                         {test::kNan, 0}}) {
    Guarded x(Samples(10, test::kNan));  // assigned, not multiplied
    ASSERT_EQ(ForceWin(x, 10, row.duty), FATHOM_OK);
    Samples expected(10, test::kNan);
    std::fill(expected.begin() + static_cast<std::ptrdiff_t>(row.kept), expected.end(), 0.0);
    EXPECT_TRUE(SameBits(x.values(), expected)) << row.duty;
  }
}

TEST(Window, TaperAssignsItsEnds) {
  Samples x(20, test::kNan);
  EXPECT_EQ(CosTaperedWin(x.data(), 20), FATHOM_OK);
  EXPECT_TRUE(SameBits(x[0], 0.0) && SameBits(x[19], 0.0));
}

}  // namespace
}  // namespace fathom
