#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// Applies `window` between guard cells and compares with `plain`, for short and tiled lengths; some
// with ends that tell assignment from multiplication.
void compare(const std::string& name, const std::function<AnalysisStatus(double*, int32_t)>& window,
             const std::function<void(Values&)>& plain, int32_t shortest = 1) {
  SCOPED_TRACE(name);
  for (int32_t n = shortest; n < 1200; n += n < 70 ? 1 : 113) {
    Values expected = uniform(static_cast<std::size_t>(n), 5);
    if (n > 4) expected[3] = -0.0;
    if (n % 3 == 0) expected.front() = expected.back() = kNan;
    Guarded x(expected);
    ASSERT_EQ(window(x, n), FATHOM_OK);
    plain(expected);
    ASSERT_TRUE(SameBits(x.values(), expected) && x.intact()) << "n = " << n;
  }
}

// Multiplies x[k] and x[n - k], one pair after the other, by weight(t), for t = first, first + step
// and so on.
template <typename Weight>
void multiplyPairs(Values& x, double first, double step, Weight weight) {
  double t = first;
  for (std::size_t k = 1; 2 * k < x.size(); ++k, t += step) {
    const double w = weight(t);
    x[k] *= w;
    x[x.size() - k] *= w;
  }
}

double sineSquared(double t) {
  return fathom::sin(t) * fathom::sin(t);
}

TEST(Window, CosineSumsEqualThePlainLoop) {
  struct Row {
    const char* name;
    AnalysisStatus (*window)(double*, int32_t);
    double a, b, d, edge;
  };
  const Row rows[] = {
      {"HamWin", HamWin, 0.54, 0.46, 0.0, 0.08},
      {"BkmanWin", BkmanWin, 0.33999999999999997, 0.5, 0.16, -0x1p-56},
      {"ExBkmanWin", ExBkmanWin, 0.3497420464316423, 0.4965606190885641, 0.15369733447979364,
       0.006878761822871883},
      {"BlkHarrisWin", BlkHarrisWin, 0.34401, 0.49755, 0.15844, 0.004900000000000002},
      {"FlatTopWin", FlatTopWin, 0.08302489390000001, 0.5208971735, 0.3960779326,
       -0.041794346999999954},
  };
  for (const Row& row : rows) {
    EXPECT_NEAR(row.a - row.b + row.d, row.edge, 1e-15);
    compare(row.name, row.window, [&](Values& x) {
      const double step = kTwoPi / count(x);
      x[0] *= row.edge;
      multiplyPairs(x, step, step, [&](double theta) {
        const double c = fathom::cos(theta);
        return (row.a - row.b * c) + (row.d * c) * c;
      });
    });
  }
  const Values a = {0.27, -0.43, 0.22, 0.066, 0.0, 1e-5, 3.0};
  for (int32_t m = 1; m <= 7; ++m) {
    // Signs alternate, but for the sample in the middle.
    const auto sum = [&](double theta, double sign) {
      double w = a[0], angle = 0.0, factor = 1.0;
      for (std::size_t j = 1; j < static_cast<std::size_t>(m); ++j) {
        angle += theta;
        factor *= sign;
        w += factor * (a[j] * fathom::cos(angle));
      }
      return w;
    };
    compare(
        "GenCosWin " + std::to_string(m),
        [&](double* x, int32_t n) { return GenCosWin(x, n, a.data(), m); },
        [&](Values& x) {
          const double step = kTwoPi / count(x);
          x[0] *= sum(0.0, -1.0);
          multiplyPairs(x, step, step, [&](double theta) { return sum(theta, -1.0); });
          if (x.size() % 2 == 0) x[x.size() / 2] *= sum(0.0, 1.0);
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
  for (double beta : {0.0, 0.5, 6.0, -9.0, 60.0, 1e200, kInf, kNan}) {
    compare(
        "KsrWin " + std::to_string(beta), [&](double* x, int32_t n) { return KsrWin(x, n, beta); },
        [&](Values& x) {
          const double step = 2.0 / count(x), peak = plainBessel(beta);
          x[0] *= 1.0 / peak;
          multiplyPairs(x, 1.0 - step, -step, [&](double t) {
            return plainBessel(beta * std::sqrt(1.0 - t * t)) / peak;
          });
        });
  }
}

TEST(Window, OtherShapesEqualThePlainLoop) {
  compare("HanWin", HanWin, [](Values& x) {
    x[0] *= 0.0;
    multiplyPairs(x, kPi / count(x), kPi / count(x), sineSquared);
  });
  compare("CosTaperedWin", CosTaperedWin, [](Values& x) {
    const std::size_t m = x.size() / 10;
    if (m == 0) return;
    x.front() = x.back() = 0.0;
    const double step = kPi / (static_cast<double>(m) * 2.0);
    double theta = step;
    for (std::size_t j = 1; j < m; ++j, theta += step) {
      x[j] *= sineSquared(theta);
      x[x.size() - 1 - j] *= sineSquared(theta);
    }
  });
  compare("TriWin", TriWin, [](Values& x) {
    const double step = 1.0 / (count(x) / 2);  // NOLINT(bugprone-integer-division): the floor
    x[0] = 0.0;
    multiplyPairs(x, step, step, [](double t) { return t; });
  });
  for (double last : {0.5, 1.0, 3.0, 1e-300, 0.0, -1.0}) {
    compare(
        "ExpWin " + std::to_string(last), [&](double* x, int32_t n) { return ExpWin(x, n, last); },
        [&](Values& x) {
          const double step = std::log(last) / (count(x) - 1);
          double e = 0.0;
          for (double& v : x) {
            v *= fathom::exp(e);
            e += step;
          }
        },
        2);
  }
}

TEST(Window, ForceKeepsTheLeadingPart) {
  const struct {
    double duty;
    int kept;
  } rows[] = {{50, 5},   {0, 0},      {-1e300, 0}, {19.9, 1},  {99.9, 9},
              {100, 10}, {1e300, 10}, {kInf, 10},  {-kInf, 0}, {kNan, 0}};
  for (const auto& row : rows) {
    Values expected(10, kNan);  // assigned, not multiplied
    Guarded x(expected);
    ASSERT_EQ(ForceWin(x, 10, row.duty), FATHOM_OK);
    std::fill(expected.begin() + row.kept, expected.end(), 0.0);
    EXPECT_TRUE(SameBits(x.values(), expected)) << row.duty;
  }
}

}  // namespace
}  // namespace fathom::test
