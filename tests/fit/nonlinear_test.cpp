#include <fstream>

#include "frame/elementary.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

// The nonlinear problems of NIST's Statistical Reference Datasets: the data are in strd/.
struct StrdProblem {
  const char* name;
  FathomModel model;
  Values starts[2] = {}, certified = {}, deviations = {}, squares = {}, x = {}, y = {};
};

// Nelson's model has two predictors, so its x is an index into this table.
Values nelsonPredictors;

std::vector<StrdProblem> strdProblems() {
  using fathom::exp, fathom::pow, fathom::sin, fathom::cos;
  using D = double;
  using B = const double*;
  using K = int32_t;
  // Models that several data sets share.
  static constexpr auto rational = [](D x, B b, int above, int below) {
    D p = 0, q = 0;
    for (int i = above; i-- > 0;) p = p * x + b[i];
    for (int i = below; i-- > 0;) q = (q + b[above + i]) * x;
    return p / (1 + q);
  };
  const FathomModel rise = [](D x, B b, K) { return b[0] * (1 - exp(-b[1] * x)); };
  const FathomModel decay = [](D x, B b, K) { return exp(-b[0] * x) / (b[1] + b[2] * x); };
  const FathomModel cubics = [](D x, B b, K) { return rational(x, b, 4, 3); };
  const FathomModel peaks = [](D x, B b, K) {
    const D u = (x - b[3]) / b[4], v = (x - b[6]) / b[7];
    return b[0] * exp(-b[1] * x) + b[2] * exp(-u * u) + b[5] * exp(-v * v);
  };
  const FathomModel decays = [](D x, B b, K) {
    return b[0] * exp(-b[1] * x) + b[2] * exp(-b[3] * x) + b[4] * exp(-b[5] * x);
  };
  std::vector<StrdProblem> problems = {
      {"bennett5", [](D x, B b, K) { return b[0] * pow(b[1] + x, -1 / b[2]); }},
      {"boxbod", rise},
      {"chwirut1", decay},
      {"chwirut2", decay},
      {"danwood", [](D x, B b, K) { return b[0] * pow(x, b[1]); }},
      {"eckerle4", [](D x, B b, K) { return b[0] / b[1] * exp(-0.5 * pow((x - b[2]) / b[1], 2)); }},
      {"enso",
       [](D x, B b, K) {
         const D year = 2 * kPi * x / 12, u = 2 * kPi * x / b[3], v = 2 * kPi * x / b[6];
         return b[0] + b[1] * cos(year) + b[2] * sin(year) + b[4] * cos(u) + b[5] * sin(u) +
                b[7] * cos(v) + b[8] * sin(v);
       }},
      {"gauss1", peaks},
      {"gauss2", peaks},
      {"gauss3", peaks},
      {"hahn1", cubics},
      {"kirby2", [](D x, B b, K) { return rational(x, b, 3, 2); }},
      {"lanczos1", decays},
      {"lanczos2", decays},
      {"lanczos3", decays},
      {"mgh09", [](D x, B b, K) { return b[0] * (x * x + x * b[1]) / (x * x + x * b[2] + b[3]); }},
      {"mgh10", [](D x, B b, K) { return b[0] * exp(b[1] / (x + b[2])); }},
      {"mgh17", [](D x, B b, K) { return b[0] + b[1] * exp(-x * b[3]) + b[2] * exp(-x * b[4]); }},
      {"misra1a", rise},
      {"misra1b", [](D x, B b, K) { return b[0] * (1 - pow(1 + b[1] * x / 2, -2)); }},
      {"misra1c", [](D x, B b, K) { return b[0] * (1 - pow(1 + 2 * b[1] * x, -0.5)); }},
      {"misra1d", [](D x, B b, K) { return b[0] * b[1] * x / (1 + b[1] * x); }},
      {"nelson",
       [](D x, B b, K) {
         const double* p = &nelsonPredictors[2 * static_cast<std::size_t>(x)];
         return b[0] - b[1] * p[0] * exp(-b[2] * p[1]);
       }},
      {"rat42", [](D x, B b, K) { return b[0] / (1 + exp(b[1] - b[2] * x)); }},
      {"rat43", [](D x, B b, K) { return b[0] / pow(1 + exp(b[1] - b[2] * x), 1 / b[3]); }},
      {"roszman1",
       [](D x, B b, K) { return b[0] - b[1] * x - fathom::atan(b[2] / (x - b[3])) / kPi; }},
      {"thurber", cubics},
  };
  for (StrdProblem& p : problems) {
    std::ifstream file(std::string(FATHOM_REFERENCE_DATA "/nonlinear/") + p.name + ".dat");
    std::string word;
    std::size_t n = 0, k = 0;
    file >> word >> n >> k;
    for (Values* row : {&p.starts[0], &p.starts[1], &p.certified, &p.deviations, &p.squares}) {
      row->resize(row == &p.squares ? 1 : k);
      file >> word;
      for (double& value : *row) file >> value;
    }
    const bool nelson = p.name == std::string("nelson");
    for (std::size_t i = 0; i < n; ++i) {
      double u = 0, v = 0, w = 0;
      file >> u >> v;
      if (nelson) file >> w;
      if (nelson) nelsonPredictors.insert(nelsonPredictors.end(), {u, v});
      p.x.push_back(nelson ? static_cast<double>(i) : u);
      p.y.push_back(nelson ? fathom::log(w) : v);
    }
  }
  return problems;
}

