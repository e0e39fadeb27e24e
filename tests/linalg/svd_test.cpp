#include <complex>
#include <cstdio>

#include "support/testing.hpp"

namespace fathom::test {
namespace {

using Complex = std::complex<double>;

double conj(double a) {
  return a;
}
Complex over(Complex a, Complex b) {  // for a real part of b that is the larger one
  const double r = b.imag() / b.real(), d = b.real() + b.imag() * r;
  return {(a.real() + a.imag() * r) / d, (a.imag() - a.real() * r) / d};
}
// Part by part: the operators of std::complex lose the signs of zeros.
Complex operator*(Complex a, double b) {
  return {a.real() * b, a.imag() * b};
}
Complex over(Complex a, double b) {
  return {a.real() / b, a.imag() / b};
}
double over(double a, double b) {
  return a / b;
}
double size(double a) {
  return std::fabs(a);
}
double size(Complex a) {
  return std::fabs(a.real()) + std::fabs(a.imag());
}

auto* pointer(Values& x) {
  return x.data();
}
auto* pointer(std::vector<Complex>& x) {
  return reinterpret_cast<ComplexNum*>(x.data());
}
template <typename T>
constexpr bool kReal = std::is_same_v<T, double>;
template <typename T>
constexpr auto svd = SVD;
template <>
constexpr auto svd<Complex> = CxSVD;
template <typename T>
constexpr auto values = SVDS;
template <>
constexpr auto values<Complex> = CxSVDS;
template <typename T>
constexpr auto pseudoInverse = PseudoInverse;
template <>
constexpr auto pseudoInverse<Complex> = CxPseudoInverse;

template <typename T>
using Matrix = std::vector<T>;  // row after row

template <typename T>
bool same(const Matrix<T>& a, const Matrix<T>& b) {
  const auto doubles = [](const Matrix<T>& x) {
    const auto* first = reinterpret_cast<const double*>(x.data());
    return Values(first, first + x.size() * sizeof(T) / sizeof(double));
  };
  return bool(SameBits(doubles(a), doubles(b)));
}

template <typename T>
struct Decomposition {
  Matrix<T> u, v;
  Values s;
};

double hypotenuse(double a, double b) {
  const double sum = a * a + b * b, p = std::max(std::fabs(a), std::fabs(b));
  if (sum > 0x1p-900 && sum < 0x1p1000) return std::sqrt(sum);
  const double q = std::min(std::fabs(a), std::fabs(b)) / p;
  return p == 0 ? 0 : p * std::sqrt(1 + q * q);
}

// Element by element, one step after the other.
template <typename T>
Decomposition<T> plain(const Matrix<T>& a, std::size_t m, std::size_t n) {
  const std::size_t rows = std::max(m, n);
  Matrix<T> u = a, v(n * n);
  u.resize(rows * n);
  Values s(n), e(n + 1);
  const auto at = [&](std::size_t i, std::size_t j) -> T& { return u[i * n + j]; };
  const auto vt = [&](std::size_t i, std::size_t j) -> T& { return v[i * n + j]; };
  double bound = 0;
  const auto reflection = [&](auto x, std::size_t from, std::size_t to, double& value, T& h) {
    double scale = 0, sum = 0;
    for (std::size_t k = from; k < to; ++k) scale += size(x(k));
    value = 0;
    if (scale == 0) return scale;
    for (std::size_t k = from; k < to; ++k) sum += std::norm(x(k) = over(x(k), scale));
    const T f = x(from);
    const double g = std::real(f) < 0 ? std::sqrt(sum) : -std::sqrt(sum);
    h = f * g - sum;
    x(from) -= g;
    value = scale * g;
    return scale;
  };
  for (std::size_t i = 0; i < n; ++i) {
    T h{};
    const auto column = [&](std::size_t k) -> T& { return at(k, i); };
    const auto row = [&](std::size_t k) -> T& { return at(i, k); };
    double scale = reflection(column, i, rows, s[i], h);
    for (std::size_t j = i + 1; j < n && scale != 0; ++j) {
      T f{};
      for (std::size_t k = i; k < rows; ++k) f += conj(at(k, i)) * at(k, j);
      f = over(f, h);
      for (std::size_t k = i; k < rows; ++k) at(k, j) += f * at(k, i);
    }
    for (std::size_t k = i; k < rows && scale != 0; ++k) at(k, i) = at(k, i) * scale;
    bound = std::max(bound, std::fabs(s[i]) + std::fabs(e[i]));
    scale = reflection(row, i + 1, n, e[i + 1], h);
    for (std::size_t j = i + 1; j < rows && scale != 0; ++j) {
      T f{};
      for (std::size_t k = i + 1; k < n; ++k) f += at(j, k) * conj(at(i, k));
      for (std::size_t k = i + 1; k < n; ++k) at(j, k) += f * over(at(i, k), h);
    }
    for (std::size_t k = i + 1; k < n && scale != 0; ++k) at(i, k) = at(i, k) * scale;
  }
  for (std::size_t i = n; i-- > 0;) {
    const std::size_t l = i + 1;
    if (l < n && e[l] != 0) {
      for (std::size_t j = l; j < n; ++j) vt(j, i) = over(over(conj(at(i, j)), at(i, l)), e[l]);
      for (std::size_t j = l; j < n; ++j) {
        T f{};
        for (std::size_t k = l; k < n; ++k) f += at(i, k) * vt(k, j);
        for (std::size_t k = l; k < n; ++k) vt(k, j) += f * vt(k, i);
      }
    }
    for (std::size_t j = l; j < n; ++j) vt(i, j) = vt(j, i) = T{};
    vt(i, i) = 1;
  }
  for (std::size_t i = n; i-- > 0;) {
    for (std::size_t j = i + 1; j < n; ++j) at(i, j) = T{};
    for (std::size_t j = i + 1; j < n && s[i] != 0; ++j) {
      T f{};
      for (std::size_t k = i + 1; k < rows; ++k) f += conj(at(k, i)) * at(k, j);
      f = over(over(f, conj(at(i, i))), s[i]);
      for (std::size_t k = i; k < rows; ++k) at(k, j) += f * at(k, i);
    }
    for (std::size_t k = i; k < rows; ++k) at(k, i) = s[i] != 0 ? over(at(k, i), s[i]) : T{};
    at(i, i) += T(1);
  }
  const auto turn = [n](Matrix<T>& w, std::size_t p, std::size_t q, double c, double sine) {
    for (std::size_t k = 0; k < w.size(); k += n) {
      const T x = w[k + p], z = w[k + q];
      w[k + p] = x * c + z * sine;
      w[k + q] = z * c - x * sine;
    }
  };
  const auto small = [&](double x) { return (std::fabs(x) + bound) - bound < 1e-16; };
  for (std::size_t k = n; k-- > 0;) {
    for (int pass = 0;; ++pass) {
      std::size_t l = k;
      while (!small(e[l]) && !small(s[l - 1])) --l;
      if (!small(e[l])) {
        double c = 0, sine = 1;
        for (std::size_t i = l; i <= k; ++i) {
          const double f = sine * e[i], g = s[i];
          e[i] = c * e[i];
          if (std::fabs(f) + bound == bound) break;
          s[i] = hypotenuse(f, g);
          c = g / s[i];
          sine = -f / s[i];
          turn(u, l - 1, i, c, sine);
        }
      }
      if (l == k) break;
      EXPECT_LT(pass, 29);
      double x = s[l], y = s[k - 1], g = e[k - 1], h = e[k], z = s[k];
      double f = 0.5 * (((g + z) / h) * ((g - z) / y) + y / h - h / y);
      g = hypotenuse(f, 1);
      f = x - (z / x) * z + (h / x) * (y / (f + (f < 0 ? -g : g)) - h);
      double c = 1, sine = 1;
      for (std::size_t i = l + 1; i <= k; ++i) {
        g = e[i];
        y = s[i];
        h = sine * g;
        g = c * g;
        e[i - 1] = z = hypotenuse(f, h);
        c = f / z;
        sine = h / z;
        f = x * c + g * sine;
        g = g * c - x * sine;
        h = y * sine;
        y = y * c;
        turn(v, i - 1, i, c, sine);
        s[i - 1] = z = hypotenuse(f, h);
        if (z != 0) c = f / z, sine = h / z;
        f = c * g + sine * y;
        x = c * y - sine * g;
        turn(u, i - 1, i, c, sine);
      }
      e[l] = 0;
      e[k] = f;
      s[k] = x;
    }
    for (std::size_t j = k; s[k] < 0 && j < n * n; j += n) v[j] = -v[j];
    s[k] = s[k] < 0 ? -s[k] : s[k];
  }
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      if (!(s[i] < s[j])) continue;
      std::swap(s[i], s[j]);
      for (std::size_t k = 0; k < rows; ++k) std::swap(at(k, i), at(k, j));
      for (std::size_t k = 0; k < n; ++k) std::swap(vt(k, i), vt(k, j));
    }
  }
  return {u, v, s};
}

