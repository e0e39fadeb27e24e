#include <numbers>

#include "linalg/matrices.hpp"

namespace fathom::test {
namespace {

template <typename T>
struct Result {
  AnalysisStatus status;
  std::vector<T> values;
  Matrix<T> vectors;
};

auto routine(const double* a, int32_t n, int32_t option, double* values, double* vectors) {
  return SymEigenValueVector(a, n, option, values, vectors);
}
auto routine(const double* a, int32_t n, int32_t option, ComplexNum* values, ComplexNum* vectors) {
  return GenEigenValueVector(a, n, option, values, vectors);
}
auto routine(const ComplexNum* a, int32_t n, int32_t option, ComplexNum* values,
             ComplexNum* vectors) {
  return CxEigenValueVector(a, n, option, values, vectors);
}

// T for the results: double asks the symmetric routine.
template <typename T, typename A>
Result<T> eigen(Matrix<A> a, int32_t option = FATHOM_EIGEN_VECTORS) {
  const std::size_t n = a.rows;
  Result<T> r{FATHOM_OK, std::vector<T>(n), {n, n}};
  r.status = routine(pointer(a.at), static_cast<int32_t>(n), option, pointer(r.values),
                     option == FATHOM_EIGEN_VECTORS ? pointer(r.vectors.at) : nullptr);
  return r;
}

template <typename T>
Matrix<T> square(const std::vector<T>& elements) {
  const auto n = static_cast<std::size_t>(std::lround(std::sqrt(elements.size())));
  return {n, n, elements};
}

// Unit length; the first element whose magnitude is the largest, to rounding, real and positive.
template <typename T>
void expectNormalised(const Matrix<T>& v, std::size_t j) {
  double sum = 0.0, largest = 0.0;
  for (std::size_t i = 0; i < v.rows; ++i) {
    sum += std::norm(v(i, j));
    largest = std::max(largest, std::abs(v(i, j)));
  }
  EXPECT_NEAR(sum, 1.0, 1e-13);
  bool found = false;
  for (std::size_t i = 0; i < v.rows; ++i) {
    found = found || (std::abs(v(i, j)) >= largest * (1 - 1e-15) && std::imag(v(i, j)) == 0.0 &&
                      std::real(v(i, j)) > 0.0);
  }
  EXPECT_TRUE(found) << "column " << j;
}

template <typename T, typename A>
double check(Matrix<A> a, bool farOff) {
  Result<T> r = eigen<T>(a), valuesOnly = eigen<T>(a, FATHOM_EIGEN_VALUES);
  EXPECT_EQ(r.status, FATHOM_OK);
  EXPECT_EQ(valuesOnly.status, FATHOM_OK);
  const double scale = farOff ? 0x1p520 : 1.0;
  for (A& x : a.at) x *= scale;
  for (T& x : r.values) x *= scale;
  Matrix<T> scaled = r.vectors;
  for (std::size_t j = 0; j < a.rows; ++j) {
    expectNormalised(r.vectors, j);
    for (std::size_t i = 0; i < a.rows; ++i) scaled(i, j) *= r.values[j];
  }
  double largest = residual(product(a, r.vectors), scaled, norm(a.at));
  EXPECT_LT(largest, kLargestResidual) << a.rows;
  if constexpr (std::is_same_v<T, double>) {
    EXPECT_TRUE(std::is_sorted(r.values.begin(), r.values.end()));
    largest = std::max(largest, departureFromUnitary(r.vectors));
    EXPECT_LT(largest, kLargestResidual) << a.rows << ", not orthogonal";
    for (double& x : valuesOnly.values) x *= scale;
    EXPECT_TRUE(SameBits(valuesOnly.values, r.values));
  }
  if constexpr (std::is_same_v<T, Complex> && std::is_same_v<A, double>) {
    for (std::size_t j = 0; j < a.rows; ++j) {
      for (std::size_t i = 0; i < a.rows && r.values[j].imag() == 0.0; ++i) {
        EXPECT_EQ(r.vectors(i, j).imag(), 0.0);
      }
      if (r.values[j].imag() == 0.0) continue;
      EXPECT_GT(r.values[j].imag(), 0.0);
      EXPECT_EQ(r.values[j + 1], std::conj(r.values[j]));
      for (std::size_t i = 0; i < a.rows; ++i) {
        EXPECT_EQ(r.vectors(i, j + 1), std::conj(r.vectors(i, j)));
      }
      ++j;
    }
  }
  return largest;
}

TEST(Eigen, PairsSatisfyTheirEquation) {
  double symmetric = 0.0, general = 0.0, complex = 0.0;
  std::vector<std::size_t> ns = {31, 32, 33, 48, 64, 100};
  for (std::size_t n = 1; n <= 20; ++n) ns.push_back(n);
  for (const std::size_t n : ns) {
    forEachKind([&](Kind kind) {
      const bool farOff = kind == Kind::kFarOff;
      Matrix<double> a = make<double>(kind, n, n);
      general = std::max(general, check<Complex>(a, farOff));
      complex = std::max(complex, check<Complex>(make<Complex>(kind, n, n), farOff));
      for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < i; ++j) a(j, i) = a(i, j);
      }
      symmetric = std::max(symmetric, check<double>(a, farOff));
    });
  }
  RecordProperty("symmetric", std::to_string(symmetric));
  RecordProperty("general", std::to_string(general));
  RecordProperty("complex", std::to_string(complex));
}

