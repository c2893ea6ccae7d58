/// What calibrations of good and of worthless views are said to be worth.
#include "quality/Assessment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "LensError.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "quality/ProjectionUncertainty.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

using Grade = CalibrationVerdict::Grade;

const world::Sheet& Paper() {
  static const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  return sheet;
}

unit::PointLists Observed(const std::vector<world::Pose>& poses, std::uint64_t seed, double noise = 0.1) {
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

CalibrationVerdict Assessed(const unit::PointLists& views, int model = Calibrator::MODEL_CLASSIC) {
  return AssessIntrinsics(Targets(views.size()), views, unit::FRAME, Solve(views, model));
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
      const CalibrationVerdict verdict = Assessed(Observed(RandomPoses(20, seed), seed), model);
      EXPECT_EQ(verdict.grade, Grade::Good) << verdict.ToJson();
      EXPECT_TRUE(verdict.remarks.empty());
      EXPECT_GT(verdict.coverage, 0.6);
    }
  }
}

TEST(Verdict, IsWorthlessForFrontalViews) {
  for (const int count : {5, 20}) {
    const CalibrationVerdict verdict =
        Assessed(Observed(world::FrontalViews(unit::DistortedCamera(), count, Paper()), 1));
    EXPECT_EQ(verdict.grade, Grade::Worthless) << verdict.ToJson();
    EXPECT_TRUE(Says(verdict, "do not determine the focal length")) << verdict.ToJson();
    EXPECT_NE(verdict.remarks.front().advice.find("Tilt the sheet"), std::string::npos);
  }
}

TEST(Verdict, OfCentralViewsIsLimitedToWhereTheyAre) {
  const CalibrationVerdict verdict = Assessed(Observed(CentralPoses(20), 1));
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
  const CalibrationVerdict verdict = Assessed(views);
  EXPECT_NE(verdict.grade, Grade::Good) << verdict.ToJson();
  EXPECT_TRUE(Says(verdict, "views disagree")) << verdict.ToJson();
}

unit::PointLists ObservedOf(const std::vector<cv::Point3d>& sheet, int count, std::uint64_t seed) {
  cv::RNG random(seed + 1);
  unit::PointLists views;
  for (const world::Pose& pose : RandomPoses(count, seed)) {
    views.push_back(world::ProjectPoints(unit::DistortedCamera().lens, sheet, pose));
    for (cv::Point2d& point : views.back()) point += cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
  }
  return views;
}

TEST(Verdict, MeasuresASheetThatIsBentTheSameWayInAllViews) {
  auto sheet = MakeObjectTemplate(unit::GRID, unit::UNIT);
  for (cv::Point3d& point : sheet) point.z = 0.0005 * (1.0 - std::pow(point.y / 0.1 - 1.0, 2.0));
  const CalibrationVerdict verdict = Assessed(ObservedOf(sheet, 20, 4));
  EXPECT_EQ(verdict.grade, Grade::WithCare) << verdict.ToJson();
  EXPECT_NEAR(verdict.sheetBend, 0.0005, 0.00015);
  EXPECT_TRUE(Says(verdict, "The sheet is bent by about 0.5 mm")) << verdict.ToJson();
  EXPECT_GT(verdict.systematicInData, 2.0 * verdict.deviationInData);
  EXPECT_NEAR(
      verdict.ExpectedInData(),
      std::hypot(std::max(verdict.deviationInData, verdict.jackknifeInData), verdict.systematicInData),
      1e-12);
}

TEST(Verdict, MeasuresASheetThatIsOutOfProportion) {
  auto sheet = MakeObjectTemplate(unit::GRID, unit::UNIT);
  for (cv::Point3d& point : sheet) point.y *= 0.99;
  const CalibrationVerdict verdict = Assessed(ObservedOf(sheet, 20, 4));
  EXPECT_EQ(verdict.grade, Grade::WithCare) << verdict.ToJson();
  EXPECT_NEAR(verdict.sheetStretch, -0.01, 0.001);
  EXPECT_TRUE(Says(verdict, "The print is distorted, 1.0")) << verdict.ToJson();
}

TEST(Verdict, NamesASheetThatIsSkewed) {
  auto sheet = MakeObjectTemplate(unit::GRID, unit::UNIT);
  for (cv::Point3d& point : sheet) point.x += 0.01 * point.y;
  const CalibrationVerdict verdict = Assessed(ObservedOf(sheet, 20, 4));
  EXPECT_TRUE(Says(verdict, "The print is distorted, skewed by ")) << verdict.ToJson();
}

