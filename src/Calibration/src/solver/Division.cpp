/// Radial distortion of one parameter, which needs no camera to be taken off.
#include "solver/Division.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "solver/Initialisation.h"

namespace velmora::solver {

namespace {

constexpr size_t MOST_VIEWS = 40;
/// A fisheye of 180 degrees in the corners has nearly -1, a strong pincushion 0.4.
constexpr double FIRST = -0.96;
constexpr double LAST = 0.4;
constexpr int STEPS = 17;
constexpr int REFINEMENTS = 8;

double Extent(const Observation& view) {
  const auto [left, right] = std::minmax_element(view.image.begin(), view.image.end(),
                                                 [](const auto& a, const auto& b) { return a.x < b.x; });
  const auto [top, bottom] = std::minmax_element(view.image.begin(), view.image.end(),
                                                 [](const auto& a, const auto& b) { return a.y < b.y; });
  return std::max(right->x - left->x, bottom->y - top->y);
}

/// Distortion shows in views that are large in the image.
std::vector<const Observation*> LargestOf(const std::vector<Observation>& views) {
  std::vector<double> extents;
  extents.reserve(views.size());
  for (const Observation& view : views) extents.push_back(Extent(view));
  std::vector<size_t> order(views.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return extents[a] > extents[b]; });
  order.resize(std::min(order.size(), MOST_VIEWS));
  std::vector<const Observation*> largest;
  largest.reserve(order.size());
  for (const size_t i : order) largest.push_back(&views[i]);
  return largest;
}

}  // namespace

Division::Division(double lambda, const cv::Size& imageSize)
    : lambda_(lambda),
      unit_(0.5 * std::hypot(imageSize.width, imageSize.height)),
      middle_(0.5 * (imageSize.width - 1), 0.5 * (imageSize.height - 1)) {
}

cv::Point2d Division::Undistorted(const cv::Point2d& pixel) const {
  const cv::Point2d from = (pixel - middle_) / unit_;
  const double divisor = 1.0 + lambda_ * from.dot(from);
  const double factor = divisor > 0.0 ? 1.0 / divisor : std::numeric_limits<double>::quiet_NaN();
  return middle_ + (pixel - middle_) * factor;
}

cv::Point2d Division::Distorted(const cv::Point2d& point) const {
  const cv::Point2d from = (point - middle_) / unit_;
  // The smaller root of lambda R r^2 - r + R = 0; that of a negative number is not one.
  return middle_ + (point - middle_) * (2.0 / (1.0 + std::sqrt(1.0 - 4.0 * lambda_ * from.dot(from))));
}

double HomographyResidual(const Observation& view, const Division& division) {
  Observation undistorted = view;
  for (cv::Point2d& pixel : undistorted.image) pixel = division.Undistorted(pixel);
  cv::Matx33d homography;
  if (!HomographyOf(undistorted, homography)) return std::numeric_limits<double>::infinity();
  double squaredDistances = 0.0;
  for (size_t k = 0; k < view.object.size(); ++k) {
    const cv::Vec3d at = homography * cv::Vec3d(view.object[k].x, view.object[k].y, 1.0);
    const cv::Point2d away = division.Distorted({at[0] / at[2], at[1] / at[2]}) - view.image[k];
    squaredDistances += away.dot(away);
  }
  const double residual = std::sqrt(squaredDistances / static_cast<double>(view.object.size()));
  return std::isfinite(residual) ? residual : std::numeric_limits<double>::infinity();
}

Division BestDivision(const std::vector<Observation>& views, const cv::Size& imageSize, double most) {
  const std::vector<const Observation*> largest = LargestOf(views);
  const auto costOf = [&](double lambda) {
    const Division division(lambda, imageSize);
    double cost = 0.0;
    for (const Observation* view : largest) cost += std::min(HomographyResidual(*view, division), most);
    return cost;
  };
  double best = 0.0;
  double least = costOf(best);
  const auto tryOne = [&](double lambda) {
    const double cost = costOf(lambda);
    if (!(cost < least)) return;
    least = cost;
    best = lambda;
  };
  double step = (LAST - FIRST) / STEPS;
  for (int i = 0; i <= STEPS; ++i) tryOne(FIRST + i * step);
  for (int i = 0; i < REFINEMENTS / 2; ++i) {
    step *= 0.5;
    const double middle = best;
    tryOne(middle - step);
    tryOne(middle + step);
  }
  return {best, imageSize};
}

}  // namespace velmora::solver
