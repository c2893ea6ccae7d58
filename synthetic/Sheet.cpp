/// Geometry of the printed sheet: frames, outline, discs, and what a point of its plane shows.
#include "Sheet.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace world {

namespace {

// The first disc of the default sheet and the margins beyond the outermost centres, drawing units.
constexpr double TOP_MARGIN = 206.25;
constexpr double BOTTOM_MARGIN = 1239.0 - TOP_MARGIN - 7.0 * Sheet::STEP;
constexpr double RIGHT_MARGIN = 1753.0 - 1466.9;
constexpr double LEFT_MARGIN = 1466.9 - 10.0 * Sheet::STEP;
// The legs of the cut-off corner.
constexpr double CUT_X = 169.0;
constexpr double CUT_Y = 196.0;

/// The largest X of the grid, steps.
double LastX(cv::Size grid) {
  return 2.0 * (grid.width - 1) + (grid.height > 1 ? 1.0 : 0.0);
}

bool IsDisc(cv::Size grid, int x, int y) {
  return y >= 0 && y < grid.height && x >= y % 2 && x / 2 < grid.width;
}

}  // namespace

Sheet::Sheet(cv::Size grid, double unit) : grid_(grid), unit_(unit), edges_() {
  if (grid.width < 1 || grid.height < 1 || !(unit > 0.0) || !std::isfinite(unit)) {
    throw std::invalid_argument("a sheet needs at least one column, one row and a positive unit");
  }
  const std::array<cv::Point2d, 5> outline = Outline();
  for (std::size_t k = 0; k < outline.size(); ++k) {
    const cv::Point2d a = StepsFromDrawing(outline[k]);
    const cv::Point2d b = StepsFromDrawing(outline[(k + 1) % outline.size()]);
    const cv::Point2d along = (b - a) / cv::norm(b - a);
    edges_[k] = {along.y, -along.x, along.x * a.y - along.y * a.x};
  }
}

cv::Size2d Sheet::PaperSize() const {
  return {LEFT_MARGIN + STEP * (grid_.height - 1) + RIGHT_MARGIN,
          TOP_MARGIN + STEP * LastX(grid_) + BOTTOM_MARGIN};
}

std::array<cv::Point2d, 5> Sheet::Outline() const {
  const cv::Size2d paper = PaperSize();
  return {cv::Point2d(0.0, 0.0), cv::Point2d(paper.width, 0.0), cv::Point2d(paper.width, paper.height),
          cv::Point2d(CUT_X, paper.height), cv::Point2d(0.0, paper.height - CUT_Y)};
}

std::vector<cv::Point2d> Sheet::DrawingCentres() const {
  std::vector<cv::Point2d> centres;
  for (int i = 0; i < grid_.height; ++i) {
    for (int j = 0; j < grid_.width; ++j) {
      centres.push_back(DrawingFromSteps(cv::Point2d(2 * j + i % 2, i)));
    }
  }
  return centres;
}

cv::Point2d Sheet::StepsFromDrawing(const cv::Point2d& drawing) const {
  return {(drawing.y - TOP_MARGIN) / STEP, (PaperSize().width - RIGHT_MARGIN - drawing.x) / STEP};
}

cv::Point2d Sheet::DrawingFromSteps(const cv::Point2d& steps) const {
  return {PaperSize().width - RIGHT_MARGIN - STEP * steps.y, TOP_MARGIN + STEP * steps.x};
}

std::vector<cv::Point3d> Sheet::GridPoints() const {
  std::vector<cv::Point3d> points;
  for (int i = 0; i < grid_.height; ++i) {
    for (int j = 0; j < grid_.width; ++j) points.emplace_back(unit_ * (2 * j + i % 2), unit_ * i, 0.0);
  }
  return points;
}

cv::Point3d Sheet::GridMiddle() const {
  return {0.5 * unit_ * LastX(grid_), 0.5 * unit_ * (grid_.height - 1), 0.0};
}

