#include <fathom.h>

#include <cstdio>
#include <vector>

int main() {
  std::vector<double> x(8);
  double phase = 0.0;
  double rms = 0.0;
  const AnalysisStatus status = SineWave(8, 1.0, 0.125, &phase, x.data());
  if (status != FATHOM_OK) std::puts(GetAnalysisErrorString(status));
  RMS(x.data(), 8, &rms);
  return rms > 0.7071067 && rms < 0.7071069 ? 0 : 1;
}
