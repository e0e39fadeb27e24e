// The factorisation in blocks against the walk over columns, and what is left where it stops.
#include <cmath>
#include <numeric>
#include <utility>

#include "array/complex.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

struct Factor {
  Values lu;
  std::vector<int32_t> pivots;
  int32_t parity = 0;
  AnalysisStatus status = FATHOM_OK;
};

// Column by column, every sum in one go: the order that fixes the bits.
Factor plainLu(const Values& a, int n) {
  Factor f{a, std::vector<int32_t>(n)};
  std::iota(f.pivots.begin(), f.pivots.end(), 0);
  const auto at = [&](int i, int j) -> double& { return f.lu[i * n + j]; };
  for (int j = 0; j < n; ++j) {
    double best = 1e-12;
    int pivot = -1;
    for (int i = 0; i < n; ++i) {
      for (int t = 0; t < std::min(i, j); ++t) at(i, j) -= at(i, t) * at(t, j);
      if (i >= j && std::fabs(at(i, j)) > std::fabs(best)) best = at(pivot = i, j);
    }
    if (pivot < 0) {
      f.status = FATHOM_ERR_SINGULAR;
      return f;
    }
    if (pivot != j) {
      std::swap_ranges(&at(j, 0), &at(j, 0) + n, &at(pivot, 0));
      f.pivots[j] = pivot;
      f.parity ^= 1;
    }
    for (int i = j + 1; i < n; ++i) at(i, j) /= best;
  }
  return f;
}

Values plainSolution(const Factor& f, Values x) {
  const auto n = static_cast<int>(x.size());
  for (int i = 0; i < n; ++i) {
    std::swap(x[i], x[f.pivots[i]]);
    for (int t = 0; t < i; ++t) x[i] -= f.lu[i * n + t] * x[t];
  }
  for (int i = n - 1; i >= 0; --i) {
    for (int t = i + 1; t < n; ++t) x[i] -= f.lu[i * n + t] * x[t];
    x[i] /= f.lu[i * n + i];
  }
  return x;
}

Values identity(std::size_t n) {
  Values e(n * n);
  for (std::size_t i = 0; i < n; ++i) e[i * n + i] = 1.0;
  return e;
}

// The routines on `a` against the plain factor: also what they leave of a singular matrix.
void expectPlain(const Values& a, const Values& b) {
  const int n = count(b);
  SCOPED_TRACE(n);
  const Factor plain = plainLu(a, n);
  const bool regular = plain.status == FATHOM_OK;
  for (const int failing : {0, 1}) {  // without memory, LU goes column by column
    Guarded lu(a);
    std::vector<int32_t> pivots(n);
    int32_t parity = -1;
    const FailingMalloc malloc(failing);
    ASSERT_EQ(LU(lu, n, pivots.data(), &parity), plain.status);
    ASSERT_TRUE(SameBits(lu.values(), plain.lu) && lu.intact());
    ASSERT_TRUE(pivots == plain.pivots && parity == plain.parity);
  }
  const Values x = regular ? plainSolution(plain, b) : b;
  Guarded y(b.size()), same(b), inverse(a.size());
  ASSERT_EQ(LinEqs(a.data(), b.data(), n, y), plain.status);
  ASSERT_EQ(LinEqs(a.data(), same, n, same), plain.status);
  ASSERT_TRUE(SameBits(y.values(), x) && SameBits(same.values(), x) && y.intact());

  Values e = identity(b.size()), expected = e;
  for (int k = 0; k < n && regular; ++k) {
    const Values column = plainSolution(plain, Values(e.begin() + k * n, e.begin() + k * n + n));
    for (int i = 0; i < n; ++i) expected[i * n + k] = column[i];
  }
  ASSERT_EQ(InvMatrix(a.data(), n, inverse), plain.status);
  ASSERT_TRUE(SameBits(inverse.values(), expected) && inverse.intact());
  Guarded separate(a.size()), inPlace(a);
  ASSERT_EQ(GenInvMatrix(a.data(), n, FATHOM_GENERAL, separate), plain.status);
  ASSERT_EQ(GenInvMatrix(inPlace, n, FATHOM_GENERAL, inPlace), plain.status);
  ASSERT_TRUE(SameBits(separate.values(), regular ? expected : plain.lu));
  ASSERT_TRUE(SameBits(inPlace.values(), separate.values()) && inPlace.intact());

  double product = 1.0, det = -7.0;
  for (int i = 0; i < n; ++i) product *= plain.lu[i * n + i];
  ASSERT_EQ(Determinant(a.data(), n, &det), FATHOM_OK);
  ASSERT_TRUE(SameBits(det, !regular ? 0.0 : plain.parity == 1 ? -product : product));
}

TEST(Lu, HasTheBitsOfTheWalkOverColumns) {
  for (const std::size_t n : sizes({100, 129, 200})) {
    expectPlain(uniform(n * n, n), uniform(n, 7));
    if (n < 20) expectPlain(awkward(n * n, n), uniform(n, 8));
  }
}

// A column that becomes zero, at every place in and around the blocks.
TEST(Lu, LeavesTheColumnsAfterOneWithoutPivotUnreduced) {
  for (const std::size_t n : {1, 2, 5, 16, 17, 33, 40, 70}) {
    for (std::size_t j = 0; j < n; ++j) {
      Values a = uniform(n * n, n + j);
      for (std::size_t i = 0; i < n; ++i) a[i * n + j] = j == 0 ? 1e-13 : 2.0 * a[i * n + j / 2];
      expectPlain(a, uniform(n, 9));
    }
  }
}

