/// Poses of the grid that a camera can be calibrated from.
#pragma once

#include <cstdint>
#include <vector>

#include "Camera.h"
#include "Placement.h"

namespace world {

/// Finds the pose with the appearance, the discs at least `margin` pixels inside the image. False when there
/// is none.
bool PlaceGrid(const Camera& camera, const Sheet& sheet, const Appearance& appearance, double margin,
               Pose& pose);

/// The margin, in pixels, of all the lists of views below: 1.5 % of the image's smaller side.
double ViewMargin(const Camera& camera);

/// Random, well spread poses: all over the image, spans of 35 to 85 %, tilts to +-40 degrees about both axes
/// (and no line of sight flatter than 35 degrees to the paper), roll to +-25 degrees. The same seed gives the
/// same poses. Before a fisheye, the sheet is from half its length to twice that away, as tilted against the
/// line of sight, all over the image and rolled any way: beside and behind the camera, too, where it sees
/// that. Throws std::runtime_error when the camera cannot see a whole grid that way.
std::vector<Pose> SampleViews(const Camera& camera, int n, std::uint64_t seed, const Sheet& sheet = Sheet());

/// A fixed, well-conditioned list: middle, corners, near, far, tilted each way. For fields of view of 40 to
/// 90 degrees; tilts are smaller in those over 60. The first 12 make a complete set; after 24 the list
/// repeats, each round a little further away. Before fisheyes of wider fields, the sheet is as large as in
/// one of 60 degrees, and tilted against the line of sight. Throws as SampleViews does.
std::vector<Pose> SpreadViews(const Camera& camera, int n, const Sheet& sheet = Sheet());

/// Poses without any tilt, which say nothing about the focal length of a pinhole. Throws as SampleViews does.
std::vector<Pose> FrontalViews(const Camera& camera, int n, const Sheet& sheet = Sheet());

/// True when some of the paper's edge, or of the discs' centres, is in the image or within a pixel or two of
/// it.
bool ShowsSheet(const Camera& camera, const Sheet& sheet, const Pose& pose);

/// A pose outside the image: the given one moved sideways until no part of the sheet is imaged; before a
/// fisheye, around the camera toward its back.
Pose AwayPose(const Camera& camera, const Sheet& sheet, const Pose& pose);

}  // namespace world
