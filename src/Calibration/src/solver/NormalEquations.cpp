/// The normal equations of a camera's computation, and their reduction to the lens.
#include "solver/NormalEquations.h"

#include <algorithm>
#include <cmath>

#include "solver/Cholesky.h"
#include "solver/Lanes.h"
#include "solver/ProjectionFormulas.h"

namespace velmora::solver {

namespace {

/// The Jacobian of some of a view's points, with the residuals as its last column. Points are innermost: they
/// are worked on several at once.
template <size_t FREE>
class Jacobian {
 public:
  static constexpr size_t COLUMNS = FREE + POSE_PARAMETERS + 1;
  static constexpr size_t MOST_POINTS = 64;

  Jacobian(const View& view, const Projection& projection, const Pose& pose)
      : view_(view), formulas_(projection.Numbers()), pose_(pose) {}

  /// Takes the points from `first` on, at most MOST_POINTS. False when one is not in front of the camera.
  bool Fill(size_t first) {
    const size_t end = std::min(first + MOST_POINTS, view_.object.size());
    rows_ = 0;
    for (size_t k = first; k < end; k += LANES) {
      if (!FillRows(k, end)) return false;
    }
    return true;
  }

  void AddProducts(ViewEquations& equations) const {
    for (size_t i = 0; i < COLUMNS; i += 2) {
      for (size_t j = i - i % 4; j < COLUMNS; j += 4) {
        AddTileAt(i, j, equations);
      }
    }
  }

 private:
  using Column = std::array<Lanes, 2 * MOST_POINTS / LANES>;

  /// The two rows of each of the points from k on; past the end the last one again, without weight.
  bool FillRows(size_t k, size_t end) {
    Lanes turned[3] = {};
    Lanes seen[2] = {};
    Lanes weight{};
    for (size_t lane = 0; lane < LANES; ++lane) {
      const size_t point = std::min(k + lane, end - 1);
      const cv::Point3d& at = view_.object[point];
      for (int i = 0; i < 3; ++i) {
        turned[i][lane] = pose_.R(i, 0) * at.x + pose_.R(i, 1) * at.y + pose_.R(i, 2) * at.z;
      }
      if (!(turned[2][lane] + pose_.t[2] > 0.0)) return false;
      seen[0][lane] = view_.image[point].x;
      seen[1][lane] = view_.image[point].y;
      const double own = view_.weights.empty() ? 1.0 : std::sqrt(view_.weights[point]);
      weight[lane] = k + lane < end ? own : 0.0;
    }
    const Lanes nearness = 1.0 / (turned[2] + pose_.t[2]);
    formulas_.Differentiate((turned[0] + pose_.t[0]) * nearness, (turned[1] + pose_.t[1]) * nearness,
                            nearness, u_, v_);
    FillRow(u_, turned, seen[0], weight);
    FillRow(v_, turned, seen[1], weight);
    return true;
  }

  void FillRow(const CoordinateOf<Lanes>& coordinate, const Lanes* turned, const Lanes& seen,
               const Lanes& weight) {
    const auto& byPoint = coordinate.byPoint;
    for (size_t i = 0; i < FREE; ++i) columns_[i][rows_] = weight * coordinate.byLens[i];
    for (size_t i = 0; i < 3; ++i) {
      const size_t next = (i + 1) % 3;
      const size_t last = (i + 2) % 3;
      columns_[FREE + i][rows_] = weight * (turned[next] * byPoint[last] - turned[last] * byPoint[next]);
      columns_[FREE + 3 + i][rows_] = weight * byPoint[i];
    }
    columns_[COLUMNS - 1][rows_] = weight * (coordinate.value - seen);
    ++rows_;
  }

