/// Computes one camera's intrinsics in time that grows with the number of views, not its cube.
#include "solver/SparseIntrinsics.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <thread>

#include "solver/Covariance.h"
#include "solver/ModelParameters.h"
#include "solver/Start.h"
#include "solver/Target.h"

namespace {

using sparse::FULL_PARAMETERS;
using sparse::POSE_PARAMETERS;

/// Starting threads takes as long as dozens of views.
int ThreadsFor(size_t views) {
  constexpr size_t WORTH_THREADS = 80;
  constexpr unsigned MOST = 8;
  return views < WORTH_THREADS ? 1
                               : static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, MOST));
}

void CopyLens(const sparse::Lens& lens, IntrinsicsResult& result) {
  const auto& p = lens.values;
  result.K = (cv::Mat_<double>(3, 3) << p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0);
  constexpr int CLASSIC = 5;
  constexpr int LARGER = 14;  // of the rational model too, with zeros at the end
  result.D = cv::Mat::zeros(1, lens.free == sparse::CLASSIC_PARAMETERS ? CLASSIC : LARGER, CV_64F);
  for (int i = 0; i < std::min(result.D.cols, lens.free - 4); ++i) {
    result.D.at<double>(i) = p[static_cast<size_t>(i + 4)];
  }
}

/// From small turns and shifts of the middle of the target to rotation vector and translation of its origin.
cv::Matx66d OriginFrom(const sparse::Pose& pose, const cv::Vec3d& rotation, const cv::Vec3d& middle) {
  cv::Matx66d change = cv::Matx66d::eye();
  constexpr double STEP = 1e-6;
  const cv::Vec3d away = pose.R * middle;
  for (int i = 0; i < 3; ++i) {
    cv::Vec3d turn;
    turn[i] = STEP;
    cv::Vec3d ahead;
    cv::Vec3d behind;
    cv::Rodrigues(sparse::TurnOf(turn) * pose.R, ahead);
    cv::Rodrigues(sparse::TurnOf(-turn) * pose.R, behind);
    // A turn by half a circle has two vectors: the nearer one is meant.
    if (ahead.dot(rotation) < 0.0) ahead = ahead * (1.0 - 2.0 * CV_PI / cv::norm(ahead));
    if (behind.dot(rotation) < 0.0) behind = behind * (1.0 - 2.0 * CV_PI / cv::norm(behind));
    const cv::Vec3d byTurn = (ahead - behind) * (0.5 / STEP);
    const cv::Vec3d shift = away.cross(turn) * (1.0 / STEP);
    for (int k = 0; k < 3; ++k) {
      change(k, i) = byTurn[k];
      change(3 + k, i) = shift[k];
    }
  }
  return change;
}

void CopyPoses(const sparse::Solution& solution, const sparse::Target& target, IntrinsicsResult& result) {
  const int count = static_cast<int>(target.views.size());
  result.rvecs.create(count, 1, CV_64FC3);
  result.tvecs.create(count, 1, CV_64FC3);
  for (int i = 0; i < count; ++i) {
    const sparse::Pose& pose = solution.estimate.poses[static_cast<size_t>(i)];
    cv::Vec3d rotation;
    cv::Rodrigues(pose.R, rotation);
    result.rvecs.at<cv::Vec3d>(i) = rotation;
    result.tvecs.at<cv::Vec3d>(i) = pose.t - pose.R * target.middles[static_cast<size_t>(i)];
  }
}

void CopyErrors(const sparse::Solution& solution, const sparse::Target& target, IntrinsicsResult& result) {
  result.perViewErrors.create(static_cast<int>(target.views.size()), 1, CV_64F);
  double points = 0.0;
  for (size_t i = 0; i < target.views.size(); ++i) {
    const auto count = static_cast<double>(target.views[i].object.size());
    points += count;
    result.perViewErrors.at<double>(static_cast<int>(i)) = std::sqrt(solution.equations[i].squares / count);
  }
  result.rms = std::sqrt(solution.squares / points);
}

void CopyDeviations(const sparse::StagedSolution& staged, const sparse::Target& target,
                    IntrinsicsResult& result) {
  const int count = static_cast<int>(target.views.size());
  result.stdDevIntrinsics = cv::Mat::zeros(FULL_PARAMETERS, 1, CV_64F);
  result.stdDevExtrinsics = cv::Mat::zeros(POSE_PARAMETERS * count, 1, CV_64F);
  const cv::Mat covariance = sparse::LensCovariance(staged, target.views);
  if (covariance.empty()) return;
  for (int i = 0; i < covariance.rows; ++i) {
    result.stdDevIntrinsics.at<double>(i) = std::sqrt(covariance.at<double>(i, i));
  }
  const double variance = sparse::NoiseVariance(staged.solution, target.views);
  for (int view = 0; view < count; ++view) {
    const auto k = static_cast<size_t>(view);
    const cv::Matx66d change =
        OriginFrom(staged.solution.estimate.poses[k], result.rvecs.at<cv::Vec3d>(view), target.middles[k]);
    const cv::Matx66d ofPose =
        change * sparse::PoseCovariance(staged.solution.equations[k], covariance.rows, variance, covariance) *
        change.t();
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      result.stdDevExtrinsics.at<double>(POSE_PARAMETERS * view + i) = std::sqrt(ofPose(i, i));
    }
  }
}

}  // namespace

IntrinsicsResult SolveIntrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                         const cv::Size& imageSize, int model, const SparseOptions& options) {
  const sparse::Target target = sparse::TargetOf(objectPoints, imagePoints);
  double points = 0.0;
  for (const sparse::View& view : target.views) points += static_cast<double>(view.object.size());
  bool givenUp = false;
  sparse::StageOptions stages;
  stages.free = sparse::FreeParametersOf(model);
  stages.imageSize = imageSize;
  stages.threads = options.threads > 0 ? options.threads : ThreadsFor(target.views.size());
  stages.progress = [&](int iteration, double squares) {
    givenUp = givenUp || (options.progress && !options.progress(iteration, std::sqrt(squares / points)));
    return !givenUp;
  };
  const sparse::StagedSolution staged =
      sparse::SolveStages(target.views, sparse::StartOf(target.views, imageSize), stages);
  if (givenUp) CV_Error(cv::Error::StsError, "The computation was given up.");
  if (!staged.solution.usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any camera.");
  IntrinsicsResult result;
  CopyLens(staged.solution.estimate.lens, result);
  CopyPoses(staged.solution, target, result);
  CopyErrors(staged.solution, target, result);
  CopyDeviations(staged, target, result);
  return result;
}
