/// The sheet that a target is printed on: bent, out of proportion, with points beside their places.
#include "model/Sheet.h"

#include "model/Codes.h"

namespace velmora {

bool HasProportions(SheetLevel level) {
  return level == SheetLevel::Proportions || level == SheetLevel::BentProportions ||
         level == SheetLevel::FreePointsProportions;
}

bool HasBend(SheetLevel level) {
  return level >= SheetLevel::Bent;
}

bool HasFreePoints(SheetLevel level) {
  return level >= SheetLevel::FreePoints;
}

SheetShape SheetShapeOf(int number) {
  switch (number) {
    case SHEET_BENT:
      return SheetShape::Bent;
    case SHEET_FREE:
      return SheetShape::Free;
    case SHEET_AUTO:
      return SheetShape::Auto;
    default:
      return SheetShape::Flat;
  }
}

Eigen::VectorXd MovesOf(const SheetTerms& terms, const Eigen::VectorXd& values) {
  if (terms.Count() == 0 || values.size() == 0) return {};
  return terms.columns * values;
}

std::vector<cv::Point3d> Moved(const std::vector<cv::Point3d>& target, const Eigen::VectorXd& moves) {
  std::vector<cv::Point3d> moved = target;
  if (moves.size() == 0) return moved;
  for (size_t i = 0; i < moved.size(); ++i) {
    const auto at = static_cast<Eigen::Index>(3 * i);
    moved[i] += cv::Point3d(moves(at), moves(at + 1), moves(at + 2));
  }
  return moved;
}

Eigen::VectorXd PullsOf(const SheetTerms& terms, double variance) {
  // Nothing known is an infinite deviation, which pulls by nothing.
  return variance * terms.deviations.array().square().inverse();
}

}  // namespace velmora
