/// Where a computation begins.
#include "solver/Initialisation.h"

#include <Eigen/Eigenvalues>
#include <Eigen/SVD>
#include <cmath>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <utility>
#include <vector>

#include "solver/FisheyeStart.h"

namespace velmora::solver {

namespace {

/// Moves points to their mean and scales them to a mean square of two.
template <typename Points>
cv::Matx33d NormaliserOf(const Points& points) {
  cv::Vec2d mean(0.0, 0.0);
  double squaredDistances = 0.0;
  for (const auto& p : points) mean += cv::Vec2d(p.x, p.y) * (1.0 / static_cast<double>(points.size()));
  for (const auto& p : points)
    squaredDistances += (p.x - mean[0]) * (p.x - mean[0]) + (p.y - mean[1]) * (p.y - mean[1]);
  const double scale = std::sqrt(2.0 * static_cast<double>(points.size()) / squaredDistances);
  return {scale, 0.0, -scale * mean[0], 0.0, scale, -scale * mean[1], 0.0, 0.0, 1.0};
}

cv::Vec3d Column(const cv::Matx33d& matrix, int column) {
  return {matrix(0, column), matrix(1, column), matrix(2, column)};
}

/// The two conditions that a view puts on 1 / fx^2 and 1 / fy^2: the target's axes are perpendicular and of
/// equal length.
void AddFocalConditions(const cv::Matx33d& homography, const cv::Vec2d& middle, double width,
                        cv::Matx22d& products, cv::Vec2d& right) {
  const cv::Matx33d centred =
      cv::Matx33d(1.0 / width, 0.0, -middle[0] / width, 0.0, 1.0 / width, -middle[1] / width, 0.0, 0.0, 1.0) *
      homography;
  const cv::Vec3d a = Column(centred, 0);
  const cv::Vec3d b = Column(centred, 1);
  const double size = 1.0 / (cv::norm(a) * cv::norm(b));
  const cv::Vec3d conditions[] = {
      cv::Vec3d(a[0] * b[0], a[1] * b[1], a[2] * b[2]) * size,
      cv::Vec3d(a[0] * a[0] - b[0] * b[0], a[1] * a[1] - b[1] * b[1], a[2] * a[2] - b[2] * b[2]) *
          (0.5 * size)};
  for (const cv::Vec3d& c : conditions) {
    products += cv::Matx22d(c[0] * c[0], c[0] * c[1], c[0] * c[1], c[1] * c[1]);
    right -= cv::Vec2d(c[0] * c[2], c[1] * c[2]);
  }
}

/// Focal lengths from all views; one for both axes where the views do not tell them apart, and that of a
/// usual camera where they tell nothing.
cv::Vec2d FocalLengths(const std::vector<cv::Matx33d>& homographies, const cv::Vec2d& middle, double width) {
  constexpr double USUAL = 1.0;
  constexpr double MOST_SQUEEZED = 5.0;  // halves side by side, and single fields of those
  const auto sensible = [](double f) { return f > 0.1 && f < 20.0; };
  cv::Matx22d products = cv::Matx22d::zeros();
  cv::Vec2d right(0.0, 0.0);
  for (const cv::Matx33d& homography : homographies) {
    AddFocalConditions(homography, middle, width, products, right);
  }
  const double determinant = products(0, 0) * products(1, 1) - products(0, 1) * products(1, 0);
  const cv::Vec2d both((products(1, 1) * right[0] - products(0, 1) * right[1]) / determinant,
                       (products(0, 0) * right[1] - products(1, 0) * right[0]) / determinant);
  const double fx = 1.0 / std::sqrt(both[0]);
  const double fy = 1.0 / std::sqrt(both[1]);
  if (sensible(fx) && sensible(fy) && fx < MOST_SQUEEZED * fy && fy < MOST_SQUEEZED * fx)
    return {fx * width, fy * width};
  const double single = (right[0] + right[1]) / (products(0, 0) + 2.0 * products(0, 1) + products(1, 1));
  const double f = 1.0 / std::sqrt(single);
  return sensible(f) ? cv::Vec2d(f * width, f * width) : cv::Vec2d(USUAL * width, USUAL * width);
}

/// The rotation nearest to the homography's axes, and the translation.
RigidTransform PoseOf(const cv::Matx33d& homography, const Intrinsics& intrinsics) {
  const cv::Matx33d inverse(1.0 / intrinsics.values[0], 0.0, -intrinsics.values[2] / intrinsics.values[0],
                            0.0, 1.0 / intrinsics.values[1], -intrinsics.values[3] / intrinsics.values[1],
                            0.0, 0.0, 1.0);
  cv::Matx33d axes = inverse * homography;
  double scale = 2.0 / (cv::norm(Column(axes, 0)) + cv::norm(Column(axes, 1)));
  if (axes(2, 2) < 0.0) scale = -scale;  // the target is in front of the camera
  axes = axes * scale;
  const cv::Vec3d a = Column(axes, 0);
  const cv::Vec3d b = Column(axes, 1);
  const cv::Vec3d c = a.cross(b);
  Eigen::Matrix3d rotationMatrix;
  rotationMatrix << a[0], b[0], c[0], a[1], b[1], c[1], a[2], b[2], c[2];
  const Eigen::JacobiSVD<Eigen::Matrix3d> svd(rotationMatrix, Eigen::ComputeFullU | Eigen::ComputeFullV);
  const Eigen::Matrix<double, 3, 3, Eigen::RowMajor> nearest = svd.matrixU() * svd.matrixV().transpose();
  return {cv::Matx33d(nearest.data()), Column(axes, 2)};
}

cv::Matx33d RequiredHomography(const Observation& observation) {
  cv::Matx33d homography;
  CV_Assert(HomographyOf(observation, homography));
  return homography;
}

}  // namespace

bool HomographyOf(const Observation& observation, cv::Matx33d& homography) {
  if (observation.object.size() < 4) return false;
  const cv::Matx33d from = NormaliserOf(observation.object);
  const cv::Matx33d to = NormaliserOf(observation.image);
  Eigen::Matrix<double, 9, 9> products = Eigen::Matrix<double, 9, 9>::Zero();
  for (size_t k = 0; k < observation.object.size(); ++k) {
    const cv::Vec3d p = from * cv::Vec3d(observation.object[k].x, observation.object[k].y, 1.0);
    const cv::Vec3d q = to * cv::Vec3d(observation.image[k].x, observation.image[k].y, 1.0);
    Eigen::Matrix<double, 2, 9> rows;
    rows << p[0], p[1], 1, 0, 0, 0, -q[0] * p[0], -q[0] * p[1], -q[0],  //
        0, 0, 0, p[0], p[1], 1, -q[1] * p[0], -q[1] * p[1], -q[1];
    products.noalias() += rows.transpose() * rows;
  }
  if (!products.allFinite()) return false;
  const Eigen::SelfAdjointEigenSolver<Eigen::Matrix<double, 9, 9>> eigen(products);  // from the least on
  const Eigen::Matrix<double, 9, 1> least = eigen.eigenvectors().col(0);
  homography = to.inv() * cv::Matx33d(least.data()) * from;
  // A second direction without residual: the points are on a line.
  return eigen.eigenvalues()(1) > 1e-12 * eigen.eigenvalues()(8) && std::isfinite(cv::norm(homography));
}

double HomographyResidual(const Observation& observation) {
  cv::Matx33d homography;
  if (!HomographyOf(observation, homography)) return std::numeric_limits<double>::infinity();
  double squaredDistances = 0.0;
  for (size_t k = 0; k < observation.object.size(); ++k) {
    const cv::Vec3d at = homography * cv::Vec3d(observation.object[k].x, observation.object[k].y, 1.0);
    const cv::Point2d away(at[0] / at[2] - observation.image[k].x, at[1] / at[2] - observation.image[k].y);
    squaredDistances += away.dot(away);
  }
  const double residual = std::sqrt(squaredDistances / static_cast<double>(observation.object.size()));
  return std::isfinite(residual) ? residual : std::numeric_limits<double>::infinity();
}

CalibrationProblem StartOf(std::vector<TargetView> views, const cv::Size& imageSize) {
  std::vector<cv::Matx33d> homographies;
  homographies.reserve(views.size());
  for (const TargetView& view : views) homographies.push_back(RequiredHomography(view.observations.front()));
  const cv::Vec2d middle(0.5 * (imageSize.width - 1), 0.5 * (imageSize.height - 1));
  const cv::Vec2d focal = FocalLengths(homographies, middle, imageSize.width);
  Camera camera;
  camera.imageSize = imageSize;
  camera.intrinsics.values = {focal[0], focal[1], middle[0], middle[1]};
  for (size_t i = 0; i < views.size(); ++i)
    views[i].rigFromTarget = PoseOf(homographies[i], camera.intrinsics);
  return {{{camera}}, std::move(views), {}, {}};
}

bool HasPose(const Observation& observation, const Intrinsics& intrinsics) {
  cv::Matx33d homography;
  if (!intrinsics.IsFisheye()) return HomographyOf(observation, homography);
  RigidTransform pose;
  const std::vector<cv::Vec3d> rays = RaysOf(observation, intrinsics);
  return !rays.empty() && PoseFromRays(observation, rays, pose);
}

RigidTransform StartPoseOf(const Observation& observation, const Intrinsics& intrinsics) {
  if (intrinsics.IsFisheye()) return KnownPoseOf(observation, intrinsics);
  return PoseOf(RequiredHomography(observation), intrinsics);
}

RigidTransform KnownPoseOf(const Observation& observation, const Intrinsics& intrinsics) {
  if (intrinsics.IsFisheye()) {
    RigidTransform pose;
    const std::vector<cv::Vec3d> rays = RaysOf(observation, intrinsics);
    CV_Assert(!rays.empty() && PoseFromRays(observation, rays, pose));
    return pose;
  }
  const auto& p = intrinsics.values;
  const cv::Matx33d K(p[FX], 0.0, p[CX], 0.0, p[FY], p[CY], 0.0, 0.0, 1.0);
  const std::vector<double> D(p.begin() + K1, p.end());
  cv::Vec3d rotation;
  RigidTransform pose;
  CV_Assert(cv::solvePnP(observation.object, observation.image, K, D, rotation, pose.t));
  pose.R = RotationOf(rotation);
  return pose;
}

}  // namespace velmora::solver
