/// What a pair's computation is given, what it looks for, and where it starts.
#include "solver/PairProblem.h"

#include <algorithm>
#include <opencv2/calib3d.hpp>

#include "foundation/Median.h"
#include "model/LensModel.h"

namespace velmora::solver {

namespace {

using Points = std::vector<std::vector<cv::Point2d>>;

/// Each list at most as long as that of the object points.
Points Matching(Points points, const std::vector<std::vector<cv::Point3d>>& objectPoints) {
  for (size_t i = 0; i < std::min(points.size(), objectPoints.size()); ++i) {
    points[i].resize(std::min(points[i].size(), objectPoints[i].size()));
  }
  return points;
}

Pose PoseBefore(const Lens& lens, const View& view) {
  const auto& p = lens.values;
  const cv::Matx33d K(p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0);
  const std::vector<double> D(p.begin() + 4, p.end());
  cv::Vec3d rotation;
  Pose pose;
  CV_Assert(cv::solvePnP(view.object, view.image, K, D, rotation, pose.t));
  pose.R = TurnOf(rotation);
  return pose;
}

}  // namespace

PairTarget PairTargetOf(const std::vector<std::vector<cv::Point3d>>& objectPoints, const Points& leftPoints,
                        const Points& rightPoints) {
  return {TargetOf(objectPoints, Matching(leftPoints, objectPoints)),
          TargetOf(objectPoints, Matching(rightPoints, objectPoints))};
}

Lens KnownLens(const cv::Mat& K, const cv::Mat& D, int model) {
  CV_Assert(K.rows == 3 && K.cols == 3 && K.channels() == 1 && D.channels() == 1 && !D.empty());
  const cv::Mat_<double> matrix(K);
  const cv::Mat_<double> coefficients(D.reshape(1, 1));
  Lens lens;
  // Known coefficients all count, but for those that the classic model does not have.
  const bool classic = velmora::LensModelOf(model).parameters == CLASSIC_PARAMETERS;
  lens.free = classic ? CLASSIC_PARAMETERS : FULL_PARAMETERS;
  lens.values = {matrix(0, 0), matrix(1, 1), matrix(0, 2), matrix(1, 2)};
  for (int i = 0; i < std::min(coefficients.cols, lens.free - 4); ++i) {
    lens.values[static_cast<size_t>(i + 4)] = coefficients(i);
  }
  return lens;
}

Pose BeforeRight(const Pose& relative, const Pose& left) {
  return {relative.R * left.R, relative.R * left.t + relative.t};
}

Estimate LeftOf(const PairEstimate& pair) {
  Estimate estimate;
  estimate.lens = pair.left;
  estimate.poses = pair.poses;
  return estimate;
}

Estimate RightOf(const PairEstimate& pair) {
  Estimate estimate;
  estimate.lens = pair.right;
  for (const Pose& pose : pair.poses) estimate.poses.push_back(BeforeRight(pair.relative, pose));
  return estimate;
}

PairEstimate StartOf(const PairTarget& target, const Lens& left, const Lens& right) {
  PairEstimate start;
  start.left = left;
  start.right = right;
  std::vector<double> numbers[6];
  for (size_t i = 0; i < target.left.views.size(); ++i) {
    start.poses.push_back(PoseBefore(left, target.left.views[i]));
    const Pose other = PoseBefore(right, target.right.views[i]);
    const cv::Matx33d turn = other.R * start.poses.back().R.t();
    const cv::Vec3d shift = other.t - turn * start.poses.back().t;
    cv::Vec3d rotation;
    cv::Rodrigues(turn, rotation);
    for (int k = 0; k < 3; ++k) {
      numbers[k].push_back(rotation[k]);
      numbers[k + 3].push_back(shift[k]);
    }
  }
  start.relative.R = TurnOf({MedianOf(numbers[0]), MedianOf(numbers[1]), MedianOf(numbers[2])});
  start.relative.t = {MedianOf(numbers[3]), MedianOf(numbers[4]), MedianOf(numbers[5])};
  return start;
}

ExtrinsicsResult PairMatricesOf(const StereoIntrinsics& intrinsics, const Pose& relative) {
  const cv::Vec3d& t = relative.t;
  const cv::Matx33d essential =
      cv::Matx33d(0.0, -t[2], t[1], t[2], 0.0, -t[0], -t[1], t[0], 0.0) * relative.R;
  const cv::Matx33d leftK = cv::Mat_<double>(intrinsics.K);
  const cv::Matx33d rightK = cv::Mat_<double>(intrinsics.KRight);
  cv::Matx33d fundamental = rightK.inv().t() * essential * leftK.inv();
  if (fundamental(2, 2) != 0.0) fundamental = fundamental * (1.0 / fundamental(2, 2));
  ExtrinsicsResult result;
  result.R = cv::Mat(relative.R).clone();
  result.T = cv::Mat(relative.t).clone();
  result.E = cv::Mat(essential).clone();
  result.F = cv::Mat(fundamental).clone();
  return result;
}

}  // namespace velmora::solver
