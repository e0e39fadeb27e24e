// Status codes, their messages, and the release of memory handed to callers.
#include <cstdlib>

#include "fathom.h"

namespace {

struct StatusRow {
  AnalysisStatus code;
  const char* message;
};

constexpr StatusRow kStatusTable[] = {
    {FATHOM_OK, "No error"},
    {FATHOM_ERR_ARRAY_SIZE, "Array size error"},
    {FATHOM_ERR_ATTENUATION_BELOW_RIPPLE, "Attenuation must be greater than the ripple amplitude"},
    {FATHOM_ERR_ATTENUATION, "Attenuation must be positive"},
    {FATHOM_ERR_UNBALANCED, "Data is unbalanced"},
    {FATHOM_ERR_BAND, "Invalid band specification"},
    {FATHOM_ERR_BASE_TOP, "Base must be less than top"},
    {FATHOM_ERR_BETA_PARAMETER, "Invalid parameter to beta function"},
    {FATHOM_ERR_CATEGORIES, "Invalid number of categories or samples"},
    {FATHOM_ERR_FIRST_COLUMN, "First column in the X matrix must be all ones"},
    {FATHOM_ERR_CYCLES,
     "Number of cycles must be greater than zero and less than or equal to the number of samples"},
    {FATHOM_ERR_TOTAL_POINTS, "Invalid total number of data points"},
    {FATHOM_ERR_DECIMATION, "Invalid decimating factor"},
    {FATHOM_ERR_DELAY_WIDTH, "Delay width error"},
    {FATHOM_ERR_DIMENSIONS, "Invalid number of dimensions or dependent variables"},
    {FATHOM_ERR_DISTINCT_X, "X values must be distinct"},
    {FATHOM_ERR_DIVIDE_BY_ZERO, "Divide by zero"},
    {FATHOM_ERR_INTERVAL, "dt or dx must be greater than zero"},
    {FATHOM_ERR_FILTER_DESIGN, "Filter cannot be designed with given parameters"},
    {FATHOM_ERR_SAME_SIZE, "Input sequences must be the same size"},
    {FATHOM_ERR_ODD_COEFFICIENTS, "Number of coefficients must be odd"},
    {FATHOM_ERR_FACTOR_LEVEL, "The level of factor is outside allowable range"},
    {FATHOM_ERR_DEGREES_OF_FREEDOM, "Invalid degrees of freedom"},
    {FATHOM_ERR_INDEX, "Index must be greater than zero and less than the number of samples"},
    {FATHOM_ERR_INDEX_LENGTH, "Index length error"},
    {FATHOM_ERR_SELECTION, "Invalid selection"},
    {FATHOM_ERR_LEVEL_COUNT, "Number of levels is outside allowable range"},
    {FATHOM_ERR_ITERATIONS, "Maximum iteration exceeded"},
    {FATHOM_ERR_SIGN_OF_ARRAY, "Second array must be all positive or negative and nonzero"},
    {FATHOM_ERR_FIXED_EFFECT, "Fixed Effect model is required"},
    {FATHOM_ERR_NYQUIST, "Nyquist error"},
    {FATHOM_ERR_EMPTY_LEVEL, "All the levels of a factor must have at least one observation"},
    {FATHOM_ERR_EVEN_COEFFICIENTS, "Number of coefficients must be even"},
    {FATHOM_ERR_NEGATIVE_ORDER, "Order must be greater than or equal to zero"},
    {FATHOM_ERR_ORDER, "Order must be positive"},
    {FATHOM_ERR_MEMORY, "Insufficient memory"},
    {FATHOM_ERR_POLE, "Interpolating function has a pole at the requested value"},
    {FATHOM_ERR_POLYNOMIAL, "Invalid polynomial"},
    {FATHOM_ERR_POWER_OF_TWO, "Array size is not a power of 2"},
    {FATHOM_ERR_PROBABILITY, "Probability must be between 0 and 1"},
    {FATHOM_ERR_RIPPLE, "Ripple must be positive"},
    {FATHOM_ERR_FEWER_THAN_THREE_SAMPLES,
     "Number of samples must be greater than or equal to three"},
    {FATHOM_ERR_FEWER_THAN_TWO_SAMPLES, "Number of samples must be greater than or equal to two"},
    {FATHOM_ERR_NEGATIVE_SAMPLES, "Number of samples must be greater than or equal to zero"},
    {FATHOM_ERR_NO_SAMPLES, "Number of samples must be greater than zero"},
    {FATHOM_ERR_SHIFT_RANGE, "Shift range error"},
    {FATHOM_ERR_SINGULAR, "Input matrix is singular"},
    {FATHOM_ERR_SIZE_BELOW_ORDER, "Array size must be greater than the order"},
    {FATHOM_ERR_NOT_SQUARE, "Input matrix must be a square matrix"},
    {FATHOM_ERR_NEGATIVE_TABLE, "Contigency table has a negative number"},
    {FATHOM_ERR_LIMITS, "Upper value must be greater than or equal to the lower value"},
    {FATHOM_ERR_ZERO_VECTOR, "The elements of the vector can not be all zero"},
    {FATHOM_ERR_FILTER_RECORD, "The information in IIR filter structure is not correct"},
};

}  // namespace

const char* GetAnalysisErrorString(AnalysisStatus status) {
  for (const StatusRow& row : kStatusTable) {
    if (row.code == status) return row.message;
  }
  return "Unknown error number";
}

void FreeAnalysisMem(void* memory) {
  std::free(memory);
}
