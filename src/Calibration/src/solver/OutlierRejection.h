/// Finds the views and points that do not belong to the image of a rig that the others give.
#pragma once

#include <vector>

#include "solver/BundleAdjustment.h"
#include "solver/Selection.h"

namespace velmora::solver {

/// Solves with weights that fall with the residuals until outliers hardly count, then rejects points beyond
/// 4.5 standard deviations, and images of which less than half is left. Pixels are corrected for the discs as
/// `options` have it.
///
/// Where too few views would be left to call the others wrong, the selection says so: views then go only when
/// hardly anything is left of them, and where even that leaves too few, nothing is rejected.

/// Selects views of one camera of which nothing is known: views that are no image of a plane grid go before
/// anything else, and come back if they fit the camera once it is known. The views have no poses yet. Raises
/// cv::Exception as StartOf does.
Selection Selected(const std::vector<TargetView>& views, const cv::Size& imageSize,
                   const BundleOptions& options);

/// Selects views of a fisheye of which nothing is known, as those of another camera.
Selection SelectedOfFisheye(const std::vector<TargetView>& views, const cv::Size& imageSize,
                            const BundleOptions& options);

/// Selects views and points of a rig that is nearly known.
Selection Selected(const CalibrationProblem& start, const BundleOptions& options);

/// Selects anew, among all views, by a solution that has the shape of the sheet: what does not fit a flat
/// sheet may fit this one. Views that the solution left out begin where a flat sheet would be.
Selection SelectedAgain(const std::vector<TargetView>& views, const Solution& solution,
                        const BundleOptions& options);

}  // namespace velmora::solver
