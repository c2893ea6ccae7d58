/// That "good" means good whatever was done to the data.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "Calibrator.h"
#include "quality/Assessment.h"
#include "quality/ModelComparison.h"
#include "quality/RigSolutions.h"
#include "solver/WideViews.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;

struct Assessed {
  SparseResult result;
  CalibrationVerdict verdict;
};

Assessed Assess(const unit::PointLists& views, const cv::Size& size = unit::FRAME) {
  SparseOptions options;
  options.robust = true;
  const auto targets = unit::FlatTargets(views.size());
  Assessed assessed;
  assessed.result = SolveIntrinsicsSparsely(targets, views, size, CLASSIC, options);
  assessed.verdict = AssessIntrinsics(targets, views, size, assessed.result);
  return assessed;
}

bool Says(const CalibrationVerdict& verdict, const std::string& words) {
  for (const auto& remark : verdict.remarks) {
    if (remark.reason.find(words) != std::string::npos) return true;
  }
  return false;
}

/// Changes the points of the sheet in a view, before it is seen.
using Shaping = std::function<void(std::vector<cv::Point3d>&)>;

unit::PointLists Observed(const world::Camera& camera, int count, std::uint64_t seed, double noise = 0.1,
                          const Shaping& shape = {}) {
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(seed + 1);
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, count, seed, sheet)) {
    auto points = sheet.GridPoints();
    if (shape) shape(points);
    views.push_back(world::ProjectPoints(camera.lens, points, pose));
    for (cv::Point2d& point : views.back())
      point += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
  }
  return views;
}

TEST(DataArea, IsOfThePointsThatWereKept) {
  auto views = Observed(unit::DistortedCamera(), 12, 3);
  views[2][7] = {3.0, 3.0};
  views[5][20] = {636.0, 476.0};
  const Assessed assessed = Assess(views);
  ASSERT_EQ(assessed.verdict.leftOut.size(), 2U);
  for (const cv::Point2f& corner : assessed.verdict.dataArea) {
    EXPECT_GT(cv::norm(corner - cv::Point2f(3.0F, 3.0F)), 1.0);
    EXPECT_GT(cv::norm(corner - cv::Point2f(636.0F, 476.0F)), 1.0);
  }
}

TEST(ImageWithoutRays, IsNotCalledKnown) {
  const Assessed assessed = Assess(Observed(unit::FisheyeCamera(110.0), 20, 2));
  EXPECT_GT(assessed.verdict.imageWithoutRay, 0.02);
  EXPECT_FALSE(std::isfinite(assessed.verdict.deviationInImage));
  EXPECT_NE(assessed.verdict.grade, Grade::Good);
  EXPECT_TRUE(Says(assessed.verdict, "The lens has no ray for ")) << assessed.verdict.ToJson();
  EXPECT_EQ(Assess(Observed(unit::DistortedCamera(), 20, 2)).verdict.imageWithoutRay, 0.0);
}

TEST(ManyViewsLeftOut, AreAReasonForCare) {
  auto views = Observed(unit::DistortedCamera(), 20, 4);
  for (size_t i = 0; i < 3; ++i) std::reverse(views[i].begin(), views[i].end());
  EXPECT_EQ(Assess(views).verdict.grade, Grade::Good);
  for (size_t i = 3; i < 7; ++i) std::reverse(views[i].begin(), views[i].end());
  const CalibrationVerdict verdict = Assess(views).verdict;
  EXPECT_EQ(verdict.grade, Grade::WithCare);
  EXPECT_TRUE(Says(verdict, "7 of 20 views disagree with the others, and were left out."))
      << verdict.ToJson();
}

TEST(RejectedViews, AreSaidToBeOfAnotherCameraWhereTheyAgree) {
  const world::Camera own = unit::DistortedCamera();
  world::Camera zoomed = own;
  cv::Matx33d K = own.lens.K();
  K(0, 0) *= 1.5;
  K(1, 1) *= 1.5;
  zoomed.lens = world::Lens(K, own.lens.D());
  auto views = Observed(own, 13, 5);
  const auto others = Observed(zoomed, 7, 6);
  views.insert(views.end(), others.begin(), others.end());
  const CalibrationVerdict verdict = Assess(views).verdict;
  EXPECT_EQ(verdict.grade, Grade::WithCare) << verdict.ToJson();
  EXPECT_TRUE(Says(verdict, "agree with each other, on a focal length that is ")) << verdict.ToJson();
}

TEST(CroppedPictures, AreJudgedByHowWellThePrincipalPointIsKnown) {
  auto views = Observed(unit::DistortedCamera(), 20, 7);
  for (auto& view : views) {
    for (cv::Point2d& point : view) point.x -= 400.0;
  }
  const CalibrationVerdict verdict = Assess(views).verdict;
  EXPECT_FALSE(Says(verdict, "principal point")) << verdict.ToJson();
  EXPECT_LT(verdict.principalPointDeviation, 3.0);
  EXPECT_GT(verdict.principalPointDeviation, 0.0);
}

