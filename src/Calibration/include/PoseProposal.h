/// Where the grid should be seen next.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

/// A pose of the grid that would tell most about the camera, and how well the camera is known without it and
/// with it. "Deviations" are formal standard deviations of projections: root mean square over the whole image
/// of that of a pixel's coordinate, after the best common rotation of the camera's frame, in pixels of the
/// processing size. They follow from the noise of the points alone: errors of the lens model or of the sheet
/// are not in them.
struct PoseProposal {
  std::vector<cv::Point2d> centres;  ///< of the circles, in the order of the grid search; empty: no proposal
  cv::Vec3d rvec;                    ///< camera from grid, radians
  cv::Vec3d tvec;                    ///< metres
  double deviation = 0.0;            ///< with the snapshots so far
  double deviationThen = 0.0;        ///< expected with this one too
  /// The snapshots do not tell what the camera is like (there are fewer than three, or they agree with no
  /// plausible lens): the pose and the deviations are those of a camera with a usual lens.
  bool nominal = true;
};
