/// Where points of the grid are in the image: a homography and a polynomial for the lens's distortion.
#include "finder/GridProjection.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "finder/Homography.h"

namespace velmora::finder {

namespace {

/// The numbers of discs that determine a polynomial of degree 3, or 2, with some to spare.
constexpr int ENOUGH_FOR_CUBIC = 25;
constexpr int ENOUGH_FOR_QUADRATIC = 13;
/// The least cosine between rays of discs and their middle one.
constexpr double LEAST_DEPTH = 0.1;

double Median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace

int LabelledDiscs::Missing() const {
  return static_cast<int>(std::count(radii.begin(), radii.end(), 0.0));
}

int LabelledDiscs::At(const cv::Point& gridIndex) const {
  if (gridIndex.y < 0 || gridIndex.y >= grid.height || gridIndex.x < gridIndex.y % 2) return -1;
  const int column = (gridIndex.x - gridIndex.y % 2) / 2;
  if (column >= grid.width || (gridIndex.x - gridIndex.y) % 2 != 0) return -1;
  const int disc = gridIndex.y * grid.width + column;
  return Has(static_cast<size_t>(disc)) ? disc : -1;
}

double LabelledDiscs::MedianRadius() const {
  std::vector<double> known;
  std::copy_if(radii.begin(), radii.end(), std::back_inserter(known), [](double r) { return r > 0.0; });
  return known.empty() ? 0.0 : Median(known);
}

bool GridProjection::FitGridHomography(const LabelledDiscs& discs) {
  std::vector<cv::Point2d> from;
  std::vector<cv::Point2d> to;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    from.emplace_back(discs.gridIndices[k]);
    to.push_back(discs.centres[k]);
  }
  if (from.size() < 8) return false;
  if (wide_.Bends()) return FitRays(from, to) && IsInFront(discs, axis_);
  return FitHomography(from, to, H_) && IsInFront(discs, {0.0, 0.0, 1.0});
}

bool GridProjection::FitRays(const std::vector<cv::Point2d>& from, const std::vector<cv::Point2d>& to) {
  std::vector<cv::Vec3d> rays;
  cv::Vec3d sum;
  for (const cv::Point2d& pixel : to) {
    rays.push_back(wide_.RayOf(pixel));
    sum += rays.back();
  }
  // Rays become points on a plane across their middle one: beside the camera there are none at depth 1.
  axis_ = cv::normalize(sum);
  const cv::Vec3d beside = std::abs(axis_[0]) < 0.7 ? cv::Vec3d(1.0, 0.0, 0.0) : cv::Vec3d(0.0, 1.0, 0.0);
  const cv::Vec3d y = cv::normalize(axis_.cross(beside));
  const cv::Vec3d x = y.cross(axis_);
  const cv::Matx33d turn(x[0], x[1], x[2], y[0], y[1], y[2], axis_[0], axis_[1], axis_[2]);
  std::vector<cv::Point2d> across;
  for (const cv::Vec3d& ray : rays) {
    const cv::Vec3d p = turn * ray;
    if (!(p[2] > LEAST_DEPTH)) return false;
    across.emplace_back(p[0] / p[2], p[1] / p[2]);
  }
  if (!FitHomography(from, across, H_)) return false;
  H_ = turn.t() * H_;
  return true;
}

bool GridProjection::IsInFront(const LabelledDiscs& discs, const cv::Vec3d& axis) const {
  // All of the pattern is in front of the camera, which looks at its printed side.
  return std::all_of(discs.gridIndices.begin(), discs.gridIndices.end(), [&](const cv::Point& gridPoint) {
    const double depth = axis.dot(H_ * cv::Vec3d(gridPoint.x, gridPoint.y, 1.0));
    return depth > 1e-6 && cv::determinant(Slope(gridPoint)) > 0.0;
  });
}

cv::Point2d GridProjection::Project(const cv::Point2d& gridPoint) const {
  const cv::Vec3d p = H_ * cv::Vec3d(gridPoint.x, gridPoint.y, 1.0);
  if (wide_.Bends()) return wide_.PixelOf(p);
  return {p[0] / p[2], p[1] / p[2]};
}

cv::Matx22d GridProjection::Slope(const cv::Point2d& gridPoint) const {
  const cv::Vec3d p = H_ * cv::Vec3d(gridPoint.x, gridPoint.y, 1.0);
  if (wide_.Bends()) {
    const cv::Matx23d slope = wide_.SlopeAt(p) * H_;
    return {slope(0, 0), slope(0, 1), slope(1, 0), slope(1, 1)};
  }
  const double x = p[0] / p[2];
  const double y = p[1] / p[2];
  return {(H_(0, 0) - x * H_(2, 0)) / p[2], (H_(0, 1) - x * H_(2, 1)) / p[2],
          (H_(1, 0) - y * H_(2, 0)) / p[2], (H_(1, 1) - y * H_(2, 1)) / p[2]};
}

double GridProjection::Step(const cv::Point2d& gridPoint) const {
  return std::sqrt(std::abs(cv::determinant(Slope(gridPoint))));
}

/// The polynomial's terms at a grid point.
GridProjection::Column GridProjection::Terms(const cv::Point2d& gridPoint) const {
  const double u = (gridPoint.x - middle_.x) / half_.x;
  const double v = (gridPoint.y - middle_.y) / half_.y;
  const std::array<double, 4> us = {1.0, u, u * u, u * u * u};
  const std::array<double, 4> vs = {1.0, v, v * v, v * v * v};
  Column terms = Column::Zero();
  int count = 0;
  for (size_t total = 0; total <= static_cast<size_t>(degree_); ++total) {
    for (size_t k = 0; k <= total; ++k) terms(count++) = us[total - k] * vs[k];
  }
  return terms;
}

bool GridProjection::FitDistortion(const LabelledDiscs& discs) {
  const int known = static_cast<int>(discs.gridIndices.size()) - discs.Missing();
  degree_ = known >= ENOUGH_FOR_CUBIC ? 3 : known >= ENOUGH_FOR_QUADRATIC ? 2 : 1;
  half_ = 0.5 * cv::Point2d(2.0 * discs.grid.width - 1.0, discs.grid.height - 1.0);
  middle_ = half_;
  Eigen::Matrix<double, TERMS, TERMS> normal = Eigen::Matrix<double, TERMS, TERMS>::Identity() * 1e-9;
  Eigen::Matrix<double, TERMS, 2> right = Eigen::Matrix<double, TERMS, 2>::Zero();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    // In steps, so that the far side counts as much as the near one.
    const double weight = 1.0 / Step(discs.gridIndices[k]);
    const cv::Point2d offset = discs.centres[k] - Project(discs.gridIndices[k]);
    const Column terms = Terms(discs.gridIndices[k]) * weight;
    normal += terms * terms.transpose();
    right += terms * Eigen::RowVector2d(weight * offset.x, weight * offset.y);
  }
  normal_.compute(normal);
  distortion_ = normal_.solve(right);
  return normal_.info() == Eigen::Success && distortion_.allFinite();
}

cv::Point2d GridProjection::DistortionAt(const cv::Point2d& gridPoint) const {
  const Eigen::Vector2d distortion = distortion_.transpose() * Terms(gridPoint);
  return {distortion(0), distortion(1)};
}

double GridProjection::ScaledResidual(const LabelledDiscs& discs, size_t k) const {
  const cv::Point2d gridPoint = discs.gridIndices[k];
  const double step = Step(gridPoint);
  const Column terms = Terms(gridPoint) / step;
  const double leverage = normal_.matrixL().solve(terms).squaredNorm();
  // A disc pulls the fit towards itself; of that half is taken back, in proportion: all of it would take the
  // lens's own distortion at the corners for outliers.
  return cv::norm(discs.centres[k] - Predict(gridPoint)) / step / std::sqrt(std::max(0.01, 1.0 - leverage));
}

}  // namespace velmora::finder
