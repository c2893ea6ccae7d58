/// The normal equations of a rig's computation, and their reduction to what all views share.
#include "solver/NormalEquations.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "solver/ObservationEquations.h"
#include "solver/RadialCurve.h"
#include "solver/ScaledSystem.h"
#include "solver/Threads.h"

namespace velmora::solver {

namespace {

using Index = Eigen::Index;

/// The products of one observation: their upper triangle, row by row, is the lower one column by column.
using Products = Eigen::Map<const Eigen::Matrix<double, MOST_COLUMNS, MOST_COLUMNS>>;

/// A step of the target before a camera, by steps of the camera in the rig and of the target before the rig.
using Chain = Eigen::Matrix<double, POSE_PARAMETERS, 2 * POSE_PARAMETERS>;

/// With the target at R_c (R_v X + t_v) + t_c before the camera: rotations add up, that of the camera also
/// swings the target's origin around.
Chain ChainOf(const RigidTransform& cameraFromRig, const RigidTransform& rigFromTarget) {
  const cv::Vec3d arm = cameraFromRig.R * rigFromTarget.t;
  const Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>> R(cameraFromRig.R.val);
  Chain chain = Chain::Zero();
  chain.leftCols<POSE_PARAMETERS>().setIdentity();
  chain.block<3, 3>(3, 0) << 0.0, arm[2], -arm[1], -arm[2], 0.0, arm[0], arm[1], -arm[0], 0.0;
  chain.block<3, 3>(0, POSE_PARAMETERS) = R;
  chain.block<3, 3>(3, POSE_PARAMETERS + 3) = R;
  return chain;
}

/// Adds what cameras saw to the equations of their view.
class EquationsAssembler {
 public:
  explicit EquationsAssembler(ViewEquations& equations) : equations_(equations), pose_(equations.Own()) {}

  /// Adds the equations of the camera that the rig's frame is in.
  void AddFirst(const ObservationEquations& observed, Index intrinsics, Index count) {
    const Products products(observed.products.data());
    const Index residual = count + POSE_PARAMETERS;
    To(intrinsics, intrinsics, count, count) += products.topLeftCorner(count, count);
    To(pose_, intrinsics, POSE_PARAMETERS, count) += products.block(count, 0, POSE_PARAMETERS, count);
    To(pose_, pose_, POSE_PARAMETERS, POSE_PARAMETERS) +=
        products.block<POSE_PARAMETERS, POSE_PARAMETERS>(count, count);
    equations_.gradient.segment(intrinsics, count) += products.row(residual).head(count).transpose();
    equations_.gradient.segment<POSE_PARAMETERS>(pose_) +=
        products.row(residual).segment<POSE_PARAMETERS>(count).transpose();
  }

  /// Adds the equations of another camera; `camera` is the column of its pose in the rig, or Layout::FIXED.
  void AddChained(const ObservationEquations& observed, Index intrinsics, Index count, Index camera,
                  const Chain& chain) {
    const Products products(observed.products.data());
    const Index residual = count + POSE_PARAMETERS;
    const PoseMatrix block =
        products.block<POSE_PARAMETERS, POSE_PARAMETERS>(count, count).selfadjointView<Eigen::Lower>();
    const Eigen::Matrix<double, 2 * POSE_PARAMETERS, 2 * POSE_PARAMETERS> chained =
        chain.transpose() * block * chain;
    const Eigen::Matrix<double, 2 * POSE_PARAMETERS, 1> gradient =
        chain.transpose() * products.row(residual).segment<POSE_PARAMETERS>(count).transpose();
    const Eigen::Matrix<double, 2 * POSE_PARAMETERS, Eigen::Dynamic, 0, 2 * POSE_PARAMETERS, FULL_PARAMETERS>
        coupling = chain.transpose() * products.block(count, 0, POSE_PARAMETERS, count);
    To(intrinsics, intrinsics, count, count) += products.topLeftCorner(count, count);
    equations_.gradient.segment(intrinsics, count) += products.row(residual).head(count).transpose();
    if (camera != Layout::FIXED) {
      To(camera, intrinsics, POSE_PARAMETERS, count) += coupling.topRows<POSE_PARAMETERS>();
      To(camera, camera, POSE_PARAMETERS, POSE_PARAMETERS) +=
          chained.topLeftCorner<POSE_PARAMETERS, POSE_PARAMETERS>();
      To(pose_, camera, POSE_PARAMETERS, POSE_PARAMETERS) +=
          chained.bottomLeftCorner<POSE_PARAMETERS, POSE_PARAMETERS>();
      equations_.gradient.segment<POSE_PARAMETERS>(camera) += gradient.head<POSE_PARAMETERS>();
    }
    To(pose_, intrinsics, POSE_PARAMETERS, count) += coupling.bottomRows<POSE_PARAMETERS>();
    To(pose_, pose_, POSE_PARAMETERS, POSE_PARAMETERS) +=
        chained.bottomRightCorner<POSE_PARAMETERS, POSE_PARAMETERS>();
    equations_.gradient.segment<POSE_PARAMETERS>(pose_) += gradient.tail<POSE_PARAMETERS>();
  }

