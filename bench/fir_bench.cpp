// FIR designs beside SciPy's exchange, and windowed ones beside their sines and cosines.
#include <cmath>

#include "table.hpp"

namespace fathom::bench {
namespace {

struct Exchange {
  const char* work;
  std::int32_t type, n;
  std::vector<double> edges, desired, weights;
};

const std::vector<Exchange>& exchanges() {
  static const std::vector<Exchange> list = {
      {"Equi_Ripple lowpass", 1, 255, {0, 0.2, 0.21, 0.5}, {1, 0}, {1, 1}},
      {"Equi_Ripple five bands",
       1,
       101,
       {0, 0.05, 0.08, 0.15, 0.18, 0.25, 0.28, 0.35, 0.38, 0.5},
       {0, 1, 0, 1, 0},
       {10, 1, 3, 1, 20}},
      {"Equi_Ripple slope", 2, 63, {0, 0.45}, {1}, {1}}};
  return list;
}

std::string list(const std::vector<double>& values) {
  std::string text = "[";
  for (const double v : values) text += std::to_string(v) + ",";
  return text + "]";
}

// Of one design, the least of many.
double remezSeconds(const Exchange& e) {
  return secondsByPython(
      "import time\nfrom scipy.signal import remez\nt=time.process_time\nb=1e9\n"
      "for i in range(60):\n s=t()\n remez(" +
      std::to_string(e.n) + "," + list(e.edges) + "," + list(e.desired) +
      ",weight=" + list(e.weights) + ",fs=1,grid_density=16,maxiter=99,type='" +
      (e.type == 2 ? "differentiator" : "bandpass") + "')\n b=min(b,t()-s)\nprint(b)\n");
}

}  // namespace

void addFirRows() {
  const bool scipy = remezSeconds(exchanges()[2]) > 0.0;
  for (const Exchange& e : exchanges()) {
    if (!scipy) {
      leaveOut("SciPy", e.work);
      continue;
    }
    addRow({e.work, e.n, "SciPy remez", 1.5, [&e]() -> Sides {
              const Array h = constant(e.n, 0.0);
              const auto deviation = std::make_shared<double>();
              const double seconds = remezSeconds(e);
              return {[=, &e] {
                        return Equi_Ripple(static_cast<std::int32_t>(e.desired.size()),
                                           e.desired.data(), e.weights.data(), 1.0, e.edges.data(),
                                           e.type, e.n, h->data(), deviation.get());
                      },
                      [=] { spend(seconds); }};
            }});
  }
  for (const std::int32_t n : {101, 1'001, 100'001}) {
    addRow({"Wind_LPF Hamming", n, "n / 2 sin, n / 2 cos", 1.0 / 1.1, [n]() -> Sides {
              const Array h = constant(n, 0.0);
              const auto sum = std::make_shared<double>();
              return {[=] { return Wind_LPF(1.0, 0.2, n, h->data(), FATHOM_FIR_HAMMING); },
                      [=] {
                        // As many as there are different coefficients.
                        const double step = 6.283185307179586 / n;
                        double s = 0.0;
                        double t = -0.2 * 6.283185307179586 * (n - 1) * 0.5;
                        double angle = 0.0;
                        for (std::int32_t k = 0; k < n / 2; ++k) {
                          s += std::sin(t) + std::cos(angle);
                          t += 0.2 * 6.283185307179586;
                          angle += step;
                        }
                        *sum = s;
                      }};
            }});
  }
}

}  // namespace fathom::bench
