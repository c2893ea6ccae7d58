/// Rigs of cameras that saw a sheet, flat or not, and what is computed from their views as if it were flat.
#pragma once

#include <algorithm>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "model/Solution.h"
#include "solver/CameraCalibration.h"
#include "solver/PairViews.h"

namespace unit {

using namespace velmora;

using Shape = std::vector<cv::Point3d>;

/// The grid about its middle.
inline Shape FlatShape() {
  Shape shape = MakeObjectTemplate(GRID, UNIT);
  cv::Point3d middle;
  for (const cv::Point3d& point : shape) middle += point * (1.0 / static_cast<double>(shape.size()));
  for (cv::Point3d& point : shape) point -= middle;
  return shape;
}

/// Depths a x^2 + b x y + c y^2.
inline Shape BentShape(const cv::Vec3d& bend) {
  Shape shape = FlatShape();
  for (cv::Point3d& p : shape) p.z = bend[0] * p.x * p.x + bend[1] * p.x * p.y + bend[2] * p.y * p.y;
  return shape;
}

/// Longer along its columns by a share, and skewed.
inline Shape StretchedShape(double stretch, double skew) {
  Shape shape = FlatShape();
  for (cv::Point3d& p : shape) p = {p.x + skew * p.y, (1.0 + stretch) * p.y, 0.0};
  return shape;
}

/// Coefficients beyond those parameters are left out.
inline Intrinsics IntrinsicsOf(const world::Lens& lens, int parameters) {
  Intrinsics intrinsics;
  intrinsics.estimated = parameters;
  intrinsics.values = {lens.K()(0, 0), lens.K()(1, 1), lens.K()(0, 2), lens.K()(1, 2)};
  const size_t count = std::min(lens.D().size(), static_cast<size_t>(parameters) - 4);
  for (size_t i = 0; i < count; ++i) intrinsics.values[i + 4] = lens.D()[i];
  return intrinsics;
}

inline Rig TrueRig(const world::Rig& rig, int parameters) {
  Rig truth;
  for (const world::RigCamera& camera : rig.cameras) {
    truth.cameras.push_back({IntrinsicsOf(camera.lens, parameters), {camera.R, camera.T}, camera.size});
  }
  return truth;
}

/// What the cameras see of a sheet of that shape in these poses of the printed one, beside the flat sheet
/// that it is taken for. It starts from the truth.
inline CalibrationProblem ObservedByRig(const world::Rig& rig, int parameters, const Shape& shape,
                                        const std::vector<world::Pose>& poses, std::uint64_t seed,
                                        double noise) {
  const Shape flat = FlatShape();
  const cv::Point3d middle = cv::Point3d(MakeObjectTemplate(GRID, UNIT).front()) - flat.front();
  Shape printed = shape;
  for (cv::Point3d& point : printed) point += middle;
  cv::RNG random(seed + 1);
  CalibrationProblem problem{TrueRig(rig, parameters), {}, {}, {}};
  for (const world::Pose& pose : poses) {
    TargetView view;
    view.rigFromTarget.R = RotationOf(pose.rvec);
    view.rigFromTarget.t = pose.tvec + view.rigFromTarget.R * cv::Vec3d(middle.x, middle.y, middle.z);
    for (const world::RigCamera& camera : rig.cameras) {
      Observation observed{
          flat, world::ProjectPoints(camera.lens, printed, world::PoseFor(camera, pose)), {}};
      for (cv::Point2d& pixel : observed.image) {
        pixel += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
      }
      view.observations.push_back(std::move(observed));
    }
    problem.views.push_back(std::move(view));
  }
  return problem;
}

/// Observations of random poses.
inline CalibrationProblem ObservedByRig(const world::Rig& rig, int parameters, const Shape& shape, int count,
                                        std::uint64_t seed, double noise) {
  return ObservedByRig(rig, parameters, shape, world::SampleRigViews(rig, count, seed, Paper()), seed, noise);
}

/// Every camera by as many parameters as the first has.
inline Solution Solved(const CalibrationProblem& problem) {
  solver::BundleOptions options;
  options.parameters = problem.rig.cameras.front().intrinsics.estimated;
  return solver::CalibrateRig(problem, false, options);
}

inline world::Rig ClassicPair() {
  return RigFor(Calibrator::MODEL_CLASSIC);
}

/// The pair, and a camera above it.
inline world::Rig ClassicTriple() {
  world::Rig rig = ClassicPair();
  world::RigCamera third;
  static_cast<world::Camera&>(third) = DistortedCamera();
  third.T = {0.05, 0.08, 0.01};
  rig.cameras.push_back(third);
  return rig;
}

}  // namespace unit
