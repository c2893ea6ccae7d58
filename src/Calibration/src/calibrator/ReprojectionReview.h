/// Shows the snapshots of a computation in a window, one after the other.
#pragma once

#include <opencv2/core.hpp>

#include "calibrator/Snapshots.h"

namespace velmora {

/// Shows every snapshot of one camera with the grid reprojected through the result in the window "Reprojected
/// frame", a key press each, until the window is closed. An error line without a display. Snapshots without a
/// frame are shown as blank ones of `imageSize`. Window thread.
void ReviewReprojection(const Snapshots::Moment& moment, const cv::Size& grid, const cv::Size& imageSize);

}  // namespace velmora
