/// How far the pixels of rays may be off.
#include "quality/ProjectionUncertainty.h"

#include <Eigen/Cholesky>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

#include "solver/FisheyeProjection.h"

namespace velmora {

namespace {

using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

/// The ray of a pixel, with the derivatives there.
bool Unproject(const solver::Projection& projection, const Intrinsics& intrinsics, const cv::Point2d& pixel,
               cv::Vec3d& ray, solver::Coordinate& u, solver::Coordinate& v) {
  if (intrinsics.IsFisheye()) {
    return solver::FisheyeProjection(intrinsics).RayOf(pixel, ray) && projection.Differentiate(ray, u, v);
  }
  constexpr int MOST_STEPS = 30;
  ray = {(pixel.x - intrinsics.values[2]) / intrinsics.values[0],
         (pixel.y - intrinsics.values[3]) / intrinsics.values[1], 1.0};
  for (int i = 0; i < MOST_STEPS; ++i) {
    if (!projection.Differentiate(ray, u, v)) return false;
    const double x = pixel.x - u.value;
    const double y = pixel.y - v.value;
    if (std::hypot(x, y) < 1e-6) return true;
    const double determinant = u.byPoint[0] * v.byPoint[1] - u.byPoint[1] * v.byPoint[0];
    // Past a fold the image is mirrored: no ray there is the pixel's.
    if (!(determinant > 0.0)) return false;
    ray[0] += (v.byPoint[1] * x - u.byPoint[1] * y) / determinant;
    ray[1] += (u.byPoint[0] * y - v.byPoint[0] * x) / determinant;
  }
  return false;
}

/// The derivatives in some cells, a row for each coordinate.
class Derivatives {
 public:
  Derivatives(int estimated, const RadialTerms* radial)
      : estimated_(estimated),
        radial_(radial),
        parameters_(estimated + (radial != nullptr ? RadialTerms::COUNT : 0)) {}

  void Add(int cell, const cv::Vec3d& ray, const solver::Coordinate& u, const solver::Coordinate& v) {
    cells_.push_back(cell);
    for (const solver::Coordinate* coordinate : {&u, &v}) {
      const auto first = coordinate->byIntrinsics.begin();
      byIntrinsics_.insert(byIntrinsics_.end(), first, first + estimated_);
      if (radial_ != nullptr) {
        const auto byTerms = radial_->Derivatives(ray, coordinate->byPoint);
        byIntrinsics_.insert(byIntrinsics_.end(), byTerms.begin(), byTerms.end());
      }
      const cv::Vec3d byRotation = ray.cross(coordinate->byPoint);
      byRotation_.insert(byRotation_.end(), byRotation.val, byRotation.val + 3);
    }
  }

  const std::vector<int>& Cells() const { return cells_; }
  RowMatrix ByIntrinsics() const {
    return Eigen::Map<const RowMatrix>(byIntrinsics_.data(), Rows(), parameters_);
  }
  /// By the rotation of the camera's frame.
  RowMatrix ByRotation() const { return Eigen::Map<const RowMatrix>(byRotation_.data(), Rows(), 3); }

 private:
  Eigen::Index Rows() const { return 2 * static_cast<Eigen::Index>(cells_.size()); }

