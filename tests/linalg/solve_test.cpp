// The solvers by type of matrix: residuals, the order of substitution, thresholds and ranks.
#include <cmath>
#include <complex>
#include <cstdio>

#include "linalg/matrices.hpp"

namespace fathom::test {
namespace {

template <typename Element>
using Array = std::vector<Element>;
auto* raw(Complex* x) {
  return reinterpret_cast<ComplexNum*>(x);
}
auto solve(Values& a, int m, int n, Values& b, int type, Values& x) {
  return GenLinEqs(a.data(), m, n, b.data(), type, x.data());
}
auto solve(Array<Complex>& a, int m, int n, Array<Complex>& b, int type, Array<Complex>& x) {
  return CxGenLinEqs(raw(a.data()), m, n, raw(b.data()), type, raw(x.data()));
}
constexpr auto kInvert = [](auto& a, int n, int type, auto& inverse) {
  if constexpr (std::is_same_v<decltype(a), Values&>) {
    return GenInvMatrix(a.data(), n, type, inverse.data());
  } else {
    return CxGenInvMatrix(raw(a.data()), n, type, raw(inverse.data()));
  }
};
constexpr auto kDeterminant = [](auto& a, int n, int type, auto& det) {
  if constexpr (std::is_same_v<decltype(a), Values&>) {
    return GenDeterminant(a.data(), n, type, &det);
  } else {
    return CxDeterminant(raw(a.data()), n, type, raw(&det));
  }
};

template <typename Element>
Array<Element> random(std::size_t n, std::uint64_t seed) {
  const Values x = uniform(2 * n, seed);
  Array<Element> y(n);
  std::copy_n(x.data(), n * sizeof(Element) / sizeof(double), reinterpret_cast<double*>(y.data()));
  return y;
}

// A regular matrix of the type, whole in `full`, and with NaN wherever nobody may look.
template <typename Element>
Array<Element> matrix(int n, int type, Array<Element>& full) {
  Array<Element> a = random<Element>(static_cast<std::size_t>(n) * n, n), b = a;
  full = a;
  for (int i = 0; i < n && type != FATHOM_GENERAL; ++i) {
    for (int j = 0; j < n; ++j) {
      Element& e = full[i * n + j];
      const bool seen = i == j || (type == FATHOM_UPPER_TRIANGULAR) == (i < j);
      if (type == FATHOM_POSITIVE_DEFINITE) {
        e = i == j ? 0.1 : 0.0;
        for (int t = 0; t < n; ++t) e += b[i * n + t] * conj(b[j * n + t]);
      } else if (i != j) {
        e = seen ? e * (2.0 / n) : 0.0;
      }
      const bool whole = type == FATHOM_POSITIVE_DEFINITE && std::is_same_v<Element, Complex>;
      a[i * n + j] = seen || whole ? e : kNan;
    }
  }
  return a;
}

// |b - A x| relative to what rounding explains, n 2^-53 |A| |x| in the norm of largest row sums.
template <typename Element>
double residual(const Array<Element>& a, int n, const Element* x, int step, const Element* b) {
  double worst = 0.0, norm = 0.0, size = 0.0;
  for (int i = 0; i < n; ++i) {
    Element r = b[i];
    double sum = 0.0;
    for (int j = 0; j < n; ++j) {
      r -= a[i * n + j] * x[j * step];
      sum += std::abs(a[i * n + j]);
    }
    worst = std::max(worst, std::abs(r));
    norm = std::max(norm, sum);
    size = std::max(size, std::abs(x[i * step]));
  }
  return worst / (n * 0x1p-53 * norm * size);
}

template <typename Element>
void expectSmallResiduals(const char* name) {
  double solved = 0.0, inverted = 0.0;
  for (const std::size_t order : sizes({130})) {
    const auto n = static_cast<int>(order);
    for (const int type : {0, 1, 2, 3}) {
      Array<Element> full, a = matrix(n, type, full), e(order);
      auto b = random<Element>(order, 5), x = b, same = b, inverse = a, inPlace = a;
      ASSERT_EQ(solve(a, n, n, b, type, x), FATHOM_OK) << n << ' ' << type;
      ASSERT_EQ(solve(a, n, n, same, type, same), FATHOM_OK);
      ASSERT_EQ(kInvert(a, n, type, inverse), FATHOM_OK) << n << ' ' << type;
      ASSERT_EQ(kInvert(inPlace, n, type, inPlace), FATHOM_OK);
      ASSERT_TRUE(x == same && inverse == inPlace);
      solved = std::max(solved, residual(full, n, x.data(), 1, b.data()));
      for (int k = n / 3; k < n; k += 1 + n / 4) {
        e.assign(order, 0.0);
        e[k] = 1.0;
        inverted = std::max(inverted, residual(full, n, &inverse[k], n, e.data()));
      }
      Element det, expected;
      ASSERT_EQ(kDeterminant(a, n, type, det), FATHOM_OK);
      ASSERT_EQ(kDeterminant(full, n, FATHOM_GENERAL, expected), FATHOM_OK);
      ASSERT_TRUE(n > 20 || std::abs(det - expected) <= 1e-8 * std::abs(det)) << n << ' ' << type;
    }
  }
  std::printf("largest residuals, %s: solution %.2f, inverse %.2f\n", name, solved, inverted);
  EXPECT_LT(std::max(solved, inverted), 30.0);
}

// Badly conditioned matrices as each type reads them, with b = A x for an x of ones.
template <typename Element>
void expectSmallResidualsOf(Kind kind) {
  double largest = 0.0;
  for (const int n : {2, 5, 8, 12}) {
    for (const int type : {0, 1, 2, 3}) {
      if (type == FATHOM_POSITIVE_DEFINITE && (kind != Kind::kHilbert || n > 8)) continue;
      SCOPED_TRACE(::testing::Message() << static_cast<int>(kind) << ' ' << n << ' ' << type);
      Array<Element> a = make<Element>(kind, n, n).at, b(n), x(n), inverse = a;
      for (int k = 0; k < n * n; ++k) {
        const int over = k % n - k / n;
        a[k] *= (type == 2 && over > 0) || (type == 3 && over < 0) ? 0.0 : 0x1p40;
        if constexpr (!std::is_same_v<Element, double>) a[k] *= std::polar(1.0, 0.7 * over);
        b[k / n] += a[k];
      }
      const AnalysisStatus status = solve(a, n, n, b, type, x);
      ASSERT_TRUE(status == FATHOM_OK || (type == FATHOM_GENERAL && status == FATHOM_WARN_RANK));
      largest = std::max(largest, residual(a, n, x.data(), 1, b.data()));
      if constexpr (std::is_same_v<Element, double>) {
        ASSERT_EQ(LinEqs(a.data(), b.data(), n, x.data()), FATHOM_OK);
        largest = std::max(largest, residual(a, n, x.data(), 1, b.data()));
      }
      ASSERT_EQ(kInvert(a, n, type, inverse), FATHOM_OK);
      for (int k = 0; k < n; ++k) {
        Array<Element> e(n);
        e[k] = 1.0;
        largest = std::max(largest, residual(a, n, &inverse[k], n, e.data()));
      }
    }
  }
  EXPECT_LT(largest, kLargestResidual);
}

TEST(Solve, LeavesSmallResidualsOfBadlyConditionedMatrices) {
  for (const Kind kind : {Kind::kHilbert, Kind::kVandermonde, Kind::kGradedDown, Kind::kGradedUp}) {
    expectSmallResidualsOf<double>(kind);
    expectSmallResidualsOf<Complex>(kind);
  }
}

TEST(Solve, LeavesSmallResidualsAndAgreesOnDeterminants) {
  expectSmallResiduals<double>("real");
  expectSmallResiduals<Complex>("complex");
}

// Substitution as stated, element by element: both triangles, and those of the factor.
TEST(Solve, SubstitutesByColumns) {
  for (const std::size_t order : sizes({})) {
    const auto n = static_cast<int>(order);
    Values full, b = random<double>(order, 6), x = b, factor(order * order);
    for (const int type : {1, 2, 3}) {
      Values a = matrix(n, type, full), y = b, &t = type == FATHOM_POSITIVE_DEFINITE ? factor : a;
      if (type == FATHOM_POSITIVE_DEFINITE) Cholesky(a.data(), n, factor.data());
      for (int k = 0; k < n; ++k) {
        const bool upper = type == FATHOM_UPPER_TRIANGULAR;
        const int j = upper ? n - 1 - k : k;
        y[j] /= t[j * n + j];
        for (int i = upper ? 0 : j + 1; i < (upper ? j : n); ++i) y[i] -= y[j] * t[i * n + j];
      }
      for (int j = n - 1; j >= 0 && type == FATHOM_POSITIVE_DEFINITE; --j) {
        for (int i = n - 1; i > j; --i) y[j] -= t[i * n + j] * y[i];
        y[j] /= t[j * n + j];
      }
      ASSERT_EQ(solve(a, n, n, b, type, x), FATHOM_OK);
      ASSERT_TRUE(SameBits(x, y)) << n << ' ' << type;
    }
  }
}

// The normal equations hold, and x, solved again from A x, comes back: it is the shortest.
template <typename Element>
void expectLeastSquares(int m, int n, int rank) {
  SCOPED_TRACE(::testing::Message() << m << " x " << n << " rank " << rank);
  const auto p = random<Element>(400, 3), q = random<Element>(400, 4);
  Array<Element> a(400), b = random<Element>(m, 5), x(n), again(n), image(m);
  for (int k = 0; k < m * n * rank; ++k) {
    const int i = k / rank / n, j = k / rank % n, t = k % rank;
    a[i * n + j] += p[i * rank + t] * q[t * n + j];
  }
  ASSERT_EQ(solve(a, m, n, b, FATHOM_GENERAL, x), rank == std::min(m, n) ? 0 : FATHOM_WARN_RANK);
  for (int k = 0; k < m * n; ++k) image[k / n] += a[k] * x[k % n];
  for (int j = 0; j < n; ++j) {
    Element normal = 0.0;
    for (int i = 0; i < m; ++i) normal += conj(a[i * n + j]) * (b[i] - image[i]);
    EXPECT_LT(std::abs(normal), 1e-11);
  }
  solve(a, m, n, image, FATHOM_GENERAL, again);
  for (int j = 0; j < n; ++j) EXPECT_LT(std::abs(again[j] - x[j]), 1e-11);
}

TEST(Solve, FindsLeastSquaresSolutionsOfSmallestNorm) {
  for (const auto [m, n, rank] : {std::array{3, 2, 2},
                                  {3, 2, 1},
                                  {2, 3, 2},
                                  {2, 3, 1},
                                  {1, 1, 1},
                                  {20, 7, 7},
                                  {20, 7, 4},
                                  {7, 20, 7},
                                  {7, 20, 5},
                                  {9, 9, 8}}) {
    expectLeastSquares<double>(m, n, rank);
    expectLeastSquares<Complex>(m, n, rank);
  }
  for (const double small : {0x1p-51, std::nextafter(0x1p-51, 1.0)}) {
    Values a = {1, 0, 0, small}, b = {1, 2}, x = b;  // 2^-52 max(2, 2) 1 counts as zero
    EXPECT_EQ(solve(a, 2, 2, b, 0, x), small == 0x1p-51 ? FATHOM_WARN_RANK : FATHOM_OK);
  }
}

TEST(Solve, ChecksTypeThenShapeThenSingularity) {
  Values a = {1, 2, 2, 1, 0, 0}, b = {1, 2, 3}, x = {7, 7, 7, 7}, untouched = x;
  for (const int type : {1, 2, 3}) EXPECT_EQ(solve(a, 3, 2, b, type, x), FATHOM_ERR_NOT_SQUARE);
  for (const int type : {-1, 4}) EXPECT_EQ(solve(a, 3, 2, b, type, x), FATHOM_ERR_SELECTION);
  for (const int type : {0, 1, 4}) {
    double det = 7.0;
    Values zeros(4);
    EXPECT_EQ(kDeterminant(zeros, 2, type, det), type == 4 ? FATHOM_ERR_SELECTION : FATHOM_OK);
    EXPECT_EQ(det, 0.0);
  }
  EXPECT_EQ(solve(a, 2, 2, b, FATHOM_POSITIVE_DEFINITE, x), FATHOM_ERR_SINGULAR);
  EXPECT_EQ(kInvert(a, 2, FATHOM_POSITIVE_DEFINITE, x), FATHOM_ERR_SINGULAR);
  // 2^-63 of the largest element is singular, the next number is not.
  for (const double d : {-0x1p-63, std::nextafter(-0x1p-63, -1.0)}) {
    const bool singular = d == -0x1p-63;
    const AnalysisStatus expected = singular ? FATHOM_ERR_SINGULAR : FATHOM_OK;
    Values lower = {d, kNan, -1, 1}, upper = {1, 1, kNan, d}, y = x, inverse = x;
    EXPECT_EQ(solve(lower, 2, 2, b, FATHOM_LOWER_TRIANGULAR, y), expected);
    EXPECT_EQ(kInvert(upper, 2, FATHOM_UPPER_TRIANGULAR, inverse), expected);
    EXPECT_EQ(y == x && inverse == x, singular);
    Array<Complex> triangle = {{0, d}, kNan, {0, 1}, 1}, out(4, 7.0);
    EXPECT_EQ(kInvert(triangle, 2, FATHOM_LOWER_TRIANGULAR, out), expected);
    triangle[1] = 0.0;  // handed out even so
    EXPECT_EQ(out == triangle, singular);
  }
  constexpr int32_t kHuge = INT32_MAX;  // whose square is too large for any memory
  const AnalysisStatus statuses[] = {LinEqs(a.data(), b.data(), kHuge, x.data()),
                                     InvMatrix(a.data(), kHuge, x.data()),
                                     Determinant(a.data(), kHuge, x.data()),
                                     solve(a, kHuge, kHuge, b, 0, x),
                                     solve(a, kHuge, kHuge, b, 1, x),
                                     kInvert(a, kHuge, FATHOM_GENERAL, x),
                                     kInvert(a, kHuge, 3, x)};
  for (const AnalysisStatus s : statuses) EXPECT_EQ(s, FATHOM_ERR_MEMORY);
  EXPECT_TRUE(x == untouched);
}

}  // namespace
}  // namespace fathom::test
