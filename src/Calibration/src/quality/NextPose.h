/// Chooses where the target should be seen next, so that the camera becomes known best.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "quality/PoseCandidates.h"
#include "solver/ScaledSystem.h"
#include "solver/SolutionMatrices.h"

namespace velmora::solver {

/// What is known of a lens: the inverse of `information` is its covariance.
struct Knowledge {
  Lens lens;
  LensMatrix information{};
  double variance = 0.0;  ///< of the noise of a coordinate, squared pixels
  bool nominal = true;    ///< the lens is a usual one, not that of the views
};

/// Of a lens that was computed from views, when it can be that of a camera; of a usual one, seen by the same
/// views, when it cannot or `solved` is empty.
Knowledge KnowledgeFrom(const Solved& solved, const std::vector<View>& views, const cv::Size& imageSize);

/// Expects deviations of projections: root mean square over the image of a coordinate's standard deviation,
/// after the best common turn.
class PoseScore {
 public:
  PoseScore(const Knowledge& knowledge, const cv::Size& imageSize);

  double Now() const;
  /// With one more view; infinite when it cannot be seen.
  double With(const Candidate& candidate) const;

 private:
  double Expected(const LensMatrix& information) const;

  const Knowledge& knowledge_;
  cv::Mat mean_;  ///< product of derivatives
};

struct NextPose {
  Candidate candidate;  ///< without points when there is none
  double now = 0.0;     ///< the expected deviation without it
  double then = 0.0;    ///< and with it
};

NextPose ChooseNextPose(const Knowledge& knowledge, const std::vector<cv::Point3d>& object,
                        const cv::Size& imageSize,
                        double mostSpacing = std::numeric_limits<double>::infinity());

}  // namespace velmora::solver
