/// Measures the centres of what is kept.
#pragma once

#include <opencv2/core.hpp>

#include "calibrator/Snapshots.h"

namespace velmora {

/// What a camera saw of that grid with its centres measured anew in its image, and with their deviations
/// (MeasureCentres). Unchanged without an image. Takes some milliseconds.
CameraSnapshot WithMeasuredCentres(const cv::Size& grid, CameraSnapshot view);

}  // namespace velmora
