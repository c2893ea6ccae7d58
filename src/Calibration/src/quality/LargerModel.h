/// Whether a larger lens model than that of a result justifies its coefficients.
#pragma once

#include <string>
#include <vector>

#include "solver/SparseIntrinsics.h"

namespace velmora {

/// Residuals that a larger model would fit more closely are no reason to take it: predicting views that it
/// was not fitted to is. So the answer is that of Calibrator::ChooseModel for the same records. It takes
/// dozens of computations and is looked for when it is asked for the first time. What it is made from must
/// outlive it.
class LargerModel {
 public:
  LargerModel(const std::vector<std::vector<cv::Point3d>>& objectPoints,
              const std::vector<std::vector<cv::Point2d>>& imagePoints, const cv::Size& imageSize,
              const SparseResult& result, double discRadius);

  /// As in "the rational model"; empty when that of the result, or a smaller one, is the one to take.
  const std::string& Name();

 private:
  std::string Ask() const;

  const std::vector<std::vector<cv::Point3d>>& objectPoints_;
  const std::vector<std::vector<cv::Point2d>>& imagePoints_;
  const cv::Size imageSize_;
  const bool isFisheye_;
  const int parameters_;
  SparseOptions options_;
  std::string name_;
  bool asked_ = false;
};

}  // namespace velmora
