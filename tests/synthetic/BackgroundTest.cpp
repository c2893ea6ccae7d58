/// Tests of backgrounds and light.
#include "Background.h"

#include <gtest/gtest.h>

#include "Matchers.h"

TEST(Background, IsPlainWithoutClutter) {
  EXPECT_SAME_MAT(world::MakeBackground({60, 40}, 90, 0, 7), cv::Mat(40, 60, CV_8UC3, cv::Scalar::all(90)));
}

TEST(Background, DependsOnTheSeedAlone) {
  const cv::Mat first = world::MakeBackground({320, 240}, 90, 30, 7);
  EXPECT_SAME_MAT(world::MakeBackground({320, 240}, 90, 30, 7), first);
  EXPECT_FALSE(support::SameMat(world::MakeBackground({320, 240}, 90, 30, 8), first));
}

TEST(Background, HasMoreStructureWithMoreClutter) {
  cv::Scalar mean;
  cv::Scalar few;
  cv::Scalar many;
  cv::meanStdDev(world::MakeBackground({320, 240}, 90, 1, 7), mean, few);
  cv::meanStdDev(world::MakeBackground({320, 240}, 90, 60, 7), mean, many);
  EXPECT_GT(few[0], 2.0);
  EXPECT_GT(many[0], 2.0 * few[0]);
}

TEST(Light, IsEvenAtStrengthZero) {
  EXPECT_SAME_MAT(world::MakeLight({60, 40}, 0.0, 7), cv::Mat(40, 60, CV_32FC1, cv::Scalar(1.0)));
}

TEST(Light, StaysBetweenDarkAndFull) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    double darkest = 0.0;
    double brightest = 0.0;
    cv::minMaxLoc(world::MakeLight({640, 480}, 1.0, seed), &darkest, &brightest);
    EXPECT_GE(darkest, 0.29);
    EXPECT_LE(darkest, 0.5);
    EXPECT_GE(brightest, 0.75);
    EXPECT_LE(brightest, 1.0);
  }
}
