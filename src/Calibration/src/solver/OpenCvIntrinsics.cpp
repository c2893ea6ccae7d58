/// Computes one camera's intrinsics from views of the grid.
#include "solver/OpenCvIntrinsics.h"

#include <cfloat>
#include <opencv2/calib3d.hpp>

#include "model/LensModel.h"

namespace velmora {

namespace {

template <typename To, typename From>
std::vector<std::vector<To>> NarrowedTo(const std::vector<std::vector<From>>& records) {
  std::vector<std::vector<To>> narrowed;
  narrowed.reserve(records.size());
  for (const auto& record : records) narrowed.emplace_back(record.begin(), record.end());
  return narrowed;
}

}  // namespace

std::vector<std::vector<cv::Point3f>> Narrowed(const std::vector<std::vector<cv::Point3d>>& records) {
  return NarrowedTo<cv::Point3f>(records);
}

std::vector<std::vector<cv::Point2f>> Narrowed(const std::vector<std::vector<cv::Point2d>>& records) {
  return NarrowedTo<cv::Point2f>(records);
}

cv::TermCriteria OpenCvCriteria() {
  return {cv::TermCriteria::COUNT + cv::TermCriteria::EPS, 200, DBL_EPSILON};
}

IntrinsicsResult SolveIntrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                 const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                 const cv::Size& imageSize, int model) {
  IntrinsicsResult result;
  result.rms =
      cv::calibrateCamera(Narrowed(objectPoints), Narrowed(imagePoints), imageSize, result.K, result.D,
                          result.rvecs, result.tvecs, result.stdDevIntrinsics, result.stdDevExtrinsics,
                          result.perViewErrors, velmora::LensModelOf(model).flags, OpenCvCriteria());
  return result;
}

}  // namespace velmora
