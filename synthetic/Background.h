/// What lies behind the sheet, and the light over the image.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>

namespace world {

/// An 8-bit BGR image: plain grey of the level, or, when `clutter` is positive, a textured one with that
/// many discs, polygons and lines. The same seed gives the same bytes.
cv::Mat MakeBackground(cv::Size size, int level, int clutter, std::uint64_t seed);

/// Brightness factors (CV_32F): a gradient in a direction of the seed plus a vignette; 1 everywhere for
/// strength 0, down to about 0.3 in the darkest corner for strength 1.
cv::Mat MakeLight(cv::Size size, double strength, std::uint64_t seed);

}  // namespace world
