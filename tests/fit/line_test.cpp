#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

struct Line {
  Values fitted;
  double first = 0.0, second = 0.0, error = 0.0;  // slope and intercept, or amplitude and damping
};

// The sums in index order, over y or its logarithms, and what follows from them.
Line plain(const Values& x, const Values& y, bool exponential) {
  const double n = static_cast<double>(x.size());
  const bool negative = exponential && y[0] < 0;
  double sx = 0, sxx = 0, sy = 0, sxy = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double v = exponential ? fathom::log(negative ? -y[i] : y[i]) : y[i];
    sx = sx + x[i];
    sxx = sxx + x[i] * x[i];
    sy = sy + v;
    sxy = sxy + x[i] * v;
  }
  Line line;
  if (exponential) {
    line.second = (n * sxy - sx * sy) / (n * sxx - sx * sx);
    line.first = fathom::exp((sy - line.second * sx) / n) * (negative ? -1 : 1);
  } else {
    line.first = (sx * sy - n * sxy) / (sx * sx - n * sxx);
    line.second = (sx * sxy - sy * sxx) / (sx * sx - n * sxx);
  }
  for (std::size_t i = 0; i < x.size(); ++i) {
    line.fitted.push_back(exponential ? fathom::exp(line.second * x[i]) * line.first
                                      : line.first * x[i] + line.second);
    line.error += (line.fitted[i] - y[i]) * (line.fitted[i] - y[i]);
  }
  line.error /= n;
  return line;
}

// Into an array of its own, over x, and over y, which leaves no error.
void expectPlain(const Values& x, const Values& y, bool exponential) {
  const Line expected = plain(x, y, exponential);
  for (const int place : {0, 1, 2}) {
    Guarded ofX(x), ofY(y), own(x.size());
    Guarded& fitted = place == 0 ? own : place == 1 ? ofX : ofY;
    double a, b, error;
    ASSERT_EQ(exponential ? ExpFit(ofX, ofY, count(x), fitted, &a, &b, &error)
                          : LinFit(ofX, ofY, count(x), fitted, &a, &b, &error),
              FATHOM_OK);
    ASSERT_TRUE(SameBits(fitted.values(), expected.fitted) && fitted.intact()) << x.size();
    ASSERT_TRUE(SameBits(a, expected.first) && SameBits(b, expected.second)) << x.size();
    double sum = 0.0;
    for (const double v : expected.fitted) sum += (v - v) * (v - v);
    ASSERT_TRUE(SameBits(error, place == 2 ? sum : expected.error)) << x.size();
    ASSERT_TRUE(place == 2 || SameBits(ofY.values(), y));
  }
}

TEST(LineFits, BitsOfThePlainSums) {
  for (const std::size_t n : sizes({255, 256, 257, 1000})) {
    if (n < 2) continue;
    const Values x = uniform(n, n), y = uniform(n, 2 * n);
    expectPlain(x, y, false);
    expectPlain(awkward(n, n), awkward(n, n + 1), false);
    for (const double sign : {1.0, -1.0}) {
      Values v = y;
      for (double& element : v) element = sign * (std::fabs(element) + 1e-3);
      expectPlain(x, v, true);
      if (n > 4) v[3] = sign * kInf;
      expectPlain(x, v, true);
    }
  }
}

TEST(LineFits, KnownCurves) {
  const double e = std::exp(1.0);
  Values x = {0, 1, 2}, line = {1, 3, 5}, curve = {-2, -2 * e, -2 * e * e}, fitted(3);
  double a, b, error;
  LinFit(x.data(), line.data(), 3, fitted.data(), &a, &b, &error);
  EXPECT_TRUE(a == 2 && b == 1 && error == 0 && fitted == line);
  ExpFit(x.data(), curve.data(), 3, fitted.data(), &a, &b, &error);
  EXPECT_TRUE(std::fabs(a + 2) < 1e-14 && std::fabs(b - 1) < 1e-14);
  EXPECT_EQ(LinFit(Values(3, 5.0).data(), line.data(), 3, fitted.data(), &a, &b, &error),
            FATHOM_OK);
  EXPECT_FALSE(std::isfinite(a) || std::isfinite(b));
}

TEST(LineFits, TheSignTestIsLenientToAZeroInFrontAndRestoresEveryBit) {
  const Values right[] = {{kNan, -1, 0}, {0, -1, -2}, {-0.0, -1, 0.0}, {-kDenormal, -kInf, -1}};
  const Values wrong[] = {{1, 2, -1},   {1, 0, 2},        {1, 2, kNan},
                          {kNan, 1, 2}, {kNan, -1, kNan}, {-1, -0.0, 1},
                          {-1, 0.0, 1}, {-1, -2, 3},      {0, -1, 1e-300}};
  const auto check = [](const Values& y, AnalysisStatus status) {
    Guarded x(Values{1, 2, 4}), copy(y), fitted(3), a(1), b(1), error(1);
    EXPECT_EQ(ExpFit(x, copy, 3, fitted, a, b, error), status);
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(std::signbit(copy.data()[i]), std::signbit(y[i]));
      EXPECT_TRUE(SameBits(copy.data()[i], y[i]));
    }
    EXPECT_EQ(fitted.untouched() && error.untouched(), status != FATHOM_OK);
    if (status != FATHOM_OK) {
      EXPECT_TRUE(SameBits(*a.data(), 0.0) && SameBits(*b.data(), 0.0));
    }
  };
  for (const Values& y : right) check(y, FATHOM_OK);
  for (const Values& y : wrong) check(y, FATHOM_ERR_SIGN_OF_ARRAY);
}

}  // namespace
}  // namespace fathom::test
