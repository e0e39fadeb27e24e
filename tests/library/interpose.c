/* An application whose own functions happen to bear names of the library: the library's calls of
 * its own routines must not end here. */
#include <stdio.h>

#include "fathom.h"

static int strayCalls = 0;

AnalysisStatus Sort(const double* x, int32_t n, int32_t direction, double* y) {
  (void)x, (void)n, (void)direction, (void)y;
  ++strayCalls;
  return FATHOM_OK;
}
AnalysisStatus Mean(const double* x, int32_t n, double* mean) {
  (void)x, (void)n, (void)mean;
  ++strayCalls;
  return FATHOM_OK;
}
AnalysisStatus Copy1D(const double* x, int32_t n, double* y) {
  (void)x, (void)n, (void)y;
  ++strayCalls;
  return FATHOM_OK;
}

int main(void) {
  const double x[4] = {4.0, 1.0, 3.0, 2.0};
  double median = 0.0, means[2] = {0.0, 0.0}, shifted[4] = {0.0, 0.0, 0.0, 0.0};
  Median(x, 4, &median);
  Decimate(x, 4, 2, 1, means);
  Shift(x, 4, 0, shifted);
  if (strayCalls == 0 && median == 2.5 && means[0] == 2.5 && means[1] == 2.5 && shifted[3] == 2.0) {
    return 0;
  }
  fprintf(stderr, "%d stray calls; median %g, means %g %g, shifted %g\n", strayCalls, median,
          means[0], means[1], shifted[3]);
  return 1;
}
