/// Two cameras with a fixed position to each other, and poses of the grid before both.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Camera.h"
#include "Trajectory.h"

namespace world {

/// A point x of the left camera's frame is R x + T in the right camera's, metres.
struct Rig {
  Camera left;
  Camera right;
  cv::Matx33d R = cv::Matx33d::eye();
  cv::Vec3d T;
};

/// Two upright cameras, the right one to the right of the left one by `baseline` metres. Each is turned
/// toward the other by half the toe-in (degrees), so that their axes meet at that angle; a negative one makes
/// them part. Throws std::invalid_argument for a baseline that is not positive or a toe-in of 180 or more.
Rig SideBySideRig(const Camera& left, const Camera& right, double baseline, double toeIn = 0.0);

/// The same of cameras that differ by their distortion alone.
Rig SideBySideRig(cv::Size size, double fieldOfView, double baseline, double toeIn = 0.0,
                  const std::vector<double>& leftD = {}, const std::vector<double>& rightD = {});

/// Where the grid is for the right camera when it has the pose for the left one.
Pose RightPose(const Rig& rig, const Pose& leftPose);

/// True when every disc is imaged wholly by both cameras, at least their ViewMargin times `share` inside the
/// images.
bool DiscsInsideBoth(const Rig& rig, const Sheet& sheet, const Pose& leftPose, double share = 0.0);

/// A fixed, well-conditioned list of poses for the left camera with all discs inside both images: that of
/// SpreadViews, its places in the room that both images leave together, its spans smaller where the cameras
/// have less in common, its tilts against the direction midway between both cameras'. After 24 the list
/// repeats, each round a little further away. For cameras that stand upright, more or less. Throws
/// std::runtime_error when they cannot see the whole grid together.
std::vector<Pose> RigViews(const Rig& rig, int n, const Sheet& sheet = Sheet());

/// Random, well spread poses for the left camera, as SampleViews makes them, with all discs inside both
/// images. The same seed gives the same poses. Throws as RigViews does.
std::vector<Pose> SampleRigViews(const Rig& rig, int n, std::uint64_t seed, const Sheet& sheet = Sheet());

/// A pose outside both images: the given one moved sideways until neither shows any part of the sheet.
Pose AwayPose(const Rig& rig, const Sheet& sheet, const Pose& leftPose);

/// A path through views of a rig, as through those of one camera.
Trajectory ThroughViews(const Rig& rig, const Sheet& sheet, const std::vector<Pose>& leftViews,
                        double seconds, int awayEvery = 0);

}  // namespace world
