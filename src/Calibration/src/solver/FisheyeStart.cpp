/// Where the computation of a fisheye begins.
#include "solver/FisheyeStart.h"

#include <Eigen/Eigenvalues>
#include <Eigen/SVD>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "foundation/Median.h"
#include "solver/FisheyeProjection.h"

namespace velmora::solver {

namespace {

using Matrix9 = Eigen::Matrix<double, 9, 9>;

/// Views that are this many times further off than most, and by more than a lens of another curve makes
/// them, are no images of the grid.
constexpr double FARTHEST = 8.0;
constexpr double LEAST_ANGLE = 0.02;                              // radians
constexpr double FIELDS[] = {100.0, 130.0, 160.0, 190.0, 220.0};  // degrees, over the image's width

/// Where the points are, and by how much they are spread.
struct Normaliser {
  cv::Point3d middle;
  double scale = 0.0;
};

Normaliser NormaliserOf(const std::vector<cv::Point3d>& points) {
  Normaliser normaliser;
  for (const cv::Point3d& point : points)
    normaliser.middle += point * (1.0 / static_cast<double>(points.size()));
  for (const cv::Point3d& point : points) {
    normaliser.scale += cv::norm(point - normaliser.middle) / static_cast<double>(points.size());
  }
  return normaliser;
}

/// The three columns h of the map from points to rays, d x (h1 x + h2 y + h3) = 0, of any sign.
bool MapOf(const Observation& observation, const std::vector<cv::Vec3d>& rays, const Normaliser& normaliser,
           Eigen::Matrix3d& map) {
  Matrix9 products = Matrix9::Zero();
  for (size_t i = 0; i < rays.size(); ++i) {
    if (!(observation.Weight(i) > 0.0)) continue;
    const cv::Point3d p = (observation.object[i] - normaliser.middle) * (1.0 / normaliser.scale);
    const cv::Vec3d& d = rays[i];
    Eigen::Matrix3d cross;
    cross << 0.0, -d[2], d[1], d[2], 0.0, -d[0], -d[1], d[0], 0.0;
    Eigen::Matrix<double, 3, 9> rows;
    rows << cross * p.x, cross * p.y, cross;
    products.noalias() += rows.transpose() * rows;
  }
  if (!products.allFinite()) return false;
  const Eigen::SelfAdjointEigenSolver<Matrix9> eigen(products);
  if (!(eigen.eigenvalues()(1) > 1e-12 * eigen.eigenvalues()(8))) return false;
  const Eigen::Matrix<double, 9, 1> least = eigen.eigenvectors().col(0);
  map << least.head<3>(), least.segment<3>(3), least.tail<3>();
  return true;
}

/// How many more of the points are along their rays than against them.
double Along(const Observation& observation, const std::vector<cv::Vec3d>& rays, const RigidTransform& pose) {
  double along = 0.0;
  for (size_t i = 0; i < rays.size(); ++i)
    along += rays[i].dot(pose * observation.object[i]) > 0.0 ? 1.0 : -1.0;
  return along;
}

/// The mean squared angle between the rays and the points, radians.
double AngularCost(const Observation& observation, const std::vector<cv::Vec3d>& rays,
                   const RigidTransform& pose) {
  double cost = 0.0;
  for (size_t i = 0; i < rays.size(); ++i) {
    const cv::Vec3d point = pose * observation.object[i];
    cost += std::pow(std::atan2(cv::norm(rays[i].cross(point)), rays[i].dot(point)), 2);
  }
  return cost / static_cast<double>(rays.size());
}

Intrinsics EvenFisheye(const cv::Size& imageSize, double degrees) {
  Intrinsics intrinsics;
  intrinsics.family = LensFamily::Angle;
  intrinsics.estimated = FISHEYE_PARAMETERS;
  const double focal = imageSize.width / (degrees * CV_PI / 180.0);
  intrinsics.values = {focal, focal, 0.5 * (imageSize.width - 1), 0.5 * (imageSize.height - 1)};
  return intrinsics;
}

/// Gives the views their poses.
std::vector<double> PlaceViews(const Intrinsics& intrinsics, std::vector<TargetView>& views) {
  std::vector<double> residuals(views.size(), std::numeric_limits<double>::infinity());
  for (size_t i = 0; i < views.size(); ++i) {
    const Observation& observation = views[i].observations.front();
    const std::vector<cv::Vec3d> rays = RaysOf(observation, intrinsics);
    if (rays.empty() || !PoseFromRays(observation, rays, views[i].rigFromTarget)) continue;
    residuals[i] = std::sqrt(AngularCost(observation, rays, views[i].rigFromTarget));
  }
  return residuals;
}

}  // namespace

bool PoseFromRays(const Observation& observation, const std::vector<cv::Vec3d>& rays, RigidTransform& pose) {
  if (rays.size() < 4) return false;
  const Normaliser normaliser = NormaliserOf(observation.object);
  Eigen::Matrix3d map;
  if (!MapOf(observation, rays, normaliser, map)) return false;
  const double scale = 2.0 / (map.col(0).norm() + map.col(1).norm());
  for (const double sign : {1.0, -1.0}) {
    Eigen::Matrix3d axes = sign * scale * map;
    const Eigen::Vector3d middle = normaliser.scale * axes.col(2);
    axes.col(2) = axes.col(0).cross(axes.col(1));
    const Eigen::JacobiSVD<Eigen::Matrix3d> svd(axes, Eigen::ComputeFullU | Eigen::ComputeFullV);
    const Eigen::Matrix<double, 3, 3, Eigen::RowMajor> R = svd.matrixU() * svd.matrixV().transpose();
    pose.R = cv::Matx33d(R.data());
    pose.t = cv::Vec3d(middle.data()) - pose.R * cv::Vec3d(normaliser.middle);
    if (Along(observation, rays, pose) > 0.0) break;
  }
  return std::isfinite(cv::norm(pose.t));
}

std::vector<cv::Vec3d> RaysOf(const Observation& observation, const Intrinsics& fisheye) {
  const FisheyeProjection projection(fisheye);
  std::vector<cv::Vec3d> rays(observation.image.size());
  for (size_t i = 0; i < rays.size(); ++i) {
    if (!projection.RayOf(observation.image[i], rays[i])) return {};
  }
  return rays;
}

FisheyeStart FisheyeStartOf(std::vector<TargetView> views, const cv::Size& imageSize) {
  FisheyeStart best;
  double least = std::numeric_limits<double>::infinity();
  for (const double degrees : FIELDS) {
    const Intrinsics intrinsics = EvenFisheye(imageSize, degrees);
    std::vector<double> residuals = PlaceViews(intrinsics, views);
    const double usual = MedianOf(residuals);
    if (!(usual < least)) continue;
    least = usual;
    Camera camera;
    camera.intrinsics = intrinsics;
    camera.imageSize = imageSize;
    best = {{{{camera}}, views, {}, {}}, std::move(residuals)};
  }
  if (best.residuals.empty()) CV_Error(cv::Error::StsNoConv, "The views do not agree with any fisheye.");
  return best;
}

Selection ScreenedBy(const FisheyeStart& start) {
  const double most = std::max(FARTHEST * MedianOf(start.residuals), LEAST_ANGLE);
  Selection selection;
  for (size_t i = 0; i < start.residuals.size(); ++i) {
    if (start.residuals[i] <= most) {
      selection.kept.push_back(i);
      selection.views.push_back(start.problem.views[i]);
    } else {
      selection.rejected.push_back({i, Rejected::WHOLE_VIEW, std::numeric_limits<double>::infinity(),
                                    "its points are no image of a plane grid", 0});
    }
  }
  return selection;
}

}  // namespace velmora::solver
