/// Where parameters stand in a solution, and what it says of the noise.
#include "model/Solution.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmora;

namespace {

Rig ThreeCameras() {
  Rig rig;
  rig.cameras.resize(3);
  rig.cameras[0].intrinsics.estimated = CLASSIC_PARAMETERS;
  rig.cameras[1].intrinsics.estimated = FULL_PARAMETERS;
  rig.cameras[2].intrinsics.estimated = RATIONAL_PARAMETERS;
  return rig;
}

TEST(Layout, PutsTheIntrinsicsOfAllCamerasBeforeThePosesOfAllButTheFirst) {
  const Layout layout = LayoutOf(ThreeCameras(), {});
  ASSERT_EQ(layout.cameras.size(), 3U);
  EXPECT_EQ(layout.cameras[0].intrinsics, 0);
  EXPECT_EQ(layout.cameras[1].intrinsics, 9);
  EXPECT_EQ(layout.cameras[2].intrinsics, 27);
  EXPECT_EQ(layout.cameras[1].count, 18);
  EXPECT_EQ(layout.cameras[0].pose, Layout::FIXED);
  EXPECT_EQ(layout.cameras[1].pose, 39);
  EXPECT_EQ(layout.cameras[2].pose, 45);
  EXPECT_EQ(layout.shared, 51);
}

TEST(Layout, HasNoBlockForWhatIsNotEstimated) {
  const Layout posesOnly = LayoutOf(ThreeCameras(), {false, true});
  EXPECT_EQ(posesOnly.cameras[1].count, 0);
  EXPECT_EQ(posesOnly.cameras[2].pose, 6);
  EXPECT_EQ(posesOnly.shared, 12);
  const Layout intrinsicsOnly = LayoutOf(ThreeCameras(), {true, false});
  EXPECT_EQ(intrinsicsOnly.cameras[2].pose, Layout::FIXED);
  EXPECT_EQ(intrinsicsOnly.shared, 39);
  EXPECT_EQ(LayoutOf(ThreeCameras(), {false, false}).shared, 0);
}

/// A camera that saw two views of 20 points, one of which it left out.
Solution OfTwoViews() {
  Observation observation{std::vector<cv::Point3d>(20), std::vector<cv::Point2d>(20), {}};
  Solution solution;
  solution.rig.cameras.resize(1);
  solution.views = {{{}, {observation}}, {{}, {observation}}};
  solution.views[1].observations[0].weights.assign(20, 1.0);
  solution.views[1].observations[0].weights[7] = 0.0;
  solution.cost = 5.7;
  return solution;
}

TEST(Solution, HasTheRmsOfThePointsThatCount) {
  EXPECT_DOUBLE_EQ(RmsOf(OfTwoViews()), std::sqrt(5.7 / 39.0));
}

TEST(Solution, HasTheRmsOfPixelsWhateverTheDeviations) {
  Solution solution = OfTwoViews();
  solution.equations.resize(2);
  solution.equations[0].pixelCosts = {6.0};
  solution.equations[1].pixelCosts = {3.0};
  EXPECT_EQ(PixelCostOf(solution), 5.7) << "there are none";
  solution.views[1].observations[0].deviations.assign(20, 2.0);
  EXPECT_EQ(PixelCostOf(solution), 9.0);
  EXPECT_DOUBLE_EQ(RmsOf(solution), std::sqrt(9.0 / 39.0));
}

/// Two cameras: the second saw the first view, the first both.
Solution OfTwoCameras() {
  Solution solution = OfTwoViews();
  solution.rig.cameras.resize(2);
  solution.views[0].observations.push_back(solution.views[0].observations[0]);
  solution.views[1].observations.emplace_back();
  solution.equations.resize(2);
  solution.equations[0].pixelCosts = {2.0, 5.0};
  solution.equations[1].pixelCosts = {3.7, 0.0};
  return solution;
}

TEST(Solution, HasTheRmsOfEachCamera) {
  Solution solution = OfTwoCameras();
  EXPECT_DOUBLE_EQ(RmsOfCamera(solution, 0), std::sqrt(5.7 / 39.0));
  EXPECT_DOUBLE_EQ(RmsOfCamera(solution, 1), std::sqrt(5.0 / 20.0));
  solution.views[0].observations[1] = {};
  solution.equations[0].pixelCosts[1] = 0.0;
  EXPECT_EQ(RmsOfCamera(solution, 1), 0.0);
}

TEST(Solution, HasTheRmsOfEachImageOfWhichAPointCounts) {
  Solution solution = OfTwoCameras();
  EXPECT_DOUBLE_EQ(RmsOfImage(solution, 0, 0), std::sqrt(2.0 / 20.0));
  EXPECT_DOUBLE_EQ(RmsOfImage(solution, 1, 0), std::sqrt(3.7 / 19.0));
  EXPECT_DOUBLE_EQ(RmsOfImage(solution, 0, 1), std::sqrt(5.0 / 20.0));
  EXPECT_EQ(RmsOfImage(solution, 1, 1), -1.0);
  solution.views[0].observations[1].weights.assign(20, 0.0);
  EXPECT_EQ(RmsOfImage(solution, 0, 1), -1.0);
}

TEST(Solution, SpreadsItsCostOverTheDegreesOfFreedom) {
  Solution solution = OfTwoViews();
  EXPECT_DOUBLE_EQ(NoiseVariance(solution), 5.7 / (78.0 - 9.0 - 12.0));
  solution.estimated.intrinsics = false;
  EXPECT_DOUBLE_EQ(NoiseVariance(solution), 5.7 / (78.0 - 12.0));
  EXPECT_DOUBLE_EQ(NoiseVariance(3.0, solution.views, 100), 3.0);  // of no freedom at all
}

}  // namespace
