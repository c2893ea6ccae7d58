/// Chooses where the target should be shown next, so that the camera becomes known best.
#pragma once

#include <Eigen/Core>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "quality/PoseCandidates.h"

namespace velmora {

/// What is known of a camera's intrinsics: the inverse of `information` is their covariance, but for the
/// variance.
struct Knowledge {
  Intrinsics intrinsics;
  Eigen::MatrixXd information;
  double variance = 0.0;  ///< of the noise of a coordinate, squared pixels
  bool nominal = true;    ///< the intrinsics are a usual camera's, not those of the views
};

/// Of a camera that was computed from views, when it can be one; of a usual camera that took the same views,
/// when it cannot or `solution` has no views. The views are those of the target, without poses.
Knowledge KnowledgeFrom(const Solution& solution, const std::vector<TargetView>& views,
                        const cv::Size& imageSize);

/// Expects deviations of projections: root mean square over the image of a coordinate's standard deviation,
/// after the best common rotation of the camera's frame.
class PoseScore {
 public:
  PoseScore(const Knowledge& knowledge, const cv::Size& imageSize);

  double Now() const;
  /// With one more view; infinite when it cannot be observed.
  double With(const Candidate& candidate) const;

 private:
  double Expected(const Eigen::MatrixXd& information) const;

  const Knowledge& knowledge_;
  Eigen::MatrixXd mean_;  ///< product of derivatives
};

struct NextPose {
  Candidate candidate;  ///< without points when there is none
  double now = 0.0;     ///< the expected standard deviation without it
  double then = 0.0;    ///< and with it
};

NextPose ChooseNextPose(const Knowledge& knowledge, const std::vector<cv::Point3d>& object,
                        const cv::Size& imageSize,
                        double mostSpacing = std::numeric_limits<double>::infinity());

}  // namespace velmora
