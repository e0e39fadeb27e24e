// Windows beside as many sine calls as there are samples.
#include <cmath>

#include "table.hpp"

namespace fathom::bench {

void addWindowRows() {
  for (const std::int32_t n : kSizes) {
    addRow({"HanWin", n, "n sin", 1.0 / 1.1, [n]() -> Sides {
              const Array x = constant(n, 1.0);
              const auto sum = std::make_shared<double>();
              return {[=] { return HanWin(x->data(), n); },
                      [=] {
                        // As the window's own angles, in the first quarter.
                        const double step = 1.5707963267948966 / n;
                        double angle = 0.0;
                        double s = 0.0;
                        for (std::int32_t i = 0; i < n; ++i) {
                          s += std::sin(angle);
                          angle += step;
                        }
                        *sum = s;
                      },
                      // Each pass shrinks the first samples; more of them would leave denormals.
                      [=] { x->assign(x->size(), 1.0); }, 16};
            }});
  }
}

}  // namespace fathom::bench