TEST(Verdict, SaysNothingOfTheSheetWhenItIsFlat) {
  const CalibrationVerdict verdict = Assessed(Observed(RandomPoses(20, 4), 4));
  EXPECT_EQ(verdict.systematicInData, 0.0);
  EXPECT_EQ(verdict.sheetBend, 0.0);
  EXPECT_EQ(verdict.sheetStretch, 0.0);
  EXPECT_EQ(verdict.ExpectedInData(), std::max(verdict.deviationInData, verdict.jackknifeInData));
}

TEST(Verdict, SeesALensThatTheModelDoesNotHold) {
  const world::Camera fisheye = world::CameraFromFieldOfView(
      unit::FRAME, 120.0, {4.0 / 15.0, 0.0, 0.0008, -0.0006, 0.0, 3.0 / 5.0, 0.0, 0.0});
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(fisheye, 20, 3, Paper())) {
    views.push_back(world::TrueCentres(fisheye.lens, Paper(), pose));
  }
  const CalibrationVerdict classic = Assessed(views);
  EXPECT_EQ(classic.grade, Grade::Worthless) << classic.ToJson();  // off by a hundredth of the width
  EXPECT_TRUE(Says(classic, "The lens does not fit this model")) << classic.ToJson();
  EXPECT_EQ(classic.sheetBend, 0.0);
  EXPECT_FALSE(Says(Assessed(views, Calibrator::MODEL_RATIONAL), "does not fit this model"));
}

Intrinsics SparseIntrinsics(const cv::Mat& K, const cv::Mat& D) {
  const cv::Mat_<double> k(K);
  const cv::Mat_<double> d(D);
  Intrinsics intrinsics;
  intrinsics.estimated = FULL_PARAMETERS;
  intrinsics.values = {k(0, 0), k(1, 1), k(0, 2), k(1, 2)};
  for (int i = 0; i < d.cols; ++i) intrinsics.values[static_cast<size_t>(i + 4)] = d(i);
  return intrinsics;
}

/// Projections of the true lens in the cells that the area covers.
class TrueCells {
 public:
  explicit TrueCells(const std::vector<cv::Point2f>& area) {
    const solver::Projection truth(intrinsics_);
    for (int i = 0; i < 40 * 30; ++i) {
      Cell cell;
      cell.pixel = {(i % 40 + 0.5) * 16.0 - 0.5, (i / 40 + 0.5) * 16.0 - 0.5};
      if (cv::pointPolygonTest(area, cell.pixel, false) < 0.0) continue;
      EXPECT_TRUE(RayOf(truth, intrinsics_, cell.pixel, cell.ray));
      solver::Coordinate u;
      solver::Coordinate v;
      EXPECT_TRUE(truth.Differentiate(cell.ray, u, v));
      for (int k = 0; k < 3; ++k) {
        cell.byRotation(0, k) = cell.ray.cross(u.byPoint)[k];
        cell.byRotation(1, k) = cell.ray.cross(v.byPoint)[k];
      }
      rotations_ += cell.byRotation.t() * cell.byRotation;
      cells_.push_back(cell);
    }
  }

  /// The mean square of a coordinate's error, after the best common rotation.
  double MeanSquareOf(const SparseResult& result) const {
    const solver::Projection estimate(SparseIntrinsics(result.K, result.D));
    std::vector<cv::Vec2d> errors;
    cv::Vec3d mixed;
    for (const Cell& cell : cells_) {
      cv::Point2d pixel;
      EXPECT_TRUE(estimate.Project(cell.ray, pixel));
      errors.emplace_back(pixel.x - cell.pixel.x, pixel.y - cell.pixel.y);
      mixed += cell.byRotation.t() * errors.back();
    }
    const cv::Vec3d rotation = rotations_.inv(cv::DECOMP_CHOLESKY) * mixed;
    double squaredErrors = 0.0;
    for (size_t i = 0; i < cells_.size(); ++i) {
      const cv::Vec2d left = errors[i] - cells_[i].byRotation * rotation;
      squaredErrors += left.dot(left);
    }
    return squaredErrors / (2.0 * static_cast<double>(cells_.size()));
  }

 private:
  struct Cell {
    cv::Point2d pixel;
    cv::Vec3d ray;
    cv::Matx23d byRotation;
  };

  static Intrinsics TrueIntrinsics() {
    const world::Lens lens = unit::DistortedCamera().lens;
    return SparseIntrinsics(cv::Mat(lens.K()), cv::Mat(lens.D(), true).reshape(1, 1));
  }