  int estimated_;
  const RadialTerms* radial_;
  int parameters_;
  std::vector<int> cells_;
  std::vector<double> byIntrinsics_;
  std::vector<double> byRotation_;
};

/// The mean variance of both coordinates of each cell, from two rows for each. Where large terms cancel,
/// rounding may leave less than nothing.
Eigen::ArrayXd Variances(const Eigen::MatrixXd& byIntrinsics, const Eigen::MatrixXd& covariance) {
  const Eigen::ArrayXd ofRows = byIntrinsics.cwiseProduct(byIntrinsics * covariance).rowwise().sum();
  const Eigen::Map<const Eigen::Array<double, 2, Eigen::Dynamic>> ofCells(ofRows.data(), 2,
                                                                          ofRows.size() / 2);
  return ofCells.colwise().mean().transpose().max(0.0);
}

double RootOfMean(const Eigen::MatrixXd& byIntrinsics, const Eigen::MatrixXd& covariance) {
  return std::sqrt(Variances(byIntrinsics, covariance).mean());
}

}  // namespace

bool RayOf(const solver::Projection& projection, const Intrinsics& intrinsics, const cv::Point2d& pixel,
           cv::Vec3d& ray) {
  solver::Coordinate u;
  solver::Coordinate v;
  return Unproject(projection, intrinsics, pixel, ray, u, v);
}

std::vector<cv::Point2f> DataAreaOf(const std::vector<TargetView>& views, size_t camera) {
  std::vector<cv::Point2f> points;
  for (const TargetView& view : views) {
    const Observation& observation = view.observations[camera];
    // Where a point was left out the lens may be anything: there are no data.
    for (size_t k = 0; k < observation.image.size(); ++k) {
      if (observation.Weight(k) > 0.0) points.emplace_back(observation.image[k]);
    }
  }
  std::vector<cv::Point2f> hull;
  if (!points.empty()) cv::convexHull(points, hull);
  return hull;
}

ProjectionUncertainty::ProjectionUncertainty(const Intrinsics& intrinsics, const cv::Size& imageSize,
                                             const std::vector<cv::Point2f>& area,
                                             const RadialTerms* radial) {
  const solver::Projection projection(intrinsics);
  Derivatives inside(intrinsics.estimated, radial);
  Derivatives outside(intrinsics.estimated, radial);
  for (int i = 0; i < ROWS * COLUMNS; ++i) {
    const int row = i / COLUMNS;
    const int column = i % COLUMNS;
    const cv::Point2d pixel((column + 0.5) * imageSize.width / COLUMNS - 0.5,
                            (row + 0.5) * imageSize.height / ROWS - 0.5);
    cv::Vec3d ray;
    solver::Coordinate u;
    solver::Coordinate v;
    if (!Unproject(projection, intrinsics, pixel, ray, u, v)) continue;
    const bool inArea = area.size() > 2 && cv::pointPolygonTest(area, pixel, false) >= 0.0;
    (inArea ? inside : outside).Add(i, ray, u, v);
  }
  inArea_ = static_cast<int>(inside.Cells().size());
  cells_ = inside.Cells();
  cells_.insert(cells_.end(), outside.Cells().begin(), outside.Cells().end());
  byIntrinsics_.resize(2 * static_cast<Eigen::Index>(cells_.size()), inside.ByIntrinsics().cols());
  byIntrinsics_ << inside.ByIntrinsics(), outside.ByIntrinsics();
  if (inArea_ == 0 || intrinsics.estimated == 0) return;
  // The rotation that makes up best, in the area, for a change of each parameter.
  const RowMatrix byRotation = inside.ByRotation();
  const Eigen::LLT<Eigen::Matrix3d> cholesky(byRotation.transpose() * byRotation);
  if (cholesky.info() != Eigen::Success) return;
  const Eigen::MatrixXd rotation = cholesky.solve(byRotation.transpose() * inside.ByIntrinsics());
  const Eigen::Index rowsInArea = byRotation.rows();
  byIntrinsics_.topRows(rowsInArea) -= byRotation * rotation;
  byIntrinsics_.bottomRows(byIntrinsics_.rows() - rowsInArea) -= outside.ByRotation() * rotation;
}

cv::Mat ProjectionUncertainty::Map(const Eigen::MatrixXd& covariance) const {
  cv::Mat map(ROWS, COLUMNS, CV_64F, cv::Scalar(std::numeric_limits<double>::quiet_NaN()));
  if (cells_.empty()) return map;
  const Eigen::ArrayXd variances = Variances(byIntrinsics_, covariance);
  for (size_t i = 0; i < cells_.size(); ++i) {
    map.at<double>(cells_[i] / COLUMNS, cells_[i] % COLUMNS) =
        std::sqrt(variances(static_cast<Eigen::Index>(i)));
  }
  return map;
}

double ProjectionUncertainty::InArea(const Eigen::MatrixXd& covariance) const {
  return inArea_ == 0 ? std::numeric_limits<double>::infinity()
                      : RootOfMean(byIntrinsics_.topRows(2 * inArea_), covariance);
}

double ProjectionUncertainty::InImage(const Eigen::MatrixXd& covariance) const {
  return cells_.empty() ? std::numeric_limits<double>::infinity() : RootOfMean(byIntrinsics_, covariance);
}

double ProjectionUncertainty::ShareWithoutRay() const {
  return 1.0 - static_cast<double>(cells_.size()) / (ROWS * COLUMNS);
}

Eigen::MatrixXd ProjectionUncertainty::MeanProduct() const {
  if (cells_.empty()) return {};
  return byIntrinsics_.transpose() * byIntrinsics_ / static_cast<double>(cells_.size());
}

}  // namespace velmora
