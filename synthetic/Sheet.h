/// Geometry of the printed sheet: paper outline and the discs of the asymmetric circles grid.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <vector>

namespace world {

/// What a point of the sheet's plane shows.
enum class Surface { Background, Paper, Ink };

/// A point's surface, and a distance (in steps) within which no other surface begins.
struct SurfaceSample {
  Surface surface = Surface::Background;
  double clearance = 0.0;
};

/// A printed sheet with columns x rows discs. Three frames describe it:
///  - drawing: 150 dpi units, x to the right, y down, (0, 0) the top-left corner of the paper; the default
///  sheet
///    is A4 landscape, 1753 x 1239 units, with the bottom-left corner cut off;
///  - steps: the grid frame in multiples of the distance between neighbouring rows; disc j of row i is at
///    (2j + i mod 2, i), X along the drawing's y and Y against its x;
///  - grid: steps times the unit, in metres, z = 0 on the paper and growing away from whoever looks at the
///  print.
/// Other sizes of the grid have the margins of the default sheet around them.
class Sheet {
 public:
  /// The distance between neighbouring rows, in drawing units.
  static constexpr double STEP = 118.11;
  /// Radius of the discs, in steps.
  static constexpr double DISC_RADIUS = 0.4;

  explicit Sheet(cv::Size grid = cv::Size(4, 11), double unit = 0.02);

  /// Columns (discs per row) and rows.
  cv::Size Grid() const { return grid_; }
  /// The distance between neighbouring rows, metres.
  double Unit() const { return unit_; }
  int Count() const { return grid_.area(); }

  /// Width and height of the paper, drawing units.
  cv::Size2d PaperSize() const;
  /// The paper's five corners, drawing units, clockwise as drawn.
  std::array<cv::Point2d, 5> Outline() const;
  /// Centres of the discs, drawing units, row by row.
  std::vector<cv::Point2d> DrawingCentres() const;

  cv::Point2d StepsFromDrawing(const cv::Point2d& drawing) const;
  cv::Point2d DrawingFromSteps(const cv::Point2d& steps) const;

  /// Centres of the discs, grid frame, row by row.
  std::vector<cv::Point3d> GridPoints() const;
  /// The middle of the grid points' bounding box, grid frame.
  cv::Point3d GridMiddle() const;
  /// Points on the rims of all discs, `perDisc` each, grid frame.
  std::vector<cv::Point3d> RimPoints(int perDisc) const;
  /// The paper's five corners, grid frame.
  std::vector<cv::Point3d> OutlinePoints() const;

  /// What the sheet's plane shows at a point, in steps.
  Surface At(const cv::Point2d& steps) const;
  /// What the sheet's plane shows at a point, with the distance to other surfaces.
  SurfaceSample Sample(const cv::Point2d& steps) const;

  /// The flat sheet as an 8-bit grey image at 150 dpi, paper white, ink black, the cut corner `background`.
  cv::Mat Draw(int background = 128) const;

 private:
  struct Edge {
    double x, y, offset;
  };

  double OutlineDistance(const cv::Point2d& steps) const;
  /// The squared distance to the centre of the disc whose cell of the lattice holds the point; none:
  /// negative.
  double SquareFromDisc(const cv::Point2d& steps) const;

  cv::Size grid_;
  double unit_;
  std::array<Edge, 5> edges_;
};

}  // namespace world
