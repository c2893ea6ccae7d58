/// Takes the sheet through the poses of a model of the assistant.
#include "render/Followed.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Reach.h"

namespace render {

namespace {

std::vector<cv::Point2d> CentresOf(const nlohmann::json& pose) {
  const std::vector<double> numbers = pose.at("data");
  std::vector<cv::Point2d> centres;
  for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) centres.emplace_back(numbers[i], numbers[i + 1]);
  return centres;
}

std::vector<world::Pose> Read(std::istream& file, const world::Scene& scene) {
  const nlohmann::json model = nlohmann::json::parse(file);
  const cv::Size size(model.at("imgWidth"), model.at("imgHeight"));
  if (size != scene.camera.size) {
    throw std::invalid_argument("it is made for pictures of " + std::to_string(size.width) + "x" +
                                std::to_string(size.height));
  }
  std::vector<world::Pose> poses;
  for (int i = 0; i < model.at("count").get<int>(); ++i) {
    const auto centres = CentresOf(model.at("points" + std::to_string(i)));
    poses.push_back(world::PoseNearest(scene.camera, scene.sheet, centres));
  }
  if (poses.empty()) throw std::invalid_argument("it holds no pose");
  return poses;
}

}  // namespace

std::vector<world::Pose> FollowedViews(const std::string& model, const world::Scene& scene) {
  std::ifstream file(model);
  if (!file.is_open()) throw std::invalid_argument("'" + model + "' cannot be read");
  try {
    return Read(file, scene);
  } catch (const std::exception& fault) {
    throw std::invalid_argument("cannot follow '" + model + "': " + fault.what());
  }
}

}  // namespace render
