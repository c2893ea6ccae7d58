/// Colours and shapes of the guided window.
#include "guided/Shapes.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace guided {

namespace {

/// A point of a box, as shares of its sides.
cv::Point At(const cv::Rect& box, double x, double y) {
  return {box.x + cvRound(x * box.width), box.y + cvRound(y * box.height)};
}

void Stroke(const std::vector<cv::Point>& line, int thickness, const cv::Scalar& colour, cv::Mat& picture) {
  for (size_t i = 1; i < line.size(); ++i) {
    cv::line(picture, line[i - 1], line[i], colour, thickness, cv::LINE_AA);
  }
}

void RoundBox(const cv::Rect& box, int radius, const cv::Scalar& colour, cv::Mat& picture) {
  radius = std::clamp(radius, 0, (std::min(box.width, box.height) - 1) / 2);
  cv::rectangle(picture, {box.x + radius, box.y, box.width - 2 * radius, box.height}, colour, cv::FILLED);
  cv::rectangle(picture, {box.x, box.y + radius, box.width, box.height - 2 * radius}, colour, cv::FILLED);
  for (const int x : {box.x + radius, box.br().x - 1 - radius}) {
    for (const int y : {box.y + radius, box.br().y - 1 - radius}) {
      cv::circle(picture, {x, y}, radius, colour, cv::FILLED, cv::LINE_AA);
    }
  }
}

void ExclamationMark(const cv::Rect& box, int thickness, cv::Mat& picture) {
  Stroke({At(box, 0.5, 0.4), At(box, 0.5, 0.62)}, thickness, palette::DARK, picture);
  Stroke({At(box, 0.5, 0.8), At(box, 0.5, 0.8)}, thickness, palette::DARK, picture);
}

}  // namespace

cv::Rect PlaceInside(const cv::Rect& place, const cv::Size& size) {
  if (place.width < 1 || place.height < 1 || size.width < 1 || size.height < 1) return {};
  const double zoom = std::min(static_cast<double>(place.width) / size.width,
                               static_cast<double>(place.height) / size.height);
  const int width = std::clamp(cvRound(size.width * zoom), 1, place.width);
  const int height = std::clamp(cvRound(size.height * zoom), 1, place.height);
  return {place.x + (place.width - width) / 2, place.y + (place.height - height) / 2, width, height};
}

cv::Rect Shrunk(const cv::Rect& place, int by) {
  const int aside = std::min(by, place.width / 2);
  const int above = std::min(by, place.height / 2);
  return {place.x + aside, place.y + above, place.width - 2 * aside, place.height - 2 * above};
}

void ShowImage(const cv::Mat& image, const cv::Rect& place, cv::Mat& picture) {
  if (image.empty() || place.empty()) return;
  const bool smaller = place.width < image.cols;
  cv::Mat scaled;
  cv::resize(image, scaled, place.size(), 0.0, 0.0, smaller ? cv::INTER_AREA : cv::INTER_LINEAR);
  if (scaled.channels() == 1) cv::cvtColor(scaled, scaled, cv::COLOR_GRAY2BGR);
  if (scaled.channels() == 4) cv::cvtColor(scaled, scaled, cv::COLOR_BGRA2BGR);
  scaled.copyTo(picture(place));
}

void FillBox(const cv::Rect& box, int radius, const cv::Scalar& colour, double strength, cv::Mat& picture) {
  const cv::Rect inside = box & cv::Rect(cv::Point(), picture.size());
  if (inside.empty() || !(strength > 0.0)) return;
  if (strength >= 1.0) return RoundBox(box, radius, colour, picture);
  cv::Mat part = picture(inside);
  cv::Mat below = part.clone();
  RoundBox(box, radius, colour, picture);
  cv::addWeighted(part, strength, below, 1.0 - strength, 0.0, part);
}

void DrawIcon(Icon icon, const cv::Rect& box, const cv::Scalar& colour, cv::Mat& picture) {
  const cv::Rect square = PlaceInside(box, {1, 1});
  if (square.width < 4) return;
  const int thick = std::max(1, square.width / 9);
  if (icon == Icon::GoOn) {
    Stroke({At(square, 0.36, 0.2), At(square, 0.66, 0.5), At(square, 0.36, 0.8)}, thick, colour, picture);
    return;
  }
  if (icon == Icon::Attention) {
    const std::vector<cv::Point> triangle = {At(square, 0.5, 0.08), At(square, 0.94, 0.88),
                                             At(square, 0.06, 0.88)};
    cv::fillConvexPoly(picture, triangle, colour, cv::LINE_AA);
    Stroke({triangle[0], triangle[1], triangle[2], triangle[0]}, thick, colour, picture);
    return ExclamationMark(square, thick, picture);
  }
  cv::circle(picture, At(square, 0.5, 0.5), square.width * 46 / 100, colour, cv::FILLED, cv::LINE_AA);
  if (icon == Icon::Check) {
    Stroke({At(square, 0.27, 0.52), At(square, 0.44, 0.69), At(square, 0.74, 0.35)}, thick, palette::DARK,
           picture);
  } else if (icon == Icon::Cross) {
    Stroke({At(square, 0.32, 0.32), At(square, 0.68, 0.68)}, thick, palette::DARK, picture);
    Stroke({At(square, 0.68, 0.32), At(square, 0.32, 0.68)}, thick, palette::DARK, picture);
  } else {
    Stroke({At(square, 0.3, 0.5), At(square, 0.7, 0.5)}, thick, palette::DARK, picture);
  }
}

}  // namespace guided
