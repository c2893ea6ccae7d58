/// What calibrations of good and of worthless views are said to be worth.
#include "solver/Judge.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "Calibrator.h"
#include "LensError.h"
#include "Views.h"
#include "engine/Collection.h"
#include "engine/TargetGeometry.h"
#include "solver/ProjectionUncertainty.h"

namespace {

using Grade = CalibrationVerdict::Grade;

const world::Sheet& Paper() {
  static const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  return sheet;
}

unit::PointLists Seen(const std::vector<world::Pose>& poses, std::uint64_t seed, double noise = 0.1) {
  cv::RNG random(seed + 1);
  unit::PointLists views;
  for (const world::Pose& pose : poses) {
    views.push_back(world::TrueCentres(unit::DistortedCamera().lens, Paper(), pose));
    for (cv::Point2d& centre : views.back()) {
      centre += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
    }
  }
  return views;
}

std::vector<world::Pose> RandomPoses(int count, std::uint64_t seed) {
  return world::SampleViews(unit::DistortedCamera(), count, seed, Paper());
}

std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
}

SparseResult Solve(const unit::PointLists& views, int model = Calibrator::MODEL_CLASSIC) {
  return SolveIntrinsicsSparsely(Targets(views.size()), views, unit::FRAME, model);
}

CalibrationVerdict Judged(const unit::PointLists& views, int model = Calibrator::MODEL_CLASSIC) {
  return JudgeIntrinsics(Targets(views.size()), views, unit::FRAME, Solve(views, model));
}

bool Says(const CalibrationVerdict& verdict, const std::string& words) {
  for (const auto& remark : verdict.remarks) {
    if (remark.reason.find(words) != std::string::npos) return true;
  }
  return false;
}

/// Far away and in the middle: the corners stay empty.
std::vector<world::Pose> CentralPoses(int count) {
  std::vector<world::Pose> poses;
  for (int k = 0; k < count; ++k) {
    world::Appearance appearance;
    appearance.span = 0.3;
    appearance.tiltX = 35.0 * std::sin(2.4 * k);
    appearance.tiltY = 35.0 * std::cos(2.4 * k);
    world::Pose pose;
    EXPECT_TRUE(world::PlaceGrid(unit::DistortedCamera(), Paper(), appearance, 0.0, pose));
    poses.push_back(pose);
  }
  return poses;
}

TEST(Verdict, IsGoodForManyTiltedViews) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
      const CalibrationVerdict verdict = Judged(Seen(RandomPoses(20, seed), seed), model);
      EXPECT_EQ(verdict.grade, Grade::Good) << verdict.ToJson();
      EXPECT_TRUE(verdict.remarks.empty());
      EXPECT_GT(verdict.coverage, 0.6);
    }
  }
}

TEST(Verdict, IsWorthlessForFrontalViews) {
  for (const int count : {5, 20}) {
    const CalibrationVerdict verdict =
        Judged(Seen(world::FrontalViews(unit::DistortedCamera(), count, Paper()), 1));
    EXPECT_EQ(verdict.grade, Grade::Worthless) << verdict.ToJson();
    EXPECT_TRUE(Says(verdict, "do not determine the focal length")) << verdict.ToJson();
    EXPECT_NE(verdict.remarks.front().advice.find("Tilt the sheet"), std::string::npos);
  }
}

TEST(Verdict, OfCentralViewsIsLimitedToWhereTheyAre) {
  const CalibrationVerdict verdict = Judged(Seen(CentralPoses(20), 1));
  EXPECT_EQ(verdict.grade, Grade::WithCare) << verdict.ToJson();
  EXPECT_TRUE(Says(verdict, "valid only where there is data"));
  EXPECT_LT(verdict.coverage, 0.4);
}

TEST(Verdict, SeesABentSheet) {
  auto poses = RandomPoses(20, 4);
  auto views = unit::PointLists();
  // A sheet that is bent another way in each view.
  auto bent = MakeObjectTemplate(unit::GRID, unit::UNIT);
  for (size_t i = 0; i < poses.size(); ++i) {
    const double depth = 0.004 * std::sin(1.7 * static_cast<double>(i));
    auto points = bent;
    for (cv::Point3d& point : points) point.z = depth * std::cos(CV_PI * (point.y - 0.1) / 0.2);
    views.push_back(world::ProjectPoints(unit::DistortedCamera().lens, points, poses[i]));
  }
  const CalibrationVerdict verdict = Judged(views);
  EXPECT_NE(verdict.grade, Grade::Good) << verdict.ToJson();
  EXPECT_TRUE(Says(verdict, "views disagree")) << verdict.ToJson();
}