TEST(NonLinearFit, SolvesTheReferenceProblemsFromBothStarts) {
  for (const StrdProblem& p : strdProblems()) {
    for (const Values& start : p.starts) {
      Guarded c(start), fitted(p.x.size()), error(1);
      const int32_t n = count(p.x), k = count(start);
      ASSERT_EQ(NonLinearFit(p.x.data(), p.y.data(), n, p.model, c, k, fitted, error), FATHOM_OK)
          << p.name;
      EXPECT_TRUE(c.intact() && fitted.intact() && error.intact());
      // Of two terms alike, either may come first.
      Values found = c.values();
      if (p.name == std::string("mgh17") && found[3] > found[4])
        found = {found[0], found[2], found[1], found[4], found[3]};
      EXPECT_GE(digits(found.data(), p.certified), 7.0) << p.name << " from " << start[0];
      double sum = 0.0;
      for (std::size_t i = 0; i < p.x.size(); ++i) {
        EXPECT_EQ(fitted.values()[i], p.model(p.x[i], c, k));
        sum += (p.y[i] - fitted.values()[i]) * (p.y[i] - fitted.values()[i]);
      }
      EXPECT_EQ(error.values()[0], sum / n);
      EXPECT_TRUE(p.name == std::string("lanczos1") || digits(&sum, p.squares) >= 8.0) << p.name;
    }
  }
}

// Fits a model to its values at `truth`, in x = 0, 1/n, 2/n, ...
struct Trial {
  AnalysisStatus run(FathomModel model, const Values& truth, std::size_t n, int32_t iterations) {
    for (std::size_t i = 0; i < n; ++i) {
      x.push_back(static_cast<double>(i) / static_cast<double>(n));
      y.push_back(model(x[i], truth.data(), count(truth)) + noise * uniform(n)[i]);
    }
    fitted.resize(n);
    return NonLinearFitWithMaxIters(x.data(), y.data(), count(x), model, c.data(), count(c),
                                    iterations, fitted.data(), &error);
  }
  Values c;
  double noise = 0.0;
  Values x = {}, y = {}, fitted = {};
  double error = -1.0;
};

double decay(double x, const double* c, int32_t) {
  return c[0] * std::exp(-c[1] * x) + c[2];
}

