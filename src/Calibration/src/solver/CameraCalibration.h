/// Calibrates cameras: from what was observed to a solution.
#pragma once

#include <vector>

#include "solver/BundleAdjustment.h"
#include "solver/Selection.h"

namespace velmora::solver {

/// The views and points to compute one camera from: all of them, or, `robust`, those that do not disagree.
Selection SelectedFrom(const std::vector<TargetView>& views, const cv::Size& imageSize, bool robust,
                       const BundleOptions& options);

/// One camera of which nothing is known, from views without poses, of which it observed every one. The
/// solution's views are those that were kept, with pixels corrected for the discs. Raises cv::Exception when
/// an image's points determine no pose.
Solution CalibrateCamera(const std::vector<TargetView>& views, const cv::Size& imageSize, bool robust,
                         const BundleOptions& options);

/// A fisheye of which nothing is known.
Solution CalibrateFisheye(const std::vector<TargetView>& views, const cv::Size& imageSize, bool robust,
                          BundleOptions options);

/// Calibrates one camera from views that were selected before.
Solution CalibrateCamera(const Selection& selection, const cv::Size& imageSize, const BundleOptions& options);

/// Cameras whose intrinsics are known, or (`start.estimated`) nearly known. `robust`, images whose points
/// were counted from another end of the target than those of the other images are put right, and told.
Solution CalibrateRig(const CalibrationProblem& start, bool robust, const BundleOptions& options);

}  // namespace velmora::solver
