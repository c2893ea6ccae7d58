/// Poses before several cameras.
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
  std::vector<Viewer> viewers;
  for (const RigCamera& camera : rig.cameras) viewers.push_back({camera, ViewMargin(camera)});
  return viewers;
}

/// The rotation from a frame midway between all cameras' to the rig's.
cv::Matx33d FromMidway(const Rig& rig) {
  cv::Vec3d sum;
  for (const RigCamera& camera : rig.cameras) {
    cv::Vec3d rotation;
    cv::Rodrigues(camera.R, rotation);
    sum += rotation;
  }
  cv::Matx33d back;
  cv::Rodrigues(sum * (-1.0 / static_cast<double>(rig.cameras.size())), back);
  return back;
}

double Obliqueness(const Rig& rig, const Sheet& sheet, const Pose& pose) {
  double most = 0.0;
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    most = std::max(most, world::Obliqueness(sheet, PoseFor(rig, k, pose)));
  }
  return most;
}

bool ShowsSheet(const Rig& rig, const Sheet& sheet, const Pose& pose) {
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    if (world::ShowsSheet(rig.cameras[k], sheet, PoseFor(rig, k, pose))) return true;
  }
  return false;
}

[[noreturn]] void NotTogether() {
  throw std::runtime_error("the cameras cannot see the whole grid together");
}

/// Places the grid before all cameras, smaller or less tilted than asked for if need be.
Pose Placed(const Rig& rig, const Sheet& sheet, Appearance appearance) {
  const std::vector<Viewer> viewers = ViewersOf(rig);
  const cv::Matx33d fromMidway = FromMidway(rig);
  for (int attempt = 0; attempt < 20; ++attempt) {
    Pose pose;
    if (!Place(viewers, sheet, fromMidway * RotationFor(appearance), appearance, pose)) {
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

/// The span of the largest upright grid that all images have room for, up to the widest of the lists.
double LargestSpan(const Rig& rig, const Sheet& sheet) {
  const std::vector<Viewer> viewers = ViewersOf(rig);
  Appearance appearance;
  Pose pose;
  double widest = WIDEST_SPAN;
  for (const RigCamera& camera : rig.cameras) widest = std::min(widest, WIDEST_SPAN * SpanShare(camera));
  for (appearance.span = widest; appearance.span > 0.1; appearance.span *= 0.97) {
    if (Place(viewers, sheet, FromMidway(rig) * RotationFor(appearance), appearance, pose)) {
      return appearance.span;
    }
  }
  NotTogether();
}

}  // namespace

Pair::operator Rig() const {
  return {{RigCamera{left}, RigCamera{right, R, T}}};
}

Pair SideBySidePair(const Camera& left, const Camera& right, double baseline, double toeIn) {
  if (!(baseline > 0.0) || !std::isfinite(baseline) || !(std::abs(toeIn) < 180.0)) {
    throw std::invalid_argument("a rig has a positive baseline and a toe-in between -180 and 180 degrees");
  }
  return {left, right, AboutY(toeIn), AboutY(0.5 * toeIn) * cv::Vec3d(-baseline, 0.0, 0.0)};
}

Pair SideBySidePair(cv::Size size, double fieldOfView, double baseline, double toeIn,
                    const std::vector<double>& leftD, const std::vector<double>& rightD) {
  return SideBySidePair(CameraFromFieldOfView(size, fieldOfView, leftD),
                        CameraFromFieldOfView(size, fieldOfView, rightD), baseline, toeIn);
}

Pose RightPose(const Pair& pair, const Pose& leftPose) {
  return PoseFor(RigCamera{pair.right, pair.R, pair.T}, leftPose);
}

Pose PoseFor(const Rig& rig, std::size_t camera, const Pose& rigPose) {
  return camera == 0 ? rigPose : PoseFor(rig.cameras.at(camera), rigPose);
}

Rig PartOf(const Rig& rig, const std::vector<std::size_t>& cameras) {
  const RigCamera& first = rig.cameras.at(cameras.at(0));
  Rig part = {{RigCamera{first}}};
  part.cameras[0].R = cv::Matx33d::eye();
  part.cameras[0].T = cv::Vec3d();
  for (std::size_t k = 1; k < cameras.size(); ++k) {
    RigCamera camera = rig.cameras.at(cameras[k]);
    camera.R = camera.R * first.R.t();
    camera.T -= camera.R * first.T;
    part.cameras.push_back(camera);
  }
  return part;
}

bool DiscsInsideAll(const Rig& rig, const Sheet& sheet, const Pose& rigPose, double share) {
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    const RigCamera& camera = rig.cameras[k];
    if (!DiscsInside(camera, sheet, PoseFor(rig, k, rigPose), share * ViewMargin(camera))) return false;
  }
  return true;
}

std::vector<Pose> RigViews(const Rig& rig, int n, const Sheet& sheet) {
  const double share = LargestSpan(rig, sheet) / WIDEST_SPAN;
  double halfWidth = 0.0;
  for (const RigCamera& camera : rig.cameras) halfWidth = std::max(halfWidth, HalfWidth(camera));
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
    if (!Place(viewers, sheet, fromMidway * RotationFor(appearance), appearance, pose)) continue;
    if (Obliqueness(rig, sheet, pose) < MOST_OBLIQUE) poses.push_back(pose);
  }
  return poses;
}

Pose AwayPose(const Rig& rig, const Sheet& sheet, const Pose& rigPose) {
  Pose away = rigPose;
  const bool around = std::any_of(rig.cameras.begin(), rig.cameras.end(),
                                  [](const RigCamera& camera) { return camera.lens.IsFisheye(); });
  for (int step = 0; step < 1000; ++step) {
    MoveAside(around, sheet, away);
    if (!ShowsSheet(rig, sheet, away)) return away;
  }
  throw std::runtime_error("the sheet cannot be moved out of the images");
}

Trajectory ThroughViews(const Rig& rig, const Sheet& sheet, const std::vector<Pose>& rigViews, double seconds,
                        int awayEvery) {
  return ThroughViews(rigViews, seconds, awayEvery,
                      [&](const Pose& view) { return AwayPose(rig, sheet, view); });
}

}  // namespace world
