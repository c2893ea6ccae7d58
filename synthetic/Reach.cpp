/// Finds where the sheet has to be to appear as asked for, disc by disc.
#include "Reach.h"

#include <opencv2/calib3d.hpp>
#include <stdexcept>

#include "Placement.h"

namespace world {

namespace {

/// By a pinhole that looks at the middle of what the fisheye sees there.
bool SolveBeforeFisheye(const Lens& fisheye, const Sheet& sheet, const std::vector<cv::Point2d>& centres,
                        Pose& pose) {
  std::vector<cv::Vec3d> directions;
  cv::Vec3d middle;
  for (const cv::Point2d& centre : centres) {
    cv::Point3d direction;
    if (!fisheye.Unproject(centre, direction)) return false;
    directions.emplace_back(direction.x, direction.y, direction.z);
    middle += directions.back();
  }
  const cv::Matx33d R = RotationToward(middle).t();
  std::vector<cv::Point2d> rays;
  for (const cv::Vec3d& direction : directions) {
    const cv::Vec3d turned = R * direction;
    if (!(turned[2] > 0.0)) return false;
    rays.emplace_back(turned[0] / turned[2], turned[1] / turned[2]);
  }
  Pose before;
  if (!cv::solvePnP(sheet.GridPoints(), rays, cv::Matx33d::eye(), cv::noArray(), before.rvec, before.tvec,
                    false, cv::SOLVEPNP_ITERATIVE) ||
      before.tvec[2] <= 0.0) {
    return false;
  }
  cv::Matx33d rotation;
  cv::Rodrigues(before.rvec, rotation);
  cv::Rodrigues(R.t() * rotation, pose.rvec);
  pose.tvec = R.t() * before.tvec;
  return true;
}

bool SolveBeforePinhole(const Lens& lens, const Sheet& sheet, const std::vector<cv::Point2d>& centres,
                        Pose& pose) {
  return cv::solvePnP(sheet.GridPoints(), centres, lens.K(), lens.D(), pose.rvec, pose.tvec, false,
                      cv::SOLVEPNP_ITERATIVE) &&
         pose.tvec[2] > 0.0;
}

}  // namespace

Pose PoseNearest(const Camera& camera, const Sheet& sheet, const std::vector<cv::Point2d>& centres) {
  if (centres.size() != static_cast<std::size_t>(sheet.Count())) {
    throw std::runtime_error("as many pixels as discs are needed");
  }
  Pose pose;
  const bool found = camera.lens.IsFisheye() ? SolveBeforeFisheye(camera.lens, sheet, centres, pose)
                                             : SolveBeforePinhole(camera.lens, sheet, centres, pose);
  if (!found || !FacesCamera(pose)) {
    throw std::runtime_error("no pose of the sheet looks like that");
  }
  return pose;
}

}  // namespace world
