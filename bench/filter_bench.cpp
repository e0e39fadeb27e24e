// IIR filtering beside the plain loops, sample by sample with the state in memory, liquid-dsp,
// SciPy and Eigen's dot products.
#include <algorithm>

#include "table.hpp"

#if defined(FATHOM_BENCH_EIGEN)
#include <Eigen/Core>
#endif
#if defined(FATHOM_BENCH_LIQUID)
#include <liquid/liquid.h>
#endif

namespace fathom::bench {
namespace {

template <int m>
void plainCascade(const double* x, std::int32_t n, const IIRFilter& f, double* y) {
  const std::int32_t sections = f.na / m;
  for (std::int32_t i = 0; i < n; ++i) {
    double t = x[i];
    for (std::int32_t s = 0; s < sections; ++s) {
      const double *a = f.a + s * m, *b = f.b + s * (m + 1);
      double* state = f.state + s * m;
      for (int j = 0; j < m; ++j) t -= a[j] * state[j];
      const double w = t;
      t *= b[0];
      for (int j = 0; j < m; ++j) t += b[j + 1] * state[j];
      for (int j = m - 1; j > 0; --j) state[j] = state[j - 1];
      state[0] = w;
    }
    y[i] = t;
  }
}

void plainForward(const double* x, std::int32_t n, const double* b, double* inputs, std::int32_t nb,
                  double* y) {
  for (std::int32_t i = 0; i < n; ++i) {
    double sum = 0.0;
    for (std::int32_t k = 0; k < nb - 2; ++k) {
      sum += b[nb - 1 - k] * inputs[k];
      inputs[k] = inputs[k + 1];
    }
    sum += b[1] * inputs[nb - 2];
    inputs[nb - 2] = x[i];
    y[i] = sum + b[0] * x[i];
  }
}

constexpr std::int32_t kBlock = 65'536, kShortBlock = 64, kTaps = 64;
constexpr double kLow = 0.1, kHigh = 0.2;

using Filter = std::shared_ptr<IIRFilter>;

Filter butterworth(std::int32_t type, std::int32_t order) {
  Filter filter(AllocIIRFilterPtr(type, order), FreeIIRFilterPtr);
  Bw_CascadeCoef(1.0, kLow, kHigh, filter.get());
  return filter;
}

std::string nameOf(const std::string& work, std::int32_t type, std::int32_t order) {
  return work + (type == FATHOM_LOWPASS ? " LP " : " BP ") + std::to_string(order);
}

void addCascadeRow(std::int32_t n, std::int32_t type, std::int32_t order, double goal) {
  addRow({nameOf("IIRCascadeFilt.", type, order), n, "plain loop", goal, [=]() -> Sides {
            const Array x = uniform(n, -1.0, 1.0), y = constant(n, 0.0);
            const Filter filter = butterworth(type, order), plain = butterworth(type, order);
            return {[=] { return IIRCascadeFiltering(x->data(), n, filter.get(), y->data()); },
                    [=] {
                      (type == FATHOM_LOWPASS ? plainCascade<2>
                                              : plainCascade<4>)(x->data(), n, *plain, y->data());
                    }};
          }});
}

#if defined(FATHOM_BENCH_LIQUID)
// The same sections in single precision, which is all that it has.
std::shared_ptr<iirfilt_rrrf_s> liquidOf(const IIRFilter& f) {
  std::vector<float> a, b(f.b, f.b + f.nb);
  for (std::int32_t i = 0; i < f.na; ++i) {
    if (i % 2 == 0) a.push_back(1.0F);
    a.push_back(static_cast<float>(f.a[i]));
  }
  return {iirfilt_rrrf_create_sos(b.data(), a.data(), static_cast<unsigned>(f.na / 2)),
          iirfilt_rrrf_destroy};
}
#endif

void addPeerRows(std::int32_t order) {
  const std::string work = nameOf("IIRCascadeFilt.", FATHOM_LOWPASS, order);
  const auto cascade = [order] {
    return [x = uniform(kBlock, -1.0, 1.0), y = constant(kBlock, 0.0),
            filter = butterworth(FATHOM_LOWPASS, order)] {
      return IIRCascadeFiltering(x->data(), kBlock, filter.get(), y->data());
    };
  };
#if defined(FATHOM_BENCH_LIQUID)
  addRow({work, kBlock, "liquid-dsp, floats", kNoGoal, [=]() -> Sides {
            const Array x = uniform(kBlock, -1.0, 1.0);
            const auto samples = std::make_shared<std::vector<float>>(x->begin(), x->end());
            const auto filtered = std::make_shared<std::vector<float>>(kBlock);
            const auto filter = liquidOf(*butterworth(FATHOM_LOWPASS, order));
            return {cascade(), [=] {
                      iirfilt_rrrf_execute_block(filter.get(), samples->data(), kBlock,
                                                 filtered->data());
                    }};
          }});
#else
  leaveOut("liquid-dsp", "IIRCascadeFiltering");
#endif
  const auto sosfilt = [=] {
    return secondsByPython(
        "import time\nimport numpy\nfrom scipy.signal import butter,sosfilt\n"
        "t=time.process_time\nx=numpy.random.default_rng(1).uniform(-1,1," +
        std::to_string(kBlock) + ")\nf=butter(" + std::to_string(order) +
        ",0.2,output='sos')\nb=1e9\n"
        "for i in range(60):\n s=t()\n sosfilt(f,x)\n b=min(b,t()-s)\nprint(b)\n");
  };
  if (sosfilt() > 0.0) {
    addRow({work, kBlock, "SciPy sosfilt", kNoGoal, [=]() -> Sides {
              const double seconds = sosfilt();
              return {cascade(), [=] { spend(seconds); }};
            }});
  } else {
    leaveOut("SciPy", "IIRCascadeFiltering");
  }
}

void addOneShotRow(std::int32_t type, std::int32_t order) {
  addRow({nameOf("one call,", type, order), kBlock, "IIRCascadeFiltering", 1.0, [=]() -> Sides {
            const Array x = uniform(kBlock, -1.0, 1.0), y = constant(kBlock, 0.0);
            const Filter filter = butterworth(type, order);
            return {[=] {
                      return type == FATHOM_LOWPASS
                                 ? Bw_LPF(x->data(), kBlock, 1.0, kLow, order, y->data())
                                 : Bw_BPF(x->data(), kBlock, 1.0, kLow, kHigh, order, y->data());
                    },
                    [=] { IIRCascadeFiltering(x->data(), kBlock, filter.get(), y->data()); }};
          }});
}

struct Forward {
  Array x = uniform(kBlock, -1.0, 1.0), y = constant(kBlock, 0.0);
  Array b = uniform(kTaps, -1.0, 1.0), inputs = constant(kTaps - 1, 0.0);

