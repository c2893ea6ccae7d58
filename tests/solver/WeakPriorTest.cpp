/// The weak prior, and the poles that it keeps out of the image.
#include "solver/WeakPrior.h"

#include <gtest/gtest.h>

#include <cmath>

#include "unit/Collection.h"

using namespace velmora;

namespace {

TEST(Poles, AreSeenWithinTheImageOnly) {
  Intrinsics intrinsics;
  intrinsics.estimated = RATIONAL_PARAMETERS;
  intrinsics.values = {500.0, 500.0, 319.5, 239.5};
  EXPECT_TRUE(solver::IsFreeOfPoles(intrinsics, unit::FRAME));
  // A zero hides the pole but for its neighbourhood. Corners are at 0.8.
  intrinsics.values[K1] = -2.77;
  intrinsics.values[K4] = -1.0 / (0.6 * 0.6);
  EXPECT_FALSE(solver::IsFreeOfPoles(intrinsics, unit::FRAME));
  intrinsics.values[K1] = 0.0;
  intrinsics.values[K4] = -1.0 / (4.0 * 4.0);
  EXPECT_TRUE(solver::IsFreeOfPoles(intrinsics, unit::FRAME));
}

TEST(Poles, AreThoseOfAnyOfTheThreeCoefficients) {
  for (const int coefficient : {K4, K5, K6}) {
    Intrinsics intrinsics;
    intrinsics.estimated = RATIONAL_PARAMETERS;
    intrinsics.values = {500.0, 500.0, 319.5, 239.5};
    // The denominator is nearly zero at 0.6, within the corners; what it magnifies is not yet at them.
    intrinsics.values[K1] = -2.77;
    intrinsics.values[static_cast<size_t>(coefficient)] = -std::pow(0.6, -2.0 * (coefficient - K4 + 1));
    EXPECT_FALSE(solver::IsFreeOfPoles(intrinsics, unit::FRAME)) << coefficient;
    intrinsics.values[static_cast<size_t>(coefficient)] *= -1.0;
    EXPECT_TRUE(solver::IsFreeOfPoles(intrinsics, unit::FRAME)) << coefficient;
  }
}

TEST(WeakPrior, PullsAtWhatTheClassicModelHasNot) {
  const Prior prior = solver::PriorFor({0.7, 0.7}, 0.01, 1.0);
  for (size_t i = 0; i < prior.pulls.size(); ++i) {
    EXPECT_EQ(prior.pulls[i] > 0.0, i >= CLASSIC_PARAMETERS) << i;
  }
}

TEST(WeakPrior, LetsTheDenominatorChangeByHalfAtTheRimOfTheData) {
  const Prior prior = solver::PriorFor({0.5, 0.7}, 0.01, 1.0);
  for (int i = 0; i < 3; ++i) {
    const double atRim = 0.5 / std::pow(0.5, 2.0 * (i + 1));
    EXPECT_NEAR(prior.pulls[static_cast<size_t>(K4 + i)], 0.01 / (atRim * atRim), 1e-12);
  }
  EXPECT_NEAR(prior.pulls[S1], 0.01 / std::pow(0.01 / 0.25, 2.0), 1e-9);
  EXPECT_NEAR(prior.pulls[S4], 0.01 / std::pow(0.01 / (0.25 * 0.25), 2.0), 1e-9);
  EXPECT_NEAR(prior.pulls[TAU_Y], 0.01 / (0.02 * 0.02), 1e-9);
}

TEST(WeakPrior, LetsTheDenominatorOfFisheyesBeWhatItIsWhateverTheRim) {
  const Prior wide = solver::PriorFor({2.0, 1.2}, 0.01, 1.0);
  const Prior wider = solver::PriorFor({4.0, 1.3}, 0.01, 1.0);
  EXPECT_NEAR(wide.pulls[K4], 0.01, 1e-9);
  for (size_t i = K4; i <= K6; ++i) EXPECT_EQ(wider.pulls[i], wide.pulls[i]) << i;
}

TEST(WeakPrior, AsksForSmoothCurvesOfWideLenses) {
  EXPECT_EQ(solver::PriorFor({0.6, 0.7}, 0.01, 1.0).smoothness, 0.0);
  const Prior middle = solver::PriorFor({0.8, 0.875}, 0.01, 1.0);
  const Prior wide = solver::PriorFor({2.0, 1.2}, 0.01, 1.0);
  EXPECT_GT(wide.smoothness, 0.0);
  EXPECT_NEAR(middle.smoothness, 0.5 * wide.smoothness, 1e-12);
  EXPECT_EQ(wide.angle, 1.2);
}

TEST(WeakPrior, IsStrengthenedForTheDenominatorAndTheCurveAlone) {
  const Prior once = solver::PriorFor({0.7, 1.2}, 0.01, 1.0);
  const Prior strong = solver::PriorFor({0.7, 1.2}, 0.01, 9.0);
  for (size_t i = 0; i < once.pulls.size(); ++i) {
    EXPECT_NEAR(strong.pulls[i], (i >= K4 && i <= K6 ? 9.0 : 1.0) * once.pulls[i], 1e-12 * strong.pulls[i])
        << i;
  }
  EXPECT_NEAR(strong.smoothness, 81.0 * once.smoothness, 1e-9);
}

TEST(DataRadius, IsThatOfTheOutermostPointThatTheCameraObserved) {
  Camera camera;
  camera.cameraFromRig.t = {0.0, 0.0, 1.0};
  const Observation inner{{{0.1, 0.0, 0.0}}, {{}}, {}};
  const Observation outer{{{0.3, 0.4, 0.0}, {0.0, 0.1, 0.0}}, {{}, {}}, {}};
  TargetView view{{cv::Matx33d::eye(), {0.0, 0.0, 1.0}}, {outer, inner}};
  TargetView other{{cv::Matx33d::eye(), {0.0, 0.0, 3.0}}, {{}, outer}};
  EXPECT_DOUBLE_EQ(solver::DataRadius(Camera(), 0, {view, other}), 0.5);
  EXPECT_DOUBLE_EQ(solver::DataRadius(camera, 1, {view, other}), 0.125);
  EXPECT_DOUBLE_EQ(solver::DataRadius(camera, 1, {view}), 0.05);
}

}  // namespace
