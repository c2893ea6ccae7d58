/// Makes models of the assistant.
#include "poses/PoseModel.h"

#include <stdexcept>

#include "Views.h"

namespace poses {

std::vector<std::vector<cv::Point2d>> CentresOf(const std::vector<world::Appearance>& list,
                                                const world::Camera& camera) {
  const world::Sheet sheet;
  std::vector<std::vector<cv::Point2d>> centres;
  for (const world::Appearance& appearance : list) {
    world::Pose pose;
    if (!world::PlaceGrid(camera, sheet, appearance, world::ViewMargin(camera), pose)) {
      throw std::runtime_error("in pose " + std::to_string(centres.size() + 1) +
                               " not all of the grid is in the image");
    }
    centres.push_back(world::TrueCentres(camera.lens, sheet, pose));
  }
  return centres;
}

JSON ModelOf(const std::vector<std::vector<cv::Point2d>>& poses, const cv::Size& frame) {
  JSON model;
  model.addInt("imgWidth", frame.width);
  model.addInt("imgHeight", frame.height);
  for (size_t i = 0; i < poses.size(); ++i) {
    cv::Mat points;
    cv::Mat(poses[i]).convertTo(points, CV_32F);
    model.addMat("points" + std::to_string(i), points);
  }
  model.addInt("count", static_cast<int>(poses.size()));
  return model;
}

}  // namespace poses