TEST(NonLinearFit, ChecksInOrder) {
  const auto status = [](int32_t n, FathomModel model, int32_t k, int32_t iterations) {
    return NonLinearFitWithMaxIters(nullptr, nullptr, n, model, nullptr, k, iterations, nullptr,
                                    nullptr);
  };
  EXPECT_EQ(status(0, nullptr, 0, 0), FATHOM_ERR_SELECTION);
  EXPECT_EQ(status(0, decay, 3, 0), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(status(-5, decay, -6, 0), FATHOM_ERR_NO_SAMPLES);
  EXPECT_EQ(status(2, decay, 3, 0), FATHOM_ERR_ARRAY_SIZE);
  EXPECT_EQ(status(2, decay, 2, 0), FATHOM_ERR_SELECTION);
  EXPECT_EQ(status(INT32_MAX, decay, INT32_MAX, 1), FATHOM_ERR_MEMORY);
}

TEST(NonLinearFit, RunsOutWithTheBestSoFar) {
  const auto swing = [](double x, const double* c, int32_t) {
    return std::exp(-c[0] * x * c[1]) + std::sin(c[1] * c[1] * x);
  };
  double last = kInf;
  for (int32_t iterations = 1; iterations < 8; ++iterations) {
    Trial t = {{0.1, 2.5}};
    const AnalysisStatus status = t.run(swing, {2, 1.5}, 20, iterations);
    EXPECT_EQ(t.fitted[3], swing(t.x[3], t.c.data(), 2));
    EXPECT_LE(t.error, last);
    last = t.error;
    EXPECT_TRUE(iterations >= 3 || status == FATHOM_ERR_ITERATIONS);
  }
}

TEST(NonLinearFit, SolvesLinearModelsInOneIterationAndPassesThroughKPoints) {
  const auto line = [](double x, const double* c, int32_t k) {
    double sum = 0.0;
    for (int32_t j = k; j-- > 0;) sum = sum * x + c[j];
    return sum;
  };
  Trial t = {{0, 0, 0, 0}};
  EXPECT_EQ(t.run(line, {1, -20, 3, 1e-3}, 30, 1), FATHOM_OK);
  EXPECT_NEAR(t.c[1], -20, 1e-12);
  EXPECT_NEAR(t.c[3], 1e-3, 1e-11);
  Trial u = {{1, 1, 1}};
  EXPECT_EQ(u.run(decay, {3, 2, -1}, 3, 100), FATHOM_OK);
  EXPECT_TRUE(std::fabs(u.c[1] - 2) < 1e-10 && u.error < 1e-28);
}

TEST(NonLinearFit, StaysWhereTheModelIsFinite) {
  // NaN beyond a wall that the first steps run into; the solution is just before it.
  const auto walled = [](double x, const double* c, int32_t) {
    return c[1] > 2.0005 ? kNan : c[1] < -50 ? kInf : std::exp(-c[1] * x) * c[0];
  };
  for (double start : {0.01, 1.9, 2.0004, -3.0}) {
    Trial t = {{0.5, start}, 1e-3};
    EXPECT_EQ(t.run(walled, {3, 2}, 40, 100), FATHOM_OK) << start;
    EXPECT_NEAR(t.c[1], 2, 1e-3);
  }
  for (const Values& start : {Values{1, 3, 0}, Values{kNan, 1, 0}, Values{kInf, 1, 0}}) {
    Trial t = {start};
    EXPECT_EQ(t.run(walled, {3, 2, 0}, 5, 100), FATHOM_ERR_ITERATIONS);
    EXPECT_TRUE(SameBits(t.c, start) && SameBits(t.fitted, Values(5)) && t.error == -1);
  }
}

TEST(NonLinearFit, KeepsCoefficientsWithoutInfluence) {
  const auto idle = [](double x, const double* c, int32_t) { return decay(x, c, 3) + 0 * c[3]; };
  const auto needless = [](double x, const double* c, int32_t) { return std::exp(c[1] * x); };
  Trial t = {{1, 1, 1, 7.25}, 1e-3}, u = {{-3, 0.1}};
  EXPECT_EQ(t.run(idle, {3, 2, -1, 0}, 25, 100), FATHOM_OK);
  EXPECT_NEAR(t.c[1], 2, 0.02);
  EXPECT_EQ(t.c[3], 7.25);
  EXPECT_EQ(u.run(needless, {0, 2}, 25, 100), FATHOM_OK);
  EXPECT_NEAR(u.c[1], 2, 1e-12);
  EXPECT_EQ(u.c[0], -3);
}

TEST(NonLinearFit, ChoosesStepsForCoefficientsOfAnySize) {
  // A narrow line far out, one at zero, one from zero, and coefficients of very different units.
  const auto peak = [](double x, const double* c, int32_t) {
    const double u = (x - (c[1] - c[3])) / c[2];
    return c[0] / (1 + u * u);
  };
  for (const double far : {0.0, 1e7, -3e-8}) {
    for (const double unit : {1.0, 1e200, 1e-200}) {
      const Values truth = {5 * unit, far + 0.45, 0.05, far};
      Trial t = {{unit, far + 0.4, 0.1, far}, 0.01 * unit};
      EXPECT_EQ(t.run(peak, truth, 50, 100), FATHOM_OK) << far << unit;
      EXPECT_NEAR(t.c[1] - t.c[3], 0.45, 1e-3) << far << unit;
      EXPECT_NEAR(t.c[2], 0.05, 1e-3) << far << unit;
    }
  }
}

}  // namespace
}  // namespace fathom::test
