// Units of spectra beside the bare logarithms.
#include <cmath>

#include "table.hpp"

namespace fathom::bench {

void addUnitsRows() {
  constexpr std::int32_t kUnit = FATHOM_UNIT_PEAK + FATHOM_UNIT_POWER + FATHOM_UNIT_DENSITY;
  constexpr const char* kWorks[] = {"unit conversion, dB", "unit conversion, dBm"};
  for (const std::int32_t scale : {FATHOM_SCALE_DB, FATHOM_SCALE_DBM}) {
    for (const std::int32_t n : kSizes) {
      addRow({kWorks[scale - FATHOM_SCALE_DB], n, "n log10", 1.0 / 1.1, [scale, n]() -> Sides {
                const Array x = uniform(n, 0.0, 1.0);
                const Array y = constant(n, 0.0);
                return {[=] {
                          char label[16] = "V";
                          return SpectrumUnitConversion(x->data(), n, FATHOM_SPECTRUM_AMPLITUDE,
                                                        scale, kUnit, 1.5, 0.1, 0.0, y->data(),
                                                        label);
                        },
                        [=] {
                          for (std::size_t i = 0; i < x->size(); ++i) {
                            (*y)[i] = std::log10((*x)[i]);
                          }
                        }};
              }});
    }
  }
}

}  // namespace fathom::bench
