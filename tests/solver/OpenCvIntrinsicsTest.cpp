/// One camera's intrinsics: the same numbers as the solver's own.
#include "solver/OpenCvIntrinsics.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "model/TargetGeometry.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
}

IntrinsicsResult Solve(const unit::PointLists& views, int model) {
  return SolveIntrinsics(Targets(views.size()), views, unit::FRAME, model);
}

void ExpectSameSolution(const IntrinsicsResult& result, const unit::DirectSolution& direct) {
  EXPECT_TRUE(unit::SameResult(result.rms, direct.rms));
  EXPECT_TRUE(unit::SameResult(result.K, direct.K));
  EXPECT_TRUE(unit::SameResult(result.D, direct.D));
  EXPECT_TRUE(unit::SameResult(result.rvecs, direct.rvecs));
  EXPECT_TRUE(unit::SameResult(result.tvecs, direct.tvecs));
  EXPECT_TRUE(unit::SameResult(result.perViewErrors, direct.perViewErrors));
  // Those of a larger model, and nearly singular, differ by a third from one place in memory to the other.
  if (!unit::OpenCvRepeatsItself()) return;
  EXPECT_SAME_MAT(result.stdDevIntrinsics, direct.stdDevIntrinsics);
  EXPECT_SAME_MAT(result.stdDevExtrinsics, direct.stdDevExtrinsics);
}

TEST(Intrinsics, OfTheClassicModelAreTheSolversBitForBit) {
  const auto views = unit::NoisyViews(7);
  ExpectSameSolution(Solve(views, Calibrator::MODEL_CLASSIC), unit::SolveDirectly(views, 0));
}

TEST(Intrinsics, OfTheRationalModelAreTheSolversBitForBit) {
  const auto views = unit::NoisyViews(7);
  ExpectSameSolution(Solve(views, Calibrator::MODEL_RATIONAL),
                     unit::SolveDirectly(views, cv::CALIB_RATIONAL_MODEL));
}

TEST(Intrinsics, HaveTheShapesThatTheSolverGives) {
  const IntrinsicsResult result = Solve(unit::NoisyViews(6), Calibrator::MODEL_RATIONAL);
  EXPECT_EQ(result.K.size(), cv::Size(3, 3));
  EXPECT_EQ(result.D.size(), cv::Size(14, 1));
  EXPECT_EQ(result.rvecs.size(), cv::Size(1, 6));
  EXPECT_EQ(result.rvecs.type(), CV_64FC3);
  EXPECT_EQ(result.tvecs.size(), cv::Size(1, 6));
  EXPECT_EQ(result.tvecs.type(), CV_64FC3);
  EXPECT_EQ(result.stdDevIntrinsics.size(), cv::Size(1, 18));
  EXPECT_EQ(result.stdDevExtrinsics.size(), cv::Size(1, 36));
  EXPECT_EQ(result.perViewErrors.size(), cv::Size(1, 6));
}

TEST(Intrinsics, RaiseWhenTheListsDoNotMatch) {
  auto views = unit::NoisyViews(5);
  views.back().pop_back();
  EXPECT_THROW(Solve(views, Calibrator::MODEL_CLASSIC), cv::Exception);
  EXPECT_THROW(SolveIntrinsics({}, {}, unit::FRAME, Calibrator::MODEL_CLASSIC), cv::Exception);
}

TEST(Intrinsics, NarrowEachCoordinateAndKeepTheOrder) {
  const std::vector<std::vector<cv::Point3d>> objects = {
      {{0.1, 0.2, 0.3}, {1, 2, 3}}, {}, {{1e-50, -0.1, 7.0}}};
  const auto narrowed = Narrowed(objects);
  ASSERT_EQ(narrowed.size(), 3U);
  EXPECT_EQ(narrowed[0], (std::vector<cv::Point3f>{{0.1F, 0.2F, 0.3F}, {1, 2, 3}}));
  EXPECT_TRUE(narrowed[1].empty());
  EXPECT_EQ(narrowed[2], (std::vector<cv::Point3f>{{0.0F, -0.1F, 7.0F}}));
  const std::vector<std::vector<cv::Point2d>> images = {{{0.1, 0.2}, {639.999, 1.0 / 3.0}}};
  EXPECT_EQ(Narrowed(images)[0], (std::vector<cv::Point2f>{{0.1F, 0.2F}, {639.999F, 1.0F / 3.0F}}));
}

TEST(OpenCvCriteria, StopAfter200IterationsOrWhenNothingChanges) {
  const cv::TermCriteria criteria = OpenCvCriteria();
  EXPECT_EQ(criteria.type, 3);
  EXPECT_EQ(criteria.maxCount, 200);
  EXPECT_EQ(criteria.epsilon, DBL_EPSILON);
}

}  // namespace
