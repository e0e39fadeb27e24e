// Elementary functions beside the C library's, one value at a time and over arrays, and a routine
// that consists of little else. They are internal, so that the benchmarks link the static library.
#include <algorithm>
#include <cmath>

#include "frame/elementary.hpp"
#include "table.hpp"

namespace fathom::bench {
namespace {

constexpr std::int32_t kAngles = 1'000;
const std::string kLibm = "libm";

using Scalar = double (*)(double);
using ArrayForm = void (*)(const double*, std::size_t, double*);

// In a loop that the compiler cannot see into.
void apply(Scalar f, const Array& x, const Array& y) {
  std::transform(x->begin(), x->end(), y->begin(), f);
}

void addOneByOne(const std::string& name, const Array& x, Scalar scalar, Scalar peer) {
  const auto n = static_cast<std::int32_t>(x->size());
  const Array y = constant(n, 0.0);
  addRow({name + ", one by one", n, kLibm, 0.6, [=]() -> Sides {
            return {[=] {
                      apply(scalar, x, y);
                      return FATHOM_OK;
                    },
                    [=] { apply(peer, x, y); }};
          }});
}

void addOneArgument(const std::string& name, const Array& x, ArrayForm array, Scalar scalar,
                    Scalar peer, double arrayGoal) {
  const auto n = static_cast<std::int32_t>(x->size());
  const Array y = constant(n, 0.0);
  const auto loop = [=] { apply(peer, x, y); };
  addRow({name + " of an array", n, kLibm, arrayGoal, [=]() -> Sides {
            return {[=] {
                      array(x->data(), x->size(), y->data());
                      return FATHOM_OK;
                    },
                    loop};
          }});
  addOneByOne(name, x, scalar, peer);
}

void addSineCosine() {
  const Array x = uniform(kAngles, -1000.0, 1000.0);
  const Array s = constant(kAngles, 0.0);
  const Array c = constant(kAngles, 0.0);
  const auto loop = [=] {
    for (std::size_t i = 0; i < x->size(); ++i) ::sincos((*x)[i], &(*s)[i], &(*c)[i]);
  };
  addRow({"sincos of an array", kAngles, kLibm, byLevel(4.0, 2.0, 1.2), [=]() -> Sides {
            return {[=] {
                      fathom::sincos(x->data(), x->size(), s->data(), c->data());
                      return FATHOM_OK;
                    },
                    loop};
          }});
  addRow({"sincos, one by one", kAngles, kLibm, 0.6, [=]() -> Sides {
            return {[=] {
                      for (std::size_t i = 0; i < x->size(); ++i) {
                        fathom::sincos((*x)[i], (*s)[i], (*c)[i]);
                      }
                      return FATHOM_OK;
                    },
                    loop};
          }});
}

void addTrigonometricRows() {
  const Array x = uniform(kAngles, -1000.0, 1000.0);
  const double goal = byLevel(4.0, 2.0, 1.2);
  addSineCosine();
  addOneArgument("sin", x, fathom::sin, fathom::sin, std::sin, goal);
  addOneArgument("cos", x, fathom::cos, fathom::cos, std::cos, goal);
  addOneArgument("tan", x, fathom::tan, fathom::tan, std::tan, kNoGoal);
}

// The angles of points on all sides of the origin.
void addInverseTrigonometricRows() {
  const Array x = uniform(kAngles, -10.0, 10.0), y = uniform(kAngles, -7.0, 12.0);
  const Array angle = constant(kAngles, 0.0);
  const auto loop = [=](auto atan2) {
    std::transform(y->begin(), y->end(), x->begin(), angle->begin(), atan2);
  };
  const auto libm = [=] { loop([](double b, double a) { return std::atan2(b, a); }); };
  addRow({"atan2 of an array", kAngles, kLibm, byLevel(2.5, 1.5, 1.0), [=]() -> Sides {
            return {[=] {
                      fathom::atan2(y->data(), x->data(), x->size(), angle->data());
                      return FATHOM_OK;
                    },
                    libm};
          }});
  addRow({"atan2, one by one", kAngles, kLibm, 0.6, [=]() -> Sides {
            return {[=] {
                      loop([](double b, double a) { return fathom::atan2(b, a); });
                      return FATHOM_OK;
                    },
                    libm};
          }});
  addOneByOne("atan", x, fathom::atan, std::atan);
  addOneByOne("acos", uniform(kAngles, -1.0, 1.0), fathom::acos, std::acos);
}

void addExponentialRows() {
  const Array x = uniform(kAngles, 0.01, 20.0);
  const double goal = byLevel(2.5, 1.5, 1.0);
  addOneArgument("exp", x, fathom::exp, fathom::exp, std::exp, goal);
  addOneArgument("log", x, fathom::log, fathom::log, std::log, goal);
  addOneArgument("log10", x, fathom::log10, fathom::log10, std::log10, goal);
  constexpr double kExponent = 2.4;
  addOneArgument(
      "pow", x,
      [](const double* base, std::size_t n, double* y) { fathom::pow(base, kExponent, n, y); },
      [](double base) { return fathom::pow(base, kExponent); },
      [](double base) { return std::pow(base, kExponent); }, goal);
}

void addChirpRow(std::int32_t n) {
  addRow({"Chirp", n, "the loop with libm", byLevel(3.0, 1.7, 1.0), [n]() -> Sides {
            const Array y = constant(n, 0.0);
            return {[=] { return Chirp(n, 2.0, 0.01, 0.3, y->data()); },
                    [=] {
                      const double k = (0.3 - 0.01) * kPi / n;
                      const double w = kTwoPi * 0.01;
                      for (std::int32_t i = 0; i < n; ++i) {
                        (*y)[static_cast<std::size_t>(i)] = 2.0 * std::sin((i * k + w) * i);
                      }
                    }};
          }});
}

}  // namespace

void addElementaryRows() {
  addTrigonometricRows();
  addInverseTrigonometricRows();
  addExponentialRows();
  for (const std::int32_t n : {1'000, 30'000}) addChirpRow(n);
}

}  // namespace fathom::bench
