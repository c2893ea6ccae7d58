/// Computes the directions of all pixel corners, each starting from its neighbour's.
#include "RayMap.h"

#include <limits>

namespace world {

cv::Mat MakeRayMap(const Camera& camera) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  cv::Mat map(camera.size.height + 1, camera.size.width + 1, CV_64FC3);
  for (int row = 0; row < map.rows; ++row) {
    cv::Vec3d* out = map.ptr<cv::Vec3d>(row);
    cv::Point3d direction;
    bool warm = false;
    for (int column = 0; column < map.cols; ++column) {
      warm = camera.lens.Unproject(cv::Point2d(column - 0.5, row - 0.5), direction, warm);
      out[column] = warm ? cv::Vec3d(direction.x, direction.y, direction.z) : cv::Vec3d(none, none, none);
    }
  }
  return map;
}

}  // namespace world
