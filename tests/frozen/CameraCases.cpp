/// Cameras from points that a rendered sheet would have been seen at.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LensError.h"
#include "Views.h"
#include "frozen/Cases.h"
#include "unit/Collection.h"

namespace frozen {

namespace {

using unit::FRAME;
using unit::PointLists;

constexpr double NOISE = 0.1;
constexpr double DISC = 0.008;

/// Changes what was seen of a view, given its number.
using Change = std::function<void(PointLists& views, cv::RNG& random)>;

struct Case {
  std::string name;
  world::Camera camera;
  int views = 20;
  int model = Calibrator::MODEL_CLASSIC;
  int solver = Calibrator::SOLVER_SPARSE;
  bool robust = false;
  double discRadius = 0.0;
  double bend = 0.0;  ///< metres
  Change change = {};
};

/// The sheet's points, bent to a shallow cylinder across its long side.
std::vector<cv::Point3d> SheetPoints(double bend) {
  std::vector<cv::Point3d> points;
  for (const cv::Point3f& point : unit::TargetPoints()) points.emplace_back(point.x, point.y, point.z);
  const double length = points.back().y;
  for (cv::Point3d& point : points) {
    const double along = 2.0 * point.y / length - 1.0;
    point.z += bend * (1.0 - along * along);
  }
  return points;
}

PointLists Observed(const Case& wanted) {
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  const std::vector<cv::Point3d> points = SheetPoints(wanted.bend);
  cv::RNG random(7);
  PointLists views;
  for (const world::Pose& pose : world::SampleViews(wanted.camera, wanted.views, 5, sheet)) {
    views.push_back(world::ProjectPoints(wanted.camera.lens, points, pose));
    for (cv::Point2d& point : views.back()) {
      point += cv::Point2d(random.gaussian(NOISE), random.gaussian(NOISE));
    }
  }
  if (wanted.change) wanted.change(views, random);
  return views;
}

void Write(Writer& writer, const Case& wanted) {
  writer.Begin("camera/" + wanted.name);
  const std::unique_ptr<Calibrator> calibrator = unit::CalibratorWith(Observed(wanted));
  calibrator->SetSolver(wanted.solver);
  calibrator->SetRobust(wanted.robust);
  calibrator->SetDiscRadius(wanted.discRadius);
  try {
    calibrator->ComputeCalibration(wanted.model);
    writer.Camera(*calibrator);
  } catch (const cv::Exception& exception) {
    writer.Text("raised", exception.err);
  }
}

world::Camera FullCamera() {
  return world::CameraFromFieldOfView(FRAME, 70.0,
                                      {-0.21, 0.06, 0.0008, -0.0006, -0.008, 0.03, -0.01, 0.004, 0.0006,
                                       -0.0004, 0.0003, 0.0002, 0.002, -0.003});
}

/// Outlying points all over, some views in the wrong order.
void Spoil(PointLists& views, cv::RNG& random) {
  for (PointLists::value_type& view : views) {
    for (cv::Point2d& point : view) {
      if (random.uniform(0.0, 1.0) < 0.05) point += cv::Point2d(random.gaussian(15.0), random.gaussian(15.0));
    }
  }
  for (size_t i = 0; i < views.size(); i += 7) std::reverse(views[i].begin(), views[i].end());
}

}  // namespace

void WriteCameras(Writer& writer) {
  const world::Camera usual = unit::DistortedCamera();
  const world::Camera wide = world::CameraFromFieldOfView(FRAME, 90.0, {-0.25, 0.05, 0.0, 0.0});
  const struct {
    const char* name;
    int number;
  } models[] = {{"classic", Calibrator::MODEL_CLASSIC},
                {"rational", Calibrator::MODEL_RATIONAL},
                {"full", Calibrator::MODEL_FULL}};
  for (const auto& model : models) {
    const std::string name = model.name;
    for (const int views : {5, 8, 12, 20, 40}) {
      Write(writer, {name + "/usual/" + std::to_string(views), usual, views, model.number});
    }
    Write(writer, {name + "/wide", wide, 20, model.number});
    Write(writer, {name + "/lens of 14", FullCamera(), 20, model.number});
    Write(writer, {name + "/discs", wide, 20, model.number, Calibrator::SOLVER_SPARSE, false, DISC});
    Write(writer, {name + "/robust", usual, 20, model.number, Calibrator::SOLVER_SPARSE, true});
    Write(writer, {name + "/robust discs", wide, 20, model.number, Calibrator::SOLVER_SPARSE, true, DISC});
    Write(writer,
          {name + "/spoilt", usual, 20, model.number, Calibrator::SOLVER_SPARSE, true, DISC, 0.0, Spoil});
    Write(writer, {name + "/bent", usual, 20, model.number, Calibrator::SOLVER_SPARSE, true, DISC, 0.001});
    Write(writer, {name + "/opencv", usual, 8, model.number, Calibrator::SOLVER_OPENCV});
  }
}

}  // namespace frozen
