/*
 * Fathom: numerical analysis routines for measurement, test and signal processing.
 *
 * Every routine works on arrays that the caller owns, writes into arrays and variables that the
 * caller supplies, and returns a status code; GetAnalysisErrorString gives its text. For all of
 * them:
 *
 * - Arguments come in one order: input arrays, their counts (rows before columns), scalar
 *   parameters, output arrays, scalar results.
 * - Counts are signed 32-bit integers. A matrix is one contiguous array, stored row after row.
 * - Checks run in the order in which a routine's statuses are listed; the first that fails returns
 *   its code. Unless a routine says otherwise, a failed call writes nothing.
 * - "In place" says which output may be the same array as which input. Arrays that overlap in any
 *   other way are not supported.
 * - Division by zero and overflow give the infinities and NaNs of IEEE 754, with status 0, unless a
 *   routine says otherwise.
 * - Nothing is locked. Calls on disjoint data may run at the same time on several threads, unless a
 *   routine says otherwise.
 */
#ifndef FATHOM_H
#define FATHOM_H

#include <stdint.h>

#if defined(_WIN32) && !defined(FATHOM_STATIC)
#if defined(FATHOM_BUILD)
#define FATHOM_API __declspec(dllexport)
#else
#define FATHOM_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define FATHOM_API __attribute__((visibility("default")))
#else
#define FATHOM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Status of a call: 0 for success, negative for a failure. */
typedef int32_t AnalysisStatus;

/** Values of AnalysisStatus. */
enum FathomStatus {
  FATHOM_OK = 0,
  FATHOM_ERR_MEMORY = -20001,
  FATHOM_ERR_SAME_SIZE = -20002,
  FATHOM_ERR_NO_SAMPLES = -20003,
  FATHOM_ERR_NEGATIVE_SAMPLES = -20004,
  FATHOM_ERR_FEWER_THAN_TWO_SAMPLES = -20006,
  FATHOM_ERR_FEWER_THAN_THREE_SAMPLES = -20007,
  FATHOM_ERR_ARRAY_SIZE = -20008,
  FATHOM_ERR_POWER_OF_TWO = -20009,
  FATHOM_ERR_CYCLES = -20012,
  FATHOM_ERR_DELAY_WIDTH = -20014,
  FATHOM_ERR_INTERVAL = -20016,
  FATHOM_ERR_INDEX = -20017,
  FATHOM_ERR_INDEX_LENGTH = -20018,
  FATHOM_ERR_LIMITS = -20019,
  FATHOM_ERR_NYQUIST = -20020,
  FATHOM_ERR_ORDER = -20021,
  FATHOM_ERR_DECIMATION = -20022,
  FATHOM_ERR_BAND = -20023,
  FATHOM_ERR_RIPPLE = -20024,
  FATHOM_ERR_ATTENUATION = -20025,
  FATHOM_ERR_ATTENUATION_BELOW_RIPPLE = -20028,
  FATHOM_ERR_FILTER_DESIGN = -20031,
  FATHOM_ERR_ODD_COEFFICIENTS = -20033,
  FATHOM_ERR_EVEN_COEFFICIENTS = -20034,
  FATHOM_ERR_SIGN_OF_ARRAY = -20036,
  FATHOM_ERR_SIZE_BELOW_ORDER = -20037,
  FATHOM_ERR_NOT_SQUARE = -20040,
  FATHOM_ERR_SINGULAR = -20041,
  FATHOM_ERR_LEVEL_COUNT = -20042,
  FATHOM_ERR_FACTOR_LEVEL = -20043,
  FATHOM_ERR_EMPTY_LEVEL = -20044,
  FATHOM_ERR_TOTAL_POINTS = -20045,
  FATHOM_ERR_UNBALANCED = -20047,
  FATHOM_ERR_FIXED_EFFECT = -20048,
  FATHOM_ERR_DISTINCT_X = -20049,
  FATHOM_ERR_POLE = -20050,
  FATHOM_ERR_FIRST_COLUMN = -20051,
  FATHOM_ERR_DEGREES_OF_FREEDOM = -20052,
  FATHOM_ERR_PROBABILITY = -20053,
  FATHOM_ERR_CATEGORIES = -20055,
  FATHOM_ERR_NEGATIVE_TABLE = -20056,
  FATHOM_ERR_BETA_PARAMETER = -20057,
  FATHOM_ERR_DIMENSIONS = -20058,
  FATHOM_ERR_DIVIDE_BY_ZERO = -20060,
  FATHOM_ERR_SELECTION = -20061,
  FATHOM_ERR_ITERATIONS = -20062,
  FATHOM_ERR_POLYNOMIAL = -20063,
  FATHOM_ERR_ZERO_VECTOR = -20065,
  FATHOM_ERR_FILTER_RECORD = -20066,
  FATHOM_ERR_BASE_TOP = -20101,
  FATHOM_ERR_SHIFT_RANGE = -20102,
  FATHOM_ERR_NEGATIVE_ORDER = -20103
};

