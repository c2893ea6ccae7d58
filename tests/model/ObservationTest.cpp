/// How many points observations count.
#include "model/Observation.h"

#include <gtest/gtest.h>

#include "model/Rig.h"

using namespace velmora;

namespace {

Observation OfPoints(size_t count, std::vector<double> weights = {}) {
  return {std::vector<cv::Point3d>(count), std::vector<cv::Point2d>(count), std::move(weights)};
}

TEST(Observation, IsEmptyWhenTheCameraDidNotSeeTheTarget) {
  EXPECT_TRUE(Observation().IsEmpty());
  EXPECT_EQ(Observation().Count(), 0.0);
  EXPECT_FALSE(OfPoints(1).IsEmpty());
}

TEST(Observation, CountsEachPointAsOneUnlessItHasNoWeight) {
  EXPECT_EQ(OfPoints(3).Count(), 3.0);
  EXPECT_EQ(OfPoints(4, {0.25, 0.0, 1.0, 0.0}).Count(), 2.0);
}

TEST(Observation, WeighsOneUnlessItSaysOtherwise) {
  EXPECT_EQ(OfPoints(2).Weight(1), 1.0);
  EXPECT_EQ(OfPoints(2, {0.5, 0.25}).Weight(1), 0.25);
}

TEST(Observation, CountsOfAllCamerasAndAllViewsAddUp) {
  const std::vector<Observation> cameras = {OfPoints(3), {}, OfPoints(4, {0.0, 1.0, 1.0, 1.0})};
  EXPECT_EQ(CountOf(cameras), 6.0);
  EXPECT_EQ(CountOf(std::vector<TargetView>{{{}, cameras}, {{}, {OfPoints(2), {}, {}}}}), 8.0);
}

}  // namespace
