/// Renders the pictures of a rig and joins them.
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

void CheckAlike(const std::vector<cv::Mat>& pictures) {
  for (const cv::Mat& picture : pictures) {
    if (picture.size() != pictures.front().size() || picture.type() != pictures.front().type()) {
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
  std::vector<cv::Mat> pictures;
  for (std::size_t k = 0; k < renderers_.size(); ++k) {
    pictures.push_back(renderers_[k].Render(PoseFor(rig_, k, rigPose), frameNumber));
  }
  return pictures;
}

std::vector<cv::Mat> RigRenderer::RenderEmpty(std::uint64_t frameNumber) {
  std::vector<cv::Mat> pictures;
  for (Renderer& renderer : renderers_) pictures.push_back(renderer.RenderEmpty(frameNumber));
  return pictures;
}

cv::Mat SideBySide(const std::vector<cv::Mat>& pictures) {
  CheckAlike(pictures);
  cv::Mat joined;
  cv::hconcat(pictures, joined);
  return joined;
}

cv::Mat OneAboveTheOther(const std::vector<cv::Mat>& pictures) {
  CheckAlike(pictures);
  cv::Mat joined;
  cv::vconcat(pictures, joined);
  return joined;
}

}  // namespace world
