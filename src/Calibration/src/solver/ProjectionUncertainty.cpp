/// How far the pixels of rays may be off.
#include "solver/ProjectionUncertainty.h"

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace sparse {

namespace {

cv::Mat Rows(const Coordinate& u, const Coordinate& v, int free) {
  cv::Mat rows(2, free, CV_64F);
  for (int i = 0; i < free; ++i) {
    rows.at<double>(0, i) = u.byLens[static_cast<size_t>(i)];
    rows.at<double>(1, i) = v.byLens[static_cast<size_t>(i)];
  }
  return rows;
}

cv::Mat ByTurn(const Coordinate& u, const Coordinate& v, const cv::Vec3d& ray) {
  const cv::Vec3d first = ray.cross(u.byPoint);
  const cv::Vec3d second = ray.cross(v.byPoint);
  return (cv::Mat_<double>(2, 3) << first[0], first[1], first[2], second[0], second[1], second[2]);
}

double VarianceOf(const cv::Mat& byLens, const cv::Mat& covariance) {
  return 0.5 * cv::trace(byLens * covariance * byLens.t())[0];
}

}  // namespace

bool RayOf(const Projection& projection, const Lens& lens, const cv::Point2d& pixel, cv::Vec3d& ray) {
  constexpr int MOST_STEPS = 30;
  ray = {(pixel.x - lens.values[2]) / lens.values[0], (pixel.y - lens.values[3]) / lens.values[1], 1.0};
  Coordinate u;
  Coordinate v;
  for (int i = 0; i < MOST_STEPS; ++i) {
    if (!projection.Differentiate(ray, u, v)) return false;
    const double x = pixel.x - u.value;
    const double y = pixel.y - v.value;
    if (std::hypot(x, y) < 1e-6) return true;
    const double determinant = u.byPoint[0] * v.byPoint[1] - u.byPoint[1] * v.byPoint[0];
    // Past a fold the picture is mirrored: no ray there is the pixel's.
    if (!(determinant > 0.0)) return false;
    ray[0] += (v.byPoint[1] * x - u.byPoint[1] * y) / determinant;
    ray[1] += (u.byPoint[0] * y - v.byPoint[0] * x) / determinant;
  }
  return false;
}

ProjectionUncertainty::ProjectionUncertainty(const Lens& lens, const cv::Size& imageSize,
                                             const std::vector<cv::Point2f>& area) {
  const Projection projection(lens);
  cv::Mat turns = cv::Mat::zeros(3, 3, CV_64F);
  cv::Mat mixed = cv::Mat::zeros(3, lens.free, CV_64F);
  std::vector<cv::Mat> byTurn;
  for (int i = 0; i < ROWS * COLUMNS; ++i) {
    const int row = i / COLUMNS;
    const int column = i % COLUMNS;
    const cv::Point2d pixel((column + 0.5) * imageSize.width / COLUMNS - 0.5,
                            (row + 0.5) * imageSize.height / ROWS - 0.5);
    Cell cell;
    cell.inArea = area.size() > 2 && cv::pointPolygonTest(area, pixel, false) >= 0.0;
    cv::Vec3d ray;
    Coordinate u;
    Coordinate v;
    byTurn.emplace_back();
    if (RayOf(projection, lens, pixel, ray) && projection.Differentiate(ray, u, v)) {
      cell.byLens = Rows(u, v, lens.free);
      byTurn.back() = ByTurn(u, v, ray);
      if (cell.inArea) {
        turns += byTurn.back().t() * byTurn.back();
        mixed += byTurn.back().t() * cell.byLens;
      }
    }
    cells_.push_back(cell);
  }
  cv::Mat turn;
  if (!cv::solve(turns, mixed, turn, cv::DECOMP_CHOLESKY)) return;
  for (size_t i = 0; i < cells_.size(); ++i) {
    if (!cells_[i].byLens.empty()) cells_[i].byLens = cells_[i].byLens - byTurn[i] * turn;
  }
}

cv::Mat ProjectionUncertainty::Map(const cv::Mat& covariance) const {
  cv::Mat map(ROWS, COLUMNS, CV_64F, cv::Scalar(std::numeric_limits<double>::quiet_NaN()));
  for (size_t i = 0; i < cells_.size(); ++i) {
    if (cells_[i].byLens.empty()) continue;
    map.at<double>(static_cast<int>(i) / COLUMNS, static_cast<int>(i) % COLUMNS) =
        std::sqrt(VarianceOf(cells_[i].byLens, covariance));
  }
  return map;
}

double ProjectionUncertainty::Mean(const cv::Mat& covariance, bool areaOnly) const {
  double sum = 0.0;
  int count = 0;
  for (const Cell& cell : cells_) {
    if (cell.byLens.empty() || (areaOnly && !cell.inArea)) continue;
    sum += VarianceOf(cell.byLens, covariance);
    ++count;
  }
  return count > 0 ? std::sqrt(sum / count) : std::numeric_limits<double>::infinity();
}

double ProjectionUncertainty::InArea(const cv::Mat& covariance) const {
  return Mean(covariance, true);
}

double ProjectionUncertainty::InImage(const cv::Mat& covariance) const {
  return Mean(covariance, false);
}

cv::Mat ProjectionUncertainty::MeanProduct() const {
  cv::Mat sum;
  int count = 0;
  for (const Cell& cell : cells_) {
    if (cell.byLens.empty()) continue;
    const cv::Mat product = cell.byLens.t() * cell.byLens;
    sum = sum.empty() ? product : cv::Mat(sum + product);
    ++count;
  }
  return count > 0 ? cv::Mat(sum / count) : sum;
}

}  // namespace sparse