constexpr int kKinds = 8;

// Random, graded, Hilbert, Vandermonde, of rank 2, with zero rows and columns, zero, huge.
template <typename T>
Matrix<T> matrix(int kind, std::size_t m, std::size_t n) {
  Matrix<T> a(m * n);
  const std::size_t parts = sizeof(T) / sizeof(double);
  const Values random = uniform(parts * m * n, m * 100 + n);
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      for (std::size_t p = 0; p < parts; ++p) {
        const double x = random[(i * n + j) * parts + p], di = double(i), dj = double(j);
        const double values[kKinds] = {x,
                                       x * std::exp2(-0.3 * (di + 2 * dj)),
                                       1 / (di + dj + 1 + 3 * double(p)),
                                       std::pow((di + 1) / double(m) - 0.5 * double(p), dj),
                                       random[i * parts] * random[j * parts % random.size()] + di,
                                       i % 3 == 1 || j % 3 == 2 ? 0 : x,
                                       0,
                                       x * 0x1p940};
        reinterpret_cast<double*>(&a[i * n + j])[p] = values[kind];
      }
    }
  }
  return a;
}

template <typename T>
Matrix<T> adjoint(const Matrix<T>& a, std::size_t columns) {
  Matrix<T> t(a.size());
  const std::size_t rows = a.size() / columns;
  for (std::size_t i = 0; i < a.size(); ++i) t[i % columns * rows + i / columns] = conj(a[i]);
  return t;
}
template <typename T>
Matrix<T> product(const Matrix<T>& a, const Matrix<T>& b, std::size_t terms) {
  const std::size_t rows = a.size() / terms, columns = b.size() / terms;
  Matrix<T> c(rows * columns);
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < columns; ++j) {
      for (std::size_t k = 0; k < terms; ++k) {
        c[i * columns + j] += a[i * terms + k] * b[k * columns + j];
      }
    }
  }
  return c;
}
// ||A - B|| / ||B|| in units of n 2^-53.
template <typename T>
double distance(const Matrix<T>& a, const Matrix<T>& b, std::size_t n) {
  double error = 0, norm = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    error = std::hypot(error, std::abs(a[i] - b[i]));
    norm = std::hypot(norm, std::abs(b[i]));
  }
  return error == 0 ? 0 : error / norm / static_cast<double>(n) * 0x1p53;
}

