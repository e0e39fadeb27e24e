// Transforms and the power spectrum beside FFTW, GSL and KissFFT. Fathom makes its twiddle factors
// in each call, so that its fair peer is a planned transform and as many sines and cosines
// together.
#include <algorithm>
#include <cstdlib>

#include "frame/elementary.hpp"
#include "table.hpp"

#if defined(FATHOM_BENCH_FFTW)
#include <fftw3.h>
#endif
#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_fft_complex.h>
#endif
#if defined(FATHOM_BENCH_KISSFFT)
#include <kiss_fftr.h>

#include <type_traits>
#endif

namespace fathom::bench {
namespace {

constexpr std::int32_t kTransformSizes[] = {1'024, 65'536, 1'048'576};

// Transforms in place multiply their data's norm by sqrt(n) each time; so many stay finite.
constexpr std::int64_t kTransformsBeforeReset = 32;

// Fathom's half of a row, whatever its peer. The peer has to be filled in.
[[maybe_unused]] Sides complexTransform(std::int32_t n) {
  const Array input = uniform(n, -1.0, 1.0);
  const Array re = constant(n, 0.0);
  const Array im = constant(n, 0.0);
  return {[=] { return FFT(re->data(), im->data(), n); },
          {},
          [=] { *re = *im = *input; },
          kTransformsBeforeReset};
}

Sides realTransform(std::int32_t n) {
  const Array input = uniform(n, -1.0, 1.0);
  const Array re = constant(n, 0.0);
  const Array im = constant(n, 0.0);
  return {[=] { return ReFFT(re->data(), im->data(), n); },
          {},
          [=] { *re = *input; },
          kTransformsBeforeReset};
}

Sides powerSpectrum(std::int32_t n) {
  const Array x = uniform(n, -1.0, 1.0);
  const Array power = constant(n / 2, 0.0);
  const auto df = std::make_shared<double>();
  return {[=] { return AutoPowerSpectrum(x->data(), n, 1.0, power->data(), df.get()); }, {}};
}

struct RealWork {
  const char* work;
  Sides (*fathom)(std::int32_t n);
};
constexpr RealWork kRealWorks[] = {{"ReFFT", realTransform}, {"AutoPowerSpectrum", powerSpectrum}};

#if defined(FATHOM_BENCH_FFTW)
const std::string kPlannedOnce = "sincos + FFTW planned once";
const std::string kPlannedPerCall = "FFTW planned per call";

// Fathom's own sines and cosines of `count` angles up to three quarter turns.
double sumOfSineCosine(std::int32_t count) {
  constexpr std::size_t kTile = 512;
  double angle[kTile], s[kTile], c[kTile];
  for (std::size_t i = 0; i < kTile; ++i) angle[i] = static_cast<double>(i + 1) * (4.7 / kTile);
  double sum = 0.0;
  for (auto left = static_cast<std::size_t>(count); left > 0; left -= std::min(left, kTile)) {
    fathom::sincos(angle, std::min(left, kTile), s, c);
    sum += s[0] + c[0];
  }
  return sum;
}

struct PlanDeleter {
  void operator()(fftw_plan_s* plan) const { fftw_destroy_plan(plan); }
};
using Plan = std::unique_ptr<fftw_plan_s, PlanDeleter>;
using ComplexArray = std::shared_ptr<fftw_complex[]>;

ComplexArray complexArray(std::int32_t n) {
  return {fftw_alloc_complex(static_cast<std::size_t>(n)), fftw_free};
}

// Measured plans leave wisdom behind, which spares the next row the search; planning per call must
// not profit from it.
Plan plannedOnce(const std::function<fftw_plan(unsigned flags)>& plan) {
  static std::string wisdom;
  fftw_import_wisdom_from_string(wisdom.c_str());
  Plan made(plan(FFTW_MEASURE));
  char* learned = fftw_export_wisdom_to_string();
  wisdom = learned;
  std::free(learned);
  fftw_forget_wisdom();
  return made;
}

void addFftwComplexRow(std::int32_t n, double goal) {
  addRow({"FFT", n, "n " + kPlannedOnce, goal, [n] {
            Sides sides = complexTransform(n);
            const ComplexArray in = complexArray(n);
            const ComplexArray out = complexArray(n);
            const std::shared_ptr<fftw_plan_s> plan = plannedOnce([&](unsigned flags) {
              return fftw_plan_dft_1d(n, in.get(), out.get(), FFTW_FORWARD, flags);
            });
            const Array input = uniform(n, -1.0, 1.0);
            for (std::int32_t i = 0; i < n; ++i) {
              const double value = (*input)[static_cast<std::size_t>(i)];
              in[i][0] = in[i][1] = value;
            }
            const auto sum = std::make_shared<double>();
            sides.peer = [=] {
              *sum = sumOfSineCosine(n);
              fftw_execute_dft(plan.get(), in.get(), out.get());
            };
            return sides;
          }});
}

void addFftwPlannedPerCallRow(std::int32_t n) {
  addRow({"FFT", n, kPlannedPerCall, 1.0, [n] {
            Sides sides = complexTransform(n);
            const ComplexArray data = complexArray(n);
            for (std::int32_t i = 0; i < n; ++i) data[i][0] = data[i][1] = 0.0;
            sides.peer = [=] {
              const Plan plan(
                  fftw_plan_dft_1d(n, data.get(), data.get(), FFTW_FORWARD, FFTW_ESTIMATE));
              fftw_execute(plan.get());
            };
            return sides;
          }});
}

void addFftwRealRows(const RealWork& w, std::int32_t n) {
  addRow({w.work, n, "n/2 " + kPlannedOnce, 1.0 / 1.2, [w, n] {
            Sides sides = w.fathom(n);
            const Array in = constant(n, 0.0);
            const ComplexArray out = complexArray(n / 2 + 1);
            const std::shared_ptr<fftw_plan_s> plan = plannedOnce([&](unsigned flags) {
              return fftw_plan_dft_r2c_1d(n, in->data(), out.get(), flags);
            });
            *in = *uniform(n, -1.0, 1.0);
            const auto sum = std::make_shared<double>();
            sides.peer = [=] {
              *sum = sumOfSineCosine(n / 2);
              fftw_execute_dft_r2c(plan.get(), in->data(), out.get());
            };
            return sides;
          }});
  addRow({w.work, n, kPlannedPerCall, 1.0, [w, n] {
            Sides sides = w.fathom(n);
            const Array in = uniform(n, -1.0, 1.0);
            const ComplexArray out = complexArray(n / 2 + 1);
            sides.peer = [=] {
              const Plan plan(fftw_plan_dft_r2c_1d(n, in->data(), out.get(), FFTW_ESTIMATE));
              fftw_execute(plan.get());
            };
            return sides;
          }});
}
#endif

#if defined(FATHOM_BENCH_GSL)
void addGslRow(std::int32_t n, double goal) {
  addRow({"FFT", n, "GSL radix 2", goal, [n] {
            Sides sides = complexTransform(n);
            const Array input = uniform(2 * n, -1.0, 1.0);
            const Array data = constant(2 * n, 0.0);
            sides.peer = [=] {
              gsl_fft_complex_radix2_forward(data->data(), 1, static_cast<std::size_t>(n));
            };
            sides.reset = [=, resetFathom = sides.reset] {
              resetFathom();
              *data = *input;
            };
            return sides;
          }});
}
#endif

#if defined(FATHOM_BENCH_KISSFFT)
void addKissRow(const RealWork& w, std::int32_t n) {
  constexpr bool kDouble = std::is_same_v<kiss_fft_scalar, double>;
  addRow({w.work, n, kDouble ? "KissFFT, planned" : "KissFFT, planned, floats", kNoGoal, [w, n] {
            Sides sides = w.fathom(n);
            const Array input = uniform(n, -1.0, 1.0);
            const std::vector<kiss_fft_scalar> in(input->begin(), input->end());
            const auto out =
                std::make_shared<std::vector<kiss_fft_cpx>>(static_cast<std::size_t>(n / 2 + 1));
            const std::shared_ptr<kiss_fftr_state> plan(kiss_fftr_alloc(n, 0, nullptr, nullptr),
                                                        std::free);
            sides.peer = [=] { kiss_fftr(plan.get(), in.data(), out->data()); };
            return sides;
          }});
}
#endif

}  // namespace

void addSpectralRows() {
#if defined(FATHOM_BENCH_FFTW)
  addFftwComplexRow(1'024, 1.0 / 1.5);
  addFftwComplexRow(1'048'576, 1.0 / 1.3);
  for (const std::int32_t n : kTransformSizes) addFftwPlannedPerCallRow(n);
#else
  leaveOut("FFTW", "FFT, ReFFT, AutoPowerSpectrum");
#endif
#if defined(FATHOM_BENCH_GSL)
  addGslRow(1'024, kNoGoal);
  addGslRow(1'048'576, 5.0);
#else
  leaveOut("GSL", "FFT");
#endif
  for ([[maybe_unused]] const RealWork& w : kRealWorks) {
    for ([[maybe_unused]] const std::int32_t n : kTransformSizes) {
#if defined(FATHOM_BENCH_FFTW)
      addFftwRealRows(w, n);
#endif
#if defined(FATHOM_BENCH_KISSFFT)
      addKissRow(w, n);
#endif
    }
  }
#if !defined(FATHOM_BENCH_KISSFFT)
  leaveOut("KissFFT", "ReFFT, AutoPowerSpectrum");
#endif
}

}  // namespace fathom::bench
