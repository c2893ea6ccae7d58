/// How far the errors of observed points reach, one beside the other.
#pragma once

#include <vector>

namespace velmora::solver {

/// Standard deviations of points' errors along an axis, pixels: of each view of one camera, of each point. 0
/// where nothing is known, and an empty list where that is so of a whole view; no lists at all say that
/// nothing is known of the camera.
using PointDeviations = std::vector<std::vector<double>>;

/// The deviations of each camera, relative to that of a usual point, the median of all, which has 1; points
/// of which nothing is known have it, too. Empty where nothing is known of any. Raises cv::Exception for
/// numbers that are no deviations.
///
/// Half of the usual variance is added to every one, and so is that of the usual point: what is left of the
/// errors of a calibration is not noise of the measured centres alone (print, paper and lens have their
/// part), and does not shrink with it. So no point weighs more than three times as much as the usual one.
std::vector<PointDeviations> RelativeDeviations(const std::vector<PointDeviations>& cameras);

}  // namespace velmora::solver
