/// The normal equations of what one camera saw in one view.
#include "solver/ObservationEquations.h"

#include <Eigen/Core>
#include <algorithm>
#include <cmath>

#include "solver/FisheyeProjection.h"
#include "solver/ProjectionFormulas.h"
#include "solver/SimdPack.h"

namespace velmora::solver {

namespace {

/// The Jacobian of some of a view's points, with the residuals as its last column. Points are innermost: they
/// are worked on several at once.
template <size_t ESTIMATED>
class Jacobian {
 public:
  static constexpr size_t COLUMNS = ESTIMATED + POSE_PARAMETERS + 1;
  static constexpr size_t MOST_POINTS = 64;

  Jacobian(const Observation& observation, const Projection& projection, const RigidTransform& pose)
      : observation_(observation), formulas_(projection.Numbers()), pose_(pose) {}

  /// Takes the points from `first` on, at most MOST_POINTS. False when one is not in front of the camera.
  bool Fill(size_t first) {
    const size_t end = std::min(first + MOST_POINTS, observation_.object.size());
    rows_ = 0;
    for (size_t k = first; k < end; k += LANES) {
      if (!FillRows(k, end)) return false;
    }
    return true;
  }

  /// Adds the squared residuals of the points from `first` on, which were taken, without their deviations.
  void AddPixelCost(size_t first, ObservationEquations& equations) const {
    const size_t end = std::min(first + MOST_POINTS, observation_.object.size());
    const Column& residuals = columns_[COLUMNS - 1];
    for (size_t k = first; k < end; ++k) {
      const size_t row = 2 * ((k - first) / LANES);
      const size_t lane = (k - first) % LANES;
      for (size_t i = 0; i < 2; ++i) {
        const double residual = residuals[row + i][lane] * observation_.deviations[k];
        equations.pixelCost += residual * residual;
      }
    }
  }

  void AddProducts(ObservationEquations& equations) const {
    for (size_t i = 0; i < COLUMNS; i += 2) {
      for (size_t j = i - i % 4; j < COLUMNS; j += 4) {
        AddTileAt(i, j, equations);
      }
    }
  }

 private:
  using Column = std::array<SimdPack, 2 * MOST_POINTS / LANES>;

  /// The two rows of each of the points from k on; past the end the last one again, without weight.
  bool FillRows(size_t k, size_t end) {
    SimdPack turned[3] = {};
    SimdPack observed[2] = {};
    SimdPack weight{};
    for (size_t lane = 0; lane < LANES; ++lane) {
      const size_t point = std::min(k + lane, end - 1);
      const cv::Point3d& at = observation_.object[point];
      for (int i = 0; i < 3; ++i) {
        turned[i][lane] = pose_.R(i, 0) * at.x + pose_.R(i, 1) * at.y + pose_.R(i, 2) * at.z;
      }
      if (!(turned[2][lane] + pose_.t[2] > 0.0)) return false;
      observed[0][lane] = observation_.image[point].x;
      observed[1][lane] = observation_.image[point].y;
      const double own = observation_.weights.empty() ? 1.0 : std::sqrt(observation_.weights[point]);
      weight[lane] = k + lane < end ? own / observation_.Deviation(point) : 0.0;
    }
    const SimdPack nearness = 1.0 / (turned[2] + pose_.t[2]);
    formulas_.Differentiate((turned[0] + pose_.t[0]) * nearness, (turned[1] + pose_.t[1]) * nearness,
                            nearness, u_, v_);
    FillRow(u_, turned, observed[0], weight);
    FillRow(v_, turned, observed[1], weight);
    return true;
  }

  void FillRow(const CoordinateOf<SimdPack>& coordinate, const SimdPack* turned, const SimdPack& observed,
               const SimdPack& weight) {
    const auto& byPoint = coordinate.byPoint;
    for (size_t i = 0; i < ESTIMATED; ++i) columns_[i][rows_] = weight * coordinate.byIntrinsics[i];
    for (size_t i = 0; i < 3; ++i) {
      const size_t next = (i + 1) % 3;
      const size_t last = (i + 2) % 3;
      columns_[ESTIMATED + i][rows_] = weight * (turned[next] * byPoint[last] - turned[last] * byPoint[next]);
      columns_[ESTIMATED + 3 + i][rows_] = weight * byPoint[i];
    }
    columns_[COLUMNS - 1][rows_] = weight * (coordinate.value - observed);
    ++rows_;
  }

  /// Tiles that fit into registers; on the diagonal they reach into the other triangle.
  void AddTileAt(size_t row, size_t column, ObservationEquations& equations) const {
    constexpr size_t LAST_WIDTH = (COLUMNS - 1) % 4 + 1;
    if constexpr (COLUMNS % 2 == 1) {
      if (row + 1 == COLUMNS) {
        AddTile<1, LAST_WIDTH>(row, column, equations);
        return;
      }
    }
    if (column + LAST_WIDTH == COLUMNS) {  // NOLINT(bugprone-branch-clone): not for other widths
      AddTile<2, LAST_WIDTH>(row, column, equations);
    } else {
      AddTile<2, 4>(row, column, equations);
    }
  }

