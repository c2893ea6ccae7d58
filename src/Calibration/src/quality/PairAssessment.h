/// Assesses a computed pair of cameras.
#pragma once

#include <memory>
#include <vector>

#include "PairVerdict.h"
#include "model/Solution.h"
#include "solver/OpenCvExtrinsics.h"

namespace velmora {

/// What is known of intrinsics that a pair holds: empty where nothing is.
struct HeldIntrinsics {
  cv::Mat formal;     ///< covariance, as of a CalibrationVerdict
  cv::Mat jackknife;  ///< the same by the jackknife
};

/// What a pair was computed from, and how.
struct PairRecords {
  std::vector<std::vector<cv::Point3d>> objectPoints;
  std::vector<std::vector<cv::Point2d>> leftPoints;
  std::vector<std::vector<cv::Point2d>> rightPoints;
  int model = 0;
  bool lensesRefined = false;
  double discRadius = 0.0;  ///< that of the computation
  std::shared_ptr<const Solution>
      solution{};        ///< that of the computation, where this engine's solver made it
  cv::Size imageSize{};  ///< of both cameras; without it nothing is said of their projections
  HeldIntrinsics left{};
  HeldIntrinsics right{};
};

/// Assesses either solver's result for the records. `pairIntrinsics` are those that belong to R and T. Grade
/// None without a result. Raises cv::Exception for lists that do not match.
PairVerdict AssessPair(const PairRecords& records, const StereoIntrinsics& pairIntrinsics, const cv::Mat& R,
                       const cv::Mat& T);

}  // namespace velmora
