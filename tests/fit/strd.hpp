// The nonlinear problems of NIST's Statistical Reference Datasets: their data and models are in
// strd/.
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
  std::vector<double> starts[2] = {}, certified = {}, deviations = {}, squares = {1}, x = {},
                      y = {};
};

// Nelson's model has two predictors, so its x is an index into this table.
inline std::vector<double> nelsonPredictors;

inline std::vector<StrdProblem> strdProblems() {
  using std::exp, std::pow, std::sin, std::cos;
  using D = double;
  using B = const double*;
  using K = int32_t;
  static constexpr D kPi = 3.14159265358979323846;
#include "fit/strd/nonlinear/shared.dat"
  std::vector<StrdProblem> problems = {
#include "fit/strd/nonlinear/models.dat"
  };
  for (StrdProblem& p : problems) {
    std::ifstream file(std::string(FATHOM_REFERENCE_DATA "/nonlinear/") + p.name + ".dat");
    std::string word;
    std::size_t n = 0, k = 0;
    file >> word >> n >> k;
    for (auto* row : {&p.starts[0], &p.starts[1], &p.certified, &p.deviations, &p.squares}) {
      row->resize(row == &p.squares ? 1 : k);
      file >> word;
      for (double& value : *row) file >> value;
    }
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
