/// The normal equations of a camera's computation, and their reduction to the lens.
#include "solver/NormalEquations.h"

#include <cmath>

#include "solver/Cholesky.h"

namespace sparse {

namespace {

template <int FREE>
void FillRow(const Coordinate& coordinate, const cv::Vec3d& turned, double residual, double weight,
             double* row) {
  for (int i = 0; i < FREE; ++i) row[i] = weight * coordinate.byLens[static_cast<size_t>(i)];
  const cv::Vec3d byTurn = turned.cross(coordinate.byPoint);
  for (int i = 0; i < 3; ++i) {
    row[FREE + i] = weight * byTurn[i];
    row[FREE + 3 + i] = weight * coordinate.byPoint[i];
  }
  row[FREE + POSE_PARAMETERS] = weight * residual;
}

/// The number of columns is known when compiled: that doubles the speed of the inner loop.
template <int FREE>
ViewEquations Accumulate(const View& view, const Lens& lens, const Pose& pose) {
  constexpr int COLUMNS = FREE + POSE_PARAMETERS + 1;
  const Projection projection(lens);
  ViewEquations equations;
  Coordinate u;
  Coordinate v;
  std::array<double, COLUMNS> uRow{};
  std::array<double, COLUMNS> vRow{};
  for (size_t k = 0; k < view.object.size(); ++k) {
    const cv::Vec3d turned = pose.R * cv::Vec3d(view.object[k].x, view.object[k].y, view.object[k].z);
    if (!projection.Differentiate(turned + pose.t, u, v)) return equations;
    const double weight = view.weights.empty() ? 1.0 : std::sqrt(view.weights[k]);
    FillRow<FREE>(u, turned, u.value - view.image[k].x, weight, uRow.data());
    FillRow<FREE>(v, turned, v.value - view.image[k].y, weight, vRow.data());
    for (size_t i = 0; i < COLUMNS; ++i) {
      double* products = &equations.products[i * MOST_COLUMNS];
      for (size_t j = i; j < COLUMNS; ++j) products[j] += uRow[i] * uRow[j] + vRow[i] * vRow[j];
    }
  }
  equations.squares = equations.At(COLUMNS - 1, COLUMNS - 1);
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

}  // namespace sparse
