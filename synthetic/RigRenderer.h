/// Renders what the cameras of a rig see at once.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Renderer.h"
#include "Rig.h"

namespace world {

/// Images of all cameras, in their order. Everything but the cameras is that of a scene, whose seed is
/// camera 0's; each of the others has its own background, light and noise.
///
/// One thread at a time may use it.
class RigRenderer {
 public:
  /// Throws std::invalid_argument as Renderer does.
  RigRenderer(const Rig& rig, const Scene& scene);

  const Rig& GetRig() const { return rig_; }
  const Scene& SceneOf(std::size_t camera) const { return renderers_.at(camera).GetScene(); }

  /// The frame number chooses the sensor noise.
  std::vector<cv::Mat> Render(const Pose& rigPose, std::uint64_t frameNumber = 0);

  /// The images of the backgrounds alone.
  std::vector<cv::Mat> RenderEmpty(std::uint64_t frameNumber = 0);

 private:
  Rig rig_;
  std::vector<Renderer> renderers_;
};

/// All images in one, the first one on the left. Throws std::invalid_argument when they differ in size or
/// type.
cv::Mat SideBySide(const std::vector<cv::Mat>& images);

/// All images in one, the first one above. Throws as SideBySide does.
cv::Mat OneAboveTheOther(const std::vector<cv::Mat>& images);

}  // namespace world
