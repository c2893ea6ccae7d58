/// Videos of the sheet for the system tests.
#include "Footage.h"

#include <opencv2/videoio.hpp>
#include <stdexcept>

#include "RigRenderer.h"
#include "Views.h"

namespace system_test {

namespace {

world::Scene SceneOf(const world::Camera& camera) {
  world::Scene scene;
  scene.camera = camera;
  scene.supersampling = 4;
  return scene;
}

}  // namespace

world::Camera SmallCamera() {
  return world::CameraFromFieldOfView(cv::Size(640, 480), 60.0, {-0.12, 0.03, 0.0, 0.0, 0.0});
}

std::vector<cv::Mat> ViewsOf(const world::Camera& camera, int count) {
  const world::Scene scene = SceneOf(camera);
  world::Renderer renderer(scene);
  std::vector<cv::Mat> pictures;
  for (const world::Pose& pose : world::SpreadViews(camera, count, scene.sheet)) {
    pictures.push_back(renderer.Render(pose));
  }
  return pictures;
}

std::vector<cv::Mat> SideBySideViewsOf(const world::Pair& rig, int count) {
  world::RigRenderer renderer(rig, SceneOf(rig.left));
  std::vector<cv::Mat> pictures;
  for (const world::Pose& pose : world::RigViews(rig, count)) {
    pictures.push_back(world::SideBySide(renderer.Render(pose)));
  }
  return pictures;
}

cv::Mat EmptyView(const world::Camera& camera) {
  return world::Renderer(SceneOf(camera)).RenderEmpty();
}

cv::Mat Beside(const cv::Mat& left, const cv::Mat& right) {
  cv::Mat pair;
  cv::hconcat(left, right, pair);
  return pair;
}

void WriteVideo(const std::string& path, const std::vector<cv::Mat>& pictures, int hold) {
  cv::VideoWriter writer(path, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0, pictures.at(0).size());
  if (!writer.isOpened()) {
    throw std::runtime_error("cannot write " + path);
  }
  for (const cv::Mat& picture : pictures) {
    for (int i = 0; i < hold; ++i) {
      writer.write(picture);
    }
  }
}

}  // namespace system_test
