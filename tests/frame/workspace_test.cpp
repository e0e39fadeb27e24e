#include "frame/workspace.hpp"

#include <gtest/gtest.h>

#include <cstdint>

#include "support/failing_malloc.hpp"

namespace fathom {
namespace {

TEST(Workspace, IsNullWhenTheSizeCannotBeExpressedOrHad) {
  EXPECT_FALSE(Workspace<double>(SIZE_MAX / 8 + 2));  // 16 bytes, if the product wrapped
  EXPECT_FALSE(Workspace<double>(SIZE_MAX));
  const test::FailingMalloc failing(1);
  EXPECT_FALSE(Workspace<double>(4));
  EXPECT_TRUE(Workspace<double>(4));
  EXPECT_EQ(failing.requests(), 2);  // impossible sizes are never asked for
}

TEST(Workspace, HoldsItsElements) {
  Workspace<std::int32_t> w(1000);
  ASSERT_TRUE(w);
  for (int i = 0; i < 1000; ++i) w[i] = i;
  EXPECT_EQ(w.data()[999], 999);
  EXPECT_TRUE(Workspace<double>(0));  // an empty one is not a failure
}

}  // namespace
}  // namespace fathom
