#include <fstream>

#include "support/testing.hpp"

namespace fathom::test {
namespace {

constexpr int32_t kAlgorithms = FATHOM_LS_NORMAL_CHOLESKY + 1;

// A problem with room for its results.
struct System {
  Values h, y;
  std::size_t k;
  Values deviations = {};
  Guarded fitted{y.size()}, c{k}, covariance{k * k}, error{1};

  AnalysisStatus fit(int32_t algorithm) {
    const AnalysisStatus status = GenLSFit(h.data(), count(y), static_cast<int32_t>(k), y.data(),
                                           deviations.empty() ? nullptr : deviations.data(),
                                           algorithm, fitted, c, covariance, error);
    EXPECT_TRUE(fitted.intact() && c.intact() && covariance.intact() && error.intact());
    return status;
  }
  bool untouched() const {
    return fitted.untouched() && c.untouched() && covariance.untouched() && error.untouched();
  }
};

// One of the linear problems of NIST's Statistical Reference Datasets.
struct Reference {
  std::size_t n = 0, predictors = 0;
  int first = 0, last = 0;
  Values coefficients, ofCoefficients, x, y;  // with standard deviations of the coefficients
  double deviation = 0.0;

  explicit Reference(const std::string& name) {
    std::ifstream file(FATHOM_REFERENCE_DATA "/linear/" + name + ".dat");
    std::string word;
    file >> word >> word >> n >> word >> predictors >> word >> first >> last;
    for (double a, b; file >> word && word == "coefficient" && file >> a >> b;) {
      coefficients.push_back(a);
      ofCoefficients.push_back(b);
    }
    file >> deviation >> word;
    for (double v; file >> v;) (x.size() < predictors * y.size() ? x : y).push_back(v);
  }
  System system() const {
    Values h;
    for (std::size_t i = 0; i < n; ++i) {
      if (first == 0) h.push_back(1.0);
      for (int p = std::max(first, 1); p <= last; ++p) {
        const double* row = &x[i * predictors];
        for (std::size_t j = 0; j < predictors; ++j) h.push_back(std::pow(row[j], p));
      }
    }
    return {h, y, coefficients.size()};
  }
};

TEST(LeastSquares, DigitsOfReferenceData) {
  // Of the coefficients, which the rounding of the data to doubles limits, and of the deviations.
  // The normal equations find Filip's matrix singular.
  const struct {
    const char* name;
    double ofCoefficients, ofDeviations;
  } problems[] = {
      {"norris", 13.9, 13}, {"pontius", 13.3, 12}, {"noint1", 14.5, 14}, {"noint2", 14.5, 14},
      {"filip", 7.5, 7},    {"longley", 14.3, 11}, {"wampler1", 15, 8},  {"wampler2", 13, 14},
      {"wampler3", 15, 10}, {"wampler4", 15, 10},  {"wampler5", 15, 10},
  };
  for (const auto& [name, ofCoefficients, ofDeviations] : problems) {
    const Reference reference(name);
    ASSERT_EQ(reference.y.size(), reference.n) << name;
    const double n = static_cast<double>(reference.n),
                 freedom = 1.0 - static_cast<double>(reference.coefficients.size()) / n;
    for (int32_t algorithm = 0; algorithm < kAlgorithms; ++algorithm) {
      SCOPED_TRACE(std::string(name) + " algorithm " + std::to_string(algorithm));
      System s = reference.system();
      const bool normal = algorithm >= FATHOM_LS_NORMAL_LU;
      if (normal && name == std::string("filip")) {
        EXPECT_EQ(s.fit(algorithm), FATHOM_ERR_SINGULAR);
        EXPECT_TRUE(s.untouched());
        continue;
      }
      ASSERT_EQ(s.fit(algorithm), FATHOM_OK);
      EXPECT_GE(digits(s.c, reference.coefficients), ofCoefficients);
      const double deviation = std::sqrt(s.error[0] / freedom);
      EXPECT_GE(digits(&deviation, {reference.deviation}), normal ? 7 : 8);
      Values ofCoefficient(s.k);
      const double* variance = s.covariance;
      for (std::size_t j = 0; j < s.k; ++j) ofCoefficient[j] = std::sqrt(variance[j * (s.k + 1)]);
      EXPECT_GE(digits(ofCoefficient.data(), reference.ofCoefficients),
                normal ? ofDeviations / 2 : ofDeviations);
      Guarded c(s.k);
      GenLSFitCoef(s.h.data(), count(s.y), static_cast<int32_t>(s.k), s.y.data(), algorithm, c);
      EXPECT_TRUE(SameBits(c.values(), s.c.values()) && c.intact());
    }
    if (reference.first != 0 || reference.predictors != 1) continue;
    Values c(static_cast<std::size_t>(reference.last) + 1), fitted = reference.y;
    double error;
    PolyFit(reference.x.data(), fitted.data(), count(fitted), reference.last, fitted.data(),
            c.data(), &error);
    EXPECT_GE(digits(c.data(), reference.coefficients), ofCoefficients) << name;
    if (reference.last > 1) continue;
    LinFit(reference.x.data(), reference.y.data(), count(fitted), fitted.data(), &c[1], &c[0],
           &error);
    EXPECT_GE(digits(c.data(), reference.coefficients), 12) << name;
  }
}

// The fit's own conditions, from the matrix and the results alone.
void expectLeastSquares(System& s, int32_t algorithm) {
  const std::size_t n = s.y.size(), k = s.k;
  const bool known = !s.deviations.empty();
  ASSERT_EQ(s.fit(algorithm), FATHOM_OK);
  Values gradient(k), gram(k * k);
  double squares = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    const double* row = &s.h[i * k];
    const double deviation = known ? s.deviations[i] : 1.0;
    double fit = 0.0;
    for (std::size_t j = 0; j < k; ++j) fit += row[j] * s.c[j];
    ASSERT_NEAR(s.fitted[i], fit, 1e-12);
    const double difference = (s.y[i] - s.fitted[i]) / deviation;
    squares += difference * difference;
    for (std::size_t j = 0; j < k; ++j) {
      gradient[j] += row[j] / deviation * difference;
      for (std::size_t t = 0; t < k; ++t)
        gram[j * k + t] += row[j] * row[t] / deviation / deviation;
    }
  }
  EXPECT_NEAR(s.error[0], squares / static_cast<double>(n), 1e-12);
  const double factor = known || n == k ? 1.0 : squares / static_cast<double>(n - k);
  for (std::size_t j = 0; j < k; ++j) {
    ASSERT_NEAR(gradient[j], 0.0, 1e-11) << j;
    for (std::size_t t = 0; t < k; ++t) {
      double sum = 0.0;
      for (std::size_t u = 0; u < k; ++u) sum += gram[j * k + u] * s.covariance[u * k + t];
      ASSERT_NEAR(sum, j == t ? factor : 0.0, 1e-10 * factor) << j << ' ' << t;
    }
  }
}

TEST(LeastSquares, ResidualsAreOrthogonalAndTheCovarianceIsTheInverse) {
  const std::size_t shapes[][2] = {{1, 1},  {2, 1},  {2, 2},  {5, 3},   {7, 7},   {8, 3},   {9, 4},
                                   {15, 6}, {17, 5}, {33, 8}, {90, 40}, {513, 2}, {700, 13}};
  for (const auto& [n, k] : shapes) {
    for (int32_t algorithm = 0; algorithm < kAlgorithms; ++algorithm) {
      for (const bool known : {false, true}) {
        SCOPED_TRACE(std::to_string(n) + " x " + std::to_string(k) + " algorithm " +
                     std::to_string(algorithm));
        System s = {uniform(n * k, n + k), uniform(n, 7 * n), k};
        for (std::size_t j = 0; j < k; ++j) s.h[j * (k + 1)] += 3.0;
        for (std::size_t i = 0; known && i < n; ++i) {
          s.deviations.push_back(0.75 + static_cast<double>(i % 5));
        }
        expectLeastSquares(s, algorithm);
      }
    }
  }
}

TEST(LeastSquares, UnitsOnlyScaleTheResults) {
  const Reference longley("longley");
  for (int32_t algorithm = 0; algorithm < kAlgorithms; ++algorithm) {
    System plain = longley.system(), scaled = plain, weighted = plain;
    for (double& v : scaled.h) v *= 0x1p900;
    for (double& v : scaled.y) v *= 0x1p480;
    weighted.deviations.assign(weighted.y.size(), 0.125);
    ASSERT_EQ(plain.fit(algorithm) + scaled.fit(algorithm) + weighted.fit(algorithm), FATHOM_OK);
    EXPECT_TRUE(SameBits(weighted.c.values(), plain.c.values()));
    EXPECT_DOUBLE_EQ(weighted.error[0], 64 * plain.error[0]);
    EXPECT_DOUBLE_EQ(weighted.covariance[8], plain.covariance[8] * 9 / 16 / 64 / plain.error[0]);
    for (std::size_t j = 0; j < 7; ++j) EXPECT_EQ(scaled.c[j], plain.c[j] * 0x1p-420) << j;
    weighted.deviations[2] = kInf;  // the point is left out
    weighted.y[2] = 1e9;
    weighted.fit(algorithm);
    EXPECT_NEAR(weighted.c[6], 1825.2448, 1e-3);
  }
}

TEST(LeastSquares, DependentColumnsGiveTheSmallestNormOrAreRefused) {
  const std::size_t n = 300;
  for (const double unit : {1.0, 1e6, 1e-200}) {
    System s = {Values(n * 4), uniform(n, 3), 4};
    const Values draws = uniform(2 * n, 5);
    for (std::size_t i = 0; i < n; ++i) {
      const double a = draws[i], b = draws[n + i], row[] = {a * unit, 2 * a * unit, b, a - b};
      std::copy_n(row, 4, &s.h[i * 4]);
    }
    for (int32_t algorithm = 1; algorithm < kAlgorithms; ++algorithm) {
      EXPECT_EQ(s.fit(algorithm), FATHOM_ERR_SINGULAR) << algorithm;
      EXPECT_TRUE(s.untouched()) << algorithm;
    }
    ASSERT_EQ(s.fit(FATHOM_LS_SINGULAR_VALUES), FATHOM_OK);
    // Orthogonal to what the matrix maps to zero: (2, -1, 0, 0) and (1, 0, -unit, -unit).
    const double* c = s.c;
    const double size = std::fabs(c[0]) + std::fabs(c[1]) + std::fabs(c[2]) + std::fabs(c[3]);
    EXPECT_NEAR(2 * c[0], c[1], 1e-13 * size);
    EXPECT_NEAR(c[0] - unit * c[2], unit * c[3], 1e-13 * size * std::max(unit, 1.0));
    for (const std::size_t column : {std::size_t{0}, n}) {
      double gradient = 0.0;
      for (std::size_t i = 0; i < n; ++i) gradient += draws[column + i] * (s.y[i] - s.fitted[i]);
      EXPECT_NEAR(gradient, 0.0, 1e-12);
    }
    for (std::size_t j = 0; j < 4; ++j) {  // so is the covariance
      const double* row = s.covariance.data() + 4 * j;
      EXPECT_NEAR(2 * row[0], row[1], 1e-12 * std::fabs(row[1]));
    }
  }
  System zero = {Values(6), {1, 2, 3}, 2};
  ASSERT_EQ(zero.fit(FATHOM_LS_SINGULAR_VALUES), FATHOM_OK);
  EXPECT_TRUE(zero.c.values() == Values(2) && zero.fitted.values() == Values(3));
  Values c(3), fitted(4), x(4, 1.0), y = {1, 2, 3, 6};
  double error;
  ASSERT_EQ(PolyFit(x.data(), y.data(), 4, 2, fitted.data(), c.data(), &error), FATHOM_OK);
  for (const double v : c) EXPECT_NEAR(v, 1.0, 1e-15);
  const auto status = [&](int32_t order) {
    return PolyFit(x.data(), y.data(), 4, order, nullptr, nullptr, nullptr);
  };
  EXPECT_TRUE(status(4) == FATHOM_ERR_SIZE_BELOW_ORDER && status(-1) == FATHOM_ERR_NEGATIVE_ORDER);
}

TEST(LeastSquares, RefusesInOrderAndWhatIsNotFinite) {
  const double bad[] = {0.0, -1.0, kNan};
  const auto status = [&](int32_t n, int32_t k, int32_t algorithm, const double* deviation) {
    return GenLSFit(nullptr, n, k, nullptr, deviation, algorithm, nullptr, nullptr, nullptr,
                    nullptr);
  };
  EXPECT_EQ(status(0, 1, 9, bad), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(status(1, 2, 9, bad), FATHOM_ERR_ARRAY_SIZE);
  EXPECT_EQ(status(INT32_MAX, INT32_MAX, 6, nullptr), FATHOM_ERR_SELECTION);
  EXPECT_EQ(status(INT32_MAX, INT32_MAX, 2, nullptr), FATHOM_ERR_MEMORY);
  for (const double& deviation : bad) EXPECT_EQ(status(1, 1, 0, &deviation), FATHOM_ERR_SELECTION);
  for (int32_t algorithm = 0; algorithm < kAlgorithms; ++algorithm) {
    for (const double value : {kNan, kInf}) {
      System s = {{1, 2, 3, value, 5, 6.5}, {1, 2, 3}, 2},
             t = {{1, 2, 3, 4, 5, 6.5}, {1, value, 3}, 2};
      EXPECT_NE(s.fit(algorithm), FATHOM_OK);
      EXPECT_TRUE(s.untouched());
      EXPECT_EQ(t.fit(algorithm), FATHOM_OK);
      EXPECT_TRUE(std::isnan(t.c[0]) && std::isnan(t.c[1]));
    }
  }
}

}  // namespace
}  // namespace fathom::test
