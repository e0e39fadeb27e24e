#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fathom.h"

namespace {

TEST(Status, EachCodeHasItsText) {
  EXPECT_STREQ(GetAnalysisErrorString(FATHOM_OK), "No error");
  EXPECT_STREQ(GetAnalysisErrorString(-20001), "Insufficient memory");
  EXPECT_STREQ(GetAnalysisErrorString(-20003), "Number of samples must be greater than zero");
  EXPECT_STREQ(GetAnalysisErrorString(-20056), "Contigency table has a negative number");
  EXPECT_STREQ(GetAnalysisErrorString(-20066),
               "The information in IIR filter structure is not correct");
}

TEST(Status, FiftyThreeCodesAndNoOther) {
  const std::string unknown = "Unknown error number";
  int known = 0;
  for (AnalysisStatus code = -21000; code <= 21000; ++code) {
    known += GetAnalysisErrorString(code) == unknown ? 0 : 1;
  }
  EXPECT_EQ(known, 53);
  for (AnalysisStatus code : {1, -20010, -20067, 20001, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(GetAnalysisErrorString(code), unknown) << code;
  }
}

TEST(Status, FreesWhatTheLibraryAllocated) {
  FreeAnalysisMem(nullptr);
  FreeAnalysisMem(std::malloc(16));  // the leak checker watches
}

}  // namespace