std::vector<cv::Point3d> Sheet::RimPoints(int perDisc) const {
  std::vector<cv::Point3d> points;
  for (const cv::Point3d& centre : GridPoints()) {
    for (int k = 0; k < perDisc; ++k) {
      const double angle = 2.0 * CV_PI * k / perDisc;
      const double radius = unit_ * DISC_RADIUS;
      points.emplace_back(centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle), 0.0);
    }
  }
  return points;
}

std::vector<cv::Point3d> Sheet::OutlinePoints() const {
  std::vector<cv::Point3d> points;
  for (const cv::Point2d& corner : Outline()) {
    const cv::Point2d steps = StepsFromDrawing(corner);
    points.emplace_back(unit_ * steps.x, unit_ * steps.y, 0.0);
  }
  return points;
}

double Sheet::OutlineDistance(const cv::Point2d& steps) const {
  double distance = -1e9;
  for (const Edge& edge : edges_)
    distance = std::max(distance, edge.x * steps.x + edge.y * steps.y + edge.offset);
  return distance;
}

double Sheet::SquareFromDisc(const cv::Point2d& steps) const {
  // The discs are the points of the integer lattice whose coordinates have an even sum. The cell of each is a
  // square that stands on its corner, of half-diagonal 1. Points on paper are a few steps below zero at most.
  constexpr int ENOUGH = 64;
  int x = static_cast<int>(steps.x + (ENOUGH + 0.5)) - ENOUGH;
  int y = static_cast<int>(steps.y + (ENOUGH + 0.5)) - ENOUGH;
  double restX = steps.x - x;
  double restY = steps.y - y;
  if (((x + y) & 1) != 0) {
    if (std::abs(restX) > std::abs(restY)) {
      x += restX > 0.0 ? 1 : -1;
      restX = steps.x - x;
    } else {
      y += restY > 0.0 ? 1 : -1;
      restY = steps.y - y;
    }
  }
  return IsDisc(grid_, x, y) ? restX * restX + restY * restY : -1.0;
}

Surface Sheet::At(const cv::Point2d& steps) const {
  if (OutlineDistance(steps) > 0.0) return Surface::Background;
  const double square = SquareFromDisc(steps);
  return square >= 0.0 && square < DISC_RADIUS * DISC_RADIUS ? Surface::Ink : Surface::Paper;
}

SurfaceSample Sheet::Sample(const cv::Point2d& steps) const {
  const double outline = OutlineDistance(steps);
  if (outline > 0.0) return {Surface::Background, outline};
  // Discs of other cells are no closer than sqrt(0.5) to their centres.
  constexpr double ELSEWHERE = 0.7 - DISC_RADIUS;
  const double square = SquareFromDisc(steps);
  const double disc = square < 0.0 ? ELSEWHERE : std::min(std::sqrt(square) - DISC_RADIUS, ELSEWHERE);
  return {disc < 0.0 ? Surface::Ink : Surface::Paper, std::min(-outline, std::abs(disc))};
}

cv::Mat Sheet::Draw(int background) const {
  constexpr int FINE = 8;
  const cv::Size2d paper = PaperSize();
  cv::Mat image(static_cast<int>(std::ceil(paper.height - 1e-6)),
                static_cast<int>(std::ceil(paper.width - 1e-6)), CV_8UC1);
  const std::array<int, 3> levels = {background, 255, 0};
  for (int row = 0; row < image.rows; ++row) {
    for (int column = 0; column < image.cols; ++column) {
      const SurfaceSample middle = Sample(StepsFromDrawing({column + 0.5, row + 0.5}));
      int sum = FINE * FINE * levels[static_cast<std::size_t>(middle.surface)];
      if (middle.clearance * STEP < 1.0) {
        sum = 0;
        for (int k = 0; k < FINE * FINE; ++k) {
          const int line = k / FINE;
          const cv::Point2d point(column + (k % FINE + 0.5) / FINE, row + (line + 0.5) / FINE);
          sum += levels[static_cast<std::size_t>(At(StepsFromDrawing(point)))];
        }
      }
      image.at<uchar>(row, column) = cv::saturate_cast<uchar>(sum / static_cast<double>(FINE * FINE));
    }
  }
  return image;
}

}  // namespace world