TEST(Verdict, PredictsTheErrorsOfRepeatedComputations) {
  constexpr int RUNS = 60;
  const auto poses = RandomPoses(12, 5);
  const auto truth = unit::DistortedCamera().lens;
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
    double squares = 0.0;
    double predicted = 0.0;
    for (int run = 0; run < RUNS; ++run) {
      const auto views = Seen(poses, static_cast<std::uint64_t>(1000 + run));
      const SparseResult result = Solve(views, model);
      const auto distance =
          world::MeanProjectionDistance(truth, world::LensFrom(result.K, result.D), unit::FRAME,
                                        world::CoveredRegion(views), world::Alignment::Rotated);
      squares += distance.mean * distance.mean;
      predicted += JudgeIntrinsics(Targets(views.size()), views, unit::FRAME, result).deviationInData / RUNS;
    }
    // The mean distance is a little less than its own root of the mean square, over two coordinates.
    const double empirical = std::sqrt(squares / RUNS / 2.0);
    EXPECT_GT(predicted / empirical, 0.85) << model;
    EXPECT_LT(predicted / empirical, 1.4) << model;
  }
}

TEST(Verdict, IsNoneWithoutAResult) {
  const auto views = Seen(RandomPoses(6, 1), 1);
  EXPECT_EQ(JudgeIntrinsics(Targets(6), views, unit::FRAME, {}).grade, Grade::None);
  EXPECT_EQ(JudgeIntrinsics(Targets(5), {views.begin(), views.end() - 1}, unit::FRAME, Solve(views)).grade,
            Grade::None);
  EXPECT_EQ(CalibrationVerdict().Words(), "no result");
}

TEST(Verdict, ComesFromACalibratorWithEitherSolver) {
  const auto calibrator = unit::CalibratorWith(Seen(RandomPoses(12, 6), 6));
  EXPECT_EQ(calibrator->GetVerdict().grade, Grade::None);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const CalibrationVerdict dense = calibrator->GetVerdict();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const CalibrationVerdict sparse = calibrator->GetVerdict();
  EXPECT_NE(sparse.grade, Grade::None);
  EXPECT_EQ(dense.grade, sparse.grade);
  EXPECT_NEAR(dense.deviationInData, sparse.deviationInData, 1e-4);
  EXPECT_NEAR(dense.jackknifeInData, sparse.jackknifeInData, 1e-3);
  calibrator->AddPoints(Seen(RandomPoses(1, 7), 7).front());
  EXPECT_EQ(calibrator->GetVerdict().grade, Grade::None);
}

TEST(Verdict, IsNotDisturbedByViewsThatWereLeftOut) {
  auto views = Seen(RandomPoses(12, 6), 6);
  std::reverse(views[4].begin(), views[4].end());
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRobust(true);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(calibrator->GetVerdict().views, 11);
  ASSERT_FALSE(calibrator->GetVerdict().leftOut.empty());
  EXPECT_EQ(calibrator->GetVerdict().leftOut.front().view, 4U);
  EXPECT_LT(calibrator->GetVerdict().deviationInData, 1.0);
}

TEST(Verdict, IsAJsonTextToo) {
  const CalibrationVerdict verdict =
      Judged(Seen(world::FrontalViews(unit::DistortedCamera(), 5, Paper()), 1));
  const auto text = nlohmann::json::parse(verdict.ToJson());
  EXPECT_EQ(text["grade"], "worthless");
  EXPECT_EQ(text["views"], 5);
  EXPECT_EQ(text["remarks"].size(), verdict.remarks.size());
  EXPECT_EQ(text["remarks"][0]["reason"], verdict.remarks[0].reason);
}

TEST(Rays, LeadBackToTheirPixels) {
  sparse::Lens lens;
  lens.values = {530.0, 525.0, 318.0, 242.0, -0.21, 0.06, 0.0008, -0.0006, -0.008};
  const sparse::Projection projection(lens);
  for (const cv::Point2d& pixel : {cv::Point2d(0, 0), cv::Point2d(639, 479), cv::Point2d(318, 242)}) {
    cv::Vec3d ray;
    cv::Point2d back;
    ASSERT_TRUE(sparse::RayOf(projection, lens, pixel, ray));
    ASSERT_TRUE(projection.Project(ray, back));
    EXPECT_LT(cv::norm(back - pixel), 1e-5);
  }
  lens.values[4] = -0.9;  // folds before the corners
  lens.values[5] = 0.0;
  cv::Vec3d ray;
  EXPECT_FALSE(sparse::RayOf(sparse::Projection(lens), lens, {0, 0}, ray));
}

}  // namespace
