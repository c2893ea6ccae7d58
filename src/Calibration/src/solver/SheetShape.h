/// The shapes that a sheet can be taken to have.
#pragma once

#include <Eigen/Core>
#include <opencv2/core.hpp>
#include <vector>

namespace velmora::solver {

/// Each level has the freedom of those above it, but for Bent, which keeps its proportions.
enum class SheetLevel {
  Flat,
  Proportions,           ///< longer along its columns, skewed
  Bent,                  ///< heights x^2, x y, y^2
  BentProportions,       ///< both
  FreePoints,            ///< every point beside its place, smoothly bent
  FreePointsProportions  ///< and out of proportion
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

  Eigen::Index Count() const { return columns.cols(); }
};

/// Of a plane target of at least six points that do not lie on a conic section, about the middle of them.
///
/// Bends and proportions are in the unit of the target: what a point at half the target's longer side is moved
/// by. Free heights are a Gaussian process with a deviation of 2 % of half that side, correlated over half of
/// it, and 0.03 % on their own; free places in the plane have 0.05 %. Proportions have 1 %.
SheetTerms TermsOf(const std::vector<cv::Point3d>& target, SheetLevel level);

/// The three heights of a bend alone, which a view has of its own.
SheetTerms OwnBendOf(const std::vector<cv::Point3d>& target);

/// The target with its points where the terms' values put them.
std::vector<cv::Point3d> Shaped(const std::vector<cv::Point3d>& target, const SheetTerms& terms,
                                const Eigen::VectorXd& values);

}  // namespace velmora::solver