  const Intrinsics intrinsics_ = TrueIntrinsics();
  cv::Matx33d rotations_ = cv::Matx33d::zeros();
  std::vector<Cell> cells_;
};

/// Hundreds of computations on one thread: a thread sanitizer has nothing to see, and takes minutes.
#if defined(__SANITIZE_THREAD__)
#define SKIP_REPETITIONS GTEST_SKIP() << "no repetitions under the thread sanitizer"
#else
#define SKIP_REPETITIONS
#endif

/// The predicted standard deviation of projections where there is data, over that of 200 computations from
/// fresh noise.
double PredictedOverEmpirical(int model) {
  constexpr int RUNS = 200;
  const auto poses = RandomPoses(20, 5);
  const TrueCells cells(world::CoveredRegion(Observed(poses, 1)));
  double squaredErrors = 0.0;
  double predicted = 0.0;
  for (int run = 0; run < RUNS; ++run) {
    const auto views = Observed(poses, static_cast<std::uint64_t>(1000 + run));
    const SparseResult result = Solve(views, model);
    squaredErrors += cells.MeanSquareOf(result) / RUNS;
    predicted += AssessIntrinsics(Targets(views.size()), views, unit::FRAME, result).deviationInData / RUNS;
  }
  return predicted / std::sqrt(squaredErrors);
}

TEST(Verdict, PredictsTheErrorsOfRepeatedComputations) {
  SKIP_REPETITIONS;
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
    const double ratio = PredictedOverEmpirical(model);
    RecordProperty("ratio of model " + std::to_string(model), std::to_string(ratio));
    EXPECT_GT(ratio, 0.85) << model;
    EXPECT_LT(ratio, 1.15) << model;
  }
}

TEST(Verdict, PredictsTheErrorsOfRepeatedComputationsOfTheFullModelRoughly) {
  SKIP_REPETITIONS;
  const double ratio = PredictedOverEmpirical(Calibrator::MODEL_FULL);
  RecordProperty("ratio", std::to_string(ratio));
  EXPECT_GT(ratio, 0.7);
  EXPECT_LT(ratio, 1.4);
}

TEST(Verdict, IsNoneWithoutAResult) {
  const auto views = Observed(RandomPoses(6, 1), 1);
  EXPECT_EQ(AssessIntrinsics(Targets(6), views, unit::FRAME, {}).grade, Grade::None);
  EXPECT_EQ(AssessIntrinsics(Targets(5), {views.begin(), views.end() - 1}, unit::FRAME, Solve(views)).grade,
            Grade::None);
  EXPECT_EQ(CalibrationVerdict().ToString(), "no result");
}

TEST(Verdict, ComesFromACalibratorWithEitherSolver) {
  const auto calibrator = unit::CalibratorWith(Observed(RandomPoses(12, 6), 6));
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
  calibrator->AddPoints(Observed(RandomPoses(1, 7), 7).front());
  EXPECT_EQ(calibrator->GetVerdict().grade, Grade::None);
}

TEST(Verdict, IsNotDisturbedByViewsThatWereRejected) {
  auto views = Observed(RandomPoses(12, 6), 6);
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
      Assessed(Observed(world::FrontalViews(unit::DistortedCamera(), 5, Paper()), 1));
  const auto text = nlohmann::json::parse(verdict.ToJson());
  EXPECT_EQ(text["grade"], "worthless");
  EXPECT_EQ(text["views"], 5);
  EXPECT_EQ(text["remarks"].size(), verdict.remarks.size());
  EXPECT_EQ(text["remarks"][0]["reason"], verdict.remarks[0].reason);
}

TEST(Rays, LeadBackToTheirPixels) {
  Intrinsics intrinsics;
  intrinsics.values = {530.0, 525.0, 318.0, 242.0, -0.21, 0.06, 0.0008, -0.0006, -0.008};
  const solver::Projection projection(intrinsics);
  for (const cv::Point2d& pixel : {cv::Point2d(0, 0), cv::Point2d(639, 479), cv::Point2d(318, 242)}) {
    cv::Vec3d ray;
    cv::Point2d back;
    ASSERT_TRUE(RayOf(projection, intrinsics, pixel, ray));
    ASSERT_TRUE(projection.Project(ray, back));
    EXPECT_LT(cv::norm(back - pixel), 1e-5);
  }
  intrinsics.values[4] = -0.9;  // folds before the corners
  intrinsics.values[5] = 0.0;
  cv::Vec3d ray;
  EXPECT_FALSE(RayOf(solver::Projection(intrinsics), intrinsics, {0, 0}, ray));
}

}  // namespace