/** Windows of ScaledWindow. Any other value is FATHOM_WINDOW_RECTANGULAR. */
enum FathomWindow {
  FATHOM_WINDOW_RECTANGULAR = 0,
  FATHOM_WINDOW_HANNING = 1,
  FATHOM_WINDOW_HAMMING = 2,
  FATHOM_WINDOW_BLACKMAN_HARRIS = 3,
  FATHOM_WINDOW_EXACT_BLACKMAN = 4,
  FATHOM_WINDOW_BLACKMAN = 5,
  FATHOM_WINDOW_FLAT_TOP = 6,
  FATHOM_WINDOW_FOUR_TERM_BLACKMAN_HARRIS = 7,
  FATHOM_WINDOW_SEVEN_TERM_BLACKMAN_HARRIS = 8
};

/** What ScaledWindow reports of the window that it applied. */
typedef struct WindowProperties {
  double equivalentNoiseBandwidth; /**< in frequency bins */
  double coherentGain;             /**< the mean of the window's values */
} WindowProperties;

/* ---- Library ------------------------------------------------------------------------------- */

/**
 * Text of a status code.
 *
 * @param status any value
 * @return a constant, NUL-terminated text, never null and never to be freed; "Unknown error number"
 *         for a value that is not a status of this library
 */
FATHOM_API const char* GetAnalysisErrorString(AnalysisStatus status);

/**
 * Releases an array that a routine of this library allocated and handed to the caller.
 *
 * @param memory the array, or null, which does nothing
 */
FATHOM_API void FreeAnalysisMem(void* memory);

/* ---- Real arrays: element-wise (src/array/elementwise.cpp) ----------------------------------- */

FATHOM_API AnalysisStatus Add1D(const double* a, const double* b, int32_t n, double* y);
FATHOM_API AnalysisStatus Sub1D(const double* a, const double* b, int32_t n, double* y);
FATHOM_API AnalysisStatus Mul1D(const double* a, const double* b, int32_t n, double* y);
FATHOM_API AnalysisStatus Div1D(const double* a, const double* b, int32_t n, double* y);
FATHOM_API AnalysisStatus Add2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);
FATHOM_API AnalysisStatus Sub2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);
FATHOM_API AnalysisStatus Mul2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);
FATHOM_API AnalysisStatus Div2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);
FATHOM_API AnalysisStatus Abs1D(const double* x, int32_t n, double* y);
FATHOM_API AnalysisStatus Neg1D(const double* x, int32_t n, double* y);
FATHOM_API AnalysisStatus Clear1D(double* x, int32_t n);
FATHOM_API AnalysisStatus Set1D(double* x, int32_t n, double value);
FATHOM_API AnalysisStatus Clip(const double* x, int32_t n, double upper, double lower, double* y);

/* ---- Real arrays: copying and reordering (src/array/reorder.cpp) ----------------------------- */

FATHOM_API AnalysisStatus Copy1D(const double* x, int32_t n, double* y);
FATHOM_API AnalysisStatus Subset1D(const double* x, int32_t n, int32_t start, int32_t length,
                                   double* y);
FATHOM_API AnalysisStatus Reverse(const double* x, int32_t n, double* y);
FATHOM_API AnalysisStatus Shift(const double* x, int32_t n, int32_t shift, double* y);
FATHOM_API AnalysisStatus Sort(const double* x, int32_t n, int32_t direction, double* y);

/* ---- Real arrays: scaling (src/array/scale.cpp) ---------------------------------------------- */

FATHOM_API AnalysisStatus Scale1D(const double* x, int32_t n, double* y, double* offset,
                                  double* scale);
FATHOM_API AnalysisStatus Scale2D(const double* x, int32_t rows, int32_t columns, double* y,
                                  double* offset, double* scale);
FATHOM_API AnalysisStatus QScale1D(const double* x, int32_t n, double* y, double* largest);
FATHOM_API AnalysisStatus QScale2D(const double* x, int32_t rows, int32_t columns, double* y,
                                   double* largest);
FATHOM_API AnalysisStatus Normal1D(const double* x, int32_t n, double* y, double* mean,
                                   double* deviation);
