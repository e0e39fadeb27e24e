// Correct rounding as MPFR defines it: every elementary function beside its reference, with
// arguments drawn where it is hard.
#ifndef FATHOM_TESTS_ELEMENTARY_REFERENCE_HPP
#define FATHOM_TESTS_ELEMENTARY_REFERENCE_HPP

#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "elementary/slow.hpp"
#include "frame/elementary.hpp"

namespace fathom::test {

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed << 32) {}

  // A counter, mixed as in splitmix64.
  std::uint64_t bits() {
    state_ += 0x9E37'79B9'7F4A'7C15;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58'476D'1CE4'E5B9;
    z = (z ^ (z >> 27)) * 0x94D0'49BB'1331'11EB;
    return z ^ (z >> 31);
  }
  bool coin() { return (bits() & 1) != 0; }
  int integer(int first, int last) {
    const std::int64_t count = std::int64_t{last} - first + 1;
    return static_cast<int>(first +
                            static_cast<std::int64_t>(bits() % static_cast<std::uint64_t>(count)));
  }
  double uniform(double below, double above) {
    return below + (above - below) * (static_cast<double>(bits() >> 11) * 0x1p-53);
  }
  // Any double at all, by its bits.
  double anything() { return std::bit_cast<double>(bits()); }
  // Either sign, and an exponent in the range.
  double scaled(int first, int last) {
    return std::ldexp(coin() ? uniform(1.0, 2.0) : uniform(-2.0, -1.0), integer(first, last));
  }
  // At most 2^bits doubles away from x, and mostly few.
  double near(double x, int bits) {
    const int steps = 1 << integer(0, bits);
    return std::bit_cast<double>(std::bit_cast<std::int64_t>(x) + integer(-steps, steps));
  }

 private:
  std::uint64_t state_;
};

// In the function's own order: atan2 is given y, x. Functions of one argument ignore the second.
struct Arguments {
  double first;
  double second;
};

inline Arguments drawAngle(Random& random) {
  switch (random.integer(0, 3)) {
    case 0:
      return {random.anything(), 0.0};
    case 1: {  // beside multiples of pi/2
      const auto quarters = static_cast<double>(random.bits() >> random.integer(11, 63));
      const double angle = std::ldexp(quarters * (kPi / 2), random.integer(0, 900));
      return {random.near(random.coin() ? angle : quarters * (kPi / 2), 2), 0.0};
    }
    default:
      return {random.scaled(-32, 32), 0.0};
  }
}

// Beside the points and the borders of cells in octaves of a table.
inline double drawCell(Random& random, int first, int last) {
  return random.near(std::ldexp(random.integer(64, 127), random.integer(first, last) - 6), 30);
}

inline Arguments drawSlope(Random& random) {
  switch (random.integer(0, 4)) {
    case 0:
      return {random.anything(), 0.0};
    case 1: {
      const double slope = drawCell(random, -28, 7);
      return {random.coin() ? slope : -slope, 0.0};
    }
    default:
      return {random.scaled(-32, 55), 0.0};
  }
}

inline Arguments drawCosine(Random& random) {
  switch (random.integer(0, 4)) {
    case 0:
      return {random.scaled(-1074, 0), 0.0};
    case 1:
      return {random.near(random.coin() ? 1.0 : -1.0, 30), 0.0};
    case 2:
      return {random.scaled(-60, -1), 0.0};
    case 3: {
      const double cosine = 1.0 - drawCell(random, -9, -1);
      return {random.coin() ? cosine : -cosine, 0.0};
    }
    default:
      return {random.uniform(-1.0, 1.0), 0.0};
  }
}

inline Arguments drawExponent(Random& random) {
  constexpr double kEdges[] = {709.782712893384, -708.3964185322641, -745.1332191019412,
                               0x1p-53,          -0x1p-54,           0.6931471805599453};
  switch (random.integer(0, 3)) {
    case 0:
      return {random.anything(), 0.0};
    case 1:
      return {random.near(kEdges[random.integer(0, 5)], 30), 0.0};
    case 2:
      return {random.scaled(-60, 9), 0.0};
    default:
      return {random.uniform(-746.0, 710.0), 0.0};
  }
}

inline Arguments drawLogarithm(Random& random) {
  switch (random.integer(0, 4)) {
    case 0:
      return {random.anything(), 0.0};
    case 1:
      return {random.near(1.0, 30), 0.0};
    case 2:
      return {random.near(std::pow(10.0, random.integer(-20, 25)), 2), 0.0};
    case 3:
      return {1.0 + random.scaled(-50, -2), 0.0};
    default:
      return {std::fabs(random.anything()), 0.0};
  }
}

// y, x
inline Arguments drawPoint(Random& random) {
  switch (random.integer(0, 4)) {
    case 0:
      return {random.anything(), random.anything()};
    case 1: {  // the quotient is a double or halfway between two, if subnormal
      const double x = std::ldexp(random.integer(1, 1 << 20), random.integer(20, 980));
      const int exponent = random.integer(-1076, random.coin() ? -1070 : -40);
      return {std::ldexp(x * random.integer(1, 1 << 20), exponent), x};
    }
    case 2: {
      const double x = random.anything();
      return {x * random.scaled(-70, 70), x};
    }
    default:
      return {random.scaled(-20, 20), random.scaled(-20, 20)};
  }
}

