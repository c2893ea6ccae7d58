/// The records of a calibrator as the solver takes them.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "model/Rig.h"
#include "solver/PointDeviations.h"

namespace velmora::solver {

using ObjectPoints = std::vector<std::vector<cv::Point3d>>;  ///< of each view
using ImagePoints = std::vector<std::vector<cv::Point2d>>;   ///< of each view of one camera

/// Views, without poses yet, with the target's frame moved to the middle of its points, where rotations and
/// translations of a pose hardly depend on each other, and where that middle was.
struct Target {
  std::vector<TargetView> views;
  std::vector<cv::Vec3d> middles;
  std::vector<PointDeviations> deviations{};  ///< of each camera, as they were given
};

/// Takes pixels in single precision, as OpenCV's solver does: both are given the same numbers. A camera that
/// did not see a view has an empty list for it. Raises cv::Exception for lists that do not match, for views
/// that no camera saw, for points that are not finite, and for targets with fewer than four points or with
/// points off the plane z = 0.
///
/// `deviations`, of each camera or of none, say how much the points count beside each other
/// (RelativeDeviations).
Target TargetOf(const ObjectPoints& objectPoints, const std::vector<ImagePoints>& cameras,
                const std::vector<PointDeviations>& deviations = {});

/// The target of one camera, which observed every view.
Target TargetOf(const ObjectPoints& objectPoints, const ImagePoints& imagePoints,
                const PointDeviations& deviations = {});

/// The target of a pair that observed every view. Image points beyond the number of object points are not
/// used.
Target PairTargetOf(const ObjectPoints& objectPoints, const ImagePoints& leftPoints,
                    const ImagePoints& rightPoints, const std::vector<PointDeviations>& deviations = {});

}  // namespace velmora::solver