TEST(Lu, TakesPivotsAboveTheThresholdOnlyAndTheUpperOfTies) {
  const double next = std::nextafter(1e-12, 1.0);
  int32_t pivots[3], parity;
  for (const auto& [a, status] :
       {std::pair(1e-12, FATHOM_ERR_SINGULAR), {-1e-12, FATHOM_ERR_SINGULAR}, {-next, FATHOM_OK}}) {
    double one = a;
    EXPECT_EQ(LU(&one, 1, pivots, &parity), status) << a;
  }
  double a[] = {1, 2, 3, -4, 5, 6, 4, 7, 9};
  ASSERT_EQ(LU(a, 3, pivots, &parity), FATHOM_OK);
  EXPECT_EQ(pivots[0], 1);
  double exchange[] = {0, 1, 1, 0}, det;
  ASSERT_EQ(Determinant(exchange, 2, &det), FATHOM_OK);
  EXPECT_EQ(det, -1.0);
  ASSERT_EQ(LU(exchange, 2, pivots, &parity), FATHOM_OK);
  EXPECT_TRUE(pivots[0] == 1 && pivots[1] == 1 && parity == 1);
}

// Records that LU never writes are applied step by step as well; rows that are none, not at all.
TEST(ForwSub, AppliesExchangesInOrder) {
  constexpr int n = 21;
  const Values lu = uniform(n * n), b = uniform(n, 2);
  for (const int stride : {0, 1, 5, 8, 20}) {
    std::vector<int32_t> pivots(n);
    for (int i = 0; i < n; ++i) pivots[i] = (i * stride + 3) % n;
    pivots[4] = -1;
    pivots[12] = n;
    Values expected = b;
    for (int i = 0; i < n; ++i) {
      if (pivots[i] >= 0 && pivots[i] < n) std::swap(expected[i], expected[pivots[i]]);
      for (int t = 0; t < i; ++t) expected[i] -= lu[i * n + t] * expected[t];
    }
    expectBits(b, expected, [&](const double* x, double* y) {
      return ForwSub(lu.data(), x, n, y, pivots.data());
    });
  }
}

TEST(BackSub, StopsAtAZeroOnTheDiagonal) {
  const double lu[] = {1, 2, 3, 9, -0.0, 5, 9, 9, 4};
  const double y[] = {1, 2, 8};
  Guarded x(3);
  EXPECT_EQ(BackSub(lu, y, 3, x), FATHOM_ERR_SINGULAR);
  EXPECT_TRUE(SameBits(x.values(), {1, 2, 2}));
}

// Step by step over the whole of the remaining matrix.
AnalysisStatus plainCxLu(ComplexNum* a, int n, int32_t* pivots, int32_t* parity) {
  std::vector<double> scale(n);
  std::iota(pivots, pivots + n, 0);
  *parity = 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) scale[i] = std::max(scale[i], squaredModulus(a[i * n + j]));
    if (scale[i] == 0.0) return FATHOM_ERR_SINGULAR;
    scale[i] = 1.0 / scale[i];
  }
  for (int k = 0; k < n; ++k) {
    int p = k;
    double best = 0.0;
    for (int i = k; i < n; ++i) {
      const double size = squaredModulus(a[i * n + k]) * scale[i];
      if (size > best) best = size, p = i;
    }
    const ComplexNum u = a[p * n + k];
    if (u.real == 0.0 && u.imaginary == 0.0) return FATHOM_ERR_SINGULAR;
    pivots[k] = p;
    if (p != k) {
      std::swap_ranges(a + k * n, a + k * n + n, a + p * n);
      scale[p] = scale[k];
      *parity ^= 1;
    }
    const bool real = std::fabs(u.real) >= std::fabs(u.imaginary);
    const double r = real ? u.imaginary / u.real : u.real / u.imaginary;
    const double d = real ? u.real + u.imaginary * r : u.imaginary + u.real * r;
    for (int i = k + 1; i < n; ++i) {
      ComplexNum& l = a[i * n + k];
      l = real ? ComplexNum{(l.real + l.imaginary * r) / d, (l.imaginary - l.real * r) / d}
               : ComplexNum{(l.real * r + l.imaginary) / d, (l.imaginary * r - l.real) / d};
      for (int j = k + 1; j < n; ++j) a[i * n + j] = a[i * n + j] - l * a[k * n + j];
    }
  }
  return FATHOM_OK;
}

TEST(CxLu, HasTheBitsOfEliminationStepByStep) {
  for (const std::size_t n : sizes({100, 129})) {
    // Regular, singular at a column that becomes zero exactly, or with a row of zeros.
    for (const std::size_t zero : {n, n / 2, 2 * n}) {
      Values a = uniform(2 * n * n, n + zero);
      for (std::size_t i = 0; i < 2 * n; ++i) {
        if (zero < n) a[2 * (i / 2 * n + zero) + i % 2] = 0.0;
        if (zero > n) a[n / 2 * 2 * n + i] = 0.0;
      }
      Values plain = a;
      Guarded lu(a);
      const auto cx = [](double* x) { return reinterpret_cast<ComplexNum*>(x); };
      std::vector<int32_t> pivots(n), expected(n);
      int32_t parity, expectedParity;
      const auto size = static_cast<int32_t>(n);
      const AnalysisStatus status =
          plainCxLu(cx(plain.data()), size, expected.data(), &expectedParity);
      EXPECT_EQ(status, zero == n ? FATHOM_OK : FATHOM_ERR_SINGULAR);
      ASSERT_EQ(CxLU(cx(lu.data()), size, pivots.data(), &parity), status) << n;
      ASSERT_TRUE(SameBits(lu.values(), plain) && lu.intact()) << n << ' ' << zero;
      ASSERT_TRUE(pivots == expected && parity == expectedParity) << n;
    }
  }
}

}  // namespace
}  // namespace fathom::test
