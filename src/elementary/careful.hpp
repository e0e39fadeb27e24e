// Between the fast paths and the slow ones: complete and correctly rounded for every double, in 13
// to 30 ns for all but the few arguments that go on to slow::.
#ifndef FATHOM_ELEMENTARY_CAREFUL_HPP
#define FATHOM_ELEMENTARY_CAREFUL_HPP

namespace fathom::careful {

double sin(double x);
double cos(double x);
void sincos(double x, double& s, double& c);
double tan(double x);

}  // namespace fathom::careful

#endif
