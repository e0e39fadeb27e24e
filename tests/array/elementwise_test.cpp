#include "support/testing.hpp"

namespace fathom::test {
namespace {

struct Binary {
  const char* name;
  AnalysisStatus (*array)(const double*, const double*, int32_t, double*);
  AnalysisStatus (*matrix)(const double*, const double*, int32_t, int32_t, double*);
  double (*element)(double, double);
};

const Binary kBinaries[] = {
    {"add", Add1D, Add2D, [](double a, double b) { return a + b; }},
    {"subtract", Sub1D, Sub2D, [](double a, double b) { return a - b; }},
    {"multiply", Mul1D, Mul2D, [](double a, double b) { return a * b; }},
    {"divide", nullptr, Div2D, [](double a, double b) { return a / b; }},
};

TEST(Elementwise, BinaryOperationsMatchThePlainLoopSeparateAndInPlace) {
  for (const Binary& operation : kBinaries) {
    for (int32_t n = 1; n <= 2700; n += n < 70 ? 1 : n < 300 ? 23 : 767) {
      const auto count = static_cast<std::size_t>(n);
      const Values a = awkward(count, 1), b = awkward(count, 2);
      Values expected(count), square(count);
      for (std::size_t i = 0; i < count; ++i) {
        expected[i] = operation.element(a[i], b[i]);
        square[i] = operation.element(a[i], a[i]);
      }
      for (const bool matrix : {false, true}) {
        if (!matrix && operation.array == nullptr) continue;
        const auto apply = [&](const double* p, const double* q, double* y) {
          if (!matrix) return operation.array(p, q, n, y);
          return n % 3 == 0 ? operation.matrix(p, q, 3, n / 3, y) : operation.matrix(p, q, n, 1, y);
        };
        Guarded y(count), first(a), second(b), both(a);
        EXPECT_EQ(apply(a.data(), b.data(), y), FATHOM_OK);
        apply(first, b.data(), first);
        apply(a.data(), second, second);
        apply(both, both, both);
        for (const Guarded* result : {&y, &first, &second}) {
          ASSERT_TRUE(SameBits(result->values(), expected) && result->intact())
              << operation.name << ' ' << n;
        }
        ASSERT_TRUE(SameBits(both.values(), square)) << operation.name << ' ' << n;
      }
    }
  }
}

// The first zero or NaN divisor ends the division; what came before it is written, in place too.
TEST(Elementwise, CheckedDivisionStopsAtTheFirstDivisorThatIsNone) {
  for (const std::size_t n : {1u, 5u, 127u, 128u, 129u, 256u, 300u, 1000u}) {
    const Values a = uniform(n, 3);
    Values divisors = uniform(n, 4);
    for (double& d : divisors) d = d < 0.0 ? d - 1.0 : d + kDenormal;
    for (const double bad : {0.0, -0.0, kNan}) {
      for (std::size_t at = 0; at <= n; at += n < 10 ? 1 : 37) {
        Values b = divisors;
        if (at < n) b[at] = bad;
        if (at + 3 < n) b[at + 3] = 0.0;
        Guarded y(n), first(a), second(b);
        const AnalysisStatus expected = at < n ? FATHOM_ERR_DIVIDE_BY_ZERO : FATHOM_OK;
        const auto count = static_cast<int32_t>(n);
        EXPECT_EQ(Div1D(a.data(), b.data(), count, y), expected);
        EXPECT_EQ(Div1D(first, b.data(), count, first), expected);
        EXPECT_EQ(Div1D(a.data(), second, count, second), expected);
        for (std::size_t i = 0; i < n; ++i) {
          const double quotient = a[i] / b[i];
          ASSERT_TRUE(SameBits(y[i], i < at ? quotient : Guarded::kFill)) << n << ' ' << at;
          ASSERT_TRUE(SameBits(first[i], i < at ? quotient : a[i])) << n << ' ' << at;
          ASSERT_TRUE(SameBits(second[i], i < at ? quotient : b[i])) << n << ' ' << at;
        }
        EXPECT_TRUE(y.intact());
      }
    }
  }
}

TEST(Elementwise, UnaryOperationsMatchThePlainLoopSeparateAndInPlace) {
  struct Unary {
    const char* name;
    std::function<AnalysisStatus(const double*, int32_t, double*)> routine;
    std::function<double(double)> element;
  };
  const auto clipTo = [](double upper, double lower) {
    return Unary{"clip",
                 [=](const double* x, int32_t n, double* y) { return Clip(x, n, upper, lower, y); },
                 [=](double v) {
                   if (v > upper) return upper;
                   if (!(v >= lower)) return lower;
                   return v;
                 }};
  };
  const Unary unaries[] = {
      {"magnitude", Abs1D, [](double v) { return std::signbit(v) ? -v : v; }},
      {"negate", Neg1D, [](double v) { return -v; }},
      {"set", [](const double*, int32_t n, double* y) { return Set1D(y, n, -0.0); },
       [](double) { return -0.0; }},
      {"clear", [](const double*, int32_t n, double* y) { return Clear1D(y, n); },
       [](double) { return 0.0; }},
      clipTo(0.25, -0.5),
      clipTo(0.0, 0.0),  // a zero keeps its sign
      clipTo(kInf, -kInf),
  };
  for (const Unary& operation : unaries) {
    SCOPED_TRACE(operation.name);
    for (int32_t n = 1; n <= 2700; n += n < 70 ? 1 : n < 300 ? 23 : 767) {
      const Values x = awkward(static_cast<std::size_t>(n), 5);
      Values expected;
      for (const double v : x) expected.push_back(operation.element(v));
      expectBits(x, expected, [&](auto in, auto out) { return operation.routine(in, n, out); });
    }
  }
}

TEST(Elementwise, ClipChecksTheCountBeforeTheLimits) {
  const double x[] = {1.0};
  Guarded y(1);
  EXPECT_EQ(Clip(x, 0, 0.0, 1.0, y), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(Clip(x, 1, 0.0, 1.0, y), FATHOM_ERR_LIMITS);
  EXPECT_EQ(Clip(x, 1, kNan, 0.0, y), FATHOM_ERR_LIMITS);
  EXPECT_EQ(Clip(x, 1, 1.0, kNan, y), FATHOM_ERR_LIMITS);
  EXPECT_TRUE(y.untouched());
}

}  // namespace
}  // namespace fathom::test
