/// The centre of one disc, by fitting what a camera would see of it to the pixels.
#pragma once

#include <opencv2/core.hpp>

namespace velmora::finder {

/// A disc as it was found.
struct FoundDisc {
  cv::Point2d centre;   ///< pixels
  cv::Matx22d outline;  ///< the rim is about where |outline * (pixel - centre)| = 1
  double reach = 1.5;   ///< how far around it nothing else is, in the same measure
};

struct FittedDisc {
  bool holds = false;  ///< false where the pixels are not those of a whole, clean disc; the rest is 0 then
  cv::Point2d centre;  ///< of the ellipse: the centroid of the disc's image, as that of its darkness is
  double deviation = 0.0;  ///< standard deviation of the centre along an axis, pixels
  double blur = 0.0;       ///< standard deviation of lens and pixel, pixels
  cv::Vec4d light;         ///< how ink (x, y) and paper (x, y) change across the image, grey levels by pixel
  /// Of the centre and the light, in that order.
  cv::Matx<double, 6, 6> covariance = cv::Matx<double, 6, 6>::zeros();
};

/// Fits DiscModel to a disc in a grey image (8 bits, one channel), dark or light. Uneven light does not move
/// the centre, as it does the centroid of darkness, and small glare, scratches and dirt hardly do.
FittedDisc FitDisc(const cv::Mat& grey, const FoundDisc& found);

}  // namespace velmora::finder
