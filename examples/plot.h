/* Pictures through gnuplot, as all examples draw them: a PNG or SVG file, or a reason why not. */
#ifndef FATHOM_EXAMPLES_PLOT_H
#define FATHOM_EXAMPLES_PLOT_H

#include <stdbool.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { kTroubleSize = 160 };

/* Whether a file can be drawn: its name ends in .png or .svg, in letters of either case. */
bool isPlotName(const char* file);

/*
 * Starts gnuplot, with its terminal and output set for `file`. On failure null, with the reason in
 * `trouble`.
 */
FILE* openPlot(const char* file, int width, int height, char trouble[kTroubleSize]);

/* Lets gnuplot end. On failure false, with the reason in `trouble` and no file left behind. */
bool closePlot(FILE* gnuplot, const char* file, char trouble[kTroubleSize]);

/* Writes a text as gnuplot reads it back: quoted, with all but plain characters as octal. */
void putQuoted(const char* text, FILE* gnuplot);

#ifdef __cplusplus
}
#endif

#endif
