/// Views of the grid as wide lenses see it: discs that are no points, sheets that are not flat, sheets that
/// fill the image beside ones that are far away.
#pragma once

#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "LensError.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/SparseIntrinsics.h"
#include "unit/Collection.h"

namespace unit {

using namespace velmora;

constexpr double DISC = 0.008;

/// A lens whose image's right edge, distortion included, is half the field of view from its middle.
inline world::Camera WideCamera(double degrees, const std::vector<double>& D) {
  const double edge = std::tan(0.5 * degrees * CV_PI / 180.0);
  const double f = 0.5 * FRAME.width / world::Lens(cv::Matx33d::eye(), D).Project({edge, 0.0}).x;
  return {FRAME, world::Lens(cv::Matx33d(f, 0.0, 325.3, 0.0, 1.003 * f, 234.6, 0.0, 0.0, 1.0), D)};
}

/// Nearly atan(r) / r, as fisheyes have it.
inline world::Camera FisheyeCamera(double degrees) {
  return WideCamera(degrees, {4.0 / 15.0, 0.0, 0.0008, -0.0006, 0.0, 3.0 / 5.0, 0.0, 0.0});
}

/// A fisheye that images rays at distances that grow evenly with their angle: its six coefficients are fitted
/// to that up to 78 degrees, where they are right to a thousandth of a pixel.
inline world::Camera EquidistantCamera(double degrees) {
  constexpr int RAYS = 400;
  Eigen::MatrixXd rows(RAYS, 6);
  Eigen::VectorXd right(RAYS);
  Eigen::VectorXd k = Eigen::VectorXd::Zero(6);
  for (int round = 0; round < 30; ++round) {
    for (int i = 0; i < RAYS; ++i) {
      const double angle = 78.0 * CV_PI / 180.0 * (i + 1) / RAYS;
      const double r = std::tan(angle);
      const double s = r * r;
      const double weight = 1.0 / (1.0 + s * (k(3) + s * (k(4) + s * k(5))));
      rows.row(i) << r * s, r * s * s, r * s * s * s, -angle * s, -angle * s * s, -angle * s * s * s;
      rows.row(i) *= weight;
      right(i) = weight * (angle - r);
    }
    const Eigen::VectorXd sizes = rows.colwise().norm();
    k = (rows * sizes.cwiseInverse().asDiagonal()).colPivHouseholderQr().solve(right).cwiseQuotient(sizes);
  }
  return WideCamera(degrees, {k(0), k(1), 0.0, 0.0, k(2), k(3), k(4), k(5)});
}

/// The centroid of a disc's image, by many rim points.
inline cv::Point2d CentroidOf(const world::Camera& camera, const world::Pose& pose,
                              const cv::Point3d& centre) {
  constexpr int POINTS = 128;
  std::vector<cv::Point3d> rim;
  for (int i = 0; i < POINTS; ++i) {
    const double angle = 2.0 * CV_PI * i / POINTS;
    rim.push_back(centre + cv::Point3d(DISC * std::cos(angle), DISC * std::sin(angle), 0.0));
  }
  const auto pixels = world::ProjectPoints(camera.lens, rim, pose);
  double area = 0.0;
  cv::Point2d moment;
  for (size_t i = 0; i < pixels.size(); ++i) {
    const cv::Point2d a = pixels[i] - pixels[0];
    const cv::Point2d b = pixels[(i + 1) % pixels.size()] - pixels[0];
    area += a.cross(b);
    moment += a.cross(b) * (a + b);
  }
  return pixels[0] + moment / (3.0 * area);
}

/// Centroids of the discs of a sheet that sags in the middle (metres), in random views.
inline PointLists DiscViews(const world::Camera& camera, int count, std::uint64_t seed, double noise,
                            double sag = 0.0) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  std::vector<cv::Point3d> discs = sheet.GridPoints();
  const double half = sheet.GridMiddle().y;
  for (cv::Point3d& disc : discs) disc.z = sag * (1.0 - std::pow((disc.y - half) / half, 2.0));
  cv::RNG random(seed + 1);
  PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, count, seed, sheet)) {
    views.emplace_back();
    for (const cv::Point3d& disc : discs) {
      views.back().push_back(CentroidOf(camera, pose, disc) +
                             cv::Point2d(random.gaussian(noise), random.gaussian(noise)));
    }
  }
  return views;
}

/// Twenty views with a tenth of a pixel of noise. The first `close` fill the image, the others take 9 % of
/// its width to `smallTo`.
inline PointLists CloseAndSmallViews(const world::Camera& camera, int close, double smallTo,
                                     std::uint64_t seed) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  cv::RNG random(seed + 3000);
  PointLists views;
  while (views.size() < 20) {
    const bool fills = static_cast<int>(views.size()) < close;
    const double tilt = fills ? 24.0 : 40.0;
    world::Appearance appearance;
    appearance.span = fills ? random.uniform(0.85, 0.97) : random.uniform(0.09, smallTo);
    appearance.x = random.uniform(-1.0, 1.0);
    appearance.y = random.uniform(-1.0, 1.0);
    appearance.tiltX = random.uniform(-tilt, tilt);
    appearance.tiltY = random.uniform(-tilt, tilt);
    appearance.roll = random.uniform(-25.0, 25.0);
    world::Pose pose;
    if (!world::PlaceGrid(camera, sheet, appearance, 5.0, pose)) continue;
    auto points = world::TrueCentres(camera.lens, sheet, pose);
    for (cv::Point2d& point : points) point += cv::Point2d(random.gaussian(0.1), random.gaussian(0.1));
    views.push_back(std::move(points));
  }
  return views;
}

/// The error of a coordinate of projections, root of the mean square where the views are, after the best
/// rotation of the camera.
inline double TrueErrorOf(const SparseResult& result, const world::Camera& camera, const PointLists& views) {
  return world::MeanProjectionDistance(camera.lens, world::LensFrom(result.K, result.D), camera.size,
                                       world::CoveredRegion(views), world::Alignment::Rotated)
             .rms /
         std::sqrt(2.0);
}

inline std::vector<std::vector<cv::Point3d>> FlatTargets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(GRID, UNIT));
}

}  // namespace unit
