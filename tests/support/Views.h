/// Poses of the grid that a camera can be calibrated from.
#pragma once

#include <cstdint>
#include <vector>

#include "Camera.h"

namespace world {

/// How the grid appears in the image. Upright, the print is as drawn: its long side along the image's x axis.
struct Appearance {
  /// Where the discs' bounding box is in the room that the image leaves it: -1 (left, top) to 1 (right,
  /// bottom).
  double x = 0.0;
  double y = 0.0;
  /// The larger share of the image's width or height that the discs' bounding box takes.
  double span = 0.6;
  /// Turns of the grid about the camera's axes in this order: y, x, z; degrees.
  double tiltY = 0.0;
  double tiltX = 0.0;
  double roll = 0.0;
};

/// Finds the pose with the appearance, the discs at least `margin` pixels inside the image. False when there
/// is none.
bool PlaceGrid(const Camera& camera, const Sheet& sheet, const Appearance& appearance, double margin,
               Pose& pose);

/// The margin, in pixels, of all the lists of views below: 1.5 % of the image's smaller side.
double ViewMargin(const Camera& camera);

/// Random, well spread poses: all over the image, spans of 35 to 85 %, tilts to +-40 degrees about both axes
/// (and no line of sight flatter than 35 degrees to the paper), roll to +-25 degrees. The same seed gives the
/// same poses. Throws std::runtime_error when the camera cannot see a whole grid that way.
std::vector<Pose> SampleViews(const Camera& camera, int n, std::uint64_t seed, const Sheet& sheet = Sheet());

/// A fixed, well-conditioned list: middle, corners, near, far, tilted each way. For fields of view of 40 to
/// 90 degrees; tilts are smaller in those over 60. The first 12 make a complete set; after 24 the list
/// repeats, each round a little further away. Throws as SampleViews does.
std::vector<Pose> SpreadViews(const Camera& camera, int n, const Sheet& sheet = Sheet());

/// Poses without any tilt, which say nothing about the focal length. Throws as SampleViews does.
std::vector<Pose> FrontalViews(const Camera& camera, int n, const Sheet& sheet = Sheet());

/// A pose outside the image: the given one moved sideways until no part of the sheet is imaged.
Pose AwayPose(const Camera& camera, const Sheet& sheet, const Pose& pose);

}  // namespace world
