/// Views of two cameras with known lenses, in terms of how they stand to each other.
#include "solver/PairMeasurements.h"

#include <cmath>

namespace velmora::solver {

namespace {

constexpr int COLUMNS = 2 * POSE_PARAMETERS + 1;
using Row = std::array<double, COLUMNS>;

void Set(Row& row, size_t first, const cv::Vec3d& byTurn, const cv::Vec3d& byShift) {
  for (size_t i = 0; i < 3; ++i) {
    row[first + i] = byTurn[static_cast<int>(i)];
    row[first + 3 + i] = byShift[static_cast<int>(i)];
  }
}

void Add(const Row& row, ViewEquations& equations) {
  for (size_t i = 0; i < row.size(); ++i) {
    for (size_t j = i; j < row.size(); ++j) equations.products[i * MOST_COLUMNS + j] += row[i] * row[j];
  }
}

}  // namespace

PairMeasurements::PairMeasurements(const std::vector<View>& left, const std::vector<View>& right,
                                   const Lens& leftLens, const Lens& rightLens)
    : left_(left), right_(right), leftLens_(leftLens), rightLens_(rightLens) {
  for (const View& view : left) coordinates_ += 4.0 * static_cast<double>(view.object.size());
}

ViewEquations PairMeasurements::EquationsAt(size_t view, const Estimate& estimate) const {
  const Pose& pose = estimate.poses[view];
  const cv::Matx33d back = estimate.right.R.t();
  ViewEquations equations;
  Coordinate u;
  Coordinate v;
  for (size_t k = 0; k < left_[view].object.size(); ++k) {
    const cv::Point3d& point = left_[view].object[k];
    const cv::Vec3d turned = pose.R * cv::Vec3d(point.x, point.y, point.z);
    const auto leftRow = [&](const Coordinate& coordinate, double seen) {
      Row row{};
      Set(row, POSE_PARAMETERS, turned.cross(coordinate.byPoint), coordinate.byPoint);
      row.back() = coordinate.value - seen;
      Add(row, equations);
    };
    if (!leftLens_.Differentiate(turned + pose.t, u, v)) return equations;
    leftRow(u, left_[view].image[k].x);
    leftRow(v, left_[view].image[k].y);

    const cv::Vec3d turnedRight = estimate.right.R * (turned + pose.t);
    const auto rightRow = [&](const Coordinate& coordinate, double seen) {
      Row row{};
      const cv::Vec3d byLeft = back * coordinate.byPoint;
      Set(row, 0, turnedRight.cross(coordinate.byPoint), coordinate.byPoint);
      Set(row, POSE_PARAMETERS, turned.cross(byLeft), byLeft);
      row.back() = coordinate.value - seen;
      Add(row, equations);
    };
    if (!rightLens_.Differentiate(turnedRight + estimate.right.t, u, v)) return equations;
    rightRow(u, right_[view].image[k].x);
    rightRow(v, right_[view].image[k].y);
  }
  equations.squares = equations.At(COLUMNS - 1, COLUMNS - 1);
  equations.usable = std::isfinite(equations.squares);
  return equations;
}

void PairMeasurements::MoveShared(Estimate& estimate, const Step& step) const {
  estimate.right = Moved(estimate.right, step.data());
}

}  // namespace velmora::solver
