/// What a calibrator keeps of one snapshot, and what its result makes of it.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"

namespace velmora {

/// What the camera, or both cameras of a pair, observed of the grid at one moment. All lists are in the order
/// of the grid, and all pixels are of the processing size.
struct GridSnapshot {
  struct Camera {
    std::vector<cv::Point2d> centres;  ///< of all circles, pixels; finite
    /// Of each circle 1, or 0 where it was not seen and is only where it would be. Empty: all were seen.
    std::vector<double> weights{};
    /// Of each centre the standard deviation along an axis, pixels, 0 where it is not known. Empty: not
    /// known.
    std::vector<double> deviations{};
    /// The picture, as it was searched; empty where there is none. Its pixels are shared: do not change them.
    cv::Mat frame{};
  };

  std::vector<Camera> cameras;
};

/// How a computation's result agrees with one of the snapshots that it is of.
struct SnapshotFit {
  struct Camera {
    /// Root of the mean squared distance of the centres from where the result has them, pixels, of those that
    /// were used; of a snapshot that was rejected as a whole, of all that were seen. -1 where the result has
    /// no pose for the snapshot.
    double rms = -1.0;
    /// Of each circle of the grid, where the centre was observed less where the result has it, pixels; NaN
    /// where it was not seen. Empty where there is no pose.
    std::vector<cv::Point2d> residuals{};
    std::vector<int> outliers{};  ///< circles that were seen and not used, ascending
  };

  std::vector<Camera> cameras;  ///< none: there is no result, or it is not of this snapshot
  bool rejected = false;        ///< whether the computation used nothing of the snapshot
  std::string reason{};         ///< why, as a clause; empty when it was used
};

}  // namespace velmora
