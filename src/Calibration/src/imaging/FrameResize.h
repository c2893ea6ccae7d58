/// Brings frames to the processing size.
#pragma once

#include <opencv2/core.hpp>

namespace velmora {

/// Scales `src` by the larger of the two factors, so that it covers `size`, and cuts the overflow away
/// evenly; the scaled side and the cut are truncated. With `fill` false the aspect ratio is ignored instead.
/// `dst` may be `src`; it owns continuous data afterwards. False, with `dst` untouched, when `src` holds no
/// data or covering would need more than 256 million pixels.
bool ResizeFrame(const cv::Mat& src, cv::Mat& dst, const cv::Size& size, bool fill, int interpolation);

/// True when scaling the source so that it covers the target needs no more than those pixels, or nothing.
bool CanCover(const cv::Size& source, const cv::Size& target);

}  // namespace velmora
