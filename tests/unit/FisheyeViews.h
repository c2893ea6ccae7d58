/// What a fisheye sees of the printed grid, beside and behind it too, with the truth. Its projection is
/// written out here.
#pragma once

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "model/RigidTransform.h"
#include "model/TargetGeometry.h"
#include "unit/Collection.h"

namespace unit {

const cv::Size FISHEYE_FRAME(1280, 960);

/// A lens of the Kannala and Brandt kind that sees that many degrees from left to right.
struct FisheyeLens {
  double f;
  cv::Point2d middle{645.2, 471.8};
  double k1 = -0.01;
  double k2 = 0.002;

  explicit FisheyeLens(double degrees) : f(640.0 / (0.5 * degrees * CV_PI / 180.0)) {}

  cv::Point2d operator()(const cv::Vec3d& p) const {
    const double away = std::sqrt(p[0] * p[0] + p[1] * p[1]);
    const double angle = std::acos(p[2] / std::sqrt(p.dot(p)));
    const double distance = f * (angle + k1 * std::pow(angle, 3) + k2 * std::pow(angle, 5));
    return middle + distance * cv::Point2d(p[0] / away, p[1] / away);
  }
};

/// Sheets 12 to 35 cm away all over the image, tilted against the line of sight.
inline PointLists FisheyeViews(double degrees, int count, double noise, std::uint64_t seed) {
  const FisheyeLens lens(degrees);
  cv::RNG random(seed);
  std::vector<cv::Point3d> grid = velmora::MakeObjectTemplate(GRID, UNIT);
  cv::Point3d centre;
  for (const cv::Point3d& point : grid) centre += point * (1.0 / static_cast<double>(grid.size()));
  PointLists views;
  while (static_cast<int>(views.size()) < count) {
    const double angle = random.uniform(0.0, 0.5 * degrees * CV_PI / 180.0);
    const double turn = random.uniform(0.0, 2.0 * CV_PI);
    const cv::Vec3d sight(std::sin(angle) * std::cos(turn), std::sin(angle) * std::sin(turn),
                          std::cos(angle));
    const cv::Vec3d axis = cv::Vec3d(-std::sin(turn), std::cos(turn), 0.0) * angle;
    const cv::Vec3d tilt(random.uniform(-0.7, 0.7), random.uniform(-0.7, 0.7), random.uniform(-3.0, 3.0));
    const velmora::RigidTransform pose = {velmora::RotationOf(axis) * velmora::RotationOf(tilt),
                                          random.uniform(0.12, 0.35) * sight};
    std::vector<cv::Point2d> view;
    bool inside = true;
    for (const cv::Point3d& point : grid) {
      const cv::Point2d pixel = lens(pose * (point - centre));
      inside = inside && cv::Rect2d({}, cv::Size2d(FISHEYE_FRAME)).contains(pixel);
      view.push_back(pixel + cv::Point2d(random.gaussian(noise), random.gaussian(noise)));
    }
    if (inside) views.push_back(view);
  }
  return views;
}

/// The widest angle between the axis and a point of the views, degrees.
inline double WidestAngleOf(double degrees, const PointLists& views) {
  const FisheyeLens lens(degrees);
  double farthest = 0.0;
  for (const auto& view : views) {
    for (const cv::Point2d& point : view) farthest = std::max(farthest, cv::norm(point - lens.middle));
  }
  double low = 0.0;
  double high = CV_PI;
  while (high - low > 1e-9) {
    const double angle = 0.5 * (low + high);
    const bool beyond = cv::norm(lens({std::sin(angle), 0.0, std::cos(angle)}) - lens.middle) > farthest;
    (beyond ? high : low) = angle;
  }
  return low * 180.0 / CV_PI;
}

/// How far projections of a camera matrix and k1 to k4 are off, at most, up to an angle from the axis:
/// pixels, after the best small turn.
inline double WorstFisheyeError(double degrees, const cv::Mat& K, const cv::Mat& k, double upTo) {
  const FisheyeLens truth(degrees);
  const auto at = [](const cv::Mat& matrix, int row, int column) { return matrix.at<double>(row, column); };
  const auto project = [&](const cv::Vec3d& p) {
    const double away = std::sqrt(p[0] * p[0] + p[1] * p[1]);
    const double a = std::atan2(away, p[2]);
    const double a2 = a * a;
    const double distance =
        a * (1.0 + a2 * (at(k, 0, 0) + a2 * (at(k, 0, 1) + a2 * (at(k, 0, 2) + a2 * at(k, 0, 3)))));
    return cv::Point2d(at(K, 0, 0) * distance * p[0] / away + at(K, 0, 2),
                       at(K, 1, 1) * distance * p[1] / away + at(K, 1, 2));
  };
  std::vector<cv::Vec3d> rays;
  for (double angle = 2.0; angle <= upTo; angle += 4.0) {
    for (double turn = 5.0; turn < 360.0; turn += 30.0) {
      const double a = angle * CV_PI / 180.0;
      const double t = turn * CV_PI / 180.0;
      rays.emplace_back(std::sin(a) * std::cos(t), std::sin(a) * std::sin(t), std::cos(a));
    }
  }
  // Turns move all projections in nearly the same way that a moved principal point does: take the best of
  // both axes by least squares of the differences to those of turned rays.
  constexpr double STEP = 1e-5;
  cv::Mat design(static_cast<int>(2 * rays.size()), 3, CV_64F);
  cv::Mat away(static_cast<int>(2 * rays.size()), 1, CV_64F);
  for (size_t i = 0; i < rays.size(); ++i) {
    const int row = static_cast<int>(2 * i);
    const cv::Point2d now = project(rays[i]);
    const cv::Point2d difference = truth(rays[i]) - now;
    away.at<double>(row) = difference.x;
    away.at<double>(row + 1) = difference.y;
    for (int axis = 0; axis < 3; ++axis) {
      cv::Vec3d turn;
      turn[axis] = STEP;
      const cv::Point2d moved = project(velmora::RotationOf(turn) * rays[i]) - now;
      design.at<double>(row, axis) = moved.x / STEP;
      design.at<double>(row + 1, axis) = moved.y / STEP;
    }
  }
  cv::Mat turned;
  cv::solve(design, away, turned, cv::DECOMP_SVD);
  const cv::Mat left = away - design * turned;
  double worst = 0.0;
  for (int i = 0; i < left.rows; i += 2)
    worst = std::max(worst, std::hypot(left.at<double>(i), left.at<double>(i + 1)));
  return worst;
}

}  // namespace unit