// Each expected value is matched by one that is near and not taken yet.
void expectValues(std::vector<Complex> actual, const std::vector<Complex>& expected, double limit) {
  ASSERT_EQ(actual.size(), expected.size());
  for (const Complex& e : expected) {
    const auto nearest = std::min_element(actual.begin(), actual.end(), [&](Complex x, Complex y) {
      return std::abs(x - e) < std::abs(y - e);
    });
    EXPECT_LT(std::abs(*nearest - e), limit) << e;
    actual.erase(nearest);
  }
}

template <typename Element>
Matrix<double> matrixOf(std::size_t n, const Element& element) {
  Matrix<double> a{n, n};
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      a(i, j) = element(static_cast<int>(i), static_cast<int>(j));
    }
  }
  return a;
}

void expectFromAll(const Matrix<double>& a, const std::vector<Complex>& expected, double limit) {
  for (int32_t option : {FATHOM_EIGEN_VALUES, FATHOM_EIGEN_VECTORS}) {
    expectValues(eigen<Complex>(a, option).values, expected, limit);
    const Matrix<Complex> complex = {a.rows, a.rows, {a.at.begin(), a.at.end()}};
    expectValues(eigen<Complex>(complex, option).values, expected, limit);
    if (!(adjoint(a) == a)) continue;
    const Values values = eigen<double>(a, option).values;
    expectValues({values.begin(), values.end()}, expected, limit);
  }
}

TEST(Eigen, ValuesOfClosedForm) {
  constexpr double kPi = std::numbers::pi;
  std::vector<Complex> second, roots, turns;
  for (int k = 1; k <= 30; ++k) second.push_back(2.0 * std::cos(k * kPi / 31));
  for (int k = 0; k < 12; ++k) turns.push_back(std::polar(1.0, 2 * kPi * k / 12) * 3.0 + 1.0);
  expectFromAll(matrixOf(30, [](int i, int j) { return std::abs(i - j) == 1 ? 1.0 : 0.0; }), second,
                1e-14);
  expectFromAll(matrixOf(12, [](int i, int j) { return i == j              ? 1
                                                       : j == (i + 1) % 12 ? 3
                                                                           : 0; }),
                turns, 1e-14);
  // Companion matrix of (x - 1)(x - 2)(x - 3)(x^2 + 1).
  const double coefficients[] = {6, -12, 12, -11, 6};
  expectFromAll(matrixOf(5, [&](int i, int j) { return i == 0 ? coefficients[j] : i == j + 1; }),
                {1.0, 2.0, 3.0, Complex(0, 1), Complex(0, -1)}, 1e-12);
  expectFromAll(matrixOf(2, [](int i, int j) { return i == j ? 1.0 : 2.0 * (j - i); }),
                {Complex(1, 2), Complex(1, -2)}, 1e-15);
  // Triangular, so exact although defective.
  expectFromAll(make<double>(Kind::kJordan, 8, 8), std::vector<Complex>(8, 2.0), 1e-14);
}

