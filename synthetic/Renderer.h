/// Renders images of the printed sheet as a camera sees it.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Scene.h"

namespace world {

/// Images of one scene: 8-bit BGR, the centre of the top-left pixel at (0, 0). The same scene, pose and
/// frame number give the same bytes; the background and the light stay the same over all frames.
///
/// Seen from behind, the sheet is blank paper. Where the lens images nothing, the background shows.
///
/// One thread at a time may use a renderer.
class Renderer {
 public:
  /// Throws std::invalid_argument for options outside their ranges.
  explicit Renderer(const Scene& scene);

  const Scene& GetScene() const { return scene_; }

  /// The frame number chooses the sensor noise.
  cv::Mat Render(const Pose& pose, std::uint64_t frameNumber = 0);

  /// The image of the background alone, with blur, light and noise like any other.
  cv::Mat RenderEmpty(std::uint64_t frameNumber = 0);

 private:
  /// The places on the sheet of a block's corners, steps.
  struct Quad {
    cv::Vec2d topLeft, topRight, bottomLeft, bottomRight;
  };

  void MapCorners(const Pose& pose);
  void Compose(const Pose& pose);
  void ComposeBlock(const cv::Rect& block);
  void Fill(const cv::Rect& block, Surface surface);
  cv::Vec3f Mixed(const Quad& quad, const cv::Vec3f& behind) const;
  cv::Mat Finish(cv::Mat& image, std::uint64_t frameNumber);

  Scene scene_;
  cv::Mat rays_;
  cv::Mat background_;
  cv::Mat light_;
  cv::Mat corners_;
  cv::Mat image_;
  /// By how much the sides of a block may reach beyond its corners on the sheet.
  double bulge_;
  float paper_ = 0.0F;
  float ink_ = 0.0F;
};

}  // namespace world