  /// Tiles that fit into registers; on the diagonal they reach into the other triangle.
  void AddTileAt(size_t row, size_t column, ViewEquations& equations) const {
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
  void AddTile(size_t row, size_t column, ViewEquations& equations) const {
    Lanes sums[HEIGHT][WIDTH] = {};
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

  const View& view_;
  const ProjectionFormulas<Lanes> formulas_;
  const Pose& pose_;
  CoordinateOf<Lanes> u_, v_;
  std::array<Column, COLUMNS> columns_;  ///< first `rows_` of each
  size_t rows_ = 0;
};

/// The number of columns is known when compiled: that doubles the speed of the inner loop.
template <size_t FREE>
ViewEquations Accumulate(const View& view, const Lens& lens, const Pose& pose) {
  const Projection projection(lens);
  ViewEquations equations;
  Jacobian<FREE> jacobian(view, projection, pose);
  for (size_t k = 0; k < view.object.size(); k += Jacobian<FREE>::MOST_POINTS) {
    if (!jacobian.Fill(k)) return equations;
    jacobian.AddProducts(equations);
  }
  constexpr int RESIDUAL = static_cast<int>(FREE) + POSE_PARAMETERS;
  equations.squares = equations.At(RESIDUAL, RESIDUAL);
  equations.usable = std::isfinite(equations.squares);
  return equations;
}

/// The pose's block, its diagonal raised by a share of itself.
bool DecomposePose(const ViewEquations& equations, int free, double damping,
                   Cholesky<POSE_PARAMETERS>& cholesky) {
  std::array<double, static_cast<size_t>(POSE_PARAMETERS) * POSE_PARAMETERS> block{};
  for (int i = 0; i < POSE_PARAMETERS; ++i) {
    for (int j = 0; j <= i; ++j) {
      block[static_cast<size_t>(i * POSE_PARAMETERS + j)] =
          equations.At(free + j, free + i) * (i == j ? 1.0 + damping : 1.0);
    }
  }
  return cholesky.Decompose(block.data(), POSE_PARAMETERS, POSE_PARAMETERS);
}

}  // namespace

ViewEquations EquationsOf(const View& view, const Lens& lens, const Pose& pose) {
  switch (lens.free) {
    case CLASSIC_PARAMETERS:
      return Accumulate<CLASSIC_PARAMETERS>(view, lens, pose);
    case RATIONAL_PARAMETERS:
      return Accumulate<RATIONAL_PARAMETERS>(view, lens, pose);
    default:
      return Accumulate<FULL_PARAMETERS>(view, lens, pose);
  }
}

ViewEquations PoseEquationsOf(const View& view, const Lens& lens, const Pose& pose) {
  return Accumulate<0>(view, lens, pose);
}

ReducedView Reduce(const ViewEquations& equations, int free, double damping) {
  ReducedView reduced;
  Cholesky<POSE_PARAMETERS> cholesky;
  if (!equations.usable || !DecomposePose(equations, free, damping, cholesky)) return reduced;
  const int residual = free + POSE_PARAMETERS;
  // The columns of L^-1 B, the last one L^-1 c.
  std::array<PoseStep, FULL_PARAMETERS + 1> eliminated{};
  for (int j = 0; j <= free; ++j) {
    PoseStep& column = eliminated[static_cast<size_t>(j)];
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      column[static_cast<size_t>(i)] =
          j < free ? equations.At(j, free + i) : equations.At(free + i, residual);
    }
    cholesky.Forward(column.data());
  }
  const auto product = [&](int a, int b) {
    double sum = 0.0;
    for (size_t k = 0; k < POSE_PARAMETERS; ++k) {
      sum += eliminated[static_cast<size_t>(a)][k] * eliminated[static_cast<size_t>(b)][k];
    }
    return sum;
  };
  for (int i = 0; i < free; ++i) {
    for (int j = i; j < free; ++j) {
      const double value = equations.At(i, j) - product(i, j);
      reduced.matrix[static_cast<size_t>(i * FULL_PARAMETERS + j)] = value;
      reduced.matrix[static_cast<size_t>(j * FULL_PARAMETERS + i)] = value;
    }
    reduced.gradient[static_cast<size_t>(i)] = equations.At(i, residual) - product(i, free);
  }
  reduced.solvable = true;
  return reduced;
}

PoseStep PoseStepFor(const ViewEquations& equations, int free, double damping, const Step& lensStep) {
  PoseStep step{};
  Cholesky<POSE_PARAMETERS> cholesky;
  if (!DecomposePose(equations, free, damping, cholesky)) return step;
  for (int i = 0; i < POSE_PARAMETERS; ++i) {
    double sum = equations.At(free + i, free + POSE_PARAMETERS);
    for (int j = 0; j < free; ++j) sum += equations.At(j, free + i) * lensStep[static_cast<size_t>(j)];
    step[static_cast<size_t>(i)] = -sum;
  }
  cholesky.Solve(step.data());
  return step;
}

}  // namespace velmora::solver
