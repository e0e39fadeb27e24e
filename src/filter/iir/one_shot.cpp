// Filtering data in one call, section by section in direct form I, in place.
#include <cstddef>
#include <cstdint>

#include "filter/iir/forms.hpp"

namespace fathom {
namespace {

// The section's output from the inputs x, x1 .. x4 and the outputs y1 .. y4 before it.
double output(const Section& s, const double* x, const double* y) {
  const double g = s.b[0], c1 = -s.a[0], c2 = -s.a[1], c3 = -s.a[2], c4 = -s.a[3];
  switch (s.numerator) {
    case Numerator::kSum:
      if (s.degree == 1) return (x[0] + x[1]) * g + c1 * y[1];
      return c1 * y[1] + c2 * y[2] + (x[0] + x[1] + x[1] + x[2]) * g;
    case Numerator::kDifference:
      if (s.degree == 1) return (x[0] - x[1]) * g + c1 * y[1];
      return c1 * y[1] + c2 * y[2] + (x[0] - x[1] - x[1] + x[2]) * g;
    case Numerator::kBandpass:
      if (s.degree == 2) return (x[0] - x[2]) * g + c1 * y[1] + c2 * y[2];
      return (x[0] - 2.0 * x[2] + x[4]) * g + c1 * y[1] + c2 * y[2] + c3 * y[3] + c4 * y[4];
    case Numerator::kNotch:
      return (x[0] + x[2]) * g + (x[1] - y[1]) * s.b[1] + c2 * y[2];
    case Numerator::kGeneral:
      break;
  }
  if (s.degree == 2) return c1 * y[1] + c2 * y[2] + ((x[0] + x[2]) * g + x[1] * s.b[1]);
  return (x[0] + x[4]) * g + (x[1] + x[3]) * s.b[1] + x[2] * s.b[2] + c1 * y[1] + c2 * y[2] +
         c3 * y[3] + c4 * y[4];
}

void runSection(const Section& s, double* data, std::size_t n) {
  double x[5] = {}, y[5] = {};
  for (std::size_t i = 0; i < n; ++i) {
    for (int k = 4; k > 0; --k) {
      x[k] = x[k - 1];
      y[k] = y[k - 1];
    }
    x[0] = data[i];
    y[0] = output(s, x, y);
    data[i] = y[0];
  }
}

}  // namespace

void runSections(const Section* sections, int count, double* y, std::size_t n) {
  for (int s = 0; s < count; ++s) runSection(sections[s], y, n);
}

}  // namespace fathom
