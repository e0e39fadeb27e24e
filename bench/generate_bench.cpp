// Waveforms beside the sine calls that they cannot do without, noise beside one draw after another.
#include <cmath>
#include <random>

#include "table.hpp"

namespace fathom::bench {
namespace {

// The generator of the noise routines, plainly.
struct Seeds {
  std::int32_t first = 1234, second = 2345, third = 3456;

  std::int32_t draw() {
    first = 171 * first % 30269;
    second = 172 * second % 30307;
    third = 170 * third % 30323;
    const double sum = first * 3.3037100664045725e-05 + second * 3.2995677566238825e-05 +
                       third * 3.297826732183491e-05;
    return static_cast<std::int32_t>((sum - static_cast<std::int32_t>(sum)) * 32768.0);
  }
};

constexpr const char* kPlainDraws = "one draw after another";

// The cheap ones have no goal beyond the caches, where they take as long as std::fill.
void addNoiseRows(std::int32_t n, double goal) {
  addRow({"WhiteNoise", n, kPlainDraws, goal, [n]() -> Sides {
            const Array y = constant(n, 0.0);
            return {[=] { return WhiteNoise(n, 2.0, -1, y->data()); },
                    [=, seeds = Seeds{}]() mutable {
                      for (double& value : *y) value = (seeds.draw() - 16383) * (2.0 / 16384);
                    }};
          }});
  addRow({"GaussNoise", n, kPlainDraws, 5.0, [n]() -> Sides {
            const Array y = constant(n, 0.0);
            return {[=] { return GaussNoise(n, 2.0, -1, y->data()); },
                    [=, seeds = Seeds{}]() mutable {
                      for (double& value : *y) {
                        std::int32_t sum = -196596;
                        for (int i = 0; i < 12; ++i) sum += seeds.draw();
                        value = sum * (2.0 / 32768);
                      }
                    }};
          }});
  const auto uniform = [n](const Array& y) { return [=] { return Uniform(n, -1, y->data()); }; };
  addRow({"Uniform", n, kPlainDraws, goal, [=]() -> Sides {
            const Array y = constant(n, 0.0);
            return {uniform(y), [=, seeds = Seeds{}]() mutable {
                      for (double& value : *y) value = seeds.draw() * (1.0 / 32767);
                    }};
          }});
  addRow({"Uniform", n, "std::minstd_rand", kNoGoal, [=]() -> Sides {
            const Array y = constant(n, 0.0);
            return {uniform(y), [=, engine = std::minstd_rand{}]() mutable {
                      for (double& value : *y) value = engine() * (1.0 / 2147483646);
                    }};
          }});
}

}  // namespace

void addGenerateRows() {
  constexpr double kFrequency = 0.0123;
  for (const std::int32_t n : kSizes) {
    addRow({"SineWave", n, "the loop with libm", byLevel(3.0, 1.7, 1.0), [n]() -> Sides {
              const Array y = constant(n, 0.0);
              return {[=] {
                        double phase = 0.0;
                        return SineWave(n, 2.0, kFrequency, &phase, y->data());
                      },
                      [=] {
                        double phase = 0.0;
                        for (double& value : *y) {
                          value = std::sin(phase * 0.017453292519943295);
                          phase += kFrequency * 360.0;
                        }
                      }};
            }});
  }
  for (const std::int32_t n : kSizes) addNoiseRows(n, n <= 30'000 ? 6.0 : kNoGoal);
}

}  // namespace fathom::bench
