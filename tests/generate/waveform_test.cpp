#include "frame/elementary.hpp"
#include "frame/extended.hpp"
#include "support/testing.hpp"

namespace fathom::test {
namespace {

double plainReduced(double p, double period) {
  p = std::fmod(p, period);
  return p < 0.0 ? p + period : p;
}

// One sample after another, the phase in one variable.
Values plainWave(int32_t n, double amplitude, double frequency, double* phase,
                 const std::function<double(double)>& shape) {
  Values y;
  const double step = frequency * 360.0;
  for (int32_t i = 0; i < n; ++i, *phase += step) y.push_back(amplitude * shape(*phase));
  *phase = plainReduced(*phase, 360.0);
  return y;
}

using Wave = std::function<AnalysisStatus(int32_t, double, double, double*, double*)>;

struct Start {
  double frequency, phase;
};
// Slow, reversed, whole cycles, either zero, just below zero, beyond 2^31 cycles, not finite.
const Start kStarts[] = {{0.013, 0.0},        {-0.37, 12.5},
                         {0.25, -0.0},        {-0.25, 720.0},
                         {1.0, -360.0},       {0.0, -1e-20},
                         {1e-7, 359.9999999}, {3.7, -1e5},
                         {1e6 / 3, 1.0},      {7e9 / 3, 5.0},
                         {1e17, -3.0},        {1e300, 2.0},
                         {1e308, 0.0},        {kInf, 1.0},
                         {0.1, kNan},         {kNan, 0.0},
                         {0.1, -kInf},        {1.0 / 360, 1e11 + 0.3},
                         {-1.0 / 360, 4e11},  {kDenormal, -kDenormal}};

void compare(const std::string& name, const Wave& wave,
             const std::function<double(double)>& shape) {
  SCOPED_TRACE(name);
  for (const Start& start : kStarts) {
    for (int32_t n : {1, 2, 3, 4, 7, 8, 31, 63, 64, 65, 127, 128, 129, 1000}) {
      for (double amplitude : {1.7, -0.0, kInf}) {
        double phase = start.phase, expectedPhase = start.phase;
        Guarded y(static_cast<std::size_t>(n));
        ASSERT_EQ(wave(n, amplitude, start.frequency, &phase, y), FATHOM_OK);
        const Values expected = plainWave(n, amplitude, start.frequency, &expectedPhase, shape);
        ASSERT_TRUE(SameBits(y.values(), expected))
            << "n " << n << ", frequency " << start.frequency << ", phase " << start.phase;
        ASSERT_TRUE(SameBits(phase, expectedPhase)) << start.frequency << ' ' << start.phase;
        ASSERT_TRUE(y.intact());
      }
    }
  }
}

TEST(Waveform, ShapesEqualThePlainLoop) {
  compare("sine", SineWave, [](double p) { return fathom::sin(p * 0.017453292519943295); });
  compare("triangle", TriangleWave, [](double p) {
    const double t = plainReduced(p, 360.0) * 0.005555555555555556;
    if (t < 0.5) return 2 * t;
    return t < 1.5 ? (1 - t) * 2 : (t - 2) * 2;
  });
  compare("sawtooth", SawtoothWave, [](double p) {
    p = plainReduced(p, 360.0);
    const double t = p * 0.005555555555555556;
    return p < 180.0 ? t : t - 2.0;
  });
  for (double duty : {-10.0, 0.0, 30.0, 50.0, 100.0, 150.0, kNan}) {
    compare(
        "square " + std::to_string(duty),
        [&](int32_t n, double amplitude, double frequency, double* phase, double* y) {
          return SquareWave(n, amplitude, frequency, phase, duty, y);
        },
        [&](double p) {
          double d = 0.01 * duty;
          if (d < 0) d = 0;
          if (d > 1) d = 1;
          return plainReduced(p, 360.0) < d * 360.0 ? 1.0 : -1.0;
        });
  }
}

double plainLookup(double position, const Values& table, int32_t interpolation) {
  const auto length = static_cast<double>(table.size());
  if (table.empty()) return 0.0;
  double p = plainReduced(position, length);
  if (p != p) return p;
  if (p == length) p = 0.0;
  const auto i = static_cast<std::size_t>(p);
  if (interpolation != 1) return table[i];
  const double fraction = p - std::floor(p);
  return (table[(i + 1) % table.size()] - table[i]) * fraction + table[i];
}

TEST(Waveform, ArbitraryEqualsThePlainLoop) {
  for (int32_t length : {-3, 0, 1, 2, 7, 64, 1000}) {
    Values table = uniform(static_cast<std::size_t>(std::max(length, 0)), 3);
    if (length > 1) table[0] = -0.0;  // shows the sign of a zero fraction
    for (int32_t interpolation : {0, 1, 2, -1}) {
      for (const Start& start : kStarts) {
        const int32_t n = 300;
        double phase = start.phase;
        Guarded y(n);
        ASSERT_EQ(
            ArbitraryWave(n, -1.5, start.frequency, &phase, table.data(), length, interpolation, y),
            FATHOM_OK);
        const double period = length;
        double at = (period * kOne360th * start.phase).toDouble();
        Values expected;
        for (int32_t i = 0; i < n; ++i, at += period * start.frequency) {
          expected.push_back(-1.5 * plainLookup(at, table, interpolation));
        }
        if (length != 0) at = (360.0 / period) * at;
        ASSERT_TRUE(SameBits(y.values(), expected))
            << length << ", frequency " << start.frequency << ", phase " << start.phase;
        ASSERT_TRUE(SameBits(phase, plainReduced(at, 360.0))) << start.frequency;
      }
    }
  }
}

}  // namespace
}  // namespace fathom::test
