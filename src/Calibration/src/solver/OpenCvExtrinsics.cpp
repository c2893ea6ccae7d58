/// Computes how the right camera of a pair stands to the left one.
#include "solver/OpenCvExtrinsics.h"

#include <algorithm>
#include <opencv2/calib3d.hpp>

#include "Log.h"
#include "model/LensModel.h"
#include "solver/OpenCvIntrinsics.h"

namespace velmora {

namespace {

constexpr int CLASSIC_COEFFICIENTS = 5;

/// In single precision, each list at most as long as that of the object points.
std::vector<std::vector<cv::Point2f>> Matching(const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                               const std::vector<std::vector<cv::Point3d>>& objectPoints) {
  auto narrowed = Narrowed(imagePoints);
  for (size_t i = 0; i < std::min(narrowed.size(), objectPoints.size()); ++i) {
    narrowed[i].resize(std::min(narrowed[i].size(), objectPoints[i].size()));
  }
  return narrowed;
}

void WarnOf(const char* camera, const cv::Mat& D) {
  if (D.cols > CLASSIC_COEFFICIENTS && cv::countNonZero(D.colRange(CLASSIC_COEFFICIENTS, D.cols)) > 0) {
    Log::warn("The classic model ignores the distortion coefficients of the %s camera beyond the fifth.",
              camera);
  }
}

}  // namespace

void WarnOfIgnoredCoefficients(const StereoIntrinsics& intrinsics, int model) {
  if (velmora::LensModelOf(model).flags != 0) return;
  WarnOf("left", intrinsics.D);
  WarnOf("right", intrinsics.DRight);
}

ExtrinsicsResult SolveExtrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                 const std::vector<std::vector<cv::Point2d>>& leftPoints,
                                 const std::vector<std::vector<cv::Point2d>>& rightPoints,
                                 const StereoIntrinsics& intrinsics, const cv::Size& imageSize, int model) {
  const int flags = velmora::LensModelOf(model).flags;
  WarnOfIgnoredCoefficients(intrinsics, model);
  // Copies: the solver cuts the coefficients of its arguments down to those of the model.
  cv::Mat K = intrinsics.K.clone();
  cv::Mat D = intrinsics.D.clone();
  cv::Mat KRight = intrinsics.KRight.clone();
  cv::Mat DRight = intrinsics.DRight.clone();
  ExtrinsicsResult result;
  result.rms =
      cv::stereoCalibrate(Narrowed(objectPoints), Matching(leftPoints, objectPoints),
                          Matching(rightPoints, objectPoints), K, D, KRight, DRight, imageSize, result.R,
                          result.T, result.E, result.F, cv::CALIB_FIX_INTRINSIC | flags, OpenCvCriteria());
  return result;
}

}  // namespace velmora
