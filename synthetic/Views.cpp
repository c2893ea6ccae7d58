/// Makes lists of poses.
#include "Views.h"

#include <algorithm>
#include <stdexcept>

#include "Placement.h"

namespace world {

namespace {

/// Discs that are seen more obliquely are not found, degrees.
constexpr double MOST_OBLIQUE_DISC = 70.0;

Pose Placed(const Camera& camera, const Sheet& sheet, Appearance appearance) {
  appearance.span *= SpanShare(camera);
  Pose pose;
  for (int attempt = 0; attempt < 12; ++attempt) {
    if (PlaceGrid(camera, sheet, appearance, ViewMargin(camera), pose)) return pose;
    appearance.span *= 0.92;
    if (!camera.lens.IsFisheye()) continue;
    // The corners may show nothing.
    appearance.x *= 0.92;
    appearance.y *= 0.92;
  }
  throw std::runtime_error("the camera cannot see the whole grid in one of the listed views");
}

std::vector<Pose> SampleFisheyeViews(const Camera& camera, int n, std::uint64_t seed, const Sheet& sheet) {
  RandomFisheyeViews views(camera, sheet, seed);
  std::vector<Pose> poses;
  for (int k = 1; static_cast<int>(poses.size()) < n; ++k) {
    if (k > 100 * (n + 10)) throw std::runtime_error("the fisheye cannot see the whole grid in random views");
    Pose pose;
    if (views.Next(pose) && Obliqueness(sheet, pose) < MOST_OBLIQUE &&
        LargestObliqueness(sheet, pose) < MOST_OBLIQUE_DISC &&
        DiscsInside(camera, sheet, pose, ViewMargin(camera))) {
      poses.push_back(pose);
    }
  }
  return poses;
}

}  // namespace

bool PlaceGrid(const Camera& camera, const Sheet& sheet, const Appearance& appearance, double margin,
               Pose& pose) {
  return Place({{RigCamera{camera}, margin}}, sheet, RotationFor(appearance), appearance, pose);
}

double ViewMargin(const Camera& camera) {
  return 0.015 * std::min(camera.size.width, camera.size.height);
}

std::vector<Pose> SampleViews(const Camera& camera, int n, std::uint64_t seed, const Sheet& sheet) {
  if (camera.lens.IsFisheye()) return SampleFisheyeViews(camera, n, seed, sheet);
  RandomAppearances appearances(seed);
  std::vector<Pose> poses;
  for (int k = 1; static_cast<int>(poses.size()) < n; ++k) {
    if (k > 100 * (n + 10)) throw std::runtime_error("the camera cannot see the whole grid in random views");
    Pose pose;
    if (!PlaceGrid(camera, sheet, appearances.Next(), ViewMargin(camera), pose)) continue;
    if (Obliqueness(sheet, pose) < MOST_OBLIQUE) poses.push_back(pose);
  }
  return poses;
}

std::vector<Pose> SpreadViews(const Camera& camera, int n, const Sheet& sheet) {
  std::vector<Pose> poses;
  poses.reserve(static_cast<std::size_t>(std::max(n, 0)));
  for (int k = 0; k < n; ++k) poses.push_back(Placed(camera, sheet, SpreadAppearance(k, HalfWidth(camera))));
  return poses;
}

std::vector<Pose> FrontalViews(const Camera& camera, int n, const Sheet& sheet) {
  std::vector<Pose> poses;
  for (int k = 0; k < n; ++k) {
    Appearance appearance;
    appearance.x = 1.6 * Halton(k + 1, 2) - 0.8;
    appearance.y = 1.6 * Halton(k + 1, 3) - 0.8;
    appearance.span = 0.45 + 0.35 * Halton(k + 1, 5);
    poses.push_back(Placed(camera, sheet, appearance));
  }
  return poses;
}

bool ShowsSheet(const Camera& camera, const Sheet& sheet, const Pose& pose) {
  std::vector<cv::Point3d> points = sheet.OutlinePoints();
  const std::vector<cv::Point3d> corners = points;
  for (std::size_t k = 0; k < corners.size(); ++k) {
    for (double t = 0.05; t < 1.0; t += 0.05) {
      points.push_back(corners[k] + t * (corners[(k + 1) % corners.size()] - corners[k]));
    }
  }
  const std::vector<cv::Point3d> centres = sheet.GridPoints();  // where the paper is larger than the image
  points.insert(points.end(), centres.begin(), centres.end());
  const std::vector<cv::Point2d> pixels = ProjectPoints(camera.lens, points, pose);
  return std::any_of(pixels.begin(), pixels.end(), [&](const cv::Point2d& p) {
    return p.x > -2.0 && p.y > -2.0 && p.x < camera.size.width + 1 && p.y < camera.size.height + 1;
  });
}

Pose AwayPose(const Camera& camera, const Sheet& sheet, const Pose& pose) {
  Pose away = pose;
  for (int step = 0; step < 1000; ++step) {
    MoveAside(camera.lens.IsFisheye(), sheet, away);
    if (!ShowsSheet(camera, sheet, away)) return away;
  }
  throw std::runtime_error("the sheet cannot be moved out of the image");
}

}  // namespace world
