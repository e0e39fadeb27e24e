// Descriptive statistics and the histogram beside plain loops.
#include <cmath>

#include "table.hpp"

namespace fathom::bench {
namespace {

void plainHistogram(const double* x, std::int32_t n, double base, double top, std::int32_t* counts,
                    double* axis, std::int32_t intervals) {
  const double width = (top - base) / intervals;
  double centre = width * 0.5 + base;
  for (std::int32_t i = 0; i < intervals; ++i) {
    axis[i] = centre;
    counts[i] = 0;
    centre += width;
  }
  const double inverse = 1.0 / width;
  for (std::int32_t i = 0; i < n; ++i) {
    const auto k = static_cast<std::int32_t>(std::floor((x[i] - base) * inverse));
    if (k >= 0 && k < intervals) {
      ++counts[k];
    } else if (x[i] == top) {
      ++counts[intervals - 1];
    }
  }
}

}  // namespace

void addStatsRows() {
  for (const std::int32_t n : kSizes) {
    addRow({"Mean", n, "plain loop", 1.0, [n]() -> Sides {
              const Array x = uniform(n, -1.0, 1.0);
              const auto mean = std::make_shared<double>();
              return {[=] { return Mean(x->data(), n, mean.get()); },
                      [=] {
                        double s = 0.0;
                        for (const double value : *x) s += value;
                        *mean = s / n;
                      }};
            }});
  }
  for (const std::int32_t n : kSizes) {
    addRow({"Variance", n, "plain loop", 1.0, [n]() -> Sides {
              const Array x = uniform(n, -1.0, 1.0);
              const Array result = constant(2, 0.0);
              return {[=] { return Variance(x->data(), n, &(*result)[0], &(*result)[1]); },
                      [=] {
                        double s = 0.0;
                        double q = 0.0;
                        for (const double value : *x) {
                          s += value;
                          q += value * value;
                        }
                        const double mean = s / n;
                        (*result)[0] = mean;
                        (*result)[1] = q / n - mean * mean;
                      }};
            }});
  }
  for (const std::int32_t n : kSizes) {
    addRow({"Histogram", n, "plain loop", 2.0, [n]() -> Sides {
              constexpr std::int32_t kIntervals = 100;
              const Array x = uniform(n, -1.0, 1.0);
              const auto counts = std::make_shared<std::vector<std::int32_t>>(kIntervals);
              const Array axis = constant(kIntervals, 0.0);
              return {[=] {
                        return Histogram(x->data(), n, -1.0, 1.0, counts->data(), axis->data(),
                                         kIntervals);
                      },
                      [=] {
                        plainHistogram(x->data(), n, -1.0, 1.0, counts->data(), axis->data(),
                                       kIntervals);
                      }};
            }});
  }
}

}  // namespace fathom::bench
