/// Finds where the sheet has to be to appear as asked for, disc by disc.
#include "Reach.h"

#include <opencv2/calib3d.hpp>
#include <stdexcept>

namespace world {

Pose PoseNearest(const Camera& camera, const Sheet& sheet, const std::vector<cv::Point2d>& centres) {
  if (centres.size() != static_cast<std::size_t>(sheet.Count())) {
    throw std::runtime_error("as many pixels as discs are needed");
  }
  Pose pose;
  const bool found = cv::solvePnP(sheet.GridPoints(), centres, camera.lens.K(), camera.lens.D(), pose.rvec,
                                  pose.tvec, false, cv::SOLVEPNP_ITERATIVE);
  if (!found || pose.tvec[2] <= 0.0 || !FacesCamera(pose)) {
    throw std::runtime_error("no pose of the sheet looks like that");
  }
  return pose;
}

}  // namespace world
