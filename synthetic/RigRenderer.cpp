/// Renders the images of a rig and joins them.
#include "RigRenderer.h"

#include <stdexcept>

#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t OTHER_SEQUENCES = 0x7269676874;

/// The scene as camera number `number` of a rig has it.
Scene SceneFor(const Scene& common, const Camera& camera, std::size_t number) {
  Scene scene = common;
  scene.camera = camera;
  if (number > 0) scene.seed = MixSeeds(common.seed, OTHER_SEQUENCES + (number - 1));
  return scene;
}

void CheckAlike(const std::vector<cv::Mat>& images) {
  for (const cv::Mat& image : images) {
    if (image.size() != images.front().size() || image.type() != images.front().type()) {
      throw std::invalid_argument("only pictures of the same size and type can be joined");
    }
  }
}

}  // namespace

RigRenderer::RigRenderer(const Rig& rig, const Scene& scene) : rig_(rig) {
  for (std::size_t k = 0; k < rig.cameras.size(); ++k) {
    renderers_.emplace_back(SceneFor(scene, rig.cameras[k], k));
  }
}

std::vector<cv::Mat> RigRenderer::Render(const Pose& rigPose, std::uint64_t frameNumber) {
  std::vector<cv::Mat> images;
  for (std::size_t k = 0; k < renderers_.size(); ++k) {
    images.push_back(renderers_[k].Render(PoseFor(rig_, k, rigPose), frameNumber));
  }
  return images;
}

std::vector<cv::Mat> RigRenderer::RenderEmpty(std::uint64_t frameNumber) {
  std::vector<cv::Mat> images;
  for (Renderer& renderer : renderers_) images.push_back(renderer.RenderEmpty(frameNumber));
  return images;
}

cv::Mat SideBySide(const std::vector<cv::Mat>& images) {
  CheckAlike(images);
  cv::Mat joined;
  cv::hconcat(images, joined);
  return joined;
}

cv::Mat OneAboveTheOther(const std::vector<cv::Mat>& images) {
  CheckAlike(images);
  cv::Mat joined;
  cv::vconcat(images, joined);
  return joined;
}

}  // namespace world