FATHOM_API AnalysisStatus Normal2D(const double* x, int32_t rows, int32_t columns, double* y,
                                   double* mean, double* deviation);

/* ---- Real arrays: reductions (src/array/reduce.cpp) ------------------------------------------ */

FATHOM_API AnalysisStatus MaxMin1D(const double* x, int32_t n, double* maximum,
                                   int32_t* maximumIndex, double* minimum, int32_t* minimumIndex);
FATHOM_API AnalysisStatus MaxMin2D(const double* x, int32_t rows, int32_t columns, double* maximum,
                                   int32_t* maximumRow, int32_t* maximumColumn, double* minimum,
                                   int32_t* minimumRow, int32_t* minimumColumn);
FATHOM_API AnalysisStatus Sum1D(const double* x, int32_t n, double* sum);
FATHOM_API AnalysisStatus Sum2D(const double* x, int32_t rows, int32_t columns, double* sum);
FATHOM_API AnalysisStatus Prod1D(const double* x, int32_t n, double* product);

/* ---- Evaluation (src/array/evaluate.cpp) ----------------------------------------------------- */

FATHOM_API AnalysisStatus LinEv1D(const double* x, int32_t n, double a, double b, double* y);
FATHOM_API AnalysisStatus LinEv2D(const double* x, int32_t rows, int32_t columns, double a,
                                  double b, double* y);
FATHOM_API AnalysisStatus PolyEv1D(const double* x, int32_t n, const double* c, int32_t m,
                                   double* y);
FATHOM_API AnalysisStatus PolyEv2D(const double* x, int32_t rows, int32_t columns, const double* c,
                                   int32_t m, double* y);

/* ---- Calculus of sampled signals (src/array/calculus.cpp) ------------------------------------ */

FATHOM_API AnalysisStatus Integrate(const double* x, int32_t n, double dt, double initial,
                                    double final, double* y);
FATHOM_API AnalysisStatus Difference(const double* x, int32_t n, double dt, double initial,
                                     double final, double* y);
FATHOM_API AnalysisStatus UnWrap1D(double* phase, int32_t n);
FATHOM_API AnalysisStatus Decimate(const double* x, int32_t n, int32_t factor, int32_t averaging,
                                   double* y);

/* ---- Descriptive statistics (src/stats/descriptive.cpp) -------------------------------------- */

FATHOM_API AnalysisStatus Mean(const double* x, int32_t n, double* mean);
FATHOM_API AnalysisStatus StdDev(const double* x, int32_t n, double* mean, double* deviation);
FATHOM_API AnalysisStatus Variance(const double* x, int32_t n, double* mean, double* variance);
FATHOM_API AnalysisStatus RMS(const double* x, int32_t n, double* rms);
FATHOM_API AnalysisStatus Moment(const double* x, int32_t n, int32_t order, double* moment);
FATHOM_API AnalysisStatus Median(const double* x, int32_t n, double* median);

/* ---- Histogram (src/stats/histogram.cpp) ----------------------------------------------------- */

FATHOM_API AnalysisStatus Mode(const double* x, int32_t n, double base, double top,
                               int32_t intervals, double* mode);
FATHOM_API AnalysisStatus Histogram(const double* x, int32_t n, double base, double top,
                                    int32_t* counts, double* axis, int32_t intervals);

/* ---- Periodic waveforms (src/generate/waveform.cpp) ------------------------------------------ */

FATHOM_API AnalysisStatus SineWave(int32_t n, double amplitude, double frequency, double* phase,
                                   double* y);
FATHOM_API AnalysisStatus SquareWave(int32_t n, double amplitude, double frequency, double* phase,
                                     double dutyCycle, double* y);
FATHOM_API AnalysisStatus TriangleWave(int32_t n, double amplitude, double frequency, double* phase,
                                       double* y);
FATHOM_API AnalysisStatus SawtoothWave(int32_t n, double amplitude, double frequency, double* phase,
                                       double* y);
FATHOM_API AnalysisStatus ArbitraryWave(int32_t n, double amplitude, double frequency,
                                        double* phase, const double* table, int32_t length,
                                        int32_t interpolation, double* y);

/* ---- Patterns (src/generate/pattern.cpp) ----------------------------------------------------- */

FATHOM_API AnalysisStatus SinePattern(int32_t n, double amplitude, double phase, double cycles,
                                      double* y);
FATHOM_API AnalysisStatus Ramp(int32_t n, double first, double last, double* y);
FATHOM_API AnalysisStatus Impulse(int32_t n, double amplitude, int32_t index, double* y);
FATHOM_API AnalysisStatus Pulse(int32_t n, double amplitude, int32_t delay, int32_t width,
                                double* y);
