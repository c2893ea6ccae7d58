/// That verdicts on right cameras name no fault, and those on wrong ones the fault that is there.
#include <gtest/gtest.h>

#include "Calibrator.h"
#include "quality/Assessment.h"
#include "quality/SystematicErrors.h"
#include "solver/OpenCvMatrices.h"
#include "solver/WideViews.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;
constexpr int RATIONAL = Calibrator::MODEL_RATIONAL;

struct Assessed {
  SparseResult result;
  CalibrationVerdict verdict;
  Solution solution;
};

Assessed Assess(const unit::PointLists& views, int model, double discRadius) {
  SparseOptions options;
  options.robust = true;
  options.discRadius = discRadius;
  const auto targets = unit::FlatTargets(views.size());
  Assessed assessed;
  assessed.result = SolveIntrinsicsSparsely(targets, views, unit::FRAME, model, options);
  assessed.verdict = AssessIntrinsics(targets, views, unit::FRAME, assessed.result, discRadius);
  assessed.solution =
      solver::SolutionFrom(solver::TargetOf(targets, views), assessed.result, unit::FRAME, discRadius);
  return assessed;
}

bool Says(const CalibrationVerdict& verdict, const std::string& words) {
  for (const auto& remark : verdict.remarks) {
    if ((remark.reason + " " + remark.advice).find(words) != std::string::npos) return true;
  }
  return false;
}

/// Fewer under the thread sanitizer, which has one thread to look at.
#if defined(__SANITIZE_THREAD__)
constexpr std::uint64_t SEEDS = 1;
#else
constexpr std::uint64_t SEEDS = 6;
#endif

struct Clean {
  const char* name;
  world::Camera camera;
  int model;
  double noise;
};

std::vector<Clean> CleanCameras() {
  const auto classic = [](double degrees, double k1, double k2) {
    return world::CameraFromFieldOfView(unit::FRAME, degrees, {k1, k2, 0.0, 0.0});
  };
  return {{"60 degrees, sharp", classic(60.0, -0.2, 0.05), CLASSIC, 0.005},
          {"85 degrees, very sharp", classic(85.0, -0.1, 0.01), CLASSIC, 0.005},
          {"100 degrees, sharp", classic(100.0, -0.1, 0.01), CLASSIC, 0.02},
          {"100 degrees", classic(100.0, -0.1, 0.01), CLASSIC, 0.1},
          {"fisheye of 100 degrees, sharp", unit::FisheyeCamera(100.0), RATIONAL, 0.02}};
}

TEST(VerdictWithDiscs, FindsNoFaultInCleanViews) {
  for (const Clean& clean : CleanCameras()) {
    for (std::uint64_t seed = 1; seed <= SEEDS; ++seed) {
      const Assessed assessed =
          Assess(unit::DiscViews(clean.camera, 20, seed, clean.noise), clean.model, unit::DISC);
      EXPECT_FALSE(OmittedLensTerms(assessed.solution, 0).significant) << clean.name << " " << seed;
      EXPECT_FALSE(OmittedBend(assessed.solution).significant) << clean.name << " " << seed;
      EXPECT_FALSE(OmittedProportions(assessed.solution).significant) << clean.name << " " << seed;
      EXPECT_EQ(assessed.verdict.systematicInData, 0.0) << clean.name << " " << seed;
      EXPECT_FALSE(Says(assessed.verdict, "disagree"))
          << clean.name << " " << seed << assessed.verdict.ToJson();
      EXPECT_LT(assessed.verdict.jackknifeInData, 2.5 * assessed.verdict.deviationInData)
          << clean.name << " " << seed;
    }
  }
}

struct Bent {
  double degrees;
  double noise;
  double sag;
};

class BentSheet : public ::testing::TestWithParam<Bent> {};

TEST_P(BentSheet, IsToldWithDiscsCorrected) {
  const Bent& bent = GetParam();
  const world::Camera camera =
      world::CameraFromFieldOfView(unit::FRAME, bent.degrees, {-0.1, 0.01, 0.0, 0.0});
  for (std::uint64_t seed = 1; seed <= SEEDS; ++seed) {
    const auto views = unit::DiscViews(camera, 20, seed, bent.noise, bent.sag);
    const Assessed assessed = Assess(views, CLASSIC, unit::DISC);
    EXPECT_TRUE(Says(assessed.verdict, "The sheet is bent")) << seed << assessed.verdict.ToJson();
    EXPECT_NEAR(assessed.verdict.sheetBend, bent.sag, 0.25 * bent.sag) << seed;
    const double truth = unit::TrueErrorOf(assessed.result, camera, views);
    EXPECT_NEAR(assessed.verdict.ExpectedInData(), truth, 0.4 * truth) << seed;
  }
}

