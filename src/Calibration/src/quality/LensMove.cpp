/// By how much a lens has moved from where a calibration found it, as new views tell.
#include "quality/LensMove.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>
#include <utility>

#include "solver/LevenbergMarquardt.h"
#include "solver/NormalEquations.h"
#include "solver/ScaledSystem.h"

namespace velmora {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

constexpr double FOCAL_MOVE = 0.02;    // share
constexpr double ASPECT_MOVE = 0.001;  // share
constexpr double CENTRE_MOVE = 0.02;   // focal lengths
constexpr double RADIAL_MOVE = 0.005;  // of a projection at the rim of the data, focal lengths
constexpr double SURE = 4.5;           // deviations of a normal distribution

/// What is suspected: focus or zoom alone, the sensor alone, and everything together. The first column and
/// how many.
constexpr std::pair<Index, Index> SUSPECTS[] = {
    {MoveColumns::FOCAL, 1}, {MoveColumns::CENTRE_X, 2}, {0, MoveColumns::COUNT}};

/// What one of three hundred thousand sums of squares is beyond, each of which has one of the shares as its
/// variance: that of a chi-squared distribution with the same mean and variance (Wilson and Hilferty). The
/// noise is known from `freedom` numbers only.
double ThresholdFor(const VectorXd& shares, double freedom) {
  const double mean = shares.sum();
  const double squares = shares.squaredNorm();
  if (!(mean > 0.0)) return 1.0;
  const double scale = squares / mean;
  const double degrees = mean / scale;
  const double part = 2.0 / (9.0 * degrees);
  const double beyond = degrees * std::pow(1.0 - part + SURE * std::sqrt(part), 3.0);
  return scale * beyond * (1.0 + 10.0 / std::max(freedom, 1.0));
}

/// For moves in these ways alone, in units of what is known of them beforehand.
double EvidenceOf(const MatrixXd& told, const VectorXd& slope, double freedom) {
  const VectorXd found =
      Eigen::LDLT<MatrixXd>(told + MatrixXd::Identity(told.rows(), told.rows())).solve(slope);
  const VectorXd strengths =
      Eigen::SelfAdjointEigenSolver<MatrixXd>(told, Eigen::EigenvaluesOnly).eigenvalues().cwiseMax(0.0);
  return slope.dot(found) /
         ThresholdFor(strengths.cwiseQuotient((strengths.array() + 1.0).matrix()), freedom);
}

/// Scales the parameters so that the information has a diagonal of ones: they are many orders of magnitude
/// apart.
VectorXd ScalesOf(const MatrixXd& information) {
  return information.diagonal().unaryExpr(
      [](double value) { return value > 0.0 ? 1.0 / std::sqrt(value) : 1.0; });
}

}  // namespace

MoveColumns MoveColumns::Of(const Intrinsics& intrinsics, double radius) {
  const double fx = intrinsics.values[FX];
  const double fy = intrinsics.values[FY];
  MoveColumns of;
  of.columns.setZero(intrinsics.estimated, COUNT);
  of.columns(FX, FOCAL) = fx;
  of.columns(FY, FOCAL) = fy;
  of.columns(FX, ASPECT) = 0.5 * fx;
  of.columns(FY, ASPECT) = -0.5 * fy;
  of.columns(CX, CENTRE_X) = 1.0;
  of.columns(CY, CENTRE_Y) = 1.0;
  of.columns(K1, FIRST_TERM) = 1.0;
  of.columns(K2, SECOND_TERM) = 1.0;
  const double centre = CENTRE_MOVE * std::sqrt(fx * fy);
  of.deviations.resize(COUNT);
  of.deviations << FOCAL_MOVE, ASPECT_MOVE, centre, centre, RADIAL_MOVE / std::pow(radius, 3.0),
      RADIAL_MOVE / std::pow(radius, 5.0);
  return of;
}

bool ScoreOf(const Solution& fitted, const Intrinsics& known, LensScore& score) {
  CalibrationProblem problem{fitted.rig, fitted.views, {true, false}, {}, fitted.sheet};
  Intrinsics& moved = problem.rig.cameras.front().intrinsics;
  moved.estimated = known.estimated;
  const Index count = known.estimated;
  VectorXd step(count);
  for (Index i = 0; i < count; ++i) {
    const auto place = static_cast<size_t>(i);
    step(i) = moved.values[place] - known.values[place];
  }
  const Solution free = solver::EvaluatedAt(std::move(problem));
  const solver::ReducedSystem system = solver::SystemOf(free);
  if (!free.usable || !system.solvable) return false;
  MatrixXd matrix = system.matrix.topLeftCorner(count, count);
  VectorXd gradient = system.gradient.head(count);
  const Index terms = system.matrix.rows() - count;
  MatrixXd share = MatrixXd::Zero(terms, count);
  if (terms > 0) {
    solver::ScaledSystem shape;
    if (!shape.Decompose(system.matrix.bottomRightCorner(terms, terms))) return false;
    const MatrixXd coupling = system.matrix.bottomLeftCorner(terms, count);
    share = shape.Solve(coupling);
    matrix -= coupling.transpose() * share;
    gradient -= share.transpose() * system.gradient.tail(terms);
  }
  const double shared = fitted.sheet.counted + MoveColumns::COUNT;
  score.variance = std::max(NoiseVariance(fitted.cost, fitted.views, shared), 1e-12);
  score.freedom =
      2.0 * CountOf(fitted.views) - POSE_PARAMETERS * static_cast<double>(fitted.views.size()) - shared;
  score.information = 0.5 * (matrix + matrix.transpose()) / score.variance;
  score.slope = -gradient / score.variance + score.information * step;
  score.parts.clear();
  for (const ViewEquations& equations : free.equations) {
    // One camera: all that is shared is the view's own.
    const solver::ReducedView view = solver::Reduce(equations, 0.0);
    if (!view.solvable) continue;
    score.parts.emplace_back((share.transpose() * view.gradient.tail(terms) - view.gradient.head(count)) /
                             score.variance);
  }
  return score.information.allFinite() && score.slope.allFinite();
}

