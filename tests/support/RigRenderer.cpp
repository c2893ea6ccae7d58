/// Renders pairs of pictures and joins them.
#include "RigRenderer.h"

#include <stdexcept>

#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t RIGHT_SEQUENCE = 0x7269676874;

Scene SceneOf(const Scene& common, const Camera& camera, std::uint64_t seed) {
  Scene scene = common;
  scene.camera = camera;
  scene.seed = seed;
  return scene;
}

void CheckAlike(const PicturePair& pair) {
  if (pair.left.size() != pair.right.size() || pair.left.type() != pair.right.type()) {
    throw std::invalid_argument("only pictures of the same size and type can be joined");
  }
}

}  // namespace

RigRenderer::RigRenderer(const Rig& rig, const Scene& scene)
    : rig_(rig),
      left_(SceneOf(scene, rig.left, scene.seed)),
      right_(SceneOf(scene, rig.right, MixSeeds(scene.seed, RIGHT_SEQUENCE))) {
}

PicturePair RigRenderer::Render(const Pose& leftPose, std::uint64_t frameNumber) {
  return {left_.Render(leftPose, frameNumber), right_.Render(RightPose(rig_, leftPose), frameNumber)};
}

PicturePair RigRenderer::RenderEmpty(std::uint64_t frameNumber) {
  return {left_.RenderEmpty(frameNumber), right_.RenderEmpty(frameNumber)};
}

cv::Mat SideBySide(const PicturePair& pair) {
  CheckAlike(pair);
  cv::Mat joined;
  cv::hconcat(pair.left, pair.right, joined);
  return joined;
}

cv::Mat OneAboveTheOther(const PicturePair& pair) {
  CheckAlike(pair);
  cv::Mat joined;
  cv::vconcat(pair.left, pair.right, joined);
  return joined;
}

}  // namespace world
