/// Computes how the right camera of a pair stands to the left one, in milliseconds.
#include "solver/SparseExtrinsics.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "solver/ModelParameters.h"
#include "solver/PairMeasurements.h"
#include "solver/Target.h"

namespace {

using Points = std::vector<std::vector<cv::Point2d>>;

/// Each list at most as long as that of the object points.
Points Matching(Points points, const std::vector<std::vector<cv::Point3d>>& objectPoints) {
  for (size_t i = 0; i < std::min(points.size(), objectPoints.size()); ++i) {
    points[i].resize(std::min(points[i].size(), objectPoints[i].size()));
  }
  return points;
}

sparse::Lens LensOf(const cv::Mat& K, const cv::Mat& D, int model) {
  CV_Assert(K.rows == 3 && K.cols == 3 && K.channels() == 1 && D.channels() == 1);
  const cv::Mat_<double> matrix(K);
  const cv::Mat_<double> coefficients(D.reshape(1, 1));
  sparse::Lens lens;
  // Known coefficients all count, but for those that the classic model does not have.
  const bool classic = sparse::FreeParametersOf(model) == sparse::CLASSIC_PARAMETERS;
  lens.free = classic ? sparse::CLASSIC_PARAMETERS : sparse::FULL_PARAMETERS;
  lens.values = {matrix(0, 0), matrix(1, 1), matrix(0, 2), matrix(1, 2)};
  for (int i = 0; i < std::min(coefficients.cols, lens.free - 4); ++i) {
    lens.values[static_cast<size_t>(i + 4)] = coefficients(i);
  }
  return lens;
}

sparse::Pose PoseBefore(const sparse::Lens& lens, const sparse::View& view) {
  const auto& p = lens.values;
  const cv::Matx33d K(p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0);
  const std::vector<double> D(p.begin() + 4, p.end());
  cv::Vec3d rotation;
  sparse::Pose pose;
  cv::solvePnP(view.object, view.image, K, D, rotation, pose.t);
  pose.R = sparse::TurnOf(rotation);
  return pose;
}

double MedianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Poses before the left camera, and the median of what the views say of the right one.
sparse::Estimate StartOf(const sparse::Target& left, const sparse::Target& right,
                         const sparse::Lens& leftLens, const sparse::Lens& rightLens) {
  sparse::Estimate start;
  std::vector<double> numbers[6];
  for (size_t i = 0; i < left.views.size(); ++i) {
    start.poses.push_back(PoseBefore(leftLens, left.views[i]));
    const sparse::Pose other = PoseBefore(rightLens, right.views[i]);
    const cv::Matx33d turn = other.R * start.poses.back().R.t();
    const cv::Vec3d shift = other.t - turn * start.poses.back().t;
    cv::Vec3d rotation;
    cv::Rodrigues(turn, rotation);
    for (int k = 0; k < 3; ++k) {
      numbers[k].push_back(rotation[k]);
      numbers[k + 3].push_back(shift[k]);
    }
  }
  start.right.R = sparse::TurnOf({MedianOf(numbers[0]), MedianOf(numbers[1]), MedianOf(numbers[2])});
  start.right.t = {MedianOf(numbers[3]), MedianOf(numbers[4]), MedianOf(numbers[5])};
  return start;
}

/// The essential and the fundamental matrix, the latter with a one in its corner where it can have it.
void FillEpipolar(const StereoIntrinsics& intrinsics, const sparse::Pose& right, ExtrinsicsResult& result) {
  const cv::Vec3d& t = right.t;
  const cv::Matx33d essential = cv::Matx33d(0.0, -t[2], t[1], t[2], 0.0, -t[0], -t[1], t[0], 0.0) * right.R;
  const cv::Matx33d leftK = cv::Mat_<double>(intrinsics.K);
  const cv::Matx33d rightK = cv::Mat_<double>(intrinsics.KRight);
  cv::Matx33d fundamental = rightK.inv().t() * essential * leftK.inv();
  if (fundamental(2, 2) != 0.0) fundamental = fundamental * (1.0 / fundamental(2, 2));
  result.R = cv::Mat(right.R).clone();
  result.T = cv::Mat(right.t).clone();
  result.E = cv::Mat(essential).clone();
  result.F = cv::Mat(fundamental).clone();
}

}  // namespace

ExtrinsicsResult SolveExtrinsicsSparsely(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                         const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                         const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                         const StereoIntrinsics& intrinsics, int model, int threads,
                                         const std::function<bool(int, double)>& progress) {
  WarnOfIgnoredCoefficients(intrinsics, model);
  const sparse::Target left = sparse::TargetOf(objectPoints, Matching(leftPoints, objectPoints));
  const sparse::Target right = sparse::TargetOf(objectPoints, Matching(rightPoints, objectPoints));
  const sparse::Lens leftLens = LensOf(intrinsics.K, intrinsics.D, model);
  const sparse::Lens rightLens = LensOf(intrinsics.KRight, intrinsics.DRight, model);
  const sparse::PairMeasurements measurements(left.views, right.views, leftLens, rightLens);
  sparse::SolveOptions options;
  options.threads = threads;
  bool givenUp = false;
  const double points = 0.5 * measurements.Coordinates();
  options.progress = [&](int iteration, double squares) {
    givenUp = progress && !progress(iteration, std::sqrt(squares / points));
    return !givenUp;
  };
  const sparse::Solution solution =
      sparse::Minimise(measurements, StartOf(left, right, leftLens, rightLens), options);
  if (givenUp) CV_Error(cv::Error::StsError, "The computation was given up.");
  if (!solution.usable) CV_Error(cv::Error::StsNoConv, "The views do not agree with any pair of cameras.");
  ExtrinsicsResult result;
  result.rms = std::sqrt(solution.squares / points);
  FillEpipolar(intrinsics, solution.estimate.right, result);
  return result;
}
