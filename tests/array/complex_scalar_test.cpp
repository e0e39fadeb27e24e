#include <gtest/gtest.h>

#include <complex>
#include <vector>

#include "fathom.h"
#include "frame/elementary.hpp"
#include "support/bits.hpp"
#include "support/signals.hpp"

namespace fathom {
namespace {

using test::kInf;
using test::kNan;
using test::SameBits;

constexpr AnalysisStatus kOk = FATHOM_OK;
constexpr AnalysisStatus kZero = FATHOM_ERR_DIVIDE_BY_ZERO;
constexpr double kUnwritten = -7.0e77;

// Routines of one operand, and of one and an exponent, called as those of two.
template <auto routine>
AnalysisStatus of(double ar, double ai, double, double, double* re, double* im) {
  return routine(ar, ai, re, im);
}
AnalysisStatus power(double ar, double ai, double p, double, double* re, double* im) {
  return CxPow(ar, ai, p, re, im);
}

struct Case {
  AnalysisStatus (*routine)(double ar, double ai, double br, double bi, double* re, double* im);
  double ar, ai, br, bi;
  AnalysisStatus status;
  double re = kUnwritten, im = kUnwritten;
};

// Exact values, signs of zero among them; NaN counts as zero in every check.
const Case kCases[] = {
    {CxAdd, 1, -0.0, 2, -0.0, kOk, 3, -0.0},
    {CxSub, 1, -0.0, 2, -0.0, kOk, -1, 0.0},
    {CxMul, 1, 2, 3, 5, kOk, -7, 11},
    {CxDiv, -7, 11, 3, 5, kOk, 1, 2},
    {CxDiv, 1, 0, 0.0, -0.0, kZero},
    {CxDiv, 1, 0, kNan, 0.0, kZero},
    {CxDiv, 1, 0, kNan, 1.0, kOk, kNan, kNan},
    {CxDiv, 1, 0, 1e-200, 0.0, kOk, kInf, kNan},  // the divisor's square underflows
    {of<CxRecip>, 0.0, 2.0, 0, 0, kOk, 0.0, -0.5},
    {of<CxRecip>, 2.0, 0.0, 0, 0, kOk, 0.5, -0.0},
    {of<CxRecip>, 0.0, -0.0, 0, 0, kZero},
    {of<CxRecip>, 1e-200, 1e-200, 0, 0, kZero},
    {of<CxRecip>, 1.0, kNan, 0, 0, kZero},
    {of<CxSqrt>, 4.0, -0.0, 0, 0, kOk, 2.0, -0.0},
    {of<CxSqrt>, -0.0, -0.0, 0, 0, kOk, 0.0, 0.0},
    {of<CxSqrt>, -1e-200, 0.0, 0, 0, kOk, 0.0, 0.0},
    {of<CxSqrt>, -4.0, kNan, 0, 0, kOk, 0.0, 0.0},
    {of<CxExp>, 0.0, -0.0, 0, 0, kOk, 1.0, -0.0},
    {of<CxLn>, -1.0, 0.0, 0, 0, kOk, 0.0, kPi},
    {of<CxLn>, 0.0, 1e-200, 0, 0, kZero},
    {of<CxLn>, kInf, kNan, 0, 0, kZero},
    {of<CxLog>, -10.0, 0.0, 0, 0, kOk, 1.0, kPi * 0.434294481903252},
    {of<CxLog>, kNan, 1.0, 0, 0, kZero},
    {of<ToPolar>, -1.0, 0.0, 0, 0, kOk, 1.0, kPi},
    {of<ToPolar>, -1e-200, 0.0, 0, 0, kOk, 0.0, kPi},
    {of<ToRect>, -2.0, 0.0, 0, 0, kOk, -2.0, -0.0},
    {power, 4.0, 0.0, -0.5, 0, kOk, 0.5, -0.0},
    {power, -0.0, 0.0, -1.0, 0, kOk, 0.0, 0.0},
    {power, kNan, 1.0, 2.0, 0, kOk, 0.0, 0.0},
    {power, 3.0, 4.0, kNan, 0, kOk, kNan, kNan},
    {power, 0.0, 0.0, -0.0, 0, kZero},
    {power, 0.0, 0.0, kNan, 0, kZero},
    {power, kNan, 0.0, 0.0, 0, kZero},
};

TEST(ComplexScalar, ValuesStatusesAndWhatIsWritten) {
  for (const Case& c : kCases) {
    double re = kUnwritten, im = kUnwritten;
    EXPECT_EQ(c.routine(c.ar, c.ai, c.br, c.bi, &re, &im), c.status) << "row " << &c - kCases;
    EXPECT_TRUE(SameBits(re, c.re)) << "row " << &c - kCases;
    EXPECT_TRUE(SameBits(im, c.im)) << "row " << &c - kCases;
  }
}

// The standard library's functions scale and branch otherwise. Arguments from every quadrant.
TEST(ComplexScalar, FunctionsAgreeWithTheStandardLibrary) {
  using C = std::complex<double>;
  const std::vector<double> parts = test::uniform(400);
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    const C a(5.0 * parts[i], 5.0 * parts[i + 1]);
    const auto near = [&a](auto routine, double p, C expected) {
      double re = kUnwritten, im = kUnwritten;
      EXPECT_EQ(routine(a.real(), a.imag(), p, 0.0, &re, &im), FATHOM_OK);
      EXPECT_LT(std::abs(C(re, im) - expected), 4e-15 * (1.0 + std::abs(expected))) << a;
    };
    near(of<CxRecip>, 0.0, 1.0 / a);
    near(of<CxSqrt>, 0.0, std::sqrt(a));
    near(of<CxExp>, 0.0, std::exp(a));
    near(of<CxLn>, 0.0, std::log(a));
    near(of<CxLog>, 0.0, std::log10(a));
    near(power, 2.5, std::pow(a, 2.5));
    near(power, -0.75, std::pow(a, -0.75));
  }
}

}  // namespace
}  // namespace fathom
