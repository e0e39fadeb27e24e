#include "filter/iir/iir.hpp"

namespace fathom::test {
namespace {

// One section in direct form I, in the groupings of its kind; b and a as in a record.
double sectionPlainly(int32_t type, bool first, bool general, const double* b, const double* a,
                      const double* x, const double* y) {
  const double g = b[0], c1 = -a[0], c2 = -a[1];
  if (type < FATHOM_BANDPASS) {
    const double sign = type == FATHOM_LOWPASS ? 1 : -1;
    if (first) return (x[0] + sign * x[1]) * g + c1 * y[1];
    if (general) return c1 * y[1] + c2 * y[2] + ((x[0] + x[2]) * g + x[1] * b[1]);
    return c1 * y[1] + c2 * y[2] + (x[0] + sign * x[1] + sign * x[1] + x[2]) * g;
  }
  if (first && type == FATHOM_BANDPASS) return (x[0] - x[2]) * g + c1 * y[1] + c2 * y[2];
  if (first) return (x[0] + x[2]) * g + (x[1] - y[1]) * b[1] + c2 * y[2];
  const double forward = type == FATHOM_BANDPASS && !general
                             ? (x[0] - 2 * x[2] + x[4]) * g
                             : (x[0] + x[4]) * g + (x[1] + x[3]) * b[1] + x[2] * b[2];
  return forward + c1 * y[1] + c2 * y[2] - a[2] * y[3] - a[3] * y[4];
}

Values oncePlainly(const IIRFilter& f, bool general, Values data) {
  const int32_t m = f.type < FATHOM_BANDPASS ? 2 : 4;
  for (int32_t s = 0; s < f.na / m; ++s) {
    double x[5] = {}, y[5] = {};
    for (double& v : data) {
      std::copy_backward(x, x + 4, x + 5);
      std::copy_backward(y, y + 4, y + 5);
      x[0] = v;
      v = y[0] = sectionPlainly(f.type, s == 0 && f.order % 2 != 0, general, f.b + s * (m + 1),
                                f.a + s * m, x, y);
    }
  }
  return data;
}

constexpr double kLow = 0.12, kHigh = 0.3, kAttenuation = 40;

AnalysisStatus butterworth(int32_t type, const Values& x, int32_t order, double* y) {
  const int32_t n = count(x);
  if (type < FATHOM_BANDPASS) return (type == 0 ? Bw_LPF : Bw_HPF)(x.data(), n, 1, kLow, order, y);
  return (type == 2 ? Bw_BPF : Bw_BSF)(x.data(), n, 1, kLow, kHigh, order, y);
}
// Its pairs have general numerators.
AnalysisStatus inverseChebyshev(int32_t type, const Values& x, int32_t order, double* y) {
  const int32_t n = count(x);
  const double at = kAttenuation;
  if (type < FATHOM_BANDPASS)
    return (type == 0 ? InvCh_LPF : InvCh_HPF)(x.data(), n, 1, kLow, at, order, y);
  return (type == 2 ? InvCh_BPF : InvCh_BSF)(x.data(), n, 1, kLow, kHigh, at, order, y);
}

TEST(OneShot, HasTheBitsOfSectionAfterSection) {
  Values zeros(90, -0.0);
  zeros[40] = 1.0;
  for (int32_t type = 0; type < 4; ++type) {
    for (int32_t order = 1; order <= 37; ++order) {
      for (const bool general : {false, true}) {
        Record record(type, order);
        ASSERT_EQ(general ? InvCh_CascadeCoef(1, kLow, kHigh, kAttenuation, record)
                          : Bw_CascadeCoef(1, kLow, kHigh, record),
                  FATHOM_OK);
        for (const std::size_t n : {1, 2, 9, 31, 32, 33, 34, 35, 50, 200}) {
          for (const Values& x : {uniform(n, n), awkward(n, n), zeros}) {
            const auto run = general ? inverseChebyshev : butterworth;
            const Values expected = oncePlainly(*record, general, x);
            Guarded y(x.size());
            Values same = x;
            ASSERT_EQ(run(type, x, order, y), FATHOM_OK);
            ASSERT_EQ(run(type, same, order, same.data()), FATHOM_OK);
            ASSERT_TRUE(SameBits(y.values(), expected) && y.intact())
                << type << ' ' << order << ' ' << n << ' ' << general;
            ASSERT_TRUE(SameBits(same, expected)) << type << ' ' << order << ' ' << n;
          }
        }
      }
    }
  }
}

// Impulse, step and noise of full scale, within rounding of the cascade.
TEST(OneShot, AgreesWithTheCascade) {
  Values impulse(2000, 0.0);
  impulse[0] = 1.0;
  for (const Values& x : {impulse, Values(2000, 1.0), uniform(2000)}) {
    for (int32_t type = 0; type < 4; ++type) {
      for (int32_t order = 1; order <= 12; ++order) {
        Record record(type, order);
        Bw_CascadeCoef(1, kLow, kHigh, record);
        Values y(2000), once(2000);
        IIRCascadeFiltering(x.data(), 2000, record, y.data());
        butterworth(type, x, order, once.data());
        for (std::size_t i = 0; i < 2000; ++i)
          ASSERT_NEAR(once[i], y[i], 3e-14) << type << ' ' << order;
      }
    }
  }
}

}  // namespace
}  // namespace fathom::test