  template <size_t HEIGHT, size_t WIDTH>
  void AddTile(size_t row, size_t column, ObservationEquations& equations) const {
    SimdPack sums[HEIGHT][WIDTH] = {};
    for (size_t k = 0; k < rows_; ++k) {
      for (size_t i = 0; i < HEIGHT; ++i) {
        for (size_t j = 0; j < WIDTH; ++j) sums[i][j] += columns_[row + i][k] * columns_[column + j][k];
      }
    }
    for (size_t i = 0; i < HEIGHT; ++i) {
      for (size_t j = 0; j < WIDTH; ++j) {
        double& product = equations.products[(row + i) * MOST_COLUMNS + column + j];
        for (size_t lane = 0; lane < LANES; ++lane) product += sums[i][j][lane];
      }
    }
  }

  const Observation& observation_;
  const ProjectionFormulas<SimdPack> formulas_;
  const RigidTransform& pose_;
  CoordinateOf<SimdPack> u_, v_;
  std::array<Column, COLUMNS> columns_;  ///< first `rows_` of each
  size_t rows_ = 0;
};

/// The number of columns is known when compiled: that doubles the speed of the inner loop.
template <size_t ESTIMATED>
ObservationEquations Accumulate(const Observation& observation, const Intrinsics& intrinsics,
                                const RigidTransform& pose) {
  const Projection projection(intrinsics);
  ObservationEquations equations;
  Jacobian<ESTIMATED> jacobian(observation, projection, pose);
  for (size_t k = 0; k < observation.object.size(); k += Jacobian<ESTIMATED>::MOST_POINTS) {
    if (!jacobian.Fill(k)) return equations;
    jacobian.AddProducts(equations);
    if (!observation.deviations.empty()) jacobian.AddPixelCost(k, equations);
  }
  constexpr int RESIDUAL = static_cast<int>(ESTIMATED) + POSE_PARAMETERS;
  equations.cost = equations.At(RESIDUAL, RESIDUAL);
  if (observation.deviations.empty()) equations.pixelCost = equations.cost;
  equations.usable = std::isfinite(equations.cost);
  return equations;
}

/// Of a fisheye, point after point; as many of its intrinsics are estimated.
ObservationEquations AccumulateFisheye(const Observation& observation, const Intrinsics& intrinsics,
                                       const RigidTransform& pose, int estimated) {
  using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
  const FisheyeProjection projection(intrinsics);
  const Eigen::Index residual = estimated + POSE_PARAMETERS;
  RowMatrix jacobian(2 * static_cast<Eigen::Index>(observation.object.size()), residual + 1);
  ObservationEquations equations;
  for (size_t k = 0; k < observation.object.size(); ++k) {
    const cv::Vec3d turned = pose.R * cv::Vec3d(cv::Point3d(observation.object[k]));
    Coordinate coordinates[2];
    if (!projection.Differentiate(turned + pose.t, coordinates[0], coordinates[1])) return equations;
    const double observed[2] = {observation.image[k].x, observation.image[k].y};
    const double weight = std::sqrt(observation.Weight(k));
    for (int axis = 0; axis < 2; ++axis) {
      const Coordinate& coordinate = coordinates[axis];
      auto row = jacobian.row(2 * static_cast<Eigen::Index>(k) + axis);
      for (int i = 0; i < estimated; ++i) row(i) = coordinate.byIntrinsics[static_cast<size_t>(i)];
      const cv::Vec3d byRotation = turned.cross(coordinate.byPoint);
      for (int i = 0; i < 3; ++i) {
        row(estimated + i) = byRotation[i];
        row(estimated + 3 + i) = coordinate.byPoint[i];
      }
      row(residual) = coordinate.value - observed[axis];
      equations.pixelCost += std::pow(row(residual) * weight * observation.Deviation(k), 2);
      row *= weight;
    }
  }
  Eigen::Map<Eigen::Matrix<double, MOST_COLUMNS, MOST_COLUMNS, Eigen::RowMajor>> products(
      equations.products.data());
  products.topLeftCorner(residual + 1, residual + 1) = jacobian.transpose() * jacobian;
  equations.cost = equations.At(static_cast<int>(residual), static_cast<int>(residual));
  equations.usable = std::isfinite(equations.cost);
  return equations;
}

}  // namespace

ObservationEquations EquationsOf(const Observation& observation, const Intrinsics& intrinsics,
                                 const RigidTransform& pose) {
  if (intrinsics.IsFisheye()) return AccumulateFisheye(observation, intrinsics, pose, intrinsics.estimated);
  switch (intrinsics.estimated) {
    case CLASSIC_PARAMETERS:
      return Accumulate<CLASSIC_PARAMETERS>(observation, intrinsics, pose);
    case RATIONAL_PARAMETERS:
      return Accumulate<RATIONAL_PARAMETERS>(observation, intrinsics, pose);
    default:
      return Accumulate<FULL_PARAMETERS>(observation, intrinsics, pose);
  }
}

ObservationEquations PoseEquationsOf(const Observation& observation, const Intrinsics& intrinsics,
                                     const RigidTransform& pose) {
  if (intrinsics.IsFisheye()) return AccumulateFisheye(observation, intrinsics, pose, 0);
  return Accumulate<0>(observation, intrinsics, pose);
}

}  // namespace velmora::solver
