/// The sheet that a target is printed on: bent, out of proportion, with points beside their places.
#pragma once

#include <Eigen/Core>
#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// The shapes that a sheet can be taken to have. Each has the freedom of those above it, but for Bent, which
/// keeps its proportions.
enum class SheetLevel {
  Flat,
  Proportions,           ///< longer along its columns, skewed
  Bent,                  ///< heights x^2, x y, y^2
  BentProportions,       ///< both
  FreePoints,            ///< every point beside its place, smoothly bent
  FreePointsProportions  ///< and out of proportion
};

bool HasProportions(SheetLevel level);
bool HasBend(SheetLevel level);
bool HasFreePoints(SheetLevel level);

/// Which of them a computation may take.
enum class SheetShape {
  Flat,
  Bent,  ///< the best of those that are bent but have their points in place
  Free,  ///< the best of those with free points
  Auto   ///< the best of all
};

/// That of a number of Codes.h.
SheetShape SheetShapeOf(int number);

/// What a computation goes by, as to the sheet's shape.
struct SheetAssumption {
  SheetAssumption() = default;
  SheetAssumption(SheetShape shape) : allowed(shape) {}  // NOLINT(google-explicit-constructor): it is one

  SheetShape allowed = SheetShape::Flat;
  /// Where the points of the target are, as measured before, in its frame and order: nothing of the shape is
  /// estimated then, but for bends of single views. Empty: `allowed` counts.
  std::vector<cv::Point3d> known;

  bool IsFlat() const { return allowed == SheetShape::Flat && known.empty(); }
};

/// How far the points of a target lie beside their places: a sum of terms, each times a column. Nothing is in
/// it that a shift, a turn or another size of the whole target would do, so that poses and shape do not make
/// up for each other. Of a bend that means heights about the plane that fits them best.
struct SheetTerms {
  /// Three rows for each point, its x, y and z; a column for each term, in the unit of the target for a term
  /// of one.
  Eigen::MatrixXd columns;
  /// What is known of the terms beforehand: each is zero within this standard deviation, infinity where
  /// nothing is.
  Eigen::VectorXd deviations;
  /// Terms that move points freely within the plane. They have one deviation, of which little is known
  /// beforehand: it is that of the print.
  Eigen::Index firstFreePlace = 0;
  Eigen::Index freePlaces = 0;

  Eigen::Index Count() const { return columns.cols(); }
};

/// What a computation takes a sheet for. The points of a view's observations are always where the sheet's
/// values and the view's own bend put them.
struct Sheet {
  SheetLevel level = SheetLevel::Flat;
  /// As it was meant to be, flat, or as it is known to be; empty: the points stay as they are.
  std::vector<cv::Point3d> target;
  SheetTerms terms;        ///< estimated together, from all views
  Eigen::VectorXd values;  ///< of the terms
  SheetTerms ownBend;      ///< of each view beside the common shape; no columns: views have none
  double variance = 0.0;   ///< of the noise, by which what is known beforehand weighs
  /// For how many numbers terms and bends count: what is known beforehand takes off some.
  double counted = 0.0;

  bool IsFlat() const { return target.empty(); }
  /// Whether the shape was known, so that it has no terms.
  bool IsKnown() const { return level == SheetLevel::Flat && !target.empty(); }
  bool HasOwnBends() const { return ownBend.Count() > 0; }
};

/// By how much the terms move the points: x, y and z of each in turn. No values at all stand for zeros.
Eigen::VectorXd MovesOf(const SheetTerms& terms, const Eigen::VectorXd& values);

/// The points of the target after such moves.
std::vector<cv::Point3d> Moved(const std::vector<cv::Point3d>& target, const Eigen::VectorXd& moves);

/// How strongly each of the terms is held near zero, where residuals count as they are.
Eigen::VectorXd PullsOf(const SheetTerms& terms, double variance);

}  // namespace velmora