using Shapes = std::vector<std::pair<std::size_t, std::size_t>>;

template <typename T>
void expectDecompositions(const Shapes& shapes) {
  double residual = 0, orthogonality = 0;
  for (const auto& [m, n] : shapes) {
    for (int kind = 0; kind < kKinds; ++kind) {
      SCOPED_TRACE(std::to_string(m) + " x " + std::to_string(n) + " kind " + std::to_string(kind));
      Matrix<T> a = matrix<T>(kind, m, n);
      const std::size_t rows = std::max(m, n);
      const auto im = static_cast<int>(m), in = static_cast<int>(n);
      const Decomposition<T> expected = plain(a, m, n);
      const Matrix<T> sExpected(expected.s.begin(), expected.s.end());
      Matrix<T> padded = a, u(rows * n), v(n * n), s(n), only(n), identity(n * n), us(rows * n);
      padded.resize(rows * n);
      Matrix<T> input = padded;
      if (m < n) std::fill(input.begin() + im * in, input.end(), T(5));
      const Matrix<T> before = input;
      ASSERT_EQ(svd<T>(pointer(input), im, in, pointer(u), pointer(s), pointer(v)), FATHOM_OK);
      ASSERT_TRUE(same(input, kReal<T> ? padded : before)) << "the input";
      ASSERT_TRUE(same(s, sExpected) && same(u, expected.u) && same(v, expected.v));
      ASSERT_EQ(values<T>(pointer(a), im, in, pointer(only)), FATHOM_OK);
      ASSERT_TRUE(same(only, s));
      input = before;
      ASSERT_EQ(svd<T>(pointer(input), im, in, pointer(input), pointer(s), pointer(v)), FATHOM_OK);
      ASSERT_TRUE(same(input, u) && same(v, expected.v)) << "in place";

      for (std::size_t j = 0; j < n; ++j) identity[j * n + j] = 1;
      for (std::size_t i = 0; i < us.size(); ++i) us[i] = u[i] * expected.s[i % n];
      residual = std::max(residual, distance(product(us, adjoint(v, n), n), padded, n));
      for (const Matrix<T>* x : {&u, &v}) {
        const Matrix<T> unit = product(adjoint(*x, n), *x, x->size() / n);
        orthogonality = std::max(orthogonality, distance(unit, identity, n));
      }
    }
  }
  EXPECT_LT(residual, 30);
  EXPECT_LT(orthogonality, 30);
  ::testing::Test::RecordProperty("residual", std::to_string(residual));
  ::testing::Test::RecordProperty("orthogonality", std::to_string(orthogonality));
}

