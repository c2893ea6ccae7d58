/// The sheet in a camera's image: where it is to be, and what was found of it.
#include "guided/SheetDrawing.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "guided/Lettering.h"
#include "guided/Shapes.h"

namespace guided {

namespace {

// The printed sheet in steps, that is in distances of neighbouring rows, beyond the outermost centres.
constexpr double MARGIN_X = 1.75;
constexpr double MARGIN_Y = 2.42;
constexpr double CUT_X = 1.66;
constexpr double CUT_Y = 1.43;
constexpr double DISC_RADIUS = 0.4;

constexpr int SHIFT = 4;  ///< lines are placed to sixteenths of a pixel
constexpr double SUBPIXELS = 16.0;

bool IsFinite(const cv::Point2d& point) {
  return std::isfinite(point.x) && std::isfinite(point.y);
}

std::vector<cv::Point2d> StepsOf(const cv::Size& grid) {
  std::vector<cv::Point2d> steps;
  steps.reserve(static_cast<size_t>(grid.area()));
  for (int row = 0; row < grid.height; ++row) {
    for (int column = 0; column < grid.width; ++column) steps.emplace_back(2 * column + row % 2, row);
  }
  return steps;
}

/// From steps to pixels: by a homography, and by what the centres nearby are beside it, where the lens bends
/// lines.
class SheetToImage {
 public:
  SheetToImage(std::vector<cv::Point2d> steps, const std::vector<cv::Point2d>& centres)
      : steps_(std::move(steps)) {
    const cv::Mat found = cv::findHomography(steps_, centres, 0);
    if (found.empty()) return;
    homography_ = found;
    beside_.reserve(centres.size());
    for (size_t i = 0; i < centres.size(); ++i) beside_.push_back(centres[i] - Flat(steps_[i]));
    usable_ = std::all_of(beside_.begin(), beside_.end(), IsFinite);
  }

  bool Usable() const { return usable_; }

  cv::Point2d operator()(const cv::Point2d& step) const {
    cv::Point2d sum;
    double weights = 0.0;
    for (size_t i = 0; i < steps_.size(); ++i) {
      const cv::Point2d apart = step - steps_[i];
      const double squared = apart.dot(apart) + 0.01;
      const double weight = 1.0 / (squared * squared);
      sum += weight * beside_[i];
      weights += weight;
    }
    return Flat(step) + sum / weights;
  }

 private:
  cv::Point2d Flat(const cv::Point2d& step) const {
    const cv::Vec3d at = homography_ * cv::Vec3d(step.x, step.y, 1.0);
    return {at[0] / at[2], at[1] / at[2]};
  }

