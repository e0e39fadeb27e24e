/*
 * Fathom: numerical analysis routines for measurement, test and signal processing.
 *
 * Data and results lie in the caller's memory; what a routine returns is a status code, of which
 * GetAnalysisErrorString gives the text. For all routines:
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
  FATHOM_WARN_RANK = 20001, /**< the one success that warns: GenLinEqs, CxGenLinEqs */
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

/** Interpolation of ArbitraryWave. Any other value is FATHOM_INTERPOLATE_NONE. */
enum FathomInterpolation {
  FATHOM_INTERPOLATE_NONE = 0,  /**< the entry at or before the position */
  FATHOM_INTERPOLATE_LINEAR = 1 /**< between two entries; the last leads to the first */
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

/** Norm of MatrixNorm and ConditionNumber. */
enum FathomNorm {
  FATHOM_NORM_2 = 0,         /**< largest singular value */
  FATHOM_NORM_1 = 1,         /**< largest sum of magnitudes over a column */
  FATHOM_NORM_FROBENIUS = 2, /**< root of the sum of squares of all elements */
  FATHOM_NORM_INFINITY = 3   /**< largest sum of magnitudes over a row */
};

/** What the eigenvalue routines compute. */
enum FathomEigen {
  FATHOM_EIGEN_VALUES = 0, /**< eigenvalues only; the array of vectors is not used */
  FATHOM_EIGEN_VECTORS = 1 /**< eigenvalues and eigenvectors */
};

/** What SpectrumUnitConversion is given. Any other value is FATHOM_SPECTRUM_AMPLITUDE. */
enum FathomSpectrumKind {
  FATHOM_SPECTRUM_POWER = 0,     /**< mean squares, as from AutoPowerSpectrum */
  FATHOM_SPECTRUM_AMPLITUDE = 1, /**< RMS amplitudes, as from AmpPhaseSpectrum */
  FATHOM_SPECTRUM_MAGNITUDE = 2  /**< ratios, as from TransferFunction, that have no unit */
};

/** Scale of SpectrumUnitConversion. */
enum FathomScale {
  FATHOM_SCALE_LINEAR = 0,
  FATHOM_SCALE_DB = 1, /**< decibels relative to one base unit */
  FATHOM_SCALE_DBM = 2 /**< decibels relative to 0.78 base units, about 1 mW in 600 ohm for volts */
};

/** Unit of SpectrumUnitConversion: a sum of these, 0 to 7. */
enum FathomUnit {
  FATHOM_UNIT_RMS = 0,    /**< RMS amplitude */
  FATHOM_UNIT_PEAK = 1,   /**< of peaks instead of RMS values */
  FATHOM_UNIT_POWER = 2,  /**< power, the square, instead of amplitude */
  FATHOM_UNIT_DENSITY = 4 /**< per hertz, or per root hertz */
};

/** Band types of filters. */
enum FathomBand {
  FATHOM_LOWPASS = 0,
  FATHOM_HIGHPASS = 1,
  FATHOM_BANDPASS = 2,
  FATHOM_BANDSTOP = 3
};

/** Designs of Equi_Ripple. Any other value: FATHOM_FIR_HILBERT without its demands on the edges. */
enum FathomFirDesign {
  FATHOM_FIR_MULTIBAND = 1,      /**< symmetric coefficients */
  FATHOM_FIR_DIFFERENTIATOR = 2, /**< antisymmetric; desired values are multiplied by frequency */
  FATHOM_FIR_HILBERT = 3         /**< antisymmetric */
};

/** Windows of the Wind_ designs. Any other value is FATHOM_FIR_HAMMING. */
enum FathomFirWindow {
  FATHOM_FIR_RECTANGULAR = 1,
  FATHOM_FIR_TRIANGULAR = 2,
  FATHOM_FIR_HANNING = 3,
  FATHOM_FIR_HAMMING = 4,
  FATHOM_FIR_BLACKMAN = 5
};

/** Matrices of SpecialMatrix and CxSpecialMatrix. */
enum FathomMatrix {
  FATHOM_MATRIX_IDENTITY = 0,
  FATHOM_MATRIX_DIAGONAL = 1,
  FATHOM_MATRIX_TOEPLITZ = 2,
  FATHOM_MATRIX_VANDERMONDE = 3,
  FATHOM_MATRIX_COMPANION = 4
};

/** Rules of NumericIntegration. */
enum FathomIntegration {
  FATHOM_INTEGRATION_TRAPEZOIDAL = 0,
  FATHOM_INTEGRATION_SIMPSON = 1,
  FATHOM_INTEGRATION_SIMPSON_3_8 = 2,
  FATHOM_INTEGRATION_BODE = 3
};

/** Algorithms of the general least-squares fits. */
enum FathomLeastSquares {
  FATHOM_LS_SINGULAR_VALUES = 0,
  FATHOM_LS_HOUSEHOLDER = 1,
  FATHOM_LS_GIVENS = 2,
  FATHOM_LS_GRAM_SCHMIDT = 3,   /**< modified Gram-Schmidt */
  FATHOM_LS_NORMAL_LU = 4,      /**< normal equations, LU decomposition */
  FATHOM_LS_NORMAL_CHOLESKY = 5 /**< normal equations, Cholesky factorisation */
};

/** A complex value. Complex matrices and vectors of the linear algebra are arrays of them. */
typedef struct ComplexNum {
  double real;
  double imaginary;
} ComplexNum;

/** A model for the nonlinear fits: its value at x for the k coefficients. */
typedef double (*FathomModel)(double x, const double* coefficients, int32_t k);

/**
 * An IIR filter as a cascade of sections, with its delay state: one heap block that
 * AllocIIRFilterPtr makes, one of the ..._CascadeCoef routines fills, IIRCascadeFiltering runs data
 * through, and FreeIIRFilterPtr releases.
 *
 * There are (order + 1) / 2 sections, rounded down, of width m: 2 for lowpass and highpass, 4 for
 * bandpass and bandstop filters. Section s has the transfer function
 * (b0 + b1 z^-1 + ... + bm z^-m) / (1 + a1 z^-1 + ... + am z^-m), with a1 .. am from a[s m] on and
 * b0 .. bm from b[s (m + 1)] on. Its internal values, delayed by 1 .. m samples, are from
 * state[s m] on.
 */
typedef struct IIRFilter {
  int32_t type;       /**< a FathomBand */
  int32_t order;      /**< of the lowpass prototype, at least 1 */
  int32_t reset;      /**< nonzero: the state is cleared before the next samples */
  int32_t na;         /**< number of feedback coefficients, sections x m */
  double* a;          /**< feedback coefficients, without the leading 1 of each section */
  int32_t nb;         /**< number of feed-forward coefficients, sections x (m + 1) */
  double* b;          /**< feed-forward coefficients */
  int32_t stateCount; /**< number of state entries, sections x m */
  double* state;      /**< the delayed values */
} IIRFilter;

/** Handle of an IIRFilter. */
typedef IIRFilter* IIRFilterPtr;

/** What ScaledWindow reports of the window that it applied. */
typedef struct WindowProperties {
  double equivalentNoiseBandwidth; /**< in frequency bins */
  double coherentGain;             /**< the mean of the window's values */
} WindowProperties;

/* ---- Library ------------------------------------------------------------------------------- */

/**
 * Text of a status code.
 *
 * @param[in] status any value
 * @return a constant, NUL-terminated text, never null and never to be freed; "Unknown error number"
 *         for a value that is not a status of this library
 */
FATHOM_API const char* GetAnalysisErrorString(AnalysisStatus status);

/**
 * Releases an array that a routine of this library allocated and handed to the caller.
 *
 * @param[in] memory the array, or null, which does nothing
 */
FATHOM_API void FreeAnalysisMem(void* memory);

/* ---- Real arrays: element-wise (src/array/elementwise.cpp) ----------------------------------- */

/**
 * Element-wise sum: y[i] = a[i] + b[i]. In place: y may be a, b or both.
 *
 * @param[in] a n values
 * @param[in] b n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Add1D(const double* a, const double* b, int32_t n, double* y);

/**
 * Element-wise difference: y[i] = a[i] - b[i]. In place: y may be a, b or both.
 *
 * @param[in] a n values
 * @param[in] b n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Sub1D(const double* a, const double* b, int32_t n, double* y);

/**
 * Element-wise product: y[i] = a[i] b[i]. In place: y may be a, b or both.
 *
 * @param[in] a n values
 * @param[in] b n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Mul1D(const double* a, const double* b, int32_t n, double* y);

/**
 * Element-wise quotient: y[i] = a[i] / b[i], up to the first divisor that is zero or NaN. In place:
 * y may be a, b or both.
 *
 * @param[in] a n values
 * @param[in] b n divisors
 * @param[in] n number of elements, at least 1
 * @param[out] y n values; when the division stops at element k, y[0] to y[k - 1] are written and
 *     the rest is left as it was
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_DIVIDE_BY_ZERO if a divisor is zero
 *         or NaN
 */
FATHOM_API AnalysisStatus Div1D(const double* a, const double* b, int32_t n, double* y);

/**
 * Element-wise sum of two matrices: y[i] = a[i] + b[i] over rows x columns elements. In place: y
 * may be a, b or both.
 *
 * @param[in] a rows x columns values
 * @param[in] b rows x columns values
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] y rows x columns values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus Add2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);

/**
 * Element-wise difference of two matrices: y[i] = a[i] - b[i] over rows x columns elements. In
 * place: y may be a, b or both.
 *
 * @param[in] a rows x columns values
 * @param[in] b rows x columns values
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] y rows x columns values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus Sub2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);

/**
 * Element-wise product of two matrices: y[i] = a[i] b[i] over rows x columns elements. In place: y
 * may be a, b or both.
 *
 * @param[in] a rows x columns values
 * @param[in] b rows x columns values
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] y rows x columns values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus Mul2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);

/**
 * Element-wise quotient of two matrices: y[i] = a[i] / b[i] over rows x columns elements. In place:
 * y may be a, b or both.
 *
 * Unlike Div1D it does not look at the divisors: a zero gives an infinity or NaN in its element.
 *
 * @param[in] a rows x columns values
 * @param[in] b rows x columns divisors
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] y rows x columns values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus Div2D(const double* a, const double* b, int32_t rows, int32_t columns,
                                double* y);

/**
 * Magnitude: y[i] = |x[i]|. In place: y may be x.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Abs1D(const double* x, int32_t n, double* y);

/**
 * Negation: y[i] = -x[i]. In place: y may be x.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Neg1D(const double* x, int32_t n, double* y);

/**
 * Sets every element to +0.0.
 *
 * @param[out] x n values
 * @param[in] n number of elements, at least 1
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Clear1D(double* x, int32_t n);

/**
 * Sets every element to one value.
 *
 * @param[out] x n values
 * @param[in] n number of elements, at least 1
 * @param[in] value the value, of any kind
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Set1D(double* x, int32_t n, double value);

/**
 * Limits values to a range: y[i] is `upper` if x[i] > upper, `lower` if x[i] < lower or x[i] is
 * NaN, and x[i] otherwise. In place: y may be x.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[in] upper largest value to let through
 * @param[in] lower smallest value to let through
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_LIMITS if upper < lower or either
 *         is NaN
 */
FATHOM_API AnalysisStatus Clip(const double* x, int32_t n, double upper, double lower, double* y);

/* ---- Real arrays: copying and reordering (src/array/reorder.cpp) ----------------------------- */

/**
 * Copy: y[i] = x[i]. In place: y may be x, which changes nothing.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Copy1D(const double* x, int32_t n, double* y);

/**
 * Copies part of an array: y[j] = x[start + j]. In place: no.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[in] start index of the first element to copy, at least 0
 * @param[in] length number of elements to copy, at least 1
 * @param[out] y length values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1, start < 0 or length < 1;
 *         FATHOM_ERR_INDEX_LENGTH if start + length > n
 */
FATHOM_API AnalysisStatus Subset1D(const double* x, int32_t n, int32_t start, int32_t length,
                                   double* y);

/**
 * Reversal: y[i] = x[n - 1 - i]. In place: y may be x.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Reverse(const double* x, int32_t n, double* y);

/**
 * Shift with zeros moving in: y[i] = x[i - shift] where x has that element, 0 elsewhere. In place:
 * y may be x.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[in] shift elements to move by: positive towards higher indices, negative towards lower, 0
 *     for a copy
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SHIFT_RANGE if |shift| >= n
 */
FATHOM_API AnalysisStatus Shift(const double* x, int32_t n, int32_t shift, double* y);

/**
 * Sorts the values. In place: y may be x.
 *
 * The order is total, so that the result depends on nothing but the values: -0.0 is below +0.0, and
 * NaNs come last in either direction. Quicksort on integer keys (C. A. R. Hoare, "Quicksort", The
 * Computer Journal 5, 1962) without branches on the data and without workspace; no input takes more
 * than of the order of n log n steps.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[in] direction 0 for ascending order, any other value for descending
 * @param[out] y n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Sort(const double* x, int32_t n, int32_t direction, double* y);

/* ---- Real arrays: scaling (src/array/scale.cpp) ---------------------------------------------- */

/**
 * Scales between the extremes to [-1, 1]: scale = (maximum - minimum) / 2, offset = minimum +
 * scale, y[i] = (x[i] - offset) (1 / scale). In place: y may be x.
 *
 * The product with the reciprocal can exceed 1 by a rounding. When all elements are equal, scale is
 * 0 and y is NaN. The extremes are those of MaxMin1D, which says what NaNs do to them.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @param[out] offset the middle of the range
 * @param[out] scale half the width of the range
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Scale1D(const double* x, int32_t n, double* y, double* offset,
                                  double* scale);

/**
 * Scales a matrix between the extremes to [-1, 1]: scale = (maximum - minimum) / 2, offset =
 * minimum + scale, y[i] = (x[i] - offset) (1 / scale). In place: y may be x.
 *
 * The product with the reciprocal can exceed 1 by a rounding. When all elements are equal, scale is
 * 0 and y is NaN. The extremes are those of MaxMin2D, which says what NaNs do to them.
 *
 * @param[in] x rows x columns values, row after row
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] y rows x columns values
 * @param[out] offset the middle of the range
 * @param[out] scale half the width of the range
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus Scale2D(const double* x, int32_t rows, int32_t columns, double* y,
                                  double* offset, double* scale);

/**
 * Scales by the largest magnitude to [-1, 1]: y[i] = x[i] (1 / largest), largest = max |x[i]|. In
 * place: y may be x.
 *
 * NaNs are passed over in the search. When all elements are zero, largest is 0 and y is NaN; a
 * largest magnitude whose reciprocal overflows makes y infinite.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @param[out] largest the largest magnitude
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus QScale1D(const double* x, int32_t n, double* y, double* largest);

/**
 * Scales a matrix by the largest magnitude to [-1, 1]: y[i] = x[i] (1 / largest), largest = max
 * |x[i]|. In place: y may be x.
 *
 * NaNs are passed over in the search. When all elements are zero, largest is 0 and y is NaN; a
 * largest magnitude whose reciprocal overflows makes y infinite.
 *
 * @param[in] x rows x columns values, row after row
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] y rows x columns values
 * @param[out] largest the largest magnitude
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus QScale2D(const double* x, int32_t rows, int32_t columns, double* y,
                                   double* largest);

/**
 * Normalises to zero mean and unit deviation: y[i] = (x[i] - mean) (1 / deviation). In place: y may
 * be x.
 *
 * When the deviation is 0, y is infinite or NaN.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] y n values
 * @param[out] mean the mean, as StdDev gives it
 * @param[out] deviation the standard deviation (divisor n), as StdDev gives it
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Normal1D(const double* x, int32_t n, double* y, double* mean,
                                   double* deviation);

/**
 * Normalises a matrix to zero mean and unit deviation: y[i] = (x[i] - mean) (1 / deviation). In
 * place: y may be x.
 *
 * When the deviation is 0, y is infinite or NaN. A matrix of more than 2^31 - 1 elements has NaN
 * for mean, deviation and results.
 *
 * @param[in] x rows x columns values, row after row
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] y rows x columns values
 * @param[out] mean the mean, as StdDev gives it
 * @param[out] deviation the standard deviation (divisor rows x columns), as StdDev gives it
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus Normal2D(const double* x, int32_t rows, int32_t columns, double* y,
                                   double* mean, double* deviation);

/* ---- Real arrays: reductions (src/array/reduce.cpp) ------------------------------------------ */

/**
 * Largest and smallest element and where they first occur.
 *
 * Taken one after the other, an element that is above the maximum becomes the maximum, and
 * otherwise one that is not at or above the minimum becomes the minimum. So a NaN becomes the
 * minimum and the next element that is no new maximum replaces it; a NaN in the first place stays
 * the maximum.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] maximum largest element
 * @param[out] maximumIndex its index, from 0
 * @param[out] minimum smallest element
 * @param[out] minimumIndex its index, from 0
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus MaxMin1D(const double* x, int32_t n, double* maximum,
                                   int32_t* maximumIndex, double* minimum, int32_t* minimumIndex);

/**
 * Largest and smallest element of a matrix and where they first occur.
 *
 * The elements are taken row after row, in the manner of MaxMin1D.
 *
 * @param[in] x rows x columns values, row after row
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] maximum largest element
 * @param[out] maximumRow its row, from 0
 * @param[out] maximumColumn its column, from 0
 * @param[out] minimum smallest element
 * @param[out] minimumRow its row, from 0
 * @param[out] minimumColumn its column, from 0
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus MaxMin2D(const double* x, int32_t rows, int32_t columns, double* maximum,
                                   int32_t* maximumRow, int32_t* maximumColumn, double* minimum,
                                   int32_t* minimumRow, int32_t* minimumColumn);

/**
 * Sum of all elements, added one after the other from the first, without compensation.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] sum 0 + x[0] + ... + x[n - 1]
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Sum1D(const double* x, int32_t n, double* sum);

/**
 * Sum of all elements of a matrix, added one after the other, row after row, without compensation.
 *
 * @param[in] x rows x columns values, row after row
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[out] sum the sum
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus Sum2D(const double* x, int32_t rows, int32_t columns, double* sum);

/**
 * Product of all elements, multiplied one after the other from the first.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[out] product 1 x[0] ... x[n - 1]
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Prod1D(const double* x, int32_t n, double* product);

/* ---- Complex scalars (src/array/complex_scalar.cpp) ----------------------------------------- */

/**
 * Complex sum: a + b = (ar + br) + i (ai + bi).
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[in] br real part of b
 * @param[in] bi imaginary part of b
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus CxAdd(double ar, double ai, double br, double bi, double* re, double* im);

/**
 * Complex difference: a - b = (ar - br) + i (ai - bi).
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[in] br real part of b
 * @param[in] bi imaginary part of b
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus CxSub(double ar, double ai, double br, double bi, double* re, double* im);

/**
 * Complex product: a b = (ar br - ai bi) + i (ar bi + ai br).
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[in] br real part of b
 * @param[in] bi imaginary part of b
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus CxMul(double ar, double ai, double br, double bi, double* re, double* im);

/**
 * Complex quotient: a / b = ((ar br + ai bi) / m) + i ((ai br - ar bi) / m) with m = br^2 + bi^2.
 *
 * Nothing is scaled: where m underflows to 0 the parts are infinities or NaNs, with status 0.
 * CxDiv1D fails there.
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[in] br real part of b
 * @param[in] bi imaginary part of b
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK; FATHOM_ERR_DIVIDE_BY_ZERO if each of br and bi is zero or NaN
 */
FATHOM_API AnalysisStatus CxDiv(double ar, double ai, double br, double bi, double* re, double* im);

/**
 * Complex reciprocal: 1 / a = (ar / m) - i (ai / m) with m = ar^2 + ai^2.
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK; FATHOM_ERR_DIVIDE_BY_ZERO if ar^2 + ai^2, as computed, is zero or NaN
 */
FATHOM_API AnalysisStatus CxRecip(double ar, double ai, double* re, double* im);

/**
 * Principal square root: of modulus sqrt(sqrt(ar^2 + ai^2)) and phase atan2(ai, ar) / 2, so that
 * its real part is not negative. It is 0 where ar^2 + ai^2, as computed, is zero or NaN.
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus CxSqrt(double ar, double ai, double* re, double* im);

/**
 * Complex exponential: exp(a) = exp(ar) (cos(ai) + i sin(ai)).
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a, an angle in radians
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus CxExp(double ar, double ai, double* re, double* im);

/**
 * Natural logarithm: ln(a) = ln(ar^2 + ai^2) / 2 + i atan2(ai, ar).
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result, in [-pi, pi]
 * @return FATHOM_OK; FATHOM_ERR_DIVIDE_BY_ZERO if ar^2 + ai^2, as computed, is zero or NaN
 */
FATHOM_API AnalysisStatus CxLn(double ar, double ai, double* re, double* im);

/**
 * Common logarithm: log10(a) = log10(ar^2 + ai^2) / 2 + i 0.434294481903252 atan2(ai, ar).
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK; FATHOM_ERR_DIVIDE_BY_ZERO if ar^2 + ai^2, as computed, is zero or NaN
 */
FATHOM_API AnalysisStatus CxLog(double ar, double ai, double* re, double* im);

/**
 * Power with a real exponent: a^p, of modulus (ar^2 + ai^2)^(p / 2) and phase p atan2(ai, ar).
 * Where ar^2 + ai^2, as computed, is zero or NaN, it is 0, for negative p as well.
 *
 * @param[in] ar real part of a
 * @param[in] ai imaginary part of a
 * @param[in] p exponent
 * @param[out] re real part of the result
 * @param[out] im imaginary part of the result
 * @return FATHOM_OK; FATHOM_ERR_DIVIDE_BY_ZERO if ar^2 + ai^2 is zero or NaN, and p too
 */
FATHOM_API AnalysisStatus CxPow(double ar, double ai, double p, double* re, double* im);

/**
 * Polar form of a complex number: sqrt(re^2 + im^2) and atan2(im, re). Both are 0 where each part
 * is zero or NaN.
 *
 * @param[in] re real part
 * @param[in] im imaginary part
 * @param[out] magnitude modulus, not negative
 * @param[out] phase angle in radians, in [-pi, pi]
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus ToPolar(double re, double im, double* magnitude, double* phase);

/**
 * Rectangular form of a complex number: cos(phase) magnitude + i sin(phase) magnitude.
 *
 * @param[in] magnitude modulus, of either sign
 * @param[in] phase angle in radians
 * @param[out] re real part
 * @param[out] im imaginary part
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus ToRect(double magnitude, double phase, double* re, double* im);

/* ---- Complex arrays (src/array/complex_array.cpp) ------------------------------------------- */

/**
 * Element-wise complex sum: y[k] = a[k] + b[k]. In place: y may be a, b or both.
 *
 * @param[in] ar n real parts of a
 * @param[in] ai n imaginary parts of a
 * @param[in] br n real parts of b
 * @param[in] bi n imaginary parts of b
 * @param[in] n number of elements, at least 1
 * @param[out] re n real parts
 * @param[out] im n imaginary parts
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus CxAdd1D(const double* ar, const double* ai, const double* br,
                                  const double* bi, int32_t n, double* re, double* im);

/**
 * Element-wise complex difference: y[k] = a[k] - b[k]. In place: y may be a, b or both.
 *
 * @param[in] ar n real parts of a
 * @param[in] ai n imaginary parts of a
 * @param[in] br n real parts of b
 * @param[in] bi n imaginary parts of b
 * @param[in] n number of elements, at least 1
 * @param[out] re n real parts
 * @param[out] im n imaginary parts
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus CxSub1D(const double* ar, const double* ai, const double* br,
                                  const double* bi, int32_t n, double* re, double* im);

/**
 * Element-wise complex product: y[k] = a[k] b[k], by the formula of CxMul. In place: y may be a,
 * but not b.
 *
 * @param[in] ar n real parts of a
 * @param[in] ai n imaginary parts of a
 * @param[in] br n real parts of b
 * @param[in] bi n imaginary parts of b
 * @param[in] n number of elements, at least 1
 * @param[out] re n real parts
 * @param[out] im n imaginary parts
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus CxMul1D(const double* ar, const double* ai, const double* br,
                                  const double* bi, int32_t n, double* re, double* im);

/**
 * Element-wise complex quotient: y[k] = a[k] / b[k], by the formula of CxDiv, up to the first
 * divisor whose br^2 + bi^2, as computed, is zero or NaN. In place: y may be a, but not b.
 *
 * @param[in] ar n real parts of a
 * @param[in] ai n imaginary parts of a
 * @param[in] br n real parts of b
 * @param[in] bi n imaginary parts of b
 * @param[in] n number of elements, at least 1
 * @param[out] re n real parts; when the division stops at element k, those before k are written and
 *     the rest is left as it was
 * @param[out] im n imaginary parts, likewise
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_DIVIDE_BY_ZERO if a divisor's br^2
 *         + bi^2 is zero or NaN, also where CxDiv would give infinities
 */
FATHOM_API AnalysisStatus CxDiv1D(const double* ar, const double* ai, const double* br,
                                  const double* bi, int32_t n, double* re, double* im);

/**
 * Complex line at each element: y[k] = a[k] b + c. In place: y may be a.
 *
 * @param[in] ar n real parts of a
 * @param[in] ai n imaginary parts of a
 * @param[in] n number of elements, at least 1
 * @param[in] br real part of the slope b
 * @param[in] bi imaginary part of the slope b
 * @param[in] cr real part of c, the value at zero
 * @param[in] ci imaginary part of c
 * @param[out] re n real parts
 * @param[out] im n imaginary parts
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus CxLinEv1D(const double* ar, const double* ai, int32_t n, double br,
                                    double bi, double cr, double ci, double* re, double* im);

/**
 * Polar form of each element, as ToPolar. In place: the outputs may be the inputs, in either order.
 *
 * @param[in] re n real parts
 * @param[in] im n imaginary parts
 * @param[in] n number of elements, at least 1
 * @param[out] magnitude n moduli, not negative
 * @param[out] phase n angles in radians, in [-pi, pi]
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus ToPolar1D(const double* re, const double* im, int32_t n,
                                    double* magnitude, double* phase);

/**
 * Rectangular form of each element, as ToRect. In place: the outputs may be the inputs, in either
 * order.
 *
 * @param[in] magnitude n moduli, of either sign
 * @param[in] phase n angles in radians
 * @param[in] n number of elements, at least 1
 * @param[out] re n real parts
 * @param[out] im n imaginary parts
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus ToRect1D(const double* magnitude, const double* phase, int32_t n,
                                   double* re, double* im);

/* ---- Evaluation (src/array/evaluate.cpp) ----------------------------------------------------- */

/**
 * Line at each element: y[i] = x[i] a + b.
 * In place: y may be x.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[in] a slope
 * @param[in] b value at zero
 * @param[out] y n results
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus LinEv1D(const double* x, int32_t n, double a, double b, double* y);

/**
 * Line at each element of a matrix: y[i][j] = x[i][j] a + b.
 * In place: y may be x.
 *
 * @param[in] x rows x columns values
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[in] a slope
 * @param[in] b value at zero
 * @param[out] y rows x columns results
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1 or columns < 1
 */
FATHOM_API AnalysisStatus LinEv2D(const double* x, int32_t rows, int32_t columns, double a,
                                  double b, double* y);

/**
 * Polynomial at each element: y[i] = c[0] + c[1] x[i] + ... + c[m - 1] x[i]^(m - 1).
 *
 * Each power is the one below it times x[i], and the sum runs from c[0] to the highest power, which
 * rounds otherwise than Horner's scheme.
 * In place: y may be x, but not c.
 *
 * @param[in] x n values
 * @param[in] n number of elements, at least 1
 * @param[in] c m coefficients, c[j] that of the power j
 * @param[in] m number of coefficients, at least 1
 * @param[out] y n results
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1 or m < 1
 */
FATHOM_API AnalysisStatus PolyEv1D(const double* x, int32_t n, const double* c, int32_t m,
                                   double* y);

/**
 * Polynomial at each element of a matrix, as PolyEv1D.
 * In place: y may be x, but not c.
 *
 * @param[in] x rows x columns values
 * @param[in] rows number of rows, at least 1
 * @param[in] columns number of columns, at least 1
 * @param[in] c m coefficients, c[j] that of the power j
 * @param[in] m number of coefficients, at least 1
 * @param[out] y rows x columns results
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if rows < 1, columns < 1 or m < 1
 */
FATHOM_API AnalysisStatus PolyEv2D(const double* x, int32_t rows, int32_t columns, const double* c,
                                   int32_t m, double* y);

/* ---- Calculus of sampled signals (src/array/calculus.cpp) ------------------------------------ */

/**
 * Running integral of a sampled signal: y[i] = y[i - 1] + (x[i - 1] + 4 x[i] + x[i + 1]) dt / 6,
 * with y[-1] = 0, x[-1] = initial and x[n] = final.
 *
 * Simpson's rule over spans of 2 dt that overlap by half, each counted half. dt / 6 is the product
 * of dt and 1/6 in extended precision, rounded once.
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[in] dt sampling interval, above 0, in the unit of the independent variable
 * @param[in] initial sample before the first
 * @param[in] final sample after the last
 * @param[out] y n values, in the unit of x times that of dt
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_INTERVAL unless dt > 0
 */
FATHOM_API AnalysisStatus Integrate(const double* x, int32_t n, double dt, double initial,
                                    double final, double* y);

/**
 * Derivative of a sampled signal by central differences: y[i] = (x[i + 1] - x[i - 1]) (0.5 / dt),
 * with x[-1] = initial and x[n] = final.
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[in] dt sampling interval, above 0, in the unit of the independent variable
 * @param[in] initial sample before the first
 * @param[in] final sample after the last
 * @param[out] y n values, in the unit of x over that of dt
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_INTERVAL unless dt > 0
 */
FATHOM_API AnalysisStatus Difference(const double* x, int32_t n, double dt, double initial,
                                     double final, double* y);

/**
 * Removes jumps from a sequence of phases: where a phase lies more than pi above (below) the one
 * before it, 2 pi is taken from (added to) it and every later one.
 *
 * One turn is corrected at each step, and jumps of exactly pi stay. Two phases alone are left as
 * they are. The time grows as n times the number of jumps, because each correction is rounded.
 *
 * @param[in,out] phase n phases in radians
 * @param[in] n number of phases, at least 1
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus UnWrap1D(double* phase, int32_t n);

/**
 * Every factor-th element, or the mean of each block of `factor` elements:
 * y[k] = x[k factor] or y[k] = (x[k factor] + ... + x[k factor + factor - 1]) / factor, for k from
 * 0 while k factor < n.
 *
 * The last mean is taken over `factor` elements too: with averaging, x must be readable up to the
 * next multiple of factor, beyond n where n is none.
 * In place: y may be x.
 *
 * @param[in] x n elements; with averaging, n rounded up to a multiple of factor
 * @param[in] n number of elements, at least 1
 * @param[in] factor decimating factor, from 1 to n
 * @param[in] averaging 0 for elements, any other value for means
 * @param[out] y n / factor results, rounded up
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_DECIMATION if factor < 1 or
 *         n < factor
 */
FATHOM_API AnalysisStatus Decimate(const double* x, int32_t n, int32_t factor, int32_t averaging,
                                   double* y);

/* ---- Descriptive statistics (src/stats/descriptive.cpp) -------------------------------------- */

/**
 * Arithmetic mean: (x[0] + ... + x[n - 1]) / n, summed in index order.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[out] mean the mean, in the unit of x
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Mean(const double* x, int32_t n, double* mean);

/**
 * Mean and population standard deviation: sqrt(|sum of x[i]^2 / n - mean^2|), in one pass.
 *
 * The magnitude is taken because the difference can round to a little below zero; see Variance.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[out] mean the mean, in the unit of x
 * @param[out] deviation the standard deviation, in the unit of x
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus StdDev(const double* x, int32_t n, double* mean, double* deviation);

/**
 * Mean and population variance: sum of x[i]^2 / n - mean^2, in one pass.
 *
 * For samples that hardly vary about a large mean the difference loses its digits and can come out
 * slightly negative. Moment with order 2 takes two passes and has neither fault.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[out] mean the mean, in the unit of x
 * @param[out] variance the variance, in the squared unit of x
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Variance(const double* x, int32_t n, double* mean, double* variance);

/**
 * Root mean square: sqrt((x[0]^2 + ... + x[n - 1]^2) / n).
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[out] rms the root mean square, in the unit of x
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus RMS(const double* x, int32_t n, double* rms);

/**
 * Central moment: sum of (x[i] - mean)^order, divided by n, in two passes.
 *
 * Each deviation is multiplied by itself order - 1 times. The time grows with the order until the
 * powers no longer change.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[in] order order of the moment, at least 1
 * @param[out] moment the moment, in the unit of x to the power order
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1
 */
FATHOM_API AnalysisStatus Moment(const double* x, int32_t n, int32_t order, double* moment);

/**
 * Median: the middle one of the sorted samples, or half the sum of the middle two.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[out] median the median, in the unit of x
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY if a copy of x cannot be
 *         allocated
 */
FATHOM_API AnalysisStatus Median(const double* x, int32_t n, double* median);

/* ---- Histogram (src/stats/histogram.cpp) ----------------------------------------------------- */

/**
 * Mode by histogram: the centre of the interval that holds the most samples, the lowest of them
 * where several do; the first interval's centre if no sample lies between base and top.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[in] base lower end of the range, in the unit of x
 * @param[in] top upper end of the range, above base
 * @param[in] intervals number of intervals, at least 1
 * @param[out] mode the mode, in the unit of x
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if intervals < 1; FATHOM_ERR_MEMORY if the histogram
 *         cannot be allocated; FATHOM_ERR_BASE_TOP unless base < top; FATHOM_ERR_NO_SAMPLES if
 *         n < 1
 */
FATHOM_API AnalysisStatus Mode(const double* x, int32_t n, double base, double top,
                               int32_t intervals, double* mode);

/**
 * Number of samples in each of `intervals` equal intervals between base and top.
 *
 * With width = (top - base) / intervals, interval i takes the samples from base + i width up to,
 * but not including, base + (i + 1) width; the last one also takes those equal to top. Samples
 * outside and NaNs are not counted.
 * In place: no; counts, axis and x are three arrays.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[in] base lower end of the range, in the unit of x
 * @param[in] top upper end of the range, above base
 * @param[out] counts `intervals` counts
 * @param[out] axis `intervals` centres, each the one before plus width
 * @param[in] intervals number of intervals, at least 1
 * @return FATHOM_OK; FATHOM_ERR_BASE_TOP unless base < top; FATHOM_ERR_NO_SAMPLES if n < 1 or
 *         intervals < 1
 */
FATHOM_API AnalysisStatus Histogram(const double* x, int32_t n, double base, double top,
                                    int32_t* counts, double* axis, int32_t intervals);

/* ---- Probability distributions (src/stats/distribution.cpp) --------------------------------- */

/**
 * Standard normal distribution: p = P(Z <= x).
 *
 * With z = |x| and t = 1 / (1 + 0.33267 z), the upper tail at z is
 * 0.3989422 exp(-z^2 / 2) t (0.4361836 - 0.1201676 t + 0.937298 t^2).
 *
 * Error (this and those below: docs/distributions.md): at most 1.1e-5, at x = 0.52; 0.41 % of p
 * down to p = 0.001. From x = -8.3 down, p is 0.
 *
 * Source: M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964, 26.2.16.
 *
 * @param[in] x any value
 * @param[out] p the probability
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus N_Dist(double x, double* p);

/**
 * Inverse of the standard normal distribution: x with P(Z <= x) = p.
 *
 * With q the smaller of p and 1 - p and t = sqrt(ln(1 / q^2)), |x| is t less a quotient of
 * polynomials of degree 2 and 3 in t. p = 0.5 gives -1.0e-7.
 *
 * Error: at most 4.4e-4; 0.3 % of x at p = 0.501.
 *
 * Source: M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964, 26.2.23.
 *
 * @param[in] p probability, above 0 and below 1; below 7.5e-155 the result is NaN
 * @param[out] x the quantile
 * @return FATHOM_OK; FATHOM_ERR_PROBABILITY unless 0 < p < 1
 */
FATHOM_API AnalysisStatus InvN_Dist(double p, double* x);

/**
 * Student's t distribution: p = P(T <= t).
 *
 * With x = df / (df + t^2), half the regularised incomplete beta function I_x(df/2, 1/2) is the
 * probability of either tail. The function is a continued fraction of at most 100 steps.
 *
 * Error: at most 3.6e-9 for df to 10000 (at t = 1.75, df = 361), 5.8e-8 to 1000000 and 1.0e-4 to
 * 2^31 - 1 (at t = 0.00026); of p, 9.0e-8 in the lower tail for df to 10000, down to p = 1e-40.
 *
 * Sources: the continued fraction is 26.5.8 of M. Abramowitz and I. A. Stegun, Handbook of
 * Mathematical Functions, 1964; ln Gamma is the series of C. Lanczos, A precision approximation of
 * the gamma function, SIAM Journal on Numerical Analysis, series B, 1964.
 *
 * @param[in] t any value
 * @param[in] df degrees of freedom, at least 1
 * @param[out] p the probability
 * @return FATHOM_OK; FATHOM_ERR_DEGREES_OF_FREEDOM if df < 1
 */
FATHOM_API AnalysisStatus T_Dist(double t, int32_t df, double* p);

/**
 * Inverse of T_Dist, found by bisection of [-10000, 10000] to a width of at most 1e-4: the lower
 * end of the last interval. Quantiles outside give the interval's end on their side.
 *
 * Error: at most 7.5e-5, the width of the last interval, for df to 1000000; 3.7e-4 beyond (at
 * p = 0.5).
 *
 * @param[in] p probability, above 0 and below 1; NaN gives -10000
 * @param[in] df degrees of freedom, at least 1
 * @param[out] t the quantile
 * @return FATHOM_OK; FATHOM_ERR_DEGREES_OF_FREEDOM if df < 1; FATHOM_ERR_PROBABILITY if p >= 1 or
 *         p <= 0
 */
FATHOM_API AnalysisStatus InvT_Dist(double p, int32_t df, double* t);

/**
 * F distribution: p = P(F <= f) = 1 - I_x(df2/2, df1/2) with x = df2 / (df2 + df1 f), where I is
 * the regularised incomplete beta function as in T_Dist; 0 unless f > 0.
 *
 * Error, by the larger of df1 and df2: at most 1.4e-8 to 10000 (at f = 1, df1 = df2 = 3164), 2.6e-6
 * to 100000 and 0.017 to 1000000, as a hundred steps are too few for two numbers that large; beyond
 * that the result can be any value. Of p, 8.8e-8 to 10000 and down to p = 0.001.
 *
 * @param[in] f any value
 * @param[in] df1 degrees of freedom of the numerator, at least 1
 * @param[in] df2 degrees of freedom of the denominator, at least 1
 * @param[out] p the probability
 * @return FATHOM_OK; FATHOM_ERR_DEGREES_OF_FREEDOM if df1 < 1 or df2 < 1
 */
FATHOM_API AnalysisStatus F_Dist(double f, int32_t df1, int32_t df2, double* p);

/**
 * Inverse of F_Dist, found by bisection of [1e-6, 10000] to a width of at most 1e-4: the lower end
 * of the last interval. Quantiles outside give the interval's end on their side.
 *
 * Error: at most 7.5e-5, the width of the last interval, for df1 and df2 to 10000.
 *
 * @param[in] p probability, above 0 and below 1; NaN gives 1e-6
 * @param[in] df1 degrees of freedom of the numerator, at least 1
 * @param[in] df2 degrees of freedom of the denominator, at least 1
 * @param[out] f the quantile
 * @return FATHOM_OK; FATHOM_ERR_DEGREES_OF_FREEDOM if df1 < 1 or df2 < 1; FATHOM_ERR_PROBABILITY if
 *         p >= 1 or p <= 0
 */
FATHOM_API AnalysisStatus InvF_Dist(double p, int32_t df1, int32_t df2, double* f);

/**
 * Chi-square distribution: p = P(X <= x); 0 unless x > 0.
 *
 * For even df, p = 1 - exp(-x/2) (1 + x/2 + x^2/(2 4) + ...) with df/2 terms; for odd df,
 * p = 1 - 2 (0.3989422 exp(-x/2) (x^(1/2) + x^(3/2)/3 + x^(5/2)/(3 5) + ...) + q) with (df - 1)/2
 * terms and q the upper tail of N_Dist at sqrt(x).
 *
 * Error: at most 1.6e-15 for even df; for odd df, as q has the error of N_Dist, 2.3e-5 (at
 * x = 0.29, df = 1) and 1.6 % of p down to p = 0.001 (at x = 0.24, df = 5). p can come out as far
 * below 0. These hold while no power of x in the sum exceeds 1.8e308: for x to 10000 and df to 155,
 * for x to df + 4 and df to 257. Beyond, p is minus infinity or NaN. The time is bounded.
 *
 * Source: M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964, 26.4.4 and
 * 26.4.5.
 *
 * @param[in] x any value
 * @param[in] df degrees of freedom, at least 1
 * @param[out] p the probability
 * @return FATHOM_OK; FATHOM_ERR_DEGREES_OF_FREEDOM if df < 1
 */
FATHOM_API AnalysisStatus XX_Dist(double x, int32_t df, double* p);

/**
 * Inverse of XX_Dist, found by bisection of [0, 10000] to a width of at most 1e-4: the lower end of
 * the last interval. Quantiles above 10000 give the interval's upper end.
 *
 * Error: at most 7.5e-5, the width of the last interval, for even df to 200. For odd df that of
 * XX_Dist is added: 0.084 (at p = 0.0001, df = 19) or 14 % of x (at p = 0.0001, df = 3) for df to
 * 201 and p from 0.0001. From df = 202 on, a step meets a sum that has overflowed, and the result
 * is no quantile.
 *
 * @param[in] p probability, above 0 and below 1; NaN gives 0
 * @param[in] df degrees of freedom, at least 1
 * @param[out] x the quantile
 * @return FATHOM_OK; FATHOM_ERR_PROBABILITY if p >= 1 or p <= 0; FATHOM_ERR_DEGREES_OF_FREEDOM if
 *         df < 1
 */
FATHOM_API AnalysisStatus InvXX_Dist(double p, int32_t df, double* x);

/* ---- Analysis of variance (src/stats/anova.cpp) --------------------------------------------- */

/**
 * One-way analysis of variance of n observations at k levels of one factor.
 *
 * With C = (sum of y)^2 / n, with T_j the sum and n_j the number of the observations at level j:
 * ssT = sum of y^2 - C, ssA = sum of T_j^2 / n_j - C, ssE = ssT - ssA, msA = ssA / (k - 1),
 * msE = ssE / (n - k), f = msA / msE, and p = 1 - F_Dist(f, k - 1, n - k).
 *
 * All sums are taken in one pass, which costs about twice as many of the 16 digits as the
 * observations have in common: subtract what they share where that matters. Of observations that
 * share half of their digits nothing is left, and sums of squares can come out negative.
 *
 * Source: R. A. Fisher, Statistical Methods for Research Workers, 1925.
 *
 * @param[in] y n observations
 * @param[in] level n levels of the factor, each from 0 to k - 1
 * @param[in] n number of observations, at least 1
 * @param[in] k number of levels, from 2 to n - 1
 * @param[out] ssA sum of squares between levels, in the squared unit of y
 * @param[out] msA mean square between levels
 * @param[out] f F ratio
 * @param[out] p significance: the probability of a larger ratio where all levels have one mean
 * @param[out] ssE sum of squares within levels
 * @param[out] msE mean square within levels
 * @param[out] ssT total sum of squares
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_LEVEL_COUNT if k < 2 or k >= n;
 *         FATHOM_ERR_MEMORY if a sum for each level cannot be allocated; FATHOM_ERR_FACTOR_LEVEL if
 *         a level is below 0 or above k - 1; FATHOM_ERR_EMPTY_LEVEL if a level has no observation
 */
FATHOM_API AnalysisStatus ANOVA1Way(const double* y, const int32_t* level, int32_t n, int32_t k,
                                    double* ssA, double* msA, double* f, double* p, double* ssE,
                                    double* msE, double* ssT);

/**
 * Two-way analysis of variance of a balanced design: |a| |b| cells of `replicates` observations.
 *
 * A negative number of levels tells that the factor's effect is random, a positive one that it is
 * fixed. The table has four rows of four values. Rows: factor A, factor B, interaction AB, error.
 * Columns: sum of squares, degrees of freedom, mean square, F ratio; the last cell, the error's F
 * ratio, is not written.
 *
 * With C = (sum of y)^2 / n, a factor's sum of squares is that of T^2 / m - C over its levels, each
 * with sum T of m observations; ssCells is the same over the cells, AB has ssCells - ssA - ssB and
 * the error sum of y^2 - C - ssCells. A is tested against AB where B is random and against the
 * error where it is fixed, B likewise, AB against the error. A significance is 1 - F_Dist(ratio,
 * degrees of the effect, degrees of the error), also where the ratio is over AB. With one
 * observation in each cell the interaction serves as error, and its own row, ratio and significance
 * are 0. Digits are lost as in ANOVA1Way.
 *
 * Source: H. Scheffe, The Analysis of Variance, 1959, chapters 4 and 8.
 *
 * @param[in] y n observations, in any order
 * @param[in] levelA n levels of factor A, each from 0 to |a| - 1
 * @param[in] levelB n levels of factor B, each from 0 to |b| - 1
 * @param[in] n number of observations, |a| |b| replicates
 * @param[in] replicates number of observations in each cell, at least 1, or 2 with a random effect
 * @param[in] a number of levels of A, of at least 2 in magnitude
 * @param[in] b number of levels of B, of at least 2 in magnitude
 * @param[out] table 16 values, of which 15 are written, row after row
 * @param[out] pA significance of A
 * @param[out] pB significance of B
 * @param[out] pAB significance of the interaction
 * @return FATHOM_OK; FATHOM_ERR_TOTAL_POINTS if n is not |a| |b| replicates; FATHOM_ERR_LEVEL_COUNT
 *         if |a| < 2 or |b| < 2; FATHOM_ERR_EMPTY_LEVEL if replicates < 1; FATHOM_ERR_MEMORY if a
 *         sum for each level and cell cannot be allocated; FATHOM_ERR_FACTOR_LEVEL if a level does
 *         not exist; FATHOM_ERR_UNBALANCED if a cell has not `replicates` observations;
 *         FATHOM_ERR_FIXED_EFFECT if replicates is 1 and a < 0 or b < 0
 */
FATHOM_API AnalysisStatus ANOVA2Way(const double* y, const int32_t* levelA, const int32_t* levelB,
                                    int32_t n, int32_t replicates, int32_t a, int32_t b,
                                    double* table, double* pA, double* pB, double* pAB);

/**
 * Three-way analysis of variance of a balanced design: |a| |b| |c| cells of `replicates`
 * observations.
 *
 * Levels, signs and columns are those of ANOVA2Way. The eight rows of the table: A, B, C, AB, AC,
 * BC, ABC, error; the error's F ratio is 0. An interaction's sum of squares is that of T^2 / m - C
 * over its cells, less those of the effects within it, in the order of the rows.
 *
 * An effect is tested against the error where all factors outside it are fixed, and against its
 * interaction with the one random factor outside it; the significance is 1 - F_Dist(ratio, degrees
 * of the effect, degrees of the row it is tested against). A factor beside two random ones has no
 * exact test: its F ratio and significance are -1.
 *
 * Source: H. Scheffe, The Analysis of Variance, 1959, chapters 4 and 8.
 *
 * @param[in] y n observations, in any order
 * @param[in] levelA n levels of factor A, each from 0 to |a| - 1
 * @param[in] levelB n levels of factor B, each from 0 to |b| - 1
 * @param[in] levelC n levels of factor C, each from 0 to |c| - 1
 * @param[in] n number of observations, |a| |b| |c| replicates
 * @param[in] replicates number of observations in each cell, at least 2
 * @param[in] a number of levels of A, of at least 2 in magnitude
 * @param[in] b number of levels of B, of at least 2 in magnitude
 * @param[in] c number of levels of C, of at least 2 in magnitude
 * @param[out] table 32 values, row after row
 * @param[out] pA significance of A
 * @param[out] pB significance of B
 * @param[out] pC significance of C
 * @param[out] pAB significance of the interaction of A and B
 * @param[out] pAC significance of the interaction of A and C
 * @param[out] pBC significance of the interaction of B and C
 * @param[out] pABC significance of the interaction of all three
 * @return FATHOM_OK; FATHOM_ERR_TOTAL_POINTS if n is not |a| |b| |c| replicates;
 *         FATHOM_ERR_EMPTY_LEVEL if replicates < 2; FATHOM_ERR_LEVEL_COUNT if |a| < 2, |b| < 2 or
 *         |c| < 2; FATHOM_ERR_MEMORY if a sum for each level and cell cannot be allocated;
 *         FATHOM_ERR_FACTOR_LEVEL if a level does not exist; FATHOM_ERR_UNBALANCED if a cell has
 *         not `replicates` observations
 */
FATHOM_API AnalysisStatus ANOVA3Way(const double* y, const int32_t* levelA, const int32_t* levelB,
                                    const int32_t* levelC, int32_t n, int32_t replicates, int32_t a,
                                    int32_t b, int32_t c, double* table, double* pA, double* pB,
                                    double* pC, double* pAB, double* pAC, double* pBC,
                                    double* pABC);

/* ---- Contingency tables (src/stats/contingency.cpp) ----------------------------------------- */

/**
 * Chi-square test of independence on an r x c table of counts: chi2 is the sum over the cells, row
 * after row, of (O - E)^2 / E, where O is the count and E = (row sum) (column sum) / (total).
 *
 * p = 1 - XX_Dist(chi2, (r - 1) (c - 1)), which holds for as many degrees of freedom as XX_Dist
 * does. Where they exceed INT32_MAX, the largest int32_t of the same parity stands for them. If all
 * counts of a row or column are 0, then chi2 is NaN and p, as for no deviation at all, 1.
 *
 * Source: K. Pearson, On the criterion that a given system of deviations ... can be reasonably
 * supposed to have arisen from random sampling, Philosophical Magazine 50, 1900.
 *
 * @param[in] r number of rows, at least 2
 * @param[in] c number of columns, at least 2
 * @param[in] counts r x c counts, row after row, none negative
 * @param[out] chi2 the statistic
 * @param[out] p significance: the probability of a larger statistic where rows and columns are
 *     independent
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if r < 0 or c < 0; FATHOM_ERR_MEMORY if a real table of
 *         the same shape and its margins cannot be allocated; FATHOM_ERR_CATEGORIES if r < 2 or
 *         c < 2; FATHOM_ERR_NEGATIVE_TABLE if a count is negative
 */
FATHOM_API AnalysisStatus Contingency_Table(int32_t r, int32_t c, const int32_t* counts,
                                            double* chi2, double* p);

/* ---- Periodic waveforms (src/generate/waveform.cpp) ------------------------------------------ */

/**
 * y[i] = amplitude sin(pi/180 phase), with phase += 360 frequency after each sample.
 *
 * Passing the same phase variable to each following call continues the signal. The phase is not
 * reduced between the samples of a call.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] frequency cycles per sample, of any size and sign
 * @param[in,out] phase degrees: of the first sample on entry, on return that of the sample after
 *     the last, reduced by fmod to [0, 360] (360 only by rounding, from just below zero)
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus SineWave(int32_t n, double amplitude, double frequency, double* phase,
                                   double* y);

/**
 * Square wave, high part first: y[i] = amplitude while the phase, reduced to one cycle, is below
 * 3.6 dutyCycle degrees, else -amplitude. The phase is kept as SineWave does.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] frequency cycles per sample, of any size and sign
 * @param[in,out] phase degrees: of the first sample on entry, on return that of the sample after
 *     the last, reduced by fmod to [0, 360] (360 only by rounding, from just below zero)
 * @param[in] dutyCycle high part of the cycle in percent; below 0 counts as 0, above 100 as 100
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus SquareWave(int32_t n, double amplitude, double frequency, double* phase,
                                     double dutyCycle, double* y);

/**
 * Triangle wave: 0 at phase 0, amplitude at 90 degrees, -amplitude at 270. The phase is kept as
 * SineWave does.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] frequency cycles per sample, of any size and sign
 * @param[in,out] phase degrees: of the first sample on entry, on return that of the sample after
 *     the last, reduced by fmod to [0, 360] (360 only by rounding, from just below zero)
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus TriangleWave(int32_t n, double amplitude, double frequency, double* phase,
                                       double* y);

/**
 * Sawtooth wave: y[i] = amplitude phase / 180 for a phase, reduced to one cycle, below 180 degrees,
 * and amplitude (phase / 180 - 2) from there on. The phase is kept as SineWave does.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] frequency cycles per sample, of any size and sign
 * @param[in,out] phase degrees: of the first sample on entry, on return that of the sample after
 *     the last, reduced by fmod to [0, 360] (360 only by rounding, from just below zero)
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus SawtoothWave(int32_t n, double amplitude, double frequency, double* phase,
                                       double* y);

/**
 * Periodic wave of any shape: y[i] = amplitude times the table at position length phase / 360, with
 * phase += 360 frequency after each sample. The phase is advanced in table positions, length
 * frequency per sample, and converted back at the end. A position just below zero that rounds up to
 * the table's end is its first entry; one that is not finite gives NaN. In place: no.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] frequency cycles per sample, of any size and sign
 * @param[in,out] phase degrees: of the first sample on entry, on return that of the sample after
 *     the last, reduced by fmod to [0, 360] (360 only by rounding, from just below zero)
 * @param[in] table one cycle of the shape, length values
 * @param[in] length number of table entries; at or below 0 the shape is 0 throughout, and
 *     with 0 a finite phase comes back as 0
 * @param[in] interpolation a FathomInterpolation; any value but FATHOM_INTERPOLATE_LINEAR takes the
 *     entry at or before the position
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus ArbitraryWave(int32_t n, double amplitude, double frequency,
                                        double* phase, const double* table, int32_t length,
                                        int32_t interpolation, double* y);

/* ---- Patterns (src/generate/pattern.cpp) ----------------------------------------------------- */

/**
 * Whole or partial cycles of a sine: y[i] = amplitude sin(pi/180 phase + 2 pi i cycles / n), the
 * angle advanced by repeated addition.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] phase of the first sample, degrees
 * @param[in] cycles cycles in the n samples; zero gives a constant, a negative number runs
 *     backwards
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_CYCLES if cycles > n or is not a
 *         number
 */
FATHOM_API AnalysisStatus SinePattern(int32_t n, double amplitude, double phase, double cycles,
                                      double* y);

/**
 * Straight line from first towards last: y[0] = first, y[k + 1] = y[k] + (last - first) / (n - 1).
 * y[n - 1] equals last up to the rounding of the sum.
 *
 * @param[in] n number of samples
 * @param[in] first value of the first sample
 * @param[in] last value that the last sample approaches
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n < 2
 */
FATHOM_API AnalysisStatus Ramp(int32_t n, double first, double last, double* y);

/**
 * Zeros, but y[index] = amplitude.
 *
 * @param[in] n number of samples
 * @param[in] amplitude value of the impulse
 * @param[in] index its position, 0 to n - 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_INDEX if index >= n or index < 0
 */
FATHOM_API AnalysisStatus Impulse(int32_t n, double amplitude, int32_t index, double* y);

/**
 * Zeros, but amplitude in y[delay] ... y[delay + width - 1].
 *
 * @param[in] n number of samples
 * @param[in] amplitude value of the pulse
 * @param[in] delay samples before the pulse
 * @param[in] width samples of the pulse; 0 makes none
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_DELAY_WIDTH if delay < 0, width < 0
 *         or delay + width > n
 */
FATHOM_API AnalysisStatus Pulse(int32_t n, double amplitude, int32_t delay, int32_t width,
                                double* y);

/**
 * Symmetric triangle: from 0 in steps of amplitude / h up to amplitude and down again, h = n / 2
 * rounded down. n = 4 gives 0, a/2, a, a/2; n = 5 gives 0, a/2, a, a/2, 0.
 *
 * @param[in] n number of samples
 * @param[in] amplitude value of the peak
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n < 2
 */
FATHOM_API AnalysisStatus Triangle(int32_t n, double amplitude, double* y);

/**
 * Linear frequency sweep: y[i] = amplitude sin((i k + 2 pi f1) i) with k = (f2 - f1) pi / n.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] f1 frequency at the first sample, cycles per sample
 * @param[in] f2 frequency that sample n would reach, cycles per sample
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Chirp(int32_t n, double amplitude, double f1, double f2, double* y);

/**
 * y[i] = amplitude sin(x) / x with x = pi (i dt - delay), and amplitude where x is 0.
 *
 * @param[in] n number of samples
 * @param[in] amplitude factor of the shape, of any sign
 * @param[in] delay position of the peak, in the unit of dt
 * @param[in] dt sample interval
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_INTERVAL unless dt > 0
 */
FATHOM_API AnalysisStatus Sinc(int32_t n, double amplitude, double delay, double dt, double* y);

/* ---- Noise (src/generate/noise.cpp) --------------------------------------------------------- */

/**
 * Uniform noise about zero: y[i] = (r - 16383) amplitude / 16384, r the next draw of the noise
 * generator, an integer in [0, 32767].
 *
 * The generator is shared by WhiteNoise, GaussNoise and Uniform: calls of any of them, in any
 * order, draw from one sequence. A seed of 0 or more restarts it; 0 does what 32767 does. Its state
 * is not locked: calls of the three from several threads must be serialised by the caller. Seeds
 * above 12558383 wrap around 32 bits in the generator's first step, which may leave it giving
 * negative draws as well, down to -32766, and so values below the ranges given for the three.
 *
 * Source: B. A. Wichmann and I. D. Hill, Algorithm AS 183: An efficient and portable pseudo-random
 * number generator, Applied Statistics 31 (1982).
 *
 * @param[in] n number of samples
 * @param[in] amplitude largest value; the mean is amplitude / 32768
 * @param[in] seed restarts the generator before the first sample; negative: it continues
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1, with the generator left as it was
 */
FATHOM_API AnalysisStatus WhiteNoise(int32_t n, double amplitude, int32_t seed, double* y);

/**
 * Nearly Gaussian noise: y[i] = (r1 + ... + r12 - 196596) deviation / 32768, the sum of the next
 * twelve draws of the noise generator that WhiteNoise describes. The values lie within about 6
 * deviations; their mean is 6 deviation / 32768.
 *
 * The generator is shared by WhiteNoise, GaussNoise and Uniform, and is not locked.
 *
 * Source of the generator: as for WhiteNoise.
 *
 * @param[in] n number of samples, of twelve draws each
 * @param[in] deviation standard deviation
 * @param[in] seed restarts the generator before the first sample; negative: it continues
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1, with the generator left as it was
 */
FATHOM_API AnalysisStatus GaussNoise(int32_t n, double deviation, int32_t seed, double* y);

/**
 * Uniform values: y[i] = r / 32767, r the next draw of the noise generator that WhiteNoise
 * describes: from 0 to 1, both included.
 *
 * The generator is shared by WhiteNoise, GaussNoise and Uniform, and is not locked.
 *
 * Source of the generator: as for WhiteNoise.
 *
 * @param[in] n number of samples
 * @param[in] seed restarts the generator before the first sample; negative: it continues
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1, with the generator left as it was
 */
FATHOM_API AnalysisStatus Uniform(int32_t n, int32_t seed, double* y);

/* ---- Time-domain windows (src/window/window.cpp) --------------------------------------------- */

/**
 * Hanning window, periodic: x[k] *= sin(pi k / n)^2.
 *
 * Source: F. J. Harris, On the use of windows for harmonic analysis with the discrete Fourier
 * transform, Proceedings of the IEEE 66 (1978).
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus HanWin(double* x, int32_t n);

/**
 * Hamming window, periodic: x[k] *= 0.54 - 0.46 cos t, t = 2 pi k / n.
 *
 * Source: F. J. Harris, On the use of windows for harmonic analysis with the discrete Fourier
 * transform, Proceedings of the IEEE 66 (1978).
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus HamWin(double* x, int32_t n);

/**
 * Blackman window, periodic: x[k] *= 0.42 - 0.5 cos t + 0.08 cos 2t, t = 2 pi k / n.
 *
 * x[0] is multiplied by -2^-56, which is what the rounded coefficients sum to.
 * Source: F. J. Harris, On the use of windows for harmonic analysis with the discrete Fourier
 * transform, Proceedings of the IEEE 66 (1978).
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus BkmanWin(double* x, int32_t n);

/**
 * Exact Blackman window, periodic: x[k] *= (7938 - 9240 cos t + 1430 cos 2t) / 18608,
 * t = 2 pi k / n.
 *
 * Source: F. J. Harris, On the use of windows for harmonic analysis with the discrete Fourier
 * transform, Proceedings of the IEEE 66 (1978).
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus ExBkmanWin(double* x, int32_t n);

/**
 * Three-term Blackman-Harris window, periodic: x[k] *= 0.42323 - 0.49755 cos t + 0.07922 cos 2t,
 * t = 2 pi k / n.
 *
 * Source: F. J. Harris, On the use of windows for harmonic analysis with the discrete Fourier
 * transform, Proceedings of the IEEE 66 (1978).
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus BlkHarrisWin(double* x, int32_t n);

/**
 * Flat-top window, periodic, which reads the amplitude of a tone between bins:
 * x[k] *= 0.28106388 - 0.52089717 cos t + 0.19803897 cos 2t, t = 2 pi k / n, with more digits.
 * Its edge value is negative, -0.0418.
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus FlatTopWin(double* x, int32_t n);

/**
 * General cosine-sum window, periodic: x[k] *= a[0] - a[1] cos t + a[2] cos 2t - ...,
 * t = 2 pi k / n.
 *
 * Source: A. H. Nuttall, Some windows with very good sidelobe behavior, IEEE Transactions on
 * Acoustics, Speech, and Signal Processing 29 (1981).
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @param[in] a m coefficients, without the alternating signs
 * @param[in] m number of coefficients
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1 or m < 1
 */
FATHOM_API AnalysisStatus GenCosWin(double* x, int32_t n, const double* a, int32_t m);

/**
 * Kaiser-Bessel window, periodic: x[k] *= I0(beta sqrt(1 - t^2)) / I0(beta), t = 1 - 2 k / n.
 *
 * I0, the modified Bessel function, is summed until a term is at most 1e-8 and over at most 25
 * terms, an error of less than 1e-8 of I0 for |beta| up to 20.
 * Source: J. F. Kaiser, Nonrecursive digital filter design using the I0-sinh window function, IEEE
 * International Symposium on Circuits and Systems (1974).
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @param[in] beta shape: 0 is rectangular; larger lowers the sidelobes and widens the main lobe
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus KsrWin(double* x, int32_t n, double beta);

/**
 * Triangle window: x[0] = 0; x[k] and x[n - k] *= k / h with h = n / 2 rounded down.
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus TriWin(double* x, int32_t n);

/**
 * Cosine taper on a tenth of the samples at each end, m = n / 10 rounded down:
 * x[0] = x[n - 1] = 0; x[j] and x[n - 1 - j] *= sin(pi j / (2 m))^2 for j < m. Fewer than 10
 * samples stay as they are.
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @return FATHOM_OK for every n
 */
FATHOM_API AnalysisStatus CosTaperedWin(double* x, int32_t n);

/**
 * Exponential window: x[k] *= exp(k a) with a = ln(finalValue) / (n - 1), from 1 to finalValue.
 *
 * @param[in,out] x n samples, each replaced by its product with the window
 * @param[in] n number of samples
 * @param[in] finalValue factor of the last sample; at or below 0 it gives zeros or NaN after the
 *     first
 * @return FATHOM_OK; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n < 2
 */
FATHOM_API AnalysisStatus ExpWin(double* x, int32_t n, double finalValue);

/**
 * Force window: keeps the first m = n dutyCycle / 100 samples, rounded towards zero, and sets the
 * others to 0.
 *
 * @param[in,out] x n samples
 * @param[in] n number of samples
 * @param[in] dutyCycle percent to keep; above 100 keeps all, below 0 or NaN keeps none
 * @return FATHOM_OK; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n < 2
 */
FATHOM_API AnalysisStatus ForceWin(double* x, int32_t n, double dutyCycle);

/* ---- Scaled window (src/window/scaled.cpp) --------------------------------------------------- */

/**
 * Applies a window and divides by its coherent gain, so that the amplitude of a tone is kept.
 *
 * Sources: as for the single windows; the seven-term sum: H.-H. Albrecht, A family of cosine-sum
 * windows for high-resolution measurements, IEEE ICASSP (2001).
 *
 * @param[in,out] x n samples, each multiplied by the window, then by 1 / (coherent gain)
 * @param[in] n number of samples; 0 writes the properties only
 * @param[in] window a FathomWindow
 * @param[out] properties equivalent noise bandwidth and coherent gain of the window
 * @return FATHOM_OK; FATHOM_ERR_NEGATIVE_SAMPLES if n < 0
 */
FATHOM_API AnalysisStatus ScaledWindow(double* x, int32_t n, int32_t window,
                                       WindowProperties* properties);

/* ---- Transforms (src/spectral/fft.cpp, real_fft.cpp, hartley.cpp) ---------------------------- */

/**
 * Fourier transform of complex data, in place: X[k] = sum over m of x[m] exp(-i 2 pi k m / n), not
 * scaled, in natural order.
 *
 * Split-radix, decimation in frequency (P. Duhamel and H. Hollmann, "Split radix FFT algorithm",
 * Electronics Letters, 1984). No memory is allocated.
 *
 * @param[in,out] re n real parts
 * @param[in,out] im n imaginary parts
 * @param[in] n length, a power of two
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is not a power of
 *         two
 */
FATHOM_API AnalysisStatus FFT(double* re, double* im, int32_t n);

/**
 * Inverse of FFT, in place: x[m] = (1/n) sum over k of X[k] exp(+i 2 pi k m / n).
 *
 * @param[in,out] re n real parts
 * @param[in,out] im n imaginary parts
 * @param[in] n length, a power of two
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is not a power of
 *         two
 */
FATHOM_API AnalysisStatus InvFFT(double* re, double* im, int32_t n);

/**
 * Fourier transform of real data, in place: all n bins of X[k] = sum over m of x[m] exp(-i 2 pi k m
 * / n), of which bin n - k is the conjugate of bin k.
 *
 * Split-radix for real data (H. V. Sorensen, D. L. Jones, M. T. Heideman and C. S. Burrus,
 * "Real-valued fast Fourier transform algorithms", IEEE Transactions on Acoustics, Speech and
 * Signal Processing, 1987). No memory is allocated.
 *
 * @param[in,out] re n samples in, n real parts out
 * @param[out] im n imaginary parts; never read
 * @param[in] n length, a power of two
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is not a power of
 *         two
 */
FATHOM_API AnalysisStatus ReFFT(double* re, double* im, int32_t n);

/**
 * Inverse of ReFFT, in place, including the factor 1/n: the real samples of a spectrum whose bin
 * n - k is the conjugate of bin k.
 *
 * Only re[0] to re[n/2] and im[n/2 + 1] to im[n - 1] are read. The samples are the inverse Hartley
 * transform (see InvFHT) of Re X[k] - Im X[k].
 *
 * @param[in,out] re n real parts in, n samples out
 * @param[in] im n imaginary parts, not changed
 * @param[in] n length, a power of two
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is not a power of
 *         two
 */
FATHOM_API AnalysisStatus ReInvFFT(double* re, const double* im, int32_t n);

/**
 * Discrete Hartley transform, in place: H[k] = sum over m of x[m] (cos(2 pi k m / n) + sin(2 pi k m
 * / n)), not scaled, in natural order.
 *
 * Radix 2, decimation in frequency (R. N. Bracewell, "The fast Hartley transform", Proceedings of
 * the IEEE, 1984). No memory is allocated.
 *
 * @param[in,out] x n samples in, n coefficients out
 * @param[in] n length, a power of two
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is not a power of
 *         two
 */
FATHOM_API AnalysisStatus FHT(double* x, int32_t n);

/**
 * Inverse of FHT, in place: the same sum, scaled by 1/n.
 *
 * @param[in,out] x n coefficients in, n samples out
 * @param[in] n length, a power of two
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is not a power of
 *         two
 */
FATHOM_API AnalysisStatus InvFHT(double* x, int32_t n);

/* ---- Spectra (src/spectral/spectra.cpp) ------------------------------------------------------ */

/**
 * Two-sided power spectrum |X[k]|^2 / n^2, with X[k] = sum over m of x[m] exp(-i 2 pi k m / n).
 *
 * @param[in,out] x n samples in, n powers out, those of k and n - k equal
 * @param[in] n a power of two
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is none
 */
FATHOM_API AnalysisStatus Spectrum(double* x, int32_t n);

/**
 * One-sided power spectrum |X[0]|^2 / n^2, 2 |X[k]|^2 / n^2: the mean square of the part of the
 * signal that lies in each bin.
 *
 * A sine of amplitude A on a bin gives A^2 / 2 there. In place: `power` may be x.
 *
 * @param[in] x n samples
 * @param[in] n a power of two
 * @param[in] dt sampling interval in seconds, not checked
 * @param[out] power n / 2 values, bins 0 to n / 2 - 1; none for n = 1
 * @param[out] df spacing of the bins, 1 / (n dt), in hertz
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is none;
 *         FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus AutoPowerSpectrum(const double* x, int32_t n, double dt, double* power,
                                            double* df);

/**
 * Two-sided cross spectrum conj(X[k]) Y[k] / N^2, where N is n rounded up to a power of two and
 * both records are continued with zeros.
 *
 * In place: each output may be either input if that has room for N values.
 *
 * @param[in] x n samples
 * @param[in] y n samples
 * @param[in] n number of samples, at least 1; any
 * @param[out] re real parts, N values
 * @param[out] im imaginary parts, N values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY, always if n > 2^30
 */
FATHOM_API AnalysisStatus CrossSpectrum(const double* x, const double* y, int32_t n, double* re,
                                        double* im);

/**
 * One-sided cross power spectrum as magnitude and phase: |Sxy[0]| and 2 |Sxy[k]|, with
 * Sxy[k] = conj(X[k]) Y[k] / n^2.
 *
 * In place: each output may be either input.
 *
 * @param[in] x n samples
 * @param[in] y n samples
 * @param[in] n a power of two
 * @param[in] dt sampling interval in seconds, not checked
 * @param[out] magnitude bins 0 to n / 2 - 1, n / 2 values; one for n = 1
 * @param[out] phase by which y is ahead of x, in radians, as many values
 * @param[out] df spacing of the bins, 1 / (n dt), in hertz
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is none;
 *         FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus CrossPowerSpectrum(const double* x, const double* y, int32_t n, double dt,
                                             double* magnitude, double* phase, double* df);

/**
 * One-sided amplitude and phase: |X[0]| / n and sqrt(2) |X[k]| / n, the RMS amplitude of each bin.
 *
 * In place: each output may be x.
 *
 * @param[in] x n samples
 * @param[in] n a power of two
 * @param[in] unwrap nonzero to remove the jumps of the phase as UnWrap1D does
 * @param[in] dt sampling interval in seconds, not checked
 * @param[out] amplitude bins 0 to n / 2 - 1, n / 2 values; one for n = 1
 * @param[out] phase of the bins' cosines, in radians, as many values
 * @param[out] df spacing of the bins, 1 / (n dt), in hertz
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is none;
 *         FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus AmpPhaseSpectrum(const double* x, int32_t n, int32_t unwrap, double dt,
                                           double* amplitude, double* phase, double* df);

/* ---- Network functions (src/spectral/network.cpp) -------------------------------------------- */

/**
 * Transfer function H[k] = Y[k] / X[k] of one record, as magnitude and phase.
 *
 * A bin in which the stimulus is zero is infinite or NaN. In place: each output may be either
 * input.
 *
 * @param[in] stimulus n samples
 * @param[in] response n samples
 * @param[in] n a power of two
 * @param[in] dt sampling interval in seconds, not checked
 * @param[out] magnitude bins 0 to n / 2 - 1, n / 2 values; one for n = 1
 * @param[out] phase in radians, as many values
 * @param[out] df spacing of the bins, 1 / (n dt), in hertz
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is none;
 *         FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus TransferFunction(const double* stimulus, const double* response,
                                           int32_t n, double dt, double* magnitude, double* phase,
                                           double* df);

/**
 * Impulse response: the inverse transform of H[k] = Y[k] / X[k] of one record, taken as one period.
 *
 * If a bin of the stimulus is zero, every sample is infinite or NaN. In place: `impulse` may be
 * either input.
 *
 * @param[in] stimulus n samples
 * @param[in] response n samples
 * @param[in] n a power of two
 * @param[out] impulse n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_POWER_OF_TWO if n is none;
 *         FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus ImpulseResponse(const double* stimulus, const double* response, int32_t n,
                                          double* impulse);

/**
 * Network functions averaged over frames: frequency response H1 = Sxy / Sxx, its impulse response,
 * cross power and coherence |Sxy|^2 / (Sxx Syy), where S are sums over the frames.
 *
 * The average suppresses noise in the response that has nothing to do with the stimulus; with one
 * frame the coherence is always 1. A bin without power is infinite or NaN. In place: each output
 * may be either input.
 *
 * J. S. Bendat and A. G. Piersol, Random Data: Analysis and Measurement Procedures, Wiley, 1971.
 *
 * @param[in] stimulus n x frames samples, frame after frame
 * @param[in] response n x frames samples, frame after frame
 * @param[in] n size of a frame, a power of two
 * @param[in] frames number of frames, at least 1
 * @param[in] dt sampling interval in seconds, not checked
 * @param[out] crossMagnitude |Sxy| / frames of bin 0, twice that of bins 1 to n / 2 - 1; n / 2
 *             values, one for n = 1
 * @param[out] crossPhase in radians, as many values
 * @param[out] magnitude |H1| of bins 0 to n / 2 - 1, n / 2 values; none for n = 1
 * @param[out] phase of H1 in radians, n / 2 values; none for n = 1
 * @param[out] coherence between 0 and 1, n / 2 values, one for n = 1
 * @param[out] impulse n samples
 * @param[out] df spacing of the bins, 1 / (n dt), in hertz
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1 or frames < 1; FATHOM_ERR_POWER_OF_TWO if n is
 *         none; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus NetworkFunctions(const double* stimulus, const double* response,
                                           int32_t n, int32_t frames, double dt,
                                           double* crossMagnitude, double* crossPhase,
                                           double* magnitude, double* phase, double* coherence,
                                           double* impulse, double* df);

/* ---- Convolution and correlation (src/spectral/convolve.cpp, deconvolve.cpp) ---------------- */

/**
 * Linear convolution: result[k] = sum of x[i] y[k - i], over the products that exist, i ascending.
 *
 * Summed directly, product by product from 0, so that an infinity or a NaN reaches those results
 * only that have it in a product. Not in place: `result` must not overlap an input.
 *
 * @param[in] x nx samples
 * @param[in] nx number of samples of x, at least 1
 * @param[in] y ny samples
 * @param[in] ny number of samples of y, at least 1
 * @param[out] result nx + ny - 1 values; the sum may be beyond 32 bits
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if nx < 1 or ny < 1
 */
FATHOM_API AnalysisStatus Convolve(const double* x, int32_t nx, const double* y, int32_t ny,
                                   double* result);

/**
 * Cross-correlation: result[k] = sum of x[m] y[m + k - (nx - 1)], over the products that exist, m
 * ascending.
 *
 * The lag of y behind x, k - (nx - 1), runs from -(nx - 1) to ny - 1; nothing is normalised. It is
 * the convolution of the reversed x with y, and summed as directly. Not in place: `result` must not
 * overlap an input.
 *
 * @param[in] x nx samples
 * @param[in] nx number of samples of x, at least 1
 * @param[in] y ny samples
 * @param[in] ny number of samples of y, at least 1
 * @param[out] result nx + ny - 1 values; lag 0 is element nx - 1
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if nx < 1 or ny < 1
 */
FATHOM_API AnalysisStatus Correlate(const double* x, int32_t nx, const double* y, int32_t ny,
                                    double* result);

/**
 * Undoes a convolution: the samples that `signal` was made of by convolving them with `kernel`.
 *
 * It is the inverse transform of S[k] / K[k], the spectra of both padded with zeros to N, the power
 * of two at or above ns. Exact to rounding if `signal` is a convolution with `kernel`; if a bin of
 * the kernel is zero, every sample is infinite or NaN. In place: `result` may be either input if
 * that has room for its values.
 *
 * @param[in] signal ns samples
 * @param[in] ns number of samples of the signal, at least 1
 * @param[in] kernel nk samples
 * @param[in] nk number of samples of the kernel, 1 to ns + 1
 * @param[out] result ns - nk + 1 samples; none for nk = ns + 1
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if ns < 1 or nk < 1; FATHOM_ERR_ARRAY_SIZE if
 *         nk > ns + 1; FATHOM_ERR_MEMORY, always if ns > 2^30
 */
FATHOM_API AnalysisStatus Deconvolve(const double* signal, int32_t ns, const double* kernel,
                                     int32_t nk, double* result);

/* ---- Units of spectra (src/spectral/units.cpp) ---------------------------------------------- */

/**
 * A one-sided spectrum in the unit in which it is to be shown, and the label of that unit.
 *
 * The values become powers p (amplitudes are squared), p / (noiseBandwidth df) for a density, and
 * twice that in all bins but bin 0 for peaks; then sqrt|p| for an amplitude on the linear scale,
 * 10 log10|p| on the dB scale and 10 log10(1.6436554898093358 |p|) on the dBm scale, where peaks
 * are as RMS. A scale that is none of the three leaves p. Magnitudes are not touched by the unit:
 * the linear scale keeps them, any other takes 20 log10|value|. On a logarithmic scale zero is
 * minus infinity. In place: `converted` may be `spectrum`.
 *
 * The label is the base unit's text between "dB", on the dB scale, and one of these:
 *
 *     unit                  linear, other    dB
 *     0, 1   amplitude      rms, pk          rms, pk
 *     2, 3   power          rms^2, pk^2      rms, pk
 *     4, 5   its density    rms/rtHz, pk/rtHz
 *     6, 7   its density    rms^2/Hz, pk^2/Hz
 *
 * So V becomes Vrms, dBVrms or Vpk^2/Hz. The label of the dBm scale is "dBm"; that of magnitudes is
 * empty on the linear scale and otherwise "dB": the base unit is dropped.
 *
 * @param[in] spectrum n values
 * @param[in] n number of bins, at least 1
 * @param[in] kind a FathomSpectrumKind
 * @param[in] scale a FathomScale
 * @param[in] unit a sum of FathomUnit; outside 0 to 7 its lowest three bits count, and the label
 *            gets no suffix
 * @param[in] noiseBandwidth of the window that was applied, in bins: 1 for none, 1.5 for HanWin;
 *            not checked, as df
 * @param[in] df spacing of the bins in hertz
 * @param[in] reserved not used
 * @param[out] converted n values
 * @param[in,out] label NUL-terminated text of the base unit in, label out; room for 11 characters
 *                more than the text has, its terminator included
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY, with the values converted
 *         but the label as it was
 */
FATHOM_API AnalysisStatus SpectrumUnitConversion(const double* spectrum, int32_t n, int32_t kind,
                                                 int32_t scale, int32_t unit, double noiseBandwidth,
                                                 double df, double reserved, double* converted,
                                                 char* label);

/* ---- Power, frequency and harmonics (src/measure/power_frequency.cpp, harmonic.cpp) ---------- */

/**
 * Power and frequency of one peak, from the bins j of a band around it: sum of s[j] /
 * noiseBandwidth, and the centre of that power, df sum of j s[j] / sum of s[j].
 *
 * The band has `span` bins, at least 3, and one more if that is even; bins outside the spectrum
 * are left out. A band without power has the frequency of its middle bin.
 *
 * @param[in] spectrum n powers, as from AutoPowerSpectrum
 * @param[in] n number of bins, at least 1
 * @param[in] searchFrequency of the band's middle bin, rounded down, in the unit of df; the largest
 *            bin is taken if it is negative, NaN or past the last bin
 * @param[in] noiseBandwidth of the window that was applied, in bins: 1 for none, 1.5 for HanWin
 * @param[in] reserved not used
 * @param[in] df spacing of the bins
 * @param[in] span width of the band in bins
 * @param[out] peakFrequency in the unit of df
 * @param[out] peakPower in the unit of the spectrum
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus PowerFrequencyEstimate(const double* spectrum, int32_t n,
                                                 double searchFrequency, double noiseBandwidth,
                                                 double reserved, double df, int32_t span,
                                                 double* peakFrequency, double* peakPower);

/**
 * Amplitudes and frequencies of the harmonics of the largest tone, and total harmonic distortion
 * sqrt(a[1]^2 + a[2]^2 + ...) / a[0] with and without noise, from a power spectrum.
 *
 * The first 2 L bins of the spectrum are cleared, where L is half the main lobe's width rounded up;
 * the largest bin that is left, k, is the fundamental, and harmonic h is looked for in the 2 L + 1
 * bins around h k. Its amplitude is corrected for its place between two bins, by the ratio of the
 * two largest. Distortion plus noise takes all power but that of the 2 L - 1 bins around k.
 *
 * Take care: where the bins on both sides of a peak differ by less than about 1e-7, as for a tone
 * exactly on a bin or a very small one, the amplitude returned is the bin's power, not its square
 * root. A tone exactly midway between two bins can give an infinite amplitude. The skirts of a tone
 * between two bins count as noise. The results for windows 3 to 7 are biased, because the
 * correction uses another window's shape:
 *
 *     window   noise bandwidth and main lobe of    L    correction for
 *       0      rectangular                         2    rectangular
 *       1      Hanning                             2    Hanning
 *       2      Hamming                             2    Hamming
 *       3      exact Blackman                      3    Blackman-Harris
 *       4      Blackman                            3    exact Blackman
 *       5      flat top                            4    Blackman
 *       6      four-term Blackman-Harris           3    flat top
 *       7      seven-term Blackman-Harris          4    four-term Blackman-Harris
 *
 * The corrections suppose a spectrum divided by the square of the window's mean. Calls on disjoint
 * data may run at the same time.
 *
 * D. C. Rife and G. A. Vincent, Use of the discrete Fourier transform in the measurement of
 * frequencies and levels of tones, Bell System Technical Journal 49, 1970.
 *
 * @param[in,out] spectrum n powers, as from AutoPowerSpectrum; the first 2 L are cleared, also when
 *                a later check fails
 * @param[in] n number of bins, at least 1
 * @param[in] fftSize number of samples that the spectrum was made from; 2 n if it is below 1
 * @param[in] harmonics how many to measure, the fundamental included; those above half the sampling
 *            rate are 0. None are measured, and the distortions are infinite or NaN, if it is
 *            below 1
 * @param[in] window 0 to 7, as above
 * @param[in] samplingRate in hertz
 * @param[in] fundamental frequency in hertz; it decides how many harmonics lie below half the
 *            sampling rate (none if it is negative or NaN), not which bin is the fundamental,
 *            unless fftSize is below 4
 * @param[out] amplitudes RMS amplitudes, `harmonics` values
 * @param[out] frequencies in hertz, `harmonics` values
 * @param[out] distortion total harmonic distortion in percent
 * @param[out] distortionPlusNoise total harmonic distortion plus noise in percent
 * @return FATHOM_OK; FATHOM_ERR_SELECTION if window is not 0 to 7; FATHOM_ERR_NO_SAMPLES if n < 1;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES if no bin that is left is above 0 (silence);
 *         FATHOM_ERR_INDEX_LENGTH if a harmonic's bins reach past the spectrum;
 *         FATHOM_ERR_MEMORY. The last two leave the harmonics before it written. FATHOM_OK, but no
 *         result is written, if memory fails at the second request
 */
FATHOM_API AnalysisStatus HarmonicAnalyzer(double* spectrum, int32_t n, int32_t fftSize,
                                           int32_t harmonics, int32_t window, double samplingRate,
                                           double fundamental, double* amplitudes,
                                           double* frequencies, double* distortion,
                                           double* distortionPlusNoise);

/* ---- Pulse parameters, AC and DC (src/measure/pulse.cpp, acdc.cpp) -------------------------- */

/**
 * Levels, times and slew rate of the first positive pulse of a record. Times are in samples.
 *
 * Base and top are the levels at which the samples gather: between the smallest and the largest
 * sample lie 25 intervals of Histogram; the centre of the fullest of the lower 12 is the base and
 * that of the fullest of the upper 12 is the top, of equally full ones the outermost. Crossings are
 * looked for in one pass from the first sample on: of 0.5, then 0.9 of the step from base to top on
 * the way up, of 0.5, then 0.1 on the way down. One that is not found is at n, and measures up to n
 * are no failure.
 *
 * A NaN is no extreme and is in no interval, but ends the search for a crossing where it stands. If
 * all samples are equal, or the first is a NaN, base and top are the first sample.
 *
 * IEEE Std 181-1977, Standard on Pulse Measurement and Analysis by Objective Techniques.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[out] amplitude top - base
 * @param[out] highReference 0.9 amplitude; this and the next two are heights above the base
 * @param[out] middleReference 0.5 amplitude
 * @param[out] lowReference 0.1 amplitude
 * @param[out] top in the unit of x
 * @param[out] base in the unit of x
 * @param[out] overshoot largest sample - top
 * @param[out] preshoot base - smallest sample
 * @param[out] delay index of the first sample not below the middle level
 * @param[out] width samples from there to the first that is not above the middle level once the
 *             high level was reached
 * @param[out] riseTime samples from the last one below the low level ahead of the delay, or the
 *             first sample if there is none, to the one at which the high level is reached
 * @param[out] fallTime samples from the last one above the high level within the width, or the one
 *             that reached it if none is above, to the first past the width not above the low level
 * @param[out] slewRate (highReference - lowReference) / riseTime per sample; 1e30 for a rise time
 *             of 0
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus PulseParam(const double* x, int32_t n, double* amplitude,
                                     double* highReference, double* middleReference,
                                     double* lowReference, double* top, double* base,
                                     double* overshoot, double* preshoot, int32_t* delay,
                                     int32_t* width, int32_t* riseTime, int32_t* fallTime,
                                     double* slewRate);

/**
 * DC level and RMS level of the AC part of a record that need not hold whole periods: with d the
 * mean, and m and v the mean and variance of (x[i] - d) sin(pi i / n)^2, dc = d + 2 m and
 * ac = sqrt((v - m^2 / 2) 8 / 3).
 *
 * The root is of a rounding error where there is no AC, and NaN where that is below zero: a
 * constant's AC may be either. At least two periods should be in the record.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least 1
 * @param[out] ac RMS level of the AC part, in the unit of x
 * @param[out] dc DC level, in the unit of x
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus ACDCEstimator(const double* x, int32_t n, double* ac, double* dc);

/* ---- Peak detection (src/measure/peaks.cpp) ------------------------------------------------- */

/** What PeakDetector looks for. */
enum FathomPolarity {
  FATHOM_POLARITY_PEAKS = 0,  /**< maxima above the threshold */
  FATHOM_POLARITY_VALLEYS = 1 /**< minima below the threshold */
};

/**
 * Peaks or valleys of a signal that may come in blocks: location, value and second derivative of
 * the extrema of quadratics fitted by least squares.
 *
 * Every run of `width` consecutive samples has its quadratic. A run sees a peak if its quadratic
 * has a maximum that lies between the run's first and last sample. Neighbouring runs see the same
 * peak: all consecutive runs whose quadratics have a second derivative below zero form a stretch,
 * and a stretch holds at most one peak, as two maxima have a run that is curved the other way
 * between them. Of the runs of a stretch, the one that sees its peak nearest to its own centre
 * gives the results, the earlier if two are as near. They are reported
 *
 * - if the value is above the threshold, and
 * - if the location lies between the centres of the two runs, curved the other way, that bound the
 *   stretch: the runs around a location farther off are nearer to it and do not see it.
 *
 * A second derivative of exactly zero, as where samples are equal, neither ends a stretch nor sees
 * a peak; a plateau is one peak, at its rising edge. A run with a NaN or an infinity sees none and
 * ends the stretch, which is then not bounded on that side, as at either end of the signal. Valleys
 * are the peaks of the signal with its sign reversed.
 *
 * A peak is reported when its stretch has ended, so its location may lie before the block of the
 * call that reports it. However the signal is cut into blocks, the same peaks are found, with the
 * same bits.
 *
 * Between calls the library keeps the width, polarity and threshold of the call that began the
 * signal, and at most width - 1 samples; it releases them at the end of the data and when it is
 * unloaded. There is one such state: calls must not run at the same time, and blocks of two signals
 * must not alternate.
 *
 * A. Savitzky and M. J. E. Golay, Smoothing and differentiation of data by simplified least squares
 * procedures, Analytical Chemistry 36, 1964.
 *
 * @param[in] x the next n samples
 * @param[in] n at least 1; 0, with x not used, is allowed with endOfData
 * @param[in] threshold in the unit of x. It is used when a signal begins; so are width and
 *            polarity, which are checked in every call
 * @param[in] width of the runs in samples, at least 3: about the width of the peaks at half their
 *            height, or less; a larger one suppresses more noise and merges peaks that are close
 * @param[in] polarity a FathomPolarity
 * @param[in] initialize nonzero: x begins a signal, and what was kept of another is dropped. The
 *            first call, and the first after the end of data, begin one in any case
 * @param[in] endOfData nonzero: the signal ends with x
 * @param[out] locations in samples from the signal's first sample, ascending, with fractions: a new
 *             array of *count values, to be released with FreeAnalysisMem; null if *count is 0
 * @param[out] amplitudes of the quadratics at the locations: such an array, in the unit of x
 * @param[out] secondDerivatives of the quadratics: such an array, in the unit of x per sample
 *            squared
 * @param[out] count peaks that this call reports
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1, but for n = 0 with endOfData;
 *         FATHOM_ERR_SELECTION if width < 3; FATHOM_ERR_SELECTION if polarity is not 0 or 1;
 *         FATHOM_ERR_MEMORY, and the call may be repeated: a call that fails changes nothing
 */
FATHOM_API AnalysisStatus PeakDetector(const double* x, int32_t n, double threshold, int32_t width,
                                       int32_t polarity, int32_t initialize, int32_t endOfData,
                                       double** locations, double** amplitudes,
                                       double** secondDerivatives, int32_t* count);

/* ---- IIR filters: record and filtering (src/filter/iir/record.cpp, cascade.cpp, direct.cpp) - */

/**
 * A new filter record for a cascade, its delay state and its coefficients zero: one of the
 * ..._CascadeCoef routines fills it.
 *
 * Header, coefficients and state are one heap block.
 *
 * @param[in] type a FathomBand
 * @param[in] order of the lowpass prototype, at least 1; a band filter's transfer function has
 *            twice that degree
 * @return the record, to be released with FreeIIRFilterPtr; null if order < 1, if type is none of
 *         the four, if a count of coefficients does not fit in int32_t, or without memory
 */
FATHOM_API IIRFilterPtr AllocIIRFilterPtr(int32_t type, int32_t order);

/**
 * Releases a filter record with its coefficients and state.
 *
 * @param[in] record from AllocIIRFilterPtr, or null, which is ignored
 */
FATHOM_API void FreeIIRFilterPtr(IIRFilterPtr record);

/**
 * Makes the next IIRCascadeFiltering begin from zero state: to be called between unrelated signals.
 *
 * @param[in,out] record of which the reset flag is set; null is ignored
 * @return FATHOM_OK
 */
FATHOM_API AnalysisStatus ResetIIRFilter(IIRFilterPtr record);

/**
 * Runs samples through the sections of a record, which keeps its state: a signal filtered block by
 * block gives the output of one call.
 *
 * In each section, the first of which takes x: w[i] = x[i] - a1 w[i-1] - ... - am w[i-m] and
 * y[i] = b0 w[i] + b1 w[i-1] + ... + bm w[i-m], summed in this order (direct form II, as in A. V.
 * Oppenheim and R. W. Schafer, Digital Signal Processing, 1975). In place: y may be x.
 *
 * @param[in] x the next n samples
 * @param[in] n at least 1
 * @param[in,out] record whose counts must be those that AllocIIRFilterPtr gave it; its type is not
 *                used, the width of its sections is na divided by their number
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_FILTER_RECORD if record is null, if order < 1, if na is not 2 or 4
 *         for each section, or if nb or stateCount does not agree with it; FATHOM_ERR_NO_SAMPLES if
 *         n < 1, after a reset that was asked for has cleared the state
 */
FATHOM_API AnalysisStatus IIRCascadeFiltering(const double* x, int32_t n, IIRFilterPtr record,
                                              double* y);

/**
 * Filters with one pair of coefficient arrays: a[0] y[i] = b[0] x[i] + b[1] x[i-1] + ...
 * - a[1] y[i-1] - a[2] y[i-2] - ..., each sum from the oldest sample to the newest.
 *
 * The caller holds the state, zero before a signal begins, so that a signal filtered block by block
 * gives the output of one call. Without feedback (a or outputs null, or na < 1) the filter is FIR,
 * and a and outputs are not used. In place: y may be x.
 *
 * @param[in] x the next n samples
 * @param[in] n at least 1
 * @param[in] a na feedback coefficients, or null; a[0] is divided by, zero or not
 * @param[in,out] outputs the last na - 1 samples of y, the oldest first, or null
 * @param[in] na number of feedback coefficients
 * @param[in] b nb feed-forward coefficients
 * @param[in,out] inputs the last nb - 1 samples of x, the oldest first; not used if nb is 1
 * @param[in] nb at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if nb < 1 or n < 1
 */
FATHOM_API AnalysisStatus IIRFiltering(const double* x, int32_t n, const double* a, double* outputs,
                                       int32_t na, const double* b, double* inputs, int32_t nb,
                                       double* y);

/**
 * The coefficients of one direct form, for IIRFiltering, that is equivalent to a record's cascade:
 * the products of its sections' polynomials.
 *
 * L coefficients each: order + 1 for lowpass and highpass, 2 order + 1 for band filters. The longer
 * the form, the less exactly its coefficients hold the poles: above order 8 or so, and earlier for
 * narrow bands, filter with the cascade. Only type, order, na, nb and the coefficients are used of
 * the record. Both arrays also serve as scratch.
 *
 * @param[in] record a filled record
 * @param[out] a L feedback coefficients, a[0] = 1; not in place with the record's
 * @param[in] aCapacity room in a, at least L
 * @param[out] b L feed-forward coefficients
 * @param[in] bCapacity room in b, at least L
 * @return FATHOM_OK; FATHOM_ERR_FILTER_RECORD if record is null; FATHOM_ERR_ORDER if its order < 1;
 *         FATHOM_ERR_SELECTION if its type is not a FathomBand; FATHOM_ERR_FILTER_RECORD if na or
 *         nb is not that of the type and order, or if a capacity is below L; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus CascadeToDirectCoef(IIRFilterPtr record, double* a, int32_t aCapacity,
                                              double* b, int32_t bCapacity);

/* ---- IIR filters: Butterworth (src/filter/iir/butterworth.cpp) ------------------------------ */

/**
 * Designs a Butterworth filter as a cascade: |H|^2 = 1 / (1 + v^(2 order)), where v is the warped
 * frequency tan(pi f / fs) relative to the cutoff's; at the cutoff |H| is 1 / sqrt(2), about -3 dB.
 *
 * By the bilinear transform, with the edges warped beforehand so that they come out exactly. Band
 * filters replace v by (v^2 - P) / (v B), P the product and B the difference of the warped edges,
 * or by the inverse of that. The state and the reset flag stay as they are, so a filter may be
 * redesigned within a signal.
 *
 * S. Butterworth, On the theory of filter amplifiers, Experimental Wireless and the Wireless
 * Engineer 7, 1930.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low cutoff, or lower cutoff of a band filter, above 0, in the unit of fs
 * @param[in] high upper cutoff, above low, at most fs / 2; ignored for lowpass and highpass, which
 *            take (fs / 2 + low) / 2 in its place
 * @param[in,out] record that says type and order; its coefficients are written. A type that is not
 *                a FathomBand is let pass, and nothing is written
 * @return FATHOM_OK; FATHOM_ERR_FILTER_RECORD if record is null; FATHOM_ERR_ORDER if the order < 1;
 *         FATHOM_ERR_BAND if low, then high, is not above 0, if low is not below high (so too for a
 *         lowpass or highpass cutoff of fs / 2 and more), or if fs is not above 0;
 *         FATHOM_ERR_NYQUIST if high, then low, is above fs / 2; FATHOM_ERR_FILTER_RECORD if na or
 *         nb is too small for type and order
 */
FATHOM_API AnalysisStatus Bw_CascadeCoef(double fs, double low, double high, IIRFilterPtr record);

/**
 * Designs a Butterworth filter, as Bw_CascadeCoef, in direct form for IIRFiltering.
 *
 * @param[in] type a FathomBand
 * @param[in] order of the lowpass prototype, at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low cutoff, or lower cutoff of a band filter, above 0, in the unit of fs
 * @param[in] high upper cutoff, above low, at most fs / 2; ignored for lowpass and highpass
 * @param[out] a L feedback coefficients, a[0] = 1: order + 1 for lowpass and highpass, 2 order + 1
 *             for band filters
 * @param[in] aCapacity room in a, at least L
 * @param[out] b L feed-forward coefficients
 * @param[in] bCapacity room in b, at least L
 * @return FATHOM_OK; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND if low, high or fs is not above
 *         0, or if low is not below high (for lowpass and highpass: the cutoff not below fs / 2);
 *         FATHOM_ERR_NYQUIST if high is above fs / 2; FATHOM_ERR_ARRAY_SIZE if a capacity is below
 *         L; FATHOM_ERR_SELECTION if type is not a FathomBand; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus Bw_Coef(int32_t type, int32_t order, double fs, double low, double high,
                                  double* a, int32_t aCapacity, double* b, int32_t bCapacity);

/**
 * Filters n samples, from zero state, by a Butterworth lowpass filter.
 *
 * The sections of Bw_CascadeCoef, one after another in direct form I, their numerators as g (x[i] +
 * 2 x[i-1] + x[i-2]). In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff above 0, at most fs / 2: |H| there is 1 / sqrt(2)
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_NYQUIST if cutoff is above fs / 2
 */
FATHOM_API AnalysisStatus Bw_LPF(const double* x, int32_t n, double fs, double cutoff,
                                 int32_t order, double* y);

/**
 * Filters n samples, from zero state, by a Butterworth highpass filter.
 *
 * The sections of Bw_CascadeCoef, one after another in direct form I, their numerators as g (x[i] -
 * 2 x[i-1] + x[i-2]). In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff above 0, at most fs / 2: |H| there is 1 / sqrt(2)
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_NYQUIST if cutoff is above fs / 2
 */
FATHOM_API AnalysisStatus Bw_HPF(const double* x, int32_t n, double fs, double cutoff,
                                 int32_t order, double* y);

/**
 * Filters n samples, from zero state, by a Butterworth bandpass filter.
 *
 * The sections of Bw_CascadeCoef, one after another in direct form I, their numerators as g (x[i] -
 * 2 x[i-2] + x[i-4]). In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower cutoff, above 0
 * @param[in] high upper cutoff, above low, at most fs / 2; |H| at both is 1 / sqrt(2)
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_NYQUIST if
 *         high is above fs / 2
 */
FATHOM_API AnalysisStatus Bw_BPF(const double* x, int32_t n, double fs, double low, double high,
                                 int32_t order, double* y);

/**
 * Filters n samples, from zero state, by a Butterworth bandstop filter.
 *
 * The sections of Bw_CascadeCoef, one after another in direct form I, their numerators symmetric.
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower cutoff, above 0
 * @param[in] high upper cutoff, above low, at most fs / 2; |H| at both is 1 / sqrt(2)
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_NYQUIST if
 *         high is above fs / 2
 */
FATHOM_API AnalysisStatus Bw_BSF(const double* x, int32_t n, double fs, double low, double high,
                                 int32_t order, double* y);

/* ---- IIR filters: Chebyshev (src/filter/iir/chebyshev.cpp) ---------------------------------- */

/**
 * Designs a Chebyshev filter as a cascade: |H|^2 = 1 / (1 + e^2 T^2), where T is the Chebyshev
 * polynomial of degree `order` in v, the warped frequency tan(pi f / fs) relative to the cutoff's,
 * and e^2 = 10^(ripple / 10) - 1.
 *
 * The pass band reaches to the cutoffs; in it the response goes to and fro between 0 dB and -ripple
 * dB, and -ripple dB is what it has at the cutoffs. At the reference frequency (0 of lowpass and
 * bandstop, fs / 2 of highpass, the centre of bandpass filters) even orders have -ripple dB and odd
 * ones 0 dB.
 *
 * Bilinear transform, band filters and state are as with Bw_CascadeCoef. Band filters of order 1
 * are Butterworth filters, whatever the ripple. A bandstop filter of an odd order above 1 leaves
 * the last two feed-forward coefficients of its first section as they are: zero in a new record.
 *
 * C. M. Rader and B. Gold, Digital filter design techniques in the frequency domain, Proceedings of
 * the IEEE 55, 1967.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low edge of the pass band, or lower edge of the pass band of a band filter, above 0,
 *                in the unit of fs
 * @param[in] high upper edge of the pass band, above low, at most fs / 2; ignored for lowpass and
 *                 highpass, which take (fs / 2 + low) / 2 in its place
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in,out] record that says type and order; its coefficients are written. A type that is not
 *                       a FathomBand is let pass, and nothing is written
 * @return FATHOM_OK; FATHOM_ERR_FILTER_RECORD if record is null; FATHOM_ERR_ORDER if the order < 1;
 *         FATHOM_ERR_BAND if low, then high, is not above 0, if low is not below high (so too for a
 *         lowpass or highpass cutoff of fs / 2 and more), or if fs is not above 0;
 *         FATHOM_ERR_NYQUIST if high, then low, is above fs / 2; FATHOM_ERR_RIPPLE if ripple is not
 *         above 0; FATHOM_ERR_FILTER_RECORD if na or nb is too small for type and order
 */
FATHOM_API AnalysisStatus Ch_CascadeCoef(double fs, double low, double high, double ripple,
                                         IIRFilterPtr record);

/**
 * Designs a Chebyshev filter, as Ch_CascadeCoef, in direct form for IIRFiltering.
 *
 * @param[in] type a FathomBand
 * @param[in] order of the lowpass prototype, at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low edge of the pass band, or lower edge of the pass band of a band filter, above 0,
 *                in the unit of fs
 * @param[in] high upper edge of the pass band, above low, at most fs / 2; ignored for lowpass and
 *                 highpass
 * @param[in] ripple of the pass band in dB, above 0
 * @param[out] a L feedback coefficients, a[0] = 1: order + 1 for lowpass and highpass, 2 order + 1
 *               for band filters
 * @param[in] aCapacity room in a, at least L
 * @param[out] b L feed-forward coefficients
 * @param[in] bCapacity room in b, at least L
 * @return FATHOM_OK; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND if low, high or fs is not above
 *         0; FATHOM_ERR_RIPPLE if ripple is not above 0; FATHOM_ERR_BAND if low is not below high
 *         (for lowpass and highpass: the cutoff not below fs / 2); FATHOM_ERR_NYQUIST if high is
 *         above fs / 2; FATHOM_ERR_ARRAY_SIZE if a capacity is below L; FATHOM_ERR_SELECTION if
 *         type is not a FathomBand; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus Ch_Coef(int32_t type, int32_t order, double fs, double low, double high,
                                  double ripple, double* a, int32_t aCapacity, double* b,
                                  int32_t bCapacity);

/**
 * Filters n samples, from zero state, by a Chebyshev lowpass filter: the sections of
 * Ch_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff edge of the pass band, above 0, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_RIPPLE if ripple is not above 0;
 *         FATHOM_ERR_NYQUIST if cutoff is above fs / 2
 */
FATHOM_API AnalysisStatus Ch_LPF(const double* x, int32_t n, double fs, double cutoff,
                                 double ripple, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by a Chebyshev highpass filter: the sections of
 * Ch_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff edge of the pass band, above 0, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_RIPPLE if ripple is not above 0;
 *         FATHOM_ERR_NYQUIST if cutoff is above fs / 2
 */
FATHOM_API AnalysisStatus Ch_HPF(const double* x, int32_t n, double fs, double cutoff,
                                 double ripple, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by a Chebyshev bandpass filter: the sections of
 * Ch_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower edge of the pass band, above 0
 * @param[in] high upper edge of the pass band, above low, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_RIPPLE if
 *         ripple is not above 0; FATHOM_ERR_NYQUIST if high is above fs / 2
 */
FATHOM_API AnalysisStatus Ch_BPF(const double* x, int32_t n, double fs, double low, double high,
                                 double ripple, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by a Chebyshev bandstop filter: the sections of
 * Ch_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower edge of the pass band, above 0
 * @param[in] high upper edge of the pass band, above low, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_RIPPLE if
 *         ripple is not above 0; FATHOM_ERR_NYQUIST if high is above fs / 2
 */
FATHOM_API AnalysisStatus Ch_BSF(const double* x, int32_t n, double fs, double low, double high,
                                 double ripple, int32_t order, double* y);

/* ---- IIR filters: inverse Chebyshev (src/filter/iir/inverse_chebyshev.cpp) ------------------ */

/**
 * Designs an inverse Chebyshev filter as a cascade: |H|^2 = T^2 / (T^2 + r - 1), where T is the
 * Chebyshev polynomial of degree `order` in 1 / v, v the warped frequency tan(pi f / fs) relative
 * to the cutoff's, and r = 10^(attenuation / 10).
 *
 * The cutoffs are the edges of the stop band, where the response first reaches -attenuation dB; in
 * the stop band its peaks come back to that level. The pass band is flat, 0 dB at 0 (lowpass and
 * bandstop), fs / 2 (highpass and bandstop) or the centre (bandpass).
 *
 * Bilinear transform, band filters and state are as with Bw_CascadeCoef.
 *
 * A. V. Oppenheim and R. W. Schafer, Digital Signal Processing, 1975.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low edge of the stop band, or lower edge of the stop band of a band filter, above 0,
 *                in the unit of fs
 * @param[in] high upper edge of the stop band, above low, at most fs / 2; ignored for lowpass and
 *                 highpass, which take (fs / 2 + low) / 2 in its place
 * @param[in] attenuation of the stop band in dB, above 0
 * @param[in,out] record that says type and order; its coefficients are written. A type that is not
 *                       a FathomBand is let pass, and nothing is written
 * @return FATHOM_OK; FATHOM_ERR_FILTER_RECORD if record is null; FATHOM_ERR_ORDER if the order < 1;
 *         FATHOM_ERR_BAND if low, then high, is not above 0, if low is not below high (so too for a
 *         lowpass or highpass cutoff of fs / 2 and more), or if fs is not above 0;
 *         FATHOM_ERR_ATTENUATION if attenuation is not above 0; FATHOM_ERR_NYQUIST if high, then
 *         low, is above fs / 2; FATHOM_ERR_FILTER_RECORD if na or nb is too small for type and
 *         order
 */
FATHOM_API AnalysisStatus InvCh_CascadeCoef(double fs, double low, double high, double attenuation,
                                            IIRFilterPtr record);

/**
 * Designs an inverse Chebyshev filter, as InvCh_CascadeCoef, in direct form for IIRFiltering.
 *
 * @param[in] type a FathomBand
 * @param[in] order of the lowpass prototype, at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low edge of the stop band, or lower edge of the stop band of a band filter, above 0,
 *                in the unit of fs
 * @param[in] high upper edge of the stop band, above low, at most fs / 2; ignored for lowpass and
 *                 highpass
 * @param[in] attenuation of the stop band in dB, above 0
 * @param[out] a L feedback coefficients, a[0] = 1: order + 1 for lowpass and highpass, 2 order + 1
 *               for band filters
 * @param[in] aCapacity room in a, at least L
 * @param[out] b L feed-forward coefficients
 * @param[in] bCapacity room in b, at least L
 * @return FATHOM_OK; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND if low, high or fs is not above
 *         0, or if low is not below high (for lowpass and highpass: the cutoff not below fs / 2);
 *         FATHOM_ERR_ATTENUATION if attenuation is not above 0; FATHOM_ERR_NYQUIST if high is above
 *         fs / 2; FATHOM_ERR_ARRAY_SIZE if a capacity is below L; FATHOM_ERR_SELECTION if type is
 *         not a FathomBand; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus InvCh_Coef(int32_t type, int32_t order, double fs, double low,
                                     double high, double attenuation, double* a, int32_t aCapacity,
                                     double* b, int32_t bCapacity);

/**
 * Filters n samples, from zero state, by an inverse Chebyshev lowpass filter: the sections of
 * InvCh_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff edge of the stop band, above 0, at most fs / 2
 * @param[in] attenuation of the stop band in dB, above 0
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_ATTENUATION if attenuation is not above 0;
 *         FATHOM_ERR_NYQUIST if cutoff is above fs / 2
 */
FATHOM_API AnalysisStatus InvCh_LPF(const double* x, int32_t n, double fs, double cutoff,
                                    double attenuation, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by an inverse Chebyshev highpass filter: the sections of
 * InvCh_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff edge of the stop band, above 0, at most fs / 2
 * @param[in] attenuation of the stop band in dB, above 0
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_ATTENUATION if attenuation is not above 0;
 *         FATHOM_ERR_NYQUIST if cutoff is above fs / 2
 */
FATHOM_API AnalysisStatus InvCh_HPF(const double* x, int32_t n, double fs, double cutoff,
                                    double attenuation, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by an inverse Chebyshev bandpass filter: the sections of
 * InvCh_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower edge of the stop band, above 0
 * @param[in] high upper edge of the stop band, above low, at most fs / 2
 * @param[in] attenuation of the stop band in dB, above 0
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_ATTENUATION if
 *         attenuation is not above 0; FATHOM_ERR_NYQUIST if high is above fs / 2
 */
FATHOM_API AnalysisStatus InvCh_BPF(const double* x, int32_t n, double fs, double low, double high,
                                    double attenuation, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by an inverse Chebyshev bandstop filter: the sections of
 * InvCh_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower edge of the stop band, above 0
 * @param[in] high upper edge of the stop band, above low, at most fs / 2
 * @param[in] attenuation of the stop band in dB, above 0
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_ATTENUATION if
 *         attenuation is not above 0; FATHOM_ERR_NYQUIST if high is above fs / 2
 */
FATHOM_API AnalysisStatus InvCh_BSF(const double* x, int32_t n, double fs, double low, double high,
                                    double attenuation, int32_t order, double* y);

/* ---- IIR filters: elliptic (src/filter/iir/elliptic.cpp) ------------------------------------ */

/**
 * Designs an elliptic (Cauer) filter as a cascade, with equal ripple in both bands: |H|^2 = 1 / (1
 * + e^2 F^2), where F is the elliptic rational function of degree `order` in v, the warped
 * frequency tan(pi f / fs) relative to the cutoff's, and e^2 = 10^(ripple / 10) - 1.
 *
 * The pass band reaches to the cutoffs; in it the response goes to and fro between 0 dB and -ripple
 * dB. In the stop band its peaks are at -attenuation dB. No other filter of the order has a
 * narrower transition between the two; its width follows from order, ripple and attenuation. At the
 * reference frequency (0 of lowpass and bandstop, fs / 2 of highpass, the centre of bandpass
 * filters) even orders have -ripple dB and odd ones 0 dB. An order of 1 has no zeros to place, and
 * attenuation does not matter.
 *
 * For orders to 12, ripples of 0.01 to 3 dB and attenuations of 20 to 120 dB the levels hold to
 * 1e-9 dB and what rounding the coefficients to double precision does. That can be more where the
 * edges lie close together, or close to 0 or fs / 2, and where an order is low for its attenuation:
 * up to 0.01 dB with edges from 0.001 to 0.49 fs.
 *
 * Bilinear transform, band filters and state are as with Bw_CascadeCoef.
 *
 * S. J. Orfanidis, Lecture Notes on Elliptic Filter Design, Rutgers University, 2006; A. Antoniou,
 * Digital Filters: Analysis, Design, and Applications, 1993.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low edge of the pass band, or lower edge of the pass band of a band filter, above 0,
 *                in the unit of fs
 * @param[in] high upper edge of the pass band, above low, at most fs / 2; ignored for lowpass and
 *                 highpass, which take (fs / 2 + low) / 2 in its place
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] attenuation of the stop band in dB, above ripple
 * @param[in,out] record that says type and order; its coefficients are written. A type that is not
 *                       a FathomBand is let pass, and nothing is written
 * @return FATHOM_OK; FATHOM_ERR_FILTER_RECORD if record is null; FATHOM_ERR_ORDER if the order < 1;
 *         FATHOM_ERR_BAND if low, then high, is not above 0, if low is not below high (so too for a
 *         lowpass or highpass cutoff of fs / 2 and more), or if fs is not above 0;
 *         FATHOM_ERR_NYQUIST if high, then low, is above fs / 2; FATHOM_ERR_RIPPLE if ripple is not
 *         above 0; FATHOM_ERR_FILTER_RECORD if na or nb is too small for type and order;
 *         FATHOM_ERR_ATTENUATION if attenuation is not above 0; FATHOM_ERR_ATTENUATION_BELOW_RIPPLE
 *         if it is not above ripple
 */
FATHOM_API AnalysisStatus Elp_CascadeCoef(double fs, double low, double high, double ripple,
                                          double attenuation, IIRFilterPtr record);

/**
 * Designs an elliptic (Cauer) filter, as Elp_CascadeCoef, in direct form for IIRFiltering.
 *
 * @param[in] type a FathomBand
 * @param[in] order of the lowpass prototype, at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low edge of the pass band, or lower edge of the pass band of a band filter, above 0,
 *                in the unit of fs
 * @param[in] high upper edge of the pass band, above low, at most fs / 2; ignored for lowpass and
 *                 highpass
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] attenuation of the stop band in dB, above ripple
 * @param[out] a L feedback coefficients, a[0] = 1: order + 1 for lowpass and highpass, 2 order + 1
 *               for band filters
 * @param[in] aCapacity room in a, at least L
 * @param[out] b L feed-forward coefficients
 * @param[in] bCapacity room in b, at least L
 * @return FATHOM_OK; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND if low, high or fs is not above
 *         0; FATHOM_ERR_RIPPLE if ripple is not above 0; FATHOM_ERR_BAND if low is not below high
 *         (for lowpass and highpass: the cutoff not below fs / 2); FATHOM_ERR_NYQUIST if high is
 *         above fs / 2; FATHOM_ERR_ARRAY_SIZE if a capacity is below L; FATHOM_ERR_SELECTION if
 *         type is not a FathomBand; FATHOM_ERR_ATTENUATION if attenuation is not above 0;
 *         FATHOM_ERR_ATTENUATION_BELOW_RIPPLE if it is not above ripple; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus Elp_Coef(int32_t type, int32_t order, double fs, double low, double high,
                                   double ripple, double attenuation, double* a, int32_t aCapacity,
                                   double* b, int32_t bCapacity);

/**
 * Filters n samples, from zero state, by an elliptic (Cauer) lowpass filter: the sections of
 * Elp_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff edge of the pass band, above 0, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] attenuation of the stop band in dB, above ripple
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_RIPPLE if ripple is not above 0;
 *         FATHOM_ERR_NYQUIST if cutoff is above fs / 2; FATHOM_ERR_ATTENUATION if attenuation is
 *         not above 0; FATHOM_ERR_ATTENUATION_BELOW_RIPPLE if it is not above ripple
 */
FATHOM_API AnalysisStatus Elp_LPF(const double* x, int32_t n, double fs, double cutoff,
                                  double ripple, double attenuation, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by an elliptic (Cauer) highpass filter: the sections of
 * Elp_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff edge of the pass band, above 0, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] attenuation of the stop band in dB, above ripple
 * @param[in] order at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if cutoff, then fs, is not above 0; FATHOM_ERR_RIPPLE if ripple is not above 0;
 *         FATHOM_ERR_NYQUIST if cutoff is above fs / 2; FATHOM_ERR_ATTENUATION if attenuation is
 *         not above 0; FATHOM_ERR_ATTENUATION_BELOW_RIPPLE if it is not above ripple
 */
FATHOM_API AnalysisStatus Elp_HPF(const double* x, int32_t n, double fs, double cutoff,
                                  double ripple, double attenuation, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by an elliptic (Cauer) bandpass filter: the sections of
 * Elp_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower edge of the pass band, above 0
 * @param[in] high upper edge of the pass band, above low, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] attenuation of the stop band in dB, above ripple
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_RIPPLE if
 *         ripple is not above 0; FATHOM_ERR_NYQUIST if high is above fs / 2; FATHOM_ERR_ATTENUATION
 *         if attenuation is not above 0; FATHOM_ERR_ATTENUATION_BELOW_RIPPLE if it is not above
 *         ripple
 */
FATHOM_API AnalysisStatus Elp_BPF(const double* x, int32_t n, double fs, double low, double high,
                                  double ripple, double attenuation, int32_t order, double* y);

/**
 * Filters n samples, from zero state, by an elliptic (Cauer) bandstop filter: the sections of
 * Elp_CascadeCoef, one after another in direct form I.
 *
 * In place: y may be x.
 *
 * @param[in] x n samples
 * @param[in] n at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower edge of the pass band, above 0
 * @param[in] high upper edge of the pass band, above low, at most fs / 2
 * @param[in] ripple of the pass band in dB, above 0
 * @param[in] attenuation of the stop band in dB, above ripple
 * @param[in] order of the lowpass prototype, at least 1
 * @param[out] y n samples
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND
 *         if low, high or fs is not above 0, or if low is not below high; FATHOM_ERR_RIPPLE if
 *         ripple is not above 0; FATHOM_ERR_NYQUIST if high is above fs / 2; FATHOM_ERR_ATTENUATION
 *         if attenuation is not above 0; FATHOM_ERR_ATTENUATION_BELOW_RIPPLE if it is not above
 *         ripple
 */
FATHOM_API AnalysisStatus Elp_BSF(const double* x, int32_t n, double fs, double low, double high,
                                  double ripple, double attenuation, int32_t order, double* y);

/* ---- IIR filters: Bessel (src/filter/iir/bessel.cpp) ---------------------------------------- */

/**
 * Designs a Bessel-like filter, of nearly linear phase in the pass band, as a cascade: the poles of
 * the lowpass prototype are -sqrt(1 - c^2) +- i c with c = 1 - (2 k + 1) / order, k = 0, 1, ...
 * below order / 2 rounded down, and, for odd orders, -1.
 *
 * The poles lie on the unit circle at equal distances in the imaginary direction, near which those
 * of the Bessel polynomials lie; they are not the zeros of these polynomials, and the response at
 * the cutoffs is not -3 dB but that of the prototype at 1: about -4.8 dB for order 2.
 *
 * Bilinear transform, band filters and state are as with Bw_CascadeCoef.
 *
 * L. R. Rabiner and B. Gold, Theory and Application of Digital Signal Processing, 1975.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low cutoff, or lower cutoff of a band filter, above 0, in the unit of fs
 * @param[in] high upper cutoff, above low, at most fs / 2; ignored for lowpass and highpass, which
 *                 take (fs / 2 + low) / 2 in its place
 * @param[in,out] record that says type and order; its coefficients are written. A type that is not
 *                       a FathomBand is let pass, and nothing is written
 * @return FATHOM_OK; FATHOM_ERR_FILTER_RECORD if record is null; FATHOM_ERR_ORDER if the order < 1;
 *         FATHOM_ERR_BAND if low, then high, is not above 0, if low is not below high (so too for a
 *         lowpass or highpass cutoff of fs / 2 and more), or if fs is not above 0;
 *         FATHOM_ERR_NYQUIST if high, then low, is above fs / 2; FATHOM_ERR_FILTER_RECORD if na or
 *         nb is too small for type and order
 */
FATHOM_API AnalysisStatus Bessel_CascadeCoef(double fs, double low, double high,
                                             IIRFilterPtr record);

/**
 * Designs a Bessel-like filter, as Bessel_CascadeCoef, in direct form for IIRFiltering.
 *
 * @param[in] type a FathomBand
 * @param[in] order of the lowpass prototype, at least 1
 * @param[in] fs sampling frequency, above 0
 * @param[in] low cutoff, or lower cutoff of a band filter, above 0, in the unit of fs
 * @param[in] high upper cutoff, above low, at most fs / 2; ignored for lowpass and highpass
 * @param[out] a L feedback coefficients, a[0] = 1: order + 1 for lowpass and highpass, 2 order + 1
 *               for band filters
 * @param[in] aCapacity room in a, at least L
 * @param[out] b L feed-forward coefficients
 * @param[in] bCapacity room in b, at least L
 * @return FATHOM_OK; FATHOM_ERR_ORDER if order < 1; FATHOM_ERR_BAND if low, high or fs is not above
 *         0, or if low is not below high (for lowpass and highpass: the cutoff not below fs / 2);
 *         FATHOM_ERR_NYQUIST if high is above fs / 2; FATHOM_ERR_ARRAY_SIZE if a capacity is below
 *         L; FATHOM_ERR_SELECTION if type is not a FathomBand; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus Bessel_Coef(int32_t type, int32_t order, double fs, double low,
                                      double high, double* a, int32_t aCapacity, double* b,
                                      int32_t bCapacity);

/* ---- FIR filters: windowed designs (src/filter/fir/windowed.cpp) ---------------------------- */

/**
 * Coefficients of a linear-phase FIR filter by cutting off the ideal response.
 *
 * With w = 2 pi f / fs for an edge f and M = (n - 1) / 2, h[k] = h[n-1-k] is, around the centre,
 * sin(w (k - M)) / (pi (k - M)) for lowpass, its negative for highpass; the difference of the two
 * edges' values, upper less lower, for bandpass, its negative for bandstop. The centre of an odd n
 * is w / pi for lowpass, (w2 - w1) / pi for bandpass, and 1 less that for highpass and bandstop.
 * The angles grow by repeated addition.
 *
 * L. R. Rabiner and B. Gold, Theory and Application of Digital Signal Processing, 1975.
 *
 * @param[in] type a FathomBand
 * @param[in] fs sampling frequency, above 0
 * @param[in] low the cutoff, or the lower one of two, in the unit of fs: above 0, at most fs / 2
 * @param[in] high the upper cutoff, above low, at most fs / 2; not used for lowpass and highpass
 * @param[in] n number of coefficients, at least 1; odd for highpass and bandstop
 * @param[out] h n coefficients
 * @return FATHOM_OK; FATHOM_ERR_SELECTION if type is not a FathomBand; FATHOM_ERR_ORDER if n < 1;
 *         FATHOM_ERR_NYQUIST if a cutoff is above fs / 2; FATHOM_ERR_BAND if fs or a cutoff is not
 *         above 0, or low is not below high; FATHOM_ERR_ODD_COEFFICIENTS if n is even for highpass
 *         or bandstop
 */
FATHOM_API AnalysisStatus FIR_Coef(int32_t type, double fs, double low, double high, int32_t n,
                                   double* h);

/**
 * Coefficients of a linear-phase FIR lowpass filter by a window.
 *
 * Those of FIR_Coef, times the window of n - 1 points closed by a last one that equals its first,
 * so that it is symmetric about the centre. For n = 1 there is no window of n - 1 points: the
 * coefficient is written, and the window's status returned. FATHOM_FIR_RECTANGULAR leaves the
 * coefficients as they are.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff in the unit of fs, above 0, at most fs / 2
 * @param[in] n number of coefficients, at least 1
 * @param[out] h n coefficients
 * @param[in] window a FathomFirWindow
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or cutoff is not above 0; FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES
 *         if n = 1 and there is a window
 */
FATHOM_API AnalysisStatus Wind_LPF(double fs, double cutoff, int32_t n, double* h, int32_t window);

/**
 * Coefficients of a linear-phase FIR highpass filter by a window.
 *
 * As Wind_LPF, for the highpass response of FIR_Coef.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff in the unit of fs, above 0, at most fs / 2
 * @param[in] n number of coefficients, odd, at least 1
 * @param[out] h n coefficients
 * @param[in] window a FathomFirWindow
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or cutoff is not above 0; FATHOM_ERR_ODD_COEFFICIENTS if n is even;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES if n = 1 and there is a window
 */
FATHOM_API AnalysisStatus Wind_HPF(double fs, double cutoff, int32_t n, double* h, int32_t window);

/**
 * Coefficients of a linear-phase FIR bandpass filter by a window.
 *
 * As Wind_LPF, for the bandpass response of FIR_Coef.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower cutoff in the unit of fs, above 0
 * @param[in] high upper cutoff, above low, at most fs / 2
 * @param[in] n number of coefficients, at least 1
 * @param[out] h n coefficients
 * @param[in] window a FathomFirWindow
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if a cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or a cutoff is not above 0, or low is not below high;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES if n = 1 and there is a window
 */
FATHOM_API AnalysisStatus Wind_BPF(double fs, double low, double high, int32_t n, double* h,
                                   int32_t window);

/**
 * Coefficients of a linear-phase FIR bandstop filter by a window.
 *
 * As Wind_LPF, for the bandstop response of FIR_Coef.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower cutoff in the unit of fs, above 0
 * @param[in] high upper cutoff, above low, at most fs / 2
 * @param[in] n number of coefficients, odd, at least 1
 * @param[out] h n coefficients
 * @param[in] window a FathomFirWindow
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if a cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or a cutoff is not above 0, or low is not below high;
 *         FATHOM_ERR_ODD_COEFFICIENTS if n is even; FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES if n =
 *         1 and there is a window
 */
FATHOM_API AnalysisStatus Wind_BSF(double fs, double low, double high, int32_t n, double* h,
                                   int32_t window);

/**
 * Coefficients of a linear-phase FIR lowpass filter by the Kaiser window.
 *
 * As Wind_LPF, with KsrWin of the given beta.
 *
 * J. F. Kaiser, "Nonrecursive digital filter design using the I0-sinh window function", Proc. IEEE
 * Int. Symp. Circuits and Systems, 1974.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff in the unit of fs, above 0, at most fs / 2
 * @param[in] n number of coefficients, at least 1
 * @param[out] h n coefficients
 * @param[in] beta shape of the window; a negative one counts as 4.5
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or cutoff is not above 0; FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES
 *         if n = 1
 */
FATHOM_API AnalysisStatus Ksr_LPF(double fs, double cutoff, int32_t n, double* h, double beta);

/**
 * Coefficients of a linear-phase FIR highpass filter by the Kaiser window.
 *
 * As Ksr_LPF, for the highpass response of FIR_Coef.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] cutoff in the unit of fs, above 0, at most fs / 2
 * @param[in] n number of coefficients, odd, at least 1
 * @param[out] h n coefficients
 * @param[in] beta shape of the window; a negative one counts as 4.5
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or cutoff is not above 0; FATHOM_ERR_ODD_COEFFICIENTS if n is even;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES if n = 1
 */
FATHOM_API AnalysisStatus Ksr_HPF(double fs, double cutoff, int32_t n, double* h, double beta);

/**
 * Coefficients of a linear-phase FIR bandpass filter by the Kaiser window.
 *
 * As Ksr_LPF, for the bandpass response of FIR_Coef.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower cutoff in the unit of fs, above 0
 * @param[in] high upper cutoff, above low, at most fs / 2
 * @param[in] n number of coefficients, at least 1
 * @param[out] h n coefficients
 * @param[in] beta shape of the window; a negative one counts as 4.5
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if a cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or a cutoff is not above 0, or low is not below high;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES if n = 1
 */
FATHOM_API AnalysisStatus Ksr_BPF(double fs, double low, double high, int32_t n, double* h,
                                  double beta);

/**
 * Coefficients of a linear-phase FIR bandstop filter by the Kaiser window.
 *
 * As Ksr_LPF, for the bandstop response of FIR_Coef.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] low lower cutoff in the unit of fs, above 0
 * @param[in] high upper cutoff, above low, at most fs / 2
 * @param[in] n number of coefficients, odd, at least 1
 * @param[out] h n coefficients
 * @param[in] beta shape of the window; a negative one counts as 4.5
 * @return FATHOM_OK; FATHOM_ERR_ORDER if n < 1; FATHOM_ERR_NYQUIST if a cutoff is above fs / 2;
 *         FATHOM_ERR_BAND if fs or a cutoff is not above 0, or low is not below high;
 *         FATHOM_ERR_ODD_COEFFICIENTS if n is even; FATHOM_ERR_MEMORY; FATHOM_ERR_NO_SAMPLES if n =
 *         1
 */
FATHOM_API AnalysisStatus Ksr_BSF(double fs, double low, double high, int32_t n, double* h,
                                  double beta);

/* ---- FIR filters: equiripple designs (src/filter/fir/equiripple.cpp) ------------------------ */

/**
 * Coefficients of the linear-phase FIR filter whose largest weighted error over the given bands is
 * the least possible: the error W(f) |D(f) - A(f)| reaches that deviation again and again, with
 * alternating sign.
 *
 * A(f) is the real amplitude of the filter. D is the band's desired value, for a differentiator
 * times f / fs; W is the band's weight, for a differentiator divided by f / fs in bands whose
 * desired value is at least 0.0001. The exchange works on a grid of 16 frequencies for each term of
 * the amplitude's cosine series; between these, and most in bands of a few grid points, the error
 * can be larger. An antisymmetric filter (differentiator, Hilbert transformer) has h[n-1-k] =
 * -h[k].
 *
 * Designs whose deviation is below the rounding of the response are delivered with that rounding
 * for a ripple. A design whose coefficients, rounded to doubles, would not keep to the deviation is
 * refused; such are bands that leave a wide region free beside a long filter's bands, where it then
 * amplifies some thousand times.
 *
 * J. H. McClellan, T. W. Parks and L. R. Rabiner, "A computer program for designing optimum FIR
 * linear phase digital filters", IEEE Trans. Audio Electroacoust., 1973.
 *
 * @param[in] bands number of bands, at least 1
 * @param[in] desired value of each band, at least 0
 * @param[in] weights of each band, above 0
 * @param[in] fs sampling frequency, above 0
 * @param[in] edges lower and upper edge of each band in the unit of fs, 2 x bands increasing values
 *            from 0 to at most fs / 2
 * @param[in] type a FathomFirDesign. FATHOM_FIR_MULTIBAND: the first edge is 0, the last at most
 *            0.001 from fs / 2, and for an even n the last band's desired value is 0.
 *            FATHOM_FIR_DIFFERENTIATOR: the first edge is 0, the last at least 0.01 from fs / 2 for
 *            an odd n, at most 0.001 from it for an even n. FATHOM_FIR_HILBERT: the first edge is
 *            not 0, the last at least 0.001 from fs / 2 for an odd n, at most 0.001 from it for an
 *            even n
 * @param[in] n number of coefficients, at least 3, with at most 509 terms of the cosine series:
 *            1018 for FATHOM_FIR_MULTIBAND, else 1019
 * @param[out] h n coefficients
 * @param[out] deviation the largest weighted error, not negative; also that of the last pass of an
 *             exchange that fails after it began
 * @return FATHOM_OK; FATHOM_ERR_FILTER_DESIGN if n < 3; FATHOM_ERR_NO_SAMPLES if bands < 1;
 *         FATHOM_ERR_BAND if fs is not above 0, an edge is below 0, a weight is not above 0 or a
 *         desired value below 0; FATHOM_ERR_NYQUIST if the last edge is above fs / 2;
 *         FATHOM_ERR_BAND if the edges do not increase; FATHOM_ERR_FILTER_DESIGN if they are not as
 *         type demands; FATHOM_ERR_ODD_COEFFICIENTS if n is even where the last band passes;
 *         FATHOM_ERR_MEMORY, also if n is too large; FATHOM_ERR_FILTER_DESIGN if two extremal
 *         frequencies fall together, 99 passes do not settle, or the coefficients do not keep to
 *         the deviation
 */
FATHOM_API AnalysisStatus Equi_Ripple(int32_t bands, const double* desired, const double* weights,
                                      double fs, const double* edges, int32_t type, int32_t n,
                                      double* h, double* deviation);

/**
 * Coefficients of the equiripple linear-phase FIR lowpass filter.
 *
 * Equi_Ripple with the bands [0, pass] and [stop, fs / 2], desired values 1 and 0, and weights of
 * 1.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] pass edge of the passband in the unit of fs, above 0
 * @param[in] stop edge of the stopband in the unit of fs, above pass, below fs / 2
 * @param[in] n number of coefficients, at least 3, at most 1018
 * @param[out] h n coefficients
 * @param[out] deviation the largest error, as from Equi_Ripple; written whatever the
 *             status; 0 where there was no pass
 * @return FATHOM_OK; else the status of Equi_Ripple
 */
FATHOM_API AnalysisStatus EquiRpl_LPF(double fs, double pass, double stop, int32_t n, double* h,
                                      double* deviation);

/**
 * Coefficients of the equiripple linear-phase FIR highpass filter.
 *
 * Equi_Ripple with the bands [0, stop] and [pass, fs / 2], desired values 0 and 1, and weights of
 * 1.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] stop edge of the stopband in the unit of fs, above 0
 * @param[in] pass edge of the passband in the unit of fs, above stop, below fs / 2
 * @param[in] n number of coefficients, odd, at least 3, at most 1017
 * @param[out] h n coefficients
 * @param[out] deviation the largest error, as from Equi_Ripple; written whatever the
 *             status, except for an even n; 0 where there was no pass
 * @return FATHOM_OK; FATHOM_ERR_ODD_COEFFICIENTS if n is even; else the status of Equi_Ripple
 */
FATHOM_API AnalysisStatus EquiRpl_HPF(double fs, double stop, double pass, int32_t n, double* h,
                                      double* deviation);

/**
 * Coefficients of the equiripple linear-phase FIR bandpass filter.
 *
 * Equi_Ripple with the bands [0, lowStop], [lowPass, highPass] and [highStop, fs / 2], desired
 * values 0, 1 and 0, and weights of 1.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] lowStop upper edge of the lower stopband in the unit of fs, above 0
 * @param[in] lowPass lower edge of the passband in the unit of fs, above lowStop
 * @param[in] highPass upper edge of the passband in the unit of fs, above lowPass
 * @param[in] highStop lower edge of the upper stopband in the unit of fs, above highPass,
 *            below fs / 2
 * @param[in] n number of coefficients, at least 3, at most 1018
 * @param[out] h n coefficients
 * @param[out] deviation the largest error, as from Equi_Ripple; written whatever the
 *             status; 0 where there was no pass
 * @return FATHOM_OK; else the status of Equi_Ripple
 */
FATHOM_API AnalysisStatus EquiRpl_BPF(double fs, double lowStop, double lowPass, double highPass,
                                      double highStop, int32_t n, double* h, double* deviation);

/**
 * Coefficients of the equiripple linear-phase FIR bandstop filter.
 *
 * Equi_Ripple with the bands [0, lowPass], [lowStop, highStop] and [highPass, fs / 2], desired
 * values 1, 0 and 1, and weights of 1.
 *
 * @param[in] fs sampling frequency, above 0
 * @param[in] lowPass upper edge of the lower passband in the unit of fs, above 0
 * @param[in] lowStop lower edge of the stopband in the unit of fs, above lowPass
 * @param[in] highStop upper edge of the stopband in the unit of fs, above lowStop
 * @param[in] highPass lower edge of the upper passband in the unit of fs, above highStop,
 *            below fs / 2
 * @param[in] n number of coefficients, odd, at least 3, at most 1017
 * @param[out] h n coefficients
 * @param[out] deviation the largest error, as from Equi_Ripple; written whatever the
 *             status, except for an even n; 0 where there was no pass
 * @return FATHOM_OK; FATHOM_ERR_ODD_COEFFICIENTS if n is even; else the status of Equi_Ripple
 */
FATHOM_API AnalysisStatus EquiRpl_BSF(double fs, double lowPass, double lowStop, double highStop,
                                      double highPass, int32_t n, double* h, double* deviation);

/* ---- Matrix products, transpose, trace (src/linalg/product.cpp) ----------------------------- */

/**
 * Product of two matrices: result(i, j) = 0 + a(i, 0) b(0, j) + a(i, 1) b(1, j) + ..., each product
 * rounded before it is added.
 *
 * @param[in] a r x k elements
 * @param[in] b k x c elements
 * @param[in] r rows of a, at least 1
 * @param[in] k columns of a and rows of b, at least 1
 * @param[in] c columns of b, at least 1
 * @param[out] result r x c elements; neither a nor b
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if r < 1, c < 1 or k < 1
 */
FATHOM_API AnalysisStatus MatrixMul(const double* a, const double* b, int32_t r, int32_t k,
                                    int32_t c, double* result);

/**
 * Transpose of a matrix: t(j, i) = a(i, j), bit for bit.
 *
 * @param[in] a r x c elements
 * @param[in] r rows of a, at least 1
 * @param[in] c columns of a, at least 1
 * @param[out] t c x r elements; not a
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if r < 1 or c < 1
 */
FATHOM_API AnalysisStatus Transpose(const double* a, int32_t r, int32_t c, double* t);

/**
 * Trace of a square matrix: 0 + a(0, 0) + a(1, 1) + ...
 *
 * @param[in] a n x n elements
 * @param[in] n rows and columns, at least 1
 * @param[out] trace the sum of the diagonal
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus Trace(const double* a, int32_t n, double* trace);

/**
 * Dot product of two vectors: 0 + x[0] y[0] + x[1] y[1] + ..., added in this order.
 *
 * @param[in] x n elements
 * @param[in] y n elements
 * @param[in] n count, at least 1
 * @param[out] dotProduct the sum
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus DotProduct(const double* x, const double* y, int32_t n,
                                     double* dotProduct);

/**
 * Outer product of two vectors: p(i, j) = x[i] y[j].
 *
 * @param[in] x nx elements
 * @param[in] nx count of x, at least 1
 * @param[in] y ny elements
 * @param[in] ny count of y, at least 1
 * @param[out] p nx x ny elements; neither x nor y
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if nx < 1 or ny < 1
 */
FATHOM_API AnalysisStatus OuterProduct(const double* x, int32_t nx, const double* y, int32_t ny,
                                       double* p);

/**
 * Product of two complex matrices, as MatrixMul. The real and the imaginary part are sums of their
 * own, of the parts of a(i, t) b(t, j): re re - im im, and re im + im re.
 *
 * @param[in] a r x k elements
 * @param[in] b k x c elements
 * @param[in] r rows of a, at least 1
 * @param[in] k columns of a and rows of b, at least 1
 * @param[in] c columns of b, at least 1
 * @param[out] result r x c elements; neither a nor b
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if r < 1, c < 1 or k < 1
 */
FATHOM_API AnalysisStatus CxMatrixMul(const ComplexNum* a, const ComplexNum* b, int32_t r,
                                      int32_t k, int32_t c, ComplexNum* result);

/**
 * Conjugate transpose of a complex matrix: t(j, i) = conj(a(i, j)). An imaginary part of 0 becomes
 * -0.
 *
 * @param[in] a r x c elements
 * @param[in] r rows of a, at least 1
 * @param[in] c columns of a, at least 1
 * @param[out] t c x r elements; not a
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if r < 1 or c < 1
 */
FATHOM_API AnalysisStatus CxTranspose(const ComplexNum* a, int32_t r, int32_t c, ComplexNum* t);

/**
 * Trace of a complex matrix, which need not be square: 0 + a(0, 0) + a(1, 1) + ... over the first
 * min(r, c) elements of the diagonal.
 *
 * @param[in] a r x c elements
 * @param[in] r rows, at least 1
 * @param[in] c columns, at least 1
 * @param[out] trace the sum of the diagonal
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if r < 1 or c < 1
 */
FATHOM_API AnalysisStatus CxTrace(const ComplexNum* a, int32_t r, int32_t c, ComplexNum* trace);

/**
 * Dot product of two complex vectors, neither conjugated: 0 + x[0] y[0] + x[1] y[1] + ...
 *
 * @param[in] x n elements
 * @param[in] y n elements
 * @param[in] n count, at least 1
 * @param[out] dotProduct the sum
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus CxDotProduct(const ComplexNum* x, const ComplexNum* y, int32_t n,
                                       ComplexNum* dotProduct);

/**
 * Outer product of two complex vectors, neither conjugated: p(i, j) = x[i] y[j].
 *
 * @param[in] x nx elements
 * @param[in] nx count of x, at least 1
 * @param[in] y ny elements
 * @param[in] ny count of y, at least 1
 * @param[out] p nx x ny elements; neither x nor y
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if nx < 1 or ny < 1
 */
FATHOM_API AnalysisStatus CxOuterProduct(const ComplexNum* x, int32_t nx, const ComplexNum* y,
                                         int32_t ny, ComplexNum* p);

/* ---- Structured matrices (src/linalg/structured.cpp) ---------------------------------------- */

/**
 * Fills a structured matrix from one or two vectors. Arguments that a type does not use are
 * ignored; such vectors may be null.
 *
 *     type                       uses             matrix
 *     FATHOM_MATRIX_IDENTITY     size             size x size: 1 on the diagonal, else 0
 *     FATHOM_MATRIX_DIAGONAL     a, na            na x na: a on the diagonal, else 0
 *     FATHOM_MATRIX_TOEPLITZ     a, na, b, nb     na x nb: a[i - j] on and below the diagonal,
 *                                                 b[j - i] above it; b[0] is not used
 *     FATHOM_MATRIX_VANDERMONDE  a, na            na x na: a[i] to the power na - 1 - j; the last
 *                                                 column is 1 whatever a is
 *     FATHOM_MATRIX_COMPANION    a, na            na - 1 square, of the polynomial with the
 *                                                 coefficients a, a[0] x^(na - 1) first: first row
 *                                                 a[j + 1] / -a[0], 1 below the diagonal, else 0
 *
 * @param[in] type one of FathomMatrix
 * @param[in] size rows and columns of the identity, at least 1
 * @param[in] a na elements
 * @param[in] na count of a, at least 1; for a companion matrix at least 2
 * @param[in] b nb elements
 * @param[in] nb count of b, 1 to na
 * @param[out] m the matrix; neither a nor b
 * @return FATHOM_OK; FATHOM_ERR_SELECTION if type is none of these; FATHOM_ERR_NO_SAMPLES if a
 *         count that it uses is out of its range
 */
FATHOM_API AnalysisStatus SpecialMatrix(int32_t type, int32_t size, const double* a, int32_t na,
                                        const double* b, int32_t nb, double* m);

/**
 * As SpecialMatrix, with complex elements. Powers are products, one factor after the other from 1
 * on, so that those of infinities and NaNs may be NaN. The first row of a companion matrix is
 * a[j + 1] times -1 / a[0], whose parts are each divided by re re + im im of a[0].
 *
 * @param[in] type one of FathomMatrix
 * @param[in] size rows and columns of the identity, at least 1
 * @param[in] a na elements
 * @param[in] na count of a, at least 1; for a companion matrix at least 2
 * @param[in] b nb elements
 * @param[in] nb count of b, 1 to na
 * @param[out] m the matrix; neither a nor b
 * @return FATHOM_OK; FATHOM_ERR_SELECTION if type is none of these; FATHOM_ERR_NO_SAMPLES if a
 *         count that it uses is out of its range
 */
FATHOM_API AnalysisStatus CxSpecialMatrix(int32_t type, int32_t size, const ComplexNum* a,
                                          int32_t na, const ComplexNum* b, int32_t nb,
                                          ComplexNum* m);

/* ---- LU and linear systems (src/linalg/lu.cpp, solve.cpp) ----------------------------------- */

/** What GenLinEqs, GenInvMatrix, GenDeterminant and their complex forms may take a matrix for. */
enum FathomMatrixType {
  FATHOM_GENERAL = 0,
  FATHOM_POSITIVE_DEFINITE = 1, /**< symmetric or Hermitian; the lower triangle is read */
  FATHOM_LOWER_TRIANGULAR = 2,  /**< the lower triangle is read */
  FATHOM_UPPER_TRIANGULAR = 3   /**< the upper triangle is read */
};

/**
 * LU factorisation with partial pivoting, P A = L U: L with a unit diagonal, U upper triangular.
 *
 * At step j, row j is exchanged with the row whose element of column j is largest in magnitude, the
 * first of several, if that is above 1e-12. The threshold does not scale with the matrix. Where
 * there is no such row, columns 0 to j are reduced and those after them have been through the
 * exchanges only.
 *
 * Source: P. D. Crout, "A short method for evaluating determinants and solving systems of linear
 * equations with real or complex coefficients", Transactions of the AIEE 60, 1941.
 *
 * @param[in,out] a n x n matrix; then U on and above the diagonal, the multipliers of L below it
 * @param[in] n rows and columns, at least 1
 * @param[out] pivots n rows: at step j, row j was exchanged with row pivots[j], which is j for none
 * @param[out] parity 1 after an odd number of exchanges, 0 after an even one
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SINGULAR if a column has no pivot
 */
FATHOM_API AnalysisStatus LU(double* a, int32_t n, int32_t* pivots, int32_t* parity);

/**
 * Forward substitution: the solution y of L y = P b, with the factor and the exchanges from LU.
 *
 * In place: y may be b.
 *
 * @param[in] lu n x n factor
 * @param[in] b n values
 * @param[in] n rows and columns, at least 1
 * @param[out] y n values
 * @param[in] pivots n rows; one that does not exist is not exchanged
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1
 */
FATHOM_API AnalysisStatus ForwSub(const double* lu, const double* b, int32_t n, double* y,
                                  const int32_t* pivots);

/**
 * Back substitution: the solution x of U x = y, with the factor from LU; after ForwSub, the
 * solution of A x = b.
 *
 * In place: x may be y.
 *
 * @param[in] lu n x n factor
 * @param[in] y n values
 * @param[in] n rows and columns, at least 1
 * @param[out] x n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SINGULAR at a 0 in the diagonal of
 *         U, where x holds the solution below that row, and y from it on up
 */
FATHOM_API AnalysisStatus BackSub(const double* lu, const double* y, int32_t n, double* x);

/**
 * The solution x of A x = b, by LU, ForwSub and BackSub.
 *
 * In place: x may be b. If a is singular, x is b.
 *
 * @param[in] a n x n matrix
 * @param[in] b n values
 * @param[in] n rows and columns, at least 1
 * @param[out] x n values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR as from
 *         LU
 */
FATHOM_API AnalysisStatus LinEqs(const double* a, const double* b, int32_t n, double* x);

/**
 * The inverse of A by LU: column k solves A x = e_k, the k-th unit vector.
 *
 * The result must not be a. If a is singular, it is the identity.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[out] inverse n x n matrix
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR as from
 *         LU
 */
FATHOM_API AnalysisStatus InvMatrix(const double* a, int32_t n, double* inverse);

/**
 * The determinant of A by LU: the product of the diagonal of U, negated for an odd number of
 * exchanges; 0 where LU finds a singular.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[out] det determinant
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus Determinant(const double* a, int32_t n, double* det);

/**
 * The solution x of A x = b, by the type of A; of a general matrix, square or not, the
 * least-squares solution of smallest norm.
 *
 * A general matrix is decomposed by SVD. Singular values up to 2^-52 max(m, n) times the largest
 * count as zero; if there are any, the status is the positive FATHOM_WARN_RANK, and x is written.
 * A positive definite one is factored as by Cholesky. A triangular one counts as singular if an
 * element of the diagonal is at most 2^-63 of the triangle's largest in magnitude.
 *
 * In place: x may be b. If the call fails, x is left as it was.
 *
 * @param[in] a m x n matrix
 * @param[in] m rows, at least 1
 * @param[in] n columns, at least 1; for all types but FATHOM_GENERAL, m
 * @param[in] b m values
 * @param[in] type a FathomMatrixType
 * @param[out] x n values
 * @return FATHOM_OK; FATHOM_WARN_RANK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1;
 *         FATHOM_ERR_SELECTION if type is not a FathomMatrixType; FATHOM_ERR_NOT_SQUARE;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR if a is triangular and singular or not positive
 *         definite; FATHOM_ERR_ITERATIONS as from SVD
 */
FATHOM_API AnalysisStatus GenLinEqs(const double* a, int32_t m, int32_t n, const double* b,
                                    int32_t type, double* x);

/**
 * The inverse of A, by its type: LU for a general matrix, Cholesky for a positive definite one,
 * substitution for a triangular one, with the test for singular ones of GenLinEqs.
 *
 * In place: inverse may be a. If a general matrix is singular, inverse is what LU leaves.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[in] type a FathomMatrixType
 * @param[out] inverse n x n matrix; of a triangular one, with zeros in the other triangle
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SELECTION if type is not a
 *         FathomMatrixType; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR
 */
FATHOM_API AnalysisStatus GenInvMatrix(const double* a, int32_t n, int32_t type, double* inverse);

/**
 * The determinant of A, by its type: as from Determinant for a general matrix, the square of the
 * product of the diagonal of the Cholesky factor for a positive definite one, the product of its
 * own diagonal for a triangular one. 0 for a singular matrix, for one that is not positive
 * definite, and on failure.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[in] type a FathomMatrixType
 * @param[out] det determinant
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SELECTION if type is not a
 *         FathomMatrixType; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus GenDeterminant(const double* a, int32_t n, int32_t type, double* det);

/**
 * LU factorisation of a complex matrix with scaled partial pivoting, P A = L U: L with a unit
 * diagonal, U upper triangular.
 *
 * At step k, row k is exchanged with the row whose element of column k has the largest squared
 * magnitude relative to the largest of that row of A, the first of several. Where that element is
 * 0, all products of the earlier steps are subtracted already.
 *
 * Source: J. H. Wilkinson, "The Algebraic Eigenvalue Problem", Oxford, 1965, chapter 4.
 *
 * @param[in,out] a n x n matrix; then U on and above the diagonal, the multipliers of L below it
 * @param[in] n rows and columns, at least 1
 * @param[out] pivots n rows: at step k, row k was exchanged with row pivots[k], which is k for none
 * @param[out] parity 1 after an odd number of exchanges, 0 after an even one
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR if a
 *         row has no element whose squared magnitude is above 0, or if a pivot is 0
 */
FATHOM_API AnalysisStatus CxLU(ComplexNum* a, int32_t n, int32_t* pivots, int32_t* parity);

/**
 * The determinant of a complex A, by its type: as GenDeterminant, with CxLU and CxCholesky.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[in] type a FathomMatrixType
 * @param[out] det determinant; 0 on failure
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SELECTION if type is not a
 *         FathomMatrixType; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus CxDeterminant(const ComplexNum* a, int32_t n, int32_t type,
                                        ComplexNum* det);

/**
 * The solution x of A x = b for a complex A, by its type: as GenLinEqs, with CxSVD and CxCholesky.
 *
 * In place: x may be b. If the call fails, x is left as it was.
 *
 * @param[in] a m x n matrix
 * @param[in] m rows, at least 1
 * @param[in] n columns, at least 1; for all types but FATHOM_GENERAL, m
 * @param[in] b m values
 * @param[in] type a FathomMatrixType
 * @param[out] x n values
 * @return FATHOM_OK; FATHOM_WARN_RANK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1;
 *         FATHOM_ERR_SELECTION if type is not a FathomMatrixType; FATHOM_ERR_NOT_SQUARE;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR if a is triangular and singular or not positive
 *         definite; FATHOM_ERR_ITERATIONS as from CxSVD
 */
FATHOM_API AnalysisStatus CxGenLinEqs(const ComplexNum* a, int32_t m, int32_t n,
                                      const ComplexNum* b, int32_t type, ComplexNum* x);

/**
 * The inverse of a complex A, by its type: CxLU for a general and for a positive definite matrix,
 * of which the whole is read, and substitution for a triangular one.
 *
 * In place: inverse may be a. If a general matrix is singular, inverse is what CxLU leaves; if a
 * triangular one is, inverse is its triangle.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[in] type a FathomMatrixType
 * @param[out] inverse n x n matrix; of a triangular one, with zeros in the other triangle
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SELECTION if type is not a
 *         FathomMatrixType; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR
 */
FATHOM_API AnalysisStatus CxGenInvMatrix(const ComplexNum* a, int32_t n, int32_t type,
                                         ComplexNum* inverse);

/* ---- Cholesky and QR factorisations (src/linalg/cholesky.cpp, qr.cpp) ----------------------- */

/**
 * Cholesky factorisation A = L L^T of a symmetric positive definite matrix.
 *
 * A matrix counts as not positive definite if, at some column, what remains of its diagonal element
 * is not above 0, or an element of L's diagonal so far is below 2^-31.5 of the largest magnitude in
 * L so far.
 *
 * Source: C. Benoit, "Note sur une methode de resolution des equations normales ... (procede du
 * commandant Cholesky)", Bulletin geodesique, 1924.
 *
 * In place: l may be a.
 *
 * @param[in] a n x n matrix; only the lower triangle is read
 * @param[in] n rows and columns, at least 1
 * @param[out] l n x n matrix L, lower triangular with zeros above the diagonal
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR if a is
 *         not positive definite
 */
FATHOM_API AnalysisStatus Cholesky(const double* a, int32_t n, double* l);

/**
 * Cholesky factorisation A = L L^H of a Hermitian positive definite matrix, with the tests of
 * Cholesky. The diagonal of L is real; imaginary parts in that of A count as 0.
 *
 * In place: l may be a.
 *
 * @param[in] a n x n matrix; only the lower triangle is read
 * @param[in] n rows and columns, at least 1
 * @param[out] l n x n matrix L, lower triangular with zeros above the diagonal
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR if a is
 *         not positive definite
 */
FATHOM_API AnalysisStatus CxCholesky(const ComplexNum* a, int32_t n, ComplexNum* l);

/**
 * Whether A is symmetric, each element within 2^-40 of A's largest magnitude of its mirror image,
 * and positive definite as Cholesky tests it.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[out] positiveDefinite 1 or 0
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus CheckPosDef(const double* a, int32_t n, int32_t* positiveDefinite);

/**
 * Whether a complex A is Hermitian, each element within 2^-40 of A's largest magnitude of its
 * mirror image's conjugate, and positive definite as CxCholesky tests it.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[out] positiveDefinite 1 or 0
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus CxCheckPosDef(const ComplexNum* a, int32_t n, int32_t* positiveDefinite);

/**
 * QR factorisation A = Q R: Q orthogonal, R upper trapezoidal.
 *
 * Householder reflections from the left. R's diagonal may have either sign; a column that is
 * already zero below the diagonal is left as it is. Source: A. S. Householder, "Unitary
 * triangularization of a nonsymmetric matrix", Journal of the ACM, 1958; P. Businger and G. H.
 * Golub, "Linear least squares solutions by Householder transformations", Numerische Mathematik,
 * 1965.
 *
 * In place: no.
 *
 * @param[in] a m x n matrix A
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[out] q m x m matrix Q
 * @param[out] r m x n matrix R, with zeros below its diagonal
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus QR(const double* a, int32_t m, int32_t n, double* q, double* r);

/**
 * QR factorisation A = Q R of a complex matrix, as QR: Q is unitary, and the diagonal of R real.
 *
 * In place: no.
 *
 * @param[in] a m x n matrix A
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[out] q m x m matrix Q
 * @param[out] r m x n matrix R, with zeros below its diagonal
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY
 */
FATHOM_API AnalysisStatus CxQR(const ComplexNum* a, int32_t m, int32_t n, ComplexNum* q,
                               ComplexNum* r);

/* ---- Singular values (src/linalg/svd.cpp, svd_derived.cpp) ---------------------------------- */

/**
 * Singular value decomposition A = U S V^T: orthonormal columns in U and V, singular values s from
 * the largest down.
 *
 * A with fewer rows than columns becomes square by rows of zeros below. The matrix is reduced to a
 * bidiagonal one by Householder reflections, and that to a diagonal one by implicitly shifted QR,
 * at most 29 sweeps for each value. An element off the diagonal counts as zero if it adds less than
 * 1e-16, whatever the matrix, to a bound of the norm. So a matrix of elements near 1e-16 has no
 * correct values: scale it first. Hypotenuses and the shift are formed without squares that
 * overflow. Source: G. H. Golub and C. Reinsch, "Singular value decomposition and least squares
 * solutions", Numerische Mathematik, 1970; scaling and shift as in B. S. Garbow, J. M.
 * Boyle, J. J. Dongarra and C. B. Moler, "Matrix Eigensystem Routines: EISPACK Guide Extension",
 * Springer, 1977, and its later editions. In place: `u` may be `a`.
 *
 * @param[in,out] a m x n matrix A; if n > m, room for n x n elements, whose rows from m on are set
 *                to 0
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[out] u U, max(m, n) x n
 * @param[out] s n singular values
 * @param[out] v V, n x n
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY;
 *         FATHOM_ERR_ITERATIONS if a value does not converge, as with infinite and NaN elements,
 *         with `u` and `v` of no use and `s` as it was
 */
FATHOM_API AnalysisStatus SVD(double* a, int32_t m, int32_t n, double* u, double* s, double* v);

/**
 * Singular value decomposition A = U S V^H of a complex matrix, as SVD does it: the reflections
 * leave a real bidiagonal matrix. The singular values have imaginary parts 0. Source, besides those
 * of SVD: P. A. Businger and G. H. Golub, "Algorithm 358: Singular value decomposition of a complex
 * matrix", Communications of the ACM, 1969. In place: `u` may be `a`.
 *
 * @param[in] a m x n matrix A; no room for more is needed unless it is `u`
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[out] u U, max(m, n) x n
 * @param[out] s n singular values
 * @param[out] v V, n x n
 * @return as SVD
 */
FATHOM_API AnalysisStatus CxSVD(const ComplexNum* a, int32_t m, int32_t n, ComplexNum* u,
                                ComplexNum* s, ComplexNum* v);

/**
 * Singular values of a matrix, from the largest down: those of SVD to the last bit, without the
 * work for U and V. In place: no.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[out] s n singular values; if n > m, the last n - m are those of rows of zeros
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY;
 *         FATHOM_ERR_ITERATIONS if a value does not converge, as with infinite and NaN elements
 */
FATHOM_API AnalysisStatus SVDS(const double* a, int32_t m, int32_t n, double* s);

/**
 * Singular values of a complex matrix, from the largest down, with imaginary parts 0: those of
 * CxSVD to the last bit. In place: no.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[out] s n singular values; if n > m, the last n - m are those of rows of zeros
 * @return as SVDS
 */
FATHOM_API AnalysisStatus CxSVDS(const ComplexNum* a, int32_t m, int32_t n, ComplexNum* s);

/**
 * Moore-Penrose pseudo-inverse V S^-1 U^T, in which the reciprocals of singular values that are tol
 * or less are 0. In place: `inverse` may be `a`.
 *
 * @param[in,out] a m x n matrix; if m >= n and `inverse` is another array, U of its singular value
 *                decomposition afterwards
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[in] tol largest singular value that counts as 0; if negative, 2^-52 min(m, n), which is
 *            not relative to the matrix
 * @param[out] inverse n x m matrix
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY;
 *         FATHOM_ERR_ITERATIONS as SVD, with `a` of no use unless it is read only
 */
FATHOM_API AnalysisStatus PseudoInverse(double* a, int32_t m, int32_t n, double tol,
                                        double* inverse);

/**
 * Moore-Penrose pseudo-inverse V S^-1 U^H of a complex matrix, as PseudoInverse forms it, but the
 * matrix is only read. In place: `inverse` may be `a`.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[in] tol as for PseudoInverse
 * @param[out] inverse n x m matrix
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY;
 *         FATHOM_ERR_ITERATIONS as CxSVD
 */
FATHOM_API AnalysisStatus CxPseudoInverse(const ComplexNum* a, int32_t m, int32_t n, double tol,
                                          ComplexNum* inverse);

/**
 * Rank of a matrix: the number of its singular values greater than tol.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[in] tol largest singular value that counts as 0; if negative, 2^-52 max(m, n) times the
 *            largest singular value
 * @param[out] rank the rank; -1 on failure
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY;
 *         FATHOM_ERR_ITERATIONS as SVDS
 */
FATHOM_API AnalysisStatus MatrixRank(const double* a, int32_t m, int32_t n, double tol,
                                     int32_t* rank);

/**
 * Rank of a complex matrix, as MatrixRank.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[in] tol as for MatrixRank
 * @param[out] rank the rank; -1 on failure
 * @return as MatrixRank
 */
FATHOM_API AnalysisStatus CxMatrixRank(const ComplexNum* a, int32_t m, int32_t n, double tol,
                                       int32_t* rank);

/**
 * Norm of a matrix. NaN elements leave the column or row sum that they are in out of account.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[in] type a FathomNorm
 * @param[out] norm the norm; 0 on failure
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_SELECTION if type is not a
 *         FathomNorm; for FATHOM_NORM_2 FATHOM_ERR_MEMORY and FATHOM_ERR_ITERATIONS, as SVDS
 */
FATHOM_API AnalysisStatus MatrixNorm(const double* a, int32_t m, int32_t n, int32_t type,
                                     double* norm);

/**
 * Norm of a complex matrix, as MatrixNorm, with magnitudes sqrt(re^2 + im^2).
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1
 * @param[in] n number of columns, at least 1
 * @param[in] type a FathomNorm
 * @param[out] norm the norm, real; 0 on failure
 * @return as MatrixNorm
 */
FATHOM_API AnalysisStatus CxMatrixNorm(const ComplexNum* a, int32_t m, int32_t n, int32_t type,
                                       double* norm);

/**
 * Condition number of a matrix: the ratio of its largest and smallest singular value, or the
 * product of another norm of the matrix and the same norm of its inverse.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1; for norms other than FATHOM_NORM_2, n
 * @param[in] n number of columns, at least 1
 * @param[in] type a FathomNorm
 * @param[out] cond the condition number; 0 on failure
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if m < 1 or n < 1; FATHOM_ERR_MEMORY;
 *         FATHOM_ERR_SELECTION if type is not a FathomNorm; FATHOM_ERR_NOT_SQUARE if m != n and
 *         type is not FATHOM_NORM_2; for FATHOM_NORM_2 FATHOM_ERR_ITERATIONS as SVDS, and
 *         FATHOM_ERR_SINGULAR if the smallest singular value is 0 or less than 2^-63 max(m, n)
 *         times the largest; for the others FATHOM_ERR_SINGULAR as InvMatrix
 */
FATHOM_API AnalysisStatus ConditionNumber(const double* a, int32_t m, int32_t n, int32_t type,
                                          double* cond);

/**
 * Condition number of a complex matrix, as ConditionNumber, with the inverse of CxGenInvMatrix.
 *
 * @param[in] a m x n matrix
 * @param[in] m number of rows, at least 1; for norms other than FATHOM_NORM_2, n
 * @param[in] n number of columns, at least 1
 * @param[in] type a FathomNorm
 * @param[out] cond the condition number, real; 0 on failure
 * @return as ConditionNumber, with FATHOM_ERR_SINGULAR as CxGenInvMatrix
 */
FATHOM_API AnalysisStatus CxConditionNumber(const ComplexNum* a, int32_t m, int32_t n, int32_t type,
                                            double* cond);

/* ---- Eigenvalues (src/linalg/eigen_symmetric.cpp, eigen_general.cpp, eigen_complex.cpp) ----- */

/**
 * Eigenvalues and eigenvectors A v = lambda v of a symmetric matrix.
 *
 * Householder reflections make the matrix tridiagonal, and implicitly shifted QL sweeps make that
 * diagonal. The eigenvectors are orthogonal; each has unit length, and the element of largest
 * magnitude, the first of equal ones, is positive. The eigenvalues have the same bits with and
 * without vectors. Source: R. S. Martin, C. Reinsch and J. H. Wilkinson, "Householder's
 * tridiagonalization of a symmetric matrix", Numerische Mathematik, 1968; A. Dubrulle, R. S. Martin
 * and J. H. Wilkinson, "The implicit QL algorithm", Numerische Mathematik, 1968; both in J. H.
 * Wilkinson and C. Reinsch, "Linear Algebra", Springer, 1971.
 *
 * In place: `vectors` may be `a`.
 *
 * @param[in] a n x n matrix; only the lower triangle is read
 * @param[in] n rows and columns, at least 1
 * @param[in] option a FathomEigen
 * @param[out] values n eigenvalues, from the smallest up
 * @param[out] vectors n x n matrix; column j is the eigenvector of values[j]. May be null for
 *             FATHOM_EIGEN_VALUES
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SELECTION if option is not a
 *         FathomEigen; FATHOM_ERR_MEMORY; FATHOM_ERR_ITERATIONS if the eigenvalues do not converge
 *         in 30 n sweeps, or an element is infinite or NaN, with nothing written
 */
FATHOM_API AnalysisStatus SymEigenValueVector(const double* a, int32_t n, int32_t option,
                                              double* values, double* vectors);

/**
 * Eigenvalues and eigenvectors A v = lambda v of a general matrix.
 *
 * The matrix is balanced by permutations and powers of two, reduced to Hessenberg form by
 * Householder reflections, and that to a quasi-triangular form by QR sweeps with two implicit
 * shifts; back substitution gives the vectors. Each has unit length, sqrt(sum |v[i]|^2) = 1, and
 * the element of largest magnitude, the first of equal ones, is real and positive. The vectors of a
 * defective matrix are parallel, or nearly so. Errors are small beside the balanced matrix; where
 * elements differ by tens of orders of magnitude, not always beside the given one. Source: B. N.
 * Parlett and C. Reinsch, "Balancing a matrix for calculation of eigenvalues and eigenvectors",
 * Numerische Mathematik, 1969; R. S.
 * Martin and J. H. Wilkinson, "Similarity reduction of a general matrix to Hessenberg form",
 * Numerische Mathematik, 1968; G. Peters and J. H. Wilkinson, "Eigenvectors of real and complex
 * matrices by LR and QR triangularizations", Numerische Mathematik, 1970; B. T. Smith et al.,
 * "Matrix Eigensystem Routines: EISPACK Guide", Springer, 1976.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[in] option a FathomEigen
 * @param[out] values n eigenvalues, in no particular order, but that conjugate ones are neighbours,
 *             the one with positive imaginary part first. With vectors they may have other bits
 *             than without
 * @param[out] vectors n x n matrix; column j is the eigenvector of values[j], and that of a
 *             conjugate eigenvalue is the conjugate one. May be null for FATHOM_EIGEN_VALUES
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SELECTION if option is not a
 *         FathomEigen; FATHOM_ERR_MEMORY; FATHOM_ERR_ITERATIONS if the eigenvalues do not converge
 *         in 30 n sweeps, or an element is infinite or NaN, with nothing written
 */
FATHOM_API AnalysisStatus GenEigenValueVector(const double* a, int32_t n, int32_t option,
                                              ComplexNum* values, ComplexNum* vectors);

/**
 * Eigenvalues and eigenvectors A v = lambda v of a complex matrix, as GenEigenValueVector, but with
 * one shift in each sweep, to a triangular form.
 *
 * In place: `vectors` may be `a`.
 *
 * @param[in] a n x n matrix
 * @param[in] n rows and columns, at least 1
 * @param[in] option a FathomEigen
 * @param[out] values n eigenvalues, in no particular order
 * @param[out] vectors n x n matrix; column j is the eigenvector of values[j]. May be null for
 *             FATHOM_EIGEN_VALUES
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_SELECTION if option is not a
 *         FathomEigen; FATHOM_ERR_MEMORY; FATHOM_ERR_ITERATIONS if the eigenvalues do not converge
 *         in 30 n sweeps, or an element is infinite or NaN, with nothing written
 */
FATHOM_API AnalysisStatus CxEigenValueVector(const ComplexNum* a, int32_t n, int32_t option,
                                             ComplexNum* values, ComplexNum* vectors);

/* ---- Fits of lines, exponentials, polynomials (src/fit/line.cpp, polynomial.cpp) ------------ */

/**
 * Straight line y = slope x + intercept through points, by least squares:
 * slope = (sx sy - n sxy) / d and intercept = (sx sxy - sy sxx) / d with d = sx^2 - n sxx and the
 * sums sx, sxx, sy, sxy of x, x^2, y and x y. Where all x are equal, both are infinite or NaN, with
 * status 0.
 *
 * In place: `fitted` may be `x`. It may be `y`, but then the error is that of the values which have
 * taken the place of y: 0.
 *
 * @param[in] x n abscissas
 * @param[in] y n ordinates
 * @param[in] n number of points, at least 2
 * @param[out] fitted n values of the line
 * @param[out] slope units of y per unit of x
 * @param[out] intercept units of y
 * @param[out] meanSquaredError mean of (fitted - y)^2 over the n points
 * @return FATHOM_OK; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n < 2
 */
FATHOM_API AnalysisStatus LinFit(const double* x, const double* y, int32_t n, double* fitted,
                                 double* slope, double* intercept, double* meanSquaredError);
/**
 * Exponential y = amplitude exp(damping x) through points of one sign, by least squares of the
 * logarithm: damping = (n sxl - sx sl) / (n sxx - sx^2) and
 * amplitude = exp((sl - damping sx) / n), negative where y is, with the sums sx, sxx, sl, sxl of x,
 * x^2, ln |y| and x ln |y|. The logarithm gives small values of y more weight than a fit of y
 * itself would.
 *
 * y[0] decides: if it is above 0, all of y must be, and if it is below, likewise. If it is 0 or
 * NaN, the others must be 0 or below: then the sums hold logarithms that are infinite or NaN, and
 * so are the results, with status 0. A NaN after y[0] is a wrong sign.
 *
 * In place: `fitted` may be `x`. It may be `y`, but then the error is that of the values which have
 * taken the place of y: 0. During the call y is negated where y[0] < 0, so nothing else may read
 * it; afterwards it has its bits again.
 *
 * @param[in] x n abscissas
 * @param[in,out] y n ordinates, unchanged on return
 * @param[in] n number of points, at least 2
 * @param[out] fitted n values of the exponential
 * @param[out] amplitude units of y; 0 after any failure
 * @param[out] damping per unit of x; negative where the curve decays; 0 after any failure
 * @param[out] meanSquaredError mean of (fitted - y)^2 over the n points
 * @return FATHOM_OK; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n < 2; FATHOM_ERR_SIGN_OF_ARRAY if an
 *         ordinate is not of the sign that y[0] asks for, with fitted and error as they were
 */
FATHOM_API AnalysisStatus ExpFit(const double* x, double* y, int32_t n, double* fitted,
                                 double* amplitude, double* damping, double* meanSquaredError);
/**
 * Polynomial c[0] + c[1] x + ... + c[order] x^order through points, by least squares: GenLSFit with
 * FATHOM_LS_SINGULAR_VALUES of the matrix of powers pow(x[i], j). Abscissas with fewer than
 * order + 1 different values give the coefficients of smallest norm.
 *
 * In place: `fitted` may be `x` or `y`.
 *
 * @param[in] x n abscissas
 * @param[in] y n ordinates
 * @param[in] n number of points, at least 1
 * @param[in] order 0 to n - 1
 * @param[out] fitted n values of the polynomial
 * @param[out] coefficients order + 1 values, that of the lowest power first
 * @param[out] meanSquaredError mean of (y - fitted)^2 over the n points
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_NEGATIVE_ORDER if order < 0;
 *         FATHOM_ERR_SIZE_BELOW_ORDER if order >= n; FATHOM_ERR_MEMORY; FATHOM_ERR_ITERATIONS if
 *         the singular values do not converge, or a power is infinite or NaN, with nothing written
 */
FATHOM_API AnalysisStatus PolyFit(const double* x, const double* y, int32_t n, int32_t order,
                                  double* fitted, double* coefficients, double* meanSquaredError);

/* ---- General least squares (src/fit/least_squares.cpp) -------------------------------------- */

/**
 * General linear least squares: the coefficients c that minimise the sum of
 * ((y[i] - h(i, 0) c[0] - ... - h(i, k - 1) c[k - 1]) / standardDeviations[i])^2.
 *
 * Columns are scaled by powers of two to like size first, so their units do not matter. What the
 * factorisation gives is then refined (A. Bjoerck, "Iterative refinement of linear least squares
 * solutions I", BIT, 1967) with residuals in twice the precision, so that as a rule every
 * coefficient is right to its last digits, by whichever algorithm, as long as the condition number
 * is below 10^13, or 10^6 for the normal equations. docs/fits.md has the digits for reference data.
 *
 * Linearly dependent columns: FATHOM_LS_SINGULAR_VALUES takes singular values of the scaled matrix
 * of no more than 2^-52 n times the largest for zero, and gives, of all c that minimise the sum,
 * the one of smallest norm. The others refuse a matrix in which a column has no more than that part
 * of its length (of its squared length for FATHOM_LS_NORMAL_CHOLESKY, 10^-12 for
 * FATHOM_LS_NORMAL_LU) outside those before it.
 *
 * In place: `fitted` may be `y`.
 *
 * @param[in] h n x k matrix: column j is the j-th function at the n points
 * @param[in] n number of points, at least k
 * @param[in] k number of coefficients, at least 1
 * @param[in] y n observations
 * @param[in] standardDeviations of the n observations, each above 0, in units of y, infinite for a
 *            point that is to be left out; null if unknown, for equal weights
 * @param[in] algorithm a FathomLeastSquares
 * @param[out] fitted n values H c
 * @param[out] coefficients k values
 * @param[out] covariance null, or k x k matrix: that of the coefficients, (H^T W H)^-1 with the
 *             squared reciprocals of the deviations in W. Without deviations and with n > k it is
 *             (H^T H)^-1 times the sum of the squared residuals / (n - k). Of dependent columns,
 *             the pseudo-inverse stands for the inverse
 * @param[out] meanSquaredError mean of ((y - fitted) / standardDeviations)^2 over the n points
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1 or k < 1; FATHOM_ERR_ARRAY_SIZE if k > n;
 *         FATHOM_ERR_SELECTION if algorithm is not a FathomLeastSquares, or a deviation is not
 *         above 0; FATHOM_ERR_MEMORY; FATHOM_ERR_SINGULAR if columns are dependent, or not finite,
 *         for all algorithms but FATHOM_LS_SINGULAR_VALUES; FATHOM_ERR_ITERATIONS if the singular
 *         values do not converge, as where an element is infinite or NaN
 */
FATHOM_API AnalysisStatus GenLSFit(const double* h, int32_t n, int32_t k, const double* y,
                                   const double* standardDeviations, int32_t algorithm,
                                   double* fitted, double* coefficients, double* covariance,
                                   double* meanSquaredError);
/**
 * The coefficients of GenLSFit alone, with no standard deviations.
 *
 * @param[in] h n x k matrix: column j is the j-th function at the n points
 * @param[in] n number of points, at least k
 * @param[in] k number of coefficients, at least 1
 * @param[in] y n observations
 * @param[in] algorithm a FathomLeastSquares
 * @param[out] coefficients k values
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1 or k < 1; FATHOM_ERR_ARRAY_SIZE if k > n;
 *         FATHOM_ERR_SELECTION if algorithm is not a FathomLeastSquares; FATHOM_ERR_MEMORY;
 *         FATHOM_ERR_SINGULAR and FATHOM_ERR_ITERATIONS as from GenLSFit
 */
FATHOM_API AnalysisStatus GenLSFitCoef(const double* h, int32_t n, int32_t k, const double* y,
                                       int32_t algorithm, double* coefficients);

/* ---- Nonlinear fits (src/fit/nonlinear.cpp) ------------------------------------------------- */

/**
 * Nonlinear least squares: the coefficients c that make the sum of (y[i] - model(x[i], c, k))^2
 * least, near those given. NonLinearFitWithMaxIters with 100 iterations.
 *
 * In place: `fitted` may be `x` or `y`.
 *
 * @param[in] x n abscissas, which go to the model and nowhere else: with several predictors, they
 *            may be indices into tables of the caller's
 * @param[in] y n observations
 * @param[in] n number of observations, at least 1
 * @param[in] model value at one abscissa. It is called with coefficients in memory of the call's
 *            own, all of them finite
 * @param[in,out] coefficients k values: where to start, and the result
 * @param[in] k number of coefficients, 1 to n
 * @param[out] fitted n values of the model at the resulting coefficients
 * @param[out] meanSquaredError mean of (y[i] - fitted[i])^2 over the n points
 * @return FATHOM_OK; FATHOM_ERR_SELECTION if model is null; FATHOM_ERR_NO_SAMPLES if n < 1 or
 *         k < 1; FATHOM_ERR_ARRAY_SIZE if n < k; FATHOM_ERR_MEMORY; FATHOM_ERR_ITERATIONS as from
 *         NonLinearFitWithMaxIters
 */
FATHOM_API AnalysisStatus NonLinearFit(const double* x, const double* y, int32_t n,
                                       FathomModel model, double* coefficients, int32_t k,
                                       double* fitted, double* meanSquaredError);
/**
 * NonLinearFit with a limit of iterations.
 *
 * The method is that of Levenberg and Marquardt as a trust region, with derivatives by central
 * differences. Coefficients in which the model turns out to be linear are eliminated: for every
 * step of the others they are solved for anew. Two Newton steps in a row are extrapolated. The fit
 * ends where a step promises to shorten the residual by less than 10^-9 of itself, or by less than
 * rounding allows; as a rule the coefficients then have 8 digits or more: docs/fits_nonlinear.md
 * has the digits for reference data.
 *
 * An iteration is one set of derivatives and the steps that are tried with it. It calls the model
 * at all points twice for every coefficient that is not eliminated, then for every step once, and,
 * if some are eliminated, once more and once for each of those. The first iteration also finds out
 * which ones can be.
 *
 * A fit that stalls, or that ends where a coefficient no longer has any influence, starts again
 * with a longer or shorter first step, up to three times, within the same limit; the best result
 * counts. A step to where the model is infinite or NaN is not taken. A coefficient that the model
 * does not depend on keeps its value, and the rest is fitted, with status 0.
 *
 * Sources: K. Levenberg, "A method for the solution of certain non-linear problems in least
 * squares", Quarterly of Applied Mathematics, 1944; D. W. Marquardt, "An algorithm for
 * least-squares estimation of nonlinear parameters", Journal of the Society for Industrial and
 * Applied Mathematics, 1963; J. J. More, "The Levenberg-Marquardt algorithm: implementation and
 * theory", Lecture Notes in Mathematics 630, 1978; for the elimination, L. Kaufman, "A variable
 * projection method for solving separable nonlinear least squares problems", BIT, 1975.
 *
 * In place: `fitted` may be `x` or `y`.
 *
 * @param[in] x n abscissas
 * @param[in] y n observations
 * @param[in] n number of observations, at least 1
 * @param[in] model value at one abscissa
 * @param[in,out] coefficients k values: where to start, and the result
 * @param[in] k number of coefficients, 1 to n
 * @param[in] maxIterations at least 1
 * @param[out] fitted n values of the model at the resulting coefficients
 * @param[out] meanSquaredError mean of (y[i] - fitted[i])^2 over the n points
 * @return FATHOM_OK; FATHOM_ERR_SELECTION if model is null; FATHOM_ERR_NO_SAMPLES if n < 1 or
 *         k < 1; FATHOM_ERR_ARRAY_SIZE if n < k; FATHOM_ERR_SELECTION if maxIterations < 1;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_ITERATIONS if a coefficient, an observation, or the model
 *         at the start is infinite or NaN, with nothing written, or if no solution is found in
 *         maxIterations, with the best coefficients so far, their fit and its error written
 */
FATHOM_API AnalysisStatus NonLinearFitWithMaxIters(const double* x, const double* y, int32_t n,
                                                   FathomModel model, double* coefficients,
                                                   int32_t k, int32_t maxIterations, double* fitted,
                                                   double* meanSquaredError);

/* ---- Interpolation (src/fit/interpolation.cpp) ---------------------------------------------- */

/**
 * Value at x0 of the polynomial of degree n - 1 through n points (x[i], y[i]), with an error
 * estimate, by Neville's scheme.
 *
 * With c[i] = d[i] = y[i] at first, column m = 1 to n - 1 of the triangle is
 *
 *     w = c[i + 1] - d[i]
 *     d[i] = (x[i + m] - x0) w / (x[i] - x[i + m])
 *     c[i] = (x[i] - x0) w / (x[i] - x[i + m])
 *
 * for i = 0 to n - m - 1. The value starts from the point closest to x0, the first of equally close
 * ones, and each column adds the c or d that stays in the middle. Source: E. H. Neville, "Iterative
 * interpolation", Journal of the Indian Mathematical Society, 1934.
 *
 * @param[in] x n abscissas, all different, in any order
 * @param[in] y n ordinates
 * @param[in] n number of points, at least 1
 * @param[in] x0 where to interpolate; outside the abscissas the polynomial is continued
 * @param[out] y0 the value; the sum is formed here, so it is no element of x
 * @param[out] errorEstimate the last correction, of its sign; 0 if n is 1
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY; FATHOM_ERR_DISTINCT_X if
 *         two abscissas are equal: y0 then holds the sum up to the first correction that depends on
 *         both, errorEstimate is as it was
 */
FATHOM_API AnalysisStatus PolyInterp(const double* x, const double* y, int32_t n, double x0,
                                     double* y0, double* errorEstimate);
/**
 * Value at x0 of the diagonal rational function through n points (x[i], y[i]), with an error
 * estimate. Numerator and denominator are of degree (n - 1) / 2 if n is odd; if n is even, that of
 * the denominator is n / 2 and that of the numerator one less. Good near poles, where polynomials
 * fail.
 *
 * The triangle is that of PolyInterp, with other columns:
 *
 *     t = (x[i] - x0) d[i] / (x[i + m] - x0)
 *     q = (c[i + 1] - d[i]) / (t - c[i + 1])
 *     d[i] = c[i + 1] q
 *     c[i] = t q
 *
 * It starts from c[i] = y[i] and d[i] = y[i] + 1e-10, so that equal ordinates give no 0 / 0.
 * Source: J. Stoer and R. Bulirsch, "Introduction to Numerical Analysis", Springer, 1980, section
 * 2.2.
 *
 * @param[in] x n abscissas, all different, in any order
 * @param[in] y n ordinates
 * @param[in] n number of points, at least 1
 * @param[in] x0 where to interpolate; at an abscissa, the first of equal ones, the result is its
 *             ordinate
 * @param[out] y0 the value; the sum is formed here, so it is no element of x
 * @param[out] errorEstimate the last correction, of its sign; 0 at an abscissa or if n is 1
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_MEMORY; FATHOM_ERR_POLE if a
 *         denominator is zero: y0 then holds the sum up to the first correction that depends on it,
 *         errorEstimate is as it was
 */
FATHOM_API AnalysisStatus RatInterp(const double* x, const double* y, int32_t n, double x0,
                                    double* y0, double* errorEstimate);
/**
 * Second derivatives, for SpInterp, of the cubic spline through n points (x[i], y[i]): the function
 * that is cubic between neighbours and has two continuous derivatives.
 *
 * They solve, with h[i] = x[i + 1] - x[i] and s[i] = (y[i + 1] - y[i]) / h[i], for i = 1 to n - 2
 *
 *     h[i - 1] y2[i - 1] + 2 (h[i - 1] + h[i]) y2[i] + h[i] y2[i + 1] = 6 (s[i] - s[i - 1])
 *
 * An end whose slope argument is above 9.9e29 is natural, with second derivative 0; otherwise the
 * spline has that slope there, a NaN included: 2 y2[0] + y2[1] = 6 (s[0] - firstSlope) / h[0], and
 * likewise at the last. The tridiagonal system is solved by elimination without pivots. Source: J.
 * H. Ahlberg, E. N. Nilson and J. L. Walsh, "The Theory of Splines and Their Applications",
 * Academic Press, 1967.
 *
 * @param[in] x n abscissas; neighbours, and neighbours but one, differ
 * @param[in] y n ordinates
 * @param[in] n number of points, at least 2
 * @param[in] firstSlope slope at x[0], or above 9.9e29
 * @param[in] lastSlope slope at x[n - 1], or above 9.9e29
 * @param[out] secondDerivatives n second derivatives, in the unit of y per square of that of x;
 *             neither x nor y
 * @return FATHOM_OK, also for two points of equal abscissa, whose results are no numbers;
 *         FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n is 1;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_DISTINCT_X if abscissas are equal among i - 1, i and i + 1:
 *         the elements before the first such i then hold what the elimination left there, the
 *         others are as they were
 */
FATHOM_API AnalysisStatus Spline(const double* x, const double* y, int32_t n, double firstSlope,
                                 double lastSlope, double* secondDerivatives);
/**
 * Value of a cubic spline: with h = x[hi] - x[lo], a = (x[hi] - x0) / h and b = (x0 - x[lo]) / h,
 *
 *     y0 = a y[lo] + b y[hi] + ((a^3 - a) y2[lo] + (b^3 - b) y2[hi]) h^2 / 6
 *
 * where bisection finds the neighbours lo and hi around x0. The factor 1/6 is held in extended
 * precision, and its product rounded once.
 *
 * @param[in] x n abscissas in ascending order
 * @param[in] y n ordinates
 * @param[in] secondDerivatives y2, n second derivatives, of Spline
 * @param[in] n number of points, at least 2
 * @param[in] x0 where to interpolate; outside the abscissas the first or last cubic is continued
 * @param[out] y0 the value
 * @return FATHOM_OK; FATHOM_ERR_NO_SAMPLES if n < 1; FATHOM_ERR_DISTINCT_X if h is 0, as it is for
 *         n = 1 unless the only abscissa is infinite or NaN
 */
FATHOM_API AnalysisStatus SpInterp(const double* x, const double* y,
                                   const double* secondDerivatives, int32_t n, double x0,
                                   double* y0);

/* ---- Integration, roots of polynomials (src/fit/integration.cpp, roots.cpp) ----------------- */

/**
 * Integral of a sampled signal, by a closed Newton-Cotes rule applied to one group of intervals
 * after another. With h = |dt|, a group contributes
 *
 *     method                          n      group
 *     FATHOM_INTEGRATION_TRAPEZOIDAL  >= 2   h (x[i] + x[i + 1]) / 2
 *     FATHOM_INTEGRATION_SIMPSON      >= 3   h (x[i] + 4 x[i + 1] + x[i + 2]) / 3
 *     FATHOM_INTEGRATION_SIMPSON_3_8  >= 4   h (3 x[i] + 9 x[i + 1] + 9 x[i + 2] + 3 x[i + 3]) / 8
 *     FATHOM_INTEGRATION_BODE         >= 5   h (14 x[i] + 64 x[i + 1] + 24 x[i + 2] +
 *                                               64 x[i + 3] + 14 x[i + 4]) / 45
 *
 * One, two or three intervals left over at the end are integrated by the first, second or third of
 * these rules. The rules are exact for polynomials of degree 1, 3, 3 and 5, if no interval is left
 * over. Groups are summed in the order of the samples, for the trapezoidal rule the samples after
 * the mean of the first and the last; 1/3 and 1/45 are held in extended precision.
 * Source: M. Abramowitz and I. A. Stegun, "Handbook of Mathematical Functions", 1964, section 25.4.
 *
 * @param[in] x n samples
 * @param[in] n number of samples, at least that of the method
 * @param[in] dt sampling interval, whose sign is ignored
 * @param[in] method a FathomIntegration
 * @param[out] integral in the unit of x times that of dt
 * @return FATHOM_OK; FATHOM_ERR_SELECTION if method is not a FathomIntegration;
 *         FATHOM_ERR_ARRAY_SIZE if n is too small for the method
 */
FATHOM_API AnalysisStatus NumericIntegration(const double* x, int32_t n, double dt, int32_t method,
                                             double* integral);
/**
 * Roots of the polynomial coefficients[0] x^(n - 1) + ... + coefficients[n - 1], as the eigenvalues
 * of its companion matrix, by GenEigenValueVector. Computed roots are those of a polynomial with
 * coefficients near these: a multiple root comes out as a cluster around it, and a root that is
 * smaller than others by many orders of magnitude has fewer correct digits. Source: A. Edelman and
 * H. Murakami, "Polynomial roots from companion matrix eigenvalues", Mathematics of Computation,
 * 1995.
 *
 * @param[in] coefficients n coefficients, that of the highest power first, which is not zero
 * @param[in] n number of coefficients, at least 2
 * @param[out] roots n - 1 roots in the order of GenEigenValueVector: conjugate ones are neighbours,
 *             the one with positive imaginary part first
 * @return FATHOM_OK; FATHOM_ERR_FEWER_THAN_TWO_SAMPLES if n is 1; FATHOM_ERR_NO_SAMPLES if n < 1;
 *         FATHOM_ERR_MEMORY; FATHOM_ERR_ITERATIONS if the eigenvalues do not converge, or the
 *         quotient of a coefficient and the first is infinite or NaN, with nothing written
 */
FATHOM_API AnalysisStatus CxPolyRoots(const double* coefficients, int32_t n, ComplexNum* roots);

#ifdef __cplusplus
}
#endif

#endif
