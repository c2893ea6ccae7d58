/// A solution as the matrices that a calibrator hands out, and back.
#include "solver/SolutionMatrices.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "solver/Covariance.h"
#include "solver/DiscBias.h"

namespace velmora::solver {

namespace {

void CopyLens(const Lens& lens, IntrinsicsResult& result) {
  const auto& p = lens.values;
  result.K = (cv::Mat_<double>(3, 3) << p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0);
  constexpr int CLASSIC = 5;
  constexpr int LARGER = 14;  // of the rational model too, with zeros at the end
  result.D = cv::Mat::zeros(1, lens.free == CLASSIC_PARAMETERS ? CLASSIC : LARGER, CV_64F);
  for (int i = 0; i < std::min(result.D.cols, lens.free - 4); ++i) {
    result.D.at<double>(i) = p[static_cast<size_t>(i + 4)];
  }
}

/// From small turns and shifts of the middle of the target to rotation vector and translation of its origin.
cv::Matx66d OriginFrom(const Pose& pose, const cv::Vec3d& rotation, const cv::Vec3d& middle) {
  cv::Matx66d change = cv::Matx66d::eye();
  constexpr double STEP = 1e-6;
  const cv::Vec3d away = pose.R * middle;
  for (int i = 0; i < 3; ++i) {
    cv::Vec3d turn;
    turn[i] = STEP;
    cv::Vec3d ahead;
    cv::Vec3d behind;
    cv::Rodrigues(TurnOf(turn) * pose.R, ahead);
    cv::Rodrigues(TurnOf(-turn) * pose.R, behind);
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

/// The pose of a view that the lens was not computed from.
Pose PoseBefore(const IntrinsicsResult& result, const View& view) {
  cv::Vec3d rotation;
  Pose pose;
  cv::solvePnP(view.object, view.image, result.K, result.D, rotation, pose.t);
  pose.R = TurnOf(rotation);
  return pose;
}

double PointsOf(const View& view) {
  if (view.weights.empty()) return static_cast<double>(view.object.size());
  double points = 0.0;
  for (const double weight : view.weights) points += weight;
  return points;
}

void PlaceView(const Pose& pose, const cv::Vec3d& middle, int row, IntrinsicsResult& result) {
  cv::Vec3d rotation;
  cv::Rodrigues(pose.R, rotation);
  result.rvecs.at<cv::Vec3d>(row) = rotation;
  result.tvecs.at<cv::Vec3d>(row) = pose.t - pose.R * middle;
}

void CopyKept(const Solved& solved, const Target& target, IntrinsicsResult& result) {
  double points = 0.0;
  for (size_t i = 0; i < solved.kept.size(); ++i) {
    const int row = static_cast<int>(solved.kept[i]);
    const double count = PointsOf(solved.views[i]);
    points += count;
    PlaceView(solved.staged.solution.estimate.poses[i], target.middles[solved.kept[i]], row, result);
    result.perViewErrors.at<double>(row) = std::sqrt(solved.staged.solution.equations[i].squares / count);
  }
  result.rms = std::sqrt(solved.staged.solution.squares / points);
}

void PlaceLeftOut(const Solved& solved, const Target& target, IntrinsicsResult& result) {
  for (size_t i = 0; i < target.views.size(); ++i) {
    if (std::binary_search(solved.kept.begin(), solved.kept.end(), i)) continue;
    const View& view = target.views[i];
    const Pose pose = PoseBefore(result, view);
    const double squares = EquationsOf(view, solved.staged.solution.estimate.lens, pose).squares;
    PlaceView(pose, target.middles[i], static_cast<int>(i), result);
    result.perViewErrors.at<double>(static_cast<int>(i)) =
        std::sqrt(squares / static_cast<double>(view.object.size()));
  }
}

void CopyDeviations(const Solved& solved, const Target& target, IntrinsicsResult& result) {
  const cv::Mat covariance = LensCovariance(solved.staged, solved.views);
  if (covariance.empty()) return;
  for (int i = 0; i < covariance.rows; ++i) {
    result.stdDevIntrinsics.at<double>(i) = std::sqrt(covariance.at<double>(i, i));
  }
  const double variance = NoiseVariance(solved.staged.solution, solved.views);
  for (size_t k = 0; k < solved.kept.size(); ++k) {
    const int view = static_cast<int>(solved.kept[k]);
    const cv::Matx66d change = OriginFrom(solved.staged.solution.estimate.poses[k],
                                          result.rvecs.at<cv::Vec3d>(view), target.middles[solved.kept[k]]);
    const cv::Matx66d ofPose =
        change * PoseCovariance(solved.staged.solution.equations[k], covariance.rows, variance, covariance) *
        change.t();
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      result.stdDevExtrinsics.at<double>(POSE_PARAMETERS * view + i) = std::sqrt(ofPose(i, i));
    }
  }
}

/// The views that the result is of, with their poses; points that were left out weigh nothing.
void CollectKept(const Target& target, const SparseResult& result, Solved& solved) {
  Estimate& estimate = solved.staged.solution.estimate;
  for (size_t i = 0; i < target.views.size(); ++i) {
    View view = target.views[i];
    bool left = false;
    for (const Rejected& rejected : result.rejected) {
      if (rejected.view != i) continue;
      left = left || rejected.point == Rejected::WHOLE_VIEW;
      if (left) break;
      if (view.weights.empty()) view.weights.assign(view.object.size(), 1.0);
      view.weights[static_cast<size_t>(rejected.point)] = 0.0;
    }
    if (left) continue;
    Pose pose;
    pose.R = TurnOf(result.rvecs.at<cv::Vec3d>(static_cast<int>(i)));
    pose.t = result.tvecs.at<cv::Vec3d>(static_cast<int>(i)) + pose.R * target.middles[i];
    estimate.poses.push_back(pose);
    solved.kept.push_back(i);
    solved.views.push_back(std::move(view));
  }
}

}  // namespace

Lens LensOf(const IntrinsicsResult& result) {
  const cv::Mat_<double> K(result.K);
  const cv::Mat_<double> D(result.D);
  Lens lens;
  lens.values = {K(0, 0), K(1, 1), K(0, 2), K(1, 2)};
  for (int i = 0; i < D.cols; ++i) lens.values[static_cast<size_t>(i + 4)] = D(i);
  if (D.cols > 5) {
    const bool full = cv::countNonZero(D.colRange(8, D.cols)) > 0;
    lens.free = full ? FULL_PARAMETERS : RATIONAL_PARAMETERS;
  }
  return lens;
}

IntrinsicsResult MatricesOf(const Solved& solved, const Target& target) {
  IntrinsicsResult result;
  const int count = static_cast<int>(target.views.size());
  result.rvecs.create(count, 1, CV_64FC3);
  result.tvecs.create(count, 1, CV_64FC3);
  result.perViewErrors.create(count, 1, CV_64F);
  result.stdDevIntrinsics = cv::Mat::zeros(FULL_PARAMETERS, 1, CV_64F);
  result.stdDevExtrinsics = cv::Mat::zeros(POSE_PARAMETERS * count, 1, CV_64F);
  CopyLens(solved.staged.solution.estimate.lens, result);
  CopyKept(solved, target, result);
  PlaceLeftOut(solved, target, result);
  CopyDeviations(solved, target, result);
  return result;
}

Solved SolvedFrom(const Target& target, const SparseResult& result, double discRadius) {
  Solved solved;
  Solution& solution = solved.staged.solution;
  solution.estimate.lens = LensOf(result);
  CollectKept(target, result, solved);
  if (discRadius > 0.0) solved.views = WithoutDiscBias(solved.views, solution.estimate, discRadius);
  for (size_t i = 0; i < solved.views.size(); ++i) {
    solution.equations.push_back(
        EquationsOf(solved.views[i], solution.estimate.lens, solution.estimate.poses[i]));
    solution.squares += solution.equations.back().squares;
  }
  if (solution.estimate.lens.free > CLASSIC_PARAMETERS) {
    solved.staged.prior = WeakPrior(solved.views, solution.estimate, NoiseVariance(solution, solved.views));
  }
  return solved;
}

}  // namespace velmora::solver
