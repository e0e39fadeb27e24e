// Inverses of probability distributions beside GSL's.
#include "table.hpp"

#if defined(FATHOM_BENCH_GSL)
#include <gsl/gsl_cdf.h>
#endif

namespace fathom::bench {
namespace {

// Significance levels of tests, either side, and the middle.
[[maybe_unused]] constexpr double kProbabilities[] = {0.001, 0.01, 0.025, 0.05, 0.3,  0.6,
                                                      0.9,   0.95, 0.975, 0.99, 0.999};

}  // namespace

// n is the number of degrees of freedom, of the denominator for F; a call is eleven quantiles.
void addDistributionRows() {
#if defined(FATHOM_BENCH_GSL)
  for (const std::int32_t df : {3, 10, 30, 1000}) {
    addRow({"InvT_Dist", df, "GSL tdist_Pinv", 1.0, [df]() -> Sides {
              const auto sum = std::make_shared<double>();
              return {[=] {
                        AnalysisStatus status = FATHOM_OK;
                        for (const double p : kProbabilities) {
                          double t = 0.0;
                          status = InvT_Dist(p, df, &t);
                          *sum += t;
                        }
                        return status;
                      },
                      [=] {
                        for (const double p : kProbabilities) *sum += gsl_cdf_tdist_Pinv(p, df);
                      }};
            }});
  }
  for (const std::int32_t df : {3, 10, 30, 1000}) {
    addRow({"InvF_Dist, df1 = 5", df, "GSL fdist_Pinv", 1.0, [df]() -> Sides {
              const auto sum = std::make_shared<double>();
              return {[=] {
                        AnalysisStatus status = FATHOM_OK;
                        for (const double p : kProbabilities) {
                          double f = 0.0;
                          status = InvF_Dist(p, 5, df, &f);
                          *sum += f;
                        }
                        return status;
                      },
                      [=] {
                        for (const double p : kProbabilities) *sum += gsl_cdf_fdist_Pinv(p, 5, df);
                      }};
            }});
  }
#else
  leaveOut("GSL", "InvT_Dist, InvF_Dist");
#endif
}

}  // namespace fathom::bench
