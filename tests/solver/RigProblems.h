/// Rigs of the synthetic world with what their cameras see, as problems of the solver, with their truth.
#pragma once

#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Arrangement.h"
#include "Shots.h"
#include "Views.h"
#include "model/Solution.h"
#include "unit/Collection.h"

namespace unit {

using namespace velmora;

inline const world::Sheet& PrintedGrid() {
  static const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  return sheet;
}

inline Intrinsics TrueIntrinsics(const world::Lens& lens, int estimated = CLASSIC_PARAMETERS) {
  Intrinsics intrinsics;
  intrinsics.estimated = estimated;
  intrinsics.values = {lens.K()(0, 0), lens.K()(1, 1), lens.K()(0, 2), lens.K()(1, 2)};
  for (size_t i = 0; i < lens.D().size(); ++i) intrinsics.values[K1 + i] = lens.D()[i];
  return intrinsics;
}

inline Rig TrueRig(const world::Rig& rig, int estimated = CLASSIC_PARAMETERS) {
  Rig truth;
  for (const world::RigCamera& camera : rig.cameras) {
    truth.cameras.push_back({TrueIntrinsics(camera.lens, estimated), {camera.R, camera.T}, camera.size});
  }
  return truth;
}

/// The grid's points about its middle, as the solver has its targets.
inline std::vector<cv::Point3d> CentredGrid() {
  std::vector<cv::Point3d> points = PrintedGrid().GridPoints();
  for (cv::Point3d& point : points) point -= PrintedGrid().GridMiddle();
  return points;
}

inline RigidTransform TruePose(const world::Pose& pose) {
  const cv::Matx33d R = RotationOf(pose.rvec);
  return {R, pose.tvec + R * cv::Vec3d(PrintedGrid().GridMiddle())};
}

/// What the cameras see of the shots, with the true poses.
inline std::vector<TargetView> TrueViews(const world::Rig& rig, const std::vector<world::Pose>& shots,
                                         double noise, std::uint64_t seed = 1) {
  std::vector<TargetView> views;
  for (const world::ShotPoints& points : world::PointsOf(rig, shots, PrintedGrid(), noise, seed)) {
    TargetView view;
    view.rigFromTarget = TruePose(shots[views.size()]);
    for (const auto& observed : points) {
      view.observations.push_back(observed.empty() ? Observation{}
                                                   : Observation{CentredGrid(), observed, {}});
    }
    views.push_back(std::move(view));
  }
  return views;
}

/// Random shots of the rig, and its truth as the start.
inline CalibrationProblem TrueProblem(const world::Rig& rig, int shots, double noise, std::uint64_t seed,
                                      int estimated = CLASSIC_PARAMETERS) {
  const auto poses = world::SampleRigShots(rig, shots, seed, PrintedGrid());
  return {TrueRig(rig, estimated), TrueViews(rig, poses, noise, seed), {}, {}};
}

/// The true problem of a single camera.
inline CalibrationProblem TrueProblem(const world::Camera& camera, int shots, double noise,
                                      std::uint64_t seed, int estimated = CLASSIC_PARAMETERS) {
  const world::Rig rig = {{world::RigCamera{camera}}};
  const auto poses = world::SampleViews(camera, shots, seed, PrintedGrid());
  return {TrueRig(rig, estimated), TrueViews(rig, poses, noise, seed), {}, {}};
}

inline world::Rig RowOf(int cameras) {
  return world::RowRig(DistortedCamera(), cameras, 0.06);
}

inline world::Rig RingOf(int cameras) {
  const world::Camera camera = DistortedCamera();
  return world::RingRig(camera, cameras, world::RingRadius(camera, PrintedGrid()), world::RingAngle(cameras));
}

/// Degrees between two rotations.
inline double AngleBetween(const cv::Matx33d& a, const cv::Matx33d& b) {
  const cv::Matx33d rotation = a * b.t();
  const cv::Vec3d axis(rotation(2, 1) - rotation(1, 2), rotation(0, 2) - rotation(2, 0),
                       rotation(1, 0) - rotation(0, 1));
  return std::atan2(cv::norm(axis), cv::trace(rotation) - 1.0) * 180.0 / CV_PI;
}

}  // namespace unit
