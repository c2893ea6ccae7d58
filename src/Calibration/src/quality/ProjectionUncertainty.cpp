/// How far the pixels of rays may be off.
#include "quality/ProjectionUncertainty.h"

#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace velmora::solver {

namespace {

/// The ray of a pixel, with the derivatives there.
bool Unproject(const Projection& projection, const Lens& lens, const cv::Point2d& pixel, cv::Vec3d& ray,
               Coordinate& u, Coordinate& v) {
  constexpr int MOST_STEPS = 30;
  ray = {(pixel.x - lens.values[2]) / lens.values[0], (pixel.y - lens.values[3]) / lens.values[1], 1.0};
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

/// The derivatives in some cells, a row for each coordinate.
class Derivatives {
 public:
  explicit Derivatives(int free) : free_(free) {}

  void Add(int cell, const cv::Vec3d& ray, const Coordinate& u, const Coordinate& v) {
    cells_.push_back(cell);
    for (const Coordinate* coordinate : {&u, &v}) {
      byLens_.insert(byLens_.end(), coordinate->byLens.begin(), coordinate->byLens.begin() + free_);
      const cv::Vec3d byTurn = ray.cross(coordinate->byPoint);
      byTurn_.insert(byTurn_.end(), byTurn.val, byTurn.val + 3);
    }
  }

  const std::vector<int>& Cells() const { return cells_; }
  cv::Mat ByLens() { return {Rows(), free_, CV_64F, byLens_.data()}; }
  /// By the turn of the camera's frame.
  cv::Mat ByTurn() { return {Rows(), 3, CV_64F, byTurn_.data()}; }

 private:
  int Rows() const { return 2 * static_cast<int>(cells_.size()); }

  int free_;
  std::vector<int> cells_;
  std::vector<double> byLens_;
  std::vector<double> byTurn_;
};

/// The mean variance of both coordinates of each cell, from two rows for each. Where large terms cancel,
/// rounding may leave less than nothing.
cv::Mat Variances(const cv::Mat& byLens, const cv::Mat& covariance) {
  cv::Mat variances;
  cv::reduce(byLens.mul(byLens * covariance), variances, 1, cv::REDUCE_SUM);
  cv::reduce(variances.reshape(1, byLens.rows / 2), variances, 1, cv::REDUCE_AVG);
  variances.setTo(0.0, variances < 0.0);
  return variances;
}

double RootOfMean(const cv::Mat& byLens, const cv::Mat& covariance) {
  return std::sqrt(cv::mean(Variances(byLens, covariance))[0]);
}

}  // namespace

bool RayOf(const Projection& projection, const Lens& lens, const cv::Point2d& pixel, cv::Vec3d& ray) {
  Coordinate u;
  Coordinate v;
  return Unproject(projection, lens, pixel, ray, u, v);
}

ProjectionUncertainty::ProjectionUncertainty(const Lens& lens, const cv::Size& imageSize,
                                             const std::vector<cv::Point2f>& area) {
  const Projection projection(lens);
  Derivatives inside(lens.free);
  Derivatives outside(lens.free);
  for (int i = 0; i < ROWS * COLUMNS; ++i) {
    const int row = i / COLUMNS;
    const int column = i % COLUMNS;
    const cv::Point2d pixel((column + 0.5) * imageSize.width / COLUMNS - 0.5,
                            (row + 0.5) * imageSize.height / ROWS - 0.5);
    cv::Vec3d ray;
    Coordinate u;
    Coordinate v;
    if (!Unproject(projection, lens, pixel, ray, u, v)) continue;
    const bool inArea = area.size() > 2 && cv::pointPolygonTest(area, pixel, false) >= 0.0;
    (inArea ? inside : outside).Add(i, ray, u, v);
  }
  inArea_ = static_cast<int>(inside.Cells().size());
  cells_ = inside.Cells();
  cells_.insert(cells_.end(), outside.Cells().begin(), outside.Cells().end());
  byLens_ = inside.ByLens().clone();
  byLens_.push_back(outside.ByLens());
  if (inArea_ == 0) return;
  // The turn that makes up best, in the area, for a change of each parameter.
  cv::Mat byTurn = inside.ByTurn();
  cv::Mat turn;
  if (!cv::solve(byTurn.t() * byTurn, byTurn.t() * inside.ByLens(), turn, cv::DECOMP_CHOLESKY)) return;
  byTurn.push_back(outside.ByTurn());
  byLens_ -= byTurn * turn;
}

cv::Mat ProjectionUncertainty::Map(const cv::Mat& covariance) const {
  cv::Mat map(ROWS, COLUMNS, CV_64F, cv::Scalar(std::numeric_limits<double>::quiet_NaN()));
  if (cells_.empty()) return map;
  const cv::Mat variances = Variances(byLens_, covariance);
  for (int i = 0; i < variances.rows; ++i) {
    const int cell = cells_[static_cast<size_t>(i)];
    map.at<double>(cell / COLUMNS, cell % COLUMNS) = std::sqrt(variances.at<double>(i));
  }
  return map;
}

double ProjectionUncertainty::InArea(const cv::Mat& covariance) const {
  return inArea_ == 0 ? std::numeric_limits<double>::infinity()
                      : RootOfMean(byLens_.rowRange(0, 2 * inArea_), covariance);
}

double ProjectionUncertainty::InImage(const cv::Mat& covariance) const {
  return cells_.empty() ? std::numeric_limits<double>::infinity() : RootOfMean(byLens_, covariance);
}

cv::Mat ProjectionUncertainty::MeanProduct() const {
  return cells_.empty() ? cv::Mat() : cv::Mat(byLens_.t() * byLens_ / static_cast<double>(cells_.size()));
}

}  // namespace velmora::solver
