/// The sparse solver's cameras and pairs of the classic model beside those that Ceres finds.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/calib3d.hpp>

#include "CeresProblem.h"
#include "solver/NoisyViews.h"
#include "solver/PairViews.h"

using namespace velmora;

namespace {

/// In single precision, as the engine takes them.
unit::PointLists Narrowed(unit::PointLists views) {
  for (auto& view : views) {
    for (cv::Point2d& point : view) point = cv::Point2d(cv::Point2f(point));
  }
  return views;
}

std::vector<cv::Point3d> Object() {
  std::vector<cv::Point3d> points;
  for (const cv::Point3f& point : unit::TargetPoints()) points.emplace_back(point);
  return points;
}

/// Where the finder sees the grid in rendered images.
unit::PointLists Detected() {
  const auto calibrator = unit::MakeCalibrator();
  unit::PointLists views;
  for (const cv::Mat& image : unit::Rendered().images) {
    cv::Mat frame = image.clone();
    std::vector<cv::Point2d> centres;
    if (calibrator->DetectPoints(frame, centres, false)) views.push_back(centres);
  }
  return views;
}

void ExpectCamera(const cv::Mat& K, const cv::Mat& D, const independent::Camera& expected) {
  const double own[] = {K.at<double>(0, 0), K.at<double>(1, 1), K.at<double>(0, 2), K.at<double>(1, 2)};
  for (size_t i = 0; i < 4; ++i) EXPECT_NEAR(own[i], expected[i], 1e-6 * expected[i]) << i;
  for (size_t i = 4; i < expected.size(); ++i) {
    EXPECT_NEAR(D.at<double>(static_cast<int>(i) - 4), expected[i], 1e-6) << i;
  }
}

/// The costs are equal to all digits that sums of thousands of squares have.
void ExpectCost(double rms, size_t points, double expected) {
  const double cost = rms * rms * static_cast<double>(points);
  EXPECT_NEAR(cost, expected, 1e-10 * expected);
}

void ExpectTheSameCamera(const unit::PointLists& views) {
  const SparseResult own =
      SolveIntrinsicsSparsely(unit::Targets(views.size()), views, unit::FRAME, Calibrator::MODEL_CLASSIC);
  const independent::Solution other = independent::SolveCamera(Object(), Narrowed(views), unit::FRAME);
  ExpectCost(own.rms, views.size() * views.front().size(), other.cost);
  ExpectCamera(own.K, own.D, other.left);
  for (int i = 0; i < own.rvecs.rows; ++i) {
    const independent::Pose& pose = other.poses[static_cast<size_t>(i)];
    EXPECT_LT(cv::norm(own.rvecs.at<cv::Vec3d>(i) - cv::Vec3d(pose.data())), 1e-6) << i;
    EXPECT_LT(cv::norm(own.tvecs.at<cv::Vec3d>(i) - cv::Vec3d(pose.data() + 3)), 1e-6) << i;
  }
}

TEST(BesideCeres, CamerasOfNoisyPointsAreTheSame) {
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    for (const int count : {8, 20}) {
      ExpectTheSameCamera(unit::NoisyViews(unit::DistortedCamera(), count, seed));
    }
  }
}

TEST(BesideCeres, CamerasOfRenderedPicturesAreTheSame) {
  const unit::PointLists views = Detected();
  ASSERT_GE(views.size(), 5U);
  ExpectTheSameCamera(views);
}

TEST(BesideCeres, PairsWithRefinedIntrinsicsAreTheSame) {
  const world::Pair rig = unit::RigFor(Calibrator::MODEL_CLASSIC);
  for (const std::uint64_t seed : {1U, 2U}) {
    const unit::PointPairs pairs = unit::Observed(rig, 10, seed, 0.1);
    const ExtrinsicsResult own =
        unit::Refined(pairs, unit::EachAlone(pairs, Calibrator::MODEL_CLASSIC), Calibrator::MODEL_CLASSIC);
    const independent::Solution other =
        independent::SolvePair(Object(), Narrowed(pairs.left), Narrowed(pairs.right), unit::FRAME);
    ExpectCost(own.rms, 2 * pairs.left.size() * pairs.left.front().size(), other.cost);
    ExpectCamera(own.refined.K, own.refined.D, other.left);
    ExpectCamera(own.refined.KRight, own.refined.DRight, other.right);
    cv::Vec3d rotation;
    cv::Rodrigues(own.R, rotation);
    EXPECT_LT(cv::norm(rotation - cv::Vec3d(other.relative.data())), 1e-7);
    EXPECT_LT(cv::norm(cv::Vec3d(own.T.ptr<double>()) - cv::Vec3d(other.relative.data() + 3)), 1e-7);
  }
}

}  // namespace
