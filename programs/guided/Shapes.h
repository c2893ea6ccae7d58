/// Colours and shapes of the guided window.
#pragma once

#include <opencv2/core.hpp>

namespace guided {

/// Colours, BGR. Amber, green-blue and red are told from each other by those who see no red or no green, too:
/// they differ in lightness and in how blue they are.
namespace palette {
const cv::Scalar BACK(24, 21, 19);
const cv::Scalar PANEL(46, 40, 36);
const cv::Scalar LINE(92, 84, 78);
const cv::Scalar TEXT(245, 245, 245);
const cv::Scalar QUIET(190, 184, 178);
const cv::Scalar OFF(112, 106, 100);
const cv::Scalar AMBER(40, 184, 255);
const cv::Scalar GREEN(176, 214, 60);
const cv::Scalar RED(84, 104, 255);
const cv::Scalar TARGET(30, 222, 255);
const cv::Scalar FOUND(255, 214, 120);
const cv::Scalar KEPT(255, 150, 110);
const cv::Scalar DARK(16, 14, 12);
}  // namespace palette

enum class Icon { GoOn, Check, Attention, Cross, Dash };

/// The middle part of the place that has the shape of that size; empty when one of them is.
cv::Rect PlaceInside(const cv::Rect& place, const cv::Size& size);

/// The place without that much at each side; not smaller than nothing.
cv::Rect Shrunk(const cv::Rect& place, int by);

/// Shows an image, 8 bits, grey or BGR, in a place of the picture, which it fills.
void ShowImage(const cv::Mat& image, const cv::Rect& place, cv::Mat& picture);

/// A filled box with round corners; `strength` 1 covers, less lets what is below shine through.
void FillBox(const cv::Rect& box, int radius, const cv::Scalar& colour, double strength, cv::Mat& picture);

/// The icons also differ in shape.
void DrawIcon(Icon icon, const cv::Rect& box, const cv::Scalar& colour, cv::Mat& picture);

}  // namespace guided