TEST(LargeImages, AreNotGoodWithManyPixelsOfUncertainty) {
  const cv::Size size(3840, 2880);
  const world::Camera camera = world::CameraFromFieldOfView(size, 60.0, {-0.2, 0.05, 0.0, 0.0});
  int good = 0;
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const CalibrationVerdict verdict = Assess(Observed(camera, 7, seed, 6.0), size).verdict;
    if (verdict.grade == Grade::Good) {
      ++good;
      EXPECT_LT(verdict.ExpectedInData(), 3.5);
    }
  }
  EXPECT_LE(good, 1);
}

TEST(UnfinishedSearches, AreToldOf) {
  Solution solution = unit::Solved(unit::ObservedByRig(
      {{world::RigCamera{unit::DistortedCamera()}}}, CLASSIC_PARAMETERS, unit::FlatShape(),
      world::SampleViews(unit::DistortedCamera(), 15, 8,
                         world::Sheet(unit::GRID, static_cast<double>(unit::UNIT))),
      8, 0.1));
  const auto none = [] { return std::string(); };
  EXPECT_EQ(AssessCamera(solution, 0, none).grade, Grade::Good);
  solution.converged = false;
  const CalibrationVerdict verdict = AssessCamera(solution, 0, none);
  EXPECT_EQ(verdict.grade, Grade::WithCare);
  EXPECT_TRUE(Says(verdict, "The search for the result ended before it had settled."));
}

TEST(PrintErrors, AreToldWhereTheyCostMoreThanNoise) {
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    const auto views = Observed(unit::DistortedCamera(), 20, seed, 0.1, [](std::vector<cv::Point3d>& points) {
      for (cv::Point3d& p : points) p.y += 0.001 * std::sin(2.0 * CV_PI * p.y / 0.2);
    });
    const Assessed assessed = Assess(views);
    EXPECT_TRUE(Says(assessed.verdict, "The discs are printed off by about 0.")) << assessed.verdict.ToJson();
    EXPECT_NEAR(assessed.verdict.printError, 0.0005, 0.0003) << seed;
    const double truth = unit::TrueErrorOf(assessed.result, unit::DistortedCamera(), views);
    EXPECT_GT(assessed.verdict.ExpectedInData(), 0.5 * truth) << seed;
    EXPECT_LT(assessed.verdict.ExpectedInData(), 3.0 * truth) << seed;
  }
}

/// The sheet moves by a length, in each view another way, while the image is read from top to bottom.
unit::PointLists Moving(double metres, std::uint64_t seed) {
  const world::Camera camera = unit::DistortedCamera();
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  cv::RNG random(seed + 1);
  unit::PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, 20, seed, sheet)) {
    const double way = random.uniform(0.0, 2.0 * CV_PI);
    auto points = world::TrueCentres(camera.lens, sheet, pose);
    for (size_t k = 0; k < points.size(); ++k) {
      world::Pose then = pose;
      const double read = points[k].y / camera.size.height - 0.5;
      then.tvec += metres * read * cv::Vec3d(std::cos(way), std::sin(way), 0.0);
      points[k] = world::ProjectPoints(camera.lens, {sheet.GridPoints()[k]}, then).front() +
                  cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
    }
    views.push_back(points);
  }
  return views;
}

TEST(MovingSheets, AreToldFromSheetsOutOfProportion) {
  for (std::uint64_t seed = 1; seed <= 4; ++seed) {
    const CalibrationVerdict verdict = Assess(Moving(0.002, seed)).verdict;
    EXPECT_NE(verdict.grade, Grade::Good);
    EXPECT_TRUE(Says(verdict, "while an image was read row by row")) << verdict.ToJson();
    EXPECT_FALSE(Says(verdict, "The print is distorted"));
    EXPECT_NEAR(verdict.movedWhileRead, 0.002, 0.0008) << seed;
  }
}

TEST(ChoiceOfTheModel, IsNotLedAstrayByABentSheet) {
  int larger = 0;
  for (std::uint64_t seed = 1; seed <= 7; ++seed) {
    const auto views = Observed(unit::DistortedCamera(), 10, seed, 0.1, [](std::vector<cv::Point3d>& points) {
      for (cv::Point3d& p : points) p.z = 0.002 * (1.0 - std::pow(p.y / 0.1 - 1.0, 2.0));
    });
    const ModelChoice choice = CompareModels(unit::FlatTargets(views.size()), views, unit::FRAME);
    larger += choice.Name() == "classic" ? 0 : 1;
  }
  EXPECT_LE(larger, 1);
}

}  // namespace
