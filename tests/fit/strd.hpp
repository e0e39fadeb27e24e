// The nonlinear problems of NIST's Statistical Reference Datasets: models here, data in strd/.
#ifndef FATHOM_TESTS_FIT_STRD_HPP
#define FATHOM_TESTS_FIT_STRD_HPP

#include <cmath>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "fathom.h"

namespace fathom::test {

struct StrdProblem {
  const char* name;
  FathomModel model;
  std::vector<double> starts[2] = {}, certified = {}, deviations = {}, x = {}, y = {};
  double squares = 0.0;
};

// Nelson's model has two predictors, so its x is an index into this table.
inline std::vector<double> nelsonPredictors;

inline double rational(double x, const double* b, int above, int below) {
  double p = 0.0, q = 0.0;
  for (int i = above; i-- > 0;) p = p * x + b[i];
  for (int i = below; i-- > 0;) q = (q + b[above + i]) * x;
  return p / (1.0 + q);
}

inline std::vector<StrdProblem> strdProblems() {
  using std::exp, std::pow, std::sin, std::cos;
  using D = double;
  using B = const double*;
  using K = int32_t;
  static constexpr D kPi = 3.14159265358979323846;
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
       [](D x, B b, K) { return b[0] - b[1] * x - std::atan(b[2] / (x - b[3])) / kPi; }},
      {"thurber", cubics},
  };
  for (StrdProblem& p : problems) {
    std::ifstream file(std::string(FATHOM_REFERENCE_DATA "/nonlinear/") + p.name + ".dat");
    std::string word;
    std::size_t n = 0, k = 0;
    file >> word >> n >> k;
    for (std::vector<double>* row : {&p.starts[0], &p.starts[1], &p.certified, &p.deviations}) {
      row->resize(k);
      file >> word;
      for (double& value : *row) file >> value;
    }
    file >> word >> p.squares;
    p.x.resize(n);
    p.y.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
      if (word = p.name; word == "nelson") {
        nelsonPredictors.resize(2 * n);
        file >> nelsonPredictors[2 * i] >> nelsonPredictors[2 * i + 1] >> p.y[i];
        p.x[i] = static_cast<double>(i);
        p.y[i] = std::log(p.y[i]);
      } else {
        file >> p.x[i] >> p.y[i];
      }
    }
  }
  return problems;
}

}  // namespace fathom::test

#endif
