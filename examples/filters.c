/*
 * The magnitude responses of the five families of IIR filters, for one order and one pair of edges:
 * columns of frequency (relative to the sampling frequency) and of level (dB), family by family, or
 * a picture of them.
 *
 * Usage: filters              prints the columns
 *        filters --plot FILE  draws FILE.png or FILE.svg (needs gnuplot)
 *
 * docs/filters.png is made by: filters --plot docs/filters.png
 */
#define _GNU_SOURCE /* NOLINT(bugprone-reserved-identifier): popen, M_PI */

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fathom.h"

enum { kOrder = 5, kPoints = 1200, kFamilies = 5 };

static const double kCutoff = 0.1;       /* of the sampling frequency */
static const double kRipple = 1.0;       /* dB */
static const double kAttenuation = 60.0; /* dB */
static const double kFloor = -120.0;     /* dB: what the picture shows, and zeros are cut off at */

static const char* const kNames[kFamilies] = {"Bessel", "Butterworth", "Chebyshev",
                                              "inverse Chebyshev", "elliptic"};

static AnalysisStatus design(int family, IIRFilterPtr filter) {
  switch (family) {
    case 0:
      return Bessel_CascadeCoef(1.0, kCutoff, 0.0, filter);
    case 1:
      return Bw_CascadeCoef(1.0, kCutoff, 0.0, filter);
    case 2:
      return Ch_CascadeCoef(1.0, kCutoff, 0.0, kRipple, filter);
    case 3:
      return InvCh_CascadeCoef(1.0, 2.0 * kCutoff, 0.0, kAttenuation, filter);
    default:
      return Elp_CascadeCoef(1.0, kCutoff, 0.0, kRipple, kAttenuation, filter);
  }
}

/* |b0 + b1 z^-1 + b2 z^-2|^2 at z = exp(i w). */
static double squaredModulus(double b0, double b1, double b2, double w) {
  const double re = b0 + b1 * cos(w) + b2 * cos(2.0 * w);
  const double im = b1 * sin(w) + b2 * sin(2.0 * w);
  return re * re + im * im;
}

static double level(const IIRFilter* filter, double frequency) {
  double squared = 1.0;
  for (int32_t s = 0; s < (filter->order + 1) / 2; ++s) {
    const double* a = filter->a + 2 * s;
    const double* b = filter->b + 3 * s;
    squared *= squaredModulus(b[0], b[1], b[2], 2.0 * M_PI * frequency) /
               squaredModulus(1.0, a[0], a[1], 2.0 * M_PI * frequency);
  }
  return fmax(10.0 * log10(squared), kFloor - 80.0);
}

/* The columns: two of each family, and two empty lines between families. */
static AnalysisStatus printResponses(FILE* to) {
  for (int family = 0; family < kFamilies; ++family) {
    IIRFilter* filter = AllocIIRFilterPtr(FATHOM_LOWPASS, kOrder);
    const AnalysisStatus status = filter ? design(family, filter) : FATHOM_ERR_MEMORY;
    if (status == FATHOM_OK) {
      fprintf(to, "# %s\n", kNames[family]);
      for (int i = 0; i <= kPoints; ++i) {
        const double frequency = 0.5 * i / kPoints;
        fprintf(to, "%.6f %.6f\n", frequency, level(filter, frequency));
      }
      fputs("\n\n", to);
    }
    FreeIIRFilterPtr(filter);
    if (status != FATHOM_OK) return status;
  }
  return FATHOM_OK;
}

static AnalysisStatus plot(const char* file, FILE* gnuplot) {
  const size_t length = strlen(file);
  const int svg = length > 4 && strcmp(file + length - 4, ".svg") == 0;
  fprintf(gnuplot,
          "set terminal %s size 1200,560 %s font 'DejaVu Sans,12'\nset output '%s'\n"
          "$r << end\n",
          svg ? "svg" : "pngcairo", svg ? "background 'white'" : "", file);
  const AnalysisStatus status = printResponses(gnuplot);
  fprintf(
      gnuplot,
      "end\nset multiplot title 'Lowpass filters of order %d: cutoff %g f_s (inverse Chebyshev: "
      "stop band from %g f_s), ripple %g dB, attenuation %g dB'\n"
      "set grid lt 1 lc '#dddddd'\nset tics out nomirror\nset xlabel 'Frequency / f_s'\n"
      "set ylabel 'Level (dB)'\n"
      "array colour[5] = ['#999999', '#4477aa', '#228833', '#ee7733', '#cc3311']\n"
      "array name[5] = ['%s', '%s', '%s', '%s', '%s']\n"
      "set title 'Whole response'\nset origin 0,0\nset size 0.6,0.95\nset xrange [0:0.5]\nset "
      "yrange [%g:10]\n"
      "plot for [i=1:5] $r index i-1 with lines lw 2 lc rgb colour[i] title name[i]\n"
      "set origin 0.6,0\nset size 0.4,0.95\nset xrange [0:%g]\nset yrange [-4:0.5]\n"
      "set title 'Pass band'\n"
      "plot for [i=1:5] $r index i-1 with lines lw 2 lc rgb colour[i] notitle\n"
      "unset multiplot\nset output\n",
      kOrder, kCutoff, 2.0 * kCutoff, kRipple, kAttenuation, kNames[0], kNames[1], kNames[2],
      kNames[3], kNames[4], kFloor, 1.2 * kCutoff);
  return status;
}

int main(int argc, char** argv) {
  AnalysisStatus status = FATHOM_OK;
  int good = 1;
  if (argc == 1) {
    status = printResponses(stdout);
  } else if (argc == 3 && strcmp(argv[1], "--plot") == 0 && !strchr(argv[2], '\'')) {
    FILE* gnuplot = popen("gnuplot", "w");
    good = gnuplot != NULL;
    if (good) status = plot(argv[2], gnuplot);
    if (good) good = pclose(gnuplot) == 0;
  } else {
    fputs("usage: filters [--plot FILE], where FILE has no quotes in its name\n", stderr);
    return EXIT_FAILURE;
  }
  if (status != FATHOM_OK) fprintf(stderr, "filters: %s\n", GetAnalysisErrorString(status));
  return good && status == FATHOM_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}
