#define _GNU_SOURCE /* NOLINT(bugprone-reserved-identifier): popen, strcasecmp */

#include "plot.h"

#include <errno.h>
#include <signal.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/wait.h>

static bool endsWith(const char* text, const char* ending) {
  const size_t length = strlen(text);
  return length > strlen(ending) && strcasecmp(text + length - strlen(ending), ending) == 0;
}

bool isPlotName(const char* file) {
  return endsWith(file, ".png") || endsWith(file, ".svg");
}

void putQuoted(const char* text, FILE* gnuplot) {
  fputc('"', gnuplot);
  for (; *text != '\0'; ++text) {
    const unsigned char c = (unsigned char)*text;
    if (c < ' ' || strchr("\"\\`$", c)) {
      fprintf(gnuplot, "\\%03o", c);
    } else {
      fputc(c, gnuplot);
    }
  }
  fputc('"', gnuplot);
}

FILE* openPlot(const char* file, int width, int height, char trouble[kTroubleSize]) {
  FILE* output = fopen(file, "wb");
  if (!output) {
    snprintf(trouble, kTroubleSize, "cannot write the plot: %s", strerror(errno));
    return NULL;
  }
  fclose(output);
  signal(SIGPIPE, SIG_IGN); /* gnuplot may end before it has read everything */
  fflush(stdout);
  FILE* gnuplot = popen("gnuplot 2>/dev/null", "w"); /* NOLINT(cert-env33-c): the user's own */
  if (!gnuplot) {
    snprintf(trouble, kTroubleSize, "cannot start gnuplot: %s", strerror(errno));
    return NULL;
  }
  const bool png = endsWith(file, ".png");
  fprintf(gnuplot,
          "set encoding utf8\nset terminal %s size %d,%d %s font 'DejaVu Sans,%d'\nset output ",
          png ? "pngcairo" : "svg", width, height, png ? "" : "background 'white'", png ? 12 : 15);
  putQuoted(file, gnuplot);
  fputs("\nset grid lt 1 lc '#dddddd'\nset tics out nomirror\n", gnuplot);
  return gnuplot;
}

bool closePlot(FILE* gnuplot, const char* file, char trouble[kTroubleSize]) {
  fputs("\nset output\n", gnuplot);
  const int status = pclose(gnuplot);
  struct stat written;
  if (status == 0 && stat(file, &written) == 0 &&
      (!S_ISREG(written.st_mode) || written.st_size > 0)) {
    return true;
  }
  remove(file);
  const bool missing = WIFEXITED(status) && WEXITSTATUS(status) == 127;
  snprintf(trouble, kTroubleSize, "cannot draw the plot: gnuplot %s",
           missing ? "is not installed" : "failed");
  return false;
}
