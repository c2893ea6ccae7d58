/// Cameras with fixed positions to each other, and poses of the grid before all of them at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Camera.h"
#include "Trajectory.h"

namespace world {

/// Two cameras or more. The rig's frame is that of camera 0, whose R is the identity and whose T is zero.
struct Rig {
  std::vector<RigCamera> cameras;
};

/// Two cameras: a rig, with names for what it has two of. A point x of the left camera's frame is R x + T in
/// the right camera's, metres.
struct Pair {
  Camera left;
  Camera right;
  cv::Matx33d R = cv::Matx33d::eye();
  cv::Vec3d T;

  operator Rig() const;
};

/// Two upright cameras, the right one to the right of the left one by `baseline` metres. Each is turned
/// toward the other by half the toe-in (degrees), so that their axes meet at that angle; a negative one makes
/// them part. Throws std::invalid_argument for a baseline that is not positive or a toe-in of 180 or more.
Pair SideBySidePair(const Camera& left, const Camera& right, double baseline, double toeIn = 0.0);

/// Two upright cameras side by side that differ by their distortion alone.
Pair SideBySidePair(cv::Size size, double fieldOfView, double baseline, double toeIn = 0.0,
                    const std::vector<double>& leftD = {}, const std::vector<double>& rightD = {});

/// Where the grid is for the right camera when it has the pose for the left one.
Pose RightPose(const Pair& pair, const Pose& leftPose);

/// Where the grid is for a camera of the rig; for camera 0 it is where it is for the rig, to the last bit.
Pose PoseFor(const Rig& rig, std::size_t camera, const Pose& rigPose);

/// A rig of these cameras of a rig, in this order; the first of them defines its frame.
Rig PartOf(const Rig& rig, const std::vector<std::size_t>& cameras);

/// True when every disc is imaged wholly by all cameras, at least their ViewMargin times `share` inside the
/// images.
bool DiscsInsideAll(const Rig& rig, const Sheet& sheet, const Pose& rigPose, double share = 0.0);

/// A fixed, well-conditioned list of poses for the rig with all discs inside all images: that of SpreadViews,
/// its places in the room that the images leave together, its spans smaller where the cameras have less in
/// common, its tilts against the direction midway between all cameras'. After 24 the list repeats, each round
/// a little further away. For cameras that stand upright, more or less. Throws std::runtime_error when they
/// cannot see the whole grid together.
std::vector<Pose> RigViews(const Rig& rig, int n, const Sheet& sheet = Sheet());

/// Random, well spread poses for the rig, as SampleViews makes them, with all discs inside all images. The
/// same seed gives the same poses. Throws as RigViews does.
std::vector<Pose> SampleRigViews(const Rig& rig, int n, std::uint64_t seed, const Sheet& sheet = Sheet());

/// A pose outside all images: the given one moved sideways until none shows any part of the sheet.
Pose AwayPose(const Rig& rig, const Sheet& sheet, const Pose& rigPose);

/// A path through views of a rig, as through those of one camera.
Trajectory ThroughViews(const Rig& rig, const Sheet& sheet, const std::vector<Pose>& rigViews, double seconds,
                        int awayEvery = 0);

}  // namespace world