TEST(SVD, TakesThePlainStepsAndLeavesSmallResiduals) {
  Shapes shapes = {{120, 120}, {120, 7}, {7, 120}, {90, 60}, {33, 64}};
  for (std::size_t m = 1; m <= 20; ++m) {
    for (std::size_t n = 1; n <= 20; n += m % 3 + 1) shapes.push_back({m, n});
  }
  for (std::size_t n = 21; n <= 70; n += 7) shapes.push_back({n, n + n % 3 - 1});
  expectDecompositions<double>(shapes);
  expectDecompositions<Complex>(shapes);
}

// Upper triangles of ones: s[k] = 1 / (2 sin((2k + 1) pi / (4n + 2))). The others are figures of
// LAPACK 3.11 (NumPy 1.24.2): Hilbert's, a graded and a Vandermonde matrix, and a complex one.
TEST(SVD, FindsKnownValues) {
  Values triangle(900), s(30);
  for (std::size_t i = 0; i < 30; ++i) std::fill_n(&triangle[i * 31], 30 - i, 1.0);
  ASSERT_EQ(SVDS(triangle.data(), 30, 30, s.data()), FATHOM_OK);
  for (int k = 0; k < 30; ++k) EXPECT_NEAR(s[k], 0.5 / std::sin((2 * k + 1) * M_PI / 122), 1e-13);
  Values hilbert, graded, vandermonde;
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 6; ++j) {
      hilbert.push_back(1.0 / (i + j + 1));
      graded.push_back((i == j ? 2 : 1) * std::ldexp(1.0, -4 * (i + j)));
    }
  }
  for (int i = 0; i < 8; ++i) {
    for (int j = 0; j < 5; ++j) vandermonde.push_back(std::pow((i + 1) / 8.0, j));
  }
  for (auto& [a, expected, limit] : std::vector<std::tuple<Values&, Values, double>>{
           {hilbert,
            {1.6188998589243393, 0.2423608705752095, 0.01632152131987582, 0.0006157483541826447,
             1.2570757122632472e-05, 1.0827994844462713e-07},
            1e-8},
           {graded,
            {2.001966532602615, 0.005856188724804013, 2.0341147847279897e-05, 7.449918461718688e-08,
             2.7938316295562793e-10, 1.0609611408198286e-12},
            1e-13},
           {vandermonde,
            {3.8061628444056175, 1.3879863073929979, 0.3004124041598612, 0.04255228084664691,
             0.0033976445498860247},
            1e-13}}) {
    const int n = count(expected);
    ASSERT_EQ(SVDS(a.data(), count(a) / n, n, s.data()), FATHOM_OK);
    for (int k = 0; k < n; ++k) {
      EXPECT_NEAR(s[k], expected[k], 4e-15);
      EXPECT_NEAR(s[k] / expected[k], 1.0, limit);
    }
  }
  std::vector<Complex> c = {{1, 2}, {3, -1}, {0, 0.5}, 2, {0, -1}, {1, 1}, 0, {4, 1}, -2, 1, 1, 1};
  std::vector<Complex> cs(3);
  ASSERT_EQ(CxSVDS(pointer(c), 4, 3, pointer(cs)), FATHOM_OK);
  const Values ofComplex = {6.033676717569886, 2.8329544395559227, 1.3487454953605902};
  for (int k = 0; k < 3; ++k) EXPECT_LE(std::abs(cs[k] - ofComplex[k]), 4e-15);
}

