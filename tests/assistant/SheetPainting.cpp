/// The target as it must look, told from geometry alone.
#include "assistant/SheetPainting.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace unit {

namespace {

const std::array<cv::Vec3d, 7> PALETTE = {
    {{0, 0, 255}, {0, 128, 255}, {0, 200, 200}, {0, 255, 0}, {200, 200, 0}, {255, 0, 0}, {255, 0, 255}}};
constexpr std::size_t CIRCLES_PER_ROW = 4;
/// Lines are 2 pixels wide and drawn to whole pixels; beyond this distance nothing of them shows.
constexpr double CLEAR = 3.0;
/// Within this one the line covers the pixel, wherever within its own pixel it was rounded to.
constexpr double COVERED = 0.25;

cv::Point2d Mapped(const cv::Matx33d& h, const cv::Point2f& point) {
  const cv::Vec3d image = h * cv::Vec3d(point.x, point.y, 1.0);
  return {image[0] / image[2], image[1] / image[2]};
}

double DistanceToSegment(const cv::Point2d& p, const cv::Point2d& a, const cv::Point2d& b) {
  const cv::Point2d along = b - a;
  const double t = std::clamp((p - a).dot(along) / along.dot(along), 0.0, 1.0);
  return cv::norm(p - (a + t * along));
}

/// Whether the convex polygon holds the point, whichever way round it goes.
bool Holds(const std::vector<cv::Point2d>& polygon, const cv::Point2d& p) {
  int left = 0;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const cv::Point2d edge = polygon[(i + 1) % polygon.size()] - polygon[i];
    if (edge.cross(p - polygon[i]) > 0.0) ++left;
  }
  return left == 0 || left == static_cast<int>(polygon.size());
}

double Saturated(double value) {
  return std::clamp(std::round(value), 0.0, 255.0);
}

}  // namespace

std::vector<cv::Point2f> SheetCircles() {
  return {{1467, 206},  {1467, 443},  {1467, 679}, {1467, 915}, {1349, 324}, {1349, 560}, {1349, 797},
          {1349, 1033}, {1231, 206},  {1231, 443}, {1231, 679}, {1231, 915}, {1113, 324}, {1113, 560},
          {1113, 797},  {1113, 1033}, {994, 206},  {994, 443},  {994, 679},  {994, 915},  {876, 324},
          {876, 560},   {876, 797},   {876, 1033}, {758, 206},  {758, 443},  {758, 679},  {758, 915},
          {640, 324},   {640, 560},   {640, 797},  {640, 1033}, {522, 206},  {522, 443},  {522, 679},
          {522, 915},   {404, 324},   {404, 560},  {404, 797},  {404, 1033}, {286, 206},  {286, 443},
          {286, 679},   {286, 915}};
}

std::vector<cv::Point2f> SheetOutline() {
  return {{0, 0}, {1753, 0}, {1753, 1239}, {0, 1239}, {169, 1239}, {0, 1043}};
}

SheetPainting::SheetPainting(const cv::Matx33d& homography, int radius, const cv::Vec3b& background,
                             double weight)
    : radius_(radius), background_(background), weight_(weight) {
  for (const cv::Point2f& circle : SheetCircles()) circles_.push_back(Mapped(homography, circle));
  for (const cv::Point2f& corner : SheetOutline()) outline_.push_back(Mapped(homography, corner));
}

SheetPainting::Part SheetPainting::PartAt(const cv::Point2d& pixel) const {
  constexpr std::array<std::pair<std::size_t, std::size_t>, 5> LINES = {
      {{0, 1}, {1, 2}, {2, 3}, {3, 0}, {4, 5}}};
  double toLine = 1e9;
  for (const auto& [from, to] : LINES) {
    toLine = std::min(toLine, DistanceToSegment(pixel, outline_[from], outline_[to]));
  }
  if (toLine < COVERED) return Part::Edge;
  if (toLine < CLEAR) return Part::Unsure;
  for (const cv::Point2d& circle : circles_) {
    if (std::abs(cv::norm(pixel - circle) - radius_) < CLEAR) return Part::Unsure;
  }
  if (Holds({outline_[3], outline_[4], outline_[5]}, pixel)) return Part::Corner;
  return Holds({outline_[0], outline_[1], outline_[2], outline_[3]}, pixel) ? Part::Paper : Part::Outside;
}

cv::Vec3d SheetPainting::Blended(const cv::Vec3d& figure, bool onPaper) const {
  cv::Vec3d colour;
  for (int channel = 0; channel < 3; ++channel) {
    const double sheet = onPaper ? 255.0 : background_[channel];
    const double under = Saturated(0.3 * sheet + 0.7 * background_[channel]);
    colour[channel] = Saturated(weight_ * figure[channel] + (1.0 - weight_) * under);
  }
  return colour;
}

cv::Vec3d SheetPainting::ColourOf(Part part) const {
  const bool inked = part == Part::Corner || part == Part::Edge;
  return Blended(inked ? cv::Vec3d() : background_, part != Part::Outside);
}

cv::Vec3d SheetPainting::RimColour(std::size_t circle) const {
  return Blended(PALETTE[circle / CIRCLES_PER_ROW % PALETTE.size()], true);
}

}  // namespace unit
