/// Where the search for a camera begins.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "solver/Problem.h"

namespace velmora::solver {

/// The plane-to-image map that fits a view's points best in the algebraic sense, for pixels. False when its
/// points do not determine one.
bool HomographyOf(const View& view, cv::Matx33d& homography);

/// The root of the mean squared distance between the seen points and those of the homography; infinite when
/// there is none.
double HomographyResidual(const View& view);

/// A lens without distortion, its principal point in the middle of the image, and the poses that belong to
/// it. Raises cv::Exception when a view's points do not determine its pose.
Estimate StartOf(const std::vector<View>& views, const cv::Size& imageSize);

/// The pose of one view before a lens, of which only the camera matrix counts.
Pose StartPoseOf(const View& view, const Lens& lens);

}  // namespace velmora::solver
