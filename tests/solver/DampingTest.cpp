/// How the damping follows what steps bring.
#include "solver/Damping.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

TEST(Damping, FallsAfterStepsThatBroughtWhatTheyPromised) {
  solver::Damping damping(1e-3);
  damping.Accept(0.9);
  EXPECT_DOUBLE_EQ(damping.Value(), 1e-4);
  damping.Accept(0.6);
  EXPECT_DOUBLE_EQ(damping.Value(), 7e-5);
  damping.Accept(0.3);
  EXPECT_DOUBLE_EQ(damping.Value(), 7e-5);
}

TEST(Damping, RisesFasterWithEachStepThatDidNotHelp) {
  solver::Damping damping(1.0);
  EXPECT_TRUE(damping.Reject());
  EXPECT_EQ(damping.Value(), 2.0);
  EXPECT_TRUE(damping.Reject());
  EXPECT_EQ(damping.Value(), 8.0);
  damping.Accept(0.6);
  EXPECT_TRUE(damping.Reject());
  EXPECT_DOUBLE_EQ(damping.Value(), 0.7 * 8.0 * 2.0);
}

TEST(Damping, FallsCarefullySoonAfterARejection) {
  solver::Damping damping(1.0);
  damping.Reject();
  for (const double expected : {1.0, 0.5, 0.25, 0.025}) {
    damping.Accept(1.0);
    EXPECT_DOUBLE_EQ(damping.Value(), expected);
  }
}

TEST(Damping, SaysWhenNoStepHelpsAnyMoreAndNeverVanishes) {
  solver::Damping damping(1.0);
  int rejections = 1;
  while (damping.Reject() && rejections < 100) ++rejections;
  EXPECT_EQ(rejections, 9);  // two to the power of 45 is beyond 1e12
  solver::Damping small(1e-14);
  for (int i = 0; i < 5; ++i) small.Accept(1.0);
  EXPECT_EQ(small.Value(), 1e-15);
}

}  // namespace
