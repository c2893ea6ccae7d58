/// The normal equations of a pair of cameras, and their reduction to what all views share.
#include "solver/PairEquations.h"

#include <cmath>

namespace velmora::solver {

namespace {

/// A step of the right camera's view of the target, by steps of the right camera and of the pose.
using Chain = cv::Matx<double, POSE_PARAMETERS, 2 * POSE_PARAMETERS>;

/// With the target at R (X_left) + T before the right camera, where X_left = R_v X + t_v: turns add up, that
/// of the right camera also swings the target's middle around.
Chain ChainOf(const Pose& relative, const Pose& pose) {
  const cv::Vec3d arm = relative.R * pose.t;
  const cv::Matx33d swing(0.0, arm[2], -arm[1], -arm[2], 0.0, arm[0], arm[1], -arm[0], 0.0);
  Chain chain = Chain::zeros();
  for (int i = 0; i < 3; ++i) {
    chain(i, i) = 1.0;
    chain(3 + i, 3 + i) = 1.0;
    for (int k = 0; k < 3; ++k) {
      chain(3 + i, k) = swing(i, k);
      chain(i, POSE_PARAMETERS + k) = relative.R(i, k);
      chain(3 + i, POSE_PARAMETERS + 3 + k) = relative.R(i, k);
    }
  }
  return chain;
}

class Adder {
 public:
  explicit Adder(PairViewEquations& equations) : equations_(equations), layout_(equations.layout) {}

  void AddLeft(const ViewEquations& seen) {
    const int residual = layout_.left + POSE_PARAMETERS;
    const auto place = [&](int i) {
      if (i < layout_.left) return i;
      return i < residual ? layout_.Shared() + i - layout_.left : layout_.Columns() - 1;
    };
    for (int i = 0; i <= residual; ++i) {
      for (int j = i; j <= residual; ++j) At(place(i), place(j)) += seen.At(i, j);
    }
  }

  void AddRight(const ViewEquations& seen, const Chain& chain) {
    const int free = layout_.right;
    const int residual = free + POSE_PARAMETERS;
    cv::Matx66d block;
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      for (int j = i; j < POSE_PARAMETERS; ++j) block(i, j) = block(j, i) = seen.At(free + i, free + j);
    }
    const auto turned = chain.t() * block * chain;
    for (int i = 0; i < 2 * POSE_PARAMETERS; ++i) {
      for (int j = i; j < 2 * POSE_PARAMETERS; ++j) {
        At(layout_.Lenses() + i, layout_.Lenses() + j) += turned(i, j);
      }
      for (int k = 0; k < POSE_PARAMETERS; ++k) {
        for (int j = 0; j < free; ++j) {
          At(layout_.left + j, layout_.Lenses() + i) += seen.At(j, free + k) * chain(k, i);
        }
        At(layout_.Lenses() + i, layout_.Columns() - 1) += chain(k, i) * seen.At(free + k, residual);
      }
    }
    for (int i = 0; i < free; ++i) {
      for (int j = i; j < free; ++j) At(layout_.left + i, layout_.left + j) += seen.At(i, j);
      At(layout_.left + i, layout_.Columns() - 1) += seen.At(i, residual);
    }
    At(layout_.Columns() - 1, layout_.Columns() - 1) += seen.At(residual, residual);
  }

 private:
  double& At(int row, int column) {
    return equations_.products[static_cast<size_t>(row * layout_.Columns() + column)];
  }

  PairViewEquations& equations_;
  const PairLayout layout_;
};

/// The pose's block, its diagonal raised by a share of itself.
bool DecomposePose(const PairViewEquations& equations, double damping, Cholesky<POSE_PARAMETERS>& cholesky) {
  const int first = equations.layout.Shared();
  std::array<double, static_cast<size_t>(POSE_PARAMETERS) * POSE_PARAMETERS> block{};
  for (int i = 0; i < POSE_PARAMETERS; ++i) {
    for (int j = 0; j <= i; ++j) {
      block[static_cast<size_t>(i * POSE_PARAMETERS + j)] =
          equations.At(first + j, first + i) * (i == j ? 1.0 + damping : 1.0);
    }
  }
  return cholesky.Decompose(block.data(), POSE_PARAMETERS, POSE_PARAMETERS);
}

double Product(const PoseStep& a, const PoseStep& b) {
  double sum = 0.0;
  for (size_t k = 0; k < a.size(); ++k) sum += a[k] * b[k];
  return sum;
}

}  // namespace

