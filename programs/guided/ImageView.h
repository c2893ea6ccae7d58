/// Where the pixels of a camera's image are in the picture of the window.
#pragma once

#include <cmath>
#include <opencv2/core.hpp>

namespace guided {

/// An image that fills a place of a picture, mirrored or not.
class ImageView {
 public:
  ImageView(const cv::Size& image, const cv::Rect& place, bool mirrored = false)
      : place_(place), zoom_(static_cast<double>(place.width) / image.width), mirrored_(mirrored) {}

  const cv::Rect& Place() const { return place_; }
  double Zoom() const { return zoom_; }
  bool Mirrored() const { return mirrored_; }

  /// From a pixel of the image to one of the part of the picture that is the place.
  cv::Point2d operator()(const cv::Point2d& pixel) const {
    const cv::Point2d at((pixel.x + 0.5) * zoom_ - 0.5, (pixel.y + 0.5) * zoom_ - 0.5);
    return mirrored_ ? cv::Point2d(place_.width - 1 - at.x, at.y) : at;
  }

  /// False for what is not finite and for what is too far away to be drawn.
  bool CanShow(const cv::Point2d& pixel) const {
    const cv::Point2d at = (*this)(pixel);
    return std::abs(at.x) < FAR && std::abs(at.y) < FAR;
  }

 private:
  static constexpr double FAR = 10000.0;

  cv::Rect place_;
  double zoom_;
  bool mirrored_;
};

}  // namespace guided
