/// Sheets before fisheyes, as near as to span a wide angle.
#include "finder/WideSheets.h"

#include <algorithm>
#include <cmath>

#include "Placement.h"
#include "finder/Pattern.h"

namespace unit {

namespace {

constexpr double DEGREES = CV_PI / 180.0;

}  // namespace

double SpanOf(const world::Sheet& sheet, const world::Pose& pose) {
  const std::vector<cv::Point3d> points = world::ToCamera(sheet.GridPoints(), pose);
  double least = 1.0;
  for (const cv::Point3d& a : points) {
    for (const cv::Point3d& b : points) least = std::min(least, a.dot(b) / (cv::norm(a) * cv::norm(b)));
  }
  return std::acos(least) / DEGREES;
}

bool PlaceWideSheet(const world::Camera& camera, const world::Sheet& sheet, const WideView& view,
                    world::Pose& pose) {
  const double angle = view.angle * DEGREES;
  const double turn = view.turn * DEGREES;
  const cv::Point3d middle(std::sin(angle) * std::cos(turn), std::sin(angle) * std::sin(turn),
                           std::cos(angle));
  if (!camera.lens.Images(middle)) return false;
  world::Appearance appearance;
  appearance.tiltX = view.tilt * std::cos(view.toward * DEGREES);
  appearance.tiltY = view.tilt * std::sin(view.toward * DEGREES);
  appearance.roll = view.roll;
  // The nearer, the wider; too near, the sheet is behind the camera.
  double low = 0.03;
  double high = 3.0;
  for (int round = 0; round < 30; ++round) {
    const double distance = std::sqrt(low * high);
    if (!world::PoseAt(camera.lens, sheet, world::RotationFor(appearance), camera.lens.Project(middle),
                       distance, pose))
      return false;
    (world::FacesCamera(pose) && SpanOf(sheet, pose) < view.span ? high : low) = distance;
  }
  return world::FacesCamera(pose) && std::abs(SpanOf(sheet, pose) - view.span) < 1.0 &&
         world::DiscsInside(camera, sheet, pose, 8.0);
}

bool PlaceWideSheet(const world::Camera& camera, const world::Sheet& sheet, double share, double span,
                    double mostTilt, cv::RNG& random, world::Pose& pose) {
  WideView view;
  view.span = span;
  for (int attempt = 0; attempt < 50; ++attempt) {
    view.turn = random.uniform(0.0, 360.0);
    view.tilt = random.uniform(0.0, mostTilt);
    view.toward = random.uniform(0.0, 360.0);
    view.roll = random.uniform(0.0, 360.0);
    for (view.angle = 100.0; view.angle > 0.0; view.angle -= 4.0) {
      if (!PlaceWideSheet(camera, sheet, view, pose)) continue;
      view.angle *= share;
      if (PlaceWideSheet(camera, sheet, view, pose)) return true;
      break;
    }
  }
  return false;
}

velmora::finder::LabelledDiscs DiscsSeen(const world::Camera& camera, const world::Sheet& sheet,
                                         const world::Pose& pose) {
  constexpr int RIM = 32;
  velmora::finder::LabelledDiscs discs;
  discs.grid = sheet.Grid();
  discs.gridIndices = velmora::finder::PatternIndices(discs.grid);
  discs.centres = world::TrueCentres(camera.lens, sheet, pose);
  const std::vector<cv::Point2d> rims = world::ProjectPoints(camera.lens, sheet.RimPoints(RIM), pose);
  for (size_t first = 0; first < rims.size(); first += RIM) {
    double area = 0.0;
    for (size_t k = 0; k < RIM; ++k) {
      area += 0.5 * (rims[first + k] - rims[first]).cross(rims[first + (k + 1) % RIM] - rims[first]);
    }
    discs.radii.push_back(std::sqrt(std::abs(area) / CV_PI));
  }
  return discs;
}

}  // namespace unit