TEST(SVD, SortsAndSignsTheValuesOfADiagonalMatrix) {
  Values a = {1, 0, 0, 0, 3, 0, 0, 0, -2}, u(9), s(3), v(9);
  ASSERT_EQ(SVD(a.data(), 3, 3, u.data(), s.data(), v.data()), FATHOM_OK);
  EXPECT_TRUE(SameBits(s, {3, 2, 1}));
  for (const Values& x : {u, v}) {
    for (int i = 0; i < 9; ++i) EXPECT_EQ(std::fabs(x[i]), i == 2 || i == 3 || i == 7) << i;
  }
}

// Values that are no numbers end the iteration; what has no room is refused before it is touched.
TEST(SVD, ReportsWhatItCannotDecompose) {
  for (const double bad : {kNan, kInf, 1e308}) {
    for (int n = 1; n <= 9; n += 4) {
      Values a(162, 1.0);
      a[0] = a[n - 1] = a[n * n - 1] = bad;
      if (bad == 1e308) a.assign(162, bad);
      if (n == 1 && bad == 1e308) continue;
      Guarded u(81), s(18), v(81);
      double norm = 5;
      int rank = 5;
      const auto size = std::to_string(n) + " " + std::to_string(bad);
      EXPECT_EQ(SVD(a.data(), n, n, u, s, v), FATHOM_ERR_ITERATIONS) << size;
      EXPECT_EQ(SVDS(a.data(), n, n, s), FATHOM_ERR_ITERATIONS) << size;
      EXPECT_EQ(CxSVDS(reinterpret_cast<ComplexNum*>(a.data()), n, n / 2 + 1,
                       reinterpret_cast<ComplexNum*>(s.data())),
                FATHOM_ERR_ITERATIONS)
          << size;
      EXPECT_TRUE(s.untouched()) << size;
      EXPECT_EQ(MatrixRank(a.data(), n, n, -1, &rank), FATHOM_ERR_ITERATIONS);
      EXPECT_EQ(MatrixNorm(a.data(), n, n, FATHOM_NORM_2, &norm), FATHOM_ERR_ITERATIONS);
      EXPECT_EQ(rank, -1);
      EXPECT_EQ(norm, 0);
    }
  }
  constexpr std::int32_t kMost = INT32_MAX;
  for (const std::int32_t m : {kMost, 3}) {
    double x = 0;
    int rank = 0;
    ComplexNum z = {};
    EXPECT_EQ(SVD(&x, m, kMost, &x, &x, &x), FATHOM_ERR_MEMORY);
    EXPECT_EQ(SVDS(&x, m, kMost, &x), FATHOM_ERR_MEMORY);
    EXPECT_EQ(CxSVD(&z, m, kMost, &z, &z, &z), FATHOM_ERR_MEMORY);
    if (m == 3) continue;
    EXPECT_EQ(PseudoInverse(&x, m, kMost, -1, &x), FATHOM_ERR_MEMORY);
    EXPECT_EQ(CxMatrixRank(&z, m, kMost, -1, &rank), FATHOM_ERR_MEMORY);
    EXPECT_EQ(MatrixNorm(&x, m, kMost, FATHOM_NORM_2, &x), FATHOM_ERR_MEMORY);
  }
}