  std::vector<cv::Point2d> steps_;
  cv::Matx33d homography_ = cv::Matx33d::eye();
  std::vector<cv::Point2d> beside_;
  bool usable_ = false;
};

std::vector<cv::Point2d> PaperCorners(const cv::Size& grid) {
  const double right = 2.0 * (grid.width - 1) + (grid.height > 1 ? 1.0 : 0.0) + MARGIN_X;
  const double far = grid.height - 1 + MARGIN_Y;
  return {{-MARGIN_X, far},
          {-MARGIN_X, -MARGIN_Y},
          {right, -MARGIN_Y},
          {right, far - CUT_Y},
          {right - CUT_X, far}};
}

/// In steps of the length of the paper's edges, so that edges may be curves.
std::vector<cv::Point2d> OutlineOf(const cv::Size& grid, const SheetToImage& toImage) {
  constexpr int PIECES = 8;
  const std::vector<cv::Point2d> corners = PaperCorners(grid);
  std::vector<cv::Point2d> outline;
  outline.reserve(corners.size() * PIECES);
  for (size_t i = 0; i < corners.size(); ++i) {
    const cv::Point2d edge = corners[(i + 1) % corners.size()] - corners[i];
    for (int piece = 0; piece < PIECES; ++piece) {
      outline.push_back(toImage(corners[i] + edge * (static_cast<double>(piece) / PIECES)));
    }
  }
  return outline;
}

std::vector<cv::Point2d> DiscOf(const cv::Point2d& step, const SheetToImage& toImage) {
  constexpr int PIECES = 16;
  std::vector<cv::Point2d> disc;
  disc.reserve(PIECES);
  for (int piece = 0; piece < PIECES; ++piece) {
    const double angle = 2.0 * CV_PI * piece / PIECES;
    disc.push_back(toImage(step + DISC_RADIUS * cv::Point2d(std::cos(angle), std::sin(angle))));
  }
  return disc;
}

bool OnALine(const std::vector<cv::Point2d>& points) {
  std::vector<cv::Point2f> singles(points.begin(), points.end());
  const cv::RotatedRect box = cv::minAreaRect(singles);
  return std::min(box.size.width, box.size.height) < 1.0F;
}

/// Empty when a point of it cannot be shown.
std::vector<cv::Point> InSubpixels(const std::vector<cv::Point2d>& polygon, const ImageView& view) {
  std::vector<cv::Point> shown;
  shown.reserve(polygon.size());
  for (const cv::Point2d& point : polygon) {
    if (!view.CanShow(point)) return {};
    const cv::Point2d at = view(point) * SUBPIXELS;
    shown.emplace_back(cvRound(at.x), cvRound(at.y));
  }
  return shown;
}

void Line(const std::vector<cv::Point>& polygon, int thickness, const cv::Scalar& colour, cv::Mat& part) {
  if (polygon.empty()) return;
  cv::polylines(part, polygon, true, colour, thickness, cv::LINE_AA, SHIFT);
}

void Circle(const cv::Point2d& at, double radius, int thickness, const cv::Scalar& colour, cv::Mat& part) {
  const cv::Point centre(cvRound(at.x * SUBPIXELS), cvRound(at.y * SUBPIXELS));
  cv::circle(part, centre, cvRound(radius * SUBPIXELS), colour, thickness, cv::LINE_AA, SHIFT);
}

int Least(int least, double value) {
  return std::max(least, cvRound(value));
}

void WriteOne(const cv::Point2d& at, double size, const Ink& ink, cv::Mat& part) {
  const Lettering one = FitText("1", {1 << 15, 1 << 15}, {size, size, size});
  const cv::Point middle(cvRound(at.x), cvRound(at.y));
  WriteText(one, {middle - cv::Point(one.extent / 2), one.extent}, Align::Centre, ink, part);
}

double RadiusOf(const std::vector<cv::Point>& disc) {
  return std::sqrt(cv::contourArea(disc) / CV_PI) / SUBPIXELS;
}

void DrawWhole(const SheetShape& shape, const std::vector<cv::Point2d>& centres, const ImageView& view,
               const cv::Scalar& colour, cv::Mat& part) {
  const std::vector<cv::Point> outline = InSubpixels(shape.outline, view);
  std::vector<std::vector<cv::Point>> discs;
  discs.reserve(shape.discs.size());
  for (const auto& disc : shape.discs) discs.push_back(InSubpixels(disc, view));
  const double radius = discs.front().empty() ? 4.0 : RadiusOf(discs.front());
  const int bold = Least(3, part.rows / 120.0);
  const int rim = std::min(bold, Least(1, radius / 4.0));
  Line(outline, bold + 4, palette::DARK, part);
  for (const auto& disc : discs) Line(disc, rim + 3, palette::DARK, part);
  Line(outline, bold, colour, part);
  for (const auto& disc : discs) Line(disc, rim, colour, part);
  if (discs.front().empty()) return;
  cv::fillConvexPoly(part, discs.front(), colour, cv::LINE_AA, SHIFT);
  // On the side away from the grid, where nothing else is drawn.
  const double size = std::max(1.8 * radius, part.rows / 28.0);
  const cv::Point2d first = view(centres.front());
  const cv::Point2d inward = view(centres.back()) - first;
  const double length = std::max(1.0, std::hypot(inward.x, inward.y));
  WriteOne(first - inward * ((1.3 * radius + 0.7 * size) / length), size, {colour, palette::DARK}, part);
}

/// Half of that of a printed disc, as far as can be told, and never large.
double RadiusOfMarks(const std::vector<cv::Point2d>& centres, const ImageView& view, const cv::Mat& part) {
  const double largest = part.rows / 130.0;
  if (centres.size() < 2 || !view.CanShow(centres[0]) || !view.CanShow(centres[1])) return largest;
  const cv::Point2d apart = view(centres[1]) - view(centres[0]);
  return std::clamp(std::hypot(apart.x, apart.y) * DISC_RADIUS / 2.0 / 2.0, 1.5, std::max(1.5, largest));
}

bool IsObserved(size_t i, const std::vector<cv::Point2d>& centres, const std::vector<double>& weights,
                const ImageView& view) {
  return (i >= weights.size() || weights[i] > 0.0) && view.CanShow(centres[i]);
}

}  // namespace

SheetShape ShapeOfSheet(const std::vector<cv::Point2d>& centres, const cv::Size& grid) {
  const auto count = static_cast<size_t>(std::max(0, grid.area()));
  if (count < 4 || centres.size() != count) return {};
  if (!std::all_of(centres.begin(), centres.end(), IsFinite) || OnALine(centres)) return {};
  const std::vector<cv::Point2d> steps = StepsOf(grid);
  const SheetToImage toImage(steps, centres);
  if (!toImage.Usable()) return {};
  SheetShape shape;
  shape.outline = OutlineOf(grid, toImage);
  shape.discs.reserve(steps.size());
  for (const cv::Point2d& step : steps) shape.discs.push_back(DiscOf(step, toImage));
  return shape;
}

void DrawTarget(const std::vector<cv::Point2d>& centres, const cv::Size& grid, const ImageView& view,
                bool reached, cv::Mat& part) {
  const cv::Scalar& colour = reached ? palette::GREEN : palette::TARGET;
  const SheetShape shape = ShapeOfSheet(centres, grid);
  if (!shape.discs.empty()) return DrawWhole(shape, centres, view, colour, part);
  const double radius = std::max(4.0, part.rows / 60.0);
  for (const auto& [ink, thickness] : {std::pair(palette::DARK, 6), std::pair(colour, 2)}) {
    for (const cv::Point2d& centre : centres) {
      if (view.CanShow(centre)) Circle(view(centre), radius, thickness, ink, part);
    }
  }
}

void DrawFound(const std::vector<cv::Point2d>& centres, const std::vector<double>& weights,
               const ImageView& view, cv::Mat& part) {
  const double radius = RadiusOfMarks(centres, view, part);
  for (size_t i = 0; i < centres.size(); ++i) {
    if (!IsObserved(i, centres, weights, view)) continue;
    Circle(view(centres[i]), radius + 1.0, cv::FILLED, palette::DARK, part);
    Circle(view(centres[i]), radius, cv::FILLED, palette::FOUND, part);
  }
}

void MarkFirst(const std::vector<cv::Point2d>& centres, const std::vector<double>& weights,
               const ImageView& view, cv::Mat& part) {
  if (centres.empty() || !IsObserved(0, centres, weights, view)) return;
  const double radius = std::max(2.4 * RadiusOfMarks(centres, view, part), part.rows / 45.0);
  const cv::Point2d first = view(centres.front());
  Circle(first, radius + 1.5, cv::FILLED, palette::DARK, part);
  Circle(first, radius, cv::FILLED, palette::FOUND, part);
  WriteOne(first, 1.2 * radius, {palette::DARK, palette::FOUND}, part);
}

}  // namespace guided
