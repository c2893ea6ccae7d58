/// Where in a camera's image views were kept, and where none was.
#include "guided/Coverage.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "guided/Shapes.h"

namespace guided {

namespace {

constexpr int CELLS = 8;  ///< along the longer side
constexpr double COVERED = 0.25;
constexpr double TINT = 0.2;
constexpr double HATCH = 0.4;

cv::Size CellsOf(const cv::Size& image) {
  const double cell = static_cast<double>(std::max(image.width, image.height)) / CELLS;
  return {std::max(1, cvRound(image.width / cell)), std::max(1, cvRound(image.height / cell))};
}

/// Fills the hulls of the views, as the view shows them.
void FillHulls(const std::vector<std::vector<cv::Point2d>>& kept, const ImageView& view, cv::Mat& mask) {
  for (const auto& centres : kept) {
    std::vector<cv::Point> points;
    points.reserve(centres.size());
    for (const cv::Point2d& centre : centres) {
      if (view.CanShow(centre)) points.emplace_back(view(centre));
    }
    if (points.size() < 3) continue;
    std::vector<cv::Point> hull;
    cv::convexHull(points, hull);
    cv::fillConvexPoly(mask, hull, 255);
  }
}

cv::Rect CellPlace(int row, int column, const cv::Size& cells, const cv::Size& part) {
  const cv::Point from(column * part.width / cells.width, row * part.height / cells.height);
  const cv::Point to((column + 1) * part.width / cells.width, (row + 1) * part.height / cells.height);
  return {from, to};
}

/// Light lines beside dark ones, so that they are seen on any ground.
void Hatch(const cv::Mat& cells, bool mirrored, cv::Mat& part) {
  cv::Mat mask = cv::Mat::zeros(part.size(), CV_8U);
  for (int row = 0; row < cells.rows; ++row) {
    for (int column = 0; column < cells.cols; ++column) {
      const int from = mirrored ? cells.cols - 1 - column : column;
      if (cells.at<unsigned char>(row, from) != 0)
        mask(CellPlace(row, column, cells.size(), part.size())) = 255;
    }
  }
  const int pitch = std::max(16, part.rows / 18);
  const int thickness = std::max(1, part.rows / 300);
  cv::Mat lines = part.clone();
  for (int x = -part.rows; x < part.cols; x += pitch) {
    const cv::Point up(x + part.rows, 0);
    const cv::Point aside(thickness, 0);
    cv::line(lines, cv::Point(x, part.rows) + aside, up + aside, palette::DARK, thickness);
    cv::line(lines, {x, part.rows}, up, palette::TEXT, thickness);
  }
  cv::addWeighted(lines, HATCH, part, 1.0 - HATCH, 0.0, lines);
  lines.copyTo(part, mask);
}

}  // namespace

cv::Mat EmptyCells(const std::vector<std::vector<cv::Point2d>>& kept, const cv::Size& image) {
  if (kept.empty() || image.empty()) return {};
  constexpr int ACROSS = 16;  // pixels of the mask in a cell
  const cv::Size cells = CellsOf(image);
  // Scaled in both directions alike; cells are nearly square.
  cv::Mat covered = cv::Mat::zeros(
      cv::Size(cells.width * ACROSS,
               cvRound(static_cast<double>(cells.width) * ACROSS * image.height / image.width)),
      CV_8U);
  FillHulls(kept, ImageView(image, {cv::Point(), covered.size()}), covered);
  cv::Mat shares;
  cv::resize(covered, shares, cells, 0.0, 0.0, cv::INTER_AREA);
  return shares < 255.0 * COVERED;
}

void DrawCoverage(const std::vector<std::vector<cv::Point2d>>& kept, const cv::Size& image,
                  const ImageView& view, cv::Mat& part) {
  const cv::Mat cells = EmptyCells(kept, image);
  if (cells.empty()) return;
  cv::Mat covered = cv::Mat::zeros(part.size(), CV_8U);
  FillHulls(kept, view, covered);
  std::vector<std::vector<cv::Point>> edges;
  cv::findContours(covered, edges, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
  cv::Mat tinted = part.clone();
  tinted.setTo(palette::KEPT, covered);
  cv::addWeighted(tinted, TINT, part, 1.0 - TINT, 0.0, part);
  Hatch(cells, view.Mirrored(), part);
  cv::drawContours(part, edges, -1, palette::KEPT, 1, cv::LINE_AA);
  const int radius = std::max(1, part.rows / 300);
  for (const auto& centres : kept) {
    for (const cv::Point2d& centre : centres) {
      if (view.CanShow(centre))
        cv::circle(part, view(centre), radius, palette::KEPT, cv::FILLED, cv::LINE_AA);
    }
  }
}

}  // namespace guided
