/// The residuals of a view as arrows over its image.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "guided/ImageView.h"

namespace guided {

/// By how much residuals are to be enlarged so that most of them are well seen in an image of that size: 1, 2
/// or 5 times a power of ten, at least 1. 1 when there are none.
double ResidualZoom(const std::vector<cv::Point2d>& residuals, const cv::Size& image);

/// An arrow from each point, the residual enlarged, into the part of the picture that is the view's place.
void DrawResiduals(const std::vector<cv::Point2d>& points, const std::vector<cv::Point2d>& residuals,
                   double zoom, const ImageView& view, cv::Mat& part);

}  // namespace guided