INSTANTIATE_TEST_SUITE_P(Sags, BentSheet,
                         ::testing::Values(Bent{85.0, 0.03, 0.00025}, Bent{85.0, 0.1, 0.0005},
                                           Bent{100.0, 0.03, 0.0005}));

TEST(LensRemark, ComesWhereALargerModelPredictsBetter) {
  const world::Camera fisheye = world::CameraFromFieldOfView(
      unit::FRAME, 100.0, {4.0 / 15.0, 0.0, 0.0008, -0.0006, 0.0, 3.0 / 5.0, 0.0, 0.0});
  const Assessed assessed = Assess(unit::DiscViews(fisheye, 20, 1, 0.1), CLASSIC, unit::DISC);
  EXPECT_EQ(assessed.verdict.grade, Grade::WithCare);
  EXPECT_TRUE(Says(assessed.verdict, "The lens does not fit this model")) << assessed.verdict.ToJson();
  EXPECT_TRUE(Says(assessed.verdict, "Try the rational model.")) << assessed.verdict.ToJson();
}

/// A sensor that leans, in so few views that the choice of the model cannot be sure of it.
unit::PointLists ViewsOfALeaningSensor(int count, std::uint64_t seed) {
  const world::Camera camera = world::CameraFromFieldOfView(
      unit::FRAME, 65.0,
      {-0.2, 0.05, 0.0008, -0.0006, 0.0, 0.0, 0.0, 0.0, 0.002, 0.0, -0.001, 0.0, 0.03, -0.02});
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(seed + 1);
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, count, seed, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
    for (cv::Point2d& pixel : views.back())
      pixel += cv::Point2d(random.gaussian(0.05), random.gaussian(0.05));
  }
  return views;
}

TEST(LensRemark, DoesNotComeWhereTheChoiceOfTheModelRefusesLargerOnes) {
  int refused = 0;
  int suspected = 0;
  for (const std::uint64_t seed : {14U, 15U, 17U, 19U, 20U}) {
    for (const int count : {6, 8}) {
      const auto views = ViewsOfALeaningSensor(count, seed);
      const auto calibrator = unit::CalibratorWith(views);
      calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
      if (calibrator->ChooseModel().model != CLASSIC) continue;
      ++refused;
      calibrator->ComputeCalibration(CLASSIC);
      const CalibrationVerdict verdict = calibrator->GetVerdict();
      EXPECT_FALSE(Says(verdict, "The lens")) << verdict.ToJson();
      EXPECT_FALSE(Says(verdict, "model.")) << verdict.ToJson();
      const Assessed assessed = Assess(views, CLASSIC, 0.0);
      for (const SystematicError& error : SystematicErrorsOf(assessed.solution, 0, verdict.dataArea, 0.128)) {
        suspected += error.cause == SystematicError::Cause::LensTerms ? 1 : 0;
      }
    }
  }
  EXPECT_GE(refused, 3);
  EXPECT_GE(suspected, 1);
}

unit::PointLists SomeReversed(size_t views, size_t reversed) {
  unit::PointLists points = unit::CloseAndSmallViews(unit::DistortedCamera(), 10, 0.5, 4);
  points.resize(views);
  for (size_t i = 0; i < reversed; ++i) std::reverse(points[i].begin(), points[i].end());
  return points;
}

TEST(VerdictOnASelection, IsCarefulWhereAFewOutvotedOthers) {
  const CalibrationVerdict verdict = Assess(SomeReversed(6, 2), CLASSIC, 0.0).verdict;
  EXPECT_GE(verdict.grade, Grade::WithCare);
  EXPECT_TRUE(Says(verdict, "Only 4 views agree, and the others were left out.")) << verdict.ToJson();
  EXPECT_FALSE(Says(Assess(SomeReversed(8, 2), CLASSIC, 0.0).verdict, "views agree"));
}

TEST(VerdictOnASelection, SaysWhenTooFewViewsAgree) {
  unit::PointLists views = SomeReversed(6, 0);
  cv::RNG random(5);
  for (size_t i = 0; i < 3; ++i) {
    for (cv::Point2d& point : views[i]) point += cv::Point2d(random.gaussian(3.0), random.gaussian(3.0));
  }
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRobust(true);
  calibrator->ComputeCalibration(CLASSIC);
  const CalibrationVerdict verdict = calibrator->GetVerdict();
  EXPECT_NE(verdict.grade, Grade::Good);
  EXPECT_TRUE(Says(verdict, "Too few views agree with each other")) << verdict.ToJson();
}

}  // namespace