inline Arguments drawPower(Random& random) {
  const double x = std::fabs(random.scaled(-1074, 1023));
  switch (random.integer(0, 6)) {
    case 0:
      return {random.anything(), random.anything()};
    case 1: {  // the power has about 54 bits, so that it is halfway between two doubles, or nearly
               // so
      const int times = random.integer(2, 34);
      const double root = std::floor(std::exp2(random.uniform(52.0, 54.5) / times));
      int roots = random.integer(0, 4);
      while (std::pow(root, 1 << roots) > 0x1p53) --roots;
      const int exponent = random.integer(-1100, 1000) / times;
      const double base = std::ldexp(std::pow(root, 1 << roots), exponent * (1 << roots));
      const double y = times / static_cast<double>(1 << roots);
      if (random.coin()) return {base, random.coin() ? y : -y};
      return {random.near(base, 0), random.near(y, 0)};
    }
    case 2: {
      const double base = random.near(1.0, 30);
      return {base, random.uniform(-745.0, 710.0) / std::log(base)};
    }
    case 3:
      return {random.scaled(-20, 20), static_cast<double>(random.integer(-70, 70))};
    case 4: {  // beside the ends of the range
      constexpr double kEdges[] = {1024.0, -1022.0, -1074.0, -1075.0};
      return {x, random.near(kEdges[random.integer(0, 3)] / std::log2(x), 30)};
    }
    case 5:
      return {x, random.scaled(-70, 0)};
    default:
      return {x, random.uniform(-746.0, 710.0) / std::log(x)};
  }
}

struct Elementary {
  const char* name;
  double (*function)(double, double);
  double (*slow)(double, double);
  int (*reference)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr);
  Arguments (*draw)(Random&);
  // Results within 2^-107 of the middle between two doubles, relative; the angle that comes nearest
  // to a multiple of pi/2.
  std::vector<Arguments> hard;
};

#define FATHOM_ROW(NAME, ARGUMENTS, REFERENCE, DRAW, ...)                                    \
  Elementary {                                                                               \
#NAME, [](double x, [[maybe_unused]] double y) { return fathom::NAME ARGUMENTS; },         \
        [](double x, [[maybe_unused]] double y) { return fathom::slow::NAME ARGUMENTS; },  \
        [](mpfr_ptr result, mpfr_srcptr x, [[maybe_unused]] mpfr_srcptr y) {               \
          return mpfr_##NAME REFERENCE;                                                    \
        },                                                                                 \
        DRAW, __VA_ARGS__ \
  }
#define FATHOM_ONE(NAME, DRAW, ...) FATHOM_ROW(NAME, (x), (result, x, MPFR_RNDN), DRAW, __VA_ARGS__)
#define FATHOM_TWO(NAME, DRAW, ...) \
  FATHOM_ROW(NAME, (x, y), (result, x, y, MPFR_RNDN), DRAW, __VA_ARGS__)

inline const std::vector<Elementary>& elementaryFunctions() {
  static const std::vector<Elementary> functions = {
      FATHOM_ONE(sin, drawAngle, {{0x1.598bae9e632f6p-7, 0}, {0x1.6ac5b262ca1ffp+849, 0}}),
      FATHOM_ONE(cos, drawAngle, {{0x1.34ec2f9fc9cp+1, 0}, {0x1.6ac5b262ca1ffp+849, 0}}),
      FATHOM_ONE(
          tan, drawAngle,
          {{0x1.dffffffffff1fp-22, 0}, {0x1.50486b2f87014p-5, 0}, {0x1.6ac5b262ca1ffp+849, 0}}),
      FATHOM_ONE(atan, drawSlope, {{0x1.6298b5896ed3cp+1, 0}, {0x1.22e8d75e2bc7fp-11, 0}}),
      FATHOM_ONE(acos, drawCosine, {{0x1.53ea6c7255e88p-4, 0}}),
      FATHOM_ONE(exp, drawExponent, {{0x1.9e9cbbfd6080bp-31, 0}}),
      FATHOM_ONE(log, drawLogarithm, {}),
      FATHOM_ONE(log10, drawLogarithm, {{0x1.e12d66744ff81p+429, 0}}),
      FATHOM_TWO(atan2, drawPoint, {}),
      FATHOM_TWO(pow, drawPower, {}),
  };
  return functions;
}

// The correctly rounded result, subnormal ones rounded once, too.
inline double correctlyRounded(const Elementary& f, Arguments a) {
  struct Numbers {
    Numbers() { mpfr_inits2(53, x, y, result, static_cast<mpfr_ptr>(nullptr)); }
    ~Numbers() {
      mpfr_clears(x, y, result, static_cast<mpfr_ptr>(nullptr));
      mpfr_free_cache();
    }
    mpfr_t x, y, result;
  };
  static Numbers n;
  mpfr_set_emin(-1073);
  mpfr_set_emax(1024);
  mpfr_set_d(n.x, a.first, MPFR_RNDN);
  mpfr_set_d(n.y, a.second, MPFR_RNDN);
  const int inexact = f.reference(n.result, n.x, n.y);
  mpfr_subnormalize(n.result, inexact, MPFR_RNDN);
  return mpfr_get_d(n.result, MPFR_RNDN);
}

}  // namespace fathom::test

#endif
