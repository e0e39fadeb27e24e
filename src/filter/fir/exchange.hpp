// Minimax design of linear-phase FIR filters by the Remez exchange (T. W. Parks and J. H.
// McClellan, "Chebyshev approximation for nonrecursive digital filters with linear phase", IEEE
// Trans. Circuit Theory, 1972; J. H. McClellan, T. W. Parks and L. R. Rabiner, "A computer program
// for designing optimum FIR linear phase digital filters", IEEE Trans. Audio Electroacoust., 1973).
//
// A linear-phase response is a fixed factor times a cosine series P(f). On a dense grid of
// frequencies the exchange finds the series whose weighted error |W (D - P)| has the least maximum:
// the one whose error alternates between +deviation and -deviation on one extremal frequency more
// than the series has terms.
#ifndef FATHOM_FILTER_FIR_EXCHANGE_HPP
#define FATHOM_FILTER_FIR_EXCHANGE_HPP

#include <cstddef>
#include <cstdint>

#include "fathom.h"
#include "frame/workspace.hpp"

namespace fathom {

// What is asked for: bands with their edges (two each, in the unit of fs), desired values and
// weights.
struct FirBands {
  int32_t count;
  const double* desired;
  const double* weights;
  double fs;
  const double* edges;
  int32_t
      type;  // FATHOM_FIR_MULTIBAND, FATHOM_FIR_DIFFERENTIATOR, or antisymmetric without scaling

  bool symmetric() const { return type == FATHOM_FIR_MULTIBAND; }
};

// Terms of the cosine series of a filter with n coefficients.
inline int32_t cosineTerms(const FirBands& bands, int32_t n) {
  return n / 2 + (n % 2 != 0 && bands.symmetric() ? 1 : 0);
}

// Frequencies in cycles per sample, their x = cos(2 pi f), and the desired value and weight there.
struct DenseGrid {
  explicit DenseGrid(std::size_t capacity)
      : f(capacity), x(capacity), desired(capacity), weight(capacity) {}
  explicit operator bool() const { return f && x && desired && weight; }

  Workspace<double> f, x, desired, weight;
  std::size_t count = 0;
};

// The polynomial in x through `count` points (x, y), in barycentric form: the sums of w y / (x -
// x_k) over the sums of w / (x - x_k).
struct Interpolant {
  explicit Interpolant(std::size_t points)
      : x(points + 3), y(points), w(points + 3), wy(points + 3), count(points) {}
  explicit operator bool() const { return x && y && w && wy; }

  Workspace<double> x, y, w, wy;
  std::size_t count;
};

// Rounded up to whole tiles of the evaluation; arrays that evaluate() reads and writes are so long.
std::size_t wholeTiles(std::size_t points);

// An upper bound of the number of grid points.
std::size_t gridCapacity(const FirBands& bands, int32_t terms);
void makeGrid(const FirBands& bands, int32_t n, DenseGrid& grid);
// Divides the fixed factor of the response out of the desired values and into the weights.
void toCosineSeries(const FirBands& bands, int32_t n, DenseGrid& grid);

// Sets w from x, all scaled by one power of two; false if two x are equal or one is not a number.
bool barycentricWeights(Interpolant& p);
// The d for which values - d (-1)^k / weight lie on a polynomial of one term less than points.
double levelledDeviation(const Interpolant& p, const double* values, const double* weight);
// Sets y, so that the polynomial meets the desired values within the alternating deviation.
void setValues(Interpolant& p, const double* values, const double* weight, double deviation);
// The polynomial at x[0 ... points), an array of whole tiles.
void evaluate(const Interpolant& p, const double* x, std::size_t points, double* value);

// Moves the extremal indices to where the alternating error is largest; false if there are too few.
bool exchange(const double* error, std::size_t points, double deviation, std::size_t* extremal,
              std::size_t count, std::size_t* peaks);

// Coefficients a[0 ... terms) of the polynomial as the sum of a[k] cos(2 pi k f), refined until
// that sum meets the polynomial's points as nearly as it will; their y become what it misses them
// by. `scratch` holds seriesScratch(terms).
void cosineSeries(Interpolant& p, const double* weight, std::size_t terms, double* a,
                  double* scratch);
std::size_t seriesScratch(std::size_t terms);
// The coefficients of the filter from those of its cosine series.
void impulseResponse(const double* a, int32_t terms, bool symmetric, int32_t n, double* h);

// The whole design, for bands that passed their checks. FATHOM_ERR_FILTER_DESIGN when the exchange
// does not converge; `deviation` is then that of the last pass, if there was one.
AnalysisStatus equirippleDesign(const FirBands& bands, int32_t n, double* h, double* deviation);

}  // namespace fathom

#endif
