/// Where discs at any place of the pattern, or around it, are in a rendered frame.
#include "finder/DiscView.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace unit {

std::vector<cv::Point> Places(const cv::Size& grid) {
  std::vector<cv::Point> gridIndices;
  for (int y = 0; y < grid.height; ++y) {
    for (int k = 0; k < grid.width; ++k) gridIndices.emplace_back(2 * k + y % 2, y);
  }
  return gridIndices;
}

std::vector<cv::Point2d> DiscView::Rim(const cv::Point& gridIndex, int points) const {
  std::vector<cv::Point3d> rim;
  for (int k = 0; k < points; ++k) {
    const double angle = 2.0 * CV_PI * k / points;
    const double radius = world::Sheet::DISC_RADIUS * scene_.sheet.Unit();
    rim.push_back(Grid(gridIndex) + radius * cv::Point3d(std::cos(angle), std::sin(angle), 0.0));
  }
  return Project(rim);
}

cv::Point2d DiscView::Middle(const cv::Point& gridIndex) const {
  // Near the origin: the outline is of single precision.
  const cv::Point2d centre = Centre(gridIndex);
  std::vector<cv::Point2f> outline;
  for (const cv::Point2d& pixel : Rim(gridIndex, 180)) outline.push_back(pixel - centre);
  const cv::Moments moments = cv::moments(outline);
  return centre + cv::Point2d(moments.m10, moments.m01) / moments.m00;
}

bool DiscView::Inside(const cv::Point& gridIndex, double margin) const {
  const cv::Size& size = scene_.camera.size;
  const std::vector<cv::Point2d> rim = Rim(gridIndex);
  return std::all_of(rim.begin(), rim.end(), [&](const cv::Point2d& p) {
    return p.x >= margin && p.y >= margin && p.x <= size.width - 1 - margin &&
           p.y <= size.height - 1 - margin;
  });
}

bool DiscView::OnPaper(const cv::Point& gridIndex) const {
  constexpr int POINTS = 24;
  for (int k = 0; k < POINTS; ++k) {
    const double angle = 2.0 * CV_PI * k / POINTS;
    const cv::Point2d rim =
        cv::Point2d(gridIndex) + world::Sheet::DISC_RADIUS * cv::Point2d(std::cos(angle), std::sin(angle));
    if (scene_.sheet.At(rim) != world::Surface::Paper) return false;
  }
  return true;
}

cv::Point3d DiscView::Grid(const cv::Point& gridIndex) const {
  return scene_.sheet.Unit() * cv::Point3d(gridIndex.x, gridIndex.y, 0.0);
}

std::vector<cv::Point2d> DiscView::Project(const std::vector<cv::Point3d>& points) const {
  return world::ProjectPoints(scene_.camera.lens, points, pose_);
}

}  // namespace unit
