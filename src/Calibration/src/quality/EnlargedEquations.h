/// The equations of what all views share, and of effects that the computation took for zero.
#pragma once

#include <Eigen/Core>
#include <vector>

#include "model/Solution.h"
#include "quality/OmittedEffects.h"
#include "solver/NormalEquations.h"

namespace velmora {

/// Solves S x = r for a symmetric positive definite S that is scaled to a diagonal of ones first: the
/// parameters' sizes lie many orders of magnitude apart. False when it is not positive definite.
bool SolveScaled(const Eigen::MatrixXd& matrix, const Eigen::MatrixXd& right, Eigen::MatrixXd& solution);

/// How sure one has to be of an effect: in standard deviations of noise, squared. The first noise passes in
/// one of thirty thousand computations, the second in one of two thousand, the last in one of four hundred.
constexpr double SURE = 16.0;
constexpr double FAIRLY_SURE = 11.0;
constexpr double LIKELY = 8.0;

/// What noise alone hardly ever takes off, also where the most is looked for among choices of which the
/// number has this logarithm: Wilson and Hilferty's approximation to the chi-squared distribution.
double Threshold(Eigen::Index degrees, double logOfChoices = 0.0, double sure = SURE);

class EnlargedEquations {
 public:
  /// `views` are each view's, with its pose eliminated: first of what all views share, then of `effects`.
  EnlargedEquations(const Solution& solution, std::vector<solver::ReducedSystem> views, Eigen::Index effects);

  /// Pulls an effect's parameter toward zero.
  void Restrain(Eigen::Index effect, double weight);

  /// Of some of the effects, as if there were no others. Its squares are in variances of the noise, or, where
  /// the groups of like views scatter by more than noise lets them, of that scatter. It was chosen among
  /// effects of whose number `logOfChoices` is the logarithm.
  OmittedEffect EffectOf(Eigen::Index first, Eigen::Index count, double logOfChoices = 0.0,
                         double sure = SURE) const;

  /// Of some of the effects, if each view had its own. `values` are the roots of their mean squares over the
  /// views, without what noise makes of them.
  OmittedEffect EffectByView(Eigen::Index first, Eigen::Index count) const;

 private:
  solver::ReducedSystem Chosen(const solver::ReducedSystem& system, Eigen::Index first,
                               Eigen::Index count) const;
  double ScatterOver(const Eigen::MatrixXd& information, Eigen::Index first, Eigen::Index count) const;

  const Solution& solution_;
  std::vector<solver::ReducedSystem> views_;
  Eigen::Index shared_;
  solver::PriorTerms priors_;
  Eigen::VectorXd strengths_;  ///< of what pulls at the effects
  solver::ReducedSystem all_;  ///< of the data alone
};

}  // namespace velmora
