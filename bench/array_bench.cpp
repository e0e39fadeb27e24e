// Real arrays: element-wise routines and extremes beside Eigen, reductions and evaluation beside
// plain loops, sorting beside the standard library's.
#include <algorithm>
#include <cstdlib>

#include "table.hpp"

#if defined(FATHOM_BENCH_EIGEN)
#include <Eigen/Core>
#endif

namespace fathom::bench {
namespace {

#if defined(FATHOM_BENCH_EIGEN)
const std::string kEigen =
    "Eigen " + std::to_string(EIGEN_WORLD_VERSION) + "." + std::to_string(EIGEN_MAJOR_VERSION);

using Values = Eigen::Map<Eigen::ArrayXd>;
using ConstValues = Eigen::Map<const Eigen::ArrayXd>;

// Calls of y = f(a, b); those of one operand ignore b.
struct Elementwise {
  const char* work;
  AnalysisStatus (*fathom)(const double* a, const double* b, std::int32_t n, double* y);
  void (*eigen)(const ConstValues& a, const ConstValues& b, Values& y);
  double neutral;  // the value of b that leaves y in place where it is, however often applied
};

const Elementwise kElementwise[] = {
    {"Add1D", Add1D, [](const auto& a, const auto& b, auto& y) { y = a + b; }, 0.0},
    {"Sub1D", Sub1D, [](const auto& a, const auto& b, auto& y) { y = a - b; }, 0.0},
    {"Mul1D", Mul1D, [](const auto& a, const auto& b, auto& y) { y = a * b; }, 1.0},
    {"Div1D", Div1D, [](const auto& a, const auto& b, auto& y) { y = a / b; }, 1.0},
    {"LinEv1D",
     [](const double* a, const double*, std::int32_t n, double* y) {
       return LinEv1D(a, n, -1.0, 0.25, y);
     },
     [](const auto& a, const auto&, auto& y) { y = a * -1.0 + 0.25; }, 0.0},
    {"Clip",
     [](const double* a, const double*, std::int32_t n, double* y) {
       return Clip(a, n, 0.5, -0.5, y);
     },
     [](const auto& a, const auto&, auto& y) { y = a.min(0.5).max(-0.5); }, 0.0},
    {"Abs1D",
     [](const double* a, const double*, std::int32_t n, double* y) { return Abs1D(a, n, y); },
     [](const auto& a, const auto&, auto& y) { y = a.abs(); }, 0.0},
    {"Neg1D",
     [](const double* a, const double*, std::int32_t n, double* y) { return Neg1D(a, n, y); },
     [](const auto& a, const auto&, auto& y) { y = -a; }, 0.0},
};

void addEigenRows() {
  for (const Elementwise& e : kElementwise) {
    for (const std::int32_t n : kSizes) {
      for (const bool inPlace : {false, true}) {
        addRow({e.work + std::string(inPlace ? ", in place" : ""), n, kEigen, 1.0,
                [&e, n, inPlace]() -> Sides {
                  const Array a = uniform(n, -1.0, 1.0);
                  const Array b = constant(n, e.neutral);
                  const Array y = inPlace ? a : constant(n, 0.0);
                  return {[=] { return e.fathom(a->data(), b->data(), n, y->data()); },
                          [=] {
                            Values result(y->data(), n);
                            e.eigen(ConstValues(a->data(), n), ConstValues(b->data(), n), result);
                          }};
                }});
      }
    }
  }
  for (const std::int32_t n : kSizes) {
    addRow({"MaxMin1D", n, kEigen + " maxCoeff, minCoeff", 1.5, [n]() -> Sides {
              struct Extremes {
                double maximum, minimum;
                std::int32_t maximumIndex, minimumIndex;
              };
              const Array x = uniform(n, -1.0, 1.0);
              const auto e = std::make_shared<Extremes>();
              return {[=] {
                        return MaxMin1D(x->data(), n, &e->maximum, &e->maximumIndex, &e->minimum,
                                        &e->minimumIndex);
                      },
                      [=] {
                        const ConstValues values(x->data(), n);
                        e->maximum = values.maxCoeff(&e->maximumIndex);
                        e->minimum = values.minCoeff(&e->minimumIndex);
                      }};
            }});
  }
}
#endif

// The powers are formed one after another and the terms added from the constant upward.
void plainPolynomial(const double* x, std::int32_t n, const double* c, std::int32_t m, double* y) {
  for (std::int32_t i = 0; i < n; ++i) {
    const double value = x[i];
    double sum = c[0];
    double power = 1.0;
    for (std::int32_t j = 1; j < m; ++j) {
      power *= value;
      sum += c[j] * power;
    }
    y[i] = sum;
  }
}

void plainUnwrap(double* x, std::int32_t n) {
  constexpr double kPi = 3.141592653589793;
  constexpr double kTwoPi = 6.283185307179586;
  for (std::int32_t i = 1; i < n; ++i) {
    const double d = x[i] - x[i - 1];
    if (d > kPi) {
      for (std::int32_t k = i; k < n; ++k) x[k] -= kTwoPi;
    } else if (d < -kPi) {
      for (std::int32_t k = i; k < n; ++k) x[k] += kTwoPi;
    }
  }
}

void addPlainLoopRows() {
  for (const std::int32_t n : kSizes) {
    addRow({"PolyEv1D, degree 8", n, "plain loop", 6.0, [n]() -> Sides {
              const Array x = uniform(n, -1.0, 1.0);
              const Array c = uniform(9, -1.0, 1.0);
              const Array y = constant(n, 0.0);
              // The plain loop, as the routine, learns the degree when it is called.
              const auto m = [c] { return static_cast<std::int32_t>(c->size()); };
              return {[=] { return PolyEv1D(x->data(), n, c->data(), m(), y->data()); },
                      [=] { plainPolynomial(x->data(), n, c->data(), m(), y->data()); }};
            }});
  }
  for (const std::int32_t n : kSizes) {
    addRow({"Sum1D", n, "plain loop", 1.0, [n]() -> Sides {
              const Array x = uniform(n, -1.0, 1.0);
              const auto sum = std::make_shared<double>();
              return {[=] { return Sum1D(x->data(), n, sum.get()); },
                      [=] {
                        double s = 0.0;
                        for (const double value : *x) s += value;
                        *sum = s;
                      }};
            }});
  }
  for (const std::int32_t n : kSizes) {
    addRow({"Prod1D", n, "plain loop", 1.0, [n]() -> Sides {
              const Array x = uniform(n, 1.0 - 1e-6, 1.0 + 1e-6);
              const auto product = std::make_shared<double>();
              return {[=] { return Prod1D(x->data(), n, product.get()); },
                      [=] {
                        double p = 1.0;
                        for (const double value : *x) p *= value;
                        *product = p;
                      }};
            }});
  }
  for (const std::int32_t n : {1'000, 10'000, 100'000}) {
    addRow({"UnWrap1D, many jumps", n, "plain loop", n == 100'000 ? 6.0 : 2.0, [n]() -> Sides {
              const Array jumping = constant(n, 0.0);
              for (std::size_t i = 0; i < jumping->size(); ++i)
                (*jumping)[i] = i % 4 < 2 ? 0.0 : 4.0;
              const Array x = constant(n, 0.0);
              return {[=] { return UnWrap1D(x->data(), n); }, [=] { plainUnwrap(x->data(), n); },
                      [=] { *x = *jumping; }, 1};
            }});
  }
}

int compareDoubles(const void* a, const void* b) {
  const double x = *static_cast<const double*>(a);
  const double y = *static_cast<const double*>(b);
  return (x > y) - (x < y);
}

// Sorts one block of n values after another out of many, into another array: the processor learns
// the branches of a short array that is sorted again and again.
class Blocks {
 public:
  explicit Blocks(std::int32_t n)
      : n_(n), values_(uniform(std::max(n, kLeastValues / n * n), -1.0, 1.0)), sorted_(n) {}

