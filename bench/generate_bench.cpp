// Waveforms beside the sine calls that they cannot do without.
#include <cmath>

#include "table.hpp"

namespace fathom::bench {

void addGenerateRows() {
  constexpr double kFrequency = 0.0123;
  for (const std::int32_t n : kSizes) {
    addRow({"SineWave", n, "n sin", 1.0 / 1.1, [n]() -> Sides {
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
}

}  // namespace fathom::bench
