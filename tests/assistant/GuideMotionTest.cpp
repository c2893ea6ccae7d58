/// What moves and what is still.
#include "assistant/GuideMotion.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

const cv::Size FRAME(1000, 600);

std::vector<cv::Point2d> At(double x) {
  return {{x, 100.0}, {x + 50.0, 100.0}, {x, 150.0}};
}

class Motion : public ::testing::Test {
 protected:
  /// Whether the grid is still in the last of these frames.
  bool IsStill(double rate, int frames, double speed) {
    for (int i = 0; i < frames; ++i) {
      time_ += 1.0 / rate;
      at_ += speed / rate;
      motion_.Add(time_, At(at_));
    }
    return motion_.IsStill(time_, At(at_));
  }

  GuideMotion motion_{FRAME};
  double time_ = 0.0;
  double at_ = 100.0;
};

TEST_F(Motion, IsOverAfterAThirdOfASecond) {
  EXPECT_FALSE(IsStill(30.0, 1, 0.0));
  EXPECT_FALSE(IsStill(30.0, 8, 0.0));
  EXPECT_TRUE(IsStill(30.0, 1, 0.0));
}

TEST_F(Motion, IsWhatIsFasterThanAHandThatDrifts) {
  EXPECT_TRUE(IsStill(30.0, 30, 12.0));
  EXPECT_FALSE(IsStill(30.0, 30, 25.0));
  EXPECT_FALSE(motion_.IsMoving(time_, At(at_)));
  EXPECT_FALSE(IsStill(30.0, 2, 100.0));
  EXPECT_TRUE(motion_.IsMoving(time_, At(at_)));
}

TEST_F(Motion, IsToldAtAnyRate) {
  for (const double rate : {2.0, 5.0, 10.0, 60.0, 120.0}) {
    EXPECT_TRUE(IsStill(rate, static_cast<int>(rate) + 2, 5.0)) << rate;
    EXPECT_FALSE(IsStill(rate, static_cast<int>(rate) + 2, 40.0)) << rate;
  }
}

TEST_F(Motion, IsNotKnownAcrossALongGap) {
  EXPECT_TRUE(IsStill(30.0, 20, 0.0));
  time_ += 2.0;
  EXPECT_FALSE(IsStill(30.0, 1, 0.0));
}

TEST_F(Motion, StartsAnewWhenTheClockGoesBack) {
  EXPECT_TRUE(IsStill(30.0, 20, 0.0));
  time_ = -5.0;
  EXPECT_FALSE(IsStill(30.0, 1, 0.0));
  EXPECT_TRUE(IsStill(30.0, 20, 0.0));
}

TEST_F(Motion, RemembersForAMoment) {
  EXPECT_EQ(motion_.Last(0.0), nullptr);
  motion_.Add(1.0, At(7.0));
  ASSERT_NE(motion_.Last(1.5), nullptr);
  EXPECT_EQ(*motion_.Last(1.5), At(7.0));
  EXPECT_EQ(motion_.Last(9.0), nullptr);
}

}  // namespace
