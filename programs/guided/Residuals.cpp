/// The residuals of a view as arrows over its image.
#include "guided/Residuals.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "guided/Shapes.h"

namespace guided {

namespace {

constexpr double USUAL_LENGTH = 1.0 / 22.0;  ///< of a longer arrow, share of the image's longer side
constexpr double MOST_ZOOM = 1e6;

/// The length that nine of ten residuals do not exceed; 0 without any.
double UsualLength(const std::vector<cv::Point2d>& residuals) {
  std::vector<double> lengths;
  lengths.reserve(residuals.size());
  for (const cv::Point2d& residual : residuals) {
    const double length = std::hypot(residual.x, residual.y);
    if (std::isfinite(length)) lengths.push_back(length);
  }
  if (lengths.empty()) return 0.0;
  const auto at = static_cast<std::ptrdiff_t>(lengths.size() * 9 / 10);
  std::nth_element(lengths.begin(), lengths.begin() + at, lengths.end());
  return lengths[static_cast<size_t>(at)];
}

void Arrow(const cv::Point2d& from, const cv::Point2d& to, int thickness, const cv::Scalar& colour,
           cv::Mat& part) {
  const double length = std::max(1e-9, std::hypot(to.x - from.x, to.y - from.y));
  const double tip = std::min(0.5, 4.0 * std::max(1.0, part.rows / 250.0) / length);
  cv::arrowedLine(part, from, to, colour, thickness, cv::LINE_AA, 0, tip);
}

}  // namespace

double ResidualZoom(const std::vector<cv::Point2d>& residuals, const cv::Size& image) {
  const double usual = UsualLength(residuals);
  if (!(usual > 0.0)) return 1.0;
  const double wanted =
      std::clamp(USUAL_LENGTH * std::max(image.width, image.height) / usual, 1.0, MOST_ZOOM);
  const double power = std::pow(10.0, std::floor(std::log10(wanted)));
  const double digit = wanted / power;
  return power * (digit >= 5.0 ? 5.0 : digit >= 2.0 ? 2.0 : 1.0);
}

void DrawResiduals(const std::vector<cv::Point2d>& points, const std::vector<cv::Point2d>& residuals,
                   double zoom, const ImageView& view, cv::Mat& part) {
  const int thickness = std::max(1, part.rows / 200);
  const auto arrows = [&](int wider, const cv::Scalar& colour) {
    for (size_t i = 0; i < std::min(points.size(), residuals.size()); ++i) {
      const cv::Point2d to = points[i] + zoom * residuals[i];
      if (!view.CanShow(points[i]) || !view.CanShow(to)) continue;
      Arrow(view(points[i]), view(to), thickness + wider, colour, part);
    }
  };
  arrows(2, palette::DARK);
  arrows(0, palette::TARGET);
  for (const cv::Point2d& point : points) {
    if (!view.CanShow(point)) continue;
    cv::circle(part, view(point), thickness, palette::FOUND, cv::FILLED, cv::LINE_AA);
  }
}

}  // namespace guided
