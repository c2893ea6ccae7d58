/// The rim of a disc: how much of it is visible, and the middle that it speaks for.
#pragma once

#include <opencv2/core.hpp>

namespace velmora::finder {

/// A disc as it should appear: an ellipse in the image, a circle in steps.
struct ExpectedDisc {
  cv::Point2d centre;
  cv::Matx22d slope;      ///< pixels per step
  double radius = 0.0;    ///< steps
  double contrast = 0.0;  ///< between paper and ink, grey levels
};

struct Rim {
  double visible = 0.0;  ///< the share of the directions in which the rim is where it should be, 0 to 1
  cv::Point2d centre;    ///< of the circle that most of the rim lies on, pixels
};

/// Follows the rim around a disc and puts the circle where most of the rim is: what is covered, a shadow's
/// edge and a reflection move it little. `expected.centre` may be off by a third of the radius.
Rim FollowRim(const cv::Mat& grey, const ExpectedDisc& expected);

}  // namespace velmora::finder