PairLayout LayoutOf(const PairEstimate& estimate) {
  return {estimate.left.free, estimate.right.free};
}

PairViewEquations PairEquationsOf(const View& left, const View& right, const PairEstimate& estimate,
                                  size_t view) {
  PairViewEquations equations;
  equations.layout = LayoutOf(estimate);
  const auto columns = static_cast<size_t>(equations.layout.Columns());
  equations.products.assign(columns * columns, 0.0);
  const Pose& pose = estimate.poses[view];
  const ViewEquations seenLeft = EquationsOf(left, estimate.left, pose);
  const ViewEquations seenRight = EquationsOf(right, estimate.right, BeforeRight(estimate.relative, pose));
  if (!seenLeft.usable || !seenRight.usable) return equations;
  Adder adder(equations);
  adder.AddLeft(seenLeft);
  adder.AddRight(seenRight, ChainOf(estimate.relative, pose));
  equations.squares = seenLeft.squares + seenRight.squares;
  equations.usable = true;
  return equations;
}

ReducedPairView Reduce(const PairViewEquations& equations, int first, double damping) {
  ReducedPairView reduced;
  Cholesky<POSE_PARAMETERS> cholesky;
  if (!equations.usable || !DecomposePose(equations, damping, cholesky)) return reduced;
  const int shared = equations.layout.Shared();
  // The columns of L^-1 B, the last one L^-1 c.
  std::array<PoseStep, MOST_PAIR_PARAMETERS + 1> eliminated{};
  const auto column = [&](int j) -> PoseStep& { return eliminated[static_cast<size_t>(j - first)]; };
  for (int j = first; j <= shared; ++j) {
    for (int i = 0; i < POSE_PARAMETERS; ++i) {
      column(j)[static_cast<size_t>(i)] =
          j < shared ? equations.At(j, shared + i) : equations.Gradient(shared + i);
    }
    cholesky.Forward(column(j).data());
  }
  for (int i = first; i < shared; ++i) {
    for (int j = i; j < shared; ++j) {
      const double value = equations.At(i, j) - Product(column(i), column(j));
      reduced.matrix[static_cast<size_t>((i - first) * MOST_PAIR_PARAMETERS + j - first)] = value;
      reduced.matrix[static_cast<size_t>((j - first) * MOST_PAIR_PARAMETERS + i - first)] = value;
    }
    reduced.gradient[static_cast<size_t>(i - first)] =
        equations.Gradient(i) - Product(column(i), column(shared));
  }
  reduced.solvable = true;
  return reduced;
}

PoseStep PoseStepFor(const PairViewEquations& equations, int first, double damping, const PairStep& shared) {
  PoseStep step{};
  Cholesky<POSE_PARAMETERS> cholesky;
  if (!DecomposePose(equations, damping, cholesky)) return step;
  const int end = equations.layout.Shared();
  for (int i = 0; i < POSE_PARAMETERS; ++i) {
    double sum = equations.Gradient(end + i);
    for (int j = first; j < end; ++j)
      sum += equations.At(j, end + i) * shared[static_cast<size_t>(j - first)];
    step[static_cast<size_t>(i)] = -sum;
  }
  cholesky.Solve(step.data());
  return step;
}

bool SolvePose(const PairViewEquations& equations, PoseStep& x) {
  Cholesky<POSE_PARAMETERS> cholesky;
  if (!equations.usable || !DecomposePose(equations, 0.0, cholesky)) return false;
  cholesky.Solve(x.data());
  return true;
}

}  // namespace velmora::solver
