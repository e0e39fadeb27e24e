// A window beside the plain loop over the C library's sine.
#include <cmath>

#include "table.hpp"

namespace fathom::bench {

void addWindowRows() {
  for (const std::int32_t n : kSizes) {
    addRow({"HanWin", n, "the loop with libm", byLevel(3.0, 1.7, 1.0), [n]() -> Sides {
              const Array x = constant(n, 1.0);
              return {[=] { return HanWin(x->data(), n); },
                      [=] {
                        const double step = 3.141592653589793 / n;
                        double angle = step;
                        double* front = x->data();
                        double* back = front + n;
                        for (*front *= 0.0; ++front < --back; angle += step) {
                          const double s = std::sin(angle);
                          *front *= s * s;
                          *back *= s * s;
                        }
                      },
                      // Each pass shrinks the first samples; more of them would leave denormals.
                      [=] { x->assign(x->size(), 1.0); }, 16};
            }});
  }
}

}  // namespace fathom::bench
