#include <algorithm>
#include <complex>

#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom {
namespace {

using test::Guarded;
using test::kInf;
using test::kNan;
using test::SameBits;
using test::Values;
using C = std::complex<double>;

constexpr AnalysisStatus kOk = FATHOM_OK;
constexpr AnalysisStatus kZero = FATHOM_ERR_DIVIDE_BY_ZERO;

// Routines of one operand, and of one and an exponent, called as those of two.
template <auto routine>
AnalysisStatus of(double ar, double ai, double, double, double* re, double* im) {
  return routine(ar, ai, re, im);
}
AnalysisStatus power(double ar, double ai, double p, double, double* re, double* im) {
  return CxPow(ar, ai, p, re, im);
}

struct Case {
  decltype(&CxAdd) routine;
  double ar, ai, br, bi;
  AnalysisStatus status;
  double re = Guarded::kFill, im = Guarded::kFill;  // as they were
};

// Exact values, signs of zero among them; NaN counts as zero in every check.
const Case kCases[] = {
    {CxAdd, 1, -0.0, 2, -0.0, kOk, 3, -0.0},
    {CxSub, 1, -0.0, 2, -0.0, kOk, -1, 0.0},
    {CxMul, 1, 2, 3, 5, kOk, -7, 11},
    {CxDiv, 1, 0, 0.0, kNan, kZero},
    {CxDiv, 1, 0, kNan, 1.0, kOk, kNan, kNan},
    {CxDiv, 1, 0, 1e-200, 0.0, kOk, kInf, kNan},  // the divisor's square underflows
    {of<CxRecip>, 2.0, 0.0, 0, 0, kOk, 0.5, -0.0},
    {of<CxRecip>, 1e-200, 1e-200, 0, 0, kZero},
    {of<CxRecip>, 1.0, kNan, 0, 0, kZero},
    {of<CxSqrt>, 4.0, -0.0, 0, 0, kOk, 2.0, -0.0},
    {of<CxSqrt>, -1e-200, 0.0, 0, 0, kOk, 0.0, 0.0},
    {of<CxLn>, 0.0, 1e-200, 0, 0, kZero},
    {of<CxLn>, kInf, kNan, 0, 0, kZero},
    {of<CxLog>, -10.0, 0.0, 0, 0, kOk, 1.0, kPi * 0.434294481903252},
    {of<CxLog>, kNan, 0.0, 0, 0, kZero},
    {of<ToPolar>, -1e-200, 0.0, 0, 0, kOk, 0.0, kPi},
    {of<ToRect>, -2.0, 0.0, 0, 0, kOk, -2.0, -0.0},
    {power, 4.0, 0.0, -0.5, 0, kOk, 0.5, -0.0},
    {power, -0.0, 0.0, -1.0, 0, kOk, 0.0, 0.0},
    {power, kNan, 1.0, 2.0, 0, kOk, 0.0, 0.0},
    {power, 0.0, 0.0, -0.0, 0, kZero},
    {power, 0.0, kNan, kNan, 0, kZero},
};

TEST(Complex, ScalarValuesStatusesAndWhatIsWritten) {
  for (const Case& c : kCases) {
    double re = Guarded::kFill, im = Guarded::kFill;
    EXPECT_EQ(c.routine(c.ar, c.ai, c.br, c.bi, &re, &im), c.status) << "row " << &c - kCases;
    EXPECT_TRUE(SameBits(re, c.re) && SameBits(im, c.im)) << "row " << &c - kCases;
  }
}

// The standard library's functions scale and branch otherwise. Arguments from every quadrant.
TEST(Complex, FunctionsAgreeWithTheStandardLibrary) {
  const Values parts = test::uniform(400);
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    const C a(5.0 * parts[i], 5.0 * parts[i + 1]);
    const auto near = [&a](auto routine, double p, C expected) {
      double re = 0.0, im = 0.0;
      EXPECT_EQ(routine(a.real(), a.imag(), p, 0.0, &re, &im), kOk);
      EXPECT_LT(std::abs(C(re, im) - expected), 4e-15 * (1.0 + std::abs(expected))) << a;
    };
    near(of<CxRecip>, 0.0, 1.0 / a);
    near(of<CxSqrt>, 0.0, std::sqrt(a));
    near(of<CxExp>, 0.0, std::exp(a));
    near(of<CxLn>, 0.0, std::log(a));
    near(of<CxLog>, 0.0, std::log10(a));
    near(power, -0.75, std::pow(a, -0.75));
  }
}

