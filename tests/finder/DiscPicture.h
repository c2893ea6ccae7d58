/// A picture of one printed disc, exact but for what is asked of it: blur, uneven light and noise.
#pragma once

#include <opencv2/core.hpp>

namespace unit {

/// A brightness that may change across the picture: `slope` is the change over one radius to the right and
/// downwards.
struct Tone {
  double level = 0.0;
  cv::Vec2d slope;
};

struct DiscPicture {
  cv::Size size;
  cv::Point2d centre;   ///< tones are those here
  cv::Matx22d outline;  ///< the disc is where |outline * (x - centre)| < 1
  double radius = 1.0;  ///< what the tones' slopes are per, pixels
  double blur = 1.0;    ///< standard deviation of the optics, pixels; pixels are squares beside that
  Tone ink{40.0, {}};
  Tone paper{190.0, {}};
};

/// A circle that is `squeezed` to an ellipse of the same area, its shorter axis at an angle of 30 degrees.
DiscPicture PictureOfDisc(double radius, double blur, double squeezed = 1.0);

/// The brightness of each pixel as a CV_64F image: the mean over its square. Nothing is rounded.
cv::Mat Exposure(const DiscPicture& picture);

/// With noise of a standard deviation in grey levels, as 8 bits.
cv::Mat Shot(const cv::Mat& exposure, double noise, cv::RNG& random);

/// The standard deviation, pixels per axis, below which no unbiased estimate of the centre can be when
/// centre, blur, outline and both tones are unknown, from the pixels up to `reach` radii from the centre.
double LeastDeviation(const DiscPicture& picture, double noise, double reach);

}  // namespace unit