 private:
  Eigen::Block<Eigen::MatrixXd> To(Index row, Index column, Index rows, Index columns) {
    return equations_.products.block(row, column, rows, columns);
  }

  ViewEquations& equations_;
  const Index pose_;
};

/// The block of each camera's parameters among the view's own.
struct OwnBlocks {
  std::vector<int> intrinsics;
  std::vector<int> pose;
};

OwnBlocks OwnBlocksOf(const TargetView& view, const Layout& layout, std::vector<int>& columns) {
  const size_t count = layout.cameras.size();
  OwnBlocks own{std::vector<int>(count, 0), std::vector<int>(count, Layout::FIXED)};
  columns.clear();
  columns.reserve(static_cast<size_t>(layout.shared));
  const auto take = [&](int first, int number) {
    const int at = static_cast<int>(columns.size());
    for (int i = 0; i < number; ++i) columns.push_back(first + i);
    return at;
  };
  for (size_t i = 0; i < count; ++i) {
    if (!view.observations[i].IsEmpty()) {
      own.intrinsics[i] = take(layout.cameras[i].intrinsics, layout.cameras[i].count);
    }
  }
  for (size_t i = 0; i < count; ++i) {
    if (!view.observations[i].IsEmpty() && layout.cameras[i].pose != Layout::FIXED) {
      own.pose[i] = take(layout.cameras[i].pose, POSE_PARAMETERS);
    }
  }
  return own;
}

using PoseCholesky = Eigen::LLT<PoseMatrix>;

/// The pose's block, its diagonal raised by a share of itself.
bool DecomposePose(const ViewEquations& equations, double damping, PoseCholesky& cholesky) {
  PoseMatrix block = PoseBlockOf(equations);
  block.diagonal() *= 1.0 + damping;
  return Decompose(block, cholesky);
}

/// Adds a view's share at its own parameters, lower triangle.
void AddTo(ReducedSystem& system, const ReducedView& view, const std::vector<int>& columns) {
  const auto own = static_cast<Index>(columns.size());
  if (own == system.gradient.size()) {
    system.matrix += view.matrix;
    system.gradient += view.gradient;
    return;
  }
  // The view's own parameters are in the order of all, so that its lower triangle stays one.
  for (Index j = 0; j < own; ++j) {
    const int column = columns[static_cast<size_t>(j)];
    for (Index i = j; i < own; ++i)
      system.matrix(columns[static_cast<size_t>(i)], column) += view.matrix(i, j);
    system.gradient(column) += view.gradient(j);
  }
}

ObservationEquations ObservedBy(const Camera& camera, const Observation& observation,
                                const RigidTransform& cameraFromTarget, int count) {
  return count > 0 ? EquationsOf(observation, camera.intrinsics, cameraFromTarget)
                   : PoseEquationsOf(observation, camera.intrinsics, cameraFromTarget);
}

/// The equations of a view of a camera that is the whole rig: they are the camera's own.
void TakeEquationsOfOne(const Observation& observation, const RigidTransform& cameraFromTarget,
                        const Camera& camera, int count, ViewEquations& equations) {
  const ObservationEquations observed = ObservedBy(camera, observation, cameraFromTarget, count);
  equations.columns.resize(static_cast<size_t>(count));
  std::iota(equations.columns.begin(), equations.columns.end(), 0);
  const Products products(observed.products.data());
  const Index size = count + POSE_PARAMETERS;
  equations.products = products.topLeftCorner(size, size);
  equations.gradient = products.row(size).head(size).transpose();
  equations.usable = observed.usable;
  equations.cost = observed.usable ? observed.cost : 0.0;
  equations.pixelCosts.assign(1, observed.usable ? observed.pixelCost : 0.0);
}

/// x = L^-1 x of each column, the first four rows before they are taken from the last two at once.
void SolveForward(const PoseMatrix& lower, Coupling& columns) {
  constexpr Index HEAD = 4;
  const PoseStep inverse = lower.diagonal().cwiseInverse();
  for (Index j = 0; j < columns.cols(); ++j) {
    double* x = columns.col(j).data();
    for (Index k = 0; k < HEAD; ++k) {
      x[k] *= inverse(k);
      for (Index i = k + 1; i < HEAD; ++i) x[i] -= x[k] * lower(i, k);
    }
    for (Index i = HEAD; i < POSE_PARAMETERS; ++i) {
      double sum = 0.0;
      for (Index k = 0; k < HEAD; ++k) sum += lower(i, k) * x[k];
      x[i] -= sum;
    }
    for (Index k = HEAD; k < POSE_PARAMETERS; ++k) {
      x[k] *= inverse(k);
      for (Index i = k + 1; i < POSE_PARAMETERS; ++i) x[i] -= x[k] * lower(i, k);
    }
  }
}

/// Room for a view's reduction, used again for the next view's.
struct Reduction {
  ReducedView view;
  Coupling eliminated;  ///< L^-1 B and, as the last column, L^-1 of the pose's gradient
};

void Reduce(const ViewEquations& equations, double damping, Reduction& reduction) {
  ReducedView& view = reduction.view;
  PoseCholesky cholesky;
  view.solvable = equations.usable && DecomposePose(equations, damping, cholesky);
  if (!view.solvable) return;
  const Index own = equations.Own();
  Coupling& eliminated = reduction.eliminated;
  eliminated.resize(POSE_PARAMETERS, own + 1);
  eliminated.leftCols(own) = equations.products.block(own, 0, POSE_PARAMETERS, own);
  eliminated.col(own) = PoseGradientOf(equations);
  SolveForward(cholesky.matrixLLT(), eliminated);
  view.matrix = equations.products.topLeftCorner(own, own);
  view.gradient = equations.gradient.head(own);
  for (Index j = 0; j < own; ++j) {
    for (Index i = j; i < own; ++i) view.matrix(i, j) -= eliminated.col(i).dot(eliminated.col(j));
    view.gradient(j) -= eliminated.col(j).dot(eliminated.col(own));
  }
}

}  // namespace

ViewEquations EquationsOf(const TargetView& view, const RigidTransform& rigFromTarget, const Rig& rig,
                          const Layout& layout) {
  ViewEquations equations;
  TakeEquations(view, rigFromTarget, rig, layout, equations);
  return equations;
}

void TakeEquations(const TargetView& view, const RigidTransform& rigFromTarget, const Rig& rig,
                   const Layout& layout, ViewEquations& equations) {
  if (rig.cameras.size() == 1) {
    TakeEquationsOfOne(view.observations.front(), rigFromTarget, rig.cameras.front(),
                       layout.cameras.front().count, equations);
    return;
  }
  equations.usable = false;
  equations.cost = 0.0;
  const OwnBlocks own = OwnBlocksOf(view, layout, equations.columns);
  const Index size = equations.Own() + POSE_PARAMETERS;
  equations.products.setZero(size, size);
  equations.gradient.setZero(size);
  equations.pixelCosts.assign(rig.cameras.size(), 0.0);
  EquationsAssembler assembler(equations);
  for (size_t i = 0; i < rig.cameras.size(); ++i) {
    const Observation& observation = view.observations[i];
    if (observation.IsEmpty()) continue;
    const Camera& camera = rig.cameras[i];
    const bool first = i == 0;
    const RigidTransform cameraFromTarget = first ? rigFromTarget : camera.cameraFromRig * rigFromTarget;
    const int count = layout.cameras[i].count;
    const ObservationEquations observed = ObservedBy(camera, observation, cameraFromTarget, count);
    if (!observed.usable) return;
    if (first) {
      assembler.AddFirst(observed, own.intrinsics[i], count);
    } else {
      assembler.AddChained(observed, own.intrinsics[i], count, own.pose[i],
                           ChainOf(camera.cameraFromRig, rigFromTarget));
    }
    equations.pixelCosts[i] = observed.pixelCost;
    equations.cost += observed.cost;
  }
  equations.usable = true;
}

PoseMatrix PoseBlockOf(const ViewEquations& equations) {
  const Index own = equations.Own();
  return equations.products.block<POSE_PARAMETERS, POSE_PARAMETERS>(own, own).selfadjointView<Eigen::Lower>();
}

Coupling CouplingOf(const ViewEquations& equations) {
  return equations.products.block(equations.Own(), 0, POSE_PARAMETERS, equations.Own());
}

PoseStep PoseGradientOf(const ViewEquations& equations) {
  return equations.gradient.tail<POSE_PARAMETERS>();
}

ReducedView Reduce(const ViewEquations& equations, double damping) {
  Reduction reduction;
  Reduce(equations, damping, reduction);
  return std::move(reduction.view);
}

void TakeOwn(const ViewEquations& equations, const Eigen::VectorXd& shared, Eigen::VectorXd& own) {
  own.resize(equations.Own());
  for (Index i = 0; i < own.size(); ++i) own(i) = shared(equations.columns[static_cast<size_t>(i)]);
}

bool PoseStepFor(const ViewEquations& equations, double damping, const Eigen::VectorXd& own, PoseStep& step) {
  PoseCholesky cholesky;
  step.setZero();
  if (!DecomposePose(equations, damping, cholesky)) return false;
  step = PoseGradientOf(equations);
  for (Index j = 0; j < equations.Own(); ++j) {
    step += equations.products.col(j).tail<POSE_PARAMETERS>() * own(j);
  }
  step = -cholesky.solve(step);
  return true;
}

namespace {

void AddRoughness(const Prior& prior, const Intrinsics& intrinsics, int first, PriorTerms& terms) {
  const Roughness roughness = RoughnessOf(intrinsics, prior.angle);
  const double weight = prior.smoothness / static_cast<double>(roughness.values.size());
  const auto at = [&](int i) { return first + RADIAL[static_cast<size_t>(i)]; };
  for (int i = 0; i < RADIAL_COUNT; ++i) {
    const auto column = roughness.slopes.col(i);
    terms.gradient(at(i)) += weight * column.dot(roughness.values);
    for (int k = 0; k < RADIAL_COUNT; ++k) {
      terms.matrix(at(i), at(k)) += weight * column.dot(roughness.slopes.col(k));
    }
  }
  terms.cost += weight * roughness.values.squaredNorm();
}

}  // namespace

PriorTerms PriorTermsOf(const std::vector<Prior>& priors, const Rig& rig, const Layout& layout) {
  PriorTerms terms{Eigen::MatrixXd::Zero(layout.shared, layout.shared), Eigen::VectorXd::Zero(layout.shared)};
  for (size_t i = 0; i < priors.size(); ++i) {
    const Layout::Block& block = layout.cameras[i];
    const Intrinsics& intrinsics = rig.cameras[i].intrinsics;
    for (int k = 0; k < block.count; ++k) {
      const double pull = priors[i].pulls[static_cast<size_t>(k)];
      const double value = intrinsics.values[static_cast<size_t>(k)];
      terms.matrix(block.intrinsics + k, block.intrinsics + k) += pull;
      terms.gradient(block.intrinsics + k) += pull * value;
      terms.cost += pull * value * value;
    }
    if (priors[i].smoothness > 0.0 && block.count >= RATIONAL_PARAMETERS) {
      AddRoughness(priors[i], intrinsics, block.intrinsics, terms);
    }
  }
  return terms;
}

void AddShapePrior(const Sheet& sheet, const Eigen::VectorXd& shape, const Layout& layout,
                   PriorTerms& terms) {
  const Index count = sheet.terms.Count();
  if (count == 0) return;
  const Eigen::VectorXd pulls = PullsOf(sheet.terms, sheet.variance);
  terms.matrix.diagonal().segment(layout.sheet, count) += pulls;
  terms.gradient.segment(layout.sheet, count) += pulls.cwiseProduct(shape);
  terms.cost += pulls.dot(shape.cwiseAbs2());
}

PriorTerms PriorTermsOf(const Solution& solution) {
  const Layout layout = LayoutOf(solution);
  PriorTerms terms = PriorTermsOf(solution.priors, solution.rig, layout);
  AddShapePrior(solution.sheet, solution.sheet.values, layout, terms);
  return terms;
}

ReducedSystem SystemOf(const std::vector<ViewEquations>& equations, const PriorTerms& priors, double damping,
                       int threads) {
  constexpr size_t TOGETHER = 16;
  const Index shared = priors.gradient.size();
  const size_t parts = (equations.size() + TOGETHER - 1) / TOGETHER;
  std::vector<ReducedSystem> sums(parts);
  ForRanges(parts, threads, [&](size_t from, size_t to) {
    Reduction reduction;
    for (size_t part = from; part < to; ++part) {
      ReducedSystem& sum = sums[part];
      sum = {Eigen::MatrixXd::Zero(shared, shared), Eigen::VectorXd::Zero(shared), true};
      const size_t end = std::min((part + 1) * TOGETHER, equations.size());
      for (size_t i = part * TOGETHER; i < end && sum.solvable; ++i) {
        Reduce(equations[i], damping, reduction);
        sum.solvable = reduction.view.solvable;
        if (sum.solvable) AddTo(sum, reduction.view, equations[i].columns);
      }
    }
  });
  ReducedSystem system{priors.matrix, priors.gradient, parts > 0};
  for (const ReducedSystem& sum : sums) {
    system.solvable = system.solvable && sum.solvable;
    system.matrix += sum.matrix;
    system.gradient += sum.gradient;
  }
  system.matrix.triangularView<Eigen::StrictlyUpper>() = system.matrix.transpose();
  return system;
}

ReducedSystem SystemOf(const Solution& solution) {
  return SystemOf(solution.equations, PriorTermsOf(solution), 0.0, 1);
}

}  // namespace velmora::solver