// Figures of LAPACK (NumPy 1.24.2, eigvalsh and eigvals).
TEST(Eigen, ValuesOfKnownMatrices) {
  expectFromAll(make<double>(Kind::kHilbert, 6, 6),
                {1.0827994845354796e-07, 1.2570757122618823e-05, 0.0006157483541825885,
                 0.016321521319875656, 0.24236087057520933, 1.6188998589243386},
                4e-15);
  expectFromAll(  // Frank's
      matrixOf(6, [](int i, int j) { return j + 1 < i ? 0.0 : 6.0 - std::max(i, j); }),
      {0.07707956074164898, 0.18576231491035508, 0.5448037811225772, 1.8355232372643964,
       5.3832231821761685, 12.973607923784856},
      2e-13);
  const Values wilkinson = eigen<double>(matrixOf(21, [](int i, int j) {
                             return i == j ? std::abs(i - 10.0) : std::abs(i - j) == 1 ? 1.0 : 0.0;
                           })).values;
  const double expected[] = {-1.1254415221199854, 0.25380581709667793, 9.210678647361332,
                             10.746194182903322, 10.746194182903393};
  const std::size_t places[] = {0, 1, 18, 19, 20};
  for (std::size_t k = 0; k < 5; ++k) EXPECT_NEAR(wilkinson[places[k]], expected[k], 1e-13);
}

TEST(Eigen, SymmetricReadsTheLowerTriangleAndMayWriteOverIt) {
  Matrix<double> a = square<double>({2, kNan, kInf, -1, 2, kNan, 0, -1, 2});
  const Result<double> r = eigen<double>(a);
  ASSERT_EQ(r.status, FATHOM_OK);
  EXPECT_NEAR(r.values[0], 2.0 - std::sqrt(2.0), 1e-15);
  // Of two equal ones, opposite in sign, the first is positive.
  const Result<double> pair = eigen<double>(square<double>({0, 1, 1, 0}));
  EXPECT_GT(pair.vectors(0, 0), 0.0);
  EXPECT_LT(pair.vectors(1, 0), 0.0);
  Values values(3);
  ASSERT_EQ(SymEigenValueVector(a.at.data(), 3, 1, values.data(), a.at.data()), FATHOM_OK);
  EXPECT_TRUE(SameBits(a.at, r.vectors.at) && SameBits(values, r.values));
  Matrix<Complex> c = make<Complex>(Kind::kUniform, 9, 9);
  const Result<Complex> complex = eigen<Complex>(c);
  std::vector<Complex> complexValues(9);
  CxEigenValueVector(pointer(c.at), 9, 1, pointer(complexValues), pointer(c.at));
  EXPECT_EQ(c, complex.vectors);
}

// Figures of LAPACK 3.11 (NumPy 1.24.2, eigvalsh), relative errors.
TEST(Eigen, GradedMatrixKeepsItsSmallValues) {
  const double expected[] = {1.060961140819828e-12, 2.7938316295562814e-10, 7.449918461718693e-08,
                             2.034114784727987e-05, 0.005856188724804011,   2.001966532602615};
  const Values values = eigen<double>(matrixOf(6, [](int i, int j) {
                          return (i == j ? 2 : 1) * std::ldexp(1.0, 4 * (i + j - 10));
                        })).values;
  for (std::size_t k = 0; k < 6; ++k) EXPECT_NEAR(values[k] / expected[k], 1.0, 1e-13);
}

TEST(Eigen, RefusesInOrderAndWritesNothing) {
  const auto expect = [](AnalysisStatus status, int32_t n, int32_t option, double element) {
    const Values a(8, element);
    Guarded values(4), vectors(8);
    const auto number = [](double* x) { return reinterpret_cast<ComplexNum*>(x); };
    const auto* complex = reinterpret_cast<const ComplexNum*>(a.data());
    EXPECT_EQ(SymEigenValueVector(a.data(), n, option, values, vectors), status);
    EXPECT_EQ(GenEigenValueVector(a.data(), n, option, number(values), number(vectors)), status);
    EXPECT_EQ(CxEigenValueVector(complex, n, option, number(values), number(vectors)), status);
    EXPECT_TRUE(values.untouched() && vectors.untouched());
  };
  expect(FATHOM_ERR_NO_SAMPLES, 0, 2, 1.0);
  for (const int32_t option : {-1, 2}) expect(FATHOM_ERR_SELECTION, INT32_MAX, option, 1.0);
  for (const int32_t option : {0, 1}) {
    for (const double element : {kNan, kInf, -kInf}) {
      for (const int32_t n : {1, 2}) expect(FATHOM_ERR_ITERATIONS, n, option, element);
    }
  }
}

}  // namespace
}  // namespace fathom::test
