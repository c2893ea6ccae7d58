/// That views which repeat each other are not taken for more than they are.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Calibrator.h"
#include "quality/Assessment.h"
#include "quality/ModelComparison.h"
#include "quality/OmittedEffects.h"
#include "quality/RigAssessment.h"
#include "quality/RigSolutions.h"
#include "solver/CameraCalibration.h"
#include "solver/OpenCvMatrices.h"
#include "solver/WideViews.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;

cv::Point2d Noise(cv::RNG& random, double deviation) {
  const double x = random.gaussian(deviation);
  return {x, random.gaussian(deviation)};
}

/// A sheet that is held still before a camera: each pose several times, with noise of a tenth of a pixel that
/// all of its views share, and a third as much of their own.
unit::PointLists HeldStill(int poses, int times, std::uint64_t seed, double own = 0.03) {
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  const world::Camera camera = unit::DistortedCamera();
  cv::RNG random(seed + 11);
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, poses, seed, sheet)) {
    auto points = world::TrueCentres(camera.lens, sheet, pose);
    for (cv::Point2d& point : points) point += Noise(random, 0.1);
    for (int i = 0; i < times; ++i) {
      views.push_back(points);
      for (cv::Point2d& point : views.back()) point += Noise(random, own);
    }
  }
  return views;
}

CalibrationVerdict Assessed(const unit::PointLists& views) {
  const auto targets = unit::FlatTargets(views.size());
  return AssessIntrinsics(targets, views, unit::FRAME,
                          SolveIntrinsicsSparsely(targets, views, unit::FRAME, CLASSIC));
}

bool Says(const CalibrationVerdict& verdict, const std::string& words) {
  for (const auto& remark : verdict.remarks) {
    if (remark.reason.find(words) != std::string::npos) return true;
  }
  return false;
}

TEST(VerdictOnRepeatedViews, IsWorthlessForOneOrTwoPoses) {
  for (const int poses : {1, 2}) {
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
      const CalibrationVerdict verdict = Assessed(HeldStill(poses, 12, seed));
      EXPECT_EQ(verdict.grade, Grade::Worthless) << poses << " " << seed << verdict.ToJson();
      EXPECT_EQ(verdict.poses, poses);
    }
  }
  EXPECT_TRUE(Says(Assessed(HeldStill(1, 12, 1)), "There are 12 views, but only one pose."));
}

TEST(VerdictOnRepeatedViews, IsCarefulForLessThanFivePoses) {
  for (const int poses : {3, 4}) {
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
      const CalibrationVerdict verdict = Assessed(HeldStill(poses, 10, seed));
      EXPECT_GE(verdict.grade, Grade::WithCare) << verdict.ToJson();
      EXPECT_TRUE(Says(verdict, "views, but only " + std::to_string(poses) + " different poses."));
    }
  }
}

TEST(VerdictOnFewViews, IsNeverGoodForLessThanFive) {
  EXPECT_EQ(Assessed(HeldStill(2, 1, 1)).grade, Grade::Worthless);
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const CalibrationVerdict verdict = Assessed(HeldStill(4, 1, seed));
    EXPECT_EQ(verdict.grade, Grade::WithCare) << verdict.ToJson();
    EXPECT_TRUE(Says(verdict, "There are only 4 views."));
  }
}

TEST(VerdictOnRepeatedViews, CountsPosesInItsText) {
  const CalibrationVerdict verdict = Assessed(HeldStill(6, 3, 1));
  EXPECT_EQ(verdict.views, 18);
  EXPECT_EQ(verdict.poses, 6);
  EXPECT_EQ(nlohmann::json::parse(verdict.ToJson())["poses"], 6);
  EXPECT_TRUE(Says(verdict, "There are 18 views, but only 6 different poses."));
  EXPECT_FALSE(Says(Assessed(HeldStill(12, 1, 1)), "poses"));
}

TEST(VerdictOnRepeatedViews, ForecastsWhatThePosesTell) {
  for (const int poses : {5, 8}) {
    double squares = 0.0;
    double told = 0.0;
    constexpr int RUNS = 12;
    for (std::uint64_t seed = 1; seed <= RUNS; ++seed) {
      const unit::PointLists views = HeldStill(poses, 12, seed);
      const auto targets = unit::FlatTargets(views.size());
      const SparseResult result = SolveIntrinsicsSparsely(targets, views, unit::FRAME, CLASSIC);
      const double expected = AssessIntrinsics(targets, views, unit::FRAME, result).ExpectedInData();
      told += expected * expected / RUNS;
      squares += std::pow(unit::TrueErrorOf(result, unit::DistortedCamera(), views), 2.0) / RUNS;
    }
    EXPECT_GT(std::sqrt(told / squares), 0.6) << poses;
    EXPECT_LT(std::sqrt(told / squares), 2.0) << poses;
  }
}

TEST(VerdictOnRepeatedViews, TakesRepeatedNoiseForNoFaultOfLensOrSheet) {
  int suspected = 0;
  for (std::uint64_t seed = 1; seed <= 8; ++seed) {
    const CalibrationVerdict verdict = Assessed(HeldStill(6, 15, seed));
    suspected += verdict.systematicInData > 0.0 ? 1 : 0;
    EXPECT_FALSE(Says(verdict, "model error")) << verdict.ToJson();
  }
  EXPECT_LE(suspected, 1);
}

TEST(VerdictOnFewViews, SeldomSaysThatRightViewsDisagree) {
  for (const int count : {5, 8}) {
    int disagree = 0;
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
      disagree += Says(Assessed(HeldStill(count, 1, seed)), "disagree") ? 1 : 0;
    }
    EXPECT_LE(disagree, 2) << count;
  }
}

TEST(ChoiceAmongModels, CountsRepeatedViewsOnce) {
  const unit::PointLists once = HeldStill(8, 1, 3, 0.0);
  unit::PointLists repeated;
  for (const auto& view : once) repeated.insert(repeated.end(), 6, view);
  const ModelChoice ofOnce = CompareModels(unit::FlatTargets(once.size()), once, unit::FRAME);
  const ModelChoice ofRepeated = CompareModels(unit::FlatTargets(repeated.size()), repeated, unit::FRAME);
  ASSERT_EQ(ofOnce.candidates.size(), ofRepeated.candidates.size());
  EXPECT_EQ(ofOnce.model, ofRepeated.model);
  EXPECT_NEAR(ofOnce.candidates[0].criterion, ofRepeated.candidates[0].criterion, 1e-3);
  EXPECT_NEAR(ofOnce.candidates[0].unseen, ofRepeated.candidates[0].unseen, 1e-6);
}

TEST(ChoiceAmongModels, TakesNoLargerOneForNoiseThatIsRepeated) {
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const unit::PointLists views = HeldStill(6, 6, seed);
    EXPECT_EQ(CompareModels(unit::FlatTargets(views.size()), views, unit::FRAME).Name(), "classic") << seed;
  }
}

TEST(RigVerdictOnRepeatedViews, CountsPoses) {
  CalibrationProblem problem =
      unit::ObservedByRig(unit::ClassicPair(), CLASSIC_PARAMETERS, unit::FlatShape(), 4, 3, 0.1);
  const std::vector<TargetView> once = problem.views;
  for (int i = 0; i < 3; ++i) problem.views.insert(problem.views.end(), once.begin(), once.end());
  const RigVerdict verdict = AssessRig(unit::Solved(problem));
  EXPECT_GE(verdict.grade, Grade::WithCare);
  for (const CalibrationVerdict& camera : verdict.cameras) EXPECT_EQ(camera.poses, 4);
}

}  // namespace
