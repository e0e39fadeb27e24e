#include "library/routines.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "support/digest.hpp"
#include "support/signals.hpp"

namespace fathom::test {
namespace {

constexpr Argument in() {
  return {Role::kInput};
}
constexpr Argument inOut() {
  return {Role::kInOut};
}
constexpr Argument levels(std::int32_t number, double repeated = 1) {
  return {Role::kLevels, repeated, number};
}
constexpr Argument text() {
  return {Role::kText};
}
constexpr Argument reset() {
  return {Role::kReset};
}
constexpr Argument out() {
  return {Role::kOutput};
}
constexpr Argument choice(double v) {
  return {Role::kChoice, v};
}
constexpr Argument fixed(double v) {
  return {Role::kFixed, v};
}
constexpr Argument real(double v) {
  return {Role::kReal, v};
}
constexpr Argument count(AnalysisStatus negative = FATHOM_ERR_NO_SAMPLES) {
  return {Role::kCount, 0.0, INT32_MAX, negative, negative};
}
constexpr Argument count(AnalysisStatus negative, AnalysisStatus zero) {
  return {Role::kCount, 0.0, INT32_MAX, negative, zero};
}
// A row or column count, and a count that stays the same at every size.
constexpr Argument side() {
  return {Role::kCount, 0.0, 48};
}
constexpr Argument fixedCount(std::int32_t v, AnalysisStatus negative = FATHOM_ERR_NO_SAMPLES) {
  return {Role::kCount, static_cast<double>(v), INT32_MAX, negative, negative};
}
constexpr Argument model() {
  return {Role::kFixed};
}
// A side of which zero is too few, but only a negative one no count.
constexpr Argument categories() {
  return {Role::kCount, 0.0, 48, FATHOM_ERR_NO_SAMPLES, FATHOM_ERR_CATEGORIES};
}

template <typename... P, std::size_t... i>
AnalysisStatus apply(AnalysisStatus (*f)(P...), Slots& slots, std::index_sequence<i...>) {
  return f(slots[i].template as<P>()...);
}

template <typename... P>
Routine routine(const char* name, AnalysisStatus (*f)(P...),
                const std::array<Argument, sizeof...(P)>& arguments) {
  return {name, {arguments.begin(), arguments.end()}, [f](Slots& slots) {
            return apply(f, slots, std::index_sequence_for<P...>{});
          }};
}

Routine harmonicAnalyzer() {
  Routine r = routine("HarmonicAnalyzer", HarmonicAnalyzer,
                      {inOut(), count(), choice(0), fixed(5), choice(1), real(1000), real(40),
                       out(), out(), out(), out()});
  r.failedRequests = {FATHOM_ERR_MEMORY, FATHOM_OK};  // the second is let pass, with no outputs
  r.writesBeforeFailure = true;                       // the lowest bins and earlier harmonics
  return r;
}

Routine spectrumUnitConversion() {
  Routine r = routine("SpectrumUnitConversion", SpectrumUnitConversion,
                      {in(), count(), choice(1), choice(1), choice(7), real(1.5), real(0.3),
                       real(0), out(), text()});
  r.writesBeforeFailure = true;  // the values, not the label
  return r;
}

// Its arrays are copied to the slots, so that they are compared and released.
Routine peakDetector() {
  const auto call = [](Slots& s) {
    double* peaks[3] = {};
    const AnalysisStatus status = PeakDetector(
        s[0].as<const double*>(), s[1].integer, s[2].real, s[3].integer, s[4].integer, s[5].integer,
        s[6].integer, &peaks[0], &peaks[1], &peaks[2], s[10].as<std::int32_t*>());
    for (std::size_t i = 0; i < 3; ++i) {
      if (peaks[i] != nullptr)
        std::copy_n(peaks[i], *s[10].as<std::int32_t*>(), s[7 + i].as<double*>());
      FreeAnalysisMem(peaks[i]);
    }
    return status;
  };
  return {"PeakDetector",
          {in(), count(FATHOM_ERR_NO_SAMPLES, FATHOM_OK), real(0.1), choice(5), choice(0),
           choice(1), choice(1), out(), out(), out(), out()},
          call};
}

// It has written coefficients, or a deviation, when a request fails.
Routine writesFirst(Routine r, std::vector<AnalysisStatus> failedRequests = {}) {
  r.writesBeforeFailure = true;
  r.failedRequests = std::move(failedRequests);
  return r;
}

// For its call, the matrix in the first argument gets a diagonal that outweighs the rest.
Routine heavyDiagonal(Routine r, std::size_t parts) {
  const auto call = [inner = r.call, parts](Slots& s) {
    const auto n = static_cast<std::size_t>(std::max(s[1].integer, 0));
    const std::vector<double> before = s[0].reals;
    for (std::size_t i = 0; i < n; ++i) s[0].as<double*>()[parts * (i * n + i)] += 48.0;
    const AnalysisStatus status = inner(s);
    s[0].reals = before;
    return status;
  };
  r.call = call;
  return r;
}

// For its call, the array in an argument is made positive.
Routine positive(Routine r, std::size_t argument) {
  r.call = [inner = r.call, argument](Slots& s) {
    const std::vector<double> before = s[argument].reals;
    for (std::size_t i = Slot::kGuard; i < before.size() - Slot::kGuard; ++i)
      s[argument].reals[i] = std::fabs(before[i]) + 0.5;
    const AnalysisStatus status = inner(s);
    s[argument].reals = before;
    return status;
  };
  return r;
}

// A general fit whose algorithm 6 stands for one of the first four, by its number of points.
Routine byTurns(Routine r) {
  r.call = [inner = r.call](Slots& s) {
    const std::int32_t algorithm = s[5].integer;
    if (algorithm == 6 && s[1].integer > 0) s[5].integer = s[1].integer % 7 % 4;
    const AnalysisStatus status = inner(s);
    s[5].integer = algorithm;
    return status;
  };
  return r;
}

// The arguments that stand for a filter record: a place that stays empty, and, after all others,
// its type and order, coefficients and state.
constexpr Argument record() {
  return fixed(0);
}
IIRFilter recordIn(Slots& s) {
  const std::size_t first = s.size() - 5;
  const std::int32_t type = s[first].integer, order = s[first + 1].integer;
  const std::int32_t m = type < FATHOM_BANDPASS ? 2 : 4, sections = (order + 1) / 2;
  const auto array = [&](std::size_t k) { return s[first + k].as<double*>(); };
  return {type,     order,        0,       sections * m, array(2), sections * (m + 1),
          array(3), sections * m, array(4)};
}

template <typename P>
P argumentAt(Slots& slots, std::size_t i, IIRFilter& filter) {
  if constexpr (std::is_same_v<P, IIRFilterPtr>) {
    return &filter;
  } else {
    return slots[i].as<P>();
  }
}

template <typename... P, std::size_t... i>
AnalysisStatus applyToRecord(AnalysisStatus (*f)(P...), Slots& slots, std::index_sequence<i...>) {
  IIRFilter filter = recordIn(slots);
  return f(argumentAt<P>(slots, i, filter)...);
}

template <typename... P>
Routine onRecord(const char* name, AnalysisStatus (*f)(P...), std::int32_t type, std::int32_t order,
                 const std::array<Argument, sizeof...(P)>& arguments) {
  Routine r = {name, {arguments.begin(), arguments.end()}, [f](Slots& slots) {
                 return applyToRecord(f, slots, std::index_sequence_for<P...>{});
               }};
  for (const Argument& a : {fixed(type), fixed(order), inOut(), inOut(), inOut()})
    r.arguments.push_back(a);
  return r;
}

// Nine sections. Their feedback coefficients are made small, which keeps the results finite.
Routine cascadeFiltering() {
  Routine r = onRecord("IIRCascadeFiltering", IIRCascadeFiltering, FATHOM_LOWPASS, 17,
                       {in(), count(), record(), out()});
  r.call = [](Slots& s) {
    IIRFilter filter = recordIn(s);
    std::vector<double> a(filter.a, filter.a + filter.na);
    for (double& v : a) v *= 0.25;
    filter.a = a.data();
    return IIRCascadeFiltering(s[0].as<const double*>(), s[1].integer, &filter, s[3].as<double*>());
  };
  return r;
}

// A record's life: a routine that reports by a null record, and two that report nothing.
Routine recordLife(const char* name) {
  return {name, {choice(FATHOM_BANDPASS), choice(6), out()}, [](Slots& s) {
            IIRFilter* filter = AllocIIRFilterPtr(s[0].integer, s[1].integer);
            if (filter == nullptr) return FATHOM_ERR_MEMORY;
            ResetIIRFilter(filter);
            const double fields[] = {1.0 * filter->na, 1.0 * filter->nb, 1.0 * filter->reset};
            std::copy_n(fields, 3, s[2].as<double*>());
            FreeIIRFilterPtr(filter);
            return FATHOM_OK;
          }};
}

constexpr AnalysisStatus kTwo = FATHOM_ERR_FEWER_THAN_TWO_SAMPLES;

}  // namespace

#define ROUTINE(name, ...) routine(#name, name, {__VA_ARGS__})

const std::vector<Routine>& routines() {
  static const std::vector<Routine> table = {
      // array/elementwise
      ROUTINE(Add1D, in(), in(), count(), out()),
      ROUTINE(Sub1D, in(), in(), count(), out()),
      ROUTINE(Mul1D, in(), in(), count(), out()),
      ROUTINE(Div1D, in(), in(), count(), out()),
      ROUTINE(Add2D, in(), in(), side(), side(), out()),
      ROUTINE(Sub2D, in(), in(), side(), side(), out()),
      ROUTINE(Mul2D, in(), in(), side(), side(), out()),
      ROUTINE(Div2D, in(), in(), side(), side(), out()),
      ROUTINE(Abs1D, in(), count(), out()),
      ROUTINE(Neg1D, in(), count(), out()),
      ROUTINE(Clear1D, inOut(), count()),
      ROUTINE(Set1D, inOut(), count(), real(2.5)),
      ROUTINE(Clip, in(), count(), real(0.5), real(-0.25), out()),
      // array/reorder
      ROUTINE(Copy1D, in(), count(), out()),
      ROUTINE(Subset1D, in(), count(), choice(1), fixedCount(2), out()),
      ROUTINE(Reverse, in(), count(), out()),
      ROUTINE(Shift, in(), count(), choice(-2), out()),
      ROUTINE(Sort, in(), count(), choice(0), out()),
      // array/scale
      ROUTINE(Scale1D, in(), count(), out(), out(), out()),
      ROUTINE(Scale2D, in(), side(), side(), out(), out(), out()),
      ROUTINE(QScale1D, in(), count(), out(), out()),
      ROUTINE(QScale2D, in(), side(), side(), out(), out()),
      ROUTINE(Normal1D, in(), count(), out(), out(), out()),
      ROUTINE(Normal2D, in(), side(), side(), out(), out(), out()),
      // array/reduce
      ROUTINE(MaxMin1D, in(), count(), out(), out(), out(), out()),
      ROUTINE(MaxMin2D, in(), side(), side(), out(), out(), out(), out(), out(), out()),
      ROUTINE(Sum1D, in(), count(), out()),
      ROUTINE(Sum2D, in(), side(), side(), out()),
      ROUTINE(Prod1D, in(), count(), out()),
      // array/complex_scalar
      ROUTINE(CxAdd, real(1.25), real(-0.75), real(0.3), real(2.5), out(), out()),
      ROUTINE(CxSub, real(1.25), real(-0.75), real(0.3), real(2.5), out(), out()),
      ROUTINE(CxMul, real(1.25), real(-0.75), real(0.3), real(2.5), out(), out()),
      ROUTINE(CxDiv, real(1.25), real(-0.75), real(0.3), real(2.5), out(), out()),
      ROUTINE(CxRecip, real(1.25), real(-0.75), out(), out()),
      ROUTINE(CxSqrt, real(1.25), real(-0.75), out(), out()),
      ROUTINE(CxExp, real(1.25), real(-0.75), out(), out()),
      ROUTINE(CxLn, real(1.25), real(-0.75), out(), out()),
      ROUTINE(CxLog, real(1.25), real(-0.75), out(), out()),
      ROUTINE(CxPow, real(1.25), real(-0.75), real(-1.5), out(), out()),
      ROUTINE(ToPolar, real(1.25), real(-0.75), out(), out()),
      ROUTINE(ToRect, real(1.25), real(-0.75), out(), out()),
      // array/complex_array
      ROUTINE(CxAdd1D, in(), in(), in(), in(), count(), out(), out()),
      ROUTINE(CxSub1D, in(), in(), in(), in(), count(), out(), out()),
      ROUTINE(CxMul1D, in(), in(), in(), in(), count(), out(), out()),
      ROUTINE(CxDiv1D, in(), in(), in(), in(), count(), out(), out()),
      ROUTINE(CxLinEv1D, in(), in(), count(), real(1.7), real(-0.3), real(0.6), real(-2.1), out(),
              out()),
      ROUTINE(ToPolar1D, in(), in(), count(), out(), out()),
      ROUTINE(ToRect1D, in(), in(), count(), out(), out()),
      // array/evaluate
      ROUTINE(LinEv1D, in(), count(), real(1.7), real(-0.3), out()),
      ROUTINE(LinEv2D, in(), side(), side(), real(1.7), real(-0.3), out()),
      ROUTINE(PolyEv1D, in(), count(), in(), fixedCount(9), out()),
      ROUTINE(PolyEv2D, in(), side(), side(), in(), fixedCount(9), out()),
      // array/calculus
      ROUTINE(Integrate, in(), count(), real(0.01), real(0.2), real(-0.1), out()),
      ROUTINE(Difference, in(), count(), real(0.01), real(0.2), real(-0.1), out()),
      ROUTINE(UnWrap1D, inOut(), count()),
      ROUTINE(Decimate, in(), count(), fixedCount(3, FATHOM_ERR_DECIMATION), choice(1), out()),
      // stats/descriptive, stats/histogram
      ROUTINE(Mean, in(), count(), out()),
      ROUTINE(StdDev, in(), count(), out(), out()),
      ROUTINE(Variance, in(), count(), out(), out()),
      ROUTINE(RMS, in(), count(), out()),
      ROUTINE(Moment, in(), count(), fixedCount(3, FATHOM_ERR_ORDER), out()),
      ROUTINE(Median, in(), count(), out()),
      ROUTINE(Mode, in(), count(), real(-0.8), real(0.9), fixedCount(17), out()),
      ROUTINE(Histogram, in(), count(), real(-0.8), real(0.9), out(), out(), fixedCount(17)),
      // stats/distribution
      ROUTINE(N_Dist, real(0.7), out()),
      ROUTINE(InvN_Dist, real(0.7), out()),
      ROUTINE(T_Dist, real(0.7), fixedCount(5, FATHOM_ERR_DEGREES_OF_FREEDOM), out()),
      ROUTINE(InvT_Dist, real(0.7), fixedCount(5, FATHOM_ERR_DEGREES_OF_FREEDOM), out()),
      ROUTINE(F_Dist, real(0.7), fixedCount(5, FATHOM_ERR_DEGREES_OF_FREEDOM),
              fixedCount(8, FATHOM_ERR_DEGREES_OF_FREEDOM), out()),
      ROUTINE(InvF_Dist, real(0.7), fixedCount(5, FATHOM_ERR_DEGREES_OF_FREEDOM),
              fixedCount(8, FATHOM_ERR_DEGREES_OF_FREEDOM), out()),
      ROUTINE(XX_Dist, real(0.7), fixedCount(5, FATHOM_ERR_DEGREES_OF_FREEDOM), out()),
      ROUTINE(InvXX_Dist, real(0.7), fixedCount(5, FATHOM_ERR_DEGREES_OF_FREEDOM), out()),
      // stats/anova, stats/contingency: a design of one factor at every size; cells of 2 and of 3
      ROUTINE(ANOVA1Way, in(), levels(3), count(), choice(3), out(), out(), out(), out(), out(),
              out(), out()),
      ROUTINE(ANOVA2Way, in(), levels(4), levels(3, 4), fixedCount(24, FATHOM_ERR_TOTAL_POINTS),
              choice(2), choice(4), choice(-3), out(), out(), out(), out()),
      ROUTINE(ANOVA3Way, in(), levels(4), levels(3, 4), levels(2, 12),
              fixedCount(72, FATHOM_ERR_TOTAL_POINTS), choice(3), choice(4), choice(-3), choice(-2),
              out(), out(), out(), out(), out(), out(), out(), out()),
      ROUTINE(Contingency_Table, categories(), categories(), levels(7), out(), out()),
      // generate/waveform
      ROUTINE(SineWave, count(), real(1.5), real(0.013), inOut(), out()),
      ROUTINE(SquareWave, count(), real(1.5), real(0.013), inOut(), real(30), out()),
      ROUTINE(TriangleWave, count(), real(1.5), real(0.013), inOut(), out()),
      ROUTINE(SawtoothWave, count(), real(1.5), real(0.013), inOut(), out()),
      ROUTINE(ArbitraryWave, count(), real(1.5), real(0.013), inOut(), in(), fixed(37), choice(1),
              out()),
      // generate/pattern
      ROUTINE(SinePattern, count(), real(1.5), real(30), real(0.75), out()),
      ROUTINE(Ramp, count(kTwo), real(-1), real(2), out()),
      ROUTINE(Impulse, count(), real(1.5), choice(1), out()),
      ROUTINE(Pulse, count(), real(1.5), choice(1), choice(2), out()),
      ROUTINE(Triangle, count(kTwo), real(1.5), out()),
      ROUTINE(Chirp, count(), real(1.5), real(0.01), real(0.3), out()),
      ROUTINE(Sinc, count(), real(1.5), real(2), real(0.1), out()),
      // generate/noise: seeds of 0 or more, so that no run depends on those before
      ROUTINE(WhiteNoise, count(), real(1.5), choice(12558384), out()),
      ROUTINE(GaussNoise, count(), real(1.5), choice(5), out()),
      ROUTINE(Uniform, count(), choice(1999994880), out()),
      // window
      ROUTINE(HanWin, inOut(), count()),
      ROUTINE(HamWin, inOut(), count()),
      ROUTINE(BkmanWin, inOut(), count()),
      ROUTINE(ExBkmanWin, inOut(), count()),
      ROUTINE(BlkHarrisWin, inOut(), count()),
      ROUTINE(FlatTopWin, inOut(), count()),
      ROUTINE(GenCosWin, inOut(), count(), in(), fixedCount(5)),
      ROUTINE(KsrWin, inOut(), count(), real(6)),
      ROUTINE(TriWin, inOut(), count()),
      ROUTINE(CosTaperedWin, inOut(), count(FATHOM_OK)),
      ROUTINE(ExpWin, inOut(), count(kTwo), real(0.1)),
      ROUTINE(ForceWin, inOut(), count(kTwo), real(40)),
      ROUTINE(ScaledWindow, inOut(), count(FATHOM_ERR_NEGATIVE_SAMPLES, FATHOM_OK), choice(8),
              out()),
      // spectral/fft, real_fft, hartley
      ROUTINE(FFT, inOut(), inOut(), count()),
      ROUTINE(InvFFT, inOut(), inOut(), count()),
      ROUTINE(ReFFT, inOut(), out(), count()),
      ROUTINE(ReInvFFT, inOut(), in(), count()),
      ROUTINE(FHT, inOut(), count()),
      ROUTINE(InvFHT, inOut(), count()),
      // spectral/spectra
      ROUTINE(Spectrum, inOut(), count()),
      ROUTINE(AutoPowerSpectrum, in(), count(), real(0.001), out(), out()),
      ROUTINE(CrossSpectrum, in(), in(), count(), out(), out()),
      ROUTINE(CrossPowerSpectrum, in(), in(), count(), real(0.001), out(), out(), out()),
      ROUTINE(AmpPhaseSpectrum, in(), count(), choice(1), real(0.001), out(), out(), out()),
      // spectral/network
      ROUTINE(TransferFunction, in(), in(), count(), real(0.001), out(), out(), out()),
      ROUTINE(ImpulseResponse, in(), in(), count(), out()),
      ROUTINE(NetworkFunctions, in(), in(), count(), fixedCount(3), real(0.001), out(), out(),
              out(), out(), out(), out(), out()),
      // spectral/convolve, spectral/deconvolve
      ROUTINE(Convolve, in(), count(), in(), count(), out()),
      ROUTINE(Correlate, in(), count(), in(), side(), out()),
      ROUTINE(Deconvolve, in(), count(), in(), fixedCount(2), out()),
      // spectral/units
      spectrumUnitConversion(),
      // measure
      ROUTINE(PowerFrequencyEstimate, in(), count(), real(11), real(1.5), real(0), real(2),
              choice(7), out(), out()),
      harmonicAnalyzer(),
      // measure/pulse, acdc
      ROUTINE(PulseParam, in(), count(), out(), out(), out(), out(), out(), out(), out(), out(),
              out(), out(), out(), out(), out()),
      ROUTINE(ACDCEstimator, in(), count(), out(), out()),
      // measure/peaks
      peakDetector(),
      // filter/iir
      recordLife("AllocIIRFilterPtr"),
      recordLife("FreeIIRFilterPtr"),
      recordLife("ResetIIRFilter"),
      cascadeFiltering(),
      ROUTINE(IIRFiltering, in(), count(), in(), inOut(), fixed(5), in(), inOut(), fixedCount(7),
              out()),
      onRecord("CascadeToDirectCoef", CascadeToDirectCoef, FATHOM_BANDPASS, 5,
               {record(), out(), fixedCount(11, FATHOM_ERR_FILTER_RECORD), out(),
                fixedCount(11, FATHOM_ERR_FILTER_RECORD)}),
      onRecord("Bw_CascadeCoef", Bw_CascadeCoef, FATHOM_BANDSTOP, 5,
               {real(1), real(0.1), real(0.2), record()}),
      ROUTINE(Bw_Coef, choice(FATHOM_BANDPASS), choice(5), real(1), real(0.1), real(0.2), out(),
              fixedCount(11, FATHOM_ERR_ARRAY_SIZE), out(), fixedCount(11, FATHOM_ERR_ARRAY_SIZE)),
      ROUTINE(Bw_LPF, in(), count(), real(1), real(0.1), fixed(7), out()),
      ROUTINE(Bw_HPF, in(), count(), real(1), real(0.1), fixed(18), out()),
      ROUTINE(Bw_BPF, in(), count(), real(1), real(0.1), real(0.3), fixed(7), out()),
      ROUTINE(Bw_BSF, in(), count(), real(1), real(0.1), real(0.3), fixed(7), out()),
      onRecord("Ch_CascadeCoef", Ch_CascadeCoef, FATHOM_BANDSTOP, 4,
               {real(1), real(0.1), real(0.2), real(0.5), record()}),
      ROUTINE(Ch_Coef, choice(FATHOM_BANDPASS), choice(5), real(1), real(0.1), real(0.2), real(0.5),
              out(), fixedCount(11, FATHOM_ERR_ARRAY_SIZE), out(),
              fixedCount(11, FATHOM_ERR_ARRAY_SIZE)),
      ROUTINE(Ch_LPF, in(), count(), real(1), real(0.1), real(0.5), fixed(7), out()),
      ROUTINE(Ch_HPF, in(), count(), real(1), real(0.1), real(0.5), fixed(18), out()),
      ROUTINE(Ch_BPF, in(), count(), real(1), real(0.1), real(0.3), real(0.5), fixed(6), out()),
      ROUTINE(Ch_BSF, in(), count(), real(1), real(0.1), real(0.3), real(0.5), fixed(7), out()),
      onRecord("InvCh_CascadeCoef", InvCh_CascadeCoef, FATHOM_BANDPASS, 5,
               {real(1), real(0.1), real(0.2), real(40), record()}),
      ROUTINE(InvCh_Coef, choice(FATHOM_BANDSTOP), choice(5), real(1), real(0.1), real(0.2),
              real(40), out(), fixedCount(11, FATHOM_ERR_ARRAY_SIZE), out(),
              fixedCount(11, FATHOM_ERR_ARRAY_SIZE)),
      ROUTINE(InvCh_LPF, in(), count(), real(1), real(0.1), real(40), fixed(7), out()),
      ROUTINE(InvCh_HPF, in(), count(), real(1), real(0.1), real(40), fixed(18), out()),
      ROUTINE(InvCh_BPF, in(), count(), real(1), real(0.1), real(0.3), real(40), fixed(6), out()),
      ROUTINE(InvCh_BSF, in(), count(), real(1), real(0.1), real(0.3), real(40), fixed(7), out()),
      onRecord("Elp_CascadeCoef", Elp_CascadeCoef, FATHOM_BANDSTOP, 5,
               {real(1), real(0.1), real(0.2), real(0.5), real(60), record()}),
      ROUTINE(Elp_Coef, choice(FATHOM_BANDPASS), choice(5), real(1), real(0.1), real(0.2),
              real(0.5), real(60), out(), fixedCount(11, FATHOM_ERR_ARRAY_SIZE), out(),
              fixedCount(11, FATHOM_ERR_ARRAY_SIZE)),
      ROUTINE(Elp_LPF, in(), count(), real(1), real(0.1), real(0.5), real(60), fixed(7), out()),
      ROUTINE(Elp_HPF, in(), count(), real(1), real(0.1), real(0.5), real(60), fixed(18), out()),
      ROUTINE(Elp_BPF, in(), count(), real(1), real(0.1), real(0.3), real(0.5), real(60), fixed(6),
              out()),
      ROUTINE(Elp_BSF, in(), count(), real(1), real(0.1), real(0.3), real(0.5), real(60), fixed(7),
              out()),
      onRecord("Bessel_CascadeCoef", Bessel_CascadeCoef, FATHOM_BANDPASS, 5,
               {real(1), real(0.1), real(0.2), record()}),
      ROUTINE(Bessel_Coef, choice(FATHOM_BANDSTOP), choice(5), real(1), real(0.1), real(0.2), out(),
              fixedCount(11, FATHOM_ERR_ARRAY_SIZE), out(), fixedCount(11, FATHOM_ERR_ARRAY_SIZE)),
      // filter/fir
      ROUTINE(FIR_Coef, choice(FATHOM_BANDPASS), real(1), real(0.1), real(0.2),
              count(FATHOM_ERR_ORDER), out()),
      writesFirst(ROUTINE(Wind_LPF, real(1), real(0.1), count(FATHOM_ERR_ORDER), out(),
                          choice(FATHOM_FIR_HANNING))),
      writesFirst(ROUTINE(Wind_HPF, real(1), real(0.1), count(FATHOM_ERR_ORDER), out(),
                          choice(FATHOM_FIR_BLACKMAN))),
      writesFirst(ROUTINE(Wind_BPF, real(1), real(0.1), real(0.2), count(FATHOM_ERR_ORDER), out(),
                          choice(FATHOM_FIR_TRIANGULAR))),
      writesFirst(ROUTINE(Wind_BSF, real(1), real(0.1), real(0.2), count(FATHOM_ERR_ORDER), out(),
                          choice(FATHOM_FIR_HAMMING))),
      writesFirst(ROUTINE(Ksr_LPF, real(1), real(0.1), count(FATHOM_ERR_ORDER), out(), real(6))),
      writesFirst(ROUTINE(Ksr_HPF, real(1), real(0.1), count(FATHOM_ERR_ORDER), out(), real(-1))),
      writesFirst(
          ROUTINE(Ksr_BPF, real(1), real(0.1), real(0.2), count(FATHOM_ERR_ORDER), out(), real(6))),
      writesFirst(
          ROUTINE(Ksr_BSF, real(1), real(0.1), real(0.2), count(FATHOM_ERR_ORDER), out(), real(6))),
      ROUTINE(Equi_Ripple, fixedCount(2), in(), in(), real(1), in(), choice(1), choice(31), out(),
              out()),
      writesFirst(ROUTINE(EquiRpl_LPF, real(1), real(0.2), real(0.25), choice(64), out(), out())),
      writesFirst(ROUTINE(EquiRpl_HPF, real(1), real(0.2), real(0.25), choice(63), out(), out())),
      writesFirst(ROUTINE(EquiRpl_BPF, real(1), real(0.1), real(0.15), real(0.2), real(0.26),
                          choice(32), out(), out())),
      writesFirst(ROUTINE(EquiRpl_BSF, real(1), real(0.1), real(0.15), real(0.2), real(0.26),
                          choice(31), out(), out())),
      // linalg
      ROUTINE(MatrixMul, in(), in(), side(), side(), side(), out()),
      ROUTINE(Transpose, in(), side(), side(), out()),
      ROUTINE(Trace, in(), side(), out()),
      ROUTINE(DotProduct, in(), in(), count(), out()),
      ROUTINE(OuterProduct, in(), side(), in(), side(), out()),
      ROUTINE(CxMatrixMul, in(), in(), side(), side(), side(), out()),
      ROUTINE(CxTranspose, in(), side(), side(), out()),
      ROUTINE(CxTrace, in(), side(), side(), out()),
      ROUTINE(CxDotProduct, in(), in(), count(), out()),
      ROUTINE(CxOuterProduct, in(), side(), in(), side(), out()),
      ROUTINE(SpecialMatrix, choice(FATHOM_MATRIX_TOEPLITZ), choice(1), in(), side(), in(), side(),
              out()),
      ROUTINE(CxSpecialMatrix, choice(FATHOM_MATRIX_TOEPLITZ), choice(1), in(), side(), in(),
              side(), out()),
      writesFirst(ROUTINE(LU, inOut(), side(), out(), out()), {FATHOM_OK}),  // does without memory
      ROUTINE(ForwSub, in(), in(), side(), out(), levels(48)),
      ROUTINE(BackSub, in(), in(), side(), out()),
      ROUTINE(LinEqs, in(), in(), side(), out()),
      ROUTINE(InvMatrix, in(), side(), out()),
      ROUTINE(Determinant, in(), side(), out()),
      ROUTINE(GenLinEqs, in(), side(), side(), in(), choice(FATHOM_GENERAL), out()),
      writesFirst(ROUTINE(GenInvMatrix, in(), side(), choice(FATHOM_GENERAL), out()),
                  {FATHOM_ERR_MEMORY, FATHOM_ERR_MEMORY, FATHOM_OK}),  // as LU
      ROUTINE(GenDeterminant, in(), side(), choice(FATHOM_GENERAL), reset()),
      ROUTINE(CxLU, inOut(), side(), out(), out()),
      ROUTINE(CxDeterminant, in(), side(), choice(FATHOM_GENERAL), reset()),
      ROUTINE(CxGenLinEqs, in(), side(), side(), in(), choice(FATHOM_GENERAL), out()),
      ROUTINE(CxGenInvMatrix, in(), side(), choice(FATHOM_GENERAL), out()),
      heavyDiagonal(ROUTINE(Cholesky, in(), side(), out()), 1),
      heavyDiagonal(ROUTINE(CxCholesky, in(), side(), out()), 2),
      ROUTINE(CheckPosDef, in(), side(), out()),
      ROUTINE(CxCheckPosDef, in(), side(), out()),
      ROUTINE(QR, in(), side(), side(), out(), out()),
      ROUTINE(CxQR, in(), side(), side(), out(), out()),
      ROUTINE(SVD, inOut(), side(), side(), out(), out(), out()),
      ROUTINE(CxSVD, in(), side(), side(), out(), out(), out()),
      ROUTINE(SVDS, in(), side(), side(), out()),
      ROUTINE(CxSVDS, in(), side(), side(), out()),
      ROUTINE(PseudoInverse, inOut(), side(), side(), real(0.01), out()),
      ROUTINE(CxPseudoInverse, in(), side(), side(), real(-1), out()),
      ROUTINE(MatrixRank, in(), side(), side(), real(-1), reset()),
      ROUTINE(CxMatrixRank, in(), side(), side(), real(0.01), reset()),
      ROUTINE(MatrixNorm, in(), side(), side(), choice(0), reset()),
      ROUTINE(CxMatrixNorm, in(), side(), side(), choice(0), reset()),
      ROUTINE(SymEigenValueVector, in(), side(), choice(1), out(), out()),
      ROUTINE(GenEigenValueVector, in(), side(), choice(1), out(), out()),
      ROUTINE(CxEigenValueVector, in(), side(), choice(1), out(), out()),
      ROUTINE(ConditionNumber, in(), side(), side(), choice(1), reset()),
      ROUTINE(CxConditionNumber, in(), side(), side(), choice(1), reset()),
      // fit/line, fit/polynomial, fit/least_squares
      ROUTINE(LinFit, in(), in(), count(kTwo), out(), out(), out(), out()),
      positive(ROUTINE(ExpFit, in(), inOut(), count(kTwo), out(), reset(), reset(), out()), 1),
      ROUTINE(PolyFit, in(), in(), count(), choice(2), out(), out(), out()),
      byTurns(positive(ROUTINE(GenLSFit, in(), side(), fixedCount(3), in(), in(), choice(6), out(),
                               out(), out(), out()),
                       4)),
      ROUTINE(GenLSFitCoef, in(), side(), fixedCount(3), in(), choice(FATHOM_LS_SINGULAR_VALUES),
              out()),
      // fit/nonlinear
      ROUTINE(NonLinearFit, in(), in(), count(), model(), inOut(), fixedCount(3), out(), out()),
      ROUTINE(NonLinearFitWithMaxIters, in(), in(), count(), model(), inOut(), fixedCount(3),
              choice(20), out(), out()),
      ROUTINE(PolyInterp, in(), in(), count(), real(0.3), out(), out()),
      ROUTINE(RatInterp, in(), in(), count(), real(0.3), out(), out()),
      ROUTINE(Spline, in(), in(), count(), real(1e30), real(0.5), out()),
      ROUTINE(SpInterp, in(), in(), in(), count(), real(0.3), out()),
      ROUTINE(NumericIntegration, in(), count(FATHOM_ERR_ARRAY_SIZE), real(-0.1), choice(3), out()),
      ROUTINE(CxPolyRoots, in(), side(), out()),
  };
  return table;
}

double resonance(double x, const double* c, std::int32_t) {
  const double u = (x - c[1]) * (1.0 + c[2] * c[2]);
  return c[0] / (1.0 + u * u);
}

Slots prepare(const Routine& r, std::int32_t size, std::uint64_t seed) {
  // Room for several frames of `size`, a complex matrix of sides limited as by side(), and small
  // tables.
  const auto n = static_cast<std::size_t>(size);
  const std::size_t capacity = 4 * n + 2 * std::min<std::size_t>(n * n, 48 * 48) + 64;
  Slots slots(r.arguments.size());
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const Argument& a = r.arguments[i];
    Slot& s = slots[i];
    s.real = a.value;
    if (a.role == Role::kCount && a.value == 0.0) {
      s.integer = std::min(size, a.limit);
    } else if (a.role != Role::kReal) {
      s.integer = static_cast<std::int32_t>(a.value);
    }
    if (a.role > Role::kOutput) continue;
    s.reals.assign(capacity + 2 * Slot::kGuard, Slot::kFill);
    s.integers.assign(capacity + 2 * Slot::kGuard, Slot::kIntegerFill);
    if (a.role == Role::kOutput) continue;
    for (std::size_t j = 0; a.role == Role::kLevels && j < capacity; ++j) {
      s.integers[Slot::kGuard + j] = static_cast<std::int32_t>(j) / s.integer % a.limit;
    }
    if (a.role == Role::kText) std::memcpy(s.integers.data() + Slot::kGuard, "V", 2);
    const std::vector<double> data = uniform(capacity, seed + 1000 * i);
    std::copy(data.begin(), data.end(), s.reals.begin() + Slot::kGuard);
  }
  return slots;
}

bool guardsIntact(const Slots& slots) {
  for (const Slot& s : slots) {
    for (std::size_t i = 0; i < (s.reals.empty() ? 0 : Slot::kGuard); ++i) {
      const std::size_t end = s.reals.size() - 1 - i;
      if (s.reals[i] != Slot::kFill || s.reals[end] != Slot::kFill) return false;
      if (s.integers[i] != Slot::kIntegerFill || s.integers[end] != Slot::kIntegerFill)
        return false;
    }
  }
  return true;
}

std::uint64_t digest(const Routine& r) {
  Digest results;
  for (std::int32_t size : {1, 2, 3, 4, 7, 8, 16, 17, 32, 61, 64, 100, 256, 1000, 1024, 4096}) {
    for (std::uint64_t seed : {1u, 2u}) {
      Slots slots = prepare(r, size, seed);
      results.add(static_cast<std::uint64_t>(r.call(slots)));
      for (const Slot& s : slots) {
        for (double v : s.reals) results.add(v);
        for (std::int32_t v : s.integers) results.add(static_cast<std::uint64_t>(v));
      }
    }
  }
  return results.value();
}

}  // namespace fathom::test