TEST(SVD, ToleratesSmallValuesInRankAndPseudoInverse) {
  struct Case {
    double value, tol;
    int rank;
  };
  const double limit = 0x1p-51, above = std::nextafter(limit, 1);
  for (const auto& [value, tol, rank] : std::vector<Case>{
           {limit, -1, 1}, {above, -1, 2}, {0.5, 0.5, 1}, {0.5, 0, 2}, {0, 0, 1}, {limit, 0, 2}}) {
    Values a = {value, 0, 0, 1}, inverse(4);
    int found;
    ASSERT_EQ(MatrixRank(a.data(), 2, 2, tol, &found), FATHOM_OK);
    EXPECT_EQ(found, rank) << value;
    ASSERT_EQ(PseudoInverse(a.data(), 2, 2, tol, inverse.data()), FATHOM_OK);
    EXPECT_EQ(inverse[0], rank == 2 ? 1 / value : 0) << value;
    Values scaled = {value * 0x1p9, 0, 0, 0x1p9, 0, 0};
    ASSERT_EQ(MatrixRank(scaled.data(), 2, 2, tol < 0 ? tol : tol * 0x1p9, &found), FATHOM_OK);
    EXPECT_EQ(found, rank) << value;
    if (tol >= 0) continue;  // only the tolerance of the rank is relative
    ASSERT_EQ(PseudoInverse(scaled.data(), 2, 2, tol, scaled.data()), FATHOM_OK);
    EXPECT_EQ(scaled[0], 0x1p-9 / value);
  }
}

template <typename T>
void expectPseudoInverses() {
  double residual = 0;
  for (const auto& [m, n] : Shapes{{1, 1}, {2, 3}, {3, 2}, {9, 9}, {40, 17}, {17, 40}}) {
    for (const int kind : {0, 4}) {
      Matrix<T> a = matrix<T>(kind, m, n), given = a, u = a, s(n), v(n * n), x(m * n), in = a;
      const auto im = static_cast<int>(m), inn = static_cast<int>(n);
      ASSERT_EQ(pseudoInverse<T>(pointer(given), im, inn, 1e-12, pointer(x)), FATHOM_OK);
      if (kReal<T> && m >= n) {
        ASSERT_EQ(svd<T>(pointer(u), im, inn, pointer(u), pointer(s), pointer(v)), FATHOM_OK);
      }
      ASSERT_TRUE(same(given, u)) << m << " x " << n;
      ASSERT_EQ(pseudoInverse<T>(pointer(in), im, inn, 1e-12, pointer(in)), FATHOM_OK);
      ASSERT_TRUE(same(in, x)) << m << " x " << n << " in place";
      // Penrose: A X A = A and X A X = X, with A X and X A Hermitian.
      const Matrix<T> ax = product(a, x, n), xa = product(x, a, m);
      for (const double d : {distance(product(ax, a, m), a, n), distance(product(xa, x, n), x, n),
                             distance(adjoint(ax, m), ax, n), distance(adjoint(xa, n), xa, n)}) {
        residual = std::max(residual, d);
      }
    }
  }
  EXPECT_LT(residual, 300);  // grows with the condition of the matrix
  ::testing::Test::RecordProperty("residual", std::to_string(residual));
}

TEST(SVD, PseudoInversesMeetPenrosesConditions) {
  expectPseudoInverses<double>();
  expectPseudoInverses<Complex>();
}

