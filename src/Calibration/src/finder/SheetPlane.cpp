/// Where places of the pattern are in the picture: a plane in perspective, bent a little by the lens.
#include "finder/SheetPlane.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

namespace finder {

namespace {

/// Neighbours are places not farther away than this, in steps, squared.
constexpr int NEIGHBOURHOOD = 8;

double Median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

int PlacedDiscs::Missing() const {
  return static_cast<int>(std::count(radii.begin(), radii.end(), 0.0));
}

double PlacedDiscs::MedianRadius() const {
  std::vector<double> known;
  std::copy_if(radii.begin(), radii.end(), std::back_inserter(known), [](double r) { return r > 0.0; });
  return known.empty() ? 0.0 : Median(known);
}

bool SheetPlane::Fit(const PlacedDiscs& discs) {
  std::vector<cv::Point2d> from;
  std::vector<cv::Point2d> to;
  for (size_t k = 0; k < discs.places.size(); ++k) {
    if (!discs.Has(k)) continue;
    from.emplace_back(discs.places[k]);
    to.push_back(discs.centres[k]);
  }
  if (from.size() < 8) return false;
  const cv::Mat H = cv::findHomography(from, to);
  if (H.empty() || !cv::checkRange(H)) return false;
  H_ = cv::Matx33d(H);
  // All of the pattern is in front of the camera, and seen from its printed side.
  return std::all_of(discs.places.begin(), discs.places.end(), [&](const cv::Point& place) {
    const double depth = H_(2, 0) * place.x + H_(2, 1) * place.y + H_(2, 2);
    return depth > 1e-6 && cv::determinant(Slope(place)) > 0.0;
  });
}

cv::Point2d SheetPlane::Project(const cv::Point2d& place) const {
  const cv::Vec3d p = H_ * cv::Vec3d(place.x, place.y, 1.0);
  return {p[0] / p[2], p[1] / p[2]};
}

cv::Matx22d SheetPlane::Slope(const cv::Point2d& place) const {
  const cv::Vec3d p = H_ * cv::Vec3d(place.x, place.y, 1.0);
  const double x = p[0] / p[2];
  const double y = p[1] / p[2];
  return {(H_(0, 0) - x * H_(2, 0)) / p[2], (H_(0, 1) - x * H_(2, 1)) / p[2],
          (H_(1, 0) - y * H_(2, 0)) / p[2], (H_(1, 1) - y * H_(2, 1)) / p[2]};
}

double SheetPlane::Step(const cv::Point2d& place) const {
  return std::sqrt(std::abs(cv::determinant(Slope(place))));
}

cv::Point2d SheetPlane::NeighboursOffset(const PlacedDiscs& discs, const cv::Point& place) const {
  std::vector<double> xs;
  std::vector<double> ys;
  for (size_t k = 0; k < discs.places.size(); ++k) {
    const cv::Point apart = discs.places[k] - place;
    const int square = apart.dot(apart);
    if (!discs.Has(k) || square == 0 || square > NEIGHBOURHOOD) continue;
    const cv::Point2d offset = discs.centres[k] - Project(discs.places[k]);
    xs.push_back(offset.x);
    ys.push_back(offset.y);
  }
  return xs.empty() ? cv::Point2d() : cv::Point2d(Median(xs), Median(ys));
}

cv::Point2d SheetPlane::Predict(const PlacedDiscs& discs, const cv::Point& place) const {
  return Project(place) + NeighboursOffset(discs, place);
}

}  // namespace finder
