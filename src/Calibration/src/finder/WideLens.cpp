/// How wide lenses bend the image: by one radial curve about its middle.
#include "finder/WideLens.h"

#include <algorithm>
#include <cmath>

namespace velmora::finder {

WideLens::WideLens(const cv::Size& image, double bend)
    : middle_(0.5 * (image.width - 1), 0.5 * (image.height - 1)),
      half_(0.5 * std::max(image.width, image.height)),
      b_(bend) {
}

cv::Vec3d WideLens::RayOf(const cv::Point2d& pixel) const {
  const cv::Point2d p = (pixel - middle_) / half_;
  return cv::normalize(cv::Vec3d(p.x, p.y, 1.0 - b_ * p.dot(p)));
}

// A ray (x, y, z) is that of the pixel s (x, y) when 1 - b s^2 (x^2 + y^2) = s z.

cv::Point2d WideLens::PixelOf(const cv::Vec3d& ray) const {
  const double root = std::sqrt(ray[2] * ray[2] + 4.0 * b_ * (ray[0] * ray[0] + ray[1] * ray[1]));
  const double s = 2.0 / (ray[2] + root);
  return middle_ + half_ * s * cv::Point2d(ray[0], ray[1]);
}

cv::Matx23d WideLens::SlopeAt(const cv::Vec3d& ray) const {
  const double x = ray[0];
  const double y = ray[1];
  const double root = std::sqrt(ray[2] * ray[2] + 4.0 * b_ * (x * x + y * y));
  const double s = 2.0 / (ray[2] + root);
  const double ofXY = -2.0 * b_ * s * s / root;  // the derivative of s by x, per x, and by y, per y
  const double ofZ = -s / root;
  return half_ * cv::Matx23d(s + x * x * ofXY, x * y * ofXY, x * ofZ,  //
                             x * y * ofXY, s + y * y * ofXY, y * ofZ);
}

}  // namespace velmora::finder
