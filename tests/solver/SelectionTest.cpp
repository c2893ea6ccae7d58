/// Selections of views, and how many of them are enough.
#include "solver/Selection.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

TEST(Selection, OfAllHasEachViewAsItIsAndLeavesNothingOut) {
  std::vector<TargetView> views(3, TargetView{{}, {Observation{{{0.1, 0.2, 0.0}}, {{3.0, 4.0}}, {0.5}}, {}}});
  views[1].rigFromTarget.t = {1.0, 2.0, 3.0};
  const solver::Selection all = solver::AllOf(views);
  EXPECT_EQ(all.kept, (std::vector<size_t>{0, 1, 2}));
  EXPECT_TRUE(all.rejected.empty());
  EXPECT_FALSE(all.tooFewAgree);
  ASSERT_EQ(all.views.size(), 3U);
  EXPECT_EQ(all.views[1].rigFromTarget.t, views[1].rigFromTarget.t);
  ASSERT_EQ(all.views[2].observations.size(), 2U);
  EXPECT_EQ(all.views[2].observations[0].weights, (std::vector<double>{0.5}));
  EXPECT_TRUE(all.views[2].observations[1].IsEmpty());
}

TEST(AreEnough, AreHalfOfManyAndMostOfAFew) {
  EXPECT_TRUE(solver::AreEnough(10, 20));
  EXPECT_FALSE(solver::AreEnough(9, 20));
  EXPECT_TRUE(solver::AreEnough(5, 10));
  EXPECT_TRUE(solver::AreEnough(4, 5));
  EXPECT_TRUE(solver::AreEnough(4, 6));
  EXPECT_TRUE(solver::AreEnough(4, 7));
  EXPECT_FALSE(solver::AreEnough(4, 8));
  EXPECT_FALSE(solver::AreEnough(3, 6));
  EXPECT_TRUE(solver::AreEnough(3, 5));
  EXPECT_FALSE(solver::AreEnough(2, 3));
}

}  // namespace
