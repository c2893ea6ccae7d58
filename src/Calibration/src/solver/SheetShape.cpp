/// The shapes that a sheet can be taken to have.
#include "solver/SheetShape.h"

#include <Eigen/Eigenvalues>
#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora::solver {

namespace {

using Eigen::Index;

constexpr double SMOOTH_HEIGHTS = 0.02;  // in half the longer side
constexpr double OWN_HEIGHTS = 0.0003;
constexpr double OWN_PLACES = 0.0005;
constexpr double KNOWN_PROPORTIONS = 0.01;

/// The target about its middle, in half its longer side.
struct Normalised {
  Eigen::VectorXd x;
  Eigen::VectorXd y;
  double half = 0.0;
};

Normalised NormalisedFrom(const std::vector<cv::Point3d>& target) {
  const auto count = static_cast<Index>(target.size());
  Normalised sheet{Eigen::VectorXd(count), Eigen::VectorXd(count), 0.0};
  for (Index i = 0; i < count; ++i) {
    sheet.x(i) = target[static_cast<size_t>(i)].x;
    sheet.y(i) = target[static_cast<size_t>(i)].y;
  }
  sheet.half =
      0.5 * std::max(sheet.x.maxCoeff() - sheet.x.minCoeff(), sheet.y.maxCoeff() - sheet.y.minCoeff());
  sheet.x = (sheet.x.array() - sheet.x.mean()) / sheet.half;
  sheet.y = (sheet.y.array() - sheet.y.mean()) / sheet.half;
  return sheet;
}

/// Without what the columns of `taken` span.
Eigen::MatrixXd Without(const Eigen::MatrixXd& taken, const Eigen::MatrixXd& columns) {
  const Eigen::MatrixXd basis = Eigen::HouseholderQR<Eigen::MatrixXd>(taken).householderQ() *
                                Eigen::MatrixXd::Identity(taken.rows(), taken.cols());
  return columns - basis * (basis.transpose() * columns);
}

/// An orthonormal basis of what `taken` does not span.
Eigen::MatrixXd RestOf(const Eigen::MatrixXd& taken) {
  const Eigen::MatrixXd whole = Eigen::HouseholderQR<Eigen::MatrixXd>(taken).householderQ();
  return whole.rightCols(taken.rows() - taken.cols());
}

/// A plane's heights.
Eigen::MatrixXd PlaneOf(const Normalised& sheet) {
  Eigen::MatrixXd plane(sheet.x.size(), 3);
  plane << Eigen::VectorXd::Ones(sheet.x.size()), sheet.x, sheet.y;
  return plane;
}

Eigen::MatrixXd BendOf(const Normalised& sheet) {
  Eigen::MatrixXd heights(sheet.x.size(), 3);
  heights << sheet.x.cwiseProduct(sheet.x), sheet.x.cwiseProduct(sheet.y), sheet.y.cwiseProduct(sheet.y);
  return Without(PlaneOf(sheet), heights);
}

/// Moves within the plane, x and y of each point in turn: what shifts, a turn and another size do.
Eigen::MatrixXd MovesOf(const Normalised& sheet) {
  Eigen::MatrixXd moves = Eigen::MatrixXd::Zero(2 * sheet.x.size(), 4);
  for (Index i = 0; i < sheet.x.size(); ++i) {
    moves.row(2 * i) << 1.0, 0.0, -sheet.y(i), sheet.x(i);
    moves.row(2 * i + 1) << 0.0, 1.0, sheet.x(i), sheet.y(i);
  }
  return moves;
}

/// Longer along the columns; skewed.
Eigen::MatrixXd ProportionsOf(const Normalised& sheet) {
  Eigen::MatrixXd places = Eigen::MatrixXd::Zero(2 * sheet.x.size(), 2);
  for (Index i = 0; i < sheet.x.size(); ++i) {
    places(2 * i + 1, 0) = sheet.y(i);
    places(2 * i, 1) = sheet.y(i);
  }
  return Without(MovesOf(sheet), places);
}

/// Heights that are as smooth as those of sheets, each term within a deviation of one.
Eigen::MatrixXd SmoothHeightsOf(const Normalised& sheet) {
  const Index count = sheet.x.size();
  Eigen::MatrixXd covariance(count, count);
  for (Index i = 0; i < count; ++i) {
    for (Index k = 0; k < count; ++k) {
      const double away2 = std::pow(sheet.x(i) - sheet.x(k), 2) + std::pow(sheet.y(i) - sheet.y(k), 2);
      covariance(i, k) = SMOOTH_HEIGHTS * SMOOTH_HEIGHTS * std::exp(-0.5 * away2);
    }
    covariance(i, i) += OWN_HEIGHTS * OWN_HEIGHTS;
  }
  const Eigen::MatrixXd rest = RestOf(PlaneOf(sheet));
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(rest.transpose() * covariance * rest);
  return rest * eigen.eigenvectors() * eigen.eigenvalues().cwiseMax(0.0).cwiseSqrt().asDiagonal();
}

/// Places that nothing else stands for. Points that are each beside their place are by chance out of
/// proportion together, too: where proportions have no terms of their own, these places stand for that.
Eigen::MatrixXd FreePlacesOf(const Normalised& sheet, bool withProportions) {
  const Eigen::MatrixXd moves = MovesOf(sheet);
  if (withProportions) return RestOf(moves);
  Eigen::MatrixXd taken(moves.rows(), moves.cols() + 2);
  taken << moves, ProportionsOf(sheet);
  return RestOf(taken);
}

/// Puts terms together.
class Collector {
 public:
  explicit Collector(const Normalised& sheet) : points_(sheet.x.size()), half_(sheet.half) {
    terms_.columns.resize(3 * points_, 0);
  }