FATHOM_API AnalysisStatus Triangle(int32_t n, double amplitude, double* y);
FATHOM_API AnalysisStatus Chirp(int32_t n, double amplitude, double f1, double f2, double* y);
FATHOM_API AnalysisStatus Sinc(int32_t n, double amplitude, double delay, double dt, double* y);

/* ---- Time-domain windows (src/window/window.cpp) --------------------------------------------- */

FATHOM_API AnalysisStatus HanWin(double* x, int32_t n);
FATHOM_API AnalysisStatus HamWin(double* x, int32_t n);
FATHOM_API AnalysisStatus BkmanWin(double* x, int32_t n);
FATHOM_API AnalysisStatus ExBkmanWin(double* x, int32_t n);
FATHOM_API AnalysisStatus BlkHarrisWin(double* x, int32_t n);
FATHOM_API AnalysisStatus FlatTopWin(double* x, int32_t n);
FATHOM_API AnalysisStatus GenCosWin(double* x, int32_t n, const double* a, int32_t m);
FATHOM_API AnalysisStatus KsrWin(double* x, int32_t n, double beta);
FATHOM_API AnalysisStatus TriWin(double* x, int32_t n);
FATHOM_API AnalysisStatus CosTaperedWin(double* x, int32_t n);
FATHOM_API AnalysisStatus ExpWin(double* x, int32_t n, double finalValue);
FATHOM_API AnalysisStatus ForceWin(double* x, int32_t n, double dutyCycle);

/* ---- Scaled window (src/window/scaled.cpp) --------------------------------------------------- */

FATHOM_API AnalysisStatus ScaledWindow(double* x, int32_t n, int32_t window,
                                       WindowProperties* properties);

/* ---- Transforms (src/spectral/fft.cpp, real_fft.cpp, hartley.cpp) ---------------------------- */

FATHOM_API AnalysisStatus FFT(double* re, double* im, int32_t n);
FATHOM_API AnalysisStatus InvFFT(double* re, double* im, int32_t n);
FATHOM_API AnalysisStatus ReFFT(double* re, double* im, int32_t n);
FATHOM_API AnalysisStatus ReInvFFT(double* re, const double* im, int32_t n);
FATHOM_API AnalysisStatus FHT(double* x, int32_t n);
FATHOM_API AnalysisStatus InvFHT(double* x, int32_t n);

/* ---- Spectra (src/spectral/spectra.cpp) ------------------------------------------------------ */

FATHOM_API AnalysisStatus Spectrum(double* x, int32_t n);
FATHOM_API AnalysisStatus AutoPowerSpectrum(const double* x, int32_t n, double dt, double* power,
                                            double* df);
FATHOM_API AnalysisStatus CrossSpectrum(const double* x, const double* y, int32_t n, double* re,
                                        double* im);
FATHOM_API AnalysisStatus CrossPowerSpectrum(const double* x, const double* y, int32_t n, double dt,
                                             double* magnitude, double* phase, double* df);
FATHOM_API AnalysisStatus AmpPhaseSpectrum(const double* x, int32_t n, int32_t unwrap, double dt,
                                           double* amplitude, double* phase, double* df);

/* ---- Network functions (src/spectral/network.cpp) -------------------------------------------- */

FATHOM_API AnalysisStatus TransferFunction(const double* stimulus, const double* response,
                                           int32_t n, double dt, double* magnitude, double* phase,
                                           double* df);
FATHOM_API AnalysisStatus ImpulseResponse(const double* stimulus, const double* response, int32_t n,
                                          double* impulse);
FATHOM_API AnalysisStatus NetworkFunctions(const double* stimulus, const double* response,
                                           int32_t n, int32_t frames, double dt,
                                           double* crossMagnitude, double* crossPhase,
                                           double* magnitude, double* phase, double* coherence,
                                           double* impulse, double* df);

/* ---- Power, frequency and harmonics (src/measure/power_frequency.cpp, harmonic.cpp) ---------- */

FATHOM_API AnalysisStatus PowerFrequencyEstimate(const double* spectrum, int32_t n,
                                                 double searchFrequency, double noiseBandwidth,
                                                 double reserved, double df, int32_t span,
                                                 double* peakFrequency, double* peakPower);
FATHOM_API AnalysisStatus HarmonicAnalyzer(double* spectrum, int32_t n, int32_t fftSize,
                                           int32_t harmonics, int32_t window, double samplingRate,
                                           double fundamental, double* amplitudes,
                                           double* frequencies, double* distortion,
                                           double* distortionPlusNoise);

#ifdef __cplusplus
}
#endif

#endif
