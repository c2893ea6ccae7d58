/// How far estimates scatter from one group of observations to the other.
#include "solver/ClusterCovariance.h"

#include <Eigen/Cholesky>
#include <Eigen/Eigenvalues>

#include "solver/PoseGroups.h"
#include "solver/ScaledSystem.h"

namespace velmora::solver {

namespace {

using Index = Eigen::Index;

/// Below this share of all information nothing is left without the part.
constexpr double NOTHING_LEFT = 1e-10;

class Scatter {
 public:
  explicit Scatter(const ReducedSystem& all) {
    if (!all.solvable || !(all.matrix.diagonal().array() > 0.0).all()) return;
    scale_ = all.matrix.diagonal().array().rsqrt();
    const Eigen::MatrixXd scaled = scale_.asDiagonal() * all.matrix * scale_.asDiagonal();
    usable_ = Decompose(scaled, cholesky_);
    if (usable_) together_ = Whitened(all.gradient);
  }

  bool Usable() const { return usable_; }

  /// What a part adds to the covariance, as an outer product. False when it alone determines something and
  /// `restOnly` is not asked for.
  bool Pull(const ReducedSystem& part, bool restOnly, Eigen::VectorXd& pull) const {
    Eigen::MatrixXd share = scale_.asDiagonal() * part.matrix * scale_.asDiagonal();
    cholesky_.matrixL().solveInPlace(share);
    share.transposeInPlace();
    cholesky_.matrixL().solveInPlace(share);
    share = 0.5 * (share + share.transpose()).eval();
    // The slope at the minimum of all parts, which need not be where the equations are.
    const Eigen::VectorXd slope = Whitened(part.gradient) - share * together_;
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> eigen(share);
    Eigen::VectorXd left = 1.0 - eigen.eigenvalues().array();
    if (!restOnly && !(left.minCoeff() > NOTHING_LEFT)) return false;
    left = (left.array() > NOTHING_LEFT).select(left.array().max(NOTHING_LEFT).rsqrt(), 0.0);
    pull = eigen.eigenvectors() * left.asDiagonal() * (eigen.eigenvectors().transpose() * slope);
    cholesky_.matrixU().solveInPlace(pull);
    pull.array() *= scale_.array();
    return true;
  }

 private:
  Eigen::VectorXd Whitened(const Eigen::VectorXd& gradient) const {
    return cholesky_.matrixL().solve(scale_.asDiagonal() * gradient);
  }

  bool usable_ = false;
  Eigen::VectorXd scale_;
  Eigen::LLT<Eigen::MatrixXd> cholesky_;
  Eigen::VectorXd together_;
};

Eigen::MatrixXd Sum(const ReducedSystem& all, const std::vector<ReducedSystem>& parts, bool restOnly) {
  const Scatter scatter(all);
  if (!scatter.Usable()) return {};
  Eigen::MatrixXd covariance = Eigen::MatrixXd::Zero(all.gradient.size(), all.gradient.size());
  Eigen::VectorXd pull;
  for (const ReducedSystem& part : parts) {
    if (!scatter.Pull(part, restOnly, pull)) return {};
    covariance.noalias() += pull * pull.transpose();
  }
  return covariance;
}

}  // namespace

Eigen::MatrixXd ClusterCovariance(const ReducedSystem& all, const std::vector<ReducedSystem>& parts) {
  return Sum(all, parts, false);
}

Eigen::MatrixXd ClusterCovarianceOfRest(const ReducedSystem& all, const std::vector<ReducedSystem>& parts) {
  return Sum(all, parts, true);
}

std::vector<ReducedSystem> PartsOf(const Solution& solution, const std::vector<size_t>& groups) {
  const Index shared = LayoutOf(solution).shared;
  std::vector<ReducedSystem> parts(
      CountOfGroups(groups), {Eigen::MatrixXd::Zero(shared, shared), Eigen::VectorXd::Zero(shared), true});
  for (size_t i = 0; i < solution.equations.size(); ++i) {
    const ViewEquations& equations = solution.equations[i];
    const ReducedView view = Reduce(equations, 0.0);
    ReducedSystem& part = parts[groups[i]];
    part.solvable = part.solvable && view.solvable;
    for (size_t j = 0; j < equations.columns.size() && view.solvable; ++j) {
      for (size_t k = j; k < equations.columns.size(); ++k) {
        part.matrix(equations.columns[k], equations.columns[j]) +=
            view.matrix(static_cast<Index>(k), static_cast<Index>(j));
      }
      part.gradient(equations.columns[j]) += view.gradient(static_cast<Index>(j));
    }
  }
  for (ReducedSystem& part : parts)
    part.matrix.triangularView<Eigen::StrictlyUpper>() = part.matrix.transpose();
  return parts;
}

}  // namespace velmora::solver
