/// Fits poses, sheet and lens to new views of a camera that was calibrated before.
#pragma once

#include <Eigen/Core>
#include <functional>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "quality/LensMove.h"

namespace velmora {

/// What is checked.
struct CheckProblem {
  Intrinsics lens;  ///< of the result
  cv::Size imageSize;
  std::vector<TargetView> views;   ///< of that camera alone, without poses
  std::vector<cv::Point3d> known;  ///< the sheet's shape in the views' frame; empty: flat, or as they tell
  double discRadius = 0.0;
  /// The covariance of the lens, given where there are data; empty where it is not known.
  std::function<Eigen::MatrixXd(const std::vector<cv::Point2f>& area)> uncertainty;
};

struct CheckFit {
  std::vector<size_t> kept;       ///< which of the views were used; none: there is no fit
  Solution held;                  ///< of these views by the lens of the result
  Solution moved;                 ///< the same by the lens that suits them, too
  std::vector<cv::Point2f> area;  ///< where they have their points
  MoveColumns columns;
  LensMove move;
  bool determined = false;  ///< whether the views tell anything of the lens
};

/// The lens' move is small beside the lens: it is found in a few steps, each with poses and sheet that fit it
/// best. Points and views that belong to no such lens are left out.
CheckFit FitCheck(const CheckProblem& problem);

}  // namespace velmora
