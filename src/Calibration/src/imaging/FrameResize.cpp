/// Brings frames to the processing size.
#include "imaging/FrameResize.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace velmora {

namespace {

constexpr double MAX_SCALED_PIXELS = 256e6;

/// The size to scale to, so that the image covers the target. Single precision and truncation are part of it.
cv::Size CoveringSize(const cv::Size& source, const cv::Size& target) {
  const float fx = static_cast<float>(target.width) / static_cast<float>(source.width);
  const float fy = static_cast<float>(target.height) / static_cast<float>(source.height);
  if (fx == fy) return target;
  // Rounding may leave a truncated side one short of the target.
  if (fy > fx) {
    return {std::max(target.width, static_cast<int>(fy * static_cast<float>(source.width))), target.height};
  }
  return {target.width, std::max(target.height, static_cast<int>(fx * static_cast<float>(source.height)))};
}

}  // namespace

bool CanCover(const cv::Size& source, const cv::Size& target) {
  if (source == target) return true;
  const double fx = static_cast<double>(target.width) / source.width;
  const double fy = static_cast<double>(target.height) / source.height;
  const double factor = std::max(fx, fy);
  return factor * source.width * factor * source.height <= MAX_SCALED_PIXELS;
}

bool ResizeFrame(const cv::Mat& src, cv::Mat& dst, const cv::Size& size, bool fill, int interpolation) {
  if (src.empty() || src.dims > 2) return false;
  if (src.size() == size) {
    dst = src.clone();
    return true;
  }
  if (fill && !CanCover(src.size(), size)) return false;
  const cv::Size scaledSize = fill ? CoveringSize(src.size(), size) : size;
  cv::Mat scaled;
  cv::resize(src, scaled, scaledSize, 0, 0, interpolation);
  const cv::Rect cut((scaled.cols - size.width) / 2, (scaled.rows - size.height) / 2, size.width,
                     size.height);
  const cv::Mat covered = scaled(cut);
  dst = covered.isContinuous() ? covered : covered.clone();
  return true;
}

}  // namespace velmora
