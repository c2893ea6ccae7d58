/// What a listener that gave up is asked afterwards.
#include "solver/ProgressMonitor.h"

#include <gtest/gtest.h>

#include <vector>

using namespace velmora;

namespace {

TEST(ProgressMonitor, ContinuesWhereNobodyListens) {
  const solver::ProgressMonitor nobody;
  EXPECT_TRUE(nobody.Continues(1, 2.0));
  EXPECT_FALSE(nobody.IsGivenUp());
}

TEST(ProgressMonitor, TellsTheIterationAndItsCost) {
  std::vector<double> told;
  const solver::ProgressMonitor monitor = [&](int iteration, double cost) {
    told.insert(told.end(), {static_cast<double>(iteration), cost});
    return true;
  };
  EXPECT_TRUE(monitor.Continues(1, 4.5));
  EXPECT_TRUE(monitor.Continues(2, 0.5));
  EXPECT_FALSE(monitor.IsGivenUp());
  EXPECT_EQ(told, (std::vector<double>{1.0, 4.5, 2.0, 0.5}));
}

TEST(ProgressMonitor, AsksNobodyAgainWhoGaveUpNotThroughACopyEither) {
  int calls = 0;
  const solver::ProgressMonitor monitor = [&](int, double) { return ++calls != 2; };
  const solver::ProgressMonitor copy = monitor;  // NOLINT(performance-unnecessary-copy-initialization)
  EXPECT_TRUE(monitor.Continues(1, 0.0));
  EXPECT_FALSE(copy.Continues(1, 0.0));
  EXPECT_TRUE(monitor.IsGivenUp());
  EXPECT_FALSE(monitor.Continues(2, 0.0));
  EXPECT_FALSE(copy.Continues(2, 0.0));
  EXPECT_EQ(calls, 2);
}

}  // namespace
