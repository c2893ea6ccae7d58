/// The printed grid's points in its own frame.
#include "model/TargetGeometry.h"

namespace velmora {

std::vector<cv::Point3d> MakeObjectTemplate(const cv::Size& patternSize, float unit) {
  std::vector<cv::Point3d> points;
  for (int row = 0; row < patternSize.height; ++row) {
    for (int column = 0; column < patternSize.width; ++column) {
      const float x = unit * static_cast<float>(2 * column + row % 2);
      const float y = unit * static_cast<float>(row);
      points.emplace_back(x, y, 0.0);
    }
  }
  return points;
}

}  // namespace velmora
