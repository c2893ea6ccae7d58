/// Computes the rays of all pixel corners, each starting from its neighbour's.
#include "RayMap.h"

#include <limits>

namespace world {

cv::Mat MakeRayMap(const Camera& camera) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  cv::Mat map(camera.size.height + 1, camera.size.width + 1, CV_64FC2);
  for (int row = 0; row < map.rows; ++row) {
    cv::Vec2d* out = map.ptr<cv::Vec2d>(row);
    cv::Point2d ray;
    bool warm = false;
    for (int column = 0; column < map.cols; ++column) {
      warm = camera.lens.Unproject(cv::Point2d(column - 0.5, row - 0.5), ray, warm);
      out[column] = warm ? cv::Vec2d(ray.x, ray.y) : cv::Vec2d(none, none);
    }
  }
  return map;
}

}  // namespace world
