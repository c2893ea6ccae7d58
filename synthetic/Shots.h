/// Shots of a rig: poses of the sheet of which each is seen by some of the cameras, and what they see.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Rig.h"

namespace world {

/// True when every disc is wholly in the image, seen from the print's side and not too obliquely to be found:
/// with less than 65 degrees between the line of sight and the paper's normal.
bool SeesSheet(const Camera& camera, const Sheet& sheet, const Pose& pose);

/// Poses for the rig, in turn of the views that cameras 0 and 1, 1 and 2, ... have together, so that as many
/// shots as there are such neighbours link all cameras; further cameras may see a shot too, but none on the
/// other side of a ring. Random and well spread, as SampleRigViews makes them;
/// the same seed gives the same poses. Throws std::invalid_argument for a rig of fewer than two cameras, and
/// std::runtime_error when neighbours cannot see the whole grid together.
std::vector<Pose> SampleRigShots(const Rig& rig, int n, std::uint64_t seed, const Sheet& sheet = Sheet());

/// Shots from the fixed lists that RigViews has for neighbours.
std::vector<Pose> RigShots(const Rig& rig, int n, const Sheet& sheet = Sheet());

/// What the cameras, in the rig's order, see of a shot: the centres of all discs, row by row, pixels. Empty
/// for a camera that does not see the sheet.
using ShotPoints = std::vector<std::vector<cv::Point2d>>;

/// The points of each shot, exact ones or with Gaussian noise of that sigma (pixels) on both coordinates. The
/// same seed gives the same noise.
std::vector<ShotPoints> PointsOf(const Rig& rig, const std::vector<Pose>& shots, const Sheet& sheet = Sheet(),
                                 double noise = 0.0, std::uint64_t seed = 1);

}  // namespace world
