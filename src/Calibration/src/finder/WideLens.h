/// How wide lenses bend the image: by one radial curve about its middle.
#pragma once

#include <opencv2/core.hpp>

namespace velmora::finder {

/// Leads from pixels to rays and back. A pixel p, from the middle of the image, is of the ray
/// (p.x, p.y, 1 - b |p|^2): straight lines of the scene are planes of rays, whatever b is, and rays beside
/// and behind the camera are like others. No lens is exactly so, but each is nearly so where a sheet appears.
class WideLens {
 public:
  /// A lens that bends nothing.
  WideLens() = default;
  /// For images of a size. With a bend of 1 lines of sight beside the camera meet the image half its width
  /// from the middle; 0 bends nothing.
  WideLens(const cv::Size& image, double bend);

  bool Bends() const { return b_ > 0.0; }

  /// The ray of a pixel, of length 1.
  cv::Vec3d RayOf(const cv::Point2d& pixel) const;

  /// The pixel of a ray of any length.
  cv::Point2d PixelOf(const cv::Vec3d& ray) const;

  /// How that changes with the ray.
  cv::Matx23d SlopeAt(const cv::Vec3d& ray) const;

 private:
  cv::Point2d middle_;
  double half_ = 1.0;  ///< of the image's width, pixels: the unit of length
  double b_ = 0.0;
};

}  // namespace velmora::finder
