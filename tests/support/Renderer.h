/// Renders pictures of the printed sheet as a camera sees it.
#pragma once

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Scene.h"

namespace world {

/// Pictures of one scene: 8-bit BGR, the centre of the top-left pixel at (0, 0). The same scene, pose and
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

  /// The picture of the background alone, with blur, light and noise like any other.
  cv::Mat RenderEmpty(std::uint64_t frameNumber = 0);

 private:
  /// Sums to 1: how much of a pixel shows background, paper and ink.
  using Cover = std::array<float, 3>;

  void MapCorners(const Pose& pose);
  void Compose(const Pose& pose);
  Cover CoverOf(const cv::Vec2d& g00, const cv::Vec2d& g10, const cv::Vec2d& g01, const cv::Vec2d& g11) const;
  cv::Mat Finish(cv::Mat& picture, std::uint64_t frameNumber);

  Scene scene_;
  cv::Mat rays_;
  cv::Mat background_;
  cv::Mat light_;
  cv::Mat corners_;
  cv::Mat picture_;
};

}  // namespace world