double ScatterOf(const LensScore& score, const MoveColumns& columns) {
  constexpr size_t FEWEST = 3;
  if (score.parts.size() < FEWEST) return 1.0;
  const MatrixXd ways = columns.columns * columns.deviations.asDiagonal();
  const MatrixXd information = ways.transpose() * score.information * ways;
  const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(0.5 * (information + information.transpose()));
  // Where the fit is at its end their mean is nearly zero; before, it is a step that is still to be made.
  const auto views = static_cast<double>(score.parts.size());
  VectorXd mean = VectorXd::Zero(score.slope.size());
  for (const VectorXd& part : score.parts) mean += part / views;
  double cost = 0.0;
  double count = 0.0;
  for (Index i = 0; i < information.rows(); ++i) {
    // Of what the views hardly tell, nothing is asked.
    if (!(solver.eigenvalues()(i) > 1.0)) continue;
    const VectorXd way = ways * solver.eigenvectors().col(i);
    for (const VectorXd& part : score.parts)
      cost += std::pow(way.dot(part - mean), 2.0) / solver.eigenvalues()(i);
    count += 1.0;
  }
  return count > 0.0 ? std::max(1.0, cost / (count * (1.0 - 1.0 / views))) : 1.0;
}

LensMove MoveOf(const LensScore& score, const MoveColumns& columns, const MatrixXd& uncertainty) {
  const double scatter = ScatterOf(score, columns);
  // A scatter is known from the few numbers only that the views tell of the lens.
  const double numbers =
      static_cast<double>(MoveColumns::COUNT) * (static_cast<double>(score.parts.size()) - 1.0);
  const double freedom = scatter > 1.0 ? std::min(score.freedom, numbers) : score.freedom;
  const VectorXd scales = ScalesOf(score.information);
  const MatrixXd W = scales.asDiagonal() * score.information * scales.asDiagonal() / scatter;
  const VectorXd u = scales.cwiseProduct(score.slope) / scatter;
  const VectorXd inverse = scales.cwiseInverse();
  const MatrixXd B = inverse.asDiagonal() * columns.columns;
  const MatrixXd unit = MatrixXd::Identity(W.rows(), W.rows());
  // What the views and the result's own uncertainty leave to tell of a move between both.
  MatrixXd C = MatrixXd::Zero(W.rows(), W.rows());
  MatrixXd A = 0.5 * W;
  VectorXd a = 0.5 * u;
  if (uncertainty.size() > 0) {
    C = inverse.asDiagonal() * uncertainty * inverse.asDiagonal();
    const Eigen::FullPivLU<MatrixXd> both(unit + W * C);
    A = both.solve(W);
    a = both.solve(u);
  }
  const MatrixXd told = B.transpose() * A * B;
  const VectorXd slope = B.transpose() * a;
  // In units of what is known beforehand.
  const auto prior = columns.deviations.asDiagonal();
  const MatrixXd scaled = prior * (0.5 * (told + told.transpose())) * prior;
  const VectorXd along = prior * slope;
  const Eigen::LDLT<MatrixXd> posterior(scaled + MatrixXd::Identity(scaled.rows(), scaled.rows()));
  LensMove move;
  move.move = prior * posterior.solve(along);
  move.covariance = prior * posterior.solve(MatrixXd(prior));
  for (const auto& [first, count] : SUSPECTS) {
    move.evidence = std::max(move.evidence, EvidenceOf(scaled.block(first, first, count, count),
                                                       along.segment(first, count), freedom));
  }
  // Of the lens, both what the result had wrong and the move count.
  const MatrixXd Q = C + B * (columns.deviations.cwiseAbs2().asDiagonal() * B.transpose());
  // How sure it is has no part in where it is.
  move.parameters =
      scales.cwiseProduct(Q * Eigen::FullPivLU<MatrixXd>(unit + scatter * W * Q).solve(scatter * u));
  return move;
}

}  // namespace velmora
