/// Computes one camera's intrinsics from views of the grid.
#include "Intrinsics.h"

#include <opencv2/calib3d.hpp>

#include "LensModel.h"

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

IntrinsicsResult SolveIntrinsics(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                 const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                 const cv::Size& imageSize, int model) {
  IntrinsicsResult result;
  result.rms =
      cv::calibrateCamera(Narrowed(objectPoints), Narrowed(imagePoints), imageSize, result.K, result.D,
                          result.rvecs, result.tvecs, result.stdDevIntrinsics, result.stdDevExtrinsics,
                          result.perViewErrors, FlagsOfModel(model), SolverCriteria());
  return result;
}
