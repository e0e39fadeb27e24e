// The slow paths: each function complete and correctly rounded for every double, in about a
// microsecond. The fast paths fall back on them.
#ifndef FATHOM_ELEMENTARY_SLOW_HPP
#define FATHOM_ELEMENTARY_SLOW_HPP

namespace fathom::slow {

double sin(double x);
double cos(double x);
void sincos(double x, double& s, double& c);
double tan(double x);
double atan(double x);
double atan2(double y, double x);
double acos(double x);
double exp(double x);
double log(double x);
double log10(double x);
double pow(double x, double y);

}  // namespace fathom::slow

#endif
