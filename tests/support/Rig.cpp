/// Poses before two cameras.
#include "Rig.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Placement.h"
#include "Views.h"

namespace world {

namespace {

/// The widest span of the lists; others are in proportion to it.
constexpr double WIDEST_SPAN = 0.85;

cv::Matx33d AboutY(double degrees) {
  cv::Matx33d R;
  cv::Rodrigues(cv::Vec3d(0.0, degrees * CV_PI / 180.0, 0.0), R);
  return R;
}

std::vector<Viewer> ViewersOf(const Rig& rig) {
  std::vector<Viewer> viewers(2);
  viewers[0].camera = rig.left;
  viewers[0].margin = ViewMargin(rig.left);
  viewers[1].camera = rig.right;
  viewers[1].margin = ViewMargin(rig.right);
  viewers[1].R = rig.R;
  viewers[1].T = rig.T;
  return viewers;
}

/// The turn from a frame midway between both cameras' to the left one's.
cv::Matx33d FromMidway(const Rig& rig) {
  cv::Vec3d turn;
  cv::Rodrigues(rig.R, turn);
  cv::Matx33d half;
  cv::Rodrigues(turn * -0.5, half);
  return half;
}

double Obliqueness(const Rig& rig, const Sheet& sheet, const Pose& pose) {
  return std::max(world::Obliqueness(sheet, pose), world::Obliqueness(sheet, RightPose(rig, pose)));
}

[[noreturn]] void NotTogether() {
  throw std::runtime_error("the two cameras cannot see the whole grid together");
}

/// Places the grid before both cameras, smaller or less tilted than asked for if need be.
Pose Placed(const Rig& rig, const Sheet& sheet, Appearance appearance) {
  const std::vector<Viewer> viewers = ViewersOf(rig);
  const cv::Matx33d fromMidway = FromMidway(rig);
  for (int attempt = 0; attempt < 20; ++attempt) {
    Pose pose;
    if (!Place(viewers, sheet, fromMidway * TurnFor(appearance), appearance, pose)) {
      appearance.span *= 0.92;
    } else if (Obliqueness(rig, sheet, pose) >= MOST_OBLIQUE) {
      appearance.tiltX *= 0.85;
      appearance.tiltY *= 0.85;
    } else {
      return pose;
    }
  }
  NotTogether();
}

/// The span of the largest upright grid that both images have room for, up to the widest of the lists.
double LargestSpan(const Rig& rig, const Sheet& sheet) {
  const std::vector<Viewer> viewers = ViewersOf(rig);
  Appearance appearance;
  Pose pose;
  for (appearance.span = WIDEST_SPAN; appearance.span > 0.1; appearance.span *= 0.97) {
    if (Place(viewers, sheet, FromMidway(rig) * TurnFor(appearance), appearance, pose)) {
      return appearance.span;
    }
  }
  NotTogether();
}

}  // namespace

Rig SideBySideRig(const Camera& left, const Camera& right, double baseline, double toeIn) {
  if (!(baseline > 0.0) || !std::isfinite(baseline) || !(std::abs(toeIn) < 180.0)) {
    throw std::invalid_argument("a rig has a positive baseline and a toe-in between -180 and 180 degrees");
  }
  Rig rig;
  rig.left = left;
  rig.right = right;
  rig.R = AboutY(toeIn);
  rig.T = AboutY(0.5 * toeIn) * cv::Vec3d(-baseline, 0.0, 0.0);
  return rig;
}

Rig SideBySideRig(cv::Size size, double fieldOfView, double baseline, double toeIn,
                  const std::vector<double>& leftD, const std::vector<double>& rightD) {
  return SideBySideRig(CameraFromFieldOfView(size, fieldOfView, leftD),
                       CameraFromFieldOfView(size, fieldOfView, rightD), baseline, toeIn);
}

Pose RightPose(const Rig& rig, const Pose& leftPose) {
  Viewer right;
  right.R = rig.R;
  right.T = rig.T;
  return PoseFor(right, leftPose);
}

bool DiscsInsideBoth(const Rig& rig, const Sheet& sheet, const Pose& leftPose, double share) {
  return DiscsInside(rig.left, sheet, leftPose, share * ViewMargin(rig.left)) &&
         DiscsInside(rig.right, sheet, RightPose(rig, leftPose), share * ViewMargin(rig.right));
}

std::vector<Pose> RigViews(const Rig& rig, int n, const Sheet& sheet) {
  const double share = LargestSpan(rig, sheet) / WIDEST_SPAN;
  const double halfWidth = std::max(HalfWidth(rig.left), HalfWidth(rig.right));
  std::vector<Pose> poses;
  for (int k = 0; k < n; ++k) {
    Appearance appearance = SpreadAppearance(k, halfWidth);
    appearance.span *= share;
    poses.push_back(Placed(rig, sheet, appearance));
  }
  return poses;
}

std::vector<Pose> SampleRigViews(const Rig& rig, int n, std::uint64_t seed, const Sheet& sheet) {
  const std::vector<Viewer> viewers = ViewersOf(rig);
  const cv::Matx33d fromMidway = FromMidway(rig);
  const double share = LargestSpan(rig, sheet) / WIDEST_SPAN;
  RandomAppearances appearances(seed);
  std::vector<Pose> poses;
  for (int k = 1; static_cast<int>(poses.size()) < n; ++k) {
    if (k > 100 * (n + 10)) NotTogether();
    Appearance appearance = appearances.Next();
    appearance.span *= share;
    Pose pose;
    if (!Place(viewers, sheet, fromMidway * TurnFor(appearance), appearance, pose)) continue;
    if (Obliqueness(rig, sheet, pose) < MOST_OBLIQUE) poses.push_back(pose);
  }
  return poses;
}

Pose AwayPose(const Rig& rig, const Sheet& sheet, const Pose& leftPose) {
  Pose away = leftPose;
  const double stride = 5.0 * sheet.Unit();
  for (int step = 0; step < 1000; ++step) {
    away.tvec[0] += stride;
    if (!ShowsSheet(rig.left, sheet, away) && !ShowsSheet(rig.right, sheet, RightPose(rig, away)))
      return away;
  }
  throw std::runtime_error("the sheet cannot be moved out of both images");
}

Trajectory ThroughViews(const Rig& rig, const Sheet& sheet, const std::vector<Pose>& leftViews,
                        double seconds, int awayEvery) {
  return ThroughViews(leftViews, seconds, awayEvery,
                      [&](const Pose& view) { return AwayPose(rig, sheet, view); });
}

}  // namespace world