// One element by its definition: a + ib and c + id.
C plain(char operation, double a, double b, double c, double d) {
  if (operation == '+') return {a + c, b + d};
  if (operation == '-') return {a - c, b - d};
  if (operation == '*') return {a * c - b * d, a * d + b * c};
  if (operation == '/') return C(a * c + b * d, b * c - a * d) / (c * c + d * d);
  if (operation == 'l') return {(a * 0.7 - b * -1.9) + -0.3, (a * -1.9 + b * 0.7) + 1e3};
  if (operation == 'r') return {fathom::cos(b) * a, fathom::sin(b) * a};
  if ((std::isnan(a) || a == 0.0) && (std::isnan(b) || b == 0.0)) return 0.0;
  return {std::sqrt(a * a + b * b), fathom::atan2(b, a)};
}

AnalysisStatus call(char operation, Guarded (&x)[6], int32_t n, double* y, double* z) {
  if (operation == 'l') return CxLinEv1D(x[0], x[1], n, 0.7, -1.9, -0.3, 1e3, y, z);
  if (operation == 'r') return ToRect1D(x[0], x[1], n, y, z);
  if (operation == 'p') return ToPolar1D(x[0], x[1], n, y, z);
  if (operation == '+') return CxAdd1D(x[0], x[1], x[2], x[3], n, y, z);
  if (operation == '-') return CxSub1D(x[0], x[1], x[2], x[3], n, y, z);
  if (operation == '*') return CxMul1D(x[0], x[1], x[2], x[3], n, y, z);
  return CxDiv1D(x[0], x[1], x[2], x[3], n, y, z);
}

// With the arrays that may be the outputs: 0 to 3 are the inputs.
const std::pair<char, std::vector<std::pair<std::size_t, std::size_t>>> kOperations[] = {
    {'+', {{4, 5}, {0, 1}, {2, 3}, {0, 3}, {2, 1}}},
    {'-', {{4, 5}, {0, 1}, {2, 3}, {0, 3}, {2, 1}}},
    {'*', {{4, 5}, {0, 1}}},
    {'/', {{4, 5}, {0, 1}}},
    {'l', {{4, 5}, {0, 1}}},
    {'p', {{4, 5}, {0, 1}, {1, 0}}},
    {'r', {{4, 5}, {0, 1}, {1, 0}}},
};

// Awkward values begin anywhere, or nowhere; the first divisor whose square is zero or NaN ends the
// division: what came before it is written, the rest is left.
TEST(Complex, ArraysMatchThePlainLoopSeparateAndInPlace) {
  const double special[] = {0.0, -0.0, kInf, 1.7e308, test::kDenormal, kNan, -0.0, kNan};
  for (const auto& [operation, choices] : kOperations) {
    for (std::size_t n = 1; n <= 5000; n += n < 140 ? 1 : 31 + n / 3) {
      Values x[6];
      for (std::size_t p = 0; p < 6; ++p) {
        x[p] = test::uniform(n, p + n);
        for (std::size_t i = n * n / 3 % (n + 5); i < n; i += 7) x[p][i] = special[(i + p * p) % 8];
      }
      Values expected[2];
      for (std::size_t i = 0; i < n; ++i) {
        const double square = x[2][i] * x[2][i] + x[3][i] * x[3][i];
        if (operation == '/' && (square == 0.0 || std::isnan(square))) break;
        const C y = plain(operation, x[0][i], x[1][i], x[2][i], x[3][i]);
        expected[0].push_back(y.real());
        expected[1].push_back(y.imag());
      }
      for (const auto& [re, im] : choices) {
        Guarded y[] = {Guarded(x[0]), Guarded(x[1]), Guarded(x[2]),
                       Guarded(x[3]), Guarded(x[4]), Guarded(x[5])};
        EXPECT_EQ(call(operation, y, static_cast<int32_t>(n), y[re], y[im]),
                  expected[0].size() < n ? kZero : kOk);
        Values wanted[] = {x[re], x[im]};
        for (std::size_t k : {0u, 1u})
          std::copy_n(expected[k].begin(), expected[k].size(), wanted[k].begin());
        ASSERT_TRUE(SameBits(y[re].values(), wanted[0]) && y[re].intact()) << operation << n;
        ASSERT_TRUE(SameBits(y[im].values(), wanted[1]) && y[im].intact()) << operation << n;
      }
    }
  }
}

}  // namespace
}  // namespace fathom
