/// Renders what the two cameras of a rig see at once.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

#include "Renderer.h"
#include "Rig.h"

namespace world {

struct PicturePair {
  cv::Mat left;
  cv::Mat right;
};

/// Pairs of pictures. Everything but the cameras is that of a scene, whose seed is the left camera's; the
/// right one has its own background, light and noise.
///
/// One thread at a time may use it.
class RigRenderer {
 public:
  /// Throws std::invalid_argument as Renderer does.
  RigRenderer(const Rig& rig, const Scene& scene);

  const Rig& GetRig() const { return rig_; }
  const Scene& LeftScene() const { return left_.GetScene(); }
  const Scene& RightScene() const { return right_.GetScene(); }

  /// The frame number chooses the sensor noise.
  PicturePair Render(const Pose& leftPose, std::uint64_t frameNumber = 0);

  /// The pictures of the backgrounds alone.
  PicturePair RenderEmpty(std::uint64_t frameNumber = 0);

 private:
  Rig rig_;
  Renderer left_;
  Renderer right_;
};

/// Both pictures in one: the left camera's is the left half. Throws std::invalid_argument when they differ in
/// size or type.
cv::Mat SideBySide(const PicturePair& pair);

/// Both pictures in one: the left camera's is the upper half. Throws as SideBySide does.
cv::Mat OneAboveTheOther(const PicturePair& pair);

}  // namespace world
