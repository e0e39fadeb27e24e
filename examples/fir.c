/*
 * Three equiripple designs, a multiband filter, a differentiator and a Hilbert transformer: columns
 * of frequency (relative to the sampling frequency), amplitude, and weighted error relative to the
 * deviation (NaN between the bands), design by design, or a picture of them.
 *
 * Usage: fir              prints the columns
 *        fir --plot FILE  draws FILE.png or FILE.svg (needs gnuplot)
 *
 * docs/equiripple.png is made by: fir --plot docs/equiripple.png
 */
#define _GNU_SOURCE /* NOLINT(bugprone-reserved-identifier): M_PI */

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "fathom.h"
#include "plot.h"

enum { kMostBands = 5, kMostCoefficients = 55, kPoints = 2000, kDesigns = 3 };

typedef struct Design {
  const char* title;
  const char* key; /* where the picture has room for it */
  int32_t type;
  int32_t n;
  int32_t bands;
  double edges[2 * kMostBands];
  double desired[kMostBands];
  double weights[kMostBands];
} Design;

static const Design kTable[kDesigns] = {
    {"five bands",
     "center top horizontal",
     FATHOM_FIR_MULTIBAND,
     55,
     5,
     {0.0, 0.05, 0.1, 0.15, 0.18, 0.25, 0.3, 0.36, 0.41, 0.5},
     {0.0, 1.0, 0.0, 1.0, 0.0},
     {10.0, 1.0, 3.0, 1.0, 20.0}},
    {"differentiator", "top left", FATHOM_FIR_DIFFERENTIATOR, 31, 1, {0.0, 0.45}, {1.0}, {1.0}},
    {"Hilbert transformer",
     "center bottom",
     FATHOM_FIR_HILBERT,
     31,
     1,
     {0.05, 0.45},
     {1.0},
     {1.0}}};

/* The response is the amplitude times exp(-i pi f (n - 1)), and times i for antisymmetric filters.
 */
static double amplitude(const Design* design, const double* h, double f) {
  double sum = 0.0;
  for (int32_t k = 0; k < design->n; ++k) {
    const double angle = M_PI * f * (design->n - 1 - 2 * k);
    sum += h[k] * (design->type == FATHOM_FIR_MULTIBAND ? cos(angle) : sin(angle));
  }
  return sum;
}

/* What the design asks for at f; false between the bands. */
static int asked(const Design* design, double f, double* desired, double* weight) {
  for (int32_t band = 0; band < design->bands; ++band) {
    if (f < design->edges[2 * band] || f > design->edges[2 * band + 1]) continue;
    const int slope = design->type == FATHOM_FIR_DIFFERENTIATOR;
    *desired = design->desired[band] * (slope ? f : 1.0);
    *weight = slope ? design->weights[band] / fmax(f, 1e-9) : design->weights[band];
    return 1;
  }
  return 0;
}

static AnalysisStatus putDesign(const Design* design, double* deviation, FILE* out) {
  double h[kMostCoefficients];
  const AnalysisStatus status = Equi_Ripple(design->bands, design->desired, design->weights, 1.0,
                                            design->edges, design->type, design->n, h, deviation);
  if (status != FATHOM_OK) return status;
  for (int i = 0; i <= kPoints; ++i) {
    const double f = 0.5 * i / kPoints;
    const double a = amplitude(design, h, f);
    double desired = 0.0;
    double weight = 0.0;
    if (asked(design, f, &desired, &weight)) {
      fprintf(out, "%.6f %.9f %.6f %.6f\n", f, a, weight * (desired - a) / *deviation, desired);
    } else {
      fprintf(out, "%.6f %.9f NaN NaN\n", f, a);
    }
  }
  return FATHOM_OK;
}

static AnalysisStatus putPlot(FILE* gnuplot) {
  double deviation[kDesigns];
  for (int i = 0; i < kDesigns; ++i) {
    fprintf(gnuplot, "$data%d << end\n", i);
    const AnalysisStatus status = putDesign(&kTable[i], &deviation[i], gnuplot);
    if (status != FATHOM_OK) return status;
    fputs("end\n", gnuplot);
  }
  fputs(
      "set multiplot layout 3,2\nset xrange [0:0.5]\nset offsets 0,0,graph 0.2,0\n"
      "set xlabel 'Frequency / sampling frequency'\n",
      gnuplot);
  for (int i = 0; i < kDesigns; ++i) {
    fprintf(gnuplot,
            "set title '%d coefficients: %s'\nset ylabel 'Amplitude'\nset yrange [*:*]\n"
            "set key default\nset key %s\n"
            "plot $data%d using 1:4 with lines lw 5 lc '#f0b060' title 'desired', "
            "$data%d using 1:2 with lines lw 1.5 lc '#1f4e8c' title 'designed'\n"
            "set title 'deviation %.3g'\nset ylabel 'Weighted error / deviation'\n"
            "set yrange [-1.6:1.6]\n"
            "plot 1 with lines lc '#888888' dt 2 notitle, -1 with lines lc '#888888' dt 2 notitle, "
            "$data%d using 1:3 with lines lw 1.5 lc '#1f4e8c' notitle\n",
            (int)kTable[i].n, kTable[i].title, kTable[i].key, i, i, deviation[i], i);
  }
  fputs("unset multiplot\n", gnuplot);
  return FATHOM_OK;
}

int main(int argc, char** argv) {
  const int plot = argc == 3 && strcmp(argv[1], "--plot") == 0;
  if (argc != 1 && !(plot && isPlotName(argv[2]))) {
    fputs("usage: fir [--plot FILE], FILE.png or FILE.svg\n", stderr);
    return EXIT_FAILURE;
  }
  AnalysisStatus status = FATHOM_OK;
  if (plot) {
    char trouble[kTroubleSize];
    FILE* gnuplot = openPlot(argv[2], 1200, 1000, trouble);
    if (gnuplot) status = putPlot(gnuplot);
    if (!gnuplot || !closePlot(gnuplot, argv[2], trouble)) {
      fprintf(stderr, "fir: %s: %s\n", argv[2], trouble);
      return EXIT_FAILURE;
    }
  } else {
    for (int i = 0; i < kDesigns && status == FATHOM_OK; ++i) {
      double deviation = 0.0;
      printf("%s# %s\n", i > 0 ? "\n\n" : "", kTable[i].title);
      status = putDesign(&kTable[i], &deviation, stdout);
    }
  }
  if (status != FATHOM_OK) {
    fprintf(stderr, "fir: %s\n", GetAnalysisErrorString(status));
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
