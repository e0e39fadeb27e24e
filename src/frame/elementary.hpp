// Elementary functions, every one correctly rounded: the same bits on every processor, compiler and
// system. The C library's mathematics is not used; sqrt, fabs and copysign are instructions.
#ifndef FATHOM_FRAME_ELEMENTARY_HPP
#define FATHOM_FRAME_ELEMENTARY_HPP

#include <cfloat>
#include <cstddef>
#include <limits>

namespace fathom {

// The arithmetic that every result rests on: IEC 559 doubles, evaluated as doubles.
static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<double>::digits == 53);
static_assert(FLT_EVAL_METHOD == 0);
#if defined(__FAST_MATH__)
#error "value-changing optimisations break the promise of equal bits"
#endif

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr double kRadiansPerDegree = 0.017453292519943295;

inline double sqrt(double x) {
  return __builtin_sqrt(x);
}
inline double fabs(double x) {
  return __builtin_fabs(x);
}
inline double copysign(double x, double sign) {
  return __builtin_copysign(x, sign);
}
// The neighbouring integer is the nearest one, which 2^52 leaves, or next to it. From 2^52 on, all
// are integers.
inline double floor(double x) {
  const double nearest = copysign((fabs(x) + 0x1p52) - 0x1p52, x);
  const double below = nearest - (nearest > x ? 1.0 : 0.0);
  return fabs(x) < 0x1p52 ? below : x;
}
inline double ceil(double x) {
  const double nearest = copysign((fabs(x) + 0x1p52) - 0x1p52, x);
  const double above = copysign(nearest + (nearest < x ? 1.0 : 0.0), x);
  return fabs(x) < 0x1p52 ? above : x;
}
// x minus as many times y as leave less than y, with the sign of x; exact.
double fmod(double x, double y);
inline bool isNan(double x) {
  return x != x;
}
inline bool isFinite(double x) {
  return fabs(x) <= DBL_MAX;
}

double sin(double x);
double cos(double x);
double tan(double x);
double atan(double x);
double atan2(double y, double x);
double acos(double x);
double exp(double x);
double log(double x);
double log10(double x);
double pow(double x, double y);

// Both at once, with the bits of sin and cos.
void sincos(double x, double& s, double& c);

// One value after another over an array; results may overwrite the arguments.
void atan2(const double* y, const double* x, std::size_t n, double* angle);
void sin(const double* x, std::size_t n, double* s);
void cos(const double* x, std::size_t n, double* c);
void tan(const double* x, std::size_t n, double* t);
void exp(const double* x, std::size_t n, double* e);
void log(const double* x, std::size_t n, double* l);
void log10(const double* x, std::size_t n, double* l);
void pow(const double* x, const double* y, std::size_t n, double* p);
void pow(const double* x, double y, std::size_t n, double* p);
void sincos(const double* x, std::size_t n, double* s, double* c);

// The same for angles that ascend from 0 or more, each the rounded sum of the one before and
// `step`, or three times such a sum: the quicker, the smaller the step. An angle in the place of 0
// may be any.
struct AngleSpacing {
  explicit AngleSpacing(double step);

  // How many angles are found from the one in their middle. None if 0, and what follows is not set.
  std::size_t group = 0;
  // What the others' offsets from it and their sines and cosines are.
  static constexpr std::size_t kMost = 64;
  alignas(64) double offset[kMost], sineHead[kMost], sineTail[kMost];
  double cosine[kMost], cosineLess1[kMost], errorShare[kMost];
};
void sin(const AngleSpacing& spacing, const double* x, std::size_t n, double* s);
void cos(const AngleSpacing& spacing, const double* x, std::size_t n, double* c);
void sincos(const AngleSpacing& spacing, const double* x, std::size_t n, double* s, double* c);

}  // namespace fathom

#endif
