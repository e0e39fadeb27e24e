#include "frame/module.hpp"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace fathom {
namespace {

std::vector<int> calls;

// Stops and starts the module around each test, so that each begins with an empty table.
class Module : public ::testing::Test {
 protected:
  void SetUp() override {
    calls.clear();
    stopModule();
    ASSERT_TRUE(startModule());
  }
};

TEST_F(Module, RunsTheLastAddedFirstAndEachOnce) {
  EXPECT_EQ(addExitFunction([] { calls.push_back(1); }), 0);
  EXPECT_EQ(addExitFunction([] { calls.push_back(2); }), 0);
  stopModule();
  EXPECT_EQ(calls, (std::vector<int>{2, 1}));
  stopModule();
  EXPECT_EQ(addExitFunction([] {}), -1);  // nothing is held while stopped
  ASSERT_TRUE(startModule());
  stopModule();
  EXPECT_EQ(calls.size(), 2u);
  startModule();
}

TEST_F(Module, HoldsThirtyTwoFromAnyThread) {
  std::thread threads[4];
  for (std::thread& thread : threads) {
    thread = std::thread([] {
      for (int i = 0; i < 8; ++i) addExitFunction([] { calls.push_back(0); });
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(addExitFunction([] {}), -1);
  stopModule();
  EXPECT_EQ(calls.size(), 32u);
  startModule();
}

TEST_F(Module, AnExitFunctionMayAddAnother) {
  addExitFunction([] { addExitFunction([] { calls.push_back(7); }); });
  stopModule();
  EXPECT_EQ(calls, std::vector<int>{7});
  startModule();
}

}  // namespace
}  // namespace fathom