  AnalysisStatus sort() { return Sort(next(), n_, 0, sorted_.data()); }
  void sortByStd() {
    copyNext();
    std::sort(sorted_.begin(), sorted_.end());
  }
  void sortByQsort() {
    copyNext();
    std::qsort(sorted_.data(), sorted_.size(), sizeof(double), compareDoubles);
  }

 private:
  static constexpr std::int32_t kLeastValues = 200'000;

  const double* next() {
    position_ = position_ + 2 * sorted_.size() <= values_->size() ? position_ + sorted_.size() : 0;
    return values_->data() + position_;
  }
  void copyNext() { std::copy_n(next(), sorted_.size(), sorted_.begin()); }

  std::int32_t n_;
  std::size_t position_ = 0;
  Array values_;
  std::vector<double> sorted_;
};

void addSortRows() {
  const struct {
    const char* peer;
    void (Blocks::*sort)();
    double goal;
  } peers[] = {{"std::sort", &Blocks::sortByStd, 1.2}, {"qsort", &Blocks::sortByQsort, 2.0}};
  for (const auto& peer : peers) {
    for (const std::int32_t n : kSizes) {
      addRow({"Sort, random", n, peer.peer, peer.goal, [n, sort = peer.sort]() -> Sides {
                const auto blocks = std::make_shared<Blocks>(n);
                return {[=] { return blocks->sort(); }, [=] { (*blocks.*sort)(); }};
              }});
    }
  }
  enum class Order { kSorted, kReversed, kEqual };
  const std::pair<const char*, Order> orders[] = {{"Sort, sorted", Order::kSorted},
                                                  {"Sort, reversed", Order::kReversed},
                                                  {"Sort, equal", Order::kEqual}};
  for (const auto& [work, order] : orders) {
    for (const std::int32_t n : kSizes) {
      addRow({work, n, "Sort, random", 1.0, [n, order = order]() -> Sides {
                const auto random = std::make_shared<Blocks>(n);
                const Array x = order == Order::kEqual ? constant(n, 0.5) : uniform(n, -1.0, 1.0);
                std::sort(x->begin(), x->end());
                if (order == Order::kReversed) std::reverse(x->begin(), x->end());
                const Array y = constant(n, 0.0);
                return {[=] { return Sort(x->data(), n, 0, y->data()); }, [=] { random->sort(); }};
              }});
    }
  }
}

}  // namespace

void addArrayRows() {
#if defined(FATHOM_BENCH_EIGEN)
  addEigenRows();
#else
  leaveOut("Eigen", "element-wise routines, MaxMin1D");
#endif
  addPlainLoopRows();
  addSortRows();
}

}  // namespace fathom::bench
