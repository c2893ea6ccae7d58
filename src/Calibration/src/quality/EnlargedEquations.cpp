/// The equations of what all views share, and of effects that the computation took for zero.
#include "quality/EnlargedEquations.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <utility>

#include "solver/ClusterCovariance.h"
#include "solver/PoseGroups.h"

namespace velmora {

using Eigen::Index;
using solver::ReducedSystem;

bool SolveScaled(const Eigen::MatrixXd& matrix, const Eigen::MatrixXd& right, Eigen::MatrixXd& solution) {
  if (!(matrix.diagonal().array() > 0.0).all()) return false;
  const Eigen::VectorXd scale = matrix.diagonal().array().rsqrt();
  const Eigen::LLT<Eigen::MatrixXd> cholesky(scale.asDiagonal() * matrix * scale.asDiagonal());
  if (cholesky.info() != Eigen::Success) return false;
  solution = scale.asDiagonal() * cholesky.solve(scale.asDiagonal() * right);
  return true;
}

double Threshold(Index degrees, double logOfChoices, double sure) {
  // A normal number is beyond z in a share of its cases that falls with exp(-z^2 / 2).
  const double deviations = std::sqrt(sure + 2.0 * logOfChoices);
  const auto count = static_cast<double>(degrees);
  const double variance = 2.0 / (9.0 * count);
  return count * std::pow(1.0 - variance + deviations * std::sqrt(variance), 3.0);
}

EnlargedEquations::EnlargedEquations(const Solution& solution, std::vector<ReducedSystem> views,
                                     Index effects)
    : solution_(solution), views_(std::move(views)), strengths_(Eigen::VectorXd::Zero(effects)) {
  shared_ = LayoutOf(solution).shared;
  priors_ = solver::PriorTermsOf(solution);
  const Index size = shared_ + effects;
  all_ = {Eigen::MatrixXd::Zero(size, size), Eigen::VectorXd::Zero(size), !views_.empty()};
  for (const ReducedSystem& view : views_) {
    all_.solvable = all_.solvable && view.solvable;
    if (!all_.solvable) break;
    all_.matrix += view.matrix;
    all_.gradient += view.gradient;
  }
}

void EnlargedEquations::Restrain(Index effect, double weight) {
  strengths_(effect) += weight;
}

ReducedSystem EnlargedEquations::Chosen(const ReducedSystem& system, Index first, Index count) const {
  const Index from = shared_ + first;
  ReducedSystem chosen{Eigen::MatrixXd(shared_ + count, shared_ + count), Eigen::VectorXd(shared_ + count),
                       system.solvable};
  chosen.matrix << system.matrix.topLeftCorner(shared_, shared_),
      system.matrix.block(0, from, shared_, count), system.matrix.block(from, 0, count, shared_),
      system.matrix.block(from, from, count, count);
  chosen.gradient << system.gradient.head(shared_), system.gradient.segment(from, count);
  return chosen;
}

OmittedEffect EnlargedEquations::EffectOf(Index first, Index count, double logOfChoices, double sure) const {
  OmittedEffect effect;
  if (!all_.solvable) return effect;
  ReducedSystem chosen = Chosen(all_, first, count);
  chosen.matrix.topLeftCorner(shared_, shared_) += priors_.matrix;
  chosen.matrix.diagonal().tail(count) += strengths_.segment(first, count);
  Eigen::MatrixXd spread;
  Eigen::MatrixXd values;
  const auto coupling = chosen.matrix.topRightCorner(shared_, count);
  if (!SolveScaled(chosen.matrix.topLeftCorner(shared_, shared_), coupling, spread)) return effect;
  const Eigen::MatrixXd own = chosen.matrix.bottomRightCorner(count, count) - spread.transpose() * coupling;
  // The data's own slope at the rig is not zero: a prior pulls, and the corrections of the discs may be newer
  // than the solution. What the rig alone would gain by following it is not the effect's.
  const Eigen::VectorXd slope =
      chosen.gradient.tail(count) - spread.transpose() * chosen.gradient.head(shared_);
  if (!SolveScaled(own, slope, values)) return effect;
  effect.values = -values.col(0);
  effect.shift = spread * values.col(0);
  effect.costReduction = slope.dot(values.col(0)) / NoiseVariance(solution_);
  const double threshold = Threshold(count, logOfChoices, sure);
  // Only what looks like more than noise need be compared with how the views scatter.
  if (effect.costReduction > threshold) effect.costReduction /= std::max(ScatterOver(own, first, count), 1.0);
  effect.significant = effect.costReduction > threshold;
  effect.chance = static_cast<double>(count) + 2.0 * logOfChoices;
  return effect;
}

OmittedEffect EnlargedEquations::EffectByView(Index first, Index count) const {
  OmittedEffect effect;
  if (!all_.solvable) return effect;
  const double variance = NoiseVariance(solution_);
  // What all views share, before and after the effect is free in each of them.
  const Eigen::MatrixXd held = priors_.matrix + all_.matrix.topLeftCorner(shared_, shared_);
  const Eigen::VectorXd slope = priors_.gradient + all_.gradient.head(shared_);
  Eigen::MatrixXd freed = held;
  Eigen::VectorXd slopeFreed = slope;
  Eigen::VectorXd sizes = Eigen::VectorXd::Zero(count);
  double saved = 0.0;
  for (const ReducedSystem& whole : views_) {
    const ReducedSystem view = Chosen(whole, first, count);
    Eigen::MatrixXd right(count, shared_ + 1 + count);
    right << view.matrix.bottomLeftCorner(count, shared_), view.gradient.tail(count),
        Eigen::MatrixXd::Identity(count, count);
    Eigen::MatrixXd spread;
    if (!SolveScaled(view.matrix.bottomRightCorner(count, count), right, spread)) return effect;
    freed.noalias() -= right.leftCols(shared_).transpose() * spread.leftCols(shared_);
    slopeFreed.noalias() -= right.leftCols(shared_).transpose() * spread.col(shared_);
    saved += right.col(shared_).dot(spread.col(shared_));
    sizes.array() +=
        spread.col(shared_).array().square() - variance * spread.rightCols(count).diagonal().array();
  }
  Eigen::MatrixXd before;
  Eigen::MatrixXd after;
  if (!SolveScaled(held, slope, before) || !SolveScaled(freed, slopeFreed, after)) return effect;
  const auto views = static_cast<double>(views_.size());
  // Views of like poses repeat each other's errors.
  const size_t poses = solver::CountOfGroups(solver::GroupsOf(solution_.views, solution_.rig));
  const Index degrees = count * static_cast<Index>(poses);
  effect.chance = static_cast<double>(degrees);
  effect.values = (sizes / views).cwiseMax(0.0).cwiseSqrt();
  effect.shift = before - after;
  effect.costReduction = (saved + slopeFreed.dot(after.col(0)) - slope.dot(before.col(0))) / variance *
                         static_cast<double>(poses) / views;
  effect.significant = effect.costReduction > Threshold(degrees);
  return effect;
}

double EnlargedEquations::ScatterOver(const Eigen::MatrixXd& information, Index first, Index count) const {
  const std::vector<size_t> groups = solver::GroupsOf(solution_.views, solution_.rig);
  const Index size = shared_ + count;
  std::vector<ReducedSystem> parts(solver::CountOfGroups(groups),
                                   {Eigen::MatrixXd::Zero(size, size), Eigen::VectorXd::Zero(size), true});
  for (size_t i = 0; i < views_.size(); ++i) {
    const ReducedSystem view = Chosen(views_[i], first, count);
    parts[groups[i]].matrix += view.matrix;
    parts[groups[i]].gradient += view.gradient;
  }
  ReducedSystem all = Chosen(all_, first, count);
  all.matrix.topLeftCorner(shared_, shared_) += priors_.matrix;
  all.matrix.diagonal().tail(count) += strengths_.segment(first, count);
  all.gradient.head(shared_) += priors_.gradient;
  const Eigen::MatrixXd covariance = solver::ClusterCovarianceOfRest(all, parts);
  if (covariance.size() == 0) return 1.0;
  const double scatter = information.cwiseProduct(covariance.bottomRightCorner(count, count)).sum();
  return scatter / (static_cast<double>(count) * NoiseVariance(solution_));
}

}  // namespace velmora
