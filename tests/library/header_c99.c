#include "fathom.h"

int main(void) {
  double x[2] = {3.0, 4.0}, rms = 0.0;
  return RMS(x, 2, &rms) == FATHOM_OK && rms > 3.5 ? 0 : 1;
}