  /// `deviation` in half the longer side, of terms that are in it too.
  void AddHeights(const Eigen::MatrixXd& heights, double deviation) {
    Eigen::MatrixXd columns = Eigen::MatrixXd::Zero(3 * points_, heights.cols());
    for (Index i = 0; i < points_; ++i) columns.row(3 * i + 2) = heights.row(i);
    Add(columns, deviation);
  }

  void AddPlaces(const Eigen::MatrixXd& places, double deviation) {
    Eigen::MatrixXd columns = Eigen::MatrixXd::Zero(3 * points_, places.cols());
    for (Index i = 0; i < points_; ++i) columns.middleRows(3 * i, 2) = places.middleRows(2 * i, 2);
    Add(columns, deviation);
  }

  void AddFreePlaces(const Eigen::MatrixXd& places, double deviation) {
    terms_.firstFreePlace = terms_.Count();
    terms_.freePlaces = places.cols();
    AddPlaces(places, deviation);
  }

  SheetTerms Terms() { return std::move(terms_); }

 private:
  void Add(const Eigen::MatrixXd& columns, double deviation) {
    const Index before = terms_.columns.cols();
    terms_.columns.conservativeResize(Eigen::NoChange, before + columns.cols());
    terms_.columns.rightCols(columns.cols()) = columns;
    terms_.deviations.conservativeResize(before + columns.cols());
    terms_.deviations.tail(columns.cols()).setConstant(deviation * half_);
  }

  const Index points_;
  const double half_;
  SheetTerms terms_;
};

}  // namespace

SheetTerms TermsOf(const std::vector<cv::Point3d>& target, SheetLevel level) {
  const Normalised sheet = NormalisedFrom(target);
  const double unknown = std::numeric_limits<double>::infinity();
  Collector terms(sheet);
  if (level == SheetLevel::Bent || level == SheetLevel::BentProportions)
    terms.AddHeights(BendOf(sheet), unknown);
  if (level == SheetLevel::FreePoints || level == SheetLevel::FreePointsProportions) {
    terms.AddHeights(SmoothHeightsOf(sheet), 1.0);
    terms.AddFreePlaces(FreePlacesOf(sheet, level == SheetLevel::FreePoints), OWN_PLACES);
  }
  if (level == SheetLevel::Proportions || level == SheetLevel::BentProportions ||
      level == SheetLevel::FreePointsProportions) {
    terms.AddPlaces(ProportionsOf(sheet), KNOWN_PROPORTIONS);
  }
  return terms.Terms();
}

SheetTerms OwnBendOf(const std::vector<cv::Point3d>& target) {
  const Normalised sheet = NormalisedFrom(target);
  Collector terms(sheet);
  terms.AddHeights(BendOf(sheet), std::numeric_limits<double>::infinity());
  return terms.Terms();
}

void PutToShape(const Sheet& sheet, std::vector<TargetView>& views) {
  const std::vector<cv::Point3d> common = Moved(sheet.target, MovesOf(sheet.terms, sheet.values));
  for (TargetView& view : views) PutToShape(sheet, common, view);
}

void PutToShape(const Sheet& sheet, const std::vector<cv::Point3d>& common, TargetView& view) {
  const Eigen::Map<const Eigen::Vector3d> bend(view.bend.val);
  const std::vector<cv::Point3d> points =
      sheet.HasOwnBends() ? Moved(common, MovesOf(sheet.ownBend, bend)) : common;
  for (Observation& observation : view.observations) {
    for (size_t k = 0; k < observation.object.size(); ++k)
      observation.object[k] = points[observation.Place(k)];
  }
}

}  // namespace velmora::solver
