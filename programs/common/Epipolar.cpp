/// How well pairs of points agree with the geometry of a pair of cameras.
#include "common/Epipolar.h"

#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

namespace common {

namespace {

std::vector<cv::Point2d> Undistorted(const std::vector<cv::Point2d>& points, const Intrinsics& camera) {
  std::vector<cv::Point2d> undistorted;
  cv::undistortPoints(points, undistorted, camera.K, camera.D, cv::noArray(), camera.K);
  return undistorted;
}

double Distance(const cv::Point2d& point, const cv::Vec3d& line) {
  return std::abs(line[0] * point.x + line[1] * point.y + line[2]) / std::hypot(line[0], line[1]);
}

}  // namespace

double MeanEpipolarDistance(const std::vector<std::vector<cv::Point2d>>& left,
                            const std::vector<std::vector<cv::Point2d>>& right, const Intrinsics& leftCamera,
                            const Intrinsics& rightCamera, const cv::Mat& F) {
  const cv::Matx33d toRight = F;
  const cv::Matx33d toLeft = toRight.t();
  double sum = 0.0;
  size_t count = 0;
  for (size_t view = 0; view < left.size(); ++view) {
    const auto a = Undistorted(left[view], leftCamera);
    const auto b = Undistorted(right[view], rightCamera);
    for (size_t i = 0; i < a.size(); ++i) {
      sum += Distance(b[i], toRight * cv::Vec3d(a[i].x, a[i].y, 1.0));
      sum += Distance(a[i], toLeft * cv::Vec3d(b[i].x, b[i].y, 1.0));
      count += 2;
    }
  }
  return count > 0 ? sum / static_cast<double>(count) : 0.0;
}

}  // namespace common
