/// Shows images as a camera without distortion would have taken them.
#include "guided/Undistortion.h"

#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

namespace guided {

Undistortion::Undistortion(const common::Report& result) {
  if (result.fisheye) {
    // The whole field would make the middle tiny: half the focal length shows a good hundred degrees.
    constexpr double FIELD = 0.5;
    cv::Matx33d K = result.K;
    K(0, 0) *= FIELD;
    K(1, 1) *= FIELD;
    cv::fisheye::initUndistortRectifyMap(result.K, result.D, cv::noArray(), K, result.frame, CV_16SC2, first_,
                                         second_);
    return;
  }
  cv::initUndistortRectifyMap(result.K, result.D, cv::noArray(), result.K, result.frame, CV_16SC2, first_,
                              second_);
}

cv::Mat Undistortion::Of(const cv::Mat& image) const {
  cv::Mat undistorted;
  cv::remap(image, undistorted, first_, second_, cv::INTER_LINEAR);
  return undistorted;
}

}  // namespace guided
