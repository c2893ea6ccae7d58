/// Views of sheets that are bent, out of proportion and printed beside their places, with their truth.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/RigProblems.h"
#include "unit/Collection.h"

namespace unit {

/// What is wrong with a sheet, metres at half its longer side from its middle.
struct ShapedSheet {
  cv::Vec3d bend;           ///< of x^2, x y, y^2
  double changing = 0.0;    ///< standard deviation of each of these from view to view
  double stretch = 0.0;     ///< share by which it is too long along its columns
  double misprint = 0.0;    ///< standard deviation of a coordinate of a point
  std::uint64_t print = 0;  ///< which of all prints it is; 0: another one in each set of views
};

constexpr double HALF_SIDE = 0.1;

inline void Bend(const cv::Vec3d& bend, std::vector<cv::Point3d>& points) {
  const cv::Point3d middle = PrintedGrid().GridMiddle();
  for (cv::Point3d& point : points) {
    const double a = (point.x - middle.x) / HALF_SIDE;
    const double b = (point.y - middle.y) / HALF_SIDE;
    point.z += bend[0] * a * a + bend[1] * a * b + bend[2] * b * b;
  }
}

/// The points of the sheet in the grid's frame, without what changes.
inline std::vector<cv::Point3d> PointsOf(const ShapedSheet& sheet, cv::RNG& random) {
  std::vector<cv::Point3d> points = PrintedGrid().GridPoints();
  const cv::Point3d middle = PrintedGrid().GridMiddle();
  cv::RNG ofPrint(sheet.print);
  cv::RNG& printer = sheet.print > 0 ? ofPrint : random;
  for (cv::Point3d& point : points) {
    point.y += sheet.stretch * (point.y - middle.y);
    point += cv::Point3d(printer.gaussian(sheet.misprint), printer.gaussian(sheet.misprint), 0.0);
  }
  Bend(sheet.bend, points);
  return points;
}

/// What the camera sees of it, all of its points in the image or near it.
inline PointLists ViewsOf(const ShapedSheet& sheet, const world::Camera& camera, int count, double noise,
                          std::uint64_t seed) {
  cv::RNG random(seed + 77);
  const std::vector<cv::Point3d> points = PointsOf(sheet, random);
  PointLists views;
  for (const world::Pose& pose : world::SampleViews(camera, count, seed, PrintedGrid())) {
    std::vector<cv::Point3d> own = points;
    Bend({random.gaussian(sheet.changing), random.gaussian(sheet.changing), random.gaussian(sheet.changing)},
         own);
    views.push_back(world::ProjectPoints(camera.lens, own, pose));
    for (cv::Point2d& pixel : views.back()) {
      pixel += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
    }
  }
  return views;
}

/// What each camera of a rig sees of it, in poses in which all see it whole.
inline std::vector<PointLists> RigViewsOf(const ShapedSheet& sheet, const world::Rig& rig, int count,
                                          double noise, std::uint64_t seed) {
  cv::RNG random(seed + 78);
  const std::vector<cv::Point3d> points = PointsOf(sheet, random);
  std::vector<PointLists> views(rig.cameras.size());
  for (const world::Pose& pose : world::SampleRigViews(rig, count, seed, PrintedGrid())) {
    std::vector<cv::Point3d> own = points;
    Bend({random.gaussian(sheet.changing), random.gaussian(sheet.changing), random.gaussian(sheet.changing)},
         own);
    for (size_t i = 0; i < views.size(); ++i) {
      views[i].push_back(world::ProjectPoints(rig.cameras[i].lens, own, world::PoseFor(rig, i, pose)));
      for (cv::Point2d& pixel : views[i].back()) {
        pixel += cv::Point2d(random.gaussian(noise), random.gaussian(noise));
      }
    }
  }
  return views;
}

inline std::vector<std::vector<cv::Point3d>> Targets(const PointLists& views) {
  return std::vector<std::vector<cv::Point3d>>(views.size(), MakeObjectTemplate(GRID, UNIT));
}

}  // namespace unit