  AnalysisStatus operator()() const {
    return IIRFiltering(x->data(), kBlock, nullptr, nullptr, 0, b->data(), inputs->data(), kTaps,
                        y->data());
  }
};

void addForwardRows() {
  addRow({"IIRFiltering FIR 64", kBlock, "plain loop", 4.0, []() -> Sides {
            const Forward f;
            const Array state = constant(kTaps - 1, 0.0);
            return {f, [=] {
                      plainForward(f.x->data(), kBlock, f.b->data(), state->data(), kTaps,
                                   f.y->data());
                    }};
          }});
#if defined(FATHOM_BENCH_EIGEN)
  addRow({"IIRFiltering FIR 64", kBlock, "Eigen dot products", kNoGoal, []() -> Sides {
            const Forward f;
            const Array padded = constant(kBlock + kTaps - 1, 0.0), taps = constant(kTaps, 0.0);
            std::copy(f.x->begin(), f.x->end(), padded->begin() + (kTaps - 1));
            std::reverse_copy(f.b->begin(), f.b->end(), taps->begin());
            return {f, [=] {
                      using Vector = Eigen::Map<const Eigen::VectorXd>;
                      const Vector reversed(taps->data(), kTaps);
                      for (std::int32_t i = 0; i < kBlock; ++i) {
                        f.y->data()[i] = reversed.dot(Vector(padded->data() + i, kTaps));
                      }
                    }};
          }});
#else
  leaveOut("Eigen", "IIRFiltering");
#endif
}

}  // namespace

void addFilterRows() {
  const struct {
    std::int32_t type, order;
    double goal;
  } cascades[] = {{FATHOM_LOWPASS, 2, 1.6},  {FATHOM_LOWPASS, 4, 1.8},  {FATHOM_LOWPASS, 8, 2.3},
                  {FATHOM_LOWPASS, 16, 4.0}, {FATHOM_BANDPASS, 4, 1.6}, {FATHOM_BANDPASS, 8, 2.2},
                  {FATHOM_BANDPASS, 16, 3.5}};
  for (const auto& c : cascades) addCascadeRow(kBlock, c.type, c.order, c.goal);
  for (const auto& c : cascades) addCascadeRow(kShortBlock, c.type, c.order, 1.0);
  for (const std::int32_t order : {2, 4, 8, 16}) addPeerRows(order);
  for (const auto& c : cascades) addOneShotRow(c.type, c.order);
  for (const std::int32_t order : {5, 15}) addOneShotRow(FATHOM_LOWPASS, order);
  addForwardRows();
}

}  // namespace fathom::bench