TEST(SVD, NormsAreTheSumsInTheirOrder) {
  const double a[] = {1, -2, 3, 4}, norms[] = {std::sqrt(15 + std::sqrt(125)), 6, std::sqrt(30), 7};
  const ComplexNum c[] = {{0.6, 0.8}, {0, -2}, {3, 0}, {2.4, 3.2}};
  for (int type = -1; type <= 4; ++type) {
    double norm = 5, ofComplex = 5;
    const AnalysisStatus status = type < 0 || type > 3 ? FATHOM_ERR_SELECTION : FATHOM_OK;
    EXPECT_EQ(MatrixNorm(a, 2, 2, type, &norm), status);
    EXPECT_EQ(CxMatrixNorm(c, 2, 2, type, &ofComplex), status);
    EXPECT_NEAR(norm, status == FATHOM_OK ? norms[type] : 0, 1e-14);
    EXPECT_TRUE(type == FATHOM_NORM_2 || std::fabs(ofComplex - norm) < 1e-14) << type;
  }
  for (const std::size_t n : {1, 7, 8, 65, 130}) {
    const Values x = uniform(n * n, n);
    double most[4] = {}, squares = 0;
    for (std::size_t i = 0; i < n; ++i) {
      double row = 0, column = 0;
      for (std::size_t j = 0; j < n; ++j) {
        row += std::fabs(x[i * n + j]);
        column += std::fabs(x[j * n + i]);
        squares += x[i * n + j] * x[i * n + j];
      }
      most[FATHOM_NORM_1] = std::max(most[FATHOM_NORM_1], column);
      most[FATHOM_NORM_INFINITY] = std::max(most[FATHOM_NORM_INFINITY], row);
    }
    most[FATHOM_NORM_FROBENIUS] = std::sqrt(squares);
    for (int type = 1; type <= 3; ++type) {
      double norm;
      const auto size = static_cast<int>(n);
      ASSERT_EQ(MatrixNorm(x.data(), size, size, type, &norm), FATHOM_OK);
      EXPECT_TRUE(SameBits(norm, most[type])) << n << " type " << type;
    }
  }
}

TEST(SVD, ConditionNumbersOnEitherSideOfSingular) {
  struct Case {
    Values a;
    int m, n, type;
    AnalysisStatus status;
    double cond;
  };
  const double limit = 0x1p-62;  // of two rows
  for (const Case& c :
       std::vector<Case>{{{1, 0, 0, 1}, 2, 2, FATHOM_NORM_2, FATHOM_OK, 1},
                         {{4, 0, 0, -4 * limit}, 2, 2, FATHOM_NORM_2, FATHOM_OK, 1 / limit},
                         {{4, 0, 0, 3.9 * limit}, 2, 2, FATHOM_NORM_2, FATHOM_ERR_SINGULAR, 0},
                         {{0, 0}, 1, 2, FATHOM_NORM_2, FATHOM_ERR_SINGULAR, 0},
                         {{3, 0, 0, 0, 6, 0}, 2, 3, FATHOM_NORM_2, FATHOM_OK, 2},
                         {{4, 2, 0, 1}, 2, 2, FATHOM_NORM_1, FATHOM_OK, 6},
                         {{4, 2, 0, 1}, 2, 2, FATHOM_NORM_FROBENIUS, FATHOM_OK, 5.25},
                         {{4, 2, 0, 1}, 2, 2, FATHOM_NORM_INFINITY, FATHOM_OK, 6},
                         {{4, 2, 0, 0}, 2, 2, FATHOM_NORM_1, FATHOM_ERR_SINGULAR, 0},
                         {{1, 2}, 1, 2, FATHOM_NORM_1, FATHOM_ERR_NOT_SQUARE, 0},
                         {{1, 2}, 1, 2, 4, FATHOM_ERR_SELECTION, 0},
                         {{1, 2}, 0, 2, 4, FATHOM_ERR_NO_SAMPLES, 0}}) {
    double cond = 5, ofComplex = 5;
    std::vector<Complex> z(c.a.begin(), c.a.end());
    for (Complex& x : z) x *= Complex(0, 1);
    EXPECT_EQ(ConditionNumber(c.a.data(), c.m, c.n, c.type, &cond), c.status);
    EXPECT_EQ(CxConditionNumber(pointer(z), c.m, c.n, c.type, &ofComplex), c.status);
    EXPECT_NEAR(cond, c.cond, 1e-14) << c.type;
    EXPECT_NEAR(ofComplex, c.cond, 1e-14) << c.type;
  }
}

}  // namespace
}  // namespace fathom::test
