/// Chooses where the target should be shown next, so that the camera becomes known best.
#pragma once

#include <Eigen/Core>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "quality/PoseCandidates.h"

namespace velmora {

/// What is known of a camera's intrinsics and, after them, of the terms of the sheet's shape where that is
/// estimated: an information matrix, whose inverse times the variance is their covariance.
struct CameraInformation {
  Intrinsics intrinsics;
  Sheet sheet;
  Eigen::MatrixXd information;
  double variance = 0.0;  ///< of the noise of a coordinate, squared pixels
  bool nominal = true;    ///< the intrinsics are a usual camera's, not those of the views
};

/// The information about a camera that was computed from views, when its intrinsics are plausible; about a
/// usual camera that took the same views, when they are not or `solution` has no views. The views are those
/// of the target, without poses.
CameraInformation CameraInformationFrom(const Solution& solution, const std::vector<TargetView>& views,
                                        const cv::Size& imageSize);

/// The expected uncertainty of projections: root mean square over the image of a coordinate's standard
/// deviation, after the best common rotation of the camera's frame.
class ExpectedUncertainty {
 public:
  ExpectedUncertainty(const CameraInformation& known, const cv::Size& imageSize);

  double Current() const;
  /// With one more view; infinite when it cannot be observed.
  double With(const PoseCandidate& candidate) const;

 private:
  double Expected(const Eigen::MatrixXd& information) const;

  const CameraInformation& known_;
  Eigen::MatrixXd mean_;  ///< product of derivatives
};

struct NextPose {
  PoseCandidate candidate;  ///< without points when there is none
  double now = 0.0;         ///< the expected standard deviation without it
  double then = 0.0;        ///< and with it
};

NextPose ChooseNextPose(const CameraInformation& known, const std::vector<cv::Point3d>& object,
                        const cv::Size& imageSize,
                        double mostSpacing = std::numeric_limits<double>::infinity());

}  // namespace velmora
